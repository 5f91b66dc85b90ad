// Play, pause, seek and rate of the item on air, and the picture levels:
// fades, crossfade and fade to black, stepped on an injected clock.

#include "playout/program_playout_controller_impl.h"
#include "playout/program_playout_texts.h"

#include <algorithm>
#include <cmath>

namespace tarnix {

void ProgramPlayoutController::Impl::applyLevels()
{
    const double level = std::clamp(fadeInFactor * fadeOutFactor, 0.0, 1.0);
    player->setVideoLevel(float(level));
    if (programPanel)
        programPanel->showVideoLevel(level);
    showLevelsOnPlaylist(level);
}

bool ProgramPlayoutController::Impl::crossfadeRunning() const
{
    return crossfadeRamp.isRunning() || player->isCrossfadeActive();
}

void ProgramPlayoutController::Impl::ensureAnimating()
{
    if (options.startTimers && !animationTimer.isActive())
        animationTimer.start();
}

void ProgramPlayoutController::Impl::startCrossfade(qint64 durationMs)
{
    crossfadeRamp.start(0.0, 1.0, durationMs, now());
    ensureAnimating();
}

void ProgramPlayoutController::Impl::finishCrossfade()
{
    crossfadeRamp.stop();
    if (player->isCrossfadeActive())
        player->stopCrossfade(1.0f);
    crossfadeFromItem = 0;
    crossfadeFromLevel = 0.0;
    crossfadeProgress = 1.0;
    applyLevels();
}

void ProgramPlayoutController::Impl::resetFades(const std::optional<PlaylistItem> &item)
{
    fadeInRamp.stop();
    fadeOutRamp.stop();
    fadeOutFactor = 1.0;
    fadeOutStarted = false;
    if (item && item->settings.fadeIn.enabled) {
        fadeInFactor = 0.0;
        fadeInRamp.start(0.0, 1.0, clampFadeMs(item->settings.fadeIn.durationMs), now());
        ensureAnimating();
    } else {
        fadeInFactor = 1.0;
    }
    applyLevels();
}

void ProgramPlayoutController::Impl::finishFtb()
{
    ftbRamp.stop();
    ftbLevel = ftbActive ? 1.0 : 0.0;
    player->setProgramFade(ftbLevel);
    ftbBlinkTimer.stop();
    ftbBlinkOn = ftbActive;
    if (programPanel)
        programPanel->showFtb(ftbActive);
}

bool ProgramPlayoutController::play()
{
    if (d->closing || d->programState.itemId() == 0)
        return false;
    if (d->automatic.suspended) {
        d->automatic.suspended = false;
        if (d->automatic.armed && d->runSuccession())
            return true;
    }
    const std::optional<PlaylistItem> item = d->currentItem();
    if (!item || item->sourceType == PlaylistSourceType::powerpoint || item->sourceType == PlaylistSourceType::pdf)
        return false;
    if (d->stillClock.isValid()) {
        switch (d->player->restoreStill()) {
        case 0:
            d->resumeStill();
            return true;
        case 1:
            d->stillRestorePending = true;
            d->playing = true;
            return true;
        default:
            d->showError(texts::stillRestoreFailed());
            return false;
        }
    }
    const qint64 position = d->player->positionMs();
    const std::optional<qint64> out = d->programState.outPointMs();
    if (d->heldAtEnd || (out && position >= *out)) {
        if (!d->player->seek(d->programState.inPointMs())) {
            d->showError(texts::seekToInFailed());
            return false;
        }
        d->seekHold = d->programState.inPointMs();
        d->seekHoldTicks = kSeekHoldTicks;
        d->resetFades(item);
    }
    if (!d->player->play()) {
        d->showError(texts::playbackFailed());
        return false;
    }
    d->heldAtEnd = false;
    d->programState.setRunning();
    d->playing = true;
    d->updateRepeatDisplay();
    d->updateProgramAudio();
    return true;
}

bool ProgramPlayoutController::pause()
{
    if (d->closing || d->programState.itemId() == 0)
        return false;
    const std::optional<PlaylistItem> item = d->currentItem();
    if (!item || item->sourceType == PlaylistSourceType::powerpoint || item->sourceType == PlaylistSourceType::pdf)
        return false;
    if (d->stillClock.isValid()) {
        const qint64 t = d->now();
        if (d->stillClock.advance(t - std::exchange(d->stillTickMs, t)))
            d->stillEnded = true;
        d->stillClock.pause();
        d->stillRestorePending = false;
    } else if (!d->player->pause()) {
        d->showError(texts::pauseFailed());
        return false;
    }
    d->playing = false;
    d->audio->setProgramActive(false);
    if (item->settings.endMode == PlaylistEndMode::repeat)
        d->automatic.suspended = true;
    d->updateRepeatDisplay();
    return true;
}

bool ProgramPlayoutController::togglePlayback()
{
    return d->playing ? pause() : play();
}

bool ProgramPlayoutController::seek(qint64 ms)
{
    if (d->closing || d->programState.itemId() == 0)
        return false;
    d->seekRequest = ms;
    return true;
}

bool ProgramPlayoutController::setRate(double rate)
{
    const std::optional<PlaylistItem> item = d->currentItem();
    if (d->closing || !item || item->sourceType != PlaylistSourceType::file
        || (item->mediaType != PlaylistMediaType::video && item->mediaType != PlaylistMediaType::audio)
        || !std::isfinite(rate) || rate <= 0.0)
        return false;
    const bool changed = d->player->setRate(rate);
    if (changed)
        d->playbackRate = rate;
    else
        d->showError(texts::rateChangeFailed());
    // The panel shows the rate that plays, changed or not.
    if (d->programPanel)
        d->programPanel->showRate(d->playbackRate, true);
    return changed;
}

void ProgramPlayoutController::toggleFtb()
{
    if (d->closing)
        return;
    d->ftbActive = !d->ftbActive;
    d->ftbRamp.start(d->ftbLevel, d->ftbActive ? 1.0 : 0.0, d->options.ftbDuration.count(), d->now());
    d->ftbBlinkOn = true;
    if (d->programPanel)
        d->programPanel->showFtb(true);
    if (d->options.startTimers)
        d->ftbBlinkTimer.start();
    d->ensureAnimating();
    emit ftbChanged(d->ftbActive);
}

void ProgramPlayoutController::stepAnimations()
{
    const qint64 t = d->now();
    if (d->crossfadeRamp.isRunning()) {
        d->crossfadeProgress = d->crossfadeRamp.step(t);
        d->applyLevels();
        if (!d->player->stopCrossfade(float(d->crossfadeProgress)) || !d->crossfadeRamp.isRunning())
            d->finishCrossfade();
    }
    if (d->fadeInRamp.isRunning()) {
        d->fadeInFactor = d->fadeInRamp.step(t);
        d->applyLevels();
    }
    if (d->fadeOutRamp.isRunning()) {
        d->fadeOutFactor = d->fadeOutRamp.step(t);
        d->applyLevels();
    }
    if (d->ftbRamp.isRunning()) {
        d->ftbLevel = std::clamp(d->ftbRamp.step(t), 0.0, 1.0);
        d->player->setProgramFade(d->ftbLevel);
        if (!d->ftbRamp.isRunning())
            d->finishFtb();
    }
    if (!d->crossfadeRamp.isRunning() && !d->fadeInRamp.isRunning() && !d->fadeOutRamp.isRunning()
        && !d->ftbRamp.isRunning())
        d->animationTimer.stop();
}

} // namespace tarnix
