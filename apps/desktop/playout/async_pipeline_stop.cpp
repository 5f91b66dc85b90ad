#include "playout/async_pipeline_stop.h"

#include "shell/log_categories.h"
#include "shell/pipeline_release.h"

#include <system_error>
#include <thread>

namespace tarnix {

std::shared_ptr<AsyncPipelineStop> AsyncPipelineStop::start(GstElement *pipeline, Steps steps,
                                                            const QString &retainWarning,
                                                            std::chrono::milliseconds limit)
{
    std::shared_ptr<AsyncPipelineStop> stop(new AsyncPipelineStop);
    stop->m_pipeline = pipeline ? GST_ELEMENT(gst_object_ref(pipeline)) : nullptr;
    stop->m_steps = std::move(steps);
    stop->m_retainWarning = retainWarning;
    stop->m_confirmationLimit = limit;
    try {
        std::thread([stop] { stop->run(); }).detach();
    } catch (const std::system_error &failure) {
        qCWarning(lcPlayout()).noquote()
            << QStringLiteral("Could not start a pipeline stop thread:") << failure.what();
        if (stop->m_pipeline)
            gst_object_unref(stop->m_pipeline);
        stop->m_pipeline = nullptr;
        return nullptr;
    }
    return stop;
}

void AsyncPipelineStop::run()
{
    if (m_steps.before)
        m_steps.before();
    const bool confirmed = confirmNullState(m_pipeline, m_confirmationLimit).confirmed;
    if (confirmed) {
        if (m_steps.after)
            m_steps.after();
        if (m_pipeline)
            gst_object_unref(m_pipeline);
        m_pipeline = nullptr;
        m_steps = {};
    } else {
        // Whatever the pipeline's threads may still touch stays alive.
        qCWarning(lcPlayout()).noquote() << m_retainWarning;
        retainPipelineForProcess(std::exchange(m_pipeline, nullptr));
        if (m_steps.after)
            retainForProcess(std::make_shared<std::function<void()>>(std::move(m_steps.after)));
        m_steps = {};
    }
    m_confirmed.store(confirmed, std::memory_order_release);
    m_finished.store(true, std::memory_order_release);
}

} // namespace tarnix
