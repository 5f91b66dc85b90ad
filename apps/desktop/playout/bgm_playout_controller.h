#pragma once

#include <QObject>
#include <QSet>
#include <QString>

#include <chrono>
#include <functional>
#include <memory>

namespace tarnix {

class BgmPanelView;
class BgmPlayer;
class ControlStateRegistry;
class ControllerOperations;
class ItemSelection;
class PlaylistModel;
class ProgramAudioController;
class UserInfoCenter;

struct BgmPlayoutOptions {
    // The transport ramp of play, pause and stop, which keeps them free of
    // clicks.
    std::chrono::milliseconds rampDuration{150};
    // The mix renders audio ahead of the clock; what a ramp leads to waits
    // until the ramp's audio has passed through it, at most this long.
    std::chrono::milliseconds rampTailLimit{500};
    // How often a running ramp or fade writes its gain.
    std::chrono::milliseconds animationInterval{5};
    // The signal lamp stays lit this long after a signal or a clip.
    std::chrono::milliseconds signalHold{250};
    std::chrono::milliseconds clipHold{500};
    // The fade time of the fade buttons when no panel says otherwise.
    qint64 configuredFadeMs = 3000;
    // Monotonic milliseconds; empty is the steady clock.
    std::function<qint64()> monotonicMs;
    // Tests drive poll() and stepAnimations() themselves.
    bool startTimers = true;
};

// The BGM player: plays the items of a playlist in `bgm` mode, one after
// the other by their end modes, on a deck of its own whose sound joins the
// program mix. It has its own fades and its own fader, skips an item that
// fails until Play is pressed anew, and runs on whatever ON AIR does.
//
// Main thread only. Nothing here waits: the deck is polled (poll(), once per
// ON AIR tick) and ramps and fades are stepped by a timer of their own.
class BgmPlayoutController : public QObject
{
    Q_OBJECT

public:
    enum class State { Stopped = 0, Loading = 1, Playing = 2, Paused = 3, Error = 4 };
    // What a transport ramp completes at its end.
    enum RampPurpose { NoPurpose = 0, PausePurpose = 1, StopPurpose = 2 };

    // Any pointer may be null; the player's absence makes Play refuse. The
    // operations are bound and the state field registered here.
    BgmPlayoutController(BgmPlayer *player, PlaylistModel *model, ItemSelection *selection, UserInfoCenter *userInfo,
                         ControllerOperations *operations, ControlStateRegistry *state, ProgramAudioController *audio,
                         BgmPlayoutOptions options = {}, QObject *parent = nullptr);
    ~BgmPlayoutController() override;

    void setPanel(BgmPanelView *panel);
    // The operator's BGM fader, as a linear gain (0..2).
    void setControlVolume(double gain);

    // Once per ON AIR tick: the deck's progress, its events and the item's
    // own fade.
    void poll();
    // One step of a running ramp or fade; the animation timer calls it.
    void stepAnimations();
    // Stops the timers; the deck goes down with the player.
    void shutdown();

    bool fadeInConfigured();
    bool fadeOutConfigured();

    State state() const;
    // The text the panel shows for the state ("FADED OUT (VOLUME 0)", ...).
    QString stateText() const;
    // "Current BGM: ..." or "No BGM item".
    QString itemLine() const;
    quint64 itemId() const;
    qint32 playlistNumber() const;
    QSet<quint64> skippedItems() const;
    bool isStopFailed() const;
    bool isStopPending() const;
    int rampPurpose() const;
    double transportVolume() const;
    double fadeVolume() const;
    double controlVolume() const;
    int repeatsDone() const;
    // An item is loaded (loading, playing or paused).
    bool isActive() const;

public slots:
    bool stop();
    bool play();
    bool pause();
    bool fadeIn(qint64 durationMs);
    bool fadeOut(qint64 durationMs);

signals:
    void stateChanged();

public:
    struct Impl;

private:
    std::unique_ptr<Impl> d;
};

} // namespace tarnix
