#pragma once

#include "audio/pfl_ring_layout.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

namespace pfl_helper {

// Why the helper failed, in the ring's result field.
enum FailureCode : std::uint32_t {
    FailureMapping = 0x1,
    FailureFilter = 0x2,
    FailureServer = 0x3,
    FailureDevice = 0x4,
    FailureStream = 0x5,
};

std::uint64_t monotonicNs();

// The playback stream the player writes to: 48 kHz stereo float, appended
// at its end.
class SoundStream
{
public:
    virtual ~SoundStream() = default;
    virtual bool streamFailed() = 0;
    // Bytes the stream takes now.
    virtual std::size_t writableBytes() = 0;
    virtual bool write(const float *samples, std::size_t bytes) = 0;
    virtual bool writeSilence(std::size_t bytes) = 0;
    // How long until the end of what has been written is heard; negative
    // once the stream has run past it. False while the stream cannot say.
    virtual bool latencyNs(std::int64_t *latency) = 0;
};

// Where in the stream a block belongs. The stream runs at exactly 48 kHz
// from an origin on the monotonic clock: the frame at position p is heard
// at origin + p / 48 kHz. The origin is read from the server's latency at
// every pass while the stream plays, and smoothed; a block is placed at the position of its
// presentation time plus the playout latency, with silence before it or
// its late start cut off. A block that lands within 2 ms of the end of the
// block before it is joined to it as it is, so that the estimate's small
// noise never reaches the sound as clicks.
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

// Plays the ring until the application asks it to stop or goes away, and
// says it is ready once the stream plays: each
// block of the current generation at its presentation time plus the
// playout latency, silence while there is nothing to play, a heartbeat
// every pass.
class RingPlayer
{
public:
    using Clock = std::function<std::uint64_t()>;

    RingPlayer(tarnix::pfl::Shared *shared, SoundStream *stream, int parentPid, Clock clock = monotonicNs);
    // Returns the exit code: 0 when asked to stop or orphaned, 1 when the
    // stream failed (the state field then says so).
    int run();
    // One pass over what is queued; false when the stream failed.
    bool playQueued();

private:
    bool parentGone() const;
    void beat();
    bool writeSilence(std::int64_t frames);

    tarnix::pfl::Shared *m_shared;
    SoundStream *m_stream;
    int m_parentPid;
    Clock m_clock;
    StreamTimeline m_timeline;
    std::int64_t m_framesWritten = 0;
    std::int64_t m_blockEnd = -1;  // where the last block written ends
};

} // namespace pfl_helper
