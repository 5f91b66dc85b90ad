// The BGM player's gains over time (the transport ramp and the fades) and
// what the operator sees of it: the state, the item line, the signal lamp
// and the messages.

#include "playout/bgm_playout_controller_impl.h"

#include "shell/log_categories.h"

#include <QFileInfo>

#include <algorithm>

namespace tarnix {

namespace {

QString textOf(const bgm_text::Text &text, const QStringList &args = {})
{
    return LocalizedText(QString::fromLatin1(text.key), args, QString::fromUtf8(text.english)).toString();
}

} // namespace

// Ramps and fades ------------------------------------------------------------

void BgmPlayoutController::Impl::setTransport(double gain)
{
    rampVolume = std::clamp(gain, 0.0, 1.0);
    if (player)
        player->setTransportVolume(rampVolume);
}

void BgmPlayoutController::Impl::startRamp(double target, int rampPurpose)
{
    purpose = rampPurpose;
    rampTailUntil.reset();
    const double to = std::clamp(target, 0.0, 1.0);
    transitionRamp.start(rampVolume, to, options.rampDuration.count(), now());
    // The mix ramps sample by sample; the steps here keep the count and
    // complete the purpose at the end.
    if (player)
        player->rampTransportVolume(rampVolume, to, options.rampDuration.count());
    ensureAnimating();
}

void BgmPlayoutController::Impl::stopRamp()
{
    transitionRamp.stop();
    rampTailUntil.reset();
}

void BgmPlayoutController::Impl::startFade(double target, qint64 durationMs, bool automatic)
{
    fadeUp = target > fadeVolume;
    autoFade = automatic;
    fadeRamp.start(fadeVolume, target, durationMs, now());
    ensureAnimating();
    showPanel();
}

void BgmPlayoutController::Impl::resetFade()
{
    fadeRamp.stop();
    autoFade = false;
    fadeVolume = 1.0;
    if (player)
        player->setManualFadeVolume(1.0);
}

void BgmPlayoutController::Impl::ensureAnimating()
{
    if (options.startTimers && !animationTimer.isActive())
        animationTimer.start();
}

void BgmPlayoutController::stepAnimations()
{
    if (d->closing || !d->player)
        return;
    const qint64 t = d->now();
    if (d->fadeRamp.isRunning()) {
        d->fadeVolume = std::clamp(d->fadeRamp.step(t), 0.0, 1.0);
        d->player->setManualFadeVolume(d->fadeVolume);
        if (!d->fadeRamp.isRunning())
            d->showPanel();
    }
    if (d->transitionRamp.isRunning() || d->rampTailUntil) {
        if (d->transitionRamp.isRunning()) {
            d->rampVolume = std::clamp(d->transitionRamp.step(t), 0.0, 1.0);
            if (!d->transitionRamp.isRunning())
                d->rampTailUntil = t + d->options.rampTailLimit.count();
        }
        // The mix processes ahead of the clock: what the ramp leads to acts
        // once its audio has passed (or the wait is over), so that nothing
        // cuts its end off.
        if (d->rampTailUntil && (d->player->isTransportRampApplied() || t >= *d->rampTailUntil)) {
            d->rampTailUntil.reset();
            d->setTransport(d->transitionRamp.target());
            switch (std::exchange(d->purpose, int(NoPurpose))) {
            case PausePurpose:
                d->completePause();
                break;
            case StopPurpose:
                d->completeStop();
                break;
            default:
                break;
            }
        }
    }
    if (!d->fadeRamp.isRunning() && !d->transitionRamp.isRunning() && !d->rampTailUntil)
        d->animationTimer.stop();
}

// What the operator sees -----------------------------------------------------

void BgmPlayoutController::Impl::warn(const bgm_text::Text &text, const QString &detail, const QStringList &args)
{
    if (userInfo)
        userInfo->post(UserInfoSeverity::Warning, QStringLiteral("BGM"),
                       LocalizedText(QString::fromLatin1(text.key), args, QString::fromUtf8(text.english)), detail);
    else
        qCWarning(lcPlayout()).noquote() << textOf(text, args) << detail;
}

void BgmPlayoutController::Impl::setState(State next)
{
    state = next;
    showPanel();
    if (next != State::Playing)
        updateLamp();
    emit q->stateChanged();
}

QString BgmPlayoutController::Impl::itemName(const PlaylistItem &item) const
{
    return item.displayName.isEmpty() ? QFileInfo(item.filePath).fileName() : item.displayName;
}

QString BgmPlayoutController::stateText() const
{
    switch (d->state) {
    case State::Stopped:
        return textOf(bgm_text::kStateStopped);
    case State::Loading:
        return textOf(bgm_text::kStateLoading);
    case State::Paused:
        return textOf(bgm_text::kStatePaused);
    case State::Error:
        return textOf(bgm_text::kStateError);
    case State::Playing:
        break;
    }
    if (d->fadeRamp.isRunning())
        return textOf(d->fadeUp ? bgm_text::kStateFadeIn : bgm_text::kStateFadeOut);
    // The player runs on at a control volume of nothing.
    if (d->fadeVolume < kSilentGain)
        return textOf(bgm_text::kStateFadedOut);
    return textOf(bgm_text::kStatePlaying);
}

QString BgmPlayoutController::itemLine() const
{
    const std::optional<PlaylistItem> item = d->currentItem();
    if (!item || !d->model)
        return textOf(bgm_text::kNoItem);
    QString playlist = d->model->playlistName(item->playlistNumber);
    if (playlist.isEmpty())
        playlist = LocalizedText(QStringLiteral("playlist.default_name"), {QString::number(item->playlistNumber)},
                                 QStringLiteral("Playlist %1"))
                       .toString();
    return textOf(bgm_text::kCurrentItem, {QStringLiteral("%1 / %2").arg(playlist, d->itemName(*item))});
}

void BgmPlayoutController::Impl::showPanel()
{
    if (!panel)
        return;
    panel->showBgmState(q->stateText(), playback.itemId != 0, state == State::Playing);
    panel->showBgmItem(q->itemLine());
}

// The lamp lights for a while after each reading with signal, longer after
// a clip; it goes out with the player.
void BgmPlayoutController::Impl::updateLamp()
{
    if (!panel || !player)
        return;
    const qint64 t = now();
    if (state == State::Playing) {
        const LevelReading reading = player->inputLevel();
        if (std::max(reading.leftDb, reading.rightDb) > kLevelFloorDb)
            signalUntil = t + options.signalHold.count();
        if (reading.clipped)
            clipUntil = t + options.clipHold.count();
    } else {
        signalUntil = 0;
        clipUntil = 0;
    }
    const std::pair<bool, bool> lamp{t < signalUntil, t < clipUntil};
    if (lampShown != lamp) {
        lampShown = lamp;
        panel->showBgmSignal(lamp.first, lamp.second);
    }
}

} // namespace tarnix
