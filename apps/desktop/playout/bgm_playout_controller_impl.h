#pragma once

#include "playout/bgm_playout_controller.h"

#include "playout/bgm_panel_view.h"
#include "playout/bgm_player.h"
#include "playout/bgm_texts.h"
#include "playout/linear_ramp.h"
#include "playout/playout_item_state.h"

#include "audio/program_audio_controller.h"
#include "playlist/item_selection.h"
#include "playlist/playlist_model.h"
#include "shell/user_info_center.h"

#include <QPointer>
#include <QTimer>

#include <optional>

namespace tarnix {

// A gain at or below this is silence: nothing to ramp down, a fade out is at
// its end.
inline constexpr double kSilentGain = 0.0001;

// The item the BGM deck holds and the range it plays.
struct BgmPlayback {
    quint64 itemId = 0;
    QString path;
    qint64 inMs = 0;
    std::optional<qint64> outMs;
};

struct BgmPlayoutController::Impl {
    Impl(BgmPlayoutController *owner, BgmPlayer *bgmPlayer, PlaylistModel *playlistModel, ItemSelection *itemSelection,
         UserInfoCenter *info, ProgramAudioController *programAudio, BgmPlayoutOptions opts);

    BgmPlayoutController *q;
    BgmPlayer *player;
    QPointer<PlaylistModel> model;
    QPointer<ItemSelection> selection;
    QPointer<UserInfoCenter> userInfo;
    QPointer<ProgramAudioController> audio;
    QPointer<BgmPanelView> panel;
    BgmPlayoutOptions options;

    // The item and its sequence: which it is and how often it has repeated.
    BgmPlayback playback;
    PlayoutItemState sequence;
    qint32 bgmPlaylistNumber = 0;
    QSet<quint64> skippedBgmItems;
    State state = State::Stopped;
    // Play was asked for while the item loads.
    bool pendingPlay = false;
    // The next start plays from the in point (a fresh item, or one that
    // stands at its end).
    bool restartFromIn = false;
    bool stopPending = false;
    bool stopFailed = false;
    bool closing = false;

    // The transport ramp and what it completes.
    LinearRamp transitionRamp;
    // After the ramp's time, until its audio has passed through the mix.
    std::optional<qint64> rampTailUntil;
    double rampVolume = 0.0;
    int purpose = NoPurpose;
    // The manual fade (and the item's own fade out, which uses it).
    LinearRamp fadeRamp;
    double fadeVolume = 1.0;
    bool fadeUp = false;
    bool autoFade = false;
    double controlVolume = 1.0;
    QTimer animationTimer;

    // The signal lamp.
    qint64 signalUntil = 0;
    qint64 clipUntil = 0;
    std::optional<std::pair<bool, bool>> lampShown;

    qint64 now() const;
    std::optional<PlaylistItem> currentItem() const;

    // Messages and the panel (bgm_playout_view.cpp).
    void warn(const bgm_text::Text &text, const QString &detail = {}, const QStringList &args = {});
    void setState(State next);
    void showPanel();
    void updateLamp();
    QString itemName(const PlaylistItem &item) const;

    // Items and succession (bgm_playout_sequence.cpp).
    bool isPlayable(quint64 itemId) const;
    quint64 firstPlayable() const;
    quint64 nextPlayable(quint64 afterItemId) const;
    bool startItem(quint64 itemId);
    bool startFirstOf(quint64 candidate, bool reportSkips);
    void applyItemAudio(const PlaylistItemSettings &settings);
    void finishItem();
    void failItem(const QString &text, bool offline);
    void transitionTo(quint64 itemId);
    void checkItemFade();

    // Transport and levels (bgm_playout_controller.cpp, bgm_playout_levels.cpp).
    bool resume();
    bool completeStop();
    void completePause();
    void startRamp(double target, int rampPurpose);
    void stopRamp();
    void startFade(double target, qint64 durationMs, bool automatic);
    void resetFade();
    void setTransport(double gain);
    double effectiveGain() const { return rampVolume * fadeVolume; }
    void ensureAnimating();
    void setMetering(bool on);
};

} // namespace tarnix
