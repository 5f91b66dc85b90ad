<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="ja_JP" sourcelanguage="en_GB">
<context>
    <name></name>
    <message id="application.description">
        <source>TARNIX live-production playout</source>
        <translation>TARNIX ライブ制作プレイアウト</translation>
    </message>
    <message id="application.option.program_output_4k">
        <source>Output the program picture at 3840 x 2160 for this run.</source>
        <translation>この起動ではプログラム映像を 3840 x 2160 で出力します。</translation>
    </message>
    <message id="window.player.title">
        <source>TARNIX Program</source>
        <translation>TARNIX プログラム</translation>
    </message>
    <message id="window.controller.title">
        <source>TARNIX Controller</source>
        <translation>TARNIX コントローラー</translation>
    </message>
    <message id="settings.addons.title">
        <source>Add-ons</source>
        <translation>アドオン</translation>
    </message>
    <message id="settings.addons.restart_failed">
        <source>The add-on changes could not be completed: %1</source>
        <translation>アドオンの変更を完了できませんでした: %1</translation>
    </message>
    <message id="settings.addons.startup_resuming">
        <source>Add-on changes are being completed. TARNIX will start again when they are done.</source>
        <translation>アドオンの変更を完了しています。完了すると TARNIX がもう一度起動します。</translation>
    </message>
    <message id="startup.gstreamer_runtime_missing">
        <source>The GStreamer runtime could not be found.</source>
        <translation>GStreamer ランタイムが見つかりませんでした。</translation>
    </message>
    <message id="startup.playbin_creation_failed">
        <source>Could not create the GStreamer playbin.</source>
        <translation>GStreamer の playbin を作成できませんでした。</translation>
    </message>
    <message id="startup.audio_outputs_missing">
        <source>ON AIR and PFL audio devices not found.</source>
        <translation>ON AIR と PFL のオーディオデバイスが見つかりません。</translation>
    </message>
    <message id="startup.program_output_missing">
        <source>ON AIR audio device not found.</source>
        <translation>ON AIR のオーディオデバイスが見つかりません。</translation>
    </message>
    <message id="startup.pfl_output_missing">
        <source>PFL audio device not found.</source>
        <translation>PFL のオーディオデバイスが見つかりません。</translation>
    </message>
    <message id="menu.file">
        <source>File</source>
        <translation>ファイル</translation>
    </message>
    <message id="menu.file.export_playlist">
        <source>Export Playlist...</source>
        <translation>プレイリストを書き出す...</translation>
    </message>
    <message id="menu.file.import_playlist">
        <source>Import Playlist...</source>
        <translation>プレイリストを読み込む...</translation>
    </message>
    <message id="menu.file.restore_previous_session">
        <source>Restore Previous Session</source>
        <translation>前回のセッションを復元</translation>
    </message>
    <message id="menu.file.exit">
        <source>Exit</source>
        <translation>終了</translation>
    </message>
    <message id="menu.on_air">
        <source>On Air</source>
        <translation>オンエア</translation>
    </message>
    <message id="menu.on_air.TakeOnAir">
        <source>Take ON AIR</source>
        <translation>ON AIR にする</translation>
    </message>
    <message id="menu.on_air.OffAir">
        <source>OFF AIR</source>
        <translation>OFF AIR にする</translation>
    </message>
    <message id="menu.on_air.ToggleFtb">
        <source>Fade to Black</source>
        <translation>黒へフェード (FTB)</translation>
    </message>
    <message id="menu.on_air.ToggleOnAirPlayback">
        <source>Play / Pause ON AIR</source>
        <translation>ON AIR の再生 / 一時停止</translation>
    </message>
    <message id="menu.on_air.MasterFadeIn">
        <source>Master Fade In</source>
        <translation>マスター フェードイン</translation>
    </message>
    <message id="menu.on_air.MasterFadeOut">
        <source>Master Fade Out</source>
        <translation>マスター フェードアウト</translation>
    </message>
    <message id="menu.on_air.ItemFadeIn">
        <source>Item Fade In</source>
        <translation>アイテム フェードイン</translation>
    </message>
    <message id="menu.on_air.ItemFadeOut">
        <source>Item Fade Out</source>
        <translation>アイテム フェードアウト</translation>
    </message>
    <message id="menu.on_air.BgmFadeIn">
        <source>BGM Fade In</source>
        <translation>BGM フェードイン</translation>
    </message>
    <message id="menu.on_air.BgmFadeOut">
        <source>BGM Fade Out</source>
        <translation>BGM フェードアウト</translation>
    </message>
    <message id="menu.on_air.ToggleDsk">
        <source>DSK On / Off</source>
        <translation>DSK のオン / オフ</translation>
    </message>
    <message id="menu.help">
        <source>Help</source>
        <translation>ヘルプ</translation>
    </message>
    <message id="file_dialog.export_playlist.title">
        <source>Export Playlist</source>
        <translation>プレイリストの書き出し</translation>
    </message>
    <message id="file_dialog.import_playlist.title">
        <source>Import Playlist</source>
        <translation>プレイリストの読み込み</translation>
    </message>
    <message id="menu.file.add_files">
        <source>Add Files...</source>
        <translation>ファイルを追加...</translation>
    </message>
    <message id="file_dialog.add_files.title">
        <source>Add Files to Playlist</source>
        <translation>プレイリストにファイルを追加</translation>
    </message>
    <message id="file_dialog.media.filter_without_documents">
        <source>Media Files (*.mp4 *.mov *.webm *.mkv *.avi *.mxf *.wav *.mp3 *.flac *.m4a *.aac *.png *.jpg *.jpeg *.bmp *.tif *.tiff *.webp *.gif);;All Files (*)</source>
        <translation>メディアファイル (*.mp4 *.mov *.webm *.mkv *.avi *.mxf *.wav *.mp3 *.flac *.m4a *.aac *.png *.jpg *.jpeg *.bmp *.tif *.tiff *.webp *.gif);;すべてのファイル (*)</translation>
    </message>
    <message id="image_add.title">
        <source>Add Image</source>
        <translation>画像を追加</translation>
    </message>
    <message id="image_add.file">
        <source>File: %1</source>
        <translation>ファイル: %1</translation>
    </message>
    <message id="image_add.duration">
        <source>Display duration:</source>
        <translation>表示時間:</translation>
    </message>
    <message id="image_add.remember">
        <source>Remember this display duration for this session</source>
        <translation>このセッション中はこの表示時間を使う</translation>
    </message>
    <message id="file_dialog.playlist.filter">
        <source>TARNIX Playlist (*.json);;All Files (*.*)</source>
        <translation>TARNIX プレイリスト (*.json);;すべてのファイル (*.*)</translation>
    </message>
    <message id="playlist.export.succeeded">
        <source>Exported %1 playlist(s) and %2 item(s).</source>
        <translation>%1 個のプレイリストと %2 個の項目を書き出しました。</translation>
    </message>
    <message id="playlist.export.failed">
        <source>Playlist export failed.</source>
        <translation>プレイリストの書き出しに失敗しました。</translation>
    </message>
    <message id="playlist.import.succeeded">
        <source>Imported %1 playlist(s) and %2 item(s).</source>
        <translation>%1 個のプレイリストと %2 個の項目を読み込みました。</translation>
    </message>
    <message id="playlist.import.failed">
        <source>Playlist import failed.</source>
        <translation>プレイリストの読み込みに失敗しました。</translation>
    </message>
    <message id="playlist.restore_previous.failed">
        <source>Previous session restore failed.</source>
        <translation>前回のセッションを復元できませんでした。</translation>
    </message>
    <message id="playlist.restore_previous.playout_active">
        <source>Turn OFF AIR, turn DSK off, and stop BGM before restoring the previous session.</source>
        <translation>前回のセッションを復元する前に、OFF AIR にし、DSK をオフにし、BGM を停止してください。</translation>
    </message>
    <message id="playlist.restore_previous.succeeded">
        <source>Restored %1 playlist(s) and %2 item(s) from the previous session.</source>
        <translation>前回のセッションから %1 個のプレイリストと %2 個の項目を復元しました。</translation>
    </message>
    <message id="playlist.bulk.failed">
        <source>Could not apply the playlist bulk operation.</source>
        <translation>プレイリストの一括操作を適用できませんでした。</translation>
    </message>
    <message id="playlist.bulk.bgm_active">
        <source>Stop BGM before changing or clearing its playlist mode.</source>
        <translation>BGM のプレイリストのモードを変更またはクリアする前に BGM を停止してください。</translation>
    </message>
    <message id="playlist.bulk.undo.playout_active">
        <source>Turn OFF AIR, turn DSK off, and stop BGM before undoing a playlist bulk operation.</source>
        <translation>プレイリストの一括操作を元に戻す前に、OFF AIR にし、DSK をオフにし、BGM を停止してください。</translation>
    </message>
    <message id="logs.show">
        <source>Show Log</source>
        <translation>ログを表示</translation>
    </message>
    <message id="logs.debug">
        <source>Debug Mode</source>
        <translation>デバッグモード</translation>
    </message>
    <message id="logs.search">
        <source>Search the log</source>
        <translation>ログを検索</translation>
    </message>
    <message id="logs.all">
        <source>All</source>
        <translation>すべて</translation>
    </message>
    <message id="logs.warnings">
        <source>Warnings / Errors</source>
        <translation>警告 / エラー</translation>
    </message>
    <message id="logs.follow">
        <source>Live update</source>
        <translation>自動更新</translation>
    </message>
    <message id="logs.save">
        <source>Save Displayed Log</source>
        <translation>表示中のログを保存</translation>
    </message>
    <message id="logs.folder">
        <source>Open Log Folder</source>
        <translation>ログフォルダーを開く</translation>
    </message>
    <message id="logs.failed">
        <source>Log save/open failed: %1</source>
        <translation>ログの保存またはオープンに失敗しました: %1</translation>
    </message>
    <message id="logs.retention">
        <source>Latest 2,000 records shown. Automatic logs: %1 (10 MB × 10 files).</source>
        <translation>最新の 2,000 件を表示しています。自動ログ: %1（10 MB × 10 ファイル）。</translation>
    </message>
    <message id="logs.saved">
        <source>Saved: %1</source>
        <translation>保存しました: %1</translation>
    </message>
    <message id="info.severity.success">
        <source>Success</source>
        <translation>成功</translation>
    </message>
    <message id="info.severity.warning">
        <source>Warning</source>
        <translation>警告</translation>
    </message>
    <message id="info.severity.error">
        <source>Error</source>
        <translation>エラー</translation>
    </message>
    <message id="info.source.system">
        <source>System</source>
        <translation>システム</translation>
    </message>
    <message id="info.source.playlist">
        <source>Playlist</source>
        <translation>プレイリスト</translation>
    </message>
    <message id="info.source.program">
        <source>Program</source>
        <translation>プログラム</translation>
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
        <translation>オーディオデバイス設定を開く</translation>
    </message>
    <message id="info.accessible.summary">
        <source>User information: %1, %2, %3</source>
        <translation>ユーザー情報: %1、%2、%3</translation>
    </message>
    <message id="edit.pfl.same_device_confirm">
        <source>PFL audio will be sent to the on-air output. Are you sure you want to play it?</source>
        <translation>PFL の音声が ON AIR の出力に送られます。再生してもよろしいですか？</translation>
    </message>
    <message id="settings.language.load_failed">
        <source>Could not load the language pack: %1</source>
        <translation>言語パックを読み込めませんでした: %1</translation>
    </message>
    <message id="settings.language.save_failed">
        <source>The language was changed for this session, but the preference could not be saved.</source>
        <translation>この起動中の表示言語は変更しましたが、設定を保存できませんでした。</translation>
    </message>
    <message id="settings.skin.save_failed">
        <source>Could not save the Controller skin setting.</source>
        <translation>コントローラーのスキン設定を保存できませんでした。</translation>
    </message>
    <message id="settings.language.unknown">
        <source>Unknown display language.</source>
        <translation>不明な表示言語です。</translation>
    </message>
    <message id="settings.language.change_failed">
        <source>The language could not be changed: %1</source>
        <translation>表示言語を変更できませんでした: %1</translation>
    </message>
    <message id="settings.language.changed">
        <source>Language changed to %1.</source>
        <translation>表示言語を %1 に変更しました。</translation>
    </message>
    <message id="program.error.gstreamer_playback">
        <source>ON AIR playback error: %1</source>
        <translation>ON AIR 再生エラー: %1</translation>
    </message>
    <message id="program.warning.audio_output_changing">
        <source>The program audio output is changing. Try again.</source>
        <translation>プログラム音声出力を切り替え中です。もう一度お試しください。</translation>
    </message>
    <message id="program.warning.audio_output_unavailable">
        <source>The program audio output is unavailable.</source>
        <translation>プログラム音声出力を使用できません。</translation>
    </message>
    <message id="program.dsk.audio_isolation_failed">
        <source>DSK audio isolation could not be enforced.</source>
        <translation>DSKの音声分離を適用できませんでした。</translation>
    </message>
    <message id="program.warning.bgm_mode_dsk">
        <source>Items of a BGM playlist play on the BGM player, not in DSK.</source>
        <translation>BGMプレイリストのアイテムはDSKではなくBGMプレーヤーで再生されます。</translation>
    </message>
    <message id="program.dsk.invalid_item">
        <source>Select a valid playlist item to send to DSK.</source>
        <translation>DSKに送る有効なプレイリストアイテムを選択してください。</translation>
    </message>
    <message id="program.dsk.invalid_range">
        <source>The DSK In or Out point is invalid.</source>
        <translation>DSKのIn点またはOut点が無効です。</translation>
    </message>
    <message id="program.dsk.still_stopping">
        <source>The previous DSK source is still stopping.</source>
        <translation>前のDSKソースがまだ停止処理中です。</translation>
    </message>
    <message id="program.dsk.stop_failed">
        <source>Could not stop the DSK pipeline.</source>
        <translation>DSKパイプラインを停止できませんでした。</translation>
    </message>
    <message id="program.dsk.prepare_failed">
        <source>Could not prepare the DSK item.</source>
        <translation>DSKアイテムを準備できませんでした。</translation>
    </message>
    <message id="program.dsk.media_offline">
        <source>Media offline: the file is missing or did not respond in time.</source>
        <translation>メディアがオフラインです: ファイルが見つからないか、時間内に応答しませんでした。</translation>
    </message>
    <message id="program.dsk.cancelled">
        <source>Media preparation was cancelled.</source>
        <translation>メディアの準備が取り消されました。</translation>
    </message>
    <message id="program.dsk.no_video">
        <source>No playable video stream was found in the DSK item.</source>
        <translation>DSKアイテムに再生可能な映像ストリームが見つかりませんでした。</translation>
    </message>
    <message id="program.dsk.no_frame">
        <source>No DSK frame arrived before the preparation deadline.</source>
        <translation>準備の期限までにDSKのフレームが届きませんでした。</translation>
    </message>
    <message id="program.dsk.display_failed">
        <source>Could not display DSK.</source>
        <translation>DSKを表示できませんでした。</translation>
    </message>
    <message id="program.dsk.off_failed">
        <source>Could not turn DSK off.</source>
        <translation>DSKをオフにできませんでした。</translation>
    </message>
    <message id="program.dsk.pause_failed">
        <source>Could not pause the DSK media.</source>
        <translation>DSKメディアを一時停止できませんでした。</translation>
    </message>
    <message id="program.dsk.play_failed">
        <source>Could not play the DSK media.</source>
        <translation>DSKメディアを再生できませんでした。</translation>
    </message>
    <message id="program.dsk.end_mode_stop_failed">
        <source>Could not execute DSK End Mode &quot;Stop&quot;.</source>
        <translation>DSKの終了モード「停止」を実行できませんでした。</translation>
    </message>
    <message id="program.dsk.end_mode_pause_failed">
        <source>Could not execute DSK End Mode &quot;Pause&quot;.</source>
        <translation>DSKの終了モード「一時停止」を実行できませんでした。</translation>
    </message>
    <message id="program.dsk.end_mode_repeat_failed">
        <source>Could not execute DSK End Mode &quot;Repeat&quot;.</source>
        <translation>DSKの終了モード「リピート」を実行できませんでした。</translation>
    </message>
    <message id="program.dsk.end_mode_next_failed">
        <source>Could not execute DSK End Mode &quot;Next&quot;.</source>
        <translation>DSKの終了モード「次へ」を実行できませんでした。</translation>
    </message>
    <message id="program.dsk.end_mode_goto_failed">
        <source>Could not execute DSK End Mode &quot;GOTO&quot;.</source>
        <translation>DSKの終了モード「GOTO」を実行できませんでした。</translation>
    </message>
    <message id="program.dsk.no_next">
        <source>No eligible next DSK playlist item is available.</source>
        <translation>次に表示できるDSKプレイリストアイテムがありません。</translation>
    </message>
    <message id="program.dsk.no_goto">
        <source>No eligible DSK GOTO destination is selected or available.</source>
        <translation>DSKのGOTO先が選択されていないか、使用できません。</translation>
    </message>
    <message id="program.dsk.return_failed">
        <source>Could not return the DSK media to its In point.</source>
        <translation>DSKメディアをIn点に戻せませんでした。</translation>
    </message>
    <message id="program.dsk.repeat_failed">
        <source>Could not start repeated DSK playback.</source>
        <translation>DSKのリピート再生を開始できませんでした。</translation>
    </message>
    <message id="program.dsk.stop_at_in_failed">
        <source>Could not stop the DSK media at its In point.</source>
        <translation>DSKメディアをIn点で停止できませんでした。</translation>
    </message>
    <message id="program.dsk.composition_failed">
        <source>GPU composition of the DSK frame failed. Base video will continue.</source>
        <translation>DSKフレームのGPU合成に失敗しました。ベース映像は継続します。</translation>
    </message>
    <message id="program.dsk.frame_display_failed">
        <source>Could not display the DSK GPU frame.</source>
        <translation>DSKのGPUフレームを表示できませんでした。</translation>
    </message>
    <message id="program.dsk.frames_failed">
        <source>Could not retrieve video frames from the DSK media.</source>
        <translation>DSKメディアから映像フレームを取得できませんでした。</translation>
    </message>
    <message id="program.dsk.playback_failed">
        <source>DSK playback failed.</source>
        <translation>DSKの再生に失敗しました。</translation>
    </message>
    <message id="program.dsk.preparing_tooltip">
        <source>Preparing DSK: %1 (click to queue ON)</source>
        <translation>DSK準備中: %1 (クリックで準備完了後にON)</translation>
    </message>
    <message id="program.dsk.preparing_accessible">
        <source>DSK is preparing; press to turn on when ready</source>
        <translation>DSKは準備中です。押すと準備完了時にオンになります</translation>
    </message>
    <message id="program.dsk.queued_tooltip">
        <source>DSK ON queued: %1 (click to cancel)</source>
        <translation>DSK ON待機中: %1 (クリックで取り消し)</translation>
    </message>
    <message id="program.dsk.queued_accessible">
        <source>DSK is preparing to turn on; press to cancel</source>
        <translation>DSKはオンにする準備中です。押すと取り消します</translation>
    </message>
    <message id="program.dsk.off_tooltip">
        <source>Turn DSK off and return it to the In point</source>
        <translation>DSKをオフにしてIn点に戻す</translation>
    </message>
    <message id="program.dsk.on_accessible">
        <source>DSK is active; press to turn off</source>
        <translation>DSKはアクティブです。押すとオフになります</translation>
    </message>
    <message id="program.dsk.error_tooltip">
        <source>DSK error: %1</source>
        <translation>DSKエラー: %1</translation>
    </message>
    <message id="program.dsk.retry_accessible">
        <source>DSK error: %1; press to retry with the selected item</source>
        <translation>DSKエラー: %1。押すと選択中のアイテムで再試行します</translation>
    </message>
    <message id="program.dsk.select_accessible">
        <source>DSK error: %1; select a valid playlist item</source>
        <translation>DSKエラー: %1。有効なプレイリストアイテムを選択してください</translation>
    </message>
    <message id="program.dsk.send_tooltip">
        <source>Send the selected playlist item to DSK</source>
        <translation>選択中のプレイリストアイテムをDSKに送る</translation>
    </message>
    <message id="program.dsk.inactive_ready_accessible">
        <source>DSK is inactive; press to show the selected item</source>
        <translation>DSKは非アクティブです。押すと選択中のアイテムを表示します</translation>
    </message>
    <message id="program.warning.item_in_dsk">
        <source>An item in DSK cannot be taken ON AIR.</source>
        <translation>DSKに表示中のアイテムはON AIRにできません。</translation>
    </message>
    <message id="program.warning.bgm_mode_on_air">
        <source>Items of a BGM playlist play on the BGM player, not ON AIR.</source>
        <translation>BGM プレイリストの項目は ON AIR ではなく BGM プレーヤーで再生されます。</translation>
    </message>
    <message id="program.warning.delete_bgm">
        <source>The item playing on the BGM player cannot be deleted.</source>
        <translation>BGM プレーヤーで再生中の項目は削除できません。</translation>
    </message>
    <message id="input.audio.error">
        <source>Live audio input error: %1</source>
        <translation>ライブ音声入力エラー: %1</translation>
    </message>
    <message id="powerpoint.import.native_on_air">
        <source>A PowerPoint slide show is ON AIR. Take it OFF AIR before converting a presentation.</source>
        <translation>PowerPoint のスライドショーが ON AIR 中です。プレゼンテーションを変換する前に OFF AIR にしてください。</translation>
    </message>
    <message id="powerpoint.import.release_cue_failed">
        <source>The standby player could not release its PowerPoint slide show for the conversion.</source>
        <translation>変換のために待機プレーヤーの PowerPoint スライドショーを解放できませんでした。</translation>
    </message>
    <message id="playlist.bulk.pending_imports">
        <source>Wait for media analysis and document imports to finish before applying a playlist bulk operation.</source>
        <translation>メディア解析とドキュメントの読み込みが終わってから、プレイリストの一括操作を実行してください。</translation>
    </message>
    <message id="playlist.add_media.some_failed">
        <source>Some files could not be added.</source>
        <translation>一部のファイルを追加できませんでした。</translation>
    </message>
    <message id="playlist.add_media.document_not_yet">
        <source>%1: This document type cannot be added yet.</source>
        <translation>%1: この種類のドキュメントはまだ追加できません。</translation>
    </message>
    <message id="playlist.add_media.not_queued">
        <source>%1: The media item could not be queued.</source>
        <translation>%1: メディア項目を解析待ちに追加できませんでした。</translation>
    </message>
    <message id="playlist.default_name">
        <source>Playlist %1</source>
        <translation>プレイリスト %1</translation>
    </message>
    <message id="media.generating">
        <source>Generating…</source>
        <translation>生成中…</translation>
    </message>
    <message id="menu.playlist">
        <source>Playlist</source>
        <translation>プレイリスト</translation>
    </message>
    <message id="playlist.add_tab.tooltip">
        <source>Add a new playlist</source>
        <translation>新しいプレイリストを追加</translation>
    </message>
    <message id="playlist.analysis.analyzing">
        <source>Analyzing media…</source>
        <translation>メディアを解析中…</translation>
    </message>
    <message id="playlist.analysis.waiting">
        <source>Waiting to analyze…</source>
        <translation>解析待ち…</translation>
    </message>
    <message id="playlist.bulk.apply">
        <source>APPLY</source>
        <translation>適用</translation>
    </message>
    <message id="playlist.bulk.bgm_mode">
        <source>Set BGM Mode</source>
        <translation>BGMモードに設定</translation>
    </message>
    <message id="playlist.bulk.clear">
        <source>Clear Playlist</source>
        <translation>プレイリストを空にする</translation>
    </message>
    <message id="playlist.bulk.delete">
        <source>Delete Playlist</source>
        <translation>プレイリストを削除</translation>
    </message>
    <message id="playlist.bulk.play_once">
        <source>Play List Once</source>
        <translation>リストを1回再生</translation>
    </message>
    <message id="playlist.bulk.repeat_all">
        <source>Repeat All</source>
        <translation>全体をリピート</translation>
    </message>
    <message id="playlist.bulk.shuffle">
        <source>Shuffle</source>
        <translation>シャッフル</translation>
    </message>
    <message id="playlist.bulk.standard_mode">
        <source>Clear BGM Mode</source>
        <translation>BGMモードを解除</translation>
    </message>
    <message id="playlist.bulk.undo">
        <source>Undo</source>
        <translation>元に戻す</translation>
    </message>
    <message id="playlist.button.add">
        <source>ADD FILES</source>
        <translation>ファイル追加</translation>
    </message>
    <message id="playlist.button.add.tooltip">
        <source>Add media files to this playlist</source>
        <translation>このプレイリストにメディアファイルを追加</translation>
    </message>
    <message id="playlist.button.delete">
        <source>DEL</source>
        <translation>削除</translation>
    </message>
    <message id="playlist.button.delete.tooltip">
        <source>Remove the selected item from the playlist (the source file will not be deleted)</source>
        <translation>選択した項目をプレイリストから外します（元のファイルは削除されません）</translation>
    </message>
    <message id="playlist.button.edit">
        <source>EDIT</source>
        <translation>EDIT</translation>
    </message>
    <message id="playlist.button.edit.tooltip_button">
        <source>Load the selected item into EDIT</source>
        <translation>選択した項目をEDITに読み込みます</translation>
    </message>
    <message id="playlist.button.edit.tooltip_selection">
        <source>The selected item is loaded into EDIT when it is selected</source>
        <translation>項目を選択するとEDITに読み込まれます</translation>
    </message>
    <message id="playlist.button.move_down.tooltip">
        <source>Move the selected item down</source>
        <translation>選択した項目を下へ移動</translation>
    </message>
    <message id="playlist.button.move_up.tooltip">
        <source>Move the selected item up</source>
        <translation>選択した項目を上へ移動</translation>
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
        <translation>選択した項目をON AIRにします。ON AIR中はOFF AIRにします</translation>
    </message>
    <message id="playlist.color.blue">
        <source>Blue</source>
        <translation>青</translation>
    </message>
    <message id="playlist.color.default">
        <source>Default</source>
        <translation>標準</translation>
    </message>
    <message id="playlist.color.green">
        <source>Green</source>
        <translation>緑</translation>
    </message>
    <message id="playlist.color.red">
        <source>Red</source>
        <translation>赤</translation>
    </message>
    <message id="playlist.color.yellow">
        <source>Yellow</source>
        <translation>黄</translation>
    </message>
    <message id="playlist.conversion.action_unavailable">
        <source>This item is being analyzed or converted and cannot be used for %1.</source>
        <translation>この項目は解析中または変換中のため、%1 に使用できません。</translation>
    </message>
    <message id="playlist.conversion.encoding">
        <source>Encoding video…</source>
        <translation>動画をエンコード中…</translation>
    </message>
    <message id="playlist.conversion.exporting">
        <source>Exporting slides…</source>
        <translation>スライドを書き出し中…</translation>
    </message>
    <message id="playlist.conversion.item_status">
        <source>%1 %2%</source>
        <translation>%1 %2%</translation>
    </message>
    <message id="playlist.conversion.preparing">
        <source>Preparing conversion…</source>
        <translation>変換を準備中…</translation>
    </message>
    <message id="playlist.conversion.rendering">
        <source>Rendering pages…</source>
        <translation>ページをレンダリング中…</translation>
    </message>
    <message id="playlist.conversion.waiting">
        <source>Waiting to convert…</source>
        <translation>変換待ち…</translation>
    </message>
    <message id="playlist.crossfade">
        <source>CROSSFADE</source>
        <translation>クロスフェード</translation>
    </message>
    <message id="playlist.crossfade.duration.tooltip">
        <source>Crossfade duration</source>
        <translation>クロスフェードの長さ</translation>
    </message>
    <message id="playlist.crossfade.step.tooltip">
        <source>Step through common crossfade durations</source>
        <translation>よく使うクロスフェードの長さを順に切り替えます</translation>
    </message>
    <message id="playlist.crossfade.tooltip">
        <source>Crossfade video using the selected duration when taking the item on air</source>
        <translation>ON AIRにするとき、選んだ長さで映像をクロスフェードします</translation>
    </message>
    <message id="playlist.current_time.local_tooltip">
        <source>Local clock (%1)</source>
        <translation>ローカル時計（%1）</translation>
    </message>
    <message id="playlist.current_time.title">
        <source>CURRENT TIME</source>
        <translation>現在時刻</translation>
    </message>
    <message id="playlist.error.cue">
        <source>PREPARATION ERROR</source>
        <translation>準備エラー</translation>
    </message>
    <message id="playlist.error.on_air">
        <source>ON AIR ERROR</source>
        <translation>ON AIRエラー</translation>
    </message>
    <message id="playlist.item.modes">
        <source>Start %1  End %2  Nominal Volume %3</source>
        <translation>開始 %1  終了 %2  基準音量 %3</translation>
    </message>
    <message id="playlist.item.points">
        <source>In %1  Out %2</source>
        <translation>イン %1  アウト %2</translation>
    </message>
    <message id="playlist.item_count">
        <source>%1 ITEMS</source>
        <translation>%1 項目</translation>
    </message>
    <message id="playlist.list.description">
        <source>List view. Click an item to select it and load it into EDIT.</source>
        <translation>リスト表示。項目をクリックすると選択され、EDITに読み込まれます。</translation>
    </message>
    <message id="playlist.list.description.button">
        <source>List view. Click an item to select it; EDIT loads it into the EDIT player.</source>
        <translation>リスト表示。項目をクリックすると選択されます。EDITボタンでEDITプレーヤーに読み込みます。</translation>
    </message>
    <message id="playlist.list.description.tiles">
        <source>Tile view. Click a tile to take it ON AIR; Ctrl+Click selects and prepares it only.</source>
        <translation>タイル表示。タイルをクリックするとON AIRになります。Ctrl+クリックは選択と準備のみです。</translation>
    </message>
    <message id="playlist.list.name">
        <source>Playlist items</source>
        <translation>プレイリストの項目</translation>
    </message>
    <message id="playlist.map.column.duration">
        <source>DUR</source>
        <translation>長さ</translation>
    </message>
    <message id="playlist.map.column.end_mode">
        <source>End Mode</source>
        <translation>終了モード</translation>
    </message>
    <message id="playlist.map.column.item">
        <source>Item No.</source>
        <translation>項目番号</translation>
    </message>
    <message id="playlist.map.column.name">
        <source>Item name</source>
        <translation>項目名</translation>
    </message>
    <message id="playlist.map.column.playlist">
        <source>Playlist No.</source>
        <translation>プレイリスト番号</translation>
    </message>
    <message id="playlist.map.column.sequence">
        <source>Play Sequence No.</source>
        <translation>再生順</translation>
    </message>
    <message id="playlist.map.column.start_mode">
        <source>Start Mode</source>
        <translation>開始モード</translation>
    </message>
    <message id="playlist.map.endpoint">
        <source>Arrival: Playlist %1 / Item %2 — %3</source>
        <translation>到着: プレイリスト %1 / 項目 %2 — %3</translation>
    </message>
    <message id="playlist.map.note.destination_bgm">
        <source>The destination is in a BGM playlist and cannot continue in ON AIR. Mapping stops here.</source>
        <translation>行き先はBGMプレイリストにあり、ON AIRでは続けられません。ここでマップを終えます。</translation>
    </message>
    <message id="playlist.map.note.destination_pause">
        <source>The next item's Start Mode is PAUSE. Mapping stops before that item.</source>
        <translation>次の項目の開始モードがPAUSEです。その項目の手前でマップを終えます。</translation>
    </message>
    <message id="playlist.map.note.destination_unavailable">
        <source>The NEXT or GOTO destination is unavailable. Mapping stops here.</source>
        <translation>NEXTまたはGOTOの行き先がありません。ここでマップを終えます。</translation>
    </message>
    <message id="playlist.map.note.infinite_repeat">
        <source>An infinite repeat was found. Total is unlimited.</source>
        <translation>無限リピートがあります。合計は無制限です。</translation>
    </message>
    <message id="playlist.map.note.live_or_unknown">
        <source>A LIVE item or an item with unknown duration was found. Total is unlimited.</source>
        <translation>LIVE項目または長さ不明の項目があります。合計は無制限です。</translation>
    </message>
    <message id="playlist.map.note.loop">
        <source>A playback loop was found. Total is unlimited.</source>
        <translation>再生のループがあります。合計は無制限です。</translation>
    </message>
    <message id="playlist.map.note.start_pause">
        <source>The starting item's Start Mode is PAUSE. Mapping stops at this item.</source>
        <translation>開始項目の開始モードがPAUSEです。この項目でマップを終えます。</translation>
    </message>
    <message id="playlist.map.title">
        <source>Map</source>
        <translation>マップ</translation>
    </message>
    <message id="playlist.map.total">
        <source>Total: %1</source>
        <translation>合計: %1</translation>
    </message>
    <message id="playlist.map.unlimited">
        <source>Unlimited</source>
        <translation>無制限</translation>
    </message>
    <message id="playlist.menu.color">
        <source>Item Color</source>
        <translation>項目の色</translation>
    </message>
    <message id="playlist.menu.copy_state">
        <source>Copy State</source>
        <translation>状態をコピー</translation>
    </message>
    <message id="playlist.menu.crossfade">
        <source>Crossfade</source>
        <translation>クロスフェード</translation>
    </message>
    <message id="playlist.menu.end_mode">
        <source>End Mode</source>
        <translation>終了モード</translation>
    </message>
    <message id="playlist.menu.fade_in">
        <source>Fade In</source>
        <translation>フェードイン</translation>
    </message>
    <message id="playlist.menu.fade_out">
        <source>Fade Out</source>
        <translation>フェードアウト</translation>
    </message>
    <message id="playlist.menu.map">
        <source>Map</source>
        <translation>マップ</translation>
    </message>
    <message id="playlist.menu.new_playlist">
        <source>New Playlist</source>
        <translation>新しいプレイリスト</translation>
    </message>
    <message id="playlist.menu.paste_state">
        <source>Paste State</source>
        <translation>状態を貼り付け</translation>
    </message>
    <message id="playlist.menu.rename">
        <source>Rename Item</source>
        <translation>項目名を変更</translation>
    </message>
    <message id="playlist.menu.separator_below">
        <source>Separator Below</source>
        <translation>下に区切り線</translation>
    </message>
    <message id="playlist.menu.start_mode">
        <source>Start Mode</source>
        <translation>開始モード</translation>
    </message>
    <message id="playlist.mode.goto">
        <source>GOTO</source>
        <translation>GOTO</translation>
    </message>
    <message id="playlist.mode.next">
        <source>Next</source>
        <translation>次へ</translation>
    </message>
    <message id="playlist.mode.pause">
        <source>Pause</source>
        <translation>一時停止</translation>
    </message>
    <message id="playlist.mode.play">
        <source>Play</source>
        <translation>再生</translation>
    </message>
    <message id="playlist.mode.repeat">
        <source>Repeat</source>
        <translation>リピート</translation>
    </message>
    <message id="playlist.mode.stop">
        <source>Stop</source>
        <translation>停止</translation>
    </message>
    <message id="playlist.name.placeholder">
        <source>Enter playlist name</source>
        <translation>プレイリスト名を入力</translation>
    </message>
    <message id="playlist.powerpoint.error">
        <source>PPT: ERROR</source>
        <translation>PPT: エラー</translation>
    </message>
    <message id="playlist.powerpoint.preparing">
        <source>PPT: PREPARING</source>
        <translation>PPT: 準備中</translation>
    </message>
    <message id="playlist.powerpoint.preparing_detail">
        <source>Preparing the selected PowerPoint. Press ON AIR to take it automatically when preparation finishes.</source>
        <translation>選択したPowerPointを準備しています。ON AIRを押すと、準備ができしだい自動でON AIRになります。</translation>
    </message>
    <message id="playlist.powerpoint.ready">
        <source>PPT: READY</source>
        <translation>PPT: 準備完了</translation>
    </message>
    <message id="playlist.rename.label">
        <source>Display name:</source>
        <translation>表示名:</translation>
    </message>
    <message id="playlist.rename.title">
        <source>Rename Playlist Item</source>
        <translation>プレイリスト項目の名前を変更</translation>
    </message>
    <message id="playlist.view.list.tooltip">
        <source>List view</source>
        <translation>リスト表示</translation>
    </message>
    <message id="playlist.view.tiles.tooltip">
        <source>Tile view
