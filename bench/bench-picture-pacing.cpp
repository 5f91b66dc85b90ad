// Pacing of the program picture: the compositor at 60 Hz into a window on
// a private Xvfb, with two layers fed at 30 fps in a crossfade. Every 5 s it
// prints the renders and presents of the interval, the largest gap between
// two renders and the whole process's CPU use. Targets: 300 +- 1 renders
// per 5 s, no gap over 33 ms, under 50 % of one core.
//
//   bench-picture-pacing [seconds=600] [height=1080]
// A first 5 s interval of warm-up comes before the measured seconds.
#include "../tests/video/private_xvfb.h"

#include "video/program_gpu_compositor.h"
#include "video/program_monitor_widget.h"

#include <gst/app/gstappsrc.h>
#include <gst/gst.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QTimer>

#include <vector>
#include <QWindow>

#include <atomic>
#include <cstdio>
#include <ctime>

using namespace tarnix;

namespace {

qint64 processCpuNs()
{
    timespec ts{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &ts);
    return qint64(ts.tv_sec) * 1000000000 + ts.tv_nsec;
}

qint64 monotonicNs()
{
    timespec ts{};
    clock_gettime(CLOCK_MONOTONIC, &ts);
    return qint64(ts.tv_sec) * 1000000000 + ts.tv_nsec;
}

// A 30 fps producer of RGBA frames at the program size, as a deck delivers
// them. The frame is made once and pushed again with a new timestamp, so the
// figures are those of the picture path, not of a decoder.
struct Layer {
    Layer(int width, int height, quint32 rgb)
    {
        pipeline = gst_parse_launch(
            QStringLiteral("appsrc name=src format=time is-live=true do-timestamp=true "
                           "caps=video/x-raw,format=RGBA,width=%1,height=%2,framerate=30/1,"
                           "pixel-aspect-ratio=1/1 ! appsink name=sink max-buffers=2 drop=true "
                           "sync=false enable-last-sample=false")
                .arg(width)
                .arg(height)
                .toUtf8()
                .constData(),
            nullptr);
        source = gst_bin_get_by_name(GST_BIN(pipeline), "src");
        sink = gst_bin_get_by_name(GST_BIN(pipeline), "sink");
        frame = gst_buffer_new_allocate(nullptr, gsize(width) * height * 4, nullptr);
        GstMapInfo map;
        gst_buffer_map(frame, &map, GST_MAP_WRITE);
        for (gsize i = 0; i < map.size; i += 4) {
            map.data[i + 0] = quint8(rgb >> 16);
            map.data[i + 1] = quint8(rgb >> 8);
            map.data[i + 2] = quint8(rgb);
            map.data[i + 3] = 255;
        }
        gst_buffer_unmap(frame, &map);
        gst_element_set_state(pipeline, GST_STATE_PLAYING);
    }
    ~Layer()
    {
        gst_element_set_state(pipeline, GST_STATE_NULL);
        gst_buffer_unref(frame);
        gst_object_unref(source);
        gst_object_unref(sink);
        gst_object_unref(pipeline);
    }
    void push() { gst_app_src_push_buffer(GST_APP_SRC(source), gst_buffer_copy(frame)); }

    GstElement *pipeline = nullptr;
    GstElement *source = nullptr;
    GstElement *sink = nullptr;
    GstBuffer *frame = nullptr;
};

} // namespace

