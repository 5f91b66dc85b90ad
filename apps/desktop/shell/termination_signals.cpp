#include "shell/termination_signals.h"

#include "shell/log_categories.h"

#include <QSocketNotifier>

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace tarnix {

namespace {

int g_pipe[2] = {-1, -1};

void onSignal(int signalNumber)
{
    const int saved = errno;
    const unsigned char byte = static_cast<unsigned char>(signalNumber);
    [[maybe_unused]] const ssize_t n = ::write(g_pipe[1], &byte, 1);
    errno = saved;
}

} // namespace

TerminationSignals::TerminationSignals(QObject *parent)
    : QObject(parent)
{
    if (g_pipe[0] >= 0) {
        qCWarning(lcSystem) << "Termination signal handling is already installed";
        return;
    }
    if (::pipe2(g_pipe, O_CLOEXEC | O_NONBLOCK) != 0) {
        qCWarning(lcSystem) << "Could not create the termination signal pipe:" << strerror(errno);
        g_pipe[0] = g_pipe[1] = -1;
        return;
    }
    struct sigaction action {};
    action.sa_handler = onSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    ::sigaction(SIGTERM, &action, nullptr);
    ::sigaction(SIGINT, &action, nullptr);

    m_notifier = new QSocketNotifier(g_pipe[0], QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, &TerminationSignals::readPipe);
}

TerminationSignals::~TerminationSignals()
{
    if (!m_notifier)
        return;
    struct sigaction action {};
    action.sa_handler = SIG_DFL;
    sigemptyset(&action.sa_mask);
    ::sigaction(SIGTERM, &action, nullptr);
    ::sigaction(SIGINT, &action, nullptr);
    delete m_notifier;
    m_notifier = nullptr;
    ::close(g_pipe[0]);
    ::close(g_pipe[1]);
    g_pipe[0] = g_pipe[1] = -1;
}

void TerminationSignals::readPipe()
{
    unsigned char byte = 0;
    while (::read(g_pipe[0], &byte, 1) == 1) {
        qCInfo(lcSystem) << "Received signal" << int(byte) << "; shutting down";
        emit terminationRequested(int(byte));
    }
}

} // namespace tarnix
