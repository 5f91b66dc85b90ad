#include "kit/item_request.h"
#include "playlist/playlist_document.h"
#include "playlist/playlist_document_io.h"
#include "playlist/playlist_model.h"
#include "shell/background_io_queue.h"

#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QUuid>

#include <thread>

using namespace tarnix;

namespace {

// Every signal the tests follow, as "name args" in emission order.
class SignalLog : public QObject {
public:
    explicit SignalLog(PlaylistModel &m)
    {
        auto log = [this](const QString &line) { lines.append(line); };
        auto id = [](quint64 v) { return QString::number(v); };
        connect(&m, &PlaylistModel::itemAdded, this, [=](quint64 i) { log("itemAdded " + id(i)); });
        connect(&m, &PlaylistModel::itemRemoved, this, [=](quint64 i, int r) { log(QString("itemRemoved %1 %2").arg(i).arg(r)); });
        connect(&m, &PlaylistModel::itemMoved, this, [=](quint64 i, int a, int b) { log(QString("itemMoved %1 %2 %3").arg(i).arg(a).arg(b)); });
        connect(&m, &PlaylistModel::itemChanged, this, [=](quint64 i) { log("itemChanged " + id(i)); });
        connect(&m, &PlaylistModel::itemSettingsChanged, this, [=](quint64 i) { log("itemSettingsChanged " + id(i)); });
        connect(&m, &PlaylistModel::countChanged, this, [=](int c) { log(QString("countChanged %1").arg(c)); });
        connect(&m, &PlaylistModel::onAirStateChanged, this, [=](quint64 a, quint64 b) { log(QString("onAir %1 %2").arg(a).arg(b)); });
        connect(&m, &PlaylistModel::cueStateChanged, this, [=](quint64 a, quint64 b) { log(QString("cue %1 %2").arg(a).arg(b)); });
        connect(&m, &PlaylistModel::editStateChanged, this, [=](quint64 a, quint64 b) { log(QString("edit %1 %2").arg(a).arg(b)); });
        connect(&m, &PlaylistModel::playlistAdded, this, [=](qint32 n) { log(QString("playlistAdded %1").arg(n)); });
        connect(&m, &PlaylistModel::playlistRemoved, this, [=](qint32 n) { log(QString("playlistRemoved %1").arg(n)); });
        connect(&m, &PlaylistModel::playlistNameChanged, this, [=](qint32 n) { log(QString("playlistNameChanged %1").arg(n)); });
        connect(&m, &PlaylistModel::modelReset, this, [=] { log("modelReset"); });
        connect(&m, &PlaylistModel::macrosChanged, this, [=] { log("macrosChanged"); });
        connect(&m, &PlaylistModel::bulkUndoAvailableChanged, this, [=](bool a) { log(a ? "undo true" : "undo false"); });
    }
    QStringList take() { return std::exchange(lines, {}); }
    QStringList lines;
};

PlaylistItemRequest camera(const QString &path = "/dev/video0", const QString &name = "Camera")
{
    return testkit::ItemRequest(path).name(name).source(PlaylistSourceType::uvc);
}

PlaylistModelOptions quietScan()
{
    PlaylistModelOptions options;
    options.scanInterval = std::chrono::hours(1);
    return options;
}

} // namespace

class TestPlaylistModel : public QObject {
    Q_OBJECT
    QTemporaryDir dir;

    PlaylistItemRequest file(const QString &name, qint32 playlist = 0)
    {
        return testkit::ItemRequest(testkit::touchFile(dir.filePath(name))).playlist(playlist);
    }

    QList<quint64> files(PlaylistModel &m, int n, qint32 playlist = 0)
    {
        QList<PlaylistItemRequest> requests;
        for (int i = 0; i < n; ++i)
            requests.append(file(QString("clip%1.mp4").arg(i), playlist));
        return m.addItems(requests);
    }

private slots:
    void initTestCase() { QVERIFY(dir.isValid()); }

