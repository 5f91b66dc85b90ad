#include "layer_source.h"

#include "kit/frame_tap.h"
#include "kit/log_capture.h"
#include "shell/health_monitor.h"
#include "support/glib_criticals.h"
#include "video/program_gpu_compositor.h"
#include "video/program_layer_slot.h"
#include "video/program_monitor_widget.h"

#include <gst/check/gsttestclock.h>

#include <QWindow>
#include <QtTest>

#include <atomic>
#include <mutex>
#include <thread>
#include <vector>

using namespace tarnix;
using namespace std::chrono_literals;

namespace {

constexpr int kWidth = 64;
constexpr int kHeight = 36;

// What the frame tap saw of each composed frame: its number and its colour
// when the whole frame is of one colour (invalid otherwise).
struct TappedFrame {
    quint64 sequence = 0;
    GstClockTime pts = GST_CLOCK_TIME_NONE;
    QColor colour;
};

// The kit's frame tap, read as whole-frame colours.
class FrameLog
{
public:
    ProgramGpuCompositor::FrameTap tap() { return testkit::FrameTap::callback(m_tap); }
    std::vector<TappedFrame> frames() const
    {
        std::vector<TappedFrame> out;
        for (const testkit::TapPixel &pixel : m_tap->all())
            out.push_back(seen(pixel));
        return out;
    }
    QColor lastColour() const { return seen(m_tap->last()).colour; }

private:
    static TappedFrame seen(const testkit::TapPixel &pixel)
    {
        return {pixel.sequence, pixel.pts, pixel.uniform ? QColor(pixel.r, pixel.g, pixel.b) : QColor()};
    }

    std::shared_ptr<testkit::FrameTap> m_tap =
        std::make_shared<testkit::FrameTap>(testkit::FrameTap::Options{0, true});
};

ProgramCompositorOptions smallOptions()
{
    ProgramCompositorOptions options;
    options.width = kWidth;
    options.height = kHeight;
    options.timings.connectDisconnect = 200ms;
    return options;
}

bool startAndWait(ProgramGpuCompositor &compositor)
{
    if (!compositor.start())
        return false;
    return QTest::qWaitFor(
        [&] {
            compositor.poll();
            return compositor.state() != ProgramGpuCompositor::State::Starting;
        },
        10000)
           && compositor.isStarted();
}

// Shows at most 20 frames a second, as a slow display would.
class SlowOutput final : public ProgramPresentOutput
{
public:
    QString sinkName() const override { return QStringLiteral("slow"); }
    bool open(QString *) override { return true; }
    bool present(const quint8 *, int, int, QSize, QString *) override
    {
        std::this_thread::sleep_for(50ms);
        return true;
    }
    void close() override {}
};

// An output that refuses to open, or hangs in open until released.
class BrokenOutput final : public ProgramPresentOutput
{
public:
    BrokenOutput(bool hang, std::atomic<bool> *release)
        : m_hang(hang)
        , m_release(release)
    {
    }
    QString sinkName() const override { return QStringLiteral("broken"); }
    bool open(QString *error) override
    {
        while (m_hang && !m_release->load())
            std::this_thread::yield();
        *error = QStringLiteral("Create product Fullscreen swap chain failed");
        return false;
    }
    bool present(const quint8 *, int, int, QSize, QString *) override { return true; }
    void close() override {}

private:
    bool m_hang;
    std::atomic<bool> *m_release;
};

// The colour of a sample's first RGBA pixel; takes the sample.
QColor firstPixel(GstSample *sample)
{
    if (!sample)
        return QColor();
    QColor colour;
    GstMapInfo map;
    if (gst_buffer_map(gst_sample_get_buffer(sample), &map, GST_MAP_READ)) {
        colour = QColor(map.data[0], map.data[1], map.data[2]);
        gst_buffer_unmap(gst_sample_get_buffer(sample), &map);
    }
    gst_sample_unref(sample);
    return colour;
}

// Pulls the appsink's samples until one of the colour.
bool pullUntil(GstElement *sink, QColor colour)
{
    for (int k = 0; k < 4; ++k) {
        if (firstPixel(gst_app_sink_try_pull_sample(GST_APP_SINK(sink), 5 * GST_SECOND)) == colour)
            return true;
    }
    return false;
}

// Releases every clock wait due at the test clock's current time, until the
// frame source and the clock sink both wait for a later time.
bool settle(GstTestClock *clock)
{
    return QTest::qWaitFor(
        [clock] {
            while (GstClockID id = gst_test_clock_process_next_clock_id(clock))
                gst_clock_id_unref(id);
            GstClockID next = nullptr;
            if (gst_test_clock_peek_id_count(clock) < 2 || !gst_test_clock_peek_next_pending_id(clock, &next))
                return false;
            const bool later = gst_clock_id_get_time(next) > gst_clock_get_time(GST_CLOCK(clock));
            gst_clock_id_unref(next);
            return later;
        },
        5000);
}

} // namespace

