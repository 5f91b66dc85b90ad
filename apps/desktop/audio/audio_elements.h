#pragma once

#include <gst/gst.h>

#include <QString>

namespace tarnix {

// Registers the application's own audio elements in-process at rank NONE
// (tarnixaudiosink today). Idempotent and safe from any thread after
// gst_init. Returns false with a text when GStreamer is not initialised or
// an element type cannot be registered; a pipeline that names the element
// then cannot be built.
bool registerAudioElements(QString *error = nullptr);

// For a tarnixaudiosink: detaches it from its channel so that a chain
// blocked behind it cannot hold up a change of state. Safe on any element
// and on null (nothing happens); returns whether it acted. Any thread.
bool abortSender(GstElement *element);

} // namespace tarnix
