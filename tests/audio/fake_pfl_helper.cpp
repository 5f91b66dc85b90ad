// Stands in for the PFL helper in tests, behaving as the device id says:
//   good    ready, beats, leaves when asked
//   hang    ready, beats once, then stays alive without a sign of life
//   deaf    ready, beats, never reads the stop request
// Prints "device=<id>" once the ring is mapped.

#include "audio/pfl_ring_layout.h"

#include <cstdio>
#include <ctime>
#include <string>

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

namespace pfl = tarnix::pfl;

namespace {

std::uint64_t nowNs()
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return std::uint64_t(now.tv_sec) * 1'000'000'000ull + std::uint64_t(now.tv_nsec);
}

void pause(long ms)
{
    timespec slice{ms / 1000, (ms % 1000) * 1'000'000};
    nanosleep(&slice, nullptr);
}

} // namespace

int main(int argc, char **argv)
{
    if (argc != 4)
        return 2;
    const int fd = shm_open(argv[1], O_RDWR, 0);
    if (fd < 0)
        return 3;
    auto *shared = static_cast<pfl::Shared *>(
        mmap(nullptr, pfl::kMappingBytes, PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0));
    if (shared == MAP_FAILED)
        return 3;
    const std::string device = argv[2];
    std::printf("device=%s\n", device.c_str());
    std::fflush(stdout);
    pfl::store(shared->header.heartbeatNs, nowNs());
    pfl::store(shared->header.state, std::uint32_t(pfl::StateReady));
    for (;;) {
        if (device != "hang")
            pfl::store(shared->header.heartbeatNs, nowNs());
        if (device != "deaf" && pfl::load(shared->header.stopRequested) == 1)
            return 0;
        pfl::store(shared->header.readIndex, pfl::load(shared->header.writeIndex));
        pause(20);
    }
}
