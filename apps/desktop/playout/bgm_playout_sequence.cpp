// Which BGM item plays: the first one when Play is pressed, the next one by
// the item's end mode, and the one after an item that failed.

#include "playout/bgm_playout_controller_impl.h"

#include "playlist/playlist_text.h"
#include "shell/log_categories.h"

#include <QFileInfo>

#include <cmath>

namespace tarnix {

namespace {

double gainOf(qint32 tenthsDb)
{
    return tenthsDb <= -960 ? 0.0 : std::pow(10.0, double(tenthsDb) / 200.0);
}

} // namespace

bool BgmPlayoutController::Impl::isPlayable(quint64 itemId) const
{
    if (!model || itemId == 0)
        return false;
    const std::optional<PlaylistItem> item = model->item(itemId);
    return item && model->playlistMode(item->playlistNumber) == PlaylistMode::bgm && !model->isOffline(itemId)
           && !model->isPending(itemId) && item->sourceType == PlaylistSourceType::file && !item->filePath.isEmpty();
}

// The selected item when it qualifies; otherwise the first playable item of
// the active playlist when it is a BGM playlist, else of the first BGM
// playlist in tab order that has one.
quint64 BgmPlayoutController::Impl::firstPlayable() const
{
    if (!model)
        return 0;
    const quint64 selected = selection ? selection->selectedItemId() : 0;
    if (isPlayable(selected))
        return selected;
    QList<qint32> playlists = model->playlistNumbers();
    const qint32 active = model->activePlaylistNumber();
    if (playlists.removeOne(active))
        playlists.prepend(active);
    for (qint32 number : playlists) {
        if (model->playlistMode(number) != PlaylistMode::bgm)
            continue;
        for (quint64 id : model->itemIds(number)) {
            if (isPlayable(id) && !skippedBgmItems.contains(id))
                return id;
        }
    }
    return 0;
}

// The next playable item behind the given one in its playlist, wrapping at
// the end (onto the item itself last) and passing over skipped items.
quint64 BgmPlayoutController::Impl::nextPlayable(quint64 afterItemId) const
{
    if (!model || !model->contains(afterItemId))
        return 0;
    const QList<quint64> ids = model->itemIds(model->playlistOf(afterItemId));
    const qsizetype count = ids.size();
    const qsizetype start = ids.indexOf(afterItemId) + 1;
    for (qsizetype step = 0; step < count; ++step) {
        const quint64 candidate = ids.at((start + step) % count);
        if (isPlayable(candidate) && !skippedBgmItems.contains(candidate))
            return candidate;
    }
    return 0;
}

void BgmPlayoutController::Impl::applyItemAudio(const PlaylistItemSettings &settings)
{
    player->setItemVolume(gainOf(settings.nominalVolumeTenthsDb));
    player->setItemEq(settings.nominalEqLowTenthsDb / 10.0, settings.nominalEqMidTenthsDb / 10.0,
                      settings.nominalEqHighTenthsDb / 10.0);
    player->setItemDelayFrames(settings.nominalAudioDelayFrames);
}

bool BgmPlayoutController::Impl::startItem(quint64 itemId)
{
    if (!player || !isPlayable(itemId))
        return false;
    const std::optional<PlaylistItem> item = model->item(itemId);
    DeckSource source;
    source.kind = DeckSourceKind::File;
    source.source = item->filePath;
    source.inMs = item->settings.inPointMs;
    source.outMs = item->settings.outPointMs.value_or(-1);
    // Silence before the deck changes, so the old item does not cut off.
    stopRamp();
    purpose = NoPurpose;
    setTransport(0.0);
    QString error;
    if (!player->prepare(source, &error)) {
        qCWarning(lcPlayout()).noquote() << "BGM could not prepare item" << itemId << error;
        return false;
    }
    sequence.load(itemId);
    playback = {itemId, item->filePath, item->settings.inPointMs, item->settings.outPointMs};
    bgmPlaylistNumber = item->playlistNumber;
    // The item's own fade belongs to the item that had it.
    if (autoFade)
        resetFade();
    pendingPlay = true;
    restartFromIn = true;
    model->setBgmItem(itemId);
    applyItemAudio(item->settings);
    setState(State::Loading);
    return true;
}

// Starts the candidate or, when it cannot start, the items behind it; each
// one that fails is skipped.
bool BgmPlayoutController::Impl::startFirstOf(quint64 candidate, bool reportSkips)
{
    while (candidate != 0) {
        if (startItem(candidate))
            return true;
        skippedBgmItems.insert(candidate);
        if (reportSkips) {
            const std::optional<PlaylistItem> item = model ? model->item(candidate) : std::nullopt;
            warn(bgm_text::kSkippedItem, {}, {item ? itemName(*item) : QString::number(candidate)});
        }
        candidate = nextPlayable(candidate);
    }
    return false;
}

void BgmPlayoutController::Impl::failItem(const QString &text, bool offline)
{
    const quint64 failed = playback.itemId;
    if (failed == 0)
        return;
    qCWarning(lcPlayout()).noquote() << QStringLiteral("BGM item %1 failed:").arg(failed) << text;
    if (offline && model && !playback.path.isEmpty())
        model->markFileUnavailable(playback.path);
    skippedBgmItems.insert(failed);
    const std::optional<PlaylistItem> item = model ? model->item(failed) : std::nullopt;
    warn(bgm_text::kSkippedItem, text, {item ? itemName(*item) : QFileInfo(playback.path).fileName()});
    if (startFirstOf(nextPlayable(failed), true))
        return;
    completeStop();
    warn(bgm_text::kNoPlayableItem);
}

void BgmPlayoutController::Impl::transitionTo(quint64 itemId)
{
    if (itemId != 0 && isPlayable(itemId) && startItem(itemId))
        return;
    completeStop();
    warn(bgm_text::kTransitionFailed);
}

// The deck reached the item's end: the end mode (or, after the last repeat,
// the repeat's end mode) says what follows.
void BgmPlayoutController::Impl::finishItem()
{
    const std::optional<PlaylistItem> item = currentItem();
    const std::optional<PlaylistEndMode> mode = sequence.consumeEndMode();
    const PlaylistEndMode action = mode.value_or(PlaylistEndMode::stop);
    qCInfo(lcPlayout()).noquote()
        << QStringLiteral("AUTO BGM completion item=%1 endMode=%2").arg(playback.itemId).arg(toText(action));
    if (model && item && item->settings.endMode == PlaylistEndMode::repeat)
        model->setItemRepeatProgress(playback.itemId, sequence.repeatDisplayCount());

    switch (action) {
    case PlaylistEndMode::stop:
        // The deck stands at its end: there is nothing left to ramp down.
        stopRamp();
        completeStop();
        return;
    case PlaylistEndMode::pause:
        fadeRamp.stop();
        stopRamp();
        restartFromIn = true;
        completePause();
        return;
    case PlaylistEndMode::repeat:
        stopRamp();
        purpose = NoPurpose;
        setTransport(0.0);
        if (player->seek(playback.inMs) && player->play()) {
            setState(State::Playing);
            startRamp(1.0, NoPurpose);
            return;
        }
        if (!player->isPlaying()) {
            restartFromIn = true;
            completePause();
            return;
        }
        setState(State::Error);
        warn(bgm_text::kPlayFailed, player->error());
        return;
    case PlaylistEndMode::next:
        transitionTo(nextPlayable(playback.itemId));
        return;
    case PlaylistEndMode::goto_:
        transitionTo(item ? item->settings.gotoTargetItemId : 0);
        return;
    }
}

// The item's own fade out: when what is left to play has fallen to the
// fade's length, the manual fade runs down over exactly what is left.
void BgmPlayoutController::Impl::checkItemFade()
{
    if (state != State::Playing || fadeRamp.isRunning() || autoFade)
        return;
    const std::optional<PlaylistItem> item = currentItem();
    if (!item || !item->settings.fadeOut.enabled || sequence.endMode() == PlaylistEndMode::repeat)
        return;
    const qint64 position = player->positionMs();
    const qint64 duration = player->durationMs();
    qint64 end = duration;
    if (playback.outMs && (duration < 0 || *playback.outMs < duration))
        end = *playback.outMs;
    if (position < 0 || end < 0)
        return;
    const qint64 remaining = end - position;
    if (remaining > item->settings.fadeOut.durationMs)
        return;
    startFade(0.0, std::max<qint64>(1, remaining), true);
}

} // namespace tarnix
