#include "shell/allocator_settings.h"

#include <malloc.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <thread>

namespace tarnix {

namespace {
// Well below one SD picture (506 KiB at 720x480 in I420), above the small objects the
// interface and the playlist allocate all the time.
constexpr int kMappingThresholdBytes = 256 * 1024;

// Below the interface and far below the streaming threads: a trim holds
// each heap's lock while it walks that heap, a few milliseconds at most.
constexpr int kTrimNiceness = 10;
} // namespace

void settleAllocatorForLongRuns(std::chrono::milliseconds trimInterval)
{
    // Setting the threshold also turns off glibc's moving of it.
    mallopt(M_MMAP_THRESHOLD, kMappingThresholdBytes);
    // One heap per core rather than eight: threads that run at the same time
    // still rarely meet on a heap (and small blocks come from per-thread
    // caches without the heap's lock), while the free space left between
    // live blocks is spread over far fewer heaps.
    mallopt(M_ARENA_MAX, int(std::max(2u, std::thread::hardware_concurrency())));
    if (trimInterval.count() <= 0)
        return;
    // Lives as long as the process; it touches nothing but the allocator.
    std::thread([trimInterval] {
        (void)setpriority(PRIO_PROCESS, id_t(gettid()), kTrimNiceness);
        for (;;) {
            std::this_thread::sleep_for(trimInterval);
            malloc_trim(0);
        }
    }).detach();
}

} // namespace tarnix
