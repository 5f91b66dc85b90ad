#include "playlist/video_thumbnail.h"

#include "playlist/thumbnail_pipeline.h"

#include <gst/video/video.h>

#include <QUrl>

#include <algorithm>
#include <cstring>
#include <memory>

namespace tarnix {

namespace {

// The frame comes out at the tile's size; videoscale adds the borders that
// keep the picture's aspect.
constexpr auto kVideoPipeline =
    "uridecodebin name=source ! queue max-size-buffers=2 ! videoconvert ! "
    "videoscale name=thumbnail_scale add-borders=true ! "
    "video/x-raw,format=RGBA,width=%1,height=%2,pixel-aspect-ratio=1/1 ! "
    "appsink name=thumbnail_sink sync=false max-buffers=1 drop=true";

constexpr qint64 kEarliestSeekMs = 100;
constexpr qint64 kLatestSeekMs = 1000;

using SampleReference = std::unique_ptr<GstSample, decltype(&gst_sample_unref)>;

// Native size and rate of the decoded video: what enters the scaler.
void readSourceFormat(GstElement *scale, MediaThumbnailResult &result)
{
    if (!scale)
        return;
    GstObjectReference pad(gst_element_get_static_pad(scale, "sink"));
    if (!pad.object)
        return;
    GstCaps *caps = gst_pad_get_current_caps(GST_PAD(pad.object));
    if (!caps)
        return;
    GstVideoInfo info;
    if (gst_video_info_from_caps(&info, caps)) {
        result.width = GST_VIDEO_INFO_WIDTH(&info);
        result.height = GST_VIDEO_INFO_HEIGHT(&info);
        if (GST_VIDEO_INFO_FPS_N(&info) > 0 && GST_VIDEO_INFO_FPS_D(&info) > 0)
            result.frameRate = double(GST_VIDEO_INFO_FPS_N(&info)) / GST_VIDEO_INFO_FPS_D(&info);
    }
    gst_caps_unref(caps);
}

gboolean findVideoCodec(GstPad *, GstEvent **event, gpointer data)
{
    if (GST_EVENT_TYPE(*event) != GST_EVENT_TAG)
        return TRUE;
    GstTagList *tags = nullptr;
    gst_event_parse_tag(*event, &tags);
    gchar *codec = nullptr;
    if (tags && gst_tag_list_get_string(tags, GST_TAG_VIDEO_CODEC, &codec)) {
        *static_cast<QString *>(data) = QString::fromUtf8(codec);
        g_free(codec);
        return FALSE;
    }
    return TRUE;
}

// The tags travel with the stream to the sink, where they stay as sticky
// events once the frame has arrived.
QString readVideoCodec(GstElement *sink)
{
    GstObjectReference pad(gst_element_get_static_pad(sink, "sink"));
    QString codec;
    if (pad.object)
        gst_pad_sticky_events_foreach(GST_PAD(pad.object), findVideoCodec, &codec);
    return codec;
}

// Copies the frame out, row by row: the buffer's stride may be wider than
// the picture.
QImage copyFrame(GstSample *sample, QString *error)
{
    GstCaps *caps = gst_sample_get_caps(sample);
    GstVideoInfo info;
    if (!caps || !gst_video_info_from_caps(&info, caps) || GST_VIDEO_INFO_FORMAT(&info) != GST_VIDEO_FORMAT_RGBA
        || GST_VIDEO_INFO_WIDTH(&info) <= 0 || GST_VIDEO_INFO_HEIGHT(&info) <= 0) {
        *error = QStringLiteral("Could not determine the video frame format.");
        return {};
    }
    GstBuffer *buffer = gst_sample_get_buffer(sample);
    GstVideoFrame frame;
    if (!buffer || !gst_video_frame_map(&frame, &info, buffer, GST_MAP_READ)) {
        *error = QStringLiteral("Could not read the video frame.");
        return {};
    }
    const int width = GST_VIDEO_INFO_WIDTH(&info);
    const int height = GST_VIDEO_INFO_HEIGHT(&info);
    QImage image(width, height, QImage::Format_RGBA8888);
    const auto *pixels = static_cast<const uchar *>(GST_VIDEO_FRAME_PLANE_DATA(&frame, 0));
    const int stride = GST_VIDEO_FRAME_PLANE_STRIDE(&frame, 0);
    for (int y = 0; y < height; ++y)
        std::memcpy(image.scanLine(y), pixels + qsizetype(y) * stride, size_t(width) * 4);
    gst_video_frame_unmap(&frame);
    return image.convertToFormat(QImage::Format_ARGB32_Premultiplied);
}

} // namespace

std::optional<qint64> videoThumbnailSeekTargetMs(std::optional<qint64> durationMs)
{
    if (!durationMs || *durationMs <= 0)
        return std::nullopt;
    const qint64 target = std::clamp(*durationMs / 10, kEarliestSeekMs, kLatestSeekMs);
    if (target >= *durationMs)
        return std::nullopt;
    return target;
}

MediaThumbnailResult makeVideoThumbnail(const PendingThumbnail &request, const ThumbnailLimits &limits)
{
    MediaThumbnailResult result;
    result.mediaType = PlaylistMediaType::video;
    auto fail = [&result](const QString &text) {
        result.error = text;
        return result;
    };
    const QString canceled = QStringLiteral("Thumbnail generation was canceled.");
    const QString description =
        QString::fromLatin1(kVideoPipeline).arg(request.size.width()).arg(request.size.height());
    ThumbnailPipeline pipeline(description, limits.nullConfirmation);
    if (!pipeline)
        return fail(QStringLiteral("Could not create the thumbnail pipeline."));
    GstObjectReference source(pipeline.element("source"));
    if (!source.object)
        return fail(QStringLiteral("Could not create the thumbnail input."));
    GstObjectReference sink(pipeline.element("thumbnail_sink"));
    GstObjectReference scale(pipeline.element("thumbnail_scale"));
    if (!sink.object || !GST_IS_APP_SINK(sink.object))
        return fail(QStringLiteral("Could not create the video thumbnail output."));
    GstAppSink *appSink = GST_APP_SINK(sink.object);

    const QByteArray uri = QUrl::fromLocalFile(request.path).toEncoded(QUrl::FullyEncoded);
    g_object_set(source.object, "uri", uri.constData(), nullptr);
    if (gst_element_set_state(pipeline.get(), GST_STATE_PAUSED) == GST_STATE_CHANGE_FAILURE)
        return fail(QStringLiteral("Could not open the video."));
    switch (waitForThumbnailState(pipeline.get(), limits.prerollWait, request.cancelled)) {
    case ThumbnailWait::Done: break;
    case ThumbnailWait::Cancelled: return fail(canceled);
    default: return fail(QStringLiteral("Could not open the video."));
    }

    gint64 duration = 0;
    if (gst_element_query_duration(pipeline.get(), GST_FORMAT_TIME, &duration) && duration > 0)
        result.durationMs = duration / GST_MSECOND;
    if (const auto target = videoThumbnailSeekTargetMs(result.durationMs)) {
        const auto flags = GstSeekFlags(GST_SEEK_FLAG_FLUSH | GST_SEEK_FLAG_KEY_UNIT);
        // A seek that fails or does not settle still leaves the first frame.
        if (gst_element_seek_simple(pipeline.get(), GST_FORMAT_TIME, flags, *target * GST_MSECOND)
            && waitForThumbnailState(pipeline.get(), limits.prerollWait, request.cancelled)
                   == ThumbnailWait::Cancelled) {
            return fail(canceled);
        }
    }

    ThumbnailWait outcome = ThumbnailWait::Failed;
    SampleReference sample(pullThumbnailSample(appSink, true, limits.samplePull, request.cancelled, &outcome),
                           gst_sample_unref);
    if (!sample && outcome != ThumbnailWait::Cancelled
        && gst_element_set_state(pipeline.get(), GST_STATE_PLAYING) != GST_STATE_CHANGE_FAILURE) {
        sample.reset(pullThumbnailSample(appSink, false, limits.samplePull, request.cancelled, &outcome));
    }
    if (outcome == ThumbnailWait::Cancelled)
        return fail(canceled);
    if (!sample)
        return fail(QStringLiteral("Could not retrieve a video frame."));

    QString error;
    result.image = copyFrame(sample.get(), &error);
    if (result.image.isNull())
        return fail(error);
    readSourceFormat(static_cast<GstElement *>(scale.object), result);
    result.videoCodec = readVideoCodec(static_cast<GstElement *>(sink.object));
    result.success = true;
    return result;
}

} // namespace tarnix
