// Two hundred files added at once while an item plays ON AIR, on the whole
// application in process: how long analysis takes per file and in total,
// when every ready item has its picture, the longest stall of the main
// thread meanwhile (a 1 ms timer's lateness), the program output's renders
// in each 5 s window, and the resident memory before and after.
//
//   bench-media-import [--files 200]
//
// Targets: main-thread stall under 16 ms; 300 renders per 5 s (60 a second).

#include "kit/item_request.h"
#include "MainController.h"

#include "control/controller_operations.h"
#include "control/operation_source.h"
#include "playlist/playlist_model.h"
#include "playlist/playlist_thumbnail_store.h"
#include "video/program_gpu_compositor.h"

#include "bench_support.h"

#include <gst/gst.h>

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QHash>
#include <QSet>
#include <QTemporaryDir>
#include <QTimer>
#include <QWidget>

#include <cstdio>
#include <memory>

using namespace tarnix;
using Ops = ControllerOperations;

using bench::runUntil;

namespace {

// The kinds an operator's folder holds, each made once and copied under
// many names: analysis never sees the same path twice.
struct Source {
    const char *name;
    QString body;
};

QList<Source> sources()
{
    const QString audio = QStringLiteral("audiotestsrc num-buffers=94 samplesperbuffer=1024 ! "
                                         "audio/x-raw,rate=48000,channels=2 ! ");
    return {
        {"clip.mp4", QStringLiteral("videotestsrc num-buffers=60 pattern=ball ! "
                                    "video/x-raw,width=1280,height=720,framerate=30/1 ! openh264enc ! h264parse ! "
                                    "mux. ")
                         + audio + QStringLiteral("avenc_aac ! aacparse ! mux. mp4mux name=mux")},
        {"clip.webm", QStringLiteral("videotestsrc num-buffers=60 pattern=smpte ! "
                                     "video/x-raw,width=640,height=360,framerate=30/1 ! vp8enc deadline=1 ! mux. ")
                          + audio + QStringLiteral("audioconvert ! vorbisenc ! mux. webmmux name=mux")},
        {"tone.wav", audio + QStringLiteral("wavenc")},
        {"tone.flac", audio + QStringLiteral("flacenc")},
        {"still.png", QStringLiteral("videotestsrc num-buffers=1 pattern=smpte ! "
                                     "video/x-raw,width=1920,height=1080 ! pngenc")},
        {"still.jpg", QStringLiteral("videotestsrc num-buffers=1 pattern=zone-plate kx2=20 ky2=20 ! "
                                     "video/x-raw,width=1920,height=1080 ! jpegenc")},
    };
}

// Finds what stalls the main thread: the slowest single event delivery,
// with its receiver and event type.
class TimedApplication : public QApplication
{
public:
    using QApplication::QApplication;

    bool notify(QObject *receiver, QEvent *event) override
    {
        QElapsedTimer timer;
        timer.start();
        const QEvent::Type type = event->type();
        const char *receiverClass = receiver->metaObject()->className();
        const char *parentClass = receiver->parent() ? receiver->parent()->metaObject()->className() : "-";
        const auto *asTimer = qobject_cast<QTimer *>(receiver);
        const int interval = asTimer ? asTimer->interval() : -1;
        const bool result = QApplication::notify(receiver, event);
        const double ms = double(timer.nsecsElapsed()) / 1e6;
        if (measuring && ms > slowestMs) {
            slowestMs = ms;
            slowestText = QStringLiteral("%1 of %2, event type %3, interval %4")
                              .arg(QLatin1String(receiverClass), QLatin1String(parentClass))
                              .arg(int(type))
                              .arg(interval);
        }
        return result;
    }

    bool measuring = false;
    double slowestMs = 0;
    QString slowestText;
};

} // namespace

