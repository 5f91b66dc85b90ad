// Process entry: brings the application up in a fixed order and takes it
// down in the reverse one. The order matters: the settings path must exist
// before anything reads settings, the GStreamer environment must be set
// before the first GStreamer call, and the program window must exist before
// the main controller is built.

#include "MainController.h"

#include "shell/addon_resume.h"
#include "shell/application_identity.h"
#include "shell/command_line.h"
#include "shell/display_activity_guard.h"
#include "shell/gpu_startup_preferences.h"
#include "shell/gstreamer_runtime.h"
#include "shell/log_categories.h"
#include "shell/startup_diagnostics.h"
#include "shell/startup_texts.h"
#include "shell/startup_windows.h"
#include "shell/termination_signals.h"
#include "shell/window_system.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QIcon>
#include <QPointer>
#include <QSettings>
#include <QStandardPaths>
#include <QSysInfo>
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
void initialiseGStreamer(int argc, char **argv)
{
    std::vector<char *> copy(argv, argv + argc);
    copy.push_back(nullptr);
    int count = argc;
    char **pointer = copy.data();
    gst_init(&count, &pointer);
}

void setGStreamerRegistryLocation()
{
    const QString cache = QStandardPaths::writableLocation(QStandardPaths::CacheLocation);
    if (cache.isEmpty() || !QDir().mkpath(cache))
        return;
    qputenv("GST_REGISTRY_1_0", QFile::encodeName(QDir(cache).filePath(QStringLiteral("gstreamer-registry.bin"))));
}

// Shown instead of the application when GStreamer is missing; the loop runs
// until the operator closes the window or the process is asked to stop.
int runRuntimeMissingWindow(QApplication &app)
{
    const QString text = tarnix::startupText("startup.gstreamer_runtime_missing");
    qCCritical(tarnix::lcStartup).noquote() << text;
    QPointer<QWidget> window = tarnix::createRuntimeMissingWindow(text);
    QObject::connect(window, &QObject::destroyed, &app, &QCoreApplication::quit);
    tarnix::showControllerWindow(window);
    tarnix::TerminationSignals signalsToQuit;
    QObject::connect(&signalsToQuit, &tarnix::TerminationSignals::terminationRequested, &app,
                     &QCoreApplication::quit);
    const int code = app.exec();
    delete window;
    return code;
}

} // namespace

int main(int argc, char **argv)
{
    const tarnix::WindowSystemChoice windowSystem = tarnix::applyWindowSystemChoice();

    QApplication app(argc, argv);                                               // 1
    app.setWindowIcon(applicationIcon());                                       // 2
    const QString executableDirectory = QCoreApplication::applicationDirPath();
    const QString profile = tarnix::productProfile(executableDirectory);
    tarnix::applyApplicationIdentity(profile);                                  // 3
    const QStringList rawArguments = app.arguments();
    const bool portable = tarnix::portableModeRequested(rawArguments, executableDirectory); // 4
    tarnix::publishSettingsLocation(
        tarnix::computeSettingsFilePath(profile, portable, executableDirectory), portable);
    setGStreamerRegistryLocation();                                             // 5
    tarnix::freezeGpuPreferences();                                             // 6

    // 7: the application log starts here; until its writer exists, records go
    // to the Qt message handler under the same categories.
    qCInfo(tarnix::lcSystem).noquote()
        << QStringLiteral("Started TARNIX; Qt %1; OS %2; executable %3; build %4 %5")
               .arg(QString::fromLatin1(qVersion()), QSysInfo::prettyProductName(),
                    QCoreApplication::applicationFilePath(), QStringLiteral(__DATE__),
                    QStringLiteral(__TIME__));
    qCInfo(tarnix::lcStartup).noquote() << "Window system:" << windowSystem.reason;
    tarnix::writeStartupDiagnostics(QString::fromLatin1(tarnix::kPhaseBeforeSettings));

    // 8-13: interface language, interface scale, application font and skin
    // are applied here once their managers exist.

    {                                                                           // 14
        tarnix::MessageBoxPresenter presenter;
        const tarnix::AddonResumeDecision decision =
            tarnix::resumeAddonJobs(tarnix::applicationAddonResumeContext(rawArguments), presenter);
        if (!decision.continueStart)
            return decision.exitCode;
    }

    const tarnix::GStreamerRuntimeLocation runtime =                           // 15
        tarnix::locateGStreamerRuntime(executableDirectory, profile);
    qCInfo(tarnix::lcStartup).noquote() << "GStreamer:" << runtime.description;
    if (!runtime.found)
        return runRuntimeMissingWindow(app);

    initialiseGStreamer(argc, argv);                                            // 16

    tarnix::CommandLine commandLine;                                            // 17
    commandLine.parse(rawArguments);
    if (commandLine.helpRequested()) {
        std::fputs(commandLine.helpText().toLocal8Bit().constData(), stdout);
        return 0;
    }

    if (!app.property("video.startupProgramOutput4k").isValid()) {            // 18
        const auto settings = tarnix::openSettings();
        const bool output4k = commandLine.programOutput4kRequested()
            || settings->value(QStringLiteral("video/programOutput4k"), false).toBool();
        app.setProperty("video.startupProgramOutput4k", output4k);
    }
    const bool programOutput4k = app.property("video.startupProgramOutput4k").toBool();

    auto displayActivityGuard = std::make_unique<tarnix::DisplayActivityGuard>(); // 19

    // 20: the operator monitor publisher starts here once it exists.

    std::unique_ptr<QWidget> programVideoWindow(tarnix::createProgramVideoWindow()); // 21
    QPointer<QWidget> controllerWindow = tarnix::createControllerWindow();      // 22
    tarnix::placeProgramVideoWindow(programVideoWindow.get());                  // 23

    auto mainController = std::make_unique<tarnix::MainController>(            // 24
        programVideoWindow.get(), controllerWindow, programOutput4k);
    if (!mainController->programPlayerAvailable()) {                            // 25
        qCWarning(tarnix::lcStartup).noquote()
            << "Program window hidden:" << mainController->programPlayerError();
        programVideoWindow->hide();
    }

    QObject::connect(controllerWindow, &QObject::destroyed, &app, &QCoreApplication::quit); // 26
    tarnix::TerminationSignals terminationSignals;
    QObject::connect(&terminationSignals, &tarnix::TerminationSignals::terminationRequested, &app,
                     &QCoreApplication::quit);

    tarnix::showControllerWindow(controllerWindow);                             // 27

    // 28: controller window scaling is installed here once it exists.

    tarnix::writeStartupDiagnostics(QString::fromLatin1(tarnix::kPhaseControllerReady)); // 29

    const int exitCode = app.exec();                                            // 30

    mainController.reset();
    delete controllerWindow;
    programVideoWindow.reset();
    // The operator monitor publisher stops here once it exists.
    displayActivityGuard.reset();
    // The language manager is destroyed here, then the application log stops
    // with "Shutdown complete" once it exists.
    qCInfo(tarnix::lcSystem) << "Shutdown complete";
    return exitCode;
}
