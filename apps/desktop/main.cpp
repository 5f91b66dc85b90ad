// Process entry: brings the application up in a fixed order and takes it
// down in the reverse one. The order matters: the settings path must exist
// before anything reads settings, the GStreamer environment must be set
// before the first GStreamer call, and the program window must exist before
// the main controller is built.

#include "MainController.h"

#include "shell/addon_resume.h"
#include "shell/allocator_settings.h"
#include "shell/application_identity.h"
#include "shell/application_log.h"
#include "shell/command_line.h"
#include "shell/controller_skin.h"
#include "shell/controller_window_scaling.h"
#include "shell/display_activity_guard.h"
#include "shell/gpu_startup_preferences.h"
#include "shell/gstreamer_runtime.h"
#include "shell/interface_scale.h"
#include "shell/low_priority_threads.h"
#include "shell/log_categories.h"
#include "shell/settings_store.h"
#include "shell/startup_diagnostics.h"
#include "shell/startup_windows.h"
#include "shell/termination_signals.h"
#include "shell/ui_language_manager.h"
#include "shell/user_info_center.h"
#include "shell/window_system.h"
#include "video/gif_decoder_element.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QIcon>
#include <QPointer>
#include <QScreen>
#include <QSize>
#include <QStandardPaths>
#include <QTimer>
#include <QWidget>

#include <gst/gst.h>

#include <cstdio>
#include <memory>
#include <vector>

namespace {

QIcon applicationIcon()
{
    QIcon icon;
    for (int size : {16, 32, 48, 64, 128, 256}) {
        icon.addFile(QStringLiteral(":/tarnix/assets/icons/tarnix3/windows/png/TARNIX3_%1x%1.png").arg(size),
                     QSize(size, size));
    }
    return icon;
}

// GStreamer strips the options it understands from the list it is given;
// it gets a copy so the application's own argument list stays whole.
//
// Without GST_DEBUG_FILE the console must stay free of GStreamer's debug
// output. The log bridge keeps it out of this process, but the plug-in
// scanner that gst_init may start inherits the environment and the terminal;
// it is started without GST_DEBUG, and the thresholds are applied here
// afterwards, exactly as gst_init would have applied them.
void initialiseGStreamer(int argc, char **argv)
{
    std::vector<char *> copy(argv, argv + argc);
    copy.push_back(nullptr);
    int count = argc;
    char **pointer = copy.data();
    const QByteArray debugThresholds = qgetenv("GST_DEBUG");
    const bool quietScanner = qEnvironmentVariableIsEmpty("GST_DEBUG_FILE") && !debugThresholds.isEmpty();
    if (quietScanner)
        qunsetenv("GST_DEBUG");
    gst_init(&count, &pointer);
    if (quietScanner) {
        qputenv("GST_DEBUG", debugThresholds);
        gst_debug_set_threshold_from_string(debugThresholds.constData(), FALSE);
    }
}

// Test and bench runs may shrink the program picture (or give it a size the
// compositor refuses, to see the start without a program player):
// TARNIX_TEST_PROGRAM_OUTPUT_SIZE=<width>x<height>.
QSize programOutputSizeOverride()
{
    const QString text = qEnvironmentVariable("TARNIX_TEST_PROGRAM_OUTPUT_SIZE");
    if (text.isEmpty())
        return {};
    const QStringList parts = text.split(QLatin1Char('x'));
    bool widthOk = false;
    bool heightOk = false;
    const int width = parts.value(0).toInt(&widthOk);
    const int height = parts.value(1).toInt(&heightOk);
    if (parts.size() != 2 || !widthOk || !heightOk || width <= 0 || height <= 0) {
        qCWarning(tarnix::lcStartup).noquote() << "Ignored TARNIX_TEST_PROGRAM_OUTPUT_SIZE:" << text;
        return {};
    }
    qCInfo(tarnix::lcStartup).noquote() << "Program output size for this run:" << text;
    return QSize(width, height);
}

void setGStreamerRegistryLocation()
{
    const QString cache = QStandardPaths::writableLocation(QStandardPaths::CacheLocation);
    if (cache.isEmpty() || !QDir().mkpath(cache))
        return;
    qputenv("GST_REGISTRY_1_0", QFile::encodeName(QDir(cache).filePath(QStringLiteral("gstreamer-registry.bin"))));
}

// Stops the application log when main() returns by any path, after every
// object declared later is gone, so "Shutdown complete" is its last record.
struct LogSession {
    LogSession() { tarnix::startLog(QString()); }
    ~LogSession() { tarnix::stopLog(); }
    LogSession(const LogSession &) = delete;
    LogSession &operator=(const LogSession &) = delete;
};

// Shown instead of the application when GStreamer is missing; the loop runs
// until the operator closes the window or the process is asked to stop.
int runRuntimeMissingWindow(QApplication &app, const bool &stopRequested)
{
    tarnix::UserInfoCenter center;
    QPointer<QWidget> window = tarnix::createRuntimeMissingWindow(&center);
    center.post(tarnix::UserInfoSeverity::Error, QStringLiteral("SYSTEM"),
                tarnix::LocalizedText(QStringLiteral("startup.gstreamer_runtime_missing")));
    QObject::connect(window, &QObject::destroyed, &app, &QCoreApplication::quit);
    tarnix::showControllerWindow(window);
    const int code = stopRequested ? 0 : app.exec();
    delete window;
    return code;
}

} // namespace

