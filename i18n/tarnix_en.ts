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
        <source>PFL audio will be sent to the on-air output. Are you sure you want to play it?</source>
        <translation>PFL audio will be sent to the on-air output. Are you sure you want to play it?</translation>
    </message>
    <message id="settings.language.load_failed">
        <source>Could not load the language pack: %1</source>
        <translation>Could not load the language pack: %1</translation>
    </message>
    <message id="settings.language.save_failed">
        <source>The language was changed for this session, but the preference could not be saved.</source>
        <translation>The language was changed for this session, but the preference could not be saved.</translation>
    </message>
    <message id="settings.skin.save_failed">
        <source>Could not save the Controller skin setting.</source>
        <translation>Could not save the Controller skin setting.</translation>
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
    <message id="program.dsk.audio_isolation_failed">
        <source>DSK audio isolation could not be enforced.</source>
        <translation>DSK audio isolation could not be enforced.</translation>
    </message>
    <message id="program.warning.bgm_mode_dsk">
        <source>Items of a BGM playlist play on the BGM player, not in DSK.</source>
        <translation>Items of a BGM playlist play on the BGM player, not in DSK.</translation>
    </message>
    <message id="program.dsk.invalid_item">
        <source>Select a valid playlist item to send to DSK.</source>
        <translation>Select a valid playlist item to send to DSK.</translation>
    </message>
    <message id="program.dsk.invalid_range">
        <source>The DSK In or Out point is invalid.</source>
        <translation>The DSK In or Out point is invalid.</translation>
    </message>
    <message id="program.dsk.still_stopping">
        <source>The previous DSK source is still stopping.</source>
        <translation>The previous DSK source is still stopping.</translation>
    </message>
    <message id="program.dsk.stop_failed">
        <source>Could not stop the DSK pipeline.</source>
        <translation>Could not stop the DSK pipeline.</translation>
    </message>
    <message id="program.dsk.prepare_failed">
        <source>Could not prepare the DSK item.</source>
        <translation>Could not prepare the DSK item.</translation>
    </message>
    <message id="program.dsk.media_offline">
        <source>Media offline: the file is missing or did not respond in time.</source>
        <translation>Media offline: the file is missing or did not respond in time.</translation>
    </message>
    <message id="program.dsk.cancelled">
        <source>Media preparation was cancelled.</source>
        <translation>Media preparation was cancelled.</translation>
    </message>
    <message id="program.dsk.no_video">
        <source>No playable video stream was found in the DSK item.</source>
        <translation>No playable video stream was found in the DSK item.</translation>
    </message>
    <message id="program.dsk.no_frame">
        <source>No DSK frame arrived before the preparation deadline.</source>
        <translation>No DSK frame arrived before the preparation deadline.</translation>
    </message>
    <message id="program.dsk.display_failed">
        <source>Could not display DSK.</source>
        <translation>Could not display DSK.</translation>
    </message>
    <message id="program.dsk.off_failed">
        <source>Could not turn DSK off.</source>
        <translation>Could not turn DSK off.</translation>
    </message>
    <message id="program.dsk.pause_failed">
        <source>Could not pause the DSK media.</source>
        <translation>Could not pause the DSK media.</translation>
    </message>
    <message id="program.dsk.play_failed">
        <source>Could not play the DSK media.</source>
        <translation>Could not play the DSK media.</translation>
    </message>
    <message id="program.dsk.end_mode_stop_failed">
        <source>Could not execute DSK End Mode &quot;Stop&quot;.</source>
        <translation>Could not execute DSK End Mode &quot;Stop&quot;.</translation>
    </message>
    <message id="program.dsk.end_mode_pause_failed">
        <source>Could not execute DSK End Mode &quot;Pause&quot;.</source>
        <translation>Could not execute DSK End Mode &quot;Pause&quot;.</translation>
    </message>
    <message id="program.dsk.end_mode_repeat_failed">
        <source>Could not execute DSK End Mode &quot;Repeat&quot;.</source>
        <translation>Could not execute DSK End Mode &quot;Repeat&quot;.</translation>
    </message>
    <message id="program.dsk.end_mode_next_failed">
        <source>Could not execute DSK End Mode &quot;Next&quot;.</source>
        <translation>Could not execute DSK End Mode &quot;Next&quot;.</translation>
    </message>
    <message id="program.dsk.end_mode_goto_failed">
        <source>Could not execute DSK End Mode &quot;GOTO&quot;.</source>
        <translation>Could not execute DSK End Mode &quot;GOTO&quot;.</translation>
    </message>
    <message id="program.dsk.no_next">
        <source>No eligible next DSK playlist item is available.</source>
        <translation>No eligible next DSK playlist item is available.</translation>
    </message>
    <message id="program.dsk.no_goto">
        <source>No eligible DSK GOTO destination is selected or available.</source>
        <translation>No eligible DSK GOTO destination is selected or available.</translation>
    </message>
    <message id="program.dsk.return_failed">
        <source>Could not return the DSK media to its In point.</source>
        <translation>Could not return the DSK media to its In point.</translation>
    </message>
    <message id="program.dsk.repeat_failed">
        <source>Could not start repeated DSK playback.</source>
        <translation>Could not start repeated DSK playback.</translation>
    </message>
    <message id="program.dsk.stop_at_in_failed">
        <source>Could not stop the DSK media at its In point.</source>
        <translation>Could not stop the DSK media at its In point.</translation>
    </message>
    <message id="program.dsk.composition_failed">
        <source>GPU composition of the DSK frame failed. Base video will continue.</source>
        <translation>GPU composition of the DSK frame failed. Base video will continue.</translation>
    </message>
    <message id="program.dsk.frame_display_failed">
        <source>Could not display the DSK GPU frame.</source>
        <translation>Could not display the DSK GPU frame.</translation>
    </message>
    <message id="program.dsk.frames_failed">
        <source>Could not retrieve video frames from the DSK media.</source>
        <translation>Could not retrieve video frames from the DSK media.</translation>
    </message>
    <message id="program.dsk.playback_failed">
        <source>DSK playback failed.</source>
        <translation>DSK playback failed.</translation>
    </message>
    <message id="program.dsk.preparing_tooltip">
        <source>Preparing DSK: %1 (click to queue ON)</source>
        <translation>Preparing DSK: %1 (click to queue ON)</translation>
    </message>
    <message id="program.dsk.preparing_accessible">
        <source>DSK is preparing; press to turn on when ready</source>
        <translation>DSK is preparing; press to turn on when ready</translation>
    </message>
    <message id="program.dsk.queued_tooltip">
        <source>DSK ON queued: %1 (click to cancel)</source>
        <translation>DSK ON queued: %1 (click to cancel)</translation>
    </message>
    <message id="program.dsk.queued_accessible">
        <source>DSK is preparing to turn on; press to cancel</source>
        <translation>DSK is preparing to turn on; press to cancel</translation>
    </message>
    <message id="program.dsk.off_tooltip">
        <source>Turn DSK off and return it to the In point</source>
        <translation>Turn DSK off and return it to the In point</translation>
    </message>
    <message id="program.dsk.on_accessible">
        <source>DSK is active; press to turn off</source>
        <translation>DSK is active; press to turn off</translation>
    </message>
    <message id="program.dsk.error_tooltip">
        <source>DSK error: %1</source>
        <translation>DSK error: %1</translation>
    </message>
    <message id="program.dsk.retry_accessible">
        <source>DSK error: %1; press to retry with the selected item</source>
        <translation>DSK error: %1; press to retry with the selected item</translation>
    </message>
    <message id="program.dsk.select_accessible">
        <source>DSK error: %1; select a valid playlist item</source>
        <translation>DSK error: %1; select a valid playlist item</translation>
    </message>
    <message id="program.dsk.send_tooltip">
        <source>Send the selected playlist item to DSK</source>
        <translation>Send the selected playlist item to DSK</translation>
    </message>
    <message id="program.dsk.inactive_ready_accessible">
        <source>DSK is inactive; press to show the selected item</source>
        <translation>DSK is inactive; press to show the selected item</translation>
    </message>
    <message id="program.warning.item_in_dsk">
        <source>An item in DSK cannot be taken ON AIR.</source>
        <translation>An item in DSK cannot be taken ON AIR.</translation>
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
    <message id="media.generating">
        <source>Generating…</source>
        <translation>Generating…</translation>
    </message>
    <message id="menu.playlist">
        <source>Playlist</source>
        <translation>Playlist</translation>
    </message>
    <message id="playlist.add_tab.tooltip">
        <source>Add a new playlist</source>
        <translation>Add a new playlist</translation>
    </message>
    <message id="playlist.analysis.analyzing">
        <source>Analyzing media…</source>
        <translation>Analyzing media…</translation>
    </message>
    <message id="playlist.analysis.waiting">
        <source>Waiting to analyze…</source>
        <translation>Waiting to analyze…</translation>
    </message>
    <message id="playlist.bulk.apply">
        <source>APPLY</source>
        <translation>APPLY</translation>
    </message>
    <message id="playlist.bulk.bgm_mode">
        <source>Set BGM Mode</source>
        <translation>Set BGM Mode</translation>
    </message>
    <message id="playlist.bulk.clear">
        <source>Clear Playlist</source>
        <translation>Clear Playlist</translation>
    </message>
    <message id="playlist.bulk.delete">
        <source>Delete Playlist</source>
        <translation>Delete Playlist</translation>
    </message>
    <message id="playlist.bulk.play_once">
        <source>Play List Once</source>
        <translation>Play List Once</translation>
    </message>
    <message id="playlist.bulk.repeat_all">
        <source>Repeat All</source>
        <translation>Repeat All</translation>
    </message>
    <message id="playlist.bulk.shuffle">
        <source>Shuffle</source>
        <translation>Shuffle</translation>
    </message>
    <message id="playlist.bulk.standard_mode">
        <source>Clear BGM Mode</source>
        <translation>Clear BGM Mode</translation>
    </message>
    <message id="playlist.bulk.undo">
        <source>Undo</source>
        <translation>Undo</translation>
    </message>
    <message id="playlist.button.add">
        <source>ADD FILES</source>
        <translation>ADD FILES</translation>
    </message>
    <message id="playlist.button.add.tooltip">
        <source>Add media files to this playlist</source>
        <translation>Add media files to this playlist</translation>
    </message>
    <message id="playlist.button.delete">
        <source>DEL</source>
        <translation>DEL</translation>
    </message>
    <message id="playlist.button.delete.tooltip">
        <source>Remove the selected item from the playlist (the source file will not be deleted)</source>
        <translation>Remove the selected item from the playlist (the source file will not be deleted)</translation>
    </message>
    <message id="playlist.button.edit">
        <source>EDIT</source>
        <translation>EDIT</translation>
    </message>
    <message id="playlist.button.edit.tooltip_button">
        <source>Load the selected item into EDIT</source>
        <translation>Load the selected item into EDIT</translation>
    </message>
    <message id="playlist.button.edit.tooltip_selection">
        <source>The selected item is loaded into EDIT when it is selected</source>
        <translation>The selected item is loaded into EDIT when it is selected</translation>
    </message>
    <message id="playlist.button.move_down.tooltip">
        <source>Move the selected item down</source>
        <translation>Move the selected item down</translation>
    </message>
    <message id="playlist.button.move_up.tooltip">
        <source>Move the selected item up</source>
        <translation>Move the selected item up</translation>
    </message>
    <message id="playlist.button.off_air">
        <source>OFF AIR</source>
        <translation>OFF AIR</translation>
    </message>
    <message id="playlist.button.on_air">
        <source>ON AIR</source>
        <translation>ON AIR</translation>
    </message>
    <message id="playlist.button.on_air.tooltip">
        <source>Take the selected item ON AIR; while ON AIR, go OFF AIR</source>
        <translation>Take the selected item ON AIR; while ON AIR, go OFF AIR</translation>
    </message>
    <message id="playlist.color.blue">
        <source>Blue</source>
        <translation>Blue</translation>
    </message>
    <message id="playlist.color.default">
        <source>Default</source>
        <translation>Default</translation>
    </message>
    <message id="playlist.color.green">
        <source>Green</source>
        <translation>Green</translation>
    </message>
    <message id="playlist.color.red">
        <source>Red</source>
        <translation>Red</translation>
    </message>
    <message id="playlist.color.yellow">
        <source>Yellow</source>
        <translation>Yellow</translation>
    </message>
    <message id="playlist.conversion.action_unavailable">
        <source>This item is being analyzed or converted and cannot be used for %1.</source>
        <translation>This item is being analyzed or converted and cannot be used for %1.</translation>
    </message>
    <message id="playlist.conversion.encoding">
        <source>Encoding video…</source>
        <translation>Encoding video…</translation>
    </message>
    <message id="playlist.conversion.exporting">
        <source>Exporting slides…</source>
        <translation>Exporting slides…</translation>
    </message>
    <message id="playlist.conversion.item_status">
        <source>%1 %2%</source>
        <translation>%1 %2%</translation>
    </message>
    <message id="playlist.conversion.preparing">
        <source>Preparing conversion…</source>
        <translation>Preparing conversion…</translation>
    </message>
    <message id="playlist.conversion.rendering">
        <source>Rendering pages…</source>
        <translation>Rendering pages…</translation>
    </message>
    <message id="playlist.conversion.waiting">
        <source>Waiting to convert…</source>
        <translation>Waiting to convert…</translation>
    </message>
    <message id="playlist.crossfade">
        <source>CROSSFADE</source>
        <translation>CROSSFADE</translation>
    </message>
    <message id="playlist.crossfade.duration.tooltip">
        <source>Crossfade duration</source>
        <translation>Crossfade duration</translation>
    </message>
    <message id="playlist.crossfade.step.tooltip">
        <source>Step through common crossfade durations</source>
        <translation>Step through common crossfade durations</translation>
    </message>
    <message id="playlist.crossfade.tooltip">
        <source>Crossfade video using the selected duration when taking the item on air</source>
        <translation>Crossfade video using the selected duration when taking the item on air</translation>
    </message>
    <message id="playlist.current_time.local_tooltip">
        <source>Local clock (%1)</source>
        <translation>Local clock (%1)</translation>
    </message>
    <message id="playlist.current_time.title">
        <source>CURRENT TIME</source>
        <translation>CURRENT TIME</translation>
    </message>
    <message id="playlist.error.cue">
        <source>PREPARATION ERROR</source>
        <translation>PREPARATION ERROR</translation>
    </message>
    <message id="playlist.error.on_air">
        <source>ON AIR ERROR</source>
        <translation>ON AIR ERROR</translation>
    </message>
    <message id="playlist.item.modes">
        <source>Start %1  End %2  Nominal Volume %3</source>
        <translation>Start %1  End %2  Nominal Volume %3</translation>
    </message>
    <message id="playlist.item.points">
        <source>In %1  Out %2</source>
        <translation>In %1  Out %2</translation>
    </message>
    <message id="playlist.item_count">
        <source>%1 ITEMS</source>
        <translation>%1 ITEMS</translation>
    </message>
    <message id="playlist.list.description">
        <source>List view. Click an item to select it and load it into EDIT.</source>
        <translation>List view. Click an item to select it and load it into EDIT.</translation>
    </message>
    <message id="playlist.list.description.button">
        <source>List view. Click an item to select it; EDIT loads it into the EDIT player.</source>
        <translation>List view. Click an item to select it; EDIT loads it into the EDIT player.</translation>
    </message>
    <message id="playlist.list.description.tiles">
        <source>Tile view. Click a tile to take it ON AIR; Ctrl+Click selects and prepares it only.</source>
        <translation>Tile view. Click a tile to take it ON AIR; Ctrl+Click selects and prepares it only.</translation>
    </message>
    <message id="playlist.list.name">
        <source>Playlist items</source>
        <translation>Playlist items</translation>
    </message>
    <message id="playlist.map.column.duration">
        <source>DUR</source>
        <translation>DUR</translation>
    </message>
    <message id="playlist.map.column.end_mode">
        <source>End Mode</source>
        <translation>End Mode</translation>
    </message>
    <message id="playlist.map.column.item">
        <source>Item No.</source>
        <translation>Item No.</translation>
    </message>
    <message id="playlist.map.column.name">
        <source>Item name</source>
        <translation>Item name</translation>
    </message>
    <message id="playlist.map.column.playlist">
        <source>Playlist No.</source>
        <translation>Playlist No.</translation>
    </message>
    <message id="playlist.map.column.sequence">
        <source>Play Sequence No.</source>
        <translation>Play Sequence No.</translation>
    </message>
    <message id="playlist.map.column.start_mode">
        <source>Start Mode</source>
        <translation>Start Mode</translation>
    </message>
    <message id="playlist.map.endpoint">
        <source>Arrival: Playlist %1 / Item %2 — %3</source>
        <translation>Arrival: Playlist %1 / Item %2 — %3</translation>
    </message>
    <message id="playlist.map.note.destination_bgm">
        <source>The destination is in a BGM playlist and cannot continue in ON AIR. Mapping stops here.</source>
        <translation>The destination is in a BGM playlist and cannot continue in ON AIR. Mapping stops here.</translation>
    </message>
    <message id="playlist.map.note.destination_pause">
        <source>The next item's Start Mode is PAUSE. Mapping stops before that item.</source>
        <translation>The next item's Start Mode is PAUSE. Mapping stops before that item.</translation>
    </message>
    <message id="playlist.map.note.destination_unavailable">
        <source>The NEXT or GOTO destination is unavailable. Mapping stops here.</source>
        <translation>The NEXT or GOTO destination is unavailable. Mapping stops here.</translation>
    </message>
    <message id="playlist.map.note.infinite_repeat">
        <source>An infinite repeat was found. Total is unlimited.</source>
        <translation>An infinite repeat was found. Total is unlimited.</translation>
    </message>
    <message id="playlist.map.note.live_or_unknown">
        <source>A LIVE item or an item with unknown duration was found. Total is unlimited.</source>
        <translation>A LIVE item or an item with unknown duration was found. Total is unlimited.</translation>
    </message>
    <message id="playlist.map.note.loop">
        <source>A playback loop was found. Total is unlimited.</source>
        <translation>A playback loop was found. Total is unlimited.</translation>
    </message>
    <message id="playlist.map.note.start_pause">
        <source>The starting item's Start Mode is PAUSE. Mapping stops at this item.</source>
        <translation>The starting item's Start Mode is PAUSE. Mapping stops at this item.</translation>
    </message>
    <message id="playlist.map.title">
        <source>Map</source>
        <translation>Map</translation>
    </message>
    <message id="playlist.map.total">
        <source>Total: %1</source>
        <translation>Total: %1</translation>
    </message>
    <message id="playlist.map.unlimited">
        <source>Unlimited</source>
        <translation>Unlimited</translation>
    </message>
    <message id="playlist.menu.color">
        <source>Item Color</source>
        <translation>Item Color</translation>
    </message>
    <message id="playlist.menu.copy_state">
        <source>Copy State</source>
        <translation>Copy State</translation>
    </message>
    <message id="playlist.menu.crossfade">
        <source>Crossfade</source>
        <translation>Crossfade</translation>
    </message>
    <message id="playlist.menu.end_mode">
        <source>End Mode</source>
        <translation>End Mode</translation>
    </message>
    <message id="playlist.menu.fade_in">
        <source>Fade In</source>
        <translation>Fade In</translation>
    </message>
    <message id="playlist.menu.fade_out">
        <source>Fade Out</source>
        <translation>Fade Out</translation>
    </message>
    <message id="playlist.menu.map">
        <source>Map</source>
        <translation>Map</translation>
    </message>
    <message id="playlist.menu.new_playlist">
        <source>New Playlist</source>
        <translation>New Playlist</translation>
    </message>
    <message id="playlist.menu.paste_state">
        <source>Paste State</source>
        <translation>Paste State</translation>
    </message>
    <message id="playlist.menu.rename">
        <source>Rename Item</source>
        <translation>Rename Item</translation>
    </message>
    <message id="playlist.menu.separator_below">
        <source>Separator Below</source>
        <translation>Separator Below</translation>
    </message>
    <message id="playlist.menu.start_mode">
        <source>Start Mode</source>
        <translation>Start Mode</translation>
    </message>
    <message id="playlist.mode.goto">
        <source>GOTO</source>
        <translation>GOTO</translation>
    </message>
    <message id="playlist.mode.next">
        <source>Next</source>
        <translation>Next</translation>
    </message>
    <message id="playlist.mode.pause">
        <source>Pause</source>
        <translation>Pause</translation>
    </message>
    <message id="playlist.mode.play">
        <source>Play</source>
        <translation>Play</translation>
    </message>
    <message id="playlist.mode.repeat">
        <source>Repeat</source>
        <translation>Repeat</translation>
    </message>
    <message id="playlist.mode.stop">
        <source>Stop</source>
        <translation>Stop</translation>
    </message>
    <message id="playlist.name.placeholder">
        <source>Enter playlist name</source>
        <translation>Enter playlist name</translation>
    </message>
    <message id="playlist.powerpoint.error">
        <source>PPT: ERROR</source>
        <translation>PPT: ERROR</translation>
    </message>
    <message id="playlist.powerpoint.preparing">
        <source>PPT: PREPARING</source>
        <translation>PPT: PREPARING</translation>
    </message>
    <message id="playlist.powerpoint.preparing_detail">
        <source>Preparing the selected PowerPoint. Press ON AIR to take it automatically when preparation finishes.</source>
        <translation>Preparing the selected PowerPoint. Press ON AIR to take it automatically when preparation finishes.</translation>
    </message>
    <message id="playlist.powerpoint.ready">
        <source>PPT: READY</source>
        <translation>PPT: READY</translation>
    </message>
    <message id="playlist.rename.label">
        <source>Display name:</source>
        <translation>Display name:</translation>
    </message>
    <message id="playlist.rename.title">
        <source>Rename Playlist Item</source>
        <translation>Rename Playlist Item</translation>
    </message>
    <message id="playlist.view.list.tooltip">
        <source>List view</source>
        <translation>List view</translation>
    </message>
    <message id="playlist.view.tiles.tooltip">
        <source>Tile view
