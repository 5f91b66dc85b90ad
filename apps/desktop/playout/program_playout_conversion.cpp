// A PowerPoint conversion's hold on the player: while it runs, no slide show
// is prepared on the standby, and a successor it kept back is looked up
// again when it ends.

#include "playout/program_playout_controller_impl.h"
#include "playout/program_playout_texts.h"

namespace tarnix {

bool ProgramPlayoutController::requestConversionHold(const std::shared_ptr<std::atomic<bool>> &flag, QString *error)
{
    const auto refuse = [error](const QString &text) {
        if (error)
            *error = text;
        return false;
    };
    if (d->closing || !d->model || !flag || d->documentConversionHold)
        return refuse(texts::conversionHoldUnavailable());
    const std::optional<PlaylistItem> onAir = d->currentItem();
    if (onAir && onAir->sourceType == PlaylistSourceType::powerpoint)
        return refuse(LocalizedText(QStringLiteral("powerpoint.import.native_on_air"), {}, texts::nativeOnAirFallback())
                          .toString());
    flag->store(false);
    d->documentConversionHold = true;
    // Only the standby can hold a slide show that is not on air.
    if (d->preparedTarget && d->preparedTarget->sourceType == PlaylistSourceType::powerpoint) {
        if (!d->player->releaseStandby()) {
            d->documentConversionHold = false;
            return refuse(LocalizedText(QStringLiteral("powerpoint.import.release_cue_failed"), {},
                                        texts::releaseCueFailedFallback())
                              .toString()
                          + QLatin1Char('\n') + d->player->standbyError());
        }
        d->conversionRestartNeeded = d->automatic.requested;
        d->queuedTakeItem.reset();
        d->requestedTarget.reset();
        d->preparedTarget.reset();
        d->releasePending = false;
        d->standbyStatusShown = PreparationStatus::Idle;
        d->clearCueMarks();
    }
    if (error)
        error->clear();
    return true;
}

void ProgramPlayoutController::releaseConversionHold()
{
    if (!std::exchange(d->documentConversionHold, false))
        return;
    if (std::exchange(d->conversionRestartNeeded, false)) {
        // The successor that the hold kept back is looked up again.
        const bool armed = d->automatic.armed;
        const bool suspended = d->automatic.suspended;
        d->automatic = {};
        d->automatic.armed = armed;
        d->automatic.suspended = suspended;
        d->prepareAutomatic(d->lastPositionMs, d->lastEndMs);
        if (d->automatic.armed)
            d->runSuccession();
        return;
    }
    d->followSelection();
}

bool ProgramPlayoutController::isConversionHeld() const
{
    return d->documentConversionHold;
}

} // namespace tarnix
