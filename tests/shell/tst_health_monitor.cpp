// The health figures: their order and values from injected sources, the
// retentions of the safe-release helper by owner, and the process figures
// read off the main thread.

#include "log_test_helpers.h"

#include "kit/log_capture.h"
#include "shell/health_monitor.h"
#include "shell/pipeline_release.h"
#include "shell/process_figures.h"
#include "shell/user_info_center.h"
#include "support/glib_criticals.h"
#include "support/refusing_element.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QThread>
#include <QtTest>

#include <atomic>
#include <thread>

#include <fcntl.h>

using namespace tarnix;
using namespace std::chrono_literals;

namespace {

const QStringList kKeys{"uptimeMs",        "renders5s",         "presents5s", "largestRenderGapMs",
                        "mailboxMisses",   "retainedPipelines", "logRecordsDropped",
                        "rssBytes",        "openFds",           "threads",    "operatorWarnings"};

// A monitor on a clock and program counters the test moves by hand.
struct Rig {
    qint64 nowMs = 1000;
    std::optional<ProgramFrameCounters> counters = ProgramFrameCounters{};
    HealthMonitor monitor;

    explicit Rig(HealthMonitorOptions options = {})
        : monitor(withClock(std::move(options)))
    {
        monitor.setProgramCounters([this] { return counters; });
    }

    HealthMonitorOptions withClock(HealthMonitorOptions options)
    {
        options.monotonicMs = [this] { return nowMs; };
        if (!options.processReader)
            options.processReader = [] { return ProcessFigures{123 * 4096, 17, 9}; };
        return options;
    }

    // One second of a steady picture, then a sample.
    void second(quint64 renders, quint64 presents)
    {
        nowMs += 1000;
        if (counters) {
            counters->renders += renders;
            counters->presents += presents;
        }
        monitor.sample();
    }

    QJsonObject answer() const { return QJsonDocument::fromJson(monitor.json().toUtf8()).object(); }
};

GstElement *pipelineRefusingNull(const char *name)
{
    GstElement *pipeline = gst_pipeline_new(name);
    gst_bin_add(GST_BIN(pipeline), test::makeNullRefusingElement());
    gst_element_set_state(pipeline, GST_STATE_PLAYING);
    return pipeline;
}

} // namespace

