// Figures of the ON AIR controller on the real player at 1920 x 1080:
//
//  1. standby prepare-to-ready as the operator sees it: from a selection to
//     the moment the item is marked ready, for a 1080p30 H.264 file with an
//     In point one frame before a keyframe, alternating two In points so that
//     every selection prepares anew; p50/p95/max over the runs; target p95 at
//     most 300 ms plus one tick (100 ms), well inside the 1000 ms in which a
//     successor is cued before its predecessor ends.
//
//  2. the loop point of a file that repeats without crossfade: a one-second
//     30 fps clip whose every frame carries its number as a flat grey level
//     repeats endlessly; the compositor's frame tap tells, per output frame,
//     which clip frame it shows. At each loop point, frames held is how many
//     output frames more than their due the last frame of one pass and the
//     first of the next stood on the program (each is due for two at 60 Hz);
//     frames skipped is how many clip frames around the loop point never
//     reached the program. p50/p95/max over the loops; targets p95 at most
//     1 held and 0 skipped.
//
// "--runs N" changes the number of selections (default 20), "--loops N" the
// number of loop points (default 50).

#include "kit/item_request.h"
#include "control/controller_operations.h"
#include "playlist/playlist_model.h"
#include "playout/dual_deck_player.h"
#include "playout/dual_deck_program_player.h"
#include "playout/program_playout_controller.h"
#include "playout/selection_holder.h"

#include "bench_support.h"

#include <gst/gst.h>

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QThread>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <memory>
#include <mutex>
#include <vector>

using namespace tarnix;

