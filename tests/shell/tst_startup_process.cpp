// The application as a process: start without a display, help, stop by
// signal, the missing-runtime window and portable settings.

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include <csignal>

class TestStartupProcess : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_home;

    QProcessEnvironment environment() const
    {
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        for (const char *name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM", "DBUS_SESSION_BUS_ADDRESS"})
            env.remove(QString::fromLatin1(name));
        env.insert("HOME", m_home.path());
        env.insert("XDG_DATA_HOME", m_home.filePath("data"));
        env.insert("XDG_CACHE_HOME", m_home.filePath("cache"));
        env.insert("XDG_CONFIG_HOME", m_home.filePath("config"));
        env.insert("XDG_RUNTIME_DIR", m_home.filePath("runtime"));
        // The system bus may not exist here; point it at nothing so the run
        // does not depend on the machine.
        env.insert("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=" + m_home.filePath("no-system-bus"));
        return env;
    }

    // Starts the program, waits for a line, stops it with SIGTERM and
    // returns everything it wrote.
    QString runUntil(const QString &program, const QStringList &arguments, const QString &marker,
                     int *exitCode)
    {
        QProcess process;
        process.setProcessEnvironment(environment());
        process.setProcessChannelMode(QProcess::MergedChannels);
        QString output;
        connect(&process, &QProcess::readyRead, this,
                [&] { output += QString::fromLocal8Bit(process.readAll()); });
        process.start(program, arguments);
        if (!process.waitForStarted(10000))
            return QStringLiteral("<did not start>");
        (void)QTest::qWaitFor([&] { return output.contains(marker) || process.state() == QProcess::NotRunning; },
                        30000);
        if (process.state() == QProcess::Running)
            ::kill(pid_t(process.processId()), SIGTERM);
        process.waitForFinished(30000);
        output += QString::fromLocal8Bit(process.readAll());
        *exitCode = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
        return output;
    }

    // A copy of the executable in a folder of its own, to put marker files
    // beside it.
    QString copyExecutable(const QTemporaryDir &dir)
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
        QProcess process;
        process.setProcessEnvironment(environment());
        process.start(QStringLiteral(TARNIX_EXECUTABLE), {"--help"});
        QVERIFY(process.waitForFinished(30000));
        QCOMPARE(process.exitStatus(), QProcess::NormalExit);
        QCOMPARE(process.exitCode(), 0);
        const QString help = QString::fromLocal8Bit(process.readAllStandardOutput());
        QVERIFY2(help.contains("--portable"), qPrintable(help));
        QVERIFY(help.contains("--program-output-4k"));
        QVERIFY(!help.contains("addon"));
    }

    void startWithoutDisplayAndStopBySignal()
    {
        int exitCode = -2;
        const QString output = runUntil(QStringLiteral(TARNIX_EXECUTABLE), {}, "\"phase\":\"controller-ready\"",
                                        &exitCode);
        QVERIFY2(output.contains("\"phase\":\"controller-ready\""), qPrintable(output.right(2000)));
        QVERIFY(output.contains("using offscreen"));
        QVERIFY(output.contains("\"phase\":\"before-settings-initialization\""));
        QVERIFY(output.contains("DISPLAY_ACTIVITY failed to request display/system wakefulness"));
        QVERIFY(output.contains("Shutdown complete"));
        QCOMPARE(exitCode, 0);
    }

    void distributionWithoutBundledRuntime()
    {
        QTemporaryDir dir;
        const QString program = copyExecutable(dir);
        QVERIFY(!program.isEmpty());
        QFile marker(dir.filePath("tarnix-distribution.txt"));
        QVERIFY(marker.open(QIODevice::WriteOnly));
        marker.write("TARNIX3\n");
        marker.close();

        int exitCode = -2;
        const QString output = runUntil(program, {}, "The GStreamer runtime could not be found.", &exitCode);
        QVERIFY2(output.contains("The GStreamer runtime could not be found."), qPrintable(output.right(2000)));
        QVERIFY(!output.contains("controller-ready"));
        QVERIFY(!output.contains("MainController"));
        QCOMPARE(exitCode, 0);
    }

    void portableSettingsBesideExecutable()
    {
        QTemporaryDir dir;
        const QString program = copyExecutable(dir);
        QVERIFY(!program.isEmpty());
        const QString ini = dir.filePath("config/TARNIX3-Dev/user.ini");
        QDir().mkpath(QFileInfo(ini).absolutePath());
        QFile file(ini);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("[video]\nprogramOutput4k=true\n");
        file.close();

        int exitCode = -2;
        const QString output = runUntil(program, {"--portable"}, "\"phase\":\"controller-ready\"", &exitCode);
        QVERIFY2(output.contains("\"source\":\"" + ini + "\""), qPrintable(output.right(3000)));
        QVERIFY(output.contains("\"portable\":true"));
        QVERIFY(output.contains("\"key\":\"video/programOutput4k\",\"valueType\":\"QString\",\"value\":\"true\""));
        QVERIFY(output.contains("program output 3840x2160"));
        QCOMPARE(exitCode, 0);
    }
};

QTEST_GUILESS_MAIN(TestStartupProcess)
#include "tst_startup_process.moc"
