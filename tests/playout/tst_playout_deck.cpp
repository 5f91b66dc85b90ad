#include "playout/deck_source.h"
#include "playout/deck_source_session.h"
#include "support/blocking_file_source.h"
#include "support/glib_criticals.h"
#include "support/refusing_element.h"
#include "support/test_paths.h"
#include "video/deck_frame_mailboxes.h"

#include <QtTest>

#include <atomic>
#include <cmath>
#include <limits>

Q_DECLARE_METATYPE(tarnix::DeckSource)

using namespace tarnix;
using namespace std::chrono_literals;

namespace {

const QString kOffline =
    QStringLiteral("Media offline: the file is missing or did not respond in time.");

QString media(const char *name)
{
    return QStringLiteral(TARNIX_TEST_MEDIA_DIR "/") + QLatin1String(name);
}

DeckSource fileSource(const QString &path, qint64 inMs = 0, qint64 outMs = -1)
{
    DeckSource request;
    request.kind = DeckSourceKind::File;
    request.source = path;
    request.inMs = inMs;
    request.outMs = outMs;
    return request;
}

DeckTimings smallTimings()
{
    DeckTimings timings;
    timings.width = 320;
    timings.height = 180;
    return timings;
}

GstBusSyncReply countMessages(GstBus *, GstMessage *, gpointer data)
{
    static_cast<std::atomic<int> *>(data)->fetch_add(1);
    return GST_BUS_PASS;
}

// A deck at test size with its presenter, as the dual-deck player wires it.
struct TestDeck {
    explicit TestDeck(const DeckTimings &timings = smallTimings())
    {
        DeckSourceSession::Options options;
        options.deckIndex = 0;
        options.busHandler = countMessages;
        options.busUserData = &busMessages;
        options.timings = timings;
        QString error;
        deck = DeckSourceSession::create(options, &error);
        if (!deck)
            qFatal("deck creation failed: %s", qPrintable(error));
        presenter.attachDeck(0, deck->playbin(), deck->appsink());
        deck->setPresenter(&presenter);
    }

    // Stops the used pipeline so the deck can be destroyed with nothing left.
    ~TestDeck()
    {
        if (deck->replaceFilePipeline())
            (void)QTest::qWaitFor([this] { return deck->pendingStopCount() == 0; }, 5000);
    }

    // Polls as the controller's tick would until the preparation settles.
    PreparationStatus settle(int timeoutMs = 8000)
    {
        (void)QTest::qWaitFor(
            [this] {
                deck->poll();
                return deck->status() != PreparationStatus::Preparing;
            },
            timeoutMs);
        return deck->status();
    }

    std::atomic<int> busMessages{0};
    DeckFrameMailboxes presenter;
    std::unique_ptr<DeckSourceSession> deck;
};

// Ranks the never-delivering file source above filesrc for one test.
struct BlockingSourceScope {
    explicit BlockingSourceScope(bool stuck = false)
    {
        test::setBlockingFileSourceStuck(stuck);
        test::installBlockingFileSource();
    }
    ~BlockingSourceScope()
    {
        test::uninstallBlockingFileSource();
        test::setBlockingFileSourceStuck(false);
    }
};

} // namespace