namespace {

constexpr double kTargetP95Ms = 300.0 + 100.0;
constexpr int kClipFrames = 30;
// Clip frame n is the grey level kGreyBase + kGreyStep * n, clear of black
// (the background) and of white. The decoder reads the file as video range
// and the program shows it expanded to full range.
constexpr int kGreyBase = 32;
constexpr int kGreyStep = 6;

double shownGrey(int n)
{
    return (kGreyBase + kGreyStep * n - 16) * 255.0 / 219.0;
}
// Output frames per clip frame: 60 Hz program, 30 fps clip.
constexpr int kDueOutputFrames = 2;
// Clip frames on each side of a loop point that must all be shown.
constexpr int kEdgeFrames = 5;
// Keyframes every 30 frames at 30 fps: 4967 ms and 1967 ms start one frame
// before the keyframes at 5 s and 2 s.
constexpr qint64 kInPointsMs[2] = {4967, 1967};

template <typename Condition>
bool runUntil(Condition condition, int limitMs)
{
    QElapsedTimer timer;
    timer.start();
    while (timer.elapsed() < limitMs) {
        QApplication::processEvents(QEventLoop::AllEvents, 2);
        if (condition())
            return true;
        QThread::msleep(1);
    }
    return condition();
}

// One second at 30 fps, 320 x 180, whose frame n is a flat grey of level
// kGreyBase + kGreyStep * n, written through appsrc.
bool generateNumberedClip(const QString &path)
{
    const QString body = QStringLiteral(
        "appsrc name=src format=time caps=video/x-raw,format=GRAY8,width=320,height=180,framerate=30/1 ! "
        "videoconvert ! video/x-raw,format=I420 ! openh264enc gop-size=30 ! h264parse ! mp4mux");
    return bench::generateMedia(path, body, [](GstElement *pipeline) {
        GstElement *src = gst_bin_get_by_name(GST_BIN(pipeline), "src");
        for (int n = 0; n < kClipFrames; ++n) {
            GstBuffer *buffer = gst_buffer_new_allocate(nullptr, 320 * 180, nullptr);
            GstMapInfo map;
            gst_buffer_map(buffer, &map, GST_MAP_WRITE);
            std::memset(map.data, kGreyBase + kGreyStep * n, map.size);
            gst_buffer_unmap(buffer, &map);
            GST_BUFFER_PTS(buffer) = gst_util_uint64_scale(n, GST_SECOND, 30);
            GST_BUFFER_DURATION(buffer) = gst_util_uint64_scale(1, GST_SECOND, 30);
            GstFlowReturn flow = GST_FLOW_OK;
            g_signal_emit_by_name(src, "push-buffer", buffer, &flow);
            gst_buffer_unref(buffer);
        }
        GstFlowReturn flow = GST_FLOW_OK;
        g_signal_emit_by_name(src, "end-of-stream", &flow);
        gst_object_unref(src);
    });
}

// The clip frame each program frame showed (-1: anything else), written on
// the frame clock's thread.
class ShownFrames
{
public:
    void add(const ProgramTapFrame &frame)
    {
        const quint8 *p = frame.pixels + std::size_t(frame.height / 2) * frame.stride + 4 * std::size_t(frame.width / 2);
        const bool grey = std::abs(int(p[0]) - int(p[1])) < 12 && std::abs(int(p[1]) - int(p[2])) < 12;
        int index = -1;
        for (int n = 0; grey && n < kClipFrames; ++n) {
            if (std::abs(double(p[1]) - shownGrey(n)) <= 3.0)
                index = n;
        }
        std::lock_guard lock(m_mutex);
        if (m_recording)
            m_frames.push_back(index);
    }
    void start()
    {
        std::lock_guard lock(m_mutex);
        m_recording = true;
        m_frames.clear();
    }
    std::vector<int> stop()
    {
        std::lock_guard lock(m_mutex);
        m_recording = false;
        return std::move(m_frames);
    }

private:
    std::mutex m_mutex;
    bool m_recording = false;
    std::vector<int> m_frames;
};

struct LoopPoint {
    double held = 0;
    double skipped = 0;
};

// Cuts the shown frames into runs of one clip frame and looks at every
// place where the clip starts again. Anything else shown between the end of
// one pass and the start of the next counts as held.
std::vector<LoopPoint> loopPoints(const std::vector<int> &frames)
{
    struct Run {
        int index;
        int count;
    };
    std::vector<Run> runs;
    for (int index : frames) {
        if (!runs.empty() && runs.back().index == index)
            ++runs.back().count;
        else
            runs.push_back({index, 1});
    }
    const auto atEnd = [](const Run &run) { return run.index >= kClipFrames - kEdgeFrames && run.index < kClipFrames; };
    const auto atStart = [](const Run &run) { return run.index >= 0 && run.index < kEdgeFrames; };
    std::vector<LoopPoint> points;
    for (std::size_t i = 1; i < runs.size(); ++i) {
        if (!atEnd(runs[i - 1]) || atEnd(runs[i]))
            continue;
        std::size_t next = i;
        int between = 0;
        while (next < runs.size() && runs[next].index < 0)
            between += runs[next++].count;
        // The last run of the recording may not be complete.
        if (next + 1 >= runs.size() || !atStart(runs[next]))
            continue;
        LoopPoint point;
        point.held = between + std::max(0, runs[i - 1].count - kDueOutputFrames)
                     + std::max(0, runs[next].count - kDueOutputFrames);
        std::vector<bool> seen(kClipFrames, false);
        for (std::size_t j = i; j-- > 0 && atEnd(runs[j]);)
            seen[runs[j].index] = true;
        for (std::size_t j = next; j < runs.size() && atStart(runs[j]); ++j)
            seen[runs[j].index] = true;
        for (int n = 0; n < kClipFrames; ++n) {
            if ((n < kEdgeFrames || n >= kClipFrames - kEdgeFrames) && !seen[n])
                ++point.skipped;
        }
        points.push_back(point);
    }
    return points;
}

} // namespace

