#pragma once

#include "playout/fade_limits.h"
#include "playout/linear_ramp.h"
#include "playout/still_playback_clock.h"
#include "playout/program_playout_controller.h"
#include "playout/program_playout_panels.h"

#include "playlist/item_selection.h"
#include "playlist/playlist_model.h"
#include "shell/user_info_center.h"

#include <QPointer>
#include <QTimer>

namespace tarnix {

// Ticks for which a stale position after a seek is hidden.
constexpr int kSeekHoldTicks = 20;
// A reported position this close to the sought one ends the hold.
constexpr qint64 kSeekHoldToleranceMs = 1000;


// A macro's prepare or take waiting for the standby.
struct MacroPrepareRequest {
    quint64 requestId = 0;
    bool take = false;
    bool crossfade = false;
    qint64 durationMs = 1000;
};

// A macro's transport request, answered by the tick once its effect shows.
struct MacroTransportRequest {
    quint64 requestId = 0;
    QString op;
    quint64 itemId = 0;
};

struct ProgramPlayoutController::Impl {
    Impl(ProgramPlayoutController *owner, std::unique_ptr<ProgramPlayer> programPlayer, PlaylistModel *playlistModel,
         ItemSelection *itemSelection, UserInfoCenter *info, ProgramPlayoutOptions opts);

    ProgramPlayoutController *q;
    std::unique_ptr<ProgramPlayer> player;
    // Destroyed before the player whose BGM deck it drives.
    std::unique_ptr<BgmPlayoutController> bgm;
    // Likewise for the DSK decks.
    std::unique_ptr<DskPlayoutController> dsk;
    QPointer<PlaylistModel> model;
    QPointer<ItemSelection> selection;
    QPointer<UserInfoCenter> userInfo;
    QPointer<ProgramPanelView> programPanel;
    QPointer<PlaylistPanelView> playlistPanel;
    // Items whose picture level the playlist panel shows.
    quint64 shownLevelItem = 0;
    quint64 shownFromLevelItem = 0;
    ProgramPlayoutOptions options;

    PlayoutItemState programState;
    std::optional<ProgramTarget> requestedTarget;
    std::optional<ProgramTarget> preparedTarget;
    bool releasePending = false;
    PreparationStatus standbyStatusShown = PreparationStatus::Idle;
    std::optional<quint64> queuedTakeItem;
    AutomaticTarget automatic;
    std::optional<ProgramTarget> macroTarget;
    std::optional<MacroPrepareRequest> macroPrepareRequest;
    bool macroTakePending = false;
    std::optional<MacroTransportRequest> macroPlayRequest;
    std::optional<qint64> seekRequest;
    std::optional<qint64> seekHold;
    int seekHoldTicks = 0;
    bool ftbActive = false;
    bool ftbBlinkOn = false;
    double ftbLevel = 0.0;
    double fadeInFactor = 1.0;
    double fadeOutFactor = 1.0;
    bool fadeOutStarted = false;
    double crossfadeProgress = 1.0;
    quint64 crossfadeFromItem = 0;
    double crossfadeFromLevel = 0.0;
    double playbackRate = 1.0;
    bool allowSameItemRetake = false;
    bool autoSelectNextItem = false;
    bool selectionGuard = false;
    // A PowerPoint conversion has reserved the player's slide show sessions.
    bool documentConversionHold = false;
    bool conversionRestartNeeded = false;
    bool closing = false;
    bool manualCrossfadeEnabled = false;
    qint64 manualCrossfadeMs = 1000;
    // A still shown for a set time keeps its time here, not on the deck.
    StillPlaybackClock stillClock;
    qint64 stillTickMs = 0;
    bool stillEnded = false;
    bool stillRestorePending = false;
    // Ended (or parked) at its end: play starts again from the in point.
    bool heldAtEnd = false;
    // Bumped by every take and OFF AIR, so that a step interrupted by a
    // signal's slot can tell that the state moved on under it.
    quint64 generation = 0;

    // What the tick last saw and shows.
    qint64 lastPositionMs = -1;
    qint64 lastEndMs = -1;
    qint64 displayedPositionMs = -1;
    qint64 remainingMs = -1;
    bool playing = false;
    QString statusText;