Click a tile: ON AIR
Ctrl+Click: Select and prepare only</source>
        <translation>タイル表示
タイルをクリック: ON AIR
Ctrl+クリック: 選択と準備のみ</translation>
    </message>
    <message id="audio_fader.master_name">
        <source>ON AIR master volume</source>
        <translation>ON AIR マスター音量</translation>
    </message>
    <message id="audio_fader.master_description">
        <source>ON AIR master volume: %1 dB</source>
        <translation>ON AIR マスター音量: %1 dB</translation>
    </message>
    <message id="audio_fader.master_tooltip">
        <source>ON AIR master volume: %1 dB
Double-click to reset to 0 dB</source>
        <translation>ON AIR マスター音量: %1 dB
ダブルクリックで 0 dB に戻します</translation>
    </message>
    <message id="audio_fader.item_name">
        <source>ON AIR item volume</source>
        <translation>ON AIR アイテム音量</translation>
    </message>
    <message id="audio_fader.item_description">
        <source>ON AIR item volume: %1 dB</source>
        <translation>ON AIR アイテム音量: %1 dB</translation>
    </message>
    <message id="audio_fader.item_tooltip">
        <source>ON AIR item volume: %1 dB
Double-click to reset to 0 dB</source>
        <translation>ON AIR アイテム音量: %1 dB