    void signalsEqualValuesAndRefusals()
    {
        PlaylistModel m(nullptr, quietScan());
        SignalLog log(m);
        const QList<quint64> ids = files(m, 3);
        QCOMPARE(ids, (QList<quint64>{1, 2, 3}));
        QCOMPARE(log.take(), (QStringList{"itemAdded 1", "itemAdded 2", "itemAdded 3", "countChanged 3"}));
        QCOMPARE(m.item(1)->displayName, "clip0.mp4");

        // Equal values succeed silently; refused changes change and emit nothing.
        QVERIFY(m.setItemDisplayName(1, "  clip0.mp4 "));
        QVERIFY(m.setItemColor(1, PlaylistItemColor::default_));
        QVERIFY(m.setItemSettings(1, m.item(1)->settings));
        QVERIFY(!m.setItemDisplayName(1, "   "));
        QVERIFY(!m.setItemDisplayName(1, QString(4097, u'x')));
        PlaylistItemSettings bad = m.item(1)->settings;
        bad.outPointMs = 0;
        QVERIFY(!m.setItemSettings(1, bad));
        QVERIFY(!m.moveItem(1, 1));
        QVERIFY(!m.moveItem(1, 4));
        QVERIFY(m.setOnAirItem(3));
        log.take();
        QVERIFY(!m.removeItem(3));
        QVERIFY(!m.setItemSettings(99, m.item(1)->settings));
        QVERIFY(log.take().isEmpty());

        // Out point beyond the known duration.
        PlaylistItemSettings s = m.item(1)->settings;
        s.outPointMs = 5000;
        m.setItemDuration(1, 4000);
        QVERIFY(!m.setItemSettings(1, s));
        m.setItemDuration(1, 0);
        QVERIFY(m.setItemSettings(1, s));
        QCOMPARE(log.take(), (QStringList{"itemChanged 1", "itemSettingsChanged 1"}));

        // Removing a goto target clears the references first, then the cue.
        s.endMode = PlaylistEndMode::goto_;
        s.gotoTargetItemId = 2;
        QVERIFY(m.setItemSettings(1, s));
        QVERIFY(m.setCueState(2, PlaylistCueState::Ready));
        QVERIFY(m.setEditItem(1));
        log.take();
        QVERIFY(m.removeItem(2));
        QCOMPARE(log.take(), (QStringList{"itemChanged 1", "itemSettingsChanged 1", "cue 2 0",
                                          "itemRemoved 2 2", "countChanged 2"}));
        QCOMPARE(m.item(1)->settings.gotoTargetItemId, 0u);
        QCOMPARE(m.item(3)->position, 2u);
        QCOMPARE(m.cueItemId(), 0u);

        // replaceDocument wants every playback reference released, EDIT too.
        QVERIFY(m.setOnAirItem(0));
        QString error;
        QVERIFY(!m.replaceDocument(PlaylistDocument::createNew(), &error));
        QCOMPARE(error, "Playback references must be released before importing a playlist.");
        QVERIFY(m.setEditItem(0));
        log.take();
        QVERIFY(m.replaceDocument(PlaylistDocument::createNew(), &error));
        QCOMPARE(log.take(), (QStringList{"modelReset", "macrosChanged"}));
        QCOMPARE(m.nextItemId(), 4u);  // ids are never reused
    }

    void movesBetweenAndInsidePlaylists()
    {
        PlaylistModel m(nullptr, quietScan());
        const qint32 second = m.addPlaylist();
        QCOMPARE(second, 2);
        files(m, 3);
        SignalLog log(m);
        // Row 3 is the gap behind item 2: no move at all.
        QVERIFY(!m.moveItemToPlaylist(2, 1, 3));
        QVERIFY(m.moveItemToPlaylist(1, 1, 4));
        QCOMPARE(m.itemIds(1), (QList<quint64>{2, 3, 1}));
        QVERIFY(m.moveItemToPlaylist(3, second, 1));
        QCOMPARE(log.take(), (QStringList{"itemMoved 1 1 3", "countChanged 2"}));
        QCOMPARE(m.item(1)->position, 2u);
        QCOMPARE(m.item(3)->playlistNumber, second);
        const quint64 copy = m.copyItemToPlaylist(3, 1, 1);
        QCOMPARE(copy, 4u);
        QCOMPARE(m.itemIds(1), (QList<quint64>{4, 2, 1}));
        QVERIFY(!m.removePlaylist(second));  // not empty, though not active
    }

