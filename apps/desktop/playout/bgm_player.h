#pragma once

#include "audio/level_reading.h"
#include "playout/deck_source.h"

#include <QString>

namespace tarnix {

// The part of the dual-deck player that the BGM controller uses: the BGM
// deck and the BGM path of the program mix. The controller decides against
// this and nothing else, so a scripted player can stand in for it in tests.
// Main thread only; nothing here may wait.
class BgmPlayer
{
public:
    enum EventKind { NoEvent = 0, EndOfStream = 1, Error = 2 };
    enum class Output { Usable = 0, Changing = 1, Unavailable = 2 };

    virtual ~BgmPlayer() = default;

    virtual bool isAvailable() const = 0;
    // Whether the program audio output can take the BGM's sound now.
    virtual Output output() const = 0;

    // Begins preparing a file (a previous item is let go of first); false
    // with a text when refused.
    virtual bool prepare(const DeckSource &request, QString *error) = 0;
    virtual PreparationStatus status() const = 0;
    virtual QString error() const = 0;
    // The deck found its media missing or unreadable.
    virtual bool isOffline() const = 0;

    virtual bool play() = 0;
    virtual bool pause() = 0;
    virtual bool seek(qint64 ms) = 0;
    // Lets go of the item; false with a text when the deck will not stop.
    virtual bool release(QString *error) = 0;
    virtual bool isPlaying() const = 0;
    // -1 when unknown.
    virtual qint64 positionMs() const = 0;
    virtual qint64 durationMs() const = 0;
    // Returns and clears the last event of the item; offline tells an
    // error that says the media cannot be read.
    virtual int takeEvent(QString *text, bool *offline) = 0;

    // The item's own processing on the deck.
    virtual void setItemVolume(double linearGain) = 0;
    virtual void setItemEq(double lowDb, double midDb, double highDb) = 0;
    virtual void setItemDelayFrames(int frames) = 0;

    // The BGM path of the program mix: the operator's level (0..2), the
    // manual fade and the transport ramp (0..1), and the mute of the path.
    virtual void setControlVolume(double gain) = 0;
    virtual void setManualFadeVolume(double gain) = 0;
    virtual void setTransportVolume(double gain) = 0;
    // A linear ramp of the transport stage over the given time of audio,
    // which the mix applies sample by sample; a set value ends it.
    virtual void rampTransportVolume(double from, double to, qint64 durationMs) = 0;
    // The audio has passed the end of that ramp, so what the ramp leads to
    // may act without cutting it short.
    virtual bool isTransportRampApplied() const = 0;
    virtual void setPathMuted(bool muted) = 0;

    // The BGM meter of the mix reads while this is on.
    virtual void setMetering(bool on) = 0;
    // The deck's input level as measured, for the signal lamp.
    virtual LevelReading inputLevel() const = 0;
};

} // namespace tarnix
