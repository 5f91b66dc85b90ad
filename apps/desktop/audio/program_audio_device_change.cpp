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

void writeDevice(GstElement *sink, const QByteArray &device)
{
    g_object_set(sink, "device", device.isEmpty() ? nullptr : device.constData(), nullptr);
}

} // namespace

void runProgramAudioDeviceChange(ProgramAudioDeviceWork work,
                                 const std::shared_ptr<ProgramAudioDeviceChange> &change)
{
    bool success = false;
    bool running = false;
    if (reachState(work.pipeline, GST_STATE_NULL, work.stateWait)) {
        if (work.hasDeviceProperty)
            writeDevice(work.sink, work.newDevice);
        success = reachState(work.pipeline, GST_STATE_PLAYING, work.stateWait);
        running = success;
        if (!success && work.wasRunning) {
            // The old device played before: bring it back.
            if (reachState(work.pipeline, GST_STATE_NULL, work.stateWait)) {
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
