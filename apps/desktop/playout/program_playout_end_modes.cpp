// What happens when the item on air comes to its end, and how its successor
// is prepared ahead on the standby deck and taken.

#include "playout/program_playout_controller_impl.h"
#include "playout/program_playout_texts.h"

#include "playlist/playlist_text.h"
#include "shell/log_categories.h"

#include <algorithm>
#include <cmath>

namespace tarnix {

using Impl = ProgramPlayoutController::Impl;

bool Impl::isRepeating() const
{
    const std::optional<PlaylistItem> item = currentItem();
    return item && item->sourceType == PlaylistSourceType::file && programState.endMode() == PlaylistEndMode::repeat;
}

void Impl::clearAutomatic(bool follow)
{
    const AutomaticTarget old = std::exchange(automatic, AutomaticTarget{});
    if (old.target
        && ((preparedTarget && *preparedTarget == *old.target) || (requestedTarget && *requestedTarget == *old.target)))
        requestTarget(std::nullopt, false);
    if (follow)
        followSelection();
}

bool Impl::prepareAutomatic(qint64 positionMs, qint64 durationMs)
{
    const bool repeating = isRepeating();
    if (!repeating && !automatic.armed && (positionMs < 0 || durationMs < 0 || positionMs > durationMs))
        return false;
    const std::optional<PlaylistItem> item = currentItem();
    std::optional<PlaylistEndMode> mode = programState.endMode();
    if (!mode && automatic.armed)
        mode = automatic.endMode;
    if (!item || !mode
        || (*mode != PlaylistEndMode::next && *mode != PlaylistEndMode::goto_ && *mode != PlaylistEndMode::repeat)) {
        if (!automatic.isEmpty())
            clearAutomatic(true);
        return false;
    }
    if (queuedTakeItem)
        return false;

    std::optional<ProgramTarget> candidate;
    if (repeating) {
        candidate = targetForItem(item->id);
        if (candidate)
            candidate->rate = stillClock.isValid() ? 1.0 : playbackRate;
    } else if (model) {
        const quint64 next = model->successor(item->id, *mode, model->dskItemId());
        const std::optional<PlaylistItem> nextItem = next ? model->item(next) : std::nullopt;
        if (nextItem && !nextItem->filePath.isEmpty() && !isBgmItem(*nextItem))
            candidate = targetForItem(next);
    }

    if (automatic.requested) {
        // The request stands while nothing changed and the standby still
        // works on it; an operator's selection may have taken the standby.
        const bool onStandby = !candidate || (preparedTarget && *preparedTarget == *candidate)
                               || (requestedTarget && *requestedTarget == *candidate);
        if (automatic.endMode == mode && automatic.target == candidate && onStandby)
            return true;
        const bool armed = automatic.armed;
        const bool suspended = automatic.suspended;
        automatic = {};
        automatic.armed = armed;
        automatic.suspended = suspended;
    }
    automatic.endMode = mode;
    // A next or goto successor is cued in the last moments only, so the
    // standby stays the operator's until then.
    if (!repeating && !automatic.armed && durationMs - positionMs > options.preparationWindowMs)
        return false;
    if (documentConversionHold && candidate && candidate->sourceType == PlaylistSourceType::powerpoint) {
        conversionRestartNeeded = true;
        return false;
    }
    automatic.target = candidate;
    automatic.targetItemId = candidate ? std::optional<quint64>(candidate->itemId) : std::nullopt;
    automatic.requested = true;
    if (candidate) {
        if (macroTarget)
            endMacroReservation(texts::automaticHasPriority());
        requestTarget(candidate, false);
    }
    return true;
}

qint64 Impl::repeatCrossfadeMs(qint64 endMs) const
{
    const std::optional<PlaylistItem> item = currentItem();
    if (!item || item->sourceType != PlaylistSourceType::file || item->mediaType == PlaylistMediaType::audio
        || !item->settings.endCrossfade.enabled)
        return 0;
    const qint64 in = programState.inPointMs();
    if (endMs < 0 || in >= endMs || !std::isfinite(playbackRate) || playbackRate <= 0.0)
        return 0;
    const double halfLoop = double(endMs - in) / playbackRate * 0.5;
    const qint64 length = qint64(std::min(double(clampFadeMs(item->settings.endCrossfade.durationMs)), halfLoop));
    return length < kMinFadeMs ? 0 : length;
}

void Impl::repeatTrigger(qint64 positionMs, qint64 endMs)
{
    if (isRepeating() && !automatic.suspended && !automatic.armed && playing && positionMs >= 0 && endMs >= 0) {
        const qint64 length = repeatCrossfadeMs(endMs);
        // The distance is in media time, so a faster rate starts it earlier
        // and the crossfade stays in step with real time.
        if (length > 0 && double(endMs - positionMs) <= double(length) * playbackRate) {
            automatic.armed = true;
            automatic.endMode = PlaylistEndMode::repeat;
        }
    }
    if (automatic.armed)
        runSuccession();
}

bool Impl::runSuccession()
{
    if (automatic.suspended || queuedTakeItem)
        return false;
    if (automatic.armed && !prepareAutomatic(lastPositionMs, lastEndMs))
        return false;
    if (!automatic.armed || !automatic.targetItemId || !automatic.endMode || !automatic.target)
        return false;
    const quint64 targetId = *automatic.targetItemId;
    if (!preparedTarget || preparedTarget->itemId != targetId)
        return false;
    const PreparationStatus status = player->standbyStatus();
    if (status == PreparationStatus::Failed) {
        const QString text = player->standbyError();
        failSuccession(text.isEmpty() ? texts::nextNotPrepared() : text);
        return false;
    }
    if (status != PreparationStatus::Ready)
        return false;

    const PlaylistEndMode mode = *automatic.endMode;
    if (mode == PlaylistEndMode::repeat)
        return takeRepeat();

    const std::optional<PlaylistItem> ending = currentItem();
    const bool crossfade = ending ? ending->settings.endCrossfade.enabled : false;
    const qint64 durationMs = ending ? ending->settings.endCrossfade.durationMs : 1000;
    const ProgramTarget target = *automatic.target;
    qCInfo(lcPlayout).noquote() << QStringLiteral("AUTO PROGRAM transition target=%1 mode=%2 crossfade=%3 durationMs=%4")
                                       .arg(target.itemId)
                                       .arg(toText(mode))
                                       .arg(crossfade ? QStringLiteral("true") : QStringLiteral("false"))
                                       .arg(durationMs);
    if (!q->takeTarget(target, crossfade, durationMs)) {
        failSuccession(texts::nextNotTaken());
        return false;
    }
    return true;
}

bool Impl::takeRepeat()
{
    if (!isRepeating() || crossfadeRunning())
        return false;
    const std::optional<PlaylistItem> item = currentItem();
    const qint64 length = repeatCrossfadeMs(lastEndMs);
    const float startLevel = item && item->settings.fadeIn.enabled ? 0.0f : 1.0f;
    // The operator's changes to the item's audio survive the loop.
    if (programPanel) {
        const ProgramAudioPanel::EqGains eq = programPanel->itemEq();
        player->setItemDelayFrames(programPanel->itemDelayFrames());
        player->setItemEq(eq.lowDb, eq.midDb, eq.highDb);
    }
    int status = 3;
    if (!player->takeStandby(length > 0, startLevel, &status)) {
        failSuccession(texts::repeatNotTaken());
        return false;
    }
    if (programState.consumeEndMode() != PlaylistEndMode::repeat) {
        failSuccession(texts::repeatNotAdvanced());
        return false;
    }
    resetFades(item);
    if (programPanel)
        player->setItemVolume(programPanel->itemGain());
    if (stillClock.isValid()) {
        stillClock.rewind(true);
        stillTickMs = now();
        stillEnded = false;
    } else if (!player->play()) {
        failSuccession(texts::repeatNotStarted());
        return false;
    }
    playing = true;
    heldAtEnd = false;
    preparedTarget.reset();
    requestedTarget.reset();
    standbyStatusShown = PreparationStatus::Idle;
    clearCueMarks();
    automatic = {};
    seekHold = programState.inPointMs();
    seekHoldTicks = kSeekHoldTicks;
    displayedPositionMs = programState.inPointMs();
    if (lastEndMs >= 0)
        remainingMs = lastEndMs - programState.inPointMs();
    updateRepeatDisplay();
    if (length > 0) {
        crossfadeFromItem = 0;
        crossfadeProgress = 0.0;
        startCrossfade(length);
    }
    qCInfo(lcPlayout).noquote() << QStringLiteral("AUTO PROGRAM repeat item=%1 deck=%2 count=%3 rate=%4 crossfadeMs=%5")
                                       .arg(programState.itemId())
                                       .arg(player->currentDeck())
                                       .arg(programState.repeatDisplayCount())
                                       .arg(playbackRate)
                                       .arg(length);
    return true;
}

void Impl::failSuccession(const QString &text)
{
    if (automatic.armed && automatic.endMode == PlaylistEndMode::repeat) {
        player->pause();
        playing = false;
        fadeInRamp.stop();
        fadeOutRamp.stop();
        fadeInFactor = 1.0;
        fadeOutFactor = 1.0;
        applyLevels();
    }
    programState.setFailed();
    audio->setProgramActive(false);
    QString mode = QStringLiteral("Next");
    if (automatic.armed && automatic.endMode == PlaylistEndMode::repeat)
        mode = QStringLiteral("Repeat");
    else if (automatic.armed && automatic.endMode == PlaylistEndMode::goto_)
        mode = QStringLiteral("GOTO");
    if (userInfo)
        userInfo->post(UserInfoSeverity::Error, QStringLiteral("PROGRAM"),
                       LocalizedText(QString(), {}, texts::endModeFailed(mode)), text);
    setStatus(text);
    clearAutomatic(false);
}

void Impl::finishItem(qint64 endMs)
{
    const quint64 itemId = programState.itemId();
    const qint64 in = programState.inPointMs();
    lastPositionMs = endMs;
    lastEndMs = endMs;

    if (isRepeating()) {
        automatic.armed = true;
        automatic.endMode = PlaylistEndMode::repeat;
        prepareAutomatic(endMs, endMs);
        // A repeat whose preparation has not finished waits here on its last
        // frame; the tick takes it when it is ready.
        if (!runSuccession())
            holdAtEnd(endMs);
        return;
    }

    const std::optional<PlaylistItem> item = currentItem();
    fadeInRamp.stop();
    fadeOutRamp.stop();
    fadeInFactor = 1.0;
    const bool fadesOut = item && item->settings.fadeOut.enabled;
    fadeOutFactor = fadesOut ? 0.0 : 1.0;
    fadeOutStarted = fadesOut;
    applyLevels();

    const std::optional<PlaylistEndMode> mode = programState.consumeEndMode();
    qCInfo(lcPlayout).noquote() << QStringLiteral("AUTO PROGRAM completion item=%1 endMode=%2 positionMs=%3")
                                       .arg(itemId)
                                       .arg(mode ? toText(*mode) : QStringLiteral("none"))
                                       .arg(endMs);
    if (!mode) {
        holdAtEnd(endMs);
        showError(texts::endProcessingNoItem());
        return;
    }

    if (*mode == PlaylistEndMode::repeat) {
        // A live or document item: it starts again where it began.
        if (!player->seek(in) || !player->play()) {
            player->pause();
            playing = false;
            programState.setFailed();
            updateRepeatDisplay();
            showError(texts::endModeFailed(QStringLiteral("Repeat")));
            return;
        }
        playing = true;
        resetFades(item);
        seekHold = in;
        seekHoldTicks = kSeekHoldTicks;
        updateRepeatDisplay();
        return;
    }

    scheduleSelectAfter(itemId);
    updateRepeatDisplay();

    if (*mode == PlaylistEndMode::next || *mode == PlaylistEndMode::goto_) {
        if (model)
            model->requestAvailabilityScan();
        if (*mode == PlaylistEndMode::goto_ && item && item->settings.gotoTargetItemId != 0 && model
            && model->isOffline(item->settings.gotoTargetItemId)) {
            q->offAir();
            return;
        }
    }
    if (*mode == PlaylistEndMode::stop) {
        q->offAir();
        return;
    }
    if (*mode == PlaylistEndMode::next || *mode == PlaylistEndMode::goto_) {
        automatic.armed = true;
        automatic.endMode = mode;
        prepareAutomatic(endMs, endMs);
        if (runSuccession())
            return;
        if (programState.phase() == PlayoutItemState::Failed)
            return;
        // The last frame stays on air while the successor gets ready.
        holdAtEnd(endMs);
        if (!automatic.targetItemId)
            failSuccession(*mode == PlaylistEndMode::goto_ ? texts::noGotoItem() : texts::noNextItem());
        return;
    }

    // pause
    if (stillClock.isValid()) {
        stillClock.stopAtEnd();
        programState.setHeld();
        displayedPositionMs = endMs;
        remainingMs = 0;
        playing = false;
        heldAtEnd = true;
        return;
    }
    bool ok = player->pause();
    const std::optional<qint64> out = programState.outPointMs();
    if (ok && item && item->sourceType == PlaylistSourceType::file && !out && endMs > in)
        ok = player->seek(std::max(endMs - 1, in)) && player->pause();
    if (!ok) {
        programState.setFailed();
        showError(texts::endModeFailed(QStringLiteral("Pause")));
        return;
    }
    programState.setHeld();
    displayedPositionMs = endMs;
    remainingMs = 0;
    playing = false;
    heldAtEnd = true;
}

} // namespace tarnix
