// The standby deck: what it should hold (the selection, a successor, a
// macro's item), its release and preparation, and what its status means.

#include "playout/program_playout_controller_impl.h"
#include "playout/program_playout_texts.h"

#include <algorithm>
#include <cmath>

namespace tarnix {

bool ProgramPlayoutController::Impl::isAutomaticTarget(const ProgramTarget &target) const
{
    return automatic.target && *automatic.target == target;
}

void ProgramPlayoutController::Impl::requestTarget(const std::optional<ProgramTarget> &target, bool forced)
{
    if (macroTarget && (!target || *target != *macroTarget))
        endMacroReservation(texts::macroReplaced());
    if (documentConversionHold && target && target->sourceType == PlaylistSourceType::powerpoint) {
        // The conversion has the slide show sessions; nothing else changes.
        if (queuedTakeItem == target->itemId)
            queuedTakeItem.reset();
        return;
    }
    if (target && preparedTarget && *target == *preparedTarget
        && ((!forced && target->sourceType != PlaylistSourceType::powerpoint)
            || player->standbyStatus() != PreparationStatus::Failed)) {
        requestedTarget.reset();
        releasePending = false;
        if (queuedTakeItem && *queuedTakeItem != target->itemId)
            queuedTakeItem.reset();
        return;
    }
    requestedTarget = target;
    if (queuedTakeItem && (!target || *queuedTakeItem != target->itemId))
        queuedTakeItem.reset();
    releasePending = true;
    if (crossfadeRunning()) {
        // The old deck is still on the output; the standby is released when
        // the crossfade has finished.
        if (target)
            setCue(target->itemId, PlaylistCueState::Requested);
        else
            clearCueMarks();
        return;
    }
    startRequested();
}

void ProgramPlayoutController::Impl::startRequested()
{
    releasePending = false;
    if (!player->releaseStandby()) {
        queuedTakeItem.reset();
        standbyStatusShown = PreparationStatus::Failed;
        if (preparedTarget)
            setCue(preparedTarget->itemId, PlaylistCueState::Failed, player->standbyError());
        return;
    }
    preparedTarget.reset();
    standbyStatusShown = PreparationStatus::Idle;

    if (!requestedTarget
        || (!allowSameItemRetake && requestedTarget->itemId == programState.itemId()
            && !isAutomaticTarget(*requestedTarget))) {
        requestedTarget.reset();
        clearCueMarks();
        return;
    }
    const ProgramTarget target = *std::exchange(requestedTarget, std::nullopt);
    setCue(target.itemId, PlaylistCueState::Requested);
    if (target.sourceType == PlaylistSourceType::file && model && model->isOffline(target.itemId)) {
        queuedTakeItem.reset();
        setCue(target.itemId, PlaylistCueState::Failed, texts::fileNotFound() + target.path);
        return;
    }
    const std::optional<DeckSourceKind> kind = deckSourceKindFor(target.sourceType);
    if (!kind) {
        setCue(target.itemId, PlaylistCueState::Failed, texts::inputTypeUnsupported());
        return;
    }
    DeckSource request;
    request.kind = *kind;
    request.source = target.path;
    request.mappedAudio = target.mappedAudio;
    if (target.sourceType == PlaylistSourceType::file) {
        request.inMs = target.inPointMs;
        request.outMs = target.outPointMs.value_or(-1);
        request.rate = target.rate;
    }
    if (!player->prepareStandby(request)) {
        setCue(target.itemId, PlaylistCueState::Failed, player->standbyError());
        return;
    }
    preparedTarget = target;
    standbyStatusShown = PreparationStatus::Preparing;
    setCue(target.itemId, PlaylistCueState::Preparing);
    if (options.startTimers && !standbyWatchTimer.isActive())
        standbyWatchTimer.start();
}

void ProgramPlayoutController::Impl::watchStandby()
{
    if (closing || !preparedTarget || standbyStatusShown != PreparationStatus::Preparing) {
        standbyWatchTimer.stop();
        return;
    }
    player->poll();
    serviceStandby();
}

void ProgramPlayoutController::Impl::followSelection(bool forced)
{
    if (automatic.armed || macroTarget || closing)
        return;
    std::optional<ProgramTarget> target;
    const quint64 selected = selection ? selection->selectedItemId() : 0;
    const std::optional<PlaylistItem> item = (model && selected) ? model->item(selected) : std::nullopt;
    if (item && !model->isPending(selected) && !model->isOffline(selected) && !isBgmItem(*item)
        && (allowSameItemRetake || selected != programState.itemId()))
        target = targetForItem(selected);
    requestTarget(target, forced);
}

void ProgramPlayoutController::Impl::forgetMissingItems()
{
    if (!model)
        return;
    const auto gone = [this](quint64 itemId) { return itemId != 0 && !model->contains(itemId); };
    if (macroTarget && gone(macroTarget->itemId))
        endMacroReservation(texts::macroItemUnavailable());
    if (gone(crossfadeFromItem))
        finishCrossfade();
    if (automatic.targetItemId && gone(*automatic.targetItemId))
        automatic = {};
    if (queuedTakeItem && gone(*queuedTakeItem))
        queuedTakeItem.reset();
    if ((preparedTarget && gone(preparedTarget->itemId)) || (requestedTarget && gone(requestedTarget->itemId)))
        requestTarget(std::nullopt, false);
    if (gone(programState.itemId()))
        q->offAir();
    // A removed document item that was not being converted is told to the
    // player's PowerPoint sessions here once they exist.
}

void ProgramPlayoutController::Impl::onSelectionChanged(bool byOperator)
{
    if (closing)
        return;
    if (byOperator && !selectionGuard)
        endMacroReservation(texts::selectionChangedStandby());
    followSelection();
}

void ProgramPlayoutController::Impl::serviceStandby()
{
    if (releasePending) {
        if (crossfadeRunning())
            return;
        startRequested();
    }
    if (preparedTarget) {
        const PreparationStatus status = player->standbyStatus();
        if (status != standbyStatusShown)
            reportStandbyStatus(status);
    }
    serviceMacro();
}

void ProgramPlayoutController::Impl::reportStandbyStatus(PreparationStatus status)
{
    standbyStatusShown = status;
    const quint64 itemId = preparedTarget->itemId;
    switch (status) {
    case PreparationStatus::Preparing:
        setCue(itemId, PlaylistCueState::Preparing);
        break;
    case PreparationStatus::Ready:
        setCue(itemId, PlaylistCueState::Ready);
        if (automatic.armed && automatic.targetItemId == itemId) {
            runSuccession();
            return;
        }
        if (macroPrepareRequest)
            return;
        if (queuedTakeItem == itemId) {
            const std::optional<ProgramTarget> live = targetForItem(itemId);
            if (live && *live == *preparedTarget)
                q->takeTarget(*live, manualCrossfade(), manualCrossfadeDuration());
        }
        break;
    case PreparationStatus::Failed: {
        const QString text = player->standbyError();
        if (player->isStandbyOffline() && model) {
            if (const std::optional<PlaylistItem> item = model->item(itemId))
                model->markFileUnavailable(item->filePath);
        }
        // A camera item's failure also goes to the UVC device monitor here
        // once it exists.
        setCue(itemId, PlaylistCueState::Failed, text);
        queuedTakeItem.reset();
        if (automatic.armed && automatic.targetItemId == itemId)
            runSuccession();
        break;
    }
    case PreparationStatus::Idle:
        break;
    }
}

} // namespace tarnix
