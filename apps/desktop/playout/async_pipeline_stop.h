#pragma once

#include <gst/gst.h>

#include <QString>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>

namespace tarnix {

// Stops one pipeline on a detached thread of its own, under the safe
// release rule: the pipeline is unreferenced only when its NULL state was
// confirmed; otherwise the reference and the after-step are kept for the
// rest of the process and the owner's words are logged.
//
// Threads: start() and the accessors are for the main thread (they never
// wait). The before-step and the after-step run on the stop's thread.
class AsyncPipelineStop
{
public:
    struct Steps {
        // Runs first, for example waiting for a worker that still uses the
        // pipeline to let go of it.
        std::function<void()> before;
        // Runs only after NULL was confirmed, before the pipeline is
        // unreferenced; it is destroyed right after, on the stop's thread.
        std::function<void()> after;
    };

    // Takes its own reference on the pipeline. Returns null when the thread
    // could not be started; the caller then still owns all it gave.
    static std::shared_ptr<AsyncPipelineStop> start(GstElement *pipeline, Steps steps,
                                                    const QString &retainWarning,
                                                    std::chrono::milliseconds confirmationLimit);

    bool isFinished() const { return m_finished.load(std::memory_order_acquire); }
    // Meaningful once finished.
    bool isConfirmed() const { return m_confirmed.load(std::memory_order_acquire); }

    AsyncPipelineStop(const AsyncPipelineStop &) = delete;
    AsyncPipelineStop &operator=(const AsyncPipelineStop &) = delete;

private:
    AsyncPipelineStop() = default;
    void run();

    std::atomic<bool> m_finished{false};
    std::atomic<bool> m_confirmed{false};
    // Owned by the stop's thread once started.
    GstElement *m_pipeline = nullptr;
    Steps m_steps;
    QString m_retainWarning;
    std::chrono::milliseconds m_confirmationLimit{2000};
};

} // namespace tarnix
