// Figures of the dual-deck player at 1920 x 1080, on a private Xvfb:
//
//  1. take latency over 50 cuts between a red and a blue clip: output frames
//     from takeStandby() to the first composed frame of the new deck (1 is
//     the next frame the compositor renders), p50/p95/max; target p95 <= 1.
//     Frames of any other colour seen at a cut count as background frames;
//     target 0.
//  2. CPU of the whole process with one 1080p30 H.264 item on air at
//     1080p60 into the program window, against gst-launch-1.0 playbin with
//     "videoconvert ! ximagesink" playing the same file into the same X
//     server; target ratio <= 2.0.
//
// "--cuts N" and "--seconds N" shorten the runs for a quick check.

#include "kit/frame_tap.h"
#include "playout/dual_deck_player.h"

#include "../tests/video/private_xvfb.h"

#include "bench_support.h"

#include <gst/gst.h>

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QThread>
#include <QUrl>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <mutex>
#include <sys/resource.h>
#include <unistd.h>
#include <vector>

using namespace tarnix;

namespace {

constexpr double kTargetP95Frames = 1.0;
constexpr double kTargetCpuRatio = 2.0;

using testkit::isBlue;
using testkit::isRed;
using testkit::TapPixel;

QString solidClip(const char *colour, quint32 argb)
{
    const QString path = QStringLiteral(TARNIX_BENCH_MEDIA_DIR "/solid-%1-1080p30-4s.mp4")
                             .arg(QString::fromLatin1(colour));
    const QString body = testkit::solidClipBody({argb, 1920, 1080, 30, 120, 30, 2000000});
    return tarnix::bench::generateMedia(path, body) ? path : QString();
}

QString zonePlateClip()
{
    // The same file as bench-deck-prepare's.
    const QString path = QStringLiteral(TARNIX_BENCH_MEDIA_DIR "/zone-plate-1080p30-10s.mp4");
    return tarnix::bench::generateMedia(path, tarnix::bench::zonePlate1080pBody()) ? path : QString();
}

bool pollUntil(DualDeckPlayer &player, const std::function<bool()> &condition, int limitMs)
{
    QElapsedTimer timer;
    timer.start();
    while (timer.elapsed() < limitMs) {
        player.poll();
        if (condition())
            return true;
        QApplication::processEvents(QEventLoop::AllEvents, 2);
        QThread::msleep(1);
    }
    return condition();
}

// Plays for a while like the controller does: a poll every 100 ms.
void tickFor(DualDeckPlayer &player, int ms)
{
    QElapsedTimer timer;
    timer.start();
    while (timer.elapsed() < ms) {
        player.poll();
        QApplication::processEvents(QEventLoop::AllEvents, 5);
        QThread::msleep(100);
    }
}

double ownCpuSeconds()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return double(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec)
           + double(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
}

double processCpuSeconds(qint64 pid)
{
    QFile stat(QStringLiteral("/proc/%1/stat").arg(pid));
    if (!stat.open(QIODevice::ReadOnly))
        return -1.0;
    const QByteArray line = stat.readAll();
    // Fields after the command name, which ends with the last ')'.
    const QList<QByteArray> fields = line.mid(line.lastIndexOf(')') + 2).split(' ');
    if (fields.size() < 13)
        return -1.0;
    const double ticks = double(sysconf(_SC_CLK_TCK));
    return (fields[11].toDouble() + fields[12].toDouble()) / ticks;
}

DeckSource fileSource(const QString &path)
{
    DeckSource source;
    source.source = path;
    return source;
}

bool cue(DualDeckPlayer &player, const QString &path)
{
    if (!player.prepareStandby(fileSource(path)))
        return false;
    pollUntil(player, [&] { return player.standbyStatus() != PreparationStatus::Preparing; }, 15000);
    if (player.standbyStatus() != PreparationStatus::Ready) {
        std::fprintf(stderr, "standby failed: %s\n", qPrintable(player.standbyError()));
        return false;
    }
    return true;
}

int intArgument(const QStringList &arguments, const QString &name, int fallback)
{
    const int at = arguments.indexOf(name);
    return at >= 0 && at + 1 < arguments.size() ? arguments.at(at + 1).toInt() : fallback;
}

} // namespace

