#pragma once

#include "audio/program_level_timeline.h"
#include "playout/bgm_deck.h"
#include "playout/deck_source_session.h"
#include "playout/dsk_playback.h"
#include "playout/dual_deck_player.h"

#include <QElapsedTimer>

#include <atomic>
#include <memory>

namespace tarnix {

class ProgramMonitorWidget;
class ProgramOutputWidget;

// The GStreamer side of the player in one record, so that the shutdown
// thread can own it while it stops the pipelines and the player can keep it
// for the process when their NULL state is not confirmed.
struct DualDeckEngine {
    ProgramLevelTimeline levelTimeline;
    std::unique_ptr<DeckSourceSession> decks[2];
    // The BGM deck, created after deck B.
    std::unique_ptr<BgmDeck> bgm;
    std::unique_ptr<ProgramAudioOutput> audio;
    std::unique_ptr<ProgramGpuCompositor> compositor;
    // The two DSK decks, created once the compositor they feed has started.
    std::unique_ptr<DskPlayback> dsk;
    std::atomic<bool> shutdownFinished{false};
    std::atomic<bool> shutdownConfirmed{false};

    // Runs on the shutdown thread.
    void shutdown();
};

struct DualDeckPlayer::Impl {
    struct Event {
        int kind = NoEvent;
        QString text;
        int deck = kNoEventDeck;
    };

    explicit Impl(DualDeckPlayerOptions opts) : options(std::move(opts)) {}

    DualDeckPlayerOptions options;
    std::shared_ptr<DualDeckEngine> engine = std::make_shared<DualDeckEngine>();
    ProgramOutputWidget *programOutput = nullptr;
    ProgramMonitorWidget *monitorOutput = nullptr;

    std::atomic<int> currentDeck{-1};
    int standbyDeck = -1;
    PreparationStatus standbyStatus = PreparationStatus::Idle;
    QString standbyError;
    bool crossfadeActive = false;
    int crossfadeFromDeck = -1;
    int crossfadeToDeck = -1;
    float videoLevel = 1.0f;
    double itemVolume = 1.0;
    double programFade = 0.0;
    // Playback rate of the current deck.
    double rate = 1.0;
    bool holdAtStart = true;
    bool stillFrozen = false;
    bool stillRestoreActive = false;
    qint64 stillRestoreStart = 0;
    quint64 stillRestoreFrames = 0;
    bool initialized = false;
    // Why creation stopped; empty once every step succeeded.
    QString initializationError;
    bool closing = false;
    bool presenterStopRequested = false;
    bool shutdownStarted = false;
    Event event;
    // A fatal compositor text waiting for the event slot to be free.
    QString pendingPresenterFailure;
    QElapsedTimer steadyClock;

    DeckSourceSession *deck(int index) const
    {
        return index == 0 || index == 1 ? engine->decks[index].get() : nullptr;
    }
    DeckSourceSession *current() const { return deck(currentDeck.load(std::memory_order_acquire)); }
    bool ready() const { return initialized && !closing; }
    qint64 nowMs() const
    {
        return options.monotonicMs ? options.monotonicMs() : steadyClock.elapsed();
    }

    void create(DualDeckPlayer *widget);
    void setAudible(int deckIndex, bool audible);
    void applyProgramFade();
    void clearEventOf(int deckIndex)
    {
        if (event.kind != NoEvent && event.deck == deckIndex)
            event = {};
    }
    void recordEvent(int kind, const QString &text, int deckIndex)
    {
        event = {kind, text, deckIndex};
    }
    // Stops a deck that is not needed any more; false with the text logged.
    bool retireDeck(int deckIndex, const char *failureText);
    void pollStandby();

    // dual_deck_bus.cpp
    static GstBusSyncReply syncHandler(GstBus *bus, GstMessage *message, gpointer data);
    void pumpBuses();
    void pumpBus(GstBus *bus, int deckIndex);
    void handleMessage(GstMessage *message, int deckIndex);
};

} // namespace tarnix
