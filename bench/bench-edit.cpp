// The EDIT player's speed as the operator feels it, on 1080p25 H.264 clips
// with a keyframe every 25 frames:
//
//  - load to paused at the In point: from the load request to the session
//    reporting the item loaded (its 33 ms tick included), alternating two In
//    points in the middle of a GOP; p50/p95/max, target p95 under 300 ms;
//  - accurate seek: from the seek to the first picture of the new position
//    reaching the session; p50/p95/max, target p95 under 150 ms;
//  - frame step: from a one-frame step to its picture; p50/p95/max.
//
// Then the same with a 1080p clip playing ON AIR on a private Xvfb, printing
// the program's renders per 5 s while EDIT works (target 300).
//
//   bench-edit [--runs 20]

#include "MainController.h"

#include "control/controller_operations.h"
#include "edit/edit_session_controller.h"
#include "playlist/playlist_model.h"
#include "video/program_gpu_compositor.h"

#include "kit/item_request.h"
#include "../tests/video/private_xvfb.h"

#include "bench_support.h"

#include <gst/gst.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QWidget>

#include <cstdio>
#include <memory>
#include <vector>

using namespace tarnix;
using Ops = ControllerOperations;
using bench::runUntil;

namespace {

struct Figures {
    std::vector<double> loadMs;
    std::vector<double> seekMs;
    std::vector<double> stepMs;
    bool ok = true;
};

void print(const char *label, const std::vector<double> &values, double targetMs)
{
    std::printf("  %-22s p50 %7.1f  p95 %7.1f  max %7.1f ms%s\n", label, bench::percentile(values, 0.5),
                bench::percentile(values, 0.95), bench::percentile(values, 1.0),
                targetMs > 0 ? (bench::percentile(values, 0.95) < targetMs ? "  (target met)" : "  (target NOT met)")
                             : "");
}

// Waits for the next picture the player delivers; the time it took, or -1.
double pictureAfter(EditPlayer *player, const QElapsedTimer &since)
{
    const bool arrived = runUntil([player] { return !player->takeFrame().isNull(); }, 5000);
    return arrived ? double(since.nsecsElapsed()) / 1e6 : -1.0;
}

// Loads, seeks and steps on the session's own model: runs loads, each
// followed by runs/2 seeks and steps.
Figures measure(PlaylistModel *model, int runs)
{
    Figures figures;
    EditSessionController session(model, nullptr);
    const QList<quint64> clips = model->itemIds(model->activePlaylistNumber());
    const quint64 a = clips.value(0);
    const quint64 b = clips.value(1);
    for (int run = 0; run < runs && figures.ok; ++run) {
        const quint64 item = run % 2 ? b : a;
        if (!runUntil([&] { return !session.isUnloading() && !session.isLoading(); }, 10000)) {
            figures.ok = false;
            break;
        }
        QElapsedTimer load;
        load.start();
        session.loadItem(item);
        if (!runUntil([&] { return session.isLoaded() && session.loadedItemId() == item; }, 10000)) {
            std::fprintf(stderr, "bench-edit: load %d did not finish: %s\n", run, qPrintable(session.statusText()));
            figures.ok = false;
            break;
        }
        figures.loadMs.push_back(double(load.nsecsElapsed()) / 1e6);
        EditPlayer *player = session.player();
        runUntil([] { return false; }, 100);
        player->takeFrame();
        // Mid-GOP targets, so that the decoder works from the keyframe before.
        const qint64 target = 3000 + (run * 1737) % 14000 + 480;
        QElapsedTimer seek;
        seek.start();
        session.seek(target);
        const double seekMs = pictureAfter(player, seek);
        if (seekMs >= 0)
            figures.seekMs.push_back(seekMs);
        runUntil([] { return false; }, 50);
        player->takeFrame();
        QElapsedTimer step;
        step.start();
        session.stepFrames(1);
        const double stepMs = pictureAfter(player, step);
        if (stepMs >= 0)
            figures.stepMs.push_back(stepMs);
        session.beginUnload(0);
    }
    runUntil([&] { return !session.isUnloading(); }, 10000);
    return figures;
}

QList<quint64> addClips(PlaylistModel *model, const QString &clip)
{
    return model->addItems({testkit::ItemRequest(clip).name("A").inPoint(7480),
                            testkit::ItemRequest(clip).name("B").inPoint(12480)});
}

} // namespace

