#pragma once

#include "playout/deck_source.h"
#include "playout/deck_timings.h"

#include <gst/gst.h>

#include <QString>

#include <functional>
#include <memory>

namespace tarnix {

// One DSK deck: a playbin whose picture, with its alpha, goes to a DSK layer
// of the program compositor and whose sound is switched off. A file (a still
// included, which is frozen so it stands like a video) is prepared on a
// worker and the main thread only polls; an item is let go of by giving the
// deck a fresh pipeline at once while the old one stops on a thread of its
// own. A pipeline whose NULL state is not confirmed is never freed.
//
// Threads: every method is for the main thread and returns without waiting,
// except shutdown(), which is for the shutdown thread. The bus handler given
// at creation runs on GStreamer streaming threads.
class DskDeck
{
public:
    enum EventKind { NoEvent = 0, EndOfStream = 1, Error = 2 };

    struct Options {
        int index = 0;
        GstBusSyncHandler busHandler = nullptr;
        gpointer busUserData = nullptr;
        DeckTimings timings;
        // Called on the main thread with the pipeline and appsink whenever
        // the deck's pipeline was replaced (and once at creation), so the
        // picture's reader follows.
        std::function<void(GstElement *pipeline, GstElement *appsink)> pipelineReplaced;
    };

    static std::unique_ptr<DskDeck> create(Options options, QString *error = nullptr);
    ~DskDeck();
    DskDeck(const DskDeck &) = delete;
    DskDeck &operator=(const DskDeck &) = delete;

    // Begins preparing a file at its in point; a previous item is let go of
    // first. False with a text when refused; a refusal to let go of the
    // previous item leaves it as it was.
    bool prepare(const DeckSource &request, QString *error = nullptr);
    // Pumps the bus (unless a preparation worker owns it) and advances a
    // running preparation. Cheap and non-blocking.
    void poll();
    PreparationStatus status() const;
    QString error() const;
    // Something was asked of the deck and not let go of.
    bool hasItem() const;
    bool isStill() const;
    // The preparation deadline of the item has passed.
    bool deadlinePassed() const;
    // Fails a preparation that has not finished, with this text.
    void failPreparation(const QString &text);

    // Both start the media again only with the audio isolation written and
    // read back; the isolation text comes back otherwise.
    bool play(QString *error = nullptr);
    bool pause(QString *error = nullptr);
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
    int takeEvent(QString *text = nullptr);

    GstElement *playbin() const;
    GstElement *appsink() const;
    // The sink the audio would reach if it were ever decoded.
    GstElement *audioDiscard() const;
    int pendingStopCount() const;

    // Stops the playbin synchronously under the release rule; for the
    // shutdown thread only.
    bool shutdown();

private:
    struct Impl;
    explicit DskDeck(std::unique_ptr<Impl> impl);
    std::unique_ptr<Impl> d;
};

} // namespace tarnix