Click a tile: ON AIR
Ctrl+Click: Select and prepare only</source>
        <translation>Tile view
Click a tile: ON AIR
Ctrl+Click: Select and prepare only</translation>
    </message>
    <message id="audio_fader.master_name">
        <source>ON AIR master volume</source>
        <translation>ON AIR master volume</translation>
    </message>
    <message id="audio_fader.master_description">
        <source>ON AIR master volume: %1 dB</source>
        <translation>ON AIR master volume: %1 dB</translation>
    </message>
    <message id="audio_fader.master_tooltip">
        <source>ON AIR master volume: %1 dB
Double-click to reset to 0 dB</source>
        <translation>ON AIR master volume: %1 dB
Double-click to reset to 0 dB</translation>
    </message>
    <message id="audio_fader.item_name">
        <source>ON AIR item volume</source>
        <translation>ON AIR item volume</translation>
    </message>
    <message id="audio_fader.item_description">
        <source>ON AIR item volume: %1 dB</source>
        <translation>ON AIR item volume: %1 dB</translation>
    </message>
    <message id="audio_fader.item_tooltip">
        <source>ON AIR item volume: %1 dB
Double-click to reset to 0 dB</source>
        <translation>ON AIR item volume: %1 dB
Double-click to reset to 0 dB</translation>
    </message>
    <message id="audio_fader.nominal_name">
        <source>Nominal volume</source>
        <translation>Nominal volume</translation>
    </message>
    <message id="audio_fader.nominal_description">
        <source>Nominal volume of the item: %1 dB</source>
        <translation>Nominal volume of the item: %1 dB</translation>
    </message>
    <message id="audio_fader.nominal_tooltip">
        <source>Nominal volume: %1 dB
