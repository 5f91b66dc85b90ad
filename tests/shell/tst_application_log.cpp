// The JSONL application log: record format, rotation and retention, the
// bounded queue, the Qt message handler and the GStreamer bridge.

#include "log_test_helpers.h"

#include "shell/application_log.h"
#include "shell/log_categories.h"

#include <QDateTime>
#include <QTemporaryDir>
#include <QtTest>

#include <gst/gst.h>

#include <thread>

#include <unistd.h>

using namespace tarnix;
using namespace tarnix::test;

namespace {

LogOptions quietOptions()
{
    LogOptions options;
    options.writeStartRecords = false;
    options.writerWait = std::chrono::milliseconds(10);
    return options;
}

void touch(const QString &path, const QDateTime &modified)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("{}\n");
    QVERIFY(file.setFileTime(modified, QFileDevice::FileModificationTime));
}

QStringList logFiles(const QString &directory)
{
    return QDir(directory).entryList({QStringLiteral("tarnix-*.jsonl")}, QDir::Files, QDir::Name);
}

} // namespace

class TestApplicationLog : public QObject
{
    Q_OBJECT

private slots:
    void cleanup()
    {
        setLogWriterStalledForTesting(false);
        stopLog();
        if (debugMode())
            setDebugMode(false);
    }

    void recordEncoding_data()
    {
        QTest::addColumn<QString>("message");
        QTest::addColumn<QString>("written");
        const QString emoji = QString::fromUtf8("\xF0\x9F\x8E\xAC");  // one surrogate pair
        QTest::newRow("escapes") << QString::fromUtf8("a\"b\\c\nd\t\x01 é 日本") << QString::fromUtf8("a\"b\\c\nd\t\x01 é 日本");
        QTest::newRow("9000 characters") << QString(9000, QLatin1Char('x')) << QString(8192, QLatin1Char('x'));
        QTest::newRow("pair across the cut") << QString(8191, QLatin1Char('x')) + emoji + QStringLiteral("tail")
                                             << QString(8191, QLatin1Char('x'));
        QTest::newRow("pair before the cut") << QString(8190, QLatin1Char('x')) + emoji + QStringLiteral("tail")
                                             << QString(8190, QLatin1Char('x')) + emoji;
    }
    void recordEncoding()
    {
        QFETCH(QString, message);
        QFETCH(QString, written);
        const QDateTime time(QDate(2026, 1, 2), QTime(3, 4, 5, 6), Qt::UTC);
        const QByteArray record = encodeLogRecord(time, LogLevel::Warn, QStringLiteral("GST/x\"y"), 42, 4242, message);
        QVERIFY(record.endsWith('\n'));
        QCOMPARE(record.count('\n'), 1);
        QCOMPARE(topLevelKeysInOrder(record),
                 (QStringList{"time", "level", "source", "pid", "thread", "message"}));
        QJsonParseError error;
        const QJsonObject object = QJsonDocument::fromJson(record, &error).object();
        QCOMPARE(error.error, QJsonParseError::NoError);
        QCOMPARE(object.value("time").toString(), QStringLiteral("2026-01-02T03:04:05.006Z"));
        QCOMPARE(object.value("level").toString(), QStringLiteral("WARN"));
        QCOMPARE(object.value("source").toString(), QStringLiteral("GST/x\"y"));
        QVERIFY(object.value("pid").isDouble());
        QCOMPARE(object.value("thread").toString(), QStringLiteral("4242"));
        QCOMPARE(object.value("message").toString(), written);
    }

