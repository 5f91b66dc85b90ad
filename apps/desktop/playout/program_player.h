#pragma once

#include "audio/program_audio_panel.h"
#include "audio/program_level_timeline.h"
#include "playout/deck_source.h"

namespace tarnix {
class BgmPlayer;
class DskPlayer;
}

#include <QString>

namespace tarnix {

// The part of the dual-deck player that the ON AIR state machine uses. The
// controller decides against this and nothing else, so it can be driven by a
// scripted player in tests. Main thread only; nothing here may wait. The
// panel's audio changes reach the program audio graph through it too.
class ProgramPlayer : public ProgramAudioControls
{
public:
    enum EventKind { NoEvent = 0, EndOfStream = 1, Error = 2 };

    virtual ~ProgramPlayer() = default;

    virtual bool isInitialized() const = 0;

    virtual bool prepareStandby(const DeckSource &request) = 0;
    virtual PreparationStatus standbyStatus() const = 0;
    virtual QString standbyError() const = 0;
    virtual bool releaseStandby() = 0;
    virtual int currentDeck() const = 0;
    // The deck found its media missing or unreadable.
    virtual bool isStandbyOffline() const = 0;
    virtual bool isCurrentOffline() const = 0;

    // status: 0 done, 1 the audio output is changing, 2 it is unavailable,
    // anything else refused.
    virtual bool takeStandby(bool crossfade, float videoLevel, int *status) = 0;
    virtual bool stopCrossfade(float progress) = 0;
    virtual bool isCrossfadeActive() const = 0;

    virtual bool play() = 0;
    virtual bool pause() = 0;
    virtual bool stop() = 0;
    virtual bool seek(qint64 ms) = 0;
    virtual bool setRate(double rate) = 0;
    // Brings a still's picture back for playback: 0 done, 1 in progress,
    // 2 failed.
    virtual int restoreStill() = 0;

    virtual void setVideoLevel(float level) = 0;
    virtual void setProgramFade(double amount) = 0;
    // The standby deck's, written before it is taken.
    virtual void setItemDelayFrames(int frames) = 0;
    virtual void setItemEq(double lowDb, double midDb, double highDb) = 0;

    // -1 when unknown.
    virtual qint64 positionMs() const = 0;
    virtual qint64 durationMs() const = 0;
    virtual bool isPlaying() const = 0;

    // 0 not ready, 1 the presenter refused, 2 done.
    virtual int offAir() = 0;

    // Returns and clears the last event of the current deck or the program
    // audio pipeline.
    virtual int takeEvent(QString *text, bool *programAudio) = 0;

    // The meter readings whose audio is due now.
    virtual ProgramLevelTimeline::Snapshot levelSnapshot() = 0;

    virtual void poll() = 0;
    virtual void beginShutdown() = 0;

    // The BGM deck and its path in the program mix; null when the player
    // has none. It lives as long as the player.
    virtual BgmPlayer *bgmPlayer() { return nullptr; }
    // The DSK layer; null when the player has none. It lives as long as
    // the player.
    virtual DskPlayer *dskPlayer() { return nullptr; }
};

} // namespace tarnix
