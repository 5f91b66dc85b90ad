#pragma once

#include "playlist/media_thumbnail_result.h"

namespace tarnix {

// The still image, turned as its orientation tag says and scaled to fit the
// request's size. On failure only the error is set. Worker threads only.
MediaThumbnailResult makeStillThumbnail(const PendingThumbnail &request);

} // namespace tarnix
