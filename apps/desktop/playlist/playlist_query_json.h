#pragma once

#include <QString>

namespace tarnix {

class PlaylistModel;

// The show as automation reads it: every playlist in tab order with its
// items, one compact JSON object with its keys in a fixed order:
// {"activePlaylistNumber":1,"playlists":[{"number":1,"name":"Playlist 1",
//  "mode":"standard","items":[{"id":"7","displayName":"clip.mp4",
//  "filePath":"/abs/clip.mp4","sourceType":"file","mediaType":"video",
//  "status":"ready","durationMs":12000,"inPointMs":0,"outPointMs":12000,
//  "startMode":"pause","endMode":"pause"}]}]}
// `name` is what the tab shows; ids are decimal strings (64 bits do not fit
// a JSON number everywhere); unknown durations and absent Out points are
// null; `status` is "analysing" or "converting" while pending, else
// "offline" or "ready".
QString playlistsQueryJson(const PlaylistModel &model);

// The tab text of a playlist: its name, or the default name with its number.
QString playlistDisplayName(const PlaylistModel &model, qint32 number);

} // namespace tarnix
