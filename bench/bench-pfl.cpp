// PFL as the operator's headphones get it, through the real helper on a
// private PulseAudio null sink:
//
//  - latency: when a block's sound is heard on the PFL sink's monitor minus
//    the block's presentation time. The helper aims to be heard at the
//    presentation time itself (its own stream latency, 40 ms, is taken off
//    before it writes), so the configured latency is 0 ms; target within
//    10 ms of it;
//  - its spread over the run (max - min), target under 5 ms;
//  - the helper's CPU, target under 3 % of a core.
//
// A writer thread stands in for the EDIT player: a 480-frame block every
// 10 ms, presented 100 ms after it is written, silent but for a 10 ms tone
// burst every half second. A recorder on "other.monitor" finds each burst's
// onset in what the sink renders and times it on the monotonic clock (the
// presentation clock's scale) by counting samples from its first capture.
//
// The recorder's own offset is read with --reference: the same blocks
// played by GStreamer's PulseAudio sink at their presentation times instead
// of the helper. Compare the two runs' medians: a monitor's capture
// timestamps are not exact on every server.
//
//   bench-pfl [--seconds 600] [--reference]

#include "audio/edit_pfl_feed.h"
#include "audio/edit_pfl_output.h"
#include "audio/pfl_ring_layout.h"

#include "support/private_pulse_audio.h"

#include "bench_support.h"

#include <gst/app/gstappsink.h>
#include <gst/app/gstappsrc.h>
#include <gst/gst.h>

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QTimer>

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

// GStreamer's own PulseAudio sink playing the same blocks at their
// presentation times: what the recorder reads for it is the measuring
// chain's own offset.
class ReferencePlayer
{
public:
    bool start()
    {
        GError *error = nullptr;
        m_pipeline = gst_parse_launch("appsrc name=in is-live=true format=time do-timestamp=false "
                                      "caps=audio/x-raw,format=F32LE,rate=48000,channels=2,layout=interleaved ! "
                                      "pulsesink device=other sync=true",
                                      &error);
        if (error) {
            std::fprintf(stderr, "reference: %s\n", error->message);
            g_error_free(error);
            return false;
        }
        GstClock *clock = gst_system_clock_obtain();
        gst_pipeline_use_clock(GST_PIPELINE(m_pipeline), clock);
        gst_object_unref(clock);
        m_source = gst_bin_get_by_name(GST_BIN(m_pipeline), "in");
        return gst_element_set_state(m_pipeline, GST_STATE_PLAYING) != GST_STATE_CHANGE_FAILURE;
    }
    ~ReferencePlayer()
    {
        if (m_pipeline)
            gst_element_set_state(m_pipeline, GST_STATE_NULL);
        if (m_source)
            gst_object_unref(m_source);
        if (m_pipeline)
            gst_object_unref(m_pipeline);
    }
    void play(const float *pcm, std::uint64_t presentationNs)
    {
        const gsize bytes = pfl::kFramesPerBlock * 2 * sizeof(float);
        GstBuffer *buffer = gst_buffer_new_memdup(pcm, bytes);
        const GstClockTime base = gst_element_get_base_time(m_pipeline);
        GST_BUFFER_PTS(buffer) = presentationNs > base ? presentationNs - base : 0;
        GST_BUFFER_DURATION(buffer) = kBlockNs;
        gst_app_src_push_buffer(GST_APP_SRC(m_source), buffer);
    }

private:
    GstElement *m_pipeline = nullptr;
    GstElement *m_source = nullptr;
};

