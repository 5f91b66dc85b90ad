#include "ui/playlist_tab_bar.h"

#include "ui/playlist_list_widget.h"

#include <QDragEnterEvent>
#include <QMimeData>
#include <QMouseEvent>

#include <utility>

namespace tarnix {

PlaylistTabBar::PlaylistTabBar(QWidget *parent) : QTabBar(parent)
{
    setMovable(true);
    setAcceptDrops(true);
    setExpanding(false);
    setDocumentMode(true);
    setElideMode(Qt::ElideRight);
    setUsesScrollButtons(true);
    connect(this, &QTabBar::tabMoved, this, [this](int, int to) {
        if (!m_rebuilding) {
            m_draggedPlaylist = playlistAt(to);
            m_draggedIndex = to;
        }
    });
}

qint32 PlaylistTabBar::playlistAt(int index) const
{
    return index >= 0 && index < count() ? tabData(index).toInt() : 0;
}

int PlaylistTabBar::indexOfPlaylist(qint32 number) const
{
    for (int i = 0; i < count(); ++i) {
        if (tabData(i).toInt() == number)
            return i;
    }
    return -1;
}

// The document is told of a tab's new place once the drag has ended, not
// at each step of it.
void PlaylistTabBar::mouseReleaseEvent(QMouseEvent *event)
{
    QTabBar::mouseReleaseEvent(event);
    if (m_draggedPlaylist) {
        const qint32 number = std::exchange(m_draggedPlaylist, 0);
        // Where the tab was last put while dragging; the tabs are rebuilt
        // from the document's order afterwards either way.
        emit playlistDragged(number, m_draggedIndex);
    }
}

void PlaylistTabBar::dragEnterEvent(QDragEnterEvent *event)
{
    if (PlaylistListWidget::acceptsDrag(event->mimeData()))
        event->acceptProposedAction();
    else
        event->ignore();
}

void PlaylistTabBar::dragMoveEvent(QDragMoveEvent *event)
{
    const int index = tabAt(event->position().toPoint());
    if (index < 0 || !PlaylistListWidget::acceptsDrag(event->mimeData())) {
        event->ignore();
        return;
    }
    if (event->mimeData()->hasFormat(QLatin1String(kPlaylistItemMimeType))) {
        event->setDropAction(PlaylistListWidget::isCopyDrop(event) ? Qt::CopyAction : Qt::MoveAction);
        event->accept(tabRect(index));
    } else {
        event->acceptProposedAction();
    }
}

void PlaylistTabBar::dropEvent(QDropEvent *event)
{
    const qint32 number = playlistAt(tabAt(event->position().toPoint()));
    const QMimeData *mime = event->mimeData();
    if (!number || !PlaylistListWidget::acceptsDrag(mime)) {
        event->ignore();
        return;
    }
    if (mime->hasFormat(QLatin1String(kPlaylistItemMimeType))) {
        bool ok = false;
        const quint64 id = QString::fromLatin1(mime->data(QLatin1String(kPlaylistItemMimeType))).toULongLong(&ok);
        if (!ok || !id) {
            event->ignore();
            return;
        }
        const bool copy = PlaylistListWidget::isCopyDrop(event);
        event->setDropAction(copy ? Qt::CopyAction : Qt::MoveAction);
        event->accept();
        emit itemDroppedOnPlaylist(id, number, copy);
        return;
    }
    event->acceptProposedAction();
    emit filesDroppedOnPlaylist(number, PlaylistListWidget::droppedFiles(mime));
}

} // namespace tarnix
