#pragma once

class QWidget;

namespace tarnix {

class SettingsForm;

// The pages of the settings window, each a widget whose controls the form
// binds to their keys. Named "settings<Name>Page" for the skins.
QWidget *buildGeneralPage(SettingsForm &form);
QWidget *buildOnAirPage(SettingsForm &form);
// `audioOutputs`, when given, is the audio output page, placed on top.
QWidget *buildAudioPage(SettingsForm &form, QWidget *audioOutputs);
QWidget *buildPlaylistPage(SettingsForm &form);
QWidget *buildFilesPage(SettingsForm &form);
QWidget *buildOutputsPage(SettingsForm &form);
QWidget *buildControlPage(SettingsForm &form);

} // namespace tarnix
