#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QString>

namespace tarnix {

enum class LogLevel { Debug, Info, Warn, Error };

// "DEBUG", "INFO", "WARN" or "ERROR".
const char *logLevelText(LogLevel level);

// Longest message kept in a record, in UTF-16 code units.
inline constexpr qsizetype kLogMessageLimit = 8192;

// The message cut to the limit; a cut never leaves half of a surrogate pair.
QString truncatedLogMessage(const QString &message);

// One record as written to the file: a compact JSON object with the keys
// time, level, source, pid, thread, message in that order, UTF-8, ended by a
// line feed. Encoded by hand because QJsonObject would sort the keys.
QByteArray encodeLogRecord(const QDateTime &utcTime, LogLevel level, const QString &source,
                           qint64 pid, qint64 threadId, const QString &message);

// Kernel id of the calling thread.
qint64 currentKernelThreadId();

} // namespace tarnix
