#pragma once

#include "playlist/audio_thumbnail.h"
#include "playlist/media_thumbnail_result.h"

namespace tarnix {

// Makes the picture for one request by its media type. Always returns a
// picture: the failure card with the error when nothing better could be
// made. Throws nothing. Blocks for up to the limits; worker threads only.
MediaThumbnailResult renderThumbnail(const PendingThumbnail &request, const ThumbnailLimits &limits,
                                     const AudioFactsProbe &audioProbe = {});

} // namespace tarnix