class TestVideoCompositor : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        tarnix::test::failOnGlibCriticals();
        gst_init(nullptr, nullptr);
    }

    // A deck on air shows its colour; the background shows without one.
    void composesTheConnectedDeck()
    {
        ProgramGpuCompositor compositor(smallOptions());
        FrameLog log;
        compositor.setFrameTap(log.tap());
        QVERIFY(!compositor.setProgramLayers(0, 1.0f, -1, 0.0f)); // not started
        compositor.setBackground(qRgb(0x10, 0x20, 0x30));
        QVERIFY(startAndWait(compositor));
        QTRY_COMPARE_WITH_TIMEOUT(log.lastColour(), QColor(0x10, 0x20, 0x30), 5000);

        LayerSource deck(kWidth, kHeight);
        QVERIFY(compositor.connectDeck(0, deck.pipeline, deck.sink));
        QVERIFY(compositor.connectDeck(0, deck.pipeline, deck.sink)); // same sink again
        QVERIFY(!compositor.setProgramLayers(2, 1.0f, -1, 0.0f));
        QVERIFY(compositor.setProgramLayers(0, 1.0f, -1, 0.0f));
        deck.push(Qt::red);
        QTRY_VERIFY_WITH_TIMEOUT(compositor.hasFrame(0), 5000);
        QTRY_COMPARE_WITH_TIMEOUT(log.lastColour(), QColor(Qt::red), 5000);
        QTRY_VERIFY_WITH_TIMEOUT(compositor.presentCount() > 2, 5000);

        // The appsink moves to deck B: deck A lets go of it.
        QVERIFY(compositor.connectDeck(1, deck.pipeline, deck.sink));
        const quint64 takenByA = compositor.slotFramesReceived(ProgramGpuCompositor::kDeckSlotA);
        deck.push(Qt::green);
        QTRY_VERIFY_WITH_TIMEOUT(compositor.slotFramesReceived(ProgramGpuCompositor::kDeckSlotB) > 0, 5000);
        QCOMPARE(compositor.slotFramesReceived(ProgramGpuCompositor::kDeckSlotA), takenByA);

        QString message;
        QVERIFY(!compositor.poll(&message));
        QVERIFY(compositor.stop());
        QVERIFY(compositor.stop()); // once
    }

    // The monitor branch delivers images of the widget's size, following a
    // resize, ready to paint unscaled.
    void monitorFollowsItsWidget()
    {
        ProgramMonitorWidget monitor;
        monitor.resize(32, 18);
        monitor.show();
        ProgramCompositorOptions options = smallOptions();
        options.monitor = &monitor;
        ProgramGpuCompositor compositor(options);
        QVERIFY(startAndWait(compositor));
        LayerSource deck(kWidth, kHeight);
        QVERIFY(compositor.connectDeck(0, deck.pipeline, deck.sink));
        QVERIFY(compositor.setProgramLayers(0, 1.0f, -1, 0.0f));
        deck.push(QColor(0x80, 0x40, 0x20));
        QTRY_COMPARE_WITH_TIMEOUT(monitor.frame().pixelColor(5, 5), QColor(0x80, 0x40, 0x20), 5000);
        QCOMPARE(monitor.frame().size(), QSize(32, 18));
        monitor.resize(48, 24);
        QTRY_COMPARE_WITH_TIMEOUT(monitor.frame().size(), QSize(48, 24), 5000);
        QCOMPARE(monitor.objectName(), QStringLiteral("monitor-gpu-output"));
    }

    // The timing lines keep their keys and order: support tools read them.
    // A window that is not exposed counts its presents as occluded, and the
    // picture goes on.
    void logLines()
    {
        testkit::LogCapture lines;
        std::atomic<qint64> nowMs{0};
        QWindow hidden; // never shown: not exposed
        hidden.resize(kWidth, kHeight);
        ProgramCompositorOptions options = smallOptions();
        options.programWindow = &hidden;
        options.monotonicMs = [&] { return nowMs.load(); };
        options.timings.presentTiming = std::chrono::milliseconds(50);
        ProgramGpuCompositor compositor(options);
        QVERIFY(startAndWait(compositor));
        nowMs = 5000;
        compositor.poll();
        const QString number = QStringLiteral("[0-9]+(\\.[0-9]+)?");
        QVERIFY(!lines.find(QStringLiteral("^Program GPU compositor started: 64x36/60, display refresh=[0-9]+/[0-9]+$")).isEmpty());
        QVERIFY(!lines.find(QStringLiteral("^PROGRAM_FPS interval=5\\.000 inputA=%1 inputB=%1 render=%1 fresh=%1 "
                                           "present=%1 baseUpdates=%1$").arg(number)).isEmpty());
        QVERIFY(!lines.find(QStringLiteral("^PROGRAM_PRESENT_CONFIG sink=null frame=64x36 window=\\S+ scaling=(true|false) "
                                           "display=.* refresh=%1 exposed=false mailbox=8$").arg(number)).isEmpty());
        QTRY_VERIFY_WITH_TIMEOUT(
            !lines.find(QStringLiteral("^PROGRAM_PRESENT_TIMING interval=%1 published=%1 loops=[0-9]+ presents=[0-9]+ "
                                       "mailboxMisses=[0-9]+ occluded=[1-9][0-9]* avgMs\\(wait/consume/present\\)=%1/%1/%1 "
                                       "maxMs=%1/%1/%1 sink=null window=\\S+ scaling=(true|false) display=.* "
                                       "refresh=%1 exposed=false$").arg(number)).isEmpty(),
            5000);
    }

    // Frame updates off keep the layer's frame; on again, frames flow.
    void frameUpdatesAndFreeze()
    {
        ProgramGpuCompositor compositor(smallOptions());
        LayerSource deck(kWidth, kHeight);
        QVERIFY(compositor.connectDeck(0, deck.pipeline, deck.sink));
        deck.push(Qt::red);
        QTRY_COMPARE_WITH_TIMEOUT(compositor.slotFramesReceived(0), quint64(1), 5000);
        QVERIFY(compositor.freeze(ProgramGpuCompositor::kDeckSlotA, 100ms));
        // The frame reached the sink and stayed there. The first frame comes
        // as preroll and again as a sample; a sample that arrived after the
        // freeze waits in the sink before it.
        deck.push(Qt::blue);
        QVERIFY(pullUntil(deck.sink, Qt::blue));
        QCOMPARE(compositor.slotFramesReceived(0), quint64(1));
        compositor.setFrameUpdates(ProgramGpuCompositor::kDeckSlotA, true);
        deck.push(Qt::green);
        QTRY_COMPARE_WITH_TIMEOUT(compositor.slotFramesReceived(0), quint64(2), 5000);
        QCOMPARE(firstPixel(compositor.latestSample(0)), QColor(Qt::green));

        // A deck's hold during preroll keeps the frame just the same.
        compositor.setLayerHold(0, true);
        deck.push(Qt::yellow);
        QVERIFY(pullUntil(deck.sink, Qt::yellow));
        QCOMPARE(compositor.slotFramesReceived(0), quint64(2));
        compositor.setLayerHold(0, false);
        deck.push(Qt::cyan);
        QTRY_COMPARE_WITH_TIMEOUT(compositor.slotFramesReceived(0), quint64(3), 5000);
        compositor.dropRetainedFrame(0);
        QVERIFY(!compositor.hasFrame(0));
    }

    // A cut between two output frames: from the frame after the cut on,
    // every frame is the new deck, and no frame is mixed or background.
    void cutIsClean()
    {
        ProgramGpuCompositor compositor(smallOptions());
        FrameLog log;
        compositor.setFrameTap(log.tap());
        compositor.setBackground(qRgb(0, 255, 0));
        QVERIFY(startAndWait(compositor));
        LayerSource a(kWidth, kHeight), b(kWidth, kHeight);
        QVERIFY(compositor.connectDeck(0, a.pipeline, a.sink));
        QVERIFY(compositor.connectDeck(1, b.pipeline, b.sink));
        a.push(Qt::red);
        b.push(Qt::blue);
        QTRY_VERIFY_WITH_TIMEOUT(compositor.hasFrame(0) && compositor.hasFrame(1), 5000);
        QVERIFY(compositor.setProgramLayers(0, 1.0f, -1, 0.0f));
        QTRY_COMPARE_WITH_TIMEOUT(log.lastColour(), QColor(Qt::red), 5000);

        QVERIFY(compositor.setProgramLayers(1, 1.0f, -1, 0.0f));
        const quint64 cutAt = compositor.renderCount();
        QTRY_VERIFY_WITH_TIMEOUT(compositor.renderCount() > cutAt + 10, 5000);
        bool sawBlue = false;
        for (const TappedFrame &frame : log.frames()) {
            if (frame.sequence <= cutAt)
                continue;
            QVERIFY2(frame.colour == QColor(Qt::red) || frame.colour == QColor(Qt::blue),
                     qPrintable(QStringLiteral("frame %1 is %2").arg(frame.sequence).arg(frame.colour.name())));
            if (frame.sequence >= cutAt + 2)
                QCOMPARE(frame.colour, QColor(Qt::blue));
            if (sawBlue)
                QCOMPARE(frame.colour, QColor(Qt::blue));
            sawBlue = frame.colour == QColor(Qt::blue);
        }
        QVERIFY(sawBlue);
    }

    // A frame whose inputs did not change repeats the last picture: it is
    // rendered and presented, but neither composed nor drawn again. Any
    // change of what the picture is made of composes the next frame.
    void repeatsWhatDidNotChange_data()
    {
        QTest::addColumn<int>("change");
        QTest::addColumn<QColor>("expected");
        QTest::newRow("new deck frame") << 0 << QColor(Qt::blue);
        QTest::newRow("layers") << 1 << QColor(Qt::green);
        QTest::newRow("group opacity") << 2 << QColor(Qt::green);
        QTest::newRow("fade to black") << 3 << QColor(Qt::green);
        QTest::newRow("background under an opaque deck") << 4 << QColor(Qt::red);
        QTest::newRow("same deck frame again") << 5 << QColor(Qt::red);
    }

    void repeatsWhatDidNotChange()
    {
        QFETCH(int, change);
        QFETCH(QColor, expected);
        GstClock *clock = gst_test_clock_new();
        const auto unrefClock = qScopeGuard([clock] { gst_object_unref(clock); });
        ProgramCompositorOptions options = smallOptions();
        options.clock = clock;
        ProgramGpuCompositor compositor(options);
        FrameLog log;
        compositor.setFrameTap(log.tap());
        compositor.setBackground(qRgb(0, 255, 0));
        QVERIFY(compositor.start());
        QVERIFY(settle(GST_TEST_CLOCK(clock)));
        LayerSource deck(kWidth, kHeight);
        QVERIFY(compositor.connectDeck(0, deck.pipeline, deck.sink));
        QVERIFY(compositor.setProgramLayers(0, 1.0f, -1, 0.0f));
        deck.push(Qt::red);
        QTRY_VERIFY_WITH_TIMEOUT(compositor.hasFrame(0), 5000);

        int tick = 0;
        auto nextFrame = [&] {
            gst_test_clock_set_time(GST_TEST_CLOCK(clock), gst_util_uint64_scale(++tick, GST_SECOND, 60));
            return settle(GST_TEST_CLOCK(clock));
        };
        auto presenterCaughtUp = [&] {
            return QTest::qWaitFor([&] { return compositor.lastPresentedSequence() == compositor.renderCount(); },
                                   5000);
        };
        QVERIFY(nextFrame());
        QCOMPARE(log.lastColour(), QColor(Qt::red));
        QVERIFY(presenterCaughtUp());
        const quint64 composed = compositor.compositionCount();
        const quint64 drawn = compositor.drawCount();
        const quint64 presented = compositor.presentCount();
        const quint64 rendered = compositor.renderCount();

        for (int k = 0; k < 5; ++k)
            QVERIFY(nextFrame());
        QVERIFY(presenterCaughtUp());
        QCOMPARE(compositor.renderCount(), rendered + 5);
        QCOMPARE(compositor.compositionCount(), composed);
        QCOMPARE(compositor.drawCount(), drawn);
        QVERIFY(compositor.presentCount() > presented);
        QCOMPARE(log.lastColour(), QColor(Qt::red));

        const quint64 received = compositor.slotFramesReceived(0);
        switch (change) {
        case 0:
            deck.push(Qt::blue);
            QTRY_VERIFY_WITH_TIMEOUT(compositor.slotFramesReceived(0) > received, 5000);
            break;
        case 1:
            QVERIFY(compositor.setProgramLayers(-1, 0.0f, -1, 0.0f));
            break;
        case 2:
            compositor.setGroupOpacity(0.0f);
            break;
        case 3:
            compositor.setFadeToBlack(1.0f);
            break;
        case 4:
            compositor.setBackground(qRgb(0, 0, 255));
            break;
        case 5:
            QVERIFY(compositor.setProgramLayers(0, 1.0f, -1, 0.0f));
            compositor.setGroupOpacity(1.0f);
            break;
        }
        QVERIFY(nextFrame());
        QCOMPARE(log.lastColour(), expected);
        QCOMPARE(compositor.compositionCount(), composed + (change == 5 ? 0 : 1));
        QVERIFY(presenterCaughtUp());
        QCOMPARE(compositor.drawCount(), drawn + (change == 5 ? 0 : 1));
    }

    // The health figures read the picture's own counters: five seconds of
    // the frame clock are 300 renders, and a render that comes late on the
    // monotonic clock is the largest gap.
    void healthFiguresFollowTheFrameClock()
    {
        GstClock *clock = gst_test_clock_new();
        const auto unrefClock = qScopeGuard([clock] { gst_object_unref(clock); });
        std::atomic<qint64> renderMs{0};
        ProgramCompositorOptions options = smallOptions();
        options.clock = clock;
        options.monotonicMs = [&] { return renderMs.load(); };
        ProgramGpuCompositor compositor(options);
        QVERIFY(compositor.start());
        QVERIFY(settle(GST_TEST_CLOCK(clock)));

        qint64 healthMs = 0;
        HealthMonitorOptions healthOptions;
        healthOptions.monotonicMs = [&] { return healthMs; };
        HealthMonitor health(healthOptions);
        health.setProgramCounters([&] {
            return std::optional(ProgramFrameCounters{compositor.renderCount(), compositor.presentCount(),
                                                      compositor.publishMisses(), compositor.largestRenderGapMs()});
        });
        health.sample();
        int frame = 0;
        for (int second = 1; second <= 5; ++second) {
            for (int k = 0; k < 60; ++k) {
                ++frame;
                renderMs += frame == 150 ? 250 : 17;
                gst_test_clock_set_time(GST_TEST_CLOCK(clock), gst_util_uint64_scale(frame, GST_SECOND, 60));
                QVERIFY(settle(GST_TEST_CLOCK(clock)));
            }
            healthMs += 1000;
            health.sample();
        }
        const HealthFigures figures = health.figures();
        QCOMPARE(figures.renders5s, std::optional<qint64>(300));
        QVERIFY(figures.presents5s && *figures.presents5s > 0 && *figures.presents5s <= 300);
        QCOMPARE(figures.largestRenderGapMs, std::optional<qint64>(250));
        QCOMPARE(figures.mailboxMisses, std::optional<qint64>(0));
    }

    // With an injected clock, each released frame time renders exactly one
    // frame; a presenter at 20 Hz neither holds the compositor back nor
    // falls behind the newest frame.
    void clockTicksAndSlowPresenter()
    {
        GstClock *clock = gst_test_clock_new();
        ProgramCompositorOptions options = smallOptions();
        options.clock = clock;
        options.outputFactory = [] { return std::make_unique<SlowOutput>(); };
        ProgramMonitorWidget monitor;
        monitor.resize(32, 18);
        monitor.show();
        options.monitor = &monitor;
        ProgramGpuCompositor compositor(options);
        FrameLog log;
        compositor.setFrameTap(log.tap());
        QVERIFY(compositor.start());

        QVERIFY(settle(GST_TEST_CLOCK(clock)));
        QCOMPARE(compositor.renderCount(), quint64(1));
        constexpr int kFrames = 30;
        for (int k = 1; k <= kFrames; ++k) {
            // A new picture every frame: a repeated one would cost the
            // presenter nothing.
            compositor.setBackground(qRgb(k, 0, 0));
            gst_test_clock_set_time(GST_TEST_CLOCK(clock), gst_util_uint64_scale(k, GST_SECOND, 60));
            QVERIFY(settle(GST_TEST_CLOCK(clock)));
            QCOMPARE(compositor.renderCount(), quint64(k + 1));
            QCOMPARE(compositor.clockTicks(), quint64(k + 1));
        }
        // Thirty frames in far less than their 50 ms presents would take.
        QVERIFY2(compositor.presentCount() < kFrames / 2,
                 qPrintable(QString::number(compositor.presentCount())));
        const std::vector<TappedFrame> frames = log.frames();
        QCOMPARE(frames.size(), std::size_t(kFrames + 1));
        for (std::size_t i = 0; i < frames.size(); ++i)
            QCOMPARE(frames[i].pts, gst_util_uint64_scale(i, GST_SECOND, 60));
        // Once the clock stands still, the frame shown is the newest.
        QTRY_COMPARE_WITH_TIMEOUT(compositor.lastPresentedSequence(), compositor.renderCount(), 5000);
        // Half a second of frames: the monitor shows no more than 30 a second.
        QTRY_VERIFY_WITH_TIMEOUT(monitor.framesShown() > 0, 5000);
        QVERIFY2(monitor.framesShown() <= kFrames / 2 + 1, qPrintable(QString::number(monitor.framesShown())));
        gst_object_unref(clock);
    }

    // A presenter that cannot open its output, or does not get ready in
    // time, fails the start with its text, told once; stop still succeeds.
    void startFailures_data()
    {
        QTest::addColumn<bool>("hang");
        QTest::addColumn<QString>("expected");
        QTest::newRow("output refused") << false << QStringLiteral("Program GPU presenter stopped after a fatal error.");
        QTest::newRow("no readiness in time") << true << QStringLiteral("Program presenter thread failed to initialize");
    }

    void startFailures()
    {
        QFETCH(bool, hang);
        QFETCH(QString, expected);
        tarnix::testkit::LogCapture warnings(tarnix::testkit::LogCapture::warnings());
        std::atomic<bool> release{false};
        std::atomic<qint64> nowMs{0};
        ProgramCompositorOptions options = smallOptions();
        options.outputFactory = [&] { return std::make_unique<BrokenOutput>(hang, &release); };
        options.monotonicMs = [&] { return nowMs.load(); };
        ProgramGpuCompositor compositor(options);
        QVERIFY(compositor.start());
        QString message;
        if (hang) {
            QVERIFY(!compositor.poll(&message)); // the limit has not passed yet
            nowMs = 8000;
        }
        QVERIFY(QTest::qWaitFor([&] { return compositor.poll(&message); }, 5000));
        QCOMPARE(message, expected);
        QCOMPARE(compositor.state(), ProgramGpuCompositor::State::Failed);
        QVERIFY(!compositor.poll(&message));
        QVERIFY(!compositor.setProgramLayers(0, 1.0f, -1, 0.0f));
        release = true;
        QVERIFY(compositor.stop());
    }

    // A callback that hangs keeps the sink: the disconnect gives up after
    // its limit, the sink stays referenced, and the slot is never reused.
    void disconnectWithCallbackInFlight()
    {
        ProgramLayerSlot slot;
        LayerSource deck(kWidth, kHeight);
        std::atomic<bool> entered{false};
        std::atomic<bool> release{false};
        slot.setSampleListener([&](GstSample *) {
            entered = true;
            while (!release.load())
                std::this_thread::yield();
        });
        const auto releaseAtExit = qScopeGuard([&] { release = true; });
        QVERIFY(slot.connect(deck.pipeline, deck.sink));
        deck.push(Qt::red);
        QTRY_VERIFY_WITH_TIMEOUT(entered.load(), 5000);
        const int refsBefore = GST_OBJECT_REFCOUNT_VALUE(deck.sink);

        QElapsedTimer timer;
        timer.start();
        QVERIFY(!slot.disconnect(true, 100ms));
        QVERIFY(timer.elapsed() >= 90);
        QVERIFY(slot.isStuck());
        QCOMPARE(int(GST_OBJECT_REFCOUNT_VALUE(deck.sink)), refsBefore);
        QCOMPARE(slot.appsink(), deck.sink);
        QVERIFY(!slot.connect(deck.pipeline, deck.sink));
        LayerSource other(kWidth, kHeight);
        QVERIFY(!slot.connect(other.pipeline, other.sink));

        release = true;
        QTRY_VERIFY_WITH_TIMEOUT(slot.hasFrame(), 5000);
        QVERIFY(!slot.disconnect(true, 100ms)); // stays unusable
    }

    // A deck sample that is not RGBA at the program size is fatal, told
    // once; a DSK that cannot be drawn (not BGRA, or a buffer shorter than
    // its caps) leaves and the program goes on.
    void failures()
    {
        tarnix::testkit::LogCapture warnings(tarnix::testkit::LogCapture::warnings());
        ProgramGpuCompositor compositor(smallOptions());
        FrameLog log;
        compositor.setFrameTap(log.tap());
        QVERIFY(startAndWait(compositor));

        LayerSource deck(kWidth, kHeight);
        QVERIFY(compositor.connectDeck(0, deck.pipeline, deck.sink));
        deck.push(Qt::red);
        QVERIFY(compositor.setProgramLayers(0, 1.0f, -1, 0.0f));
        LayerSource gray(kWidth, kHeight, "GRAY8");
        LayerSource truncated(kWidth / 2, kHeight / 2, "BGRA");
        LayerSource good(kWidth, kHeight, "BGRA");
        const QColor keyColour(0x20, 0x40, 0x80);
        for (LayerSource *dsk : {&gray, &truncated}) {
            QVERIFY(compositor.connectDsk(0, dsk->pipeline, dsk->sink));
            dsk->push(Qt::white, dsk == &truncated ? 4 : 0);
            QTRY_VERIFY_WITH_TIMEOUT(compositor.slotHasFrame(ProgramGpuCompositor::kDskSlotA), 5000);
            QVERIFY(compositor.setDskLayers(0, 1.0f, -1, 0.0f));
            QTRY_VERIFY_WITH_TIMEOUT(compositor.dskFaulted(), 5000);
            const quint64 renders = compositor.renderCount();
            QTRY_VERIFY_WITH_TIMEOUT(compositor.renderCount() > renders + 3, 5000);
            // A good DSK sample clears the fault with the next composition,
            // its blue-first bytes read the right way round.
            // The bad sample still standing in the slot is dropped first.
            compositor.dropSlotFrame(ProgramGpuCompositor::kDskSlotA);
            QVERIFY(compositor.connectDsk(0, good.pipeline, good.sink));
            good.push(keyColour);
            QTRY_VERIFY_WITH_TIMEOUT(compositor.slotHasFrame(ProgramGpuCompositor::kDskSlotA), 5000);
            QVERIFY(compositor.setDskLayers(0, 1.0f, -1, 0.0f));
            QVERIFY(!compositor.dskFaulted());
            QTRY_COMPARE_WITH_TIMEOUT(log.lastColour(), keyColour, 5000);
            QVERIFY(!compositor.dskFaulted());
        }
        QString message;
        QVERIFY(!compositor.poll(&message));

        LayerSource wrongSize(kWidth / 2, kHeight / 2);
        QVERIFY(compositor.connectDeck(1, wrongSize.pipeline, wrongSize.sink));
        wrongSize.push(Qt::blue);
        QTRY_VERIFY_WITH_TIMEOUT(compositor.hasFrame(1), 5000);
        QVERIFY(compositor.setProgramLayers(1, 1.0f, -1, 0.0f));
        QVERIFY(QTest::qWaitFor([&] { return compositor.poll(&message); }, 5000));
        QCOMPARE(message, QStringLiteral("Program GPU renderer failed to draw an output frame."));
        QVERIFY(!compositor.poll(&message));
        QVERIFY(!compositor.setProgramLayers(0, 1.0f, -1, 0.0f));
        QVERIFY(!compositor.connectDeck(0, wrongSize.pipeline, wrongSize.sink));
        const quint64 afterFailure = compositor.renderCount();
        QVERIFY(!QTest::qWaitFor([&] { return compositor.renderCount() > afterFailure; }, 200));
        QVERIFY(compositor.stop());
    }
};

QTEST_MAIN(TestVideoCompositor)
#include "tst_video_compositor.moc"
