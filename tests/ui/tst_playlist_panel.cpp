#include "control/controller_operations.h"
#include "control/playlist_item_operations.h"
#include "playlist/item_selection.h"
#include "playlist/playlist_model.h"
#include "playout/program_playout_panels.h"
#include "shell/user_info_center.h"
#include "ui/playlist_list_widget.h"
#include "ui/playlist_panel.h"

#include "kit/item_request.h"
#include "kit/log_capture.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMimeData>
#include <QPushButton>
#include <QSignalSpy>
#include <QStandardItemModel>
#include <QTabBar>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QToolButton>
#include <QtTest>

using namespace tarnix;
using testkit::ItemRequest;
using testkit::touchFile;
using Ops = ControllerOperations;

namespace {

// The panel with what it needs around it, and a stand-in for the ON AIR
// side that only counts takes.
struct Bench {
    Ops ops;
    UserInfoCenter info;
    PlaylistModel model;
    PlaylistItemOperations items{&model, &ops};
    QObject onAirSide;
    int takes = 0;
    int offAirs = 0;
    PlaylistPanel panel{&model, nullptr, &ops, &items, &info};

    Bench()
    {
        ops.bind<>(Ops::TakeSelectedOnAir, &onAirSide, [this] {
            ++takes;
            return true;
        });
        ops.bind<>(Ops::OffAir, &onAirSide, [this] {
            ++offAirs;
            return true;
        });
        panel.resize(1000, 760);
        panel.show();
        if (!QTest::qWaitForWindowExposed(&panel))
            qWarning("the panel was not exposed");
    }
    template <typename T>
    T *child(const char *name)
    {
        return panel.findChild<T *>(QString::fromLatin1(name));
    }
    PlaylistListWidget *list() { return child<PlaylistListWidget>("playlistListWidget"); }
    QTabBar *tabs() { return child<QTabBar>("playlistTabBar"); }
    QPoint centreOf(quint64 itemId)
    {
        PlaylistListWidget *view = list();
        view->doItemsLayout();
        for (int r = 0; r < view->model()->rowCount(); ++r) {
            const QModelIndex index = view->model()->index(r, 0);
            if (index.data(Qt::UserRole).value<quint64>() == itemId)
                return view->visualRect(index).center();
        }
        return {};
    }
    QString message() const { return info.current() ? info.current()->text.toString() : QString(); }
};

} // namespace

class TestPlaylistPanel : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;

    QList<PlaylistItemRequest> files(std::initializer_list<const char *> names)
    {
        QList<PlaylistItemRequest> requests;
        for (const char *name : names)
            requests << ItemRequest(touchFile(m_dir.filePath(QString::fromLatin1(name))));
        return requests;
    }

