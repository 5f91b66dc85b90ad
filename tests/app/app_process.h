#pragma once

// The application as an outside client sees it: the built executable in a
// home of its own (settings, data, log), a control socket of its own, and
// tarnixctl as the only way in.

#include "shell/log_test_helpers.h"
#include "support/test_paths.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMap>
#include <QProcess>
#include <QProcessEnvironment>
#include <QTemporaryDir>
#include <QtTest>

#include <csignal>

namespace tarnix::test {

struct CtlAnswer {
    int exitCode = -1;
    QByteArray line;
    QJsonObject object() const { return QJsonDocument::fromJson(line).object(); }
};

class AppProcess
{
public:
    // `home` outlives the process, so a second start finds what the first left.
    explicit AppProcess(const QTemporaryDir &home) : m_home(home.path()) {}
    ~AppProcess()
    {
        if (m_process.state() != QProcess::NotRunning) {
            m_process.kill();
            m_process.waitForFinished(10000);
        }
    }

    QProcessEnvironment environment() const
    {
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        for (const char *name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM", "DBUS_SESSION_BUS_ADDRESS",
                                 "GST_DEBUG", "GST_DEBUG_FILE", "TARNIX_CONTROL_SOCKET"})
            env.remove(QString::fromLatin1(name));
        env.insert("HOME", m_home);
        env.insert("XDG_DATA_HOME", m_home + "/data");
        // Shared by every run of the build, so the GStreamer registry is
        // scanned once, not at each start.
        env.insert("XDG_CACHE_HOME", QStringLiteral(TARNIX_TEST_BINARY_DIR "/app-test-cache"));
        env.insert("XDG_CONFIG_HOME", m_home + "/config");
        env.insert("XDG_RUNTIME_DIR", m_home + "/runtime");
        env.insert("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=" + m_home + "/no-system-bus");
        // The test's own sound server, or none: then the program audio
        // output reports itself missing and ON AIR refuses takes.
        env.insert("PULSE_SERVER", m_pulseServer.isEmpty() ? "unix:" + m_home + "/no-pulse" : m_pulseServer);
        env.insert("TARNIX_TEST_PROGRAM_OUTPUT_SIZE", m_outputSize);
        if (!m_display.isEmpty())
            env.insert("DISPLAY", m_display);
        for (auto it = m_extra.cbegin(); it != m_extra.cend(); ++it)
            env.insert(it.key(), it.value());
        return env;
    }

    void setProgramOutputSize(const QString &size) { m_outputSize = size; }
    // A variable of the application's environment, for its next start.
    void setEnvironmentValue(const QString &name, const QString &value) { m_extra.insert(name, value); }
    void setPulseServer(const QString &address) { m_pulseServer = address; }
    // An X display to run on; none: offscreen.
    void setDisplay(const QString &display) { m_display = display; }
    QString socketPath() const { return m_home + "/control.sock"; }
    QString dataDirectory() const { return m_home + "/data/TARNIX3-Dev"; }
    QString logDirectory() const { return dataDirectory() + "/logs"; }

    // Starts the application and waits until its socket answers.
    bool start()
    {
        QDir().mkpath(m_home + "/runtime");
        QFile::setPermissions(m_home + "/runtime", QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
        m_process.setProcessEnvironment(environment());
        m_process.setProcessChannelMode(QProcess::MergedChannels);
        m_process.start(QStringLiteral(TARNIX_EXECUTABLE), {"--control-socket", socketPath()});
        if (!m_process.waitForStarted(10000))
            return false;
        return QTest::qWaitFor(
            [&] { return m_process.state() != QProcess::Running || ctl({"state"}).exitCode == 0; }, 30000)
               && m_process.state() == QProcess::Running;
    }

    CtlAnswer ctl(const QStringList &arguments) const
    {
        QProcess client;
        client.start(QStringLiteral(TARNIXCTL_EXECUTABLE), QStringList{"--socket", socketPath()} + arguments);
        CtlAnswer answer;
        if (!client.waitForFinished(20000))
            return answer;
        answer.exitCode = client.exitCode();
        answer.line = client.readAllStandardOutput().trimmed();
        return answer;
    }

    QJsonObject state() const { return ctl({"state"}).object(); }

    // SIGTERM, as a service manager stops it; the exit code, or -1.
    int terminate()
    {
        ::kill(pid_t(m_process.processId()), SIGTERM);
        if (!m_process.waitForFinished(60000)) {
            qWarning("the application did not end within 60 s of SIGTERM");
            return -1;
        }
        if (m_process.exitStatus() == QProcess::NormalExit)
            return m_process.exitCode();
        // What it said last tells where it went down.
        qWarning("the application crashed on SIGTERM:\n%s", qPrintable(console().right(4000)));
        return -1;
    }

    QString console() { return QString::fromLocal8Bit(m_process.readAll()); }
    qint64 processId() const { return m_process.processId(); }
    // SIGKILL: no shutdown of any kind.
    void kill()
    {
        m_process.kill();
        m_process.waitForFinished(10000);
    }

    QStringList logMessages() const { return messages(logRecords(logDirectory())); }
    bool logContains(const QString &text) const { return !logMessages().filter(text).isEmpty(); }

private:
    QString m_home;
    QString m_outputSize = QStringLiteral("320x180");
    QString m_display;
    QString m_pulseServer;
    QMap<QString, QString> m_extra;
    QProcess m_process;
};

} // namespace tarnix::test
