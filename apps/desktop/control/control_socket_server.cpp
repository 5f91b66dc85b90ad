#include "control/control_socket_server.h"

#include "control/control_request.h"
#include "control/control_state_registry.h"
#include "control/controller_operations.h"
#include "shell/log_categories.h"

#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QJsonDocument>
#include <QLocalServer>
#include <QLocalSocket>
#include <QPointer>
#include <QTimer>

#include <cerrno>
#include <cstring>
#include <ctime>
#include <memory>

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace tarnix {

namespace {

enum class SocketFileState { Missing, Live, Stale, NotASocket };

// Whether a process still listens on a socket file. A Unix-domain connect
// succeeds or is refused at once, so this never waits.
SocketFileState probeSocketFile(const QString &path)
{
    const QByteArray native = QFile::encodeName(path);
    struct stat info {};
    if (::lstat(native.constData(), &info) != 0)
        return SocketFileState::Missing;
    if (!S_ISSOCK(info.st_mode))
        return SocketFileState::NotASocket;
    sockaddr_un address {};
    address.sun_family = AF_UNIX;
    if (std::size_t(native.size()) >= sizeof(address.sun_path))
        return SocketFileState::Live;  // cannot tell; leave it alone
    std::memcpy(address.sun_path, native.constData(), std::size_t(native.size()));
    const int probe = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (probe < 0)
        return SocketFileState::Live;
    const int result = ::connect(probe, reinterpret_cast<const sockaddr *>(&address), sizeof(address));
    const int error = errno;
    ::close(probe);
    if (result == 0 || error == EAGAIN || error == EINPROGRESS)
        return SocketFileState::Live;
    return error == ECONNREFUSED ? SocketFileState::Stale : SocketFileState::Live;
}

std::chrono::nanoseconds threadCpuTime()
{
    timespec now {};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return std::chrono::seconds(now.tv_sec) + std::chrono::nanoseconds(now.tv_nsec);
}

struct Connection {
    QPointer<QLocalSocket> socket;
    QByteArray buffer;          // received bytes, at most one line limit plus one read
    qsizetype consumed = 0;     // bytes of buffer already handled
    bool closing = false;
    bool passQueued = false;
    bool waitingForReader = false;
    // A command of this client is running; its next lines wait for it.
    bool commandPending = false;
};

struct CommandEntry {
    QPointer<QObject> owner;
    ControlSocketServer::CommandHandler handler;
};

struct QueryEntry {
    QPointer<QObject> owner;
    ControlSocketServer::QueryHandler handler;
};

} // namespace

struct ControlSocketServer::Impl {
    ControlSocketServer *self = nullptr;
    QPointer<ControllerOperations> operations;
    const ControlStateRegistry *state = nullptr;
    ControlSocketOptions options;
    QLocalServer server;
    QHash<QLocalSocket *, std::shared_ptr<Connection>> connections;
    QHash<QString, CommandEntry> commands;
    QHash<QString, QueryEntry> queries;

    void accept();
    void serve(const std::shared_ptr<Connection> &connection);
    void queuePass(const std::shared_ptr<Connection> &connection);
    void answer(Connection &connection, const QString &line);
    void refuseAndClose(Connection &connection, const QString &text);
    void handleLine(const std::shared_ptr<Connection> &connection, const QByteArray &line);
    void runCommand(const std::shared_ptr<Connection> &connection, const ControlRequest &request);
};

ControlSocketServer::ControlSocketServer(ControllerOperations *operations, const ControlStateRegistry *state,
                                         const ControlSocketOptions &options, QObject *parent)
    : QObject(parent)
    , d(std::make_unique<Impl>())
{
    d->self = this;
    d->operations = operations;
    d->state = state;
    d->options = options;
    d->server.setSocketOptions(QLocalServer::UserAccessOption);
    connect(&d->server, &QLocalServer::newConnection, this, [this] { d->accept(); });
}

ControlSocketServer::~ControlSocketServer()
{
    const auto connections = d->connections;
    d->connections.clear();
    for (const auto &connection : connections) {
        if (connection->socket) {
            connection->socket->disconnect(this);
            connection->socket->abort();
            delete connection->socket;
        }
    }
    d->server.close();
}

bool ControlSocketServer::listen(const QString &givenPath, QString *error)
{
    // A file path, relative to the working directory; QLocalServer would
    // put a bare name into its temporary directory instead.
    const QString path = QFileInfo(givenPath).absoluteFilePath();
    auto fail = [&](const QString &text) {
        if (error)
            *error = text;
        qCWarning(lcControl).noquote() << "Control socket not started:" << text;
        return false;
    };
    if (d->server.isListening())
        return fail(QStringLiteral("already listening at %1").arg(d->server.fullServerName()));
    switch (probeSocketFile(path)) {
    case SocketFileState::Missing:
        break;
    case SocketFileState::Stale:
        QLocalServer::removeServer(path);
        break;
    case SocketFileState::Live:
        return fail(QStringLiteral("%1 is in use by another process").arg(path));
    case SocketFileState::NotASocket:
        return fail(QStringLiteral("%1 exists and is not a socket").arg(path));
    }
    if (!d->server.listen(path))
        return fail(QStringLiteral("%1: %2").arg(path, d->server.errorString()));
    // The owner-only option leaves the execute bits set; connecting needs
    // read and write only.
    const QByteArray native = QFile::encodeName(d->server.fullServerName());
    if (::chmod(native.constData(), S_IRUSR | S_IWUSR) != 0) {
        d->server.close();
        return fail(QStringLiteral("%1: cannot restrict its permissions").arg(path));
    }
    if (error)
        error->clear();
    qCInfo(lcControl).noquote() << "Control socket listening at" << d->server.fullServerName();
    return true;
}

QString ControlSocketServer::socketPath() const
{
    return d->server.isListening() ? d->server.fullServerName() : QString();
}

int ControlSocketServer::connectionCount() const
{
    return int(d->connections.size());
}

bool ControlSocketServer::setCommandHandler(const QString &name, QObject *owner, CommandHandler handler)
{
    if (name.isEmpty() || !owner || !handler)
        return false;
    const auto existing = d->commands.constFind(name);
    if (existing != d->commands.cend() && existing->owner)
        return false;
    d->commands.insert(name, CommandEntry{owner, std::move(handler)});
    return true;
}

bool ControlSocketServer::setQueryHandler(const QString &name, QObject *owner, QueryHandler handler)
{
    if (name.isEmpty() || name == QLatin1String("state") || !owner || !handler)
        return false;
    const auto existing = d->queries.constFind(name);
    if (existing != d->queries.cend() && existing->owner)
        return false;
    d->queries.insert(name, QueryEntry{owner, std::move(handler)});
    return true;
}

void ControlSocketServer::Impl::accept()
{
    while (QLocalSocket *socket = server.nextPendingConnection()) {
        auto connection = std::make_shared<Connection>();
        connection->socket = socket;
        // Qt stops taking bytes from the kernel once this much waits unread,
        // so a client cannot grow our memory by sending faster than we read.
        socket->setReadBufferSize(options.maxLineBytes + 1);
        connections.insert(socket, connection);
        QObject::connect(socket, &QLocalSocket::readyRead, self, [this, connection] { serve(connection); });
        QObject::connect(socket, &QLocalSocket::bytesWritten, self, [this, connection] {
            if (connection->waitingForReader && connection->socket
                && connection->socket->bytesToWrite() <= options.maxPendingAnswerBytes / 2) {
                connection->waitingForReader = false;
                serve(connection);
            }
        });
        QObject::connect(socket, &QLocalSocket::disconnected, self, [this, socket] {
            connections.remove(socket);
            socket->deleteLater();
        });
        if (connections.size() > options.maxConnections)
            refuseAndClose(*connection, QStringLiteral("too many connections"));
        else if (socket->bytesAvailable() > 0)
            queuePass(connection);
    }
}

void ControlSocketServer::Impl::queuePass(const std::shared_ptr<Connection> &connection)
{
    if (connection->passQueued || !connection->socket)
        return;
    connection->passQueued = true;
    QTimer::singleShot(0, connection->socket.data(), [this, connection] {
        connection->passQueued = false;
        serve(connection);
    });
}

void ControlSocketServer::Impl::serve(const std::shared_ptr<Connection> &connection)
{
    QElapsedTimer pass;
    pass.start();
    const std::chrono::nanoseconds cpuStart = options.passObserver ? threadCpuTime() : std::chrono::nanoseconds(0);
    const qsizetype limit = options.maxLineBytes;
    while (!connection->closing && connection->socket && !connection->commandPending) {
        QLocalSocket *socket = connection->socket;
        if (socket->bytesToWrite() > options.maxPendingAnswerBytes) {
            // The client does not read its answers: leave its requests
            // unread until it does.
            connection->waitingForReader = true;
            break;
        }
        QByteArray &buffer = connection->buffer;
        const qsizetype end = buffer.indexOf('\n', connection->consumed);
        if (end < 0) {
            buffer.remove(0, connection->consumed);
            connection->consumed = 0;
            if (buffer.size() > limit) {
                refuseAndClose(*connection, QStringLiteral("line longer than %1 bytes").arg(limit));
                break;
            }
            const qint64 available = socket->bytesAvailable();
            if (available <= 0)
                break;
            buffer += socket->read(qMin<qint64>(available, limit + 1 - buffer.size()));
            continue;
        }
        if (end - connection->consumed > limit) {
            refuseAndClose(*connection, QStringLiteral("line longer than %1 bytes").arg(limit));
            break;
        }
        QByteArray line = buffer.mid(connection->consumed, end - connection->consumed);
        connection->consumed = end + 1;
        if (line.endsWith('\r'))
            line.chop(1);
        if (!line.trimmed().isEmpty())
            handleLine(connection, line);
        if (std::chrono::nanoseconds(pass.nsecsElapsed()) > options.passBudget) {
            queuePass(connection);
            break;
        }
    }
    if (options.passObserver)
        options.passObserver(std::chrono::nanoseconds(pass.nsecsElapsed()), threadCpuTime() - cpuStart);
}

void ControlSocketServer::Impl::answer(Connection &connection, const QString &line)
{
    if (connection.socket)
        connection.socket->write(line.toUtf8() + '\n');
}

void ControlSocketServer::Impl::refuseAndClose(Connection &connection, const QString &text)
{
    qCWarning(lcControl).noquote() << "Control socket client refused:" << text;
    answer(connection, controlErrorAnswer(text));
    connection.closing = true;
    connection.buffer.clear();
    connection.consumed = 0;
    if (connection.socket)
        connection.socket->disconnectFromServer();
}

void ControlSocketServer::Impl::handleLine(const std::shared_ptr<Connection> &connectionPointer,
                                          const QByteArray &line)
{
    Connection &connection = *connectionPointer;
    const ControlRequest request = parseControlRequest(line);
    switch (request.kind) {
    case ControlRequest::Kind::Invalid:
        answer(connection, controlErrorAnswer(request.error));
        return;
    case ControlRequest::Kind::StateQuery:
        answer(connection, state ? state->stateJson() : ControlStateRegistry().stateJson());
        return;
    case ControlRequest::Kind::Query: {
        const auto entry = queries.constFind(request.query);
        if (entry == queries.cend() || !entry->owner)
            answer(connection, controlErrorAnswer(QStringLiteral("unknown query")));
        else
            answer(connection, entry->handler());
        return;
    }
    case ControlRequest::Kind::Command:
        runCommand(connectionPointer, request);
        return;
    case ControlRequest::Kind::Invoke:
        break;
    }
    if (!operations) {
        answer(connection, controlErrorAnswer(QStringLiteral("operations are not available")));
        return;
    }
    quint64 id = 0;
    ControllerOperations::Result result;
    {
        OperationSourceScope source("Remote");
        result = operations->invoke(request.action, request.arguments, &id);
    }
    answer(connection, controlInvokedAnswer(id, result.status));
}

void ControlSocketServer::Impl::runCommand(const std::shared_ptr<Connection> &connection,
                                          const ControlRequest &request)
{
    const auto entry = commands.constFind(request.command);
    if (entry == commands.cend() || !entry->owner) {
        answer(*connection, controlErrorAnswer(QStringLiteral("unknown command \"%1\"").arg(request.command)));
        return;
    }
    qCInfo(lcControl).noquote() << QStringLiteral("CONTROL command %1 source=Remote request=%2")
                                       .arg(request.command,
                                            QString::fromUtf8(QJsonDocument(request.commandRequest)
                                                                  .toJson(QJsonDocument::Compact)));
    connection->commandPending = true;
    // The answer may come at once or from a later event; the server may be
    // gone by then, and the client too.
    auto answered = std::make_shared<bool>(false);
    QPointer<ControlSocketServer> server(self);
    const QString name = request.command;
    CommandDone done = [this, server, connection, answered, name](const QString &error) {
        if (*answered)
            return;
        *answered = true;
        if (error.isEmpty())
            qCInfo(lcControl).noquote() << QStringLiteral("CONTROL command %1 ok").arg(name);
        else
            qCWarning(lcControl).noquote() << QStringLiteral("CONTROL command %1 error=%2").arg(name, error);
        if (!server)
            return;
        connection->commandPending = false;
        if (!connection->socket || connection->closing)
            return;
        answer(*connection, error.isEmpty() ? controlOkAnswer() : controlErrorAnswer(error));
        queuePass(connection);
    };
    // A copy: the handler may change the table.
    const CommandHandler handler = entry->handler;
    handler(request.commandRequest, std::move(done));
}

} // namespace tarnix
