#include "ring_player.h"

#include "pulse_connection.h"

#include <cerrno>
#include <csignal>
#include <ctime>
#include <unistd.h>

namespace pfl_helper {

namespace pfl = tarnix::pfl;

namespace {

// A block this late is dropped rather than played: the helper catches up
// with the EDIT picture instead of lagging behind it for good.
constexpr std::uint64_t kLateLimitNs = 200'000'000;
constexpr long kPassNs = 4'000'000;

} // namespace

std::uint64_t monotonicNs()
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return std::uint64_t(now.tv_sec) * 1'000'000'000ull + std::uint64_t(now.tv_nsec);
}

RingPlayer::RingPlayer(pfl::Shared *shared, PulseConnection *pulse, int parentPid)
    : m_shared(shared)
    , m_pulse(pulse)
    , m_parentPid(parentPid)
{
}

bool RingPlayer::parentGone() const
{
    return getppid() != m_parentPid || (::kill(m_parentPid, 0) != 0 && errno == ESRCH);
}

void RingPlayer::beat()
{
    pfl::store(m_shared->header.heartbeatNs, monotonicNs());
}

bool RingPlayer::playQueued()
{
    pfl::Header &header = m_shared->header;
    for (;;) {
        const std::uint32_t readIndex = pfl::load(header.readIndex);
        if (readIndex == pfl::load(header.writeIndex))
            return true;
        const pfl::Block &block = m_shared->ring[readIndex & (pfl::kSlots - 1)];
        const bool current = block.generation == pfl::load(header.generation);
        const bool audible = pfl::load(header.audible) == 1;
        const std::uint32_t frames = block.frameCount;
        if (!current || !audible || frames == 0 || frames > pfl::kFramesPerBlock) {
            pfl::store(header.readIndex, readIndex + 1);
            continue;
        }
        const std::uint64_t now = monotonicNs();
        const std::uint64_t heardAt = now + m_pulse->latencyUs() * 1000;
        // Not due yet: written now it would be heard early.
        if (heardAt + 2'000'000 < block.presentationNs)
            return true;
        const std::size_t bytes = std::size_t(frames) * pfl::kChannels * sizeof(float);
        if (heardAt <= block.presentationNs + kLateLimitNs) {
            if (m_pulse->writableBytes() < bytes)
                return true;
            if (!m_pulse->write(block.pcm, bytes))
                return false;
        }
        pfl::store(header.readIndex, readIndex + 1);
    }
}

int RingPlayer::run()
{
    pfl::Header &header = m_shared->header;
    beat();
    pfl::store(header.state, std::uint32_t(pfl::StateReady));
    for (;;) {
        beat();
        if (pfl::load(header.stopRequested) == 1 || parentGone())
            return 0;
        if (m_pulse->streamFailed() || !playQueued()) {
            pfl::store(header.hresult, std::uint32_t(FailureStream));
            pfl::store(header.state, std::uint32_t(pfl::StateFailed));
            return 1;
        }
        timespec pause{0, kPassNs};
        nanosleep(&pause, nullptr);
    }
}

} // namespace pfl_helper
