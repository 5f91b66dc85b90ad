// The application from the outside: started as the README starts it (no
// display: offscreen), given a home and a control socket of its own, driven
// only through tarnixctl, and judged by its answers, its log and its files.

#include "app_process.h"

#include "playlist/playlist_document.h"
#include "support/private_pulse_audio.h"
#include "support/test_paths.h"
#include "video/private_xvfb.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonValue>
#include <QtTest>

using namespace tarnix;
using namespace tarnix::test;

namespace {

QString media(const char *name)
{
    return QStringLiteral(TARNIX_TEST_MEDIA_DIR "/") + QString::fromLatin1(name);
}

// Two generated clips: the first (3 s) plays and takes the next at its end,
// the second (2 s) plays and pauses at its end.
PlaylistDocument twoClips()
{
    PlaylistDocument document = PlaylistDocument::createNew();
    document.playlists.first().name = QStringLiteral("Show");
    const char *files[] = {"h264-aac-3s.mp4", "h264-aac.mp4"};
    for (int i = 0; i < 2; ++i) {
        PlaylistItem item;
        item.id = quint64(i + 1);
        item.position = quint32(i + 1);
        item.playlistNumber = 1;
        item.filePath = media(files[i]);
        item.displayName = QString::fromLatin1(files[i]);
        item.mediaType = PlaylistMediaType::video;
        item.settings.startMode = PlaylistStartMode::play;
        item.settings.endMode = i == 0 ? PlaylistEndMode::next : PlaylistEndMode::pause;
        document.items << item;
    }
    document.nextItemId = 3;
    return document;
}

// The map state of the top-level window whose title starts with `title`
// ("IsViewable", "IsUnMapped"), as the X server sees it; empty when absent.
QString mapState(const QString &title)
{
    QProcess tree;
    tree.start(QStringLiteral("xwininfo"), {"-root", "-children"});
    if (!tree.waitForFinished(10000))
        return {};
    const QRegularExpression line("^\\s*(0x[0-9a-f]+) \"" + QRegularExpression::escape(title));
    for (const QString &text : QString::fromLocal8Bit(tree.readAllStandardOutput()).split('\n')) {
        const QRegularExpressionMatch match = line.match(text);
        if (!match.hasMatch())
            continue;
        QProcess info;
        info.start(QStringLiteral("xwininfo"), {"-id", match.captured(1)});
        if (!info.waitForFinished(10000))
            return {};
        const QRegularExpressionMatch state =
            QRegularExpression("Map State: (\\w+)").match(QString::fromLocal8Bit(info.readAllStandardOutput()));
        return state.captured(1);
    }
    return {};
}

qint64 field(const QJsonObject &state, const char *key)
{
    const QJsonValue value = state.value(QLatin1String(key));
    return value.isDouble() ? qint64(value.toDouble()) : -1;
}

} // namespace

class TestAppProcess : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_files;
    PrivatePulseAudio m_pulse;

    // An application with the test's sound server, so that takes have a
    // program audio output.
    std::unique_ptr<AppProcess> application(const QTemporaryDir &home)
    {
        auto app = std::make_unique<AppProcess>(home);
        app->setPulseServer(m_pulse.serverAddress());
        return app;
    }

    QString showFile()
    {
        const QString path = m_files.filePath("show.json");
        if (!QFile::exists(path) && !writePlaylistFile(path, twoClips()))
            return {};
        return path;
    }

    // Imports the show, selects the first clip and takes it ON AIR.
    static bool takeFirstClip(AppProcess &app, const QString &show)
    {
        if (app.ctl({"importPlaylist", show}).line != R"({"ok":true})")
            return false;
        if (app.ctl({R"({"action":"SelectItem","args":[{"uint64":"1"}]})"}).object().value("status") != "Invoked")
            return false;
        // A take is refused while the program audio output is still coming
        // up; the operator would press again.
        return QTest::qWaitFor(
            [&] {
                if (field(app.state(), "onAirItemId") == 1)
                    return true;
                (void)app.ctl({"TakeSelectedOnAir"});
                return QTest::qWaitFor([&] { return field(app.state(), "onAirItemId") == 1; }, 1000);
            },
            20000);
    }

