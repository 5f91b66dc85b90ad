#pragma once

#include "playout/deck_source.h"
#include "playout/deck_timings.h"

#include <gst/gst.h>

#include <QString>

#include <functional>
#include <memory>

namespace tarnix {

// The BGM deck: one audio-only playbin whose sound goes to the program mix
// over the channel "bgm-audio". A file is prepared on a worker and the main
// thread only polls; an item is let go of by giving the deck a fresh
// pipeline at once while the old one stops on a thread of its own. A
// pipeline whose NULL state is not confirmed is never freed.
//
// Threads: every method is for the main thread and returns without waiting,
// except shutdown(), which is for the shutdown thread. The bus handler given
// at creation runs on GStreamer streaming threads.
class BgmDeck
{
public:
    enum EventKind { NoEvent = 0, EndOfStream = 1, Error = 2 };

    struct Options {
        GstBusSyncHandler busHandler = nullptr;
        gpointer busUserData = nullptr;
        DeckTimings timings;
        // Called on the main thread with the new pipeline's input level
        // element whenever the deck's pipeline was replaced.
        std::function<void(GstElement *inputLevel)> pipelineReplaced;
    };

    static std::unique_ptr<BgmDeck> create(Options options, QString *error = nullptr);
    ~BgmDeck();
    BgmDeck(const BgmDeck &) = delete;
    BgmDeck &operator=(const BgmDeck &) = delete;

    // Begins preparing a file at its in point; a previous item is let go of
    // first. False with a text when refused (status() is then Failed).
    bool prepare(const DeckSource &request, QString *error = nullptr);
    // Pumps the bus (unless a preparation worker owns it) and advances a
    // running preparation. Cheap and non-blocking.
    void poll();
    PreparationStatus status() const;
    QString error() const;
    bool mediaOffline() const;
    // Something was asked of the deck and not let go of.
    bool hasItem() const;

    bool play();
    bool pause();
    // Seeks within the prepared in..out range.
    bool seek(qint64 ms);
    // Lets go of the item: a fresh pipeline at once, the old one stops on
    // its own thread. Fails, changing nothing, while too many old pipelines
    // have not confirmed their stop.
    bool release(QString *error = nullptr);

    // The playbin is in or on its way to PLAYING.
    bool isPlaying() const;
    qint64 positionMs() const;
    qint64 durationMs() const;
    qint64 inMs() const;
    qint64 outMs() const;
    // Returns and clears the last event of the loaded item.
    int takeEvent(QString *text = nullptr, bool *offline = nullptr);

    void setItemVolume(double gain);
    void setItemEq(double lowDb, double midDb, double highDb);
    void setItemDelayFrames(int frames);

    GstElement *playbin() const;
    GstElement *inputLevelElement() const;
    int pendingStopCount() const;

    // Stops the playbin synchronously under the release rule; for the
    // shutdown thread only.
    bool shutdown();

private:
    struct Impl;
    explicit BgmDeck(std::unique_ptr<Impl> impl);
    std::unique_ptr<Impl> d;
};

} // namespace tarnix