int main(int argc, char **argv)
{
    // Before any thread: large buffers get mappings of their own.
    tarnix::settleAllocatorForLongRuns();
    const tarnix::WindowSystemChoice windowSystem = tarnix::applyWindowSystemChoice();

    // start: application object
    QApplication app(argc, argv);
    // SIGTERM and SIGINT are caught from here on and end the run through the
    // ordinary shutdown. A request that arrives while start-up still runs
    // (it is seen in the first event loop, a message box's included) skips
    // the main loop.
    bool stopRequested = false;
    tarnix::TerminationSignals terminationSignals;
    QObject::connect(&terminationSignals, &tarnix::TerminationSignals::terminationRequested, &app, [&] {
        stopRequested = true;
        QCoreApplication::quit();
    });

    // start: window icon
    app.setWindowIcon(applicationIcon());
    const QString executableDirectory = QCoreApplication::applicationDirPath();
    const QString profile = tarnix::productProfile(executableDirectory);
    // start: application identity
    tarnix::applyApplicationIdentity(profile);
    const QStringList rawArguments = app.arguments();
    // start: portable mode and settings path
    const bool portable = tarnix::portableModeRequested(rawArguments, executableDirectory);
    tarnix::publishSettingsLocation(
        tarnix::computeSettingsFilePath(profile, portable, executableDirectory), portable);
    // start: GStreamer registry location
    setGStreamerRegistryLocation();
    // start: GPU preferences frozen
    tarnix::freezeGpuPreferences();

    // start: the log, which writes its start line and the first diagnostics itself.
    LogSession logSession;
    qCInfo(tarnix::lcStartup).noquote() << "Window system:" << windowSystem.reason;

    // start: interface language
    auto languageManager = std::make_unique<tarnix::UiLanguageManager>(&app);
    {
        QString error;
        if (!languageManager->loadStoredLanguage(&error))
            qCWarning(tarnix::lcStartup).noquote() << error;
    }

    // start: text size and interface scale
    tarnix::setTextSizeStep(tarnix::readIntSetting(QStringLiteral("accessibility/textSize")));
    QScreen *primaryScreen = QGuiApplication::primaryScreen();
    if (primaryScreen)
        tarnix::setUiScale(tarnix::uiScale(primaryScreen->geometry(), primaryScreen->availableGeometry()));
    // start: application font
    tarnix::applyScaledApplicationFont();
    if (primaryScreen) {
        const QSize screen = primaryScreen->geometry().size();
        const QSize available = primaryScreen->availableGeometry().size();
        qCInfo(tarnix::lcStartup).noquote()
            << QStringLiteral("CONTROLLER_SCALE logicalScreen=%1x%2 available=%3x%4 devicePixelRatio=%5 uiScale=%6")
                   .arg(screen.width())
                   .arg(screen.height())
                   .arg(available.width())
                   .arg(available.height())
                   .arg(primaryScreen->devicePixelRatio())
                   .arg(tarnix::interfaceScale());
    }
    // start: skin
    {
        QString skin = tarnix::readStringSetting(QStringLiteral("appearance/controllerSkin"));
        if (!tarnix::findControllerSkin(skin))
            skin = tarnix::defaultControllerSkin();
        QString error;
        if (!tarnix::applyControllerSkin(skin, &error))
            qCWarning(tarnix::lcStartup).noquote() << error;
    }
    // start: menu fonts
    tarnix::applyScaledMenuFonts();

    // start: add-on resume
    {
        tarnix::MessageBoxPresenter presenter;
        const tarnix::AddonResumeDecision decision =
            tarnix::resumeAddonJobs(tarnix::applicationAddonResumeContext(rawArguments), presenter);
        if (!decision.continueStart)
            return decision.exitCode;
    }

    // start: GStreamer runtime location
    const tarnix::GStreamerRuntimeLocation runtime =
        tarnix::locateGStreamerRuntime(executableDirectory, profile);
    qCInfo(tarnix::lcStartup).noquote() << "GStreamer:" << runtime.description;
    if (!runtime.found) {
        const int code = runRuntimeMissingWindow(app, stopRequested);
        languageManager.reset();
        return code;
    }

    // start: GStreamer log bridge and initialisation
    tarnix::prepareGStreamerLogBridge();
    initialiseGStreamer(argc, argv);
    tarnix::installGStreamerBridge();
    if (!tarnix::rankStillImageDecoders())
        qCWarning(tarnix::lcStartup).noquote() << "gdk-pixbuf image decoder missing: BMP and TIFF stills cannot play";
    if (QString error; !tarnix::registerGifDecoderElement(&error))
        qCWarning(tarnix::lcStartup).noquote() << error;
    // Streaming threads take the main thread's ordinary priority, whatever
    // background worker first builds a pipeline.
    tarnix::pinStreamingThreadPriority();

    // start: command line
    tarnix::CommandLine commandLine;
    commandLine.parse(rawArguments);
    if (commandLine.helpRequested()) {
        std::fputs(commandLine.helpText().toLocal8Bit().constData(), stdout);
        return 0;
    }

    // start: program output size
    if (!app.property("video.startupProgramOutput4k").isValid()) {
        const bool output4k = commandLine.programOutput4kRequested()
            || tarnix::readBoolSetting(QStringLiteral("video/programOutput4k"));
        app.setProperty("video.startupProgramOutput4k", output4k);
    }
    const bool programOutput4k = app.property("video.startupProgramOutput4k").toBool();

    // start: display activity guard
    auto displayActivityGuard = std::make_unique<tarnix::DisplayActivityGuard>();

    // start: the operator monitor publisher starts here once it exists.

    // start: program video window
    std::unique_ptr<QWidget> programVideoWindow(tarnix::createProgramVideoWindow());
    // start: controller window
    QPointer<QWidget> controllerWindow = tarnix::createControllerWindow();
    // start: program window placement
    tarnix::placeProgramVideoWindow(programVideoWindow.get());

    tarnix::MainControllerOptions controllerOptions;
    controllerOptions.programOutputSize = programOutputSizeOverride();
    // Fault tests run a PFL helper built to misbehave.
    controllerOptions.pflHelperPath = qEnvironmentVariable("TARNIX_TEST_PFL_HELPER");
    // start: main controller
    auto mainController = std::make_unique<tarnix::MainController>(
        programVideoWindow.get(), controllerWindow, programOutput4k, languageManager.get(), controllerOptions);
    {
        // Automation's way in; off unless a path is given.
        QString controlSocketPath = commandLine.controlSocketPath();
        if (controlSocketPath.isEmpty())
            controlSocketPath = tarnix::readStringSetting(QStringLiteral("control/socketPath"));
        if (!controlSocketPath.isEmpty())
            mainController->startControlSocket(controlSocketPath);
    }
    // start: program player check
    if (!mainController->programPlayerAvailable()) {
        // The controller window stays; its message bar tells why.
        qCWarning(tarnix::lcStartup).noquote()
            << "Program window hidden:" << mainController->programPlayerError();
        programVideoWindow->hide();
    }

    // start: quit with the controller window
    QObject::connect(controllerWindow, &QObject::destroyed, &app, &QCoreApplication::quit);
    QObject::connect(languageManager.get(), &tarnix::UiLanguageManager::languageChanged, controllerWindow,
                     [window = programVideoWindow.get(), controllerWindow] {
                         window->setWindowTitle(tarnix::localized("window.player.title"));
                         if (controllerWindow)
                             controllerWindow->setWindowTitle(tarnix::localized("window.controller.title"));
                     });

    // start: controller window shown
    tarnix::showControllerWindow(controllerWindow);

    // start: controller window scaling, once the window has been laid out
    QTimer::singleShot(0, controllerWindow, [controllerWindow] {
        tarnix::ControllerWindowScaling::install(controllerWindow);
    });

    // start: controller-ready diagnostics
    tarnix::writeStartupDiagnostics(QString::fromLatin1(tarnix::kPhaseControllerReady));

    // start: event loop
    const int exitCode = stopRequested ? 0 : app.exec();

    // The previous session is saved and the ON AIR pipelines stopped here,
    // with the event loop running until they are done.
    mainController->shutdown();
    const bool playerRetained = mainController->programPlayerRetained();
    mainController.reset();
    delete controllerWindow;
    if (playerRetained)
        (void)programVideoWindow.release();  // a kept player may still draw into it
    programVideoWindow.reset();
    // The operator monitor publisher stops here once it exists.
    displayActivityGuard.reset();
    languageManager.reset();
    return exitCode;  // the log stops last, with logSession
}