int main(int argc, char **argv)
{
    PrivateXvfb xvfb;
    if (!xvfb.start("1920x1080x24")) {
        std::fprintf(stderr, "bench-dualdeck-take: Xvfb is not available\n");
        return 1;
    }
    qputenv("QT_QPA_PLATFORM", "xcb");
    QApplication app(argc, argv);
    gst_init(&argc, &argv);
    const QStringList arguments = app.arguments();
    const int cuts = std::max(2, intArgument(arguments, QStringLiteral("--cuts"), 50));
    const int seconds = std::clamp(intArgument(arguments, QStringLiteral("--seconds"), 8), 1, 8);

    const QString red = solidClip("red", 0xffff0000);
    const QString blue = solidClip("blue", 0xff0000ff);
    const QString zonePlate = zonePlateClip();
    if (red.isEmpty() || blue.isEmpty() || zonePlate.isEmpty())
        return 1;

    // A long run keeps the newest frames only.
    auto frames = std::make_shared<testkit::FrameTap>(testkit::FrameTap::Options{4096, false});
    DualDeckPlayerOptions options;
    options.audioSinkFactory = QStringLiteral("fakesink sync=true");
    options.frameTap = testkit::FrameTap::callback(frames);
    auto player = std::make_unique<DualDeckPlayer>(options);
    player->setGeometry(0, 0, 1920, 1080);
    player->show();
    // The program window at the program size, as a full-screen output has it,
    // so the presenter copies without scaling; the monitor sits below it.
    if (QWidget *output = player->findChild<QWidget *>(QStringLiteral("program-gpu-output"))) {
        QApplication::processEvents();
        player->resize(player->width() + 1920 - output->width(),
                       player->height() + 1080 - output->height());
        QApplication::processEvents();
        std::printf("program window %dx%d\n", output->width(), output->height());
    }
    if (!player->isInitialized()
        || !pollUntil(*player, [&] { return player->isPresenterRunning(); }, 10000)) {
        std::fprintf(stderr, "the player did not start\n");
        return 1;
    }

    std::vector<double> latencies;
    int backgroundFrames = 0;
    for (int cut = 0; cut < cuts; ++cut) {
        const bool toRed = cut % 2 == 0;
        if (!cue(*player, toRed ? red : blue))
            return 1;
        // Let the old deck play a little, as a real take would.
        const quint64 settle = frames->last().sequence;
        pollUntil(*player, [&] { return frames->last().sequence >= settle + 6; }, 2000);
        const quint64 before = frames->last().sequence;
        if (!player->takeStandby(false, 1.0f)) {
            std::fprintf(stderr, "take %d was refused\n", cut);
            return 1;
        }
        player->play();
        quint64 first = 0;
        pollUntil(
            *player,
            [&] {
                for (const TapPixel &pixel : frames->since(before)) {
                    if (toRed ? isRed(pixel) : isBlue(pixel)) {
                        first = pixel.sequence;
                        return true;
                    }
                }
                return false;
            },
            2000);
        if (!first) {
            std::fprintf(stderr, "cut %d never showed the new clip\n", cut);
            return 1;
        }
        for (const TapPixel &pixel : frames->since(before)) {
            if (pixel.sequence >= first)
                break;
            // The first cut comes from the background; later ones from the other clip.
            if (cut > 0 && !(toRed ? isBlue(pixel) : isRed(pixel)))
                ++backgroundFrames;
        }
        latencies.push_back(double(first - before));
    }
    const double p95 = tarnix::bench::percentile(latencies, 0.95);
    std::printf("take latency over %d cuts: p50=%.0f p95=%.0f max=%.0f output frames "
                "(target p95 <= %.0f: %s)\n",
                cuts, tarnix::bench::percentile(latencies, 0.5), p95,
                *std::max_element(latencies.begin(), latencies.end()), kTargetP95Frames,
                p95 <= kTargetP95Frames ? "met" : "missed");
    std::printf("background frames at cuts: %d (target 0: %s)\n", backgroundFrames,
                backgroundFrames == 0 ? "met" : "missed");
    std::fflush(stdout);

    // CPU: one 1080p30 item on air.
    player->offAir();
    if (!cue(*player, zonePlate) || !player->takeStandby(false, 1.0f) || !player->play())
        return 1;
    tickFor(*player, 1000);
    const double playerCpuStart = ownCpuSeconds();
    QElapsedTimer wall;
    wall.start();
    tickFor(*player, seconds * 1000);
    const double playerCpu = (ownCpuSeconds() - playerCpuStart) / (double(wall.elapsed()) / 1000.0);
    player->offAir();
    tickFor(*player, 300);

    QProcess reference;
    reference.setProgram(QStringLiteral("gst-launch-1.0"));
    reference.setArguments({QStringLiteral("-q"), QStringLiteral("playbin"),
                            QStringLiteral("uri=") + QUrl::fromLocalFile(zonePlate).toString(),
                            QStringLiteral("video-sink=videoconvert ! ximagesink"),
                            QStringLiteral("audio-sink=fakesink")});
    reference.setStandardOutputFile(QProcess::nullDevice());
    reference.start();
    if (!reference.waitForStarted(5000)) {
        std::fprintf(stderr, "gst-launch-1.0 did not start\n");
        return 1;
    }
    tickFor(*player, 1000);
    const double referenceStart = processCpuSeconds(reference.processId());
    wall.restart();
    tickFor(*player, seconds * 1000);
    const double referenceCpu =
        (processCpuSeconds(reference.processId()) - referenceStart) / (double(wall.elapsed()) / 1000.0);
    reference.kill();
    reference.waitForFinished(5000);

    const double ratio = referenceCpu > 0 ? playerCpu / referenceCpu : 0.0;
    std::printf("CPU with one 1080p30 item on air at 1080p60: player %.0f %% of a core, "
                "gst-launch playbin %.0f %%, ratio %.2f (target <= %.1f: %s)\n",
                playerCpu * 100.0, referenceCpu * 100.0, ratio, kTargetCpuRatio,
                referenceCpu > 0 && ratio <= kTargetCpuRatio ? "met" : "missed");

    player->beginShutdown();
    pollUntil(*player, [&] { return player->isShutdownFinished(); }, 10000);
    player.reset();
    return 0;
}
