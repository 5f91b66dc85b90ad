#include "edit/edit_pfl_tap.h"

#include "audio/edit_pfl_feed.h"

namespace tarnix {

namespace {

struct PflTap {
    std::shared_ptr<EditPflFeed> feed;
    // Written and read on the pad's streaming thread only: segments and
    // buffers are serialized there.
    GstSegment segment;
    bool timeSegment = false;
};

void onEvent(PflTap &tap, GstEvent *event)
{
    switch (GST_EVENT_TYPE(event)) {
    case GST_EVENT_SEGMENT: {
        const GstSegment *segment = nullptr;
        gst_event_parse_segment(event, &segment);
        tap.timeSegment = segment && segment->format == GST_FORMAT_TIME;
        if (tap.timeSegment)
            gst_segment_copy_into(segment, &tap.segment);
        tap.feed->bumpGeneration();
        break;
    }
    case GST_EVENT_FLUSH_START:
    case GST_EVENT_EOS:
        tap.feed->bumpGeneration();
        break;
    default:
        break;
    }
}

void onBuffer(PflTap &tap, GstPad *pad, GstBuffer *buffer)
{
    EditPflFeed &feed = *tap.feed;
    if (!feed.audible() || !feed.sourceActive())
        return;
    if (!tap.timeSegment || tap.segment.rate != 1.0 || tap.segment.applied_rate != 1.0)
        return;
    const std::uint32_t generation = feed.generation();
    if (!GST_BUFFER_PTS_IS_VALID(buffer))
        return;
    const guint64 runningTime = gst_segment_to_running_time(&tap.segment, GST_FORMAT_TIME, GST_BUFFER_PTS(buffer));
    if (runningTime == GST_CLOCK_TIME_NONE)
        return;
    GstElement *element = GST_ELEMENT(GST_PAD_PARENT(pad));
    GstClock *clock = element ? gst_element_get_clock(element) : nullptr;
    if (!clock)
        return;
    const GstClockTime baseTime = gst_element_get_base_time(element);
    const GstClockTime clockTime = gst_clock_get_time(clock);
    gst_object_unref(clock);
    if (baseTime == GST_CLOCK_TIME_NONE || clockTime == GST_CLOCK_TIME_NONE)
        return;

    GstMapInfo map;
    if (!gst_buffer_map(buffer, &map, GST_MAP_READ))
        return;
    if (map.size % (pfl::kChannels * sizeof(float)) == 0 && map.size <= pfl::kLargestBufferBytes) {
        // The pipeline's clock time turned into the monotonic scale the
        // helper plays by.
        const std::int64_t firstFrame = std::int64_t(baseTime) - std::int64_t(clockTime)
                                        + std::int64_t(monotonicNowNs()) + std::int64_t(runningTime);
        if (firstFrame > 0)
            feed.writeBuffer(reinterpret_cast<const float *>(map.data),
                             std::uint32_t(map.size / (pfl::kChannels * sizeof(float))), std::uint64_t(firstFrame),
                             generation);
    }
    gst_buffer_unmap(buffer, &map);
}

GstPadProbeReturn onPad(GstPad *pad, GstPadProbeInfo *info, gpointer data)
{
    auto *tap = static_cast<PflTap *>(data);
    if (GST_PAD_PROBE_INFO_TYPE(info) & GST_PAD_PROBE_TYPE_BUFFER)
        onBuffer(*tap, pad, GST_PAD_PROBE_INFO_BUFFER(info));
    else if (GST_PAD_PROBE_INFO_TYPE(info) & (GST_PAD_PROBE_TYPE_EVENT_DOWNSTREAM | GST_PAD_PROBE_TYPE_EVENT_FLUSH))
        onEvent(*tap, GST_PAD_PROBE_INFO_EVENT(info));
    return GST_PAD_PROBE_OK;
}

} // namespace

bool attachPflTap(GstElement *element, std::shared_ptr<EditPflFeed> feed)
{
    if (!element || !feed || !feed->hasView())
        return false;
    GstPad *pad = gst_element_get_static_pad(element, "sink");
    if (!pad)
        return false;
    auto *tap = new PflTap{std::move(feed), {}, false};
    gst_segment_init(&tap->segment, GST_FORMAT_TIME);
    const gulong id = gst_pad_add_probe(
        pad, GstPadProbeType(GST_PAD_PROBE_TYPE_BUFFER | GST_PAD_PROBE_TYPE_EVENT_DOWNSTREAM | GST_PAD_PROBE_TYPE_EVENT_FLUSH),
        onPad, tap, [](gpointer data) { delete static_cast<PflTap *>(data); });
    gst_object_unref(pad);
    return id != 0;
}

} // namespace tarnix
