// A show that runs by itself on the real dual-deck player, taken ON AIR once
// and left to run through a thousand automatic transitions of every kind:
//
//   A  ends with next (a cut) to B
//   B  ends with next and a 500 ms crossfade into C
//   C  repeats twice, then next (a cut) to D
//   D  ends with goto A (a cut)
//
// with a fade to black and back every `--ftb-every` transitions. The clips'
// frames carry their numbers, and the program output is read back on every
// render to count the frames held and skipped at each boundary.
//
// Every `--report` transitions, and at the end, it prints what a long show
// must keep flat: resident memory, open file descriptors, threads, retained
// pipelines, the render rate and the largest gap between two renders since
// the last report, and the boundaries' held and skipped frames. The process
// figures are read at every transition: one reading catches the engine in
// whatever phase it is (a next file opened or not, its first frames decoded
// or not), so a report gives the window's median memory and its highest fds
// and threads.
//
//   soak-transitions [--transitions 1000] [--report 100] [--clip-ms 1000]
//                    [--ftb-every 50] [--trace FILE] [--default-allocator]
//
// Targets: the last window's median RSS within 5 % of the first window's, the
// highest fds and threads of the last window no more than the first's, no
// retained pipeline, skipped frames p95 0 and max 1, held p95 <= 1.

#include "kit/clip_generator.h"
#include "kit/item_request.h"
#include "playlist/playlist_model.h"
#include "playout/dual_deck_player.h"
#include "playout/dual_deck_program_player.h"
#include "playout/program_playout_controller.h"
#include "playout/selection_holder.h"
#include "shell/allocator_settings.h"
#include "shell/pipeline_release.h"
#include "video/program_gpu_compositor.h"

#include "bench_support.h"
#include "soak_boundary_meter.h"

#include <gst/gst.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QThread>

#include <atomic>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <mutex>

using namespace tarnix;

namespace {

template <typename Condition>
bool runUntil(Condition condition, int limitMs)
{
    QElapsedTimer timer;
    timer.start();
    while (timer.elapsed() < limitMs) {
        QApplication::processEvents(QEventLoop::AllEvents, 5);
        if (condition())
            return true;
        QThread::msleep(1);
    }
    return condition();
}

qint64 monotonicMs()
{
    timespec ts{};
    clock_gettime(CLOCK_MONOTONIC, &ts);
    return qint64(ts.tv_sec) * 1000 + ts.tv_nsec / 1000000;
}

// A 720p30 clip with a tone whose frame n shows number n in `row`. The sound
// is PCM and exactly as long as the picture (a compressed track ends on its
// own frame size), so the clip ends with its last frame.
QString numberedClip(int row, int frames)
{
    const QString path = QStringLiteral(TARNIX_BENCH_MEDIA_DIR "/soak-numbered-row%1-%2f.mkv").arg(row).arg(frames);
    const QString body =
        QStringLiteral("appsrc name=src format=time caps=video/x-raw,format=GRAY8,width=%1,height=%2,framerate=30/1 ! "
                       "videoconvert ! video/x-raw,format=I420 ! openh264enc gop-size=30 bitrate=3000000 ! "
                       "h264parse ! mux. "
                       "audiotestsrc num-buffers=%3 samplesperbuffer=1600 ! "
                       "audio/x-raw,format=S16LE,rate=48000,channels=2 ! mux. matroskamux name=mux")
            .arg(soak::kCodeWidth)
            .arg(soak::kCodeHeight)
            .arg(frames);
    const bool made = bench::generateMedia(path, body, [row, frames](GstElement *pipeline) {
        GstElement *src = gst_bin_get_by_name(GST_BIN(pipeline), "src");
        const gsize size = gsize(soak::kCodeWidth) * soak::kCodeHeight;
        for (int n = 0; n < frames; ++n) {
            GstBuffer *buffer = gst_buffer_new_allocate(nullptr, size, nullptr);
            GstMapInfo map{};
            gst_buffer_map(buffer, &map, GST_MAP_WRITE);
            soak::paintNumberedFrame(map.data, row, n);
            gst_buffer_unmap(buffer, &map);
            GST_BUFFER_PTS(buffer) = gst_util_uint64_scale(guint64(n), GST_SECOND, 30);
            GST_BUFFER_DURATION(buffer) = gst_util_uint64_scale(1, GST_SECOND, 30);
            GstFlowReturn flow = GST_FLOW_OK;
            g_signal_emit_by_name(src, "push-buffer", buffer, &flow);
            gst_buffer_unref(buffer);
        }
        GstFlowReturn flow = GST_FLOW_OK;
        g_signal_emit_by_name(src, "end-of-stream", &flow);
        gst_object_unref(src);
    });
    return made ? path : QString();
}

// Reads every program render on the frame clock's thread: the numbers the
// rows show go to the meter, the time since the previous render to the
// window's largest gap.
struct OutputReader {
    std::mutex mutex;
    soak::BoundaryMeter meter;
    qint64 lastRenderMs = -1;
    std::atomic<qint64> largestGapMs{0};
    // Set by the show while a fade to black runs, down or back up.
    std::atomic<bool> underFade{false};
    // With --trace: one line per render (time, render number, the rows'
    // numbers) and one per transition, to look at a boundary closely.
    FILE *trace = nullptr;

