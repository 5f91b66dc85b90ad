#pragma once

#include "playlist/playlist_document.h"

#include <QJsonValue>

// The bounded walk over a parsed playlist tree: counts every value and
// charges every string and key to the string budgets. Iterative, with sizes
// tested before anything is pushed, so a hostile file bounds both the stack
// and the time spent.
namespace tarnix {

bool walkPlaylistJsonBudget(const QJsonValue &root, QString *error, const PlaylistCancelFlag &cancelFlag);

// The cancellation point shared by the reader's steps.
bool playlistCancelled(const PlaylistCancelFlag &cancelFlag, QString *error);

} // namespace tarnix
