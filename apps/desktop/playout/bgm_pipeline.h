#pragma once

#include "playout/deck_bus_callbacks.h"

#include <gst/gst.h>

#include <QString>

#include <atomic>
#include <memory>

namespace tarnix {

// The GStreamer objects of the BGM deck: an audio-only playbin whose sound
// goes through the item's EQ, delay and volume into the tarnixaudiosink of
// the channel "bgm-audio", with the owner's synchronous bus handler.
//
// Like a deck pipeline it is handed whole to the thread that stops it, and
// its destructor applies the release rule: references are dropped only when
// shutdownConfirmed is set, or when no worker ever had the playbin and it
// reads NULL without waiting; otherwise everything is kept and a warning
// says so.
struct BgmPipeline {
    struct Options {
        GstBusSyncHandler busHandler = nullptr;
        gpointer busUserData = nullptr;
    };

    // Builds the pipeline without any state change, so it is safe on the
    // main thread. Null with a text on failure.
    static std::shared_ptr<BgmPipeline> create(const Options &options, QString *error);

    BgmPipeline() = default;
    ~BgmPipeline();
    BgmPipeline(const BgmPipeline &) = delete;
    BgmPipeline &operator=(const BgmPipeline &) = delete;

    // The tarnixaudiosink of the audio branch, with a reference, or null.
    GstElement *findAudioOutput() const;

    GstElement *playbin = nullptr;
    GstElement *inputLevel = nullptr;
    GstElement *equalizer = nullptr;
    GstElement *delay = nullptr;
    GstElement *volume = nullptr;
    GstBus *bus = nullptr;
    std::shared_ptr<DeckBusCallbacks> busCallbacks;
    std::atomic<bool> shutdownConfirmed{false};
    // Set once a preparation worker was given the playbin.
    std::atomic<bool> handedToWorker{false};
};

} // namespace tarnix