ダブルクリックで 0 dB に戻します</translation>
    </message>
    <message id="audio_fader.nominal_name">
        <source>Nominal volume</source>
        <translation>基準音量</translation>
    </message>
    <message id="audio_fader.nominal_description">
        <source>Nominal volume of the item: %1 dB</source>
        <translation>アイテムの基準音量: %1 dB</translation>
    </message>
    <message id="audio_fader.nominal_tooltip">
        <source>Nominal volume: %1 dB
Double-click to reset to 0 dB</source>
        <translation>基準音量: %1 dB
ダブルクリックで 0 dB に戻します</translation>
    </message>
    <message id="equalizer.band_name">
        <source>EQ %1</source>
        <translation>イコライザー %1</translation>
    </message>
    <message id="equalizer.band_tooltip">
        <source>EQ %1: %2
Drag up or down to adjust</source>
        <translation>イコライザー %1: %2
上下にドラッグして調整します</translation>
    </message>
    <message id="master_eq.title">
        <source>Master EQ</source>
        <translation>マスターEQ</translation>
    </message>
    <message id="master_eq.reset">
        <source>Reset to flat</source>
        <translation>フラットに戻す</translation>
    </message>
    <message id="audio_delay.frames">
        <source>%1 frames</source>
        <translation>%1 フレーム</translation>
    </message>
    <message id="audio_delay.tooltip">
        <source>Delays the sound to meet a late picture. One frame is 1/30 s.</source>
        <translation>遅れて届く映像に合わせて音声を遅らせます。1 フレームは 1/30 秒です。</translation>
    </message>
    <message id="audio_delay.decrease">
        <source>Less audio delay</source>
        <translation>音声の遅延を減らす</translation>
    </message>
    <message id="audio_delay.increase">
        <source>More audio delay</source>
        <translation>音声の遅延を増やす</translation>
    </message>
    <message id="common.live">
        <source>LIVE</source>
        <translation>ライブ</translation>
    </message>
    <message id="program.audio.item">
        <source>ITEM</source>
        <translation>アイテム</translation>
    </message>
    <message id="program.audio.master">
        <source>MASTER</source>
        <translation>マスター</translation>
    </message>
    <message id="program.background.black">
        <source>Black</source>
        <translation>黒</translation>
    </message>
    <message id="program.background.blue">
        <source>Blue</source>
        <translation>青</translation>
    </message>
    <message id="program.background.green">
        <source>Green</source>
        <translation>緑</translation>
    </message>
    <message id="program.background.grey">
        <source>Grey</source>
        <translation>グレー</translation>
    </message>
    <message id="program.background.white">
        <source>White</source>
        <translation>白</translation>
    </message>
    <message id="program.background.title">
        <source>BG</source>
        <translation>背景</translation>
    </message>
    <message id="program.background.tooltip">
        <source>Colour behind the program picture</source>
        <translation>番組映像の背景色</translation>
    </message>
    <message id="program.dsk">
        <source>DSK</source>
        <translation>DSK表示</translation>
    </message>
    <message id="program.dsk.inactive_accessible">
        <source>DSK is inactive; select a playlist item</source>
        <translation>DSKは無効です。プレイリストの項目を選択してください</translation>
    </message>
    <message id="program.dsk.pause">
        <source>DSK PAUSE</source>
        <translation>DSK一時停止</translation>
    </message>
    <message id="program.dsk.play">
        <source>DSK PLAY</source>
        <translation>DSK再生</translation>
    </message>
    <message id="program.dsk.select_tooltip">
        <source>Select a playlist item to send to DSK</source>
        <translation>DSKに送るプレイリスト項目を選択してください</translation>
    </message>
    <message id="program.end_mode.accessible">
        <source>ON AIR end mode: %1</source>
        <translation>ON AIRの終了モード: %1</translation>
    </message>
    <message id="program.end_mode.title">
        <source>END MODE</source>
        <translation>終了モード</translation>
    </message>
    <message id="program.eq.adjusted">
        <source>Master EQ: adjusted</source>
        <translation>マスターEQ: 調整済み</translation>
    </message>
    <message id="program.eq.flat">
        <source>Master EQ: flat (all bands 0 dB)</source>
        <translation>マスターEQ: フラット（全帯域 0 dB）</translation>
    </message>
    <message id="program.eq.item">
        <source>ITEM EQ</source>
        <translation>アイテムEQ</translation>
    </message>
    <message id="program.eq.item_window">
        <source>ON AIR item EQ</source>
        <translation>ON AIRアイテムのEQ</translation>
    </message>
    <message id="program.eq.master">
        <source>MASTER EQ</source>
        <translation>マスターEQ</translation>
    </message>
    <message id="program.fade.duration_tooltip">
        <source>Fade duration in seconds</source>
        <translation>フェードの長さ（秒）</translation>
    </message>
    <message id="program.fade.item_in">
        <source>ITEM FADE IN</source>
        <translation>アイテム フェードイン</translation>
    </message>
    <message id="program.fade.item_out">
        <source>ITEM FADE OUT</source>
        <translation>アイテム フェードアウト</translation>
    </message>
    <message id="program.fade.master_in">
        <source>MASTER FADE IN</source>
        <translation>マスター フェードイン</translation>
    </message>
    <message id="program.fade.master_out">
        <source>MASTER FADE OUT</source>
        <translation>マスター フェードアウト</translation>
    </message>
    <message id="program.file.current_accessible">
        <source>Current on-air file: %1</source>
        <translation>現在のON AIRファイル: %1</translation>
    </message>
    <message id="program.file.none">
        <source>No file selected</source>
        <translation>ファイルが選択されていません</translation>
    </message>
    <message id="program.file.none_accessible">
        <source>Current on-air file: none</source>
        <translation>現在のON AIRファイル: なし</translation>
    </message>
    <message id="program.ftb">
        <source>FTB</source>
        <translation>黒フェード</translation>
    </message>
    <message id="program.ftb.tooltip">
        <source>Fade the program to black, and back</source>
        <translation>番組映像を黒へフェードし、また戻します</translation>
    </message>
    <message id="program.mute">
        <source>MUTE</source>
        <translation>ミュート</translation>
    </message>
    <message id="program.mute.tooltip">
        <source>Mute the program output</source>
        <translation>番組出力をミュートします</translation>
    </message>
    <message id="program.off_air">
        <source>OFF AIR</source>
        <translation>OFF AIR</translation>
    </message>
    <message id="program.pause">
        <source>PAUSE</source>
        <translation>一時停止</translation>
    </message>
    <message id="program.pause.shortcut_tooltip">
        <source>Pause ON AIR (%1: Play/Pause)</source>
        <translation>ON AIRを一時停止（%1: 再生/一時停止）</translation>
    </message>
    <message id="program.pause.tooltip">
        <source>Pause the ON AIR item</source>
        <translation>ON AIRの項目を一時停止します</translation>
    </message>
    <message id="program.play">
        <source>PLAY</source>
        <translation>再生</translation>
    </message>
    <message id="program.play.shortcut_tooltip">
        <source>Play ON AIR (%1: Play/Pause)</source>
        <translation>ON AIRを再生（%1: 再生/一時停止）</translation>
    </message>
    <message id="program.play.tooltip">
        <source>Play the ON AIR item</source>
        <translation>ON AIRの項目を再生します</translation>
    </message>
    <message id="program.playback_rate.button.accessible">
        <source>Set ON AIR playback speed to %1x</source>
        <translation>ON AIRの再生速度を %1 倍にします</translation>
    </message>
    <message id="program.playback_rate.title">
        <source>SPEED</source>
        <translation>再生速度</translation>
    </message>
    <message id="program.remaining.accessible">
        <source>ON AIR remaining time: %1</source>
        <translation>ON AIRの残り時間: %1</translation>
    </message>
    <message id="program.remaining.title">
        <source>REMAIN TIMER</source>
        <translation>残り時間</translation>
    </message>
    <message id="program.remaining.total_accessible">
        <source>ON AIR Total remaining time: %1</source>
        <translation>ON AIRの合計残り時間: %1</translation>
    </message>
    <message id="program.remaining.total_mode">
        <source>Total</source>
        <translation>合計</translation>
    </message>
    <message id="program.remaining.total_mode.tooltip">
        <source>Show the remaining time to the Map Total arrival point</source>
        <translation>マップの合計の到着点までの残り時間を表示します</translation>
    </message>
    <message id="program.remaining.unknown">
        <source>UNLIMITED</source>
        <translation>無制限</translation>
    </message>
    <message id="program.section.title">
        <source>ON AIR</source>
        <translation>ON AIR</translation>
    </message>
    <message id="menu.view">
        <source>View</source>
        <translation>表示</translation>
    </message>
    <message id="menu.view.next_output_display">
        <source>Next Output Display</source>
        <translation>次の出力ディスプレイ</translation>
    </message>
    <message id="program.delay.item">
        <source>ITEM DELAY</source>
        <translation>アイテム ディレイ</translation>
    </message>
    <message id="program.delay.master">
        <source>MASTER DELAY</source>
        <translation>マスター ディレイ</translation>
    </message>
    <message id="edit.section.title">
        <source>EDIT</source>
        <translation>EDIT</translation>
    </message>
    <message id="edit.media.none">
        <source>No item loaded</source>
        <translation>アイテムが読み込まれていません</translation>
    </message>
    <message id="edit.transport.go_to_start">
        <source>Go to start</source>
        <translation>先頭へ移動</translation>
    </message>
    <message id="edit.transport.go_to_in">
        <source>Go to In point</source>
        <translation>In 点へ移動</translation>
    </message>
    <message id="edit.transport.rewind">
        <source>Hold to rewind</source>
        <translation>押している間巻き戻し</translation>
    </message>
    <message id="edit.transport.pause">
        <source>Pause EDIT</source>
        <translation>EDIT を一時停止</translation>
    </message>
    <message id="edit.transport.play">
        <source>Play EDIT</source>
        <translation>EDIT を再生</translation>
    </message>
    <message id="edit.transport.fast_forward">
        <source>Hold to fast-forward</source>
        <translation>押している間早送り</translation>
    </message>
    <message id="edit.transport.go_to_out">
        <source>Go to Out point</source>
        <translation>Out 点へ移動</translation>
    </message>
    <message id="edit.transport.go_to_end">
        <source>Go to end</source>
        <translation>末尾へ移動</translation>
    </message>
    <message id="edit.transport.frame_back">
        <source>Step back one frame</source>
        <translation>1 フレーム戻る</translation>
    </message>
    <message id="edit.transport.frame_forward">
        <source>Step forward one frame</source>
        <translation>1 フレーム進む</translation>
    </message>
    <message id="edit.timeline.name">
        <source>EDIT timeline</source>
        <translation>EDIT タイムライン</translation>
    </message>
    <message id="edit.timeline.tooltip">
        <source>Click or drag to move the EDIT position</source>
        <translation>クリックまたはドラッグで EDIT の位置を移動します</translation>
    </message>
    <message id="edit.timeline.markers_none">
        <source>In and Out markers are not set</source>
        <translation>In/Out マーカーは設定されていません</translation>
    </message>
    <message id="edit.timeline.markers_in">
        <source>In marker: %1 ms; Out marker: not set; timeline before In is inactive</source>
        <translation>In マーカー: %1 ms、Out マーカー: 未設定、In より前のタイムラインは無効です</translation>
    </message>
    <message id="edit.timeline.markers_in_out">
        <source>In marker: %1 ms; Out marker: %2 ms; timeline before In and after Out is inactive</source>
        <translation>In マーカー: %1 ms、Out マーカー: %2 ms、In より前と Out より後のタイムラインは無効です</translation>
    </message>
    <message id="edit.points.set_in">
        <source>SET IN</source>
        <translation>IN 設定</translation>
    </message>
    <message id="edit.points.set_out">
        <source>SET OUT</source>
        <translation>OUT 設定</translation>
    </message>
    <message id="edit.points.set_in.tooltip">
        <source>Save the current EDIT position as the selected item's In point</source>
        <translation>現在の EDIT の位置を選択中のアイテムの In 点として保存します</translation>
    </message>
    <message id="edit.points.set_out.tooltip">
        <source>Save the current EDIT position as the selected item's Out point</source>
        <translation>現在の EDIT の位置を選択中のアイテムの Out 点として保存します</translation>
    </message>
    <message id="edit.points.in_field">
        <source>In point</source>
        <translation>In 点</translation>
    </message>
    <message id="edit.points.out_field">
        <source>Out point</source>
        <translation>Out 点</translation>
    </message>
    <message id="edit.points.in_field.tooltip">
        <source>Enter the In point as HH:MM:SS.cc, then press Enter</source>
        <translation>In 点を HH:MM:SS.cc の形で入力し、Enter キーを押してください</translation>
    </message>
    <message id="edit.points.out_field.tooltip">
        <source>Enter the Out point as HH:MM:SS.cc, then press Enter</source>
        <translation>Out 点を HH:MM:SS.cc の形で入力し、Enter キーを押してください</translation>
    </message>
    <message id="edit.points.in_default">
        <source>In point is at the default 0 seconds</source>
        <translation>In 点は既定の 0 秒です</translation>
    </message>
    <message id="edit.points.in_custom">
        <source>A custom In point is set</source>
        <translation>In 点が設定されています</translation>
    </message>
    <message id="edit.points.out_default">
        <source>Out point is at the default media duration</source>
        <translation>Out 点は既定のメディアの長さです</translation>
    </message>
    <message id="edit.points.out_custom">
        <source>A custom Out point is set</source>
        <translation>Out 点が設定されています</translation>
    </message>
    <message id="edit.start_mode.title">
        <source>START MODE</source>
        <translation>開始モード</translation>
    </message>
    <message id="edit.start_mode.pause">
        <source>Pause</source>
        <translation>一時停止</translation>
    </message>
    <message id="edit.start_mode.pause.tooltip">
        <source>Cue the item paused at the In point when it is taken ON AIR</source>
        <translation>ON AIR にしたとき In 点で一時停止して待機します</translation>
    </message>
    <message id="edit.start_mode.play">
        <source>Play</source>
        <translation>再生</translation>
    </message>
    <message id="edit.start_mode.play.tooltip">
        <source>Play the item from the In point when it is taken ON AIR</source>
        <translation>ON AIR にしたとき In 点から再生します</translation>
    </message>
    <message id="edit.end_mode.title">
        <source>END MODE</source>
        <translation>終了モード</translation>
    </message>
    <message id="edit.end_mode.stop">
        <source>Stop</source>
        <translation>停止</translation>
    </message>
    <message id="edit.end_mode.stop.tooltip">
        <source>Switch OFF AIR at the Out point or end of media</source>
        <translation>Out 点またはメディアの終わりで OFF AIR にします</translation>
    </message>
    <message id="edit.end_mode.pause">
        <source>Pause</source>
        <translation>一時停止</translation>
    </message>
    <message id="edit.end_mode.pause.tooltip">
        <source>Pause at the Out point or end of media</source>
        <translation>Out 点またはメディアの終わりで一時停止します</translation>
    </message>
    <message id="edit.end_mode.repeat">
        <source>Repeat</source>
        <translation>リピート</translation>
    </message>
    <message id="edit.end_mode.repeat.tooltip">
        <source>Return to the In point at the Out point or end of media, then repeat playback</source>
        <translation>Out 点またはメディアの終わりで In 点に戻り、再生を繰り返します</translation>
    </message>
    <message id="edit.end_mode.next">
        <source>Next</source>
        <translation>次へ</translation>
    </message>
    <message id="edit.end_mode.next.tooltip">
        <source>At the Out point or end of media, take the next playlist item on air; wrap to item 1 and skip the current DSK item</source>
        <translation>Out 点またはメディアの終わりで次のプレイリストアイテムを ON AIR にします。最後の次は 1 番目に戻り、現在の DSK アイテムは飛ばします</translation>
    </message>
    <message id="edit.end_mode.goto">
        <source>GOTO</source>
        <translation>GOTO</translation>
    </message>
    <message id="edit.end_mode.goto.tooltip">
        <source>At the Out point or end of media, take the selected destination playlist item on air</source>
        <translation>Out 点またはメディアの終わりで、選んだ移動先のプレイリストアイテムを ON AIR にします</translation>
    </message>
    <message id="edit.goto.title">
        <source>GOTO</source>
        <translation>GOTO</translation>
    </message>
    <message id="edit.goto.placeholder">
        <source>Select destination</source>
        <translation>移動先を選択</translation>
    </message>
    <message id="edit.goto.accessible">
        <source>GOTO destination</source>
        <translation>GOTO の移動先</translation>
    </message>
    <message id="edit.goto.entry">
        <source>P%1-%2  %3</source>
        <translation>P%1-%2  %3</translation>
    </message>
    <message id="edit.goto.offline">
        <source> [MEDIA OFFLINE]</source>
        <translation> [メディアオフライン]</translation>
    </message>
    <message id="edit.repeat.count">
        <source>Count</source>
        <translation>回数</translation>
    </message>
    <message id="edit.repeat.count.tooltip">
        <source>Set the total play count including the first play; infinity repeats without end</source>
        <translation>最初の再生を含めた合計の再生回数を設定します。∞ は終わりなく繰り返します</translation>
    </message>
    <message id="edit.repeat.count.down">
        <source>Fewer plays</source>
        <translation>再生回数を減らす</translation>
    </message>
    <message id="edit.repeat.count.up">
        <source>More plays</source>
        <translation>再生回数を増やす</translation>
    </message>
    <message id="edit.repeat.after">
        <source>After Repeat</source>
        <translation>リピート後</translation>
    </message>
    <message id="edit.repeat.after.stop">
        <source>Stop</source>
        <translation>停止</translation>
    </message>
    <message id="edit.repeat.after.pause">
        <source>Pause</source>
        <translation>一時停止</translation>
    </message>
    <message id="edit.repeat.after.next">
        <source>Next</source>
        <translation>次へ</translation>
    </message>
    <message id="edit.repeat.after.goto">
        <source>GOTO</source>
        <translation>GOTO</translation>
    </message>
    <message id="edit.fade_in.title">
        <source>Fade In</source>
        <translation>フェードイン</translation>
    </message>
    <message id="edit.fade_in.tooltip">
        <source>Add a video and audio fade-in to the Start Mode action</source>
        <translation>開始モードの動作に映像と音声のフェードインを加えます</translation>
    </message>
    <message id="edit.fade_out.title">
        <source>Fade Out</source>
        <translation>フェードアウト</translation>
    </message>
    <message id="edit.fade_out.tooltip">
        <source>Fade out video and audio before the End Mode action</source>
        <translation>終了モードの動作の前に映像と音声をフェードアウトします</translation>
    </message>
    <message id="edit.crossfade.title">
        <source>Crossfade</source>
        <translation>クロスフェード</translation>
    </message>
    <message id="edit.crossfade.tooltip">
        <source>Crossfade between ON AIR repeats, or when End Mode is Next or GOTO</source>
        <translation>ON AIR のリピートの間、または終了モードが次へか GOTO のときにクロスフェードします</translation>
    </message>
    <message id="edit.fade.shorter">
        <source>Shorter fade</source>
        <translation>フェードを短く</translation>
    </message>
    <message id="edit.fade.longer">
        <source>Longer fade</source>
        <translation>フェードを長く</translation>
    </message>
    <message id="edit.audio.nominal_volume">
        <source>Nominal Volume</source>
        <translation>基準音量</translation>
    </message>
    <message id="edit.audio.input">
        <source>IN</source>
        <translation>入力</translation>
    </message>
    <message id="edit.audio.output">
        <source>OUT</source>
        <translation>出力</translation>
    </message>
    <message id="edit.audio.input.tooltip">
        <source>EDIT level before the nominal volume</source>
        <translation>基準音量の前の EDIT レベル</translation>
    </message>
    <message id="edit.audio.output.tooltip">
        <source>EDIT level after the nominal volume</source>
        <translation>基準音量の後の EDIT レベル</translation>
    </message>
    <message id="edit.audio.delay">
        <source>DELAY</source>
        <translation>ディレイ</translation>
    </message>
    <message id="edit.audio.eq">
        <source>Nominal Item EQ</source>
        <translation>アイテム基準 EQ</translation>
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
        <translation>PFL ON — 基準音量の前を試聴しています。</translation>
    </message>
    <message id="edit.pfl.off">
        <source>PFL OFF — listen before nominal volume.</source>
        <translation>PFL OFF — 基準音量の前を試聴します。</translation>
    </message>
    <message id="edit.pfl.no_device">
        <source>Choose EDIT PFL Output Device in Settings.</source>
        <translation>設定で EDIT PFL 出力デバイスを選んでください。</translation>
    </message>
    <message id="edit.pfl.opening">
        <source>Opening the PFL output device…</source>
        <translation>PFL 出力デバイスを開いています…</translation>
    </message>
    <message id="edit.pfl.failed">
        <source>PFL output is unavailable. Check the selected device, then turn PFL on again.</source>
        <translation>PFL 出力を使用できません。選択したデバイスを確認してから、もう一度 PFL をオンにしてください。</translation>
    </message>
    <message id="edit.pfl.helper_missing">
        <source>The PFL output component could not be found.</source>
        <translation>PFL 出力コンポーネントが見つかりませんでした。</translation>
    </message>
    <message id="dialog.close">
        <source>Close</source>
        <translation>閉じる</translation>
    </message>
    <message id="settings.output.unavailable">
        <source>Unavailable — %1</source>
        <translation>使用不可 — %1</translation>
    </message>
    <message id="settings.output.current_program">
        <source>Current ON AIR output: %1</source>
        <translation>現在の ON AIR 出力: %1</translation>
    </message>
    <message id="settings.output.program_device">
        <source>ON AIR OUTPUT DEVICE</source>
        <translation>ON AIR 出力デバイス</translation>
    </message>
    <message id="settings.output.pfl_device">
        <source>PFL DEVICE</source>
        <translation>PFL デバイス</translation>
    </message>
    <message id="settings.output.fallback_default">
        <source>Use system default when the selected ON AIR audio device is not found (ON AIR only)</source>
        <translation>選択した ON AIR のオーディオデバイスが見つからないときはシステムの既定を使う（ON AIR のみ）</translation>
    </message>
    <message id="settings.output.same_device">
        <source>ON AIR OUTPUT DEVICE and PFL DEVICE are the same.</source>
        <translation>ON AIR 出力デバイスと PFL デバイスが同じです。</translation>
    </message>
    <message id="settings.output.refresh">
        <source>Refresh</source>
        <translation>再読み込み</translation>
    </message>
    <message id="settings.output.apply">
        <source>Apply</source>
        <translation>適用</translation>
    </message>
    <message id="settings.output.applying">
        <source>Applying ON AIR output device…</source>
        <translation>ON AIR 出力デバイスを適用しています…</translation>
    </message>
    <message id="settings.output.failed">
        <source>Could not apply the ON AIR output device. Select an available device and try again.</source>
        <translation>ON AIR 出力デバイスを適用できませんでした。使用できるデバイスを選んで、もう一度試してください。</translation>
    </message>
    <message id="settings.output.applied">
        <source>ON AIR output device applied.</source>
        <translation>ON AIR 出力デバイスを適用しました。</translation>
    </message>
    <message id="settings.output.pending">
        <source>Waiting until ON AIR and BGM are stopped.</source>
        <translation>ON AIR と BGM が停止するまで待っています。</translation>
    </message>
    <message id="menu.file.audio_outputs">
        <source>Audio Outputs…</source>
        <translation>オーディオ出力…</translation>
    </message>
    <message id="audio.outputs.title">
        <source>Audio Outputs</source>
        <translation>オーディオ出力</translation>
    </message>
    <message id="audio.output.unavailable">
        <source>ON AIR audio output is unavailable. Video playout can continue. Check the audio output settings and device connection.</source>
        <translation>ON AIR の音声出力を使用できません。映像の送出は続けられます。音声出力の設定とデバイスの接続を確認してください。</translation>
    </message>
    <message id="audio.outputs.check_failed">
        <source>Could not check the audio devices. Please check the audio device settings.</source>
        <translation>オーディオデバイスを確認できませんでした。オーディオデバイスの設定を確認してください。</translation>
    </message>
    <message id="audio.output.fallback_applied">
        <source>%1 audio output setting changed to system default because the device was unavailable.</source>
        <translation>デバイスを使用できなかったため、%1 の音声出力設定をシステムの既定に変更しました。</translation>
    </message>
    <message id="edit.pfl.device_not_configured">
        <source>No PFL audio device is configured.</source>
        <translation>PFL のオーディオデバイスが設定されていません。</translation>
    </message>
    <message id="settings.output.save_failed">
        <source>Could not save the output device setting.</source>
        <translation>出力デバイスの設定を保存できませんでした。</translation>
    </message>
    <message id="audio.output.selection_changed">
        <source>%1 audio output setting changed to %2.</source>
        <translation>%1 の音声出力設定を %2 に変更しました。</translation>
    </message>
    <message id="settings.output.default">
        <source>System Default</source>
        <translation>システムの既定</translation>
    </message>
    <message id="settings.output.none">
        <source>No Device</source>
        <translation>デバイスなし</translation>
    </message>
    <message id="edit.status_line.error">
        <source>EDIT ERROR | %1</source>
        <translation>EDIT ERROR | %1</translation>
    </message>
    <message id="edit.error.end_crossfade">
        <source>Could not save the end crossfade settings.</source>
        <translation>エンドクロスフェードの設定を保存できませんでした。</translation>
    </message>
    <message id="edit.error.end_mode">
        <source>Could not save the End Mode.</source>
        <translation>終了モードを保存できませんでした。</translation>
    </message>
    <message id="edit.error.end_position">
        <source>Could not determine the EDIT end position.</source>
        <translation>EDITの終了位置を取得できませんでした。</translation>
    </message>
    <message id="edit.error.fade_in">
        <source>Could not save the fade-in settings.</source>
        <translation>フェードインの設定を保存できませんでした。</translation>
    </message>
    <message id="edit.error.fade_out">
        <source>Could not save the fade-out settings.</source>
        <translation>フェードアウトの設定を保存できませんでした。</translation>
    </message>
    <message id="edit.error.file_not_found">
        <source>The file to load into EDIT could not be found.</source>
        <translation>EDITに読み込むファイルが見つかりませんでした。</translation>
    </message>
    <message id="edit.error.frame_position">
        <source>Could not determine the EDIT frame position.</source>
        <translation>EDITのフレーム位置を取得できませんでした。</translation>
    </message>
    <message id="edit.error.go_to_in">
        <source>Could not go to the EDIT In point.</source>
        <translation>EDITのIN点へ移動できませんでした。</translation>
    </message>
    <message id="edit.error.go_to_out">
        <source>Could not go to the EDIT Out point.</source>
        <translation>EDITのOUT点へ移動できませんでした。</translation>
    </message>
    <message id="edit.error.goto">
        <source>Could not save the GOTO destination.</source>
        <translation>GOTO先を保存できませんでした。</translation>
    </message>
    <message id="edit.error.in_after_out">
        <source>Set the In point before the Out point and the end of the media.</source>
        <translation>IN点はOUT点とメディアの終端より前に設定してください。</translation>
    </message>
    <message id="edit.error.load_failed">
        <source>Failed to load the file into EDIT.</source>
        <translation>EDITへのファイルの読み込みに失敗しました。</translation>
    </message>
    <message id="edit.error.media_not_loaded">
        <source>Load an item into EDIT before changing its In/Out points.</source>
        <translation>IN/OUT点を変更する前に項目をEDITに読み込んでください。</translation>
    </message>
    <message id="edit.error.nominal_delay">
        <source>Could not save the nominal delay.</source>
        <translation>ノミナルディレイを保存できませんでした。</translation>
    </message>
    <message id="edit.error.nominal_eq">
        <source>Could not save the nominal EQ.</source>
        <translation>ノミナルEQを保存できませんでした。</translation>
    </message>
    <message id="edit.error.nominal_volume">
        <source>Could not save the nominal volume.</source>
        <translation>ノミナル音量を保存できませんでした。</translation>
    </message>
    <message id="edit.error.out_before_in">
        <source>Set the Out point after the In point.</source>
        <translation>OUT点はIN点より後に設定してください。</translation>
    </message>
    <message id="edit.error.pause">
        <source>EDIT Pause failed.</source>
        <translation>EDITの一時停止に失敗しました。</translation>
    </message>
    <message id="edit.error.play">
        <source>EDIT Play failed.</source>
        <translation>EDITの再生に失敗しました。</translation>
    </message>
    <message id="edit.error.playback_stopped">
        <source>Only EDIT playback was stopped</source>
        <translation>EDITの再生のみ停止しました</translation>
    </message>
    <message id="edit.error.player_create">
        <source>Could not create the EDIT player (ON AIR will continue)</source>
        <translation>EDITプレーヤーを作成できませんでした（ON AIRは継続します）</translation>
    </message>
    <message id="edit.error.player_unavailable">
        <source>The EDIT player is unavailable (ON AIR will continue)</source>
        <translation>EDITプレーヤーは使用できません（ON AIRは継続します）</translation>
    </message>
    <message id="edit.error.point_beyond_duration">
        <source>Set the In/Out point within the media duration.</source>
        <translation>IN/OUT点はメディアの長さの範囲内で設定してください。</translation>
    </message>
    <message id="edit.error.point_save">
        <source>Could not save the In/Out point.</source>
        <translation>IN/OUT点を保存できませんでした。</translation>
    </message>
    <message id="edit.error.points_bgm_active">
        <source>The In/Out points of an item in use by BGM cannot be changed. Stop BGM first.</source>
        <translation>BGMで使用中の項目のIN/OUT点は変更できません。先にBGMを停止してください。</translation>
    </message>
    <message id="edit.error.points_file_only">
        <source>In/Out points can only be changed for file sources.</source>
        <translation>IN/OUT点はファイルソースでのみ変更できます。</translation>
    </message>
    <message id="edit.error.points_locked">
        <source>The In/Out points of an item currently on air cannot be changed.</source>
        <translation>ON AIR中の項目のIN/OUT点は変更できません。</translation>
    </message>
    <message id="edit.error.points_settings_locked">
        <source>This item's settings are locked. Its In/Out points cannot be changed.</source>
        <translation>この項目の設定はロックされています。IN/OUT点は変更できません。</translation>
    </message>
    <message id="edit.error.position_unknown">
        <source>Could not determine the current EDIT position.</source>
        <translation>EDITの現在位置を取得できませんでした。</translation>
    </message>
    <message id="edit.error.repeat">
        <source>Could not save the repeat options.</source>
        <translation>リピートオプションを保存できませんでした。</translation>
    </message>
    <message id="edit.error.rewind_prepare">
        <source>Failed to prepare EDIT for rewind.</source>
        <translation>EDITの巻き戻しの準備に失敗しました。</translation>
    </message>
    <message id="edit.error.scan">
        <source>EDIT scan failed.</source>
        <translation>EDITのスキャンに失敗しました。</translation>
    </message>
    <message id="edit.error.scan_position">
        <source>Could not determine the EDIT scan position.</source>
        <translation>EDITのスキャン位置を取得できませんでした。</translation>
    </message>
    <message id="edit.error.scan_restore">
        <source>Failed to restore normal EDIT playback.</source>
        <translation>EDITの通常再生に戻せませんでした。</translation>
    </message>
    <message id="edit.error.seek">
        <source>EDIT seek failed.</source>
        <translation>EDITのシークに失敗しました。</translation>
    </message>
    <message id="edit.error.start_mode">
        <source>Could not save the Start Mode.</source>
        <translation>開始モードを保存できませんでした。</translation>
    </message>
    <message id="edit.error.step_pause">
        <source>Failed to pause EDIT for frame stepping.</source>
        <translation>コマ送りのためのEDITの一時停止に失敗しました。</translation>
    </message>
    <message id="edit.error.stop">
        <source>Failed to stop EDIT.</source>
        <translation>EDITの停止に失敗しました。</translation>
    </message>
    <message id="edit.error.unload">
        <source>Could not unload the item from EDIT.</source>
        <translation>EDITから項目を取り出せませんでした。</translation>
    </message>
    <message id="edit.status.fast_forward">
        <source>Fast-forward</source>
        <translation>早送り</translation>
    </message>
    <message id="edit.status.fast_forward_stopped">
        <source>Fast-forward stopped</source>
        <translation>早送りを停止しました</translation>
    </message>
    <message id="edit.status.go_to_end">
        <source>Go to end</source>
        <translation>終端へ移動</translation>
    </message>
    <message id="edit.status.go_to_in">
        <source>Go to In point</source>
        <translation>IN点へ移動</translation>
    </message>
    <message id="edit.status.go_to_out">
        <source>Go to Out point</source>
        <translation>OUT点へ移動</translation>
    </message>
    <message id="edit.status.go_to_start">
        <source>Go to start</source>
        <translation>先頭へ移動</translation>
    </message>
    <message id="edit.status.idle">
        <source>EDIT | Select an item, then click EDIT to load</source>
        <translation>EDIT | 項目を選択し、EDITをクリックして読み込みます</translation>
    </message>
    <message id="edit.status.rewind">
        <source>Rewind (position only)</source>
        <translation>巻き戻し（位置のみ）</translation>
    </message>
    <message id="edit.status.rewind_stopped">
        <source>Rewind stopped</source>
        <translation>巻き戻しを停止しました</translation>
    </message>
    <message id="edit.status.scan_boundary">
        <source>Scan boundary</source>
        <translation>スキャン境界</translation>
    </message>
    <message id="info.source.bgm">
        <source>BGM</source>
        <translation>BGM</translation>
    </message>
    <message id="program.bgm.no_playable_item">
        <source>No playable item was found in the current BGM playlist.</source>
        <translation>現在の BGM プレイリストに再生できる項目が見つかりませんでした。</translation>
    </message>
    <message id="program.bgm.stop_failed">
        <source>BGM could not be stopped. Press STOP again to reset it.</source>
        <translation>BGM を停止できませんでした。もう一度 STOP を押してリセットしてください。</translation>
    </message>
    <message id="program.bgm.audio_output_changing">
        <source>ON AIR audio output is being prepared or changed. Press BGM PLAY again after it finishes.</source>
        <translation>ON AIR の音声出力を準備中または変更中です。完了後にもう一度 BGM 再生を押してください。</translation>
    </message>
    <message id="program.bgm.audio_output_unavailable">
        <source>ON AIR audio output is unavailable. Check audio output settings and press BGM PLAY again after recovery.</source>
        <translation>ON AIR の音声出力を使用できません。音声出力の設定を確認し、復旧後にもう一度 BGM 再生を押してください。</translation>
    </message>
    <message id="program.bgm.play_failed">
        <source>BGM playback failed.</source>
        <translation>BGM の再生に失敗しました。</translation>
    </message>
    <message id="program.bgm.transition_failed">
        <source>The BGM item transition could not be completed.</source>
        <translation>BGM の項目の切り替えを完了できませんでした。</translation>
    </message>
    <message id="program.bgm.skipped_item">
        <source>Skipped BGM item: %1</source>
        <translation>BGM の項目をスキップしました: %1</translation>
    </message>
    <message id="program.bgm.current_item">
        <source>Current BGM: %1</source>
        <translation>現在の BGM: %1</translation>
    </message>
    <message id="program.bgm.no_item">
        <source>No BGM item</source>
        <translation>BGM の項目なし</translation>
    </message>
    <message id="program.bgm.controls_hidden_after_stop">
        <source>The BGM controls will be hidden after BGM stops.</source>
        <translation>BGM のコントロールは BGM の停止後に非表示になります。</translation>
    </message>
    <message id="program.bgm.state.stopped">
        <source>STOPPED</source>
        <translation>停止</translation>
    </message>
    <message id="program.bgm.state.loading">
        <source>LOADING</source>
        <translation>読み込み中</translation>
    </message>
    <message id="program.bgm.state.playing">
        <source>PLAYING</source>
        <translation>再生中</translation>
    </message>
    <message id="program.bgm.state.paused">
        <source>PAUSED</source>
        <translation>一時停止</translation>
    </message>
    <message id="program.bgm.state.fade_in">
        <source>FADE IN</source>
        <translation>フェードイン</translation>
    </message>
    <message id="program.bgm.state.fade_out">
        <source>FADE OUT</source>
        <translation>フェードアウト</translation>
    </message>
    <message id="program.bgm.state.faded_out">
        <source>FADED OUT (VOLUME 0)</source>
        <translation>フェードアウト済み（音量 0）</translation>
    </message>
    <message id="program.bgm.state.error">
        <source>ERROR</source>
        <translation>エラー</translation>
    </message>
    <message id="program.bgm.signal_detected">
        <source>BGM signal detected</source>
        <translation>BGM の信号を検出しています</translation>
    </message>
    <message id="program.bgm.signal_clipping">
        <source>BGM input is clipping</source>
        <translation>BGM の入力がクリップしています</translation>
    </message>
    <message id="program.bgm.no_signal">
        <source>No BGM signal</source>
        <translation>BGM の信号なし</translation>
    </message>
    <message id="program.bgm.show_fader">
        <source>Show BGM fader</source>
        <translation>BGM フェーダーを表示</translation>
    </message>
    <message id="program.bgm.show_item_fader">
        <source>Show ITEM fader</source>
        <translation>ITEM フェーダーを表示</translation>
    </message>
    <message id="program.bgm.title">
        <source>BGM</source>
        <translation>BGM</translation>
    </message>
    <message id="program.bgm.play">
        <source>BGM PLAY</source>
        <translation>BGM 再生</translation>
    </message>
    <message id="program.bgm.pause">
        <source>BGM PAUSE</source>
        <translation>BGM 一時停止</translation>
    </message>
    <message id="program.bgm.stop">
        <source>BGM STOP</source>
        <translation>BGM 停止</translation>
    </message>
    <message id="program.bgm.fade_in">
        <source>BGM FADE IN</source>
        <translation>BGM フェードイン</translation>
    </message>
    <message id="program.bgm.fade_out">
        <source>BGM FADE OUT</source>
        <translation>BGM フェードアウト</translation>
    </message>
    <message id="program.audio.bgm">
        <source>BGM</source>
        <translation>BGM</translation>
    </message>
    <message id="menu.file.export_settings">
        <source>Export Settings...</source>
        <translation>設定を書き出す...</translation>
    </message>
    <message id="menu.file.import_settings">
        <source>Import Settings...</source>
        <translation>設定を読み込む...</translation>
    </message>
    <message id="settings.manage.filter">
        <source>TARNIX Settings (*.json)</source>
        <translation>TARNIX 設定 (*.json)</translation>
    </message>
    <message id="settings.export.succeeded">
        <source>Settings exported.</source>
        <translation>設定を書き出しました。</translation>
    </message>
    <message id="settings.import.succeeded">
        <source>Settings restored and saved.</source>
        <translation>設定を復元して保存しました。</translation>
    </message>
    <message id="settings.manage.failed">
        <source>Could not save or restore settings. Check the file format and write permissions.</source>
        <translation>設定を保存または復元できませんでした。ファイルの形式と書き込み権限を確認してください。</translation>
    </message>
    <message id="menu.file.settings">
        <source>Settings…</source>
        <translation>設定…</translation>
    </message>
    <message id="settings.window.title">
        <source>Settings</source>
        <translation>設定</translation>
    </message>
    <message id="settings.window.refused">
        <source>Not saved: %1</source>
        <translation>保存されませんでした: %1</translation>
    </message>
    <message id="settings.window.save_failed">
        <source>Could not save the setting: %1</source>
        <translation>設定を保存できませんでした: %1</translation>
    </message>
    <message id="settings.page.general">
        <source>General</source>
        <translation>全般</translation>
    </message>
    <message id="settings.page.on_air">
        <source>ON AIR</source>
        <translation>ON AIR</translation>
    </message>
    <message id="settings.page.audio">
        <source>Audio</source>
        <translation>オーディオ</translation>
    </message>
    <message id="settings.page.playlist">
        <source>Playlist</source>
        <translation>プレイリスト</translation>
    </message>
    <message id="settings.page.files">
        <source>Files</source>
        <translation>ファイル</translation>
    </message>
    <message id="settings.page.outputs">
        <source>Outputs</source>
        <translation>出力</translation>
    </message>
    <message id="settings.page.shortcuts">
        <source>Shortcuts</source>
        <translation>ショートカット</translation>
    </message>
    <message id="settings.page.control">
        <source>Control</source>
        <translation>外部制御</translation>
    </message>
    <message id="settings.general.language">
        <source>Language</source>
        <translation>表示言語</translation>
    </message>
    <message id="settings.general.skin">
        <source>Controller skin</source>
        <translation>コントローラーのスキン</translation>
    </message>
    <message id="settings.general.text_size">
        <source>Text size</source>
        <translation>文字の大きさ</translation>
    </message>
    <message id="settings.general.text_size.standard">
        <source>Standard</source>
        <translation>標準</translation>
    </message>
    <message id="settings.general.text_size.large">
        <source>Large</source>
        <translation>大</translation>
    </message>
    <message id="settings.general.text_size.largest">
        <source>Largest</source>
        <translation>特大</translation>
    </message>
    <message id="settings.general.time_zone">
        <source>Time zone</source>
        <translation>タイムゾーン</translation>
    </message>
    <message id="settings.general.remaining">
        <source>Remaining time</source>
        <translation>残り時間</translation>
    </message>
    <message id="settings.general.remaining.item">
        <source>Up to the end of the ON AIR item</source>
        <translation>ON AIR アイテムの終わりまで</translation>
    </message>
    <message id="settings.general.remaining.total">
        <source>Up to the Map Total arrival point</source>
        <translation>Map Total の到達点まで</translation>
    </message>
    <message id="settings.on_air.retake">
        <source>Allow the ON AIR item to be taken again</source>
        <translation>ON AIR 中のアイテムを再度 ON AIR できるようにする</translation>
    </message>
    <message id="settings.on_air.auto_select_next">
        <source>Select the next item when an item leaves the air</source>
        <translation>アイテムが ON AIR を終えたら次のアイテムを選択する</translation>
    </message>
    <message id="settings.on_air.lock_ftb">
        <source>Lock the FTB button</source>
        <translation>FTB ボタンをロックする</translation>
    </message>
    <message id="settings.on_air.rate_controls">
        <source>Show the playback rate controls</source>
        <translation>再生速度の操作を表示する</translation>
    </message>
    <message id="settings.on_air.background">
        <source>Background colour (#RRGGBB)</source>
        <translation>背景色 (#RRGGBB)</translation>
    </message>
    <message id="settings.audio.bgm_controls">
        <source>Show the BGM player controls</source>
        <translation>BGM プレーヤーの操作を表示する</translation>
    </message>
    <message id="settings.playlist.edit_activation">
        <source>Load into EDIT</source>
        <translation>EDIT への読み込み</translation>
    </message>
    <message id="settings.playlist.edit_activation.selection">
        <source>When an item is selected</source>
        <translation>アイテムを選択したとき</translation>
    </message>
    <message id="settings.playlist.edit_activation.button">
        <source>When the EDIT button is pressed</source>
        <translation>EDIT ボタンを押したとき</translation>
    </message>
    <message id="settings.playlist.audio_thumbnails">
        <source>Audio file thumbnails</source>
        <translation>音声ファイルのサムネイル</translation>
    </message>
    <message id="settings.playlist.audio_thumbnails.waveform">
        <source>Waveform</source>
        <translation>波形</translation>
    </message>
    <message id="settings.playlist.audio_thumbnails.album_art">
        <source>Album art (waveform if unavailable)</source>
        <translation>アルバムアート (ない場合は波形)</translation>
    </message>
    <message id="settings.files.still_capture">
        <source>Folder for captured stills</source>
        <translation>静止画キャプチャの保存先フォルダー</translation>
    </message>
    <message id="settings.files.document_conversion">
        <source>Folder for converted documents</source>
        <translation>変換した資料の保存先フォルダー</translation>
    </message>
    <message id="settings.outputs.program_4k">
        <source>Program output at 3840 x 2160</source>
        <translation>プログラム出力を 3840 x 2160 にする</translation>
    </message>
    <message id="settings.outputs.software_decoding">
        <source>Decode video in software only</source>
        <translation>映像をソフトウェアだけでデコードする</translation>
    </message>
    <message id="settings.outputs.next_start_note">
        <source>The program output settings take effect at the next start.</source>
        <translation>プログラム出力の設定は次回の起動から反映されます。</translation>
    </message>
    <message id="settings.control.socket_path">
        <source>Control socket path</source>
        <translation>制御ソケットのパス</translation>
    </message>
    <message id="settings.control.socket_path_note">
        <source>Empty: no control socket. A change takes effect at the next start.</source>
        <translation>空欄のときは制御ソケットを開きません。変更は次回の起動から反映されます。</translation>
    </message>
    <message id="settings.shortcuts.action">
        <source>Action</source>
        <translation>操作</translation>
    </message>
    <message id="settings.shortcuts.key1">
        <source>Key 1</source>
        <translation>キー 1</translation>
    </message>
    <message id="settings.shortcuts.key2">
        <source>Key 2</source>
        <translation>キー 2</translation>
    </message>
    <message id="settings.shortcuts.save">
        <source>Save</source>
        <translation>保存</translation>
    </message>
    <message id="settings.shortcuts.defaults">
        <source>Load Defaults</source>
        <translation>既定に戻す</translation>
    </message>
    <message id="settings.shortcuts.saved">
        <source>Shortcuts saved and applied.</source>
        <translation>ショートカットを保存して適用しました。</translation>
    </message>
    <message id="settings.shortcuts.invalid">
        <source>Duplicate, reserved or invalid key. Not saved: %1</source>
        <translation>重複、予約済み、または無効なキーです。保存されませんでした: %1</translation>
    </message>
    <message id="settings.shortcuts.defaults_loaded">
        <source>Defaults loaded. Save to apply.</source>
        <translation>既定値を読み込みました。保存すると適用されます。</translation>
    </message>
    <message id="settings.shortcuts.AddFile">
        <source>Add files</source>
        <translation>ファイルを追加</translation>
    </message>
    <message id="settings.shortcuts.Exit">
        <source>Exit</source>
        <translation>終了</translation>
    </message>
    <message id="settings.shortcuts.TakeOnAir">
        <source>Take ON AIR</source>
        <translation>ON AIR にする</translation>
    </message>
    <message id="settings.shortcuts.ToggleOnAirPlayback">
        <source>Play / pause ON AIR</source>
        <translation>ON AIR の再生 / 一時停止</translation>
    </message>
    <message id="settings.shortcuts.LoadEdit">
        <source>Load into EDIT</source>
        <translation>EDIT に読み込む</translation>
    </message>
    <message id="settings.shortcuts.CopyItemState">
        <source>Copy item state</source>
        <translation>アイテムの状態をコピー</translation>
    </message>
    <message id="settings.shortcuts.PasteItemState">
        <source>Paste item state</source>
        <translation>アイテムの状態を貼り付け</translation>
    </message>
    <message id="settings.shortcuts.DocumentNext">
        <source>Next document page</source>
        <translation>資料の次のページ</translation>
    </message>
    <message id="settings.shortcuts.DocumentPrevious">
        <source>Previous document page</source>
        <translation>資料の前のページ</translation>
    </message>
    <message id="settings.shortcuts.ToggleFtb">
        <source>Fade to black</source>
        <translation>黒へフェード (FTB)</translation>
    </message>
    <message id="settings.shortcuts.ToggleDsk">
        <source>DSK on / off</source>
        <translation>DSK のオン / オフ</translation>
    </message>
    <message id="settings.shortcuts.OffAir">
        <source>OFF AIR</source>
        <translation>OFF AIR にする</translation>
    </message>
    <message id="settings.shortcuts.MasterFadeIn">
        <source>Master fade in</source>
        <translation>マスター フェードイン</translation>
    </message>
    <message id="settings.shortcuts.MasterFadeOut">
        <source>Master fade out</source>
        <translation>マスター フェードアウト</translation>
    </message>
    <message id="settings.shortcuts.ItemFadeIn">
        <source>Item fade in</source>
        <translation>アイテム フェードイン</translation>
    </message>
    <message id="settings.shortcuts.ItemFadeOut">
        <source>Item fade out</source>
        <translation>アイテム フェードアウト</translation>
    </message>
    <message id="settings.shortcuts.BgmFadeIn">
        <source>BGM fade in</source>
        <translation>BGM フェードイン</translation>
    </message>
    <message id="settings.shortcuts.BgmFadeOut">
        <source>BGM fade out</source>
        <translation>BGM フェードアウト</translation>
    </message>
    <message id="settings.shortcuts.SelectItem">
        <source>Select item %1</source>
        <translation>アイテム %1 を選択</translation>
    </message>
    <message id="settings.shortcuts.ActivatePlaylist">
        <source>Activate playlist %1</source>
        <translation>プレイリスト %1 を有効にする</translation>
    </message>
    <message id="settings.shortcuts.PlaylistPlayOnce">
        <source>Playlist: play once</source>
        <translation>プレイリスト: 1 回再生</translation>
    </message>
    <message id="settings.shortcuts.PlaylistRepeatAll">
        <source>Playlist: repeat all</source>
        <translation>プレイリスト: 全体をリピート</translation>
    </message>
    <message id="settings.shortcuts.PlaylistShuffle">
        <source>Playlist: shuffle</source>
        <translation>プレイリスト: シャッフル</translation>
    </message>
    <message id="settings.shortcuts.PlaylistBgmMode">
        <source>Playlist: BGM mode</source>
        <translation>プレイリスト: BGM モード</translation>
    </message>
    <message id="settings.shortcuts.PlaylistStandardMode">
        <source>Playlist: standard mode</source>
        <translation>プレイリスト: 標準モード</translation>
    </message>
    <message id="settings.shortcuts.PlaylistClear">
        <source>Playlist: clear</source>
        <translation>プレイリスト: クリア</translation>
    </message>
    <message id="settings.shortcuts.PlaylistUndo">
        <source>Playlist: undo</source>
        <translation>プレイリスト: 元に戻す</translation>
    </message>
    <message id="settings.shortcuts.EditToggleStartMode">
        <source>EDIT: switch start mode</source>
        <translation>EDIT: 開始モードを切り替え</translation>
    </message>
    <message id="settings.shortcuts.EditEndStop">
        <source>EDIT: end mode stop</source>
        <translation>EDIT: 終了モード 停止</translation>
    </message>
    <message id="settings.shortcuts.EditEndPause">
        <source>EDIT: end mode pause</source>
        <translation>EDIT: 終了モード 一時停止</translation>
    </message>
    <message id="settings.shortcuts.EditEndRepeat">
        <source>EDIT: end mode repeat</source>
        <translation>EDIT: 終了モード リピート</translation>
    </message>
    <message id="settings.shortcuts.EditEndNext">
        <source>EDIT: end mode next</source>
        <translation>EDIT: 終了モード 次へ</translation>
    </message>
    <message id="settings.shortcuts.EditToggleFadeOut">
        <source>EDIT: fade out on / off</source>
        <translation>EDIT: フェードアウトのオン / オフ</translation>
    </message>
    <message id="settings.shortcuts.EditReset">
        <source>EDIT: reset</source>
        <translation>EDIT: リセット</translation>
    </message>
    <message id="settings.shortcuts.EditSetIn">
        <source>EDIT: set IN</source>
        <translation>EDIT: IN 点を設定</translation>
    </message>
    <message id="settings.shortcuts.EditSetOut">
        <source>EDIT: set OUT</source>
        <translation>EDIT: OUT 点を設定</translation>
    </message>
    <message id="settings.shortcuts.NextOutputDisplay">
        <source>Next output display</source>
        <translation>次の出力ディスプレイ</translation>
    </message>
    <message id="settings.shortcuts.PreviewCapture">
        <source>Preview capture</source>
        <translation>プレビューをキャプチャ</translation>
    </message>
    <message id="settings.shortcuts.ProgramCapture">
        <source>Program capture</source>
        <translation>プログラムをキャプチャ</translation>
    </message>
    <message id="settings.shortcuts.TogglePfl">
        <source>PFL on / off</source>
        <translation>PFL のオン / オフ</translation>
    </message>
    <message id="settings.shortcuts.PlaylistDelete">
        <source>Playlist: delete</source>
        <translation>プレイリスト: 削除</translation>
    </message>
    <message id="settings.shortcuts.OperatorTimerStart">
        <source>Operator timer: start</source>
        <translation>オペレーター タイマー: 開始</translation>
    </message>
    <message id="settings.shortcuts.OperatorTimerPause">
        <source>Operator timer: pause</source>
        <translation>オペレーター タイマー: 一時停止</translation>
    </message>
    <message id="settings.shortcuts.OperatorTimerReset">
        <source>Operator timer: reset</source>
        <translation>オペレーター タイマー: リセット</translation>
    </message>
    <message id="settings.shortcuts.OperatorTimerSettings">
        <source>Operator timer: settings</source>
        <translation>オペレーター タイマー: 設定</translation>
    </message>
    <message id="settings.shortcuts.OpenNominalEq">
        <source>Open the EDIT EQ</source>
        <translation>EDIT の EQ を開く</translation>
    </message>
    <message id="settings.shortcuts.OpenItemEq">
        <source>Open the item EQ</source>
        <translation>アイテムの EQ を開く</translation>
    </message>
    <message id="settings.shortcuts.OpenMasterEq">
        <source>Open the master EQ</source>
        <translation>マスターの EQ を開く</translation>
    </message>
</context>
</TS>
