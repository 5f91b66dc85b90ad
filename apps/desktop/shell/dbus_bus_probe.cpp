#include "shell/dbus_bus_probe.h"

#include <QByteArray>
#include <QFileInfo>
#include <QStringList>

#include <cerrno>
#include <cstddef>
#include <cstring>

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace tarnix {

namespace {

using Clock = std::chrono::steady_clock;

enum class Connect { Connected, Unreachable, Silent };

class Socket
{
public:
    Socket() : m_fd(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0)) {}
    ~Socket()
    {
        if (m_fd >= 0)
            ::close(m_fd);
    }
    Socket(const Socket &) = delete;
    Socket &operator=(const Socket &) = delete;
    int fd() const { return m_fd; }

private:
    int m_fd;
};

// Milliseconds left until the deadline, for poll(); 0 once it has passed.
int remainingMs(Clock::time_point deadline)
{
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
    return left.count() > 0 ? int(left.count()) : 0;
}

// poll() for the events until the deadline, across interruptions.
bool waitFor(int fd, short events, Clock::time_point deadline)
{
    for (;;) {
        pollfd p{fd, events, 0};
        const int ready = ::poll(&p, 1, remainingMs(deadline));
        if (ready > 0)
            return true;
        if (ready == 0 || errno != EINTR)
            return false;
    }
}

// Undoes the %XX escapes of a D-Bus address value.
QByteArray unescapeValue(const QString &value)
{
    return QByteArray::fromPercentEncoding(value.toUtf8());
}

// The value of a key in one address entry's "key=value,key=value" part.
QString addressValue(const QString &parameters, const QString &key)
{
    for (const QString &pair : parameters.split(QLatin1Char(','), Qt::SkipEmptyParts)) {
        const qsizetype equals = pair.indexOf(QLatin1Char('='));
        if (equals > 0 && pair.left(equals) == key)
            return pair.mid(equals + 1);
    }
    return QString();
}

Connect connectUnix(int fd, const QByteArray &name, bool abstract, Clock::time_point deadline)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const std::size_t offset = abstract ? 1 : 0;
    // A path must leave room for its terminating zero; an abstract name need not.
    if (name.isEmpty() || std::size_t(name.size()) + offset + (abstract ? 0 : 1) > sizeof(address.sun_path))
        return Connect::Unreachable;
    std::memcpy(address.sun_path + offset, name.constData(), std::size_t(name.size()));
    const auto length = socklen_t(offsetof(sockaddr_un, sun_path) + offset + std::size_t(name.size())
                                  + (abstract ? 0 : 1));
    if (::connect(fd, reinterpret_cast<const sockaddr *>(&address), length) == 0)
        return Connect::Connected;
    if (errno != EAGAIN && errno != EINPROGRESS && errno != EINTR)
        return Connect::Unreachable;
    // A full backlog: the daemon is not accepting. Give it until the deadline.
    if (!waitFor(fd, POLLOUT, deadline))
        return Connect::Silent;
    int error = 0;
    socklen_t size = sizeof(error);
    if (::getsockopt(fd, SOL_SOCKET, SO_ERROR, &error, &size) != 0 || error != 0)
        return Connect::Unreachable;
    return Connect::Connected;
}

// Sends the opening of the EXTERNAL authentication and waits for one whole
// line back. Any line will do (OK, REJECTED, ERROR): it shows that a daemon
// reads and answers; whether it accepts us is for libdbus to find out.
BusProbeOutcome askForAnswer(int fd, Clock::time_point deadline)
{
    QByteArray hello("\0AUTH EXTERNAL ", 15);
    hello += QByteArray::number(::getuid()).toHex();
    hello += "\r\n";
    qsizetype sent = 0;
    while (sent < hello.size()) {
        const ssize_t n = ::send(fd, hello.constData() + sent, std::size_t(hello.size() - sent), MSG_NOSIGNAL);
        if (n > 0) {
            sent += n;
        } else if (n < 0 && (errno == EAGAIN || errno == EINTR)) {
            if (!waitFor(fd, POLLOUT, deadline))
                return BusProbeOutcome::Silent;
        } else {
            return BusProbeOutcome::Unreachable;
        }
    }
    QByteArray answer;
    while (!answer.contains('\n')) {
        if (!waitFor(fd, POLLIN, deadline))
            return BusProbeOutcome::Silent;
        char buffer[256];
        const ssize_t n = ::recv(fd, buffer, sizeof(buffer), 0);
        if (n > 0) {
            answer.append(buffer, n);
            if (answer.size() > 4096)  // not a line-based daemon, but it talks
                break;
        } else if (n == 0 || (errno != EAGAIN && errno != EINTR)) {
            return BusProbeOutcome::Unreachable;  // closed on us: libdbus fails fast too
        }
    }
    return BusProbeOutcome::Answered;
}

} // namespace

QString sessionBusAddress()
{
    const QString address = qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS");
    if (!address.isEmpty())
        return address;
    const QString runtimeDirectory = qEnvironmentVariable("XDG_RUNTIME_DIR");
    if (runtimeDirectory.isEmpty())
        return QString();
    const QString socket = runtimeDirectory + QStringLiteral("/bus");
    return QFileInfo::exists(socket) ? QStringLiteral("unix:path=") + socket : QString();
}

QString systemBusAddress()
{
    const QString address = qEnvironmentVariable("DBUS_SYSTEM_BUS_ADDRESS");
    return address.isEmpty() ? QStringLiteral("unix:path=/var/run/dbus/system_bus_socket") : address;
}

BusProbeResult probeBus(const QString &address, std::chrono::milliseconds timeout)
{
    const Clock::time_point deadline = Clock::now() + timeout;
    BusProbeResult result;
    bool anyEntry = false;
    for (const QString &entry : address.split(QLatin1Char(';'), Qt::SkipEmptyParts)) {
        anyEntry = true;
        result.entry = entry;
        const qsizetype colon = entry.indexOf(QLatin1Char(':'));
        const QString transport = entry.left(colon);
        const QString parameters = colon < 0 ? QString() : entry.mid(colon + 1);
        const QString path = addressValue(parameters, QStringLiteral("path"));
        const QString abstract = addressValue(parameters, QStringLiteral("abstract"));
        if (transport != QLatin1String("unix") || (path.isEmpty() && abstract.isEmpty())) {
            // libdbus would try this entry; the probe cannot tell how it fares.
            result.outcome = BusProbeOutcome::NotProbed;
            return result;
        }
        Socket socket;
        if (socket.fd() < 0) {
            result.outcome = BusProbeOutcome::NotProbed;
            return result;
        }
        const bool isAbstract = path.isEmpty();
        switch (connectUnix(socket.fd(), unescapeValue(isAbstract ? abstract : path), isAbstract, deadline)) {
        case Connect::Unreachable:
            continue;  // libdbus goes on to the next entry as well
        case Connect::Silent:
            result.outcome = BusProbeOutcome::Silent;
            return result;
        case Connect::Connected:
            break;
        }
        result.outcome = askForAnswer(socket.fd(), deadline);
        return result;
    }
    result.outcome = anyEntry ? BusProbeOutcome::Unreachable : BusProbeOutcome::NotProbed;
    return result;
}

} // namespace tarnix