    // Files are named by session and index; at most ten remain across
    // sessions, the oldest going first, and a file never grows past its limit.
    void rotationAndRetention()
    {
        QTemporaryDir dir;
        const QDateTime past = QDateTime::currentDateTimeUtc().addDays(-3);
        for (int i = 0; i < 12; ++i)
            touch(dir.filePath(QStringLiteral("tarnix-20200101-000000-000-old%1-0000.jsonl").arg(i, 2, 10, QLatin1Char('0'))),
                  past.addSecs(i * 60));
        touch(dir.filePath("other.jsonl"), past);

        LogOptions options = quietOptions();
        options.fileLimitBytes = 600;
        QVERIFY(startLog(dir.path(), options));
        const QString session = logSessionName();
        QVERIFY(QRegularExpression("^tarnix-\\d{8}-\\d{6}-\\d{3}-[0-9a-f-]{36}$").match(session).hasMatch());
        QTRY_COMPARE_WITH_TIMEOUT(logFiles(dir.path()).size(), 10, 5000);
        QStringList files = logFiles(dir.path());
        QVERIFY(files.contains(session + "-0000.jsonl"));
        QVERIFY(!files.contains("tarnix-20200101-000000-000-old00-0000.jsonl"));
        QVERIFY(!files.contains("tarnix-20200101-000000-000-old02-0000.jsonl"));
        QVERIFY(files.contains("tarnix-20200101-000000-000-old03-0000.jsonl"));
        QVERIFY(QFile::exists(dir.filePath("other.jsonl")));

        for (int i = 0; i < 12; ++i)
            writeLog(LogLevel::Info, "TEST", QStringLiteral("record %1 %2").arg(i).arg(QString(100, 'r')));
        stopLog();
        files = logFiles(dir.path());
        QCOMPARE(files.size(), 10);
        QVERIFY(files.contains(session + "-0004.jsonl"));
        QVERIFY(!files.contains("tarnix-20200101-000000-000-old07-0000.jsonl"));
        QVERIFY(files.contains("tarnix-20200101-000000-000-old08-0000.jsonl"));
        int records = 0;
        for (const QString &name : files.filter(session)) {
            QVERIFY(QFileInfo(dir.filePath(name)).size() <= 600);
            records += fileLines(dir.filePath(name)).size();
        }
        QCOMPARE(records, 13);  // twelve and "Shutdown complete"
    }

    // A writer stuck on a slow disk: the queue keeps 4096 records, the rest
    // are counted, and the next record that fits is preceded by the count.
    void fullQueueDropsAndReports()
    {
        QTemporaryDir dir;
        QVERIFY(startLog(dir.path(), quietOptions()));
        setLogWriterStalledForTesting(true);
        for (int i = 0; i < 5000; ++i)
            writeLog(LogLevel::Info, "TEST", QStringLiteral("burst %1").arg(i));
        setLogWriterStalledForTesting(false);
        const QString file = dir.filePath(logSessionName() + "-0000.jsonl");
        QTRY_COMPARE_WITH_TIMEOUT(fileLines(file).size(), 4096, 10000);
        writeLog(LogLevel::Info, "TEST", "after the burst");
        const QStringList recent = recentLines();
        QCOMPARE(recent.size(), 2000);
        stopLog();

        const QList<QJsonObject> records = logRecords(dir.path());
        QCOMPARE(records.size(), 4096 + 3);
        QCOMPARE(records.at(4095).value("message").toString(), QStringLiteral("burst 4095"));
        QCOMPARE(records.at(4096).value("message").toString(),
                 QStringLiteral("Dropped 904 records because the log queue was full"));
        QCOMPARE(records.at(4096).value("level").toString(), QStringLiteral("WARN"));
        QCOMPARE(records.at(4096).value("source").toString(), QStringLiteral("LOGGER"));
        QCOMPARE(records.at(4097).value("message").toString(), QStringLiteral("after the burst"));
        QVERIFY(recent.last().contains("after the burst"));
        QVERIFY(recent.at(recent.size() - 2).contains("Dropped 904"));
    }

    // Writing failures stay inside the log: the writer keeps emptying the
    // queue and the failure is kept for the viewer's status.
    void unwritableDirectoryIsReported()
    {
        QTemporaryDir dir;
        touch(dir.filePath("blocker"), QDateTime::currentDateTimeUtc());
        QVERIFY(startLog(dir.filePath("blocker/logs"), quietOptions()));
        for (int i = 0; i < 10; ++i)
            writeLog(LogLevel::Info, "TEST", "nowhere to go");
        QTRY_COMPARE_WITH_TIMEOUT(lastError(), QStringLiteral("Cannot create log directory: %1").arg(dir.filePath("blocker/logs")),
                                  5000);
        QCOMPARE(recentLines().size(), 10);
        stopLog();
        QVERIFY(!logStarted());
    }

    // Code that runs inside the log (here its clock) may itself raise a
    // message; it must not come back into the log on the same thread.
    void messageFromInsideTheLogDoesNotRecurse()
    {
        QTemporaryDir dir;
        LogOptions options = quietOptions();
        options.clock = [] {
            qWarning("clock complains");
            return QDateTime::currentDateTimeUtc();
        };
        QVERIFY(startLog(dir.path(), options));
        writeLog(LogLevel::Info, "TEST", "one record");
        stopLog();
        QCOMPARE(messages(logRecords(dir.path())), (QStringList{"one record", "Shutdown complete"}));
    }

