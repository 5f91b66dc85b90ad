#include "audio/audio_elements.h"
#include "audio/program_audio_output.h"
#include "pcm_probe.h"
#include "support/fake_device_sink.h"
#include "support/glib_criticals.h"
#include "support/private_pulse_audio.h"
#include "support/pulse_recording.h"

#include <gst/app/gstappsink.h>

#include <QtTest>

#include <mutex>

using namespace tarnix;
using namespace tarnix::test;

namespace {

QString toneSender(double volume)
{
    return QStringLiteral("audiotestsrc wave=sine freq=1000 volume=%1 samplesperbuffer=480 ! %2 ! "
                          "tarnixaudiosink name=sender channel=deck-a-audio sync=true qos=false")
        .arg(volume)
        .arg(QLatin1String(kPcmCaps));
}

GstElement *launchOnSystemClock(const QString &description)
{
    GstElement *pipeline = gst_parse_launch(description.toUtf8().constData(), nullptr);
    if (!pipeline)
        return nullptr;
    GstClock *clock = gst_system_clock_obtain();
    gst_pipeline_use_clock(GST_PIPELINE(pipeline), clock);
    gst_object_unref(clock);
    return pipeline;
}

void stopPipelineNow(GstElement *&pipeline)
{
    if (!pipeline)
        return;
    if (GstElement *sink = gst_bin_get_by_name(GST_BIN(pipeline), "sender")) {
        abortSender(sink);
        gst_object_unref(sink);
    }
    gst_element_set_state(pipeline, GST_STATE_NULL);
    gst_object_unref(pipeline);
    pipeline = nullptr;
}

// Records `frames` sample frames from a PulseAudio source, after letting
// the first 100 ms pass, and returns the tone level in dBFS (or -inf).
double recordedToneDbfs(const QString &source, std::size_t frames = 24000)
{
    const std::vector<float> samples = recordPulseSource(source, frames);
    if (samples.empty())
        return NAN;
    return toneDbfs(leftRms(samples, 0, frames));
}

// The sound server starts a new stream with a delay that depends on the
// machine's load, and the program output is silent until it has; so the
// level is read again until it matches or the time is up.
bool reachesToneLevel(const QString &source, double expectedDb, double *lastDb)
{
    return QTest::qWaitFor(
        [&] {
            *lastDb = recordedToneDbfs(source, 12000);
            return std::fabs(*lastDb - expectedDb) <= 0.1;
        },
        15000);
}

bool serviceUntilSettled(ProgramAudioOutput &output, int timeoutMs = 8000)
{
    return QTest::qWaitFor(
        [&] {
            output.serviceDeviceChange(true);
            return !output.isDeviceChangeRunning() &&
                   (output.statusKey() != QStringLiteral("settings.output.pending"));
        },
        timeoutMs);
}

QString sinkDevice(ProgramAudioOutput &output)
{
    GstElement *sink = gst_bin_get_by_name(GST_BIN(output.pipeline()), "program-audio-output");
    gchar *device = nullptr;
    g_object_get(sink, "device", &device, nullptr);
    const QString result = QString::fromUtf8(device);
    g_free(device);
    gst_object_unref(sink);
    return result;
}

GstState currentState(GstElement *pipeline)
{
    GstState state = GST_STATE_VOID_PENDING;
    gst_element_get_state(pipeline, &state, nullptr, 0);
    return state;
}

} // namespace

class TestProgramAudioDevice : public QObject
{
    Q_OBJECT

    PrivatePulseAudio m_pulse;
    std::unique_ptr<ProgramAudioOutput> m_output;
    GstElement *m_deck = nullptr;

private slots:
    void initTestCase()
    {
        failOnGlibCriticals();
        gst_init(nullptr, nullptr);
        QVERIFY(registerAudioElements());
        QVERIFY(registerFakeDeviceSink());
        QString error;
        QVERIFY2(m_pulse.start(&error), qPrintable(error));
    }

    void cleanupTestCase()
    {
        stopPipelineNow(m_deck);
        m_output.reset();
        m_pulse.stop();
    }

