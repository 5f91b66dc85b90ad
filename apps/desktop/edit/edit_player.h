#pragma once

#include <QImage>
#include <QSize>
#include <QString>

#include <chrono>
#include <memory>

namespace tarnix {

class EditPflFeed;

// The EDIT player: one file at a time in a playbin of its own, beside ON AIR
// and never touching it. Its picture ends in an appsink of a fixed size
// (handed to the panel as QImage), its sound in the nominal chain (level,
// effects, delay, volume, level) and a fakesink: what the operator hears of
// EDIT is copied into the PFL ring as it enters the nominal volume.
//
// Loading prerolls the file at its In point on a worker thread; unloading
// stops the pipeline on a thread of its own and frees it only once NULL is
// confirmed. Its streaming threads run at a lower priority than the
// program's, so scrubbing here never costs the program a frame.
//
// Threads: every member is for the main thread and none waits.
class EditPlayer
{
public:
    struct Options {
        QSize videoSize{1280, 720};
        // Niceness of the streaming threads (0: as the process).
        int streamingNice = 5;
        std::chrono::milliseconds loadTimeout{10000};
        // How often the load's worker looks at the pipeline's state.
        std::chrono::milliseconds loadStatePoll{10};
        std::chrono::milliseconds nullConfirmationLimit{2000};
        // Where the sound goes to be heard; none: EDIT is silent.
        std::shared_ptr<EditPflFeed> pflFeed;
    };

    enum class Event {
        None,
        Loaded,        // prerolled at the In point
        LoadFailed,    // errorText() says why; offline() when the file is missing or unreadable
        Error,         // while loaded: an error of the pipeline (errorText())
        EndOfStream,
        Unloaded,      // the pipeline is gone (or retained, see the log)
    };

    // The player's elements are checked once here; null with the text of
    // what is missing.
    static std::unique_ptr<EditPlayer> create(const Options &options, QString *error);
    ~EditPlayer();

    // Builds a pipeline for the file and starts prerolling it at inMs. False
    // with a text when the pipeline cannot be built or a load or unload is
    // under way.
    bool load(const QString &path, qint64 inMs, QString *error);
    // Starts the asynchronous unload; true when there was something to
    // unload (Unloaded follows).
    bool unload();

    bool isLoading() const;
    bool isLoaded() const;
    bool isUnloading() const;
    // An unload was started and its Unloaded event has not been polled yet.
    bool hasUnloadToReport() const;

    // Reads the bus and the workers; one event per call, None when nothing
    // happened. Call until None.
    Event poll();
    QString errorText() const;
    bool offline() const;

    bool play();
    bool pause();
    bool isPlaying() const;
    // A flushing, accurate seek; the rate stays what it was.
    bool seek(qint64 positionMs);
    // A flushing seek from the position at the rate (2.0 fast-forward, 1.0
    // normal), with trick-mode flags above 1.
    bool setRate(double rate, qint64 positionMs);
    // Moves the paused picture on by whole frames without a flush.
    bool stepForward(int frames);
    // -1 when unknown.
    qint64 positionMs() const;
    qint64 durationMs() const;
    // Frames per second of the video, 0 when unknown (no video, still).
    double frameRate() const;

    // Linear gain on the nominal volume, delay in frames, EQ in dB.
    void setNominalGain(double gain);
    double nominalGain() const;
    void setNominalDelayFrames(int frames);
    void setNominalEq(double lowDb, double midDb, double highDb);

    // The newest picture since the last call; null when none came.
    QImage takeFrame();
    // Peak levels in dB of the last readings, input (before the nominal
    // chain) and output.
    void levels(double *inputLeft, double *inputRight, double *outputLeft, double *outputRight) const;

    EditPlayer(const EditPlayer &) = delete;
    EditPlayer &operator=(const EditPlayer &) = delete;

    struct Impl;

private:
    explicit EditPlayer(const Options &options);
    std::unique_ptr<Impl> d;
};

} // namespace tarnix
