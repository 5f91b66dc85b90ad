#include "playlist/thumbnail_worker.h"

#include "playlist/still_thumbnail.h"
#include "playlist/thumbnail_cards.h"
#include "playlist/video_thumbnail.h"

namespace tarnix {

namespace {

// Document items are pictured from their converted media. Converting
// presentations and PDF documents is not part of this build, so their
// items get the card with the reason.
MediaThumbnailResult documentFailure(const char *error)
{
    MediaThumbnailResult result;
    result.error = QString::fromUtf8(error);
    return result;
}

QString cancelText(PlaylistMediaType mediaType)
{
    switch (mediaType) {
    case PlaylistMediaType::stillImage: return QStringLiteral("Still-image thumbnail generation was canceled.");
    case PlaylistMediaType::audio: return QStringLiteral("Audio waveform generation was canceled.");
    default: return QStringLiteral("Thumbnail generation was canceled.");
    }
}

MediaThumbnailResult renderByType(const PendingThumbnail &request, const ThumbnailLimits &limits,
                                  const AudioFactsProbe &audioProbe)
{
    // A request cancelled while it waited in the queue costs nothing more.
    if (request.cancelled.load()) {
        MediaThumbnailResult result;
        result.error = cancelText(request.mediaType);
        return result;
    }
    if (request.itemId == 0 || request.path.isEmpty() || request.size.isEmpty()) {
        MediaThumbnailResult result;
        result.error = QStringLiteral("The thumbnail request is invalid.");
        return result;
    }
    switch (request.mediaType) {
    case PlaylistMediaType::video: return makeVideoThumbnail(request, limits);
    case PlaylistMediaType::stillImage: return makeStillThumbnail(request);
    case PlaylistMediaType::audio: return makeAudioThumbnail(request, limits, audioProbe);
    case PlaylistMediaType::presentation:
        return documentFailure("Could not export the first PowerPoint slide.");
    case PlaylistMediaType::pdf: return documentFailure("Could not render the first PDF page.");
    default: break;
    }
    MediaThumbnailResult result;
    result.error = QStringLiteral("Could not determine the media type.");
    return result;
}

QString unexpectedFailureText(PlaylistMediaType mediaType)
{
    switch (mediaType) {
    case PlaylistMediaType::video: return QStringLiteral("Failed to load the video.");
    case PlaylistMediaType::audio: return QStringLiteral("Failed to load the audio.");
    case PlaylistMediaType::stillImage: return QStringLiteral("Could not read the still image.");
    default: return QStringLiteral("Could not determine the media type.");
    }
}

} // namespace

MediaThumbnailResult renderThumbnail(const PendingThumbnail &request, const ThumbnailLimits &limits,
                                     const AudioFactsProbe &audioProbe)
{
    MediaThumbnailResult result;
    try {
        result = renderByType(request, limits, audioProbe);
    } catch (...) {
        result = {};
        result.error = unexpectedFailureText(request.mediaType);
    }
    result.mediaType = request.mediaType;
    if (!result.success || result.image.isNull()) {
        result.success = false;
        try {
            const QSize size = request.size.isEmpty() ? kThumbnailSize : request.size;
            result.image = paintFailureCard(thumbnailCardLabel(request.path, request.mediaType), result.error, size);
        } catch (...) {
            // Out of memory while painting the card: the tile paints its own placeholder.
        }
    }
    return result;
}

} // namespace tarnix
