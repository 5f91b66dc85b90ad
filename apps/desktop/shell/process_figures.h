#pragma once

#include <QString>
#include <QtGlobal>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

namespace tarnix {

// What the kernel knows of this process: resident memory, open descriptors
// and threads. A figure that could not be read is -1.
struct ProcessFigures {
    qint64 rssBytes = -1;
    qint64 openFds = -1;
    qint64 threads = -1;
};

// Reads the figures from a proc directory ("/proc/self"): "status" for the
// resident size and the threads, the entries of "fd" for the descriptors
// (the one this reading opens is not counted). File I/O, for a worker.
ProcessFigures readProcessFigures(const QString &procDirectory = QStringLiteral("/proc/self"));

// Reads the process figures on a thread of its own, once at start and then
// once per interval, and keeps the latest reading where the main thread
// reads it without waiting. The figures of one reading are published one by
// one, so a reader may see two of one reading and one of the next; each is
// a figure of its moment.
//
// Threads: construction, start() and destruction on the owner's thread; the
// destructor only tells the worker to end (it never joins: the worker owns
// what it touches through a shared record); latest() from any thread.
class ProcessFiguresSampler
{
public:
    using Reader = std::function<ProcessFigures()>;

    // An empty reader reads /proc/self.
    explicit ProcessFiguresSampler(std::chrono::milliseconds interval, Reader reader = {});
    ~ProcessFiguresSampler();

    ProcessFiguresSampler(const ProcessFiguresSampler &) = delete;
    ProcessFiguresSampler &operator=(const ProcessFiguresSampler &) = delete;

    // Starts the worker; false when no thread could be made (the figures
    // then stay unknown). Runs once.
    bool start();

    // The latest reading; none before the first one.
    std::optional<ProcessFigures> latest() const;
    quint64 readings() const;

private:
    struct Shared;
    std::shared_ptr<Shared> m_shared;
    bool m_started = false;
};

} // namespace tarnix