int main(int argc, char **argv)
{
    gst_init(&argc, &argv);
    TimedApplication app(argc, argv);
    registerPlaylistMetaTypes();
    const int fileCount = std::max(1, bench::argumentText("--files", QStringLiteral("200")).toInt());

    const QString folder = QStringLiteral(TARNIX_BENCH_MEDIA_DIR "/import");
    QDir().mkpath(folder);
    QStringList originals;
    for (const Source &source : sources()) {
        const QString path = QDir(folder).filePath(QString::fromLatin1(source.name));
        if (!bench::generateMedia(path, source.body))
            return 1;
        originals << path;
    }
    const QString onAirClip = QStringLiteral(TARNIX_BENCH_MEDIA_DIR "/zone-plate-1080p-10s.mp4");
    if (!bench::generateMedia(onAirClip, bench::zonePlate1080pBody()))
        return 1;
    const QString copies = QDir(folder).filePath(QStringLiteral("copies"));
    QDir(copies).removeRecursively();
    QDir().mkpath(copies);
    QStringList paths;
    for (int i = 0; i < fileCount; ++i) {
        const QString original = originals.at(i % originals.size());
        const QString copy = QDir(copies).filePath(QStringLiteral("%1-%2").arg(i, 3, 10, QLatin1Char('0'))
                                                   .arg(QFileInfo(original).fileName()));
        if (!QFile::copy(original, copy)) {
            std::fprintf(stderr, "bench-media-import: could not copy %s\n", qPrintable(original));
            return 1;
        }
        paths << copy;
    }

    QTemporaryDir session;
    QWidget programWindow;
    programWindow.resize(640, 360);
    programWindow.show();
    auto *controllerWindow = new QWidget;
    MainControllerOptions options;
    options.programAudioSinkFactory = QStringLiteral("fakesink sync=true");
    options.previousSessionPath = session.filePath(QStringLiteral("previous-session.json"));
    auto controller = std::make_unique<MainController>(&programWindow, controllerWindow, false, nullptr, options);
    PlaylistModel *model = controller->playlistModel();
    ProgramGpuCompositor *compositor = controller->programCompositor();
    if (!controller->programPlayerAvailable() || !compositor) {
        std::fprintf(stderr, "bench-media-import: the program player did not start: %s\n",
                     qPrintable(controller->programPlayerError()));
        return 1;
    }

    // A ten-second clip repeating ON AIR for the whole import.
    const quint64 onAir = model->addItems({testkit::ItemRequest(onAirClip).playing().repeat(1000)}).value(0);
    Ops &operations = *controller->controllerOperations();
    if (!bench::takeOnAir(*model, operations, onAir)) {
        std::fprintf(stderr, "bench-media-import: the clip did not go ON AIR\n");
        return 1;
    }
    runUntil([] { return false; }, 2000);  // settle
    const bench::ProcessFigures before = bench::processFigures();

    // The main thread's pulse: a 1 ms timer whose lateness is its stall.
    QElapsedTimer clock;
    clock.start();
    qint64 lastTickNs = clock.nsecsElapsed();
    double longestStallMs = 0;
    qint64 longestStallAtNs = 0;
    QTimer pulse;
    pulse.setTimerType(Qt::PreciseTimer);
    pulse.setInterval(1);
    QObject::connect(&pulse, &QTimer::timeout, [&] {
        const qint64 now = clock.nsecsElapsed();
        const double stallMs = double(now - lastTickNs) / 1e6 - 1.0;
        if (stallMs > longestStallMs) {
            longestStallMs = stallMs;
            longestStallAtNs = now;
        }
        lastTickNs = now;
    });

    // Each item's analysis ends when the model replaces its placeholder;
    // a view then asks for its picture, as the playlist panel does.
    PlaylistThumbnailStore *pictures = controller->thumbnailStore();
    QHash<quint64, qint64> readyAtNs;
    QSet<quint64> pictured;
    std::vector<double> analysisMs;
    qint64 previousDoneNs = 0;
    QObject::connect(model, &PlaylistModel::itemReplaced, [&](quint64 id) {
        if (id == onAir || readyAtNs.contains(id))
            return;
        const qint64 now = clock.nsecsElapsed();
        readyAtNs.insert(id, now);
        analysisMs.push_back(double(now - previousDoneNs) / 1e6);
        previousDoneNs = now;
        if (!pictures->thumbnail(id).isNull())
            pictured.insert(id);
    });
    QObject::connect(pictures, &PlaylistThumbnailStore::thumbnailChanged, [&](quint64 id) {
        if (!pictures->thumbnail(id).isNull())
            pictured.insert(id);
    });

    // The same pulse for five seconds before the import: what the machine
    // alone costs the main thread while the program plays.
    pulse.start();
    lastTickNs = clock.nsecsElapsed();
    runUntil([] { return false; }, 5000);
    pulse.stop();
    const double idleStallMs = longestStallMs;
    longestStallMs = 0;

    std::printf("bench-media-import: %d files while a 1080p clip plays ON AIR\n", fileCount);
    std::printf("%8s %8s %10s %13s\n", "seconds", "ready", "pictured", "renders/5 s");
    std::vector<double> windows;
    const qint64 startNs = clock.nsecsElapsed();
    previousDoneNs = startNs;
    lastTickNs = startNs;
    pulse.start();
    app.measuring = true;
    {
        OperationSourceScope remote("Remote");
        if (operations.invoke(Ops::AddFiles, paths).status != Ops::Invoked) {
            std::fprintf(stderr, "bench-media-import: AddFiles was refused\n");
            return 1;
        }
    }
    quint64 rendersAtWindow = compositor->renderCount();
    qint64 windowStartNs = clock.nsecsElapsed();
    qint64 analysedNs = 0;
    qint64 picturedNs = 0;
    const bool finished = runUntil(
        [&] {
            const qint64 now = clock.nsecsElapsed();
            if (now - windowStartNs >= 5'000'000'000) {
                const quint64 renders = compositor->renderCount();
                windows.push_back(double(renders - rendersAtWindow) * 5e9 / double(now - windowStartNs));
                std::printf("%8.1f %8lld %10lld %13.0f\n", double(now - startNs) / 1e9,
                            static_cast<long long>(readyAtNs.size()), static_cast<long long>(pictured.size()),
                            windows.back());
                std::fflush(stdout);
                rendersAtWindow = renders;
                windowStartNs = now;
            }
            const bool analysed = readyAtNs.size() >= fileCount;
            if (analysed && !analysedNs)
                analysedNs = now;
            if (analysed && pictured.size() >= fileCount && !picturedNs)
                picturedNs = now;
            return picturedNs != 0;
        },
        600000);
    pulse.stop();
    app.measuring = false;
    const bench::ProcessFigures after = bench::processFigures();

    std::printf("analysis per file: p50 %.1f ms, p95 %.1f ms, max %.1f ms; all %d analysed in %.1f s%s\n",
                bench::percentile(analysisMs, 0.5), bench::percentile(analysisMs, 0.95),
                bench::percentile(analysisMs, 1.0), int(readyAtNs.size()), double(analysedNs - startNs) / 1e9,
                finished ? "" : " (did not finish)");
    std::printf("thumbnails: %d of %d done, all after %.1f s\n", int(pictured.size()), fileCount,
                picturedNs ? double(picturedNs - startNs) / 1e9 : -1.0);
    std::printf("main thread: longest stall %.1f ms at %.2f s (target under 16 ms); %.1f ms in 5 s before the "
                "import\n",
                longestStallMs, double(longestStallAtNs - startNs) / 1e9, idleStallMs);
    std::printf("main thread: slowest event %.1f ms (%s)\n", app.slowestMs, qPrintable(app.slowestText));
    std::printf("program output: renders per 5 s min %.0f, p50 %.0f (target 300)\n",
                windows.empty() ? 0.0 : *std::min_element(windows.begin(), windows.end()),
                bench::percentile(windows, 0.5));
    std::printf("rss: %.1f MB before, %.1f MB after; heap in use %.1f MB before, %.1f MB after\n", before.rssMb,
                after.rssMb, before.heapMb, after.heapMb);

    controller->shutdown();
    controller.reset();
    delete controllerWindow;
    QDir(copies).removeRecursively();
    return finished ? 0 : 1;
}
