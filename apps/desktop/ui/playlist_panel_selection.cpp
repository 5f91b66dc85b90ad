// The one selected item: chosen by the operator (a click, keys, MIDI, a
// macro, all through SelectItem) or by the program (ON AIR's automatic
// next selection), shown in the view and announced to ON AIR.

#include "ui/playlist_panel.h"
#include "ui/playlist_panel_impl.h"

#include "playlist/playlist_model.h"
#include "ui/playlist_item_list_model.h"
#include "ui/playlist_list_widget.h"

#include <QItemSelectionModel>

namespace tarnix {

bool PlaylistPanel::Impl::setSelected(quint64 itemId, bool byOperator)
{
    if (itemId != 0 && (!model || !model->contains(itemId)))
        return false;
    // An item of another playlist brings its tab forward, so that the
    // operator sees what ON AIR would take.
    if (itemId != 0 && model->playlistOf(itemId) != model->activePlaylistNumber()) {
        const quint64 keep = itemId;
        selected = 0;
        if (!model->setActivePlaylist(model->playlistOf(keep)))
            return false;
        itemId = keep;
    }
    const bool changed = itemId != selected;
    if (!changed && !byOperator)
        return true;
    const quint64 previous = selected;
    selected = itemId;
    paintState.selectedItemId = itemId;
    listModel->repaintItem(previous);
    listModel->repaintItem(itemId);
    showSelectionInView();
    refreshButtons();
    refreshItemStatus();
    selection->announce(itemId, byOperator);
    emit q->selectionChanged();
    return true;
}

void PlaylistPanel::Impl::showSelectionInView()
{
    if (!list || !list->selectionModel())
        return;
    const QModelIndex index = listModel->indexOfItem(selected);
    applyingSelection = true;
    if (index.isValid()) {
        list->selectionModel()->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect);
        list->scrollTo(index);
    } else {
        list->selectionModel()->clear();
    }
    applyingSelection = false;
}

// The view's current row moved under the operator's hand: that is a
// SelectItem like any other; a refusal puts the view back.
void PlaylistPanel::Impl::onViewCurrentChanged(quint64 itemId)
{
    if (applyingSelection || itemId == selected)
        return;
    if (!list->isHandlingOperatorInput()) {
        // Rows came or went under the current one: the view shows the
        // selection again once the change is through.
        QMetaObject::invokeMethod(q, [this] { showSelectionInView(); }, Qt::QueuedConnection);
        return;
    }
    if (itemId == 0 || invoke(ControllerOperations::SelectItem, {QVariant::fromValue(itemId)}).status
                           != ControllerOperations::Invoked)
        showSelectionInView();
}

bool PlaylistPanel::selectItem(quint64 itemId)
{
    if (itemId == 0)
        return false;
    return d->setSelected(itemId, true);
}

bool PlaylistPanel::selectItemNumber(int number)
{
    if (!d->model)
        return false;
    const quint64 id = d->model->itemAt(d->model->activePlaylistNumber(), number);
    return id != 0 && d->setSelected(id, true);
}

bool PlaylistPanel::selectRelativeItem(int delta)
{
    if (!d->model || delta == 0)
        return false;
    const int count = d->model->count();
    if (count == 0)
        return false;
    // From nothing selected, down starts at the first row and up at the last.
    const int row = d->model->rowOf(d->selected);
    int target = row == 0 ? (delta > 0 ? 1 : count) : row + delta;
    target = std::clamp(target, 1, count);
    if (row != 0 && target == row)
        return false;
    return d->setSelected(d->model->itemAt(d->model->activePlaylistNumber(), target), true);
}

} // namespace tarnix
