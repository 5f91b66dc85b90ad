#include "playout/program_playout_controller.h"

#include "playout/program_playout_controller_impl.h"
#include "playout/program_playout_texts.h"

#include "control/control_state_registry.h"
#include "control/controller_operations.h"
#include "playlist/playlist_validation.h"
#include "shell/log_categories.h"

#include <QJsonValue>
#include <QMetaMethod>

#include <algorithm>
#include <chrono>
#include <cmath>

namespace tarnix {

ProgramPlayoutController::Impl::Impl(ProgramPlayoutController *owner, std::unique_ptr<ProgramPlayer> programPlayer,
                                     PlaylistModel *playlistModel, ItemSelection *itemSelection, UserInfoCenter *info,
                                     ProgramPlayoutOptions opts)
    : q(owner), player(std::move(programPlayer)), model(playlistModel), selection(itemSelection), userInfo(info),
      options(std::move(opts)), programState(playlistModel)
{
}

qint64 ProgramPlayoutController::Impl::now() const
{
    if (options.monotonicMs)
        return options.monotonicMs();
    using namespace std::chrono;
    return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

std::optional<PlaylistItem> ProgramPlayoutController::Impl::currentItem() const
{
    if (!model || programState.itemId() == 0)
        return std::nullopt;
    return model->item(programState.itemId());
}

std::optional<ProgramTarget> ProgramPlayoutController::Impl::targetForItem(quint64 itemId) const
{
    const std::optional<PlaylistItem> item = model ? model->item(itemId) : std::nullopt;
    if (!item || item->filePath.isEmpty())
        return std::nullopt;
    ProgramTarget target;
    target.itemId = itemId;
    target.path = item->filePath;
    target.displayName = item->displayName;
    target.sourceType = item->sourceType;
    // The sound that goes with a live source. A camera's mapped audio device
    // comes from the UVC audio mappings once they exist.
    if (isLiveAudio(*item))
        target.mappedAudio = liveAudioDeviceId(item->filePath);
    else if (item->sourceType == PlaylistSourceType::uvc
             && item->filePath.startsWith(QLatin1String("network-video://"), Qt::CaseInsensitive))
        target.mappedAudio = item->filePath;
    // A timed still is asked of the deck whole; its time is the clock's.
    if (item->sourceType == PlaylistSourceType::file && !isTimedStill(*item)) {
        target.inPointMs = item->settings.inPointMs;
        target.outPointMs = item->settings.outPointMs;
    }
    return target;
}

bool ProgramPlayoutController::Impl::isTimedStill(const PlaylistItem &item)
{
    const PlaylistItemSettings &s = item.settings;
    return item.mediaType == PlaylistMediaType::stillImage && s.inPointMs >= 0 && s.outPointMs
           && *s.outPointMs > s.inPointMs;
}

void ProgramPlayoutController::Impl::resumeStill()
{
    if (programState.phase() == PlayoutItemState::Held || stillClock.isAtEnd() || heldAtEnd) {
        stillClock.rewind(true);
        resetFades(currentItem());
    } else {
        stillClock.resume();
    }
    stillTickMs = now();
    stillEnded = false;
    heldAtEnd = false;
    programState.setRunning();
    playing = true;
    updateRepeatDisplay();
}

void ProgramPlayoutController::Impl::serviceStillRestore()
{
    if (!stillRestorePending)
        return;
    switch (player->restoreStill()) {
    case 0:
        stillRestorePending = false;
        resumeStill();
        break;
    case 1:
        break;
    default:
        stillRestorePending = false;
        playing = false;
        showError(texts::stillRestoreFailed());
        break;
    }
}

bool ProgramPlayoutController::Impl::isBgmItem(const PlaylistItem &item) const
{
    return model && model->playlistMode(item.playlistNumber) == PlaylistMode::bgm;
}

qint64 ProgramPlayoutController::Impl::endMsFor(qint64 durationMs) const
{
    if (stillClock.isValid())
        return stillClock.outMs();
    const std::optional<qint64> out = programState.outPointMs();
    if (out && (durationMs < 0 || *out < durationMs))
        return *out;
    return durationMs;
}

void ProgramPlayoutController::Impl::setStatus(const QString &text)
{
    if (statusText == text)
        return;
    statusText = text;
    if (programPanel)
        programPanel->showStatus(text);
    emit q->statusTextChanged(text);
}

bool ProgramPlayoutController::Impl::manualCrossfade() const
{
    return playlistPanel ? playlistPanel->manualCrossfadeEnabled() : manualCrossfadeEnabled;
}

qint64 ProgramPlayoutController::Impl::manualCrossfadeDuration() const
{
    return playlistPanel ? playlistPanel->manualCrossfadeDurationMs() : manualCrossfadeMs;
}

void ProgramPlayoutController::Impl::showTimes()
{
    if (!programPanel)
        return;
    const std::optional<PlaylistItem> item = currentItem();
    programPanel->showTransport(item.has_value(), playing);
    if (!item) {
        programPanel->showTimes(-1, -1, -1, false);
        return;
    }
    if (item->sourceType != PlaylistSourceType::file) {
        programPanel->showTimes(-1, -1, -1, true);
        return;
    }
    const qint64 duration = stillClock.isValid() ? stillClock.outMs() : player->durationMs();
    // The operator's drag of the seek bar is not overwritten. Until the deck
    // reports a position, the item's last played one stands in.
    qint64 position = displayedPositionMs;
    if (position < 0 && model)
        position = model->lastPlayedPosition(item->id).value_or(-1);
    if (programPanel->isSeekDragging())
        position = -1;
    programPanel->showTimes(position, duration, remainingMs, false);
}

void ProgramPlayoutController::Impl::showItemOnPanel(const PlaylistItem &item, const ProgramTarget &target)
{
    if (!programPanel)
        return;
    const PlaylistItemSettings &s = item.settings;
    programPanel->showItemAudio(s.nominalAudioDelayFrames, {s.nominalEqLowTenthsDb / 10.0,
                                                            s.nominalEqMidTenthsDb / 10.0,
                                                            s.nominalEqHighTenthsDb / 10.0});
    programPanel->showOnAirFile(item.displayName, item.filePath);
    const bool rateControl = item.sourceType == PlaylistSourceType::file
                             && (item.mediaType == PlaylistMediaType::video
                                 || item.mediaType == PlaylistMediaType::audio);
    programPanel->showRate(1.0, rateControl);
    if (item.sourceType == PlaylistSourceType::file)
        programPanel->showInOut(stillClock.isValid() ? stillClock.inMs() : target.inPointMs,
                                stillClock.isValid() ? stillClock.outMs() : target.outPointMs.value_or(-1));
    else
        programPanel->showInOut(-1, -1);
    showTimes();
}

void ProgramPlayoutController::Impl::clearPanel()
{
    if (!programPanel)
        return;
    programPanel->showTimes(-1, -1, -1, false);
    programPanel->showInOut(-1, -1);
    programPanel->showRate(1.0, false);
    programPanel->showTransport(false, false);
    programPanel->showOnAirFile(QString(), QString());
    programPanel->showRepeatCount(0);
}

void ProgramPlayoutController::Impl::showLevelsOnPlaylist(double level)
{
    if (!playlistPanel)
        return;
    const quint64 onAir = programState.itemId();
    if (shownLevelItem != 0 && shownLevelItem != onAir && shownLevelItem != crossfadeFromItem)
        playlistPanel->showItemLevel(shownLevelItem, 0.0);
    if (shownFromLevelItem != 0 && shownFromLevelItem != crossfadeFromItem && shownFromLevelItem != onAir)
        playlistPanel->showItemLevel(shownFromLevelItem, 0.0);
    shownLevelItem = onAir;
    shownFromLevelItem = crossfadeFromItem;
    if (onAir != 0)
        playlistPanel->showItemLevel(onAir, crossfadeFromItem != 0 ? level * crossfadeProgress : level);
    if (crossfadeFromItem != 0 && crossfadeFromItem != onAir)
        playlistPanel->showItemLevel(crossfadeFromItem, (1.0 - crossfadeProgress) * crossfadeFromLevel);
}

void ProgramPlayoutController::Impl::showError(const QString &text)
{
    setStatus(text);
    if (userInfo)
        userInfo->post(UserInfoSeverity::Error, QStringLiteral("PROGRAM"), LocalizedText(QString(), {}, text));
}

void ProgramPlayoutController::Impl::post(UserInfoSeverity severity, const QString &key, const QString &fallback,
                                          const QString &detail)
{
    setStatus(detail.isEmpty() ? fallback : detail);
    if (userInfo)
        userInfo->post(severity, QStringLiteral("PROGRAM"),
                       LocalizedText(key, detail.isEmpty() ? QStringList() : QStringList{detail}, fallback), detail);
}

void ProgramPlayoutController::Impl::setCue(quint64 itemId, PlaylistCueState state, const QString &message)
{
    if (model)
        model->setCueState(itemId, state, message);
}

void ProgramPlayoutController::Impl::clearCueMarks()
{
    if (model && model->cueItemId() != 0)
        model->setCueState(0, PlaylistCueState::None);
}

void ProgramPlayoutController::Impl::updateRepeatDisplay()
{
    if (model && programState.itemId() != 0)
        model->setItemRepeatProgress(programState.itemId(), programState.repeatDisplayCount());
    if (programPanel)
        programPanel->showRepeatCount(programState.repeatDisplayCount());
}

void ProgramPlayoutController::Impl::scheduleSelectAfter(quint64 itemId)
{
    if (!autoSelectNextItem || itemId == 0)
        return;
    QTimer::singleShot(0, q, [this, itemId] {
        if (!model || !selection || !model->contains(itemId))
            return;
        const quint64 next = model->itemAt(model->playlistOf(itemId), model->rowOf(itemId) + 1);
        if (next == 0)
            return;
        selectionGuard = true;
        selection->select(next);
        selectionGuard = false;
    });
}

// Tick parts ----------------------------------------------------------------

void ProgramPlayoutController::Impl::updateTickInterval()
{
    const std::optional<PlaylistItem> item = currentItem();
    const bool repeat = item && item->settings.endMode == PlaylistEndMode::repeat;
    const auto interval = repeat ? options.repeatTickInterval : options.tickInterval;
    if (tickTimer.intervalAsDuration() != interval)
        tickTimer.setInterval(interval);
}

void ProgramPlayoutController::Impl::scheduleEndTick(qint64 positionMs, qint64 endMs)
{
    // A few ticks at most per end: an end of stream that is late (or never
    // comes) falls back to the regular tick.
    constexpr int kEndTicksPerEnd = 3;
    if (!options.startTimers || !playing || positionMs < 0 || endMs < 0)
        return;
    const double rate = stillClock.isValid() || !(playbackRate > 0.0) ? 1.0 : playbackRate;
    const qint64 dueMs = qint64(std::ceil(double(endMs - positionMs) / rate)) + options.endTickMargin.count();
    // Each item on air has its own allowance, also one taken already within
    // a tick of its end (a short clip, an Out point just after the In point).
    if (endTickItem != programState.itemId()) {
        endTickItem = programState.itemId();
        endTicksLeft = kEndTicksPerEnd;
    }
    if (dueMs >= tickTimer.interval()) {
        endTicksLeft = kEndTicksPerEnd;
        return;
    }
    if (endTickTimer.isActive() || endTicksLeft <= 0)
        return;
    --endTicksLeft;
    endTickTimer.start(int(std::max<qint64>(0, dueMs)));
}

void ProgramPlayoutController::Impl::applySeekRequest()
{
    const qint64 requested = *std::exchange(seekRequest, std::nullopt);
    if (programState.itemId() == 0)
        return;
    qint64 target = std::max(requested, programState.inPointMs());
    const qint64 endMs = endMsFor(player->durationMs());
    if (endMs >= 0)
        target = std::min(target, endMs);
    if (stillClock.isValid()) {
        const bool wasRunning = stillClock.isRunning();
        stillClock.seek(target);
        if (wasRunning && stillClock.isAtEnd())
            stillEnded = true;
    } else if (!player->seek(target)) {
        showError(texts::seekFailed());
        return;
    }
    seekHold = target;
    seekHoldTicks = kSeekHoldTicks;
    heldAtEnd = false;
    programState.setRunning();
}

void ProgramPlayoutController::Impl::updatePosition(qint64 positionMs)
{
    if (positionMs < 0)
        return;
    qint64 shown = positionMs;
    if (seekHold) {
        if (std::abs(positionMs - *seekHold) > kSeekHoldToleranceMs && seekHoldTicks > 0) {
            shown = *seekHold;
            --seekHoldTicks;
        } else {
            seekHold.reset();
        }
    }
    displayedPositionMs = shown;
}

void ProgramPlayoutController::Impl::checkFadeOut(qint64 positionMs, qint64 endMs)
{
    if (fadeOutStarted || positionMs < 0 || endMs < 0 || !playing || isRepeating())
        return;
    const std::optional<PlaylistItem> item = currentItem();
    if (!item || !item->settings.fadeOut.enabled)
        return;
    const qint64 remaining = endMs - positionMs;
    if (remaining > clampFadeMs(item->settings.fadeOut.durationMs))
        return;
    // A fade out longer than what is left is shortened, never late.
    fadeOutStarted = true;
    fadeOutRamp.stop();
    fadeOutFactor = 1.0;
    fadeOutRamp.start(1.0, 0.0, std::max<qint64>(1, remaining), now());
    ensureAnimating();
}

void ProgramPlayoutController::Impl::holdAtEnd(qint64 endMs)
{
    if (stillClock.isValid())
        stillClock.stopAtEnd();
    else
        player->pause();
    displayedPositionMs = endMs;
    remainingMs = 0;
    playing = false;
    heldAtEnd = true;
}

void ProgramPlayoutController::Impl::updateProgramAudio()
{
    const std::optional<PlaylistItem> item = currentItem();
    audio->setProgramActive(playing && item && item->mediaType != PlaylistMediaType::stillImage);
}

void ProgramPlayoutController::Impl::handleError(const QString &text, bool programAudio)
{
    if (programAudio) {
        // The picture plays on; only the sound has gone.
        finishMacroTransport(false, text);
        if (q->isSignalConnected(QMetaMethod::fromSignal(&ProgramPlayoutController::programAudioOutputError)))
            emit q->programAudioOutputError(text);
        else
            post(UserInfoSeverity::Warning, QStringLiteral("program.warning.audio_output_unavailable"),
                 texts::audioOutputUnavailableFallback(), text);
        return;
    }
    const std::optional<PlaylistItem> item = currentItem();
    if (item && isLiveAudio(*item)) {
        // Marking the item's audio mapping as failed in the model joins here
        // with the live audio inputs.
        q->offAir();
        setStatus(text);
        if (userInfo)
            userInfo->post(UserInfoSeverity::Error, QStringLiteral("Live Audio"),
                           LocalizedText(QStringLiteral("input.audio.error"), {text}, texts::liveAudioErrorFallback()),
                           text);
        return;
    }
    // A UVC item whose device monitor exists hands it the text and goes OFF
    // AIR here; the monitor joins with the UVC sessions. Until then such an
    // error is handled like any other below.
    if (item && item->sourceType == PlaylistSourceType::file && player->isCurrentOffline()) {
        if (model)
            model->markFileUnavailable(item->filePath);
        q->offAir();
        showError(texts::mediaOffline() + text);
        return;
    }
    const bool stopped = player->stop();
    playing = false;
    stillRestorePending = false;
    if (stopped)
        stillClock.pause();
    else
        stillClock.clear();
    if (stopped)
        programState.setHeld();
    else
        programState.setFailed();
    QString message = text;
    if (!stopped)
        message += texts::pipelineAlsoFailedToStop();
    automatic = {};
    post(UserInfoSeverity::Error, QStringLiteral("program.error.gstreamer_playback"),
         QStringLiteral("ON AIR playback error: %1"), message);
    finishMacroTransport(false, message);
}

bool ProgramPlayoutController::Impl::isLiveAudio(const PlaylistItem &item)
{
    return item.sourceType == PlaylistSourceType::uvc && isLiveAudioUri(item.filePath);
}

// The controller ------------------------------------------------------------

ProgramPlayoutController::ProgramPlayoutController(std::unique_ptr<ProgramPlayer> player, PlaylistModel *model,
                                                   ItemSelection *selection, UserInfoCenter *userInfo,
                                                   ControllerOperations *operations, ControlStateRegistry *state,
                                                   ProgramPlayoutOptions options, QObject *parent)
    : QObject(parent), d(std::make_unique<Impl>(this, std::move(player), model, selection, userInfo, std::move(options)))
{
    ProgramAudioController::Options audioOptions = d->options.audio;
    audioOptions.startTimer = d->options.startTimers;
    d->audio = new ProgramAudioController([this] { return d->player->levelSnapshot(); }, audioOptions, this);
    d->audio->setControls(d->player.get());
    BgmPlayoutOptions bgmOptions = d->options.bgm;
    bgmOptions.startTimers = d->options.startTimers;
    if (!bgmOptions.monotonicMs)
        bgmOptions.monotonicMs = d->options.monotonicMs;
    d->bgm = std::make_unique<BgmPlayoutController>(d->player->bgmPlayer(), model, selection, userInfo, operations,
                                                    state, d->audio, std::move(bgmOptions));
    DskPlayoutOptions dskOptions = d->options.dsk;
    dskOptions.startTimers = d->options.startTimers;
    if (!dskOptions.monotonicMs)
        dskOptions.monotonicMs = d->options.monotonicMs;
    d->dsk = std::make_unique<DskPlayoutController>(d->player->dskPlayer(), model, selection, userInfo, operations,
                                                    state, std::move(dskOptions));
    d->tickTimer.setTimerType(Qt::PreciseTimer);
    d->tickTimer.setInterval(d->options.tickInterval);
    connect(&d->tickTimer, &QTimer::timeout, this, &ProgramPlayoutController::tick);
    d->endTickTimer.setTimerType(Qt::PreciseTimer);
    d->endTickTimer.setSingleShot(true);
    connect(&d->endTickTimer, &QTimer::timeout, this, &ProgramPlayoutController::tick);
    d->standbyWatchTimer.setTimerType(Qt::PreciseTimer);
    d->standbyWatchTimer.setInterval(d->options.standbyPollInterval);
    connect(&d->standbyWatchTimer, &QTimer::timeout, this, [this] { d->watchStandby(); });
    d->animationTimer.setTimerType(Qt::PreciseTimer);
    d->animationTimer.setInterval(d->options.animationInterval);
    connect(&d->animationTimer, &QTimer::timeout, this, &ProgramPlayoutController::stepAnimations);
    d->ftbBlinkTimer.setInterval(d->options.ftbBlinkInterval);
    connect(&d->ftbBlinkTimer, &QTimer::timeout, this, [this] {
        d->ftbBlinkOn = !d->ftbBlinkOn;
        if (d->programPanel)
            d->programPanel->showFtb(d->ftbBlinkOn);
    });

    if (selection)
        connect(selection, &ItemSelection::selectionChanged, this,
                [this](quint64, bool byOperator) { d->onSelectionChanged(byOperator); });
    if (model)
        connect(model, &PlaylistModel::modelReset, this, [this] { d->forgetMissingItems(); });
    if (model)
        connect(model, &PlaylistModel::itemSettingsChanged, this, [this](quint64 itemId) {
            if (d->macroTarget && d->macroTarget->itemId == itemId)
                d->endMacroReservation(texts::macroItemSettingsChanged());
        });
    if (model)
        connect(model, &PlaylistModel::itemRemoved, this, [this] { d->forgetMissingItems(); });

    if (operations) {
        using Ops = ControllerOperations;
        operations->bindMember(Ops::TakeSelectedOnAir, this, &ProgramPlayoutController::takeOnAir);
        operations->bindMember(Ops::OffAir, this, &ProgramPlayoutController::offAir);
        operations->bindMember(Ops::ProgramPlay, this, &ProgramPlayoutController::play);
        operations->bindMember(Ops::ProgramPause, this, &ProgramPlayoutController::pause);
        operations->bindMember(Ops::ProgramTogglePlayback, this, &ProgramPlayoutController::togglePlayback);
        operations->bindMember(Ops::ToggleFtb, this, &ProgramPlayoutController::toggleFtb);
        operations->bindMember(Ops::ProgramSeek, this, &ProgramPlayoutController::seek);
        operations->bindMember(Ops::ProgramPlaybackRate, this, &ProgramPlayoutController::setRate);
    }

    if (state) {
        using Field = ControlStateRegistry::Field;
        const auto idOrNull = [](quint64 id) { return id ? QJsonValue(qint64(id)) : QJsonValue(); };
        const auto msOrNull = [](qint64 ms) { return ms >= 0 ? QJsonValue(ms) : QJsonValue(); };
        state->setProvider(Field::SelectedItemId, this, [this, idOrNull] {
            return idOrNull(d->selection ? d->selection->selectedItemId() : 0);
        });
        state->setProvider(Field::OnAirItemId, this, [this, idOrNull] { return idOrNull(onAirItemId()); });
        state->setProvider(Field::CueItemId, this, [this, idOrNull] {
            if (d->preparedTarget)
                return idOrNull(d->preparedTarget->itemId);
            return idOrNull(d->requestedTarget ? d->requestedTarget->itemId : 0);
        });
        state->setProvider(Field::CurrentDeck, this, [this] {
            const int deck = d->player->currentDeck();
            return deck >= 0 ? QJsonValue(deck) : QJsonValue();
        });
        state->setProvider(Field::PositionMs, this, [this, msOrNull] {
            return onAirItemId() ? msOrNull(d->displayedPositionMs) : QJsonValue();
        });
        state->setProvider(Field::RemainingMs, this, [this, msOrNull] {
            return onAirItemId() ? msOrNull(d->remainingMs) : QJsonValue();
        });
        state->setProvider(Field::ProgramPlaying, this, [this] { return QJsonValue(isPlaying()); });
        state->setProvider(Field::FtbActive, this, [this] { return QJsonValue(isFtbActive()); });
        state->setProvider(Field::PlaybackRate, this, [this] { return QJsonValue(playbackRate()); });
    }

    if (d->options.startTimers && d->player->isInitialized())
        d->tickTimer.start();
}

ProgramPlayoutController::~ProgramPlayoutController()
{
    d->closing = true;
    d->finishMacroTransport(false, texts::onAirUnavailable());
    if (d->macroPrepareRequest)
        d->endMacroReservation(texts::onAirUnavailable());
    d->tickTimer.stop();
    d->endTickTimer.stop();
    d->standbyWatchTimer.stop();
    d->animationTimer.stop();
    d->ftbBlinkTimer.stop();
}

void ProgramPlayoutController::shutdown()
{
    // Document navigation stops here too once it exists; the BGM and DSK
    // decks shut down with the player.
    d->closing = true;
    d->bgm->shutdown();
    d->dsk->shutdown();
    d->tickTimer.stop();
    d->endTickTimer.stop();
    d->standbyWatchTimer.stop();
    d->animationTimer.stop();
    d->ftbBlinkTimer.stop();
    d->ftbRamp.stop();
    d->crossfadeRamp.stop();
    d->fadeInRamp.stop();
    d->fadeOutRamp.stop();
    d->player->beginShutdown();
}

bool ProgramPlayoutController::takeOnAir()
{
    if (d->closing || !d->model || !d->player->isInitialized())
        return false;
    d->endMacroReservation(texts::manualTakeReplacedMacro());
    const quint64 selected = d->selection ? d->selection->selectedItemId() : 0;
    const std::optional<PlaylistItem> item = selected ? d->model->item(selected) : std::nullopt;
    if (!item || item->filePath.isEmpty()) {
        d->showError(texts::selectItemToTake());
        return false;
    }
    if (d->isBgmItem(*item)) {
        d->queuedTakeItem.reset();
        d->post(UserInfoSeverity::Warning, QStringLiteral("program.warning.bgm_mode_on_air"),
                texts::bgmModeOnAirFallback());
        return false;
    }
    // The two layers never show the same item.
    if (selected == d->model->dskItemId()) {
        d->queuedTakeItem.reset();
        d->post(UserInfoSeverity::Warning, QStringLiteral("program.warning.item_in_dsk"), texts::itemInDskFallback());
        return false;
    }
    if (!d->allowSameItemRetake && selected == d->programState.itemId()) {
        d->queuedTakeItem.reset();
        return false;
    }
    if (d->automatic.armed)
        d->automatic = {};

    const std::optional<ProgramTarget> target = d->targetForItem(selected);
    const bool failed = d->player->standbyStatus() == PreparationStatus::Failed;
    if (!d->preparedTarget || *d->preparedTarget != *target || failed)
        d->followSelection(failed && item->sourceType == PlaylistSourceType::file);

    if (d->preparedTarget && *d->preparedTarget == *target) {
        switch (d->player->standbyStatus()) {
        case PreparationStatus::Ready:
            return takeTarget(*target, d->manualCrossfade(), d->manualCrossfadeDuration());
        case PreparationStatus::Failed:
            d->showError(d->player->standbyError());
            d->queuedTakeItem.reset();
            return false;
        default:
            d->queuedTakeItem = selected;
            return true;
        }
    }
    if (d->requestedTarget && *d->requestedTarget == *target) {
        d->queuedTakeItem = selected;
        return true;
    }
    d->queuedTakeItem.reset();
    return false;
}

bool ProgramPlayoutController::takeTarget(const ProgramTarget &target, bool crossfade, qint64 durationMs)
{
    if (d->closing || !d->model)
        return false;
    const std::optional<PlaylistItem> item = d->model->item(target.itemId);
    if (item && item->sourceType == PlaylistSourceType::file && d->model->isOffline(target.itemId)) {
        d->queuedTakeItem.reset();
        d->showError(texts::fileNotFound() + item->filePath);
        return false;
    }
    if (item && d->isBgmItem(*item)) {
        d->queuedTakeItem.reset();
        d->post(UserInfoSeverity::Warning, QStringLiteral("program.warning.bgm_mode_on_air"),
                texts::bgmModeOnAirFallback());
        return false;
    }
    if (item && target.itemId == d->model->dskItemId()) {
        d->queuedTakeItem.reset();
        d->post(UserInfoSeverity::Warning, QStringLiteral("program.warning.item_in_dsk"), texts::itemInDskFallback());
        return false;
    }
    if (!item || !d->preparedTarget || *d->preparedTarget != target) {
        d->showError(texts::couldNotTake());
        return false;
    }

    const quint64 oldItem = d->programState.itemId();
    const double oldLevel = std::clamp(d->fadeInFactor * d->fadeOutFactor, 0.0, 1.0);
    // The fade in starts from black and the cut takes the audio at once;
    // both as the operator knows them.
    const float startLevel = item->settings.fadeIn.enabled ? 0.0f : 1.0f;
    const PlaylistItemSettings &s = item->settings;
    d->player->setItemDelayFrames(s.nominalAudioDelayFrames);
    d->player->setItemEq(s.nominalEqLowTenthsDb / 10.0, s.nominalEqMidTenthsDb / 10.0, s.nominalEqHighTenthsDb / 10.0);

    int status = 3;
    if (!d->player->takeStandby(crossfade, startLevel, &status)) {
        // 2: the program audio output has no usable device; 1: its device
        // is being changed. Either way the item on air plays on.
        if (status == 2)
            d->post(UserInfoSeverity::Warning, QStringLiteral("program.warning.audio_output_unavailable"),
                    texts::audioOutputUnavailableFallback());
        else if (status == 1)
            d->post(UserInfoSeverity::Warning, QStringLiteral("program.warning.audio_output_changing"),
                    texts::audioOutputChangingFallback());
        else
            d->showError(texts::couldNotTake());
        d->queuedTakeItem.reset();
        return false;
    }

    // The deck has switched: from here the new item is on the output.
    const quint64 generation = ++d->generation;
    d->seekRequest.reset();
    d->seekHold.reset();
    d->heldAtEnd = false;
    if (!d->programState.load(target.itemId)) {
        d->finishCrossfade();
        d->showError(texts::couldNotRetrieveItem());
        return false;
    }
    const std::optional<PlaylistStartMode> startMode = d->programState.startMode();
    if (!startMode) {
        d->finishCrossfade();
        d->programState.setFailed();
        d->showError(texts::couldNotRetrieveLatestAtStart());
        return false;
    }
    d->stillClock.clear();
    d->stillEnded = false;
    d->stillRestorePending = false;
    if (Impl::isTimedStill(*item))
        d->stillClock.start(s.inPointMs, s.outPointMs, false);
    d->stillTickMs = d->now();
    d->playbackRate = 1.0;
    d->displayedPositionMs = d->stillClock.isValid() ? s.inPointMs : target.inPointMs;
    d->remainingMs = -1;
    d->requestedTarget.reset();
    d->preparedTarget.reset();
    d->queuedTakeItem.reset();
    d->standbyStatusShown = PreparationStatus::Idle;
    d->clearCueMarks();
    d->showItemOnPanel(*item, target);
    d->model->setOnAirItem(target.itemId);
    if (generation != d->generation || d->closing)
        return true;
    emit onAirChanged(true);
    if (generation != d->generation || d->closing)
        return true;
    d->updateRepeatDisplay();

    if (crossfade && oldItem != 0 && oldItem != target.itemId) {
        d->crossfadeFromItem = oldItem;
        d->crossfadeProgress = 0.0;
        d->crossfadeFromLevel = oldLevel;
    } else {
        d->crossfadeFromItem = 0;
        d->crossfadeProgress = 1.0;
    }
    d->resetFades(item);

    if (d->stillClock.isValid()) {
        // Nothing plays on the deck: the still stands and the clock runs.
        if (*startMode == PlaylistStartMode::play)
            d->stillClock.resume();
    } else if (item->sourceType != PlaylistSourceType::file || *startMode == PlaylistStartMode::play) {
        if (!d->player->play()) {
            d->finishCrossfade();
            d->programState.setFailed();
            d->playing = false;
            d->showError(texts::startModePlayFailed());
            return false;
        }
    }
    d->playing = d->stillClock.isValid() ? d->stillClock.isRunning() : d->player->isPlaying();
    d->showTimes();
    if (d->player->isCrossfadeActive())
        d->startCrossfade(clampFadeMs(durationMs));
    d->automatic = {};
    d->updateProgramAudio();
    return true;
}

bool ProgramPlayoutController::offAir()
{
    if (d->closing)
        return false;
    d->endMacroReservation(texts::offAirReleasedMacro());
    if (d->player->offAir() != 2) {
        d->showError(texts::offAirFailed());
        return false;
    }
    ++d->generation;
    const bool wasFtb = d->ftbActive;
    d->ftbActive = false;
    d->ftbRamp.stop();
    d->finishFtb();
    d->fadeInRamp.stop();
    d->fadeOutRamp.stop();
    d->crossfadeRamp.stop();
    d->crossfadeFromItem = 0;
    d->crossfadeProgress = 1.0;
    d->fadeInFactor = 1.0;
    d->fadeOutFactor = 1.0;
    d->fadeOutStarted = false;
    d->seekRequest.reset();
    d->seekHold.reset();
    d->stillClock.clear();
    d->stillEnded = false;
    d->stillRestorePending = false;
    d->requestedTarget.reset();
    d->preparedTarget.reset();
    d->queuedTakeItem.reset();
    d->releasePending = false;
    d->automatic = {};
    const quint64 was = d->programState.itemId();
    d->programState.clear();
    d->standbyStatusShown = PreparationStatus::Idle;
    d->displayedPositionMs = -1;
    d->remainingMs = -1;
    d->lastPositionMs = -1;
    d->lastEndMs = -1;
    d->playing = false;
    d->heldAtEnd = false;
    d->playbackRate = 1.0;
    d->clearCueMarks();
    d->clearPanel();
    d->showLevelsOnPlaylist(0.0);
    if (d->model)
        d->model->setOnAirItem(0);
    d->audio->setProgramActive(false);
    if (wasFtb)
        emit ftbChanged(false);
    if (was != 0)
        emit onAirChanged(false);
    d->scheduleSelectAfter(was);
    d->followSelection();
    return true;
}

bool ProgramPlayoutController::canDeleteItem(quint64 itemId, QString *error) const
{
    QString text;
    if (itemId != 0 && itemId == d->programState.itemId())
        text = texts::cannotDeleteOnAir();
    else if (itemId != 0 && d->model && itemId == d->model->bgmItemId())
        text = LocalizedText(QStringLiteral("program.warning.delete_bgm"), {}, texts::deleteBgmFallback()).toString();
    else if (itemId != 0 && d->model && itemId == d->model->dskItemId())
        text = texts::cannotDeleteDsk();
    if (error)
        *error = text;
    return text.isEmpty();
}

void ProgramPlayoutController::setProgramPanel(ProgramPanelView *panel)
{
    d->programPanel = panel;
    d->audio->setPanel(panel);
    if (!panel)
        return;
    const std::optional<PlaylistItem> item = d->currentItem();
    if (!item) {
        d->clearPanel();
        return;
    }
    if (const std::optional<ProgramTarget> target = d->targetForItem(item->id))
        d->showItemOnPanel(*item, *target);
    d->updateRepeatDisplay();
    d->applyLevels();
}

void ProgramPlayoutController::setPlaylistPanel(PlaylistPanelView *panel)
{
    d->playlistPanel = panel;
    d->shownLevelItem = 0;
    d->shownFromLevelItem = 0;
    if (panel)
        d->applyLevels();
}

void ProgramPlayoutController::setBgmPanel(BgmPanelView *panel)
{
    d->bgm->setPanel(panel);
}

void ProgramPlayoutController::setDskPanel(DskPanelView *panel)
{
    d->dsk->setPanel(panel);
}

void ProgramPlayoutController::setAllowSameItemRetake(bool allow) { d->allowSameItemRetake = allow; }
void ProgramPlayoutController::setAutoSelectNextItem(bool on) { d->autoSelectNextItem = on; }

void ProgramPlayoutController::setManualCrossfade(bool enabled, qint64 durationMs)
{
    d->manualCrossfadeEnabled = enabled;
    d->manualCrossfadeMs = durationMs;
}

void ProgramPlayoutController::tick()
{
    if (d->closing)
        return;
    d->updateTickInterval();
    const qint64 t = d->now();
    if (d->stillClock.advance(t - std::exchange(d->stillTickMs, t)))
        d->stillEnded = true;
    d->player->poll();
    d->bgm->poll();
    d->serviceStandby();
    d->dsk->poll();
    d->serviceMacroTransport();
    if (d->programState.itemId() == 0) {
        // A late end of stream of an item that left the air is dropped.
        d->player->takeEvent(nullptr, nullptr);
        return;
    }
    const std::optional<PlaylistItem> item = d->currentItem();
    const bool live = item && item->sourceType != PlaylistSourceType::file;
    if (d->seekRequest)
        d->applySeekRequest();
    const qint64 position = live ? -1 : d->stillClock.isValid() ? d->stillClock.positionMs() : d->player->positionMs();
    const qint64 endMs = live ? -1 : d->endMsFor(d->player->durationMs());
    d->lastPositionMs = position;
    d->lastEndMs = endMs;
    if (d->isRepeating())
        d->prepareAutomatic(position, endMs);
    if (live) {
        d->displayedPositionMs = -1;
        d->remainingMs = -1;
    } else if (!d->heldAtEnd) {
        d->updatePosition(position);
    }
    if (endMs >= 0 && position >= 0 && !d->heldAtEnd) {
        d->remainingMs = std::max<qint64>(0, endMs - position);
        d->checkFadeOut(position, endMs);
        d->prepareAutomatic(position, endMs);
        d->scheduleEndTick(position, endMs);
    }

    QString text;
    bool programAudio = false;
    const int event = d->player->takeEvent(&text, &programAudio);
    if (event == ProgramPlayer::Error) {
        d->handleError(text, programAudio);
        d->updateProgramAudio();
        d->showTimes();
        return;
    }
    if (d->programState.itemId() == 0)
        return;
    d->serviceStillRestore();
    d->repeatTrigger(position, endMs);
    if (d->stillEnded) {
        d->stillEnded = false;
        d->finishItem(d->stillClock.outMs());
    } else if (event == ProgramPlayer::EndOfStream && !live && !d->stillClock.isValid()) {
        d->finishItem(endMs >= 0 ? endMs : std::max<qint64>(position, 0));
    }
    d->updateProgramAudio();
    if (d->model && !live && d->displayedPositionMs >= 0)
        d->model->setItemLastPlayedPosition(d->programState.itemId(), d->displayedPositionMs);
    // A repeating item is ticked fast for its loop point; its times reach
    // the panel no more often than the regular tick's, which is all a
    // running time needs and spares the panel a repaint every frame.
    const auto interval = d->tickTimer.intervalAsDuration();
    if (interval.count() > 0 && interval < d->options.tickInterval
        && ++d->fastTicksUnshown < d->options.tickInterval / interval)
        return;
    d->fastTicksUnshown = 0;
    d->showTimes();
}

quint64 ProgramPlayoutController::onAirItemId() const { return d->programState.itemId(); }
PlayoutItemState::Phase ProgramPlayoutController::programPhase() const { return d->programState.phase(); }
int ProgramPlayoutController::repeatDisplayCount() const { return d->programState.repeatDisplayCount(); }
std::optional<ProgramTarget> ProgramPlayoutController::requestedTarget() const { return d->requestedTarget; }
std::optional<ProgramTarget> ProgramPlayoutController::preparedTarget() const { return d->preparedTarget; }
std::optional<quint64> ProgramPlayoutController::queuedTakeItem() const { return d->queuedTakeItem; }
AutomaticTarget ProgramPlayoutController::automaticTarget() const { return d->automatic; }
bool ProgramPlayoutController::releasePending() const { return d->releasePending; }
bool ProgramPlayoutController::isCrossfading() const { return d->crossfadeRunning(); }
qint64 ProgramPlayoutController::crossfadeDurationMs() const { return d->crossfadeRamp.durationMs(); }
double ProgramPlayoutController::crossfadeProgress() const { return d->crossfadeProgress; }
bool ProgramPlayoutController::isFtbActive() const { return d->ftbActive; }
double ProgramPlayoutController::ftbLevel() const { return d->ftbLevel; }
double ProgramPlayoutController::fadeInFactor() const { return d->fadeInFactor; }
double ProgramPlayoutController::fadeOutFactor() const { return d->fadeOutFactor; }
double ProgramPlayoutController::playbackRate() const { return d->playbackRate; }
qint64 ProgramPlayoutController::displayedPositionMs() const { return d->displayedPositionMs; }
qint64 ProgramPlayoutController::remainingMs() const { return d->remainingMs; }
bool ProgramPlayoutController::isPlaying() const { return d->playing; }
int ProgramPlayoutController::tickIntervalMs() const { return int(d->tickTimer.interval()); }
QString ProgramPlayoutController::statusText() const { return d->statusText; }
ProgramAudioController *ProgramPlayoutController::audioController() const { return d->audio; }
BgmPlayoutController *ProgramPlayoutController::bgmController() const { return d->bgm.get(); }
DskPlayoutController *ProgramPlayoutController::dskController() const { return d->dsk.get(); }

} // namespace tarnix
