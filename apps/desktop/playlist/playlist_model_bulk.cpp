#include "playlist/playlist_document.h"
#include "playlist/playlist_document_check.h"
#include "playlist/playlist_model.h"
#include "playlist/playlist_model_impl.h"

#include <QRandomGenerator>

#include <algorithm>

namespace tarnix {
namespace {

bool fail(QString *error, const QString &text)
{
    if (error)
        *error = text;
    return false;
}

} // namespace

void PlaylistBulkUndoRecord::mergeLater(const PlaylistBulkUndoRecord &later)
{
    for (const PlaylistItem &item : later.deletedItems) {
        const bool known = std::any_of(deletedItems.cbegin(), deletedItems.cend(),
                                       [&](const PlaylistItem &i) { return i.id == item.id; });
        if (!known)
            deletedItems.append(item);
    }
    // The earliest "before" and the latest "after" of each thing.
    for (const ChangedItem &change : later.changedItems) {
        auto it = std::find_if(changedItems.begin(), changedItems.end(),
                               [&](const ChangedItem &c) { return c.id == change.id; });
        if (it == changedItems.end()) {
            changedItems.append(change);
        } else {
            it->startAfter = change.startAfter;
            it->endAfter = change.endAfter;
            it->gotoAfter = change.gotoAfter;
        }
    }
    for (const PlaylistChange &change : later.playlistChanges) {
        auto it = std::find_if(playlistChanges.begin(), playlistChanges.end(),
                               [&](const PlaylistChange &c) { return c.number == change.number; });
        if (it == playlistChanges.end()) {
            playlistChanges.append(change);
        } else {
            it->modeAfter = change.modeAfter;
            it->orderAfter = change.orderAfter;
        }
    }
    deletedPlaylists.append(later.deletedPlaylists);
}

bool PlaylistModel::applyBulkOperation(qint32 playlistNumber, PlaylistBulkOperation op)
{
    const int opNumber = static_cast<int>(op);
    if (!d->playlists.contains(playlistNumber) || opNumber < 0 || opNumber > 4)
        return false;
    QList<quint64> ids = d->order.value(playlistNumber);
    for (quint64 id : ids) {
        if (!d->items.contains(id) || d->isBulkLocked(id))
            return false;
    }
    const PlaylistDocument before = d->snapshot();
    if (op == PlaylistBulkOperation::BgmMode || op == PlaylistBulkOperation::StandardMode) {
        setPlaylistMode(playlistNumber, op == PlaylistBulkOperation::BgmMode ? PlaylistMode::bgm
                                                                              : PlaylistMode::standard);
        recordBulkUndo(before);
        return true;
    }
    if (op == PlaylistBulkOperation::Shuffle) {
        const QList<quint64> old = ids;
        for (qsizetype i = ids.size() - 1; i >= 1; --i) {
            const auto j = static_cast<qsizetype>(QRandomGenerator::global()->bounded(quint64(i) + 1));
            ids.swapItemsAt(i, j);
        }
        // A shuffle always changes something the operator can see.
        if (ids.size() >= 2 && ids == old)
            std::rotate(ids.begin(), ids.begin() + 1, ids.end());
    }
    for (qsizetype i = 0; i < ids.size(); ++i) {
        PlaylistItem &item = d->items[ids[i]];
        PlaylistItemSettings settings = item.settings;
        settings.startMode = PlaylistStartMode::play;
        settings.endMode = op == PlaylistBulkOperation::PlayOnce && i == ids.size() - 1 ? PlaylistEndMode::pause
                                                                                      : PlaylistEndMode::next;
        if (settings == item.settings)
            continue;
        item.settings = settings;
        emit itemChanged(ids[i]);
        emit itemSettingsChanged(ids[i], settings);
    }
    for (qsizetype i = 0; i < ids.size(); ++i) {
        if (rowOf(ids[i]) != i + 1)
            moveItem(ids[i], static_cast<int>(i + 1));
    }
    recordBulkUndo(before);
    return true;
}

void PlaylistModel::recordBulkUndo(const PlaylistDocument &before)
{
    PlaylistBulkUndoRecord record;
    QHash<qint32, QList<quint64>> orderBefore;
    for (const PlaylistItem &item : before.items) {
        orderBefore[item.playlistNumber].append(item.id);
        const auto now = d->items.constFind(item.id);
        if (now == d->items.cend()) {
            record.deletedItems.append(item);
            continue;
        }
        const PlaylistItemSettings &a = item.settings;
        const PlaylistItemSettings &b = now->settings;
        if (a.startMode != b.startMode || a.endMode != b.endMode || a.gotoTargetItemId != b.gotoTargetItemId) {
            record.changedItems.append({item.id, a.startMode, b.startMode, a.endMode, b.endMode,
                                        a.gotoTargetItemId, b.gotoTargetItemId});
        }
    }
    for (int index = 0; index < before.playlists.size(); ++index) {
        const Playlist &playlist = before.playlists[index];
        const auto now = d->playlists.constFind(playlist.number);
        if (now == d->playlists.cend()) {
            record.deletedPlaylists.append({playlist, index});
            record.playlistChanges.append({playlist.number, playlist.mode, playlist.mode,
                                           orderBefore.value(playlist.number), {}});
            continue;
        }
        const QList<quint64> orderNow = d->order.value(playlist.number);
        // std::equal, not QList's ==: Qt 6.4 hands an empty list's null data
        // to memcmp.
        const QList<quint64> orderThen = orderBefore.value(playlist.number);
        const bool sameOrder = orderThen.size() == orderNow.size()
                               && std::equal(orderThen.cbegin(), orderThen.cend(), orderNow.cbegin());
        if (playlist.mode != now->mode || !sameOrder) {
            record.playlistChanges.append({playlist.number, playlist.mode, now->mode,
                                           orderBefore.value(playlist.number), orderNow});
        }
    }
    if (record.isEmpty())
        return;
    if (d->bulkUndo)
        d->bulkUndo->mergeLater(record);
    else
        d->bulkUndo = std::move(record);
    emit bulkUndoAvailableChanged(true);
}

bool PlaylistModel::isBulkUndoAvailable() const
{
    return d->bulkUndo.has_value();
}

bool PlaylistModel::undoBulkOperation(QString *error, bool *keptLaterChanges)
{
    if (!d->bulkUndo)
        return fail(error, QStringLiteral("There is no playlist bulk operation to undo."));
    if (d->onAirItem || d->dskItem || d->bgmItem || !d->pending.isEmpty())
        return fail(error, QStringLiteral("Stop playout and wait for document imports before undoing."));
    const PlaylistBulkUndoRecord &record = *d->bulkUndo;
    bool kept = false;

    auto items = d->items;
    auto order = d->order;
    auto playlists = d->playlists;
    auto playlistOrder = d->playlistOrder;

    QList<qint32> returnedPlaylists;
    for (const auto &deleted : record.deletedPlaylists) {
        if (playlists.contains(deleted.playlist.number))
            return fail(error, QStringLiteral("The deleted playlist number is already in use."));
        playlists.insert(deleted.playlist.number, deleted.playlist);
        playlistOrder.insert(std::min<qsizetype>(deleted.tabIndex, playlistOrder.size()), deleted.playlist.number);
        order.insert(deleted.playlist.number, {});
        returnedPlaylists.append(deleted.playlist.number);
    }

    QList<PlaylistItem> returned;
    QSet<quint64> returnedIds;
    for (const PlaylistItem &item : record.deletedItems) {
        if (items.contains(item.id) || !playlists.contains(item.playlistNumber)) {
            kept = true;
            continue;
        }
        returned.append(item);
        returnedIds.insert(item.id);
    }
    auto exists = [&](quint64 id) { return items.contains(id) || returnedIds.contains(id); };
    for (PlaylistItem &item : returned) {
        if (item.settings.gotoTargetItemId && !exists(item.settings.gotoTargetItemId)) {
            item.settings.gotoTargetItemId = 0;
            kept = true;
        }
        items.insert(item.id, item);
    }

    QList<quint64> settingsChanged;
    for (const auto &change : record.changedItems) {
        const auto it = items.find(change.id);
        if (it == items.end() || d->locked.contains(change.id)) {
            kept = true;
            continue;
        }
        PlaylistItemSettings &s = it->settings;
        const PlaylistItemSettings old = s;
        if (s.startMode == change.startAfter)
            s.startMode = change.startBefore;
        else
            kept = true;
        if (s.endMode == change.endAfter)
            s.endMode = change.endBefore;
        else
            kept = true;
        if (s.gotoTargetItemId != change.gotoAfter) {
            kept = true;
        } else if (change.gotoBefore == 0 || exists(change.gotoBefore)) {
            s.gotoTargetItemId = change.gotoBefore;
        } else if (change.gotoBefore != change.gotoAfter) {
            kept = true;
        }
        if (!(s == old) && !returnedIds.contains(change.id))
            settingsChanged.append(change.id);
    }

    auto hasLockedItem = [&](qint32 number) {
        const QList<quint64> ids = order.value(number);
        return std::any_of(ids.cbegin(), ids.cend(), [&](quint64 id) { return d->locked.contains(id); });
    };
    QList<qint32> modeChanged;
    QSet<qint32> orderHandled;
    for (const auto &change : record.playlistChanges) {
        const auto playlist = playlists.find(change.number);
        if (playlist == playlists.end()) {
            kept = true;
            continue;
        }
        const bool lockedInside = hasLockedItem(change.number);
        if (playlist->mode == change.modeAfter && !lockedInside) {
            if (playlist->mode != change.modeBefore && !returnedPlaylists.contains(change.number))
                modeChanged.append(change.number);
            playlist->mode = change.modeBefore;
        } else if (playlist->mode != change.modeBefore) {
            kept = true;
        }
        QList<quint64> &ids = order[change.number];
        if (!lockedInside && ids == change.orderAfter) {
            QList<quint64> restored;
            for (quint64 id : change.orderBefore) {
                if (ids.contains(id) || (returnedIds.contains(id) && items.value(id).playlistNumber == change.number))
                    restored.append(id);
            }
            for (quint64 id : ids) {
                if (!restored.contains(id))
                    restored.append(id);
            }
            ids = restored;
            orderHandled.insert(change.number);
        } else if (ids != change.orderAfter) {
            kept = true;
        }
    }
    // Returned items that no restored order placed go back to their old rows.
    for (const PlaylistItem &item : returned) {
        if (orderHandled.contains(item.playlistNumber))
            continue;
        QList<quint64> &ids = order[item.playlistNumber];
        ids.insert(std::clamp<qsizetype>(item.position - 1, 0, ids.size()), item.id);
    }
    for (auto it = order.cbegin(); it != order.cend(); ++it) {
        for (int i = 0; i < it->size(); ++i) {
            PlaylistItem &item = items[it->at(i)];
            item.position = static_cast<quint32>(i + 1);
            item.playlistNumber = it.key();
        }
    }

    PlaylistDocument document = d->snapshot();
    document.playlists.clear();
    document.items.clear();
    for (qint32 number : playlistOrder) {
        document.playlists.append(playlists.value(number));
        for (quint64 id : order.value(number))
            document.items.append(items.value(id));
    }
    if (document.playlists.size() > playlist_document_limits::maxPlaylists)
        return fail(error, QStringLiteral("Playlist document exceeds %1 playlists.")
                               .arg(playlist_document_limits::maxPlaylists));
    if (!validatePlaylistDocument(document, error))
        return false;

    QHash<quint64, int> oldRows;
    for (auto it = d->items.cbegin(); it != d->items.cend(); ++it)
        oldRows.insert(it.key(), static_cast<int>(it->position));
    QSet<qint32> touched(returnedPlaylists.cbegin(), returnedPlaylists.cend());
    for (const PlaylistItem &item : returned)
        touched.insert(item.playlistNumber);
    d->items = std::move(items);
    d->order = std::move(order);
    d->playlists = std::move(playlists);
    d->playlistOrder = std::move(playlistOrder);
    d->bulkUndo.reset();
    d->availability->bumpGeneration();

    emit bulkUndoAvailableChanged(false);
    for (qint32 number : returnedPlaylists)
        emit playlistAdded(number);
    for (const PlaylistItem &item : returned)
        emit itemAdded(item.id);
    for (quint64 id : settingsChanged) {
        emit itemSettingsChanged(id, d->items.value(id).settings);
        emit itemChanged(id);
    }
    for (qint32 number : d->playlistOrder) {
        for (quint64 id : d->order.value(number)) {
            const auto previous = oldRows.constFind(id);
            const int now = static_cast<int>(d->items.value(id).position);
            if (previous != oldRows.cend() && *previous != now) {
                touched.insert(number);
                emit itemMoved(id, *previous, now);
            }
        }
    }
    for (qint32 number : modeChanged)
        emit playlistModeChanged(number, d->playlists.value(number).mode);
    if (touched.contains(d->activePlaylistNumber))
        emit countChanged(count());
    if (keptLaterChanges)
        *keptLaterChanges = kept;
    if (error)
        error->clear();
    return true;
}

} // namespace tarnix
