#pragma once

#include <gst/gst.h>

#include <QtGlobal>

#include <chrono>
#include <functional>
#include <memory>

namespace tarnix {

// One layer of the program picture: a mailbox of one sample fed by an
// appsink's new-preroll and new-sample callbacks. A slow input leaves its
// last frame standing; a fast one loses frames nobody took.
//
// Threads: connect, disconnect, freeze and the setters are for the main
// thread. The callbacks run on the producer's streaming thread and hold a
// mutex only for a pointer swap. latestSample, hasFrame and the counters may
// be read from any thread (the compositor's streaming thread reads them).
class ProgramLayerSlot
{
public:
    ProgramLayerSlot();
    ~ProgramLayerSlot();

    ProgramLayerSlot(const ProgramLayerSlot &) = delete;
    ProgramLayerSlot &operator=(const ProgramLayerSlot &) = delete;

    // Takes samples from this appsink from now on, keeping references on the
    // sink and its pipeline. Refused while another sink is connected (the
    // caller disconnects first) or after a disconnect that timed out.
    bool connect(GstElement *pipeline, GstElement *appsink);

    // Stops taking samples, waits up to the limit for callbacks in flight and
    // lets go of the sink. On time-out returns false with the sink still
    // referenced and the slot unusable: a late callback must never run into
    // freed memory. With clearSample the retained frame is dropped as well.
    bool disconnect(bool clearSample, std::chrono::milliseconds limit);

    // The connected appsink (not referenced for the caller), or null.
    GstElement *appsink() const;
    bool isConnected() const;
    // True after a disconnect timed out; the slot is never used again.
    bool isStuck() const;

    // A new reference on the newest sample, or null. The generation, read
    // with it, changes whenever the slot's sample does, so a reader can tell
    // that it holds the sample it saw last time without comparing pointers
    // that may have been freed and reused.
    GstSample *latestSample(quint64 *generation = nullptr) const;
    bool hasFrame() const;
    void dropSample();

    // Frame updates: while off, arriving samples are left in the appsink and
    // the layer keeps its frame.
    void setFrameUpdates(bool on);
    bool frameUpdates() const;
    // Switches frame updates off and waits up to the limit until no callback
    // is still storing a frame; false on time-out.
    bool freeze(std::chrono::milliseconds limit);

    // Set by a deck while it prerolls: the layer keeps its frame until the
    // hold is lifted.
    void setHold(bool hold);
    bool hold() const;

    // Samples stored since the slot was created.
    quint64 framesReceived() const;

    // Called on the streaming thread with each sample stored, while the
    // callback counts as in flight. For diagnostics and tests.
    using SampleListener = std::function<void(GstSample *)>;
    void setSampleListener(SampleListener listener);

    struct State;

private:
    std::shared_ptr<State> m_state;
};

} // namespace tarnix
