#pragma once

#include <gst/gst.h>

#include <QMap>
#include <QString>

#include <chrono>
#include <cstddef>
#include <memory>

// The one rule by which every owner of a GStreamer pipeline lets it go: a
// pipeline is unreferenced only after gst_element_set_state(NULL) succeeded
// and a following state query read NULL within the confirmation limit.
// Otherwise the reference is kept for the rest of the process, because a
// pipeline whose threads may still run must never be freed under them.
//
// Every retention is counted under its owner, a stable word that tells who
// kept it ("deck", "edit", "program-audio", ...): the one its caller names,
// or, for a pipeline whose caller names none, the first word of the
// pipeline's element name ("deck-a-player" is the deck's); anything else is
// "unnamed".
//
// Threads: every function that confirms waits up to the confirmation limit,
// so it belongs on a worker or the shutdown thread, never on the main thread.
// The retention list is process-wide and safe from any thread.
namespace tarnix {

inline constexpr std::chrono::milliseconds kNullConfirmationLimit{2000};

struct NullConfirmation {
    bool confirmed = false;
    bool setStateFailed = false;
    GstStateChangeReturn result = GST_STATE_CHANGE_FAILURE;
    GstState current = GST_STATE_VOID_PENDING;
    GstState pending = GST_STATE_VOID_PENDING;
};

// Sets the element to NULL and reads its state with the given limit. Only a
// reading of NULL counts. A null element counts as confirmed.
NullConfirmation confirmNullState(GstElement *element,
                                  std::chrono::milliseconds limit = kNullConfirmationLimit);

// Synchronous stop at shutdown. Warns "<label> rejected GST_STATE_NULL" or
// "<label> did not reach GST_STATE_NULL; current=<state> pending=<state>".
// The caller keeps its reference either way; true means it may free it.
bool stopPipeline(GstElement *element, const QString &label,
                  std::chrono::milliseconds limit = kNullConfirmationLimit);

// Takes over one reference of the pipeline: confirms NULL and unreferences
// it, or retains it for the process lifetime under `owner` and warns with the
// owner's words. Returns whether the pipeline was freed.
bool releasePipeline(GstElement *pipeline, const QString &retainWarning,
                     std::chrono::milliseconds limit = kNullConfirmationLimit, const QString &owner = {});

// Keeps the reference (taken over from the caller) until the process ends.
void retainPipelineForProcess(GstElement *pipeline, const QString &owner = {});

// Keeps an arbitrary object (for example a record that holds references
// whose shutdown could not be confirmed) alive until the process ends. It
// counts under its owner in retainedCountByOwner(); without one it is a
// companion of a pipeline that is counted already, and counts nowhere.
void retainForProcess(std::shared_ptr<void> object, const QString &owner = {});

// The owner word a retention of this pipeline counts under when its caller
// names none.
QString retentionOwnerOf(GstElement *pipeline);

// Number of pipelines and objects retained so far, for diagnostics and tests.
std::size_t retainedCount();

// The same, by owner, in the owners' alphabetical order.
QMap<QString, qint64> retainedCountByOwner();

} // namespace tarnix
