// The item's context menu and the panel's playlist menu. Every entry is a
// controller operation on the item; the enable rules only spare the
// operator a refusal.

#include "ui/playlist_panel.h"
#include "ui/playlist_panel_impl.h"

#include "playlist/playlist_model.h"
#include "shell/localized_text.h"
#include "ui/playlist_bulk_entries.h"
#include "ui/ui_text.h"
#include "ui/playlist_item_texts.h"
#include "ui/playlist_context_menu.h"
#include "ui/playlist_map_dialog.h"

#include <QActionGroup>
#include <QInputDialog>
#include <QMenu>
#include <QPainter>
#include <QPixmap>
#include <QToolButton>

namespace tarnix {

namespace {

using Ops = ControllerOperations;

using ui::text;

QIcon swatch(PlaylistItemColor color)
{
    QPixmap pixmap(16, 16);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setPen(QColor(0x87, 0x90, 0x95));
    painter.setBrush(QColor(0x2b, 0x30, 0x33));
    painter.drawRect(0, 0, 15, 15);
    const QColor tint = playlist_view::itemTintColor(color);
    if (tint.isValid())
        painter.fillRect(1, 1, 14, 14, tint);
    return QIcon(pixmap);
}

struct ModeEntry {
    const char *key;
    const char *text;
    int value;
};

} // namespace

void PlaylistPanel::Impl::buildPlaylistMenu()
{
    playlistMenu = new QMenu(q);
    playlistMenu->setObjectName(QStringLiteral("playlistMenu"));
    playlistMenu->setTitle(text("menu.playlist", "Playlist"));
    menuCopyStateAction = playlistMenu->addAction(text("playlist.menu.copy_state", "Copy State"));
    menuCopyStateAction->setObjectName(QStringLiteral("playlistMenuCopyStateAction"));
    menuPasteStateAction = playlistMenu->addAction(text("playlist.menu.paste_state", "Paste State"));
    menuPasteStateAction->setObjectName(QStringLiteral("playlistMenuPasteStateAction"));
    playlistMenu->addSeparator();
    // The bulk operations of the active playlist, as the panel's list has
    // them; the keyboard finds them by their operation.
    for (const auto &[key, fallback, operation] : playlist_view::kBulkEntries) {
        QAction *action = playlistMenu->addAction(text(key, fallback));
        action->setData(int(operation));
        action->setProperty("playlistBulkOperation", int(operation));
        QObject::connect(action, &QAction::triggered, q,
                         [this, operation] { emit q->bulkOperationRequested(operation); });
    }
    playlistMenu->addSeparator();
    menuMapAction = playlistMenu->addAction(text("playlist.menu.map", "Map"));
    menuMapAction->setObjectName(QStringLiteral("playlistMenuMapAction"));
    QAction *newPlaylist = playlistMenu->addAction(text("playlist.menu.new_playlist", "New Playlist"));
    newPlaylist->setObjectName(QStringLiteral("playlistMenuNewPlaylistAction"));

    QObject::connect(menuCopyStateAction, &QAction::triggered, q, [this] { invoke(Ops::CopySelectedState); });
    QObject::connect(menuPasteStateAction, &QAction::triggered, q, [this] { invoke(Ops::PasteSelectedState); });
    QObject::connect(menuMapAction, &QAction::triggered, q, [this] {
        if (selected)
            q->showMap(selected);
    });
    QObject::connect(newPlaylist, &QAction::triggered, q, [this] { addTabButton->click(); });
    refreshPlaylistMenu();
}

void PlaylistPanel::Impl::refreshPlaylistMenu()
{
    if (!menuCopyStateAction)
        return;
    const bool exists = model && selected && model->contains(selected);
    const bool pending = exists && model->isPending(selected);
    const bool held = itemOperations && itemOperations->hasCopiedState();
    menuCopyStateAction->setEnabled(exists && !pending);
    menuPasteStateAction->setEnabled(exists && !pending && held && !model->isLocked(selected));
    menuMapAction->setEnabled(exists);
    for (QAction *action : playlistMenu->actions()) {
        const QVariant operation = action->property("playlistBulkOperation");
        if (!operation.isValid())
            continue;
        const auto bulk = PlaylistBulkOperation(operation.toInt());
        action->setEnabled(bulk == PlaylistBulkOperation::Undo     ? model && model->isBulkUndoAvailable()
                           : bulk == PlaylistBulkOperation::Delete ? model && model->playlistNumbers().size() > 1
                                                                   : true);
    }
}

PlaylistContextMenu::PlaylistContextMenu(PlaylistModel *model, PlaylistItemOperations *itemOperations, quint64 itemId,
                                         Invoke invoke, QWidget *parent)
    : QMenu(parent), m_itemId(itemId), m_invoke(std::move(invoke))
{
    setObjectName(QStringLiteral("playlistItemContextMenu"));
    if (!model)
        return;
    const std::optional<PlaylistItem> item = model->item(itemId);
    if (!item)
        return;
    const bool settable = !model->isLocked(itemId) && !model->isPending(itemId);
    const QVariant id = QVariant::fromValue(itemId);

    QMenu *startMenu = addMenu(text("playlist.menu.start_mode", "Start Mode"));
    startMenu->setObjectName(QStringLiteral("playlistItemStartModeMenu"));
    startMenu->setEnabled(settable);
    auto *startGroup = new QActionGroup(startMenu);
    static const ModeEntry kStartModes[] = {
        {"playlist.mode.pause", "Pause", int(PlaylistStartMode::pause)},
        {"playlist.mode.play", "Play", int(PlaylistStartMode::play)},
    };
    for (const ModeEntry &entry : kStartModes) {
        QAction *action = startMenu->addAction(text(entry.key, entry.text));
        action->setObjectName(QStringLiteral("playlistItemStartModeAction%1").arg(entry.value));
        action->setCheckable(true);
        action->setChecked(int(item->settings.startMode) == entry.value);
        startGroup->addAction(action);
        QObject::connect(action, &QAction::triggered, this, [this, id, value = entry.value] {
            m_invoke(Ops::SetItemStartMode, {id, QVariant::fromValue(PlaylistStartMode(value))});
        });
    }

    QMenu *endMenu = addMenu(text("playlist.menu.end_mode", "End Mode"));
    endMenu->setObjectName(QStringLiteral("playlistItemEndModeMenu"));
    endMenu->setEnabled(settable);
    auto *endGroup = new QActionGroup(endMenu);
    static const ModeEntry kEndModes[] = {
        {"playlist.mode.stop", "Stop", int(PlaylistEndMode::stop)},
        {"playlist.mode.pause", "Pause", int(PlaylistEndMode::pause)},
        {"playlist.mode.repeat", "Repeat", int(PlaylistEndMode::repeat)},
        {"playlist.mode.next", "Next", int(PlaylistEndMode::next)},
        {"playlist.mode.goto", "GOTO", int(PlaylistEndMode::goto_)},
    };
    for (const ModeEntry &entry : kEndModes) {
        QAction *action = endMenu->addAction(text(entry.key, entry.text));
        action->setObjectName(QStringLiteral("playlistItemEndModeAction%1").arg(entry.value));
        action->setCheckable(true);
        action->setChecked(int(item->settings.endMode) == entry.value);
        endGroup->addAction(action);
        // GOTO needs a target, which only EDIT sets; from here it is
        // refused like any request without one, and the menu shows the
        // mode the item still has.
        QObject::connect(action, &QAction::triggered, this, [this, id, value = entry.value] {
            m_invoke(Ops::SetItemEndMode, {id, QVariant::fromValue(PlaylistEndMode(value))});
        });
    }

    struct Toggle {
        const char *objectName;
        const char *key;
        const char *text;
        bool on;
        int action;
    };
    const Toggle toggles[] = {
        {"playlistItemFadeInAction", "playlist.menu.fade_in", "Fade In", item->settings.fadeIn.enabled,
         Ops::SetItemFadeInEnabled},
        {"playlistItemFadeOutAction", "playlist.menu.fade_out", "Fade Out", item->settings.fadeOut.enabled,
         Ops::SetItemFadeOutEnabled},
        {"playlistItemEndCrossfadeAction", "playlist.menu.crossfade", "Crossfade", item->settings.endCrossfade.enabled,
         Ops::SetItemEndCrossfadeEnabled},
    };
    for (const Toggle &toggle : toggles) {
        QAction *action = addAction(text(toggle.key, toggle.text));
        action->setObjectName(QString::fromLatin1(toggle.objectName));
        action->setCheckable(true);
        action->setChecked(toggle.on);
        action->setEnabled(settable);
        QObject::connect(action, &QAction::triggered, this, [this, id, operation = toggle.action](bool on) {
            m_invoke(operation, {id, QVariant::fromValue(on)});
        });
    }
    addSeparator();

    QAction *copyState = addAction(text("playlist.menu.copy_state", "Copy State"));
    copyState->setObjectName(QStringLiteral("playlistItemCopyStateAction"));
    QObject::connect(copyState, &QAction::triggered, this, [this, id] { m_invoke(Ops::CopyItemState, {id}); });
    QAction *pasteState = addAction(text("playlist.menu.paste_state", "Paste State"));
    pasteState->setObjectName(QStringLiteral("playlistItemPasteStateAction"));
    pasteState->setEnabled(itemOperations && itemOperations->hasCopiedState() && !model->isLocked(itemId));
    QObject::connect(pasteState, &QAction::triggered, this, [this, id] { m_invoke(Ops::PasteItemState, {id}); });
    addSeparator();

    QAction *rename = addAction(text("playlist.menu.rename", "Rename Item"));
    rename->setObjectName(QStringLiteral("playlistItemRenameAction"));
    QObject::connect(rename, &QAction::triggered, this, [this] { emit renameRequested(m_itemId); });

    QMenu *colorMenu = addMenu(text("playlist.menu.color", "Item Color"));
    colorMenu->setObjectName(QStringLiteral("playlistItemColorMenu"));
    auto *colorGroup = new QActionGroup(colorMenu);
    static const ModeEntry kColors[] = {
        {"playlist.color.default", "Default", int(PlaylistItemColor::default_)},
        {"playlist.color.red", "Red", int(PlaylistItemColor::red)},
        {"playlist.color.yellow", "Yellow", int(PlaylistItemColor::yellow)},
        {"playlist.color.blue", "Blue", int(PlaylistItemColor::blue)},
        {"playlist.color.green", "Green", int(PlaylistItemColor::green)},
    };
    for (const ModeEntry &entry : kColors) {
        const auto color = PlaylistItemColor(entry.value);
        QAction *action = colorMenu->addAction(swatch(color), text(entry.key, entry.text));
        action->setObjectName(QStringLiteral("playlistItemColorAction%1").arg(entry.value));
        action->setProperty("playlistItemColor", entry.value);
        action->setCheckable(true);
        action->setChecked(item->color == color);
        colorGroup->addAction(action);
        QObject::connect(action, &QAction::triggered, this, [this, id, color] {
            m_invoke(Ops::SetItemColor, {id, QVariant::fromValue(color)});
        });
    }

    QAction *separator = addAction(text("playlist.menu.separator_below", "Separator Below"));
    separator->setObjectName(QStringLiteral("playlistItemSeparatorBelowAction"));
    separator->setCheckable(true);
    separator->setChecked(item->separatorBelow);
    QObject::connect(separator, &QAction::triggered, this,
                     [this, id](bool on) { m_invoke(Ops::SetItemSeparatorBelow, {id, QVariant::fromValue(on)}); });

    QAction *map = addAction(text("playlist.menu.map", "Map"));
    map->setObjectName(QStringLiteral("playlistItemMapAction"));
    QObject::connect(map, &QAction::triggered, this, [this] { emit mapRequested(m_itemId); });
}

void PlaylistPanel::Impl::showContextMenu(quint64 itemId, const QPoint &globalPosition)
{
    PlaylistContextMenu menu(model, itemOperations, itemId,
                             [this](int action, const QList<QVariant> &arguments) { invoke(action, arguments); }, q);
    QObject::connect(&menu, &PlaylistContextMenu::renameRequested, q, [this](quint64 id) { renameItem(id); });
    QObject::connect(&menu, &PlaylistContextMenu::mapRequested, q, [this](quint64 id) { q->showMap(id); });
    if (!menu.isEmpty())
        menu.exec(globalPosition);
}

void PlaylistPanel::Impl::renameItem(quint64 itemId)
{
    if (!model)
        return;
    const std::optional<PlaylistItem> item = model->item(itemId);
    if (!item)
        return;
    bool accepted = false;
    const QString name = QInputDialog::getText(q, text("playlist.rename.title", "Rename Playlist Item"),
                                               text("playlist.rename.label", "Display name:"), QLineEdit::Normal,
                                               item->displayName, &accepted);
    if (accepted && name != item->displayName)
        invoke(Ops::SetItemDisplayName, {QVariant::fromValue(itemId), QVariant::fromValue(name)});
}

void PlaylistPanel::showMap(quint64 itemId)
{
    if (!d->model || !d->model->contains(itemId))
        return;
    if (!d->mapDialog) {
        auto *dialog = new PlaylistMapDialog(d->model, this);
        dialog->setAttribute(Qt::WA_DeleteOnClose);
        d->mapDialog = dialog;
    }
    auto *dialog = static_cast<PlaylistMapDialog *>(d->mapDialog.data());
    dialog->showRoute(itemId);
    dialog->show();
    dialog->raise();
    dialog->activateWindow();
}

} // namespace tarnix
