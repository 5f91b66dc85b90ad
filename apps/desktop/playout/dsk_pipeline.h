#pragma once

#include "playout/deck_bus_callbacks.h"

#include <gst/gst.h>

#include <QString>

#include <atomic>
#include <memory>

namespace tarnix {

// The GStreamer objects of one DSK deck: a playbin "dsk-<n>-player" whose
// picture goes, converted to BGRA at the item's own size, into the appsink
// "dsk-<n>-video-appsink" that the program compositor reads, and whose sound
// never goes anywhere: the audio stream is switched off in the playbin's
// flags, muted, at volume 0, and would end in the fakesink
// "dsk-<n>-audio-discard" if it ever ran.
//
// Like a deck pipeline it is handed whole to the thread that stops it, and
// its destructor applies the release rule: references are dropped only when
// shutdownConfirmed is set, or when no worker ever had the playbin and it
// reads NULL without waiting; otherwise everything is kept and a warning
// says so.
struct DskPipeline {
    struct Options {
        int index = 0;
        GstBusSyncHandler busHandler = nullptr;
        gpointer busUserData = nullptr;
    };

    // Builds the pipeline without any state change, so it is safe on the
    // main thread. Null with a text on failure.
    static std::shared_ptr<DskPipeline> create(const Options &options, QString *error);

    DskPipeline() = default;
    ~DskPipeline();
    DskPipeline(const DskPipeline &) = delete;
    DskPipeline &operator=(const DskPipeline &) = delete;

    // Writes the audio isolation again (flags, mute, volume, the discard
    // sink) and reads it back; false when any of it does not hold.
    bool enforceAudioIsolation() const;

    GstElement *playbin = nullptr;
    GstElement *appsink = nullptr;
    GstElement *audioDiscard = nullptr;
    GstBus *bus = nullptr;
    std::shared_ptr<DeckBusCallbacks> busCallbacks;
    std::atomic<bool> shutdownConfirmed{false};
    // Set once a preparation worker was given the playbin.
    std::atomic<bool> handedToWorker{false};
};

} // namespace tarnix
