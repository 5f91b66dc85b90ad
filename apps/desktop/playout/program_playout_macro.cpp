// The macro's reservation of the standby deck and its transport requests.
// Every accepted request is answered exactly once; a reservation is never
// replaced silently.

#include "playout/program_playout_controller_impl.h"
#include "playout/program_playout_texts.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace tarnix {

using Impl = ProgramPlayoutController::Impl;

namespace {

bool setError(QString *error, const QString &text)
{
    if (error)
        *error = text;
    return false;
}

bool isSupportedMacroMedia(const PlaylistItem &item, bool allowStill)
{
    if (item.sourceType != PlaylistSourceType::file)
        return false;
    return item.mediaType == PlaylistMediaType::video || item.mediaType == PlaylistMediaType::audio
           || (allowStill && item.mediaType == PlaylistMediaType::stillImage);
}

} // namespace

std::optional<ProgramTarget> Impl::checkMacroTarget(quint64 itemId, QString *error) const
{
    const auto refuse = [error](const QString &text) -> std::optional<ProgramTarget> {
        setError(error, text);
        return std::nullopt;
    };
    if (closing || !model || !player->isInitialized())
        return refuse(texts::onAirUnavailable());
    const std::optional<PlaylistItem> item = itemId ? model->item(itemId) : std::nullopt;
    if (!item)
        return refuse(texts::macroTargetGone());
    if (!isSupportedMacroMedia(*item, true) || isBgmItem(*item))
        return refuse(texts::macroTargetUnsupported());
    if (model->isPending(itemId))
        return refuse(texts::macroTargetConverting());
    if (item->filePath.isEmpty() || model->isOffline(itemId))
        return refuse(texts::macroTargetUnavailable());
    if (model->dskItemId() == itemId)
        return refuse(texts::macroTargetInDsk());
    if (!allowSameItemRetake && programState.itemId() == itemId)
        return refuse(texts::sameItemRetakeDisabled());
    return targetForItem(itemId);
}

bool Impl::checkMacroRequest(quint64 requestId, QString *error)
{
    if (requestId == 0 || macroPrepareRequest)
        return setError(error, texts::macroRequestPending());
    prepareAutomatic(lastPositionMs, lastEndMs);
    const bool automaticOnStandby = automatic.target && preparedTarget && *automatic.target == *preparedTarget;
    if (queuedTakeItem || automatic.armed || automaticOnStandby)
        return setError(error, texts::standbyInUse());
    return true;
}

void Impl::endMacroReservation(const QString &text)
{
    if (!macroTarget && !macroPrepareRequest)
        return;
    // Cleared before anyone hears of it: a listener may ask for the next
    // reservation at once.
    const std::optional<MacroPrepareRequest> pending = std::exchange(macroPrepareRequest, std::nullopt);
    macroTarget.reset();
    macroTakePending = false;
    if (pending)
        emit q->macroPrepared(pending->requestId, false, text);
    else
        emit q->macroPrepareFailed(text);
}

void Impl::finishMacroPrepare(bool success, const QString &error)
{
    const std::optional<MacroPrepareRequest> pending = std::exchange(macroPrepareRequest, std::nullopt);
    macroTakePending = false;
    if (!success || (pending && pending->take))
        macroTarget.reset();
    if (pending)
        emit q->macroPrepared(pending->requestId, success, error);
}

void Impl::serviceMacro()
{
    if (!macroPrepareRequest || !macroTarget)
        return;
    const std::optional<ProgramTarget> live = targetForItem(macroTarget->itemId);
    if (!live || *live != *macroTarget) {
        endMacroReservation(live ? texts::macroItemChanged() : texts::macroItemUnavailable());
        return;
    }
    if (releasePending || (requestedTarget && *requestedTarget == *macroTarget))
        return;
    if (!preparedTarget || *preparedTarget != *macroTarget) {
        finishMacroPrepare(false, texts::macroNotPrepared());
        return;
    }
    switch (player->standbyStatus()) {
    case PreparationStatus::Ready:
        if (macroTakePending) {
            const MacroPrepareRequest request = *macroPrepareRequest;
            const ProgramTarget target = *macroTarget;
            // The request is settled before the take, whose signals may
            // start the next one.
            macroPrepareRequest.reset();
            macroTarget.reset();
            macroTakePending = false;
            const bool taken = q->takeTarget(target, request.crossfade, request.durationMs);
            emit q->macroPrepared(request.requestId, taken, taken ? QString() : texts::macroNotTaken());
        } else {
            finishMacroPrepare(true, QString());
        }
        break;
    case PreparationStatus::Failed: {
        const QString text = player->standbyError();
        finishMacroPrepare(false, text.isEmpty() ? texts::macroNotPrepared() : text);
        break;
    }
    default:
        break;
    }
}

