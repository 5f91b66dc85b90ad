// Load and save of a 10,000-item playlist document, and the model's
// successor and route over it.
//
//   bench-playlist-document [--runs N]
//
// Prints the median of N runs (default 5) with the targets: load under
// 200 ms, save under 100 ms. Peak memory is the process's resident high-water
// mark after each phase.

#include "playlist/playlist_document.h"
#include "playlist/playlist_model.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QUuid>

#include <sys/resource.h>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <vector>

using namespace tarnix;

namespace {

long peakKiB()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

double medianMs(int runs, const std::function<void()> &work)
{
    std::vector<double> times;
    for (int i = 0; i < runs; ++i) {
        QElapsedTimer timer;
        timer.start();
        work();
        times.push_back(timer.nsecsElapsed() / 1e6);
    }
    std::sort(times.begin(), times.end());
    return times[times.size() / 2];
}

PlaylistDocument bigDocument()
{
    PlaylistDocument d = PlaylistDocument::createNew();
    d.playlists.clear();
    for (int p = 1; p <= 10; ++p)
        d.playlists.append(Playlist{p, QStringLiteral("Playlist %1").arg(p), PlaylistMode::standard, p % 2 == 0});
    for (int i = 0; i < 10000; ++i) {
        PlaylistItem item;
        item.id = i + 1;
        item.playlistNumber = i / 1000 + 1;
        item.position = i % 1000 + 1;
        item.filePath = QStringLiteral("/srv/media/show/segment-%1/clip-%2.mp4").arg(i / 100).arg(i);
        item.displayName = QStringLiteral("Clip %1").arg(i);
        item.mediaType = PlaylistMediaType::video;
        item.settings.startMode = PlaylistStartMode::play;
        item.settings.endMode = PlaylistEndMode::next;
        item.settings.outPointMs = 30000 + i;
        item.settings.endCrossfade = {i % 3 == 0, 1500};
        d.items.append(item);
    }
    d.nextItemId = 10001;
    return d;
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    int runs = 5;
    const QStringList args = app.arguments();
    if (const int at = args.indexOf("--runs"); at > 0 && at + 1 < args.size())
        runs = std::max(1, args[at + 1].toInt());

    QTemporaryDir dir;
    const QString path = dir.filePath("show.json");
    const PlaylistDocument document = bigDocument();
    const long baseKiB = peakKiB();

    QString error;
    const double saveMs = medianMs(runs, [&] {
        if (!writePlaylistFile(path, document, &error))
            std::fprintf(stderr, "save failed: %s\n", qPrintable(error));
    });
    const long afterSaveKiB = peakKiB();
    std::optional<LoadedPlaylist> loaded;
    const double loadMs = medianMs(runs, [&] {
        loaded = loadPlaylistFile(path, &error);
        if (!loaded)
            std::fprintf(stderr, "load failed: %s\n", qPrintable(error));
    });
    const long afterLoadKiB = peakKiB();
    const double parseMs = medianMs(runs, [&] { readPlaylistFile(path, &error); });

    PlaylistModelOptions options;
    options.scanInterval = std::chrono::hours(1);
    PlaylistModel model(nullptr, options);
    if (!loaded || !model.replaceDocument(loaded->document, &error, loaded->missingItems)) {
        std::fprintf(stderr, "model refused the document: %s\n", qPrintable(error));
        return 1;
    }
    // Every item is offline here (the files do not exist): mark them online
    // through a fresh model fed with an empty missing set.
    PlaylistModel online(nullptr, options);
    online.replaceDocument(loaded->document, &error, QSet<quint64>{});
    const QList<quint64> ids = online.itemIds(1);
    quint64 sink = 0;
    const double successorUs = medianMs(runs, [&] {
        for (quint64 id : ids)
            sink += online.successor(id, PlaylistEndMode::next);
    }) * 1000.0 / ids.size();
    // Worst case for the skip logic: every other row of a playlist offline.
    const double successorOfflineUs = medianMs(runs, [&] {
        for (quint64 id : ids)
            sink += model.successor(id, PlaylistEndMode::next);
    }) * 1000.0 / ids.size();
    PlaylistRoute route;
    const double routeMs = medianMs(runs, [&] { route = online.route(ids.first()); });

    std::printf("bench-playlist-document: %d items in %lld playlists, %lld bytes, median of %d runs\n",
                int(document.items.size()), qlonglong(document.playlists.size()),
                qlonglong(QFileInfo(path).size()), runs);
    std::printf("  save      %8.1f ms   target < 100 ms   %s\n", saveMs, saveMs < 100 ? "ok" : "MISSED");
    std::printf("  load      %8.1f ms   target < 200 ms   %s   (read and parse alone %.1f ms)\n", loadMs,
                loadMs < 200 ? "ok" : "MISSED", parseMs);
    std::printf("  peak memory: %ld KiB before, +%ld KiB after saving, +%ld KiB after loading\n", baseKiB,
                afterSaveKiB - baseKiB, afterLoadKiB - baseKiB);
    std::printf("  successor %8.2f us per call (all online), %.2f us (all offline: full cyclic scan)\n",
                successorUs, successorOfflineUs);
    std::printf("  route     %8.2f ms over %lld rows (stop %d)\n", routeMs, qlonglong(route.rows.size()),
                int(route.stop));
    return sink == 0 ? 0 : 0;
}
