#include "ui/playlist_list_widget.h"

#include "ui/playlist_item_list_model.h"

#include <QApplication>
#include <QDrag>
#include <QDragEnterEvent>
#include <QMimeData>
#include <QMouseEvent>
#include <QPainter>
#include <QUrl>

namespace tarnix {

PlaylistListWidget::PlaylistListWidget(QWidget *parent) : QListView(parent)
{
    setSelectionMode(QAbstractItemView::SingleSelection);
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setUniformItemSizes(true);
    setDragEnabled(true);
    setAcceptDrops(true);
    setDropIndicatorShown(false);
    setDragDropMode(QAbstractItemView::DragDrop);
    setDefaultDropAction(Qt::MoveAction);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    setMouseTracking(false);
    setTileView(false);
}

void PlaylistListWidget::setTileView(bool tiles)
{
    m_tiles = tiles;
    clearPress();
    setViewMode(tiles ? QListView::IconMode : QListView::ListMode);
    setFlow(tiles ? QListView::LeftToRight : QListView::TopToBottom);
    setWrapping(tiles);
    setResizeMode(QListView::Adjust);
    setMovement(QListView::Static);
    setSpacing(tiles ? 2 : 0);
    // Changing the view mode switches dragging and the viewport's drops
    // to Qt's own idea of each mode; here both views drag and take drops.
    setDragEnabled(true);
    setDragDropMode(QAbstractItemView::DragDrop);
    viewport()->setAcceptDrops(true);
    scheduleDelayedItemsLayout();
}

PlaylistTileColours PlaylistListWidget::tileColours() const
{
    return {m_tileBackground,        m_tileAlternateBackground, m_tileText,
            m_tileSecondText,        m_tilePictureBackground,   m_tilePictureText};
}

quint64 PlaylistListWidget::itemIdAt(const QPoint &position) const
{
    const QModelIndex index = indexAt(position);
    return index.isValid() ? index.data(PlaylistItemListModel::ItemIdRole).value<quint64>() : 0;
}

void PlaylistListWidget::clearPress()
{
    const quint64 pressed = m_pressedItemId;
    m_pressedItemId = 0;
    m_selectOnly = false;
    if (pressed && model())
        viewport()->update();
}

void PlaylistListWidget::mousePressEvent(QMouseEvent *event)
{
    m_dragCopy = event->modifiers().testFlag(Qt::ControlModifier);
    if (m_tiles && event->button() == Qt::LeftButton) {
        m_pressedItemId = itemIdAt(event->position().toPoint());
        m_pressPosition = event->position().toPoint();
        m_selectOnly = event->modifiers().testFlag(Qt::ControlModifier);
        viewport()->update();
    }
    m_pressPosition = event->position().toPoint();
    // Selection by click reaches the panel through the current index; the
    // release below decides whether a tile is taken.
    ++m_operatorInput;
    QListView::mousePressEvent(event);
    --m_operatorInput;
}

void PlaylistListWidget::keyPressEvent(QKeyEvent *event)
{
    ++m_operatorInput;
    QListView::keyPressEvent(event);
    --m_operatorInput;
}

// One item is selected at a time, whatever the modifiers: Ctrl never
// deselects, it only keeps a tile click from taking.
QItemSelectionModel::SelectionFlags PlaylistListWidget::selectionCommand(const QModelIndex &index,
                                                                         const QEvent *event) const
{
    if (!index.isValid())
        return QItemSelectionModel::NoUpdate;
    if (event && (event->type() == QEvent::MouseMove || event->type() == QEvent::MouseButtonRelease))
        return QItemSelectionModel::NoUpdate;
    return QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows;
}

void PlaylistListWidget::mouseMoveEvent(QMouseEvent *event)
{
    if ((event->buttons() & Qt::LeftButton)
        && (event->position().toPoint() - m_pressPosition).manhattanLength() >= QApplication::startDragDistance()) {
        // A drag ends any tile gesture.
        clearPress();
    }
    QListView::mouseMoveEvent(event);
}

void PlaylistListWidget::mouseReleaseEvent(QMouseEvent *event)
{
    const quint64 pressed = m_pressedItemId;
    const bool ctrl = event->modifiers().testFlag(Qt::ControlModifier) || m_selectOnly;
    const quint64 released = itemIdAt(event->position().toPoint());
    QListView::mouseReleaseEvent(event);
    if (!m_tiles || event->button() != Qt::LeftButton)
        return;
    clearPress();
    if (!pressed || released != pressed)
        return;  // released elsewhere: nothing besides the normal selection
    if (!ctrl)
        emit tileTakeRequested(released);
}

void PlaylistListWidget::contextMenuEvent(QContextMenuEvent *event)
{
    const quint64 id = itemIdAt(event->pos());
    if (id)
        emit contextMenuRequested(id, event->globalPos());
}

bool PlaylistListWidget::acceptsDrag(const QMimeData *mime)
{
    if (!mime)
        return false;
    if (mime->hasFormat(QLatin1String(kPlaylistItemMimeType)))
        return true;
    if (mime->hasFormat(QLatin1String(kQtItemModelMimeType)))
        return false;
    return !droppedFiles(mime).isEmpty();
}

QStringList PlaylistListWidget::droppedFiles(const QMimeData *mime)
{
    QStringList paths;
    if (!mime || !mime->hasUrls())
        return paths;
    for (const QUrl &url : mime->urls()) {
        if (url.isLocalFile())
            paths.append(url.toLocalFile());
    }
    return paths;
}

bool PlaylistListWidget::isCopyDrop(const QDropEvent *event)
{
    if (event->modifiers().testFlag(Qt::ControlModifier))
        return true;
    const auto *from = qobject_cast<const PlaylistListWidget *>(event->source());
    return from && from->m_dragCopy;
}

int PlaylistListWidget::gapAt(const QPoint &position) const
{
    const QModelIndex index = indexAt(position);
    if (!model())
        return 0;
    if (!index.isValid())
        return model()->rowCount();
    const QRect rect = visualRect(index);
    const bool after = m_tiles ? position.x() > rect.center().x() : position.y() > rect.center().y();
    return index.row() + (after ? 1 : 0);
}

void PlaylistListWidget::setDropGap(int gap)
{
    if (gap == m_dropGap)
        return;
    m_dropGap = gap;
    viewport()->update();
    emit dropMarkerGapChanged(gap);
}

void PlaylistListWidget::dragEnterEvent(QDragEnterEvent *event)
{
    if (!acceptsDrag(event->mimeData())) {
        event->ignore();
        return;
    }
    event->acceptProposedAction();
    setDropGap(gapAt(event->position().toPoint()));
}

void PlaylistListWidget::dragMoveEvent(QDragMoveEvent *event)
{
    if (!acceptsDrag(event->mimeData())) {
        event->ignore();
        return;
    }
    if (event->mimeData()->hasFormat(QLatin1String(kPlaylistItemMimeType))) {
        event->setDropAction(isCopyDrop(event) ? Qt::CopyAction : Qt::MoveAction);
        event->accept();
    } else {
        event->acceptProposedAction();
    }
    setDropGap(gapAt(event->position().toPoint()));
}

void PlaylistListWidget::dragLeaveEvent(QDragLeaveEvent *event)
{
    setDropGap(-1);
    QListView::dragLeaveEvent(event);
}

void PlaylistListWidget::dropEvent(QDropEvent *event)
{
    const QMimeData *mime = event->mimeData();
    const int gap = gapAt(event->position().toPoint());
    setDropGap(-1);
    if (!acceptsDrag(mime)) {
        event->ignore();
        return;
    }
    if (mime->hasFormat(QLatin1String(kPlaylistItemMimeType))) {
        bool ok = false;
        const quint64 id = QString::fromLatin1(mime->data(QLatin1String(kPlaylistItemMimeType))).toULongLong(&ok);
        if (!ok || id == 0) {
            event->ignore();
            return;
        }
        const bool copy = isCopyDrop(event);
        event->setDropAction(copy ? Qt::CopyAction : Qt::MoveAction);
        event->accept();
        emit itemDropped(id, gap + 1, copy);
        return;
    }
    event->acceptProposedAction();
    emit filesDropped(droppedFiles(mime));
}

void PlaylistListWidget::startDrag(Qt::DropActions)
{
    const QModelIndex index = currentIndex();
    const quint64 id = index.isValid() ? index.data(PlaylistItemListModel::ItemIdRole).value<quint64>() : 0;
    if (!id)
        return;
    clearPress();
    auto *mime = new QMimeData;
    mime->setData(QLatin1String(kPlaylistItemMimeType), QByteArray::number(id));

    // The picture of the item as it is painted, faded, held where it was
    // pressed.
    const QRect rect = visualRect(index);
    QPixmap picture(rect.size());
    picture.fill(Qt::transparent);
    {
        QPainter painter(&picture);
        painter.setOpacity(dragPixmapOpacity());
        QStyleOptionViewItem option;
        initViewItemOption(&option);
        option.rect = QRect(QPoint(0, 0), rect.size());
        option.widget = this;
        itemDelegateForIndex(index)->paint(&painter, option, index);
    }
    auto *drag = new QDrag(this);
    drag->setMimeData(mime);
    drag->setPixmap(picture);
    drag->setHotSpot(m_pressPosition - rect.topLeft());
    const Qt::DropAction proposed = m_dragCopy ? Qt::CopyAction : Qt::MoveAction;
    drag->exec(Qt::CopyAction | Qt::MoveAction, proposed);
    setDropGap(-1);
}

void PlaylistListWidget::paintEvent(QPaintEvent *event)
{
    QListView::paintEvent(event);
    if (m_dropGap < 0 || !model())
        return;
    // The insertion mark between two items (or after the last).
    const int rows = model()->rowCount();
    QRect mark;
    if (rows == 0) {
        mark = QRect(4, 2, viewport()->width() - 8, 3);
    } else if (m_dropGap < rows) {
        const QRect rect = visualRect(model()->index(m_dropGap, 0));
        mark = m_tiles ? QRect(rect.left() - 2, rect.top(), 4, rect.height())
                       : QRect(rect.left(), rect.top() - 2, rect.width(), 4);
    } else {
        const QRect rect = visualRect(model()->index(rows - 1, 0));
        mark = m_tiles ? QRect(rect.right() - 1, rect.top(), 4, rect.height())
                       : QRect(rect.left(), rect.bottom() - 1, rect.width(), 4);
    }
    QPainter painter(viewport());
    painter.fillRect(mark, QColor(0x65, 0xa7, 0xd8));
}

} // namespace tarnix
