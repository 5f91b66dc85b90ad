#pragma once

#include <gst/base/gstpushsrc.h>
#include <gst/gst.h>

// tarnixaudiosrc: the receiving end of the PROGRAM bridge, in the program
// audio pipeline. A live source that hands on the PCM its channel's sender
// queued, retimed to this pipeline's running time; it never makes silence of
// its own. One receiver per channel.
//
// Threads: create runs on the streaming thread; unlock and unlock_stop come
// from the thread changing the state. The flushing flag is atomic because
// create reads it with no object lock.

G_BEGIN_DECLS

#define TARNIX_TYPE_AUDIO_SOURCE (tarnix_audio_source_get_type())
G_DECLARE_FINAL_TYPE(TarnixAudioSource, tarnix_audio_source, TARNIX, AUDIO_SOURCE, GstPushSrc)

G_END_DECLS
