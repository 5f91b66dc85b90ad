#include "video/program_layer_slot.h"

#include "video/owned_sample.h"

#include <gst/app/gstappsink.h>

#include <atomic>
#include <condition_variable>
#include <mutex>

namespace tarnix {

struct ProgramLayerSlot::State {
    mutable std::mutex sampleMutex;
    GstSample *latest = nullptr; // guarded by sampleMutex
    quint64 generation = 0;      // guarded by sampleMutex; moves with every change of latest

    std::mutex sinkMutex;
    std::condition_variable idle;
    GstElement *appsink = nullptr;  // guarded by sinkMutex; owned reference
    GstElement *pipeline = nullptr; // guarded by sinkMutex; owned reference
    int callbacksInFlight = 0;      // guarded by sinkMutex
    bool connected = false;         // guarded by sinkMutex
    SampleListener listener;        // guarded by sinkMutex

    std::atomic<bool> stuck{false};
    std::atomic<bool> acceptingSamples{true};
    std::atomic<bool> hold{false};
    std::atomic<quint64> framesReceived{0};
};

namespace {

using State = ProgramLayerSlot::State;

// Callback data: shares the state, so a callback that outlives the slot
// still writes into live memory.
struct CallbackContext {
    std::shared_ptr<State> state;
};

void store(State &state, GstSample *sample)
{
    GstSample *previous = nullptr;
    {
        std::lock_guard lock(state.sampleMutex);
        previous = state.latest;
        state.latest = sample;
        // The first buffer of a playing sink comes as preroll and again as
        // a sample: one frame. The previous sample keeps its buffer alive
        // here, so equal pointers are the same buffer.
        if (!previous || gst_sample_get_buffer(previous) != gst_sample_get_buffer(sample)) {
            ++state.generation;
            state.framesReceived.fetch_add(1, std::memory_order_relaxed);
        }
    }
    if (previous)
        gst_sample_unref(previous);
}

void take(GstAppSink *sink, State &state, bool preroll)
{
    ProgramLayerSlot::SampleListener listener;
    {
        std::lock_guard lock(state.sinkMutex);
        if (!state.connected || state.appsink != GST_ELEMENT(sink))
            return;
        ++state.callbacksInFlight;
        listener = state.listener;
    }
    if (state.acceptingSamples.load() && !state.hold.load()) {
        GstSample *sample = ownedSample(preroll ? gst_app_sink_try_pull_preroll(sink, 0)
                                                : gst_app_sink_try_pull_sample(sink, 0));
        if (sample) {
            if (listener)
                listener(sample);
            store(state, sample);
        }
    }
    {
        std::lock_guard lock(state.sinkMutex);
        --state.callbacksInFlight;
    }
    state.idle.notify_all();
}

GstFlowReturn onNewPreroll(GstAppSink *sink, gpointer data)
{
    take(sink, *static_cast<CallbackContext *>(data)->state, true);
    return GST_FLOW_OK;
}

GstFlowReturn onNewSample(GstAppSink *sink, gpointer data)
{
    take(sink, *static_cast<CallbackContext *>(data)->state, false);
    return GST_FLOW_OK;
}

void destroyContext(gpointer data)
{
    delete static_cast<CallbackContext *>(data);
}

} // namespace

ProgramLayerSlot::ProgramLayerSlot()
    : m_state(std::make_shared<State>())
{
}

ProgramLayerSlot::~ProgramLayerSlot()
{
    // A stuck slot keeps its sink for the rest of the process.
    if (!m_state->stuck.load())
        disconnect(true, std::chrono::milliseconds(0));
    else
        dropSample();
}

bool ProgramLayerSlot::connect(GstElement *pipeline, GstElement *appsink)
{
    if (!appsink || !GST_IS_APP_SINK(appsink) || m_state->stuck.load())
        return false;
    {
        std::lock_guard lock(m_state->sinkMutex);
        if (m_state->appsink == appsink)
            return true;
        if (m_state->appsink)
            return false;
        m_state->appsink = GST_ELEMENT(gst_object_ref(appsink));
        m_state->pipeline = pipeline ? GST_ELEMENT(gst_object_ref(pipeline)) : nullptr;
        m_state->connected = true;
    }
    GstAppSinkCallbacks callbacks{};
    callbacks.new_preroll = onNewPreroll;
    callbacks.new_sample = onNewSample;
    gst_app_sink_set_callbacks(GST_APP_SINK(appsink), &callbacks,
                               new CallbackContext{m_state}, destroyContext);
    return true;
}

bool ProgramLayerSlot::disconnect(bool clearSample, std::chrono::milliseconds limit)
{
    if (m_state->stuck.load())
        return false;
    GstElement *sink = nullptr;
    {
        std::lock_guard lock(m_state->sinkMutex);
        m_state->connected = false;
        sink = m_state->appsink ? GST_ELEMENT(gst_object_ref(m_state->appsink)) : nullptr;
    }
    if (sink) {
        GstAppSinkCallbacks none{};
        gst_app_sink_set_callbacks(GST_APP_SINK(sink), &none, nullptr, nullptr);
        gst_object_unref(sink);
    }
    GstElement *pipeline = nullptr;
    {
        std::unique_lock lock(m_state->sinkMutex);
        if (!m_state->idle.wait_for(lock, limit, [this] { return m_state->callbacksInFlight == 0; })) {
            m_state->stuck.store(true);
            return false;
        }
        sink = std::exchange(m_state->appsink, nullptr);
        pipeline = std::exchange(m_state->pipeline, nullptr);
    }
    if (clearSample)
        dropSample();
    if (sink)
        gst_object_unref(sink);
    if (pipeline)
        gst_object_unref(pipeline);
    return true;
}

GstElement *ProgramLayerSlot::appsink() const
{
    std::lock_guard lock(m_state->sinkMutex);
    return m_state->appsink;
}

bool ProgramLayerSlot::isConnected() const
{
    std::lock_guard lock(m_state->sinkMutex);
    return m_state->connected;
}

bool ProgramLayerSlot::isStuck() const
{
    return m_state->stuck.load();
}

GstSample *ProgramLayerSlot::latestSample(quint64 *generation) const
{
    std::lock_guard lock(m_state->sampleMutex);
    if (generation)
        *generation = m_state->generation;
    return m_state->latest ? gst_sample_ref(m_state->latest) : nullptr;
}

bool ProgramLayerSlot::hasFrame() const
{
    std::lock_guard lock(m_state->sampleMutex);
    return m_state->latest != nullptr;
}

void ProgramLayerSlot::dropSample()
{
    GstSample *retained = nullptr;
    {
        std::lock_guard lock(m_state->sampleMutex);
        retained = std::exchange(m_state->latest, nullptr);
        if (retained)
            ++m_state->generation;
    }
    if (retained)
        gst_sample_unref(retained);
}

void ProgramLayerSlot::setFrameUpdates(bool on)
{
    m_state->acceptingSamples.store(on);
}

bool ProgramLayerSlot::frameUpdates() const
{
    return m_state->acceptingSamples.load();
}

bool ProgramLayerSlot::freeze(std::chrono::milliseconds limit)
{
    m_state->acceptingSamples.store(false);
    std::unique_lock lock(m_state->sinkMutex);
    return m_state->idle.wait_for(lock, limit, [this] { return m_state->callbacksInFlight == 0; });
}

void ProgramLayerSlot::setHold(bool hold)
{
    m_state->hold.store(hold);
}

bool ProgramLayerSlot::hold() const
{
    return m_state->hold.load();
}

quint64 ProgramLayerSlot::framesReceived() const
{
    return m_state->framesReceived.load(std::memory_order_relaxed);
}

void ProgramLayerSlot::setSampleListener(SampleListener listener)
{
    std::lock_guard lock(m_state->sinkMutex);
    m_state->listener = std::move(listener);
}

} // namespace tarnix
