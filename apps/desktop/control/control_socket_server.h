#pragma once

#include <QJsonObject>
#include <QObject>
#include <QString>

#include <chrono>
#include <functional>
#include <memory>

namespace tarnix {

class ControllerOperations;
class ControlStateRegistry;

// Limits of the control socket. Defaults are the product's; tests shrink or
// observe them.
struct ControlSocketOptions {
    qsizetype maxLineBytes = 64 * 1024;        // a longer line is refused and ends the connection
    qint64 maxPendingAnswerBytes = 256 * 1024; // answers a client has not read yet; above it, its requests wait
    int maxConnections = 16;
    // One pass over a client's lines stops after this long and continues in
    // a later event, so a flooding client shares the main thread fairly.
    std::chrono::microseconds passBudget{500};
    // Test seam: told how long each pass took, in wall time and in CPU time
    // of the main thread (which other processes cannot stretch).
    std::function<void(std::chrono::nanoseconds wall, std::chrono::nanoseconds cpu)> passObserver;
};

// A local (Unix-domain) socket that lets automation and test benches invoke
// operations and read the playout state, one JSON object per line each way.
// Requests run through ControllerOperations with the source "Remote". A
// client can neither block the main thread nor grow its memory without bound:
// reads and answers are bounded and writes never wait.
//
// Commands ({"command":"importPlaylist",...}) are functions that finish
// later, such as file work; each is answered when it is done, with
// {"ok":true} or {"error":"..."}, and a client's later lines wait until then
// so its answers keep the order of its requests.
//
// Main thread only.
class ControlSocketServer : public QObject
{
    Q_OBJECT

public:
    // Ends a command: an empty text answers {"ok":true}, any other text is
    // the error. Only the first call counts; a call after the client left,
    // or after the server is gone, does nothing. Main thread.
    using CommandDone = std::function<void(const QString &error)>;
    using CommandHandler = std::function<void(const QJsonObject &request, CommandDone done)>;

    ControlSocketServer(ControllerOperations *operations, const ControlStateRegistry *state,
                        const ControlSocketOptions &options = {}, QObject *parent = nullptr);
    // Closes every connection and removes the socket file.
    ~ControlSocketServer() override;

    // Listens at the path; the socket file is readable and writable by the
    // owner only. A leftover file of a previous run that nobody listens on is
    // replaced; a live one is not. Returns false with a text on failure.
    bool listen(const QString &path, QString *error = nullptr);
    QString socketPath() const;
    int connectionCount() const;

    // Serves the command of that name while `owner` lives; the first
    // handler of a name wins. Returns false for an empty name, a null owner
    // or a name already served.
    bool setCommandHandler(const QString &name, QObject *owner, CommandHandler handler);

    // Answers {"query":"<name>"} with the handler's compact JSON object while
    // `owner` lives; the first handler of a name wins. Main thread: the
    // handler reads what it answers and returns at once.
    using QueryHandler = std::function<QString()>;
    bool setQueryHandler(const QString &name, QObject *owner, QueryHandler handler);

private:
    struct Impl;
    std::unique_ptr<Impl> d;
};

} // namespace tarnix
