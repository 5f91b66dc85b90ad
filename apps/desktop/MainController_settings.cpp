// The settings transfer of the File menu: export and restore through their
// dialogs, and the running parts taking up restored settings.

#include "MainController_impl.h"

#include "audio/audio_output_coordinator.h"
#include "audio/audio_output_device_monitor.h"
#include "audio/edit_pfl_output.h"
#include "audio/program_audio_output.h"
#include "control/shortcut_table.h"
#include "playlist/playlist_thumbnail_store.h"
#include "playout/dual_deck_player.h"
#include "playout/program_playout_controller.h"
#include "shell/localized_text.h"
#include "shell/log_categories.h"
#include "shell/settings_transfer.h"
#include "shell/settings_transfer_document.h"
#include "shell/ui_language_manager.h"
#include "ui/audio_output_page.h"
#include "ui/controller_shortcuts.h"
#include "ui/playlist_panel.h"
#include "ui/program_panel.h"

#include <QColor>
#include <QDateTime>
#include <QDialog>
#include <QDir>
#include <QFileDialog>
#include <QJsonArray>
#include <QJsonObject>
#include <QStandardPaths>

namespace tarnix {

namespace {

QString settingsFilter()
{
    return LocalizedText(QStringLiteral("settings.manage.filter"), {}, QStringLiteral("TARNIX Settings (*.json)"))
        .toString();
}

} // namespace

void MainController::Impl::createSettingsTransfer()
{
    // A restore checks the shortcut bindings on the file queue's worker.
    // The keyboard's table needs the platform's standard keys and Qt fills
    // its key-name tables on first use, so both are made here, on the main
    // thread, even in a run without the keyboard.
    (void)shortcuts::validateBindings(QJsonObject{{QStringLiteral("TakeOnAir"), QJsonArray{QStringLiteral("Ctrl+F5")}}});
    settingsTransfer = std::make_unique<SettingsTransfer>(backgroundIoQueue.get(), userInfoCenter.get(),
                                                          languageManager, &shortcuts::validateBindings);
    QObject::connect(settingsTransfer.get(), &SettingsTransfer::settingsRestored, widgetContext.get(),
                     [this](const QJsonObject &settings) { applyRestoredSettings(settings); });
}

void MainController::Impl::exportSettingsFromDialog()
{
    const QString suggested = QDir(QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation))
                                  .filePath(settingsExportFileName(QDateTime::currentDateTime()));
    const QString chosen = QFileDialog::getSaveFileName(controllerWindow, localized("menu.file.export_settings"),
                                                        suggested, settingsFilter());
    // The dialog ran its own loop: the run may be ending.
    if (chosen.isEmpty() || shutDown || !settingsTransfer)
        return;
    settingsTransfer->exportSettings(chosen);
}

void MainController::Impl::importSettingsFromDialog()
{
    const QString chosen = QFileDialog::getOpenFileName(
        controllerWindow, localized("menu.file.import_settings"),
        QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation), settingsFilter());
    if (chosen.isEmpty() || shutDown || !settingsTransfer)
        return;
    settingsTransfer->importSettings(chosen);
}

// The same settings the running parts read at start, now from the restored
// values rather than the file. Keys read once at start (the GPU, the 4K
// output, software decoding) wait for the next start.
void MainController::Impl::applyRestoredSettings(const QJsonObject &settings)
{
    const auto flag = [&settings](const char *key) { return settings.value(QLatin1String(key)).toBool(); };
    if (programPlayout) {
        programPlayout->setAllowSameItemRetake(flag("onAir/allowSameItemRetake"));
        programPlayout->setAutoSelectNextItem(flag("playlist/autoSelectNextItemAfterOnAir"));
    }
    if (thumbnails)
        thumbnails->audioThumbnailPreferenceChanged(flag("playlist/preferAudioAlbumArt"));
    const QColor background(settings.value(QStringLiteral("player/backgroundColor")).toString());
    if (dualDeckPlayer && dualDeckPlayer->compositor() && background.isValid())
        dualDeckPlayer->compositor()->setBackground(background.rgb());
    if (programPanel) {
        programPanel->setPlaybackRateControlsShown(flag("onAir/showPlaybackRateControls"));
        programPanel->setBgmControlsShown(flag("audio/showBgmPlayerControls"));
        programPanel->setFtbButtonDisabled(flag("onAir/disableFtbButton"));
        programPanel->setRemainingTotalMode(flag("time/remainingTotal"));
        programPanel->setBackgroundColor(background.isValid() ? background : QColor(Qt::black));
    }
    if (playlistPanel) {
        playlistPanel->setEditActivation(settings.value(QStringLiteral("playlist/editActivationMode")).toInt() == 1
                                             ? PlaylistPanel::EditActivation::Button
                                             : PlaylistPanel::EditActivation::Selection);
        playlistPanel->setTimeZone(settings.value(QStringLiteral("time/timeZone")).toString());
    }
    // Output devices as a saved choice does: ON AIR moves when it is next
    // OFF AIR, a running PFL helper at once.
    const QString program = settings.value(QStringLiteral("audio/programOutputDeviceId")).toString();
    const QString pfl = settings.value(QStringLiteral("audio/editPflOutputDeviceId")).toString();
    if (dualDeckPlayer && dualDeckPlayer->audioOutput() && dualDeckPlayer->audioOutput()->requestedDevice() != program) {
        dualDeckPlayer->audioOutput()->setRequestedDevice(program);
        if (audioOutputs)
            audioOutputs->announceSelection(true, program);
    }
    if (pflOutput && audioOutputs) {
        const QString effective = AudioOutputCoordinator::effectivePflId(pfl, audioOutputs->monitor()->defaultDeviceId());
        if (pflOutput->deviceId() != effective) {
            pflOutput->setDeviceId(effective);
            audioOutputs->announceSelection(false, pfl);
        }
    }
    if (auto *page = audioOutputDialog ? audioOutputDialog->findChild<AudioOutputPage *>() : nullptr)
        page->setSaved(program, pfl, flag("audio/useDefaultWhenMissing"));
    if (shortcuts) {
        // The restore checked the bindings with the same rules; a refusal
        // here would mean the two disagree.
        const QString offence = shortcuts->applyBindings(settings.value(QStringLiteral("shortcuts/bindings")).toObject());
        if (!offence.isEmpty())
            qCWarning(lcSystem).noquote() << "Restored shortcut bindings not applied:" << offence;
    }
    qCInfo(lcSystem).noquote() << "Restored settings applied to the running parts";
}

} // namespace tarnix
