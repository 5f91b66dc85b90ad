// The application as a process: start without a display, help, stop by
// signal, the JSONL log it leaves behind, the missing-runtime window and
// portable settings. Every run has a home folder of its own, so its log and
// settings are its alone.

#include "log_test_helpers.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include <csignal>

using namespace tarnix::test;

namespace {

struct Run {
    QString console;              // stdout and stderr
    QList<QJsonObject> records;   // the JSONL log, oldest file first
    QList<QByteArray> lines;
    int exitCode = -2;
};

QJsonObject messageObject(const QJsonObject &record)
{
    return QJsonDocument::fromJson(record.value("message").toString().toUtf8()).object();
}

void writeFile(const QString &path, const QByteArray &content)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(content);
}

} // namespace

class TestStartupProcess : public QObject
{
    Q_OBJECT

private:
    static QProcessEnvironment environment(const QTemporaryDir &home)
    {
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        for (const char *name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM", "DBUS_SESSION_BUS_ADDRESS",
                                 "GST_DEBUG", "GST_DEBUG_FILE"})
            env.remove(QString::fromLatin1(name));
        env.insert("HOME", home.path());
        env.insert("XDG_DATA_HOME", home.filePath("data"));
        env.insert("XDG_CACHE_HOME", home.filePath("cache"));
        env.insert("XDG_CONFIG_HOME", home.filePath("config"));
        env.insert("XDG_RUNTIME_DIR", home.filePath("runtime"));
        // The system bus may not exist here; point it at nothing so the run
        // does not depend on the machine.
        env.insert("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=" + home.filePath("no-system-bus"));
        return env;
    }

    // The log folder of a run; each product profile keeps its own.
    static QString logDirectory(const QTemporaryDir &home, const QString &profile = QStringLiteral("TARNIX3-Dev"))
    {
        return home.filePath("data/" + profile + "/logs");
    }

    // Starts the program, waits until its log holds the marker, stops it
    // with SIGTERM and collects what it left.
    static Run runUntil(const QString &program, const QStringList &arguments, const QString &marker,
                        const QTemporaryDir &home, const QProcessEnvironment &env,
                        const QString &profile = QStringLiteral("TARNIX3-Dev"))
    {
        Run run;
        QProcess process;
        process.setProcessEnvironment(env);
        process.setProcessChannelMode(QProcess::MergedChannels);
        QObject::connect(&process, &QProcess::readyRead,
                         [&] { run.console += QString::fromLocal8Bit(process.readAll()); });
        process.start(program, arguments);
        if (!process.waitForStarted(10000))
            return run;
        auto logText = [&] {
            QByteArray all;
            QList<QByteArray> lines;
            logRecords(logDirectory(home, profile), &lines);
            for (const QByteArray &line : lines)
                all += line;
            return QString::fromUtf8(all);
        };
        (void)QTest::qWaitFor([&] { return logText().contains(marker) || process.state() == QProcess::NotRunning; },
                              30000);
        if (process.state() == QProcess::Running)
            ::kill(pid_t(process.processId()), SIGTERM);
        process.waitForFinished(30000);
        run.console += QString::fromLocal8Bit(process.readAll());
        run.exitCode = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
        run.records = logRecords(logDirectory(home, profile), &run.lines);
        return run;
    }

    // A copy of the executable in a folder of its own, to put marker files
    // beside it.
    static QString copyExecutable(const QTemporaryDir &dir)
    {
        const QString target = dir.filePath("tarnix");
        if (!QFile::copy(QStringLiteral(TARNIX_EXECUTABLE), target))
            return QString();
        QFile(target).setPermissions(QFile(target).permissions() | QFileDevice::ExeOwner);
        return target;
    }

