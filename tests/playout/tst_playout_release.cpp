#include "playout/async_pipeline_stop.h"
#include "shell/pipeline_release.h"
#include "kit/log_capture.h"
#include "support/glib_criticals.h"
#include "support/refusing_element.h"

#include <QtTest>

#include <atomic>

using namespace tarnix;
using namespace std::chrono_literals;

namespace {

// A pipeline that runs: a source feeding a sink, set to PLAYING.
GstElement *runningPipeline()
{
    GstElement *pipeline = gst_parse_launch(
        "videotestsrc is-live=true ! video/x-raw,width=16,height=16 ! fakesink sync=true", nullptr);
    gst_element_set_state(pipeline, GST_STATE_PLAYING);
    gst_element_get_state(pipeline, nullptr, nullptr, GST_SECOND);
    return pipeline;
}

GstElement *pipelineRefusingNull()
{
    GstElement *pipeline = gst_pipeline_new(nullptr);
    gst_bin_add(GST_BIN(pipeline), test::makeNullRefusingElement());
    gst_element_set_state(pipeline, GST_STATE_PLAYING);
    return pipeline;
}

} // namespace

class TestPlayoutRelease : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        tarnix::test::failOnGlibCriticals();
        gst_init(nullptr, nullptr);
    }

    void releaseFreesOnlyConfirmedPipelines_data()
    {
        QTest::addColumn<bool>("refuses");
        QTest::newRow("reaches NULL") << false;
        QTest::newRow("refuses NULL") << true;
    }

    void releaseFreesOnlyConfirmedPipelines()
    {
        QFETCH(bool, refuses);
        tarnix::testkit::LogCapture warnings(tarnix::testkit::LogCapture::warnings());
        GstElement *pipeline = refuses ? pipelineRefusingNull() : runningPipeline();
        auto finalized = test::watchFinalization(pipeline);
        const std::size_t retainedBefore = retainedCount();

        QCOMPARE(releasePipeline(pipeline, QStringLiteral("owner words"), 200ms), !refuses);

        // A streaming thread winding down may hold a reference for a moment
        // after NULL is confirmed, so the freed case is waited for.
        if (refuses)
            QVERIFY(!finalized->load());
        else
            QTRY_VERIFY_WITH_TIMEOUT(finalized->load(), 5000);
        QCOMPARE(retainedCount(), retainedBefore + (refuses ? 1 : 0));
        QCOMPARE(warnings.contains(QStringLiteral("owner words")), refuses);
    }

    void stopPipelineWarnsWithItsLabel()
    {
        tarnix::testkit::LogCapture warnings(tarnix::testkit::LogCapture::warnings());
        QVERIFY(stopPipeline(nullptr, QStringLiteral("nothing")));

        GstElement *refusing = pipelineRefusingNull();
        QVERIFY(!stopPipeline(refusing, QStringLiteral("dual-deck playbin"), 100ms));
        QCOMPARE(warnings.texts(),
                 QStringList{QStringLiteral("dual-deck playbin rejected GST_STATE_NULL")});
        retainPipelineForProcess(refusing);

        GstElement *running = runningPipeline();
        QVERIFY(stopPipeline(running, QStringLiteral("UVC mapped audio pipeline")));
        QCOMPARE(warnings.texts().size(), 1);
        gst_object_unref(running);
    }

    // The before-step always runs first; the after-step and the unreference
    // happen only once NULL is confirmed.
    void asyncStopRunsItsStepsInOrder_data()
    {
        QTest::addColumn<bool>("refuses");
        QTest::newRow("confirmed") << false;
        QTest::newRow("unconfirmed") << true;
    }

    void asyncStopRunsItsStepsInOrder()
    {
        QFETCH(bool, refuses);
        tarnix::testkit::LogCapture warnings(tarnix::testkit::LogCapture::warnings());
        GstElement *pipeline = refuses ? pipelineRefusingNull() : runningPipeline();
        auto finalized = test::watchFinalization(pipeline);
        auto order = std::make_shared<std::atomic<int>>(0);
        auto beforeAt = std::make_shared<std::atomic<int>>(-1);
        auto afterAt = std::make_shared<std::atomic<int>>(-1);
        AsyncPipelineStop::Steps steps;
        steps.before = [order, beforeAt] { beforeAt->store(order->fetch_add(1)); };
        steps.after = [order, afterAt] { afterAt->store(order->fetch_add(1)); };

        auto stop = AsyncPipelineStop::start(pipeline, std::move(steps),
                                             QStringLiteral("Retaining test pipeline"), 200ms);
        QVERIFY(stop);
        gst_object_unref(pipeline); // the stop holds its own reference now

        QTRY_VERIFY_WITH_TIMEOUT(stop->isFinished(), 5000);
        QCOMPARE(stop->isConfirmed(), !refuses);
        QCOMPARE(beforeAt->load(), 0);
        QCOMPARE(afterAt->load(), refuses ? -1 : 1);
        if (refuses)
            QVERIFY(!finalized->load());
        else
            QTRY_VERIFY_WITH_TIMEOUT(finalized->load(), 5000);
        QCOMPARE(warnings.contains(QStringLiteral("Retaining test pipeline")), refuses);
    }
};

QTEST_GUILESS_MAIN(TestPlayoutRelease)
#include "tst_playout_release.moc"
