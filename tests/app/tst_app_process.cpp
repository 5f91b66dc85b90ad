// The application from the outside: started as the README starts it (no
// display: offscreen), given a home and a control socket of its own, driven
// only through tarnixctl, and judged by its answers, its log and its files.

#include "app_process.h"
#include "x_windows.h"

#include "playlist/playlist_document.h"
#include "kit/clip_generator.h"
#include "support/private_pulse_audio.h"
#include "support/test_paths.h"
#include "video/private_xvfb.h"

#include <QFile>
#include <QImage>
#include <QJsonArray>
#include <QJsonValue>
#include <QtTest>

#include <gst/gst.h>

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
    // An empty show name takes from the playlists already there.
    static bool takeFirstClip(AppProcess &app, const QString &show)
    {
        if (!show.isEmpty() && app.ctl({"importPlaylist", show}).line != R"({"ok":true})")
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
        gst_init(nullptr, nullptr);  // for the files made here
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
        // the selected item is in EDIT too (it loads on selection), PFL has
        // no owner yet.
        const QByteArray stateLine = app.ctl({"state"}).line;
        QVERIFY2(QRegularExpression(R"(^\{"selectedItemId":1,"onAirItemId":1,"cueItemId":[^,]+,"dskItemId":null,)"
                                    R"("bgmItemId":null,"currentDeck":[01],"positionMs":\d+,"remainingMs":\d+,)"
                                    R"("programPlaying":true,"ftbActive":false,"playbackRate":1(\.0)?,)"
                                    R"("editItemId":(null|1),"editPositionMs":(null|\d+),"pflOn":false\}$)")
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

    // What the playlist panel asks for, asked over the socket, makes the
    // same document changes: the panel has no way of its own.
    void playlistOperationsOverTheSocket()
    {
        QTemporaryDir home;
        const std::unique_ptr<AppProcess> owned = application(home);
        AppProcess &app = *owned;
        QVERIFY2(app.start(), qPrintable(app.console()));
        QCOMPARE(app.ctl({"importPlaylist", showFile()}).line, QByteArray(R"({"ok":true})"));
        auto status = [&app](const QString &request) {
            return app.ctl({request}).object().value("status").toString();
        };
        const QStringList invoked{
            R"({"action":"SetItemColor","args":[{"uint64":"1"},{"enum":"PlaylistItemColor","value":"red"}]})",
            R"({"action":"SetItemFadeOutEnabled","args":[{"uint64":"2"},{"bool":true}]})",
            R"({"action":"SetItemSeparatorBelow","args":[{"uint64":"2"},{"bool":true}]})",
            R"({"action":"SetItemDisplayName","args":[{"uint64":"2"},{"string":"Closing"}]})",
            R"({"action":"RenamePlaylist","args":[{"int":1},{"string":"Morning"}]})",
            R"({"action":"CopyItemState","args":[{"uint64":"1"}]})",
            R"({"action":"PasteItemState","args":[{"uint64":"2"}]})",
            R"({"action":"CreatePlaylist"})",
            R"({"action":"TransferItem","args":[{"uint64":"2"},{"int":2},{"int":1},{"bool":true}]})",
            R"({"action":"SelectItemNumber","args":[{"int":1}]})",
            R"({"action":"SelectRelativeItem","args":[{"int":1}]})",
        };
        for (const QString &request : invoked)
            QVERIFY2(status(request) == "Invoked", qPrintable(request));
        QCOMPARE(field(app.state(), "selectedItemId"), 2);
        QCOMPARE(status(R"({"action":"SetItemEndMode","args":[{"uint64":"1"},{"enum":"PlaylistEndMode","value":"goto"}]})"),
                 QStringLiteral("Rejected"));
        QCOMPARE(status(R"({"action":"RemoveSelectedItem"})"), QStringLiteral("Invoked"));
        QCOMPARE(field(app.state(), "selectedItemId"), -1);

        const QString exported = home.filePath("exported.json");
        QCOMPARE(app.ctl({"exportPlaylist", exported}).line, QByteArray(R"({"ok":true})"));
        QString error;
        const std::optional<PlaylistDocument> document = readPlaylistFile(exported, &error);
        QVERIFY2(document, qPrintable(error));
        QCOMPARE(document->playlists.size(), 2);
        QCOMPARE(document->playlists.at(0).name, QStringLiteral("Morning"));
        QCOMPARE(document->items.size(), 2);
        const PlaylistItem &kept = document->items.at(0);
        QCOMPARE(kept.id, quint64(1));
        QCOMPARE(kept.color, PlaylistItemColor::red);
        QCOMPARE(kept.settings.endMode, PlaylistEndMode::next);
        const PlaylistItem &copy = document->items.at(1);
        QCOMPARE(copy.playlistNumber, 2);
        QVERIFY(copy.id > 2);
        QCOMPARE(copy.displayName, QStringLiteral("Closing"));
        QVERIFY(copy.separatorBelow);
        // The paste gave it the first item's modes and switches.
        QVERIFY(!copy.settings.fadeOut.enabled);
        QCOMPARE(copy.settings.endMode, PlaylistEndMode::next);
        const QStringList log = app.logMessages();
        QVERIFY(!log.filter(QRegularExpression("^OP request id=\\d+ action=TransferItem .* source=Remote ")).isEmpty());
        QCOMPARE(app.terminate(), 0);
    }

    // EDIT from outside: load the selected item, seek, set its points and end
    // mode; the document and an export show them, and taken ON AIR the item
    // plays from its In point and stops at its Out point.
    void editOperationsOverTheSocket()
    {
        QTemporaryDir home;
        const std::unique_ptr<AppProcess> owned = application(home);
        AppProcess &app = *owned;
        QVERIFY2(app.start(), qPrintable(app.console()));
        QCOMPARE(app.ctl({"importPlaylist", showFile()}).line, QByteArray(R"({"ok":true})"));
        auto status = [&app](const QString &request) {
            return app.ctl({request}).object().value("status").toString();
        };
        QCOMPARE(status(R"({"action":"SelectItem","args":[{"uint64":"1"}]})"), QStringLiteral("Invoked"));
        QCOMPARE(status(R"({"action":"EditLoadSelected"})"), QStringLiteral("Invoked"));
        QVERIFY(QTest::qWaitFor([&] { return field(app.state(), "editItemId") == 1; }, 10000));
        QCOMPARE(status(R"({"action":"EditSeek","args":[{"int64":"1200"}]})"), QStringLiteral("Invoked"));
        QVERIFY(QTest::qWaitFor([&] { return qAbs(field(app.state(), "editPositionMs") - 1200) <= 40; }, 5000));
        QCOMPARE(status(R"({"action":"EditInTime","args":[{"int64":"500"}]})"), QStringLiteral("Invoked"));
        QCOMPARE(status(R"({"action":"EditOutTime","args":[{"int64":"1500"}]})"), QStringLiteral("Invoked"));
        QCOMPARE(status(R"({"action":"EditOutTime","args":[{"int64":"400"}]})"), QStringLiteral("Rejected"));
        QCOMPARE(status(R"({"action":"EditEndMode","args":[{"enum":"PlaylistEndMode","value":"stop"}]})"),
                 QStringLiteral("Invoked"));

        const QJsonObject playlists = app.ctl({R"({"query":"playlists"})"}).object();
        const QJsonObject first =
            playlists.value("playlists").toArray().at(0).toObject().value("items").toArray().at(0).toObject();
        QCOMPARE(first.value("inPointMs").toInteger(), 500);
        QCOMPARE(first.value("outPointMs").toInteger(), 1500);
        QCOMPARE(first.value("endMode").toString(), QStringLiteral("stop"));
        const QString exported = home.filePath("edited.json");
        QCOMPARE(app.ctl({"exportPlaylist", exported}).line, QByteArray(R"({"ok":true})"));
        QString error;
        const std::optional<PlaylistDocument> document = readPlaylistFile(exported, &error);
        QVERIFY2(document, qPrintable(error));
        QCOMPARE(document->items.at(0).settings.inPointMs, qint64(500));
        QCOMPARE(document->items.at(0).settings.outPointMs, std::optional<qint64>(1500));

        // ON AIR: from the In point, OFF AIR at the Out point (end mode stop).
        QCOMPARE(status(R"({"action":"TakeSelectedOnAir"})"), QStringLiteral("Invoked"));
        qint64 first_position = -1;
        QVERIFY(QTest::qWaitFor([&] { return (first_position = field(app.state(), "positionMs")) >= 0; }, 10000));
        QVERIFY2(first_position >= 480 && first_position < 1500, qPrintable(QString::number(first_position)));
        QVERIFY(QTest::qWaitFor([&] { return field(app.state(), "onAirItemId") == -1; }, 10000));
        QCOMPARE(app.terminate(), 0);
    }

    // Files that cannot become items, in one batch with good ones: one
    // notice with a line for each, and the show already in the playlist
    // stays as it was.
    void badFilesAreToldOnceAndLeaveTheShowAlone()
    {
        QTemporaryDir home;
        const std::unique_ptr<AppProcess> owned = application(home);
        AppProcess &app = *owned;
        QVERIFY2(app.start(), qPrintable(app.console()));
        QCOMPARE(app.ctl({"importPlaylist", showFile()}).line, QByteArray(R"({"ok":true})"));
        const QJsonArray show = app.ctl({"playlists"}).object().value("playlists").toArray();

        QString error;
        const QString tiny = home.filePath("tiny.wav");  // 0.5 ms of sound
        QVERIFY2(testkit::generateClip(tiny, QStringLiteral("audiotestsrc num-buffers=1 samplesperbuffer=24 ! "
                                                            "audio/x-raw,rate=48000,channels=2 ! wavenc"),
                                       &error),
                 qPrintable(error));
        const QString disguised = home.filePath("video.png");  // a WebM under a still's name
        QVERIFY2(testkit::generateClip(disguised, QStringLiteral("videotestsrc num-buffers=10 ! vp8enc ! webmmux"),
                                       &error),
                 qPrintable(error));
        const QString noise = home.filePath("noise.mp4");
        QFile bytes(noise);
        QVERIFY(bytes.open(QIODevice::WriteOnly));
        for (int i = 0; i < 65536; ++i)
            bytes.putChar(char((i * 7919) % 251));
        bytes.close();
        const QString doomed = home.filePath("deleted.wav");
        QVERIFY(QFile::copy(media("tone-1s.wav"), doomed));

        // The deleted file waits behind five analyses, so it is gone before
        // its turn.
        const QStringList batch{media("h264-aac-3s.mp4"), tiny, disguised, noise, media("tone-1s.wav"), doomed};
        const QString add = QStringLiteral(R"({"action":"AddFiles","args":[{"strings":["%1"]}]})")
                                .arg(batch.join(QStringLiteral("\",\"")));
        QCOMPARE(app.ctl({add}).object().value("status").toString(), QStringLiteral("Invoked"));
        QVERIFY(QFile::remove(doomed));

        QJsonArray playlists;
        QVERIFY(QTest::qWaitFor(
            [&] {
                playlists = app.ctl({"playlists"}).object().value("playlists").toArray();
                const QJsonArray items = playlists.at(0).toObject().value("items").toArray();
                return std::all_of(items.begin(), items.end(),
                                   [](const QJsonValue &item) { return item.toObject().value("status") == "ready"; })
                       && app.logContains("Some files could not be added.");
            },
            30000));
        const QJsonArray items = playlists.at(0).toObject().value("items").toArray();
        const QJsonArray before = show.at(0).toObject().value("items").toArray();
        QCOMPARE(items.size(), before.size() + 2);
        for (int i = 0; i < before.size(); ++i)
            QCOMPARE(items.at(i), before.at(i));
        QCOMPARE(items.at(before.size()).toObject().value("filePath").toString(), batch.at(0));
        QCOMPARE(items.at(before.size() + 1).toObject().value("filePath").toString(), batch.at(4));

        const QStringList notices = app.logMessages().filter("NOTICE PLAYLIST Some files");
        QVERIFY2(notices.size() == 1, qPrintable(notices.join("\n----\n")));
        const QStringList lines = notices.first().split('\n');
        QCOMPARE(lines.size(), 4);
        QCOMPARE(lines.at(0), QStringLiteral("NOTICE PLAYLIST Some files could not be added. "
                                             "tiny.wav: Could not determine the media duration."));
        QCOMPARE(lines.at(1), QStringLiteral("video.png: The selected PNG/JPEG file is not a playable still image."));
        QVERIFY2(lines.at(2).startsWith("noise.mp4: ") && lines.at(2).size() > 12, qPrintable(lines.at(2)));
        QCOMPARE(lines.at(3), QStringLiteral("deleted.wav: The media file does not exist."));
        QCOMPARE(app.terminate(), 0);
    }

    // A stop while files are analysed: the previous session keeps what was
    // ready, and no placeholder.
    void stopDuringAnalysisLeavesNoPlaceholder()
    {
        QTemporaryDir home;
        {
            const std::unique_ptr<AppProcess> owned = application(home);
            AppProcess &app = *owned;
            QVERIFY2(app.start(), qPrintable(app.console()));
            QStringList batch;
            for (int i = 0; i < 40; ++i)
                batch << media(i % 2 ? "h264-aac-3s.mp4" : "tone-1s.wav");
            const QString add = QStringLiteral(R"({"action":"AddFiles","args":[{"strings":["%1"]}]})")
                                    .arg(batch.join(QStringLiteral("\",\"")));
            QCOMPARE(app.ctl({add}).object().value("status").toString(), QStringLiteral("Invoked"));
            QVERIFY(QTest::qWaitFor(
                [&] {
                    const QJsonArray items =
                        app.ctl({"playlists"}).object().value("playlists").toArray().at(0).toObject().value("items").toArray();
                    return items.size() == 40 && items.at(0).toObject().value("status") == "ready";
                },
                20000));
            QCOMPARE(app.terminate(), 0);
        }
        const std::optional<PlaylistDocument> session =
            readPlaylistFile(home.filePath("data/TARNIX3-Dev/previous-session.json"));
        QVERIFY(session);
        QVERIFY(!session->items.isEmpty() && session->items.size() < 40);
        for (const PlaylistItem &item : session->items) {
            QVERIFY(item.mediaType == PlaylistMediaType::video || item.mediaType == PlaylistMediaType::audio);
            QVERIFY(item.settings.outPointMs.has_value());
        }
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

    // BGM beside ON AIR, from the outside: a two-item BGM playlist plays
    // while a clip is taken and goes OFF AIR, the state query tells both
    // items, and the previous session brings the BGM playlist back as one.
    void bgmBesideOnAirOverTheSocket()
    {
        PlaylistDocument show = twoClips();
        Playlist music;
        music.number = 2;
        music.name = QStringLiteral("Music");
        music.mode = PlaylistMode::bgm;
        show.playlists << music;
        for (int i = 0; i < 2; ++i) {
            const QString path = m_files.filePath(QStringLiteral("song-%1.wav").arg(i + 1));
            QString error;
            QVERIFY2(testkit::generateClip(path, testkit::toneWavBody({470, 0.3}), &error), qPrintable(error));
            PlaylistItem song;
            song.id = quint64(3 + i);
            song.position = quint32(i + 1);
            song.playlistNumber = 2;
            song.filePath = path;
            song.displayName = QStringLiteral("song %1").arg(i + 1);
            song.mediaType = PlaylistMediaType::audio;
            song.settings.endMode = PlaylistEndMode::next;
            show.items << song;
        }
        // A key for the DSK: a transparent frame with an opaque strap.
        const QString keyPath = m_files.filePath("strap.png");
        QImage key(640, 360, QImage::Format_ARGB32);
        key.fill(Qt::transparent);
        for (int y = 280; y < 330; ++y)
            for (int x = 40; x < 600; ++x)
                key.setPixelColor(x, y, QColor(20, 90, 200));
        QVERIFY(key.save(keyPath));
        PlaylistItem strap;
        strap.id = 5;
        strap.position = 3;
        strap.playlistNumber = 1;
        strap.filePath = keyPath;
        strap.displayName = QStringLiteral("strap");
        strap.mediaType = PlaylistMediaType::stillImage;
        show.items << strap;
        show.nextItemId = 6;
        const QString file = m_files.filePath("show-with-bgm.json");
        QVERIFY(writePlaylistFile(file, show));

        QTemporaryDir home;
        {
            const std::unique_ptr<AppProcess> owned = application(home);
            AppProcess &app = *owned;
            QVERIFY2(app.start(), qPrintable(app.console()));
            QCOMPARE(app.ctl({"importPlaylist", file}).line, QByteArray(R"({"ok":true})"));
            QCOMPARE(app.ctl({R"({"action":"SelectItem","args":[{"uint64":"3"}]})"}).object().value("status"),
                     QJsonValue("Invoked"));
            // Play is refused while the program audio output comes up; the
            // operator would press again.
            QVERIFY(QTest::qWaitFor(
                [&] {
                    if (field(app.state(), "bgmItemId") == 3)
                        return true;
                    (void)app.ctl({"BgmPlay"});
                    return QTest::qWaitFor([&] { return field(app.state(), "bgmItemId") == 3; }, 1000);
                },
                20000));
            QVERIFY(takeFirstClip(app, QString()));
            QVERIFY(QRegularExpression(R"("onAirItemId":1,.*"bgmItemId":3,)").match(QString::fromUtf8(app.ctl({"state"}).line)).hasMatch());

            // The key over the program, beside the BGM; ON AIR refuses it.
            QCOMPARE(app.ctl({R"({"action":"SelectItem","args":[{"uint64":"5"}]})"}).exitCode, 0);
            QCOMPARE(app.ctl({"ToggleDsk"}).exitCode, 0);
            QVERIFY(QTest::qWaitFor([&] { return field(app.state(), "dskItemId") == 5; }, 10000));
            QVERIFY(QRegularExpression(R"("onAirItemId":1,.*"dskItemId":5,.*"bgmItemId":3)")
                        .match(QString::fromUtf8(app.ctl({"state"}).line))
                        .hasMatch());
            (void)app.ctl({"TakeSelectedOnAir"});
            QVERIFY(QTest::qWaitFor([&] { return app.logContains("An item in DSK cannot be taken ON AIR."); }, 5000));
            QCOMPARE(field(app.state(), "onAirItemId"), 1);
            QCOMPARE(app.ctl({"ToggleDsk"}).exitCode, 0);
            QVERIFY(QTest::qWaitFor([&] { return app.state().value("dskItemId").isNull(); }, 5000));

            QCOMPARE(app.ctl({"OffAir"}).exitCode, 0);
            QVERIFY(QTest::qWaitFor([&] { return app.state().value("onAirItemId").isNull(); }, 10000));
            QCOMPARE(field(app.state(), "bgmItemId"), 3);
            QCOMPARE(app.ctl({"BgmStop"}).exitCode, 0);
            QVERIFY(QTest::qWaitFor([&] { return app.state().value("bgmItemId").isNull(); }, 5000));
            const QStringList log = app.logMessages();
            QVERIFY(!log.filter(QRegularExpression("^OP request id=\\d+ action=BgmPlay .* source=Remote ")).isEmpty());
            QCOMPARE(app.terminate(), 0);
        }
        AppProcess again(home);
        QVERIFY2(again.start(), qPrintable(again.console()));
        QCOMPARE(again.ctl({"restorePreviousSession"}).line, QByteArray(R"({"ok":true})"));
        const QString exported = home.filePath("after-restore.json");
        QCOMPARE(again.ctl({"exportPlaylist", exported}).line, QByteArray(R"({"ok":true})"));
        const std::optional<PlaylistDocument> after = readPlaylistFile(exported);
        QVERIFY(after);
        QCOMPARE(after->playlists.size(), 2);
        QCOMPARE(after->playlists.at(1).mode, PlaylistMode::bgm);
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
