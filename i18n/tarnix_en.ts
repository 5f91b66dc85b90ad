<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en_GB" sourcelanguage="en_GB">
<context>
    <name></name>
    <message id="application.description">
        <source>TARNIX live-production playout</source>
        <translation>TARNIX live-production playout</translation>
    </message>
    <message id="application.option.program_output_4k">
        <source>Output the program picture at 3840 x 2160 for this run.</source>
        <translation>Output the program picture at 3840 x 2160 for this run.</translation>
    </message>
    <message id="window.player.title">
        <source>TARNIX Program</source>
        <translation>TARNIX Program</translation>
    </message>
    <message id="window.controller.title">
        <source>TARNIX Controller</source>
        <translation>TARNIX Controller</translation>
    </message>
    <message id="settings.addons.title">
        <source>Add-ons</source>
        <translation>Add-ons</translation>
    </message>
    <message id="settings.addons.restart_failed">
        <source>The add-on changes could not be completed: %1</source>
        <translation>The add-on changes could not be completed: %1</translation>
    </message>
    <message id="settings.addons.startup_resuming">
        <source>Add-on changes are being completed. TARNIX will start again when they are done.</source>
        <translation>Add-on changes are being completed. TARNIX will start again when they are done.</translation>
    </message>
    <message id="startup.gstreamer_runtime_missing">
        <source>The GStreamer runtime could not be found.</source>
        <translation>The GStreamer runtime could not be found.</translation>
    </message>
    <message id="startup.playbin_creation_failed">
        <source>Could not create the GStreamer playbin.</source>
        <translation>Could not create the GStreamer playbin.</translation>
    </message>
    <message id="startup.audio_outputs_missing">
        <source>ON AIR and PFL audio devices not found.</source>
        <translation>ON AIR and PFL audio devices not found.</translation>
    </message>
    <message id="startup.program_output_missing">
        <source>ON AIR audio device not found.</source>
        <translation>ON AIR audio device not found.</translation>
    </message>
    <message id="startup.pfl_output_missing">
        <source>PFL audio device not found.</source>
        <translation>PFL audio device not found.</translation>
    </message>
    <message id="menu.file">
        <source>File</source>
        <translation>File</translation>
    </message>
    <message id="menu.file.export_playlist">
        <source>Export Playlist...</source>
        <translation>Export Playlist...</translation>
    </message>
    <message id="menu.file.import_playlist">
        <source>Import Playlist...</source>
        <translation>Import Playlist...</translation>
    </message>
    <message id="menu.file.restore_previous_session">
        <source>Restore Previous Session</source>
        <translation>Restore Previous Session</translation>
    </message>
    <message id="menu.file.exit">
        <source>Exit</source>
        <translation>Exit</translation>
    </message>
    <message id="menu.on_air">
        <source>On Air</source>
        <translation>On Air</translation>
    </message>
    <message id="menu.on_air.TakeOnAir">
        <source>Take ON AIR</source>
        <translation>Take ON AIR</translation>
    </message>
    <message id="menu.on_air.OffAir">
        <source>OFF AIR</source>
        <translation>OFF AIR</translation>
    </message>
    <message id="menu.on_air.ToggleFtb">
        <source>Fade to Black</source>
        <translation>Fade to Black</translation>
    </message>
    <message id="menu.on_air.ToggleOnAirPlayback">
        <source>Play / Pause ON AIR</source>
        <translation>Play / Pause ON AIR</translation>
    </message>
    <message id="menu.on_air.MasterFadeIn">
        <source>Master Fade In</source>
        <translation>Master Fade In</translation>
    </message>
    <message id="menu.on_air.MasterFadeOut">
        <source>Master Fade Out</source>
        <translation>Master Fade Out</translation>
    </message>
    <message id="menu.on_air.ItemFadeIn">
        <source>Item Fade In</source>
        <translation>Item Fade In</translation>
    </message>
    <message id="menu.on_air.ItemFadeOut">
        <source>Item Fade Out</source>
        <translation>Item Fade Out</translation>
    </message>
    <message id="menu.on_air.BgmFadeIn">
        <source>BGM Fade In</source>
        <translation>BGM Fade In</translation>
    </message>
    <message id="menu.on_air.BgmFadeOut">
        <source>BGM Fade Out</source>
        <translation>BGM Fade Out</translation>
    </message>
    <message id="menu.on_air.ToggleDsk">
        <source>DSK On / Off</source>
        <translation>DSK On / Off</translation>
    </message>
    <message id="menu.help">
        <source>Help</source>
        <translation>Help</translation>
    </message>
    <message id="file_dialog.export_playlist.title">
        <source>Export Playlist</source>
        <translation>Export Playlist</translation>
    </message>
    <message id="file_dialog.import_playlist.title">
        <source>Import Playlist</source>
        <translation>Import Playlist</translation>
    </message>
    <message id="menu.file.add_files">
        <source>Add Files...</source>
        <translation>Add Files...</translation>
    </message>
    <message id="file_dialog.add_files.title">
        <source>Add Files to Playlist</source>
        <translation>Add Files to Playlist</translation>
    </message>
    <message id="file_dialog.media.filter_without_documents">
        <source>Media Files (*.mp4 *.mov *.webm *.mkv *.avi *.mxf *.wav *.mp3 *.flac *.m4a *.aac *.png *.jpg *.jpeg *.bmp *.tif *.tiff *.webp *.gif);;All Files (*)</source>
        <translation>Media Files (*.mp4 *.mov *.webm *.mkv *.avi *.mxf *.wav *.mp3 *.flac *.m4a *.aac *.png *.jpg *.jpeg *.bmp *.tif *.tiff *.webp *.gif);;All Files (*)</translation>
    </message>
    <message id="image_add.title">
        <source>Add Image</source>
        <translation>Add Image</translation>
    </message>
    <message id="image_add.file">
        <source>File: %1</source>
        <translation>File: %1</translation>
    </message>
    <message id="image_add.duration">
        <source>Display duration:</source>
        <translation>Display duration:</translation>
    </message>
    <message id="image_add.remember">
        <source>Remember this display duration for this session</source>
        <translation>Remember this display duration for this session</translation>
    </message>
    <message id="file_dialog.playlist.filter">
        <source>TARNIX Playlist (*.json);;All Files (*.*)</source>
        <translation>TARNIX Playlist (*.json);;All Files (*.*)</translation>
    </message>
    <message id="playlist.export.succeeded">
        <source>Exported %1 playlist(s) and %2 item(s).</source>
        <translation>Exported %1 playlist(s) and %2 item(s).</translation>
    </message>
    <message id="playlist.export.failed">
        <source>Playlist export failed.</source>
        <translation>Playlist export failed.</translation>
    </message>
    <message id="playlist.import.succeeded">
        <source>Imported %1 playlist(s) and %2 item(s).</source>
        <translation>Imported %1 playlist(s) and %2 item(s).</translation>
    </message>
    <message id="playlist.import.failed">
        <source>Playlist import failed.</source>
        <translation>Playlist import failed.</translation>
    </message>
    <message id="playlist.restore_previous.failed">
        <source>Previous session restore failed.</source>
        <translation>Previous session restore failed.</translation>
    </message>
    <message id="playlist.restore_previous.playout_active">
        <source>Turn OFF AIR, turn DSK off, and stop BGM before restoring the previous session.</source>
        <translation>Turn OFF AIR, turn DSK off, and stop BGM before restoring the previous session.</translation>
    </message>
    <message id="playlist.restore_previous.succeeded">
        <source>Restored %1 playlist(s) and %2 item(s) from the previous session.</source>
        <translation>Restored %1 playlist(s) and %2 item(s) from the previous session.</translation>
    </message>
    <message id="playlist.bulk.failed">
        <source>Could not apply the playlist bulk operation.</source>
        <translation>Could not apply the playlist bulk operation.</translation>
    </message>
    <message id="playlist.bulk.bgm_active">
        <source>Stop BGM before changing or clearing its playlist mode.</source>
        <translation>Stop BGM before changing or clearing its playlist mode.</translation>
    </message>
    <message id="playlist.bulk.undo.playout_active">
        <source>Turn OFF AIR, turn DSK off, and stop BGM before undoing a playlist bulk operation.</source>
        <translation>Turn OFF AIR, turn DSK off, and stop BGM before undoing a playlist bulk operation.</translation>
    </message>
    <message id="logs.show">
        <source>Show Log</source>
        <translation>Show Log</translation>
    </message>
    <message id="logs.debug">
        <source>Debug Mode</source>
        <translation>Debug Mode</translation>
    </message>
    <message id="logs.search">
        <source>Search the log</source>
        <translation>Search the log</translation>
    </message>
    <message id="logs.all">
        <source>All</source>
        <translation>All</translation>
    </message>
    <message id="logs.warnings">
        <source>Warnings / Errors</source>
        <translation>Warnings / Errors</translation>
    </message>
    <message id="logs.follow">
        <source>Live update</source>
        <translation>Live update</translation>
    </message>
    <message id="logs.save">
        <source>Save Displayed Log</source>
        <translation>Save Displayed Log</translation>
    </message>
    <message id="logs.folder">
        <source>Open Log Folder</source>
        <translation>Open Log Folder</translation>
    </message>
    <message id="logs.failed">
        <source>Log save/open failed: %1</source>
        <translation>Log save/open failed: %1</translation>
    </message>
    <message id="logs.retention">
        <source>Latest 2,000 records shown. Automatic logs: %1 (10 MB × 10 files).</source>
        <translation>Latest 2,000 records shown. Automatic logs: %1 (10 MB × 10 files).</translation>
    </message>
    <message id="logs.saved">
        <source>Saved: %1</source>
        <translation>Saved: %1</translation>
    </message>
    <message id="info.severity.success">
        <source>Success</source>
        <translation>Success</translation>
    </message>
    <message id="info.severity.warning">
        <source>Warning</source>
        <translation>Warning</translation>
    </message>
    <message id="info.severity.error">
        <source>Error</source>
        <translation>Error</translation>
    </message>
    <message id="info.source.system">
        <source>System</source>
        <translation>System</translation>
    </message>
    <message id="info.source.playlist">
        <source>Playlist</source>
        <translation>Playlist</translation>
    </message>
    <message id="info.source.program">
        <source>Program</source>
        <translation>Program</translation>
    </message>
    <message id="info.source.edit">
        <source>EDIT</source>
        <translation>EDIT</translation>
    </message>
    <message id="info.source.uvc">
        <source>UVC</source>
        <translation>UVC</translation>
    </message>
    <message id="info.action.audio_settings">
        <source>Open audio device settings</source>
        <translation>Open audio device settings</translation>
    </message>
    <message id="info.accessible.summary">
        <source>User information: %1, %2, %3</source>
        <translation>User information: %1, %2, %3</translation>
    </message>
    <message id="edit.pfl.same_device_confirm">
        <source>EDIT monitoring (PFL) would use the same audio device as ON AIR. Use it anyway?</source>
        <translation>EDIT monitoring (PFL) would use the same audio device as ON AIR. Use it anyway?</translation>
    </message>
    <message id="settings.language.load_failed">
        <source>Could not load the language pack: %1</source>
        <translation>Could not load the language pack: %1</translation>
    </message>
    <message id="settings.language.save_failed">
        <source>The language was changed for this session, but the preference could not be saved.</source>
        <translation>The language was changed for this session, but the preference could not be saved.</translation>
    </message>
    <message id="settings.language.unknown">
        <source>Unknown display language.</source>
        <translation>Unknown display language.</translation>
    </message>
    <message id="settings.language.change_failed">
        <source>The language could not be changed: %1</source>
        <translation>The language could not be changed: %1</translation>
    </message>
    <message id="settings.language.changed">
        <source>Language changed to %1.</source>
        <translation>Language changed to %1.</translation>
    </message>
    <message id="program.error.gstreamer_playback">
        <source>ON AIR playback error: %1</source>
        <translation>ON AIR playback error: %1</translation>
    </message>
    <message id="program.warning.audio_output_changing">
        <source>The program audio output is changing. Try again.</source>
        <translation>The program audio output is changing. Try again.</translation>
    </message>
    <message id="program.warning.audio_output_unavailable">
        <source>The program audio output is unavailable.</source>
        <translation>The program audio output is unavailable.</translation>
    </message>
    <message id="program.warning.bgm_mode_on_air">
        <source>Items of a BGM playlist play on the BGM player, not ON AIR.</source>
        <translation>Items of a BGM playlist play on the BGM player, not ON AIR.</translation>
    </message>
    <message id="program.warning.delete_bgm">
        <source>The item playing on the BGM player cannot be deleted.</source>
        <translation>The item playing on the BGM player cannot be deleted.</translation>
    </message>
    <message id="input.audio.error">
        <source>Live audio input error: %1</source>
        <translation>Live audio input error: %1</translation>
    </message>
    <message id="powerpoint.import.native_on_air">
        <source>A PowerPoint slide show is ON AIR. Take it OFF AIR before converting a presentation.</source>
        <translation>A PowerPoint slide show is ON AIR. Take it OFF AIR before converting a presentation.</translation>
    </message>
    <message id="powerpoint.import.release_cue_failed">
        <source>The standby player could not release its PowerPoint slide show for the conversion.</source>
        <translation>The standby player could not release its PowerPoint slide show for the conversion.</translation>
    </message>
    <message id="playlist.bulk.pending_imports">
        <source>Wait for media analysis and document imports to finish before applying a playlist bulk operation.</source>
        <translation>Wait for media analysis and document imports to finish before applying a playlist bulk operation.</translation>
    </message>
    <message id="playlist.add_media.some_failed">
        <source>Some files could not be added.</source>
        <translation>Some files could not be added.</translation>
    </message>
    <message id="playlist.add_media.document_not_yet">
        <source>%1: This document type cannot be added yet.</source>
        <translation>%1: This document type cannot be added yet.</translation>
    </message>
    <message id="playlist.add_media.not_queued">
        <source>%1: The media item could not be queued.</source>
        <translation>%1: The media item could not be queued.</translation>
    </message>
    <message id="playlist.default_name">
        <source>Playlist %1</source>
        <translation>Playlist %1</translation>
    </message>
</context>
</TS>
