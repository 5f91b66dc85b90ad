#pragma once

#include "audio/pfl_ring_layout.h"

#include <cstdint>
#include <string>

namespace pfl_helper {

class PulseConnection;

// Why the helper failed, in the ring's result field.
enum FailureCode : std::uint32_t {
    FailureMapping = 0x1,
    FailureFilter = 0x2,
    FailureServer = 0x3,
    FailureDevice = 0x4,
    FailureStream = 0x5,
};

std::uint64_t monotonicNs();

// Plays the ring until the application asks it to stop or goes away: each
// block of the current generation at its presentation time, nothing while
// the application says silence, a heartbeat every pass.
class RingPlayer
{
public:
    RingPlayer(tarnix::pfl::Shared *shared, PulseConnection *pulse, int parentPid);
    // Returns the exit code: 0 when asked to stop or orphaned, 1 when the
    // stream failed (the state field then says so).
    int run();

private:
    bool parentGone() const;
    void beat();
    // One pass over what is queued; false when the stream failed.
    bool playQueued();

    tarnix::pfl::Shared *m_shared;
    PulseConnection *m_pulse;
    int m_parentPid;
};

} // namespace pfl_helper
