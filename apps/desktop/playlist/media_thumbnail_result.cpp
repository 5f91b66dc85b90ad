#include "playlist/media_thumbnail_result.h"

namespace tarnix {

void registerThumbnailMetaTypes()
{
    qRegisterMetaType<MediaThumbnailResult>("tarnix::MediaThumbnailResult");
}

} // namespace tarnix
