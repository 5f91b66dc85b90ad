#pragma once

#include <gst/gst.h>

#include <QString>

namespace tarnix {

// How a failed file preparation is reported: offline means the file is
// missing or unreadable, which marks the item offline rather than failed.
struct MediaErrorClass {
    bool offline = false;
    QString text;
    // The flow stopped because no stream of the file had anywhere to go: a
    // player that takes only some kinds of stream found none of them.
    bool notLinked = false;
};

// Whether a GStreamer error says the media could not be found or read.
bool isOfflineError(const GError *error);

// Reads an error message: its text (fallbackText when it has none), whether
// it is offline and whether it is notLinked, as below.
MediaErrorClass classifyError(GstMessage *message, const QString &fallbackText);

// Takes one pending error message from the bus. Its text replaces
// fallbackText; a resource error NOT_FOUND, OPEN_READ or READ is offline.
// A stream error whose details name the not-linked flow return is notLinked.
// Only the thread that owns the bus may call this.
MediaErrorClass classifyPendingError(GstBus *bus, const QString &fallbackText);

} // namespace tarnix
