#include "shell/allocator_settings.h"

#include <malloc.h>

namespace tarnix {

namespace {
// Well below one SD picture (506 KiB at 720x480 in I420), above the small objects the
// interface and the playlist allocate all the time.
constexpr int kMappingThresholdBytes = 256 * 1024;
} // namespace

void settleAllocatorForLongRuns()
{
    // Setting the threshold also turns off glibc's moving of it.
    mallopt(M_MMAP_THRESHOLD, kMappingThresholdBytes);
}

} // namespace tarnix
