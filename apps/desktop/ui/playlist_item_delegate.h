#pragma once

#include <QHash>
#include <QPointer>
#include <QString>
#include <QStyledItemDelegate>

namespace tarnix {
class PlaylistModel;
class PlaylistThumbnailStore;
} // namespace tarnix

namespace tarnix::playlist_view {

// What the panel knows of an item beyond the document: the picture level
// while it is on the program, the last error told for it, and the item the
// operator has selected. Written by the panel, read while painting.
struct PlaylistItemPaintState {
    QHash<quint64, double> levels;
    QHash<quint64, QString> errors;
    quint64 selectedItemId = 0;
    // The hardware skin draws the state badges in its own frame style.
    bool hardwareSkin = false;
};

// Paints one item as a list row or as a tile: picture, texts, tint, state
// badges (ON AIR, cue, EDIT, DSK, BGM PLAY), offline and pending marks. It
// reads the document by item id at paint time and keeps nothing. The view's
// properties `pressedTileItemId` and `tileSelectOnlyGesture` (the tile being
// pressed) and `dropMarkerGap` (the insertion row while dragging) are read
// from the view that paints.
class PlaylistItemDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    PlaylistItemDelegate(PlaylistModel *model, PlaylistThumbnailStore *thumbnails,
                         const PlaylistItemPaintState *state, QObject *parent = nullptr);

    void setTileMode(bool tiles) { m_tiles = tiles; }
    bool tileMode() const { return m_tiles; }
    static QSize tileSize();
    static int listRowHeight();

    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override;
    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override;
    bool helpEvent(QHelpEvent *event, QAbstractItemView *view, const QStyleOptionViewItem &option,
                   const QModelIndex &index) override;

    // The tooltip of an item: its name, path, state and the facts known.
    QString toolTip(quint64 itemId) const;

private:
    struct Facts;
    Facts factsOf(quint64 itemId, int row) const;
    void paintList(QPainter *painter, const QRect &rect, const Facts &facts, const QStyleOptionViewItem &option) const;
    void paintTile(QPainter *painter, const QRect &rect, const Facts &facts, const QStyleOptionViewItem &option) const;
    void paintPicture(QPainter *painter, const QRect &rect, const Facts &facts, bool statusOnBar) const;
    struct Badge {
        QString text;
        QColor background;
        QColor foreground;
    };
    static QList<Badge> badgesOf(const Facts &facts);
    static QFont badgeFont(const QFont &base);
    static int badgesWidth(const QList<Badge> &badges, const QFontMetrics &metrics);
    void paintBadges(QPainter *painter, const QPoint &topLeft, const QList<Badge> &badges, const QFont &font) const;
    void paintFrameMarks(QPainter *painter, const QRect &rect, const Facts &facts, const QStyleOptionViewItem &option) const;

    QPointer<PlaylistModel> m_model;
    QPointer<PlaylistThumbnailStore> m_thumbnails;
    const PlaylistItemPaintState *m_state = nullptr;
    bool m_tiles = false;
};

} // namespace tarnix::playlist_view
