#pragma once

#include <gst/base/gstbasetransform.h>
#include <gst/gst.h>

// tarnixaudioequalizer: the three-band EQ as an in-place, gap-aware filter.
// band0..band2 may change in PLAYING from any thread; the streaming thread
// picks them up at its next buffer.

G_BEGIN_DECLS

#define TARNIX_TYPE_AUDIO_EQUALIZER (tarnix_audio_equalizer_get_type())
G_DECLARE_FINAL_TYPE(TarnixAudioEqualizer, tarnix_audio_equalizer, TARNIX, AUDIO_EQUALIZER,
                     GstBaseTransform)

G_END_DECLS
