// The cost of the layers beside ON AIR, on the real player with the program
// at 1920 x 1080 and 60 frames a second:
//
//  1. whole-process CPU (CLOCK_PROCESS_CPUTIME_ID as a share of one core)
//     with a 1080p30 H.264 clip repeating ON AIR alone, then with a 1080p
//     PNG with alpha keyed over it in DSK and a bgm-mode playlist of two
//     short tone items playing beside it; the difference is reported;
//  2. the program's renders per 5 s in both runs, min and mean over the
//     windows (target 300);
//  3. the silence between two BGM items as the BGM rules make it: from the
//     end of stream of one item to its successor's deck playing, as the BGM
//     controller sees it, p50 and max over the changes (reported).
//
// "--seconds N" sets the length of each run (default 30).

#include "kit/item_request.h"
#include "control/controller_operations.h"
#include "playlist/playlist_model.h"
#include "playout/bgm_playout_controller.h"
#include "playout/dsk_playout_controller.h"
#include "playout/dual_deck_player.h"
#include "playout/dual_deck_program_player.h"
#include "playout/program_playout_controller.h"
#include "playout/selection_holder.h"

#include "bench_support.h"

#include <gst/gst.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QImage>
#include <QPainter>

#include <cstdio>
#include <ctime>
#include <memory>
#include <vector>

using namespace tarnix;

namespace {

double cpuSeconds()
{
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return double(now.tv_sec) + double(now.tv_nsec) / 1e9;
}

struct RunFigures {
    double cpu = 0;
    double rendersMin = 0;
    double rendersMean = 0;
};

// Runs the event loop for the given time, counting renders per 5 s window.
RunFigures measure(DualDeckPlayer *player, int seconds, const std::function<void()> &everyLoop = {})
{
    RunFigures figures;
    std::vector<double> windows;
    const double cpuStart = cpuSeconds();
    QElapsedTimer timer;
    timer.start();
    quint64 windowStart = player->compositor()->renderCount();
    qint64 nextWindow = 5000;
    while (timer.elapsed() < qint64(seconds) * 1000) {
        QApplication::processEvents(QEventLoop::AllEvents, 5);
        if (everyLoop)
            everyLoop();
        if (timer.elapsed() >= nextWindow) {
            const quint64 renders = player->compositor()->renderCount();
            windows.push_back(double(renders - windowStart));
            windowStart = renders;
            nextWindow += 5000;
        }
    }
    figures.cpu = (cpuSeconds() - cpuStart) / (double(timer.nsecsElapsed()) / 1e9);
    double sum = 0;
    for (double w : windows)
        sum += w;
    figures.rendersMin = windows.empty() ? 0 : *std::min_element(windows.begin(), windows.end());
    figures.rendersMean = windows.empty() ? 0 : sum / double(windows.size());
    return figures;
}

} // namespace

