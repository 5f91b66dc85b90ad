#include "kit/log_capture.h"

#include <cstdio>
#include <mutex>

namespace tarnix::testkit {

namespace {

// One mutex guards the active capture, its records and the handler it
// replaced, so a record arriving from another thread while the capture ends
// either lands in it or goes to the previous handler, never into freed memory.
std::mutex g_mutex;
LogCapture *g_active = nullptr;
QtMessageHandler g_previous = nullptr;

void forward(QtMessageHandler previous, QtMsgType type, const QMessageLogContext &context, const QString &text)
{
    if (previous) {
        previous(type, context, text);
        return;
    }
    const QByteArray line = qFormatLogMessage(type, context, text).toLocal8Bit();
    std::fprintf(stderr, "%s\n", line.constData());
}

} // namespace

int severityOf(QtMsgType type)
{
    switch (type) {
    case QtDebugMsg: return 0;
    case QtInfoMsg: return 1;
    case QtWarningMsg: return 2;
    case QtCriticalMsg: return 3;
    case QtFatalMsg: return 4;
    }
    return 0;
}

LogCapture::LogCapture() : LogCapture(Options{}) {}

LogCapture::LogCapture(Options options) : m_options(std::move(options))
{
    bool second = false;
    {
        std::lock_guard lock(g_mutex);
        second = g_active != nullptr;
        if (!second) {
            g_active = this;
            g_previous = qInstallMessageHandler(&LogCapture::handler);
        }
    }
    if (second)
        qFatal("LogCapture: only one capture may exist at a time");
}

LogCapture::~LogCapture()
{
    std::lock_guard lock(g_mutex);
    qInstallMessageHandler(g_previous);
    g_active = nullptr;
}

void LogCapture::handler(QtMsgType type, const QMessageLogContext &context, const QString &text)
{
    QtMessageHandler previous = nullptr;
    bool passOn = false;
    {
        std::lock_guard lock(g_mutex);
        previous = g_previous;
        LogCapture *self = g_active;
        if (!self) {
            passOn = true;
        } else {
            const Options &o = self->m_options;
            const QString category = context.category ? QString::fromLatin1(context.category) : QString();
            const bool wanted = (o.category.isEmpty() || category == o.category)
                                && severityOf(type) >= severityOf(o.minimumType)
                                && (o.prefix.isEmpty() || text.startsWith(o.prefix));
            if (wanted)
                self->m_records.append({type, category, text});
            else
                passOn = o.forwardUncaptured && severityOf(type) >= severityOf(QtWarningMsg);
        }
    }
    if (passOn)
        forward(previous, type, context, text);
}

QList<CapturedRecord> LogCapture::records() const
{
    std::lock_guard lock(g_mutex);
    return m_records;
}

QStringList LogCapture::texts(const QString &prefix) const
{
    QStringList out;
    for (const CapturedRecord &record : records()) {
        if (record.text.startsWith(prefix))
            out << record.text;
    }
    return out;
}

int LogCapture::count(const QString &prefix) const
{
    return int(texts(prefix).size());
}

bool LogCapture::contains(const QString &prefix) const
{
    return count(prefix) > 0;
}

QString LogCapture::find(const QRegularExpression &pattern) const
{
    for (const CapturedRecord &record : records()) {
        if (pattern.match(record.text).hasMatch())
            return record.text;
    }
    return QString();
}

void LogCapture::clear()
{
    std::lock_guard lock(g_mutex);
    m_records.clear();
}

} // namespace tarnix::testkit
