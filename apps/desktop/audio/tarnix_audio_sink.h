#pragma once

#include <gst/base/gstbasesink.h>
#include <gst/gst.h>

// tarnixaudiosink: the sending end of the PROGRAM bridge. A deck pipeline
// ends in it; it runs against the pipeline clock (sync on) and accepts only
// F32LE, 48 kHz, stereo, interleaved PCM.
//
// Threads: render and preroll run on the streaming thread; unlock,
// unlock_stop and tarnix_audio_sink_abort_sender may come from any thread.
// The flushing flag is atomic because render reads it with no object lock.

G_BEGIN_DECLS

#define TARNIX_TYPE_AUDIO_SINK (tarnix_audio_sink_get_type())
G_DECLARE_FINAL_TYPE(TarnixAudioSink, tarnix_audio_sink, TARNIX, AUDIO_SINK, GstBaseSink)

// Detaches a tarnixaudiosink from its channel and makes every further render
// return FLUSHING, so that a chain blocked behind it cannot hold up a change
// of state. Any other element, or NULL, is left alone. Returns whether the
// element was a tarnixaudiosink.
gboolean tarnix_audio_sink_abort_sender(GstElement *element);

// The channel the sink is attached to while started, or NULL (caller frees).
gchar *tarnix_audio_sink_dup_attached_channel(TarnixAudioSink *sink);

// The debug category "tarnix-audio-bridge" shared by both ends of the bridge.
void tarnix_audio_bridge_debug_init(void);
GST_DEBUG_CATEGORY_EXTERN(tarnix_audio_bridge_debug);

G_END_DECLS
