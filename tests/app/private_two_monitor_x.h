#pragma once

// A private X server with two monitors side by side, for tests of where the
// program window goes. Xvfb cannot do this: its heads all sit at 0,0 under
// Xinerama and it refuses RandR monitors, while Qt's xcb platform finds
// screens through RandR only. The Xorg server with the dummy video driver
// has sixteen RandR outputs; the first two are given modes and placed:
//
//   DUMMY0 1280x720 at 0,0 (primary)   DUMMY1 1024x768 at 1280,0
//
// Xorg needs root here (no seat, no console); callers skip otherwise.

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QProcess>
#include <QRect>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <csignal>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

class PrivateTwoMonitorX
{
public:
    static constexpr QRect left{0, 0, 1280, 720};
    static constexpr QRect right{1280, 0, 1024, 768};

    // An empty text on success, otherwise what went wrong (and the server's
    // log, when it got that far).
    QString start()
    {
        const QString program = QStandardPaths::findExecutable(QStringLiteral("Xorg"));
        if (program.isEmpty())
            return QStringLiteral("Xorg is not installed");
        if (!m_dir.isValid())
            return QStringLiteral("no temporary folder");
        const QString config = m_dir.filePath(QStringLiteral("dummy.conf"));
        QFile file(config);
        if (!file.open(QIODevice::WriteOnly) || file.write(configText()) < 0)
            return QStringLiteral("cannot write %1").arg(config);
        file.close();
        QDir(m_dir.path()).mkdir(QStringLiteral("conf.d"));

        int fds[2];
        if (pipe(fds) != 0)
            return QStringLiteral("pipe failed");
        const QByteArray path = program.toLocal8Bit();
        const QByteArray fd = QByteArray::number(fds[1]);
        const QByteArray configPath = config.toLocal8Bit();
        const QByteArray configDir = m_dir.filePath(QStringLiteral("conf.d")).toLocal8Bit();
        const QByteArray log = logPath().toLocal8Bit();
        m_pid = fork();
        if (m_pid == 0) {
            close(fds[0]);
            execl(path.constData(), "Xorg", "-displayfd", fd.constData(), "-config", configPath.constData(),
                  "-configdir", configDir.constData(), "-logfile", log.constData(), "-nolisten", "tcp",
                  "-noreset", "-novtswitch", "-sharevts", static_cast<char *>(nullptr));
            _exit(127);
        }
        close(fds[1]);
        if (m_pid < 0) {
            close(fds[0]);
            return QStringLiteral("fork failed");
        }
        QByteArray number;
        pollfd readable{fds[0], POLLIN, 0};
        while (!number.endsWith('\n') && poll(&readable, 1, 20000) > 0) {
            char c = 0;
            if (read(fds[0], &c, 1) != 1)
                break;
            number.append(c);
        }
        close(fds[0]);
        if (!number.endsWith('\n')) {
            stop();
            return QStringLiteral("Xorg did not come up:\n") + serverLog();
        }
        qputenv("DISPLAY", ":" + number.trimmed());
        const QString arranged = xrandr({"--addmode", "DUMMY1", "1024x768"});
        if (!arranged.isEmpty())
            return arranged;
        return xrandr({"--output", "DUMMY0", "--mode", "1280x720", "--pos", "0x0", "--primary", "--output", "DUMMY1",
                       "--mode", "1024x768", "--pos", "1280x0"});
    }

    QString serverLog() const
    {
        QFile file(logPath());
        return file.open(QIODevice::ReadOnly) ? QString::fromLocal8Bit(file.readAll().right(4000)) : QString();
    }

    void stop()
    {
        if (m_pid > 0) {
            kill(m_pid, SIGTERM);
            waitpid(m_pid, nullptr, 0);
            m_pid = -1;
        }
    }

    ~PrivateTwoMonitorX() { stop(); }

private:
    QString logPath() const { return m_dir.filePath(QStringLiteral("xorg.log")); }

    static QString xrandr(const QStringList &arguments)
    {
        QProcess process;
        process.start(QStringLiteral("xrandr"), arguments);
        if (!process.waitForFinished(10000) || process.exitCode() != 0)
            return QStringLiteral("xrandr %1 failed: %2")
                .arg(arguments.join(' '), QString::fromLocal8Bit(process.readAllStandardError()));
        return {};
    }

    // No input devices are added (the tests drive the application through
    // its socket and XTEST); the virtual framebuffer holds both monitors.
    static QByteArray configText()
    {
        return R"(Section "ServerFlags"
    Option "AutoAddDevices" "false"
    Option "AutoAddGPU" "false"
    Option "DontVTSwitch" "true"
EndSection
Section "Device"
    Identifier "dummy"
    Driver "dummy"
    VideoRam 65536
EndSection
Section "Monitor"
    Identifier "monitor"
    HorizSync 5.0 - 1000.0
    VertRefresh 5.0 - 200.0
EndSection
Section "Screen"
    Identifier "screen"
    Device "dummy"
    Monitor "monitor"
    DefaultDepth 24
    SubSection "Display"
        Depth 24
        Virtual 2304 768
    EndSubSection
EndSection
)";
    }

    QTemporaryDir m_dir;
    pid_t m_pid = -1;
};
