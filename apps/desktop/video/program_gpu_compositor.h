#pragma once

#include "video/deck_frame_presenter.h"
#include "video/program_presenter.h"

#include <QObject>
#include <QRgb>
#include <QString>

#include <chrono>
#include <functional>
#include <memory>

class QWindow;

namespace tarnix {

class ProgramMonitorWidget;
class ProgramRenderer;

// Time limits of the program picture. The defaults are the product's
// values; tests shorten them.
struct ProgramCompositorTimings {
    // A disconnect that has to happen before a connect.
    std::chrono::milliseconds connectDisconnect{5000};
    // From start() until the frame clock pipeline reads PLAYING.
    std::chrono::milliseconds playing{5000};
    // After PLAYING, until a render and a present have been counted.
    std::chrono::milliseconds firstPresent{5000};
    // Until the presenter thread reports ready.
    std::chrono::milliseconds presenterReady{8000};
    // NULL confirmation of the frame clock pipeline at stop().
    std::chrono::milliseconds nullConfirmation{2000};
    // PROGRAM_FPS and PROGRAM_PRESENT_TIMING intervals.
    std::chrono::milliseconds fpsLog{5000};
    std::chrono::milliseconds presentTiming{5000};
    // A picture the window already shows is drawn again at least this often,
    // whatever the expose events said.
    std::chrono::milliseconds repaint{1000};
};

struct ProgramCompositorOptions {
    // Program frame size, fixed for the run: 1920x1080 or 3840x2160.
    int width = 1920;
    int height = 1080;
    // The program window; with a window system it gets the presented frames
    // through ximagesink, otherwise (or without a window) a null output
    // counts presents. It must outlive stop().
    QWindow *programWindow = nullptr;
    // The in-application monitor fed by the monitor branch; may be null, and
    // then the branch converts nothing.
    ProgramMonitorWidget *monitor = nullptr;
    // Frame clock of the pipeline; null is the system clock. Referenced.
    GstClock *clock = nullptr;
    // Replaces the presenter's output, for tests and bench programs.
    std::function<std::unique_ptr<ProgramPresentOutput>()> outputFactory;
    // Monotonic milliseconds for the start-up limits and log intervals.
    std::function<qint64()> monotonicMs;
    ProgramCompositorTimings timings;
};

// A composed frame as the tap sees it: BGRA, valid during the call only.
struct ProgramTapFrame {
    const quint8 *pixels = nullptr;
    int width = 0;
    int height = 0;
    int stride = 0;
    GstClockTime pts = GST_CLOCK_TIME_NONE; // frame clock timestamp
    quint64 sequence = 0;                   // render count
};

// The ON AIR picture: a live 60/1 frame clock pipeline whose overlay makes
// each output frame from the four layers (two decks, two DSK), publishes it
// to the presenter and feeds the in-application monitor. A frame whose
// layers and settings did not change since the last one repeats that
// frame's picture without composing it again; frames travel by reference.
// The four layers are one-sample mailboxes fed by the producers' appsinks.
//
// Threads: every method is for the main thread, except stop() (and the
// destructor when stop() was not called), which waits for the pipeline's
// NULL state and the presenter thread and belongs on a worker or the
// shutdown thread; the owner calls nothing else while it runs. hasFrame() and
// latestSample() may be called from any thread. Rendering runs on the frame
// clock's streaming thread, presenting on the presenter thread; neither
// waits on the main thread.
class ProgramGpuCompositor : public QObject, public DeckFramePresenter
{
    Q_OBJECT

public:
    static constexpr int kDeckSlotA = 0;
    static constexpr int kDeckSlotB = 1;
    static constexpr int kDskSlotA = 2;
    static constexpr int kDskSlotB = 3;

    enum class State { Idle, Starting, Started, Failed, Stopped };

    explicit ProgramGpuCompositor(ProgramCompositorOptions options, QObject *parent = nullptr);
    ~ProgramGpuCompositor() override;

