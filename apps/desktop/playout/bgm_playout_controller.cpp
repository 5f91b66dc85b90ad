#include "playout/bgm_playout_controller.h"

#include "playout/bgm_playout_controller_impl.h"

#include "control/control_state_registry.h"
#include "control/controller_operations.h"
#include "playout/deck_texts.h"
#include "shell/log_categories.h"

#include <QJsonValue>

#include <algorithm>
#include <chrono>

namespace tarnix {

namespace {

// A manual fade takes at least a millisecond and at most ten minutes.
constexpr qint64 kMaxFadeMs = 600000;

} // namespace

BgmPlayoutController::Impl::Impl(BgmPlayoutController *owner, BgmPlayer *bgmPlayer, PlaylistModel *playlistModel,
                                 ItemSelection *itemSelection, UserInfoCenter *info,
                                 ProgramAudioController *programAudio, BgmPlayoutOptions opts)
    : q(owner), player(bgmPlayer), model(playlistModel), selection(itemSelection), userInfo(info), audio(programAudio),
      options(std::move(opts)), sequence(playlistModel)
{
}

qint64 BgmPlayoutController::Impl::now() const
{
    if (options.monotonicMs)
        return options.monotonicMs();
    using namespace std::chrono;
    return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

std::optional<PlaylistItem> BgmPlayoutController::Impl::currentItem() const
{
    if (!model || playback.itemId == 0)
        return std::nullopt;
    return model->item(playback.itemId);
}

// Transport ----------------------------------------------------------------

// Starts the loaded item, or takes it on from where it was paused.
bool BgmPlayoutController::Impl::resume()
{
    // A deck that still plays keeps its gain and ramps on from there; one
    // that stands starts from silence.
    const bool deckPlaying = player->isPlaying();
    if (!deckPlaying) {
        stopRamp();
        purpose = NoPurpose;
        setTransport(0.0);
    }
    if (restartFromIn && !deckPlaying && !player->seek(playback.inMs)) {
        // A fresh item stands at its in point already; one at its end must move.
        qCWarning(lcPlayout()).noquote() << "BGM could not return to the In point";
    }
    if (!deckPlaying && !player->play()) {
        setState(State::Error);
        warn(bgm_text::kPlayFailed, player->error());
        return false;
    }
    restartFromIn = false;
    sequence.startMode();
    sequence.setRunning();
    player->setPathMuted(false);
    setMetering(true);
    setState(State::Playing);
    startRamp(1.0, NoPurpose);
    return true;
}

// The meters of the mix follow BGM that plays.
void BgmPlayoutController::Impl::setMetering(bool on)
{
    player->setMetering(on);
    if (audio)
        audio->setBgmActive(on);
}

void BgmPlayoutController::Impl::completePause()
{
    player->pause();
    player->setPathMuted(true);
    setMetering(false);
    setState(State::Paused);
}

bool BgmPlayoutController::Impl::completeStop()
{
    stopPending = false;
    stopRamp();
    purpose = NoPurpose;
    QString error;
    if (!player->release(&error)) {
        stopFailed = true;
        setState(State::Error);
        warn(bgm_text::kStopFailed, error);
        return false;
    }
    stopFailed = false;
    pendingPlay = false;
    restartFromIn = false;
    player->setPathMuted(true);
    setTransport(0.0);
    fadeRamp.stop();
    autoFade = false;
    fadeVolume = 1.0;
    player->setManualFadeVolume(1.0);
    sequence.clear();
    playback = {};
    bgmPlaylistNumber = 0;
    if (model)
        model->setBgmItem(0);
    setMetering(false);
    setState(State::Stopped);
    return true;
}

// The controller ------------------------------------------------------------

BgmPlayoutController::BgmPlayoutController(BgmPlayer *player, PlaylistModel *model, ItemSelection *selection,
                                           UserInfoCenter *userInfo, ControllerOperations *operations,
                                           ControlStateRegistry *state, ProgramAudioController *audio,
                                           BgmPlayoutOptions options, QObject *parent)
    : QObject(parent), d(std::make_unique<Impl>(this, player, model, selection, userInfo, audio, std::move(options)))
{
    d->animationTimer.setTimerType(Qt::PreciseTimer);
    d->animationTimer.setInterval(d->options.animationInterval);
    connect(&d->animationTimer, &QTimer::timeout, this, &BgmPlayoutController::stepAnimations);

    if (model) {
        connect(model, &PlaylistModel::itemSettingsChanged, this,
                [this](quint64 itemId, const PlaylistItemSettings &settings) {
                    if (itemId != 0 && itemId == d->playback.itemId)
                        d->applyItemAudio(settings);
                });
        connect(model, &PlaylistModel::itemMediaAvailabilityChanged, this, [this](quint64 itemId, bool offline) {
            if (offline && itemId != 0 && itemId == d->playback.itemId)
                d->failItem(QString::fromUtf8(deck_text::kMediaOffline), true);
        });
        connect(model, &PlaylistModel::itemRemoved, this, [this](quint64 itemId) {
            if (itemId != 0 && itemId == d->playback.itemId)
                d->failItem(QString(), false);
        });
        connect(model, &PlaylistModel::modelReset, this, [this] {
            if (d->playback.itemId != 0 && !d->model->contains(d->playback.itemId))
                d->failItem(QString(), false);
        });
    }

    if (operations) {
        using Ops = ControllerOperations;
        operations->bindMember(Ops::BgmPlay, this, &BgmPlayoutController::play);
        operations->bindMember(Ops::BgmPause, this, &BgmPlayoutController::pause);
        operations->bindMember(Ops::BgmStop, this, &BgmPlayoutController::stop);
        operations->bindMember(Ops::BgmFadeIn, this, &BgmPlayoutController::fadeIn);
        operations->bindMember(Ops::BgmFadeOut, this, &BgmPlayoutController::fadeOut);
        operations->bindMember(Ops::BgmFadeInConfigured, this, &BgmPlayoutController::fadeInConfigured);
        operations->bindMember(Ops::BgmFadeOutConfigured, this, &BgmPlayoutController::fadeOutConfigured);
        // Pause and the fades act on BGM that plays; a fade's length is not
        // negative.
        const auto playing = [this] { return d->state == State::Playing; };
        const auto playingFor = [this](qint64 ms) { return d->state == State::Playing && ms >= 0; };
        operations->setGuard<>(Ops::BgmPause, this, playing);
        operations->setGuard<qint64>(Ops::BgmFadeIn, this, playingFor);
        operations->setGuard<qint64>(Ops::BgmFadeOut, this, playingFor);
        operations->setGuard<>(Ops::BgmFadeInConfigured, this, playing);
        operations->setGuard<>(Ops::BgmFadeOutConfigured, this, playing);
    }
    if (state) {
        state->setProvider(ControlStateRegistry::Field::BgmItemId, this, [this] {
            return d->playback.itemId ? QJsonValue(qint64(d->playback.itemId)) : QJsonValue();
        });
    }
    if (player) {
        player->setControlVolume(d->controlVolume);
        player->setManualFadeVolume(1.0);
        player->setTransportVolume(0.0);
        player->setPathMuted(true);
    }
}

BgmPlayoutController::~BgmPlayoutController()
{
    d->closing = true;
    d->animationTimer.stop();
}

void BgmPlayoutController::setPanel(BgmPanelView *panel)
{
    if (d->panel)
        disconnect(d->panel, nullptr, this, nullptr);
    d->panel = panel;
    d->lampShown.reset();
    if (!panel)
        return;
    connect(panel, &BgmPanelView::bgmVolumeChanged, this, &BgmPlayoutController::setControlVolume);
    connect(panel, &BgmPanelView::textsExpired, this, [this] { d->showPanel(); });
    setControlVolume(panel->bgmGain());
    d->showPanel();
}

void BgmPlayoutController::setControlVolume(double gain)
{
    if (!std::isfinite(gain))
        return;
    d->controlVolume = std::clamp(gain, 0.0, 2.0);
    if (d->player)
        d->player->setControlVolume(d->controlVolume);
}

void BgmPlayoutController::shutdown()
{
    d->closing = true;
    d->animationTimer.stop();
    d->stopRamp();
    d->fadeRamp.stop();
}

bool BgmPlayoutController::play()
{
    if (d->closing)
        return false;
    if (d->stopFailed) {
        d->warn(bgm_text::kStopFailed);
        return false;
    }
    if (!d->player || !d->player->isAvailable()) {
        d->warn(bgm_text::kAudioOutputUnavailable);
        return false;
    }
    switch (d->player->output()) {
    case BgmPlayer::Output::Changing:
        d->warn(bgm_text::kAudioOutputChanging);
        return false;
    case BgmPlayer::Output::Unavailable:
        d->warn(bgm_text::kAudioOutputUnavailable);
        return false;
    case BgmPlayer::Output::Usable:
        break;
    }
    if (d->playback.itemId != 0) {
        switch (d->state) {
        case State::Loading:
            d->pendingPlay = true;
            return true;
        case State::Playing:
            // A pause or stop on its way is called off.
            if (d->purpose != NoPurpose) {
                d->stopPending = false;
                d->startRamp(1.0, NoPurpose);
            }
            return true;
        case State::Paused:
        case State::Stopped:
        case State::Error:
            return d->resume();
        }
    }
    // Nothing loaded: a fresh start, which tries every item again.
    d->skippedBgmItems.clear();
    const quint64 first = d->firstPlayable();
    if (first == 0) {
        d->warn(bgm_text::kNoPlayableItem);
        return false;
    }
    return d->startFirstOf(first, true);
}

bool BgmPlayoutController::pause()
{
    if (d->closing || d->state != State::Playing)
        return false;
    d->fadeRamp.stop();
    if (d->player->isPlaying() && d->effectiveGain() > kSilentGain) {
        d->startRamp(0.0, PausePurpose);
        return true;
    }
    d->stopRamp();
    d->completePause();
    return true;
}

bool BgmPlayoutController::stop()
{
    if (d->closing || !d->player)
        return false;
    d->fadeRamp.stop();
    d->pendingPlay = false;
    if (!d->stopFailed && d->state == State::Playing && d->player->isPlaying()
        && d->effectiveGain() > kSilentGain) {
        // Down to silence first; the ramp's end completes the stop.
        d->stopPending = true;
        d->startRamp(0.0, StopPurpose);
        return true;
    }
    return d->completeStop();
}

bool BgmPlayoutController::fadeIn(qint64 durationMs)
{
    if (d->closing || d->state != State::Playing || durationMs < 0)
        return false;
    d->startFade(1.0, std::clamp<qint64>(durationMs, 1, kMaxFadeMs), false);
    return true;
}

bool BgmPlayoutController::fadeOut(qint64 durationMs)
{
    if (d->closing || d->state != State::Playing || durationMs < 0)
        return false;
    d->startFade(0.0, std::clamp<qint64>(durationMs, 1, kMaxFadeMs), false);
    return true;
}

bool BgmPlayoutController::fadeInConfigured()
{
    return fadeIn(d->panel ? d->panel->bgmFadeDurationMs(true) : d->options.configuredFadeMs);
}

bool BgmPlayoutController::fadeOutConfigured()
{
    return fadeOut(d->panel ? d->panel->bgmFadeDurationMs(false) : d->options.configuredFadeMs);
}

void BgmPlayoutController::poll()
{
    if (d->closing || !d->player)
        return;
    if (d->state == State::Loading) {
        switch (d->player->status()) {
        case PreparationStatus::Ready:
            d->setState(State::Paused);
            if (std::exchange(d->pendingPlay, false)) {
                switch (d->player->output()) {
                case BgmPlayer::Output::Usable:
                    d->resume();
                    break;
                case BgmPlayer::Output::Changing:
                    d->warn(bgm_text::kAudioOutputChanging);
                    break;
                case BgmPlayer::Output::Unavailable:
                    d->warn(bgm_text::kAudioOutputUnavailable);
                    break;
                }
            }
            break;
        case PreparationStatus::Failed:
            d->failItem(d->player->error(), d->player->isOffline());
            return;
        default:
            break;
        }
    }
    if (d->playback.itemId != 0 && d->state != State::Loading) {
        QString text;
        bool offline = false;
        switch (d->player->takeEvent(&text, &offline)) {
        case BgmPlayer::Error:
            d->failItem(text, offline);
            return;
        case BgmPlayer::EndOfStream:
            d->finishItem();
            break;
        default:
            d->checkItemFade();
            break;
        }
    }
    d->updateLamp();
}

BgmPlayoutController::State BgmPlayoutController::state() const { return d->state; }
quint64 BgmPlayoutController::itemId() const { return d->playback.itemId; }
qint32 BgmPlayoutController::playlistNumber() const { return d->bgmPlaylistNumber; }
QSet<quint64> BgmPlayoutController::skippedItems() const { return d->skippedBgmItems; }
bool BgmPlayoutController::isStopFailed() const { return d->stopFailed; }
bool BgmPlayoutController::isStopPending() const { return d->stopPending; }
int BgmPlayoutController::rampPurpose() const { return d->purpose; }
double BgmPlayoutController::transportVolume() const { return d->rampVolume; }
double BgmPlayoutController::fadeVolume() const { return d->fadeVolume; }
double BgmPlayoutController::controlVolume() const { return d->controlVolume; }
int BgmPlayoutController::repeatsDone() const { return d->sequence.repeatsDone(); }
bool BgmPlayoutController::isActive() const { return d->playback.itemId != 0; }

} // namespace tarnix
