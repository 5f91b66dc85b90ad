#pragma once

#include "playout/deck_source.h"
#include "playout/deck_timings.h"

#include <gst/gst.h>

#include <QDeadlineTimer>
#include <QString>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>

namespace tarnix {

// Opens a file in a playbin and prerolls it at its in point, on a detached
// thread that holds its own reference on the playbin. The main thread only
// reads the atomics and, once finished is seen, the results.
//
// Threads: start, cancel and the accessors are for the main thread; the
// results are written by the worker before it publishes finished.
// waitFinished is for stop and shutdown threads.
class AsyncFilePreparation
{
public:
    enum Result : int {
        Prepared = 1,
        Offline = 2,
        Failed = 3,
    };

    struct Options {
        // Detect a still image by content and freeze it (DSK and BGM); decks
        // leave it off.
        bool detectStill = false;
        DeckTimings timings;
    };

    // Returns null when the worker thread could not be started.
    static std::shared_ptr<AsyncFilePreparation> start(GstElement *playbin,
                                                       const DeckSource &request,
                                                       std::chrono::milliseconds timeout,
                                                       const Options &options);

    void cancel() { m_cancelled.store(true, std::memory_order_release); }
    bool isCancelled() const { return m_cancelled.load(std::memory_order_acquire); }
    bool isFinished() const { return m_finished.load(std::memory_order_acquire); }
    // Waits until the worker has finished or the limit passed; true if finished.
    bool waitFinished(std::chrono::milliseconds limit);

    // Results; read only after isFinished() returned true.
    Result result() const { return m_result; }
    QString error() const { return m_error; }
    bool hasVideo() const { return m_hasVideo; }
    bool hasAudio() const { return m_hasAudio; }
    bool isStill() const { return m_isStill; }
    bool timedOut() const { return m_timedOut; }
    // The failure was a flow with no linked stream (see MediaErrorClass).
    bool noLinkedStream() const { return m_notLinked; }

    AsyncFilePreparation(const AsyncFilePreparation &) = delete;
    AsyncFilePreparation &operator=(const AsyncFilePreparation &) = delete;

private:
    AsyncFilePreparation() = default;
    void run(GstElement *playbin, DeckSource request, Options options);
    bool stopRequested() const;
    void fail(Result result, const QString &text);
    void failFromBus(GstElement *playbin, const QString &fallbackText);

    QDeadlineTimer m_deadline;
    std::atomic<bool> m_finished{false};
    std::atomic<bool> m_cancelled{false};
    Result m_result = Failed;
    QString m_error;
    bool m_hasVideo = false;
    bool m_hasAudio = false;
    bool m_isStill = false;
    bool m_timedOut = false;
    bool m_notLinked = false;
    std::mutex m_mutex;
    std::condition_variable m_condition;
};

} // namespace tarnix
