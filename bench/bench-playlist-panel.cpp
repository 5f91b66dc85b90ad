// The playlist panel over a 10,000-item playlist: an import of the document
// through the controller window's own path, then the list and the tiles
// scrolled frame by frame.
//
//   bench-playlist-panel [--items 10000] [--frames 300] [--picture-wait 30000]
//
// Prints the time from the import request to the first paint of the items
// with the document in place, the paint time of each scrolled frame
// (p50/p95/max; target p95 under 8 ms), the resident memory the view adds,
// and how many item pictures were asked for against the rows painted: a
// picture is asked for only when its row is painted. Last, how long the
// tiles in view wait for their pictures behind the ones asked for on the
// way (at most --picture-wait ms).
//
// Every item points at one short generated clip, so all are online and each
// painted row asks for its picture. Runs on the offscreen platform unless
// QT_QPA_PLATFORM says otherwise.

#include "MainController.h"

#include "playlist/playlist_document.h"
#include "playlist/playlist_model.h"
#include "playlist/playlist_thumbnail_store.h"
#include "playlist/playlist_transfer.h"
#include "ui/playlist_panel.h"

#include "bench_support.h"

#include <gst/gst.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QListView>
#include <QScrollBar>
#include <QSet>
#include <QStyledItemDelegate>
#include <QTemporaryDir>
#include <QWidget>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <optional>
#include <vector>

using namespace tarnix;

using bench::runUntil;

namespace {

// Stands in front of the panel's own delegate and notes which rows it is
// asked to paint; everything else goes to the panel's delegate unchanged.
class PaintedRows : public QStyledItemDelegate
{
public:
    PaintedRows(QAbstractItemDelegate *inner, QObject *parent) : QStyledItemDelegate(parent), m_inner(inner) {}

    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override
    {
        m_painted.insert(index.data(Qt::UserRole).value<quint64>());
        ++m_paintsThisFrame;
        m_inner->paint(painter, option, index);
    }
    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override
    {
        return m_inner->sizeHint(option, index);
    }
    bool helpEvent(QHelpEvent *event, QAbstractItemView *view, const QStyleOptionViewItem &option,
                   const QModelIndex &index) override
    {
        return m_inner->helpEvent(event, view, option, index);
    }

    const QSet<quint64> &painted() const { return m_painted; }
    int takeFramePaints() { return std::exchange(m_paintsThisFrame, 0); }

private:
    QAbstractItemDelegate *m_inner;
    mutable QSet<quint64> m_painted;
    mutable int m_paintsThisFrame = 0;
};

// Notes when the viewport has been painted with the whole document in it.
class FirstPaint : public QObject
{
public:
    FirstPaint(QListView *view, int rows) : m_view(view), m_rows(rows) { view->viewport()->installEventFilter(this); }

    std::optional<qint64> atNs;
    QElapsedTimer clock;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::Paint && !atNs && m_view->model() && m_view->model()->rowCount() == m_rows) {
            // Measured once the paint has been done, not when it begins.
            m_view->viewport()->removeEventFilter(this);
            QCoreApplication::sendEvent(watched, event);
            atNs = clock.nsecsElapsed();
            return true;
        }
        return false;
    }

private:
    QListView *m_view;
    int m_rows;
};

PlaylistDocument bigPlaylist(int count, const QString &clip)
{
    PlaylistDocument document = PlaylistDocument::createNew();
    document.playlists = {Playlist{1, QStringLiteral("Ten thousand"), PlaylistMode::standard, false}};
    document.activePlaylistNumber = 1;
    for (int i = 0; i < count; ++i) {
        PlaylistItem item;
        item.id = quint64(i) + 1;
        item.playlistNumber = 1;
        item.position = quint32(i) + 1;
        item.filePath = clip;
        item.displayName = QStringLiteral("Segment %1 — interview, part %2").arg(i / 10).arg(i % 10 + 1);
        item.mediaType = PlaylistMediaType::video;
        item.settings.outPointMs = 2000;
        document.items.append(item);
    }
    document.nextItemId = quint64(count) + 1;
    return document;
}

struct FrameFigures {
    std::vector<double> stepMs;  // a quarter page on
    std::vector<double> jumpMs;  // somewhere else in the playlist
    double paintedPerFrame = 0;
    std::vector<double> all() const
    {
        std::vector<double> ms = stepMs;
        ms.insert(ms.end(), jumpMs.begin(), jumpMs.end());
        return ms;
    }
};

