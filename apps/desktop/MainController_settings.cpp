// The settings of the File menu: export and restore through their dialogs,
// the settings window, and the running parts taking up restored or changed
// settings.

#include "MainController_impl.h"

#include "audio/audio_output_coordinator.h"
#include "audio/audio_output_device_monitor.h"
#include "audio/edit_pfl_output.h"
#include "audio/program_audio_output.h"
#include "control/shortcut_table.h"
#include "playlist/playlist_thumbnail_store.h"
#include "playout/dual_deck_player.h"
#include "playout/program_playout_controller.h"
#include "shell/controller_skin.h"
#include "shell/controller_window_scaling.h"
#include "shell/interface_scale.h"
#include "shell/localized_text.h"
#include "shell/log_categories.h"
#include "shell/settings_editor.h"
#include "shell/settings_transfer.h"
#include "shell/settings_transfer_document.h"
#include "shell/ui_language_manager.h"
#include "ui/audio_output_page.h"
#include "ui/controller_shortcuts.h"
#include "ui/playlist_panel.h"
#include "ui/program_panel.h"
#include "ui/settings_window.h"

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

// The settings the running parts take up while running, one at a time
// (applyRuntimeSetting).
constexpr const char *kRuntimeSettingKeys[] = {
    "onAir/allowSameItemRetake", "playlist/autoSelectNextItemAfterOnAir", "playlist/preferAudioAlbumArt",
    "player/backgroundColor",    "onAir/showPlaybackRateControls",         "audio/showBgmPlayerControls",
    "onAir/disableFtbButton",    "time/remainingTotal",                    "playlist/editActivationMode",
    "time/timeZone",             "appearance/controllerSkin",              "accessibility/textSize",
};

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
    for (const char *key : kRuntimeSettingKeys)
        applyRuntimeSetting(QLatin1String(key), settings.value(QLatin1String(key)));
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
    if (auto *page = settingsWindow ? settingsWindow->findChild<AudioOutputPage *>() : nullptr)
        page->setSaved(program, pfl, flag("audio/useDefaultWhenMissing"));
    // An open settings window shows what was restored.
    if (settingsWindow && settingsWindow->isVisible() && settingsEditor)
        settingsEditor->load();
    if (shortcuts) {
        // The restore checked the bindings with the same rules; a refusal
        // here would mean the two disagree.
        const QString offence = shortcuts->applyBindings(settings.value(QStringLiteral("shortcuts/bindings")).toObject());
        if (!offence.isEmpty())
            qCWarning(lcSystem).noquote() << "Restored shortcut bindings not applied:" << offence;
    }
    qCInfo(lcSystem).noquote() << "Restored settings applied to the running parts";
}

void MainController::Impl::applyRuntimeSetting(const QString &key, const QJsonValue &value)
{
    if (key == QLatin1String("onAir/allowSameItemRetake")) {
        if (programPlayout)
            programPlayout->setAllowSameItemRetake(value.toBool());
    } else if (key == QLatin1String("playlist/autoSelectNextItemAfterOnAir")) {
        if (programPlayout)
            programPlayout->setAutoSelectNextItem(value.toBool());
    } else if (key == QLatin1String("playlist/preferAudioAlbumArt")) {
        if (thumbnails)
            thumbnails->audioThumbnailPreferenceChanged(value.toBool());
    } else if (key == QLatin1String("player/backgroundColor")) {
        const QColor background(value.toString());
        if (dualDeckPlayer && dualDeckPlayer->compositor() && background.isValid())
            dualDeckPlayer->compositor()->setBackground(background.rgb());
        if (programPanel)
            programPanel->setBackgroundColor(background.isValid() ? background : QColor(Qt::black));
    } else if (key == QLatin1String("onAir/showPlaybackRateControls")) {
        if (programPanel)
            programPanel->setPlaybackRateControlsShown(value.toBool());
    } else if (key == QLatin1String("audio/showBgmPlayerControls")) {
        if (programPanel)
            programPanel->setBgmControlsShown(value.toBool());
    } else if (key == QLatin1String("onAir/disableFtbButton")) {
        if (programPanel)
            programPanel->setFtbButtonDisabled(value.toBool());
    } else if (key == QLatin1String("time/remainingTotal")) {
        if (programPanel)
            programPanel->setRemainingTotalMode(value.toBool());
    } else if (key == QLatin1String("playlist/editActivationMode")) {
        if (playlistPanel)
            playlistPanel->setEditActivation(value.toInt() == 1 ? PlaylistPanel::EditActivation::Button
                                                                : PlaylistPanel::EditActivation::Selection);
    } else if (key == QLatin1String("time/timeZone")) {
        if (playlistPanel)
            playlistPanel->setTimeZone(value.toString());
    } else if (key == QLatin1String("appearance/controllerSkin")) {
        // A restore carries a known skin or none; an unknown one keeps the look.
        const QString skin = value.toString();
        if (findControllerSkin(skin) && skin != currentControllerSkin()) {
            QString error;
            if (!applyControllerSkin(skin, &error))
                qCWarning(lcSystem).noquote() << error;
        }
    } else if (key == QLatin1String("accessibility/textSize")) {
        const int before = textSizeStep();
        setTextSizeStep(value.toInt());
        if (textSizeStep() != before)
            applyInterfaceScaleChange();
    }
}

