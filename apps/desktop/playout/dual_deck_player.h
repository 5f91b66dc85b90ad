#pragma once

#include "audio/program_audio_output.h"
#include "audio/program_level_timeline.h"
#include "playout/deck_source.h"
#include "playout/deck_timings.h"
#include "video/program_gpu_compositor.h"

#include <QString>
#include <QWidget>

#include <chrono>
#include <functional>
#include <memory>

namespace tarnix {

class BgmDeck;
class DskPlayback;
class DeckSourceSession;

// Time limits of the player itself; the defaults are the product's values.
struct DualDeckTimings {
    // A still that has not prerolled again by then is frozen and reported failed.
    std::chrono::milliseconds stillRestore{2000};
    // Wait for frames in flight when a deck's picture is frozen.
    std::chrono::milliseconds freeze{50};
};

struct DualDeckPlayerOptions {
    // Deck output size (also the program size) and the deck time limits.
    DeckTimings deckTimings;
    DualDeckTimings timings;
    ProgramCompositorTimings compositorTimings;
    // Replaces the presenter's output (tests and bench programs).
    std::function<std::unique_ptr<ProgramPresentOutput>()> presentOutput;
    // Sees every composed frame on the frame clock's streaming thread.
    ProgramGpuCompositor::FrameTap frameTap;
    QString audioDevice;
    QString audioSinkFactory = ProgramAudioOutput::defaultSinkFactory();
    ProgramAudioOutput::Timings audioTimings;
    // Monotonic milliseconds; empty is the steady clock.
    std::function<qint64()> monotonicMs;
};

// Everything that plays to air: decks A and B taking turns (one current,
// the other preparing the next item), the program audio output and the
// program compositor. It is told what to prepare, when to take and what to
// stop, and it is polled; it decides nothing about playlists.
//
// Threads: every method is for the main thread and returns without waiting.
// GStreamer streaming threads only run the synchronous bus handler, which
// queues level readings; beginShutdown() starts one detached thread that
// stops and confirms every pipeline. currentDeck() may be read from any
// thread.
class DualDeckPlayer : public QWidget
{
    Q_OBJECT

public:
    enum EventKind { NoEvent = 0, EndOfStream = 1, Error = 2 };
    // Deck of an event that came from the program audio pipeline, and of one
    // that belongs to no deck (the GPU output).
    static constexpr int kProgramAudioEventDeck = -1;
    static constexpr int kNoEventDeck = -2;

    explicit DualDeckPlayer(DualDeckPlayerOptions options = {}, QWidget *parent = nullptr);
    ~DualDeckPlayer() override;

    // Every step of creation succeeded; operations refuse until then.
    bool isInitialized() const;
    // The step that failed and why, for the operator; empty when initialised.
    QString initializationError() const;
    // The compositor has confirmed its start (poll() follows it).
    bool isPresenterRunning() const;

    bool prepareStandby(const DeckSource &request);
    PreparationStatus standbyStatus() const;
    QString standbyError() const;
    int standbyDeck() const;
    int currentDeck() const;
    bool releaseStandby();

    // status: 0 done; 1 the program audio output is changing its device and
    // 2 it has no usable device (nothing changed); 3 any other refusal.
    bool takeStandby(bool crossfade, float videoLevel, int *status = nullptr);
    bool stopCrossfade(float progress);
    bool isCrossfadeActive() const;
    int crossfadeFromDeck() const;
    int crossfadeToDeck() const;

    bool play();
    bool pause();
    bool stop();
    bool seek(qint64 ms);
    bool setRate(double rate);
    // 0 done, 1 in progress, 2 failed.
    int restoreStill();
    bool freezeAtStart();

    void setVideoLevel(float level);
    void setProgramFade(double amount);
    void setItemVolume(double volume);
    void setItemDelayFrames(int frames);
    void setItemEq(double lowDb, double midDb, double highDb);
    float videoLevel() const;
    double programFade() const;
    double itemVolume() const;
    bool isHoldAtStart() const;
    bool isStillFrozen() const;

    qint64 positionMs() const;
    qint64 durationMs() const;
    bool isPlaying() const;

    // 0 not ready, 1 the presenter refused, 2 done.
    int offAir();

    // The meter readings whose audio is due now: each queue is released up
    // to the running time of its pipeline (the current deck's, the program
    // pipeline's).
    ProgramLevelTimeline::Snapshot levelSnapshot();

    // Returns and clears the last event; programAudio tells an error of the
    // program audio pipeline.
    int takeEvent(QString *text = nullptr, bool *programAudio = nullptr);

    // Once per controller tick.
    void poll();

    // Call until it has started the shutdown thread; isShutdownConfirmed()
    // then tells whether every pipeline reached NULL. Until it does nothing
    // of the player may be freed: a player destroyed before that keeps its
    // engine objects for the rest of the process.
    void beginShutdown();
    bool isShutdownConfirmed() const;
    // The shutdown thread has done all it can, confirmed or not.
    bool isShutdownFinished() const;

    // The BGM deck (null before creation); the BGM player drives it and
    // the player pumps its bus with the others.
    BgmDeck *bgmDeck() const;
    // Nothing is loaded on the BGM deck (or its item failed).
    bool isBgmStopped() const;
    // The BGM deck's input meter as measured.
    LevelReading bgmInputLevel() const;
    // The BGM post-fader meter takes readings while this is on.
    void setBgmMetering(bool on);

    // The two DSK decks and their layers (null before creation); the DSK
    // controller drives them and the player polls them with the others.
    DskPlayback *dskPlayback() const;

    // For the program outputs that hook in at the frame step, and tests.
    ProgramGpuCompositor *compositor() const;
    ProgramAudioOutput *audioOutput() const;
    // Deck 0 or 1, or null.
    DeckSourceSession *deck(int index) const;

    struct Impl;

private:
    std::unique_ptr<Impl> d;
};

} // namespace tarnix
