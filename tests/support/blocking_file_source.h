#pragma once

#include <gst/gst.h>

// A test-only source for file:// URIs that never delivers: its create waits
// until the element is unlocked (a change to READY or a flush). Installed, it
// ranks above filesrc, so a playbin given an existing file hangs in preroll
// like a file on a share that stopped answering.
namespace tarnix::test {

// Registers the element once and ranks it above filesrc. After gst_init.
void installBlockingFileSource();
// Ranks it below filesrc again; later pipelines read files normally.
void uninstallBlockingFileSource();

// While set, create ignores unlock: stopping a pipeline that holds one hangs
// in its change of state, like a read on a share that died. Clearing it
// releases every waiting instance.
void setBlockingFileSourceStuck(bool stuck);

// Instances currently blocked in create.
int blockingFileSourceWaiters();

} // namespace tarnix::test
