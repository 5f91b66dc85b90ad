// Refusals and failures of the playlist file functions against a real model
// and file queue (the round trips are run by the application itself in
// tst_app_process): each reaches the caller in its own words and changes
// nothing.

#include "kit/item_request.h"
#include "playlist/playlist_document.h"
#include "playlist/playlist_model.h"
#include "playlist/playlist_transfer.h"
#include "shell/background_io_queue.h"
#include "shell/user_info_center.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <optional>

using namespace tarnix;

namespace {

struct Rig {
    QTemporaryDir dir;
    PlaylistModel model{nullptr, PlaylistModelOptions{[](const QString &) { return true; }}};
    BackgroundIoQueue queue{nullptr, std::chrono::milliseconds(1)};
    UserInfoCenter info;
    PlaylistTransfer transfer{&model, &queue, &info, dir.filePath("data/previous-session.json")};

    quint64 add(const QString &name, qint32 playlist = 1)
    {
        const QString path = testkit::touchFile(dir.filePath(name));
        return model.addItems({testkit::ItemRequest(path).playlist(playlist)}).value(0);
    }

    // Runs one transfer to its end.
    template <typename Start>
    PlaylistTransferOutcome run(Start start)
    {
        std::optional<PlaylistTransferOutcome> outcome;
        start([&](const PlaylistTransferOutcome &result) { outcome = result; });
        if (!QTest::qWaitFor([&] { return outcome.has_value(); }, 10000))
            return {false, LocalizedText(QString(), {}, "no outcome"), "no outcome"};
        return *outcome;
    }
};

void writeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(bytes);
}

} // namespace

