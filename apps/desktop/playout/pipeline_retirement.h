#pragma once

#include "playout/async_file_preparation.h"
#include "playout/async_pipeline_stop.h"

#include <atomic>
#include <chrono>
#include <memory>

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

} // namespace tarnix
