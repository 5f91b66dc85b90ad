#pragma once

#include <gst/gst.h>

#include <QtGlobal>

namespace tarnix {

// A linear ramp of a `volume` element's gain that the element applies
// sample by sample, from the pipeline's running time now: whatever the
// main thread's timing, the ramp lasts exactly its length in the audio.
// Main thread; the element's streaming thread reads the ramp.
bool scheduleVolumeRamp(GstElement *volume, GstElement *pipeline, double from, double to, qint64 durationMs);

// The audio has passed the end of the scheduled ramp (or none is
// scheduled): a value set now no longer cuts it short.
bool isVolumeRampApplied(GstElement *volume);

// Drops a scheduled ramp, so that the gain set next stands.
void clearVolumeRamp(GstElement *volume);

} // namespace tarnix
