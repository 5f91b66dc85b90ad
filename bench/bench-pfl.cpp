// PFL as the operator's headphones get it, through the real helper on a
// private PulseAudio null sink:
//
//  - latency: when a block's sound reaches the PFL sink's monitor minus the
//    block's presentation time; the helper is configured to play every
//    block its playout latency (50 ms) after its presentation time, target
//    within 10 ms of that;
//  - its spread over the run (max - min), target under 5 ms;
//  - the helper's CPU, target under 3 % of a core.
//
// A writer thread stands in for the EDIT player: a 480-frame block every
// 10 ms, presented 100 ms after it is written, silent but for a 10 ms tone
// burst every half second. A recorder on "other.monitor" finds each burst's
// onset by counting the samples the sink renders. The count becomes a time
// through the sink's steady 48 kHz and one anchor: the median, over the
// first 1000 captured buffers, of when each buffer arrived less the time
// its samples take. So the latency is when the sound typically reaches the
// monitor, and the spread is the helper's alone (the null sink renders in
// bursts of its own; their jitter is not the helper's).
//
//   bench-pfl [--seconds 600] [--each]   (--each prints every burst's latency)

#include "audio/edit_pfl_feed.h"
#include "audio/edit_pfl_output.h"
#include "audio/pfl_ring_layout.h"

#include "support/private_pulse_audio.h"

#include "bench_support.h"

#include <gst/app/gstappsink.h>
#include <gst/gst.h>

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QTimer>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <mutex>
#include <thread>
#include <vector>

#include <unistd.h>

using namespace tarnix;

namespace {

constexpr std::uint64_t kBlockNs = 10'000'000;
constexpr std::uint64_t kLeadNs = 100'000'000;
constexpr int kBlocksPerBurst = 50;

std::uint64_t nowNs()
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return std::uint64_t(now.tv_sec) * 1'000'000'000ull + std::uint64_t(now.tv_nsec);
}

// The presentation times of the bursts, as the writer stamped them.
struct Bursts {
    std::mutex mutex;
    std::vector<std::uint64_t> presentationNs;
};

void writeBlocks(EditPflFeed *feed, Bursts *bursts, std::atomic<bool> *stop)
{
    std::vector<float> silence(pfl::kFramesPerBlock * 2, 0.0f);
    std::vector<float> burst(pfl::kFramesPerBlock * 2);
    for (std::uint32_t frame = 0; frame < pfl::kFramesPerBlock; ++frame)
        burst[2 * frame] = burst[2 * frame + 1] = 0.5f * float(std::sin(2.0 * M_PI * 1000.0 * frame / 48000.0 + 0.5));
    const std::uint64_t start = nowNs();
    for (std::uint64_t block = 0; !stop->load(); ++block) {
        const std::uint64_t due = start + block * kBlockNs;
        timespec at{time_t(due / 1'000'000'000ull), long(due % 1'000'000'000ull)};
        clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &at, nullptr);
        const bool loud = block % kBlocksPerBurst == 0;
        const std::uint64_t presentation = due + kLeadNs;
        if (loud) {
            std::lock_guard lock(bursts->mutex);
            bursts->presentationNs.push_back(presentation);
        }
        feed->writeBuffer(loud ? burst.data() : silence.data(), pfl::kFramesPerBlock, presentation,
                          feed->generation());
    }
}

