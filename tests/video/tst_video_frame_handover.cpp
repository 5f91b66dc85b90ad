#include "support/glib_criticals.h"
#include "video/program_frame_memories.h"
#include "video/program_present_mailbox.h"
#include "video/program_presenter.h"

#include <QtTest>

#include <atomic>
#include <mutex>
#include <vector>

using namespace tarnix;
using namespace std::chrono_literals;

namespace {

int refcount(GstBuffer *buffer)
{
    return GST_MINI_OBJECT_REFCOUNT_VALUE(buffer);
}

// A packed BGRA frame of one value in every byte.
GstBuffer *frameOf(int width, int height, quint8 value)
{
    GstBuffer *buffer = gst_buffer_new_allocate(nullptr, gsize(width) * height * 4, nullptr);
    gst_buffer_memset(buffer, 0, value, gsize(width) * height * 4);
    return buffer;
}

// Records what the presenter drew: how often, the first byte, the window.
class RecordingOutput final : public ProgramPresentOutput
{
public:
    struct Log {
        std::mutex mutex;
        int draws = 0;
        quint8 lastValue = 0;
        QSize lastWindow;
    };
    explicit RecordingOutput(Log *log)
        : m_log(log)
    {
    }
    QString sinkName() const override { return QStringLiteral("recording"); }
    bool open(QString *) override { return true; }
    bool present(const quint8 *pixels, int, int, QSize window, QString *) override
    {
        std::lock_guard lock(m_log->mutex);
        ++m_log->draws;
        m_log->lastValue = pixels[0];
        m_log->lastWindow = window;
        return true;
    }
    void close() override {}

private:
    Log *m_log;
};

} // namespace