    LinearRamp ftbRamp;
    LinearRamp crossfadeRamp;
    LinearRamp fadeInRamp;
    LinearRamp fadeOutRamp;
    QTimer tickTimer;
    QTimer endTickTimer;
    QTimer standbyWatchTimer;
    // Extra ticks left for the end of the item on air, and that item.
    int endTicksLeft = 0;
    quint64 endTickItem = 0;
    // Fast ticks (a repeating item's) since the panel was last shown times.
    int fastTicksUnshown = 0;
    QTimer animationTimer;
    QTimer ftbBlinkTimer;
    ProgramAudioController *audio = nullptr;

    qint64 now() const;

    // Items.
    std::optional<PlaylistItem> currentItem() const;
    std::optional<ProgramTarget> targetForItem(quint64 itemId) const;
    bool isBgmItem(const PlaylistItem &item) const;
    static bool isTimedStill(const PlaylistItem &item);
    static bool isLiveAudio(const PlaylistItem &item);
    void resumeStill();
    void serviceStillRestore();
    qint64 endMsFor(qint64 durationMs) const;

    // Messages and marks.
    void showError(const QString &text);
    void setStatus(const QString &text);
    void post(UserInfoSeverity severity, const QString &key, const QString &fallback, const QString &detail = {});
    void setCue(quint64 itemId, PlaylistCueState state, const QString &message = {});
    void clearCueMarks();
    void updateRepeatDisplay();
    void scheduleSelectAfter(quint64 itemId);
    // The manual take's crossfade, from the playlist panel when there is one.
    bool manualCrossfade() const;
    qint64 manualCrossfadeDuration() const;
    // The panel's time fields and transport for the item on air.
    void showTimes();
    void showItemOnPanel(const PlaylistItem &item, const ProgramTarget &target);
    void clearPanel();
    void showLevelsOnPlaylist(double level);

    // Standby.
    void requestTarget(const std::optional<ProgramTarget> &target, bool forced);
    void startRequested();
    void followSelection(bool forced = false);
    void serviceStandby();
    // Between ticks while a preparation runs.
    void watchStandby();
    void reportStandbyStatus(PreparationStatus status);
    bool isAutomaticTarget(const ProgramTarget &target) const;
    void onSelectionChanged(bool byOperator);
    // After the document was replaced: whatever refers to an item that is
    // gone lets go of it.
    void forgetMissingItems();

    // Levels and animations.
    void applyLevels();
    bool crossfadeRunning() const;
    void startCrossfade(qint64 durationMs);
    void finishCrossfade();
    void resetFades(const std::optional<PlaylistItem> &item);
    void ensureAnimating();
    void finishFtb();

    // Tick parts.
    void updateTickInterval();
    void scheduleEndTick(qint64 positionMs, qint64 endMs);
    void applySeekRequest();
    void updatePosition(qint64 positionMs);
    void checkFadeOut(qint64 positionMs, qint64 endMs);
    void handleError(const QString &text, bool programAudio);
    void holdAtEnd(qint64 endMs);
    // Meters run while a deck plays with sound.
    void updateProgramAudio();

    // Macro reservation.
    std::optional<ProgramTarget> checkMacroTarget(quint64 itemId, QString *error) const;
    bool checkMacroRequest(quint64 requestId, QString *error);
    void endMacroReservation(const QString &text);
    void finishMacroPrepare(bool success, const QString &error);
    void serviceMacro();
    void serviceMacroTransport();
    void finishMacroTransport(bool success, const QString &error);

    // End modes and succession.
    bool isRepeating() const;
    bool prepareAutomatic(qint64 positionMs, qint64 durationMs);
    qint64 repeatCrossfadeMs(qint64 endMs) const;
    void repeatTrigger(qint64 positionMs, qint64 endMs);
    bool runSuccession();
    bool takeRepeat();
    void failSuccession(const QString &text);
    void clearAutomatic(bool follow);
    void finishItem(qint64 endMs);
};

} // namespace tarnix