// ---- The settings window ------------------------------------------------

bool MainController::Impl::openSettingsWindow()
{
    if (!controllerWindow || shutDown)
        return false;
    if (!settingsWindow) {
        settingsEditor = new SettingsEditor(backgroundIoQueue.get(), &shortcuts::validateBindings, widgetContext.get());
        AudioOutputPage *audioPage = audioOutputs ? new AudioOutputPage : nullptr;
        auto *window = new SettingsWindow(settingsEditor.data(), audioPage, controllerWindow);
        if (audioPage) {
            // The same page as the Audio Outputs dialog's, and the same way
            // to save and apply the operator's choice.
            AudioOutputDeviceMonitor *monitor = audioOutputs->monitor();
            auto showDevices = [audioPage, monitor] { audioPage->setDevices(monitor->devices(), monitor->defaultDeviceId()); };
            QObject::connect(monitor, &AudioOutputDeviceMonitor::devicesChanged, audioPage, showDevices);
            QObject::connect(monitor, &AudioOutputDeviceMonitor::refreshed, audioPage, [this, audioPage] {
                ProgramAudioOutput *output = dualDeckPlayer ? dualDeckPlayer->audioOutput() : nullptr;
                audioPage->setCurrentProgram(
                    output ? output->activeDevice() : QString(),
                    output ? LocalizedText(output->statusKey(), {}, ProgramAudioOutput::statusText(output->statusKey()))
                                 .toString()
                           : QString());
            });
            QObject::connect(audioPage, &AudioOutputPage::refreshRequested, audioOutputs.get(),
                             &AudioOutputCoordinator::refresh);
            QObject::connect(audioPage, &AudioOutputPage::applyRequested, audioPage,
                             [this, audioPage](const QString &program, const QString &pfl, bool useDefault) {
                                 applyAudioOutputs(program, pfl, useDefault);
                                 audioPage->setSaved(program, pfl, useDefault);
                             });
            QObject::connect(settingsEditor.data(), &SettingsEditor::loaded, audioPage, [audioPage](const QJsonObject &values) {
                audioPage->setSaved(values.value(QStringLiteral("audio/programOutputDeviceId")).toString(),
                                    values.value(QStringLiteral("audio/editPflOutputDeviceId")).toString(),
                                    values.value(QStringLiteral("audio/useDefaultWhenMissing")).toBool());
            });
            showDevices();
        }
        settingsWindow = window;
        // After the window's own connection, so that what the head adds to a
        // field's message line (the language's change) is not cleared by
        // the window showing the saved value; both run in the same turn.
        QObject::connect(settingsEditor.data(), &SettingsEditor::changed, widgetContext.get(),
                         [this](const QString &key, const QJsonValue &value) { applyChangedSetting(key, value); });
        // A language or a skin that could not be saved still serves this
        // session.
        QObject::connect(settingsEditor.data(), &SettingsEditor::saveFailed, widgetContext.get(),
                         [this](const QString &key, const QJsonValue &value) {
                             if (key == QLatin1String("appearance/controllerSkin")) {
                                 applyRuntimeSetting(key, value);
                                 if (settingsWindow)
                                     settingsWindow->showMessage(key, localized("settings.skin.save_failed"));
                                 return;
                             }
                             if (key != QLatin1String("ui/language") || !languageManager)
                                 return;
                             if (languageManager->setLanguage(value.toString()) && settingsWindow)
                                 settingsWindow->showMessage(key, localized("settings.language.save_failed"));
                         });
    }
    if (!settingsWindow->isVisible() && audioOutputs)
        audioOutputs->refresh();
    settingsWindow->open();
    return true;
}

// What the settings window saved, taken up as a restored setting is.
void MainController::Impl::applyChangedSetting(const QString &key, const QJsonValue &value)
{
    qCInfo(lcSystem).noquote() << "Setting changed in the settings window:" << key;
    if (key == QLatin1String("ui/language")) {
        if (!languageManager || value.toString() == languageManager->currentLanguage())
            return;
        QString error;
        const bool changed = languageManager->setLanguage(value.toString(), &error);
        if (settingsWindow) {
            const QString name = [&value] {
                for (const UiLanguage &language : UiLanguageManager::languages())
                    if (language.key == value.toString())
                        return language.name;
                return value.toString();
            }();
            settingsWindow->showMessage(
                key,
                changed ? LocalizedText(QStringLiteral("settings.language.changed"), {name}).toString()
                        : LocalizedText(QStringLiteral("settings.language.change_failed"), {error}).toString(),
                !changed);
        }
        return;
    }
    if (key == QLatin1String("shortcuts/bindings")) {
        if (shortcuts) {
            const QString offence = shortcuts->applyBindings(value.toObject());
            if (!offence.isEmpty())
                qCWarning(lcSystem).noquote() << "Saved shortcut bindings not applied:" << offence;
        }
        return;
    }
    applyRuntimeSetting(key, value);
}

} // namespace tarnix
