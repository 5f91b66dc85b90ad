#pragma once

#include <gst/base/gstbasetransform.h>
#include <gst/gst.h>

namespace tarnix::audio_dsp {
class EqProcessor;
}

// Pieces shared by the in-place filters of the program audio path.
namespace tarnix::audio_elements {

inline constexpr const char *kFixedCaps =
    "audio/x-raw,format=F32LE,rate=48000,channels=2,layout=interleaved";

// Adds the always-present "sink" and "src" templates with the fixed caps.
void addFixedPadTemplates(GstElementClass *elementClass);

// Installs band0, band1 and band2 (double dB, -15..15, default 0, changeable
// in PLAYING) as property ids firstId .. firstId + 2.
void installBandProperties(GObjectClass *objectClass, guint firstId, const char *blurb);

// Whether the event ends or restarts a stream, so filter memory must go.
bool eventClearsState(GstEvent *event);

// In-place, gap-aware set-up of a filter.
void initInPlaceFilter(GstBaseTransform *transform);

// The built-in EQ's step for one buffer: in passthrough only a DISCONT
// clears the filter memory; otherwise the buffer is equalised, and a buffer
// that is not whole stereo float frames is an element error.
GstFlowReturn processEqBuffer(GstBaseTransform *base, audio_dsp::EqProcessor &processor, GstBuffer *buffer);

} // namespace tarnix::audio_elements
