#pragma once

#include <gst/gst.h>

#include <QString>

namespace tarnix {

// How a failed file preparation is reported: offline means the file is
// missing or unreadable, which marks the item offline rather than failed.
struct MediaErrorClass {
    bool offline = false;
    QString text;
};

// Whether a GStreamer error says the media could not be found or read.
bool isOfflineError(const GError *error);

// Takes one pending error message from the bus. Its text replaces
// fallbackText; a resource error NOT_FOUND, OPEN_READ or READ is offline.
// Only the thread that owns the bus may call this.
MediaErrorClass classifyPendingError(GstBus *bus, const QString &fallbackText);

} // namespace tarnix