// Scrolls the view the way an operator does, first a quarter page at a
// time from the top, then in jumps across the whole playlist, repainting
// the viewport at each position and timing the repaint alone.
FrameFigures scrollFrames(QListView *view, PaintedRows *rows, int frames)
{
    FrameFigures figures;
    QScrollBar *bar = view->verticalScrollBar();
    bar->setValue(0);
    QApplication::processEvents();
    rows->takeFramePaints();
    const int steps = frames * 2 / 3;
    const int step = std::max(1, bar->pageStep() / 4);
    quint32 seed = 12345;
    qint64 paints = 0;
    for (int frame = 0; frame < frames; ++frame) {
        if (frame < steps) {
            bar->setValue(std::min(bar->maximum(), frame * step));
        } else {
            seed = seed * 1664525u + 1013904223u;
            bar->setValue(int(qint64(seed >> 8) * bar->maximum() / (1 << 24)));
        }
        QElapsedTimer timer;
        timer.start();
        view->viewport()->repaint();
        (frame < steps ? figures.stepMs : figures.jumpMs).push_back(double(timer.nsecsElapsed()) / 1e6);
        paints += rows->takeFramePaints();
        // Pictures that came meanwhile are painted here, outside the timing.
        QApplication::processEvents();
        rows->takeFramePaints();
    }
    figures.paintedPerFrame = double(paints) / frames;
    return figures;
}

void printFrames(const char *name, const FrameFigures &figures)
{
    const std::vector<double> all = figures.all();
    const double p95 = bench::percentile(all, 0.95);
    std::printf("  %-5s scroll: %zu frames, %.1f rows painted a frame; paint p50 %.2f ms, p95 %.2f ms, max %.2f ms"
                "   target p95 < 8 ms   %s\n",
                name, all.size(), figures.paintedPerFrame, bench::percentile(all, 0.5), p95,
                bench::percentile(all, 1.0), p95 < 8.0 ? "ok" : "MISSED");
    std::printf("         quarter-page steps p50 %.2f / p95 %.2f ms; jumps p50 %.2f / p95 %.2f ms\n",
                bench::percentile(figures.stepMs, 0.5), bench::percentile(figures.stepMs, 0.95),
                bench::percentile(figures.jumpMs, 0.5), bench::percentile(figures.jumpMs, 0.95));
}

} // namespace

