#pragma once

#include "playout/deck_source.h"

#include <QString>

namespace tarnix {

// The DSK layer as its controller uses it: two decks taking turns, one
// visible and keyed over the program, the other preparing the next item.
// The controller decides against this and nothing else, so a scripted
// player can stand in for it in tests. Main thread only; nothing here may
// wait.
class DskPlayer
{
public:
    enum EventKind { NoEvent = 0, EndOfStream = 1, Error = 2 };
    // The layer's status: the visible deck's when there is one, otherwise
    // the preparing deck's.
    enum Status { None = 0, Preparing = 1, Ready = 2, Visible = 3, VisiblePaused = 4 };

    virtual ~DskPlayer() = default;

    virtual bool isAvailable() const = 0;

    // Begins preparing a file on the deck that is not visible; false with a
    // text when refused (the visible deck is untouched).
    virtual bool prepare(const DeckSource &request, QString *error) = 0;
    virtual int status() const = 0;
    // The deck that is not visible holds a prepared item, its first frame
    // in its layer: a take shows it on the next output frame.
    virtual bool isPreparationReady() const = 0;
    // Why the preparation failed; empty while none failed.
    virtual QString preparationError() const = 0;
    // The prepared item, or the visible one, is a still image.
    virtual bool isPreparedStill() const = 0;
    // Lets go of a preparation that has not been taken.
    virtual bool cancelPreparation(QString *error) = 0;

    // The prepared deck becomes the visible one at the level (0..1),
    // playing or paused; with crossfade and a deck already visible the two
    // change over through transitionStep().
    virtual bool take(bool paused, bool crossfade, float level, QString *error) = 0;
    // One step of a change-over, completing at 1.0, where the old deck goes.
    virtual bool transitionStep(float progress, QString *error) = 0;
    virtual bool isTransitionActive() const = 0;
    // The visible deck's opacity, for the layer's fades.
    virtual void setLevel(float level) = 0;
    // Takes the layer off the program and lets go of both decks.
    virtual bool hide(QString *error) = 0;

    // Transport of the visible deck.
    virtual bool play(QString *error) = 0;
    virtual bool pause(QString *error) = 0;
    virtual bool seek(qint64 ms) = 0;
    virtual bool isPlaying() const = 0;
    // -1 when unknown.
    virtual qint64 positionMs() const = 0;
    virtual qint64 durationMs() const = 0;

    // Returns and clears the last event of the visible deck, or a failure
    // of the layer's composition (an Error).
    virtual int takeEvent(QString *text) = 0;
    virtual void poll() = 0;
};

} // namespace tarnix
