#pragma once

#include <QMap>
#include <QString>
#include <QtGlobal>

#include <optional>

namespace tarnix {

// What the program picture counted since it started, as the health figures
// read it: its atomics, read from the main thread.
struct ProgramFrameCounters {
    quint64 renders = 0;
    quint64 presents = 0;
    quint64 mailboxMisses = 0;
    qint64 largestRenderGapMs = 0;
};

// The figures that tell whether a long run keeps playing. A figure without
// a value (no program picture, no reading yet) is written as null.
struct HealthFigures {
    qint64 uptimeMs = 0;
    std::optional<qint64> renders5s;         // output frames in the last 5 s
    std::optional<qint64> presents5s;        // frames shown in the last 5 s
    std::optional<qint64> largestRenderGapMs; // since the picture started
    std::optional<qint64> mailboxMisses;     // since the picture started
    QMap<QString, qint64> retainedPipelines; // owner -> count
    qint64 logRecordsDropped = 0;
    std::optional<qint64> rssBytes;
    std::optional<qint64> openFds;
    std::optional<qint64> threads;
    qint64 operatorWarnings = 0;             // warnings and errors shown
};

// One compact JSON object, keys in this order: uptimeMs, renders5s,
// presents5s, largestRenderGapMs, mailboxMisses, retainedPipelines (an
// object, owners in alphabetical order), logRecordsDropped, rssBytes,
// openFds, threads, operatorWarnings.
QString healthJson(const HealthFigures &figures);

} // namespace tarnix
