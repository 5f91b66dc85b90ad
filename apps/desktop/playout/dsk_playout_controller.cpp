#include "playout/dsk_playout_controller.h"

#include "playout/dsk_playout_controller_impl.h"

#include "control/control_state_registry.h"
#include "control/controller_operations.h"
#include "shell/localized_text.h"
#include "shell/log_categories.h"

#include <QFileInfo>
#include <QJsonValue>

#include <algorithm>
#include <chrono>

namespace tarnix {

namespace {

DeckSource sourceOf(const ProgramTarget &target)
{
    DeckSource source;
    source.kind = DeckSourceKind::File;
    source.source = target.path;
    source.inMs = target.inPointMs;
    source.outMs = target.outPointMs.value_or(-1);
    return source;
}

} // namespace

using Impl = DskPlayoutController::Impl;

Impl::Impl(DskPlayoutController *owner, DskPlayer *dskPlayer, PlaylistModel *playlistModel,
           ItemSelection *itemSelection, UserInfoCenter *info, DskPlayoutOptions opts)
    : q(owner), player(dskPlayer), model(playlistModel), selection(itemSelection), userInfo(info),
      options(std::move(opts)), item(playlistModel)
{
}

qint64 Impl::now() const
{
    if (options.monotonicMs)
        return options.monotonicMs();
    using namespace std::chrono;
    return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

std::optional<PlaylistItem> Impl::visibleItem() const
{
    return model && visible() ? model->item(item.itemId()) : std::nullopt;
}

QString Impl::itemName(const PlaylistItem &playlistItem) const
{
    return playlistItem.displayName.isEmpty() ? QFileInfo(playlistItem.filePath).fileName() : playlistItem.displayName;
}

void Impl::warn(const dsk_text::Text &text, const QString &detail)
{
    const LocalizedText message(QString::fromLatin1(text.key), {}, QString::fromUtf8(text.english));
    if (userInfo)
        userInfo->post(UserInfoSeverity::Warning, QStringLiteral("PROGRAM"), message, detail);
    else
        qCWarning(lcPlayout()).noquote() << message.toString() << detail;
}

void Impl::fail(const dsk_text::Text &text, const QString &detail, bool showOnPanel)
{
    warn(text, detail);
    if (showOnPanel) {
        kind = DskPanelState::Error;
        errorText = detail.isEmpty() ? LocalizedText(QString::fromLatin1(text.key), {}, QString::fromUtf8(text.english))
                                           .toString()
                                     : detail;
        showPanel();
    }
}

void Impl::showPanel()
{
    DskPanelState state;
    state.kind = kind;
    state.text = kind == DskPanelState::Error ? errorText : name;
    const dsk_text::Text *refusal = nullptr;
    state.selectionReady = selection && targetFor(selection->selectedItemId(), &refusal).has_value();
    state.playing = kind == DskPanelState::Active && player && player->isPlaying();
    state.ending = ending;
    if (shown && *shown == state)
        return;
    shown = state;
    if (panel)
        panel->showDsk(state);
    emit q->stateChanged();
}

std::optional<ProgramTarget> Impl::targetFor(quint64 itemId, const dsk_text::Text **refusal) const
{
    *refusal = &dsk_text::kInvalidItem;
    const std::optional<PlaylistItem> found = model && itemId ? model->item(itemId) : std::nullopt;
    if (!found)
        return std::nullopt;
    if (model->playlistMode(found->playlistNumber) == PlaylistMode::bgm) {
        *refusal = &dsk_text::kBgmMode;
        return std::nullopt;
    }
    // The two layers never show the same item.
    if (found->sourceType != PlaylistSourceType::file || found->filePath.isEmpty() || model->isOffline(itemId)
        || model->isPending(itemId) || itemId == model->onAirItemId())
        return std::nullopt;
    ProgramTarget dskTarget;
    dskTarget.itemId = itemId;
    dskTarget.path = found->filePath;
    dskTarget.displayName = itemName(*found);
    dskTarget.inPointMs = std::max<qint64>(0, found->settings.inPointMs);
    dskTarget.outPointMs = found->settings.outPointMs;
    *refusal = nullptr;
    return dskTarget;
}

bool Impl::startPreparation(const ProgramTarget &dskTarget, bool successor)
{
    QString error;
    if (!player || !player->isAvailable() || !player->prepare(sourceOf(dskTarget), &error)) {
        if (successor) {
            qCWarning(lcPlayout()).noquote() << "DSK successor could not be prepared:" << error;
        } else {
            requestActive = false;
            // A refusal of the range or of a stopping pipeline says so;
            // anything else is the general text with the detail.
            if (error == QLatin1String(dsk_text::kInvalidRange.english))
                fail(dsk_text::kInvalidRange, {}, !visible());
            else if (error == QLatin1String(dsk_text::kStillStopping.english))
                fail(dsk_text::kStillStopping, {}, !visible());
            else
                fail(dsk_text::kPrepareFailed, error, !visible());
        }
        return false;
    }
    target = dskTarget;
    targetIsSuccessor = successor;
    return true;
}

// The preparation's outcome: shown when asked for, told when it failed.
void Impl::serviceTarget()
{
    if (!target || !player)
        return;
    const QString error = player->preparationError();
    if (!error.isEmpty()) {
        const bool successor = targetIsSuccessor;
        target.reset();
        targetIsSuccessor = false;
        if (successor) {
            if (automatic.armed)
                failSuccession(automatic.endMode.value_or(PlaylistEndMode::next), error);
            return;
        }
        requestActive = false;
        fail(dsk_text::kPrepareFailed, error, !visible());
        return;
    }
    if (!player->isPreparationReady())
        return;
    if (targetIsSuccessor) {
        if (automatic.armed)
            runSuccession();
        return;
    }
    if (requestActive)
        show();
    else if (!visible() && kind != DskPanelState::Preparing) {
        kind = DskPanelState::Preparing;
        showPanel();
    }
}

bool Impl::show()
{
    if (!target || !player || !player->isPreparationReady())
        return false;
    // The item may have been edited while it prepared: prepare it again.
    const dsk_text::Text *refusal = nullptr;
    const std::optional<ProgramTarget> live = targetFor(target->itemId, &refusal);
    if (!live || *live != *target) {
        const bool successor = targetIsSuccessor;
        target.reset();
        if (live)
            startPreparation(*live, successor);
        else
            fail(*refusal, {}, !visible());
        return false;
    }
    const ProgramTarget shownTarget = *target;
    const std::optional<PlaylistItem> incoming = model->item(shownTarget.itemId);
    const bool successor = targetIsSuccessor;
    const std::optional<PlaylistItem> outgoing = visibleItem();
    const bool crossfade = successor && outgoing && outgoing->settings.endCrossfade.enabled;

    PlayoutItemState next(model);
    next.load(shownTarget.itemId);
    const bool startPaused = next.startMode() == PlaylistStartMode::pause && !crossfade;
    const float startLevel = incoming->settings.fadeIn.enabled ? 0.0f : 1.0f;
    QString error;
    if (!player->take(startPaused, crossfade, startLevel, &error)) {
        target.reset();
        requestActive = false;
        fail(dsk_text::kDisplayFailed, error, true);
        return false;
    }
    item = next;
    if (startPaused)
        item.setLoaded();
    else
        item.setRunning();
    target.reset();
    targetIsSuccessor = false;
    requestActive = false;
    automatic = {};
    paused = startPaused;
    restart = false;
    autoFadeStarted = false;
    ending = false;
    const PlaylistItemSettings &settings = incoming->settings;
    stillClock.clear();
    if (player->isPreparedStill() && settings.outPointMs && *settings.outPointMs > settings.inPointMs)
        stillClock.start(settings.inPointMs, settings.outPointMs, !startPaused);
    stillTickMs = now();
    model->setDskItem(shownTarget.itemId);
    name = shownTarget.displayName;
    level = startLevel;
    fade.stop();
    if (settings.fadeIn.enabled)
        startFade(0.0, 1.0, clampFadeMs(settings.fadeIn.durationMs));
    if (crossfade)
        transition.start(0.0, 1.0, clampFadeMs(outgoing->settings.endCrossfade.durationMs), now());
    ensureAnimating();
    kind = DskPanelState::Active;
    errorText.clear();
    showPanel();
    return true;
}

void Impl::takeAway()
{
    QString error;
    if (player && !player->hide(&error)) {
        ending = false;
        fail(dsk_text::kOffFailed, error, false);
        showPanel();
        return;
    }
    clearLayer();
    kind = DskPanelState::Idle;
    showPanel();
}

void Impl::clearLayer()
{
    item.clear();
    stillClock.clear();
    target.reset();
    targetIsSuccessor = false;
    automatic = {};
    requestActive = false;
    ending = false;
    paused = false;
    restart = false;
    autoFadeStarted = false;
    fade.stop();
    transition.stop();
    level = 1.0;
    name.clear();
    if (model)
        model->setDskItem(0);
}

void Impl::startFade(double from, double to, qint64 durationMs)
{
    level = from;
    if (player)
        player->setLevel(float(level));
    fade.start(from, to, durationMs, now());
    ensureAnimating();
}

void Impl::ensureAnimating()
{
    if (options.startTimers && (fade.isRunning() || transition.isRunning()) && !animationTimer.isActive())
        animationTimer.start();
}

// The controller --------------------------------------------------------------

DskPlayoutController::DskPlayoutController(DskPlayer *player, PlaylistModel *model, ItemSelection *selection,
                                           UserInfoCenter *userInfo, ControllerOperations *operations,
                                           ControlStateRegistry *state, DskPlayoutOptions options, QObject *parent)
    : QObject(parent), d(std::make_unique<Impl>(this, player, model, selection, userInfo, std::move(options)))
{
    d->animationTimer.setTimerType(Qt::PreciseTimer);
    d->animationTimer.setInterval(d->options.animationInterval);
    connect(&d->animationTimer, &QTimer::timeout, this, &DskPlayoutController::stepAnimations);
    if (selection)
        connect(selection, &ItemSelection::selectionChanged, this, [this] { d->showPanel(); });
    if (model) {
        // A shown item that leaves the playlist leaves the layer too.
        connect(model, &PlaylistModel::itemRemoved, this, [this](quint64 itemId) {
            if (itemId != 0 && itemId == d->item.itemId())
                d->takeAway();
            else if (d->target && d->target->itemId == itemId)
                hide();
        });
    }
    if (operations) {
        using Ops = ControllerOperations;
        operations->bindMember(Ops::ToggleDsk, this, &DskPlayoutController::toggle);
        operations->bindMember(Ops::DskPlay, this, &DskPlayoutController::play);
        operations->bindMember(Ops::DskPause, this, &DskPlayoutController::pause);
    }
    if (state) {
        state->setProvider(ControlStateRegistry::Field::DskItemId, this, [this] {
            return d->item.itemId() ? QJsonValue(qint64(d->item.itemId())) : QJsonValue();
        });
    }
}

DskPlayoutController::~DskPlayoutController()
{
    d->closing = true;
    d->animationTimer.stop();
}

void DskPlayoutController::setPanel(DskPanelView *panel)
{
    d->panel = panel;
    d->shown.reset();
    d->showPanel();
}

bool DskPlayoutController::prepare(quint64 itemId, bool takeWhenReady)
{
    if (d->closing || d->ending)
        return false;
    const dsk_text::Text *refusal = nullptr;
    const std::optional<ProgramTarget> dskTarget = d->targetFor(itemId, &refusal);
    if (!dskTarget) {
        d->fail(*refusal, {}, !d->visible());
        return false;
    }
    if (!d->startPreparation(*dskTarget, false))
        return false;
    d->requestActive = takeWhenReady;
    if (!d->visible()) {
        d->name = dskTarget->displayName;
        d->kind = takeWhenReady ? DskPanelState::Queued : DskPanelState::Preparing;
    }
    d->showPanel();
    d->serviceTarget();
    return true;
}

bool DskPlayoutController::toggle()
{
    if (d->closing || d->ending)
        return false;
    if (d->visible())
        return hide();
    if (d->target && !d->targetIsSuccessor) {
        if (!d->requestActive) {
            // Preparing: the press asks for the show once it is ready.
            d->requestActive = true;
            d->kind = DskPanelState::Queued;
            d->showPanel();
            d->serviceTarget();
            return true;
        }
        return hide();
    }
    return prepare(d->selection ? d->selection->selectedItemId() : 0, true);
}

bool DskPlayoutController::hide()
{
    if (d->closing || d->ending)
        return false;
    if (!d->visible()) {
        // A queued or preparing show is given up.
        QString error;
        if (d->player && !d->player->cancelPreparation(&error)) {
            d->fail(dsk_text::kStopFailed, error, true);
            return false;
        }
        d->clearLayer();
        d->kind = DskPanelState::Idle;
        d->showPanel();
        return true;
    }
    const std::optional<PlaylistItem> shownItem = d->visibleItem();
    if (shownItem && shownItem->settings.fadeOut.enabled && d->level > 0.0) {
        d->ending = true;
        d->transition.stop();
        d->startFade(d->level, 0.0, clampFadeMs(shownItem->settings.fadeOut.durationMs));
        d->showPanel();
        return true;
    }
    d->takeAway();
    return true;
}

bool DskPlayoutController::play()
{
    if (d->closing || d->ending || !d->visible() || !d->player)
        return false;
    const bool fromIn = d->restart || d->item.phase() == PlayoutItemState::Held || d->stillClock.isAtEnd()
                        || (d->item.phase() == PlayoutItemState::Loaded && !d->player->isPlaying()
                            && d->item.startMode() == PlaylistStartMode::play);
    QString error;
    if ((fromIn && !d->returnToIn(true)) || (!fromIn && !d->player->play(&error))) {
        d->warn(dsk_text::kPlayFailed, error);
        return false;
    }
    if (!fromIn)
        d->stillClock.resume();
    d->stillTickMs = d->now();
    d->paused = false;
    d->restart = false;
    d->item.setRunning();
    d->showPanel();
    return true;
}

bool DskPlayoutController::pause()
{
    if (d->closing || d->ending || !d->visible() || !d->player)
        return false;
    // The still's time is counted up to now before it stops.
    d->followTime();
    QString error;
    if (!d->player->pause(&error)) {
        d->warn(dsk_text::kPauseFailed, error);
        return false;
    }
    d->stillClock.pause();
    d->paused = true;
    d->showPanel();
    return true;
}

void DskPlayoutController::poll()
{
    if (d->closing || !d->player)
        return;
    d->player->poll();
    d->serviceTarget();
    QString text;
    switch (d->player->takeEvent(&text)) {
    case DskPlayer::EndOfStream:
        d->finishItem();
        break;
    case DskPlayer::Error:
        // The layer is taken off; the program never waits for it.
        d->takeAway();
        d->fail(dsk_text::kPlaybackFailed, text, true);
        break;
    default:
        d->followTime();
        break;
    }
    d->showPanel();
}

void DskPlayoutController::stepAnimations()
{
    if (d->closing || !d->player) {
        d->animationTimer.stop();
        return;
    }
    const qint64 now = d->now();
    if (d->transition.isRunning()) {
        QString error;
        const double progress = d->transition.step(now);
        if (!d->player->transitionStep(float(progress), &error))
            d->warn(dsk_text::kStopFailed, error);
    }
    if (d->fade.isRunning()) {
        d->level = d->fade.step(now);
        d->player->setLevel(float(d->level));
        if (!d->fade.isRunning() && d->ending)
            d->takeAway();
    }
    if (!d->fade.isRunning() && !d->transition.isRunning())
        d->animationTimer.stop();
}

void DskPlayoutController::shutdown()
{
    d->closing = true;
    d->animationTimer.stop();
}

quint64 DskPlayoutController::itemId() const { return d->item.itemId(); }
DskPlayoutController::PanelKind DskPlayoutController::panelKind() const { return d->kind; }
DskPanelState DskPlayoutController::panelState() const { return d->shown.value_or(DskPanelState{}); }
double DskPlayoutController::level() const { return d->level; }
bool DskPlayoutController::isEnding() const { return d->ending; }
bool DskPlayoutController::isPaused() const { return d->paused; }
bool DskPlayoutController::isRequestActive() const { return d->requestActive; }
quint64 DskPlayoutController::preparingItemId() const { return d->target ? d->target->itemId : 0; }
PlayoutItemState::Phase DskPlayoutController::phase() const { return d->item.phase(); }

} // namespace tarnix
