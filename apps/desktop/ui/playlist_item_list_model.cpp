#include "ui/playlist_item_list_model.h"

#include "playlist/playlist_model.h"
#include "playlist/playlist_thumbnail_store.h"

namespace tarnix {

PlaylistItemListModel::PlaylistItemListModel(PlaylistModel *model, PlaylistThumbnailStore *thumbnails,
                                             QObject *parent)
    : QAbstractListModel(parent), m_model(model)
{
    if (!model)
        return;
    m_playlist = model->activePlaylistNumber();
    m_ids = model->itemIds(m_playlist);

    connect(model, &PlaylistModel::itemAdded, this, &PlaylistItemListModel::onItemAdded);
    connect(model, &PlaylistModel::itemRemoved, this, [this](quint64 id, int) { onItemRemoved(id); });
    connect(model, &PlaylistModel::itemMoved, this, &PlaylistItemListModel::onItemMoved);
    connect(model, &PlaylistModel::itemMovedToPlaylist, this, &PlaylistItemListModel::onItemMovedToPlaylist);
    for (auto signal : {&PlaylistModel::itemChanged, &PlaylistModel::itemConversionStateChanged,
                        &PlaylistModel::itemReplaced})
        connect(model, signal, this, &PlaylistItemListModel::repaintItem);
    connect(model, &PlaylistModel::itemMediaAvailabilityChanged, this, [this](quint64 id, bool) { repaintItem(id); });
    connect(model, &PlaylistModel::itemSettingsChanged, this,
            [this](quint64 id, const PlaylistItemSettings &) { repaintItem(id); });
    connect(model, &PlaylistModel::itemSettingsLockChanged, this, [this](quint64 id, bool) { repaintItem(id); });
    for (auto signal : {&PlaylistModel::onAirStateChanged, &PlaylistModel::cueStateChanged,
                        &PlaylistModel::dskStateChanged, &PlaylistModel::editStateChanged,
                        &PlaylistModel::bgmStateChanged})
        connect(model, signal, this, &PlaylistItemListModel::onMarkChanged);
    connect(model, &PlaylistModel::activePlaylistChanged, this, [this] { reload(); });
    connect(model, &PlaylistModel::modelReset, this, [this] { reload(); });
    connect(model, &PlaylistModel::playlistModeChanged, this, [this](qint32 number, PlaylistMode) {
        if (number == m_playlist && !m_ids.isEmpty())
            emit dataChanged(index(0), index(int(m_ids.size()) - 1));
    });
    if (thumbnails)
        connect(thumbnails, &PlaylistThumbnailStore::thumbnailChanged, this, &PlaylistItemListModel::repaintItem);
}

int PlaylistItemListModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_ids.size());
}

QVariant PlaylistItemListModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= m_ids.size() || !m_model)
        return {};
    const quint64 id = m_ids.at(index.row());
    switch (role) {
    case ItemIdRole:
        return QVariant::fromValue(id);
    case Qt::DisplayRole:
    case Qt::AccessibleTextRole: {
        const std::optional<PlaylistItem> item = m_model->item(id);
        if (!item)
            return {};
        QString text = QStringLiteral("%1  %2").arg(index.row() + 1).arg(item->displayName);
        if (role == Qt::AccessibleTextRole && m_model->playlistMode(m_playlist) == PlaylistMode::bgm)
            text += QStringLiteral(", BGM mode playlist item");
        return text;
    }
    default:
        return {};
    }
}

Qt::ItemFlags PlaylistItemListModel::flags(const QModelIndex &index) const
{
    if (!index.isValid())
        return Qt::ItemIsDropEnabled;
    return Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsDragEnabled;
}

quint64 PlaylistItemListModel::itemIdAt(int row) const
{
    return row >= 0 && row < m_ids.size() ? m_ids.at(row) : 0;
}

int PlaylistItemListModel::rowOfItem(quint64 itemId) const
{
    if (!m_model || itemId == 0 || m_model->playlistOf(itemId) != m_playlist)
        return -1;
    // The document's row is 1-based and O(1); it agrees with ours unless a
    // change is being followed right now.
    const int row = m_model->rowOf(itemId) - 1;
    if (row >= 0 && row < m_ids.size() && m_ids.at(row) == itemId)
        return row;
    return int(m_ids.indexOf(itemId));
}

QModelIndex PlaylistItemListModel::indexOfItem(quint64 itemId) const
{
    const int row = rowOfItem(itemId);
    return row < 0 ? QModelIndex() : index(row);
}

void PlaylistItemListModel::repaintItem(quint64 itemId)
{
    const int row = rowOfItem(itemId);
    if (row >= 0)
        emit dataChanged(index(row), index(row));
}

void PlaylistItemListModel::reload()
{
    beginResetModel();
    m_playlist = m_model ? m_model->activePlaylistNumber() : 0;
    m_ids = m_model ? m_model->itemIds(m_playlist) : QList<quint64>();
    endResetModel();
}

void PlaylistItemListModel::onItemAdded(quint64 itemId)
{
    if (!m_model || m_model->playlistOf(itemId) != m_playlist)
        return;
    const int row = m_model->rowOf(itemId) - 1;
    if (row < 0 || row > m_ids.size() || m_ids.contains(itemId)) {
        resyncIfDiverged();
        return;
    }
    beginInsertRows({}, row, row);
    m_ids.insert(row, itemId);
    endInsertRows();
    // Rows below show their number: repaint them too.
    if (row + 1 < m_ids.size())
        emit dataChanged(index(row + 1), index(int(m_ids.size()) - 1));
}

void PlaylistItemListModel::onItemRemoved(quint64 itemId)
{
    const int row = int(m_ids.indexOf(itemId));
    if (row < 0)
        return;
    beginRemoveRows({}, row, row);
    m_ids.removeAt(row);
    endRemoveRows();
    if (row < m_ids.size())
        emit dataChanged(index(row), index(int(m_ids.size()) - 1));
}

void PlaylistItemListModel::onItemMoved(quint64 itemId, int previousRow, int currentRow)
{
    const int from = previousRow - 1;
    const int to = currentRow - 1;
    if (from < 0 || from >= m_ids.size() || m_ids.at(from) != itemId || to < 0 || to >= m_ids.size()) {
        resyncIfDiverged();
        return;
    }
    // Qt counts the destination as an insertion gap before the move.
    if (!beginMoveRows({}, from, from, {}, to > from ? to + 1 : to)) {
        resyncIfDiverged();
        return;
    }
    m_ids.move(from, to);
    endMoveRows();
    emit dataChanged(index(std::min(from, to)), index(std::max(from, to)));
}

void PlaylistItemListModel::onItemMovedToPlaylist(quint64 itemId, qint32 previousPlaylist, int, qint32 currentPlaylist,
                                                  int)
{
    if (previousPlaylist == m_playlist)
        onItemRemoved(itemId);
    if (currentPlaylist == m_playlist)
        onItemAdded(itemId);
}

void PlaylistItemListModel::onMarkChanged(quint64 previousItemId, quint64 currentItemId)
{
    repaintItem(previousItemId);
    if (currentItemId != previousItemId)
        repaintItem(currentItemId);
}

bool PlaylistItemListModel::resyncIfDiverged()
{
    if (!m_model)
        return false;
    if (m_model->itemIds(m_playlist) == m_ids)
        return false;
    reload();
    return true;
}

} // namespace tarnix
