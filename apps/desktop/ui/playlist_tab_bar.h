#pragma once

#include <QTabBar>

namespace tarnix {

// One tab per playlist, in the document's order, each carrying its playlist
// number. The operator drags tabs to reorder the playlists and drops items
// or files on a tab to put them into that playlist.
class PlaylistTabBar : public QTabBar
{
    Q_OBJECT

public:
    explicit PlaylistTabBar(QWidget *parent = nullptr);

    qint32 playlistAt(int index) const;
    int indexOfPlaylist(qint32 number) const;
    // True while the tabs are being rebuilt from the document: tab signals
    // then are not the operator's.
    bool isRebuilding() const { return m_rebuilding; }
    void setRebuilding(bool rebuilding) { m_rebuilding = rebuilding; }

signals:
    // The operator dropped a tab at `index` (0-based) after dragging it.
    void playlistDragged(qint32 number, int index);
    void itemDroppedOnPlaylist(quint64 itemId, qint32 number, bool copy);
    void filesDroppedOnPlaylist(qint32 number, const QStringList &paths);

protected:
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dragMoveEvent(QDragMoveEvent *event) override;
    void dropEvent(QDropEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;

private:
    bool m_rebuilding = false;
    qint32 m_draggedPlaylist = 0;
    int m_draggedIndex = 0;
};

} // namespace tarnix
