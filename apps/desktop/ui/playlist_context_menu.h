#pragma once

#include <QList>
#include <QMenu>
#include <QVariant>

#include <functional>

namespace tarnix {

class PlaylistItemOperations;
class PlaylistModel;

// The menu of one playlist item: start and end modes, fades, copy and paste
// of its state, name, colour, separator and map. Each entry is a controller
// operation on the item, given to `invoke`; rename and map are asked of the
// panel. Built for one item at the moment it opens.
class PlaylistContextMenu : public QMenu
{
    Q_OBJECT

public:
    using Invoke = std::function<void(int action, const QList<QVariant> &arguments)>;

    PlaylistContextMenu(PlaylistModel *model, PlaylistItemOperations *itemOperations, quint64 itemId, Invoke invoke,
                        QWidget *parent = nullptr);

signals:
    void renameRequested(quint64 itemId);
    void mapRequested(quint64 itemId);

private:
    quint64 m_itemId = 0;
    Invoke m_invoke;
};

} // namespace tarnix
