#pragma once

#include <QObject>
#include <QString>

#include <atomic>
#include <chrono>
#include <deque>
#include <functional>
#include <memory>

class QTimer;

namespace tarnix {

// Runs file work (an export, a playlist save) one job at a time off the main
// thread and hands each result back on the main thread, in the order the
// jobs were submitted, so that a slow disk never stalls the show.
//
// Thread rules: the queue lives on the main thread and every member is
// called there. A work function runs on a worker thread and touches only what
// it captured and its Result.
class BackgroundIoQueue : public QObject
{
    Q_OBJECT

public:
    struct Result {
        std::atomic<bool> finished{false};  // set by the worker, last
        bool success = false;
        QString errorText;
    };
    using Work = std::function<void(Result &)>;
    using Completion = std::function<void(const Result &)>;

    explicit BackgroundIoQueue(QObject *parent = nullptr,
                               std::chrono::milliseconds pollInterval = std::chrono::milliseconds(20));
    // Runs what is left, as waitForIdle() does.
    ~BackgroundIoQueue() override;

    void enqueue(Work work, Completion completion);

    // For the end of the run: every queued job runs to its end, one at a
    // time, and each completion runs on the calling thread in submission
    // order, until the queue is empty, including jobs that completions add.
    void waitForIdle();

    bool isIdle() const;
    bool timerActive() const;

private:
    struct Job {
        Work work;
        Completion completion;
    };

    void tick();
    void startNext();
    void finishRunning();

    QTimer *m_timer = nullptr;
    std::deque<Job> m_jobs;
    std::shared_ptr<Result> m_running;
    Completion m_runningCompletion;
};

} // namespace tarnix
