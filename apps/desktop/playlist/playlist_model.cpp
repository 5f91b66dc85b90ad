#include "playlist/playlist_model.h"

#include "playlist/macro_json.h"
#include "playlist/playlist_document.h"
#include "playlist/playlist_document_check.h"
#include "playlist/playlist_model_impl.h"
#include "playlist/playlist_validation.h"

#include <QFileInfo>
#include <QUuid>

#include <algorithm>
#include <limits>

namespace tarnix {
namespace {

using namespace playlist_document_limits;

constexpr quint64 kHighestId = std::numeric_limits<quint64>::max();
constexpr qint32 kHighestPlaylistNumber = std::numeric_limits<qint32>::max();

bool fail(QString *error, const QString &text)
{
    if (error)
        *error = text;
    return false;
}

} // namespace

bool fitsDocumentString(const QString &text)
{
    return text.size() <= maxStringChars;
}

PlaylistModel::Impl::Impl(PlaylistModel *q, PlaylistModelOptions options)
    : q(q)
    , documentId(QUuid::createUuid().toString(QUuid::WithoutBraces))
{
    playlists.insert(1, Playlist{});
    playlistOrder.append(1);
    order.insert(1, {});
    availability = new MediaAvailabilityMonitor(q, std::move(options.isFile), options.scanInterval,
                                                options.scanPollInterval);
}

void PlaylistModel::Impl::renumber(qint32 playlistNumber, int fromIndex)
{
    const QList<quint64> &ids = order[playlistNumber];
    for (int i = std::max(0, fromIndex); i < ids.size(); ++i) {
        PlaylistItem &item = items[ids[i]];
        item.position = static_cast<quint32>(i + 1);
        item.playlistNumber = playlistNumber;
    }
}

void PlaylistModel::Impl::emitCountIfActive(std::initializer_list<qint32> touched)
{
    if (std::find(touched.begin(), touched.end(), activePlaylistNumber) != touched.end())
        emit q->countChanged(order.value(activePlaylistNumber).size());
}

qint32 PlaylistModel::Impl::targetPlaylist(qint32 requested) const
{
    return playlists.contains(requested) ? requested : activePlaylistNumber;
}

bool PlaylistModel::Impl::isAcceptableRequest(const PlaylistItemRequest &r) const
{
    PlaylistItem candidate = itemFromRequest(r, 1, 0);
    return fitsDocumentString(candidate.filePath) && fitsDocumentString(candidate.displayName)
        && isAddableItem(candidate) && isValidItemSettings(candidate.settings)
        && isValidItemColor(r.color) && isValidMediaType(r.mediaType)
        && isValidPowerPointMode(r.powerPointMode, r.sourceType, r.mediaType)
        && (r.settings.gotoTargetItemId == 0 || items.contains(r.settings.gotoTargetItemId));
}

PlaylistItem PlaylistModel::Impl::itemFromRequest(const PlaylistItemRequest &r, quint64 id,
                                                  qint32 playlistNumber) const
{
    PlaylistItem item;
    item.id = id;
    item.playlistNumber = playlistNumber;
    item.filePath = r.filePath;
    item.displayName = r.displayName;
    item.sourceType = r.sourceType;
    item.mediaType = r.mediaType;
    item.powerPointMode = r.powerPointMode;
    item.color = r.color;
    item.separatorBelow = r.separatorBelow;
    item.settings = r.settings;
    if (item.sourceType == PlaylistSourceType::uvc) {
        item.settings.startMode = PlaylistStartMode::play;
    } else if (!item.filePath.isEmpty()) {
        const QFileInfo info(item.filePath);
        item.filePath = info.absoluteFilePath();
        if (item.displayName.isEmpty())
            item.displayName = info.fileName();
    }
    return item;
}

void PlaylistModel::Impl::insertItem(PlaylistItem item, int index)
{
    QList<quint64> &ids = order[item.playlistNumber];
    index = std::clamp(index, 0, int(ids.size()));
    ids.insert(index, item.id);
    const qint32 number = item.playlistNumber;
    items.insert(item.id, std::move(item));
    renumber(number, index);
}

void PlaylistModel::Impl::clearReferencesTo(quint64 itemId)
{
    for (auto it = items.begin(); it != items.end(); ++it) {
        if (it->settings.gotoTargetItemId != itemId)
            continue;
        it->settings.gotoTargetItemId = 0;
        emit q->itemChanged(it.key());
        emit q->itemSettingsChanged(it.key(), it->settings);
    }
    if (cueItem == itemId) {
        cueItem = 0;
        cueState = PlaylistCueState::None;
        cueMessage.clear();
        emit q->cueStateChanged(itemId, 0);
    }
    if (dskItem == itemId) {
        dskItem = 0;
        emit q->dskStateChanged(itemId, 0);
    }
    if (editItem == itemId) {
        editItem = 0;
        emit q->editStateChanged(itemId, 0);
    }
}

PlaylistDocument PlaylistModel::Impl::snapshot() const
{
    PlaylistDocument document;
    document.playlists.clear();
    document.items.reserve(items.size());
    for (qint32 number : playlistOrder) {
        document.playlists.append(playlists.value(number));
        for (quint64 id : order.value(number))
            document.items.append(items.value(id));
    }
    document.activePlaylistNumber = activePlaylistNumber;
    document.manualCrossfadeDurationMs = manualCrossfadeDurationMs;
    document.documentId = documentId;
    document.macros = macros;
    document.nextItemId = nextItemId;
    return document;
}

bool PlaylistModel::Impl::documentFitsBudgets(const QList<MacroDefinition> &newMacros, QString *error) const
{
    PlaylistDocument document = snapshot();
    document.macros = newMacros;
    return serializeCheckedPlaylistDocument(document, error).has_value();
}

PlaylistModel::PlaylistModel(QObject *parent, PlaylistModelOptions options)
    : QObject(parent)
    , d(std::make_unique<Impl>(this, std::move(options)))
{
    registerPlaylistMetaTypes();
    qRegisterMetaType<PlaylistPendingState>();
}

PlaylistModel::~PlaylistModel() = default;

// ---- items ---------------------------------------------------------------

QList<quint64> PlaylistModel::addItems(const QList<PlaylistItemRequest> &requests)
{
    QList<quint64> ids;
    QSet<qint32> touched;
    for (const PlaylistItemRequest &request : requests) {
        if (d->nextItemId == kHighestId || d->totalItems() >= maxItems || !d->isAcceptableRequest(request))
            continue;
        const qint32 number = d->targetPlaylist(request.targetPlaylistNumber);
        const quint64 id = d->nextItemId++;
        d->insertItem(d->itemFromRequest(request, id, number), d->order.value(number).size());
        if (request.pending) {
            PlaylistPendingState state = *request.pending;
            state.progress = std::clamp(state.progress, 0, 1000);
            d->pending.insert(id, state);
        }
        d->availability->bumpGeneration();
        touched.insert(number);
        ids.append(id);
        emit itemAdded(id);
    }
    if (touched.contains(d->activePlaylistNumber))
        emit countChanged(count());
    return ids;
}

QList<quint64> PlaylistModel::addItemsAtomic(const QList<PlaylistItemRequest> &requests)
{
    if (requests.isEmpty() || d->totalItems() + requests.size() > maxItems
        || kHighestId - d->nextItemId < static_cast<quint64>(requests.size())) {
        return {};
    }
    for (const PlaylistItemRequest &request : requests) {
        if (!d->isAcceptableRequest(request))
            return {};
    }
    return addItems(requests);
}

quint64 PlaylistModel::addDocumentItem(const QString &path, qint32 playlistNumber, PlaylistSourceType sourceType)
{
    if (path.isEmpty() || !d->playlists.contains(playlistNumber) || sourceType == PlaylistSourceType::uvc)
        return 0;
    PlaylistItemRequest request;
    request.filePath = path;
    request.sourceType = sourceType;
    request.targetPlaylistNumber = playlistNumber;
    request.pending = PlaylistPendingState{static_cast<qint32>(PlaylistPendingPhase::AnalysisWaiting), 0};
    if (sourceType != PlaylistSourceType::file) {
        request.settings.startMode = PlaylistStartMode::play;
        request.settings.endMode = PlaylistEndMode::pause;
    }
    if (sourceType == PlaylistSourceType::powerpoint) {
        request.mediaType = PlaylistMediaType::presentation;
        request.powerPointMode = PlaylistPowerPointMode::native;
    } else if (sourceType == PlaylistSourceType::pdf) {
        request.mediaType = PlaylistMediaType::pdf;
        request.displayName = QFileInfo(path).completeBaseName();
    }
    const QList<quint64> ids = addItems({request});
    return ids.isEmpty() ? 0 : ids.first();
}

bool PlaylistModel::removeItem(quint64 itemId)
{
    const auto it = d->items.constFind(itemId);
    if (it == d->items.cend() || itemId == d->onAirItem || itemId == d->bgmItem)
        return false;
    const qint32 number = it->playlistNumber;
    const int previousRow = static_cast<int>(it->position);
    d->order[number].removeAt(previousRow - 1);
    d->items.erase(it);
    d->renumber(number, previousRow - 1);
    d->durations.remove(itemId);
    d->pending.remove(itemId);
    d->offline.remove(itemId);
    d->repeatProgress.remove(itemId);
    d->lastPlayedPositions.remove(itemId);
    d->locked.remove(itemId);
    d->availability->bumpGeneration();
    d->clearReferencesTo(itemId);
    emit itemRemoved(itemId, previousRow);
    d->emitCountIfActive({number});
    return true;
}

bool PlaylistModel::moveItem(quint64 itemId, int row)
{
    const auto it = d->items.constFind(itemId);
    if (it == d->items.cend())
        return false;
    const qint32 number = it->playlistNumber;
    const int previousRow = static_cast<int>(it->position);
    QList<quint64> &ids = d->order[number];
    if (row < 1 || row > ids.size() || row == previousRow)
        return false;
    ids.move(previousRow - 1, row - 1);
    d->renumber(number, std::min(row, previousRow) - 1);
    emit itemMoved(itemId, previousRow, row);
    return true;
}

bool PlaylistModel::moveItemToPlaylist(quint64 itemId, qint32 playlistNumber, int row)
{
    const auto it = d->items.constFind(itemId);
    if (it == d->items.cend() || !d->playlists.contains(playlistNumber))
        return false;
    const qint32 from = it->playlistNumber;
    const int previousRow = static_cast<int>(it->position);
    if (from == playlistNumber) {
        // `row` counts insertion gaps: the gap behind the item itself is
        // where it already stands.
        return moveItem(itemId, row > previousRow ? row - 1 : row);
    }
    QList<quint64> &target = d->order[playlistNumber];
    if (row < 1 || row > target.size() + 1)
        return false;
    d->order[from].removeAt(previousRow - 1);
    d->renumber(from, previousRow - 1);
    target.insert(row - 1, itemId);
    d->renumber(playlistNumber, row - 1);
    emit itemMovedToPlaylist(itemId, from, previousRow, playlistNumber, row);
    d->emitCountIfActive({from, playlistNumber});
    return true;
}

quint64 PlaylistModel::copyItemToPlaylist(quint64 itemId, qint32 playlistNumber, int row)
{
    const auto it = d->items.constFind(itemId);
    if (it == d->items.cend() || d->pending.contains(itemId) || !d->playlists.contains(playlistNumber)
        || row < 1 || row > d->order.value(playlistNumber).size() + 1 || d->nextItemId == kHighestId
        || d->totalItems() >= maxItems) {
        return 0;
    }
    PlaylistItem copy = *it;
    copy.id = d->nextItemId++;
    copy.playlistNumber = playlistNumber;
    if (d->durations.contains(itemId))
        d->durations.insert(copy.id, d->durations.value(itemId));
    if (d->offline.contains(itemId))
        d->offline.insert(copy.id);
    const quint64 id = copy.id;
    d->insertItem(std::move(copy), row - 1);
    d->availability->bumpGeneration();
    emit itemAdded(id);
    emit itemCopiedToPlaylist(itemId, id, playlistNumber, row);
    d->emitCountIfActive({playlistNumber});
    return id;
}

bool PlaylistModel::setItemSettings(quint64 itemId, const PlaylistItemSettings &s)
{
    if (!isValidItemSettings(s) || (s.gotoTargetItemId != 0 && !d->items.contains(s.gotoTargetItemId)))
        return false;
    const auto it = d->items.find(itemId);
    if (it == d->items.end() || d->pending.contains(itemId) || d->locked.contains(itemId))
        return false;
    if (const auto duration = d->durations.constFind(itemId); duration != d->durations.cend()) {
        if (s.inPointMs >= *duration || (s.outPointMs && *s.outPointMs > *duration))
            return false;
    }
    const PlaylistItemSettings &old = it->settings;
    if (it->sourceType == PlaylistSourceType::powerpoint || it->sourceType == PlaylistSourceType::pdf)
        return false;
    if (it->sourceType == PlaylistSourceType::uvc) {
        // A live source only has levels: volume, EQ and delay.
        if (s.inPointMs != old.inPointMs || s.outPointMs != old.outPointMs
            || s.startMode != PlaylistStartMode::play || s.endMode != old.endMode || s.fadeIn != old.fadeIn
            || s.fadeOut != old.fadeOut || s.endCrossfade != old.endCrossfade
            || s.gotoTargetItemId != old.gotoTargetItemId || s.repeatCount != old.repeatCount
            || s.repeatEndMode != old.repeatEndMode) {
            return false;
        }
    }
    if (isLockedForPoints(itemId) && (s.inPointMs != old.inPointMs || s.outPointMs != old.outPointMs))
        return false;
    if (s == old)
        return true;
    it->settings = s;
    emit itemChanged(itemId);
    emit itemSettingsChanged(itemId, s);
    return true;
}

bool PlaylistModel::setItemDisplayName(quint64 itemId, const QString &name)
{
    const QString trimmed = name.trimmed();
    const auto it = d->items.find(itemId);
    if (it == d->items.end() || trimmed.isEmpty() || !fitsDocumentString(trimmed))
        return false;
    if (it->displayName == trimmed)
        return true;
    it->displayName = trimmed;
    emit itemChanged(itemId);
    return true;
}

bool PlaylistModel::setItemColor(quint64 itemId, PlaylistItemColor color)
{
    const auto it = d->items.find(itemId);
    if (it == d->items.end() || !isValidItemColor(color))
        return false;
    if (it->color == color)
        return true;
    it->color = color;
    emit itemChanged(itemId);
    return true;
}

bool PlaylistModel::setItemSeparatorBelow(quint64 itemId, bool on)
{
    const auto it = d->items.find(itemId);
    if (it == d->items.end())
        return false;
    if (it->separatorBelow == on)
        return true;
    it->separatorBelow = on;
    emit itemChanged(itemId);
    return true;
}

bool PlaylistModel::setItemSettingsLocked(quint64 itemId, bool locked)
{
    if (!d->items.contains(itemId))
        return false;
    if (d->locked.contains(itemId) == locked)
        return true;
    if (locked)
        d->locked.insert(itemId);
    else
        d->locked.remove(itemId);
    emit itemSettingsLockChanged(itemId, locked);
    return true;
}

bool PlaylistModel::setItemRepeatProgress(quint64 itemId, int count)
{
    if (!d->items.contains(itemId) || count < 0 || count > 9999)
        return false;
    if (d->repeatProgress.value(itemId) == count)
        return true;
    if (count == 0)
        d->repeatProgress.remove(itemId);
    else
        d->repeatProgress.insert(itemId, count);
    emit itemChanged(itemId);
    return true;
}

bool PlaylistModel::setItemLastPlayedPosition(quint64 itemId, qint64 positionMs)
{
    if (!d->items.contains(itemId) || positionMs < 0)
        return false;
    d->lastPlayedPositions.insert(itemId, positionMs);
    return true;
}

void PlaylistModel::setItemDuration(quint64 itemId, qint64 durationMs)
{
    const auto it = d->items.constFind(itemId);
    if (it != d->items.cend() && it->sourceType == PlaylistSourceType::file
        && it->powerPointMode != PlaylistPowerPointMode::pngSequence && durationMs >= 1) {
        d->durations.insert(itemId, durationMs);
    } else {
        d->durations.remove(itemId);
    }
}

// ---- playlists -----------------------------------------------------------

qint32 PlaylistModel::addPlaylist()
{
    if (d->playlistOrder.size() >= maxPlaylists)
        return 0;
    qint32 highest = *std::max_element(d->playlistOrder.cbegin(), d->playlistOrder.cend());
    if (d->bulkUndo) {
        // A number the undo could bring back stays taken.
        for (const auto &deleted : d->bulkUndo->deletedPlaylists)
            highest = std::max(highest, deleted.playlist.number);
    }
    if (highest >= kHighestPlaylistNumber)
        return 0;
    Playlist playlist;
    playlist.number = highest + 1;
    d->playlists.insert(playlist.number, playlist);
    d->playlistOrder.append(playlist.number);
    d->order.insert(playlist.number, {});
    emit playlistAdded(playlist.number);
    return playlist.number;
}

bool PlaylistModel::removePlaylist(qint32 number)
{
    if (d->playlistOrder.size() <= 1 || !d->playlists.contains(number) || !d->order.value(number).isEmpty())
        return false;
    const int index = d->playlistOrder.indexOf(number);
    d->playlistOrder.removeAt(index);
    d->playlists.remove(number);
    d->order.remove(number);
    const qint32 previousActive = d->activePlaylistNumber;
    if (previousActive == number)
        d->activePlaylistNumber = d->playlistOrder.at(std::min(index, int(d->playlistOrder.size()) - 1));
    emit playlistRemoved(number);
    if (previousActive == number) {
        emit activePlaylistChanged(previousActive, d->activePlaylistNumber);
        emit countChanged(count());
    }
    return true;
}

bool PlaylistModel::movePlaylist(qint32 number, int index)
{
    const int from = d->playlistOrder.indexOf(number);
    if (from < 0 || index < 0 || index >= d->playlistOrder.size())
        return false;
    if (from == index)
        return true;
    d->playlistOrder.move(from, index);
    emit playlistOrderChanged();
    return true;
}

bool PlaylistModel::setActivePlaylist(qint32 number)
{
    if (!d->playlists.contains(number))
        return false;
    if (d->activePlaylistNumber == number)
        return true;
    const qint32 previous = d->activePlaylistNumber;
    d->activePlaylistNumber = number;
    emit activePlaylistChanged(previous, number);
    emit countChanged(count());
    return true;
}

bool PlaylistModel::setPlaylistName(qint32 number, const QString &name)
{
    const auto it = d->playlists.find(number);
    if (it == d->playlists.end() || !fitsDocumentString(name))
        return false;
    if (it->name == name)
        return true;
    it->name = name;
    emit playlistNameChanged(number, name);
    return true;
}

bool PlaylistModel::setPlaylistManualCrossfadeEnabled(qint32 number, bool enabled)
{
    const auto it = d->playlists.find(number);
    if (it == d->playlists.end())
        return false;
    if (it->manualCrossfadeEnabled == enabled)
        return true;
    it->manualCrossfadeEnabled = enabled;
    emit playlistManualCrossfadeChanged(number, enabled);
    return true;
}

bool PlaylistModel::setPlaylistMode(qint32 number, PlaylistMode mode)
{
    const auto it = d->playlists.find(number);
    if (it == d->playlists.end() || (mode != PlaylistMode::standard && mode != PlaylistMode::bgm))
        return false;
    if (it->mode == mode)
        return true;
    it->mode = mode;
    emit playlistModeChanged(number, mode);
    return true;
}

// ---- playback references -------------------------------------------------

bool PlaylistModel::setOnAirItem(quint64 itemId)
{
    if (itemId != 0 && (!d->items.contains(itemId) || d->pending.contains(itemId)))
        return false;
    const quint64 previous = d->onAirItem;
    if (previous != 0 && previous != itemId && d->repeatProgress.remove(previous))
        emit itemChanged(previous);
    d->onAirItem = itemId;
    d->onAirMessage.clear();
    emit onAirStateChanged(previous, itemId);
    return true;
}

void PlaylistModel::setOnAirMessage(const QString &text)
{
    d->onAirMessage = text;
    emit onAirStateChanged(d->onAirItem, d->onAirItem);
}

bool PlaylistModel::setCueState(quint64 itemId, PlaylistCueState state, const QString &message)
{
    if (itemId != 0 && (!d->items.contains(itemId) || d->pending.contains(itemId)))
        return false;
    const quint64 previous = d->cueItem;
    d->cueItem = itemId;
    d->cueState = itemId ? state : PlaylistCueState::None;
    d->cueMessage = itemId ? message : QString();
    emit cueStateChanged(previous, itemId);
    return true;
}

// The DSK, EDIT and BGM marks: each names one existing item or none, and a
// change is announced with the item it replaced.
bool PlaylistModel::setMarkedItem(quint64 &mark, quint64 itemId,
                                  void (PlaylistModel::*changed)(quint64, quint64))
{
    if (itemId != 0 && !d->items.contains(itemId))
        return false;
    const quint64 previous = std::exchange(mark, itemId);
    if (previous != itemId)
        emit (this->*changed)(previous, itemId);
    return true;
}

bool PlaylistModel::setDskItem(quint64 itemId)
{
    return setMarkedItem(d->dskItem, itemId, &PlaylistModel::dskStateChanged);
}

bool PlaylistModel::setEditItem(quint64 itemId)
{
    return setMarkedItem(d->editItem, itemId, &PlaylistModel::editStateChanged);
}

bool PlaylistModel::setBgmItem(quint64 itemId)
{
    return setMarkedItem(d->bgmItem, itemId, &PlaylistModel::bgmStateChanged);
}

// ---- conversion and analysis ---------------------------------------------

bool PlaylistModel::setPendingState(quint64 itemId, qint32 phase, qint32 progress)
{
    const auto it = d->pending.find(itemId);
    if (it == d->pending.end())
        return false;
    const PlaylistPendingState state{phase, std::clamp(progress, 0, 1000)};
    if (*it == state)
        return true;
    *it = state;
    emit itemConversionStateChanged(itemId);
    return true;
}

bool PlaylistModel::completeMediaAnalysis(quint64 itemId, PlaylistMediaType mediaType,
                                          std::optional<qint64> durationMs)
{
    const auto state = d->pending.constFind(itemId);
    const auto it = d->items.find(itemId);
    if (state == d->pending.cend() || it == d->items.end())
        return false;
    const auto phase = static_cast<PlaylistPendingPhase>(state->phase);
    if ((phase != PlaylistPendingPhase::AnalysisWaiting && phase != PlaylistPendingPhase::Analyzing)
        || it->sourceType != PlaylistSourceType::file
        || (mediaType != PlaylistMediaType::video && mediaType != PlaylistMediaType::audio
            && mediaType != PlaylistMediaType::stillImage)
        || (durationMs && *durationMs <= it->settings.inPointMs)) {
        return false;
    }
    it->mediaType = mediaType;
    it->settings.outPointMs = durationMs;
    setItemDuration(itemId, durationMs.value_or(0));
    d->pending.remove(itemId);
    if (d->offline.remove(itemId))
        emit itemMediaAvailabilityChanged(itemId, false);
    d->availability->bumpGeneration();
    emit itemConversionStateChanged(itemId);
    emit itemReplaced(itemId);
    emit itemChanged(itemId);
    return true;
}

bool PlaylistModel::completePendingDocument(quint64 itemId)
{
    const auto it = d->items.constFind(itemId);
    if (!d->pending.contains(itemId) || it == d->items.cend()
        || (it->sourceType != PlaylistSourceType::powerpoint && it->sourceType != PlaylistSourceType::pdf)) {
        return false;
    }
    d->pending.remove(itemId);
    if (d->offline.remove(itemId))
        emit itemMediaAvailabilityChanged(itemId, false);
    d->availability->bumpGeneration();
    emit itemConversionStateChanged(itemId);
    emit itemReplaced(itemId);
    emit itemChanged(itemId);
    return true;
}

bool PlaylistModel::replacePendingItem(quint64 itemId, const QList<PlaylistItemRequest> &requests)
{
    const auto it = d->items.constFind(itemId);
    if (it == d->items.cend() || requests.isEmpty() || itemId == d->onAirItem || itemId == d->cueItem
        || itemId == d->dskItem || itemId == d->editItem
        || d->totalItems() - 1 + requests.size() > maxItems
        || kHighestId - d->nextItemId < static_cast<quint64>(requests.size() - 1)) {
        return false;
    }
    for (const PlaylistItemRequest &request : requests) {
        if (!d->isAcceptableRequest(request))
            return false;
    }
    const qint32 number = it->playlistNumber;
    const int index = static_cast<int>(it->position) - 1;
    QList<quint64> added;
    for (int i = 0; i < requests.size(); ++i) {
        const quint64 id = i == 0 ? itemId : d->nextItemId++;
        PlaylistItem item = d->itemFromRequest(requests[i], id, number);
        if (i == 0) {
            d->items.insert(id, item);
        } else {
            d->insertItem(std::move(item), index + i);
            added.append(id);
        }
        if (requests[i].pending)
            d->pending.insert(id, *requests[i].pending);
        else
            d->pending.remove(id);
    }
    d->renumber(number, index);
    d->durations.remove(itemId);
    d->offline.remove(itemId);
    d->availability->bumpGeneration();
    emit itemConversionStateChanged(itemId);
    emit itemReplaced(itemId);
    emit itemChanged(itemId);
    for (quint64 id : added)
        emit itemAdded(id);
    if (!added.isEmpty())
        d->emitCountIfActive({number});
    return true;
}

// ---- the whole document --------------------------------------------------

bool PlaylistModel::replaceDocument(const PlaylistDocument &document, QString *error,
                                    const std::optional<QSet<quint64>> &missingItems)
{
    if (d->onAirItem || d->cueItem || d->dskItem || d->editItem || d->bgmItem || !d->locked.isEmpty()
        || !d->pending.isEmpty()) {
        return fail(error, QStringLiteral("Playback references must be released before importing a playlist."));
    }
    if (!validatePlaylistDocument(document, error))
        return false;
    const auto next = computeNextItemId(document, error);
    if (!next)
        return false;
    QHash<quint64, PlaylistItem> items;
    QHash<qint32, QList<quint64>> order;
    QHash<qint32, Playlist> playlists;
    QList<qint32> playlistOrder;
    QSet<quint64> offline;
    items.reserve(document.items.size());
    for (const Playlist &playlist : document.playlists) {
        playlists.insert(playlist.number, playlist);
        playlistOrder.append(playlist.number);
        order.insert(playlist.number, {});
    }
    for (PlaylistItem item : document.items) {
        if (item.sourceType != PlaylistSourceType::uvc) {
            const QFileInfo info(item.filePath);
            item.filePath = info.absoluteFilePath();
            if (item.displayName.isEmpty())
                item.displayName = info.fileName();
            if (missingItems ? missingItems->contains(item.id) : !info.isFile())
                offline.insert(item.id);
        }
        order[item.playlistNumber].append(item.id);
        items.insert(item.id, std::move(item));
    }
    d->items = std::move(items);
    d->order = std::move(order);
    d->playlists = std::move(playlists);
    d->playlistOrder = std::move(playlistOrder);
    d->offline = std::move(offline);
    d->durations.clear();
    d->pending.clear();
    d->repeatProgress.clear();
    d->lastPlayedPositions.clear();
    d->documentId = document.documentId;
    d->macros = document.macros;
    d->activePlaylistNumber = document.activePlaylistNumber;
    d->manualCrossfadeDurationMs = document.manualCrossfadeDurationMs;
    // Ids only grow while the model lives.
    d->nextItemId = std::max(d->nextItemId, *next);
    const bool droppedUndo = d->bulkUndo.has_value();
    d->bulkUndo.reset();
    d->availability->bumpGeneration();
    if (droppedUndo)
        emit bulkUndoAvailableChanged(false);
    emit modelReset();
    emit macrosChanged();
    if (error)
        error->clear();
    return true;
}

PlaylistDocument PlaylistModel::snapshot() const
{
    return d->snapshot();
}

bool PlaylistModel::setMacros(const QList<MacroDefinition> &macros, QString *error)
{
    if (!validateMacros(macros, error))
        return false;
    PlaylistDocument document = d->snapshot();
    document.macros = macros;
    document.nextItemId = d->nextItemId;
    const auto next = computeNextItemId(document, error);
    if (!next || !d->documentFitsBudgets(macros, error))
        return false;
    d->nextItemId = *next;
    if (d->macros == macros)
        return true;
    d->macros = macros;
    emit macrosChanged();
    return true;
}

QList<MacroDefinition> PlaylistModel::macros() const { return d->macros; }
QString PlaylistModel::documentId() const { return d->documentId; }
quint64 PlaylistModel::nextItemId() const { return d->nextItemId; }
qint64 PlaylistModel::manualCrossfadeDurationMs() const { return d->manualCrossfadeDurationMs; }

bool PlaylistModel::setManualCrossfadeDurationMs(qint64 durationMs)
{
    if (durationMs < 100 || durationMs > 60000)
        return false;
    if (d->manualCrossfadeDurationMs == durationMs)
        return true;
    d->manualCrossfadeDurationMs = durationMs;
    emit manualCrossfadeDurationChanged(durationMs);
    return true;
}

bool PlaylistModel::playlistManualCrossfadeEnabled(qint32 number) const
{
    const auto it = d->playlists.constFind(number);
    return it != d->playlists.cend() && it->manualCrossfadeEnabled;
}

// ---- availability --------------------------------------------------------

void PlaylistModel::requestAvailabilityScan()
{
    d->availability->startScan();
}

bool PlaylistModel::isAvailabilityScanRunning() const
{
    return d->availability->isScanning();
}

void PlaylistModel::markFileUnavailable(const QString &path)
{
    const QString absolute = QFileInfo(path).absoluteFilePath();
    QList<quint64> changed;
    for (auto it = d->items.cbegin(); it != d->items.cend(); ++it) {
        if (it->sourceType != PlaylistSourceType::uvc && (it->filePath == path || it->filePath == absolute)
            && !d->offline.contains(it.key())) {
            d->offline.insert(it.key());
            changed.append(it.key());
        }
    }
    // A scan in flight may have seen the file before it went away.
    d->availability->bumpGeneration();
    for (quint64 id : changed)
        emit itemMediaAvailabilityChanged(id, true);
    d->availability->startScan();
}

void PlaylistModel::applyAvailability(quint64, const QList<std::pair<quint64, bool>> &results)
{
    for (const auto &[id, offline] : results) {
        if (!d->items.contains(id) || d->offline.contains(id) == offline)
            continue;
        if (offline)
            d->offline.insert(id);
        else
            d->offline.remove(id);
        emit itemMediaAvailabilityChanged(id, offline);
    }
}

// ---- queries -------------------------------------------------------------

std::optional<PlaylistItem> PlaylistModel::item(quint64 itemId) const
{
    const auto it = d->items.constFind(itemId);
    return it == d->items.cend() ? std::nullopt : std::optional(*it);
}

bool PlaylistModel::contains(quint64 itemId) const { return d->items.contains(itemId); }

int PlaylistModel::rowOf(quint64 itemId) const
{
    const auto it = d->items.constFind(itemId);
    return it == d->items.cend() ? 0 : static_cast<int>(it->position);
}

qint32 PlaylistModel::playlistOf(quint64 itemId) const
{
    const auto it = d->items.constFind(itemId);
    return it == d->items.cend() ? 0 : it->playlistNumber;
}

QList<qint32> PlaylistModel::playlistNumbers() const { return d->playlistOrder; }
bool PlaylistModel::hasPlaylist(qint32 number) const { return d->playlists.contains(number); }
int PlaylistModel::itemCount(qint32 playlistNumber) const { return d->order.value(playlistNumber).size(); }

quint64 PlaylistModel::itemAt(qint32 playlistNumber, int row) const
{
    const QList<quint64> ids = d->order.value(playlistNumber);
    return row >= 1 && row <= ids.size() ? ids.at(row - 1) : 0;
}

QList<quint64> PlaylistModel::itemIds(qint32 playlistNumber) const { return d->order.value(playlistNumber); }
PlaylistMode PlaylistModel::playlistMode(qint32 number) const { return d->playlists.value(number).mode; }
QString PlaylistModel::playlistName(qint32 number) const { return d->playlists.value(number).name; }
qint32 PlaylistModel::activePlaylistNumber() const { return d->activePlaylistNumber; }
int PlaylistModel::count() const { return d->order.value(d->activePlaylistNumber).size(); }
bool PlaylistModel::isPending(quint64 itemId) const { return d->pending.contains(itemId); }

std::optional<PlaylistPendingState> PlaylistModel::pendingState(quint64 itemId) const
{
    const auto it = d->pending.constFind(itemId);
    return it == d->pending.cend() ? std::nullopt : std::optional(*it);
}

bool PlaylistModel::isOffline(quint64 itemId) const { return d->offline.contains(itemId); }

bool PlaylistModel::isLocked(quint64 itemId) const
{
    const auto it = d->items.constFind(itemId);
    return d->locked.contains(itemId)
        || (it != d->items.cend()
            && (it->sourceType == PlaylistSourceType::powerpoint || it->sourceType == PlaylistSourceType::pdf));
}

bool PlaylistModel::isLockedForPoints(quint64 itemId) const
{
    const auto it = d->items.constFind(itemId);
    return itemId == d->onAirItem || itemId == d->bgmItem || isLocked(itemId)
        || (it != d->items.cend() && it->sourceType != PlaylistSourceType::file);
}

std::optional<qint64> PlaylistModel::knownDuration(quint64 itemId) const
{
    const auto it = d->durations.constFind(itemId);
    return it == d->durations.cend() ? std::nullopt : std::optional(*it);
}

int PlaylistModel::repeatProgress(quint64 itemId) const { return d->repeatProgress.value(itemId); }

std::optional<qint64> PlaylistModel::lastPlayedPosition(quint64 itemId) const
{
    const auto it = d->lastPlayedPositions.constFind(itemId);
    return it == d->lastPlayedPositions.cend() ? std::nullopt : std::optional<qint64>(*it);
}
quint64 PlaylistModel::onAirItemId() const { return d->onAirItem; }
QString PlaylistModel::onAirMessage() const { return d->onAirMessage; }
quint64 PlaylistModel::cueItemId() const { return d->cueItem; }
PlaylistCueState PlaylistModel::cueState() const { return d->cueState; }
QString PlaylistModel::cueMessage() const { return d->cueMessage; }
quint64 PlaylistModel::dskItemId() const { return d->dskItem; }
quint64 PlaylistModel::editItemId() const { return d->editItem; }
quint64 PlaylistModel::bgmItemId() const { return d->bgmItem; }

} // namespace tarnix