class TestHealthMonitor : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        test::failOnGlibCriticals();
        gst_init(nullptr, nullptr);
    }

    // Rates count the last five seconds of samples (scaled while the history
    // is shorter); the program's own figures are read as they stand.
    void programFiguresAndOrder()
    {
        Rig rig;
        rig.monitor.start();
        QCOMPARE(test::topLevelKeysInOrder(rig.monitor.json().toUtf8()), kKeys);
        QVERIFY(rig.answer().value("renders5s").isNull());  // one sample is no rate yet

        rig.second(60, 60);
        QCOMPARE(rig.answer().value("renders5s").toInteger(), 300);
        for (int s = 0; s < 4; ++s)
            rig.second(60, 60);
        // A slow second drops out of the window five seconds later.
        rig.second(30, 20);
        QCOMPARE(rig.answer().value("renders5s").toInteger(), 270);
        QCOMPARE(rig.answer().value("presents5s").toInteger(), 260);
        for (int s = 0; s < 5; ++s)
            rig.second(60, 59);
        QCOMPARE(rig.answer().value("renders5s").toInteger(), 300);
        QCOMPARE(rig.answer().value("presents5s").toInteger(), 295);

        rig.counters->largestRenderGapMs = 84;
        rig.counters->mailboxMisses = 3;
        // The process figures come from the worker's first reading.
        QTRY_COMPARE_WITH_TIMEOUT(rig.answer().value("rssBytes").toInteger(), 123 * 4096, 5000);
        const QJsonObject answer = rig.answer();
        QCOMPARE(answer.value("uptimeMs").toInteger(), 11000);
        QCOMPARE(answer.value("largestRenderGapMs").toInteger(), 84);
        QCOMPARE(answer.value("mailboxMisses").toInteger(), 3);
        QCOMPARE(answer.value("openFds").toInteger(), 17);
        QCOMPARE(answer.value("threads").toInteger(), 9);

        // Counters that start again (a new picture) start a new history.
        rig.counters = ProgramFrameCounters{};
        rig.second(60, 60);
        QVERIFY(rig.answer().value("renders5s").isNull());
        rig.second(50, 50);
        QCOMPARE(rig.answer().value("renders5s").toInteger(), 250);

        // Without a program picture its figures are null.
        rig.counters.reset();
        rig.second(0, 0);
        for (const char *key : {"renders5s", "presents5s", "largestRenderGapMs", "mailboxMisses"})
            QVERIFY2(rig.answer().value(key).isNull(), key);
    }

    // Warnings and errors count when the operator is shown them; success
    // messages, questions and repeats of the message shown do not.
    void operatorWarningsCountWhatWasShown()
    {
        testkit::LogCapture notices(testkit::LogCapture::category(QStringLiteral("SYSTEM")));
        UserInfoCenter center(nullptr, 0ms);
        Rig rig;
        rig.monitor.setOperatorMessages(&center);
        auto post = [&](UserInfoSeverity severity, const char *text) {
            center.post(severity, QStringLiteral("SYSTEM"), LocalizedText(QString(), {}, QString::fromLatin1(text)));
        };
        post(UserInfoSeverity::Success, "saved");
        post(UserInfoSeverity::Warning, "disk slow");
        post(UserInfoSeverity::Warning, "disk slow");
        center.askPflSameDevice();
        center.answerPflSameDevice(false);
        post(UserInfoSeverity::Error, "device gone");
        QCOMPARE(rig.answer().value("operatorWarnings").toInteger(), 2);
    }

    void retentionsCountUnderTheirOwner_data()
    {
        QTest::addColumn<QString>("pipelineName");
        QTest::addColumn<QString>("givenOwner");
        QTest::addColumn<QString>("expectedOwner");
        QTest::newRow("named by its element") << "deck-a-player" << "" << "deck";
        QTest::newRow("named by its caller") << "deck-b-player" << "program-audio" << "program-audio";
        QTest::newRow("GStreamer's own name") << "" << "" << "unnamed";
    }

    void retentionsCountUnderTheirOwner()
    {
        QFETCH(QString, pipelineName);
        QFETCH(QString, givenOwner);
        QFETCH(QString, expectedOwner);
        testkit::LogCapture warnings(testkit::LogCapture::warnings());
        const QMap<QString, qint64> before = retainedCountByOwner();
        const std::size_t totalBefore = retainedCount();
        GstElement *pipeline = pipelineRefusingNull(pipelineName.isEmpty() ? nullptr : qPrintable(pipelineName));

        QVERIFY(!releasePipeline(pipeline, QStringLiteral("kept"), 50ms, givenOwner));

        QMap<QString, qint64> expected = before;
        ++expected[expectedOwner];
        QCOMPARE(retainedCountByOwner(), expected);
        QCOMPARE(retainedCount(), totalBefore + 1);
        Rig rig;
        QCOMPARE(rig.answer().value("retainedPipelines").toObject().value(expectedOwner).toInteger(),
                 expected.value(expectedOwner));

        // Objects kept for a pipeline's sake count too.
        retainForProcess(std::make_shared<int>(1), QStringLiteral("edit"));
        QCOMPARE(retainedCountByOwner().value("edit"), expected.value("edit") + 1);
    }

    void processFiguresAreReadOnAWorker()
    {
        // This process as /proc tells it: every descriptor open now (the
        // reading's own not counted), one thread more for a thread that runs.
        const ProcessFigures before = readProcessFigures();
        QVERIFY(before.rssBytes > 1024 * 1024);
        // Another thread may open or close a descriptor meanwhile: looked at
        // again until the two counts are of the same moment.
        auto countOpen = [] {
            int open = 0;
            for (int fd = 0; fd < 4096; ++fd)
                open += ::fcntl(fd, F_GETFD) != -1 ? 1 : 0;
            return open;
        };
        bool same = false;
        for (int attempt = 0; attempt < 20 && !same; ++attempt) {
            const int open = countOpen();
            same = readProcessFigures().openFds == open && countOpen() == open;
        }
        QVERIFY(same);
        // Other threads of the process (a pool's, a worker's of an earlier
        // case) may come or go between two readings: the count is looked at
        // again until one pair of readings sees only the parked thread.
        bool counted = false;
        for (int attempt = 0; attempt < 20 && !counted; ++attempt) {
            const int threadsBefore = readProcessFigures().threads;
            std::atomic<bool> release{false};
            std::thread parked([&] {
                while (!release.load())
                    QThread::yieldCurrentThread();
            });
            const int threadsWith = readProcessFigures().threads;
            release.store(true);
            parked.join();
            counted = threadsWith == threadsBefore + 1;
        }
        QVERIFY(counted);
        QCOMPARE(readProcessFigures(QStringLiteral("/nonexistent")).openFds, -1);

        // What the reader sees outlives the test: the worker may still be
        // reading when the sampler goes.
        const std::thread::id mainThread = std::this_thread::get_id();
        auto readOffMain = std::make_shared<std::atomic<bool>>(false);
        auto sampler = std::make_unique<ProcessFiguresSampler>(10ms, [mainThread, readOffMain] {
            if (std::this_thread::get_id() != mainThread)
                readOffMain->store(true);
            return ProcessFigures{1, 2, 3};
        });
        QVERIFY(!sampler->latest());
        QVERIFY(sampler->start());
        QTRY_VERIFY_WITH_TIMEOUT(sampler->readings() >= 3, 5000);
        QCOMPARE(sampler->latest()->threads, 3);
        QVERIFY(readOffMain->load());
        // Going away only tells the worker; it ends on its own.
        sampler.reset();
    }
};

QTEST_GUILESS_MAIN(TestHealthMonitor)
#include "tst_health_monitor.moc"