    // The three cases below run in order against one output on the
    // private server.
    void playsOnTheChosenSinkAtTheSentLevel()
    {
        m_output = std::make_unique<ProgramAudioOutput>();
        QVERIFY(m_output->create(nullptr, nullptr, QStringLiteral("onair")));
        QVERIFY(serviceUntilSettled(*m_output));
        QVERIFY(m_output->isRunning());
        QCOMPARE(m_output->statusKey(), QStringLiteral("settings.output.applied"));
        QVERIFY(m_output->setDeckAudible(0, true));
        m_deck = launchOnSystemClock(toneSender(0.1));
        QVERIFY(gst_element_set_state(m_deck, GST_STATE_PLAYING) != GST_STATE_CHANGE_FAILURE);
        double level = 0.0;
        QVERIFY2(reachesToneLevel(QStringLiteral("onair.monitor"), -20.0, &level),
                 qPrintable(QString::number(level)));
    }

    void deviceChangeWaitsUntilAllowed()
    {
        QVERIFY(m_output);
        m_output->setRequestedDevice(QStringLiteral("other"));
        for (int i = 0; i < 3; ++i)
            m_output->serviceDeviceChange(false);
        QCOMPARE(ProgramAudioOutput::statusText(m_output->statusKey()),
                 QStringLiteral("Waiting until ON AIR and BGM are stopped."));
        QCOMPARE(m_output->activeDevice(), QStringLiteral("onair"));

        QVERIFY(serviceUntilSettled(*m_output));
        QCOMPARE(ProgramAudioOutput::statusText(m_output->statusKey()),
                 QStringLiteral("ON AIR output device applied."));
        QCOMPARE(m_output->activeDevice(), QStringLiteral("other"));
        double level = 0.0;
        QVERIFY2(reachesToneLevel(QStringLiteral("other.monitor"), -20.0, &level),
                 qPrintable(QString::number(level)));
        QVERIFY(recordedToneDbfs(QStringLiteral("onair.monitor"), 4800) < -90.0);
    }

    void missingSinkKeepsTheOldDeviceUntilItComes()
    {
        QVERIFY(m_output);
        m_output->setRequestedDevice(QStringLiteral("no-such-sink"));
        QVERIFY(serviceUntilSettled(*m_output, 15000));
        QCOMPARE(ProgramAudioOutput::statusText(m_output->statusKey()),
                 QStringLiteral("Could not apply the ON AIR output device. Select an available "
                                "device and try again."));
        QCOMPARE(m_output->activeDevice(), QStringLiteral("other"));
        QVERIFY(m_output->isRunning());
        double level = 0.0;
        QVERIFY2(reachesToneLevel(QStringLiteral("other.monitor"), -20.0, &level),
                 qPrintable(QString::number(level)));
        // No retry runs against the missing device until it is told to.
        m_output->serviceDeviceChange(true);
        QVERIFY(!m_output->isDeviceChangeRunning());
        // Plugged in and told to try again, the output moves there.
        QVERIFY(m_pulse.loadSink(QStringLiteral("no-such-sink")));
        m_output->retryDevice();
        QVERIFY(serviceUntilSettled(*m_output, 15000));
        QCOMPARE(m_output->activeDevice(), QStringLiteral("no-such-sink"));
        QCOMPARE(m_output->statusKey(), QStringLiteral("settings.output.applied"));
        QVERIFY2(reachesToneLevel(QStringLiteral("no-such-sink.monitor"), -20.0, &level),
                 qPrintable(QString::number(level)));
        stopPipelineNow(m_deck);
        m_output.reset(); // frees the bridge channels for the next cases
        QVERIFY(m_pulse.unloadSink(QStringLiteral("no-such-sink")));
    }

    // A refusing or hanging device is given up after the state limit and
    // the old device is brought back. A device that accepts no format is
    // given up before the pipeline streams towards it: its branches would
    // end before they had caps or a segment, which GStreamer's level and
    // mixer answer with CRITICAL assertions.
    void refusedDeviceRollsBack_data()
    {
        QTest::addColumn<QString>("device");
        QTest::newRow("refuses PLAYING") << QStringLiteral("unknown");
        QTest::newRow("never reaches PLAYING") << QStringLiteral("stall");
        QTest::newRow("accepts no format") << QStringLiteral("absent");
    }

