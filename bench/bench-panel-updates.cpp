// What the controller window's live pieces cost while an item plays ON AIR:
// the monitor, the remaining time, the meters and the transport, at
// 1920 x 1080 on a private Xvfb, against the same run without the window.
//
//   bench-panel-updates [--seconds 60] [--panel-only] [--repeat]
//
// Each run takes a 1080p30 H.264 clip ON AIR, longer than the run, with the
// item's usual settings (no repeat: a repeating item is watched by a faster
// tick for its loop point), settles for 5 s and then measures for
// --seconds (--repeat: the item repeats, and the faster tick is measured):
//
//  - the main thread's CPU time (CLOCK_THREAD_CPUTIME_ID) as a share of one
//    core; target with the panel under 5 %;
//  - the event loop's lateness: a 10 ms precise timer, each firing's delay
//    past its interval; p50/p99/max; target p99 under 8 ms;
//  - the program's renders per 5 s window (min and median; target 300);
//  - the whole process's CPU time as a share of one core.
//
// The screen is 3840 x 1080: the controller window on the left half, the
// program window beside it on the right, both in view.

#include "MainController.h"

#include "control/controller_operations.h"
#include "playlist/playlist_model.h"
#include "video/program_gpu_compositor.h"

#include "kit/item_request.h"
#include "../tests/video/private_xvfb.h"

#include "bench_support.h"

#include <gst/gst.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QPointer>
#include <QTemporaryDir>
#include <QTimer>
#include <QWidget>

#include <cstdio>
#include <ctime>
#include <memory>
#include <vector>

using namespace tarnix;
using Ops = ControllerOperations;
using bench::runUntil;

namespace {

constexpr int kLatenessIntervalMs = 10;

double cpuSeconds(clockid_t clock)
{
    timespec now{};
    clock_gettime(clock, &now);
    return double(now.tv_sec) + double(now.tv_nsec) / 1e9;
}

struct RunFigures {
    bool ok = false;
    double mainThreadCpu = 0;  // share of one core
    double processCpu = 0;
    std::vector<double> latenessMs;
    std::vector<double> rendersPer5s;
};

RunFigures measure(const QString &clip, bool withPanel, int seconds, bool repeat)
{
    RunFigures figures;
    QTemporaryDir session;
    QWidget programWindow(nullptr, Qt::Window | Qt::FramelessWindowHint);
    programWindow.setWindowTitle(QStringLiteral("TARNIX Program"));
    programWindow.setGeometry(1920, 0, 1920, 1080);
    programWindow.show();
    QPointer<QWidget> controllerWindow;
    if (withPanel) {
        controllerWindow = new QWidget;
        controllerWindow->setWindowTitle(QStringLiteral("TARNIX Controller"));
    }
    MainControllerOptions options;
    options.programAudioSinkFactory = QStringLiteral("fakesink sync=true");
    options.previousSessionPath = session.filePath(QStringLiteral("previous-session.json"));
    auto controller = std::make_unique<MainController>(&programWindow, controllerWindow, false, nullptr, options);
    ProgramGpuCompositor *compositor = controller->programCompositor();
    if (!controller->programPlayerAvailable() || !compositor) {
        std::fprintf(stderr, "bench-panel-updates: the program player did not start: %s\n",
                     qPrintable(controller->programPlayerError()));
        return figures;
    }
    if (controllerWindow) {
        controllerWindow->setGeometry(0, 0, 1920, 1080);
        controllerWindow->show();
    }

    PlaylistModel *model = controller->playlistModel();
    Ops &operations = *controller->controllerOperations();
    testkit::ItemRequest request = testkit::ItemRequest(clip).playing();
    if (repeat)
        request.repeat(1000);
    const quint64 onAir = model->addItems({request}).value(0);
    const bool taken = bench::takeOnAir(*model, operations, onAir);
    if (!taken) {
        std::fprintf(stderr, "bench-panel-updates: the clip did not go ON AIR\n");
        return figures;
    }
    runUntil([] { return false; }, 5000);  // settle

    QElapsedTimer clock;
    clock.start();
    qint64 lastTickNs = clock.nsecsElapsed();
    QTimer pulse;
    pulse.setTimerType(Qt::PreciseTimer);
    pulse.setInterval(kLatenessIntervalMs);
    QObject::connect(&pulse, &QTimer::timeout, [&] {
        const qint64 now = clock.nsecsElapsed();
        figures.latenessMs.push_back(std::max(0.0, double(now - lastTickNs) / 1e6 - kLatenessIntervalMs));
        lastTickNs = now;
    });

    const double threadStart = cpuSeconds(CLOCK_THREAD_CPUTIME_ID);
    const double processStart = cpuSeconds(CLOCK_PROCESS_CPUTIME_ID);
    const qint64 startNs = clock.nsecsElapsed();
    qint64 windowStartNs = startNs;
    quint64 rendersAtWindow = compositor->renderCount();
    pulse.start();
    lastTickNs = clock.nsecsElapsed();
    // A real event loop, as in the application: it sleeps in the
    // dispatcher until there is work, so the main thread's figure is the
    // panel's and not a polling loop's.
    QTimer window;
    window.setInterval(5000);
    QObject::connect(&window, &QTimer::timeout, [&] {
        const qint64 now = clock.nsecsElapsed();
        const quint64 renders = compositor->renderCount();
        figures.rendersPer5s.push_back(double(renders - rendersAtWindow) * 5e9 / double(now - windowStartNs));
        rendersAtWindow = renders;
        windowStartNs = now;
    });
    window.start();
    QEventLoop loop;
    QTimer::singleShot(seconds * 1000, &loop, &QEventLoop::quit);
    loop.exec();
    window.stop();
    pulse.stop();
    const double elapsed = double(clock.nsecsElapsed() - startNs) / 1e9;
    figures.mainThreadCpu = (cpuSeconds(CLOCK_THREAD_CPUTIME_ID) - threadStart) / elapsed;
    figures.processCpu = (cpuSeconds(CLOCK_PROCESS_CPUTIME_ID) - processStart) / elapsed;
    figures.ok = model->onAirItemId() == onAir;

    controller->shutdown();
    controller.reset();
    delete controllerWindow.data();
    return figures;
}

void print(const char *label, const RunFigures &figures)
{
    std::printf("%-14s main thread %5.2f %% of a core   process %6.1f %%   lateness p50 %5.2f p99 %5.2f max %6.2f ms"
                "   renders/5 s min %4.0f median %4.0f\n",
                label, figures.mainThreadCpu * 100.0, figures.processCpu * 100.0,
                bench::percentile(figures.latenessMs, 0.5), bench::percentile(figures.latenessMs, 0.99),
                bench::percentile(figures.latenessMs, 1.0), bench::percentile(figures.rendersPer5s, 0.0),
                bench::percentile(figures.rendersPer5s, 0.5));
}

} // namespace

