#pragma once

#include "audio/program_audio_controller.h"
#include "playout/bgm_playout_controller.h"
#include "playout/dsk_playout_controller.h"
#include "playout/program_player.h"
#include "playout/program_target.h"
#include "playout/playout_item_state.h"

#include <QObject>
#include <QString>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>

namespace tarnix {

class BgmPanelView;
class DskPanelView;
class ControlStateRegistry;
class ControllerOperations;
class ItemSelection;
class PlaylistModel;
class PlaylistPanelView;
class ProgramPanelView;
class UserInfoCenter;

struct ProgramPlayoutOptions {
    std::chrono::milliseconds tickInterval{100};
    // While the item on air repeats, so that a loop point is met closely.
    std::chrono::milliseconds repeatTickInterval{16};
    // When the item on air will end before the next tick, one extra tick is
    // due this long after its end, so that its end of stream is acted on at
    // once rather than up to a whole tick later.
    std::chrono::milliseconds endTickMargin{2};
    // While the standby prepares, its end is looked for this often, so that
    // a ready item is known (and a queued take taken) without waiting for
    // the next tick.
    std::chrono::milliseconds standbyPollInterval{10};
    std::chrono::milliseconds animationInterval{16};
    std::chrono::milliseconds ftbDuration{1000};
    std::chrono::milliseconds ftbBlinkInterval{200};
    // A next or goto successor is cued this close to the end, not sooner.
    qint64 preparationWindowMs = 1000;
    // Monotonic milliseconds; empty is the steady clock.
    std::function<qint64()> monotonicMs;
    // Tests drive tick() and stepAnimations() themselves.
    bool startTimers = true;
    // The meter loop's; its timer follows startTimers.
    ProgramAudioController::Options audio;
    // The BGM player's; its timers follow startTimers and its clock is this
    // controller's unless it has one of its own.
    BgmPlayoutOptions bgm;
    // The DSK layer's; likewise.
    DskPlayoutOptions dsk;
};

// The ON AIR state machine: it follows the selection onto the standby deck,
// takes, pauses, seeks and goes OFF AIR, and decides at each item's end what
// follows it (stop, pause, repeat, next, goto), preparing the successor ahead
// on the other deck. Every refusal is told in its words; what stays on air
// stays on air.
//
// Main thread only. Nothing here waits: every wait is a state that the tick
// looks at again. Signals it emits may call back into it.
class ProgramPlayoutController : public QObject
{
    Q_OBJECT

public:
    // Any pointer but the player may be null: the operations that need it
    // then do nothing. The operations are bound in the constructor and the
    // state fields registered.
    ProgramPlayoutController(std::unique_ptr<ProgramPlayer> player, PlaylistModel *model, ItemSelection *selection,
                             UserInfoCenter *userInfo, ControllerOperations *operations,
                             ControlStateRegistry *state, ProgramPlayoutOptions options = {},
                             QObject *parent = nullptr);
    ~ProgramPlayoutController() override;

    // Operator operations.
    bool takeOnAir();
    bool takeTarget(const ProgramTarget &target, bool crossfade, qint64 durationMs);
    bool offAir();
    bool play();
    bool pause();
    bool togglePlayback();
    bool seek(qint64 ms);
    bool setRate(double rate);
    void toggleFtb();
    bool canDeleteItem(quint64 itemId, QString *error = nullptr) const;

    // A PowerPoint conversion asks for the player's slide show sessions:
    // refused while a PowerPoint item is ON AIR or a hold already runs. When
    // granted, the conversion's flag is cleared, a slide show on the standby
    // is released and no PowerPoint item is prepared until the hold ends.
    bool requestConversionHold(const std::shared_ptr<std::atomic<bool>> &flag, QString *error = nullptr);
    // Ends the hold; an automatic successor it held back is looked for again.
    void releaseConversionHold();
    bool isConversionHeld() const;

    // Macro requests. Each returns false with a text when refused; an
    // accepted request is answered exactly once, later, by macroPrepared or
    // macroTransportFinished (at the latest when the controller goes away).
    // A successful prepare keeps the standby reserved for the macro until a
    // take, an operator's action or a change of the item ends it
    // (macroPrepareFailed).
    bool macroPrepare(quint64 requestId, quint64 itemId, QString *error = nullptr);
    bool macroTake(quint64 requestId, quint64 itemId, bool requireReady, bool crossfade, qint64 durationMs,
                   QString *error = nullptr);
    // op: "offAir", "play" or "pause".
    bool macroTransport(quint64 requestId, const QString &op, QString *error = nullptr);
    bool macroSetRate(double rate, QString *error = nullptr);
    // The item the macro has reserved the standby for; 0 for none.
    quint64 macroTargetItemId() const;

    // The panels, connected when they exist; either may be null or go away.
    // The program panel's audio section goes to the audio controller.
    void setProgramPanel(ProgramPanelView *panel);
    void setPlaylistPanel(PlaylistPanelView *panel);
    // The program panel's BGM module goes to the BGM player.
    void setBgmPanel(BgmPanelView *panel);
    // The program panel's DSK buttons go to the DSK controller.
    void setDskPanel(DskPanelView *panel);

    // Settings, pushed in by whoever reads them.
    void setAllowSameItemRetake(bool allow);
    void setAutoSelectNextItem(bool on);
    // The manual take's crossfade: whether it is on and how long; the
    // playlist panel's, when there is one, stands over this.
    void setManualCrossfade(bool enabled, qint64 durationMs);

    // Stops every timer and animation and starts the player's shutdown.
    void shutdown();

    // One pass of the state machine; the tick timer calls it.
    void tick();
    // One step of every running animation; the animation timer calls it.
    void stepAnimations();

    // The program's meters, created with the player.
    ProgramAudioController *audioController() const;
    // The BGM player beside ON AIR, created with the player.
    BgmPlayoutController *bgmController() const;
    // The DSK layer's logic, created with the player.
    DskPlayoutController *dskController() const;

    // What the state machine holds now.
    quint64 onAirItemId() const;
    PlayoutItemState::Phase programPhase() const;
    int repeatDisplayCount() const;
    std::optional<ProgramTarget> requestedTarget() const;
    std::optional<ProgramTarget> preparedTarget() const;
    std::optional<quint64> queuedTakeItem() const;
    AutomaticTarget automaticTarget() const;
    bool releasePending() const;
    bool isCrossfading() const;
    qint64 crossfadeDurationMs() const;
    double crossfadeProgress() const;
    bool isFtbActive() const;
    double ftbLevel() const;
    double fadeInFactor() const;
    double fadeOutFactor() const;
    double playbackRate() const;
    // The position and remaining time shown for the item on air; -1 when
    // unknown.
    qint64 displayedPositionMs() const;
    qint64 remainingMs() const;
    bool isPlaying() const;
    int tickIntervalMs() const;
    // The last text shown on the program status line.
    QString statusText() const;

signals:
    void onAirChanged(bool onAir);
    void ftbChanged(bool active);
    void statusTextChanged(const QString &text);
    void macroPrepared(quint64 requestId, bool success, const QString &error);
    void macroTransportFinished(quint64 requestId, bool success, const QString &error);
    // A reservation without a pending request ended.
    void macroPrepareFailed(const QString &text);
    // The program sound failed while the picture plays on. Whoever listens
    // looks at the devices again and tells the operator; with nobody
    // listening the controller tells the operator itself.
    void programAudioOutputError(const QString &detail);

public:
    struct Impl;

private:
    std::unique_ptr<Impl> d;
};

} // namespace tarnix
