#pragma once

#include "playlist/item_selection.h"

#include <QPointer>

namespace tarnix {

class ControllerOperations;
class PlaylistModel;

// The selection without a panel: one item id, chosen by the operator through
// SelectItem or by the program. An item that leaves the document leaves the
// selection too.
class SelectionHolder : public ItemSelection
{
    Q_OBJECT

public:
    // Binds SelectItem when `operations` is given.
    SelectionHolder(PlaylistModel *model, ControllerOperations *operations, QObject *parent = nullptr);

    quint64 selectedItemId() const override { return m_selected; }
    bool select(quint64 itemId) override;
    // The operator's choice; id 0 clears the selection.
    bool selectByOperator(quint64 itemId);

private:
    bool change(quint64 itemId, bool byOperator);

    QPointer<PlaylistModel> m_model;
    quint64 m_selected = 0;
};

} // namespace tarnix
