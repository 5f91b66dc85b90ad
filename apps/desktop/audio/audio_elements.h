#pragma once

#include <gst/gst.h>

#include <QString>

// Registration of the application's own audio elements and the calls other
// subsystems make on them. Elements are registered in-process at rank NONE,
// once each; every function is safe from any thread after gst_init.
namespace tarnix {

// tarnixaudiosink and tarnixaudiosrc, the two ends of the PROGRAM bridge.
bool registerBridgeElements();
bool registerDelayElement();
bool registerEffectsElement();
bool registerEqualizerElement();

// All five. Returns false with a text when GStreamer is not initialised or
// an element type cannot be registered; a pipeline that names the element
// then cannot be built.
bool registerAudioElements(QString *error = nullptr);

// Writes `frames` on the named tarnixaudiodelay of a bin. False on a null or
// non-bin pipeline, frames outside 0..6 or a missing element.
bool setDelayFrames(GstElement *bin, const char *elementName, int frames);

// Empties the delay line of the named tarnixaudiodelay.
bool clearDelay(GstElement *bin, const char *elementName);

// Writes band0..band2 of an equaliser or effects element in one call, each
// value clamped to -15..15 dB (non-finite to 0).
bool setEqBands(GstElement *element, double lowDb, double midDb, double highDb);

// Writes vst-audible of a tarnixaudioeffects.
bool setVstAudible(GstElement *element, bool audible);

// For a tarnixaudiosink: detaches it from its channel so that a chain
// blocked behind it cannot hold up a change of state. Safe on any element
// and on null (nothing happens); returns whether it acted.
bool abortSender(GstElement *element);

} // namespace tarnix
