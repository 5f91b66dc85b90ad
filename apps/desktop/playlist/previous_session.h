#pragma once

#include "playlist/playlist_document_io.h"

#include <QString>

namespace tarnix {

class BackgroundIoQueue;

// The playlists of the last run, kept as "previous-session.json" in the
// application's local data folder in the playlist document format.

// The file's path; empty when the system names no local data folder.
QString previousSessionFilePath();

// Writes the snapshot (taken by the caller on the main thread) on the queue,
// creating the folder first. Failures: "Could not create the
// previous-session directory." or the writer's text; the old file survives.
void savePreviousSessionInBackground(BackgroundIoQueue &queue, const QString &path, PlaylistDocument snapshot,
                                     PlaylistSaveCompletion completion);

} // namespace tarnix
