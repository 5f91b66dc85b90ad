#include "shell/pipeline_release.h"

#include "shell/log_categories.h"

#include <mutex>
#include <vector>

namespace tarnix {
namespace {

struct RetainedObjects {
    std::mutex mutex;
    std::vector<GstElement *> pipelines;
    std::vector<std::shared_ptr<void>> objects;
    QMap<QString, qint64> countByOwner;
};

// Deliberately never destroyed: static destructors at exit would otherwise
// unreference exactly the pipelines that could not be stopped.
RetainedObjects &retained()
{
    static auto *objects = new RetainedObjects;
    return *objects;
}

QString unnamedOwner()
{
    return QStringLiteral("unnamed");
}

void countRetention(RetainedObjects &objects, const QString &owner)
{
    ++objects.countByOwner[owner.isEmpty() ? unnamedOwner() : owner];
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
                     std::chrono::milliseconds limit, const QString &owner)
{
    if (!pipeline)
        return true;
    if (confirmNullState(pipeline, limit).confirmed) {
        gst_object_unref(pipeline);
        return true;
    }
    qCWarning(lcPlayout()).noquote() << retainWarning;
    retainPipelineForProcess(pipeline, owner);
    return false;
}

QString retentionOwnerOf(GstElement *pipeline)
{
    if (!pipeline)
        return unnamedOwner();
    gchar *name = gst_object_get_name(GST_OBJECT(pipeline));
    const QString text = QString::fromUtf8(name ? name : "");
    g_free(name);
    // GStreamer's own names ("pipeline3") have no hyphen and say nothing of
    // their owner.
    const qsizetype hyphen = text.indexOf(QLatin1Char('-'));
    return hyphen > 0 ? text.left(hyphen) : unnamedOwner();
}

void retainPipelineForProcess(GstElement *pipeline, const QString &owner)
{
    if (!pipeline)
        return;
    const QString key = owner.isEmpty() ? retentionOwnerOf(pipeline) : owner;
    RetainedObjects &objects = retained();
    std::lock_guard lock(objects.mutex);
    objects.pipelines.push_back(pipeline);
    countRetention(objects, key);
}

void retainForProcess(std::shared_ptr<void> object, const QString &owner)
{
    if (!object)
        return;
    RetainedObjects &objects = retained();
    std::lock_guard lock(objects.mutex);
    objects.objects.push_back(std::move(object));
    // Without an owner it is kept beside a pipeline that is counted.
    if (!owner.isEmpty())
        countRetention(objects, owner);
}

std::size_t retainedCount()
{
    RetainedObjects &objects = retained();
    std::lock_guard lock(objects.mutex);
    return objects.pipelines.size() + objects.objects.size();
}

QMap<QString, qint64> retainedCountByOwner()
{
    RetainedObjects &objects = retained();
    std::lock_guard lock(objects.mutex);
    return objects.countByOwner;
}

} // namespace tarnix
