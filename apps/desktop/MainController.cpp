#include "MainController.h"
#include "MainController_impl.h"

#include "audio/audio_output_coordinator.h"
#include "audio/edit_pfl_output.h"
#include "edit/edit_session_controller.h"
#include "ui/edit_panel.h"

#include "control/control_socket_server.h"
#include "control/controller_operations.h"
#include "control/playlist_item_operations.h"
#include "control/shortcut_table.h"
#include "playlist/playlist_model.h"
#include "playlist/playlist_transfer.h"
#include "playout/dual_deck_player.h"
#include "playout/dual_deck_program_player.h"
#include "playout/program_playout_controller.h"
#include "playout/selection_holder.h"
#include "playlist/media_import_queue.h"
#include "playlist/media_thumbnailer.h"
#include "playlist/playlist_thumbnail_store.h"
#include "shell/application_log.h"
#include "shell/background_io_queue.h"
#include "shell/health_monitor.h"
#include "shell/log_categories.h"
#include "shell/settings_store.h"
#include "shell/settings_transfer.h"
#include "shell/ui_language_manager.h"
#include "shell/user_info_center.h"
#include "ui/controller_shortcuts.h"
#include "ui/controller_volume_input.h"
#include "ui/playlist_panel.h"
#include "ui/program_panel.h"
#include "ui/view_menu_controller.h"

#include <QColor>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QLayout>
#include <QVBoxLayout>
#include <QWidget>

