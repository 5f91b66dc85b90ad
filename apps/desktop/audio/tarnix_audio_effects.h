#pragma once

#include <gst/base/gstbasetransform.h>
#include <gst/gst.h>

// tarnixaudioeffects: the application's effects stage. With no plug-in host
// in use it is the built-in three-band EQ, exactly as tarnixaudioequalizer;
// with one it routes the stream to the plug-in of its `slot`. It refuses to
// start without an explicit slot.

G_BEGIN_DECLS

#define TARNIX_TYPE_AUDIO_EFFECTS (tarnix_audio_effects_get_type())
G_DECLARE_FINAL_TYPE(TarnixAudioEffects, tarnix_audio_effects, TARNIX, AUDIO_EFFECTS,
                     GstBaseTransform)

#define TARNIX_TYPE_AUDIO_EFFECTS_SLOT (tarnix_audio_effects_slot_get_type())
GType tarnix_audio_effects_slot_get_type(void);

G_END_DECLS
