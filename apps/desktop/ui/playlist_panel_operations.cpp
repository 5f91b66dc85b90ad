// What the panel asks for and what it answers: its buttons and drops become
// controller operations (logged, and the same path keys, MIDI and macros
// take), and it binds and guards the operations that depend on its
// selection.

#include "ui/playlist_panel.h"
#include "ui/playlist_panel_impl.h"

#include "playlist/playlist_model.h"
#include "shell/localized_text.h"
#include "shell/log_categories.h"
#include "shell/user_info_center.h"
#include "ui/playlist_item_list_model.h"
#include "ui/playlist_list_widget.h"
#include "ui/playlist_tab_bar.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QItemSelectionModel>
#include <QLineEdit>
#include <QPushButton>
#include <QToolButton>

namespace tarnix {

namespace {

using Ops = ControllerOperations;

const QString kPlaylistSource = QStringLiteral("PLAYLIST");

// The durations the step button goes through, in milliseconds.
constexpr qint64 kCrossfadeSteps[] = {500, 1000, 1500, 2000, 3000, 5000};

} // namespace

Ops::Result PlaylistPanel::Impl::invoke(int action, const QList<QVariant> &arguments)
{
    if (!operations)
        return {Ops::Unavailable};
    return operations->invoke(Ops::Action(action), arguments);
}

void PlaylistPanel::Impl::tellActionBlocked(PlaylistItemAction action)
{
    if (!userInfo)
        return;
    userInfo->post(UserInfoSeverity::Warning, kPlaylistSource,
                   LocalizedText(QStringLiteral("playlist.conversion.action_unavailable"),
                                 {playlistItemActionLabel(action)},
                                 QStringLiteral("This item is being analyzed or converted and cannot be used for %1.")));
}

// The panel's own signals go on as operations.
void PlaylistPanel::Impl::connectIntentions()
{
    QObject::connect(q, &PlaylistPanel::addRequested, q, [this] { invoke(Ops::AddFilesDialog); });
    QObject::connect(q, &PlaylistPanel::moveUpRequested, q, [this](quint64 id) {
        invoke(Ops::MoveItem, {QVariant::fromValue(id), QVariant::fromValue(-1)});
    });
    QObject::connect(q, &PlaylistPanel::moveDownRequested, q, [this](quint64 id) {
        invoke(Ops::MoveItem, {QVariant::fromValue(id), QVariant::fromValue(1)});
    });
    QObject::connect(q, &PlaylistPanel::moveRequested, q, [this](quint64 id, int row) {
        invoke(Ops::MoveItemToRow, {QVariant::fromValue(id), QVariant::fromValue(row)});
    });
    QObject::connect(q, &PlaylistPanel::itemDropRequested, q, [this](quint64 id, qint32 playlist, int row, bool copy) {
        invoke(Ops::TransferItem, {QVariant::fromValue(id), QVariant::fromValue(int(playlist)), QVariant::fromValue(row),
                                   QVariant::fromValue(copy)});
    });
    QObject::connect(q, &PlaylistPanel::filesDropped, q,
                     [this](const QStringList &paths) { invoke(Ops::AddFiles, {QVariant::fromValue(paths)}); });
    QObject::connect(q, &PlaylistPanel::removeRequested, q,
                     [this](quint64 id) { invoke(Ops::RemoveItem, {QVariant::fromValue(id)}); });
    QObject::connect(q, &PlaylistPanel::bulkOperationRequested, q, [this](PlaylistBulkOperation operation) {
        invoke(Ops::PlaylistBulk, {QVariant::fromValue(operation)});
    });
    QObject::connect(q, &PlaylistPanel::onAirRequested, q, [this] { invoke(Ops::TakeSelectedOnAir); });
    QObject::connect(q, &PlaylistPanel::offAirRequested, q, [this] { invoke(Ops::OffAir); });
    if (itemOperations) {
        QObject::connect(itemOperations, &PlaylistItemOperations::actionBlocked, q,
                         [this](PlaylistItemAction action) { tellActionBlocked(action); });
        QObject::connect(itemOperations, &PlaylistItemOperations::copiedStateChanged, q,
                         [this] { refreshPlaylistMenu(); });
    }
}

void PlaylistPanel::Impl::connectWidgets()
{
    QObject::connect(tabBar, &QTabBar::currentChanged, q, [this](int index) {
        if (!tabBar->isRebuilding())
            tellTabActivation(tabBar->playlistAt(index));
    });
    QObject::connect(tabBar, &PlaylistTabBar::playlistDragged, q, [this](qint32 number, int index) {
        if (model && model->movePlaylist(number, index))
            qCInfo(lcPlaylist).noquote() << QStringLiteral("UI playlist %1 moved to tab %2").arg(number).arg(index + 1);
        // Moved or refused, the tabs show the document's order.
        rebuildTabs();
    });
    QObject::connect(tabBar, &PlaylistTabBar::itemDroppedOnPlaylist, q, [this](quint64 id, qint32 number, bool copy) {
        if (model)
            emit q->itemDropRequested(id, number, model->itemCount(number) + 1, copy);
    });
    QObject::connect(tabBar, &PlaylistTabBar::filesDroppedOnPlaylist, q,
                     [this](qint32 number, const QStringList &paths) {
                         // The files go where the operator dropped them: that
                         // playlist becomes the active one first.
                         tellTabActivation(number);
                         if (model && model->activePlaylistNumber() == number && !paths.isEmpty())
                             emit q->filesDropped(paths);
                     });
    QObject::connect(addTabButton, &QToolButton::clicked, q, [this] {
        const QList<qint32> before = model ? model->playlistNumbers() : QList<qint32>();
        if (invoke(Ops::CreatePlaylist).status != Ops::Invoked || !model)
            return;
        for (qint32 number : model->playlistNumbers()) {
            if (!before.contains(number))
                tellTabActivation(number);
        }
    });
    QObject::connect(nameEdit, &QLineEdit::editingFinished, q, [this] {
        if (!model)
            return;
        const qint32 active = model->activePlaylistNumber();
        if (nameEdit->text() != model->playlistName(active))
            invoke(Ops::RenamePlaylist, {QVariant::fromValue(int(active)), QVariant::fromValue(nameEdit->text())});
        refreshPlaylistFields();
    });
    QObject::connect(listViewButton, &QToolButton::clicked, q, [this] { q->setTileView(false); });
    QObject::connect(tileViewButton, &QToolButton::clicked, q, [this] { q->setTileView(true); });

    QObject::connect(list->selectionModel(), &QItemSelectionModel::currentChanged, q,
                     [this](const QModelIndex &current) {
                         onViewCurrentChanged(current.data(PlaylistItemListModel::ItemIdRole).value<quint64>());
                     });
    // A new model of the view (after a reset) keeps the same selection model.
    QObject::connect(listModel, &QAbstractItemModel::modelReset, q, [this] { showSelectionInView(); });
    QObject::connect(list, &PlaylistListWidget::tileTakeRequested, q, [this](quint64 id) {
        // Only the item the click selected is taken; a refused selection
        // leaves the take undone.
        if (id == selected)
            emit q->onAirRequested();
    });
    QObject::connect(list, &PlaylistListWidget::itemDropped, q, [this](quint64 id, int row, bool copy) {
        if (model)
            emit q->itemDropRequested(id, model->activePlaylistNumber(), row, copy);
    });
    QObject::connect(list, &PlaylistListWidget::filesDropped, q, [this](const QStringList &paths) {
        if (!paths.isEmpty())
            emit q->filesDropped(paths);
    });
    QObject::connect(list, &PlaylistListWidget::contextMenuRequested, q,
                     [this](quint64 id, const QPoint &position) { showContextMenu(id, position); });

    QObject::connect(onAirButton, &QPushButton::clicked, q, [this] {
        if (model && model->onAirItemId())
            emit q->offAirRequested();
        else
            emit q->onAirRequested();
    });
    QObject::connect(addButton, &QPushButton::clicked, q, [this] { emit q->addRequested(); });
    QObject::connect(editButton, &QPushButton::clicked, q, [this] { emit q->editRequested(); });
    QObject::connect(deleteButton, &QPushButton::clicked, q, [this] {
        if (selected)
            emit q->removeRequested(selected);
    });
    QObject::connect(moveUpButton, &QToolButton::clicked, q, [this] {
        if (selected)
            emit q->moveUpRequested(selected);
    });
    QObject::connect(moveDownButton, &QToolButton::clicked, q, [this] {
        if (selected)
            emit q->moveDownRequested(selected);
    });
    // These have no operation of their own; they are logged here so that
    // the log holds every change the operator made from the panel.
    QObject::connect(crossfadeCheckBox, &QCheckBox::toggled, q, [this](bool on) {
        if (!model || !model->setPlaylistManualCrossfadeEnabled(model->activePlaylistNumber(), on)) {
            refreshPlaylistFields();
            return;
        }
        qCInfo(lcPlaylist).noquote() << QStringLiteral("UI playlist %1 take crossfade %2")
                                            .arg(model->activePlaylistNumber())
                                            .arg(on ? QStringLiteral("on") : QStringLiteral("off"));
    });
    QObject::connect(crossfadeDuration, &QDoubleSpinBox::valueChanged, q, [this](double seconds) {
        if (!model || !model->setManualCrossfadeDurationMs(qRound64(seconds * 1000.0))) {
            refreshPlaylistFields();
            return;
        }
        qCInfo(lcPlaylist).noquote()
            << QStringLiteral("UI take crossfade duration %1 ms").arg(model->manualCrossfadeDurationMs());
    });
    QObject::connect(fadeDurationStepButton, &QToolButton::clicked, q, [this] { stepCrossfadeDuration(); });
    QObject::connect(bulkCombo, &QComboBox::currentIndexChanged, q, [this] { refreshButtons(); });
    QObject::connect(bulkApplyButton, &QPushButton::clicked, q, [this] { applyBulkFromCombo(); });
}

void PlaylistPanel::Impl::tellTabActivation(qint32 number)
{
    if (!model || number == 0)
        return;
    if (number != model->activePlaylistNumber())
        invoke(Ops::ActivatePlaylist, {QVariant::fromValue(int(number))});
    // Refused or not, the tabs show the document's active playlist.
    rebuildTabs();
}

void PlaylistPanel::Impl::applyBulkFromCombo()
{
    emit q->bulkOperationRequested(PlaylistBulkOperation(bulkCombo->currentData().toInt()));
}

void PlaylistPanel::Impl::stepCrossfadeDuration()
{
    if (!model)
        return;
    const qint64 now = model->manualCrossfadeDurationMs();
    qint64 next = kCrossfadeSteps[0];
    for (qint64 step : kCrossfadeSteps) {
        if (step > now) {
            next = step;
            break;
        }
    }
    if (model->setManualCrossfadeDurationMs(next))
        qCInfo(lcPlaylist).noquote() << QStringLiteral("UI take crossfade duration %1 ms").arg(next);
    refreshPlaylistFields();
}

bool PlaylistPanel::removeSelectedItem()
{
    if (!d->selected)
        return false;
    return d->invoke(Ops::RemoveItem, {QVariant::fromValue(d->selected)}).status == Ops::Invoked;
}

bool PlaylistPanel::copySelectedState()
{
    return d->selected && d->itemOperations && d->itemOperations->copyItemState(d->selected);
}

bool PlaylistPanel::pasteSelectedState()
{
    return d->selected && d->itemOperations && d->itemOperations->pasteItemState(d->selected);
}

void PlaylistPanel::Impl::bindSelectionOperations()
{
    ControllerOperations *ops = operations;
    if (!ops)
        return;
    ops->bindMember(Ops::SelectItem, q, &PlaylistPanel::selectItem);
    ops->bindMember(Ops::SelectItemNumber, q, &PlaylistPanel::selectItemNumber);
    ops->bindMember(Ops::SelectRelativeItem, q, &PlaylistPanel::selectRelativeItem);
    ops->bindMember(Ops::RemoveSelectedItem, q, &PlaylistPanel::removeSelectedItem);
    ops->bindMember(Ops::CopySelectedState, q, &PlaylistPanel::copySelectedState);
    ops->bindMember(Ops::PasteSelectedState, q, &PlaylistPanel::pasteSelectedState);

    // A panel that is switched off (a modal question over it) takes no
    // selection from anywhere.
    auto enabled = [this] { return q->isEnabled(); };
    ops->setGuard<quint64>(Ops::SelectItem, q, [enabled](quint64) { return enabled(); });
    ops->setGuard<int>(Ops::SelectItemNumber, q, [enabled](int) { return enabled(); });
    ops->setGuard<int>(Ops::SelectRelativeItem, q, [enabled](int) { return enabled(); });
    // The DEL button's rule: something selected that may leave the playlist.
    ops->setGuard<>(Ops::RemoveSelectedItem, q, [this] {
        return model && selected && model->contains(selected) && selected != model->onAirItemId()
            && selected != model->bgmItemId();
    });
    // The apply button's rule: Undo needs a record, Delete another playlist.
    ops->setGuard<PlaylistBulkOperation>(Ops::PlaylistBulk, q, [this](PlaylistBulkOperation operation) {
        if (!model)
            return false;
        if (operation == PlaylistBulkOperation::Undo)
            return model->isBulkUndoAvailable();
        if (operation == PlaylistBulkOperation::Delete)
            return model->playlistNumbers().size() > 1;
        return true;
    });
    // The document's rows are not changed from a switched-off panel's side
    // either, whoever asks.
    ops->setGuard<quint64, int>(Ops::MoveItem, q, [enabled](quint64, int) { return enabled(); });
    ops->setGuard<quint64, int>(Ops::MoveItemToRow, q, [enabled](quint64, int) { return enabled(); });
    ops->setGuard<quint64>(Ops::RemoveItem, q, [enabled](quint64) { return enabled(); });
    // A copy of an item still being analysed has nothing to copy yet; the
    // operator is told why, whichever way the copy was asked for.
    ops->setGuard<quint64, int, int, bool>(Ops::TransferItem, q, [this](quint64 id, int, int, bool copy) {
        if (copy && model && model->isPending(id)) {
            tellActionBlocked(PlaylistItemAction::Copy);
            return false;
        }
        return true;
    });
}

} // namespace tarnix