namespace tarnix {

namespace {

constexpr QSize kProgramSize{1920, 1080};
constexpr QSize kProgramSize4k{3840, 2160};

} // namespace

// Construction ----------------------------------------------------------------

MainController::Impl::Impl(MainController *owner) : q(owner) {}

MainController::Impl::~Impl() = default;

MainController::MainController(QWidget *programVideoWindow, QWidget *controllerWindow,
                               bool programOutput4k, UiLanguageManager *languageManager,
                               MainControllerOptions options)
    : d(std::make_unique<Impl>(this))
{
    d->options = std::move(options);
    d->programVideoWindow = programVideoWindow;
    d->controllerWindow = controllerWindow;
    d->languageManager = languageManager;
    d->programOutput4k = programOutput4k;
    d->widgetContext = std::make_unique<QObject>();

    d->operations = std::make_unique<ControllerOperations>();
    d->userInfoCenter = std::make_unique<UserInfoCenter>();
    d->model = std::make_unique<PlaylistModel>();
    d->mediaImports = std::make_unique<MediaImportQueue>(d->model.get());
    d->thumbnailer = std::make_unique<MediaThumbnailer>();
    d->thumbnails = std::make_unique<PlaylistThumbnailStore>(d->model.get(), d->thumbnailer.get());
    d->itemOperations = std::make_unique<PlaylistItemOperations>(d->model.get(), d->operations.get());
    d->createSelection();
    d->operations->setContextProvider([impl = d.get()] { return impl->contextText(); });

    d->createProgramSide();

    d->backgroundIoQueue = std::make_unique<BackgroundIoQueue>();
    d->transfer = std::make_unique<PlaylistTransfer>(d->model.get(), d->backgroundIoQueue.get(),
                                                    d->userInfoCenter.get(), d->options.previousSessionPath);
    d->createSettingsTransfer();
    d->createEditSide();

    d->buildControllerWindow();
    d->bindPlaylistOperations();
    d->bindMediaOperations();
    d->pushSettings();
    d->createKeyboard();
    d->createHealthMonitor();

    // The program side is started; whether it came up is told now, with the
    // player's reason, and the start hides the program window.
    if (!d->programPlayerAvailable) {
        qCWarning(lcSystem).noquote() << "Program player unavailable:" << d->programPlayerError;
        d->userInfoCenter->post(UserInfoSeverity::Error, QStringLiteral("SYSTEM"),
                                LocalizedText(QStringLiteral("startup.playbin_creation_failed")),
                                d->programPlayerError);
    }

    d->debugSnapshotTimer.setInterval(d->options.debugSnapshotInterval);
    QObject::connect(&d->debugSnapshotTimer, &QTimer::timeout, d->widgetContext.get(),
                     [impl = d.get()] { impl->writeDebugSnapshot(); });
    d->debugSnapshotTimer.start();
    if (d->programPlayout)
        QObject::connect(d->programPlayout.get(), &ProgramPlayoutController::onAirChanged, d->widgetContext.get(),
                         [impl = d.get()] { impl->writeDebugSnapshot(); });

    const QSize size = d->options.programOutputSize.isEmpty()
                           ? (programOutput4k ? kProgramSize4k : kProgramSize)
                           : d->options.programOutputSize;
    qCInfo(lcSystem).noquote() << QStringLiteral("MainController ready; program output %1x%2; player %3")
                                      .arg(size.width())
                                      .arg(size.height())
                                      .arg(d->programPlayerAvailable ? QStringLiteral("up")
                                                                     : QStringLiteral("down"));
}

// The playlist panel provides the selection and binds the selection
// operations. A run without a controller window (the composition under
// test) has no panel; the headless holder stands in for it.
void MainController::Impl::createSelection()
{
    if (controllerWindow) {
        auto *panel = new PlaylistPanel(model.get(), thumbnails.get(), operations.get(), itemOperations.get(),
                                        userInfoCenter.get(), controllerWindow);
        playlistPanel = panel;
        selection = panel->selection();
        programPanel = new ProgramPanel(model.get(), operations.get(), controllerWindow);
        editPanel = new EditPanel(controllerWindow);
        return;
    }
    headlessSelection = std::make_unique<SelectionHolder>(model.get(), operations.get());
    selection = headlessSelection.get();
}

void MainController::Impl::createProgramSide()
{
    DualDeckPlayerOptions playerOptions;
    const QSize size = options.programOutputSize.isEmpty() ? (programOutput4k ? kProgramSize4k : kProgramSize)
                                                           : options.programOutputSize;
    playerOptions.deckTimings.width = size.width();
    playerOptions.deckTimings.height = size.height();
    playerOptions.audioDevice = readStringSetting(QStringLiteral("audio/programOutputDeviceId"));
    if (!options.programAudioSinkFactory.isEmpty())
        playerOptions.audioSinkFactory = options.programAudioSinkFactory;

    // The player fills the program window; its operator monitor is shown
    // by the program panel's place in the controller window, not on air.
    auto player = std::make_unique<DualDeckPlayer>(std::move(playerOptions), programVideoWindow.data());
    dualDeckPlayer = player.get();
    if (programVideoWindow) {
        QLayout *layout = programVideoWindow->layout();
        if (!layout) {
            layout = new QVBoxLayout(programVideoWindow);
            layout->setContentsMargins(0, 0, 0, 0);
        }
        layout->addWidget(player.get());
    }
    // The operator's monitor picture belongs in the program panel, not on
    // air; without a panel it stays hidden.
    if (QWidget *monitor = player->findChild<QWidget *>(QStringLiteral("monitor-gpu-output"))) {
        if (programPanel)
            programPanel->setMonitor(monitor);
        else
            monitor->hide();
    }
    programPlayerAvailable = player->isInitialized();
    if (!programPlayerAvailable)
        programPlayerError = player->initializationError();

    programPlayout = std::make_unique<ProgramPlayoutController>(
        std::make_unique<DualDeckProgramPlayer>(std::move(player)), model.get(), selection.data(),
        userInfoCenter.get(), operations.get(), &controlState);
    if (playlistPanel)
        programPlayout->setPlaylistPanel(playlistPanel->programView());
    if (programPanel) {
        programPlayout->setProgramPanel(programPanel->view());
        programPlayout->setBgmPanel(programPanel->bgmView());
        programPlayout->setDskPanel(programPanel->dskView());
    }
}

// Keys reach the operations once every owner has bound its operations and
// the menus exist, so that the menu entries show their keys.
void MainController::Impl::createKeyboard()
{
    if (!controllerWindow)
        return;
    shortcuts = std::make_unique<ControllerShortcuts>(controllerWindow, playlistPanel, programPanel, operations.get(),
                                                      readJsonSetting(QStringLiteral("shortcuts/bindings")).toObject());
    volumeInput = std::make_unique<ControllerVolumeInput>(controllerWindow, operations.get());
    if (editPanel) {
        QHash<QString, QString> editKeys;
        for (const char *name : {"EditSetIn", "EditSetOut", "EditToggleStartMode", "EditToggleFadeOut", "EditEndStop",
                                 "EditEndPause", "EditEndRepeat", "EditEndNext", "TogglePfl", "OpenNominalEq"}) {
            const QString command = QString::fromLatin1(name);
            editKeys.insert(command, shortcuts::nativeText(shortcuts->keysOf(command)));
        }
        editPanel->setShortcutHints(editKeys);
    }
}

// The settings the existing objects need at start, read once here.
void MainController::Impl::pushSettings()
{
    if (programPlayout) {
        programPlayout->setAllowSameItemRetake(readBoolSetting(QStringLiteral("onAir/allowSameItemRetake")));
        programPlayout->setAutoSelectNextItem(readBoolSetting(QStringLiteral("playlist/autoSelectNextItemAfterOnAir")));
    }
    lastPlaylistDirectory = readStringSetting(QStringLiteral("fileDialog/lastPlaylistDirectory"));
    lastMediaDirectory = readStringSetting(QStringLiteral("fileDialog/lastMediaDirectory"));
    thumbnails->audioThumbnailPreferenceChanged(readBoolSetting(QStringLiteral("playlist/preferAudioAlbumArt")));
    const QColor background(readStringSetting(QStringLiteral("player/backgroundColor")));
    if (dualDeckPlayer && dualDeckPlayer->compositor() && background.isValid())
        dualDeckPlayer->compositor()->setBackground(background.rgb());

    if (programPanel) {
        programPanel->setPlaybackRateControlsShown(readBoolSetting(QStringLiteral("onAir/showPlaybackRateControls")));
        programPanel->setBgmControlsShown(readBoolSetting(QStringLiteral("audio/showBgmPlayerControls")));
        programPanel->setFtbButtonDisabled(readBoolSetting(QStringLiteral("onAir/disableFtbButton")));
        programPanel->setRemainingTotalMode(readBoolSetting(QStringLiteral("time/remainingTotal")));
        programPanel->setBackgroundColor(background.isValid() ? background : QColor(Qt::black));
        QObject::connect(programPanel, &ProgramPanel::backgroundColorChosen, widgetContext.get(),
                         [this](const QColor &colour) {
                             if (dualDeckPlayer && dualDeckPlayer->compositor())
                                 dualDeckPlayer->compositor()->setBackground(colour.rgb());
                             writeSettingInBackground(QStringLiteral("player/backgroundColor"), colour.name());
                         });
        QObject::connect(programPanel, &ProgramPanel::remainingTotalModeChanged, widgetContext.get(),
                         [this](bool total) {
                             writeSettingInBackground(QStringLiteral("time/remainingTotal"),
                                                      total ? QStringLiteral("true") : QStringLiteral("false"));
                         });
    }
    if (playlistPanel) {
        playlistPanel->setEditActivation(readIntSetting(QStringLiteral("playlist/editActivationMode")) == 1
                                             ? PlaylistPanel::EditActivation::Button
                                             : PlaylistPanel::EditActivation::Selection);
        playlistPanel->setTimeZone(readStringSetting(QStringLiteral("time/timeZone")));
        // The panel tells ON AIR the active playlist's crossfade itself.
        return;
    }
    // Without a playlist panel the take's crossfade follows the active
    // playlist and the document's duration.
    pushManualCrossfade();
    for (auto signal : {&PlaylistModel::modelReset, &PlaylistModel::playlistOrderChanged})
        QObject::connect(model.get(), signal, widgetContext.get(), [this] { pushManualCrossfade(); });
    QObject::connect(model.get(), &PlaylistModel::playlistManualCrossfadeChanged, widgetContext.get(),
                     [this] { pushManualCrossfade(); });
    QObject::connect(model.get(), &PlaylistModel::manualCrossfadeDurationChanged, widgetContext.get(),
                     [this] { pushManualCrossfade(); });
    QObject::connect(model.get(), &PlaylistModel::activePlaylistChanged, widgetContext.get(),
                     [this] { pushManualCrossfade(); });
}

void MainController::Impl::pushManualCrossfade()
{
    if (!programPlayout || !model)
        return;
    bool enabled = false;
    enabled = model->playlistManualCrossfadeEnabled(model->activePlaylistNumber());
    programPlayout->setManualCrossfade(enabled, model->manualCrossfadeDurationMs());
}

QString MainController::Impl::contextText() const
{
    if (!model)
        return {};
    return QStringLiteral("playlist=%1 selected=%2 onAir=%3 edit=%4 dsk=%5 bgm=%6")
        .arg(model->activePlaylistNumber())
        .arg(selection ? selection->selectedItemId() : 0)
        .arg(model->onAirItemId())
        .arg(model->editItemId())
        .arg(model->dskItemId())
        .arg(model->bgmItemId());
}

// Shutdown --------------------------------------------------------------------

MainController::~MainController()
{
    shutdown();
}

void MainController::shutdown()
{
    if (d->shutDown)
        return;
    d->shutDown = true;
    qCInfo(lcSystem).noquote() << "MainController shutdown";

    // Requests that arrive from here on find nothing to run, and no widget
    // reaches this object any more.
    d->operations->setAccepting(false);
    d->controlSocket.reset();
    d->volumeInput.reset();
    d->shortcuts.reset();
    d->viewMenu.reset();
    d->debugSnapshotTimer.stop();
    d->health.reset();
    d->widgetContext.reset();

    // Analysis that has not finished leaves no placeholder in the saved
    // session. Then the previous session, then the ON AIR shutdown; both
    // finish while the event loop runs.
    d->mediaImports->cancelAll();
    // Every picture request is bounded by its time limits, so this wait is
    // too; nothing after it may be drawn into a store that is going.
    d->thumbnailer->shutdown();
    d->transfer->close();
    d->transfer->savePreviousSession();
    d->settingsTransfer->close();
    if (d->programPlayout)
        d->programPlayout->shutdown();
    if (d->editSession)
        d->editSession->beginUnload(0);
    if (d->audioOutputs)
        d->audioOutputs->stop();
    if (d->pflOutput)
        d->pflOutput->shutdown();
    d->waitForShutdown();
    // Whatever EDIT still stops, its stop thread owns.
    d->editSession.reset();
    d->audioOutputs.reset();
    d->pflOutput.reset();

    const bool confirmed = !d->dualDeckPlayer || d->dualDeckPlayer->isShutdownConfirmed();
    if (confirmed) {
        d->programPlayout.reset();
    } else {
        // Pipeline threads may still run in the player: nothing of it is
        // freed, and the window it draws into stays too.
        qCWarning(lcSystem).noquote()
            << "ON AIR shutdown was not confirmed; the player is kept until the process ends.";
        d->playerRetained = true;
        (void)d->programPlayout.release();
    }
    d->dualDeckPlayer = nullptr;

    // The rest, in reverse order of construction.
    d->transfer.reset();
    d->settingsTransfer.reset();
    if (!d->backgroundIoQueue->isIdle()) {
        // A job still writes (a disk that hangs): its worker owns what it
        // touches; the queue is kept rather than waited for.
        qCWarning(lcSystem).noquote() << "File work still running at exit; it is left to finish on its own.";
        (void)d->backgroundIoQueue.release();
    }
    d->backgroundIoQueue.reset();
    d->selection = nullptr;
    delete d->playlistPanel.data();
    delete d->programPanel.data();
    delete d->editPanel.data();
    d->headlessSelection.reset();
    d->itemOperations.reset();
    d->thumbnails.reset();
    d->thumbnailer.reset();
    d->mediaImports.reset();
    d->model.reset();
    d->userInfoCenter.reset();
    d->operations.reset();
    qCInfo(lcSystem).noquote() << "MainController shutdown complete";
}

// The event loop runs (operations refused) until the file queue is idle and
// the ON AIR shutdown thread has finished, or the limit has passed. The
// player's shutdown may have to be started again: it waits for a running
// change of the audio device.
void MainController::Impl::waitForShutdown()
{
    auto done = [this] {
        if (dualDeckPlayer)
            dualDeckPlayer->beginShutdown();
        return backgroundIoQueue->isIdle() && (!dualDeckPlayer || dualDeckPlayer->isShutdownFinished())
               && (!editSession || !editSession->isUnloading());
    };
    QElapsedTimer elapsed;
    elapsed.start();
    // The timer only wakes the wait below so that done() is looked at again.
    QTimer poll;
    poll.setInterval(options.shutdownPoll);
    poll.start();
    // Events are processed directly rather than by a nested QEventLoop: a
    // quit asked for meanwhile (a second signal) makes every later
    // QEventLoop::exec() return at once, which would turn the wait into a
    // busy loop.
    while (!done() && !elapsed.hasExpired(options.shutdownLimit.count()))
        QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents | QEventLoop::WaitForMoreEvents);
    qCInfo(lcSystem).noquote() << QStringLiteral("ON AIR shutdown %1 after %2 ms; file queue %3")
                                      .arg(!dualDeckPlayer ? QStringLiteral("not needed")
                                           : dualDeckPlayer->isShutdownConfirmed() ? QStringLiteral("confirmed")
                                                                                    : QStringLiteral("not confirmed"))
                                      .arg(elapsed.elapsed())
                                      .arg(backgroundIoQueue->isIdle() ? QStringLiteral("idle")
                                                                        : QStringLiteral("busy"));
}

