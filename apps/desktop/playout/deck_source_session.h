#pragma once

#include "playout/deck_bus_callbacks.h"
#include "playout/deck_source.h"
#include "playout/deck_timings.h"

#include <gst/gst.h>

#include <QString>

#include <memory>

namespace tarnix {

class DeckFramePresenter;
class UvcSourceSessionManager;
class PowerPointSourceManager;
class PdfSourceManager;

// One playout deck: a playbin whose video goes to the presenter through an
// appsink and whose audio goes to the PROGRAM bridge. Preparation of a file
// runs on a worker; the main thread only polls. An old pipeline is replaced
// at once by a fresh one and stops on a thread of its own; a pipeline whose
// NULL state is not confirmed is never freed.
//
// Threads: every method is for the main thread and returns without waiting,
// except shutdown(), which is for the shutdown thread. The bus handler given
// at creation runs on GStreamer streaming threads.
class DeckSourceSession
{
public:
    using BusCallbacks = DeckBusCallbacks;

    struct OffAirReport {
        bool released = false;
        bool detached = false;
        bool stopped = false;
        bool nullConfirmed = false;
    };

    struct Options {
        int deckIndex = -1;
        GstBusSyncHandler busHandler = nullptr;
        gpointer busUserData = nullptr;
        DeckTimings timings;
    };

    // Builds the deck's pipeline; null with a text when a required element
    // is missing or a branch cannot be built.
    static std::unique_ptr<DeckSourceSession> create(const Options &options,
                                                     QString *error = nullptr);
    ~DeckSourceSession();

    DeckSourceSession(const DeckSourceSession &) = delete;
    DeckSourceSession &operator=(const DeckSourceSession &) = delete;

    // The presenter that shows this deck's frames; the owner attaches the
    // first pipeline, the deck attaches every replacement itself.
    void setPresenter(DeckFramePresenter *presenter);

    // Begins preparing the request. Returns the status (also status()) and
    // gives the failure text through error.
    PreparationStatus prepare(const DeckSource &request, QString *error = nullptr);

    // Advances a running preparation; cheap, bounded and non-blocking.
    void poll();

    // Gives the deck a fresh pipeline and stops the old one on its own
    // thread. Fails, changing nothing, while too many old pipelines have not
    // confirmed their stop.
    bool replaceFilePipeline(QString *error = nullptr);

    // Fails a running preparation with the text (the owner saw an error on
    // the deck's bus); offline marks the media as missing or unreadable.
    void failPreparation(const QString &text, bool offline);

    // Takes the deck OFF AIR, releasing what it can.
    OffAirReport offAirSession();

    // Stops the playbin synchronously under the release rule and records
    // whether NULL was confirmed. Blocks up to the preparation wait and the
    // NULL confirmation; for the shutdown thread only.
    bool shutdown();

    int deckIndex() const;
    int width() const;
    int height() const;
    GstElement *playbin() const;
    GstElement *appsink() const;
    GstElement *levelElement() const;
    GstElement *volumeElement() const;
    GstBus *bus() const;
    DeckSessionKind kind() const;
    PreparationStatus status() const;
    QString error() const;
    bool mediaOffline() const;
    bool hasVideo() const;
    bool hasAudio() const;
    qint64 inMs() const;
    qint64 outMs() const;
    double rate() const;
    bool shutdownConfirmed() const;
    // True while a preparation worker owns the bus, or a request waits for one.
    bool busOwnedByPreparation() const;
    // Old pipelines whose stop has not been confirmed (finished or not).
    int pendingStopCount() const;
    // Old pipelines whose stop finished without confirmation: retained.
    int unconfirmedStopCount() const;

private:
    struct Impl;
    explicit DeckSourceSession(std::unique_ptr<Impl> impl);
    std::unique_ptr<Impl> d;
};

} // namespace tarnix
