#pragma once

#include "playlist/media_thumbnail_result.h"

#include <optional>

namespace tarnix {

// Where a video's picture is taken from: a tenth into it, at least 100 ms
// and at most 1 s in, so that a fade from black does not give a black
// tile. None (the first frame) when the length is unknown or the clip ends
// before that point.
std::optional<qint64> videoThumbnailSeekTargetMs(std::optional<qint64> durationMs);

// One frame of the video at the request's size, with its native width,
// height, frame rate, length and codec. On failure only the error is set.
// Blocks for up to the limits; worker threads only.
MediaThumbnailResult makeVideoThumbnail(const PendingThumbnail &request, const ThumbnailLimits &limits);

} // namespace tarnix
