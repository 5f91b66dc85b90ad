#pragma once

#include "playlist/playlist_enums.h"

#include <QString>

#include <chrono>
#include <functional>
#include <optional>

namespace tarnix {

// What analysis found out about a media file: a kind that can play and, for
// sound and picture that move, how long it lasts.
struct MediaDurationProbeResult {
    bool success = false;
    bool stillImage = false;
    PlaylistMediaType mediaType = PlaylistMediaType::unknown;
    std::optional<qint64> durationMs;
    QString error;
};

// Analyses one file; blocks for as long as the analysis takes, so it runs on
// a worker. Replaceable, so that tests decide what a file is.
using MediaDurationProbe = std::function<MediaDurationProbeResult(const QString &path)>;

// GStreamer's discoverer, given at most `timeout` per file.
MediaDurationProbeResult probeMediaDuration(const QString &path,
                                            std::chrono::nanoseconds timeout = std::chrono::seconds(5));

} // namespace tarnix