int main(int argc, char **argv)
{
    PrivateXvfb xvfb;
    if (!xvfb.start("3840x1080x24")) {
        std::fprintf(stderr, "bench-panel-updates: Xvfb is not available\n");
        return 1;
    }
    qputenv("QT_QPA_PLATFORM", "xcb");
    gst_init(&argc, &argv);
    QApplication app(argc, argv);
    registerPlaylistMetaTypes();
    const int seconds = std::max(5, bench::argument("--seconds", 60));
    const bool repeat = QCoreApplication::arguments().contains(QStringLiteral("--repeat"));

    // Long enough for the settling and the run.
    const int clipSeconds = seconds + 15;
    const QString clip = QStringLiteral(TARNIX_BENCH_MEDIA_DIR "/zone-plate-1080p-%1s.mp4").arg(clipSeconds);
    QDir().mkpath(QStringLiteral(TARNIX_BENCH_MEDIA_DIR));
    QString body = bench::zonePlate1080pBody();
    body.replace(QStringLiteral("num-buffers=300"), QStringLiteral("num-buffers=%1").arg(clipSeconds * 30));
    body.replace(QStringLiteral("num-buffers=469"), QStringLiteral("num-buffers=%1").arg(clipSeconds * 47));
    if (!bench::generateMedia(clip, body))
        return 1;

    std::printf("bench-panel-updates: a 1080p30 clip ON AIR%s, %d s measured per run\n",
                repeat ? " repeating" : "", seconds);
    std::fflush(stdout);
    const RunFigures withPanel = measure(clip, true, seconds, repeat);
    if (!withPanel.ok)
        return 1;
    print("with panel", withPanel);
    std::fflush(stdout);
    if (QCoreApplication::arguments().contains(QStringLiteral("--panel-only")))
        return 0;
    const RunFigures without = measure(clip, false, seconds, repeat);
    if (!without.ok)
        return 1;
    print("without panel", without);
    std::printf("the panel costs %.1f %% of a core for the whole process; targets: main thread under 5 %%, "
                "lateness p99 under 8 ms, 300 renders per 5 s\n",
                (withPanel.processCpu - without.processCpu) * 100.0);
    const bool met = withPanel.mainThreadCpu < 0.05 && bench::percentile(withPanel.latenessMs, 0.99) < 8.0 &&
                     bench::percentile(withPanel.rendersPer5s, 0.0) >= 299.0;
    std::printf("%s\n", met ? "targets met" : "targets NOT met");
    return 0;
}
