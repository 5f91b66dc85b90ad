#include "shell/pipeline_release.h"

#include "shell/log_categories.h"

#include <mutex>
#include <vector>

namespace tarnix {
namespace {

struct RetainedObjects {
    std::mutex mutex;
    std::vector<GstElement *> pipelines;
    std::vector<std::shared_ptr<void>> owners;
};

// Deliberately never destroyed: static destructors at exit would otherwise
// unreference exactly the pipelines that could not be stopped.
RetainedObjects &retained()
{
    static auto *objects = new RetainedObjects;
    return *objects;
}

GstClockTime toClockTime(std::chrono::milliseconds limit)
{
    if (limit.count() <= 0)
        return 0;
    return static_cast<GstClockTime>(limit.count()) * GST_MSECOND;
}

} // namespace

NullConfirmation confirmNullState(GstElement *element, std::chrono::milliseconds limit)
{
    NullConfirmation outcome;
    if (!element) {
        outcome.confirmed = true;
        outcome.result = GST_STATE_CHANGE_SUCCESS;
        outcome.current = GST_STATE_NULL;
        return outcome;
    }
    if (gst_element_set_state(element, GST_STATE_NULL) == GST_STATE_CHANGE_FAILURE) {
        outcome.setStateFailed = true;
        gst_element_get_state(element, &outcome.current, &outcome.pending, 0);
        return outcome;
    }
    outcome.result =
        gst_element_get_state(element, &outcome.current, &outcome.pending, toClockTime(limit));
    outcome.confirmed =
        outcome.result != GST_STATE_CHANGE_FAILURE && outcome.current == GST_STATE_NULL;
    return outcome;
}

bool stopPipeline(GstElement *element, const QString &label, std::chrono::milliseconds limit)
{
    const NullConfirmation outcome = confirmNullState(element, limit);
    if (outcome.confirmed)
        return true;
    if (outcome.setStateFailed) {
        qCWarning(lcPlayout()).noquote() << label + QStringLiteral(" rejected GST_STATE_NULL");
        return false;
    }
    qCWarning(lcPlayout()).noquote()
        << label + QStringLiteral(" did not reach GST_STATE_NULL; current=%1 pending=%2")
                       .arg(QString::fromUtf8(gst_element_state_get_name(outcome.current)),
                            QString::fromUtf8(gst_element_state_get_name(outcome.pending)));
    return false;
}

bool releasePipeline(GstElement *pipeline, const QString &retainWarning,
                     std::chrono::milliseconds limit)
{
    if (!pipeline)
        return true;
    if (confirmNullState(pipeline, limit).confirmed) {
        gst_object_unref(pipeline);
        return true;
    }
    qCWarning(lcPlayout()).noquote() << retainWarning;
    retainPipelineForProcess(pipeline);
    return false;
}

void retainPipelineForProcess(GstElement *pipeline)
{
    if (!pipeline)
        return;
    RetainedObjects &objects = retained();
    std::lock_guard lock(objects.mutex);
    objects.pipelines.push_back(pipeline);
}

void retainForProcess(std::shared_ptr<void> owner)
{
    if (!owner)
        return;
    RetainedObjects &objects = retained();
    std::lock_guard lock(objects.mutex);
    objects.owners.push_back(std::move(owner));
}

std::size_t retainedCount()
{
    RetainedObjects &objects = retained();
    std::lock_guard lock(objects.mutex);
    return objects.pipelines.size() + objects.owners.size();
}

} // namespace tarnix
