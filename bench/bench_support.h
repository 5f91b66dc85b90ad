#pragma once

// Shared pieces of the bench programs: generated media and percentiles.

#include <gst/gst.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QString>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <vector>

namespace tarnix::bench {

// Ten seconds of 1080p30 H.264 with moving content (keyframe every second)
// and AAC stereo: the program's typical file.
inline QString zonePlate1080pBody()
{
    return QStringLiteral("videotestsrc num-buffers=300 pattern=zone-plate kx2=20 ky2=20 kt=1 ! "
                          "video/x-raw,width=1920,height=1080,framerate=30/1 ! "
                          "openh264enc gop-size=30 bitrate=8000000 ! h264parse ! mux. "
                          "audiotestsrc num-buffers=469 samplesperbuffer=1024 ! "
                          "audio/x-raw,rate=48000,channels=2 ! avenc_aac ! aacparse ! mux. "
                          "mp4mux name=mux");
}

// Runs "<body> ! filesink" into a partial file and renames it when the
// pipeline reached end of stream, so an interrupted run leaves nothing that
// a later run would take as finished. An existing file is kept. feed, when
// given, runs once the pipeline plays (to push buffers into an appsrc).
inline bool generateMedia(const QString &path, const QString &body,
                          const std::function<void(GstElement *pipeline)> &feed = {})
{
    if (QFile::exists(path))
        return true;
    QDir().mkpath(QFileInfo(path).absolutePath());
    const QString partial = path + QStringLiteral(".partial");
    const QString description = body + QStringLiteral(" ! filesink location=\"%1\"").arg(partial);
    std::printf("generating %s ...\n", qPrintable(path));
    std::fflush(stdout);
    GError *error = nullptr;
    GstElement *pipeline = gst_parse_launch(description.toUtf8().constData(), &error);
    if (error || !pipeline) {
        std::fprintf(stderr, "cannot build the generator: %s\n", error ? error->message : "unknown");
        if (error)
            g_error_free(error);
        if (pipeline)
            gst_object_unref(pipeline);
        return false;
    }
    gst_element_set_state(pipeline, GST_STATE_PLAYING);
    if (feed)
        feed(pipeline);
    GstBus *bus = gst_element_get_bus(pipeline);
    GstMessage *done = gst_bus_timed_pop_filtered(
        bus, GST_CLOCK_TIME_NONE, static_cast<GstMessageType>(GST_MESSAGE_EOS | GST_MESSAGE_ERROR));
    const bool ok = done && GST_MESSAGE_TYPE(done) == GST_MESSAGE_EOS;
    if (done)
        gst_message_unref(done);
    gst_object_unref(bus);
    gst_element_set_state(pipeline, GST_STATE_NULL);
    gst_object_unref(pipeline);
    if (!ok || !QFile::rename(partial, path)) {
        QFile::remove(partial);
        std::fprintf(stderr, "generating %s failed\n", qPrintable(path));
        return false;
    }
    return true;
}

// The value at or above the given fraction of the sorted values (nearest rank).
inline double percentile(std::vector<double> values, double fraction)
{
    if (values.empty())
        return 0.0;
    std::sort(values.begin(), values.end());
    const auto rank = static_cast<std::size_t>(fraction * double(values.size()) + 0.999999);
    return values[std::clamp<std::size_t>(rank, 1, values.size()) - 1];
}

} // namespace tarnix::bench
