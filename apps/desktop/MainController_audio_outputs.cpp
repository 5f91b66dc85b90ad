// The sound devices in the application: the audio output page in a dialog
// of its own (File > Audio Outputs…, or the message bar's audio settings
// link), filled from the device monitor and the settings, and the
// operator's choice saved and handed to the outputs.

#include "MainController_impl.h"

#include "audio/audio_output_coordinator.h"
#include "audio/edit_pfl_output.h"
#include "audio/program_audio_output.h"
#include "playout/dual_deck_player.h"
#include "shell/localized_text.h"
#include "shell/settings_store.h"
#include "ui/audio_output_page.h"

#include <QDialog>
#include <QDialogButtonBox>
#include <QPushButton>
#include <QVBoxLayout>

namespace tarnix {

namespace {

const QString kProgramKey = QStringLiteral("audio/programOutputDeviceId");
const QString kPflKey = QStringLiteral("audio/editPflOutputDeviceId");
const QString kFallbackKey = QStringLiteral("audio/useDefaultWhenMissing");

} // namespace

void MainController::Impl::openAudioOutputs()
{
    if (!audioOutputs || !controllerWindow)
        return;
    if (!audioOutputDialog) {
        auto *dialog = new QDialog(controllerWindow);
        dialog->setObjectName(QStringLiteral("audioOutputDialog"));
        dialog->setWindowTitle(localized("audio.outputs.title"));
        auto *layout = new QVBoxLayout(dialog);
        auto *page = new AudioOutputPage(dialog);
        layout->addWidget(page);
        auto *buttons = new QDialogButtonBox(QDialogButtonBox::Close, dialog);
        buttons->button(QDialogButtonBox::Close)->setText(localized("dialog.close"));
        layout->addWidget(buttons);
        QObject::connect(buttons, &QDialogButtonBox::rejected, dialog, &QDialog::close);
        AudioOutputDeviceMonitor *monitor = audioOutputs->monitor();
        auto showDevices = [page, monitor] { page->setDevices(monitor->devices(), monitor->defaultDeviceId()); };
        auto showCurrent = [this, page] {
            ProgramAudioOutput *output = dualDeckPlayer ? dualDeckPlayer->audioOutput() : nullptr;
            page->setCurrentProgram(output ? output->activeDevice() : QString(),
                                    output ? LocalizedText(output->statusKey(), {},
                                                           ProgramAudioOutput::statusText(output->statusKey()))
                                                 .toString()
                                           : QString());
        };
        QObject::connect(monitor, &AudioOutputDeviceMonitor::devicesChanged, page, showDevices);
        QObject::connect(monitor, &AudioOutputDeviceMonitor::refreshed, page, showCurrent);
        QObject::connect(page, &AudioOutputPage::refreshRequested, audioOutputs.get(), &AudioOutputCoordinator::refresh);
        QObject::connect(page, &AudioOutputPage::applyRequested, page,
                         [this](const QString &program, const QString &pfl, bool useDefault) {
                             applyAudioOutputs(program, pfl, useDefault);
                         });
        // The coordinator's own fallback shows on an open page at once.
        QObject::connect(audioOutputs.get(), &AudioOutputCoordinator::savedAudioOutputsChanged, page, [page] {
            page->setSaved(readStringSetting(kProgramKey), readStringSetting(kPflKey), readBoolSetting(kFallbackKey));
        });
        showDevices();
        showCurrent();
        audioOutputDialog = dialog;
    }
    auto *page = audioOutputDialog->findChild<AudioOutputPage *>();
    page->setSaved(readStringSetting(kProgramKey), readStringSetting(kPflKey), readBoolSetting(kFallbackKey));
    page->setMessage(QString());
    audioOutputs->refresh();
    audioOutputDialog->show();
    audioOutputDialog->raise();
    audioOutputDialog->activateWindow();
}

// Saved first; only a saved choice is applied. ON AIR changes its device
// when it is next OFF AIR; a running PFL helper moves to the new device.
void MainController::Impl::applyAudioOutputs(const QString &programId, const QString &pflId, bool useDefaultWhenMissing)
{
    auto *page = audioOutputDialog ? audioOutputDialog->findChild<AudioOutputPage *>() : nullptr;
    const QString oldProgram = readStringSetting(kProgramKey);
    const QString oldPfl = readStringSetting(kPflKey);
    QString error;
    if (!writeSetting(kProgramKey, programId, &error) || !writeSetting(kPflKey, pflId, &error)
        || !writeSetting(kFallbackKey, useDefaultWhenMissing, &error)) {
        if (page)
            page->setMessage(LocalizedText(QStringLiteral("settings.output.save_failed"), {},
                                           QStringLiteral("Could not save the output device setting."))
                                 .toString());
        return;
    }
    if (programId != oldProgram) {
        if (dualDeckPlayer && dualDeckPlayer->audioOutput())
            dualDeckPlayer->audioOutput()->setRequestedDevice(programId);
        audioOutputs->announceSelection(true, programId);
    }
    if (pflId != oldPfl) {
        const QString effective = AudioOutputCoordinator::effectivePflId(pflId, audioOutputs->monitor()->defaultDeviceId());
        if (pflOutput)
            pflOutput->setDeviceId(effective);
        audioOutputs->announceSelection(false, pflId);
    }
    if (page)
        page->setMessage(QString());
    audioOutputs->refresh();
}

} // namespace tarnix
