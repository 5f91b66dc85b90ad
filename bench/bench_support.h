#pragma once

// Shared pieces of the bench programs: generated media and percentiles.

#include "kit/clip_generator.h"

#include "control/controller_operations.h"
#include "playlist/playlist_model.h"

#include <gst/gst.h>

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QString>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <vector>

#include <malloc.h>

namespace tarnix::bench {

// Runs the event loop until the condition holds or the limit has passed;
// the condition's last answer.
template <typename Condition>
bool runUntil(Condition condition, int limitMs)
{
    QElapsedTimer timer;
    timer.start();
    while (timer.elapsed() < limitMs) {
        QApplication::processEvents(QEventLoop::AllEvents, 5);
        if (condition())
            return true;
    }
    return condition();
}

// The text after a command line option ("--runs 20"), or the fallback.
inline QString argumentText(const char *name, const QString &fallback = {})
{
    const QStringList arguments = QCoreApplication::arguments();
    const qsizetype at = arguments.indexOf(QLatin1String(name));
    return at >= 0 && at + 1 < arguments.size() ? arguments.at(at + 1) : fallback;
}

inline int argument(const char *name, int fallback)
{
    const QString text = argumentText(name);
    return text.isEmpty() ? fallback : text.toInt();
}

// Selects the item and takes it ON AIR, asking again while the program
// player is still coming up; whether it went ON AIR within the limit.
inline bool takeOnAir(PlaylistModel &model, ControllerOperations &operations, quint64 itemId, int limitMs = 20000)
{
    operations.invoke(ControllerOperations::SelectItem, itemId);
    return runUntil(
        [&] {
            if (model.onAirItemId() == itemId)
                return true;
            operations.invoke(ControllerOperations::TakeSelectedOnAir);
            return runUntil([&] { return model.onAirItemId() == itemId; }, 500);
        },
        limitMs);
}

// Ten seconds of 1080p30 H.264 with moving content (keyframe every second)
// and AAC stereo: the program's typical file.
inline QString zonePlate1080pBody()
{
    return QStringLiteral("videotestsrc num-buffers=300 pattern=zone-plate kx2=20 ky2=20 kt=1 ! "
                          "video/x-raw,width=1920,height=1080,framerate=30/1 ! "
                          "openh264enc gop-size=30 bitrate=8000000 ! h264parse ! mux. "
                          "audiotestsrc num-buffers=469 samplesperbuffer=1024 ! "
                          "audio/x-raw,rate=48000,channels=2 ! avenc_aac ! aacparse ! mux. "
                          "mp4mux name=mux");
}

// Writes the clip with the kit's generator unless it exists, telling on the
// console what it does and why it failed. feed, when given, runs once the
// pipeline plays (to push buffers into an appsrc).
inline bool generateMedia(const QString &path, const QString &body,
                          const std::function<void(GstElement *pipeline)> &feed = {})
{
    if (QFile::exists(path))
        return true;
    std::printf("generating %s ...\n", qPrintable(path));
    std::fflush(stdout);
    QString error;
    if (!testkit::generateClip(path, body, &error, feed, 3600)) {
        std::fprintf(stderr, "%s\n", qPrintable(error));
        return false;
    }
    return true;
}

// The value at or above the given fraction of the sorted values (nearest rank).
inline double percentile(std::vector<double> values, double fraction)
{
    if (values.empty())
        return 0.0;
    std::sort(values.begin(), values.end());
    const auto rank = static_cast<std::size_t>(fraction * double(values.size()) + 0.999999);
    return values[std::clamp<std::size_t>(rank, 1, values.size()) - 1];
}

// What a long run must keep flat, read from the process itself.
struct ProcessFigures {
    double rssMb = 0;
    // Bytes the allocator has handed out and not got back (all arenas).
    double heapMb = 0;
    // Free bytes the allocator keeps in its heaps instead of giving back.
    double heldFreeMb = 0;
    int fds = 0;
    int threads = 0;
};

inline ProcessFigures processFigures()
{
    ProcessFigures figures;
    QFile status(QStringLiteral("/proc/self/status"));
    if (status.open(QIODevice::ReadOnly)) {
        for (const QByteArray &line : status.readAll().split('\n')) {
            if (line.startsWith("VmRSS:"))
                figures.rssMb = line.mid(6).trimmed().split(' ').value(0).toDouble() / 1024.0;
            else if (line.startsWith("Threads:"))
                figures.threads = line.mid(8).trimmed().toInt();
        }
    }
    const struct mallinfo2 info = mallinfo2();
    figures.heapMb = double(info.uordblks + info.hblkhd) / (1024.0 * 1024.0);
    figures.heldFreeMb = double(info.fordblks) / (1024.0 * 1024.0);
    figures.fds = int(QDir(QStringLiteral("/proc/self/fd")).entryList(QDir::NoDotAndDotDot | QDir::AllEntries).size());
    return figures;
}

} // namespace tarnix::bench
