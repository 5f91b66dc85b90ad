#include "shell/application_log.h"

#include "shell/log_categories.h"
#include "shell/startup_diagnostics.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSysInfo>
#include <QUuid>

#include <gst/gst.h>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

#include <unistd.h>

namespace tarnix {

namespace {

// Set while a thread runs the log's own code, so that a message raised there
// (a Qt warning of the file layer, a GStreamer line from a handler) cannot
// come back into the log on the same thread.
thread_local bool t_insideLog = false;

class InsideLog
{
public:
    InsideLog() : m_previous(t_insideLog) { t_insideLog = true; }
    ~InsideLog() { t_insideLog = m_previous; }

private:
    bool m_previous;
};

struct LogState {
    std::mutex mutex;
    std::condition_variable wake;
    std::vector<QByteArray> queue;
    std::deque<QString> recent;
    qint64 droppedCount = 0;
    // Every record lost since the log started, reported or not; read without
    // the lock.
    std::atomic<qint64> droppedTotal{0};
    QString directory;
    QString sessionName;
    QString lastError;
    bool stopping = false;
    bool writerExited = false;
    bool writerStalled = false;
    std::atomic<bool> started{false};
    std::atomic<bool> debugMode{false};
    LogOptions options;
    std::thread writer;

    // Main thread only.
    bool gstLogFunctionAdded = false;
    bool gstBridgeInstalled = false;
    bool gstDefaultLogRemoved = false;
    bool glibHandlersInstalled = false;
    QtMessageHandler previousQtHandler = nullptr;
    GPrintFunc previousPrint = nullptr;
    GPrintFunc previousPrintErr = nullptr;
};

LogState &state()
{
    static LogState s;
    return s;
}

QDateTime recordTime(const LogOptions &options)
{
    return options.clock ? options.clock() : QDateTime::currentDateTimeUtc();
}

void addRecent(LogState &s, const QByteArray &record)
{
    s.recent.push_back(QString::fromUtf8(record).trimmed());
    while (qsizetype(s.recent.size()) > s.options.recentLimit)
        s.recent.pop_front();
}

// ---- writer thread ----------------------------------------------------------

class LogFileWriter
{
public:
    LogFileWriter(LogState &s, QString directory, QString sessionName, LogOptions options)
        : m_state(s)
        , m_directory(std::move(directory))
        , m_sessionName(std::move(sessionName))
        , m_options(std::move(options))
    {
    }

    void run()
    {
        InsideLog guard;
        openNextFile();
        for (;;) {
            std::vector<QByteArray> batch;
            bool stop = false;
            {
                std::unique_lock lock(m_state.mutex);
                m_state.wake.wait_for(lock, m_options.writerWait, [&] {
                    return m_state.stopping || (!m_state.queue.empty() && !m_state.writerStalled);
                });
                if (m_state.writerStalled && !m_state.stopping)
                    continue;
                batch.swap(m_state.queue);
                stop = m_state.stopping;
            }
            for (const QByteArray &record : batch)
                writeRecord(record);
            if (m_writing && !m_file.flush())
                fail(m_file.errorString());
            if (stop) {
                m_file.close();
                std::lock_guard lock(m_state.mutex);
                m_state.writerExited = true;
                return;
            }
        }
    }

private:
    void setLastError(const QString &text)
    {
        std::lock_guard lock(m_state.mutex);
        m_state.lastError = text;
    }

    void fail(const QString &text)
    {
        setLastError(text);
        m_writing = false;
        m_file.close();
    }

    void writeRecord(const QByteArray &record)
    {
        if (!m_writing)
            return;
        if (m_fileSize > 0 && m_fileSize + record.size() > m_options.fileLimitBytes) {
            openNextFile();
            if (!m_writing)
                return;
        }
        if (m_file.write(record) != record.size()) {
            fail(m_file.errorString());
            return;
        }
        m_fileSize += record.size();
    }

    void openNextFile()
    {
        m_file.close();
        m_writing = false;
        m_fileSize = 0;
        QDir dir(m_directory);
        if (!dir.mkpath(QStringLiteral("."))) {
            setLastError(QStringLiteral("Cannot create log directory: %1").arg(m_directory));
            return;
        }
        const QString name = QStringLiteral("%1-%2.jsonl")
                                 .arg(m_sessionName)
                                 .arg(m_nextIndex++, 4, 10, QLatin1Char('0'));
        m_file.setFileName(dir.filePath(name));
        if (!m_file.open(QIODevice::WriteOnly | QIODevice::Truncate)) {
            setLastError(m_file.errorString());
        } else {
            m_writing = true;
        }
        removeOldFiles(dir);
    }