    explicit OutputReader(std::array<int, soak::kRows> frames) : meter(frames) {}

    void add(const ProgramTapFrame &frame)
    {
        std::array<int, soak::kRows> shown{};
        for (int row = 0; row < soak::kRows; ++row)
            shown[std::size_t(row)] = soak::readFrameNumber(frame.pixels, frame.width, frame.height, frame.stride, row);
        const qint64 now = monotonicMs();
        if (lastRenderMs >= 0 && now - lastRenderMs > largestGapMs.load())
            largestGapMs.store(now - lastRenderMs);
        lastRenderMs = now;
        std::lock_guard lock(mutex);
        meter.add(frame.sequence, shown, !underFade.load());
        if (trace)
            std::fprintf(trace, "%lld render %llu %d %d %d %d\n", static_cast<long long>(now),
                         static_cast<unsigned long long>(frame.sequence), shown[0], shown[1], shown[2], shown[3]);
    }

    soak::BoundaryFigures take()
    {
        std::lock_guard lock(mutex);
        soak::BoundaryFigures figures = meter.figures();
        meter.figures().clear();
        return figures;
    }
};

struct SideSummary {
    std::size_t count = 0;
    double heldP95 = 0;
    double heldMax = 0;
    double skippedP95 = 0;
    double skippedMax = 0;
};

SideSummary summarise(const std::vector<soak::BoundarySide> &sides)
{
    SideSummary summary;
    summary.count = sides.size();
    std::vector<double> held;
    std::vector<double> skipped;
    for (const soak::BoundarySide &side : sides) {
        held.push_back(side.held);
        skipped.push_back(side.skipped);
    }
    summary.heldP95 = bench::percentile(held, 0.95);
    summary.skippedP95 = bench::percentile(skipped, 0.95);
    summary.heldMax = held.empty() ? 0 : *std::max_element(held.begin(), held.end());
    summary.skippedMax = skipped.empty() ? 0 : *std::max_element(skipped.begin(), skipped.end());
    return summary;
}

void append(soak::BoundaryFigures &into, const soak::BoundaryFigures &from)
{
    for (int kind = 0; kind < 2; ++kind) {
        into.entering[kind].insert(into.entering[kind].end(), from.entering[kind].begin(), from.entering[kind].end());
        into.leaving[kind].insert(into.leaving[kind].end(), from.leaving[kind].begin(), from.leaving[kind].end());
    }
    into.fromOrIntoBlack += from.fromOrIntoBlack;
    into.skippedWithinClips += from.skippedWithinClips;
    into.heldWithinClips += from.heldWithinClips;
}

void printBoundaries(const char *label, const soak::BoundaryFigures &figures)
{
    static const char *kinds[2] = {"cut", "crossfade"};
    for (int kind = 0; kind < 2; ++kind) {
        const SideSummary in = summarise(figures.entering[kind]);
        const SideSummary out = summarise(figures.leaving[kind]);
        std::printf("  %s %-9s  entering %4zu: held p95 %.0f max %.0f, skipped p95 %.0f max %.0f | "
                    "leaving %4zu: held p95 %.0f max %.0f, skipped p95 %.0f max %.0f\n",
                    label, kinds[kind], in.count, in.heldP95, in.heldMax, in.skippedP95, in.skippedMax, out.count,
                    out.heldP95, out.heldMax, out.skippedP95, out.skippedMax);
    }
    std::printf("  %s within clips: %d skipped, %d held; %d boundaries from or into black or under a fade to "
                "black not judged\n",
                label,
                figures.skippedWithinClips, figures.heldWithinClips, figures.fromOrIntoBlack);
}

// Judged where the meter sees every frame: both sides of a cut, and the held
// frames of a clip crossfaded in. The first frame or two of a crossfade come
// in below the meter's sensitivity (under 3 % of their level), so their
// "skipped" is reported, not judged; and the clip going out of an end
// crossfade stands on its last frame for the whole crossfade, as the end
// mode does by design.
// A window's median memory and its highest fds and threads.
bench::ProcessFigures windowSummary(const std::vector<bench::ProcessFigures> &samples)
{
    std::vector<double> rss;
    std::vector<double> heap;
    std::vector<double> held;
    bench::ProcessFigures summary;
    for (const bench::ProcessFigures &sample : samples) {
        rss.push_back(sample.rssMb);
        heap.push_back(sample.heapMb);
        held.push_back(sample.heldFreeMb);
        summary.fds = std::max(summary.fds, sample.fds);
        summary.threads = std::max(summary.threads, sample.threads);
    }
    summary.rssMb = bench::percentile(rss, 0.5);
    summary.heapMb = bench::percentile(heap, 0.5);
    summary.heldFreeMb = bench::percentile(held, 0.5);
    return summary;
}

bool boundariesMeetTargets(const soak::BoundaryFigures &figures)
{
    const auto meets = [](const SideSummary &summary, bool judgeSkipped) {
        return summary.heldP95 <= 1 && (!judgeSkipped || (summary.skippedP95 <= 0 && summary.skippedMax <= 1));
    };
    return meets(summarise(figures.entering[0]), true) && meets(summarise(figures.leaving[0]), true)
           && meets(summarise(figures.entering[1]), false);
}

} // namespace

