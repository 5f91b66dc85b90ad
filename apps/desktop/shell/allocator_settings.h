#pragma once

#include <chrono>

namespace tarnix {

// Keeps the process's resident memory in step with what it really uses over
// a long show.
//
// Picture buffers of a megabyte and more come and go with every item's
// pipeline; glibc would, after the first of them is freed, serve the later
// ones from its per-thread heaps instead of mapping them. A fixed mapping
// threshold sends every large buffer to its own mapping, returned to the
// system when it is freed.
//
// The smaller blocks of every pipeline (caps, events, element state) are
// freed all over glibc's heaps too, and a heap gives back only what is free
// at its top: over a thousand items the free space held inside them grew by
// some megabytes a hundred items while the memory in use stayed flat. Fewer
// heaps (one per core, not eight) leave far less of it, and a background
// thread gives the free pages of every heap back at each trim interval.
//
// Call first thing in main, before any other thread starts.
inline constexpr std::chrono::milliseconds kHeapTrimInterval{30000};
void settleAllocatorForLongRuns(std::chrono::milliseconds trimInterval = kHeapTrimInterval);

} // namespace tarnix
