#pragma once

#include "playout/async_file_preparation.h"
#include "playout/async_pipeline_stop.h"
#include "playout/deck_timings.h"
#include "shell/log_categories.h"
#include "shell/pipeline_release.h"

#include <QString>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <memory>
#include <vector>

namespace tarnix {

// The steps that stop a pipeline a deck has just replaced: a preparation
// still working on it is cancelled here and waited for on the stop's own
// thread, and the record (kept alive until then) hears that NULL was
// confirmed. Pipeline is a record with an atomic shutdownConfirmed.
template <typename Pipeline>
AsyncPipelineStop::Steps retirementSteps(std::shared_ptr<AsyncFilePreparation> preparation,
                                         std::shared_ptr<Pipeline> pipeline)
{
    AsyncPipelineStop::Steps steps;
    if (preparation) {
        preparation->cancel();
        steps.before = [preparation] {
            while (!preparation->waitFinished(std::chrono::hours(1))) {
            }
        };
    }
    steps.after = [pipeline] { pipeline->shutdownConfirmed.store(true, std::memory_order_release); };
    return steps;
}

// The pipelines a single-item deck (BGM, DSK) has replaced, each stopping
// on a thread of its own. A deck refuses a new replacement while too many
// have not confirmed their stop, so old pipelines in limbo stay bounded.
// Main thread.
class RetiredPipelines
{
public:
    // Fewer than the limit are still stopping.
    bool hasRoom(int maxUnconfirmed)
    {
        std::erase_if(m_stops, [](const std::shared_ptr<AsyncPipelineStop> &stop) {
            return stop->isFinished() && stop->isConfirmed();
        });
        return static_cast<int>(m_stops.size()) <= maxUnconfirmed;
    }

    // Starts the stop of the old pipeline, with its preparation; when no
    // thread can be started both are kept for the process with the warning
    // (the release rule: never free what may not have reached NULL).
    template <typename Pipeline>
    void retire(std::shared_ptr<Pipeline> old, std::shared_ptr<AsyncFilePreparation> preparation,
                const QString &retainWarning, std::chrono::milliseconds nullConfirmation, const QString &owner,
                const char *workerFailure = nullptr)
    {
        GstElement *playbin = old->playbin;
        AsyncPipelineStop::Steps steps = retirementSteps(preparation, old);
        std::shared_ptr<AsyncPipelineStop> stop =
            AsyncPipelineStop::start(playbin, std::move(steps), retainWarning, nullConfirmation);
        if (stop) {
            m_stops.push_back(std::move(stop));
            return;
        }
        if (workerFailure)
            qCWarning(lcPlayout()).noquote() << workerFailure;
        qCWarning(lcPlayout()).noquote() << retainWarning;
        retainForProcess(old, owner);
        if (preparation)
            retainForProcess(preparation);
    }

    // Stops not yet confirmed.
    int pendingCount() const
    {
        return static_cast<int>(std::count_if(m_stops.begin(), m_stops.end(), [](const auto &stop) {
            return !(stop->isFinished() && stop->isConfirmed());
        }));
    }

private:
    std::vector<std::shared_ptr<AsyncPipelineStop>> m_stops;
};

// The shutdown of a single-item deck's current pipeline, on the shutdown
// thread: its preparation is cancelled and waited for, then NULL is
// confirmed under the release rule and recorded on the pipeline.
template <typename Pipeline>
bool shutdownSingleItemPipeline(Pipeline &pipeline, const std::shared_ptr<AsyncFilePreparation> &preparation,
                                const QString &label, const DeckTimings &timings)
{
    pipeline.busCallbacks->clear();
    if (preparation) {
        preparation->cancel();
        if (!preparation->waitFinished(timings.preparationDeadline))
            return false;
    }
    const bool confirmed = stopPipeline(pipeline.playbin, label, timings.nullConfirmation);
    pipeline.shutdownConfirmed.store(confirmed, std::memory_order_release);
    return confirmed;
}

} // namespace tarnix
