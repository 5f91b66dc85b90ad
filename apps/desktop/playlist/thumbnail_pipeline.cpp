#include "playlist/thumbnail_pipeline.h"

#include "shell/log_categories.h"
#include "shell/low_priority_threads.h"
#include "shell/pipeline_release.h"

#include <algorithm>

namespace tarnix {

namespace {

using Clock = std::chrono::steady_clock;

// Long enough not to spin, short enough that a cancel is seen at once.
constexpr std::chrono::milliseconds kWaitSlice{50};

GstClockTime sliceUntil(Clock::time_point deadline)
{
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
    return GstClockTime(std::clamp(left, std::chrono::milliseconds(0), kWaitSlice).count()) * GST_MSECOND;
}

} // namespace

bool releaseThumbnailPipeline(GstElement *pipeline, std::chrono::milliseconds limit)
{
    if (!pipeline)
        return true;
    const NullConfirmation outcome = confirmNullState(pipeline, limit);
    if (outcome.confirmed) {
        gst_object_unref(pipeline);
        return true;
    }
    qCWarning(lcPlaylist()).noquote() << QString::fromUtf8(outcome.setStateFailed ? kThumbnailRefusedNullText
                                                                                  : kThumbnailUnconfirmedNullText);
    retainPipelineForProcess(pipeline, QStringLiteral("thumbnail"));
    return false;
}

ThumbnailPipeline::ThumbnailPipeline(const QString &description, std::chrono::milliseconds nullConfirmation)
    : m_nullConfirmation(nullConfirmation)
{
    GError *error = nullptr;
    GstElement *pipeline = gst_parse_launch(description.toUtf8().constData(), &error);
    if (error) {
        qCWarning(lcPlaylist()).noquote() << "Thumbnail pipeline could not be built:"
                                          << QString::fromUtf8(error->message);
        g_error_free(error);
        // A pipeline that came with an error was never started; nothing runs in it.
        if (pipeline)
            gst_object_unref(gst_object_ref_sink(pipeline));
        return;
    }
    // The parser hands over a floating reference; this object owns it now.
    if (pipeline)
        m_pipeline = GST_ELEMENT(gst_object_ref_sink(pipeline));
    // Its streaming threads run at the building worker's priority.
    runStreamingThreadsAtNiceness(m_pipeline, thisThreadsNiceness());
}

ThumbnailPipeline::~ThumbnailPipeline()
{
    releaseThumbnailPipeline(m_pipeline, m_nullConfirmation);
}

GstElement *ThumbnailPipeline::element(const char *name) const
{
    return m_pipeline && GST_IS_BIN(m_pipeline) ? gst_bin_get_by_name(GST_BIN(m_pipeline), name) : nullptr;
}

GstObjectReference::~GstObjectReference()
{
    if (object)
        gst_object_unref(object);
}

ThumbnailWait waitForThumbnailState(GstElement *pipeline, std::chrono::milliseconds limit,
                                    const std::atomic<bool> &cancelled)
{
    const Clock::time_point deadline = Clock::now() + limit;
    for (;;) {
        if (cancelled.load())
            return ThumbnailWait::Cancelled;
        const GstStateChangeReturn result =
            gst_element_get_state(pipeline, nullptr, nullptr, sliceUntil(deadline));
        if (result == GST_STATE_CHANGE_FAILURE)
            return ThumbnailWait::Failed;
        if (result == GST_STATE_CHANGE_SUCCESS || result == GST_STATE_CHANGE_NO_PREROLL)
            return ThumbnailWait::Done;
        if (Clock::now() >= deadline)
            return ThumbnailWait::TimedOut;
    }
}

GstSample *pullThumbnailSample(GstAppSink *sink, bool preroll, std::chrono::milliseconds limit,
                               const std::atomic<bool> &cancelled, ThumbnailWait *outcome)
{
    const Clock::time_point deadline = Clock::now() + limit;
    for (;;) {
        if (cancelled.load()) {
            *outcome = ThumbnailWait::Cancelled;
            return nullptr;
        }
        const GstClockTime slice = sliceUntil(deadline);
        GstSample *sample = preroll ? gst_app_sink_try_pull_preroll(sink, slice)
                                    : gst_app_sink_try_pull_sample(sink, slice);
        if (sample) {
            *outcome = ThumbnailWait::Done;
            return sample;
        }
        if (gst_app_sink_is_eos(sink)) {
            *outcome = ThumbnailWait::Failed;
            return nullptr;
        }
        if (Clock::now() >= deadline) {
            *outcome = ThumbnailWait::TimedOut;
            return nullptr;
        }
    }
}

} // namespace tarnix
