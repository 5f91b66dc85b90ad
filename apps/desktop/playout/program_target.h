#pragma once

#include "playlist/playlist_enums.h"

#include <QString>
#include <QtGlobal>

#include <optional>

namespace tarnix {

// What a deck is asked to play for one playlist item.
struct ProgramTarget {
    quint64 itemId = 0;
    QString path;
    QString displayName;
    PlaylistSourceType sourceType = PlaylistSourceType::file;
    // The live audio that goes with a live source; empty otherwise.
    QString mappedAudio;
    qint64 inPointMs = 0;
    std::optional<qint64> outPointMs;
    double rate = 1.0;

    friend bool operator==(const ProgramTarget &, const ProgramTarget &) = default;
};

// The successor chosen for the item on air and how far its take has come:
// looked up and requested on the standby, then armed when the end (or the
// repeat crossfade window) has come, and taken as soon as it is ready.
struct AutomaticTarget {
    std::optional<quint64> targetItemId;
    std::optional<PlaylistEndMode> endMode;
    std::optional<ProgramTarget> target;
    bool requested = false;
    bool armed = false;
    // The operator paused during a repeat.
    bool suspended = false;

    bool isEmpty() const { return !targetItemId && !endMode && !target && !requested && !armed && !suspended; }
};

} // namespace tarnix
