#pragma once

#include "playlist/playlist_enums.h"

// The playlist bulk operations in the order the operator reads them, with
// their catalogue keys: the panel's list and the Playlist menu show the same.
namespace tarnix::playlist_view {

struct BulkEntry {
    const char *key;
    const char *text;
    PlaylistBulkOperation operation;
};

inline constexpr BulkEntry kBulkEntries[] = {
    {"playlist.bulk.play_once", "Play List Once", PlaylistBulkOperation::PlayOnce},
    {"playlist.bulk.repeat_all", "Repeat All", PlaylistBulkOperation::RepeatAll},
    {"playlist.bulk.shuffle", "Shuffle", PlaylistBulkOperation::Shuffle},
    {"playlist.bulk.bgm_mode", "Set BGM Mode", PlaylistBulkOperation::BgmMode},
    {"playlist.bulk.standard_mode", "Clear BGM Mode", PlaylistBulkOperation::StandardMode},
    {"playlist.bulk.clear", "Clear Playlist", PlaylistBulkOperation::Clear},
    {"playlist.bulk.delete", "Delete Playlist", PlaylistBulkOperation::Delete},
    {"playlist.bulk.undo", "Undo", PlaylistBulkOperation::Undo},
};

} // namespace tarnix::playlist_view
