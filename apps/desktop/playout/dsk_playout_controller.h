#pragma once

#include "playout/dsk_panel_view.h"
#include "playout/playout_item_state.h"

#include <QObject>
#include <QString>

#include <chrono>
#include <functional>
#include <memory>

namespace tarnix {

class ControlStateRegistry;
class ControllerOperations;
class DskPlayer;
class ItemSelection;
class PlaylistModel;
class UserInfoCenter;

struct DskPlayoutOptions {
    // How often a running fade writes the layer's level.
    std::chrono::milliseconds animationInterval{16};
    // A next or goto successor is prepared this close to the end.
    qint64 preparationWindowMs = 1000;
    // Monotonic milliseconds; empty is the steady clock.
    std::function<qint64()> monotonicMs;
    // Tests drive poll() and stepAnimations() themselves.
    bool startTimers = true;
};

// The DSK layer's logic: sends a playlist item to the keyed layer over the
// program, takes it when it is ready (at once, or when the operator asked
// for it while it prepared), fades it in and out, plays and pauses it, and
// at the item's end acts by its end mode (stop, pause, repeat, next, goto),
// preparing a next or goto successor ahead on the other DSK deck. It never
// takes the item ON AIR, and ON AIR never takes its item.
//
// Main thread only. Nothing here waits: the decks are polled (poll(), once
// per ON AIR tick) and fades are stepped by a timer of their own.
class DskPlayoutController : public QObject
{
    Q_OBJECT

public:
    // The layer's state for the panel's DSK button; kept apart from the
    // player's status (0..4) and the item's phase.
    using PanelKind = DskPanelState::Kind;

    // Any pointer may be null; without a player every request is refused.
    // The operations are bound and the state field registered here.
    DskPlayoutController(DskPlayer *player, PlaylistModel *model, ItemSelection *selection, UserInfoCenter *userInfo,
                         ControllerOperations *operations, ControlStateRegistry *state,
                         DskPlayoutOptions options = {}, QObject *parent = nullptr);
    ~DskPlayoutController() override;

    void setPanel(DskPanelView *panel);

    // Sends the item to the layer; with takeWhenReady it shows as soon as
    // it is prepared. False with the operator told why.
    bool prepare(quint64 itemId, bool takeWhenReady);
    // The DSK button: send the selection, queue or cancel a show, or take
    // the layer off.
    bool toggle();
    bool play();
    bool pause();
    // Takes the layer off (through the item's fade out when it has one).
    bool hide();

    // Once per ON AIR tick.
    void poll();
    // One step of a running fade; the animation timer calls it.
    void stepAnimations();
    // Stops the timers; the decks go down with the player.
    void shutdown();

    quint64 itemId() const;
    PanelKind panelKind() const;
    DskPanelState panelState() const;
    // The layer's level as last written (0..1).
    double level() const;
    bool isEnding() const;
    bool isPaused() const;
    bool isRequestActive() const;
    quint64 preparingItemId() const;
    PlayoutItemState::Phase phase() const;

signals:
    void stateChanged();

public:
    struct Impl;

private:
    std::unique_ptr<Impl> d;
};

} // namespace tarnix
