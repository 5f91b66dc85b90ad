#include "support/pulse_recording.h"

#include <gst/app/gstappsink.h>
#include <gst/gst.h>

#include <QDeadlineTimer>

#include <cstring>

namespace tarnix::test {

std::vector<float> recordPulseSource(const QString &source, std::size_t frames, std::size_t skipFrames, int timeoutMs)
{
    GstElement *pipeline = gst_parse_launch(
        QStringLiteral("pulsesrc device=%1 ! audio/x-raw,format=F32LE,rate=48000,channels=2 ! appsink name=out sync=false")
            .arg(source)
            .toUtf8()
            .constData(),
        nullptr);
    if (!pipeline)
        return {};
    GstElement *appsink = gst_bin_get_by_name(GST_BIN(pipeline), "out");
    gst_element_set_state(pipeline, GST_STATE_PLAYING);
    const std::size_t skip = skipFrames * 2;
    const std::size_t wanted = skip + frames * 2;
    std::vector<float> samples;
    samples.reserve(wanted);
    QDeadlineTimer deadline(timeoutMs);
    while (samples.size() < wanted && !deadline.hasExpired()) {
        GstSample *sample = gst_app_sink_try_pull_sample(GST_APP_SINK(appsink), 100 * GST_MSECOND);
        if (!sample)
            continue;
        GstBuffer *buffer = gst_sample_get_buffer(sample);
        GstMapInfo map;
        if (gst_buffer_map(buffer, &map, GST_MAP_READ)) {
            const std::size_t count = std::min(map.size / sizeof(float), wanted - samples.size());
            const std::size_t at = samples.size();
            samples.resize(at + count);
            std::memcpy(samples.data() + at, map.data, count * sizeof(float));
            gst_buffer_unmap(buffer, &map);
        }
        gst_sample_unref(sample);
    }
    gst_element_set_state(pipeline, GST_STATE_NULL);
    gst_object_unref(appsink);
    gst_object_unref(pipeline);
    if (samples.size() < wanted)
        return {};
    samples.erase(samples.begin(), samples.begin() + std::ptrdiff_t(skip));
    return samples;
}

} // namespace tarnix::test