bool MainController::programPlayerRetained() const
{
    return d->playerRetained;
}

// Accessors -------------------------------------------------------------------

bool MainController::programPlayerAvailable() const
{
    return d->programPlayerAvailable;
}

QString MainController::programPlayerError() const
{
    return d->programPlayerError;
}

UserInfoCenter *MainController::userInfoCenter() const
{
    return d->userInfoCenter.get();
}

BackgroundIoQueue *MainController::backgroundIoQueue() const
{
    return d->backgroundIoQueue.get();
}

ControllerOperations *MainController::controllerOperations() const
{
    return d->operations.get();
}

ControlStateRegistry *MainController::controlState() const
{
    return &d->controlState;
}

PlaylistModel *MainController::playlistModel() const
{
    return d->model.get();
}

ProgramGpuCompositor *MainController::programCompositor() const
{
    return d->dualDeckPlayer ? d->dualDeckPlayer->compositor() : nullptr;
}

EditSessionController *MainController::editSession() const
{
    return d->editSession.get();
}

PlaylistPanel *MainController::playlistPanel() const
{
    return d->playlistPanel.data();
}

PlaylistThumbnailStore *MainController::thumbnailStore() const
{
    return d->thumbnails.get();
}

ProgramPlayoutController *MainController::programPlayout() const
{
    return d->programPlayout.get();
}

PlaylistTransfer *MainController::playlistTransfer() const
{
    return d->transfer.get();
}

bool MainController::startControlSocket(const QString &path)
{
    if (d->shutDown || d->controlSocket || path.isEmpty())
        return false;
    auto server = std::make_unique<ControlSocketServer>(d->operations.get(), &d->controlState);
    if (!server->listen(path))
        return false;
    d->controlSocket = std::move(server);
    d->bindControlCommands();
    d->bindHealthQuery();
    return true;
}

void MainController::writeDebugSnapshot() const
{
    d->writeDebugSnapshot();
}

} // namespace tarnix
