// The EDIT session in the application: created beside ON AIR, its
// operations bound, loading on a selection or on the EDIT button as the
// operator chose, and its scan log written by the file queue.

#include "MainController_impl.h"

#include "audio/audio_output_coordinator.h"
#include "audio/edit_pfl_feed.h"
#include "audio/edit_pfl_output.h"
#include "audio/program_audio_output.h"
#include "control/controller_operations.h"
#include "edit/edit_operations.h"
#include "edit/edit_session_controller.h"
#include "playlist/playlist_model.h"
#include "playout/dual_deck_player.h"
#include "playout/program_playout_controller.h"
#include "shell/application_log.h"
#include "shell/background_io_queue.h"
#include "shell/log_categories.h"
#include "shell/settings_store.h"
#include "shell/user_info_center.h"
#include "ui/edit_panel.h"
#include "ui/playlist_panel.h"

#include <QDir>
#include <QFile>
#include <QScrollArea>

namespace tarnix {

namespace {

constexpr char kScanLogName[] = "tarnix-edit-scan.log";

} // namespace

void MainController::Impl::createEditSide()
{
    EditSessionController::Options editOptions;
    createPflFeed();
    editOptions.player.pflFeed = pflFeed;
    editOptions.scanLog = [this](const QString &line) { appendScanLog(line); };
    editOptions.failPlayerCreation = options.editPlayerFails;
    editSession = std::make_unique<EditSessionController>(model.get(), selection.data(), editOptions);
    bindEditOperations(operations.get(), editSession.get());
    createPflOutput();
    if (editPanel) {
        editSession->setPanel(editPanel->view());
        // The nominal EQ stands in the EDIT panel itself: the operation
        // brings it into view and gives it the keys.
        operations->bind<>(ControllerOperations::OpenNominalEq, editPanel.data(), [this] {
            QWidget *eq = editPanel ? editPanel->findChild<QWidget *>(QStringLiteral("editNominalEq")) : nullptr;
            if (!eq || !editSession->loadedItemId() || !eq->isEnabled())
                return false;
            if (auto *scroll = controllerWindow ? controllerWindow->findChild<QScrollArea *>(
                                                      QStringLiteral("editPanelScroll"))
                                                : nullptr)
                scroll->ensureWidgetVisible(eq);
            eq->setFocus(Qt::ShortcutFocusReason);
            return true;
        });
    }
    // The state query's EDIT fields: the item once it is loaded, and where
    // EDIT stands in it.
    using Field = ControlStateRegistry::Field;
    controlState.setProvider(Field::EditItemId, editSession.get(), [session = editSession.get()] {
        return session->hasItem() ? QJsonValue(qint64(session->loadedItemId())) : QJsonValue();
    });
    controlState.setProvider(Field::EditPositionMs, editSession.get(), [session = editSession.get()] {
        const qint64 position = session->isLoaded() ? session->positionMs() : -1;
        return position >= 0 ? QJsonValue(position) : QJsonValue();
    });

    // "selection" (0) loads what the operator selects at once; "button" (1)
    // waits for the EDIT button. Either way the load is an operation from
    // the operator's hands, logged like every other intention.
    const bool onSelection = readIntSetting(QStringLiteral("playlist/editActivationMode")) != 1;
    if (onSelection && selection) {
        QObject::connect(selection.data(), &ItemSelection::selectionChanged, editSession.get(),
                         [this](quint64 itemId, bool byOperator) {
                             if (!itemId || !byOperator || itemId == editSession->loadedItemId())
                                 return;
                             operations->invoke(ControllerOperations::EditLoadSelected);
                         });
    }
    if (playlistPanel) {
        QObject::connect(playlistPanel.data(), &PlaylistPanel::editRequested, editSession.get(), [this] {
            operations->invoke(ControllerOperations::EditLoadSelected);
        });
    }
}

// One line appended per scan event, off the main thread; a line that
// cannot be written is only logged.
// The ring EDIT's sound goes through to the PFL helper. Names that a run
// which died left in shared memory are removed by the file queue.
void MainController::Impl::createPflFeed()
{
    QString error;
    pflFeed = EditPflFeed::create(&error);
    if (!pflFeed->hasView())
        qCWarning(lcEdit()).noquote() << "PFL is unavailable: " + error;
    backgroundIoQueue->enqueue(
        [](BackgroundIoQueue::Result &result) {
            result.errorText = QString::number(EditPflFeed::sweepStaleNames());
            result.success = true;
        },
        [](const BackgroundIoQueue::Result &result) {
            if (result.errorText != QLatin1String("0"))
                qCInfo(lcEdit()).noquote() << "PFL removed stale shared memory names: " + result.errorText;
        });
}

// PFL between the session and the helper process: the operator's request
// turns the output on or off, the output's state shows on the panel, and a
// failure is told in the status line and the message bar.
void MainController::Impl::createPflOutput()
{
    EditPflOutput::Options outputOptions;
    outputOptions.helperPath = options.pflHelperPath;
    pflOutput = std::make_unique<EditPflOutput>(pflFeed, outputOptions);
    pflOutput->setDeviceId(readStringSetting(QStringLiteral("audio/editPflOutputDeviceId")));
    EditSessionController *session = editSession.get();
    EditPflOutput *output = pflOutput.get();
    // The operator's request goes through a fresh look at the devices.
    AudioOutputCoordinator::Hooks hooks;
    hooks.turnPflOn = [output](const QString &deviceId) {
        output->setDeviceId(deviceId);
        output->setEnabled(true);
    };
    hooks.turnPflOff = [output] { output->setEnabled(false); };
    hooks.setProgramDevice = [this](const QString &deviceId) {
        if (dualDeckPlayer && dualDeckPlayer->audioOutput())
            dualDeckPlayer->audioOutput()->setRequestedDevice(deviceId);
    };
    hooks.retryProgramDevice = [this] {
        if (dualDeckPlayer && dualDeckPlayer->audioOutput())
            dualDeckPlayer->audioOutput()->retryDevice();
    };
    hooks.activeProgramDevice = [this] {
        return dualDeckPlayer && dualDeckPlayer->audioOutput() ? dualDeckPlayer->audioOutput()->activeDevice() : QString();
    };
    hooks.programStatusKey = [this] {
        return dualDeckPlayer && dualDeckPlayer->audioOutput() ? dualDeckPlayer->audioOutput()->statusKey() : QString();
    };
    hooks.tell = [this](bool warning, const QString &source, const LocalizedText &text, const QString &detail) {
        userInfoCenter->post(warning ? UserInfoSeverity::Warning : UserInfoSeverity::None, source, text, detail, true);
    };
    hooks.askSameDevice = [this] { userInfoCenter->askPflSameDevice(); };
    AudioOutputDeviceMonitor::Options monitorOptions;
    monitorOptions.helperPath = options.pflHelperPath;
    audioOutputs = std::make_unique<AudioOutputCoordinator>(new AudioOutputDeviceMonitor(monitorOptions), hooks);
    AudioOutputCoordinator *coordinator = audioOutputs.get();
    // A failed program sound is told once, by the coordinator, after it has
    // looked at the devices: gone and failed read differently.
    if (programPlayout)
        QObject::connect(programPlayout.get(), &ProgramPlayoutController::programAudioOutputError, coordinator,
                         &AudioOutputCoordinator::programAudioOutputError);
    QObject::connect(session, &EditSessionController::pflRequested, coordinator, &AudioOutputCoordinator::pflRequested);
    QObject::connect(userInfoCenter.get(), &UserInfoCenter::pflSameDeviceAnswered, coordinator,
                     &AudioOutputCoordinator::pflSameDeviceDecision);
    QObject::connect(model.get(), &PlaylistModel::mediaAvailabilityCheckRequested, coordinator,
                     &AudioOutputCoordinator::refresh);
    QObject::connect(userInfoCenter.get(), &UserInfoCenter::audioSettingsRequested, coordinator,
                     [this] { openAudioOutputs(); });
    auto showState = [session, output] {
        session->setPflState(output->canEnable() || output->isActive(), output->isActive());
    };
    QObject::connect(output, &EditPflOutput::stateChanged, session, showState);
    showState();
    QObject::connect(output, &EditPflOutput::outputError, session, [this, session](const QString &message) {
        session->showPflFailure(message);
        userInfoCenter->post(UserInfoSeverity::Warning, QStringLiteral("EDIT"), LocalizedText({}, {}, message));
    });
    // The state query's pflOn: the helper is playing what EDIT plays.
    controlState.setProvider(ControlStateRegistry::Field::PflOn, output,
                             [output] { return QJsonValue(output->isActive()); });
    operations->bind<>(ControllerOperations::TogglePfl, output, [session, output] {
        if (!session->hasItem() || (!session->isPflOn() && !output->canEnable()))
            return false;
        session->togglePfl();
        return true;
    });
}

void MainController::Impl::appendScanLog(const QString &line)
{
    if (!backgroundIoQueue)
        return;
    const QString path = QDir(logDirectory()).filePath(QString::fromLatin1(kScanLogName));
    const QByteArray bytes = line.toUtf8() + '\n';
    backgroundIoQueue->enqueue(
        [path, bytes](BackgroundIoQueue::Result &result) {
            QFile file(path);
            result.success = file.open(QIODevice::Append | QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
            if (!result.success)
                result.errorText = file.errorString();
        },
        [path](const BackgroundIoQueue::Result &result) {
            if (!result.success)
                qCWarning(lcEdit()).noquote() << QStringLiteral("Could not write %1: %2").arg(path, result.errorText);
        });
}

} // namespace tarnix