    void pendingItemsAndLiveSources()
    {
        PlaylistModel m(nullptr, quietScan());
        const quint64 clip = m.addDocumentItem(file("analyse.mp4").filePath, 1, PlaylistSourceType::file);
        const quint64 pdf = m.addDocumentItem(file("slides.pdf").filePath, 1, PlaylistSourceType::pdf);
        QVERIFY(clip && pdf);
        QCOMPARE(m.item(pdf)->displayName, "slides");
        QVERIFY(m.isPending(clip));
        // Pending items are out of reach of playback and edits.
        QVERIFY(!m.setOnAirItem(clip));
        QVERIFY(!m.setItemSettings(clip, m.item(clip)->settings));
        QCOMPARE(m.copyItemToPlaylist(clip, 1, 1), 0u);
        QVERIFY(m.setPendingState(clip, int(PlaylistPendingPhase::Analyzing), 2000));
        QCOMPARE(m.pendingState(clip)->progress, 1000);
        QVERIFY(!m.completeMediaAnalysis(clip, PlaylistMediaType::pdf, 5000));
        QSignalSpy replaced(&m, &PlaylistModel::itemReplaced);
        QVERIFY(m.completeMediaAnalysis(clip, PlaylistMediaType::video, 5000));
        QCOMPARE(replaced.count(), 1);
        QCOMPARE(m.item(clip)->settings.outPointMs, std::optional<qint64>(5000));
        QCOMPARE(m.knownDuration(clip), std::optional<qint64>(5000));
        QVERIFY(!m.setPendingState(clip, 0, 0));
        QVERIFY(m.completePendingDocument(pdf));
        QVERIFY(m.isLocked(pdf));
        QVERIFY(!m.setItemSettings(pdf, m.item(pdf)->settings));

        // A live source changes its levels only, and always starts playing.
        const quint64 cam = m.addItems({camera()}).value(0);
        QCOMPARE(m.item(cam)->settings.startMode, PlaylistStartMode::play);
        PlaylistItemSettings s = m.item(cam)->settings;
        s.nominalVolumeTenthsDb = -100;
        QVERIFY(m.setItemSettings(cam, s));
        s.endMode = PlaylistEndMode::next;
        QVERIFY(!m.setItemSettings(cam, s));

        // An import decides offline items from the worker's missing set.
        QVERIFY(m.removeItem(cam));
        PlaylistDocument next = m.snapshot();
        QVERIFY(m.replaceDocument(next, nullptr, QSet<quint64>{clip}));
        QVERIFY(m.isOffline(clip));
        QVERIFY(!m.isOffline(pdf));
        QVERIFY(!m.knownDuration(clip));
    }

    void limitsKeepTheDocumentLoadable()
    {
        PlaylistModel m(nullptr, quietScan());
        for (int n = 2; n <= 128; ++n)
            QCOMPARE(m.addPlaylist(), n);
        QCOMPARE(m.addPlaylist(), 0);
        QVERIFY(!m.setPlaylistName(1, QString(4097, u'n')));
        QVERIFY(m.setPlaylistName(1, QString(4096, u'n')));

        QList<PlaylistItemRequest> requests(10000, camera());
        QCOMPARE(m.addItems(requests).size(), 10000);
        QVERIFY(m.addItems({camera()}).isEmpty());
        QCOMPARE(m.copyItemToPlaylist(1, 1, 1), 0u);
        QVERIFY(m.addItems({camera(QString(4097, u'p'))}).isEmpty());

        // A macro list whose document would outgrow the string budget.
        MacroDefinition macro{QUuid::createUuid().toString(), "Long", {}};
        for (int i = 0; i < 2100; ++i) {
            MacroStep step;
            step.label = QString(4096, u'l');
            macro.steps.append(step);
        }
        QString error;
        QSignalSpy macrosChanged(&m, &PlaylistModel::macrosChanged);
        QVERIFY(!m.setMacros({macro}, &error));
        QCOMPARE(error, "Playlist JSON strings exceed 8388608 characters in total.");
        QCOMPARE(macrosChanged.count(), 0);
    }

    void setMacrosRaisesNextIdOnlyForItsDocument()
    {
        PlaylistModel m(nullptr, quietScan());
        MacroStep step;
        step.type = MacroStepType::cue;
        step.itemId = 700;
        step.documentId = QUuid::createUuid().toString(QUuid::WithoutBraces);
        MacroDefinition macro{QUuid::createUuid().toString(), "Show", {step}};
        QVERIFY(m.setMacros({macro}));
        QCOMPARE(m.nextItemId(), 1u);
        macro.steps[0].documentId = m.documentId();
        QSignalSpy changed(&m, &PlaylistModel::macrosChanged);
        QVERIFY(m.setMacros({macro}));
        QCOMPARE(m.nextItemId(), 701u);
        QVERIFY(m.setMacros({macro}));
        QCOMPARE(changed.count(), 1);
    }

