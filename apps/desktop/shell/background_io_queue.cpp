#include "shell/background_io_queue.h"

#include <QTimer>

#include <system_error>
#include <thread>

namespace tarnix {

BackgroundIoQueue::BackgroundIoQueue(QObject *parent, std::chrono::milliseconds pollInterval)
    : QObject(parent)
    , m_timer(new QTimer(this))
{
    m_timer->setInterval(pollInterval);
    connect(m_timer, &QTimer::timeout, this, &BackgroundIoQueue::tick);
}

BackgroundIoQueue::~BackgroundIoQueue()
{
    waitForIdle();
}

void BackgroundIoQueue::enqueue(Work work, Completion completion)
{
    m_jobs.push_back({std::move(work), std::move(completion)});
    if (!m_timer->isActive())
        m_timer->start();
}

bool BackgroundIoQueue::isIdle() const
{
    return !m_running && m_jobs.empty();
}

bool BackgroundIoQueue::timerActive() const
{
    return m_timer->isActive();
}

void BackgroundIoQueue::tick()
{
    if (m_running && !m_running->finished.load(std::memory_order_acquire))
        return;
    if (m_running)
        finishRunning();
    // A completion may have started the next job already through
    // waitForIdle(); only start one when none runs.
    if (m_running)
        return;
    if (m_jobs.empty()) {
        m_timer->stop();
        return;
    }
    startNext();
}

void BackgroundIoQueue::finishRunning()
{
    const std::shared_ptr<Result> result = std::move(m_running);
    Completion completion = std::move(m_runningCompletion);
    m_running.reset();
    m_runningCompletion = nullptr;
    if (completion)
        completion(*result);
}

void BackgroundIoQueue::startNext()
{
    Job job = std::move(m_jobs.front());
    m_jobs.pop_front();
    auto result = std::make_shared<Result>();
    m_running = result;
    m_runningCompletion = std::move(job.completion);
    // The worker owns its work function and a reference to the result; it
    // sets finished last and touches nothing else, so it may outlive the
    // queue without harm.
    auto run = [result, work = std::move(job.work)] {
        if (work)
            work(*result);
        result->finished.store(true, std::memory_order_release);
        result->finished.notify_all();
    };
    try {
        std::thread(run).detach();
    } catch (const std::system_error &error) {
        result->success = false;
        result->errorText = QString::fromLocal8Bit(error.what());
        result->finished.store(true, std::memory_order_release);
    }
}

void BackgroundIoQueue::waitForIdle()
{
    while (!isIdle()) {
        if (!m_running)
            startNext();
        const std::shared_ptr<Result> running = m_running;
        running->finished.wait(false, std::memory_order_acquire);
        finishRunning();
    }
    m_timer->stop();
}

} // namespace tarnix