int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsEmpty("DISPLAY"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    gst_init(&argc, &argv);

    const QStringList args = app.arguments();
    const auto intArgument = [&args](const char *name, int fallback) {
        const qsizetype at = args.indexOf(QLatin1String(name));
        return at >= 0 && at + 1 < args.size() ? std::max(1, args.at(at + 1).toInt()) : fallback;
    };
    const int runs = intArgument("--runs", 20);
    const int loops = intArgument("--loops", 50);

    const QString file = QStringLiteral(TARNIX_BENCH_MEDIA_DIR "/zone-plate-1080p30-10s.mp4");
    if (!tarnix::bench::generateMedia(file, tarnix::bench::zonePlate1080pBody()))
        return 1;
    const QString numbered = QStringLiteral(TARNIX_BENCH_MEDIA_DIR "/numbered-grey-30f.mp4");
    if (!generateNumberedClip(numbered))
        return 1;

    auto shown = std::make_shared<ShownFrames>();
    DualDeckPlayerOptions options;
    options.audioSinkFactory = QStringLiteral("fakesink sync=true");
    options.frameTap = [shown](const ProgramTapFrame &frame) { shown->add(frame); };
    auto owned = std::make_unique<DualDeckPlayer>(options);
    DualDeckPlayer *player = owned.get();
    if (!player->isInitialized()) {
        std::fprintf(stderr, "bench-onair-loop: the player did not start\n");
        return 1;
    }

    PlaylistModel model;
    QList<PlaylistItemRequest> requests;
    for (qint64 inMs : kInPointsMs)
        requests.append(testkit::ItemRequest(file).name(QStringLiteral("in %1").arg(inMs)).inPoint(inMs));
    requests.append(testkit::ItemRequest(numbered).name(QStringLiteral("numbered")).playing().repeat(0));
    QList<quint64> ids = model.addItems(requests);
    const quint64 loopItem = ids.takeLast();
    ControllerOperations operations;
    SelectionHolder selection(&model, &operations);
    {
        ProgramPlayoutController controller(std::make_unique<DualDeckProgramPlayer>(std::move(owned)), &model,
                                            &selection, nullptr, &operations, nullptr);
        if (!runUntil([&] { return player->isPresenterRunning(); }, 8000)) {
            std::fprintf(stderr, "bench-onair-loop: the presenter did not start\n");
            return 1;
        }

        std::vector<double> readyMs;
        for (int run = 0; run < runs; ++run) {
            const quint64 item = ids.at(run % ids.size());
            QElapsedTimer timer;
            timer.start();
            selection.selectByOperator(item);
            const bool ready = runUntil(
                [&] { return model.cueItemId() == item && model.cueState() == PlaylistCueState::Ready; }, 5000);
            if (!ready) {
                std::fprintf(stderr, "run %d: not ready (%s)\n", run, qPrintable(model.cueMessage()));
                continue;
            }
            readyMs.push_back(double(timer.nsecsElapsed()) / 1e6);
            // Let the old preparation's stop settle, as between two real selections.
            runUntil([] { return false; }, 300);
        }
        if (readyMs.empty())
            return 1;
        const double p95 = tarnix::bench::percentile(readyMs, 0.95);
        std::printf("standby prepare-to-ready, 1080p H.264, In point before a keyframe, %zu runs:\n",
                    readyMs.size());
        std::printf("  p50 %.1f ms, p95 %.1f ms, max %.1f ms (target p95 <= %.0f ms) %s\n",
                    tarnix::bench::percentile(readyMs, 0.5), p95, tarnix::bench::percentile(readyMs, 1.0), kTargetP95Ms,
                    p95 <= kTargetP95Ms ? "PASS" : "FAIL");

        // The loop point: the numbered clip on air, repeating until enough
        // loop points have passed.
        selection.selectByOperator(loopItem);
        if (!runUntil([&] { return model.cueItemId() == loopItem && model.cueState() == PlaylistCueState::Ready; },
                      5000)
            || !controller.takeOnAir()) {
            std::fprintf(stderr, "bench-onair-loop: the numbered clip could not be taken (%s)\n",
                         qPrintable(model.cueMessage()));
            return 1;
        }
        shown->start();
        runUntil([&] { return controller.repeatDisplayCount() > loops + 1; }, (loops + 3) * 2000);
        const std::vector<LoopPoint> points = loopPoints(shown->stop());
        controller.offAir();
        std::vector<double> held;
        std::vector<double> skipped;
        for (const LoopPoint &point : points) {
            held.push_back(point.held);
            skipped.push_back(point.skipped);
        }
        if (points.empty()) {
            std::printf("loop point: no loop point seen\n");
        } else {
            const double heldP95 = tarnix::bench::percentile(held, 0.95);
            const double skippedP95 = tarnix::bench::percentile(skipped, 0.95);
            std::printf("loop point of a file repeat without crossfade, 30 fps clip on the 60 Hz program, %zu loops:\n",
                        points.size());
            std::printf("  frames held:    p50 %.0f, p95 %.0f, max %.0f (target p95 <= 1) %s\n",
                        tarnix::bench::percentile(held, 0.5), heldP95, tarnix::bench::percentile(held, 1.0),
                        heldP95 <= 1.0 ? "PASS" : "FAIL");
            std::printf("  frames skipped: p50 %.0f, p95 %.0f, max %.0f (target p95 = 0) %s\n",
                        tarnix::bench::percentile(skipped, 0.5), skippedP95, tarnix::bench::percentile(skipped, 1.0),
                        skippedP95 <= 0.0 ? "PASS" : "FAIL");
        }

        controller.shutdown();
        runUntil([&] { return player->isShutdownFinished(); }, 5000);
    }
    return 0;
}
