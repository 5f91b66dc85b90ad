#include "edit/edit_session_controller_impl.h"

#include "audio/edit_pfl_feed.h"
#include "edit/edit_texts.h"
#include "shell/log_categories.h"

#include <QDateTime>

#include <algorithm>
#include <cmath>

namespace tarnix {

using edit_text::text;

// The session's pieces ----------------------------------------------------------

qint64 EditSessionController::Impl::now() const
{
    return options.clock ? options.clock() : fallbackClock.elapsed();
}

std::optional<PlaylistItem> EditSessionController::Impl::item() const
{
    return model && itemId ? model->item(itemId) : std::nullopt;
}

void EditSessionController::Impl::status(const QString &text, bool error)
{
    statusText = text;
    statusError = error;
    if (panel)
        panel->showStatus(text, error);
    if (error)
        qCWarning(lcEdit()).noquote() << text;
    emit q->statusChanged(text, error);
}

void EditSessionController::Impl::statusFor(const QString &operation)
{
    status(QStringLiteral("EDIT %1 | %2").arg(operation, itemName));
}

void EditSessionController::Impl::scanLog(const QString &event)
{
    const QString line = QDateTime::currentDateTime().toString(Qt::ISODateWithMs) + QLatin1Char(' ') + event;
    if (options.scanLog)
        options.scanLog(line);
    else
        qCDebug(lcEdit()).noquote() << line;
}

void EditSessionController::Impl::showItemOnPanel()
{
    if (!panel)
        return;
    EditItemView view;
    if (const std::optional<PlaylistItem> loaded = item()) {
        view.itemId = loaded->id;
        view.displayName = loaded->displayName;
        view.sourceType = loaded->sourceType;
        view.mediaType = loaded->mediaType;
        view.settings = loaded->settings;
        view.settingsLocked = model->isLocked(loaded->id);
        if (model->isLockedForPoints(loaded->id)) {
            if (loaded->id == model->onAirItemId()) {
                view.pointLock = EditPointLock::OnAir;
                view.pointLockReason = edit_text::pointsLockedOnAir();
            } else if (loaded->id == model->bgmItemId()) {
                view.pointLock = EditPointLock::Bgm;
                view.pointLockReason = edit_text::pointsLockedBgm();
            } else if (loaded->sourceType != PlaylistSourceType::file) {
                view.pointLock = EditPointLock::FileOnly;
                view.pointLockReason = edit_text::pointsFileOnly();
            } else {
                view.pointLock = EditPointLock::SettingsLocked;
                view.pointLockReason = edit_text::pointsSettingsLocked();
            }
        }
    }
    panel->showItem(view);
}

void EditSessionController::Impl::syncPanel()
{
    if (!panel)
        return;
    panel->showMediaText(itemId ? itemName : QString());
    panel->setTransportEnabled(player && player->isLoaded() && !loading);
    panel->showPlaying(player && player->isPlaying());
    panel->showPfl(pflAvailable && itemId != 0, pflOn);
    showItemOnPanel();
    showPosition();
}

// Every item of every playlist, in tab and row order; the loaded item and
// items still being analysed cannot be chosen.
void EditSessionController::Impl::showGotoEntries()
{
    if (!panel || !model)
        return;
    QList<EditGotoEntry> entries;
    gotoNames.clear();
    for (qint32 playlist : model->playlistNumbers()) {
        const QList<quint64> ids = model->itemIds(playlist);
        quint32 row = 0;
        for (quint64 id : ids) {
            ++row;
            const std::optional<PlaylistItem> entry = model->item(id);
            if (!entry)
                continue;
            EditGotoEntry goto_;
            goto_.itemId = id;
            goto_.playlistNumber = playlist;
            goto_.row = row;
            goto_.displayName = entry->displayName;
            gotoNames.insert(id, entry->displayName);
            goto_.offline = model->isOffline(id);
            goto_.selectable = id != itemId && !model->isPending(id);
            entries << goto_;
        }
    }
    panel->showGotoEntries(entries);
}

void EditSessionController::Impl::showPosition()
{
    if (!panel)
        return;
    const qint64 duration = player ? player->durationMs() : -1;
    panel->showPosition(q->positionMs(), duration);
}

// Loading and unloading -----------------------------------------------------------

bool EditSessionController::Impl::loadFile(const PlaylistItem &loaded)
{
    if (model->isOffline(loaded.id) || loaded.filePath.isEmpty()) {
        status(text("edit.error.file_not_found", "The file to load into EDIT could not be found."), true);
        return false;
    }
    QString error;
    if (!player->load(loaded.filePath, loaded.settings.inPointMs, &error)) {
        qCWarning(lcEdit()).noquote() << error;
        status(text("edit.error.load_failed", "Failed to load the file into EDIT."), true);
        if (panel)
            panel->setTransportEnabled(false);
        return false;
    }
    itemId = loaded.id;
    itemName = loaded.displayName;
    itemPath = loaded.filePath;
    model->setEditItem(itemId);
    scanDirection = 0;
    scanCooldownTicks = 0;
    heldTargetTicks = 0;
    seekTarget.reset();
    frameTarget.reset();
    loading = true;
    status(QStringLiteral("EDIT loading | %1").arg(itemName));
    emit q->loadedItemChanged(itemId);
    syncPanel();
    tickTimer.start();
    keepPace();
    return true;
}

// Documents and live inputs have no file for the player: the item is
// EDIT's for its settings (nominal volume, EQ, delay and, for documents,
// the modes the panel allows). A live input's picture and sound come from
// the shared capture of live sources, which this build does not have: the
// panel shows the live place without a picture.
void EditSessionController::Impl::loadWithoutPlayer(const PlaylistItem &loaded)
{
    itemId = loaded.id;
    itemName = loaded.displayName;
    itemPath = loaded.filePath;
    model->setEditItem(itemId);
    loading = false;
    const bool live = loaded.sourceType == PlaylistSourceType::uvc;
    if (panel) {
        panel->showLivePreview(live);
        panel->showVideoFrame(QImage());
    }
    emit q->loadedItemChanged(itemId);
    syncPanel();
    status(QStringLiteral("EDIT | %1").arg(itemName));
    if (live)
        qCInfo(lcEdit()).noquote() << QStringLiteral("EDIT live preview is unavailable in this build: %1").arg(itemName);
}

void EditSessionController::Impl::finishUnload()
{
    tickTimer.stop();
    unloading = false;
    itemId = 0;
    itemName.clear();
    itemPath.clear();
    loading = false;
    scanDirection = 0;
    seekTarget.reset();
    frameTarget.reset();
    if (model && model->editItemId())
        model->setEditItem(0);
    if (panel) {
        panel->showLivePreview(false);
        panel->showVideoFrame(QImage());
        panel->showLevels(-60, -60, -60, -60);
        panel->showPfl(false, false);
    }
    setPflSource(false);
    syncPanel();
    emit q->pflRequested(false);
    emit q->loadedItemChanged(0);
    status(QStringLiteral("EDIT unloaded."));
    for (const std::function<void()> &done : std::exchange(afterUnload, {}))
        if (done)
            done();
}

// The tick ------------------------------------------------------------------------

void EditSessionController::Impl::pollPlayer()
{
    for (EditPlayer::Event event = player->poll(); event != EditPlayer::Event::None; event = player->poll()) {
        switch (event) {
        case EditPlayer::Event::Loaded:
            loading = false;
            setPflSource(true);
            status(QStringLiteral("EDIT loaded | %1").arg(itemName));
            if (const std::optional<PlaylistItem> loaded = item())
                player->setNominalGain(std::pow(10.0, loaded->settings.nominalVolumeTenthsDb / 200.0));
            if (const std::optional<PlaylistItem> loaded = item()) {
                player->setNominalDelayFrames(loaded->settings.nominalAudioDelayFrames);
                player->setNominalEq(loaded->settings.nominalEqLowTenthsDb / 10.0,
                                     loaded->settings.nominalEqMidTenthsDb / 10.0,
                                     loaded->settings.nominalEqHighTenthsDb / 10.0);
            }
            syncPanel();
            break;
        case EditPlayer::Event::LoadFailed:
            loading = false;
            if (player->offline() && model) {
                model->markFileUnavailable(itemPath);
                status(QStringLiteral("MEDIA OFFLINE"), true);
            } else {
                qCWarning(lcEdit()).noquote() << player->errorText();
                status(text("edit.error.load_failed", "Failed to load the file into EDIT."), true);
            }
            if (panel)
                panel->setTransportEnabled(false);
            break;
        case EditPlayer::Event::Error:
            qCWarning(lcEdit()).noquote() << player->errorText();
            player->pause();
            scanDirection = 0;
            status(text("edit.error.playback_stopped", "Only EDIT playback was stopped"), true);
            if (panel)
                panel->showPlaying(false);
            break;
        case EditPlayer::Event::EndOfStream: {
            const qint64 duration = player->durationMs();
            if (scanDirection == 1 && scanCooldownTicks == 0) {
                scanLog(QStringLiteral("boundary direction=1 pos=%1 duration=%2").arg(duration).arg(duration));
                endScan(true);
            } else if (seekTarget || frameTarget || scanCooldownTicks > 0) {
                scanLog(QStringLiteral("ignore stale eos pos=%1 duration=%2").arg(player->positionMs()).arg(duration));
            } else {
                player->pause();
                if (panel)
                    panel->showPlaying(false);
            }
            break;
        }
        case EditPlayer::Event::Unloaded:
            finishUnload();
            return;
        case EditPlayer::Event::None:
            break;
        }
    }
}

void EditSessionController::Impl::keepPace()
{
    // Scans count ticks for their cool-downs, so they keep the display pace.
    const bool scanning = scanDirection != 0 || scanCooldownTicks > 0 || heldTargetTicks > 0;
    const bool busy = loading || (!scanning && (seekTarget || frameTarget));
    const auto wanted = busy ? options.busyTickInterval : options.tickInterval;
    if (tickTimer.isActive() && tickTimer.intervalAsDuration() != wanted)
        tickTimer.start(wanted);
}

void EditSessionController::Impl::setPflSource(bool active)
{
    if (options.player.pflFeed)
        options.player.pflFeed->setSourceActive(active);
}

void EditSessionController::tick()
{
    if (!d->player)
        return;
    tickOnce();
    d->keepPace();
}

void EditSessionController::tickOnce()
{
    d->pollPlayer();
    if (!d->itemId || d->loading || !d->player->isLoaded())
        return;
    if (d->scanCooldownTicks > 0)
        --d->scanCooldownTicks;
    if (d->scanDirection == -1)
        d->moveRewind();
    // A target is reached once the player stands within half a frame of it.
    const qint64 position = d->player->positionMs();
    const double fps = d->player->frameRate();
    const qint64 tolerance = fps > 0 ? qint64(500.0 / fps) + 1 : 20;
    auto reached = [&](const std::optional<qint64> &target) {
        return target && position >= 0 && std::abs(position - *target) <= tolerance;
    };
    if (d->heldTargetTicks > 0 && --d->heldTargetTicks == 0)
        d->seekTarget.reset();
    if (d->scanDirection == 0 && d->heldTargetTicks == 0 && reached(d->seekTarget))
        d->seekTarget.reset();
    if (reached(d->frameTarget))
        d->frameTarget.reset();
    if (d->scanDirection == 1) {
        const qint64 duration = d->player->durationMs();
        if (d->scanCooldownTicks == 0 && duration > 0 && position >= duration) {
            d->scanLog(QStringLiteral("boundary direction=1 pos=%1 duration=%2").arg(position).arg(duration));
            d->endScan(true);
        }
    }
    if (d->panel) {
        const QImage frame = d->player->takeFrame();
        if (!frame.isNull())
            d->panel->showVideoFrame(frame);
        double levels[4];
        d->player->levels(&levels[0], &levels[1], &levels[2], &levels[3]);
        d->panel->showLevels(levels[0], levels[1], levels[2], levels[3]);
        d->panel->showPlaying(d->player->isPlaying());
    }
    d->showPosition();
}

// Scan ------------------------------------------------------------------------------

void EditSessionController::Impl::moveRewind()
{
    const qint64 position = std::max<qint64>(0, scanAnchorMs - qint64(std::llround(2.0 * double(now() - scanStartedAt))));
    seekTarget = position;
    player->seek(position);
    if (position == 0) {
        scanLog(QStringLiteral("boundary direction=-1 pos=0 duration=%1").arg(player->durationMs()));
        endScan(true);
    }
}

void EditSessionController::Impl::endScan(bool boundary)
{
    const int direction = std::exchange(scanDirection, 0);
    if (!direction)
        return;
    const qint64 position = direction == -1 && seekTarget ? *seekTarget : player->positionMs();
    const bool resume = scanResumePlayback && !boundary;
    bool ok = true;
    if (direction == -1) {
        ok = player->seek(std::max<qint64>(0, position));
        seekTarget = std::max<qint64>(0, position);
        heldTargetTicks = 10;
        if (ok && resume)
            ok = player->play();
    } else {
        const qint64 duration = player->durationMs();
        const qint64 end = duration > 0 ? std::min(position, duration) : position;
        ok = player->setRate(1.0, std::max<qint64>(0, end));
        if (ok)
            ok = resume ? player->play() : player->pause();
        scanCooldownTicks = 8;
    }
    scanLog(QStringLiteral("stop direction=%1 pos=%2 resume=%3 boundary=%4 ok=%5")
                .arg(direction)
                .arg(position)
                .arg(resume ? 1 : 0)
                .arg(boundary ? 1 : 0)
                .arg(ok ? 1 : 0));
    if (!ok) {
        status(text("edit.error.scan_restore", "Failed to restore normal EDIT playback."), true);
        return;
    }
    if (boundary)
        status(text("edit.status.scan_boundary", "Scan boundary"));
    else
        status(direction == -1 ? text("edit.status.rewind_stopped", "Rewind stopped")
                               : text("edit.status.fast_forward_stopped", "Fast-forward stopped"));
}

void EditSessionController::startScanBackward()
{
    if (!d->player || !d->player->isLoaded() || d->loading || d->scanDirection == -1)
        return;
    if (d->scanDirection == 1)
        stopScan();
    const qint64 position = positionMs();
    if (position < 0) {
        d->status(text("edit.error.scan_position", "Could not determine the EDIT scan position."), true);
        return;
    }
    const bool playing = d->player->isPlaying();
    if (!d->player->pause()) {
        d->scanLog(QStringLiteral("start failed direction=-1"));
        d->status(text("edit.error.rewind_prepare", "Failed to prepare EDIT for rewind."), true);
        return;
    }
    d->scanDirection = -1;
    d->scanResumePlayback = playing;
    d->scanAnchorMs = position;
    d->scanStartedAt = d->now();
    d->frameTarget.reset();
    d->scanLog(QStringLiteral("start direction=-1 pos=%1 rate=2 playing=%2 mode=timeline").arg(position).arg(playing ? 1 : 0));
    d->statusFor(text("edit.status.rewind", "Rewind (position only)"));
}

void EditSessionController::startScanForward()
{
    if (!d->player || !d->player->isLoaded() || d->loading || d->scanDirection == 1)
        return;
    if (d->scanDirection == -1)
        stopScan();
    const qint64 position = positionMs();
    if (position < 0) {
        d->status(text("edit.error.scan_position", "Could not determine the EDIT scan position."), true);
        return;
    }
    const bool playing = d->player->isPlaying();
    if (!d->player->setRate(2.0, position) || !d->player->play()) {
        d->scanLog(QStringLiteral("start failed direction=1"));
        d->status(text("edit.error.scan", "EDIT scan failed."), true);
        return;
    }
    d->scanDirection = 1;
    d->scanResumePlayback = playing;
    d->scanAnchorMs = position;
    d->scanStartedAt = d->now();
    d->seekTarget.reset();
    d->frameTarget.reset();
    d->scanLog(QStringLiteral("start direction=1 pos=%1 rate=2 playing=%2 mode=video").arg(position).arg(playing ? 1 : 0));
    d->statusFor(text("edit.status.fast_forward", "Fast-forward"));
}

void EditSessionController::stopScan()
{
    if (d->player)
        d->endScan(false);
}

// Construction ---------------------------------------------------------------------

EditSessionController::EditSessionController(PlaylistModel *model, ItemSelection *selection, const Options &options,
                                             QObject *parent)
    : QObject(parent), d(std::make_unique<Impl>())
{
    d->q = this;
    d->model = model;
    d->selection = selection;
    d->options = options;
    d->fallbackClock.start();
    d->tickTimer.setInterval(options.tickInterval);
    connect(&d->tickTimer, &QTimer::timeout, this, &EditSessionController::tick);

    QString error;
    if (!options.failPlayerCreation)
        d->player = EditPlayer::create(options.player, &error);
    if (!d->player) {
        d->playerUnavailable = true;
        if (!error.isEmpty())
            qCWarning(lcEdit()).noquote() << error;
        d->status(text("edit.error.player_create", "Could not create the EDIT player (ON AIR will continue)"), true);
    }

    d->gotoRebuild.setSingleShot(true);
    d->gotoRebuild.setInterval(0);
    connect(&d->gotoRebuild, &QTimer::timeout, this, [this] { d->showGotoEntries(); });
    if (model) {
        auto rebuild = [this] {
            if (d->panel)
                d->gotoRebuild.start();
        };
        connect(model, &PlaylistModel::itemAdded, this, rebuild);
        connect(model, &PlaylistModel::itemRemoved, this, rebuild);
        connect(model, &PlaylistModel::itemMoved, this, rebuild);
        connect(model, &PlaylistModel::itemMovedToPlaylist, this, rebuild);
        connect(model, &PlaylistModel::itemCopiedToPlaylist, this, rebuild);
        connect(model, &PlaylistModel::itemChanged, this, [this, rebuild](quint64 id) {
            const std::optional<PlaylistItem> changed = d->model->item(id);
            if (changed && changed->displayName != d->gotoNames.value(id))
                rebuild();
        });
        connect(model, &PlaylistModel::itemMediaAvailabilityChanged, this, rebuild);
        connect(model, &PlaylistModel::itemReplaced, this, rebuild);
        connect(model, &PlaylistModel::playlistAdded, this, rebuild);
        connect(model, &PlaylistModel::playlistRemoved, this, rebuild);
        connect(model, &PlaylistModel::playlistOrderChanged, this, rebuild);
        connect(model, &PlaylistModel::modelReset, this, rebuild);
        connect(model, &PlaylistModel::editStateChanged, this, rebuild);
        auto follows = [this](quint64 id) {
            if (id && id == d->itemId)
                d->syncPanel();
        };
        connect(model, &PlaylistModel::itemSettingsChanged, this, [follows](quint64 id) { follows(id); });
        connect(model, &PlaylistModel::itemSettingsLockChanged, this, [follows](quint64 id) { follows(id); });
        connect(model, &PlaylistModel::itemChanged, this, [follows](quint64 id) { follows(id); });
        connect(model, &PlaylistModel::itemReplaced, this, [follows](quint64 id) { follows(id); });
        connect(model, &PlaylistModel::onAirStateChanged, this, [this] { d->showItemOnPanel(); });
        connect(model, &PlaylistModel::itemRemoved, this, [this](quint64 id) {
            if (id == d->itemId)
                beginUnload(id);
        });
        connect(model, &PlaylistModel::modelReset, this, [this] {
            if (d->itemId && !d->model->contains(d->itemId))
                beginUnload(d->itemId);
        });
    }
}

EditSessionController::EditSessionController(PlaylistModel *model, ItemSelection *selection, QObject *parent)
    : EditSessionController(model, selection, Options{}, parent)
{
}

EditSessionController::~EditSessionController()
{
    d->tickTimer.stop();
    // The player's destructor hands a loaded pipeline to its stop thread.
    d->player.reset();
}

void EditSessionController::setPanel(EditPanelView *panel)
{
    if (d->panel)
        d->panel->disconnect(this);
    d->panel = panel;
    if (!panel)
        return;
    connect(panel, &EditPanelView::playRequested, this, &EditSessionController::play);
    connect(panel, &EditPanelView::pflRequested, this, &EditSessionController::pflRequested);
    connect(panel, &EditPanelView::pauseRequested, this, &EditSessionController::pause);
    connect(panel, &EditPanelView::stopRequested, this, &EditSessionController::stopPlayback);
    connect(panel, &EditPanelView::jumpToStartRequested, this, &EditSessionController::jumpToStart);
    connect(panel, &EditPanelView::jumpToInRequested, this, &EditSessionController::jumpToIn);
    connect(panel, &EditPanelView::jumpToOutRequested, this, &EditSessionController::jumpToOut);
    connect(panel, &EditPanelView::jumpToEndRequested, this, &EditSessionController::jumpToEnd);
    connect(panel, &EditPanelView::scanBackwardRequested, this, &EditSessionController::startScanBackward);
    connect(panel, &EditPanelView::scanForwardRequested, this, &EditSessionController::startScanForward);
    connect(panel, &EditPanelView::scanStopRequested, this, &EditSessionController::stopScan);
    connect(panel, &EditPanelView::setInRequested, this, &EditSessionController::setInPoint);
    connect(panel, &EditPanelView::setOutRequested, this, &EditSessionController::setOutPoint);
    connect(panel, &EditPanelView::inPointTimeRequested, this, &EditSessionController::setInPointTime);
    connect(panel, &EditPanelView::outPointTimeRequested, this, &EditSessionController::setOutPointTime);
    connect(panel, &EditPanelView::startModeRequested, this, &EditSessionController::setStartMode);
    connect(panel, &EditPanelView::endModeRequested, this, &EditSessionController::setEndMode);
    connect(panel, &EditPanelView::gotoTargetRequested, this, &EditSessionController::setGotoTarget);
    connect(panel, &EditPanelView::repeatOptionsRequested, this, &EditSessionController::setRepeatOptions);
    connect(panel, &EditPanelView::fadeInRequested, this, &EditSessionController::setFadeIn);
    connect(panel, &EditPanelView::fadeOutRequested, this, &EditSessionController::setFadeOut);
    connect(panel, &EditPanelView::endCrossfadeRequested, this, &EditSessionController::setEndCrossfade);
    connect(panel, &EditPanelView::nominalVolumeRequested, this, &EditSessionController::setNominalVolume);
    connect(panel, &EditPanelView::nominalDelayRequested, this, &EditSessionController::setNominalDelayFrames);
    connect(panel, &EditPanelView::nominalEqRequested, this, &EditSessionController::setNominalEq);
    connect(panel, &EditPanelView::seekRequested, this, &EditSessionController::seek);
    connect(panel, &EditPanelView::frameStepRequested, this, &EditSessionController::stepFrames);
    d->syncPanel();
    d->showGotoEntries();
    if (d->statusText.isEmpty())
        d->status(text("edit.status.idle", "EDIT | Select an item, then click EDIT to load"));
    else
        panel->showStatus(d->statusText, d->statusError);
}

// State ------------------------------------------------------------------------------

quint64 EditSessionController::loadedItemId() const { return d->itemId; }
bool EditSessionController::isLoading() const { return d->loading; }
bool EditSessionController::isLoaded() const { return d->player && d->player->isLoaded() && !d->loading; }
bool EditSessionController::hasItem() const { return d->itemId && !d->loading && !d->unloading; }
bool EditSessionController::isUnloading() const { return d->unloading; }
bool EditSessionController::playerUnavailable() const { return d->playerUnavailable; }
QString EditSessionController::statusText() const { return d->statusText; }
bool EditSessionController::statusIsError() const { return d->statusError; }
bool EditSessionController::isPlaying() const { return d->player && d->player->isPlaying(); }
int EditSessionController::scanDirection() const { return d->scanDirection; }
EditPlayer *EditSessionController::player() const { return d->player.get(); }

std::optional<qint32> EditSessionController::nominalVolumeTenthsDb() const
{
    const std::optional<PlaylistItem> loaded = d->item();
    return loaded ? std::optional<qint32>(loaded->settings.nominalVolumeTenthsDb) : std::nullopt;
}

qint64 EditSessionController::positionMs() const
{
    if (d->frameTarget)
        return *d->frameTarget;
    if (d->seekTarget)
        return *d->seekTarget;
    return d->player ? d->player->positionMs() : -1;
}

qint64 EditSessionController::durationMs() const
{
    return d->player ? d->player->durationMs() : -1;
}

// Load and unload ---------------------------------------------------------------------

void EditSessionController::loadSelectedItem()
{
    loadItem(d->selection ? d->selection->selectedItemId() : 0);
}

void EditSessionController::loadItem(quint64 itemId)
{
    if (d->loading || isUnloading() || !d->model)
        return;
    if (d->playerUnavailable) {
        d->status(text("edit.error.player_unavailable", "The EDIT player is unavailable (ON AIR will continue)"), true);
        return;
    }
    const std::optional<PlaylistItem> wanted = d->model->item(itemId);
    if (!wanted)
        return;
    const bool file = wanted->sourceType == PlaylistSourceType::file;
    if (d->itemId == itemId && (!file || d->player->isLoaded()))
        return;
    if (d->itemId || d->player->isLoaded() || d->player->isLoading()) {
        // One item at a time: the old one goes first, then this one loads.
        beginUnload(0, [this, itemId] { loadItem(itemId); });
        return;
    }
    if (file)
        d->loadFile(*wanted);
    else
        d->loadWithoutPlayer(*wanted);
}

bool EditSessionController::beginUnload(quint64 itemId, std::function<void()> done)
{
    if (itemId && itemId != d->itemId) {
        if (done)
            done();
        return true;
    }
    if (!d->player || (!d->itemId && !d->player->isLoaded() && !d->player->isLoading() && !isUnloading())) {
        if (done)
            done();
        return true;
    }
    if (d->itemId && !d->unloading && !d->player->isLoaded() && !d->player->isLoading()
        && !d->player->hasUnloadToReport()) {
        // Nothing of the item is in the player (a document or a live
        // input): it leaves at once.
        d->afterUnload.push_back(std::move(done));
        d->finishUnload();
        return true;
    }
    d->afterUnload.push_back(std::move(done));
    if (d->unloading)
        return true;
    d->scanDirection = 0;
    if (!d->player->unload() && !d->player->hasUnloadToReport()) {
        d->afterUnload.pop_back();
        d->status(text("edit.error.unload", "Could not unload the item from EDIT."), true);
        return false;
    }
    d->unloading = true;
    d->tickTimer.start();
    return true;
}

void EditSessionController::resetEditor()
{
    beginUnload(0, [this] { d->status(text("edit.status.idle", "EDIT | Select an item, then click EDIT to load")); });
}

// Transport ---------------------------------------------------------------------------

void EditSessionController::play()
{
    if (!isLoaded())
        return;
    if (d->scanDirection)
        stopScan();
    d->frameTarget.reset();
    if (!d->player->play())
        d->status(text("edit.error.play", "EDIT Play failed."), true);
    else if (d->panel)
        d->panel->showPlaying(true);
}

void EditSessionController::pause()
{
    if (!isLoaded())
        return;
    if (d->scanDirection)
        stopScan();
    if (!d->player->pause())
        d->status(text("edit.error.pause", "EDIT Pause failed."), true);
    else if (d->panel)
        d->panel->showPlaying(false);
}

void EditSessionController::stopPlayback()
{
    if (!isLoaded())
        return;
    d->scanDirection = 0;
    if (!d->player->pause() || !d->player->seek(0)) {
        d->status(text("edit.error.stop", "Failed to stop EDIT."), true);
        return;
    }
    d->frameTarget.reset();
    d->seekTarget = 0;
    d->statusFor(QStringLiteral("Stop"));
    d->keepPace();
}

void EditSessionController::seek(qint64 positionMs)
{
    if (!isLoaded())
        return;
    const qint64 duration = d->player->durationMs();
    const qint64 target = std::clamp<qint64>(positionMs, 0, duration > 0 ? duration : std::max<qint64>(0, positionMs));
    d->frameTarget.reset();
    d->heldTargetTicks = 0;
    if (!d->player->seek(target)) {
        d->status(text("edit.error.seek", "EDIT seek failed."), true);
        return;
    }
    d->seekTarget = target;
    d->showPosition();
    d->keepPace();
}

void EditSessionController::jumpToStart()
{
    if (!isLoaded())
        return;
    seek(0);
    d->statusFor(text("edit.status.go_to_start", "Go to start"));
}

void EditSessionController::jumpToIn()
{
    const std::optional<PlaylistItem> loaded = d->item();
    if (!isLoaded() || !loaded)
        return;
    if (!d->player->seek(loaded->settings.inPointMs)) {
        d->status(text("edit.error.go_to_in", "Could not go to the EDIT In point."), true);
        return;
    }
    d->seekTarget = loaded->settings.inPointMs;
    d->keepPace();
    d->statusFor(text("edit.status.go_to_in", "Go to In point"));
}

void EditSessionController::jumpToOut()
{
    const std::optional<PlaylistItem> loaded = d->item();
    if (!isLoaded() || !loaded)
        return;
    const qint64 out = loaded->settings.outPointMs.value_or(d->player->durationMs());
    if (out < 0 || !d->player->seek(out)) {
        d->status(text("edit.error.go_to_out", "Could not go to the EDIT Out point."), true);
        return;
    }
    d->seekTarget = out;
    d->keepPace();
    d->statusFor(text("edit.status.go_to_out", "Go to Out point"));
}

void EditSessionController::jumpToEnd()
{
    if (!isLoaded())
        return;
    const qint64 duration = d->player->durationMs();
    if (duration < 0 || !d->player->seek(duration)) {
        d->status(text("edit.error.end_position", "Could not determine the EDIT end position."), true);
        return;
    }
    d->seekTarget = duration;
    d->keepPace();
    d->statusFor(text("edit.status.go_to_end", "Go to end"));
}

void EditSessionController::stepFrames(qint32 frameCount)
{
    if (!isLoaded() || frameCount == 0)
        return;
    if (d->scanDirection)
        stopScan();
    if (d->player->isPlaying() && !d->player->pause()) {
        d->status(text("edit.error.step_pause", "Failed to pause EDIT for frame stepping."), true);
        return;
    }
    const qint64 base = positionMs();
    if (base < 0) {
        d->status(text("edit.error.frame_position", "Could not determine the EDIT frame position."), true);
        return;
    }
    const double fps = d->player->frameRate() > 0 ? d->player->frameRate() : 25.0;
    const qint64 duration = d->player->durationMs();
    qint64 target = base + qint64(std::llround(frameCount * 1000.0 / fps));
    target = std::max<qint64>(0, duration > 0 ? std::min(target, duration) : target);
    // Kept as the base of the next step, so rapid steps add up without
    // waiting for this seek.
    // Forward from where the player stands, a step needs no seek; a step
    // back, or on from a target not reached yet, does.
    const bool fromPlayer = !d->frameTarget && !d->seekTarget;
    d->frameTarget = target;
    d->seekTarget.reset();
    const bool moved = frameCount > 0 && fromPlayer && target < duration ? d->player->stepForward(frameCount)
                                                                        : d->player->seek(target);
    if (!moved)
        d->status(text("edit.error.seek", "EDIT seek failed."), true);
    if (d->panel)
        d->panel->showPlaying(false);
    d->showPosition();
    d->keepPace();
}

// PFL ----------------------------------------------------------------------------

void EditSessionController::setPflState(bool available, bool on)
{
    d->pflAvailable = available;
    d->pflOn = on;
    if (d->panel)
        d->panel->showPfl(available && d->itemId != 0, on);
}

bool EditSessionController::isPflOn() const { return d->pflOn; }

void EditSessionController::showPflFailure(const QString &message)
{
    d->status(message, true);
    emit pflOutputError(message);
}

void EditSessionController::togglePfl()
{
    if (d->itemId)
        emit pflRequested(!d->pflOn);
}

} // namespace tarnix
