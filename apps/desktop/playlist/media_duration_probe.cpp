#include "playlist/media_duration_probe.h"

#include "shell/low_priority_threads.h"

#include <gst/pbutils/pbutils.h>

#include <QUrl>

namespace tarnix {

namespace {

QString errorText(GError *error, const char *fallback)
{
    const QString text = error && error->message ? QString::fromUtf8(error->message) : QString();
    return text.isEmpty() ? QString::fromUtf8(fallback) : text;
}

MediaDurationProbeResult failure(const QString &text)
{
    MediaDurationProbeResult result;
    result.error = text;
    return result;
}

const char *resultText(GstDiscovererResult code)
{
    switch (code) {
    case GST_DISCOVERER_URI_INVALID: return "The media URI is invalid.";
    case GST_DISCOVERER_ERROR: return "An error occurred while analyzing the media.";
    case GST_DISCOVERER_TIMEOUT: return "Timed out while determining the media duration.";
    case GST_DISCOVERER_BUSY: return "Could not start media analysis.";
    case GST_DISCOVERER_MISSING_PLUGINS: return "A plugin required for media analysis is missing.";
    default: return "Could not determine the media duration.";
    }
}

// Moving picture wins over sound, sound over a still: a song with cover art
// is audio, a clip with a poster frame is video.
PlaylistMediaType mediaTypeOf(GstDiscovererInfo *info)
{
    bool video = false;
    bool image = false;
    GList *videos = gst_discoverer_info_get_video_streams(info);
    for (GList *l = videos; l; l = l->next) {
        if (gst_discoverer_video_info_is_image(GST_DISCOVERER_VIDEO_INFO(l->data)))
            image = true;
        else
            video = true;
    }
    gst_discoverer_stream_info_list_free(videos);
    if (video)
        return PlaylistMediaType::video;
    GList *audios = gst_discoverer_info_get_audio_streams(info);
    const bool audio = audios != nullptr;
    gst_discoverer_stream_info_list_free(audios);
    if (audio)
        return PlaylistMediaType::audio;
    return image ? PlaylistMediaType::stillImage : PlaylistMediaType::unknown;
}

} // namespace

MediaDurationProbeResult probeMediaDuration(const QString &path, std::chrono::nanoseconds timeout)
{
    GError *error = nullptr;
    GstDiscoverer *discoverer = gst_discoverer_new(GstClockTime(timeout.count()), &error);
    if (!discoverer) {
        const QString text = errorText(error, "Could not initialize media analysis.");
        g_clear_error(&error);
        return failure(text);
    }
    // Its streaming threads run at the asking worker's priority.
    runDiscovererThreadsAtNiceness(discoverer, thisThreadsNiceness());
    g_clear_error(&error);
    const QByteArray uri = QUrl::fromLocalFile(path).toEncoded(QUrl::FullyEncoded);
    GstDiscovererInfo *info = gst_discoverer_discover_uri(discoverer, uri.constData(), &error);
    g_object_unref(discoverer);
    if (!info) {
        const QString text = errorText(error, "Could not analyze the media.");
        g_clear_error(&error);
        return failure(text);
    }
    const GstDiscovererResult code = gst_discoverer_info_get_result(info);
    if (code != GST_DISCOVERER_OK) {
        const QString text = errorText(error, resultText(code));
        g_clear_error(&error);
        gst_discoverer_info_unref(info);
        return failure(text);
    }
    g_clear_error(&error);

    MediaDurationProbeResult result;
    result.mediaType = mediaTypeOf(info);
    const GstClockTime duration = gst_discoverer_info_get_duration(info);
    gst_discoverer_info_unref(info);
    if (result.mediaType == PlaylistMediaType::stillImage) {
        result.success = true;
        result.stillImage = true;
        return result;
    }
    if ((result.mediaType == PlaylistMediaType::video || result.mediaType == PlaylistMediaType::audio)
        && GST_CLOCK_TIME_IS_VALID(duration) && duration / GST_MSECOND >= 1) {
        result.success = true;
        result.durationMs = qint64(duration / GST_MSECOND);
        return result;
    }
    return failure(QStringLiteral("Could not determine the media duration."));
}

} // namespace tarnix
