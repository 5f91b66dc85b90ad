#pragma once

#include "playlist/media_thumbnail_result.h"

#include <QByteArray>
#include <QString>

#include <chrono>
#include <functional>
#include <optional>

namespace tarnix {

// What a first look at an audio file tells, before any sample is decoded.
struct AudioFileFacts {
    bool opened = false;
    std::optional<qint64> durationMs;
    QString codec;
    QByteArray albumArt;  // the encoded cover picture of the tags, if any
};

// Looks at one file; blocks up to its own time-out. Replaceable, so that
// tests decide what a file is.
using AudioFactsProbe = std::function<AudioFileFacts(const QString &path)>;

// GStreamer's discoverer, given at most `timeout`.
AudioFileFacts probeAudioFile(const QString &path, std::chrono::milliseconds timeout);

// The cover picture when the request prefers it and the file has one, else
// the waveform; audio too long to read for a waveform keeps the placeholder
// card. On failure only the error is set. Worker threads only.
MediaThumbnailResult makeAudioThumbnail(const PendingThumbnail &request, const ThumbnailLimits &limits,
                                        const AudioFactsProbe &probe);

} // namespace tarnix
