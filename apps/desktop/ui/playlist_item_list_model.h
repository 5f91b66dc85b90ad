#pragma once

#include <QAbstractListModel>
#include <QList>
#include <QPointer>

namespace tarnix {

class PlaylistModel;
class PlaylistThumbnailStore;

// The rows of the active playlist as Qt's views want them. It holds only
// the item ids in row order and follows every change of the document as it
// happens (a row inserted, removed, moved or repainted), so that a large
// playlist keeps its scroll position and selection; only a change of the
// active playlist or a new document resets it. Everything else is read from
// the document when a view asks.
//
// Main thread only.
class PlaylistItemListModel : public QAbstractListModel
{
    Q_OBJECT

public:
    enum Role { ItemIdRole = Qt::UserRole };

    PlaylistItemListModel(PlaylistModel *model, PlaylistThumbnailStore *thumbnails, QObject *parent = nullptr);

    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;

    qint32 playlistNumber() const { return m_playlist; }
    quint64 itemIdAt(int row) const;
    // -1 when the item is not in this playlist.
    int rowOfItem(quint64 itemId) const;
    QModelIndex indexOfItem(quint64 itemId) const;

    // Asks the views to repaint the item's row (a change they see only
    // through the panel: a level, a position, an error text).
    void repaintItem(quint64 itemId);

private:
    void reload();
    void onItemAdded(quint64 itemId);
    void onItemRemoved(quint64 itemId);
    void onItemMoved(quint64 itemId, int previousRow, int currentRow);
    void onItemMovedToPlaylist(quint64 itemId, qint32 previousPlaylist, int previousRow, qint32 currentPlaylist,
                               int currentRow);
    void onMarkChanged(quint64 previousItemId, quint64 currentItemId);
    // What this model holds no longer matches the document (a change it
    // could not follow row by row): start again from the document.
    bool resyncIfDiverged();

    QPointer<PlaylistModel> m_model;
    qint32 m_playlist = 0;
    QList<quint64> m_ids;
};

} // namespace tarnix
