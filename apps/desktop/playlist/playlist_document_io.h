#pragma once

#include "playlist/playlist_document.h"

#include <QDateTime>

#include <functional>

namespace tarnix {

class BackgroundIoQueue;

// Import, restore and save of playlist files on the background I/O queue:
// the file work runs on its worker, the completion on the main thread.

using PlaylistLoadCompletion =
    std::function<void(const std::optional<LoadedPlaylist> &loaded, const QString &error)>;
using PlaylistSaveCompletion = std::function<void(bool success, const QString &error)>;

// Reads, parses, validates and checks the files of `path`. Setting
// `cancelFlag` makes the worker stop at its next cancellation point.
void loadPlaylistInBackground(BackgroundIoQueue &queue, const QString &path,
                              const PlaylistCancelFlag &cancelFlag, PlaylistLoadCompletion completion);

// Writes a snapshot taken on the main thread; the old file survives any
// failure, including a document the reader would refuse.
void savePlaylistInBackground(BackgroundIoQueue &queue, const QString &path, PlaylistDocument snapshot,
                              PlaylistSaveCompletion completion);

// The name an export suggests: "tarnix-export-yyyyMMdd-HHmmss.json" in local
// time, so two exports in one minute do not meet.
QString playlistExportFileName(const QDateTime &localTime);

// A chosen export path without a suffix gets ".json".
QString withPlaylistFileSuffix(const QString &path);

} // namespace tarnix