int main(int argc, char **argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    gst_init(&argc, &argv);
    QApplication app(argc, argv);
    registerPlaylistMetaTypes();
    const int itemCount = std::max(1, bench::argument("--items", 10000));
    const int frames = std::max(3, bench::argument("--frames", 300));

    const QString clip = QStringLiteral(TARNIX_BENCH_MEDIA_DIR "/panel-clip-360p-2s.mp4");
    if (!bench::generateMedia(clip, QStringLiteral("videotestsrc num-buffers=50 pattern=ball ! "
                                                   "video/x-raw,width=640,height=360,framerate=25/1 ! "
                                                   "openh264enc ! h264parse ! mp4mux")))
        return 1;
    QTemporaryDir session;
    const QString documentPath = session.filePath(QStringLiteral("ten-thousand.json"));
    QString error;
    if (!writePlaylistFile(documentPath, bigPlaylist(itemCount, clip), &error)) {
        std::fprintf(stderr, "bench-playlist-panel: could not write the document: %s\n", qPrintable(error));
        return 1;
    }

    const bench::ProcessFigures atStart = bench::processFigures();
    QWidget programWindow;
    programWindow.resize(320, 180);
    auto *controllerWindow = new QWidget;
    MainControllerOptions options;
    options.programOutputSize = QSize(320, 180);
    options.programAudioSinkFactory = QStringLiteral("fakesink sync=true");
    options.previousSessionPath = session.filePath(QStringLiteral("previous-session.json"));
    auto controller = std::make_unique<MainController>(&programWindow, controllerWindow, false, nullptr, options);
    PlaylistModel *model = controller->playlistModel();
    PlaylistThumbnailStore *thumbnails = controller->thumbnailStore();
    PlaylistPanel *panel = controller->playlistPanel();
    auto *view = panel ? panel->findChild<QListView *>(QStringLiteral("playlistListWidget")) : nullptr;
    if (!view) {
        std::fprintf(stderr, "bench-playlist-panel: the controller window has no playlist list\n");
        return 1;
    }
    // An operator's window on a 1080p screen.
    controllerWindow->resize(1920, 1040);
    controllerWindow->show();
    runUntil([] { return false; }, 1000);  // settle
    auto *rows = new PaintedRows(view->itemDelegate(), view);
    view->setItemDelegate(rows);
    const bench::ProcessFigures beforeImport = bench::processFigures();

    FirstPaint firstPaint(view, itemCount);
    std::optional<qint64> importedAtNs;
    bench::ProcessFigures atImport;
    bool imported = false;
    firstPaint.clock.start();
    controller->playlistTransfer()->importPlaylists(documentPath, [&](const PlaylistTransferOutcome &outcome) {
        importedAtNs = firstPaint.clock.nsecsElapsed();
        atImport = bench::processFigures();
        imported = outcome.success;
        if (!outcome.success)
            std::fprintf(stderr, "bench-playlist-panel: import failed: %s\n", qPrintable(outcome.errorText()));
    });
    if (!runUntil([&] { return firstPaint.atNs.has_value() || (importedAtNs && !imported); }, 60000) || !imported) {
        std::fprintf(stderr, "bench-playlist-panel: the imported playlist was not painted\n");
        return 1;
    }
    const qint64 firstPaintNs = *firstPaint.atNs;
    runUntil([] { return false; }, 500);
    const bench::ProcessFigures afterImport = bench::processFigures();
    int pending = 0;
    int offline = 0;
    for (quint64 id : model->itemIds(1)) {
        pending += model->isPending(id);
        offline += model->isOffline(id);
    }

    const FrameFigures list = scrollFrames(view, rows, frames);
    const bench::ProcessFigures afterList = bench::processFigures();

    QElapsedTimer tileSwitch;
    tileSwitch.start();
    panel->setTileView(true);
    FirstPaint tilesPainted(view, itemCount);
    tilesPainted.clock.start();
    runUntil([&] { return tilesPainted.atNs.has_value(); }, 30000);
    const double tileSwitchMs = double(tileSwitch.nsecsElapsed()) / 1e6;
    const FrameFigures tiles = scrollFrames(view, rows, frames);
    const bench::ProcessFigures afterTiles = bench::processFigures();

    // Every item asked for is waiting for its picture or has it.
    int asked = 0;
    int askedUnpainted = 0;
    int stillWaiting = 0;
    for (quint64 id : model->itemIds(1)) {
        if (thumbnails->isWaiting(id) || thumbnails->details(id)) {
            ++asked;
            askedUnpainted += !rows->painted().contains(id);
            stillWaiting += thumbnails->isWaiting(id);
        }
    }

    // The rows the operator now looks at, and how long their pictures take
    // behind the requests of the rows scrolled past.
    QList<quint64> inView;
    for (int row = 0; row < view->model()->rowCount(); ++row) {
        const QModelIndex index = view->model()->index(row, 0);
        if (view->visualRect(index).intersects(view->viewport()->rect()))
            inView << index.data(Qt::UserRole).value<quint64>();
    }
    const int waitLimitMs = bench::argument("--picture-wait", 30000);
    QElapsedTimer pictureWait;
    pictureWait.start();
    auto shownInView = [&] {
        return int(std::count_if(inView.begin(), inView.end(), [&](quint64 id) { return thumbnails->details(id).has_value(); }));
    };
    const bool allShown = runUntil([&] { return shownInView() == inView.size(); }, waitLimitMs);
    const double pictureWaitMs = double(pictureWait.nsecsElapsed()) / 1e6;
    const int shownAtEnd = shownInView();
    int madeAtEnd = 0;
    for (quint64 id : model->itemIds(1))
        madeAtEnd += thumbnails->details(id).has_value();

    std::printf("bench-playlist-panel: %d items in one playlist, all pointing at %s (online: %d offline, %d pending)\n",
                itemCount, qPrintable(QFileInfo(clip).fileName()), offline, pending);
    std::printf("  import: document in the model after %.1f ms; first paint of the items after %.1f ms\n",
                double(*importedAtNs) / 1e6, double(firstPaintNs) / 1e6);
    printFrames("list", list);
    std::printf("  tile view: switched and painted in %.1f ms\n", tileSwitchMs);
    printFrames("tiles", tiles);
    std::printf("  resident memory: %.1f MB at start, %.1f MB with the empty panel, %.1f MB with the document in the "
                "model (+%.1f MB), %.1f MB half a second after the first paint, %.1f MB after the list scroll, "
                "%.1f MB after the tile scroll (heap %.1f MB; the pictures' workers count in)\n",
                atStart.rssMb, beforeImport.rssMb, atImport.rssMb, atImport.rssMb - beforeImport.rssMb,
                afterImport.rssMb, afterList.rssMb, afterTiles.rssMb, afterTiles.heapMb);
    std::printf("  pictures: %d items asked for, %lld rows painted, %d asked for without being painted   %s\n",
                asked, qlonglong(rows->painted().size()), askedUnpainted, askedUnpainted == 0 ? "ok" : "WRONG");
    std::printf("            %d made, %d still waiting when the scrolling ended\n", asked - stillWaiting, stillWaiting);
    if (allShown)
        std::printf("            the %lld tiles in view had their pictures %.0f ms after the scrolling ended"
                    " (%d pictures made by then)\n",
                    qlonglong(inView.size()), pictureWaitMs, madeAtEnd);
    else
        std::printf("            the %lld tiles in view: %d with their picture %.0f s after the scrolling ended"
                    " (%d pictures made by then)   SLOW\n",
                    qlonglong(inView.size()), shownAtEnd, pictureWaitMs / 1000.0, madeAtEnd);

    controller->shutdown();
    controller.reset();
    delete controllerWindow;
    return 0;
}
