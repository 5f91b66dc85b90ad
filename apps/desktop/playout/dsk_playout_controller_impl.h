#pragma once

#include "playout/dsk_playout_controller.h"

#include "playout/dsk_player.h"
#include "playout/dsk_texts.h"
#include "playout/fade_limits.h"
#include "playout/linear_ramp.h"
#include "playout/program_target.h"
#include "playout/still_playback_clock.h"

#include "playlist/item_selection.h"
#include "playlist/playlist_model.h"
#include "shell/user_info_center.h"

#include <QPointer>
#include <QTimer>

#include <optional>

namespace tarnix {

struct DskPlayoutController::Impl {
    Impl(DskPlayoutController *owner, DskPlayer *dskPlayer, PlaylistModel *playlistModel, ItemSelection *itemSelection,
         UserInfoCenter *info, DskPlayoutOptions opts);

    DskPlayoutController *q;
    DskPlayer *player;
    QPointer<PlaylistModel> model;
    QPointer<ItemSelection> selection;
    QPointer<UserInfoCenter> userInfo;
    QPointer<DskPanelView> panel;
    DskPlayoutOptions options;

    // The visible item and how often it has repeated.
    PlayoutItemState item;
    // What the deck that is not visible prepares, and whether it is the
    // visible item's automatic successor.
    std::optional<ProgramTarget> target;
    bool targetIsSuccessor = false;
    AutomaticTarget automatic;
    // A timed still's time; the deck only holds the picture.
    StillPlaybackClock stillClock;
    qint64 stillTickMs = 0;
    // A show is wanted as soon as the preparation is ready.
    bool requestActive = false;
    // A fade out is taking the layer off; commands wait for its end.
    bool ending = false;
    bool paused = false;
    // The next play starts again from the in point.
    bool restart = false;
    // The item's own fade out has begun before its end.
    bool autoFadeStarted = false;
    QString name;
    DskPanelState::Kind kind = DskPanelState::Idle;
    QString errorText;
    std::optional<DskPanelState> shown;

    LinearRamp fade;
    double level = 1.0;
    LinearRamp transition;
    QTimer animationTimer;
    bool closing = false;

    qint64 now() const;
    bool visible() const { return item.itemId() != 0; }
    std::optional<PlaylistItem> visibleItem() const;
    QString itemName(const PlaylistItem &item) const;

    // Messages and the panel.
    void warn(const dsk_text::Text &text, const QString &detail = {});
    void fail(const dsk_text::Text &text, const QString &detail, bool showOnPanel);
    void showPanel();

    // Items and the layer (dsk_playout_controller.cpp).
    std::optional<ProgramTarget> targetFor(quint64 itemId, const dsk_text::Text **refusal) const;
    bool startPreparation(const ProgramTarget &dskTarget, bool successor);
    void serviceTarget();
    bool show();
    void takeAway();
    void startFade(double from, double to, qint64 durationMs);
    void ensureAnimating();
    void clearLayer();

    // The item's end (dsk_playout_end_modes.cpp).
    void followTime();
    void finishItem();
    bool returnToIn(bool play);
    void prepareSuccessor(PlaylistEndMode mode);
    bool runSuccession();
    void failSuccession(PlaylistEndMode mode, const QString &detail);
};

} // namespace tarnix