int main(int argc, char **argv)
{
    PrivateXvfb xvfb;
    if (!xvfb.start("1920x1080x24")) {
        std::fprintf(stderr, "bench-edit: Xvfb is not available\n");
        return 1;
    }
    qputenv("QT_QPA_PLATFORM", "xcb");
    gst_init(&argc, &argv);
    QApplication app(argc, argv);
    registerPlaylistMetaTypes();
    const int runs = std::max(2, bench::argument("--runs", 20));

    QDir().mkpath(QStringLiteral(TARNIX_BENCH_MEDIA_DIR));
    const QString clip = QStringLiteral(TARNIX_BENCH_MEDIA_DIR "/zone-plate-1080p25-gop25-20s.mp4");
    QString body = bench::zonePlate1080pBody();
    body.replace(QStringLiteral("num-buffers=300"), QStringLiteral("num-buffers=500"))
        .replace(QStringLiteral("framerate=30/1"), QStringLiteral("framerate=25/1"))
        .replace(QStringLiteral("gop-size=30"), QStringLiteral("gop-size=25"))
        .replace(QStringLiteral("num-buffers=469"), QStringLiteral("num-buffers=938"));
    if (!bench::generateMedia(clip, body))
        return 1;
    const QString onAirClip = QStringLiteral(TARNIX_BENCH_MEDIA_DIR "/zone-plate-1080p-10s.mp4");
    if (!bench::generateMedia(onAirClip, bench::zonePlate1080pBody()))
        return 1;

    std::printf("bench-edit: 1080p25 H.264, GOP 25, %d loads\n", runs);
    {
        PlaylistModel model;
        addClips(&model, clip);
        const Figures alone = measure(&model, runs);
        if (!alone.ok)
            return 1;
        std::printf("EDIT alone\n");
        print("load to paused at In", alone.loadMs, 300);
        print("accurate seek", alone.seekMs, 150);
        print("frame step", alone.stepMs, 0);
    }

    // The same beside a 1080p clip ON AIR.
    QTemporaryDir session;
    QWidget programWindow(nullptr, Qt::Window | Qt::FramelessWindowHint);
    programWindow.setGeometry(0, 0, 1920, 1080);
    programWindow.show();
    MainControllerOptions options;
    options.programAudioSinkFactory = QStringLiteral("fakesink sync=true");
    options.previousSessionPath = session.filePath(QStringLiteral("previous-session.json"));
    auto controller = std::make_unique<MainController>(&programWindow, nullptr, false, nullptr, options);
    ProgramGpuCompositor *compositor = controller->programCompositor();
    if (!controller->programPlayerAvailable() || !compositor) {
        std::fprintf(stderr, "bench-edit: the program player did not start\n");
        return 1;
    }
    PlaylistModel *model = controller->playlistModel();
    Ops &operations = *controller->controllerOperations();
    const quint64 onAir = model->addItems({testkit::ItemRequest(onAirClip).playing().repeat(1000)}).value(0);
    if (!bench::takeOnAir(*model, operations, onAir)) {
        std::fprintf(stderr, "bench-edit: the clip did not go ON AIR\n");
        return 1;
    }
    runUntil([] { return false; }, 3000);
    addClips(model, clip);
    QElapsedTimer window;
    window.start();
    const quint64 rendersBefore = compositor->renderCount();
    const Figures beside = measure(model, runs);
    const double seconds = double(window.nsecsElapsed()) / 1e9;
    const double rendersPer5s = double(compositor->renderCount() - rendersBefore) * 5.0 / seconds;
    if (!beside.ok)
        return 1;
    std::printf("EDIT beside a 1080p clip ON AIR\n");
    print("load to paused at In", beside.loadMs, 300);
    print("accurate seek", beside.seekMs, 150);
    print("frame step", beside.stepMs, 0);
    std::printf("  program renders per 5 s while EDIT worked: %.0f (target 300)\n", rendersPer5s);
    controller->shutdown();
    return 0;
}