private slots:
    void freshPanelTabsAndBulkList()
    {
        Bench b;
        QVERIFY(QTest::qWaitForWindowExposed(&b.panel));
        QCOMPARE(b.tabs()->count(), 1);
        QCOMPARE(b.tabs()->tabText(0), QStringLiteral("Playlist 1"));
        QCOMPARE(b.child<QLabel>("playlistItemCountLabel")->text(), QStringLiteral("0 ITEMS"));
        QCOMPARE(b.child<QLineEdit>("playlistNameEdit")->placeholderText(), QStringLiteral("Enter playlist name"));
        for (const char *name : {"playlistOnAirButton", "playlistAddButton", "playlistEditButton",
                                 "playlistDeleteButton", "playlistBulkApplyButton"})
            QVERIFY2(b.child<QPushButton>(name), name);
        for (const char *name : {"playlistMoveUpButton", "playlistMoveDownButton", "fadeDurationStepButton"})
            QVERIFY2(b.child<QToolButton>(name), name);
        QCOMPARE(b.child<QPushButton>("playlistOnAirButton")->text(), QStringLiteral("ON AIR"));
        QCOMPARE(b.child<QPushButton>("playlistDeleteButton")->toolTip(),
                 QStringLiteral("Remove the selected item from the playlist (the source file will not be deleted)"));
        QCOMPARE(b.child<QCheckBox>("playlistCrossfadeCheckBox")->text(), QStringLiteral("CROSSFADE"));

        // The plus button adds a playlist and shows it; BGM mode marks its tab.
        b.child<QToolButton>("playlistAddTabButton")->click();
        QCOMPARE(b.tabs()->count(), 2);
        QCOMPARE(b.tabs()->tabText(1), QStringLiteral("Playlist 2"));
        QCOMPARE(b.model.activePlaylistNumber(), 2);
        QCOMPARE(b.tabs()->currentIndex(), 1);
        QVERIFY(b.model.setPlaylistMode(2, PlaylistMode::bgm));
        QCOMPARE(b.tabs()->tabText(1), QStringLiteral("Playlist 2  BGM"));

        // The bulk list in order; Undo waits for a bulk operation.
        b.tabs()->setCurrentIndex(0);
        QCOMPARE(b.model.activePlaylistNumber(), 1);
        auto *combo = b.child<QComboBox>("playlistBulkOperationComboBox");
        QStringList entries;
        for (int i = 0; i < combo->count(); ++i)
            entries << combo->itemText(i);
        QCOMPARE(entries, (QStringList{"Play List Once", "Repeat All", "Shuffle", "Set BGM Mode", "Clear BGM Mode",
                                       "Clear Playlist", "Delete Playlist", "Undo"}));
        auto undoEnabled = [combo] {
            return static_cast<QStandardItemModel *>(combo->model())->item(combo->count() - 1)->isEnabled();
        };
        QVERIFY(!undoEnabled());
        QCOMPARE(b.ops.invoke(Ops::PlaylistBulk, PlaylistBulkOperation::Undo).status, Ops::Unavailable);
        b.model.addItems(files({"a.mp4", "b.mp4"}));
        combo->setCurrentIndex(1);  // Repeat All
        QVERIFY(b.model.applyBulkOperation(1, PlaylistBulkOperation::RepeatAll));
        QVERIFY(undoEnabled());
    }

    // Every change goes through the document; a refused one shows the
    // document's value again.
    void refusedChangesShowTheDocument()
    {
        Bench b;
        auto *name = b.child<QLineEdit>("playlistNameEdit");
        name->setText(QStringLiteral("Morning show"));
        emit name->editingFinished();
        QCOMPARE(b.model.playlistName(1), QStringLiteral("Morning show"));
        QCOMPARE(b.tabs()->tabText(0), QStringLiteral("Morning show"));
        QVERIFY(b.model.setPlaylistName(1, QStringLiteral("Evening")));
        QCOMPARE(name->text(), QStringLiteral("Evening"));

        auto *crossfade = b.child<QCheckBox>("playlistCrossfadeCheckBox");
        crossfade->click();
        QVERIFY(b.model.playlistManualCrossfadeEnabled(1));
        QVERIFY(b.panel.programView()->manualCrossfadeEnabled());
        b.child<QToolButton>("fadeDurationStepButton")->click();
        QCOMPARE(b.panel.programView()->manualCrossfadeDurationMs(), 1500);

        // A tab dragged elsewhere is a playlist moved in the document.
        const qint32 second = b.model.addPlaylist();
        QCOMPARE(b.tabs()->count(), 2);
        QTest::mousePress(b.tabs(), Qt::LeftButton, {}, b.tabs()->tabRect(1).center());
        b.tabs()->moveTab(1, 0);
        QTest::mouseRelease(b.tabs(), Qt::LeftButton, {}, b.tabs()->tabRect(0).center());
        QCOMPARE(b.model.playlistNumbers(), (QList<qint32>{second, 1}));
    }

    void selectionOperationsAndTheirGuards()
    {
        Bench b;
        const QList<quint64> ids = b.model.addItems(files({"1.mp4", "2.mp4", "3.mp4"}));
        QSignalSpy announced(b.panel.selection(), &ItemSelection::selectionChanged);
        QCOMPARE(b.ops.invoke(Ops::SelectRelativeItem, 1).status, Ops::Invoked);
        QCOMPARE(b.panel.selectedItemId(), ids[0]);
        QCOMPARE(announced.last().at(1).toBool(), true);  // by the operator
        QCOMPARE(b.ops.invoke(Ops::SelectItemNumber, 3).status, Ops::Invoked);
        QCOMPARE(b.panel.selectedItemId(), ids[2]);
        QCOMPARE(b.ops.invoke(Ops::SelectRelativeItem, 1).status, Ops::Rejected);  // already last
        QCOMPARE(b.ops.invoke(Ops::SelectItemNumber, 4).status, Ops::Rejected);
        QCOMPARE(b.list()->currentIndex().row(), 2);

        // The program's own choice is not the operator's.
        QVERIFY(b.panel.selection()->select(ids[1]));
        QCOMPARE(announced.last().at(1).toBool(), false);
        QCOMPARE(b.list()->currentIndex().row(), 1);

        // A click selects through SelectItem; a switched-off panel takes none.
        QTest::mouseClick(b.list()->viewport(), Qt::LeftButton, {}, b.centreOf(ids[0]));
        QCOMPARE(b.panel.selectedItemId(), ids[0]);
        b.panel.setEnabled(false);
        QCOMPARE(b.ops.invoke(Ops::SelectItem, ids[2]).status, Ops::Rejected);
        b.panel.setEnabled(true);

        // Nothing the DEL button would refuse is removed by RemoveSelectedItem;
        // RemoveItem's owner is not here, so an allowed one is Unavailable.
        QVERIFY(b.model.setOnAirItem(ids[0]));
        QCOMPARE(b.ops.invoke(Ops::RemoveSelectedItem).status, Ops::Rejected);
        QVERIFY(!b.child<QPushButton>("playlistDeleteButton")->isEnabled());
        QCOMPARE(b.child<QPushButton>("playlistOnAirButton")->text(), QStringLiteral("OFF AIR"));
        QCOMPARE(b.child<QPushButton>("playlistOnAirButton")->property("onAirActive").toBool(), true);
        b.child<QPushButton>("playlistOnAirButton")->click();
        QCOMPARE(b.offAirs, 1);

        // A removed item leaves the selection.
        QVERIFY(b.ops.invoke(Ops::SelectItem, ids[2]).status == Ops::Invoked);
        QVERIFY(b.model.removeItem(ids[2]));
        QCOMPARE(b.panel.selectedItemId(), 0u);
    }

    void tileGesture()
    {
        Bench b;
        const QList<quint64> ids = b.model.addItems(files({"1.mp4", "2.mp4"}));
        b.panel.setTileView(true);
        QVERIFY(b.list()->isTileView());
        QWidget *viewport = b.list()->viewport();

        // Pressed on one tile, released on the other: nothing is taken.
        QTest::mousePress(viewport, Qt::LeftButton, {}, b.centreOf(ids[0]));
        QCOMPARE(b.list()->pressedTileItemId(), ids[0]);
        QTest::mouseRelease(viewport, Qt::LeftButton, {}, b.centreOf(ids[1]));
        QCOMPARE(b.takes, 0);
        QCOMPARE(b.list()->pressedTileItemId(), 0u);

        // Ctrl+click selects (and so prepares) without a take.
        QTest::mouseClick(viewport, Qt::LeftButton, Qt::ControlModifier, b.centreOf(ids[1]));
        QCOMPARE(b.panel.selectedItemId(), ids[1]);
        QCOMPARE(b.takes, 0);

        // A click takes the tile.
        QTest::mouseClick(viewport, Qt::LeftButton, {}, b.centreOf(ids[0]));
        QCOMPARE(b.panel.selectedItemId(), ids[0]);
        QCOMPARE(b.takes, 1);

        // In the list view a click only selects.
        b.panel.setTileView(false);
        QTest::mouseClick(viewport, Qt::LeftButton, {}, b.centreOf(ids[1]));
        QCOMPARE(b.panel.selectedItemId(), ids[1]);
        QCOMPARE(b.takes, 1);
    }

    void dragFormats()
    {
        QMimeData ours;
        ours.setData(QLatin1String(kPlaylistItemMimeType), QByteArrayLiteral("7"));
        QVERIFY(PlaylistListWidget::acceptsDrag(&ours));
        QMimeData qtInternal;
        qtInternal.setData(QLatin1String(kQtItemModelMimeType), QByteArrayLiteral("x"));
        qtInternal.setUrls({QUrl::fromLocalFile(QStringLiteral("/tmp/a.mp4"))});
        QVERIFY(!PlaylistListWidget::acceptsDrag(&qtInternal));
        QMimeData files;
        files.setUrls({QUrl::fromLocalFile(QStringLiteral("/tmp/a.mp4")), QUrl(QStringLiteral("https://x/y.mp4"))});
        QVERIFY(PlaylistListWidget::acceptsDrag(&files));
        QCOMPARE(PlaylistListWidget::droppedFiles(&files), QStringList{QStringLiteral("/tmp/a.mp4")});
    }

    // The context menu's GOTO goes the way every caller's does: refused,
    // and the menu shows the mode the item still has.
    void contextMenuEntries()
    {
        Bench b;
        const QList<quint64> ids = b.model.addItems(files({"1.mp4", "2.mp4"}));
        QStringList names;
        QString checkedEnd;
        QTimer::singleShot(0, this, [&] {
            auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
            QVERIFY(menu);
            QCOMPARE(menu->objectName(), QStringLiteral("playlistItemContextMenu"));
            for (QAction *action : menu->findChildren<QAction *>())
                if (!action->objectName().isEmpty())
                    names << action->objectName();
            auto *paste = menu->findChild<QAction *>(QStringLiteral("playlistItemPasteStateAction"));
            QVERIFY(paste && !paste->isEnabled());  // nothing held
            menu->findChild<QAction *>(QStringLiteral("playlistItemEndModeAction4"))->trigger();
            menu->close();
        });
        b.list()->contextMenuRequested(ids[0], b.list()->mapToGlobal(b.centreOf(ids[0])));
        for (const char *name : {"playlistItemStartModeAction0", "playlistItemStartModeAction1",
                                 "playlistItemEndModeAction0", "playlistItemEndModeAction4", "playlistItemFadeInAction",
                                 "playlistItemFadeOutAction", "playlistItemEndCrossfadeAction",
                                 "playlistItemCopyStateAction", "playlistItemPasteStateAction",
                                 "playlistItemRenameAction", "playlistItemColorAction2",
                                 "playlistItemSeparatorBelowAction", "playlistItemMapAction"})
            QVERIFY2(names.contains(QString::fromLatin1(name)), name);
        QCOMPARE(b.model.item(ids[0])->settings.endMode, PlaylistEndMode::pause);

        // The playlist menu's paste follows what is held.
        QAction *menuPaste = b.panel.playlistMenu()->findChild<QAction *>(QStringLiteral("playlistMenuPasteStateAction"));
        QAction *menuCopy = b.panel.playlistMenu()->findChild<QAction *>(QStringLiteral("playlistMenuCopyStateAction"));
        QVERIFY(b.panel.selectItem(ids[0]));
        QVERIFY(menuCopy->isEnabled() && !menuPaste->isEnabled());
        menuCopy->trigger();
        QVERIFY(menuPaste->isEnabled());
    }

    void mapNotes()
    {
        Bench b;
        QList<PlaylistItemRequest> requests = files({"a.mp4", "b.mp4", "loop.mp4"});
        requests[0] = ItemRequest(requests[0].filePath).playing().repeat(0);  // without end
        requests[1] = ItemRequest(requests[1].filePath).playing().endMode(PlaylistEndMode::next);
        requests[2] = ItemRequest(requests[2].filePath).playing();
        const QList<quint64> ids = b.model.addItems(requests);
        for (quint64 id : ids)
            b.model.setItemDuration(id, 4000);
        // b -> loop -> (goto) b: a loop.
        PlaylistItemSettings back = b.model.item(ids[2])->settings;
        back.endMode = PlaylistEndMode::goto_;
        back.gotoTargetItemId = ids[1];
        QVERIFY(b.model.setItemSettings(ids[2], back));

        auto mapOf = [&](quint64 id) {
            b.panel.showMap(id);
            auto *dialog = b.panel.findChild<QDialog *>(QStringLiteral("playlistMapDialog"));
            return std::make_tuple(dialog->findChild<QLabel *>(QStringLiteral("playlistMapNote"))->text(),
                                   dialog->findChild<QLabel *>(QStringLiteral("playlistMapTotal"))->text(),
                                   dialog->findChild<QTableWidget *>(QStringLiteral("playlistMapTable"))->rowCount());
        };
        auto [repeatNote, repeatTotal, repeatRows] = mapOf(ids[0]);
        QCOMPARE(repeatNote, QStringLiteral("An infinite repeat was found. Total is unlimited."));
        QCOMPARE(repeatTotal, QStringLiteral("Total: Unlimited"));
        QCOMPARE(repeatRows, 1);
        auto [loopNote, loopTotal, loopRows] = mapOf(ids[1]);
        QCOMPARE(loopNote, QStringLiteral("A playback loop was found. Total is unlimited."));
        QCOMPARE(loopTotal, QStringLiteral("Total: Unlimited"));
        QCOMPARE(loopRows, 2);
    }

    // The rows paint the states the document holds: a few pixels of the
    // ON AIR badge, the offline mark and a colour tint.
    void paintsStatesAndTints()
    {
        Bench b;
        const QList<quint64> ids = b.model.addItems(files({"on.mp4", "off.mp4", "red.mp4"}));
        QVERIFY(b.model.setOnAirItem(ids[0]));
        b.model.markFileUnavailable(b.model.item(ids[1])->filePath);
        QVERIFY(b.model.setItemColor(ids[2], PlaylistItemColor::red));
        QVERIFY(QTest::qWaitForWindowExposed(&b.panel));
        const QImage picture = b.list()->grab().toImage();
        const QPoint offset = b.list()->viewport()->mapTo(b.list(), QPoint(0, 0));
        auto rowHas = [&](quint64 id, QColor colour, int tolerance) {
            const QRect rect = b.list()->visualRect(b.list()->model()->index(b.model.rowOf(id) - 1, 0)).translated(offset);
            for (int y = rect.top(); y <= rect.bottom(); ++y)
                for (int x = rect.left(); x <= rect.right(); ++x) {
                    const QColor c = picture.pixelColor(x, y);
                    if (std::abs(c.red() - colour.red()) <= tolerance && std::abs(c.green() - colour.green()) <= tolerance
                        && std::abs(c.blue() - colour.blue()) <= tolerance)
                        return true;
                }
            return false;
        };
        QVERIFY(rowHas(ids[0], QColor(0xa9, 0x2e, 0x36), 2));  // ON AIR badge
        QVERIFY(rowHas(ids[1], QColor(0xc6, 0x28, 0x28), 2));  // MEDIA OFFLINE
        QVERIFY(!rowHas(ids[2], QColor(0xc6, 0x28, 0x28), 2));
        // The red tint over the row's dark background.
        QVERIFY(rowHas(ids[2], QColor(0x62, 0x3f, 0x42), 12));
    }
};

QTEST_MAIN(TestPlaylistPanel)
#include "tst_playlist_panel.moc"
