#include "playout/deck_source_session.h"
#include "support/glib_criticals.h"
#include "support/test_paths.h"
#include "video/program_gpu_compositor.h"

#include <QtTest>

#include <atomic>

using namespace tarnix;

namespace {

constexpr int kWidth = 320;
constexpr int kHeight = 180;

GstBusSyncReply passMessages(GstBus *, GstMessage *, gpointer)
{
    return GST_BUS_PASS;
}

} // namespace

// A real deck with the compositor in its presenter role: the deck reads
// ready from the compositor's layer, and its frames reach the program.
class TestVideoDeckProgram : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        tarnix::test::failOnGlibCriticals();
        gst_init(nullptr, nullptr);
    }

    void deckFramesReachTheProgram()
    {
        ProgramCompositorOptions options;
        options.width = kWidth;
        options.height = kHeight;
        ProgramGpuCompositor compositor(options);
        std::atomic<bool> showsVideo{false};
        compositor.setFrameTap([&](const ProgramTapFrame &frame) {
            // The background is black; decoded test video is not.
            const quint8 *p = frame.pixels + std::size_t(frame.height / 2) * frame.stride + 4 * (frame.width / 2);
            if (p[0] || p[1] || p[2])
                showsVideo = true;
        });
        QVERIFY(compositor.start());

        DeckSourceSession::Options deckOptions;
        deckOptions.deckIndex = 0;
        deckOptions.busHandler = passMessages;
        deckOptions.timings.width = kWidth;
        deckOptions.timings.height = kHeight;
        QString error;
        auto deck = DeckSourceSession::create(deckOptions, &error);
        QVERIFY2(deck, qPrintable(error));
        QVERIFY(compositor.attachDeck(0, deck->playbin(), deck->appsink()));
        deck->setPresenter(&compositor);

        DeckSource request;
        request.kind = DeckSourceKind::File;
        request.source = QStringLiteral(TARNIX_TEST_MEDIA_DIR "/h264-video-only.mp4");
        QCOMPARE(deck->prepare(request), PreparationStatus::Preparing);
        QVERIFY(QTest::qWaitFor(
            [&] {
                deck->poll();
                compositor.poll();
                return deck->status() != PreparationStatus::Preparing;
            },
            10000));
        QCOMPARE(deck->status(), PreparationStatus::Ready);
        QVERIFY(compositor.hasFrame(0));
        QVERIFY(compositor.isStarted());

        QVERIFY(!showsVideo.load());
        QVERIFY(compositor.setProgramLayers(0, 1.0f, -1, 0.0f));
        QTRY_VERIFY_WITH_TIMEOUT(showsVideo.load(), 5000);

        // A replacement pipeline is attached to the same layer by the deck.
        QVERIFY(deck->replaceFilePipeline());
        QTRY_COMPARE_WITH_TIMEOUT(deck->pendingStopCount(), 0, 5000);
        deck.reset();
        QVERIFY(compositor.stop());
    }
};

QTEST_MAIN(TestVideoDeckProgram)
#include "tst_video_deck_program.moc"