int main(int argc, char **argv)
{
    // As the application does, unless the run compares with glibc's own
    // behaviour (--default-allocator).
    bool defaultAllocator = false;
    for (int i = 1; i < argc; ++i)
        defaultAllocator = defaultAllocator || std::strcmp(argv[i], "--default-allocator") == 0;
    if (!defaultAllocator)
        settleAllocatorForLongRuns();
    if (qEnvironmentVariableIsEmpty("DISPLAY"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    gst_init(&argc, &argv);

    const QStringList args = app.arguments();
    const auto argument = [&args](const char *name, int fallback) {
        const qsizetype at = args.indexOf(QLatin1String(name));
        return at >= 0 && at + 1 < args.size() ? args.at(at + 1).toInt() : fallback;
    };
    const int transitions = std::max(1, argument("--transitions", 1000));
    const int report = std::max(1, argument("--report", 100));
    const int clipMs = std::clamp(argument("--clip-ms", 1000), 700, soak::kMaxFrames * 1000 / 30);
    const int ftbEvery = std::max(0, argument("--ftb-every", 50));
    const int frames = clipMs * 30 / 1000;
    const qsizetype traceAt = args.indexOf(QLatin1String("--trace"));
    const QString tracePath = traceAt >= 0 && traceAt + 1 < args.size() ? args.at(traceAt + 1) : QString();

    std::array<QString, soak::kRows> clips;
    for (int row = 0; row < soak::kRows; ++row) {
        clips[std::size_t(row)] = numberedClip(row, frames);
        if (clips[std::size_t(row)].isEmpty())
            return 1;
    }

    auto reader = std::make_shared<OutputReader>(std::array<int, soak::kRows>{frames, frames, frames, frames});
    if (!tracePath.isEmpty() && !(reader->trace = std::fopen(qPrintable(tracePath), "w"))) {
        std::fprintf(stderr, "soak-transitions: cannot write %s\n", qPrintable(tracePath));
        return 1;
    }
    DualDeckPlayerOptions options;
    options.deckTimings.width = soak::kCodeWidth;
    options.deckTimings.height = soak::kCodeHeight;
    options.audioSinkFactory = QStringLiteral("fakesink sync=true");
    options.frameTap = [reader](const ProgramTapFrame &frame) { reader->add(frame); };
    auto owned = std::make_unique<DualDeckPlayer>(options);
    DualDeckPlayer *player = owned.get();
    if (!player->isInitialized()) {
        std::fprintf(stderr, "soak-transitions: the player did not start: %s\n",
                     qPrintable(player->initializationError()));
        return 1;
    }

    PlaylistModel model;
    const QList<quint64> ids = model.addItems({testkit::ItemRequest(clips[0]).playing().endMode(PlaylistEndMode::next),
                                               testkit::ItemRequest(clips[1]).playing().endMode(PlaylistEndMode::next),
                                               testkit::ItemRequest(clips[2]).playing(),
                                               testkit::ItemRequest(clips[3]).playing()});
    if (ids.size() != soak::kRows) {
        std::fprintf(stderr, "soak-transitions: the model refused the clips\n");
        return 1;
    }
    PlaylistItemSettings b = model.item(ids[1])->settings;
    b.endCrossfade.enabled = true;
    b.endCrossfade.durationMs = 500;
    PlaylistItemSettings c = model.item(ids[2])->settings;
    c.endMode = PlaylistEndMode::repeat;
    c.repeatCount = 2;
    c.repeatEndMode = PlaylistRepeatEndMode::next;
    PlaylistItemSettings d = model.item(ids[3])->settings;
    d.endMode = PlaylistEndMode::goto_;
    d.gotoTargetItemId = ids[0];
    if (!model.setItemSettings(ids[1], b) || !model.setItemSettings(ids[2], c) || !model.setItemSettings(ids[3], d)) {
        std::fprintf(stderr, "soak-transitions: the model refused the end modes\n");
        return 1;
    }

    SelectionHolder selection(&model, nullptr);
    ProgramPlayoutController controller(std::make_unique<DualDeckProgramPlayer>(std::move(owned)), &model,
                                        &selection, nullptr, nullptr, nullptr);
    if (!runUntil([&] { return player->isPresenterRunning() && player->audioOutput()->hasUsableDevice(); }, 10000)) {
        std::fprintf(stderr, "soak-transitions: the program output did not come up\n");
        return 1;
    }
    selection.selectByOperator(ids[0]);
    if (!runUntil([&] { return model.cueState() == PlaylistCueState::Ready; }, 10000) || !controller.takeOnAir()) {
        std::fprintf(stderr, "soak-transitions: the first clip could not be taken\n");
        return 1;
    }

    std::printf("soak-transitions: %d transitions, clips of %d ms (%d frames), fade to black every %d, report every "
                "%d\n",
                transitions, clipMs, frames, ftbEvery, report);
    std::printf("%11s %11s %9s %9s %8s %12s %9s %10s %8s %5s\n", "transitions", "rss MB p50", "heap MB",
                "free MB", "fds max",
                "threads max",
                "retained", "renders/s", "gap ms", "ftb");
    std::fflush(stdout);

    ProgramGpuCompositor *compositor = player->compositor();
    quint64 lastItem = controller.onAirItemId();
    int lastRepeat = controller.repeatDisplayCount();
    int done = 0;
    int ftbCycles = 0;
    int nextFtbAt = ftbEvery > 0 ? ftbEvery : -1;
    enum class Ftb { off, fadingOut, fadingIn } ftb = Ftb::off;
    bench::ProcessFigures baseline;
    bench::ProcessFigures last;
    std::vector<bench::ProcessFigures> windowFigures;
    soak::BoundaryFigures whole;
    QElapsedTimer window;
    window.start();
    quint64 rendersAtWindow = compositor->renderCount();
    const qint64 perTransitionLimitMs = 4 * clipMs + 10000;
    QElapsedTimer sinceLast;
    sinceLast.start();
    while (done < transitions) {
        QApplication::processEvents(QEventLoop::AllEvents, 5);
        QThread::msleep(1);
        const quint64 item = controller.onAirItemId();
        const int repeat = controller.repeatDisplayCount();
        const bool changed = item != 0 && (item != lastItem || repeat != lastRepeat);
        lastItem = item;
        lastRepeat = repeat;

        // Fade to black between transitions: down, and back up once black.
        if (ftb == Ftb::off && nextFtbAt > 0 && done >= nextFtbAt) {
            reader->underFade.store(true);
            controller.toggleFtb();
            ftb = Ftb::fadingOut;
            nextFtbAt += ftbEvery;
        } else if (ftb == Ftb::fadingOut && controller.isFtbActive() && controller.ftbLevel() >= 1.0) {
            controller.toggleFtb();
            ftb = Ftb::fadingIn;
        } else if (ftb == Ftb::fadingIn && !controller.isFtbActive() && controller.ftbLevel() <= 0.0) {
            reader->underFade.store(false);
            ftb = Ftb::off;
            ++ftbCycles;
        }

        if (changed) {
            if (reader->trace) {
                std::lock_guard lock(reader->mutex);
                std::fprintf(reader->trace, "%lld transition item %llu repeat %d\n",
                             static_cast<long long>(monotonicMs()), static_cast<unsigned long long>(item), repeat);
            }
            ++done;
            sinceLast.restart();
            windowFigures.push_back(bench::processFigures());
            if (done % report == 0 || done == transitions) {
                const bench::ProcessFigures figures = windowSummary(windowFigures);
                windowFigures.clear();
                const double seconds = double(window.nsecsElapsed()) / 1e9;
                const quint64 renders = compositor->renderCount();
                std::printf("%11d %11.1f %9.1f %9.1f %8d %12d %9zu %10.1f %8lld %5d\n", done, figures.rssMb,
                            figures.heapMb, figures.heldFreeMb,
                            figures.fds, figures.threads, retainedCount(), double(renders - rendersAtWindow) / seconds,
                            static_cast<long long>(reader->largestGapMs.exchange(0)), ftbCycles);
                const soak::BoundaryFigures boundaries = reader->take();
                printBoundaries("   ", boundaries);
                append(whole, boundaries);
                std::fflush(stdout);
                if (done == report)
                    baseline = figures;
                last = figures;
                window.restart();
                rendersAtWindow = renders;
            }
        }
        if (sinceLast.elapsed() > perTransitionLimitMs) {
            std::fprintf(stderr, "soak-transitions: no transition for %lld ms after %d (on air: %llu)\n",
                         static_cast<long long>(sinceLast.elapsed()), done,
                         static_cast<unsigned long long>(controller.onAirItemId()));
            return 1;
        }
    }

    std::printf("\nafter %d transitions (%d fades to black):\n", transitions, ftbCycles);
    printBoundaries("all", whole);
    if (baseline.rssMb > 0 && transitions > report) {
        const double growth = 100.0 * (last.rssMb - baseline.rssMb) / baseline.rssMb;
        std::printf("median RSS of the last window vs the first: %+.1f %% (target under 5 %%) %s\n", growth,
                    growth < 5.0 ? "PASS" : "FAIL");
        std::printf("highest fds %d -> %d, threads %d -> %d (target flat) %s\n", baseline.fds, last.fds,
                    baseline.threads,
                    last.threads, last.fds <= baseline.fds && last.threads <= baseline.threads ? "PASS" : "FAIL");
    }
    std::printf("retained pipelines %zu (target 0) %s\n", retainedCount(), retainedCount() == 0 ? "PASS" : "FAIL");
    std::printf("boundaries (cuts; held frames of crossfades coming in): skipped p95 0 and max 1, held p95 <= 1 %s\n",
                boundariesMeetTargets(whole) ? "PASS" : "FAIL");
    std::fflush(stdout);
    controller.offAir();
    controller.shutdown();
    runUntil([&] { return player->isShutdownFinished(); }, 10000);
    if (reader->trace)
        std::fclose(reader->trace);
    return 0;
}