    void saveOverTheStringBudgetKeepsTheOldFile()
    {
        PlaylistModel m(nullptr, quietScan());
        // 1025 live items with 8192 characters each exceed 8388608 in total.
        QList<PlaylistItemRequest> requests(1025, camera(QString(4096, u'p'), QString(4096, u'n')));
        QCOMPARE(m.addItems(requests).size(), 1025);
        const QString path = dir.filePath("session.json");
        QVERIFY(writePlaylistFile(path, PlaylistDocument::createNew()));
        const QByteArray old = [&] { QFile f(path); f.open(QIODevice::ReadOnly); return f.readAll(); }();

        BackgroundIoQueue queue(nullptr, std::chrono::milliseconds(1));
        std::optional<std::pair<bool, QString>> outcome;
        savePlaylistInBackground(queue, path, m.snapshot(), [&](bool ok, const QString &error) {
            outcome = {ok, error};
        });
        QTRY_VERIFY_WITH_TIMEOUT(outcome.has_value(), 5000);
        QCOMPARE(outcome->first, false);
        QCOMPARE(outcome->second, "Playlist JSON strings exceed 8388608 characters in total.");
        QFile f(path);
        QVERIFY(f.open(QIODevice::ReadOnly));
        QCOMPARE(f.readAll(), old);

        // And a document that fits goes through the same queue and loads back.
        std::optional<LoadedPlaylist> loaded;
        PlaylistModel small(nullptr, quietScan());
        files(small, 2);
        savePlaylistInBackground(queue, path, small.snapshot(), {});
        loadPlaylistInBackground(queue, path, {}, [&](const std::optional<LoadedPlaylist> &l, const QString &) {
            loaded = l;
        });
        QTRY_VERIFY_WITH_TIMEOUT(loaded.has_value(), 5000);
        QCOMPARE(loaded->document.items, small.snapshot().items);
        QVERIFY(loaded->missingItems.isEmpty());
    }

    void bulkShuffleThenEditThenUndo()
    {
        PlaylistModel m(nullptr, quietScan());
        const QList<quint64> ids = files(m, 4);
        SignalLog log(m);
        QVERIFY(m.applyBulkOperation(1, PlaylistBulkOperation::Shuffle));
        QVERIFY(m.itemIds(1) != ids);
        QVERIFY(m.isBulkUndoAvailable());
        QVERIFY(log.lines.contains("undo true"));
        for (quint64 id : ids) {
            QCOMPARE(m.item(id)->settings.startMode, PlaylistStartMode::play);
            QCOMPARE(m.item(id)->settings.endMode, PlaylistEndMode::next);
        }
        // The operator changes one end mode by hand; undo keeps it.
        PlaylistItemSettings s = m.item(ids[1])->settings;
        s.endMode = PlaylistEndMode::stop;
        QVERIFY(m.setItemSettings(ids[1], s));
        log.take();
        bool kept = false;
        QString error;
        QVERIFY2(m.undoBulkOperation(&error, &kept), qPrintable(error));
        QVERIFY(kept);
        QCOMPARE(m.itemIds(1), ids);
        QCOMPARE(m.item(ids[1])->settings.endMode, PlaylistEndMode::stop);
        QCOMPARE(m.item(ids[1])->settings.startMode, PlaylistStartMode::pause);
        QCOMPARE(m.item(ids[0])->settings.endMode, PlaylistEndMode::pause);
        QCOMPARE(log.lines.first(), "undo false");
        QVERIFY(!m.isBulkUndoAvailable());
        QVERIFY(!m.undoBulkOperation(&error));
        QCOMPARE(error, "There is no playlist bulk operation to undo.");

        // Two items: a shuffle always swaps them. One item: modes only.
        PlaylistModel two(nullptr, quietScan());
        files(two, 2);
        for (int i = 0; i < 20; ++i) {
            const QList<quint64> before = two.itemIds(1);
            QVERIFY(two.applyBulkOperation(1, PlaylistBulkOperation::Shuffle));
            QCOMPARE(two.itemIds(1), (QList<quint64>{before[1], before[0]}));
        }
        // A locked item refuses the whole operation.
        QVERIFY(two.setItemSettingsLocked(1, true));
        QVERIFY(!two.applyBulkOperation(1, PlaylistBulkOperation::PlayOnce));
    }

