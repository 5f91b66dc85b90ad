#include "ui/playlist_panel.h"
#include "ui/playlist_panel_impl.h"

#include "playlist/playlist_model.h"
#include "playlist/playlist_thumbnail_store.h"
#include "shell/localized_text.h"
#include "ui/playlist_bulk_entries.h"
#include "ui/ui_text.h"
#include "ui/playlist_item_list_model.h"
#include "ui/playlist_list_widget.h"
#include "ui/playlist_tab_bar.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QStandardItemModel>
#include <QStyle>
#include <QToolButton>
#include <QVBoxLayout>

namespace tarnix {

namespace {

using playlist_view::kBulkEntries;
using ui::text;

QString powerPointColourStyle(const char *colour)
{
    return QStringLiteral("color: %1; font-weight: 600;").arg(QLatin1String(colour));
}

} // namespace

// The two small faces the ON AIR side sees ---------------------------------

quint64 PlaylistPanelSelection::selectedItemId() const
{
    return m_panel->selected;
}

bool PlaylistPanelSelection::select(quint64 itemId)
{
    return m_panel->setSelected(itemId, false);
}

bool PlaylistPanelProgramView::manualCrossfadeEnabled() const
{
    const PlaylistModel *model = m_panel->model;
    return model && model->playlistManualCrossfadeEnabled(model->activePlaylistNumber());
}

qint64 PlaylistPanelProgramView::manualCrossfadeDurationMs() const
{
    return m_panel->model ? m_panel->model->manualCrossfadeDurationMs() : 1000;
}

void PlaylistPanelProgramView::showItemLevel(quint64 itemId, double level)
{
    auto &levels = m_panel->paintState.levels;
    const double before = levels.value(itemId, 0.0);
    if (level <= 0.0)
        levels.remove(itemId);
    else
        levels.insert(itemId, level);
    // Repainted only when the strip would change by a pixel or so.
    if (std::abs(before - level) >= 0.02 || (level <= 0.0) != (before <= 0.0))
        m_panel->listModel->repaintItem(itemId);
}

// Construction ---------------------------------------------------------------

PlaylistPanel::Impl::Impl(PlaylistPanel *owner, PlaylistPanelOptions options) : q(owner), options(std::move(options)) {}

PlaylistPanel::PlaylistPanel(PlaylistModel *model, PlaylistThumbnailStore *thumbnails, ControllerOperations *operations,
                             PlaylistItemOperations *itemOperations, UserInfoCenter *userInfo, QWidget *parent,
                             PlaylistPanelOptions options)
    : QWidget(parent), d(std::make_unique<Impl>(this, std::move(options)))
{
    setObjectName(QStringLiteral("playlistPanel"));
    setMinimumWidth(520);
    d->model = model;
    d->thumbnails = thumbnails;
    d->operations = operations;
    d->itemOperations = itemOperations;
    d->userInfo = userInfo;
    d->selection = std::make_unique<PlaylistPanelSelection>(d.get());
    d->programView = std::make_unique<PlaylistPanelProgramView>(d.get());
    d->listModel = new PlaylistItemListModel(model, thumbnails, this);
    d->delegate = new playlist_view::PlaylistItemDelegate(model, thumbnails, &d->paintState, this);

    d->buildWidgets();
    d->buildPlaylistMenu();
    d->connectModel();
    d->connectWidgets();
    d->connectIntentions();
    d->bindSelectionOperations();
    d->setTimeZoneFromName(QString());

    d->clockTimer.setInterval(d->options.clockInterval);
    QObject::connect(&d->clockTimer, &QTimer::timeout, this, [impl = d.get()] { impl->refreshClock(); });
    d->clockTimer.start();
    d->positionTimer.setInterval(d->options.positionRepaintInterval);
    QObject::connect(&d->positionTimer, &QTimer::timeout, this, [impl = d.get()] {
        if (impl->model)
            impl->listModel->repaintItem(impl->model->onAirItemId());
    });

    d->rebuildTabs();
    d->refreshPlaylistFields();
    d->retranslate();
    d->refreshButtons();
    d->refreshClock();
    d->refreshItemStatus();
}

PlaylistPanel::~PlaylistPanel()
{
    // The views go before the state they paint from.
    delete d->list;
    d->list = nullptr;
}

ItemSelection *PlaylistPanel::selection() const { return d->selection.get(); }
PlaylistPanelView *PlaylistPanel::programView() const { return d->programView.get(); }
quint64 PlaylistPanel::selectedItemId() const { return d->selected; }
QMenu *PlaylistPanel::playlistMenu() const { return d->playlistMenu; }
PlaylistPanel::EditActivation PlaylistPanel::editActivation() const { return d->editActivation; }
bool PlaylistPanel::isTileView() const { return d->list->isTileView(); }

void PlaylistPanel::setEditActivation(EditActivation mode)
{
    d->editActivation = mode;
    d->retranslate();
}

void PlaylistPanel::setShortcutHints(const QString &takeKeys, const QString &editKeys)
{
    d->takeKeys = takeKeys;
    d->editKeys = editKeys;
    d->retranslate();
}

void PlaylistPanel::setTimeZone(const QString &zoneId)
{
    d->setTimeZoneFromName(zoneId);
    d->refreshClock();
}

void PlaylistPanel::setTileView(bool tiles)
{
    d->list->setTileView(tiles);
    d->delegate->setTileMode(tiles);
    d->listViewButton->setChecked(!tiles);
    d->tileViewButton->setChecked(tiles);
    d->retranslate();
    d->showSelectionInView();
}

void PlaylistPanel::Impl::setTimeZoneFromName(const QString &zoneId)
{
    const QByteArray id = (zoneId.isEmpty() ? QStringLiteral("Asia/Tokyo") : zoneId).toUtf8();
    timeZoneValid = QTimeZone::isTimeZoneIdAvailable(id);
    timeZone = timeZoneValid ? QTimeZone(id) : QTimeZone::systemTimeZone();
}

void PlaylistPanel::Impl::buildWidgets()
{
    auto *layout = new QVBoxLayout(q);
    layout->setContentsMargins(4, 4, 4, 4);
    layout->setSpacing(4);

    // Tabs, the plus button, the name field and the view buttons.
    auto *tabRow = new QHBoxLayout;
    tabRow->setSpacing(4);
    tabBar = new PlaylistTabBar(q);
    tabBar->setObjectName(QStringLiteral("playlistTabBar"));
    addTabButton = new QToolButton(q);
    addTabButton->setObjectName(QStringLiteral("playlistAddTabButton"));
    addTabButton->setText(QStringLiteral("+"));
    tabRow->addWidget(tabBar, 1);
    tabRow->addWidget(addTabButton);
    layout->addLayout(tabRow);

    auto *nameRow = new QHBoxLayout;
    nameEdit = new QLineEdit(q);
    nameEdit->setObjectName(QStringLiteral("playlistNameEdit"));
    itemCountLabel = new QLabel(q);
    itemCountLabel->setObjectName(QStringLiteral("playlistItemCountLabel"));
    listViewButton = new QToolButton(q);
    listViewButton->setObjectName(QStringLiteral("playlistListViewButton"));
    listViewButton->setText(QStringLiteral("☰"));
    listViewButton->setCheckable(true);
    listViewButton->setChecked(true);
    tileViewButton = new QToolButton(q);
    tileViewButton->setObjectName(QStringLiteral("playlistTileViewButton"));
    tileViewButton->setText(QStringLiteral("▦"));
    tileViewButton->setCheckable(true);
    nameRow->addWidget(nameEdit, 1);
    nameRow->addWidget(itemCountLabel);
    nameRow->addSpacing(8);
    nameRow->addWidget(listViewButton);
    nameRow->addWidget(tileViewButton);
    layout->addLayout(nameRow);

    list = new PlaylistListWidget(q);
    list->setObjectName(QStringLiteral("playlistListWidget"));
    list->setModel(listModel);
    list->setItemDelegate(delegate);
    layout->addWidget(list, 1);

    layout->addWidget(buildButtonRow());
    layout->addWidget(buildStatusRow());
}

QWidget *PlaylistPanel::Impl::buildButtonRow()
{
    auto *row = new QWidget(q);
    row->setObjectName(QStringLiteral("playlistButtonRow"));
    auto *grid = new QVBoxLayout(row);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setSpacing(4);

    auto *first = new QHBoxLayout;
    onAirButton = new QPushButton(row);
    onAirButton->setObjectName(QStringLiteral("playlistOnAirButton"));
    onAirButton->setProperty("onAirActive", false);
    // Lit while ON AIR, whatever skin is in use; a skin may light it its own way.
    onAirButton->setStyleSheet(QStringLiteral(
        "#playlistOnAirButton { font-weight: 700; }"
        "#playlistOnAirButton[onAirActive=\"true\"] { background: #a92e36; color: white; }"));
    onAirButton->setMinimumHeight(44);
    editButton = new QPushButton(row);
    editButton->setObjectName(QStringLiteral("playlistEditButton"));
    editButton->setMinimumHeight(44);
    addButton = new QPushButton(row);
    addButton->setObjectName(QStringLiteral("playlistAddButton"));
    addButton->setMinimumHeight(44);
    deleteButton = new QPushButton(row);
    deleteButton->setObjectName(QStringLiteral("playlistDeleteButton"));
    deleteButton->setMinimumHeight(44);
    moveUpButton = new QToolButton(row);
    moveUpButton->setObjectName(QStringLiteral("playlistMoveUpButton"));
    moveUpButton->setArrowType(Qt::UpArrow);
    moveUpButton->setMinimumSize(36, 44);
    moveDownButton = new QToolButton(row);
    moveDownButton->setObjectName(QStringLiteral("playlistMoveDownButton"));
    moveDownButton->setArrowType(Qt::DownArrow);
    moveDownButton->setMinimumSize(36, 44);
    first->addWidget(onAirButton, 3);
    first->addWidget(editButton, 2);
    first->addWidget(addButton, 2);
    first->addWidget(deleteButton, 1);
    first->addWidget(moveUpButton);
    first->addWidget(moveDownButton);
    grid->addLayout(first);

    auto *second = new QHBoxLayout;
    crossfadeCheckBox = new QCheckBox(row);
    crossfadeCheckBox->setObjectName(QStringLiteral("playlistCrossfadeCheckBox"));
    crossfadeDuration = new QDoubleSpinBox(row);
    crossfadeDuration->setObjectName(QStringLiteral("playlistCrossfadeDurationSpinBox"));
    crossfadeDuration->setRange(0.1, 60.0);
    crossfadeDuration->setDecimals(1);
    crossfadeDuration->setSingleStep(0.1);
    crossfadeDuration->setSuffix(QStringLiteral(" s"));
    crossfadeDuration->setKeyboardTracking(false);
    fadeDurationStepButton = new QToolButton(row);
    fadeDurationStepButton->setObjectName(QStringLiteral("fadeDurationStepButton"));
    fadeDurationStepButton->setText(QStringLiteral("»"));
    bulkCombo = new QComboBox(row);
    bulkCombo->setObjectName(QStringLiteral("playlistBulkOperationComboBox"));
    for (const playlist_view::BulkEntry &entry : kBulkEntries)
        bulkCombo->addItem(QString(), int(entry.operation));
    bulkApplyButton = new QPushButton(row);
    bulkApplyButton->setObjectName(QStringLiteral("playlistBulkApplyButton"));
    second->addWidget(crossfadeCheckBox);
    second->addWidget(crossfadeDuration);
    second->addWidget(fadeDurationStepButton);
    second->addStretch(1);
    second->addWidget(bulkCombo);
    second->addWidget(bulkApplyButton);
    grid->addLayout(second);
    return row;
}

QWidget *PlaylistPanel::Impl::buildStatusRow()
{
    auto *row = new QWidget(q);
    row->setObjectName(QStringLiteral("playlistStatusRow"));
    auto *layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    auto *clockBox = new QVBoxLayout;
    clockBox->setSpacing(0);
    clockTitle = new QLabel(row);
    clockTitle->setObjectName(QStringLiteral("playlistCurrentTimeTitle"));
    clockLabel = new QLabel(row);
    clockLabel->setObjectName(QStringLiteral("playlistCurrentTime"));
    QFont clockFont = clockLabel->font();
    clockFont.setPointSizeF(clockFont.pointSizeF() * 1.8);
    clockFont.setBold(true);
    clockFont.setStyleHint(QFont::Monospace);
    clockLabel->setFont(clockFont);
    clockBox->addWidget(clockTitle);
    clockBox->addWidget(clockLabel);
    layout->addLayout(clockBox);
    layout->addSpacing(12);
    auto *statusBox = new QVBoxLayout;
    powerPointStatus = new QLabel(row);
    powerPointStatus->setObjectName(QStringLiteral("playlistPowerPointCueStatus"));
    powerPointStatus->hide();
    itemErrorLabel = new QLabel(row);
    itemErrorLabel->setObjectName(QStringLiteral("playlistItemErrorStatus"));
    itemErrorLabel->setStyleSheet(QStringLiteral("color: #ed555c;"));
    itemErrorLabel->setWordWrap(true);
    itemErrorLabel->hide();
    statusBox->addWidget(powerPointStatus);
    statusBox->addWidget(itemErrorLabel);
    layout->addLayout(statusBox, 1);
    return row;
}

// The document's changes --------------------------------------------------------

void PlaylistPanel::Impl::connectModel()
{
    PlaylistModel *m = model;
    if (!m)
        return;
    for (auto signal : {&PlaylistModel::playlistAdded, &PlaylistModel::playlistRemoved})
        QObject::connect(m, signal, q, [this] { rebuildTabs(); });
    QObject::connect(m, &PlaylistModel::playlistOrderChanged, q, [this] { rebuildTabs(); });
    QObject::connect(m, &PlaylistModel::playlistNameChanged, q, [this] {
        rebuildTabs();
        refreshPlaylistFields();
    });
    QObject::connect(m, &PlaylistModel::playlistModeChanged, q, [this] { rebuildTabs(); });
    QObject::connect(m, &PlaylistModel::activePlaylistChanged, q, [this] {
        rebuildTabs();
        refreshPlaylistFields();
        // An item of another playlist does not stay selected out of sight.
        if (selected && model && model->playlistOf(selected) != model->activePlaylistNumber())
            setSelected(0, false);
        showSelectionInView();
        refreshButtons();
    });
    QObject::connect(m, &PlaylistModel::modelReset, q, [this] {
        rebuildTabs();
        refreshPlaylistFields();
        paintState.errors.clear();
        paintState.levels.clear();
        if (selected && model && !model->contains(selected))
            setSelected(0, false);
        showSelectionInView();
        refreshButtons();
        refreshItemStatus();
    });
    QObject::connect(m, &PlaylistModel::countChanged, q, [this] {
        refreshPlaylistFields();
        refreshButtons();
    });
    QObject::connect(m, &PlaylistModel::itemRemoved, q, [this](quint64 itemId, int) {
        paintState.errors.remove(itemId);
        paintState.levels.remove(itemId);
        if (itemId == selected)
            setSelected(0, false);
        refreshButtons();
        refreshItemStatus();
    });
    for (auto signal : {&PlaylistModel::itemMoved})
        QObject::connect(m, signal, q, [this] {
            showSelectionInView();
            refreshButtons();
        });
    QObject::connect(m, &PlaylistModel::itemMovedToPlaylist, q, [this] {
        if (selected && model && model->playlistOf(selected) != model->activePlaylistNumber())
            setSelected(0, false);
        refreshPlaylistFields();
        refreshButtons();
    });
    for (auto signal : {&PlaylistModel::itemChanged, &PlaylistModel::itemConversionStateChanged,
                        &PlaylistModel::itemReplaced})
        QObject::connect(m, signal, q, [this](quint64 itemId) {
            if (itemId == selected) {
                refreshButtons();
                refreshItemStatus();
            }
        });
    QObject::connect(m, &PlaylistModel::onAirStateChanged, q,
                     [this](quint64 previous, quint64 current) { onOnAirChanged(previous, current); });
    QObject::connect(m, &PlaylistModel::cueStateChanged, q,
                     [this](quint64 previous, quint64 current) { onCueChanged(previous, current); });
    for (auto signal : {&PlaylistModel::editStateChanged, &PlaylistModel::dskStateChanged,
                        &PlaylistModel::bgmStateChanged})
        QObject::connect(m, signal, q, [this] { refreshButtons(); });
    QObject::connect(m, &PlaylistModel::bulkUndoAvailableChanged, q, [this] { refreshButtons(); });
    QObject::connect(m, &PlaylistModel::playlistManualCrossfadeChanged, q, [this] { refreshPlaylistFields(); });
    QObject::connect(m, &PlaylistModel::manualCrossfadeDurationChanged, q, [this] { refreshPlaylistFields(); });
}

void PlaylistPanel::Impl::onOnAirChanged(quint64 previous, quint64 current)
{
    if (model) {
        const QString message = model->onAirMessage();
        if (previous == current && current && !message.isEmpty()) {
            paintState.errors.insert(current, QStringLiteral("%1\n%2\n%3")
                                                  .arg(current)
                                                  .arg(text("playlist.error.on_air", "ON AIR ERROR"), message));
        } else if (current) {
            paintState.errors.remove(current);
        }
        list->setOnAirPlaylistNumber(current ? model->playlistOf(current) : 0);
    }
    if (current)
        positionTimer.start();
    else
        positionTimer.stop();
    listModel->repaintItem(previous);
    listModel->repaintItem(current);
    refreshButtons();
    refreshItemStatus();
}

void PlaylistPanel::Impl::onCueChanged(quint64 previous, quint64 current)
{
    if (model && current) {
        if (model->cueState() == PlaylistCueState::Failed) {
            paintState.errors.insert(current, QStringLiteral("%1\n%2\n%3")
                                                  .arg(current)
                                                  .arg(text("playlist.error.cue", "PREPARATION ERROR"),
                                                       model->cueMessage()));
        } else if (current != model->onAirItemId()) {
            paintState.errors.remove(current);
        }
    }
    listModel->repaintItem(previous);
    listModel->repaintItem(current);
    refreshItemStatus();
}

void PlaylistPanel::Impl::rebuildTabs()
{
    if (!model)
        return;
    tabBar->setRebuilding(true);
    const QList<qint32> numbers = model->playlistNumbers();
    while (tabBar->count() > numbers.size())
        tabBar->removeTab(tabBar->count() - 1);
    while (tabBar->count() < numbers.size())
        tabBar->addTab(QString());
    for (int i = 0; i < numbers.size(); ++i) {
        const qint32 number = numbers.at(i);
        QString name = model->playlistName(number);
        if (name.isEmpty())
            name = text("playlist.default_name", "Playlist %1", {QString::number(number)});
        if (model->playlistMode(number) == PlaylistMode::bgm)
            name = QStringLiteral("%1  BGM").arg(name);
        tabBar->setTabText(i, name);
        tabBar->setTabData(i, number);
    }
    tabBar->setCurrentIndex(tabBar->indexOfPlaylist(model->activePlaylistNumber()));
    tabBar->setRebuilding(false);
}

void PlaylistPanel::Impl::refreshPlaylistFields()
{
    if (!model)
        return;
    const qint32 active = model->activePlaylistNumber();
    const QString name = model->playlistName(active);
    if (!nameEdit->hasFocus() || nameEdit->text() != name)
        nameEdit->setText(name);
    itemCountLabel->setText(text("playlist.item_count", "%1 ITEMS", {QString::number(model->count())}));
    const QSignalBlocker checkBlocker(crossfadeCheckBox);
    crossfadeCheckBox->setChecked(model->playlistManualCrossfadeEnabled(active));
    const QSignalBlocker durationBlocker(crossfadeDuration);
    crossfadeDuration->setValue(model->manualCrossfadeDurationMs() / 1000.0);
}

// Which buttons can act now. Every one of them goes through an operation
// that checks again; this only spares the operator a refusal.
void PlaylistPanel::Impl::refreshButtons()
{
    const bool onAir = model && model->onAirItemId() != 0;
    onAirButton->setText(onAir ? text("playlist.button.off_air", "OFF AIR") : text("playlist.button.on_air", "ON AIR"));
    if (onAirButton->property("onAirActive").toBool() != onAir) {
        onAirButton->setProperty("onAirActive", onAir);
        // A style sheet that reads the property sees the change only when
        // the widget is polished again.
        onAirButton->style()->unpolish(onAirButton);
        onAirButton->style()->polish(onAirButton);
    }
    const bool exists = model && selected && model->contains(selected);
    const bool pending = exists && model->isPending(selected);
    const int row = exists ? model->rowOf(selected) : 0;
    const int count = model ? model->count() : 0;
    onAirButton->setEnabled(onAir || (exists && !pending));
    editButton->setEnabled(exists && !pending && !model->isLocked(selected));
    deleteButton->setEnabled(exists && selected != model->onAirItemId() && selected != model->bgmItemId());
    moveUpButton->setEnabled(exists && row > 1);
    moveDownButton->setEnabled(exists && row > 0 && row < count);

    const bool undo = model && model->isBulkUndoAvailable();
    if (auto *entries = qobject_cast<QStandardItemModel *>(bulkCombo->model())) {
        for (int i = 0; i < bulkCombo->count(); ++i) {
            const auto operation = PlaylistBulkOperation(bulkCombo->itemData(i).toInt());
            bool enabled = true;
            if (operation == PlaylistBulkOperation::Undo)
                enabled = undo;
            else if (operation == PlaylistBulkOperation::Delete)
                enabled = model && model->playlistNumbers().size() > 1;
            if (QStandardItem *entry = entries->item(i))
                entry->setEnabled(enabled);
        }
    }
    const auto chosen = PlaylistBulkOperation(bulkCombo->currentData().toInt());
    bulkApplyButton->setEnabled(chosen == PlaylistBulkOperation::Undo ? undo
                                : chosen == PlaylistBulkOperation::Delete
                                    ? model && model->playlistNumbers().size() > 1
                                    : count > 0 || chosen == PlaylistBulkOperation::BgmMode
                                          || chosen == PlaylistBulkOperation::StandardMode);
    refreshPlaylistMenu();
}

void PlaylistPanel::Impl::refreshClock()
{
    const QDateTime now = options.clock ? options.clock() : QDateTime::currentDateTimeUtc();
    clockLabel->setText(now.toTimeZone(timeZone).toString(QStringLiteral("HH:mm:ss")));
}

// The PowerPoint status of the selected item and the error of the item the
// operator looks at.
void PlaylistPanel::Impl::refreshItemStatus()
{
    bool showPowerPoint = false;
    if (model && selected) {
        const std::optional<PlaylistItem> item = model->item(selected);
        if (item && item->sourceType == PlaylistSourceType::powerpoint
            && item->powerPointMode == PlaylistPowerPointMode::native && model->cueItemId() == selected) {
            showPowerPoint = true;
            switch (model->cueState()) {
            case PlaylistCueState::Ready:
                powerPointStatus->setText(text("playlist.powerpoint.ready", "PPT: READY"));
                powerPointStatus->setStyleSheet(powerPointColourStyle("#6fd99b"));
                powerPointStatus->setToolTip(QString());
                break;
            case PlaylistCueState::Failed:
                powerPointStatus->setText(text("playlist.powerpoint.error", "PPT: ERROR"));
                powerPointStatus->setStyleSheet(powerPointColourStyle("#ff8585"));
                powerPointStatus->setToolTip(model->cueMessage());
                break;
            default:
                powerPointStatus->setText(text("playlist.powerpoint.preparing", "PPT: PREPARING"));
                powerPointStatus->setStyleSheet(powerPointColourStyle("#ffd166"));
                powerPointStatus->setToolTip(text(
                    "playlist.powerpoint.preparing_detail",
                    "Preparing the selected PowerPoint. Press ON AIR to take it automatically when preparation finishes."));
                break;
            }
        }
    }
    powerPointStatus->setVisible(showPowerPoint);

    // The selected item's error, else the ON AIR item's.
    QString error = paintState.errors.value(selected);
    if (error.isEmpty() && model)
        error = paintState.errors.value(model->onAirItemId());
    itemErrorLabel->setText(QString(error).replace(QLatin1Char('\n'), QStringLiteral("  ")));
    itemErrorLabel->setVisible(!error.isEmpty());
}

void PlaylistPanel::Impl::retranslate()
{
    auto withKeys = [](QString tip, const QString &keys) {
        return keys.isEmpty() ? tip : tip + QStringLiteral(" (%1)").arg(keys);
    };
    addTabButton->setToolTip(text("playlist.add_tab.tooltip", "Add a new playlist"));
    nameEdit->setPlaceholderText(text("playlist.name.placeholder", "Enter playlist name"));
    listViewButton->setToolTip(text("playlist.view.list.tooltip", "List view"));
    tileViewButton->setToolTip(text("playlist.view.tiles.tooltip",
                                    "Tile view\nClick a tile: ON AIR\nCtrl+Click: Select and prepare only"));
    const bool tiles = list->isTileView();
    const bool byButton = editActivation == EditActivation::Button;
    list->setAccessibleName(text("playlist.list.name", "Playlist items"));
    list->setAccessibleDescription(
        tiles ? text("playlist.list.description.tiles",
                     "Tile view. Click a tile to take it ON AIR; Ctrl+Click selects and prepares it only.")
        : byButton ? text("playlist.list.description.button",
                          "List view. Click an item to select it; EDIT loads it into the EDIT player.")
                   : text("playlist.list.description", "List view. Click an item to select it and load it into EDIT."));
    editButton->setText(text("playlist.button.edit", "EDIT"));
    editButton->setToolTip(withKeys(byButton ? text("playlist.button.edit.tooltip_button",
                                                    "Load the selected item into EDIT")
                                             : text("playlist.button.edit.tooltip_selection",
                                                    "The selected item is loaded into EDIT when it is selected"),
                                    editKeys));
    addButton->setText(text("playlist.button.add", "ADD FILES"));
    addButton->setToolTip(text("playlist.button.add.tooltip", "Add media files to this playlist"));
    deleteButton->setText(text("playlist.button.delete", "DEL"));
    deleteButton->setToolTip(text("playlist.button.delete.tooltip",
                                  "Remove the selected item from the playlist (the source file will not be deleted)"));
    moveUpButton->setToolTip(text("playlist.button.move_up.tooltip", "Move the selected item up"));
    moveDownButton->setToolTip(text("playlist.button.move_down.tooltip", "Move the selected item down"));
    onAirButton->setToolTip(withKeys(text("playlist.button.on_air.tooltip",
                                          "Take the selected item ON AIR; while ON AIR, go OFF AIR"),
                                     takeKeys));
    crossfadeCheckBox->setText(text("playlist.crossfade", "CROSSFADE"));
    crossfadeCheckBox->setToolTip(text("playlist.crossfade.tooltip",
                                       "Crossfade video using the selected duration when taking the item on air"));
    crossfadeDuration->setToolTip(text("playlist.crossfade.duration.tooltip", "Crossfade duration"));
    fadeDurationStepButton->setToolTip(text("playlist.crossfade.step.tooltip",
                                            "Step through common crossfade durations"));
    for (int i = 0; i < bulkCombo->count() && i < int(std::size(kBulkEntries)); ++i)
        bulkCombo->setItemText(i, text(kBulkEntries[i].key, kBulkEntries[i].text));
    bulkApplyButton->setText(text("playlist.bulk.apply", "APPLY"));
    clockTitle->setText(text("playlist.current_time.title", "CURRENT TIME"));
    clockLabel->setToolTip(text("playlist.current_time.local_tooltip", "Local clock (%1)",
                                {QString::fromUtf8(timeZone.id())}));
    refreshButtons();
}

} // namespace tarnix