private slots:
    void helpWithoutDisplay()
    {
        QTemporaryDir home;
        QProcess process;
        process.setProcessEnvironment(environment(home));
        process.start(QStringLiteral(TARNIX_EXECUTABLE), {"--help"});
        QVERIFY(process.waitForFinished(30000));
        QCOMPARE(process.exitStatus(), QProcess::NormalExit);
        QCOMPARE(process.exitCode(), 0);
        const QString help = QString::fromLocal8Bit(process.readAllStandardOutput());
        QVERIFY2(help.contains("--portable"), qPrintable(help));
        QVERIFY(help.contains("--program-output-4k"));
        QVERIFY(!help.contains("addon"));
    }

    // One full start and stop by signal, with GStreamer asked for all of its
    // debug output, Japanese configured and twelve old log files waiting.
    void startAndStopBySignal()
    {
        QTemporaryDir home;
        const QDateTime past = QDateTime::currentDateTimeUtc().addDays(-2);
        for (int i = 0; i < 12; ++i) {
            const QString old = QDir(logDirectory(home)).filePath(QStringLiteral("tarnix-old-%1-0000.jsonl").arg(i));
            writeFile(old, "{}\n");
            QFile file(old);
            QVERIFY(file.open(QIODevice::ReadWrite));
            QVERIFY(file.setFileTime(past.addSecs(i), QFileDevice::FileModificationTime));
        }
        writeFile(home.filePath("data/TARNIX3-Dev/user.ini"),
                  "[ui]\nlanguage=ja\n[video]\nprogramOutput4k=false\n[time]\nfontSize=14\n");
        QProcessEnvironment env = environment(home);
        env.insert("GST_DEBUG", "*:6");

        const Run run = runUntil(QStringLiteral(TARNIX_EXECUTABLE), {}, "\\\"phase\\\":\\\"controller-ready\\\"",
                                 home, env);
        QCOMPARE(run.exitCode, 0);
        QVERIFY2(!run.records.isEmpty(), qPrintable(run.console.right(2000)));

        // Files and records.
        const QStringList files = QDir(logDirectory(home)).entryList({"tarnix-*.jsonl"}, QDir::Files);
        QCOMPARE(files.size(), 10);
        QVERIFY(!files.contains("tarnix-old-0-0000.jsonl"));
        QVERIFY(!files.contains("tarnix-old-2-0000.jsonl"));
        QVERIFY(files.contains("tarnix-old-3-0000.jsonl"));
        QCOMPARE(files.filter(QRegularExpression("^tarnix-\\d{8}-\\d{6}-\\d{3}-[0-9a-f-]{36}-0000\\.jsonl$")).size(), 1);
        QList<QJsonObject> records;
        for (int i = 0; i < run.records.size(); ++i) {
            if (run.records[i].contains("pid")) {
                QCOMPARE(topLevelKeysInOrder(run.lines[i]),
                         (QStringList{"time", "level", "source", "pid", "thread", "message"}));
                records << run.records[i];
            }
        }
        QVERIFY(records.first().value("message").toString().startsWith("Started TARNIX; Qt "));
        QCOMPARE(records.last().value("message").toString(), QStringLiteral("Shutdown complete"));
        const QStringList system = messages(records, "SYSTEM");
        QVERIFY(system.contains("READ_SOURCE translation :/i18n/tarnix_ja.qm loaded=true"));
        QVERIFY(!system.filter(QRegularExpression("^GStreamer 1\\.\\d+")).isEmpty());
        QVERIFY(!messages(records, "STARTUP").filter("using offscreen").isEmpty());
        QVERIFY(!messages(records).filter("DISPLAY_ACTIVITY failed to request display/system wakefulness").isEmpty());

        // Nothing of GStreamer's debug output on the console.
        QVERIFY2(!run.console.contains("GST_"), qPrintable(run.console.left(2000)));

        // Start-up diagnostics: both phases, every kind in order, each
        // setting's value as the file holds it.
        QStringList kinds[2];
        QString executableHash;
        int phase = 0;
        int settingsSources = 0;
        int settingsReads[2] = {0, 0};
        for (const QJsonObject &record : records) {
            if (record.value("source").toString() != "STARTUP")
                continue;
            const QJsonObject diagnostic = messageObject(record);
            const QString kind = diagnostic.value("kind").toString();
            if (kind.isEmpty())
                continue;
            if (kind == "settings-source")
                phase = settingsSources++;
            if (kind == "process")
                executableHash = diagnostic.value("executableSha256").toString();
            if (diagnostic.contains("phase"))
                QCOMPARE(diagnostic.value("phase").toString(),
                         phase == 0 ? QStringLiteral("before-settings-initialization")
                                    : QStringLiteral("controller-ready"));
            if (kind == "settings-read") {
                ++settingsReads[phase];
                const QString key = diagnostic.value("key").toString();
                const QString value = diagnostic.value("value").toString();
                if (key == "ui/language")
                    QCOMPARE(value, QStringLiteral("ja"));
                if (key == "time/fontSize")
                    QCOMPARE(value, QStringLiteral("14"));
            }
            if (kinds[phase].isEmpty() || kinds[phase].last() != kind)
                kinds[phase] << kind;
        }
        QCOMPARE(settingsSources, 2);
        QCOMPARE(settingsReads[0], 3);  // one per key in the file
        QCOMPARE(settingsReads[1], 3);
        QCOMPARE(kinds[0], (QStringList{"process", "settings-source", "settings-file", "settings-read",
                                        "settings-read-complete", "loaded-module"}));
        QCOMPARE(kinds[1], (QStringList{"settings-source", "settings-file", "settings-read",
                                        "settings-read-complete", "loaded-module"}));

        QProcess sum;
        sum.start("sha256sum", {QStringLiteral(TARNIX_EXECUTABLE)});
        QVERIFY(sum.waitForFinished(10000));
        QCOMPARE(executableHash, QString::fromLatin1(sum.readAllStandardOutput().split(' ').first()));
    }

    void gstreamerDebugFileKeepsItsOutput()
    {
        QTemporaryDir home;
        QProcessEnvironment env = environment(home);
        env.insert("GST_DEBUG", "GST_INIT:5,GST_PLUGIN_LOADING:4");
        env.insert("GST_DEBUG_FILE", home.filePath("gst.txt"));
        const Run run = runUntil(QStringLiteral(TARNIX_EXECUTABLE), {}, "\\\"phase\\\":\\\"controller-ready\\\"",
                                 home, env);
        QCOMPARE(run.exitCode, 0);
        QFile file(home.filePath("gst.txt"));
        QVERIFY(file.open(QIODevice::ReadOnly));
        QVERIFY(file.readAll().contains("GST_INIT"));
    }

    void distributionWithoutBundledRuntime()
    {
        QTemporaryDir dir;
        const QString program = copyExecutable(dir);
        QVERIFY(!program.isEmpty());
        writeFile(dir.filePath("tarnix-distribution.txt"), "TARNIX3\n");

        QTemporaryDir home;
        const Run run = runUntil(program, {}, "The GStreamer runtime could not be found.", home, environment(home),
                                 "TARNIX3");
        const QList<QJsonObject> &records = run.records;
        QVERIFY2(messages(records, "SYSTEM").contains("NOTICE SYSTEM The GStreamer runtime could not be found."),
                 qPrintable(run.console.right(2000)));
        QVERIFY(messages(records, "STARTUP").filter("controller-ready").isEmpty());
        QVERIFY(messages(records).filter("MainController").isEmpty());
        QCOMPARE(messages(records).last(), QStringLiteral("Shutdown complete"));
    }

    // Portable settings beside the executable, with an unknown language: the
    // start falls back to English and goes on.
    void portableSettingsBesideExecutable()
    {
        QTemporaryDir dir;
        const QString program = copyExecutable(dir);
        QVERIFY(!program.isEmpty());
        const QString ini = dir.filePath("config/TARNIX3-Dev/user.ini");
        writeFile(ini, "[video]\nprogramOutput4k=true\n[ui]\nlanguage=xx\n");

        QTemporaryDir home;
        const Run run = runUntil(program, {"--portable"}, "\\\"phase\\\":\\\"controller-ready\\\"", home,
                                 environment(home));
        QCOMPARE(run.exitCode, 0);
        const QStringList startup = messages(run.records, "STARTUP");
        QVERIFY2(!startup.filter("\"source\":\"" + ini + "\"").isEmpty(), qPrintable(startup.join('\n').left(3000)));
        QVERIFY(!startup.filter("\"portable\":true").isEmpty());
        QVERIFY(!startup.filter("\"key\":\"video/programOutput4k\",\"valueType\":\"QString\",\"value\":\"true\"").isEmpty());
        QVERIFY(!messages(run.records, "SYSTEM").filter("program output 3840x2160").isEmpty());
        QVERIFY(messages(run.records, "SYSTEM").contains("READ_SOURCE translation :/i18n/tarnix_en.qm loaded=true"));
        QVERIFY(!messages(run.records).filter("Unknown display language.").isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestStartupProcess)
#include "tst_startup_process.moc"