    void playOnceModesAndModeUndo()
    {
        PlaylistModel m(nullptr, quietScan());
        const QList<quint64> ids = files(m, 3);
        QVERIFY(m.applyBulkOperation(1, PlaylistBulkOperation::PlayOnce));
        QCOMPARE(m.item(ids[0])->settings.endMode, PlaylistEndMode::next);
        QCOMPARE(m.item(ids[2])->settings.endMode, PlaylistEndMode::pause);
        QCOMPARE(m.item(ids[2])->settings.startMode, PlaylistStartMode::play);
        QVERIFY(m.applyBulkOperation(1, PlaylistBulkOperation::BgmMode));
        QSignalSpy mode(&m, &PlaylistModel::playlistModeChanged);
        bool kept = true;
        QVERIFY(m.undoBulkOperation(nullptr, &kept));
        QVERIFY(!kept);
        QCOMPARE(m.playlistMode(1), PlaylistMode::standard);
        QCOMPARE(mode.count(), 1);
        QCOMPARE(m.item(ids[2])->settings.endMode, PlaylistEndMode::pause);
        QCOMPARE(m.item(ids[2])->settings.startMode, PlaylistStartMode::pause);

        // One item: nothing to shuffle, but the modes are set.
        PlaylistModel one(nullptr, quietScan());
        const quint64 id = files(one, 1).value(0);
        QVERIFY(one.applyBulkOperation(1, PlaylistBulkOperation::Shuffle));
        QCOMPARE(one.item(id)->settings.endMode, PlaylistEndMode::next);
        QVERIFY(!one.applyBulkOperation(1, static_cast<PlaylistBulkOperation>(5)));
    }

    void undoOfADeletedPlaylist()
    {
        PlaylistModel m(nullptr, quietScan());
        const qint32 number = m.addPlaylist();
        const QList<quint64> ids = files(m, 2, number);
        PlaylistItemSettings s = m.item(ids[0])->settings;
        s.endMode = PlaylistEndMode::goto_;
        s.gotoTargetItemId = ids[1];
        QVERIFY(m.setItemSettings(ids[0], s));
        // What the controller does for Delete: snapshot, clear, remove, record.
        const PlaylistDocument before = m.snapshot();
        QVERIFY(m.removeItem(ids[1]));
        QVERIFY(m.removeItem(ids[0]));
        QVERIFY(m.removePlaylist(number));
        m.recordBulkUndo(before);
        QVERIFY(m.isBulkUndoAvailable());
        // The deleted number stays taken while undo can bring it back.
        QCOMPARE(m.addPlaylist(), number + 1);
        bool kept = true;
        QString error;
        QVERIFY2(m.undoBulkOperation(&error, &kept), qPrintable(error));
        QVERIFY(!kept);
        QCOMPARE(m.playlistNumbers(), (QList<qint32>{1, number, number + 1}));
        QCOMPARE(m.itemIds(number), ids);
        QCOMPARE(m.item(ids[0])->settings.gotoTargetItemId, ids[1]);
    }