void Impl::finishMacroTransport(bool success, const QString &error)
{
    const std::optional<MacroTransportRequest> pending = std::exchange(macroPlayRequest, std::nullopt);
    if (pending)
        emit q->macroTransportFinished(pending->requestId, success, error);
}

void Impl::serviceMacroTransport()
{
    if (!macroPlayRequest)
        return;
    const MacroTransportRequest request = *macroPlayRequest;
    // A play waits for the still's picture to come back.
    if (request.op == QLatin1String("play") && stillRestorePending && programState.itemId() == request.itemId)
        return;
    if (request.op == QLatin1String("offAir")) {
        const bool off = programState.itemId() == 0;
        finishMacroTransport(off, off ? QString() : texts::macroOffAirFailed());
    } else if (programState.itemId() != request.itemId) {
        finishMacroTransport(false, texts::macroPlayItemChanged());
    } else if (request.op == QLatin1String("pause")) {
        finishMacroTransport(!playing, playing ? texts::macroDidNotPause() : QString());
    } else {
        finishMacroTransport(playing, playing ? QString() : texts::macroPlayDidNotStart());
    }
}

bool ProgramPlayoutController::macroPrepare(quint64 requestId, quint64 itemId, QString *error)
{
    const std::optional<ProgramTarget> target = d->checkMacroTarget(itemId, error);
    if (!target || !d->checkMacroRequest(requestId, error))
        return false;
    if (d->macroTarget && *d->macroTarget != *target)
        d->endMacroReservation(texts::macroReplaced());
    d->macroTarget = target;
    d->macroPrepareRequest = MacroPrepareRequest{requestId, false, false, 1000};
    d->macroTakePending = false;
    d->requestTarget(target, false);
    if (error)
        error->clear();
    return true;
}

bool ProgramPlayoutController::macroTake(quint64 requestId, quint64 itemId, bool requireReady, bool crossfade,
                                         qint64 durationMs, QString *error)
{
    const std::optional<ProgramTarget> target = d->checkMacroTarget(itemId, error);
    if (!target || !d->checkMacroRequest(requestId, error))
        return false;
    if (crossfade && (durationMs < kMinFadeMs || durationMs > kMaxFadeMs))
        return setError(error, texts::macroCrossfadeRange());
    if (requireReady
        && (!d->preparedTarget || *d->preparedTarget != *target || d->releasePending
            || d->player->standbyStatus() != PreparationStatus::Ready))
        return setError(error, texts::timedTakeNotReady());
    if (d->macroTarget && *d->macroTarget != *target)
        d->endMacroReservation(texts::macroReplaced());
    d->macroTarget = target;
    d->macroPrepareRequest = MacroPrepareRequest{requestId, true, crossfade, durationMs};
    d->macroTakePending = true;
    d->requestTarget(target, false);
    if (error)
        error->clear();
    return true;
}

bool ProgramPlayoutController::macroTransport(quint64 requestId, const QString &op, QString *error)
{
    if (requestId == 0 || d->macroPlayRequest)
        return setError(error, texts::macroOperationPending());
    if (op == QLatin1String("offAir")) {
        d->endMacroReservation(texts::offAirReleasedMacro());
        offAir();
        d->macroPlayRequest = MacroTransportRequest{requestId, op, 0};
    } else if (op == QLatin1String("play") || op == QLatin1String("pause")) {
        if (d->closing || !d->player->isInitialized())
            return setError(error, texts::onAirUnavailable());
        const std::optional<PlaylistItem> item = d->currentItem();
        if (!item || !isSupportedMacroMedia(*item, true))
            return setError(error, texts::macroTransportUnsupported());
        if (op == QLatin1String("play"))
            play();
        else
            pause();
        d->macroPlayRequest = MacroTransportRequest{requestId, op, item->id};
    } else {
        return setError(error, texts::unknownMacroTransport());
    }
    if (error)
        error->clear();
    return true;
}

bool ProgramPlayoutController::macroSetRate(double rate, QString *error)
{
    static constexpr std::array<double, 7> kRates{0.5, 0.75, 1.0, 1.25, 1.5, 2.0, 3.0};
    const std::optional<PlaylistItem> item = d->currentItem();
    const bool listed = std::find(kRates.begin(), kRates.end(), rate) != kRates.end();
    if (!listed || !item || !isSupportedMacroMedia(*item, false))
        return setError(error, texts::macroRateUnsupported());
    setRate(rate);
    if (d->playbackRate != rate)
        return setError(error, texts::macroRateNotApplied());
    if (error)
        error->clear();
    return true;
}

quint64 ProgramPlayoutController::macroTargetItemId() const
{
    return d->macroTarget ? d->macroTarget->itemId : 0;
}

} // namespace tarnix