class TestPlaylistTransfer : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { registerPlaylistMetaTypes(); }

    // What the reader refuses reaches the caller in the reader's words.
    void refusedFilesChangeNothing_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::newRow("not JSON") << QByteArray("{ \"format\": ");
        QTest::newRow("version 2") << QByteArray(R"({"format":"tarnix-playlist","version":2})");
        QTest::newRow("missing file") << QByteArray();
    }

    void refusedFilesChangeNothing()
    {
        QFETCH(QByteArray, content);
        Rig rig;
        rig.add("a.mp4");
        const PlaylistDocument before = rig.model.snapshot();
        const QString file = rig.dir.filePath("bad.json");
        if (!content.isEmpty())
            writeFile(file, content);
        QString expected;
        QVERIFY(!loadPlaylistFile(file, &expected));

        const PlaylistTransferOutcome outcome =
            rig.run([&](auto done) { rig.transfer.importPlaylists(file, done); });
        QVERIFY(!outcome.success);
        QCOMPARE(outcome.errorText(), expected);
        QCOMPARE(outcome.message.toString(), QStringLiteral("Playlist import failed."));
        QCOMPARE(rig.info.current()->detail, expected);  // the rig's first message is the one shown
        QCOMPARE(rig.model.snapshot(), before);
    }

    // Any of ON AIR, DSK or BGM refuses a restore before the file is read.
    void restoreIsRefusedWhileAnythingPlays_data()
    {
        QTest::addColumn<int>("reference");
        QTest::newRow("on air") << 0;
        QTest::newRow("dsk") << 1;
        QTest::newRow("bgm") << 2;
    }

    void restoreIsRefusedWhileAnythingPlays()
    {
        QFETCH(int, reference);
        Rig rig;
        const quint64 id = rig.add("a.mp4");
        QVERIFY(rig.run([&](auto done) { rig.transfer.savePreviousSession(done); }).success);
        QVERIFY(reference == 0 ? rig.model.setOnAirItem(id)
                : reference == 1 ? rig.model.setDskItem(id)
                                 : rig.model.setBgmItem(id));
        rig.add("b.mp4");
        const PlaylistDocument before = rig.model.snapshot();

        const PlaylistTransferOutcome outcome = rig.run([&](auto done) { rig.transfer.restorePreviousSession(done); });
        QVERIFY(!outcome.success);
        QCOMPARE(outcome.errorText(), QStringLiteral("Turn OFF AIR, turn DSK off, and stop BGM before restoring the "
                                                     "previous session."));
        QCOMPARE(rig.info.current()->severity, UserInfoSeverity::Warning);
        QVERIFY(rig.queue.isIdle());
        QCOMPARE(rig.model.snapshot(), before);
    }

    // A BGM playlist comes back from the previous session as one.
    void previousSessionKeepsTheBgmMode()
    {
        Rig rig;
        const qint32 music = rig.model.addPlaylist();
        QVERIFY(rig.model.setPlaylistMode(music, PlaylistMode::bgm));
        rig.add("song.wav", music);
        rig.add("clip.mp4");
        QVERIFY(rig.run([&](auto done) { rig.transfer.savePreviousSession(done); }).success);
        QVERIFY(rig.model.setPlaylistMode(music, PlaylistMode::standard));
        QVERIFY(rig.run([&](auto done) { rig.transfer.restorePreviousSession(done); }).success);
        QCOMPARE(rig.model.playlistMode(music), PlaylistMode::bgm);
        QCOMPARE(rig.model.playlistMode(1), PlaylistMode::standard);
        QCOMPARE(rig.model.itemCount(music), 1);
    }

    void failuresOfTheSessionFileAndExportAreTold()
    {
        Rig rig;
        rig.add("a.mp4");
        // A file stands where the folder should be.
        writeFile(rig.dir.filePath("blocker"), "x");
        PlaylistTransfer blocked(&rig.model, &rig.queue, &rig.info, rig.dir.filePath("blocker/previous-session.json"));
        PlaylistTransferOutcome outcome = rig.run([&](auto done) { blocked.savePreviousSession(done); });
        QVERIFY(!outcome.success);
        QCOMPARE(outcome.errorText(), QStringLiteral("Could not create the previous-session directory."));

        outcome = rig.run([&](auto done) { rig.transfer.restorePreviousSession(done); });
        QVERIFY(!outcome.success);
        QCOMPARE(outcome.message.toString(), QStringLiteral("Previous session restore failed."));
        QVERIFY(outcome.errorText().startsWith("Could not open the playlist file:"));

        outcome = rig.run([&](auto done) { rig.transfer.exportPlaylists(rig.dir.filePath("blocker/show.json"), done); });
        QVERIFY(!outcome.success);
        QCOMPARE(outcome.message.toString(), QStringLiteral("Playlist export failed."));
        QVERIFY2(outcome.errorText().startsWith("Could not open the playlist file for writing:"),
                 qPrintable(outcome.errorText()));
    }

    // At the end of the run a read in flight is dropped unapplied, and
    // nothing new starts; the session is still saved.
    void closingDropsReadsInFlight()
    {
        Rig rig;
        rig.add("a.mp4");
        const QString file = rig.dir.filePath("show.json");
        QVERIFY(writePlaylistFile(file, rig.model.snapshot()));
        rig.add("b.mp4");
        const PlaylistDocument before = rig.model.snapshot();

        std::optional<PlaylistTransferOutcome> late;
        rig.transfer.importPlaylists(file, [&](const PlaylistTransferOutcome &o) { late = o; });
        rig.transfer.close();
        QVERIFY(QTest::qWaitFor([&] { return late.has_value(); }, 10000));
        QVERIFY(!late->success);
        QCOMPARE(late->errorText(), QStringLiteral("The application is closing."));
        QCOMPARE(rig.model.snapshot(), before);
        QVERIFY(!rig.run([&](auto done) { rig.transfer.exportPlaylists(file, done); }).success);
        QVERIFY(rig.run([&](auto done) { rig.transfer.savePreviousSession(done); }).success);
    }
};

QTEST_GUILESS_MAIN(TestPlaylistTransfer)
#include "tst_playlist_transfer.moc"
