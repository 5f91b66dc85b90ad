#pragma once

#include "ui/playlist_tile_colours.h"

#include <QListView>
#include <QPoint>
#include <QStringList>

namespace tarnix {

inline constexpr char kPlaylistItemMimeType[] = "application/x-tarnix-playlist-item";
// Qt's own item-model drag format: refused, so that only items dragged as
// this application's items enter a playlist.
inline constexpr char kQtItemModelMimeType[] = "application/x-qabstractitemmodeldatalist";

// The items of the active playlist as a list or as tiles. A click in the
// list only selects. In tile view a click on a tile takes it ON AIR, a
// Ctrl+click only selects it (and so prepares it); pressing one tile and
// releasing on another does nothing. Items are dragged as their id under
// the playlist item MIME type, and files are dropped as URIs.
class PlaylistListWidget : public QListView
{
    Q_OBJECT
    Q_PROPERTY(int dropMarkerGap READ dropMarkerGap NOTIFY dropMarkerGapChanged)
    Q_PROPERTY(double dragPixmapOpacity READ dragPixmapOpacity CONSTANT)
    Q_PROPERTY(quint64 pressedTileItemId READ pressedTileItemId)
    Q_PROPERTY(bool tileSelectOnlyGesture READ tileSelectOnlyGesture)
    Q_PROPERTY(int onAirPlaylistNumber READ onAirPlaylistNumber WRITE setOnAirPlaylistNumber)
    // The rows' and tiles' colours, set by the skin's style sheet
    // (qproperty-tileBackground: #ffffff; and so on).
    Q_PROPERTY(QColor tileBackground MEMBER m_tileBackground)
    Q_PROPERTY(QColor tileAlternateBackground MEMBER m_tileAlternateBackground)
    Q_PROPERTY(QColor tileText MEMBER m_tileText)
    Q_PROPERTY(QColor tileSecondText MEMBER m_tileSecondText)
    Q_PROPERTY(QColor tilePictureBackground MEMBER m_tilePictureBackground)
    Q_PROPERTY(QColor tilePictureText MEMBER m_tilePictureText)

public:
    explicit PlaylistListWidget(QWidget *parent = nullptr);

    void setTileView(bool tiles);
    bool isTileView() const { return m_tiles; }

    // The insertion gap (0-based row before which a drop lands); -1: none.
    int dropMarkerGap() const { return m_dropGap; }
    double dragPixmapOpacity() const { return 0.6; }
    quint64 pressedTileItemId() const { return m_pressedItemId; }
    bool tileSelectOnlyGesture() const { return m_selectOnly; }
    int onAirPlaylistNumber() const { return m_onAirPlaylist; }
    void setOnAirPlaylistNumber(int number) { m_onAirPlaylist = number; }

    quint64 itemIdAt(const QPoint &position) const;
    PlaylistTileColours tileColours() const;
    // True while a click or a key of the operator is being handled: a
    // current row that moves then is the operator's choice, not the effect
    // of rows coming and going.
    bool isHandlingOperatorInput() const { return m_operatorInput > 0; }

    // Whether a drag carries something this view takes: the playlist item
    // format or file URIs, never Qt's own item-model format.
    static bool acceptsDrag(const QMimeData *mime);
    // The local files of a drop, in order.
    static QStringList droppedFiles(const QMimeData *mime);
    // Whether an item drop copies: Ctrl held when the drag of one of these
    // views started, or when it is dropped. Anything else moves.
    static bool isCopyDrop(const QDropEvent *event);

signals:
    // A tile was clicked: select it and take it ON AIR.
    void tileTakeRequested(quint64 itemId);
    // `row` counts insertion gaps, 1-based: 1 puts the item first.
    void itemDropped(quint64 itemId, int row, bool copy);
    void filesDropped(const QStringList &paths);
    void contextMenuRequested(quint64 itemId, const QPoint &globalPosition);
    void dropMarkerGapChanged(int gap);

protected:
    void mousePressEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dragMoveEvent(QDragMoveEvent *event) override;
    void dragLeaveEvent(QDragLeaveEvent *event) override;
    void dropEvent(QDropEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void startDrag(Qt::DropActions supportedActions) override;
    QItemSelectionModel::SelectionFlags selectionCommand(const QModelIndex &index,
                                                         const QEvent *event = nullptr) const override;

private:
    int gapAt(const QPoint &position) const;
    void setDropGap(int gap);
    void clearPress();

    bool m_tiles = false;
    int m_dropGap = -1;
    quint64 m_pressedItemId = 0;
    QPoint m_pressPosition;
    bool m_selectOnly = false;
    bool m_dragCopy = false;
    int m_onAirPlaylist = 0;
    int m_operatorInput = 0;
    QColor m_tileBackground = PlaylistTileColours().background;
    QColor m_tileAlternateBackground = PlaylistTileColours().alternateBackground;
    QColor m_tileText = PlaylistTileColours().text;
    QColor m_tileSecondText = PlaylistTileColours().secondText;
    QColor m_tilePictureBackground = PlaylistTileColours().pictureBackground;
    QColor m_tilePictureText = PlaylistTileColours().pictureText;
};

} // namespace tarnix
