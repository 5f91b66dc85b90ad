#pragma once

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
// Main thread only.
class ControlSocketServer : public QObject
{
    Q_OBJECT

public:
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

private:
    struct Impl;
    std::unique_ptr<Impl> d;
};

} // namespace tarnix
