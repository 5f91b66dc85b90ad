#pragma once

#include "playlist/playlist_enums.h"

#include <QString>

namespace tarnix {

// The end modes as the operator reads them on the panels and in the EDIT
// status line: "Stop", "Pause", "Repeat", "Next", "GOTO".
QString endModeName(PlaylistEndMode mode);
// What follows the last repeat: "Stop", "Pause", "Next", "GOTO".
QString repeatEndModeName(PlaylistRepeatEndMode mode);

} // namespace tarnix
