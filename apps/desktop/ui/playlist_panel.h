#pragma once

#include "playlist/playlist_enums.h"

#include <QDateTime>
#include <QStringList>
#include <QWidget>

#include <chrono>
#include <functional>
#include <memory>

class QMenu;

namespace tarnix {

class ControllerOperations;
class ItemSelection;
class PlaylistItemOperations;
class PlaylistModel;
class PlaylistPanelView;
class PlaylistThumbnailStore;
class UserInfoCenter;

struct PlaylistPanelOptions {
    // The clock under the buttons; empty: the system clock.
    std::function<QDateTime()> clock;
    std::chrono::milliseconds clockInterval{1000};
    // The ON AIR row's position bar is repainted this often while on air.
    std::chrono::milliseconds positionRepaintInterval{250};
};

// The operator's view of the document: a tab per playlist, the active
// playlist's items as a list or tiles, the buttons and menus that act on
// the selection, and the status under them. It holds no document state:
// every change goes through the controller operations (so keys, MIDI and
// macros take the same path and every change is logged) or, for what has
// no operation, through the model; a refused change shows the model's value
// again.
//
// It provides the item selection ON AIR follows and binds the selection
// operations (SelectItem, SelectItemNumber, SelectRelativeItem,
// RemoveSelectedItem, CopySelectedState, PasteSelectedState), and guards the
// playlist operations its owner binds (MoveItem, MoveItemToRow,
// TransferItem, RemoveItem, PlaylistBulk). Main thread.
class PlaylistPanel : public QWidget
{
    Q_OBJECT

public:
    enum class EditActivation { Selection = 0, Button = 1 };

    PlaylistPanel(PlaylistModel *model, PlaylistThumbnailStore *thumbnails, ControllerOperations *operations,
                  PlaylistItemOperations *itemOperations, UserInfoCenter *userInfo, QWidget *parent = nullptr,
                  PlaylistPanelOptions options = {});
    ~PlaylistPanel() override;

    // The selection ON AIR follows, and the panel as the ON AIR controller
    // reads it (crossfade, picture levels). Both live as long as the panel.
    ItemSelection *selection() const;
    PlaylistPanelView *programView() const;
    quint64 selectedItemId() const;
    // The panel's menu for the menu bar: copy and paste of an item's state,
    // a new playlist, the map of the selected item.
    QMenu *playlistMenu() const;

    void setEditActivation(EditActivation mode);
    EditActivation editActivation() const;
    // An IANA zone name; an unknown one shows the local time.
    void setTimeZone(const QString &zoneId);
    void setTileView(bool tiles);
    bool isTileView() const;

    // The selection operations; each returns false and changes nothing when
    // it cannot be done.
    bool selectItem(quint64 itemId);
    bool selectItemNumber(int number);
    bool selectRelativeItem(int delta);
    bool removeSelectedItem();
    bool copySelectedState();
    bool pasteSelectedState();

    // The keys that take ON AIR and load EDIT, for the buttons' tooltips.
    void setShortcutHints(const QString &takeKeys, const QString &editKeys);

    // Opens the map of where playback goes from the item.
    void showMap(quint64 itemId);

signals:
    void addRequested();
    void moveUpRequested(quint64 itemId);
    void moveDownRequested(quint64 itemId);
    void moveRequested(quint64 itemId, int targetRow);
    void itemDropRequested(quint64 itemId, qint32 targetPlaylistNumber, int targetInsertionRow, bool copy);
    void filesDropped(const QStringList &paths);
    void removeRequested(quint64 itemId);
    void bulkOperationRequested(tarnix::PlaylistBulkOperation operation);
    void onAirRequested();
    void offAirRequested();
    void selectionChanged();
    void editRequested();

public:
    struct Impl;

private:
    std::unique_ptr<Impl> d;
};

} // namespace tarnix
