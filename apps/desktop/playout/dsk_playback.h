#pragma once

#include "playout/deck_timings.h"
#include "playout/dsk_player.h"

#include <gst/gst.h>

#include <QString>

#include <array>
#include <memory>

namespace tarnix {

class DskDeck;
class ProgramGpuCompositor;

// The two DSK decks and their place in the program picture. Each deck's
// appsink feeds the compositor's DSK layer of the same number, whatever
// pipeline the deck has at the time; which layers show, and how strongly,
// is decided here. A deck's item counts as ready only once its first frame
// has reached its layer, so a take shows the key on the next output frame.
//
// Threads: main thread, except shutdown(), which is for the shutdown
// thread. The compositor is borrowed and outlives this.
class DskPlayback : public DskPlayer
{
public:
    struct Options {
        DeckTimings timings;
        GstBusSyncHandler busHandler = nullptr;
        gpointer busUserData = nullptr;
    };

    // Creates both decks and connects them to the compositor; null with the
    // text of the step that failed.
    static std::unique_ptr<DskPlayback> create(ProgramGpuCompositor *compositor, Options options,
                                               QString *error = nullptr);
    ~DskPlayback() override;

    // The owner says when operations may run (its player is up and not
    // closing).
    void setAvailable(bool available);

    bool isAvailable() const override;
    bool prepare(const DeckSource &request, QString *error) override;
    int status() const override;
    bool isPreparationReady() const override;
    QString preparationError() const override;
    bool isPreparedStill() const override;
    bool cancelPreparation(QString *error) override;
    bool take(bool paused, bool crossfade, float level, QString *error) override;
    bool transitionStep(float progress, QString *error) override;
    bool isTransitionActive() const override;
    void setLevel(float level) override;
    bool hide(QString *error) override;
    bool play(QString *error) override;
    bool pause(QString *error) override;
    bool seek(qint64 ms) override;
    bool isPlaying() const override;
    qint64 positionMs() const override;
    qint64 durationMs() const override;
    int takeEvent(QString *text) override;
    void poll() override;

    int activeIndex() const;
    int preparingIndex() const;
    DskDeck *deck(int index) const;
    // Some deck still has a pipeline stopping.
    bool hasWorkInHand() const;

    // Stops both decks under the release rule; for the shutdown thread.
    bool shutdown();

private:
    struct Impl;
    explicit DskPlayback(std::unique_ptr<Impl> impl);
    std::unique_ptr<Impl> d;
};

} // namespace tarnix
