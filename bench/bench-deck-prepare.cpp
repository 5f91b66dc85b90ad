// Prepare-to-ready time of a playout deck at 1920 x 1080, the presenter's
// first frame included: a 10 s 1080p30 H.264 file with moving content, once
// without an In point and once with an In point one frame before a keyframe
// (the worst accurate seek: a whole GOP decoded before the first frame).
//
// Each run starts on a fresh pipeline with no other stop in flight, and the
// deck is polled every millisecond, so the figure is the preparation itself
// rather than the controller's tick. "--4k" prepares at 3840 x 2160 instead;
// those figures are informational.

#include "playout/deck_source_session.h"
#include "video/deck_frame_mailboxes.h"

#include "bench_support.h"

#include <gst/gst.h>

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QThread>

#include <algorithm>
#include <cstdio>
#include <vector>

using namespace tarnix;

namespace {

constexpr int kRuns = 20;
constexpr double kTargetP95Ms = 300.0;
// Keyframes every 30 frames at 30 fps: frame 150 (5000 ms) is one, and frame
// 149 starts at 4966.67 ms.
constexpr qint64 kInPointMs = 4967;

bool waitUntil(const std::function<bool()> &condition, int limitMs)
{
    QElapsedTimer clock;
    clock.start();
    while (!condition()) {
        if (clock.elapsed() > limitMs)
            return false;
        QThread::msleep(1);
    }
    return true;
}

// Runs kRuns preparations of the request; false when one does not reach ready.
bool measure(DeckSourceSession &deck, const DeckSource &request, std::vector<double> *times)
{
    for (int run = 0; run < kRuns; ++run) {
        if (!deck.replaceFilePipeline()
            || !waitUntil([&] { return deck.pendingStopCount() == 0; }, 10000)) {
            std::fprintf(stderr, "the previous pipeline did not stop\n");
            return false;
        }
        QElapsedTimer clock;
        clock.start();
        deck.prepare(request);
        waitUntil(
            [&] {
                deck.poll();
                return deck.status() != PreparationStatus::Preparing;
            },
            15000);
        const double elapsedMs = double(clock.nsecsElapsed()) / 1e6;
        if (deck.status() != PreparationStatus::Ready) {
            std::fprintf(stderr, "run %d did not become ready: %s\n", run,
                         qPrintable(deck.error()));
            return false;
        }
        times->push_back(elapsedMs);
    }
    return true;
}

void report(const char *name, const std::vector<double> &times)
{
    const double p95 = tarnix::bench::percentile(times, 0.95);
    std::printf("%-34s runs=%zu p50=%.1f ms p95=%.1f ms max=%.1f ms (target p95 <= %.0f ms: %s)\n",
                name, times.size(), tarnix::bench::percentile(times, 0.50), p95,
                *std::max_element(times.begin(), times.end()), kTargetP95Ms,
                p95 <= kTargetP95Ms ? "met" : "missed");
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    gst_init(&argc, &argv);

    const QString file = QStringLiteral(TARNIX_BENCH_MEDIA_DIR "/zone-plate-1080p30-10s.mp4");
    if (!tarnix::bench::generateMedia(file, tarnix::bench::zonePlate1080pBody()))
        return 1;

    DeckSourceSession::Options options;
    options.deckIndex = 0;
    if (app.arguments().contains(QStringLiteral("--4k"))) {
        options.timings.width = 3840;
        options.timings.height = 2160;
    }
    QString error;
    std::unique_ptr<DeckSourceSession> deck = DeckSourceSession::create(options, &error);
    if (!deck) {
        std::fprintf(stderr, "deck creation failed: %s\n", qPrintable(error));
        return 1;
    }
    DeckFrameMailboxes presenter;
    presenter.attachDeck(0, deck->playbin(), deck->appsink());
    deck->setPresenter(&presenter);

    DeckSource request;
    request.source = file;
    std::printf("deck-prepare: %dx%d, %s\n", deck->width(), deck->height(), qPrintable(file));

    std::vector<double> plain;
    std::vector<double> inPoint;
    bool ok = measure(*deck, request, &plain);
    request.inMs = kInPointMs;
    ok = ok && measure(*deck, request, &inPoint);
    if (!ok)
        return 1;
    report("prepare-to-ready, no In point", plain);
    report("prepare-to-ready, In before keyframe", inPoint);

    if (deck->replaceFilePipeline())
        waitUntil([&] { return deck->pendingStopCount() == 0; }, 10000);
    return 0;
}
