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

// Where in the stream a block belongs. The stream runs at exactly 48 kHz
// from an origin on the monotonic clock: the frame at position p is heard
// at origin + p / 48 kHz. The origin is read from the server's latency at
// every pass while the stream plays, and smoothed; a block is placed at the position of its
// presentation time plus the playout latency, with silence before it or
// its late start cut off. Consecutive blocks that land within 2 ms of each
// other's ends are joined as they are, so that the estimate's small noise
// never reaches the sound as clicks.
class StreamTimeline
{
public:
    // Takes one reading: the monotonic time, the server's latency then, and
    // the frames written so far.
    void observe(std::uint64_t nowNs, std::int64_t latencyNs, std::int64_t framesWritten);
    bool known() const { return m_readings > 0; }
    // The stream position heard at this monotonic time.
    std::int64_t positionAt(std::uint64_t timeNs) const;

    static constexpr std::int64_t kJoinFrames = 96;  // 2 ms

private:
    double m_originNs = 0;
    std::int64_t m_readings = 0;
};

// Plays the ring until the application asks it to stop or goes away: each
// block of the current generation at its presentation time plus the
// playout latency, silence while there is nothing to play, a heartbeat
// every pass.
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
    bool writeSilence(std::int64_t frames);

    tarnix::pfl::Shared *m_shared;
    PulseConnection *m_pulse;
    int m_parentPid;
    StreamTimeline m_timeline;
    std::int64_t m_framesWritten = 0;
};

} // namespace pfl_helper