int main(int argc, char **argv)
{
    const int seconds = argc > 1 ? std::max(5, atoi(argv[1])) : 600;
    const int height = argc > 2 && atoi(argv[2]) == 2160 ? 2160 : 1080;
    const int width = height * 16 / 9;

    PrivateXvfb xvfb;
    if (!xvfb.start(height == 2160 ? "3840x2160x24" : "1920x1080x24")) {
        std::fprintf(stderr, "bench-picture-pacing: Xvfb is not available\n");
        return 2;
    }
    qputenv("QT_QPA_PLATFORM", "xcb");
    QApplication app(argc, argv);
    gst_init(&argc, &argv);

    QWindow window;
    window.setGeometry(0, 0, width, height);
    window.show();
    // The controller window's small program monitor, as the player has it.
    ProgramMonitorWidget monitor;
    monitor.resize(480, 270);
    monitor.show();

    ProgramCompositorOptions options;
    options.width = width;
    options.height = height;
    options.programWindow = &window;
    options.monitor = &monitor;
    ProgramGpuCompositor compositor(options);

    std::atomic<quint64> renders{0};
    std::atomic<qint64> lastRenderNs{0};
    std::atomic<qint64> maxGapNs{0};
    // Renders are counted into exact 5 s windows by the time they happen, so
    // the count does not depend on when the main thread's timer samples it.
    constexpr qint64 kWindowNs = 5'000'000'000;
    std::atomic<qint64> windowStartNs{0};
    std::vector<std::atomic<int>> windowRenders(std::size_t(seconds / 5 + 4));
    compositor.setFrameTap([&](const ProgramTapFrame &) {
        const qint64 now = monotonicNs();
        if (const qint64 start = windowStartNs.load(); start > 0 && now >= start) {
            const std::size_t index = std::size_t((now - start) / kWindowNs);
            if (index < windowRenders.size())
                windowRenders[index].fetch_add(1);
        }
        const qint64 last = lastRenderNs.exchange(now);
        if (last > 0) {
            const qint64 gap = now - last;
            qint64 seen = maxGapNs.load();
            while (gap > seen && !maxGapNs.compare_exchange_weak(seen, gap)) {
            }
        }
        renders.fetch_add(1);
    });

    Layer layerA(width, height, 0xc03020);
    Layer layerB(width, height, 0x2040c0);
    if (!compositor.start() || !compositor.connectDeck(0, layerA.pipeline, layerA.sink)
        || !compositor.connectDeck(1, layerB.pipeline, layerB.sink)) {
        std::fprintf(stderr, "bench-picture-pacing: the compositor did not start\n");
        return 2;
    }
    compositor.setProgramLayers(0, 1.0f, 1, 0.5f);
    QTimer feed;
    feed.setTimerType(Qt::PreciseTimer);
    feed.setInterval(33);
    QObject::connect(&feed, &QTimer::timeout, [&] {
        layerA.push();
        layerB.push();
    });
    feed.start();

    std::printf("bench-picture-pacing: %dx%d at 60 Hz, two %dx%d layers at 30 fps in a crossfade, "
                "%d s\n",
                width, height, width, height, seconds);
    std::printf("targets: renders 300 +- 1 per 5 s, largest gap <= 33 ms, CPU < 50 %% of one core\n");
    std::printf("%8s %8s %9s %10s %8s\n", "t(s)", "renders", "presents", "maxGap(ms)", "CPU(%)");

    quint64 rendersBefore = 0, presentsBefore = 0;
    qint64 cpuBefore = processCpuNs();
    qint64 wallBefore = monotonicNs();
    int intervals = 0, judged = 0, rendersOff = 0;
    qint64 worstGap = 0;
    double worstCpu = 0.0, cpuSum = 0.0;
    bool measuring = false;
    QElapsedTimer elapsed;

    QTimer tick;
    tick.setTimerType(Qt::PreciseTimer);
    tick.setInterval(20);
    QObject::connect(&tick, &QTimer::timeout, [&] {
        QString message;
        if (compositor.poll(&message)) {
            std::fprintf(stderr, "bench-picture-pacing: %s\n", qPrintable(message));
            app.exit(2);
        }
        if (!measuring) {
            // The first interval starts once the picture is up.
            if (!compositor.isStarted())
                return;
            measuring = true;
            elapsed.start();
            rendersBefore = renders.load();
            presentsBefore = compositor.presentCount();
            cpuBefore = processCpuNs();
            wallBefore = monotonicNs();
            maxGapNs.store(0);
            windowStartNs.store(monotonicNs());
            return;
        }
        // A window is read once it has closed and its last frame is counted.
        if (elapsed.elapsed() < qint64(intervals + 1) * 5000 + 50)
            return;
        const quint64 r = renders.load();
        const quint64 p = compositor.presentCount();
        const qint64 cpu = processCpuNs();
        const qint64 wall = monotonicNs();
        const qint64 gap = maxGapNs.exchange(0);
        const double cpuPercent = 100.0 * double(cpu - cpuBefore) / double(wall - wallBefore);
        const quint64 windowCount = quint64(windowRenders[std::size_t(intervals)].load());
        ++intervals;
        // The first interval holds the start: the live source settles its
        // latency and may catch up a frame or two. It is shown, not judged.
        const bool warmUp = intervals == 1;
        std::printf("%8d %8llu %9llu %10.1f %8.1f%s\n", intervals * 5, (unsigned long long)windowCount,
                    (unsigned long long)(p - presentsBefore), gap / 1e6, cpuPercent,
                    warmUp ? "  (warm-up)" : "");
        std::fflush(stdout);
        if (!warmUp) {
            ++judged;
            if (qAbs(qint64(windowCount) - 300) > 1)
                ++rendersOff;
            worstGap = std::max(worstGap, gap);
            worstCpu = std::max(worstCpu, cpuPercent);
            cpuSum += cpuPercent;
        }
        rendersBefore = r;
        presentsBefore = p;
        cpuBefore = cpu;
        wallBefore = wall;
        if (intervals * 5 >= seconds + 5)
            app.exit(0);
    });
    tick.start();
    const int code = app.exec();

    const double meanCpu = cpuSum / std::max(1, judged);
    const bool pass = code == 0 && judged > 0 && rendersOff == 0 && worstGap <= 33000000 && meanCpu < 50.0;
    std::printf("intervals=%d renders-off-target=%d largest-gap=%.1f ms mean-CPU=%.1f %% max-CPU=%.1f %% %s\n",
                judged, rendersOff, worstGap / 1e6, meanCpu, worstCpu, pass ? "PASS" : "FAIL");

    feed.stop();
    compositor.stop();
    return code != 0 ? code : (pass ? 0 : 1);
}
