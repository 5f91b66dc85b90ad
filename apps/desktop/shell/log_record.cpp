#include "shell/log_record.h"

#include "shell/ordered_json.h"

#include <sys/syscall.h>
#include <unistd.h>

namespace tarnix {

const char *logLevelText(LogLevel level)
{
    switch (level) {
    case LogLevel::Debug: return "DEBUG";
    case LogLevel::Info: return "INFO";
    case LogLevel::Warn: return "WARN";
    case LogLevel::Error: return "ERROR";
    }
    return "ERROR";
}

QString truncatedLogMessage(const QString &message)
{
    if (message.size() <= kLogMessageLimit)
        return message;
    qsizetype cut = kLogMessageLimit;
    if (message.at(cut - 1).isHighSurrogate())
        --cut;
    return message.left(cut);
}

QByteArray encodeLogRecord(const QDateTime &utcTime, LogLevel level, const QString &source,
                           qint64 pid, qint64 threadId, const QString &message)
{
    const QString line = OrderedJsonObject()
                             .add(QStringLiteral("time"), utcTime.toUTC().toString(Qt::ISODateWithMs))
                             .add(QStringLiteral("level"), logLevelText(level))
                             .add(QStringLiteral("source"), source)
                             .add(QStringLiteral("pid"), pid)
                             .add(QStringLiteral("thread"), QString::number(threadId))
                             .add(QStringLiteral("message"), truncatedLogMessage(message))
                             .toString();
    QByteArray bytes = line.toUtf8();
    bytes.append('\n');
    return bytes;
}

qint64 currentKernelThreadId()
{
    return qint64(::syscall(SYS_gettid));
}

} // namespace tarnix
