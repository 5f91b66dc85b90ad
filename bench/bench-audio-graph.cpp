// Figures of the program audio graph:
//
//  1. CPU of the program pipeline while two decks and BGM send a tone
//     (per cent of one core, the whole process with its three senders;
//     target under 10 %);
//  2. latency from a sender's buffer to the output sink against the latency
//     the program pipeline reports (target within 5 ms);
//  3. drift between the system clock, on which every pipeline runs, and the
//     sound server's sink clock, for each slave method of the sink.
//
// Runs against a private PulseAudio with null sinks, started here, so no
// real device is touched. "--minutes N" sets the drift run (10 by default);
// "--seconds N" gives it in seconds for a short check.

#include "audio/audio_elements.h"
#include "audio/program_audio_output.h"

#include <gst/app/gstappsink.h>
#include <gst/base/gstbasesink.h>
#include <gst/gst.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>

#include <cmath>
#include <cstdio>
#include <mutex>
#include <sys/resource.h>
#include <vector>

using namespace tarnix;

namespace {

constexpr double kCpuTargetPercent = 10.0;
constexpr double kLatencyToleranceMs = 5.0;
const char kPcm[] = "audio/x-raw,format=F32LE,rate=48000,channels=2,layout=interleaved";

GstClockTime systemNow()
{
    GstClock *clock = gst_system_clock_obtain();
    const GstClockTime now = gst_clock_get_time(clock);
    gst_object_unref(clock);
    return now;
}

// Gives the main loop a turn while waiting, so queued calls of the output
// (latency updates) run as they would in the application.
void runFor(int ms)
{
    QElapsedTimer timer;
    timer.start();
    while (timer.elapsed() < ms) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
        QThread::msleep(2);
    }
}

bool startOutput(ProgramAudioOutput &output)
{
    QElapsedTimer timer;
    timer.start();
    while (timer.elapsed() < 10000) {
        output.serviceDeviceChange(true);
        if (output.isRunning() && !output.isDeviceChangeRunning())
            return true;
        runFor(10);
    }
    return false;
}