    // Builds the frame clock and the presenter and sets them going without
    // waiting; poll() follows the start-up limits and moves the state to
    // Started or Failed. Runs once; a second call returns the first result.
    // After a failed start the owner calls stop() where it may wait.
    bool start(QString *error = nullptr);
    State state() const;
    bool isStarted() const { return state() == State::Started; }

    // Connects a producer's appsink to deck or DSK layer 0 or 1. A sink
    // already connected to another layer is disconnected from it first,
    // and a slot's previous sink too, each within the connect limit. The
    // same sink again returns true at once. Refused after a fatal failure.
    bool connectDeck(int index, GstElement *pipeline, GstElement *appsink);
    bool connectDsk(int index, GstElement *pipeline, GstElement *appsink);
    // Slot 0..3 (kDeckSlotA..kDskSlotB). False when callbacks were still in
    // flight at the limit: the sink stays referenced, the slot is not reused.
    bool disconnect(int slot, bool clearSample, std::chrono::milliseconds limit);

    // DeckFramePresenter: the deck slots.
    bool attachDeck(int deckIndex, GstElement *pipeline, GstElement *appsink) override;
    bool detachDeck(int deckIndex) override;
    bool hasFrame(int deckIndex) const override;
    void dropRetainedFrame(int deckIndex) override;
    GstSample *latestSample(int deckIndex) const override;

    bool slotHasFrame(int slot) const;
    void dropSlotFrame(int slot);
    quint64 slotFramesReceived(int slot) const;
    // Frame updates of a slot on or off; off keeps the layer's frame.
    void setFrameUpdates(int slot, bool on);
    // Frame updates off, then waits up to the limit for frames in flight.
    bool freeze(int slot, std::chrono::milliseconds limit);
    // The skip flag a deck sets while it prerolls.
    void setLayerHold(int deckIndex, bool hold);

    // Composition: deck or DSK index -1 (none), 0 or 1 per place, opacities
    // clamped to 0..1; the second is drawn over the first. Refused for other
    // indexes, before start(), after stop() or a fatal failure.
    bool setProgramLayers(int first, float firstOpacity, int second, float secondOpacity);
    bool setDskLayers(int first, float firstOpacity, int second, float secondOpacity);
    // Video level (group opacity of the decks) and fade to black, 0..1.
    void setGroupOpacity(float value);
    void setFadeToBlack(float value);
    // Colour behind the picture and target of the fade, low 24 bits.
    void setBackground(QRgb rgb);
    // Set when a DSK layer failed and was taken out of the composition.
    bool dskFaulted() const;

    // Once per UI tick: follows start-up, updates the window state, writes
    // PROGRAM_FPS when due, drains the bus. Returns true once, with the
    // text, after the first fatal failure.
    bool poll(QString *message = nullptr);

    // Stops the frame clock (NULL confirmed) and the presenter and lets go
    // of every layer. False, leaving everything in place, when a layer
    // cannot be disconnected or NULL is not confirmed. Runs once.
    bool stop();

    // Counters of the run. A render is an output frame; a composition is a
    // frame whose picture was made anew, the others repeat the last one
    // because nothing it is made of changed. A present is a frame shown; a
    // draw is a present that wrote into the window.
    quint64 renderCount() const;
    quint64 compositionCount() const;
    quint64 drawCount() const;
    quint64 presentCount() const;
    quint64 clockTicks() const;
    // Frames the presenter's mailbox could not take because every entry was
    // held (the presenter keeps showing the frame it has).
    quint64 publishMisses() const;
    // Longest time between two renders since start, on the monotonic clock
    // of the options: how long the program picture stood still at worst.
    qint64 largestRenderGapMs() const;
    qint64 lastPresentedPts() const;
    // Render number of the frame the presenter showed last.
    quint64 lastPresentedSequence() const;

    // Receives every composed frame on the streaming thread; set before
    // start().
    using FrameTap = std::function<void(const ProgramTapFrame &)>;
    void setFrameTap(FrameTap tap);

    // The renderer, for outputs that read the transparent layer; used only
    // on the streaming thread.
    ProgramRenderer *renderer() const;

    struct Impl;

private:
    std::unique_ptr<Impl> d;
};

} // namespace tarnix
