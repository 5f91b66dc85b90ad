#pragma once

namespace tarnix {

// Keeps the process's resident memory in step with what it really uses over
// a long show. Picture buffers of a megabyte and more come and go with every
// item's pipeline; glibc would, after the first of them is freed, serve the
// later ones from its per-thread heaps instead of mapping them, and freed
// space in the middle of those heaps is never given back, so resident memory
// creeps up item after item. A fixed mapping threshold sends every large
// buffer to its own mapping, returned to the system when it is freed. Call
// first thing in main, before any thread starts.
void settleAllocatorForLongRuns();

} // namespace tarnix