// Onsets heard on the monitor, in monotonic ns.
class MonitorRecorder
{
public:
    bool start()
    {
        GError *error = nullptr;
        m_pipeline = gst_parse_launch("pulsesrc device=other.monitor buffer-time=200000 latency-time=2000 ! "
                                      "audio/x-raw,format=F32LE,rate=48000,channels=2 ! "
                                      "appsink name=out sync=false max-buffers=1000",
                                      &error);
        if (error) {
            std::fprintf(stderr, "recorder: %s\n", error->message);
            g_error_free(error);
            return false;
        }
        m_sink = gst_bin_get_by_name(GST_BIN(m_pipeline), "out");
        // Arrival times, taken on the streaming thread as each buffer comes.
        GstPad *pad = gst_element_get_static_pad(m_sink, "sink");
        gst_pad_add_probe(
            pad, GST_PAD_PROBE_TYPE_BUFFER,
            [](GstPad *, GstPadProbeInfo *info, gpointer data) {
                auto *self = static_cast<MonitorRecorder *>(data);
                const std::uint64_t frames = gst_buffer_get_size(GST_PAD_PROBE_INFO_BUFFER(info)) / (2 * sizeof(float));
                std::lock_guard lock(self->m_arrivalMutex);
                self->m_framesArrived += frames;
                if (self->m_arrivals.size() < kAnchorBuffers)
                    self->m_arrivals.push_back(std::int64_t(nowNs())
                                               - std::int64_t(self->m_framesArrived * 1'000'000'000ull / 48000));
                return GST_PAD_PROBE_OK;
            },
            this, nullptr);
        gst_object_unref(pad);
        return gst_element_set_state(m_pipeline, GST_STATE_PLAYING) != GST_STATE_CHANGE_FAILURE;
    }

    ~MonitorRecorder()
    {
        if (m_pipeline)
            gst_element_set_state(m_pipeline, GST_STATE_NULL);
        if (m_sink)
            gst_object_unref(m_sink);
        if (m_pipeline)
            gst_object_unref(m_pipeline);
    }

    // Reads what has come and returns the onsets found in it, once the
    // anchor stands (until then they wait).
    std::vector<std::uint64_t> onsets()
    {
        while (GstSample *sample = gst_app_sink_try_pull_sample(GST_APP_SINK(m_sink), 0)) {
            GstBuffer *buffer = gst_sample_get_buffer(sample);
            if (m_framesSeen > 0 && GST_BUFFER_FLAG_IS_SET(buffer, GST_BUFFER_FLAG_DISCONT))
                ++m_gaps;
            GstMapInfo map;
            if (gst_buffer_map(buffer, &map, GST_MAP_READ)) {
                const auto *samples = reinterpret_cast<const float *>(map.data);
                const std::size_t frames = map.size / (2 * sizeof(float));
                for (std::size_t frame = 0; frame < frames; ++frame) {
                    const bool loud = std::abs(samples[2 * frame]) > 0.05f;
                    if (loud && m_quietFrames >= 4800)
                        m_onsetFrames.push_back(m_framesSeen + frame);
                    m_quietFrames = loud ? 0 : m_quietFrames + 1;
                }
                m_framesSeen += frames;
                gst_buffer_unmap(buffer, &map);
            }
            gst_sample_unref(sample);
        }
        std::vector<std::uint64_t> found;
        if (!anchored())
            return found;
        for (std::uint64_t frame : m_onsetFrames)
            found.push_back(std::uint64_t(m_anchor + std::int64_t(frame * 1'000'000'000ull / 48000)));
        m_onsetFrames.clear();
        return found;
    }

    int gaps() const { return m_gaps; }

private:
    static constexpr std::size_t kAnchorBuffers = 1000;

    bool anchored()
    {
        if (m_anchorKnown)
            return true;
        std::lock_guard lock(m_arrivalMutex);
        if (m_arrivals.size() < kAnchorBuffers)
            return false;
        std::vector<std::int64_t> sorted = m_arrivals;
        std::nth_element(sorted.begin(), sorted.begin() + sorted.size() / 2, sorted.end());
        m_anchor = sorted[sorted.size() / 2];
        m_anchorKnown = true;
        return true;
    }

    GstElement *m_pipeline = nullptr;
    GstElement *m_sink = nullptr;
    std::size_t m_quietFrames = 0;
    std::uint64_t m_framesSeen = 0;
    std::vector<std::uint64_t> m_onsetFrames;
    std::mutex m_arrivalMutex;
    std::uint64_t m_framesArrived = 0;
    // Per buffer: its arrival less the time of all the frames up to its end,
    // i.e. when the first captured frame would have arrived by that buffer.
    std::vector<std::int64_t> m_arrivals;
    std::int64_t m_anchor = 0;
    bool m_anchorKnown = false;
    int m_gaps = 0;
};

qint64 helperPid()
{
    const QString self = QString::number(getpid());
    for (const QString &entry : QDir(QStringLiteral("/proc")).entryList(QDir::Dirs)) {
        QFile stat(QStringLiteral("/proc/%1/stat").arg(entry));
        if (!stat.open(QIODevice::ReadOnly))
            continue;
        const QByteArray line = stat.readAll();
        const QList<QByteArray> fields = line.mid(line.lastIndexOf(')') + 2).split(' ');
        QFile command(QStringLiteral("/proc/%1/cmdline").arg(entry));
        if (fields.value(1) == self.toLatin1() && command.open(QIODevice::ReadOnly)
            && command.readAll().contains("/tarnix-edit-pfl-"))
            return entry.toLongLong();
    }
    return 0;
}

// User plus system time of a process, in seconds.
double cpuSeconds(qint64 pid)
{
    QFile stat(QStringLiteral("/proc/%1/stat").arg(pid));
    if (!stat.open(QIODevice::ReadOnly))
        return 0;
    const QByteArray line = stat.readAll();
    const QList<QByteArray> fields = line.mid(line.lastIndexOf(')') + 2).split(' ');
    return (fields.value(11).toDouble() + fields.value(12).toDouble()) / double(sysconf(_SC_CLK_TCK));
}

struct Latencies {
    std::vector<double> ms;
    void report(const char *label) const
    {
        if (ms.empty()) {
            std::printf("  %-12s no burst heard\n", label);
            return;
        }
        std::printf("  %-12s %5zu bursts  p50 %6.2f  min %6.2f  max %6.2f  spread %5.2f ms\n", label, ms.size(),
                    bench::percentile(ms, 0.5), bench::percentile(ms, 0.0), bench::percentile(ms, 1.0),
                    bench::percentile(ms, 1.0) - bench::percentile(ms, 0.0));
        std::fflush(stdout);
    }
};

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    gst_init(&argc, &argv);
    const int seconds = bench::argument("--seconds", 600);
    const bool eachBurst = QCoreApplication::arguments().contains(QStringLiteral("--each"));

    test::PrivatePulseAudio pulse;
    QString error;
    if (!pulse.start(&error)) {
        std::fprintf(stderr, "bench-pfl: no sound server: %s\n", qPrintable(error));
        return 1;
    }
    std::shared_ptr<EditPflFeed> feed = EditPflFeed::create(&error);
    if (!feed->hasView()) {
        std::fprintf(stderr, "bench-pfl: %s\n", qPrintable(error));
        return 1;
    }
    EditPflOutput::Options options;
    options.helperPath = QCoreApplication::applicationDirPath() + QStringLiteral("/../bin/tarnix-pfl-output");
    EditPflOutput output(feed, options);
    output.setDeviceId(QStringLiteral("other"));
    output.setEnabled(true);
    if (!bench::runUntil([&] { return output.isActive(); }, 5000)) {
        std::fprintf(stderr, "bench-pfl: the helper did not come up: %s\n", qPrintable(output.statusText()));
        return 1;
    }
    feed->setSourceActive(true);
    MonitorRecorder recorder;
    if (!recorder.start())
        return 1;
    const qint64 helper = helperPid();

    Bursts bursts;
    std::atomic<bool> stop{false};
    std::thread writer(writeBlocks, feed.get(), &bursts, &stop);

    std::printf("bench-pfl: %d s, a burst every %d ms, presented %d ms after it is written\n", seconds,
                int(kBlocksPerBurst * kBlockNs / 1'000'000), int(kLeadNs / 1'000'000));
    Latencies all;
    Latencies minute;
    QElapsedTimer run;
    run.start();
    const double cpuAtStart = cpuSeconds(helper);
    std::size_t matchedUpTo = 0;
    while (run.elapsed() < qint64(seconds) * 1000) {
        // Idle between looks, so the bench itself does not crowd the helper.
        QEventLoop pause;
        QTimer::singleShot(200, &pause, &QEventLoop::quit);
        pause.exec();
        for (std::uint64_t heard : recorder.onsets()) {
            std::lock_guard lock(bursts.mutex);
            // The nearest burst presented before it was heard, within 250 ms.
            for (std::size_t i = matchedUpTo; i < bursts.presentationNs.size(); ++i) {
                const double ms = (double(heard) - double(bursts.presentationNs[i])) / 1e6;
                if (ms < -250)
                    break;
                if (ms <= 250) {
                    if (eachBurst)
                        std::printf("    burst %zu heard at %+.2f ms\n", i, ms);
                    all.ms.push_back(ms);
                    minute.ms.push_back(ms);
                    matchedUpTo = i + 1;
                    break;
                }
            }
        }
        if (run.elapsed() / 60000 != (run.elapsed() - 200) / 60000) {
            minute.report(QStringLiteral("minute %1").arg(run.elapsed() / 60000).toLatin1().constData());
            minute.ms.clear();
        }
    }
    const double cpu = cpuSeconds(helper) - cpuAtStart;
    const double elapsed = double(run.elapsed()) / 1000.0;
    stop = true;
    writer.join();

    std::printf("results:\n");
    all.report("whole run");
    const double median = bench::percentile(all.ms, 0.5);
    const double spread = bench::percentile(all.ms, 1.0) - bench::percentile(all.ms, 0.0);
    // A gap in the capture breaks the count the times come from.
    const bool heard = !all.ms.empty() && recorder.gaps() == 0;
    const double configured = double(pfl::kPlayoutLatencyNs) / 1e6;
    std::printf("  latency against the configured %.0f ms: %.2f ms (target within 10 ms)%s\n", configured, median,
                heard && std::abs(median - configured) <= 10 ? "  met" : "  NOT met");
    std::printf("  spread: %.2f ms (target under 5 ms)%s\n", spread, heard && spread < 5 ? "  met" : "  NOT met");
    std::printf("  helper CPU: %.2f %% of a core (target under 3 %%)%s\n", 100.0 * cpu / elapsed,
                100.0 * cpu / elapsed < 3 ? "  met" : "  NOT met");
    std::printf("  bursts written %zu, heard %zu, dropped blocks %u, capture gaps %d\n", bursts.presentationNs.size(),
                all.ms.size(), feed->droppedBlocks(), recorder.gaps());
    output.shutdown();
    bench::runUntil([&] { return output.hasFinished(); }, 3000);
    return 0;
}
