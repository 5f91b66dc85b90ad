#include "playlist/still_thumbnail.h"

#include "playlist/thumbnail_cards.h"

#include <QImageReader>

namespace tarnix {

MediaThumbnailResult makeStillThumbnail(const PendingThumbnail &request)
{
    MediaThumbnailResult result;
    result.mediaType = PlaylistMediaType::stillImage;
    if (request.cancelled.load()) {
        result.error = QStringLiteral("Still-image thumbnail generation was canceled.");
        return result;
    }
    QImageReader reader(request.path);
    reader.setAutoTransform(true);
    const QImage picture = reader.read();
    if (picture.isNull()) {
        result.error = QStringLiteral("Could not read the still image.");
        return result;
    }
    result.width = picture.width();
    result.height = picture.height();
    result.image = fitOntoCard(picture, request.size);
    result.success = true;
    return result;
}

} // namespace tarnix
