#include "video/deck_frame_mailboxes.h"

#include "video/owned_sample.h"

#include <gst/app/gstappsink.h>

#include <atomic>
#include <mutex>

namespace tarnix {

struct DeckFrameMailboxes::Slot {
    mutable std::mutex mutex;
    GstSample *latest = nullptr;   // guarded by mutex
    GstElement *appsink = nullptr; // guarded by mutex; owned reference
    GstElement *pipeline = nullptr; // guarded by mutex; owned reference
    std::atomic<quint64> framesReceived{0};
};

namespace {

using Slot = DeckFrameMailboxes::Slot;

// Handed to the appsink as callback data. It owns the slot, so a callback
// still running after a detach writes into live memory; the identity check
// against the slot's current sink keeps it from replacing a newer frame.
struct CallbackContext {
    std::shared_ptr<Slot> slot;
    GstElement *appsink = nullptr;
};

void deliver(const CallbackContext &context, GstSample *sample)
{
    if (!sample)
        return;
    GstSample *previous = nullptr;
    {
        std::lock_guard lock(context.slot->mutex);
        if (context.slot->appsink == context.appsink) {
            previous = context.slot->latest;
            context.slot->latest = sample;
            sample = nullptr;
            context.slot->framesReceived.fetch_add(1, std::memory_order_relaxed);
        }
    }
    if (previous)
        gst_sample_unref(previous);
    if (sample)
        gst_sample_unref(sample);
}

GstFlowReturn onNewPreroll(GstAppSink *sink, gpointer data)
{
    deliver(*static_cast<CallbackContext *>(data), ownedSample(gst_app_sink_try_pull_preroll(sink, 0)));
    return GST_FLOW_OK;
}

GstFlowReturn onNewSample(GstAppSink *sink, gpointer data)
{
    deliver(*static_cast<CallbackContext *>(data), ownedSample(gst_app_sink_try_pull_sample(sink, 0)));
    return GST_FLOW_OK;
}

void destroyContext(gpointer data)
{
    delete static_cast<CallbackContext *>(data);
}

void installCallbacks(GstElement *appsink, const std::shared_ptr<Slot> &slot)
{
    GstAppSinkCallbacks callbacks{};
    callbacks.new_preroll = onNewPreroll;
    callbacks.new_sample = onNewSample;
    auto *context = new CallbackContext{slot, appsink};
    gst_app_sink_set_callbacks(GST_APP_SINK(appsink), &callbacks, context, destroyContext);
}

void removeCallbacks(GstElement *appsink)
{
    GstAppSinkCallbacks none{};
    gst_app_sink_set_callbacks(GST_APP_SINK(appsink), &none, nullptr, nullptr);
}

bool validIndex(int deckIndex)
{
    return deckIndex >= 0 && deckIndex < DeckFrameMailboxes::kDeckCount;
}

} // namespace

DeckFrameMailboxes::DeckFrameMailboxes()
{
    for (auto &slot : m_slots)
        slot = std::make_shared<Slot>();
}

DeckFrameMailboxes::~DeckFrameMailboxes()
{
    for (int index = 0; index < kDeckCount; ++index) {
        detachDeck(index);
        dropRetainedFrame(index);
    }
}

bool DeckFrameMailboxes::attachDeck(int deckIndex, GstElement *pipeline, GstElement *appsink)
{
    if (!validIndex(deckIndex) || !appsink || !GST_IS_APP_SINK(appsink))
        return false;
    const std::shared_ptr<Slot> &slot = m_slots[deckIndex];
    {
        std::lock_guard lock(slot->mutex);
        if (slot->appsink == appsink)
            return true;
    }
    for (int other = 0; other < kDeckCount; ++other) {
        if (other == deckIndex)
            continue;
        std::unique_lock lock(m_slots[other]->mutex);
        const bool sameSink = m_slots[other]->appsink == appsink;
        lock.unlock();
        if (sameSink)
            detachDeck(other);
    }

    GstElement *previousSink = nullptr;
    GstElement *previousPipeline = nullptr;
    {
        std::lock_guard lock(slot->mutex);
        previousSink = slot->appsink;
        previousPipeline = slot->pipeline;
        slot->appsink = GST_ELEMENT(gst_object_ref(appsink));
        slot->pipeline = pipeline ? GST_ELEMENT(gst_object_ref(pipeline)) : nullptr;
    }
    installCallbacks(appsink, slot);
    if (previousSink) {
        removeCallbacks(previousSink);
        gst_object_unref(previousSink);
    }
    if (previousPipeline)
        gst_object_unref(previousPipeline);
    return true;
}

bool DeckFrameMailboxes::detachDeck(int deckIndex)
{
    if (!validIndex(deckIndex))
        return false;
    const std::shared_ptr<Slot> &slot = m_slots[deckIndex];
    GstElement *sink = nullptr;
    GstElement *pipeline = nullptr;
    {
        std::lock_guard lock(slot->mutex);
        sink = std::exchange(slot->appsink, nullptr);
        pipeline = std::exchange(slot->pipeline, nullptr);
    }
    if (sink) {
        removeCallbacks(sink);
        gst_object_unref(sink);
    }
    if (pipeline)
        gst_object_unref(pipeline);
    return true;
}

bool DeckFrameMailboxes::hasFrame(int deckIndex) const
{
    if (!validIndex(deckIndex))
        return false;
    std::lock_guard lock(m_slots[deckIndex]->mutex);
    return m_slots[deckIndex]->latest != nullptr;
}

void DeckFrameMailboxes::dropRetainedFrame(int deckIndex)
{
    if (!validIndex(deckIndex))
        return;
    GstSample *retained = nullptr;
    {
        std::lock_guard lock(m_slots[deckIndex]->mutex);
        retained = std::exchange(m_slots[deckIndex]->latest, nullptr);
    }
    if (retained)
        gst_sample_unref(retained);
}

GstSample *DeckFrameMailboxes::latestSample(int deckIndex) const
{
    if (!validIndex(deckIndex))
        return nullptr;
    std::lock_guard lock(m_slots[deckIndex]->mutex);
    return m_slots[deckIndex]->latest ? gst_sample_ref(m_slots[deckIndex]->latest) : nullptr;
}

quint64 DeckFrameMailboxes::framesReceived(int deckIndex) const
{
    if (!validIndex(deckIndex))
        return 0;
    return m_slots[deckIndex]->framesReceived.load(std::memory_order_relaxed);
}

} // namespace tarnix
