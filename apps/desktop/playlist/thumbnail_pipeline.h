#pragma once

#include <gst/app/gstappsink.h>
#include <gst/gst.h>

#include <QString>

#include <atomic>
#include <chrono>

// The short-lived pipelines a thumbnail worker runs. Every wait here is cut
// into short slices that look at the request's cancel flag, so a cancelled
// request ends within a slice. Worker threads only.
namespace tarnix {

inline constexpr auto kThumbnailRefusedNullText =
    "Thumbnail pipeline refused NULL state; retaining it to avoid freeing a live GStreamer backend.";
inline constexpr auto kThumbnailUnconfirmedNullText =
    "Thumbnail pipeline did not confirm NULL state; retaining it to avoid freeing a live GStreamer backend.";

// Lets a thumbnail pipeline go: frees it only once NULL is confirmed within
// the limit; otherwise logs why and keeps it for the rest of the process.
// Returns whether it was freed.
bool releaseThumbnailPipeline(GstElement *pipeline, std::chrono::milliseconds limit);

// Owns one pipeline built from a description and releases it by the rule
// above when it goes. Holds nothing when the description did not parse; any
// parse error counts, even one GStreamer reports beside a pipeline.
class ThumbnailPipeline
{
public:
    ThumbnailPipeline(const QString &description, std::chrono::milliseconds nullConfirmation);
    ~ThumbnailPipeline();
    ThumbnailPipeline(const ThumbnailPipeline &) = delete;
    ThumbnailPipeline &operator=(const ThumbnailPipeline &) = delete;

    GstElement *get() const { return m_pipeline; }
    explicit operator bool() const { return m_pipeline != nullptr; }
    // The named element, with a reference the caller owns, or null.
    GstElement *element(const char *name) const;

private:
    GstElement *m_pipeline = nullptr;
    std::chrono::milliseconds m_nullConfirmation;
};

// Unreferences a GStreamer object when it goes out of scope.
struct GstObjectReference {
    explicit GstObjectReference(gpointer object = nullptr) : object(object) {}
    ~GstObjectReference();
    GstObjectReference(const GstObjectReference &) = delete;
    GstObjectReference &operator=(const GstObjectReference &) = delete;
    gpointer object;
};

enum class ThumbnailWait { Done, Failed, TimedOut, Cancelled };

// Waits until the pipeline's pending state change has finished.
ThumbnailWait waitForThumbnailState(GstElement *pipeline, std::chrono::milliseconds limit,
                                    const std::atomic<bool> &cancelled);

// Pulls the prerolled sample, or the next one while playing. Null with the
// reason in `outcome` when none came (end of stream counts as Failed).
GstSample *pullThumbnailSample(GstAppSink *sink, bool preroll, std::chrono::milliseconds limit,
                               const std::atomic<bool> &cancelled, ThumbnailWait *outcome);

} // namespace tarnix