class PrivateServer
{
public:
    bool start()
    {
        if (!m_dir.isValid())
            return false;
        const QString dir = m_dir.path();
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        for (const char *name : {"HOME", "XDG_RUNTIME_DIR", "XDG_CONFIG_HOME"})
            env.insert(QString::fromLatin1(name), dir);
        env.remove(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"));
        m_daemon.setProcessEnvironment(env);
        m_daemon.setStandardOutputFile(QProcess::nullDevice());
        m_daemon.setStandardErrorFile(QProcess::nullDevice());
        const QString sink = QStringLiteral("rate=48000 format=float32le channels=2");
        m_daemon.start(QStringLiteral("pulseaudio"),
                       {QStringLiteral("-n"), QStringLiteral("--daemonize=no"),
                        QStringLiteral("--exit-idle-time=-1"), QStringLiteral("--use-pid-file=false"),
                        QStringLiteral("-L"),
                        QStringLiteral("module-native-protocol-unix socket=%1/native auth-anonymous=1")
                            .arg(dir),
                        QStringLiteral("-L"), QStringLiteral("module-null-sink sink_name=onair %1").arg(sink)});
        if (!m_daemon.waitForStarted(5000))
            return false;
        const QString server = QStringLiteral("unix:%1/native").arg(dir);
        qputenv("PULSE_SERVER", server.toUtf8());
        for (int i = 0; i < 100; ++i) {
            QProcess pactl;
            pactl.start(QStringLiteral("pactl"), {QStringLiteral("--server=") + server, QStringLiteral("info")});
            if (pactl.waitForFinished(2000) && pactl.exitCode() == 0)
                return true;
            QThread::msleep(100);
        }
        return false;
    }
    ~PrivateServer()
    {
        m_daemon.terminate();
        if (!m_daemon.waitForFinished(3000))
            m_daemon.kill();
        m_daemon.waitForFinished(1000);
    }

private:
    QTemporaryDir m_dir;
    QProcess m_daemon;
};

GstElement *launchSender(const QString &description)
{
    GstElement *pipeline = gst_parse_launch(description.toUtf8().constData(), nullptr);
    GstClock *clock = gst_system_clock_obtain();
    gst_pipeline_use_clock(GST_PIPELINE(pipeline), clock);
    gst_object_unref(clock);
    gst_element_set_state(pipeline, GST_STATE_PLAYING);
    return pipeline;
}

void stopSender(GstElement *pipeline)
{
    GstIterator *it = gst_bin_iterate_sinks(GST_BIN(pipeline));
    GValue item = G_VALUE_INIT;
    while (gst_iterator_next(it, &item) == GST_ITERATOR_OK) {
        abortSender(GST_ELEMENT(g_value_get_object(&item)));
        g_value_reset(&item);
    }
    g_value_unset(&item);
    gst_iterator_free(it);
    gst_element_set_state(pipeline, GST_STATE_NULL);
    gst_object_unref(pipeline);
}

double processCpuSeconds()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return double(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
           double(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
}

QString toneSender(const char *channel, int frequency)
{
    return QStringLiteral("audiotestsrc freq=%1 volume=0.1 samplesperbuffer=480 ! %2 ! "
                          "tarnixaudiosink channel=%3 sync=true qos=false")
        .arg(frequency)
        .arg(QLatin1String(kPcm), QLatin1String(channel));
}

void benchCpu(int seconds)
{
    ProgramAudioOutput output;
    if (!output.create(nullptr, nullptr, QStringLiteral("onair")) || !startOutput(output)) {
        std::printf("cpu: the program output did not start\n");
        return;
    }
    output.setDeckAudible(0, true);
    output.setDeckAudible(1, true);
    output.setItemEq(0, 3.0, -2.0, 1.0);
    output.setMasterEq(1.0, 1.0, 1.0);
    output.setMasterDelayFrames(2);
    GstElement *senders[] = {launchSender(toneSender("deck-a-audio", 440)),
                             launchSender(toneSender("deck-b-audio", 660)),
                             launchSender(toneSender("bgm-audio", 880))};
    runFor(1000);
    const double cpuBefore = processCpuSeconds();
    QElapsedTimer wall;
    wall.start();
    runFor(seconds * 1000);
    const double percent = 100.0 * (processCpuSeconds() - cpuBefore) / (wall.elapsed() / 1000.0);
    for (GstElement *sender : senders)
        stopSender(sender);
    std::printf("%-44s %.1f %% of one core over %d s (target < %.0f %%: %s)\n",
                "cpu, program + 2 decks + BGM (process):", percent, seconds, kCpuTargetPercent,
                percent < kCpuTargetPercent ? "met" : "MISSED");
}

// A tone on deck A; the output is an appsink synchronised to the clock, so
// a buffer arrives when the sink would play it. Since the bridge keeps the
// deck's play time, arrival minus that time is the whole way from the
// deck's sink to the output.
void benchLatency()
{
    ProgramAudioOutput output;
    if (!output.create(nullptr, nullptr, QString(),
                       QStringLiteral("appsink sync=true max-buffers=0 emit-signals=false")) ||
        !startOutput(output)) {
        std::printf("latency: the program output did not start\n");
        return;
    }
    output.setDeckAudible(0, true);
    struct Shared {
        std::mutex mutex;
        std::vector<double> delays; // arrival - play time the sender gave the buffer
        GstClockTime baseTime = GST_CLOCK_TIME_NONE;
    } shared;
    GstElement *appsink = gst_bin_get_by_name(GST_BIN(output.pipeline()), "program-audio-output");
    GstAppSinkCallbacks callbacks = {};
    callbacks.new_sample = [](GstAppSink *sink, gpointer data) {
        auto *s = static_cast<Shared *>(data);
        const GstClockTime arrival = systemNow();
        GstSample *sample = gst_app_sink_pull_sample(sink);
        GstBuffer *buffer = gst_sample_get_buffer(sample);
        {
            std::lock_guard lock(s->mutex);
            // The bridge keeps the sender's play time: base + PTS is when the
            // deck's sink rendered this sound.
            if (GST_CLOCK_TIME_IS_VALID(s->baseTime) && GST_BUFFER_PTS_IS_VALID(buffer))
                s->delays.push_back((double(arrival) - double(s->baseTime + GST_BUFFER_PTS(buffer))) /
                                    1e6);
        }
        gst_sample_unref(sample);
        return GST_FLOW_OK;
    };
    shared.baseTime = gst_element_get_base_time(output.pipeline());
    gst_app_sink_set_callbacks(GST_APP_SINK(appsink), &callbacks, &shared, nullptr);

    GstElement *deck = launchSender(toneSender("deck-a-audio", 1000));
    runFor(4300);
    // The latency the pipeline configured on its sink after its query.
    const GstClockTime reported = gst_base_sink_get_latency(GST_BASE_SINK(appsink));
    GstClockTime queried = GST_CLOCK_TIME_NONE;
    GstQuery *query = gst_query_new_latency();
    if (gst_element_query(output.pipeline(), query))
        gst_query_parse_latency(query, nullptr, &queried, nullptr);
    gst_query_unref(query);
    stopSender(deck);

    std::vector<double> delays;
    {
        std::lock_guard lock(shared.mutex);
        delays = shared.delays;
    }
    gst_object_unref(appsink);
    if (delays.size() < 100 || !GST_CLOCK_TIME_IS_VALID(reported)) {
        std::printf("latency: too few buffers (%zu)\n", delays.size());
        return;
    }
    delays.erase(delays.begin(), delays.begin() + 50); // the first half second settles
    double sum = 0.0, worst = 0.0;
    for (double d : delays) {
        sum += d;
        worst = std::max(worst, std::fabs(d - double(reported) / 1e6));
    }
    std::printf("%-44s mean %.2f ms, configured %.2f ms (query %.2f ms), worst deviation %.2f ms "
                "over %zu buffers (target within %.0f ms: %s)\n",
                "latency, sender buffer to output sink:", sum / double(delays.size()),
                double(reported) / 1e6, double(queried) / 1e6, worst, delays.size(),
                kLatencyToleranceMs, worst <= kLatencyToleranceMs ? "met" : "MISSED");
}

// Reads the sink's own clock against the system clock once a second and
// fits a line: the slope's distance from 1 is the drift.
void benchDrift(const char *slaveMethod, int seconds)
{
    ProgramAudioOutput output;
    const QString sink = QStringLiteral("pulsesink slave-method=%1").arg(QLatin1String(slaveMethod));
    if (!output.create(nullptr, nullptr, QStringLiteral("onair"), sink) || !startOutput(output)) {
        std::printf("drift (%s): the program output did not start\n", slaveMethod);
        return;
    }
    output.setDeckAudible(0, true);
    GstElement *deck = launchSender(toneSender("deck-a-audio", 1000));
    GstElement *pulsesink = gst_bin_get_by_name(GST_BIN(output.pipeline()), "program-audio-output");
    GstClock *sinkClock = gst_element_provide_clock(pulsesink);
    // The slaving settles in the first seconds; the fit starts after them.
    runFor(10000);
    std::vector<double> xs, ys;
    for (int i = 0; i <= seconds; ++i) {
        xs.push_back(double(systemNow()) / 1e9);
        ys.push_back(double(gst_clock_get_internal_time(sinkClock)) / 1e9);
        runFor(1000);
    }
    stopSender(deck);
    gst_object_unref(sinkClock);
    gst_object_unref(pulsesink);
    const double n = double(xs.size());
    double mx = 0, my = 0;
    for (std::size_t i = 0; i < xs.size(); ++i) {
        mx += xs[i] / n;
        my += ys[i] / n;
    }
    double sxy = 0, sxx = 0, residual = 0;
    for (std::size_t i = 0; i < xs.size(); ++i) {
        sxy += (xs[i] - mx) * (ys[i] - my);
        sxx += (xs[i] - mx) * (xs[i] - mx);
    }
    const double slope = sxy / sxx;
    for (std::size_t i = 0; i < xs.size(); ++i)
        residual = std::max(residual, std::fabs((ys[i] - my) - slope * (xs[i] - mx)));
    std::printf("%-44s %+.1f ppm over %d s, largest deviation from the fit %.2f ms\n",
                qPrintable(QStringLiteral("drift, system clock vs sink (%1):").arg(QLatin1String(slaveMethod))),
                (slope - 1.0) * 1e6, seconds, residual * 1e3);
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    gst_init(&argc, &argv);
    int driftSeconds = 600;
    const QStringList args = app.arguments();
    for (int i = 1; i + 1 < args.size(); ++i) {
        if (args[i] == QLatin1String("--minutes"))
            driftSeconds = args[i + 1].toInt() * 60;
        else if (args[i] == QLatin1String("--seconds"))
            driftSeconds = args[i + 1].toInt();
    }
    if (!registerAudioElements()) {
        std::fprintf(stderr, "cannot register the audio elements\n");
        return 1;
    }
    PrivateServer server;
    if (!server.start()) {
        std::fprintf(stderr, "cannot start a private PulseAudio\n");
        return 1;
    }
    std::printf("audio-graph: private PulseAudio, null sink \"onair\"\n");
    std::fflush(stdout);
    benchCpu(10);
    std::fflush(stdout);
    benchLatency();
    std::fflush(stdout);
    for (const char *method : {"resample", "skew"}) {
        benchDrift(method, driftSeconds);
        std::fflush(stdout);
    }
    return 0;
}
