#include "audio/volume_ramp.h"

#include "audio/level_reading.h"

#include <gst/controller/gstdirectcontrolbinding.h>
#include <gst/controller/gstinterpolationcontrolsource.h>

#include <algorithm>
#include <atomic>

namespace tarnix {

namespace {

constexpr char kPositionKey[] = "tarnix-volume-ramp-position";

// Where the audio that entered the element ends, in its stream time: a ramp
// scheduled from there starts on the first sample not yet on its way.
struct RampPosition {
    std::atomic<GstClockTime> end{GST_CLOCK_TIME_NONE};
    // Where the scheduled ramp ends; main thread only.
    GstClockTime rampEnd = GST_CLOCK_TIME_NONE;
};

GstPadProbeReturn trackBuffer(GstPad *pad, GstPadProbeInfo *info, gpointer data)
{
    GstBuffer *buffer = GST_PAD_PROBE_INFO_BUFFER(info);
    if (!buffer || !GST_BUFFER_PTS_IS_VALID(buffer))
        return GST_PAD_PROBE_OK;
    GstEvent *event = gst_pad_get_sticky_event(pad, GST_EVENT_SEGMENT, 0);
    if (!event)
        return GST_PAD_PROBE_OK;
    const GstSegment *segment = nullptr;
    gst_event_parse_segment(event, &segment);
    GstClockTime end = GST_BUFFER_PTS(buffer);
    if (GST_BUFFER_DURATION_IS_VALID(buffer))
        end += GST_BUFFER_DURATION(buffer);
    const GstClockTime streamTime = gst_segment_to_stream_time(segment, GST_FORMAT_TIME, end);
    gst_event_unref(event);
    if (GST_CLOCK_TIME_IS_VALID(streamTime))
        static_cast<RampPosition *>(data)->end.store(streamTime, std::memory_order_release);
    return GST_PAD_PROBE_OK;
}

// The position record of the element, made (with its probe) on first use;
// it lives as long as the element.
RampPosition *positionOf(GstElement *volume)
{
    if (auto *position = static_cast<RampPosition *>(g_object_get_data(G_OBJECT(volume), kPositionKey)))
        return position;
    auto *position = new RampPosition;
    g_object_set_data_full(G_OBJECT(volume), kPositionKey, position,
                           [](gpointer data) { delete static_cast<RampPosition *>(data); });
    if (GstPad *sink = gst_element_get_static_pad(volume, "sink")) {
        gst_pad_add_probe(sink, GST_PAD_PROBE_TYPE_BUFFER, trackBuffer, position, nullptr);
        gst_object_unref(sink);
    }
    return position;
}

} // namespace

bool scheduleVolumeRamp(GstElement *volume, GstElement *pipeline, double from, double to, qint64 durationMs)
{
    if (!volume || !pipeline)
        return false;
    RampPosition *position = positionOf(volume);
    GstClockTime start = position->end.load(std::memory_order_acquire);
    if (!GST_CLOCK_TIME_IS_VALID(start)) {
        // Nothing has flowed yet: from the pipeline's time now.
        const std::optional<std::uint64_t> now = pipelineRunningTime(pipeline);
        if (!now)
            return false;
        start = *now;
    }
    GstControlSource *source = gst_interpolation_control_source_new();
    g_object_set(source, "mode", GST_INTERPOLATION_MODE_LINEAR, nullptr);
    auto *points = GST_TIMED_VALUE_CONTROL_SOURCE(source);
    const GstClockTime end = start + GstClockTime(std::max<qint64>(1, durationMs)) * GST_MSECOND;
    const double first = std::clamp(from, 0.0, 10.0);
    // Audio still before the start keeps the level it had.
    gst_timed_value_control_source_set(points, 0, first);
    gst_timed_value_control_source_set(points, start, first);
    gst_timed_value_control_source_set(points, end, std::clamp(to, 0.0, 10.0));
    // Absolute: the points are gains, not fractions of the property's range.
    GstControlBinding *binding = gst_direct_control_binding_new_absolute(GST_OBJECT(volume), "volume", source);
    const bool added = binding && gst_object_add_control_binding(GST_OBJECT(volume), binding);
    gst_object_unref(source);
    position->rampEnd = added ? end : GST_CLOCK_TIME_NONE;
    return added;
}

bool isVolumeRampApplied(GstElement *volume)
{
    if (!volume)
        return true;
    const RampPosition *position = positionOf(volume);
    if (!GST_CLOCK_TIME_IS_VALID(position->rampEnd))
        return true;
    const GstClockTime end = position->end.load(std::memory_order_acquire);
    return GST_CLOCK_TIME_IS_VALID(end) && end >= position->rampEnd;
}

void clearVolumeRamp(GstElement *volume)
{
    if (!volume)
        return;
    positionOf(volume)->rampEnd = GST_CLOCK_TIME_NONE;
    if (GstControlBinding *binding = gst_object_get_control_binding(GST_OBJECT(volume), "volume")) {
        gst_object_remove_control_binding(GST_OBJECT(volume), binding);
        gst_object_unref(binding);
    }
}

} // namespace tarnix
