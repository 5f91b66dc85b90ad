#include "control/controller_operations.h"
#include "control/playlist_item_operations.h"
#include "playlist/playlist_model.h"
#include "ui/playlist_item_list_model.h"

#include "kit/item_request.h"

#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

using namespace tarnix;
using testkit::ItemRequest;
using testkit::touchFile;
using Ops = ControllerOperations;

// The item operations as keys, MIDI and macros reach them, and the rows the
// views show while the document changes under them.
class TestPlaylistItemOperations : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;

    QString file(const char *name) { return touchFile(m_dir.filePath(QString::fromLatin1(name))); }

private slots:
    void copyAndPasteCarryModesAndSwitchesOnly()
    {
        Ops ops;
        PlaylistModel model;
        PlaylistItemOperations items(&model, &ops);
        PlaylistItemSettings source;
        source.startMode = PlaylistStartMode::play;
        source.endMode = PlaylistEndMode::next;
        source.fadeIn = {true, 2500};
        source.endCrossfade = {true, 700};
        PlaylistItemSettings target;
        target.fadeIn.durationMs = 4000;
        target.inPointMs = 1000;
        target.nominalVolumeTenthsDb = -60;
        const QList<quint64> ids = model.addItems({ItemRequest(file("a.mp4")).settings(source),
                                                   ItemRequest(file("b.mp4")).settings(target),
                                                   ItemRequest(file("c.mp4")).playing()});
        QCOMPARE(ids.size(), 3);

        QCOMPARE(ops.invoke(Ops::PasteItemState, ids[1]).status, Ops::Rejected);  // nothing held yet
        QCOMPARE(ops.invoke(Ops::CopyItemState, ids[2]).status, Ops::Invoked);
        QCOMPARE(ops.invoke(Ops::CopyItemState, ids[0]).status, Ops::Invoked);    // replaces the first copy
        QCOMPARE(ops.invoke(Ops::PasteItemState, ids[1]).status, Ops::Invoked);
        const PlaylistItemSettings pasted = model.item(ids[1])->settings;
        QCOMPARE(pasted.startMode, PlaylistStartMode::play);
        QCOMPARE(pasted.endMode, PlaylistEndMode::next);
        QVERIFY(pasted.fadeIn.enabled && pasted.endCrossfade.enabled && !pasted.fadeOut.enabled);
        // Durations, points and volume stay the target's own.
        QCOMPARE(pasted.fadeIn.durationMs, 4000);
        QCOMPARE(pasted.endCrossfade.durationMs, 1000);
        QCOMPARE(pasted.inPointMs, 1000);
        QCOMPARE(pasted.nominalVolumeTenthsDb, -60);

        // A document item takes no settings: the paste is refused whole.
        const quint64 slides = model.addDocumentItem(file("deck.pptx"), 1, PlaylistSourceType::powerpoint);
        QVERIFY(model.completePendingDocument(slides));
        const PlaylistItemSettings before = model.item(slides)->settings;
        QCOMPARE(ops.invoke(Ops::PasteItemState, slides).status, Ops::Rejected);
        QCOMPARE(model.item(slides)->settings, before);
    }

    void pendingItemsAndGotoAreRefused()
    {
        Ops ops;
        PlaylistModel model;
        PlaylistItemOperations items(&model, &ops);
        QSignalSpy blocked(&items, &PlaylistItemOperations::actionBlocked);
        PlaylistItemRequest pending = ItemRequest(file("p.mp4"));
        pending.pending = PlaylistPendingState{};
        const QList<quint64> ids = model.addItems({ItemRequest(file("a.mp4")), pending});

        QCOMPARE(ops.invoke(Ops::CopyItemState, ids[1]).status, Ops::Rejected);
        QCOMPARE(blocked.size(), 1);
        QCOMPARE(blocked.at(0).at(0).value<PlaylistItemAction>(), PlaylistItemAction::CopyState);
        QCOMPARE(ops.invoke(Ops::CopyItemState, ids[0]).status, Ops::Invoked);
        QCOMPARE(ops.invoke(Ops::PasteItemState, ids[1]).status, Ops::Rejected);
        QCOMPARE(blocked.at(1).at(0).value<PlaylistItemAction>(), PlaylistItemAction::PasteState);
        QCOMPARE(ops.invoke(Ops::SetItemFadeInEnabled, ids[1], true).status, Ops::Rejected);
        QCOMPARE(ops.invoke(Ops::SetItemStartMode, ids[1], PlaylistStartMode::play).status, Ops::Rejected);

        // GOTO carries no target on this path.
        QCOMPARE(ops.invoke(Ops::SetItemEndMode, ids[0], PlaylistEndMode::goto_).status, Ops::Rejected);
        QCOMPARE(model.item(ids[0])->settings.endMode, PlaylistEndMode::pause);
        QCOMPARE(ops.invoke(Ops::SetItemEndMode, ids[0], PlaylistEndMode::next).status, Ops::Invoked);
        QCOMPARE(model.item(ids[0])->settings.endMode, PlaylistEndMode::next);
        // Exact argument types only.
        QCOMPARE(ops.invoke(Ops::SetItemColor, ids[0], 2).status, Ops::InvalidArguments);
        QCOMPARE(ops.invoke(Ops::SetItemColor, ids[0], PlaylistItemColor::blue).status, Ops::Invoked);
        QCOMPARE(ops.invoke(Ops::RenamePlaylist, 1, QStringLiteral("Opening")).status, Ops::Invoked);
        QCOMPARE(model.playlistName(1), QStringLiteral("Opening"));
        QCOMPARE(ops.invoke(Ops::CreatePlaylist).status, Ops::Invoked);
        QCOMPARE(ops.invoke(Ops::ActivatePlaylist, 2).status, Ops::Invoked);
        QCOMPARE(ops.invoke(Ops::ActivatePlaylist, 9).status, Ops::Rejected);
    }

    // The rows follow every change of the document in place; only a new
    // active playlist or a new document starts them again.
    void rowsFollowTheDocument()
    {
        PlaylistModel model;
        PlaylistItemListModel rows(&model, nullptr);
        QSignalSpy resets(&rows, &QAbstractItemModel::modelReset);
        auto shown = [&rows] {
            QList<quint64> ids;
            for (int r = 0; r < rows.rowCount(); ++r)
                ids << rows.index(r).data(PlaylistItemListModel::ItemIdRole).value<quint64>();
            return ids;
        };
        QList<PlaylistItemRequest> requests;
        for (const char *name : {"1.mp4", "2.mp4", "3.mp4", "4.mp4", "5.mp4"})
            requests << ItemRequest(file(name));
        const QList<quint64> ids = model.addItems(requests);
        const qint32 second = model.addPlaylist();

        QVERIFY(model.moveItem(ids[0], 4));
        QCOMPARE(shown(), model.itemIds(1));
        QVERIFY(model.moveItem(ids[3], 1));
        QCOMPARE(shown(), model.itemIds(1));
        QVERIFY(model.removeItem(ids[2]));
        QCOMPARE(shown(), model.itemIds(1));
        QVERIFY(model.moveItemToPlaylist(ids[1], second, 1));
        QCOMPARE(shown(), model.itemIds(1));
        QVERIFY(model.copyItemToPlaylist(ids[4], 1, 1) != 0);
        QCOMPARE(shown(), model.itemIds(1));
        QVERIFY(model.moveItemToPlaylist(ids[1], 1, 3));
        QCOMPARE(shown(), model.itemIds(1));
        QCOMPARE(resets.size(), 0);

        QVERIFY(model.applyBulkOperation(1, PlaylistBulkOperation::Shuffle));
        QCOMPARE(shown(), model.itemIds(1));
        QVERIFY(model.undoBulkOperation());
        QCOMPARE(shown(), model.itemIds(1));

        QVERIFY(model.setActivePlaylist(second));
        QCOMPARE(shown(), model.itemIds(second));
        QCOMPARE(rows.playlistNumber(), second);
        QVERIFY(model.setActivePlaylist(1));
        QCOMPARE(shown(), model.itemIds(1));
    }
};

QTEST_MAIN(TestPlaylistItemOperations)
#include "tst_playlist_item_operations.moc"