class TestVideoFrameHandover : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        tarnix::test::failOnGlibCriticals();
        gst_init(nullptr, nullptr);
    }

    // The mailbox moves references: a full mailbox overwrites its oldest
    // frames, the consumer gets the newest, and every other reference is
    // let go, so no frame outlives its use.
    void mailboxKeepsTheNewestAndLetsGo()
    {
        std::vector<GstBuffer *> buffers;
        {
            ProgramPresentMailbox mailbox;
            for (int i = 0; i < 10; ++i) {
                buffers.push_back(gst_buffer_new_allocate(nullptr, 16, nullptr));
                QVERIFY(mailbox.publish(buffers.back(), i, quint64(i + 1)));
            }
            QCOMPARE(mailbox.misses(), quint64(0));
            // Ten frames into eight entries: the two oldest were overwritten.
            QCOMPARE(refcount(buffers[0]), 1);
            QCOMPARE(refcount(buffers[1]), 1);
            for (int i = 2; i < 10; ++i)
                QCOMPARE(refcount(buffers[i]), 2);

            ProgramPresentMailbox::Frame taken;
            QVERIFY(mailbox.take(0, &taken));
            QCOMPARE(taken.sequence, quint64(10));
            QCOMPARE(taken.buffer, buffers[9]);
            QCOMPARE(taken.pts, qint64(9));
            QCOMPARE(taken.picture, quint64(10));
            gst_buffer_unref(taken.buffer);
            for (GstBuffer *buffer : buffers)
                QCOMPARE(refcount(buffer), 1);
            QVERIFY(!mailbox.take(10, &taken));

            // A frame left in the mailbox goes with it.
            QVERIFY(mailbox.publish(buffers[0], 0, 11));
            QCOMPARE(refcount(buffers[0]), 2);
        }
        QCOMPARE(refcount(buffers[0]), 1);
        for (GstBuffer *buffer : buffers)
            gst_buffer_unref(buffer);
    }

    // A block is handed out for writing only while no buffer refers to it,
    // and no more blocks than the limit are ever made.
    void frameBlocksAreReusedWhenFree()
    {
        ProgramFrameMemories blocks(64, 3);
        GstMemory *first = blocks.acquireFree();
        QVERIFY(first);
        // Not referred to yet: the same block again.
        QCOMPARE(blocks.acquireFree(), first);
        GstBuffer *inFlight = ProgramFrameMemories::wrap(first);
        GstMemory *second = blocks.acquireFree();
        QVERIFY(second && second != first);
        GstBuffer *alsoInFlight = ProgramFrameMemories::wrap(second);
        GstBuffer *copy = gst_buffer_copy(alsoInFlight); // shares the block
        gst_buffer_unref(alsoInFlight);
        GstMemory *third = blocks.acquireFree();
        QVERIFY(third && third != first && third != second);
        GstBuffer *third_ = ProgramFrameMemories::wrap(third);
        QVERIFY(!blocks.acquireFree()); // three in use, limit three
        QCOMPARE(blocks.blocks(), 3);

        gst_buffer_unref(copy);
        QCOMPARE(blocks.acquireFree(), second);
        gst_buffer_unref(inFlight);
        gst_buffer_unref(third_);
        QVERIFY(blocks.acquireFree());
        QCOMPARE(blocks.blocks(), 3);

        // Blocks made ahead count against the same limit.
        ProgramFrameMemories reserved(64, 3);
        reserved.reserve(2);
        QCOMPARE(reserved.blocks(), 2);
        reserved.reserve(5);
        QCOMPARE(reserved.blocks(), 3);
    }

    // A repeated picture is presented without drawing; a new picture, a
    // repaint request, a resized or newly shown window and a passed repaint
    // interval each draw the newest frame again.
    void presenterDrawsOnlyWhatTheWindowLacks()
    {
        constexpr int kWidth = 4;
        constexpr int kHeight = 2;
        RecordingOutput::Log log;
        ProgramPresenter presenter(kWidth, kHeight, std::make_unique<RecordingOutput>(&log), 5000ms, 60000ms);
        ProgramWindowState window;
        window.size = QSize(kWidth, kHeight);
        presenter.setWindowState(window);
        QVERIFY(presenter.start());
        QTRY_VERIFY_WITH_TIMEOUT(presenter.isReady(), 5000);

        auto draws = [&] {
            std::lock_guard lock(log.mutex);
            return log.draws;
        };
        auto lastValue = [&] {
            std::lock_guard lock(log.mutex);
            return log.lastValue;
        };
        quint64 presents = 0;
        auto publish = [&](quint8 value, quint64 picture) {
            GstBuffer *frame = frameOf(kWidth, kHeight, value);
            const bool published = presenter.publish(frame, 0, picture);
            gst_buffer_unref(frame);
            ++presents;
            return published && QTest::qWaitFor([&] { return presenter.presents() == presents; }, 5000);
        };

        QVERIFY(publish(10, 1));
        QCOMPARE(draws(), 1);
        QCOMPARE(lastValue(), quint8(10));
        QVERIFY(publish(10, 1)); // the same picture: nothing to draw
        QVERIFY(publish(10, 1));
        QCOMPARE(draws(), 1);
        QCOMPARE(presenter.draws(), quint64(1));

        QVERIFY(publish(20, 2));
        QCOMPARE(draws(), 2);
        QCOMPARE(lastValue(), quint8(20));

        // An expose: the window's picture is drawn again without a new frame.
        presenter.requestRepaint();
        QTRY_COMPARE_WITH_TIMEOUT(draws(), 3, 5000);
        QCOMPARE(lastValue(), quint8(20));
        presents = presenter.presents();

        window.size = QSize(2 * kWidth, 2 * kHeight);
        presenter.setWindowState(window);
        QVERIFY(publish(20, 2));
        QCOMPARE(draws(), 4);
        {
            std::lock_guard lock(log.mutex);
            QCOMPARE(log.lastWindow, window.size);
        }

        // A hidden window is not drawn into; shown again, it is.
        window.exposed = false;
        presenter.setWindowState(window);
        QVERIFY(publish(20, 2));
        QCOMPARE(draws(), 4);
        window.exposed = true;
        presenter.setWindowState(window);
        QVERIFY(publish(20, 2));
        QCOMPARE(draws(), 5);
        presenter.stop();

        // With no repaint interval, every present draws.
        RecordingOutput::Log eager;
        ProgramPresenter always(kWidth, kHeight, std::make_unique<RecordingOutput>(&eager), 5000ms, 0ms);
        QVERIFY(always.start());
        QTRY_VERIFY_WITH_TIMEOUT(always.isReady(), 5000);
        for (quint64 n = 1; n <= 3; ++n) {
            GstBuffer *frame = frameOf(kWidth, kHeight, 7);
            QVERIFY(always.publish(frame, 0, 1));
            gst_buffer_unref(frame);
            QTRY_COMPARE_WITH_TIMEOUT(always.presents(), n, 5000);
        }
        QCOMPARE(always.draws(), quint64(3));
    }
};

QTEST_GUILESS_MAIN(TestVideoFrameHandover)
#include "tst_video_frame_handover.moc"
