#include "audio/program_audio_device_change.h"

#include "shell/log_categories.h"

#include <system_error>
#include <thread>

namespace tarnix {

namespace {

// A state counts only when the query succeeds and reads the state asked for.
bool reachState(GstElement *pipeline, GstState target, std::chrono::milliseconds limit)
{
    if (gst_element_set_state(pipeline, target) == GST_STATE_CHANGE_FAILURE)
        return false;
    GstState current = GST_STATE_VOID_PENDING;
    GstState pending = GST_STATE_VOID_PENDING;
    const GstClockTime timeout = GstClockTime(limit.count()) * GST_MSECOND;
    const GstStateChangeReturn result = gst_element_get_state(pipeline, &current, &pending, timeout);
    return (result == GST_STATE_CHANGE_SUCCESS || result == GST_STATE_CHANGE_NO_PREROLL) &&
           current == target;
}

// NULL, and the previous run's clock let go of. The pipeline hands its clock
// to every element only on the way to PLAYING; until then a restarted
// pipeline would keep the old clock and base time, and the live mixer,
// believing itself seconds late, would mix while PAUSED before anything
// had been negotiated. Without a clock it waits, as on the first start.
bool reachNull(GstElement *pipeline, std::chrono::milliseconds limit)
{
    if (!reachState(pipeline, GST_STATE_NULL, limit))
        return false;
    gst_element_set_clock(pipeline, nullptr);
    return true;
}

void writeDevice(GstElement *sink, const QByteArray &device)
{
    g_object_set(sink, "device", device.isEmpty() ? nullptr : device.constData(), nullptr);
}

// Opens the device on the sink alone and asks what it accepts. A sink whose
// device is not there (a sound server's sink for a removed device) accepts
// nothing; started on it, the pipeline would fail negotiation in every
// branch and end each branch before it ever had caps or a segment, which
// the level and mixer elements do not survive cleanly. Such a device is
// refused here and the sink goes back to NULL; an accepted one stays in
// READY for the pipeline to take on.
bool sinkAcceptsAudio(GstElement *sink, std::chrono::milliseconds limit)
{
    bool accepts = reachState(sink, GST_STATE_READY, limit);
    if (accepts) {
        if (GstPad *pad = gst_element_get_static_pad(sink, "sink")) {
            GstCaps *caps = gst_pad_query_caps(pad, nullptr);
            accepts = caps && !gst_caps_is_empty(caps);
            if (caps)
                gst_caps_unref(caps);
            gst_object_unref(pad);
        }
    }
    if (!accepts)
        gst_element_set_state(sink, GST_STATE_NULL);
    return accepts;
}

} // namespace

void runProgramAudioDeviceChange(ProgramAudioDeviceWork work,
                                 const std::shared_ptr<ProgramAudioDeviceChange> &change)
{
    bool success = false;
    bool running = false;
    if (reachNull(work.pipeline, work.stateWait)) {
        if (work.hasDeviceProperty)
            writeDevice(work.sink, work.newDevice);
        success = sinkAcceptsAudio(work.sink, work.stateWait) &&
                  reachState(work.pipeline, GST_STATE_PLAYING, work.stateWait);
        running = success;
        if (!success && work.wasRunning) {
            // The old device played before: bring it back.
            if (reachNull(work.pipeline, work.stateWait)) {
                if (work.hasDeviceProperty)
                    writeDevice(work.sink, work.oldDevice);
                running = reachState(work.pipeline, GST_STATE_PLAYING, work.stateWait);
            }
        }
    }
    gst_object_unref(work.sink);
    gst_object_unref(work.pipeline);
    change->success = success;
    change->running = running;
    change->done.store(true, std::memory_order_release);
}

bool startProgramAudioDeviceChange(ProgramAudioDeviceWork work,
                                   const std::shared_ptr<ProgramAudioDeviceChange> &change,
                                   QString *error)
{
    GstElement *pipeline = work.pipeline;
    GstElement *sink = work.sink;
    try {
        std::thread([work, change] { runProgramAudioDeviceChange(work, change); }).detach();
    } catch (const std::system_error &failure) {
        if (error)
            *error = QString::fromLocal8Bit(failure.what());
        gst_object_unref(sink);
        gst_object_unref(pipeline);
        return false;
    }
    return true;
}

} // namespace tarnix
