// A show that runs by itself on the real dual-deck player: three short clips
// chained by their end modes, taken ON AIR once and left to run through
// hundreds of automatic transitions. Every `--report` transitions (and at the
// end) it prints what a long show must keep flat: resident memory, open file
// descriptors, threads, retained pipelines, and the program output's render
// rate since the last report.
//
//   soak-transitions [--transitions 1000] [--report 100] [--clip-ms 2000]
//                    [--variant loop|cuts|stills]
//
//   loop   (default) next, next with a 500 ms end crossfade, goto the first
//   cuts   next, next, goto the first, all cuts
//   stills the loop with a timed still (PNG) as the second item
//
// The figures of transition `--report` are the baseline: the closing line
// compares the last RSS with it (target: within 5 %).

#include "kit/clip_generator.h"
#include "kit/item_request.h"
#include "playlist/playlist_model.h"
#include "playout/dual_deck_player.h"
#include "playout/dual_deck_program_player.h"
#include "playout/program_playout_controller.h"
#include "playout/selection_holder.h"
#include "shell/pipeline_release.h"
#include "video/program_gpu_compositor.h"

#include "bench_support.h"

#include <gst/gst.h>

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QThread>

#include <cstdio>
#include <malloc.h>
#include <unistd.h>

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

QString clip(const QString &name, const QString &body)
{
    const QString path = QStringLiteral(TARNIX_BENCH_MEDIA_DIR "/") + name;
    return bench::generateMedia(path, body) ? path : QString();
}

// Picture and sound at 720p30: a moving pattern and a tone, so that decoders
// and the program audio both work as in a show.
QString avClipBody(int ms, const char *pattern)
{
    const int frames = ms * 30 / 1000;
    const int audioBuffers = ms * 48 / 1024 + 1;
    return QStringLiteral("videotestsrc num-buffers=%1 pattern=%2 ! video/x-raw,width=1280,height=720,framerate=30/1 ! "
                          "openh264enc gop-size=30 bitrate=3000000 ! h264parse ! mux. "
                          "audiotestsrc num-buffers=%3 samplesperbuffer=1024 ! audio/x-raw,rate=48000,channels=2 ! "
                          "avenc_aac ! aacparse ! mux. mp4mux name=mux")
        .arg(frames)
        .arg(QString::fromLatin1(pattern))
        .arg(audioBuffers);
}

} // namespace

int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsEmpty("DISPLAY"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    gst_init(&argc, &argv);

    const QStringList args = app.arguments();
    const auto argument = [&args](const char *name, const QString &fallback) {
        const qsizetype at = args.indexOf(QLatin1String(name));
        return at >= 0 && at + 1 < args.size() ? args.at(at + 1) : fallback;
    };
    const int transitions = std::max(1, argument("--transitions", QStringLiteral("1000")).toInt());
    const int report = std::max(1, argument("--report", QStringLiteral("100")).toInt());
    const int clipMs = std::max(500, argument("--clip-ms", QStringLiteral("2000")).toInt());
    const QString variant = argument("--variant", QStringLiteral("loop"));

    const QString suffix = QStringLiteral("-720p30-%1ms.mp4").arg(clipMs);
    const QString a = clip(QStringLiteral("soak-a") + suffix, avClipBody(clipMs, "ball"));
    const QString b = variant == QLatin1String("stills")
                          ? clip(QStringLiteral("soak-still-720p.png"),
                                 QStringLiteral("videotestsrc num-buffers=1 pattern=smpte ! "
                                                "video/x-raw,width=1280,height=720 ! pngenc"))
                          : clip(QStringLiteral("soak-b") + suffix, avClipBody(clipMs, "smpte"));
    const QString c = clip(QStringLiteral("soak-c") + suffix, avClipBody(clipMs, "zone-plate"));
    if (a.isEmpty() || b.isEmpty() || c.isEmpty())
        return 1;

    DualDeckPlayerOptions options;
    options.deckTimings.width = 1280;
    options.deckTimings.height = 720;
    options.audioSinkFactory = QStringLiteral("fakesink sync=true");
    auto owned = std::make_unique<DualDeckPlayer>(options);
    DualDeckPlayer *player = owned.get();
    if (!player->isInitialized()) {
        std::fprintf(stderr, "soak-transitions: the player did not start: %s\n",
                     qPrintable(player->initializationError()));
        return 1;
    }

    PlaylistModel model;
    const bool crossfade = variant != QLatin1String("cuts");
    testkit::ItemRequest second(b);
    second.playing().endMode(PlaylistEndMode::next);
    if (variant == QLatin1String("stills"))
        second.type(PlaylistMediaType::stillImage);
    const QList<quint64> ids = model.addItems({testkit::ItemRequest(a).playing().endMode(PlaylistEndMode::next),
                                               second,
                                               testkit::ItemRequest(c).playing()});
    if (ids.size() != 3) {
        std::fprintf(stderr, "soak-transitions: the model refused the clips\n");
        return 1;
    }
    PlaylistItemSettings secondSettings = model.item(ids[1])->settings;
    secondSettings.endCrossfade.enabled = crossfade;
    secondSettings.endCrossfade.durationMs = 500;
    if (variant == QLatin1String("stills"))
        secondSettings.outPointMs = clipMs;
    PlaylistItemSettings thirdSettings = model.item(ids[2])->settings;
    thirdSettings.endMode = PlaylistEndMode::goto_;
    thirdSettings.gotoTargetItemId = ids[0];
    if (!model.setItemSettings(ids[1], secondSettings) || !model.setItemSettings(ids[2], thirdSettings)) {
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

    std::printf("soak-transitions: variant %s, %d transitions, clips of %d ms, report every %d\n",
                qPrintable(variant), transitions, clipMs, report);
    std::printf("%11s %9s %9s %5s %8s %9s %10s\n", "transitions", "rss MB", "heap MB", "fds", "threads",
                "retained", "renders/s");
    std::fflush(stdout);

    ProgramGpuCompositor *compositor = player->compositor();
    quint64 lastItem = controller.onAirItemId();
    int done = 0;
    double baselineRss = 0;
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
        if (item != lastItem && item != 0) {
            lastItem = item;
            ++done;
            sinceLast.restart();
            if (done % report == 0 || done == transitions) {
                const bench::ProcessFigures figures = bench::processFigures();
                const double seconds = double(window.nsecsElapsed()) / 1e9;
                const quint64 renders = compositor->renderCount();
                std::printf("%11d %9.1f %9.1f %5d %8d %9zu %10.1f\n", done, figures.rssMb, figures.heapMb, figures.fds,
                            figures.threads, retainedCount(), double(renders - rendersAtWindow) / seconds);
                std::fflush(stdout);
                if (done == report)
                    baselineRss = figures.rssMb;
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

    const bench::ProcessFigures last = bench::processFigures();
    if (baselineRss > 0 && transitions > report) {
        const double growth = 100.0 * (last.rssMb - baselineRss) / baselineRss;
        std::printf("RSS after %d transitions vs after %d: %+.1f %% (target within 5 %%) %s\n", transitions, report,
                    growth, growth <= 5.0 ? "PASS" : "FAIL");
    }
    controller.offAir();
    controller.shutdown();
    runUntil([&] { return player->isShutdownFinished(); }, 10000);
    return 0;
}
