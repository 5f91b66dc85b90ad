// The audio, playlist, files, outputs and control pages: where things go
// and how the playlist behaves.

#include "ui/settings_form.h"
#include "ui/settings_pages.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QLineEdit>
#include <QWidget>

namespace tarnix {

namespace {

QWidget *page(const char *objectName)
{
    auto *widget = new QWidget;
    widget->setObjectName(QString::fromLatin1(objectName));
    return widget;
}

} // namespace

QWidget *buildAudioPage(SettingsForm &form, QWidget *audioOutputs)
{
    QWidget *audio = page("settingsAudioPage");
    QFormLayout *rows = form.addPage(audio);
    if (audioOutputs)
        rows->addRow(audioOutputs);
    form.addCheck(rows, QStringLiteral("audio/showBgmPlayerControls"), "settings.audio.bgm_controls",
                  "Show the BGM player controls", "settingsBgmControlsCheckBox");
    return audio;
}

QWidget *buildPlaylistPage(SettingsForm &form)
{
    QWidget *playlist = page("settingsPlaylistPage");
    QFormLayout *rows = form.addPage(playlist);
    form.addChoice(rows, QStringLiteral("playlist/editActivationMode"), "settings.playlist.edit_activation",
                   "Load into EDIT",
                   {{"settings.playlist.edit_activation.selection", "When an item is selected", 0},
                    {"settings.playlist.edit_activation.button", "When the EDIT button is pressed", 1}},
                   "settingsEditActivationCombo");
    form.addChoice(rows, QStringLiteral("playlist/preferAudioAlbumArt"), "settings.playlist.audio_thumbnails",
                   "Audio file thumbnails",
                   {{"settings.playlist.audio_thumbnails.waveform", "Waveform", false},
                    {"settings.playlist.audio_thumbnails.album_art", "Album art (waveform if unavailable)", true}},
                   "settingsAudioThumbnailsCombo");
    return playlist;
}

QWidget *buildFilesPage(SettingsForm &form)
{
    QWidget *files = page("settingsFilesPage");
    QFormLayout *rows = form.addPage(files);
    form.addText(rows, QStringLiteral("files/stillCaptureDirectory"), "settings.files.still_capture",
                 "Folder for captured stills", "settingsStillCaptureDirectoryEdit");
    form.addText(rows, QStringLiteral("files/documentConversionDirectory"), "settings.files.document_conversion",
                 "Folder for converted documents", "settingsDocumentConversionDirectoryEdit");
    return files;
}

QWidget *buildOutputsPage(SettingsForm &form)
{
    QWidget *outputs = page("settingsOutputsPage");
    QFormLayout *rows = form.addPage(outputs);
    form.addCheck(rows, QStringLiteral("video/programOutput4k"), "settings.outputs.program_4k",
                  "Program output at 3840 x 2160", "settingsProgramOutput4kCheckBox");
    form.addCheck(rows, QStringLiteral("video/softwareDecoding"), "settings.outputs.software_decoding",
                  "Decode video in software only", "settingsSoftwareDecodingCheckBox");
    form.addNote(rows, "settings.outputs.next_start_note", "The program output settings take effect at the next start.");
    return outputs;
}

QWidget *buildControlPage(SettingsForm &form)
{
    QWidget *control = page("settingsControlPage");
    QFormLayout *rows = form.addPage(control);
    form.addText(rows, QStringLiteral("control/socketPath"), "settings.control.socket_path", "Control socket path",
                 "settingsControlSocketPathEdit");
    form.addNote(rows, "settings.control.socket_path_note",
                 "Empty: no control socket. A change takes effect at the next start.");
    return control;
}

} // namespace tarnix
