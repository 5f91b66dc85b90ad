#pragma once

#include <gst/gst.h>

namespace tarnix {

// What a deck needs from the program picture: somewhere to hand its appsink,
// and an answer to whether its first frame has arrived. The program
// compositor implements this role; DeckFrameMailboxes is the plain one.
//
// Threads: attachDeck, detachDeck and dropRetainedFrame are called on the
// main thread and never wait on a streaming thread for longer than a sample
// hand-over. hasFrame and latestSample may be called from any thread.
// Samples arrive on the decks' streaming threads, which never wait on the
// main thread.
class DeckFramePresenter
{
public:
    virtual ~DeckFramePresenter() = default;

    // Takes the deck's video from this appsink from now on. The presenter
    // keeps its own references on both; a sink attached to another deck is
    // taken from it first. Re-attaching the same sink is a no-op.
    virtual bool attachDeck(int deckIndex, GstElement *pipeline, GstElement *appsink) = 0;

    // Stops taking samples from the deck's appsink and lets go of it. The
    // retained frame stays until dropRetainedFrame.
    virtual bool detachDeck(int deckIndex) = 0;

    // Whether a frame of the deck's current appsink has arrived since the
    // retained frame was last dropped.
    virtual bool hasFrame(int deckIndex) const = 0;

    // Forgets the deck's last frame, so that hasFrame waits for a new one.
    virtual void dropRetainedFrame(int deckIndex) = 0;

    // A new reference on the deck's newest sample, or null.
    virtual GstSample *latestSample(int deckIndex) const = 0;
};

} // namespace tarnix