    // At most the kept number of files stay, this session's included; the
    // oldest go first, whichever run wrote them.
    void removeOldFiles(const QDir &dir)
    {
        QFileInfoList files = dir.entryInfoList({QStringLiteral("tarnix-*.jsonl")}, QDir::Files);
        std::sort(files.begin(), files.end(), [](const QFileInfo &a, const QFileInfo &b) {
            const QDateTime ta = a.lastModified();
            const QDateTime tb = b.lastModified();
            if (ta != tb)
                return ta > tb;
            return a.fileName() > b.fileName();
        });
        for (qsizetype i = m_options.keptFiles; i < files.size(); ++i) {
            if (files.at(i).absoluteFilePath() != QFileInfo(m_file).absoluteFilePath())
                QFile::remove(files.at(i).absoluteFilePath());
        }
    }

    LogState &m_state;
    const QString m_directory;
    const QString m_sessionName;
    const LogOptions m_options;
    QFile m_file;
    qint64 m_fileSize = 0;
    int m_nextIndex = 0;
    bool m_writing = false;
};

// ---- hooks ------------------------------------------------------------------

void qtMessageHandler(QtMsgType type, const QMessageLogContext &context, const QString &text)
{
    if (t_insideLog) {
        if (QtMessageHandler previous = state().previousQtHandler)
            previous(type, context, text);
        return;
    }
    LogLevel level = LogLevel::Error;
    switch (type) {
    case QtDebugMsg: level = LogLevel::Debug; break;
    case QtWarningMsg: level = LogLevel::Warn; break;
    case QtInfoMsg: level = LogLevel::Info; break;
    default: break;
    }
    const char *category = context.category;
    const QString source = (!category || qstrcmp(category, "default") == 0)
        ? QStringLiteral("Qt")
        : QString::fromUtf8(category);
    writeLog(level, source, text);
    // The process ends right after a fatal message, before the writer can
    // take the record; the previous handler still puts it on the console.
    if (type == QtFatalMsg) {
        if (QtMessageHandler previous = state().previousQtHandler)
            previous(type, context, text);
    }
}

QString glibLine(const gchar *text)
{
    QString line = QString::fromUtf8(text);
    while (line.endsWith(QLatin1Char('\n')))
        line.chop(1);
    return line;
}

void glibPrintHandler(const gchar *text)
{
    writeLog(LogLevel::Info, QStringLiteral("GST"), glibLine(text));
}

void glibPrintErrHandler(const gchar *text)
{
    writeLog(LogLevel::Error, QStringLiteral("GST"), glibLine(text));
}

void gstreamerLogFunction(GstDebugCategory *category, GstDebugLevel level, const gchar *file,
                          const gchar *, gint line, GObject *, GstDebugMessage *message, gpointer)
{
    if (t_insideLog)
        return;
    if (level > GST_LEVEL_WARNING && !state().debugMode.load(std::memory_order_relaxed))
        return;
    const LogLevel ours = level == GST_LEVEL_ERROR ? LogLevel::Error
        : level == GST_LEVEL_WARNING               ? LogLevel::Warn
                                                   : LogLevel::Debug;
    const QString text = QStringLiteral("%1 (%2:%3)")
                             .arg(QString::fromUtf8(gst_debug_message_get(message)),
                                  QString::fromUtf8(file ? file : ""))
                             .arg(line);
    writeLog(ours, QStringLiteral("GST/%1").arg(QString::fromUtf8(gst_debug_category_get_name(category))),
             text);
}

// Under the mutex. A record that finds the queue full is only counted; the
// next one that fits is preceded by a record of how many were lost.
void enqueueLocked(LogState &s, const QByteArray &record, qint64 pid, bool beyondLimit = false)
{
    if (!beyondLimit && qsizetype(s.queue.size()) >= s.options.queueLimit) {
        ++s.droppedCount;
        s.droppedTotal.fetch_add(1, std::memory_order_relaxed);
        return;
    }
    if (s.droppedCount > 0) {
        const QByteArray dropped = encodeLogRecord(
            recordTime(s.options), LogLevel::Warn, QStringLiteral("LOGGER"), pid, currentKernelThreadId(),
            QStringLiteral("Dropped %1 records because the log queue was full").arg(s.droppedCount));
        s.queue.push_back(dropped);
        addRecent(s, dropped);
        s.droppedCount = 0;
    }
    s.queue.push_back(record);
    addRecent(s, record);
    s.wake.notify_one();
}

// GStreamer reports the addition of a log function through its own debug
// category, which the console writer being added would print at once; that
// category is silenced for the moment of the addition.
void restoreGStreamerConsoleLog()
{
    GstDebugCategory *announcer = nullptr;
    GSList *categories = gst_debug_get_all_categories();
    for (GSList *item = categories; item; item = item->next) {
        auto *category = static_cast<GstDebugCategory *>(item->data);
        if (qstrcmp(gst_debug_category_get_name(category), "GST_DEBUG") == 0)
            announcer = category;
    }
    g_slist_free(categories);
    const GstDebugLevel previous = announcer ? gst_debug_category_get_threshold(announcer) : GST_LEVEL_NONE;
    if (announcer)
        gst_debug_category_set_threshold(announcer, GST_LEVEL_NONE);
    gst_debug_add_log_function(gst_debug_log_default, nullptr, nullptr);
    if (announcer)
        gst_debug_category_set_threshold(announcer, previous);
}

QString defaultDirectoryOr(const QString &directory)
{
    return directory.isEmpty() ? defaultLogDirectory() : directory;
}

} // namespace

bool startLog(const QString &directory, const LogOptions &options)
{
    LogState &s = state();
    if (s.started.load())
        return true;
    {
        std::lock_guard lock(s.mutex);
        s.directory = defaultDirectoryOr(directory);
        s.sessionName = QStringLiteral("tarnix-%1-%2")
                            .arg(QDateTime::currentDateTimeUtc().toString(QStringLiteral("yyyyMMdd-HHmmss-zzz")),
                                 QUuid::createUuid().toString(QUuid::WithoutBraces));
        s.queue.clear();
        s.recent.clear();
        s.droppedCount = 0;
        s.droppedTotal.store(0);
        s.lastError.clear();
        s.stopping = false;
        s.writerExited = false;
        s.options = options;
    }
    auto writer = std::make_shared<LogFileWriter>(s, s.directory, s.sessionName, options);
    try {
        s.writer = std::thread([writer] { writer->run(); });
    } catch (const std::system_error &error) {
        qWarning().noquote() << "Could not start application log writer:" << QString::fromLocal8Bit(error.what());
        return false;
    }
    s.started.store(true);
    s.previousQtHandler = qInstallMessageHandler(qtMessageHandler);

    if (options.writeStartRecords) {
        writeLog(LogLevel::Info, QStringLiteral("SYSTEM"),
                 QStringLiteral("Started TARNIX; Qt %1; OS %2; executable %3; build %4 %5")
                     .arg(QString::fromLatin1(qVersion()), QSysInfo::prettyProductName(),
                          QCoreApplication::applicationFilePath(), QStringLiteral(__DATE__),
                          QStringLiteral(__TIME__)));
        writeStartupDiagnostics(QString::fromLatin1(kPhaseBeforeSettings));
    }
    return true;
}

void writeLog(LogLevel level, const QString &source, const QString &text)
{
    if (t_insideLog)
        return;
    LogState &s = state();
    if (level == LogLevel::Debug && !s.debugMode.load(std::memory_order_relaxed))
        return;
    if (!s.started.load(std::memory_order_acquire))
        return;
    InsideLog guard;
    const qint64 pid = qint64(::getpid());
    const QByteArray record =
        encodeLogRecord(recordTime(s.options), level, source, pid, currentKernelThreadId(), text);

    std::lock_guard lock(s.mutex);
    if (!s.started.load() || s.stopping)
        return;
    enqueueLocked(s, record, pid);
}

void setDebugMode(bool on)
{
    LogState &s = state();
    s.debugMode.store(on);
    if (s.gstBridgeInstalled) {
        const QByteArray thresholds = on ? QByteArray(kGStreamerDebugThresholds) : qgetenv("GST_DEBUG");
        gst_debug_set_threshold_from_string(thresholds.constData(), TRUE);
        // A reset drops every category to "none"; without GST_DEBUG the log
        // goes back to warnings, as when the bridge was installed.
        if (!on && thresholds.isEmpty())
            gst_debug_set_default_threshold(GST_LEVEL_WARNING);
    }
    writeLog(LogLevel::Info, QStringLiteral("SYSTEM"),
             on ? QStringLiteral("Debug mode enabled") : QStringLiteral("Debug mode disabled"));
}

bool debugMode()
{
    return state().debugMode.load();
}

QString logDirectory()
{
    std::lock_guard lock(state().mutex);
    return state().directory;
}

QString logSessionName()
{
    std::lock_guard lock(state().mutex);
    return state().sessionName;
}

QStringList recentLines()
{
    std::lock_guard lock(state().mutex);
    return QStringList(state().recent.begin(), state().recent.end());
}

QString lastError()
{
    std::lock_guard lock(state().mutex);
    return state().lastError;
}

bool logStarted()
{
    return state().started.load();
}

qint64 logRecordsDropped()
{
    return state().droppedTotal.load(std::memory_order_relaxed);
}

void stopLog()
{
    LogState &s = state();
    if (!s.started.load())
        return;
    InsideLog guard;
    // The closing record and the stop are one step under the lock, so no
    // other thread's record can come after it.
    const QByteArray closing = encodeLogRecord(recordTime(s.options), LogLevel::Info, QStringLiteral("SYSTEM"),
                                               qint64(::getpid()), currentKernelThreadId(),
                                               QStringLiteral("Shutdown complete"));
    {
        std::lock_guard lock(s.mutex);
        // The queue limit protects callers from a slow writer; the closing
        // record goes in regardless, after the count of any lost ones.
        enqueueLocked(s, closing, qint64(::getpid()), true);
        s.stopping = true;
        s.wake.notify_one();
    }

    if (s.gstLogFunctionAdded) {
        gst_debug_remove_log_function(gstreamerLogFunction);
        if (s.gstDefaultLogRemoved)
            restoreGStreamerConsoleLog();
        s.gstLogFunctionAdded = false;
        s.gstBridgeInstalled = false;
        s.gstDefaultLogRemoved = false;
    }
    qInstallMessageHandler(s.previousQtHandler);
    s.previousQtHandler = nullptr;
    if (s.glibHandlersInstalled) {
        g_set_print_handler(s.previousPrint);
        g_set_printerr_handler(s.previousPrintErr);
        s.glibHandlersInstalled = false;
    }
    if (s.writer.joinable())
        s.writer.join();
    s.started.store(false);
}

void prepareGStreamerLogBridge()
{
    LogState &s = state();
    if (s.gstLogFunctionAdded)
        return;
    gst_debug_add_log_function(gstreamerLogFunction, nullptr, nullptr);
    s.gstLogFunctionAdded = true;
    if (qEnvironmentVariableIsEmpty("GST_DEBUG_FILE")) {
        // Removed before gst_init, GStreamer's console writer is never added,
        // so not even the lines of the initialisation reach the terminal.
        gst_debug_remove_log_function(gst_debug_log_default);
        s.gstDefaultLogRemoved = true;
    }
}

void installGStreamerBridge()
{
    LogState &s = state();
    if (s.gstBridgeInstalled)
        return;
    prepareGStreamerLogBridge();
    s.previousPrint = g_set_print_handler(glibPrintHandler);
    s.previousPrintErr = g_set_printerr_handler(glibPrintErrHandler);
    s.glibHandlersInstalled = true;
    if (qEnvironmentVariableIsEmpty("GST_DEBUG"))
        gst_debug_set_default_threshold(GST_LEVEL_WARNING);
    s.gstBridgeInstalled = true;
    if (s.debugMode.load())
        gst_debug_set_threshold_from_string(kGStreamerDebugThresholds, TRUE);
    gchar *version = gst_version_string();
    writeLog(LogLevel::Info, QStringLiteral("SYSTEM"), QString::fromUtf8(version));
    g_free(version);
}

void setLogWriterStalledForTesting(bool stalled)
{
    LogState &s = state();
    std::lock_guard lock(s.mutex);
    s.writerStalled = stalled;
    s.wake.notify_one();
}

} // namespace tarnix
