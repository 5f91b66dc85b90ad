#pragma once

#include <gst/gst.h>

#include <QString>

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>

namespace tarnix {

// The long-lived program audio pipeline: three bridge receivers (two decks
// and BGM), their item processing and gains, the mixer, the master chain and
// the output device. It owns the change of output device (done by a worker)
// and the safe release at shutdown.
//
// Threads: every method runs on the main thread and returns at once, except
// requestNull() and the destructor, which confirm the NULL state within the
// time limit and belong on the shutdown thread. The bus's synchronous
// handler runs on streaming threads; the device worker holds its own
// references and may outlive this object's interest in it.
class ProgramAudioOutput
{
public:
    struct Timings {
        // Limit of each state wait of the device worker and of the release.
        std::chrono::milliseconds stateWait{2000};
        // An output that lost its device while playing is opened again this
        // often while a device change may be applied (nothing plays to
        // air): a sound server that came back, or a device plugged in
        // again, is found without the operator.
        std::chrono::milliseconds failedRetry{2000};
    };

    // The output sink on this platform; a test names another element (and
    // may give it properties: "appsink sync=true").
    static QString defaultSinkFactory();

    ProgramAudioOutput();
    explicit ProgramAudioOutput(Timings timings);
    ~ProgramAudioOutput();
    ProgramAudioOutput(const ProgramAudioOutput &) = delete;
    ProgramAudioOutput &operator=(const ProgramAudioOutput &) = delete;

    // Builds the pipeline and leaves it in NULL; the first
    // serviceDeviceChange(true) starts it. busHandler (may be null) sees
    // every message after the output's own handling, on the posting thread.
    // False at once when a pipeline exists or the output was released.
    bool create(GstBusSyncHandler busHandler, gpointer userData, const QString &deviceId,
                const QString &sinkFactory = defaultSinkFactory());

    // Collects a finished device worker and starts the next one when the
    // requested device differs from the active one (or the output isn't
    // running yet, or lost its device while playing at least failedRetry
    // ago) and canApply allows it. Call it repeatedly.
    void serviceDeviceChange(bool canApply);
    void setRequestedDevice(const QString &deviceId);
    // The requested device may be there again (the device list says so, or
    // still does not): a failed output tries it once more where a change
    // may be applied.
    void retryDevice();
    void markFailed();
    // Marked failed (by an error or a refused device) and not yet played
    // again.
    bool hasFailed() const;
    QString requestedDevice() const;
    QString activeDevice() const;
    bool isRunning() const;
    bool isDeviceChangeRunning() const;
    // The output plays to a device: running, not failed, not released, and
    // no device change in progress.
    bool hasUsableDevice() const;
    // Translation key of the state; statusText gives its English text.
    QString statusKey() const;
    static QString statusText(const QString &key);

    // Deck 0 or 1 reaches the mixer only while audible.
    bool setDeckAudible(int deck, bool audible);
    // 0..6 frames of 30 fps video; false (and no change) above 6.
    bool setItemDelayFrames(int deck, int frames);
    bool setMasterDelayFrames(int frames);
    // Each value clamped to -15..15 dB, non-finite to 0.
    bool setItemEq(int deck, double lowDb, double midDb, double highDb);
    bool setMasterEq(double lowDb, double midDb, double highDb);
    // Gains are clamped to their ranges; a non-finite value is refused.
    bool setMasterVolume(double gain);
    bool setMasterMuted(bool muted);
    bool setProgramFade(double amount);
    bool setBgmControlVolume(double gain);
    bool setBgmManualFadeVolume(double gain);
    bool setBgmTransportVolume(double gain);
    // Mutes the BGM path at its transport stage; the gains stay as set.
    bool setBgmMuted(bool muted);
    // A linear ramp of the BGM transport stage, applied sample by sample
    // from the program pipeline's running time now; a set value ends it.
    bool rampBgmTransportVolume(double from, double to, qint64 durationMs);
    // The audio has passed the end of that ramp (true without one).
    bool isBgmTransportRampApplied() const;

    // Receives every buffer behind the master meter with its presentation
    // time in 100 ns units of the pipeline clock, on the streaming thread;
    // it must neither keep nor alter the buffer. Outputs that carry program
    // sound (network video, DeckLink) hook in here; empty removes the tap.
    using AudioTap = std::function<void(GstBuffer *buffer, std::int64_t presentation100ns)>;
    void setAudioTap(AudioTap tap);

    GstElement *pipeline() const;
    // Borrowed: valid while the output lives.
    GstElement *deckLevelElement(int deck) const;
    GstElement *masterLevelElement() const;
    GstElement *bgmLevelElement() const;

    void detachBus();
    bool canRelease() const;
    // Shutdown thread: marks the output released and confirms NULL.
    bool requestNull();

    // Runs a latency recalculation now or, while a device worker owns the
    // pipeline, after it has been collected. Called by the bus handler's
    // queued call; public for owners that see latency messages themselves.
    void updateLatency();

private:
    struct Impl;
    std::unique_ptr<Impl> d;
};

} // namespace tarnix
