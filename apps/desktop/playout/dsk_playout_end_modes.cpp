// What the DSK does when its item comes to an end, and how a next or goto
// successor is prepared ahead on the other DSK deck and taken.

#include "playout/dsk_playout_controller_impl.h"

#include "playlist/playlist_text.h"
#include "shell/log_categories.h"

#include <QSet>

#include <algorithm>

namespace tarnix {

using Impl = DskPlayoutController::Impl;

// Where the item stands against its end: the still clock or the media, the
// item's own fade out, and the successor prepared in the last moments.
void Impl::followTime()
{
    const qint64 nowMs = now();
    const qint64 elapsed = nowMs - stillTickMs;
    stillTickMs = nowMs;
    if (!visible() || paused || ending || !player)
        return;
    const std::optional<PlaylistItem> shownItem = visibleItem();
    if (!shownItem)
        return;
    qint64 positionMs = -1;
    qint64 endMs = -1;
    bool stillEnded = false;
    if (stillClock.isValid()) {
        stillEnded = stillClock.isRunning() && stillClock.advance(elapsed);
        positionMs = stillClock.positionMs();
        endMs = stillClock.outMs();
    } else {
        positionMs = player->positionMs();
        endMs = shownItem->settings.outPointMs.value_or(player->durationMs());
    }
    if (positionMs >= 0 && endMs > 0) {
        const qint64 remaining = std::max<qint64>(0, endMs - positionMs);
        if (shownItem->settings.fadeOut.enabled && !autoFadeStarted && level > 0.0
            && remaining <= clampFadeMs(shownItem->settings.fadeOut.durationMs)) {
            autoFadeStarted = true;
            startFade(level, 0.0, std::max<qint64>(1, remaining));
        }
        const std::optional<PlaylistEndMode> mode = item.endMode();
        if (mode && (*mode == PlaylistEndMode::next || *mode == PlaylistEndMode::goto_)
            && remaining <= options.preparationWindowMs)
            prepareSuccessor(*mode);
    }
    if (stillEnded)
        finishItem();
}

bool Impl::returnToIn(bool play)
{
    const std::optional<PlaylistItem> shownItem = visibleItem();
    const qint64 inMs = shownItem ? std::max<qint64>(0, shownItem->settings.inPointMs) : 0;
    QString error;
    if (!player->seek(inMs) || !(play ? player->play(&error) : player->pause(&error)))
        return false;
    if (stillClock.isValid())
        stillClock.rewind(play);
    stillTickMs = now();
    return true;
}

void Impl::finishItem()
{
    if (!visible() || paused || ending || !player)
        return;
    const std::optional<PlaylistItem> shownItem = visibleItem();
    const std::optional<PlaylistEndMode> mode = item.consumeEndMode();
    qCInfo(lcPlayout()).noquote() << QStringLiteral("AUTO DSK completion item=%1 endMode=%2")
                                         .arg(item.itemId())
                                         .arg(mode ? toText(*mode) : QStringLiteral("none"));
    fade.stop();
    level = shownItem && shownItem->settings.fadeOut.enabled ? 0.0 : 1.0;
    player->setLevel(float(level));
    autoFadeStarted = false;

    switch (mode.value_or(PlaylistEndMode::pause)) {
    case PlaylistEndMode::stop:
        if (!returnToIn(false)) {
            warn(dsk_text::kEndStopFailed, QString::fromUtf8(dsk_text::kStopAtInFailed.english));
            return;
        }
        item.setLoaded();
        paused = true;
        restart = false;
        break;
    case PlaylistEndMode::pause: {
        QString error;
        if (!player->pause(&error)) {
            warn(dsk_text::kEndPauseFailed, error);
            return;
        }
        stillClock.stopAtEnd();
        item.setHeld();
        paused = true;
        restart = true;
        break;
    }
    case PlaylistEndMode::repeat:
        if (!returnToIn(true)) {
            warn(dsk_text::kEndRepeatFailed, QString::fromUtf8(dsk_text::kRepeatFailed.english));
            return;
        }
        item.setRunning();
        if (shownItem && shownItem->settings.fadeIn.enabled)
            startFade(0.0, 1.0, clampFadeMs(shownItem->settings.fadeIn.durationMs));
        break;
    case PlaylistEndMode::next:
    case PlaylistEndMode::goto_:
        automatic.armed = true;
        automatic.endMode = mode;
        if (!target)
            prepareSuccessor(*mode);
        if (!target || !targetIsSuccessor) {
            failSuccession(*mode, {});
            return;
        }
        runSuccession();
        break;
    }
    showPanel();
}

// The successor: a file item only, never the item ON AIR; next walks on
// through the playlist until it finds one.
void Impl::prepareSuccessor(PlaylistEndMode mode)
{
    if (!model || !player || target || player->isTransitionActive())
        return;
    const quint64 onAir = model->onAirItemId();
    quint64 candidate = model->successor(item.itemId(), mode, onAir);
    QSet<quint64> seen;
    const dsk_text::Text *refusal = nullptr;
    std::optional<ProgramTarget> next = candidate ? targetFor(candidate, &refusal) : std::nullopt;
    while (!next && candidate && mode == PlaylistEndMode::next && !seen.contains(candidate)) {
        seen.insert(candidate);
        candidate = model->successor(candidate, mode, onAir);
        next = candidate ? targetFor(candidate, &refusal) : std::nullopt;
    }
    if (!next)
        return;
    automatic.targetItemId = next->itemId;
    automatic.target = next;
    automatic.requested = startPreparation(*next, true);
}

bool Impl::runSuccession()
{
    if (!automatic.armed || !target || !targetIsSuccessor || !player->isPreparationReady())
        return false;
    const std::optional<PlaylistItem> ending = visibleItem();
    const bool crossfade = ending && ending->settings.endCrossfade.enabled;
    qCInfo(lcPlayout()).noquote() << QStringLiteral("AUTO DSK transition target=%1 crossfade=%2")
                                         .arg(target->itemId)
                                         .arg(crossfade ? QStringLiteral("true") : QStringLiteral("false"));
    const PlaylistEndMode mode = automatic.endMode.value_or(PlaylistEndMode::next);
    if (!show()) {
        failSuccession(mode, QString::fromUtf8(dsk_text::kDisplayFailed.english));
        return false;
    }
    return true;
}

void Impl::failSuccession(PlaylistEndMode mode, const QString &detail)
{
    automatic = {};
    if (visible() && player) {
        QString error;
        player->pause(&error);
        stillClock.stopAtEnd();
        item.setHeld();
        paused = true;
        restart = true;
    }
    const bool next = mode == PlaylistEndMode::next;
    if (detail.isEmpty())
        warn(next ? dsk_text::kNoNext : dsk_text::kNoGoto);
    else
        warn(next ? dsk_text::kEndNextFailed : dsk_text::kEndGotoFailed, detail);
    showPanel();
}

} // namespace tarnix
