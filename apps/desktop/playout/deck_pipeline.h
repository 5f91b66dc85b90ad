#pragma once

#include "playout/deck_bus_callbacks.h"

#include <gst/gst.h>

#include <QString>

#include <atomic>
#include <memory>

namespace tarnix {

// The GStreamer objects of one deck: a playbin whose video ends in an RGBA
// appsink of the output size and whose audio ends in tarnixaudiosink, with
// the deck's synchronous bus handler installed.
//
// A DeckPipeline is handed whole from a deck to the thread that stops it.
// Its destructor applies the release rule: references are dropped only when
// shutdownConfirmed is set, or when no worker ever had the playbin and it
// reads NULL without waiting; otherwise everything is kept and a warning
// says so.
struct DeckPipeline {
    struct Options {
        int deckIndex = -1;
        int width = 1920;
        int height = 1080;
        GstBusSyncHandler busHandler = nullptr;
        gpointer busUserData = nullptr;
    };

    // Builds the pipeline in the deck's order of checks. Does no state
    // change, so it is safe on the main thread. Null with a text on failure.
    static std::shared_ptr<DeckPipeline> create(const Options &options, QString *error);

    DeckPipeline() = default;
    ~DeckPipeline();
    DeckPipeline(const DeckPipeline &) = delete;
    DeckPipeline &operator=(const DeckPipeline &) = delete;

    // "deck-a" or "deck-b".
    static QString deckName(int deckIndex);

    // Finds the tarnixaudiosink of the playbin's audio branch, or null.
    GstElement *findAudioOutput() const;

    int deckIndex = -1;
    GstElement *playbin = nullptr;
    GstElement *levelElement = nullptr;
    GstElement *volumeElement = nullptr;
    GstBus *bus = nullptr;
    std::shared_ptr<DeckBusCallbacks> busCallbacks;
    GstElement *appsink = nullptr;
    std::atomic<bool> shutdownConfirmed{false};
    // Set once a preparation worker was given the playbin: from then on only
    // a confirmed stop may free it.
    std::atomic<bool> handedToWorker{false};
};

} // namespace tarnix