int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsEmpty("DISPLAY"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    gst_init(&argc, &argv);
    const int seconds = std::max(10, bench::argument("--seconds", 30));

    const QString clip = QStringLiteral(TARNIX_BENCH_MEDIA_DIR "/zone-plate-1080p30-10s.mp4");
    if (!bench::generateMedia(clip, bench::zonePlate1080pBody()))
        return 1;
    const QString key = QStringLiteral(TARNIX_BENCH_MEDIA_DIR "/lower-third-1080p.png");
    if (!QFile::exists(key)) {
        // A lower third: a translucent band with an opaque strap, the rest clear.
        QImage image(1920, 1080, QImage::Format_ARGB32);
        image.fill(Qt::transparent);
        QPainter painter(&image);
        painter.fillRect(0, 820, 1920, 180, QColor(0, 0, 0, 140));
        painter.fillRect(120, 850, 1200, 120, QColor(20, 90, 200));
        painter.end();
        if (!image.save(key)) {
            std::fprintf(stderr, "bench-three-layers: could not write %s\n", qPrintable(key));
            return 1;
        }
    }
    QStringList songs;
    for (int i = 0; i < 2; ++i) {
        songs << QStringLiteral(TARNIX_BENCH_MEDIA_DIR "/bgm-tone-%1.wav").arg(i + 1);
        // About four seconds each.
        if (!bench::generateMedia(songs.last(), testkit::toneWavBody({188, 0.3})))
            return 1;
    }

    DualDeckPlayerOptions options;
    options.audioSinkFactory = QStringLiteral("fakesink sync=true");
    auto owned = std::make_unique<DualDeckPlayer>(options);
    DualDeckPlayer *player = owned.get();
    if (!player->isInitialized()) {
        std::fprintf(stderr, "bench-three-layers: the player did not start\n");
        return 1;
    }

    PlaylistModel model;
    const quint64 onAir =
        model.addItems({testkit::ItemRequest(clip).name(QStringLiteral("clip")).playing().repeat(0)}).value(0);
    const quint64 strap = model.addItems({testkit::ItemRequest(key)
                                              .name(QStringLiteral("strap"))
                                              .type(PlaylistMediaType::stillImage)})
                              .value(0);
    const qint32 music = model.addPlaylist();
    model.setPlaylistMode(music, PlaylistMode::bgm);
    QList<PlaylistItemRequest> songRequests;
    for (const QString &song : songs)
        songRequests << testkit::ItemRequest(song)
                            .name(QFileInfo(song).baseName())
                            .type(PlaylistMediaType::audio)
                            .playlist(music)
                            .endMode(PlaylistEndMode::next);
    const QList<quint64> songIds = model.addItems(songRequests);

    ControllerOperations operations;
    SelectionHolder selection(&model, &operations);
    ProgramPlayoutController controller(std::make_unique<DualDeckProgramPlayer>(std::move(owned)), &model, &selection,
                                        nullptr, &operations, nullptr);
    if (!bench::runUntil([&] { return player->isPresenterRunning(); }, 8000)
        || !bench::takeOnAir(model, operations, onAir) || !controller.play()) {
        std::fprintf(stderr, "bench-three-layers: the clip did not go ON AIR\n");
        return 1;
    }
    bench::runUntil([] { return false; }, 2000); // past the start

    const RunFigures alone = measure(player, seconds);

    selection.select(strap);
    operations.invoke(ControllerOperations::ToggleDsk);
    if (!bench::runUntil([&] { return controller.dskController()->itemId() == strap; }, 10000)) {
        std::fprintf(stderr, "bench-three-layers: the key did not show\n");
        return 1;
    }
    selection.select(songIds.value(0));
    BgmPlayoutController *bgm = controller.bgmController();
    if (!bench::runUntil(
            [&] {
                if (bgm->state() != BgmPlayoutController::State::Stopped)
                    return true;
                operations.invoke(ControllerOperations::BgmPlay);
                return false;
            },
            10000)) {
        std::fprintf(stderr, "bench-three-layers: BGM did not start\n");
        return 1;
    }

    // The silence between two items: from the moment the playing item stops
    // being the one on the deck to the next one playing.
    std::vector<double> gaps;
    quint64 playingItem = 0; // the item last seen playing
    quint64 endedItem = 0;   // set between the end of one item and the next playing
    QElapsedTimer gap;
    const RunFigures layered = measure(player, seconds, [&] {
        const quint64 now =
            bgm->state() == BgmPlayoutController::State::Playing ? bgm->itemId() : quint64(0);
        if (endedItem == 0 && playingItem != 0 && now != playingItem) {
            endedItem = playingItem;
            gap.start();
        }
        if (endedItem != 0 && now != 0 && now != endedItem) {
            gaps.push_back(double(gap.nsecsElapsed()) / 1e6);
            endedItem = 0;
        }
        if (now != 0)
            playingItem = now;
    });

    std::printf("program 1920x1080 at 60 fps, ON AIR 1080p30 H.264 repeating, %d s per run:\n", seconds);
    std::printf("  ON AIR only:                 CPU %.1f %% of a core, renders per 5 s min %.0f mean %.1f %s\n",
                alone.cpu * 100.0, alone.rendersMin, alone.rendersMean, alone.rendersMin >= 299 ? "PASS" : "FAIL");
    std::printf("  ON AIR + DSK PNG + BGM:      CPU %.1f %% of a core, renders per 5 s min %.0f mean %.1f %s\n",
                layered.cpu * 100.0, layered.rendersMin, layered.rendersMean,
                layered.rendersMin >= 299 ? "PASS" : "FAIL");
    std::printf("  the two layers cost:         %+.1f %% of a core\n", (layered.cpu - alone.cpu) * 100.0);
    if (gaps.empty())
        std::printf("  BGM item change: none seen\n");
    else
        std::printf("  BGM item change, end of one item to the next playing: %zu changes, p50 %.0f ms, max %.0f ms\n",
                    gaps.size(), bench::percentile(gaps, 0.5), bench::percentile(gaps, 1.0));

    controller.shutdown();
    bench::runUntil([&] { return player->isShutdownFinished(); }, 5000);
    return 0;
}
