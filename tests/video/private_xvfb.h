#pragma once

#include <QByteArray>
#include <QStandardPaths>

#include <csignal>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

// A private X server for one test or bench process: Xvfb picks a free
// display and writes its number to a pipe (-displayfd). Started before the
// application object so that the xcb platform finds it through DISPLAY.
class PrivateXvfb
{
public:
    // False when Xvfb is not installed or did not come up within 10 s.
    bool start(const char *screen = "1920x1080x24")
    {
        const QString program = QStandardPaths::findExecutable(QStringLiteral("Xvfb"));
        if (program.isEmpty())
            return false;
        int fds[2];
        if (pipe(fds) != 0)
            return false;
        const QByteArray path = program.toLocal8Bit();
        const QByteArray fd = QByteArray::number(fds[1]);
        m_pid = fork();
        if (m_pid == 0) {
            close(fds[0]);
            execl(path.constData(), "Xvfb", "-displayfd", fd.constData(), "-screen", "0", screen,
                  "-nolisten", "tcp", "-noreset", static_cast<char *>(nullptr));
            _exit(127);
        }
        close(fds[1]);
        if (m_pid < 0) {
            close(fds[0]);
            return false;
        }
        QByteArray number;
        pollfd readable{fds[0], POLLIN, 0};
        while (!number.endsWith('\n') && poll(&readable, 1, 10000) > 0) {
            char c = 0;
            if (read(fds[0], &c, 1) != 1)
                break;
            number.append(c);
        }
        close(fds[0]);
        if (!number.endsWith('\n')) {
            stop();
            return false;
        }
        qputenv("DISPLAY", ":" + number.trimmed());
        return true;
    }

    void stop()
    {
        if (m_pid > 0) {
            kill(m_pid, SIGTERM);
            waitpid(m_pid, nullptr, 0);
            m_pid = -1;
        }
    }

    ~PrivateXvfb() { stop(); }

private:
    pid_t m_pid = -1;
};
