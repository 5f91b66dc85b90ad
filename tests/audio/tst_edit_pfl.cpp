#include "audio/edit_pfl_feed.h"
#include "audio/edit_pfl_output.h"
#include "audio/level_reading.h"
#include "edit/edit_player.h"
#include "pfl_fault_file.h"
#include "support/private_pulse_audio.h"
#include "support/pulse_recording.h"
#include "support/test_paths.h"

#include <gst/gst.h>

#include <QElapsedTimer>
#include <QFileInfo>
#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

#include <cmath>
#include <cstring>
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

using namespace tarnix;

namespace {

QString media(const char *name) { return QStringLiteral(TARNIX_TEST_MEDIA_DIR "/%1").arg(QLatin1String(name)); }

EditPflOutput::Options helper(const char *path)
{
    EditPflOutput::Options options;
    options.helperPath = QString::fromLatin1(path);
    return options;
}

// A file of a steady sine at half of full scale: its peak reads -6.02 dBFS.
bool writeSine(const QString &path)
{
    const QByteArray description =
        QStringLiteral("audiotestsrc wave=sine freq=997 volume=0.5 num-buffers=1000 samplesperbuffer=480 ! "
                       "audio/x-raw,format=F32LE,rate=48000,channels=2 ! wavenc ! filesink location=%1")
            .arg(path)
            .toUtf8();
    GError *error = nullptr;
    GstElement *pipeline = gst_parse_launch(description.constData(), &error);
    if (error) {
        g_error_free(error);
        if (pipeline)
            gst_object_unref(pipeline);
        return false;
    }
    gst_element_set_state(pipeline, GST_STATE_PLAYING);
    GstBus *bus = gst_element_get_bus(pipeline);
    GstMessage *end = gst_bus_timed_pop_filtered(bus, 10 * GST_SECOND, GstMessageType(GST_MESSAGE_EOS | GST_MESSAGE_ERROR));
    const bool ok = end && GST_MESSAGE_TYPE(end) == GST_MESSAGE_EOS;
    if (end)
        gst_message_unref(end);
    gst_object_unref(bus);
    gst_element_set_state(pipeline, GST_STATE_NULL);
    gst_object_unref(pipeline);
    return ok;
}

// The loudest sample of half a second recorded off the sink's monitor
// (after a tenth of a second that settles), in dBFS; NaN when nothing came
// within ten seconds. PULSE_SERVER names the test's server.
double monitorPeakDb(const QString &source)
{
    const std::vector<float> samples = test::recordPulseSource(source, 24000);
    if (samples.empty())
        return NAN;
    float loudest = 0;
    for (float sample : samples)
        loudest = std::max(loudest, std::abs(sample));
    return loudest > 0 ? 20.0 * std::log10(double(loudest)) : -200.0;
}

} // namespace