    void successorAndRoute()
    {
        PlaylistModel m(nullptr, quietScan());
        const QList<quint64> ids = files(m, 3);
        auto set = [&](quint64 id, PlaylistStartMode start, PlaylistEndMode end, qint64 outMs,
                       quint64 target = 0, int repeat = 0) {
            PlaylistItemSettings s = m.item(id)->settings;
            s.startMode = start;
            s.endMode = end;
            s.outPointMs = outMs;
            s.gotoTargetItemId = target;
            s.repeatCount = repeat;
            s.repeatEndMode = PlaylistRepeatEndMode::next;
            QVERIFY(m.setItemSettings(id, s));
        };
        const auto play = PlaylistStartMode::play;
        set(ids[0], play, PlaylistEndMode::next, 10000);
        set(ids[1], play, PlaylistEndMode::next, 20000);
        set(ids[2], PlaylistStartMode::pause, PlaylistEndMode::stop, 5000);

        // Successor: cyclic, skipping the excluded and the offline.
        QCOMPARE(m.successor(ids[2], PlaylistEndMode::next), ids[0]);
        QCOMPARE(m.successor(ids[0], PlaylistEndMode::next, ids[1]), ids[2]);
        m.markFileUnavailable(m.item(ids[1])->filePath);
        QVERIFY(m.isOffline(ids[1]));
        QCOMPARE(m.successor(ids[0], PlaylistEndMode::next), ids[2]);
        QCOMPARE(m.successor(ids[0], PlaylistEndMode::goto_), 0u);
        QCOMPARE(m.successor(ids[0], PlaylistEndMode::stop), 0u);

        PlaylistRoute r = m.route(ids[0]);
        QCOMPARE(r.rows.size(), 2);
        QCOMPARE(r.stop, PlaylistRouteStop::DestinationPause);
        QCOMPARE(r.totalMs, std::optional<qint64>(30000));
        QCOMPARE(m.route(ids[0], {2.0, {}, 0}).totalMs, std::optional<qint64>(15000));
        QCOMPARE(m.route(ids[2]).stop, PlaylistRouteStop::StartPause);

        // A to B to A is a loop; a crossfade shortens the total.
        set(ids[1], play, PlaylistEndMode::goto_, 20000, ids[0]);
        PlaylistItemSettings s = m.item(ids[0])->settings;
        s.endCrossfade = {true, 2000};
        QVERIFY(m.setItemSettings(ids[0], s));
        r = m.route(ids[0]);
        QCOMPARE(r.stop, PlaylistRouteStop::Loop);
        QVERIFY(!r.totalMs);
        QCOMPARE(playlistRouteNote(r.stop), "A playback loop was found. Total is unlimited.");

        // Repeat three times with 2 s crossfades, then next; and from the ON
        // AIR position 4 s into the second pass.
        set(ids[1], play, PlaylistEndMode::stop, 20000);
        set(ids[0], play, PlaylistEndMode::repeat, 10000, 0, 3);
        r = m.route(ids[0]);
        QCOMPARE(r.rows[0].durationMs, std::optional<qint64>(3 * 10000 - 2 * 2000));
        QCOMPARE(r.totalMs, std::optional<qint64>(26000 - 2000 + 20000));
        QCOMPARE(r.stop, PlaylistRouteStop::End);
        r = m.route(ids[0], {std::nullopt, 4000, 1});
        QCOMPARE(r.rows[0].durationMs, std::optional<qint64>(6000 + 10000 - 2000));
        set(ids[0], play, PlaylistEndMode::repeat, 10000, 0, 0);
        QCOMPARE(m.route(ids[0]).stop, PlaylistRouteStop::InfiniteRepeat);
        QCOMPARE(m.route(99).stop, PlaylistRouteStop::DestinationUnavailable);
    }

    void availabilityScanFollowsRenames()
    {
        PlaylistModelOptions options;
        options.scanInterval = std::chrono::milliseconds(20);
        options.scanPollInterval = std::chrono::milliseconds(2);
        PlaylistModel m(nullptr, options);
        const quint64 id = m.addItems({file("moving.mp4")}).value(0);
        QVERIFY(id);
        QSignalSpy changes(&m, &PlaylistModel::itemMediaAvailabilityChanged);
        const QString path = m.item(id)->filePath;
        QVERIFY(QFile::rename(path, path + ".away"));
        QTRY_VERIFY_WITH_TIMEOUT(m.isOffline(id), 3000);
        QVERIFY(QFile::rename(path + ".away", path));
        QTRY_VERIFY_WITH_TIMEOUT(!m.isOffline(id), 3000);
        QCOMPARE(changes.count(), 2);
        QCOMPARE(changes.at(0), (QVariantList{QVariant::fromValue(id), true}));
        QCOMPARE(changes.at(1), (QVariantList{QVariant::fromValue(id), false}));
    }

    void scanOfAnOlderItemSetIsDropped()
    {
        // A predicate that blocks until released holds the scan in flight.
        auto gate = std::make_shared<std::atomic<bool>>(false);
        PlaylistModelOptions options = quietScan();
        options.scanPollInterval = std::chrono::milliseconds(2);
        options.isFile = [gate](const QString &) {
            while (!gate->load())
                std::this_thread::yield();
            return false;
        };
        PlaylistModel m(nullptr, options);
        const quint64 id = m.addItems({file("a.mp4")}).value(0);
        m.requestAvailabilityScan();
        m.addItems({file("b.mp4")});  // bumps the generation
        gate->store(true);
        QSignalSpy checked(&m, &PlaylistModel::itemMediaAvailabilityChanged);
        QTRY_VERIFY_WITH_TIMEOUT(!m.isAvailabilityScanRunning(), 3000);
        QCOMPARE(checked.count(), 0);
        QVERIFY(!m.isOffline(id));
        m.requestAvailabilityScan();
        QTRY_VERIFY_WITH_TIMEOUT(m.isOffline(id), 3000);
    }
};

QTEST_GUILESS_MAIN(TestPlaylistModel)
#include "tst_playlist_model.moc"