    void qtMessagesDebugModeAndStop()
    {
        QTemporaryDir dir;
        QVERIFY(startLog(dir.path(), quietOptions()));
        qWarning("uncategorised");
        qCInfo(lcPlayout) << "deck ready";
        qDebug("hidden debug");
        setDebugMode(true);
        qDebug("shown debug");
        setDebugMode(false);
        qint64 workerThread = 0;
        std::thread([&] {
            workerThread = currentKernelThreadId();
            writeLog(LogLevel::Error, "WORKER", "from a worker");
        }).join();
        stopLog();
        writeLog(LogLevel::Error, "TEST", "after the stop");
        qInfo("after the stop");

        const QList<QJsonObject> records = logRecords(dir.path());
        QStringList lines;
        for (const QJsonObject &r : records)
            lines << QStringLiteral("%1|%2|%3").arg(r.value("level").toString(), r.value("source").toString(),
                                                   r.value("message").toString());
        QCOMPARE(lines, (QStringList{"WARN|Qt|uncategorised", "INFO|PLAYOUT|deck ready", "INFO|SYSTEM|Debug mode enabled",
                                     "DEBUG|Qt|shown debug", "INFO|SYSTEM|Debug mode disabled",
                                     "ERROR|WORKER|from a worker", "INFO|SYSTEM|Shutdown complete"}));
        QCOMPARE(records.first().value("pid").toInteger(), qint64(::getpid()));
        QCOMPARE(records.first().value("thread").toString(), QString::number(currentKernelThreadId()));
        QCOMPARE(records.at(5).value("thread").toString(), QString::number(workerThread));
    }

    void gstreamerBridge()
    {
        qunsetenv("GST_DEBUG");
        qunsetenv("GST_DEBUG_FILE");
        QTemporaryDir dir;
        QVERIFY(startLog(dir.path(), quietOptions()));
        prepareGStreamerLogBridge();
        gst_init(nullptr, nullptr);
        installGStreamerBridge();
        QCOMPARE(gst_debug_get_default_threshold(), GST_LEVEL_WARNING);

        GstDebugCategory *test = nullptr;
        GstDebugCategory *pulse = nullptr;
        GST_DEBUG_CATEGORY_INIT(test, "tarnixtest", 0, "test");
        GST_DEBUG_CATEGORY_INIT(pulse, "pulsetestsink", 0, "test");
        GST_CAT_ERROR(test, "broken %d", 7);
        GST_CAT_INFO(test, "not without debug mode");
        g_print("printed line\n");
        g_printerr("printed error\n");
        QCOMPARE(gst_debug_category_get_threshold(pulse), GST_LEVEL_WARNING);
        setDebugMode(true);
        QCOMPARE(gst_debug_category_get_threshold(pulse), GST_LEVEL_INFO);
        GST_CAT_INFO(pulse, "with debug mode");
        setDebugMode(false);
        QCOMPARE(gst_debug_category_get_threshold(pulse), GST_LEVEL_WARNING);
        stopLog();

        const QList<QJsonObject> records = logRecords(dir.path());
        QVERIFY(messages(records, "SYSTEM").first().startsWith("GStreamer 1."));
        const QStringList gst = messages(records, "GST/tarnixtest");
        QCOMPARE(gst.size(), 1);
        QVERIFY2(QRegularExpression("^broken 7 \\(.*tst_application_log\\.cpp:\\d+\\)$").match(gst.first()).hasMatch(),
                 qPrintable(gst.first()));
        const QStringList pulseLines = messages(records, "GST/pulsetestsink");
        QCOMPARE(pulseLines.size(), 1);
        QVERIFY(pulseLines.first().startsWith("with debug mode ("));
        QCOMPARE(messages(records, "GST"), (QStringList{"printed line", "printed error"}));
        for (const QJsonObject &record : records) {
            if (record.value("source").toString() == "GST")
                QCOMPARE(record.value("level").toString(),
                         record.value("message").toString() == "printed line" ? "INFO" : "ERROR");
        }
    }
};

QTEST_GUILESS_MAIN(TestApplicationLog)
#include "tst_application_log.moc"