class TestEditPfl : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { gst_init(nullptr, nullptr); }

    // The mapping as the helper sees it, blocks cut at 480 frames, and a
    // full ring that costs one count per buffer, never a wait.
    void ringLayoutAndBlocks()
    {
        QString error;
        std::shared_ptr<EditPflFeed> feed = EditPflFeed::create(&error);
        QVERIFY2(feed->hasView(), qPrintable(error));
        const QString file = QStringLiteral("/dev/shm") + feed->name();
        QCOMPARE(QFileInfo(file).size(), qint64(247040));
        QCOMPARE(pfl::load(feed->shared()->header.version), 1u);
        QCOMPARE(feed->generation(), 1u);

        std::vector<float> pcm(480 * 64 * 2);
        for (std::size_t i = 0; i < pcm.size(); ++i)
            pcm[i] = float(i);
        QCOMPARE(feed->writeBuffer(pcm.data(), 1000, 5'000'000'000ull, 7), 3);
        const pfl::Block *ring = feed->shared()->ring;
        QCOMPARE(ring[0].frameCount, 480u);
        QCOMPARE(ring[1].frameCount, 480u);
        QCOMPARE(ring[2].frameCount, 40u);
        QCOMPARE(ring[1].presentationNs - ring[0].presentationNs, 10'000'000ull);
        QCOMPARE(ring[2].presentationNs - ring[1].presentationNs, 10'000'000ull);
        QCOMPARE(ring[2].generation, 7u);
        QCOMPARE(ring[2].pcm[0], float(960 * 2));  // frame 960's left sample
        QCOMPARE(feed->writeIndex(), 3u);

        // 61 free slots: the first buffer fills them, the rest of it and
        // the next buffer are lost, one count each.
        QCOMPARE(feed->writeBuffer(pcm.data(), 480 * 62, 0, 7), 61);
        QCOMPARE(feed->droppedBlocks(), 1u);
        QCOMPARE(feed->writeBuffer(pcm.data(), 1000, 0, 7), 0);
        QCOMPARE(feed->droppedBlocks(), 2u);

        // Requests before a start void what is queued.
        feed->setSourceActive(true);
        QCOMPARE(feed->generation(), 2u);
        feed->setSourceActive(true);
        QCOMPARE(feed->generation(), 2u);
        feed->prepareStart();
        QCOMPARE(feed->readIndex(), feed->writeIndex());
        QCOMPARE(feed->helperState(), std::uint32_t(pfl::StateOpening));
        QCOMPARE(feed->generation(), 3u);

        // The sweep removes what no process holds, never a live feed's.
        const QByteArray stale = "/" + QByteArray(pfl::kNamePrefix) + "left-by-a-crash";
        const int fd = shm_open(stale.constData(), O_RDWR | O_CREAT, 0600);
        QVERIFY(fd >= 0);
        ::close(fd);
        QVERIFY(EditPflFeed::sweepStaleNames() >= 1);
        QVERIFY(!QFileInfo::exists(QStringLiteral("/dev/shm") + QString::fromLatin1(stale)));
        QVERIFY(QFileInfo::exists(file));
        feed.reset();
        QVERIFY(!QFileInfo::exists(file));
    }

    // The helper's life as the application runs it: a missing program at
    // once, a quick toggle keeps the helper, a helper deaf to the stop is
    // killed after 1.5 s and the new device follows without an error, and a
    // helper that stops beating is failed 2 s after its last beat.
    void helperLifecycle()
    {
        std::shared_ptr<EditPflFeed> feed = EditPflFeed::create();
        {
            EditPflOutput output(feed, helper("/nonexistent/tarnix-pfl-output"));
            QSignalSpy errors(&output, &EditPflOutput::outputError);
            QVERIFY(!output.canEnable());
            output.setDeviceId(QStringLiteral("good"));
            output.setEnabled(true);
            QCOMPARE(errors.size(), 1);
            QCOMPARE(errors.at(0).at(0).toString(), QStringLiteral("The PFL output component could not be found."));
            QCOMPARE(output.statusKey(), QStringLiteral("edit.pfl.helper_missing"));
            QVERIFY(!output.isHelperRunning());
        }

        EditPflOutput output(feed, helper(TARNIX_FAKE_PFL_HELPER));
        QSignalSpy errors(&output, &EditPflOutput::outputError);
        output.setDeviceId(QStringLiteral("deaf"));
        QCOMPARE(output.statusText(), QStringLiteral("PFL OFF \u2014 listen before nominal volume."));
        output.setEnabled(true);
        QCOMPARE(output.statusKey(), QStringLiteral("edit.pfl.opening"));
        QTRY_VERIFY(output.isActive());
        QVERIFY(feed->audible());
        QCOMPARE(output.statusText(), QStringLiteral("PFL ON \u2014 listening before nominal volume."));
        output.setEnabled(false);
        QVERIFY(!feed->audible());
        QVERIFY(output.isHelperRunning());
        output.setEnabled(true);
        QVERIFY(output.isActive());

        QElapsedTimer stopping;
        stopping.start();
        output.setDeviceId(QStringLiteral("good"));
        QTRY_VERIFY_WITH_TIMEOUT(output.isActive(), 5000);
        QVERIFY2(stopping.elapsed() >= 1400 && stopping.elapsed() < 2500, qPrintable(QString::number(stopping.elapsed())));
        QCOMPARE(errors.size(), 0);
        QCOMPARE(output.deviceId(), QStringLiteral("good"));

        output.setDeviceId(QStringLiteral("hang"));
        QTRY_VERIFY_WITH_TIMEOUT(output.isActive(), 5000);
        QTRY_COMPARE_WITH_TIMEOUT(errors.size(), 1, 5000);
        const double sinceBeatMs = double(monotonicNowNs() - feed->heartbeatNs()) / 1e6;
        QVERIFY2(sinceBeatMs >= 2000 && sinceBeatMs < 2400, qPrintable(QString::number(sinceBeatMs)));
        QCOMPARE(errors.at(0).at(0).toString(),
                 QStringLiteral("PFL output is unavailable. Check the selected device, then turn PFL on again."));
        QVERIFY(!output.isActive());
        QVERIFY(!feed->audible());
    }

    // The EDIT player writes what it plays at normal speed only: a scan is
    // never heard.
    void playerFeedsTheRingAtNormalRateOnly()
    {
        std::shared_ptr<EditPflFeed> feed = EditPflFeed::create();
        feed->setAudible(true);
        feed->setSourceActive(true);
        EditPlayer::Options options;
        options.videoSize = QSize(160, 90);
        options.pflFeed = feed;
        QString error;
        std::unique_ptr<EditPlayer> player = EditPlayer::create(options, &error);
        QVERIFY2(player, qPrintable(error));
        QVERIFY2(player->load(media("h264-aac-25fps-12s.mp4"), 0, &error), qPrintable(error));
        QTRY_VERIFY(player->poll() == EditPlayer::Event::Loaded || player->isLoaded());
        QVERIFY(player->play());
        // Read as the helper would, so the ring never fills.
        auto drain = [&] { pfl::store(feed->shared()->header.readIndex, feed->writeIndex()); };
        QTRY_VERIFY(feed->writeIndex() > 20 && (drain(), true));
        const pfl::Block &block = feed->shared()->ring[(feed->writeIndex() - 1) & 63];
        QVERIFY(block.frameCount >= 1 && block.frameCount <= 480);
        QVERIFY(block.presentationNs > monotonicNowNs() - 1'000'000'000ull);
        QCOMPARE(feed->droppedBlocks(), 0u);

        const qint64 from = player->positionMs();
        QVERIFY(player->setRate(2.0, from));
        QTRY_VERIFY(player->positionMs() > from + 400);
        const std::uint32_t written = feed->writeIndex();
        const qint64 later = player->positionMs();
        QTRY_VERIFY(player->positionMs() > later + 600);
        QCOMPARE(feed->writeIndex(), written);
        player->unload();
        QTRY_VERIFY_WITH_TIMEOUT(player->poll() == EditPlayer::Event::Unloaded || !player->isUnloading(), 5000);
    }

    // Through the real helper on a PulseAudio sink: the operator hears the
    // item before its nominal fader, so with the fader at -20 dB the sink's
    // monitor reads the level that enters EDIT.
    void heardBeforeTheNominalFader()
    {
        test::PrivatePulseAudio pulse;
        QString error;
        QVERIFY2(pulse.start(&error), qPrintable(error));
        QTemporaryDir directory;
        const QString sine = directory.filePath(QStringLiteral("sine.wav"));
        QVERIFY(writeSine(sine));

        std::shared_ptr<EditPflFeed> feed = EditPflFeed::create();
        EditPflOutput output(feed, helper(TARNIX_PFL_HELPER));
        QSignalSpy errors(&output, &EditPflOutput::outputError);
        output.setDeviceId(QStringLiteral("OTHER"));  // ids match without regard to case
        output.setEnabled(true);
        QTRY_VERIFY_WITH_TIMEOUT(output.isActive(), 5000);

        EditPlayer::Options options;
        options.pflFeed = feed;
        std::unique_ptr<EditPlayer> player = EditPlayer::create(options, &error);
        QVERIFY2(player && player->load(sine, 0, &error), qPrintable(error));
        QTRY_VERIFY(player->poll() == EditPlayer::Event::Loaded || player->isLoaded());
        player->setNominalGain(0.1);
        feed->setSourceActive(true);
        QVERIFY(player->play());
        double in[4];
        QTRY_VERIFY((player->poll(), player->levels(&in[0], &in[1], &in[2], &in[3]), in[0] > -20));
        // The sound server starts a new stream after a delay that depends
        // on the machine's load: the monitor is read until it hears PFL.
        double heard = NAN;
        QVERIFY2(QTest::qWaitFor(
                     [&] {
                         heard = monitorPeakDb(QStringLiteral("other.monitor"));
                         return std::abs(heard - in[0]) <= 0.2;
                     },
                     8000),
                 qPrintable(QStringLiteral("heard %1 dB, entering %2 dB").arg(heard).arg(in[0])));
        player->poll();
        player->levels(&in[0], &in[1], &in[2], &in[3]);
        QVERIFY2(std::abs(in[2] - (in[0] - 20.0)) < 0.3, qPrintable(QStringLiteral("%1 %2").arg(in[0]).arg(in[2])));
        QCOMPARE(errors.size(), 0);
        output.shutdown();
        QTRY_VERIFY(output.hasFinished());
        player->unload();
    }

    // Once locked down the helper may make threads (the sound server's
    // client needs them) but can neither start nor become another program.
    void helperCannotStartAProcess()
    {
        QTemporaryDir directory;
        const QString fault = test::writePflHelperFault(directory, "spawn");
        QVERIFY(!fault.isEmpty());
        QProcess faulty;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("TARNIX_PFL_HELPER_FAULT_FILE"), fault);
        faulty.setProcessEnvironment(environment);
        faulty.start(QStringLiteral(TARNIX_FAULTY_PFL_HELPER), {QStringLiteral("--list")});
        QVERIFY(faulty.waitForFinished(10000));
        const QString said = QString::fromLocal8Bit(faulty.readAllStandardOutput());
        QVERIFY2(faulty.exitStatus() == QProcess::NormalExit && faulty.exitCode() == 0, qPrintable(said));
        for (const char *line : {"fork refused", "posix_spawn refused", "execve refused", "thread ran"})
            QVERIFY2(said.contains(QLatin1String(line)), qPrintable(said));
    }
};

QTEST_GUILESS_MAIN(TestEditPfl)
#include "tst_edit_pfl.moc"