class TestPlayoutDeck : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        tarnix::test::failOnGlibCriticals();
        gst_init(nullptr, nullptr);
    }

    void preparesPlayableFiles_data()
    {
        QTest::addColumn<QString>("path");
        QTest::addColumn<qint64>("inMs");
        QTest::addColumn<bool>("video");
        QTest::addColumn<bool>("audio");
        QTest::newRow("H.264 and AAC") << media("h264-aac.mp4") << qint64(0) << true << true;
        QTest::newRow("AAC only") << media("aac-audio-only.m4a") << qint64(0) << false << true;
        QTest::newRow("H.264 only") << media("h264-video-only.mp4") << qint64(0) << true << false;
        QTest::newRow("VP8 and Vorbis") << media("vp8-vorbis.webm") << qint64(0) << true << true;
        QTest::newRow("in point") << media("h264-aac-3s.mp4") << qint64(1500) << true << true;
    }

    void preparesPlayableFiles()
    {
        QFETCH(QString, path);
        QFETCH(qint64, inMs);
        QFETCH(bool, video);
        QFETCH(bool, audio);
        TestDeck t;

        QCOMPARE(t.deck->prepare(fileSource(path, inMs)), PreparationStatus::Preparing);
        QCOMPARE(t.deck->kind(), DeckSessionKind::File);
        QCOMPARE(t.settle(), PreparationStatus::Ready);
        QCOMPARE(t.deck->error(), QString());
        QCOMPARE(t.deck->hasVideo(), video);
        QCOMPARE(t.deck->hasAudio(), audio);
        QCOMPARE(t.deck->inMs(), inMs);
        QVERIFY(t.busMessages.load() > 0);

        gint64 position = -1;
        QVERIFY(gst_element_query_position(t.deck->playbin(), GST_FORMAT_TIME, &position));
        QVERIFY2(std::llabs(position / GST_MSECOND - inMs) < 251,
                 qPrintable(QString::number(position / GST_MSECOND)));

        QCOMPARE(t.presenter.hasFrame(0), video);
        if (video) {
            GstSample *sample = t.presenter.latestSample(0);
            QVERIFY(sample);
            GstStructure *caps = gst_caps_get_structure(gst_sample_get_caps(sample), 0);
            int width = 0, height = 0, parN = 0, parD = 0;
            QVERIFY(gst_structure_get_int(caps, "width", &width));
            QVERIFY(gst_structure_get_int(caps, "height", &height));
            QVERIFY(gst_structure_get_fraction(caps, "pixel-aspect-ratio", &parN, &parD));
            QCOMPARE(QString::fromUtf8(gst_structure_get_string(caps, "format")),
                     QStringLiteral("RGBA"));
            QCOMPARE(QSize(width, height), QSize(320, 180));
            QCOMPARE(parN, parD);
            gst_sample_unref(sample);
        }
    }

    void unreadableSourcesAreOfflineAtOnce_data()
    {
        QTest::addColumn<QString>("path");
        QTest::newRow("missing file") << media("no-such-file.mp4");
        QTest::newRow("directory") << QStringLiteral(TARNIX_TEST_MEDIA_DIR);
    }

    void unreadableSourcesAreOfflineAtOnce()
    {
        QFETCH(QString, path);
        TestDeck t;
        QElapsedTimer clock;
        clock.start();
        t.deck->prepare(fileSource(path));
        QCOMPARE(t.settle(), PreparationStatus::Failed);
        QVERIFY2(clock.elapsed() < 2000, qPrintable(QString::number(clock.elapsed())));
        QCOMPARE(t.deck->error(), kOffline);
        QVERIFY(t.deck->mediaOffline());
    }

    // Whole milliseconds of the queried duration: an out point may end at it,
    // an in point may not start there.
    void inAndOutPointsAgainstDuration()
    {
        TestDeck t;
        t.deck->prepare(fileSource(media("h264-aac.mp4")));
        QCOMPARE(t.settle(), PreparationStatus::Ready);
        gint64 duration = 0;
        QVERIFY(gst_element_query_duration(t.deck->playbin(), GST_FORMAT_TIME, &duration));
        const qint64 durationMs = duration / GST_MSECOND;

        const QString exceeds = QStringLiteral("The In or Out point exceeds the media duration.");
        t.deck->prepare(fileSource(media("h264-aac.mp4"), durationMs));
        QCOMPARE(t.settle(), PreparationStatus::Failed);
        QCOMPARE(t.deck->error(), exceeds);
        QVERIFY(!t.deck->mediaOffline());

        t.deck->prepare(fileSource(media("h264-aac.mp4"), 0, durationMs + 1));
        QCOMPARE(t.settle(), PreparationStatus::Failed);
        QCOMPARE(t.deck->error(), exceeds);

        t.deck->prepare(fileSource(media("h264-aac.mp4"), 500, durationMs));
        QCOMPARE(t.settle(), PreparationStatus::Ready);
        QCOMPARE(t.deck->outMs(), durationMs);
    }

    void invalidRequestsFailAtOnce_data()
    {
        QTest::addColumn<DeckSource>("request");
        const QString file = media("h264-aac.mp4");
        DeckSource nanRate = fileSource(file);
        nanRate.rate = std::numeric_limits<double>::quiet_NaN();
        DeckSource zeroRate = fileSource(file);
        zeroRate.rate = 0.0;
        QTest::newRow("no source") << fileSource(QString());
        QTest::newRow("negative in") << fileSource(file, -1);
        QTest::newRow("out at in") << fileSource(file, 1000, 1000);
        QTest::newRow("out before in") << fileSource(file, 1000, 500);
        QTest::newRow("rate 0") << zeroRate;
        QTest::newRow("rate NaN") << nanRate;
    }

    void invalidRequestsFailAtOnce()
    {
        QFETCH(DeckSource, request);
        TestDeck t;
        QString error = QStringLiteral("stale");
        QCOMPARE(t.deck->prepare(request, &error), PreparationStatus::Failed);
        QCOMPARE(error, QString());
        QCOMPARE(t.deck->kind(), DeckSessionKind::None);
    }

    // Every item source type has exactly one deck request kind and back, and
    // every request kind exactly one session kind: a value added to any of the
    // three enums without its mapping fails here.
    void sourceKindsMapByName()
    {
        const QMetaEnum types = QMetaEnum::fromType<PlaylistSourceType>();
        const QMetaEnum kinds = QMetaEnum::fromType<DeckSourceKind>();
        const QMetaEnum sessions = QMetaEnum::fromType<DeckSessionKind>();
        QCOMPARE(kinds.keyCount(), types.keyCount());
        QCOMPARE(sessions.keyCount(), kinds.keyCount() + 1);

        for (int i = 0; i < types.keyCount(); ++i) {
            const auto type = PlaylistSourceType(types.value(i));
            const std::optional<DeckSourceKind> kind = deckSourceKindFor(type);
            QVERIFY2(kind.has_value(), types.key(i));
            QCOMPARE(playlistSourceTypeFor(*kind), std::optional(type));
        }
        QSet<int> sessionsSeen;
        for (int i = 0; i < kinds.keyCount(); ++i) {
            const auto kind = DeckSourceKind(kinds.value(i));
            QVERIFY2(playlistSourceTypeFor(kind).has_value(), kinds.key(i));
            const DeckSessionKind session = sessionKindFor(kind);
            QVERIFY2(session != DeckSessionKind::None, kinds.key(i));
            QVERIFY2(!sessionsSeen.contains(int(session)), kinds.key(i));
            sessionsSeen.insert(int(session));
            // The names agree, so nobody needs to remember an offset.
            QCOMPARE(QByteArray(sessions.valueToKey(int(session))), QByteArray(kinds.key(i)));
        }
    }

    void sourcesWithoutManagerFail_data()
    {
        QTest::addColumn<int>("kind");
        QTest::addColumn<QString>("text");
        QTest::newRow("UVC") << int(DeckSourceKind::Uvc)
                             << QStringLiteral("The shared UVC session is unavailable.");
        QTest::newRow("PowerPoint") << int(DeckSourceKind::PowerPoint)
                                    << QStringLiteral("The PowerPoint source manager is unavailable.");
        QTest::newRow("PDF") << int(DeckSourceKind::Pdf)
                             << QStringLiteral("The PDF source manager is unavailable.");
    }

    void sourcesWithoutManagerFail()
    {
        QFETCH(int, kind);
        QFETCH(QString, text);
        TestDeck t;
        DeckSource request;
        request.kind = static_cast<DeckSourceKind>(kind);
        request.source = QStringLiteral("device-or-document");
        QString error;
        QCOMPARE(t.deck->prepare(request, &error), PreparationStatus::Failed);
        QCOMPARE(error, text);
        QCOMPARE(t.deck->error(), text);
        QCOMPARE(t.deck->kind(), DeckSessionKind::None);
    }

    // A file whose reads never return: every poll stays short, the event loop
    // keeps running, and the deadline turns the standby offline.
    void stalledSourceEndsOfflineAtDeadline()
    {
        BlockingSourceScope blocking;
        DeckTimings timings = smallTimings();
        timings.preparationDeadline = 1500ms;
        TestDeck t(timings);

        QElapsedTimer clock;
        clock.start();
        t.deck->prepare(fileSource(media("h264-aac.mp4")));
        qint64 longestPollNs = 0;
        int ticks = 0;
        int mostWaiters = 0;
        QTimer tick;
        tick.setInterval(10);
        connect(&tick, &QTimer::timeout, this, [&] {
            ++ticks;
            mostWaiters = std::max(mostWaiters, test::blockingFileSourceWaiters());
            QElapsedTimer pollClock;
            pollClock.start();
            t.deck->poll();
            longestPollNs = std::max(longestPollNs, pollClock.nsecsElapsed());
        });
        tick.start();
        QTRY_VERIFY_WITH_TIMEOUT(t.deck->status() != PreparationStatus::Preparing, 6000);
        tick.stop();

        QCOMPARE(t.deck->status(), PreparationStatus::Failed);
        QCOMPARE(t.deck->error(), kOffline);
        QVERIFY(t.deck->mediaOffline());
        QVERIFY2(clock.elapsed() >= 1450, qPrintable(QString::number(clock.elapsed())));
        QVERIFY(mostWaiters >= 1);
        QVERIFY2(ticks >= 50, qPrintable(QString::number(ticks)));
        QVERIFY2(longestPollNs < 20'000'000, qPrintable(QString::number(longestPollNs)));
    }

    // Old pipelines whose stop hangs stay referenced; four of them in limbo
    // refuse the next replacement and the current pipeline stays. Once the
    // stops get through, each is confirmed and freed.
    void hangingStopsLimitReplacement()
    {
        BlockingSourceScope blocking(true);
        TestDeck t;
        const QString file = media("h264-aac.mp4");

        std::shared_ptr<std::atomic<bool>> firstFinalized;
        for (int cycle = 0; cycle < 4; ++cycle) {
            t.deck->prepare(fileSource(file));
            t.deck->poll(); // hands the request to a worker
            QVERIFY(t.deck->busOwnedByPreparation());
            QTRY_COMPARE_WITH_TIMEOUT(test::blockingFileSourceWaiters(), cycle + 1, 5000);
            if (cycle == 0)
                firstFinalized = test::watchFinalization(t.deck->playbin());
            QVERIFY(t.deck->replaceFilePipeline());
        }
        QCOMPARE(t.deck->pendingStopCount(), 4);

        t.deck->prepare(fileSource(file));
        t.deck->poll();
        GstElement *current = t.deck->playbin();
        QString error;
        QVERIFY(!t.deck->replaceFilePipeline(&error));
        QCOMPARE(error, QStringLiteral("Could not safely replace the standby player. "
                                       "Current ON AIR output continues."));
        QCOMPARE(t.deck->playbin(), current);
        QCOMPARE(t.deck->prepare(fileSource(file), &error), PreparationStatus::Failed);
        QCOMPARE(error,
                 QStringLiteral("Could not stop the previous input on the standby player."));
        QVERIFY(!firstFinalized->load());

        test::setBlockingFileSourceStuck(false);
        QTRY_COMPARE_WITH_TIMEOUT(t.deck->pendingStopCount(), 0, 10000);
        QTRY_VERIFY_WITH_TIMEOUT(firstFinalized->load(), 5000);
        QVERIFY(t.deck->replaceFilePipeline());
    }

    // OFF AIR of a playing deck: a fresh pipeline at once, the old one stops
    // on its thread (its audio sender aborted first) and is freed.
    void offAirReplacesAndFreesThePlayingPipeline()
    {
        TestDeck t;
        t.deck->prepare(fileSource(media("h264-aac-3s.mp4")));
        QCOMPARE(t.settle(), PreparationStatus::Ready);
        GstElement *old = t.deck->playbin();
        auto finalized = test::watchFinalization(old);
        gst_element_set_state(old, GST_STATE_PLAYING);
        QTRY_VERIFY_WITH_TIMEOUT(t.presenter.framesReceived(0) >= 5, 5000);

        const DeckSourceSession::OffAirReport report = t.deck->offAirSession();
        QVERIFY(report.released);
        QVERIFY(t.deck->playbin() != old);
        QCOMPARE(t.deck->status(), PreparationStatus::Idle);
        QCOMPARE(t.deck->kind(), DeckSessionKind::None);
        QCOMPARE(t.deck->outMs(), qint64(-1));
        QTRY_VERIFY_WITH_TIMEOUT(finalized->load(), 5000);
        QCOMPARE(t.deck->pendingStopCount(), 0);

        // The fresh pipeline is ready for the next item.
        t.deck->prepare(fileSource(media("h264-aac.mp4")));
        QCOMPARE(t.settle(), PreparationStatus::Ready);
    }

    // A request no worker has taken yet is simply forgotten.
    void replacingAnUntouchedRequestKeepsThePipeline()
    {
        TestDeck t;
        t.deck->prepare(fileSource(media("h264-aac.mp4")));
        GstElement *playbin = t.deck->playbin();
        QVERIFY(t.deck->replaceFilePipeline());
        QCOMPARE(t.deck->playbin(), playbin);
        QCOMPARE(t.deck->kind(), DeckSessionKind::None);
        QCOMPARE(t.deck->status(), PreparationStatus::Idle);
        QCOMPARE(t.deck->pendingStopCount(), 0);
    }
};


QTEST_GUILESS_MAIN(TestPlayoutDeck)
#include "tst_playout_deck.moc"