void writeBlocks(EditPflFeed *feed, ReferencePlayer *reference, Bursts *bursts, std::atomic<bool> *stop)
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
        if (reference)
            reference->play(loud ? burst.data() : silence.data(), presentation);
        else
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
        m_pipeline = gst_parse_launch("pulsesrc device=other.monitor buffer-time=20000 latency-time=2000 ! "
                                      "audio/x-raw,format=F32LE,rate=48000,channels=2 ! "
                                      "appsink name=out sync=false max-buffers=1000",
                                      &error);
        if (error) {
            std::fprintf(stderr, "recorder: %s\n", error->message);
            g_error_free(error);
            return false;
        }
        GstClock *clock = gst_system_clock_obtain();
        gst_pipeline_use_clock(GST_PIPELINE(m_pipeline), clock);
        gst_object_unref(clock);
        m_sink = gst_bin_get_by_name(GST_BIN(m_pipeline), "out");
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

    // Reads what has come and returns the onsets found in it. A burst's
    // time is counted in samples from the first capture, whose timestamp
    // anchors the count once: the null sink renders at exactly 48 kHz on
    // the monotonic clock, while the capture timestamps that pulsesrc
    // re-derives for every buffer wander by tens of milliseconds and would
    // be measured instead of the helper.
    std::vector<std::uint64_t> onsets()
    {
        std::vector<std::uint64_t> found;
        while (GstSample *sample = gst_app_sink_try_pull_sample(GST_APP_SINK(m_sink), 0)) {
            GstBuffer *buffer = gst_sample_get_buffer(sample);
            const GstClockTime pts = GST_BUFFER_PTS(buffer);
            const GstClockTime base = gst_element_get_base_time(m_pipeline);
            // The buffer's first frame counted from the first capture. The
            // source's own offsets are derived from its timestamps, so they
            // are no help; a gap in the capture (marked discontinuous) sets
            // the anchor again.
            const std::uint64_t position = m_framesSeen;
            const bool gap = m_anchored && GST_BUFFER_FLAG_IS_SET(buffer, GST_BUFFER_FLAG_DISCONT);
            if (gap)
                ++m_gaps;
            if ((!m_anchored || gap) && GST_CLOCK_TIME_IS_VALID(pts)) {
                m_anchor = std::int64_t(base + pts) - std::int64_t(position * 1'000'000'000ull / 48000);
                m_anchored = true;
            }
            GstMapInfo map;
            if (m_anchored && gst_buffer_map(buffer, &map, GST_MAP_READ)) {
                const auto *samples = reinterpret_cast<const float *>(map.data);
                const std::size_t frames = map.size / (2 * sizeof(float));
                for (std::size_t frame = 0; frame < frames; ++frame) {
                    const bool loud = std::abs(samples[2 * frame]) > 0.05f;
                    if (loud && m_quietFrames >= 4800)
                        found.push_back(
                            std::uint64_t(m_anchor + std::int64_t((position + frame) * 1'000'000'000ull / 48000)));
                    m_quietFrames = loud ? 0 : m_quietFrames + 1;
                }
                m_framesSeen = position + frames;
                gst_buffer_unmap(buffer, &map);
            }
            gst_sample_unref(sample);
        }
        return found;
    }

private:
    GstElement *m_pipeline = nullptr;
    GstElement *m_sink = nullptr;
    std::size_t m_quietFrames = 0;
    std::uint64_t m_framesSeen = 0;
    std::int64_t m_anchor = 0;
    bool m_anchored = false;
    int m_gaps = 0;

public:
    int gaps() const { return m_gaps; }
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
    const bool referenceRun = QCoreApplication::arguments().contains(QStringLiteral("--reference"));

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
    ReferencePlayer reference;
    if (referenceRun && !reference.start())
        return 1;
    std::thread writer(writeBlocks, feed.get(), referenceRun ? &reference : nullptr, &bursts, &stop);

    std::printf("bench-pfl%s: %d s, a burst every %d ms, presented %d ms after it is written\n",
                referenceRun ? " (reference: GStreamer's sink)" : "", seconds,
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
    const bool heard = !all.ms.empty();
    std::printf("  latency against the configured 0 ms: %.2f ms (target within 10 ms)%s\n", median,
                heard && std::abs(median) <= 10 ? "  met" : "  NOT met");
    std::printf("  spread: %.2f ms (target under 5 ms)%s\n", spread, heard && spread < 5 ? "  met" : "  NOT met");
    std::printf("  helper CPU: %.2f %% of a core (target under 3 %%)%s\n", 100.0 * cpu / elapsed,
                100.0 * cpu / elapsed < 3 ? "  met" : "  NOT met");
    std::printf("  bursts written %zu, heard %zu, dropped blocks %u, capture gaps %d\n", bursts.presentationNs.size(),
                all.ms.size(), feed->droppedBlocks(), recorder.gaps());
    output.shutdown();
    bench::runUntil([&] { return output.hasFinished(); }, 3000);
    return 0;
}
