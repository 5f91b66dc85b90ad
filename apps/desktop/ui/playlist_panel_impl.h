#pragma once

#include "ui/playlist_panel.h"

#include "control/controller_operations.h"
#include "control/playlist_item_operations.h"
#include "playlist/item_selection.h"
#include "playout/program_playout_panels.h"
#include "shell/user_info_center.h"
#include "ui/playlist_item_delegate.h"

#include <QPointer>
#include <QTimeZone>
#include <QTimer>

class QAction;
class QCheckBox;
class QComboBox;
class QDialog;
class QDoubleSpinBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QToolButton;

namespace tarnix {

class PlaylistItemListModel;
class PlaylistListWidget;
class PlaylistTabBar;

// The selection ON AIR follows, as the panel holds it.
class PlaylistPanelSelection : public ItemSelection
{
    Q_OBJECT

public:
    explicit PlaylistPanelSelection(PlaylistPanel::Impl *panel) : m_panel(panel) {}
    quint64 selectedItemId() const override;
    bool select(quint64 itemId) override;
    void announce(quint64 itemId, bool byOperator) { emit selectionChanged(itemId, byOperator); }

private:
    PlaylistPanel::Impl *m_panel;
};

// The panel as the ON AIR controller reads it.
class PlaylistPanelProgramView : public PlaylistPanelView
{
    Q_OBJECT

public:
    explicit PlaylistPanelProgramView(PlaylistPanel::Impl *panel) : m_panel(panel) {}
    bool manualCrossfadeEnabled() const override;
    qint64 manualCrossfadeDurationMs() const override;
    void showItemLevel(quint64 itemId, double level) override;

private:
    PlaylistPanel::Impl *m_panel;
};

struct PlaylistPanel::Impl {
    Impl(PlaylistPanel *owner, PlaylistPanelOptions options);

    PlaylistPanel *q;
    PlaylistPanelOptions options;
    QPointer<PlaylistModel> model;
    QPointer<PlaylistThumbnailStore> thumbnails;
    QPointer<ControllerOperations> operations;
    QPointer<PlaylistItemOperations> itemOperations;
    QPointer<UserInfoCenter> userInfo;

    PlaylistItemListModel *listModel = nullptr;
    playlist_view::PlaylistItemDelegate *delegate = nullptr;
    playlist_view::PlaylistItemPaintState paintState;
    std::unique_ptr<PlaylistPanelSelection> selection;
    std::unique_ptr<PlaylistPanelProgramView> programView;

    // Widgets, children of the panel.
    PlaylistTabBar *tabBar = nullptr;
    QToolButton *addTabButton = nullptr;
    QLineEdit *nameEdit = nullptr;
    QLabel *itemCountLabel = nullptr;
    QToolButton *listViewButton = nullptr;
    QToolButton *tileViewButton = nullptr;
    PlaylistListWidget *list = nullptr;
    QPushButton *onAirButton = nullptr;
    QPushButton *addButton = nullptr;
    QPushButton *editButton = nullptr;
    QPushButton *deleteButton = nullptr;
    QToolButton *moveUpButton = nullptr;
    QToolButton *moveDownButton = nullptr;
    QCheckBox *crossfadeCheckBox = nullptr;
    QDoubleSpinBox *crossfadeDuration = nullptr;
    QToolButton *fadeDurationStepButton = nullptr;
    QComboBox *bulkCombo = nullptr;
    QPushButton *bulkApplyButton = nullptr;
    QLabel *clockTitle = nullptr;
    QLabel *clockLabel = nullptr;
    QLabel *powerPointStatus = nullptr;
    QLabel *itemErrorLabel = nullptr;
    QMenu *playlistMenu = nullptr;
    QAction *menuCopyStateAction = nullptr;
    QAction *menuPasteStateAction = nullptr;
    QAction *menuMapAction = nullptr;
    QPointer<QDialog> mapDialog;

    QTimer clockTimer;
    QTimer positionTimer;
    QTimeZone timeZone;
    bool timeZoneValid = false;
    EditActivation editActivation = EditActivation::Selection;
    QString takeKeys;
    QString editKeys;

    quint64 selected = 0;
    // Set while the panel itself moves the view's current row, so that the
    // move is not taken for the operator's choice.
    bool applyingSelection = false;

    // playlist_panel.cpp
    void buildWidgets();
    QWidget *buildButtonRow();
    QWidget *buildStatusRow();
    void connectModel();
    void connectWidgets();
    void rebuildTabs();
    void refreshPlaylistFields();
    void refreshButtons();
    void refreshClock();
    void setTimeZoneFromName(const QString &zoneId);
    void refreshItemStatus();
    void retranslate();
    void onOnAirChanged(quint64 previousItemId, quint64 currentItemId);
    void onCueChanged(quint64 previousItemId, quint64 currentItemId);

    // playlist_panel_selection.cpp
    bool setSelected(quint64 itemId, bool byOperator);
    void showSelectionInView();
    void onViewCurrentChanged(quint64 itemId);

    // playlist_panel_operations.cpp
    void bindSelectionOperations();
    void connectIntentions();
    ControllerOperations::Result invoke(int action, const QList<QVariant> &arguments = {});
    void tellActionBlocked(PlaylistItemAction action);
    void tellTabActivation(qint32 number);
    void applyBulkFromCombo();
    void stepCrossfadeDuration();

    // playlist_context_menu.cpp
    void buildPlaylistMenu();
    void refreshPlaylistMenu();
    void showContextMenu(quint64 itemId, const QPoint &globalPosition);
    void renameItem(quint64 itemId);
};

} // namespace tarnix
