#pragma once

#include "shell/log_record.h"

#include <QDateTime>
#include <QString>
#include <QStringList>

#include <chrono>
#include <functional>

namespace tarnix {

// Limits and clock of the application log. The defaults are those of the
// product; tests shrink them so that rotation and waits take milliseconds.
struct LogOptions {
    qint64 fileLimitBytes = 10485760;       // a file grows up to this size
    int keptFiles = 10;                     // "tarnix-*.jsonl" files kept across sessions
    int queueLimit = 4096;                  // records waiting for the writer
    int recentLimit = 2000;                 // lines kept for the viewer
    std::chrono::milliseconds writerWait{200};
    std::function<QDateTime()> clock;       // UTC time of a record; empty: the system clock
    // The start line and the first start-up diagnostics; off in tests that
    // count records.
    bool writeStartRecords = true;
};

// The process-wide JSONL log. One writer thread owns the files; callers on
// any thread only encode a record and queue it under a short lock. Nothing
// here throws and nothing reaches the operator except through the viewer.
//
// Thread rules: startLog, stopLog, installGStreamerBridge and setDebugMode on
// the main thread; writeLog and the getters from any thread.

// Starts the writer in the directory ("" selects "logs" in the application
// local data location), installs the Qt message handler, writes the start
// line and runs the first start-up diagnostics. Returns false when the writer
// could not start; the application then runs without the file log.
bool startLog(const QString &directory, const LogOptions &options = {});

// Queues one record. DEBUG records are dropped unless debug mode is on;
// records that do not fit into the queue are counted and reported later.
void writeLog(LogLevel level, const QString &source, const QString &text);

// Debug mode lets DEBUG records and GStreamer's info and debug lines through
// and raises GStreamer's thresholds for the video and audio categories.
void setDebugMode(bool on);
bool debugMode();

QString logDirectory();
QString logSessionName();
QStringList recentLines();
QString lastError();
bool logStarted();
// Records lost to a full queue since the log started. Never waits.
qint64 logRecordsDropped();

// Writes "Shutdown complete", gives back the Qt, GLib and GStreamer log
// hooks, lets the writer empty its queue and joins it. Later writes are
// ignored. Safe to call more than once.
void stopLog();

// Before gst_init: the GStreamer log function is added and, without
// GST_DEBUG_FILE, GStreamer's console writer removed, so that the lines of
// the initialisation itself land in the log.
void prepareGStreamerLogBridge();

// After gst_init: GLib print handlers and a GStreamer log function feed the
// log; without GST_DEBUG_FILE GStreamer's own console output is removed.
void installGStreamerBridge();

// Threshold string applied while debug mode is on.
inline constexpr const char *kGStreamerDebugThresholds =
    "*:2,videoconvert*:4,videoscale*:4,ximagesink:4,pulse*:4,playbin*:4";

// Test seam: while stalled, the writer takes nothing from the queue, as a
// writer stuck on a slow disk would.
void setLogWriterStalledForTesting(bool stalled);

} // namespace tarnix