private slots:
    void initTestCase()
    {
        QVERIFY(QFile::exists(media("h264-aac-3s.mp4")));
        QVERIFY(!showFile().isEmpty());
        QString error;
        QVERIFY2(m_pulse.start(&error), qPrintable(error));
    }

    void cleanupTestCase() { m_pulse.stop(); }

    // Import, select, take, the end mode's next, OFF AIR, and the log. While
    // an item is on air the model refuses an import in its words; a damaged
    // file is refused in the reader's. Neither changes anything.
    void importTakeNextAndOffAir()
    {
        QTemporaryDir home;
        const std::unique_ptr<AppProcess> owned = application(home);
        AppProcess &app = *owned;
        QVERIFY2(app.start(), qPrintable(app.console()));
        QVERIFY(takeFirstClip(app, showFile()));
        QVERIFY(field(app.state(), "currentDeck") >= 0);
        qint64 first = -1;
        QVERIFY(QTest::qWaitFor([&] { return (first = field(app.state(), "positionMs")) >= 0; }, 10000));
        QVERIFY(QTest::qWaitFor([&] { return field(app.state(), "positionMs") > first + 200; }, 10000));
        // The fields the panels read follow the first eight, in this order;
        // EDIT and PFL have no owner yet.
        const QByteArray stateLine = app.ctl({"state"}).line;
        QVERIFY2(QRegularExpression(R"(^\{"selectedItemId":1,"onAirItemId":1,"cueItemId":[^,]+,"dskItemId":null,)"
                                    R"("bgmItemId":null,"currentDeck":[01],"positionMs":\d+,"remainingMs":\d+,)"
                                    R"("programPlaying":true,"ftbActive":false,"playbackRate":1(\.0)?,)"
                                    R"("editItemId":null,"editPositionMs":null,"pflOn":null\}$)")
                     .match(QString::fromUtf8(stateLine))
                     .hasMatch(),
                 stateLine.constData());

        CtlAnswer answer = app.ctl({"importPlaylist", showFile()});
        QCOMPARE(answer.exitCode, 1);
        QCOMPARE(answer.object().value("error").toString(),
                 QStringLiteral("Playback references must be released before importing a playlist."));
        const QString damaged = home.filePath("damaged.json");
        QFile file(damaged);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(R"({"format":"tarnix-playlist","version":1,"playlists":[)");
        file.close();
        QString readerText;
        QVERIFY(!loadPlaylistFile(damaged, &readerText));
        answer = app.ctl({"importPlaylist", damaged});
        QCOMPARE(answer.object().value("error").toString(), readerText);
        QVERIFY(field(app.state(), "onAirItemId") >= 1);  // still on air

        // The first clip's end mode takes the second.
        QVERIFY(QTest::qWaitFor([&] { return field(app.state(), "onAirItemId") == 2; }, 20000));
        QCOMPARE(app.ctl({"OffAir"}).exitCode, 0);
        QVERIFY(QTest::qWaitFor([&] { return app.state().value("onAirItemId").isNull(); }, 10000));

        const QStringList log = app.logMessages();
        const QStringList takes = log.filter(QRegularExpression("^OP request id=\\d+ action=TakeSelectedOnAir .* source=Remote "));
        QVERIFY(!takes.isEmpty());  // more than one if the audio output was still coming up
        const QString id = takes.last().section(' ', 2, 2);
        QCOMPARE(log.filter(QRegularExpression("^OP result " + id + " status=Invoked ")).size(), 1);
        QVERIFY(!log.filter(QRegularExpression("^OP request id=\\d+ action=OffAir .* source=Remote ")).isEmpty());
        QVERIFY(!log.filter("AUTO PROGRAM").isEmpty());
        QCOMPARE(app.terminate(), 0);
        // GLib's criticals bypass the log and go to the console.
        const QString console = app.console();
        QVERIFY2(!console.contains(QLatin1String("-CRITICAL **")), qPrintable(console));
    }

    // Files added over the socket become items that automation can read,
    // and one of them goes on air.
    void addFilesOverTheSocketAndReadThePlaylists()
    {
        QTemporaryDir home;
        const std::unique_ptr<AppProcess> owned = application(home);
        AppProcess &app = *owned;
        QVERIFY2(app.start(), qPrintable(app.console()));
        const QString clip = media("h264-aac-3s.mp4");
        const QString tone = media("tone-1s.wav");
        const QString still = media("still.png");
        const QJsonObject add = app.ctl({QStringLiteral(R"({"action":"AddFiles","args":[{"strings":["%1","%2","%3"]}]})")
                                             .arg(clip, tone, still)})
                                    .object();
        QCOMPARE(add.value("status").toString(), QStringLiteral("Invoked"));
        QJsonArray items;
        QVERIFY(QTest::qWaitFor(
            [&] {
                const QJsonObject playlists = app.ctl({"playlists"}).object();
                items = playlists.value("playlists").toArray().at(0).toObject().value("items").toArray();
                return items.size() == 3 && std::all_of(items.begin(), items.end(), [](const QJsonValue &item) {
                           return item.toObject().value("status") == "ready";
                       });
            },
            20000));
        const QStringList types{"video", "audio", "stillImage"};
        for (int i = 0; i < 3; ++i)
            QCOMPARE(items.at(i).toObject().value("mediaType").toString(), types.at(i));
        QCOMPARE(items.at(0).toObject().value("filePath").toString(), clip);
        QVERIFY(qAbs(items.at(0).toObject().value("durationMs").toInteger() - 3000) < 100);
        QCOMPARE(items.at(2).toObject().value("outPointMs").toInteger(), qint64(5000));
        // The raw line keeps its keys in order.
        const QByteArray head = "{\"activePlaylistNumber\":1,\"playlists\":[{\"number\":1,\"name\":\"Playlist 1\","
                                "\"mode\":\"standard\",\"items\":[{\"id\":\"";
        QVERIFY(app.ctl({"playlists"}).line.startsWith(head));

        const QString id = items.at(0).toObject().value("id").toString();
        QCOMPARE(app.ctl({QStringLiteral(R"({"action":"SelectItem","args":[{"uint64":"%1"}]})").arg(id)})
                     .object()
                     .value("status"),
                 "Invoked");
        QVERIFY(QTest::qWaitFor(
            [&] {
                if (QString::number(field(app.state(), "onAirItemId")) == id)
                    return true;
                (void)app.ctl({"TakeSelectedOnAir"});
                return QTest::qWaitFor([&] { return QString::number(field(app.state(), "onAirItemId")) == id; }, 1000);
            },
            20000));
        QCOMPARE(app.terminate(), 0);
    }

    // SIGTERM while playing ends cleanly and leaves the previous session;
    // the next start gives it back.
    void stopWhilePlayingAndRestore()
    {
        QTemporaryDir home;
        {
            const std::unique_ptr<AppProcess> owned = application(home);
            AppProcess &app = *owned;
            QVERIFY2(app.start(), qPrintable(app.console()));
            QVERIFY(takeFirstClip(app, showFile()));
            QCOMPARE(app.terminate(), 0);
            const QStringList log = app.logMessages();
            QCOMPARE(log.last(), QStringLiteral("Shutdown complete"));
            QVERIFY(!log.filter("ON AIR shutdown confirmed").isEmpty());
        }
        const QString session = home.filePath("data/TARNIX3-Dev/previous-session.json");
        QVERIFY(QFile::exists(session));
        QProcess check;
        check.start(QStringLiteral(TARNIX_PLAYLIST_CHECK_EXECUTABLE), {session});
        QVERIFY(check.waitForFinished(20000));
        QCOMPARE(check.exitCode(), 0);
        QVERIFY(check.readAllStandardOutput().startsWith("OK playlists=1 items=2"));

        AppProcess again(home);
        QVERIFY2(again.start(), qPrintable(again.console()));
        QCOMPARE(again.ctl({"restorePreviousSession"}).line, QByteArray(R"({"ok":true})"));
        QVERIFY(again.logContains("Restored 1 playlist(s) and 2 item(s) from the previous session."));
        const QString exported = home.filePath("after-restore.json");
        QCOMPARE(again.ctl({"exportPlaylist", exported}).line, QByteArray(R"({"ok":true})"));
        const std::optional<PlaylistDocument> before = readPlaylistFile(showFile());
        const std::optional<PlaylistDocument> after = readPlaylistFile(exported);
        QVERIFY(before && after);
        QCOMPARE(after->playlists, before->playlists);
        QCOMPARE(after->items, before->items);
        QCOMPARE(again.terminate(), 0);
    }

    // A program player that cannot come up: the program window is hidden,
    // the controller keeps running and its message bar says why.
    void programPlayerThatCannotComeUp()
    {
        QTemporaryDir home;
        AppProcess app(home);
        app.setProgramOutputSize(QStringLiteral("321x180"));  // the compositor refuses odd sizes
        // The windows themselves are looked at on a private X server.
        QVERIFY2(!QStandardPaths::findExecutable("xwininfo").isEmpty(), "xwininfo (x11-utils) is missing");
        PrivateXvfb xvfb;
        QVERIFY(xvfb.start("640x480x24"));
        app.setDisplay(qEnvironmentVariable("DISPLAY"));
        QVERIFY2(app.start(), qPrintable(app.console()));
        QVERIFY(QTest::qWaitFor([] { return mapState("TARNIX Controller") == "IsViewable"; }, 10000));
        QCOMPARE(mapState("TARNIX Program"), QStringLiteral("IsUnMapped"));
        const QStringList log = app.logMessages();
        const QStringList notice = log.filter("NOTICE SYSTEM Could not create the GStreamer playbin. ");
        QCOMPARE(notice.size(), 1);
        QVERIFY2(notice.first().contains("Failed to start the ON AIR GPU compositor"), qPrintable(notice.first()));
        QVERIFY(!log.filter("Program window hidden:").isEmpty());
        QVERIFY(!log.filter("\"phase\":\"controller-ready\"").isEmpty());
        // The controller still answers; ON AIR refuses.
        QCOMPARE(app.ctl({"importPlaylist", showFile()}).line, QByteArray(R"({"ok":true})"));
        QCOMPARE(app.ctl({R"({"action":"SelectItem","args":[{"uint64":"1"}]})"}).object().value("status"), "Invoked");
        QCOMPARE(app.ctl({"TakeSelectedOnAir"}).object().value("status"), "Rejected");
        QCOMPARE(app.terminate(), 0);
    }
};

QTEST_GUILESS_MAIN(TestAppProcess)
#include "tst_app_process.moc"
