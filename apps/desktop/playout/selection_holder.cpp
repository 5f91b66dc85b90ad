#include "playout/selection_holder.h"

#include "control/controller_operations.h"
#include "playlist/playlist_model.h"

namespace tarnix {

SelectionHolder::SelectionHolder(PlaylistModel *model, ControllerOperations *operations, QObject *parent)
    : ItemSelection(parent), m_model(model)
{
    if (m_model) {
        connect(m_model, &PlaylistModel::itemRemoved, this, [this](quint64 itemId, int) {
            if (itemId == m_selected)
                change(0, false);
        });
        connect(m_model, &PlaylistModel::modelReset, this, [this] {
            if (m_selected != 0 && (!m_model || !m_model->contains(m_selected)))
                change(0, false);
        });
    }
    if (operations)
        operations->bind<quint64>(ControllerOperations::SelectItem, this,
                                  [this](quint64 itemId) { return selectByOperator(itemId); });
}

bool SelectionHolder::select(quint64 itemId)
{
    return change(itemId, false);
}

bool SelectionHolder::selectByOperator(quint64 itemId)
{
    return change(itemId, true);
}

bool SelectionHolder::change(quint64 itemId, bool byOperator)
{
    if (itemId != 0 && (!m_model || !m_model->contains(itemId)))
        return false;
    if (itemId == m_selected && !byOperator)
        return true;
    m_selected = itemId;
    emit selectionChanged(itemId, byOperator);
    return true;
}

} // namespace tarnix