Double-click to reset to 0 dB</source>
        <translation>Nominal volume: %1 dB
Double-click to reset to 0 dB</translation>
    </message>
    <message id="equalizer.band_name">
        <source>EQ %1</source>
        <translation>EQ %1</translation>
    </message>
    <message id="equalizer.band_tooltip">
        <source>EQ %1: %2
Drag up or down to adjust</source>
        <translation>EQ %1: %2
Drag up or down to adjust</translation>
    </message>
    <message id="master_eq.title">
        <source>Master EQ</source>
        <translation>Master EQ</translation>
    </message>
    <message id="master_eq.reset">
        <source>Reset to flat</source>
        <translation>Reset to flat</translation>
    </message>
    <message id="audio_delay.frames">
        <source>%1 frames</source>
        <translation>%1 frames</translation>
    </message>
    <message id="audio_delay.tooltip">
        <source>Delays the sound to meet a late picture. One frame is 1/30 s.</source>
        <translation>Delays the sound to meet a late picture. One frame is 1/30 s.</translation>
    </message>
    <message id="audio_delay.decrease">
        <source>Less audio delay</source>
        <translation>Less audio delay</translation>
    </message>
    <message id="audio_delay.increase">
        <source>More audio delay</source>
        <translation>More audio delay</translation>
    </message>
    <message id="common.live">
        <source>LIVE</source>
        <translation>LIVE</translation>
    </message>
    <message id="program.audio.item">
        <source>ITEM</source>
        <translation>ITEM</translation>
    </message>
    <message id="program.audio.master">
        <source>MASTER</source>
        <translation>MASTER</translation>
    </message>
    <message id="program.background.black">
        <source>Black</source>
        <translation>Black</translation>
    </message>
    <message id="program.background.blue">
        <source>Blue</source>
        <translation>Blue</translation>
    </message>
    <message id="program.background.green">
        <source>Green</source>
        <translation>Green</translation>
    </message>
    <message id="program.background.grey">
        <source>Grey</source>
        <translation>Grey</translation>
    </message>
    <message id="program.background.white">
        <source>White</source>
        <translation>White</translation>
    </message>
    <message id="program.background.title">
        <source>BG</source>
        <translation>BG</translation>
    </message>
    <message id="program.background.tooltip">
        <source>Colour behind the program picture</source>
        <translation>Colour behind the program picture</translation>
    </message>
    <message id="program.dsk">
        <source>DSK</source>
        <translation>DSK</translation>
    </message>
    <message id="program.dsk.inactive_accessible">
        <source>DSK is inactive; select a playlist item</source>
        <translation>DSK is inactive; select a playlist item</translation>
    </message>
    <message id="program.dsk.pause">
        <source>DSK PAUSE</source>
        <translation>DSK PAUSE</translation>
    </message>
    <message id="program.dsk.play">
        <source>DSK PLAY</source>
        <translation>DSK PLAY</translation>
    </message>
    <message id="program.dsk.select_tooltip">
        <source>Select a playlist item to send to DSK</source>
        <translation>Select a playlist item to send to DSK</translation>
    </message>
    <message id="program.end_mode.accessible">
        <source>ON AIR end mode: %1</source>
        <translation>ON AIR end mode: %1</translation>
    </message>
    <message id="program.end_mode.title">
        <source>END MODE</source>
        <translation>END MODE</translation>
    </message>
    <message id="program.eq.adjusted">
        <source>Master EQ: adjusted</source>
        <translation>Master EQ: adjusted</translation>
    </message>
    <message id="program.eq.flat">
        <source>Master EQ: flat (all bands 0 dB)</source>
        <translation>Master EQ: flat (all bands 0 dB)</translation>
    </message>
    <message id="program.eq.item">
        <source>ITEM EQ</source>
        <translation>ITEM EQ</translation>
    </message>
    <message id="program.eq.item_window">
        <source>ON AIR item EQ</source>
        <translation>ON AIR item EQ</translation>
    </message>
    <message id="program.eq.master">
        <source>MASTER EQ</source>
        <translation>MASTER EQ</translation>
    </message>
    <message id="program.fade.duration_tooltip">
        <source>Fade duration in seconds</source>
        <translation>Fade duration in seconds</translation>
    </message>
    <message id="program.fade.item_in">
        <source>ITEM FADE IN</source>
        <translation>ITEM FADE IN</translation>
    </message>
    <message id="program.fade.item_out">
        <source>ITEM FADE OUT</source>
        <translation>ITEM FADE OUT</translation>
    </message>
    <message id="program.fade.master_in">
        <source>MASTER FADE IN</source>
        <translation>MASTER FADE IN</translation>
    </message>
    <message id="program.fade.master_out">
        <source>MASTER FADE OUT</source>
        <translation>MASTER FADE OUT</translation>
    </message>
    <message id="program.file.current_accessible">
        <source>Current on-air file: %1</source>
        <translation>Current on-air file: %1</translation>
    </message>
    <message id="program.file.none">
        <source>No file selected</source>
        <translation>No file selected</translation>
    </message>
    <message id="program.file.none_accessible">
        <source>Current on-air file: none</source>
        <translation>Current on-air file: none</translation>
    </message>
    <message id="program.ftb">
        <source>FTB</source>
        <translation>FTB</translation>
    </message>
    <message id="program.ftb.tooltip">
        <source>Fade the program to black, and back</source>
        <translation>Fade the program to black, and back</translation>
    </message>
    <message id="program.mute">
        <source>MUTE</source>
        <translation>MUTE</translation>
    </message>
    <message id="program.mute.tooltip">
        <source>Mute the program output</source>
        <translation>Mute the program output</translation>
    </message>
    <message id="program.off_air">
        <source>OFF AIR</source>
        <translation>OFF AIR</translation>
    </message>
    <message id="program.pause">
        <source>PAUSE</source>
        <translation>PAUSE</translation>
    </message>
    <message id="program.pause.shortcut_tooltip">
        <source>Pause ON AIR (%1: Play/Pause)</source>
        <translation>Pause ON AIR (%1: Play/Pause)</translation>
    </message>
    <message id="program.pause.tooltip">
        <source>Pause the ON AIR item</source>
        <translation>Pause the ON AIR item</translation>
    </message>
    <message id="program.play">
        <source>PLAY</source>
        <translation>PLAY</translation>
    </message>
    <message id="program.play.shortcut_tooltip">
        <source>Play ON AIR (%1: Play/Pause)</source>
        <translation>Play ON AIR (%1: Play/Pause)</translation>
    </message>
    <message id="program.play.tooltip">
        <source>Play the ON AIR item</source>
        <translation>Play the ON AIR item</translation>
    </message>
    <message id="program.playback_rate.button.accessible">
        <source>Set ON AIR playback speed to %1x</source>
        <translation>Set ON AIR playback speed to %1x</translation>
    </message>
    <message id="program.playback_rate.title">
        <source>SPEED</source>
        <translation>SPEED</translation>
    </message>
    <message id="program.remaining.accessible">
        <source>ON AIR remaining time: %1</source>
        <translation>ON AIR remaining time: %1</translation>
    </message>
    <message id="program.remaining.title">
        <source>REMAIN TIMER</source>
        <translation>REMAIN TIMER</translation>
    </message>
    <message id="program.remaining.total_accessible">
        <source>ON AIR Total remaining time: %1</source>
        <translation>ON AIR Total remaining time: %1</translation>
    </message>
    <message id="program.remaining.total_mode">
        <source>Total</source>
        <translation>Total</translation>
    </message>
    <message id="program.remaining.total_mode.tooltip">
        <source>Show the remaining time to the Map Total arrival point</source>
        <translation>Show the remaining time to the Map Total arrival point</translation>
    </message>
    <message id="program.remaining.unknown">
        <source>UNLIMITED</source>
        <translation>UNLIMITED</translation>
    </message>
    <message id="program.section.title">
        <source>ON AIR</source>
        <translation>ON AIR</translation>
    </message>
    <message id="menu.view">
        <source>View</source>
        <translation>View</translation>
    </message>
    <message id="menu.view.next_output_display">
        <source>Next Output Display</source>
        <translation>Next Output Display</translation>
    </message>
    <message id="program.delay.item">
        <source>ITEM DELAY</source>
        <translation>ITEM DELAY</translation>
    </message>
    <message id="program.delay.master">
        <source>MASTER DELAY</source>
        <translation>MASTER DELAY</translation>
    </message>
    <message id="edit.section.title">
        <source>EDIT</source>
        <translation>EDIT</translation>
    </message>
    <message id="edit.media.none">
        <source>No item loaded</source>
        <translation>No item loaded</translation>
    </message>
    <message id="edit.transport.go_to_start">
        <source>Go to start</source>
        <translation>Go to start</translation>
    </message>
    <message id="edit.transport.go_to_in">
        <source>Go to In point</source>
        <translation>Go to In point</translation>
    </message>
    <message id="edit.transport.rewind">
        <source>Hold to rewind</source>
        <translation>Hold to rewind</translation>
    </message>
    <message id="edit.transport.pause">
        <source>Pause EDIT</source>
        <translation>Pause EDIT</translation>
    </message>
    <message id="edit.transport.play">
        <source>Play EDIT</source>
        <translation>Play EDIT</translation>
    </message>
    <message id="edit.transport.fast_forward">
        <source>Hold to fast-forward</source>
        <translation>Hold to fast-forward</translation>
    </message>
    <message id="edit.transport.go_to_out">
        <source>Go to Out point</source>
        <translation>Go to Out point</translation>
    </message>
    <message id="edit.transport.go_to_end">
        <source>Go to end</source>
        <translation>Go to end</translation>
    </message>
    <message id="edit.transport.frame_back">
        <source>Step back one frame</source>
        <translation>Step back one frame</translation>
    </message>
    <message id="edit.transport.frame_forward">
        <source>Step forward one frame</source>
        <translation>Step forward one frame</translation>
    </message>
    <message id="edit.timeline.name">
        <source>EDIT timeline</source>
        <translation>EDIT timeline</translation>
    </message>
    <message id="edit.timeline.tooltip">
        <source>Click or drag to move the EDIT position</source>
        <translation>Click or drag to move the EDIT position</translation>
    </message>
    <message id="edit.timeline.markers_none">
        <source>In and Out markers are not set</source>
        <translation>In and Out markers are not set</translation>
    </message>
    <message id="edit.timeline.markers_in">
        <source>In marker: %1 ms; Out marker: not set; timeline before In is inactive</source>
        <translation>In marker: %1 ms; Out marker: not set; timeline before In is inactive</translation>
    </message>
    <message id="edit.timeline.markers_in_out">
        <source>In marker: %1 ms; Out marker: %2 ms; timeline before In and after Out is inactive</source>
        <translation>In marker: %1 ms; Out marker: %2 ms; timeline before In and after Out is inactive</translation>
    </message>
    <message id="edit.points.set_in">
        <source>SET IN</source>
        <translation>SET IN</translation>
    </message>
    <message id="edit.points.set_out">
        <source>SET OUT</source>
        <translation>SET OUT</translation>
    </message>
    <message id="edit.points.set_in.tooltip">
        <source>Save the current EDIT position as the selected item's In point</source>
        <translation>Save the current EDIT position as the selected item's In point</translation>
    </message>
    <message id="edit.points.set_out.tooltip">
        <source>Save the current EDIT position as the selected item's Out point</source>
        <translation>Save the current EDIT position as the selected item's Out point</translation>
    </message>
    <message id="edit.points.in_field">
        <source>In point</source>
        <translation>In point</translation>
    </message>
    <message id="edit.points.out_field">
        <source>Out point</source>
        <translation>Out point</translation>
    </message>
    <message id="edit.points.in_field.tooltip">
        <source>Enter the In point as HH:MM:SS.cc, then press Enter</source>
        <translation>Enter the In point as HH:MM:SS.cc, then press Enter</translation>
    </message>
    <message id="edit.points.out_field.tooltip">
        <source>Enter the Out point as HH:MM:SS.cc, then press Enter</source>
        <translation>Enter the Out point as HH:MM:SS.cc, then press Enter</translation>
    </message>
    <message id="edit.points.in_default">
        <source>In point is at the default 0 seconds</source>
        <translation>In point is at the default 0 seconds</translation>
    </message>
    <message id="edit.points.in_custom">
        <source>A custom In point is set</source>
        <translation>A custom In point is set</translation>
    </message>
    <message id="edit.points.out_default">
        <source>Out point is at the default media duration</source>
        <translation>Out point is at the default media duration</translation>
    </message>
    <message id="edit.points.out_custom">
        <source>A custom Out point is set</source>
        <translation>A custom Out point is set</translation>
    </message>
    <message id="edit.start_mode.title">
        <source>START MODE</source>
        <translation>START MODE</translation>
    </message>
    <message id="edit.start_mode.pause">
        <source>Pause</source>
        <translation>Pause</translation>
    </message>
    <message id="edit.start_mode.pause.tooltip">
        <source>Cue the item paused at the In point when it is taken ON AIR</source>
        <translation>Cue the item paused at the In point when it is taken ON AIR</translation>
    </message>
    <message id="edit.start_mode.play">
        <source>Play</source>
        <translation>Play</translation>
    </message>
    <message id="edit.start_mode.play.tooltip">
        <source>Play the item from the In point when it is taken ON AIR</source>
        <translation>Play the item from the In point when it is taken ON AIR</translation>
    </message>
    <message id="edit.end_mode.title">
        <source>END MODE</source>
        <translation>END MODE</translation>
    </message>
    <message id="edit.end_mode.stop">
        <source>Stop</source>
        <translation>Stop</translation>
    </message>
    <message id="edit.end_mode.stop.tooltip">
        <source>Switch OFF AIR at the Out point or end of media</source>
        <translation>Switch OFF AIR at the Out point or end of media</translation>
    </message>
    <message id="edit.end_mode.pause">
        <source>Pause</source>
        <translation>Pause</translation>
    </message>
    <message id="edit.end_mode.pause.tooltip">
        <source>Pause at the Out point or end of media</source>
        <translation>Pause at the Out point or end of media</translation>
    </message>
    <message id="edit.end_mode.repeat">
        <source>Repeat</source>
        <translation>Repeat</translation>
    </message>
    <message id="edit.end_mode.repeat.tooltip">
        <source>Return to the In point at the Out point or end of media, then repeat playback</source>
        <translation>Return to the In point at the Out point or end of media, then repeat playback</translation>
    </message>
    <message id="edit.end_mode.next">
        <source>Next</source>
        <translation>Next</translation>
    </message>
    <message id="edit.end_mode.next.tooltip">
        <source>At the Out point or end of media, take the next playlist item on air; wrap to item 1 and skip the current DSK item</source>
        <translation>At the Out point or end of media, take the next playlist item on air; wrap to item 1 and skip the current DSK item</translation>
    </message>
    <message id="edit.end_mode.goto">
        <source>GOTO</source>
        <translation>GOTO</translation>
    </message>
    <message id="edit.end_mode.goto.tooltip">
        <source>At the Out point or end of media, take the selected destination playlist item on air</source>
        <translation>At the Out point or end of media, take the selected destination playlist item on air</translation>
    </message>
    <message id="edit.goto.title">
        <source>GOTO</source>
        <translation>GOTO</translation>
    </message>
    <message id="edit.goto.placeholder">
        <source>Select destination</source>
        <translation>Select destination</translation>
    </message>
    <message id="edit.goto.accessible">
        <source>GOTO destination</source>
        <translation>GOTO destination</translation>
    </message>
    <message id="edit.goto.entry">
        <source>P%1-%2  %3</source>
        <translation>P%1-%2  %3</translation>
    </message>
    <message id="edit.goto.offline">
        <source> [MEDIA OFFLINE]</source>
        <translation> [MEDIA OFFLINE]</translation>
    </message>
    <message id="edit.repeat.count">
        <source>Count</source>
        <translation>Count</translation>
    </message>
    <message id="edit.repeat.count.tooltip">
        <source>Set the total play count including the first play; infinity repeats without end</source>
        <translation>Set the total play count including the first play; infinity repeats without end</translation>
    </message>
    <message id="edit.repeat.count.down">
        <source>Fewer plays</source>
        <translation>Fewer plays</translation>
    </message>
    <message id="edit.repeat.count.up">
        <source>More plays</source>
        <translation>More plays</translation>
    </message>
    <message id="edit.repeat.after">
        <source>After Repeat</source>
        <translation>After Repeat</translation>
    </message>
    <message id="edit.repeat.after.stop">
        <source>Stop</source>
        <translation>Stop</translation>
    </message>
    <message id="edit.repeat.after.pause">
        <source>Pause</source>
        <translation>Pause</translation>
    </message>
    <message id="edit.repeat.after.next">
        <source>Next</source>
        <translation>Next</translation>
    </message>
    <message id="edit.repeat.after.goto">
        <source>GOTO</source>
        <translation>GOTO</translation>
    </message>
    <message id="edit.fade_in.title">
        <source>Fade In</source>
        <translation>Fade In</translation>
    </message>
    <message id="edit.fade_in.tooltip">
        <source>Add a video and audio fade-in to the Start Mode action</source>
        <translation>Add a video and audio fade-in to the Start Mode action</translation>
    </message>
    <message id="edit.fade_out.title">
        <source>Fade Out</source>
        <translation>Fade Out</translation>
    </message>
    <message id="edit.fade_out.tooltip">
        <source>Fade out video and audio before the End Mode action</source>
        <translation>Fade out video and audio before the End Mode action</translation>
    </message>
    <message id="edit.crossfade.title">
        <source>Crossfade</source>
        <translation>Crossfade</translation>
    </message>
    <message id="edit.crossfade.tooltip">
        <source>Crossfade between ON AIR repeats, or when End Mode is Next or GOTO</source>
        <translation>Crossfade between ON AIR repeats, or when End Mode is Next or GOTO</translation>
    </message>
    <message id="edit.fade.shorter">
        <source>Shorter fade</source>
        <translation>Shorter fade</translation>
    </message>
    <message id="edit.fade.longer">
        <source>Longer fade</source>
        <translation>Longer fade</translation>
    </message>
    <message id="edit.audio.nominal_volume">
        <source>Nominal Volume</source>
        <translation>Nominal Volume</translation>
    </message>
    <message id="edit.audio.input">
        <source>IN</source>
        <translation>IN</translation>
    </message>
    <message id="edit.audio.output">
        <source>OUT</source>
        <translation>OUT</translation>
    </message>
    <message id="edit.audio.input.tooltip">
        <source>EDIT level before the nominal volume</source>
        <translation>EDIT level before the nominal volume</translation>
    </message>
    <message id="edit.audio.output.tooltip">
        <source>EDIT level after the nominal volume</source>
        <translation>EDIT level after the nominal volume</translation>
    </message>
    <message id="edit.audio.delay">
        <source>DELAY</source>
        <translation>DELAY</translation>
    </message>
    <message id="edit.audio.eq">
        <source>Nominal Item EQ</source>
        <translation>Nominal Item EQ</translation>
    </message>
    <message id="edit.pfl.button">
        <source>PFL %1</source>
        <translation>PFL %1</translation>
    </message>
    <message id="edit.pfl.state_on">
        <source>ON</source>
        <translation>ON</translation>
    </message>
    <message id="edit.pfl.state_off">
        <source>OFF</source>
        <translation>OFF</translation>
    </message>
    <message id="edit.pfl.on">
        <source>PFL ON — listening before nominal volume.</source>
        <translation>PFL ON — listening before nominal volume.</translation>
    </message>
    <message id="edit.pfl.off">
        <source>PFL OFF — listen before nominal volume.</source>
        <translation>PFL OFF — listen before nominal volume.</translation>
    </message>
    <message id="edit.pfl.no_device">
        <source>Choose EDIT PFL Output Device in Settings.</source>
        <translation>Choose EDIT PFL Output Device in Settings.</translation>
    </message>
    <message id="edit.pfl.opening">
        <source>Opening the PFL output device…</source>
        <translation>Opening the PFL output device…</translation>
    </message>
    <message id="edit.pfl.failed">
        <source>PFL output is unavailable. Check the selected device, then turn PFL on again.</source>
        <translation>PFL output is unavailable. Check the selected device, then turn PFL on again.</translation>
    </message>
    <message id="edit.pfl.helper_missing">
        <source>The PFL output component could not be found.</source>
        <translation>The PFL output component could not be found.</translation>
    </message>
    <message id="dialog.close">
        <source>Close</source>
        <translation>Close</translation>
    </message>
    <message id="settings.output.unavailable">
        <source>Unavailable — %1</source>
        <translation>Unavailable — %1</translation>
    </message>
    <message id="settings.output.current_program">
        <source>Current ON AIR output: %1</source>
        <translation>Current ON AIR output: %1</translation>
    </message>
    <message id="settings.output.program_device">
        <source>ON AIR OUTPUT DEVICE</source>
        <translation>ON AIR OUTPUT DEVICE</translation>
    </message>
    <message id="settings.output.pfl_device">
        <source>PFL DEVICE</source>
        <translation>PFL DEVICE</translation>
    </message>
    <message id="settings.output.fallback_default">
        <source>Use system default when the selected ON AIR audio device is not found (ON AIR only)</source>
        <translation>Use system default when the selected ON AIR audio device is not found (ON AIR only)</translation>
    </message>
    <message id="settings.output.same_device">
        <source>ON AIR OUTPUT DEVICE and PFL DEVICE are the same.</source>
        <translation>ON AIR OUTPUT DEVICE and PFL DEVICE are the same.</translation>
    </message>
    <message id="settings.output.refresh">
        <source>Refresh</source>
        <translation>Refresh</translation>
    </message>
    <message id="settings.output.apply">
        <source>Apply</source>
        <translation>Apply</translation>
    </message>
    <message id="settings.output.applying">
        <source>Applying ON AIR output device…</source>
        <translation>Applying ON AIR output device…</translation>
    </message>
    <message id="settings.output.failed">
        <source>Could not apply the ON AIR output device. Select an available device and try again.</source>
        <translation>Could not apply the ON AIR output device. Select an available device and try again.</translation>
    </message>
    <message id="settings.output.applied">
        <source>ON AIR output device applied.</source>
        <translation>ON AIR output device applied.</translation>
    </message>
    <message id="settings.output.pending">
        <source>Waiting until ON AIR and BGM are stopped.</source>
        <translation>Waiting until ON AIR and BGM are stopped.</translation>
    </message>
    <message id="menu.file.audio_outputs">
        <source>Audio Outputs…</source>
        <translation>Audio Outputs…</translation>
    </message>
    <message id="audio.outputs.title">
        <source>Audio Outputs</source>
        <translation>Audio Outputs</translation>
    </message>
    <message id="audio.output.unavailable">
        <source>ON AIR audio output is unavailable. Video playout can continue. Check the audio output settings and device connection.</source>
        <translation>ON AIR audio output is unavailable. Video playout can continue. Check the audio output settings and device connection.</translation>
    </message>
    <message id="audio.outputs.check_failed">
        <source>Could not check the audio devices. Please check the audio device settings.</source>
        <translation>Could not check the audio devices. Please check the audio device settings.</translation>
    </message>
    <message id="audio.output.fallback_applied">
        <source>%1 audio output setting changed to system default because the device was unavailable.</source>
        <translation>%1 audio output setting changed to system default because the device was unavailable.</translation>
    </message>
    <message id="edit.pfl.device_not_configured">
        <source>No PFL audio device is configured.</source>
        <translation>No PFL audio device is configured.</translation>
    </message>
    <message id="settings.output.save_failed">
        <source>Could not save the output device setting.</source>
        <translation>Could not save the output device setting.</translation>
    </message>
    <message id="audio.output.selection_changed">
        <source>%1 audio output setting changed to %2.</source>
        <translation>%1 audio output setting changed to %2.</translation>
    </message>
    <message id="settings.output.default">
        <source>System Default</source>
        <translation>System Default</translation>
    </message>
    <message id="settings.output.none">
        <source>No Device</source>
        <translation>No Device</translation>
    </message>
    <message id="edit.status_line.error">
        <source>EDIT ERROR | %1</source>
        <translation>EDIT ERROR | %1</translation>
    </message>
    <message id="edit.error.end_crossfade">
        <source>Could not save the end crossfade settings.</source>
        <translation>Could not save the end crossfade settings.</translation>
    </message>
    <message id="edit.error.end_mode">
        <source>Could not save the End Mode.</source>
        <translation>Could not save the End Mode.</translation>
    </message>
    <message id="edit.error.end_position">
        <source>Could not determine the EDIT end position.</source>
        <translation>Could not determine the EDIT end position.</translation>
    </message>
    <message id="edit.error.fade_in">
        <source>Could not save the fade-in settings.</source>
        <translation>Could not save the fade-in settings.</translation>
    </message>
    <message id="edit.error.fade_out">
        <source>Could not save the fade-out settings.</source>
        <translation>Could not save the fade-out settings.</translation>
    </message>
    <message id="edit.error.file_not_found">
        <source>The file to load into EDIT could not be found.</source>
        <translation>The file to load into EDIT could not be found.</translation>
    </message>
    <message id="edit.error.frame_position">
        <source>Could not determine the EDIT frame position.</source>
        <translation>Could not determine the EDIT frame position.</translation>
    </message>
    <message id="edit.error.go_to_in">
        <source>Could not go to the EDIT In point.</source>
        <translation>Could not go to the EDIT In point.</translation>
    </message>
    <message id="edit.error.go_to_out">
        <source>Could not go to the EDIT Out point.</source>
        <translation>Could not go to the EDIT Out point.</translation>
    </message>
    <message id="edit.error.goto">
        <source>Could not save the GOTO destination.</source>
        <translation>Could not save the GOTO destination.</translation>
    </message>
    <message id="edit.error.in_after_out">
        <source>Set the In point before the Out point and the end of the media.</source>
        <translation>Set the In point before the Out point and the end of the media.</translation>
    </message>
    <message id="edit.error.load_failed">
        <source>Failed to load the file into EDIT.</source>
        <translation>Failed to load the file into EDIT.</translation>
    </message>
    <message id="edit.error.media_not_loaded">
        <source>Load an item into EDIT before changing its In/Out points.</source>
        <translation>Load an item into EDIT before changing its In/Out points.</translation>
    </message>
    <message id="edit.error.nominal_delay">
        <source>Could not save the nominal delay.</source>
        <translation>Could not save the nominal delay.</translation>
    </message>
    <message id="edit.error.nominal_eq">
        <source>Could not save the nominal EQ.</source>
        <translation>Could not save the nominal EQ.</translation>
    </message>
    <message id="edit.error.nominal_volume">
        <source>Could not save the nominal volume.</source>
        <translation>Could not save the nominal volume.</translation>
    </message>
    <message id="edit.error.out_before_in">
        <source>Set the Out point after the In point.</source>
        <translation>Set the Out point after the In point.</translation>
    </message>
    <message id="edit.error.pause">
        <source>EDIT Pause failed.</source>
        <translation>EDIT Pause failed.</translation>
    </message>
    <message id="edit.error.play">
        <source>EDIT Play failed.</source>
        <translation>EDIT Play failed.</translation>
    </message>
    <message id="edit.error.playback_stopped">
        <source>Only EDIT playback was stopped</source>
        <translation>Only EDIT playback was stopped</translation>
    </message>
    <message id="edit.error.player_create">
        <source>Could not create the EDIT player (ON AIR will continue)</source>
        <translation>Could not create the EDIT player (ON AIR will continue)</translation>
    </message>
    <message id="edit.error.player_unavailable">
        <source>The EDIT player is unavailable (ON AIR will continue)</source>
        <translation>The EDIT player is unavailable (ON AIR will continue)</translation>
    </message>
    <message id="edit.error.point_beyond_duration">
        <source>Set the In/Out point within the media duration.</source>
        <translation>Set the In/Out point within the media duration.</translation>
    </message>
    <message id="edit.error.point_save">
        <source>Could not save the In/Out point.</source>
        <translation>Could not save the In/Out point.</translation>
    </message>
    <message id="edit.error.points_bgm_active">
        <source>The In/Out points of an item in use by BGM cannot be changed. Stop BGM first.</source>
        <translation>The In/Out points of an item in use by BGM cannot be changed. Stop BGM first.</translation>
    </message>
    <message id="edit.error.points_file_only">
        <source>In/Out points can only be changed for file sources.</source>
        <translation>In/Out points can only be changed for file sources.</translation>
    </message>
    <message id="edit.error.points_locked">
        <source>The In/Out points of an item currently on air cannot be changed.</source>
        <translation>The In/Out points of an item currently on air cannot be changed.</translation>
    </message>
    <message id="edit.error.points_settings_locked">
        <source>This item's settings are locked. Its In/Out points cannot be changed.</source>
        <translation>This item's settings are locked. Its In/Out points cannot be changed.</translation>
    </message>
    <message id="edit.error.position_unknown">
        <source>Could not determine the current EDIT position.</source>
        <translation>Could not determine the current EDIT position.</translation>
    </message>
    <message id="edit.error.repeat">
        <source>Could not save the repeat options.</source>
        <translation>Could not save the repeat options.</translation>
    </message>
    <message id="edit.error.rewind_prepare">
        <source>Failed to prepare EDIT for rewind.</source>
        <translation>Failed to prepare EDIT for rewind.</translation>
    </message>
    <message id="edit.error.scan">
        <source>EDIT scan failed.</source>
        <translation>EDIT scan failed.</translation>
    </message>
    <message id="edit.error.scan_position">
        <source>Could not determine the EDIT scan position.</source>
        <translation>Could not determine the EDIT scan position.</translation>
    </message>
    <message id="edit.error.scan_restore">
        <source>Failed to restore normal EDIT playback.</source>
        <translation>Failed to restore normal EDIT playback.</translation>
    </message>
    <message id="edit.error.seek">
        <source>EDIT seek failed.</source>
        <translation>EDIT seek failed.</translation>
    </message>
    <message id="edit.error.start_mode">
        <source>Could not save the Start Mode.</source>
        <translation>Could not save the Start Mode.</translation>
    </message>
    <message id="edit.error.step_pause">
        <source>Failed to pause EDIT for frame stepping.</source>
        <translation>Failed to pause EDIT for frame stepping.</translation>
    </message>
    <message id="edit.error.stop">
        <source>Failed to stop EDIT.</source>
        <translation>Failed to stop EDIT.</translation>
    </message>
    <message id="edit.error.unload">
        <source>Could not unload the item from EDIT.</source>
        <translation>Could not unload the item from EDIT.</translation>
    </message>
    <message id="edit.status.fast_forward">
        <source>Fast-forward</source>
        <translation>Fast-forward</translation>
    </message>
    <message id="edit.status.fast_forward_stopped">
        <source>Fast-forward stopped</source>
        <translation>Fast-forward stopped</translation>
    </message>
    <message id="edit.status.go_to_end">
        <source>Go to end</source>
        <translation>Go to end</translation>
    </message>
    <message id="edit.status.go_to_in">
        <source>Go to In point</source>
        <translation>Go to In point</translation>
    </message>
    <message id="edit.status.go_to_out">
        <source>Go to Out point</source>
        <translation>Go to Out point</translation>
    </message>
    <message id="edit.status.go_to_start">
        <source>Go to start</source>
        <translation>Go to start</translation>
    </message>
    <message id="edit.status.idle">
        <source>EDIT | Select an item, then click EDIT to load</source>
        <translation>EDIT | Select an item, then click EDIT to load</translation>
    </message>
    <message id="edit.status.rewind">
        <source>Rewind (position only)</source>
        <translation>Rewind (position only)</translation>
    </message>
    <message id="edit.status.rewind_stopped">
        <source>Rewind stopped</source>
        <translation>Rewind stopped</translation>
    </message>
    <message id="edit.status.scan_boundary">
        <source>Scan boundary</source>
        <translation>Scan boundary</translation>
    </message>
    <message id="info.source.bgm">
        <source>BGM</source>
        <translation>BGM</translation>
    </message>
    <message id="program.bgm.no_playable_item">
        <source>No playable item was found in the current BGM playlist.</source>
        <translation>No playable item was found in the current BGM playlist.</translation>
    </message>
    <message id="program.bgm.stop_failed">
        <source>BGM could not be stopped. Press STOP again to reset it.</source>
        <translation>BGM could not be stopped. Press STOP again to reset it.</translation>
    </message>
    <message id="program.bgm.audio_output_changing">
        <source>ON AIR audio output is being prepared or changed. Press BGM PLAY again after it finishes.</source>
        <translation>ON AIR audio output is being prepared or changed. Press BGM PLAY again after it finishes.</translation>
    </message>
    <message id="program.bgm.audio_output_unavailable">
        <source>ON AIR audio output is unavailable. Check audio output settings and press BGM PLAY again after recovery.</source>
        <translation>ON AIR audio output is unavailable. Check audio output settings and press BGM PLAY again after recovery.</translation>
    </message>
    <message id="program.bgm.play_failed">
        <source>BGM playback failed.</source>
        <translation>BGM playback failed.</translation>
    </message>
    <message id="program.bgm.transition_failed">
        <source>The BGM item transition could not be completed.</source>
        <translation>The BGM item transition could not be completed.</translation>
    </message>
    <message id="program.bgm.skipped_item">
        <source>Skipped BGM item: %1</source>
        <translation>Skipped BGM item: %1</translation>
    </message>
    <message id="program.bgm.current_item">
        <source>Current BGM: %1</source>
        <translation>Current BGM: %1</translation>
    </message>
    <message id="program.bgm.no_item">
        <source>No BGM item</source>
        <translation>No BGM item</translation>
    </message>
    <message id="program.bgm.controls_hidden_after_stop">
        <source>The BGM controls will be hidden after BGM stops.</source>
        <translation>The BGM controls will be hidden after BGM stops.</translation>
    </message>
    <message id="program.bgm.state.stopped">
        <source>STOPPED</source>
        <translation>STOPPED</translation>
    </message>
    <message id="program.bgm.state.loading">
        <source>LOADING</source>
        <translation>LOADING</translation>
    </message>
    <message id="program.bgm.state.playing">
        <source>PLAYING</source>
        <translation>PLAYING</translation>
    </message>
    <message id="program.bgm.state.paused">
        <source>PAUSED</source>
        <translation>PAUSED</translation>
    </message>
    <message id="program.bgm.state.fade_in">
        <source>FADE IN</source>
        <translation>FADE IN</translation>
    </message>
    <message id="program.bgm.state.fade_out">
        <source>FADE OUT</source>
        <translation>FADE OUT</translation>
    </message>
    <message id="program.bgm.state.faded_out">
        <source>FADED OUT (VOLUME 0)</source>
        <translation>FADED OUT (VOLUME 0)</translation>
    </message>
    <message id="program.bgm.state.error">
        <source>ERROR</source>
        <translation>ERROR</translation>
    </message>
    <message id="program.bgm.signal_detected">
        <source>BGM signal detected</source>
        <translation>BGM signal detected</translation>
    </message>
    <message id="program.bgm.signal_clipping">
        <source>BGM input is clipping</source>
        <translation>BGM input is clipping</translation>
    </message>
    <message id="program.bgm.no_signal">
        <source>No BGM signal</source>
        <translation>No BGM signal</translation>
    </message>
    <message id="program.bgm.show_fader">
        <source>Show BGM fader</source>
        <translation>Show BGM fader</translation>
    </message>
    <message id="program.bgm.show_item_fader">
        <source>Show ITEM fader</source>
        <translation>Show ITEM fader</translation>
    </message>
    <message id="program.bgm.title">
        <source>BGM</source>
        <translation>BGM</translation>
    </message>
    <message id="program.bgm.play">
        <source>BGM PLAY</source>
        <translation>BGM PLAY</translation>
    </message>
    <message id="program.bgm.pause">
        <source>BGM PAUSE</source>
        <translation>BGM PAUSE</translation>
    </message>
    <message id="program.bgm.stop">
        <source>BGM STOP</source>
        <translation>BGM STOP</translation>
    </message>
    <message id="program.bgm.fade_in">
        <source>BGM FADE IN</source>
        <translation>BGM FADE IN</translation>
    </message>
    <message id="program.bgm.fade_out">
        <source>BGM FADE OUT</source>
        <translation>BGM FADE OUT</translation>
    </message>
    <message id="program.audio.bgm">
        <source>BGM</source>
        <translation>BGM</translation>
    </message>
    <message id="menu.file.export_settings">
        <source>Export Settings...</source>
        <translation>Export Settings...</translation>
    </message>
    <message id="menu.file.import_settings">
        <source>Import Settings...</source>
        <translation>Import Settings...</translation>
    </message>
    <message id="settings.manage.filter">
        <source>TARNIX Settings (*.json)</source>
        <translation>TARNIX Settings (*.json)</translation>
    </message>
    <message id="settings.export.succeeded">
        <source>Settings exported.</source>
        <translation>Settings exported.</translation>
    </message>
    <message id="settings.import.succeeded">
        <source>Settings restored and saved.</source>
        <translation>Settings restored and saved.</translation>
    </message>
    <message id="settings.manage.failed">
        <source>Could not save or restore settings. Check the file format and write permissions.</source>
        <translation>Could not save or restore settings. Check the file format and write permissions.</translation>
    </message>
    <message id="menu.file.settings">
        <source>Settings…</source>
        <translation>Settings…</translation>
    </message>
    <message id="settings.window.title">
        <source>Settings</source>
        <translation>Settings</translation>
    </message>
    <message id="settings.window.refused">
        <source>Not saved: %1</source>
        <translation>Not saved: %1</translation>
    </message>
    <message id="settings.window.save_failed">
        <source>Could not save the setting: %1</source>
        <translation>Could not save the setting: %1</translation>
    </message>
    <message id="settings.page.general">
        <source>General</source>
        <translation>General</translation>
    </message>
    <message id="settings.page.on_air">
        <source>ON AIR</source>
        <translation>ON AIR</translation>
    </message>
    <message id="settings.page.audio">
        <source>Audio</source>
        <translation>Audio</translation>
    </message>
    <message id="settings.page.playlist">
        <source>Playlist</source>
        <translation>Playlist</translation>
    </message>
    <message id="settings.page.files">
        <source>Files</source>
        <translation>Files</translation>
    </message>
    <message id="settings.page.outputs">
        <source>Outputs</source>
        <translation>Outputs</translation>
    </message>
    <message id="settings.page.shortcuts">
        <source>Shortcuts</source>
        <translation>Shortcuts</translation>
    </message>
    <message id="settings.page.control">
        <source>Control</source>
        <translation>Control</translation>
    </message>
    <message id="settings.general.language">
        <source>Language</source>
        <translation>Language</translation>
    </message>
    <message id="settings.general.skin">
        <source>Controller skin</source>
        <translation>Controller skin</translation>
    </message>
    <message id="settings.general.text_size">
        <source>Text size</source>
        <translation>Text size</translation>
    </message>
    <message id="settings.general.text_size.standard">
        <source>Standard</source>
        <translation>Standard</translation>
    </message>
    <message id="settings.general.text_size.large">
        <source>Large</source>
        <translation>Large</translation>
    </message>
    <message id="settings.general.text_size.largest">
        <source>Largest</source>
        <translation>Largest</translation>
    </message>
    <message id="settings.general.time_zone">
        <source>Time zone</source>
        <translation>Time zone</translation>
    </message>
    <message id="settings.general.remaining">
        <source>Remaining time</source>
        <translation>Remaining time</translation>
    </message>
    <message id="settings.general.remaining.item">
        <source>Up to the end of the ON AIR item</source>
        <translation>Up to the end of the ON AIR item</translation>
    </message>
    <message id="settings.general.remaining.total">
        <source>Up to the Map Total arrival point</source>
        <translation>Up to the Map Total arrival point</translation>
    </message>
    <message id="settings.on_air.retake">
        <source>Allow the ON AIR item to be taken again</source>
        <translation>Allow the ON AIR item to be taken again</translation>
    </message>
    <message id="settings.on_air.auto_select_next">
        <source>Select the next item when an item leaves the air</source>
        <translation>Select the next item when an item leaves the air</translation>
    </message>
    <message id="settings.on_air.lock_ftb">
        <source>Lock the FTB button</source>
        <translation>Lock the FTB button</translation>
    </message>
    <message id="settings.on_air.rate_controls">
        <source>Show the playback rate controls</source>
        <translation>Show the playback rate controls</translation>
    </message>
    <message id="settings.on_air.background">
        <source>Background colour (#RRGGBB)</source>
        <translation>Background colour (#RRGGBB)</translation>
    </message>
    <message id="settings.audio.bgm_controls">
        <source>Show the BGM player controls</source>
        <translation>Show the BGM player controls</translation>
    </message>
    <message id="settings.playlist.edit_activation">
        <source>Load into EDIT</source>
        <translation>Load into EDIT</translation>
    </message>
    <message id="settings.playlist.edit_activation.selection">
        <source>When an item is selected</source>
        <translation>When an item is selected</translation>
    </message>
    <message id="settings.playlist.edit_activation.button">
        <source>When the EDIT button is pressed</source>
        <translation>When the EDIT button is pressed</translation>
    </message>
    <message id="settings.playlist.audio_thumbnails">
        <source>Audio file thumbnails</source>
        <translation>Audio file thumbnails</translation>
    </message>
    <message id="settings.playlist.audio_thumbnails.waveform">
        <source>Waveform</source>
        <translation>Waveform</translation>
    </message>
    <message id="settings.playlist.audio_thumbnails.album_art">
        <source>Album art (waveform if unavailable)</source>
        <translation>Album art (waveform if unavailable)</translation>
    </message>
    <message id="settings.files.still_capture">
        <source>Folder for captured stills</source>
        <translation>Folder for captured stills</translation>
    </message>
    <message id="settings.files.document_conversion">
        <source>Folder for converted documents</source>
        <translation>Folder for converted documents</translation>
    </message>
    <message id="settings.outputs.program_4k">
        <source>Program output at 3840 x 2160</source>
        <translation>Program output at 3840 x 2160</translation>
    </message>
    <message id="settings.outputs.software_decoding">
        <source>Decode video in software only</source>
        <translation>Decode video in software only</translation>
    </message>
    <message id="settings.outputs.next_start_note">
        <source>The program output settings take effect at the next start.</source>
        <translation>The program output settings take effect at the next start.</translation>
    </message>
    <message id="settings.control.socket_path">
        <source>Control socket path</source>
        <translation>Control socket path</translation>
    </message>
    <message id="settings.control.socket_path_note">
        <source>Empty: no control socket. A change takes effect at the next start.</source>
        <translation>Empty: no control socket. A change takes effect at the next start.</translation>
    </message>
    <message id="settings.shortcuts.action">
        <source>Action</source>
        <translation>Action</translation>
    </message>
    <message id="settings.shortcuts.key1">
        <source>Key 1</source>
        <translation>Key 1</translation>
    </message>
    <message id="settings.shortcuts.key2">
        <source>Key 2</source>
        <translation>Key 2</translation>
    </message>
    <message id="settings.shortcuts.save">
        <source>Save</source>
        <translation>Save</translation>
    </message>
    <message id="settings.shortcuts.defaults">
        <source>Load Defaults</source>
        <translation>Load Defaults</translation>
    </message>
    <message id="settings.shortcuts.saved">
        <source>Shortcuts saved and applied.</source>
        <translation>Shortcuts saved and applied.</translation>
    </message>
    <message id="settings.shortcuts.invalid">
        <source>Duplicate, reserved or invalid key. Not saved: %1</source>
        <translation>Duplicate, reserved or invalid key. Not saved: %1</translation>
    </message>
    <message id="settings.shortcuts.defaults_loaded">
        <source>Defaults loaded. Save to apply.</source>
        <translation>Defaults loaded. Save to apply.</translation>
    </message>
    <message id="settings.shortcuts.AddFile">
        <source>Add files</source>
        <translation>Add files</translation>
    </message>
    <message id="settings.shortcuts.Exit">
        <source>Exit</source>
        <translation>Exit</translation>
    </message>
    <message id="settings.shortcuts.TakeOnAir">
        <source>Take ON AIR</source>
        <translation>Take ON AIR</translation>
    </message>
    <message id="settings.shortcuts.ToggleOnAirPlayback">
        <source>Play / pause ON AIR</source>
        <translation>Play / pause ON AIR</translation>
    </message>
    <message id="settings.shortcuts.LoadEdit">
        <source>Load into EDIT</source>
        <translation>Load into EDIT</translation>
    </message>
    <message id="settings.shortcuts.CopyItemState">
        <source>Copy item state</source>
        <translation>Copy item state</translation>
    </message>
    <message id="settings.shortcuts.PasteItemState">
        <source>Paste item state</source>
        <translation>Paste item state</translation>
    </message>
    <message id="settings.shortcuts.DocumentNext">
        <source>Next document page</source>
        <translation>Next document page</translation>
    </message>
    <message id="settings.shortcuts.DocumentPrevious">
        <source>Previous document page</source>
        <translation>Previous document page</translation>
    </message>
    <message id="settings.shortcuts.ToggleFtb">
        <source>Fade to black</source>
        <translation>Fade to black</translation>
    </message>
    <message id="settings.shortcuts.ToggleDsk">
        <source>DSK on / off</source>
        <translation>DSK on / off</translation>
    </message>
    <message id="settings.shortcuts.OffAir">
        <source>OFF AIR</source>
        <translation>OFF AIR</translation>
    </message>
    <message id="settings.shortcuts.MasterFadeIn">
        <source>Master fade in</source>
        <translation>Master fade in</translation>
    </message>
    <message id="settings.shortcuts.MasterFadeOut">
        <source>Master fade out</source>
        <translation>Master fade out</translation>
    </message>
    <message id="settings.shortcuts.ItemFadeIn">
        <source>Item fade in</source>
        <translation>Item fade in</translation>
    </message>
    <message id="settings.shortcuts.ItemFadeOut">
        <source>Item fade out</source>
        <translation>Item fade out</translation>
    </message>
    <message id="settings.shortcuts.BgmFadeIn">
        <source>BGM fade in</source>
        <translation>BGM fade in</translation>
    </message>
    <message id="settings.shortcuts.BgmFadeOut">
        <source>BGM fade out</source>
        <translation>BGM fade out</translation>
    </message>
    <message id="settings.shortcuts.SelectItem">
        <source>Select item %1</source>
        <translation>Select item %1</translation>
    </message>
    <message id="settings.shortcuts.ActivatePlaylist">
        <source>Activate playlist %1</source>
        <translation>Activate playlist %1</translation>
    </message>
    <message id="settings.shortcuts.PlaylistPlayOnce">
        <source>Playlist: play once</source>
        <translation>Playlist: play once</translation>
    </message>
    <message id="settings.shortcuts.PlaylistRepeatAll">
        <source>Playlist: repeat all</source>
        <translation>Playlist: repeat all</translation>
    </message>
    <message id="settings.shortcuts.PlaylistShuffle">
        <source>Playlist: shuffle</source>
        <translation>Playlist: shuffle</translation>
    </message>
    <message id="settings.shortcuts.PlaylistBgmMode">
        <source>Playlist: BGM mode</source>
        <translation>Playlist: BGM mode</translation>
    </message>
    <message id="settings.shortcuts.PlaylistStandardMode">
        <source>Playlist: standard mode</source>
        <translation>Playlist: standard mode</translation>
    </message>
    <message id="settings.shortcuts.PlaylistClear">
        <source>Playlist: clear</source>
        <translation>Playlist: clear</translation>
    </message>
    <message id="settings.shortcuts.PlaylistUndo">
        <source>Playlist: undo</source>
        <translation>Playlist: undo</translation>
    </message>
    <message id="settings.shortcuts.EditToggleStartMode">
        <source>EDIT: switch start mode</source>
        <translation>EDIT: switch start mode</translation>
    </message>
    <message id="settings.shortcuts.EditEndStop">
        <source>EDIT: end mode stop</source>
        <translation>EDIT: end mode stop</translation>
    </message>
    <message id="settings.shortcuts.EditEndPause">
        <source>EDIT: end mode pause</source>
        <translation>EDIT: end mode pause</translation>
    </message>
    <message id="settings.shortcuts.EditEndRepeat">
        <source>EDIT: end mode repeat</source>
        <translation>EDIT: end mode repeat</translation>
    </message>
    <message id="settings.shortcuts.EditEndNext">
        <source>EDIT: end mode next</source>
        <translation>EDIT: end mode next</translation>
    </message>
    <message id="settings.shortcuts.EditToggleFadeOut">
        <source>EDIT: fade out on / off</source>
        <translation>EDIT: fade out on / off</translation>
    </message>
    <message id="settings.shortcuts.EditReset">
        <source>EDIT: reset</source>
        <translation>EDIT: reset</translation>
    </message>
    <message id="settings.shortcuts.EditSetIn">
        <source>EDIT: set IN</source>
        <translation>EDIT: set IN</translation>
    </message>
    <message id="settings.shortcuts.EditSetOut">
        <source>EDIT: set OUT</source>
        <translation>EDIT: set OUT</translation>
    </message>
    <message id="settings.shortcuts.NextOutputDisplay">
        <source>Next output display</source>
        <translation>Next output display</translation>
    </message>
    <message id="settings.shortcuts.PreviewCapture">
        <source>Preview capture</source>
        <translation>Preview capture</translation>
    </message>
    <message id="settings.shortcuts.ProgramCapture">
        <source>Program capture</source>
        <translation>Program capture</translation>
    </message>
    <message id="settings.shortcuts.TogglePfl">
        <source>PFL on / off</source>
        <translation>PFL on / off</translation>
    </message>
    <message id="settings.shortcuts.PlaylistDelete">
        <source>Playlist: delete</source>
        <translation>Playlist: delete</translation>
    </message>
    <message id="settings.shortcuts.OperatorTimerStart">
        <source>Operator timer: start</source>
        <translation>Operator timer: start</translation>
    </message>
    <message id="settings.shortcuts.OperatorTimerPause">
        <source>Operator timer: pause</source>
        <translation>Operator timer: pause</translation>
    </message>
    <message id="settings.shortcuts.OperatorTimerReset">
        <source>Operator timer: reset</source>
        <translation>Operator timer: reset</translation>
    </message>
    <message id="settings.shortcuts.OperatorTimerSettings">
        <source>Operator timer: settings</source>
        <translation>Operator timer: settings</translation>
    </message>
    <message id="settings.shortcuts.OpenNominalEq">
        <source>Open the EDIT EQ</source>
        <translation>Open the EDIT EQ</translation>
    </message>
    <message id="settings.shortcuts.OpenItemEq">
        <source>Open the item EQ</source>
        <translation>Open the item EQ</translation>
    </message>
    <message id="settings.shortcuts.OpenMasterEq">
        <source>Open the master EQ</source>
        <translation>Open the master EQ</translation>
    </message>
</context>
</TS>
