#pragma once

#include <gst/gst.h>
#include <gst/pbutils/pbutils.h>

// Background media work (analysis, thumbnails) must leave the cores to the
// program output. Linux gives each thread its own niceness, but GStreamer's
// streaming threads come from GLib's shared thread pool: they are reused by
// every pipeline of the process and are created with the scheduling of the
// thread that first made a pool, so a worker's own niceness never reaches
// the threads that do its decoding. A pipeline that should run behind the
// program therefore gets streaming threads of its own, each lowered to its
// owner's niceness when it starts and ended with its task, so that no
// lowered thread ever serves an ON AIR pipeline.
namespace tarnix {

// GLib creates every thread of its shared pool, GStreamer's streaming
// threads among them, with the scheduling of the thread that first made
// such a pool, for the rest of the process. This makes that happen now, on
// a thread at the ordinary priority, before any worker lowers itself: run
// once on the main thread after gst_init. Any thread, idempotent.
void pinStreamingThreadPriority();

// Lowers the calling thread's priority by the niceness (0 or less: no
// change). Linux only lets an ordinary user lower it, never raise it back.
// Pins the streaming threads' priority first, should nothing have yet.
void lowerThisThreadsPriority(int nice);

// The calling thread's niceness.
int thisThreadsNiceness();

// From now on every streaming thread the pipeline starts is a thread of its
// own at this niceness; 0 or less leaves the pipeline as it is. Installs a
// bus sync handler, so it is for pipelines whose bus has none.
void runStreamingThreadsAtNiceness(GstElement *pipeline, int nice);

// The same for a discoverer, whose pipeline is only reachable through the
// sources it creates.
void runDiscovererThreadsAtNiceness(GstDiscoverer *discoverer, int nice);

} // namespace tarnix
