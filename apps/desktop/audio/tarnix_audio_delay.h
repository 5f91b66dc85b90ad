#pragma once

#include <gst/base/gstbasetransform.h>
#include <gst/gst.h>

// tarnixaudiodelay: delays stereo PCM by 0 to 6 frames of 30 fps video
// (1600 sample frames each). `frames` may change in PLAYING from any
// thread; a change empties the delay line, which is heard as a short mute.

G_BEGIN_DECLS

#define TARNIX_TYPE_AUDIO_DELAY (tarnix_audio_delay_get_type())
G_DECLARE_FINAL_TYPE(TarnixAudioDelay, tarnix_audio_delay, TARNIX, AUDIO_DELAY, GstBaseTransform)

// Empties the delay line before the next buffer. Any thread.
void tarnix_audio_delay_clear(TarnixAudioDelay *delay);

G_END_DECLS
