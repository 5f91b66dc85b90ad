#include "playlist/mode_names.h"

namespace tarnix {

QString endModeName(PlaylistEndMode mode)
{
    switch (mode) {
    case PlaylistEndMode::stop: return QStringLiteral("Stop");
    case PlaylistEndMode::pause: return QStringLiteral("Pause");
    case PlaylistEndMode::repeat: return QStringLiteral("Repeat");
    case PlaylistEndMode::next: return QStringLiteral("Next");
    case PlaylistEndMode::goto_: return QStringLiteral("GOTO");
    }
    return {};
}

QString repeatEndModeName(PlaylistRepeatEndMode mode)
{
    switch (mode) {
    case PlaylistRepeatEndMode::stop: return QStringLiteral("Stop");
    case PlaylistRepeatEndMode::pause: return QStringLiteral("Pause");
    case PlaylistRepeatEndMode::next: return QStringLiteral("Next");
    case PlaylistRepeatEndMode::goto_: return QStringLiteral("GOTO");
    }
    return {};
}

} // namespace tarnix
