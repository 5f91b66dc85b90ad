#include "playout/playbin_control.h"

#include <algorithm>

namespace tarnix {

bool requestState(GstElement *element, GstState state)
{
    return element && gst_element_set_state(element, state) != GST_STATE_CHANGE_FAILURE;
}

void useSystemClock(GstElement *pipeline)
{
    if (!pipeline || !GST_IS_PIPELINE(pipeline))
        return;
    GstClock *clock = gst_system_clock_obtain();
    gst_pipeline_use_clock(GST_PIPELINE(pipeline), clock);
    gst_object_unref(clock);
}

bool readsNullNow(GstElement *element)
{
    if (!element)
        return true;
    GstState current = GST_STATE_VOID_PENDING;
    GstState pending = GST_STATE_VOID_PENDING;
    const GstStateChangeReturn result = gst_element_get_state(element, &current, &pending, 0);
    return result == GST_STATE_CHANGE_SUCCESS && current == GST_STATE_NULL && pending == GST_STATE_VOID_PENDING;
}

bool isHeadingTo(GstElement *element, GstState state)
{
    if (!element)
        return false;
    GstState current = GST_STATE_VOID_PENDING;
    GstState pending = GST_STATE_VOID_PENDING;
    if (gst_element_get_state(element, &current, &pending, 0) == GST_STATE_CHANGE_FAILURE)
        return false;
    return (pending == GST_STATE_VOID_PENDING ? current : pending) == state;
}

qint64 playbinPositionMs(GstElement *playbin)
{
    gint64 position = 0;
    if (!playbin || !gst_element_query_position(playbin, GST_FORMAT_TIME, &position) || position < 0)
        return -1;
    return position / GST_MSECOND;
}

qint64 playbinDurationMs(GstElement *playbin)
{
    gint64 duration = 0;
    if (!playbin || !gst_element_query_duration(playbin, GST_FORMAT_TIME, &duration) || duration < 0)
        return -1;
    return duration / GST_MSECOND;
}

bool seekWithinRange(GstElement *playbin, qint64 ms, qint64 inMs, qint64 outMs)
{
    if (!playbin)
        return false;
    qint64 position = std::max(ms, inMs);
    const bool hasOut = outMs >= 0;
    if (hasOut)
        position = std::min(position, outMs);
    return gst_element_seek(playbin, 1.0, GST_FORMAT_TIME, GstSeekFlags(GST_SEEK_FLAG_FLUSH | GST_SEEK_FLAG_ACCURATE),
                            GST_SEEK_TYPE_SET, position * GST_MSECOND, hasOut ? GST_SEEK_TYPE_SET : GST_SEEK_TYPE_NONE,
                            hasOut ? outMs * GST_MSECOND : GST_CLOCK_TIME_NONE);
}

void popBusMessages(GstBus *bus, int limit, const std::function<void(GstMessage *)> &handle)
{
    for (int count = 0; bus && count < limit; ++count) {
        GstMessage *message = gst_bus_pop(bus);
        if (!message)
            return;
        handle(message);
        gst_message_unref(message);
    }
}

} // namespace tarnix
