#pragma once

#include "playlist/playlist_enums.h"

#include <QImage>
#include <QMetaType>
#include <QSize>
#include <QString>

#include <atomic>
#include <chrono>
#include <optional>

namespace tarnix {

// The size of the picture on a playlist tile.
inline constexpr QSize kThumbnailSize{240, 136};

// What one thumbnail request produced: a picture to show in every case (the
// placeholder card when nothing better could be made) and the facts found on
// the way, which the tile's caption shows. Zero and empty mean "not known".
struct MediaThumbnailResult {
    QImage image;
    bool success = false;
    QString error;
    // The request this answers; lets the store drop answers it no longer waits for.
    quint64 requestId = 0;
    PlaylistMediaType mediaType = PlaylistMediaType::unknown;
    int width = 0;
    int height = 0;
    double frameRate = 0.0;
    std::optional<qint64> durationMs;
    QString videoCodec;  // as the media's tags name it
    QString audioCodec;
};

// One request while it waits or runs. The worker reads the request fields,
// which never change after the request was made; the cancel flag is the only
// thing both sides write.
struct PendingThumbnail {
    quint64 requestId = 0;
    quint64 itemId = 0;
    QString path;
    PlaylistMediaType mediaType = PlaylistMediaType::unknown;
    QSize size = kThumbnailSize;
    bool preferAlbumArt = false;
    std::atomic<bool> cancelled{false};
};

// How long each step of a thumbnail may take. Every step that can wait is
// bounded, so that cancelling or shutting down is bounded too.
struct ThumbnailLimits {
    // A video has to preroll (after opening and after its seek) within this;
    // the first look at an audio file has as long.
    std::chrono::milliseconds prerollWait{5000};
    // A frame has to arrive within this, first prerolled, then playing.
    std::chrono::milliseconds samplePull{5000};
    // Reading a whole audio file for its waveform.
    std::chrono::milliseconds waveformLimit{30000};
    // Longer audio gets no waveform; reading it would take too long.
    qint64 longestWaveformMs = 7200000;
    // A pipeline must confirm its NULL state within this to be freed.
    std::chrono::milliseconds nullConfirmation{2000};
};

// Registers the result for queued connections. Safe to call more than once.
void registerThumbnailMetaTypes();

} // namespace tarnix

Q_DECLARE_METATYPE(tarnix::MediaThumbnailResult)
