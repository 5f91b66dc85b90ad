#pragma once

#include <QtGlobal>

#include <algorithm>

namespace tarnix {

// Every fade or crossfade length of an item is held to this range before
// use, on ON AIR and on the DSK alike.
inline constexpr qint64 kMinFadeMs = 100;
inline constexpr qint64 kMaxFadeMs = 60000;

inline qint64 clampFadeMs(qint64 ms)
{
    return std::clamp(ms, kMinFadeMs, kMaxFadeMs);
}

} // namespace tarnix