    void refusedDeviceRollsBack()
    {
        QFETCH(QString, device);
        // Short enough to keep the test quick, long enough for the first start
        // of the pipeline on a loaded machine, which the same limit bounds.
        ProgramAudioOutput output(ProgramAudioOutput::Timings{std::chrono::milliseconds(1000)});
        QVERIFY(output.create(nullptr, nullptr, QStringLiteral("onair"),
                              QStringLiteral("tarnixtestdevicesink")));
        QVERIFY(serviceUntilSettled(output));
        QVERIFY(output.isRunning());

        output.setRequestedDevice(device);
        QElapsedTimer elapsed;
        elapsed.start();
        output.serviceDeviceChange(true);
        QCOMPARE(output.statusKey(), QStringLiteral("settings.output.applying"));
        QVERIFY(serviceUntilSettled(output));
        QCOMPARE(output.statusKey(), QStringLiteral("settings.output.failed"));
        QVERIFY(elapsed.elapsed() < 5000);
        QCOMPARE(output.activeDevice(), QStringLiteral("onair"));
        QCOMPARE(sinkDevice(output), QStringLiteral("onair"));
        QVERIFY(output.isRunning());
        QCOMPARE(currentState(output.pipeline()), GST_STATE_PLAYING);
    }

    // A request made while another change runs waits for it, then runs.
    void requestDuringAChangeRunsAfterIt()
    {
        // Short enough to keep the test quick, long enough for the first start
        // of the pipeline on a loaded machine, which the same limit bounds.
        ProgramAudioOutput output(ProgramAudioOutput::Timings{std::chrono::milliseconds(1000)});
        QVERIFY(output.create(nullptr, nullptr, QString(), QStringLiteral("tarnixtestdevicesink")));
        QVERIFY(serviceUntilSettled(output));
        QCOMPARE(sinkDevice(output), QString());

        output.setRequestedDevice(QStringLiteral("other"));
        output.serviceDeviceChange(true);
        output.setRequestedDevice(QStringLiteral("onair"));
        output.serviceDeviceChange(true);
        QVERIFY(serviceUntilSettled(output));
        QCOMPARE(output.activeDevice(), QStringLiteral("onair"));
        QCOMPARE(sinkDevice(output), QStringLiteral("onair"));
        QCOMPARE(output.statusKey(), QStringLiteral("settings.output.applied"));
    }

    // Without a sound server the output reads failed and stays stopped; the
    // application around it goes on.
    void noSoundServerReadsFailed()
    {
        // The server is named on the sink rather than through PULSE_SERVER:
        // pulsesink shares one connection per server name within a process,
        // and an earlier case's connection to the test server may still be
        // alive while its pipeline stops on a worker.
        ProgramAudioOutput output(ProgramAudioOutput::Timings{std::chrono::milliseconds(500)});
        QVERIFY(output.create(nullptr, nullptr, QStringLiteral("onair"),
                              QStringLiteral("pulsesink slave-method=resample "
                                             "server=unix:/nonexistent/tarnix-test/native")));
        QVERIFY(serviceUntilSettled(output));
        QCOMPARE(ProgramAudioOutput::statusText(output.statusKey()),
                 QStringLiteral("Could not apply the ON AIR output device. Select an available "
                                "device and try again."));
        QVERIFY(!output.isRunning());
        QVERIFY(output.setMasterVolume(0.5));
    }

    // A sink without a device property plays the default and nothing else.
    void sinkWithoutDevicesTakesOnlyTheDefault()
    {
        ProgramAudioOutput output;
        QVERIFY(output.create(nullptr, nullptr, QString(), QStringLiteral("appsink sync=true")));
        QVERIFY(serviceUntilSettled(output));
        QVERIFY(output.isRunning());
        output.setRequestedDevice(QStringLiteral("speakers"));
        output.serviceDeviceChange(true);
        QVERIFY(!output.isDeviceChangeRunning());
        QCOMPARE(output.statusKey(), QStringLiteral("settings.output.failed"));
    }
};

QTEST_GUILESS_MAIN(TestProgramAudioDevice)
#include "tst_program_audio_device.moc"
