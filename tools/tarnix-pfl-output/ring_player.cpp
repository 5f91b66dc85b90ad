#include "ring_player.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <csignal>
#include <cstdlib>
#include <ctime>
#include <utility>

#include <unistd.h>

namespace pfl_helper {

namespace pfl = tarnix::pfl;

namespace {

constexpr long kPassNs = 4'000'000;
// What is written runs this far ahead of what is heard: a few passes, and
// the server's own share on top. A block is written once it is due within
// it; silence keeps the stream this full when nothing is due.
constexpr std::uint64_t kWriteAheadNs = 40'000'000;
constexpr std::size_t kFrameBytes = pfl::kChannels * sizeof(float);
// The origin follows the server's readings slowly: a reading's jitter is
// smoothed away, a device clock's drift is followed within a second.
constexpr double kOriginSmoothing = 1.0 / 64.0;

} // namespace

void StreamTimeline::observe(std::uint64_t nowNs, std::int64_t latencyNs, std::int64_t framesWritten)
{
    const double origin = double(nowNs) + double(latencyNs) - double(framesWritten) * 1e9 / pfl::kSampleRate;
    // The first readings are averaged evenly, so that the estimate settles
    // within a few passes of the start.
    ++m_readings;
    m_originNs += (origin - m_originNs) * std::max(kOriginSmoothing, 1.0 / double(m_readings));
}

std::int64_t StreamTimeline::positionAt(std::uint64_t timeNs) const
{
    return std::llround((double(timeNs) - m_originNs) * pfl::kSampleRate / 1e9);
}

std::uint64_t monotonicNs()
{
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return std::uint64_t(now.tv_sec) * 1'000'000'000ull + std::uint64_t(now.tv_nsec);
}

RingPlayer::RingPlayer(pfl::Shared *shared, SoundStream *stream, int parentPid, Clock clock)
    : m_shared(shared)
    , m_stream(stream)
    , m_parentPid(parentPid)
    , m_clock(std::move(clock))
{
}

bool RingPlayer::parentGone() const
{
    return getppid() != m_parentPid || (::kill(m_parentPid, 0) != 0 && errno == ESRCH);
}

void RingPlayer::beat()
{
    pfl::store(m_shared->header.heartbeatNs, m_clock());
}

bool RingPlayer::writeSilence(std::int64_t frames)
{
    if (frames <= 0)
        return true;
    if (!m_stream->writeSilence(std::size_t(frames) * kFrameBytes))
        return false;
    m_framesWritten += frames;
    return true;
}

bool RingPlayer::playQueued()
{
    pfl::Header &header = m_shared->header;
    std::int64_t latency = 0;
    const std::uint64_t now = m_clock();
    if (m_stream->latencyNs(&latency)) {
        // Ready once sound passes to the device, not when the stream is
        // merely open: until then the operator would see PFL on and hear
        // nothing.
        if (!m_timeline.known())
            pfl::store(header.state, std::uint32_t(pfl::StateReady));
        m_timeline.observe(now, latency, m_framesWritten);
    }
    if (!m_timeline.known()) {
        // The stream starts once it has sound to play and tells its timing
        // once it plays: silence until then. Blocks whose time has passed
        // could not be heard anywhere, and leave room in the ring.
        for (std::uint32_t readIndex = pfl::load(header.readIndex); readIndex != pfl::load(header.writeIndex);
             ++readIndex) {
            if (m_shared->ring[readIndex & (pfl::kSlots - 1)].presentationNs + pfl::kPlayoutLatencyNs > now)
                break;
            pfl::store(header.readIndex, readIndex + 1);
        }
        return writeSilence(std::int64_t(m_stream->writableBytes() / kFrameBytes));
    }
    const std::int64_t horizon = m_timeline.positionAt(now + kWriteAheadNs);
    for (;;) {
        const std::uint32_t readIndex = pfl::load(header.readIndex);
        if (readIndex == pfl::load(header.writeIndex))
            break;
        const pfl::Block &block = m_shared->ring[readIndex & (pfl::kSlots - 1)];
        const bool current = block.generation == pfl::load(header.generation);
        const bool audible = pfl::load(header.audible) == 1;
        const std::int64_t frames = block.frameCount;
        if (!current || !audible || frames == 0 || frames > pfl::kFramesPerBlock) {
            pfl::store(header.readIndex, readIndex + 1);
            continue;
        }
        std::int64_t position = m_timeline.positionAt(block.presentationNs + pfl::kPlayoutLatencyNs);
        if (position > horizon)
            break;  // not due yet
        // Sound that follows sound stays whole; after silence a block goes
        // exactly where its time says.
        if (m_framesWritten == m_blockEnd && std::abs(position - m_framesWritten) <= StreamTimeline::kJoinFrames)
            position = m_framesWritten;
        // What is already behind the stream's end is too late to be heard
        // in its place.
        const std::int64_t late = std::max<std::int64_t>(0, m_framesWritten - position);
        if (late >= frames) {
            pfl::store(header.readIndex, readIndex + 1);
            continue;
        }
        const std::int64_t gap = std::max<std::int64_t>(0, position - m_framesWritten);
        const std::size_t bytes = std::size_t(frames - late) * kFrameBytes;
        if (m_stream->writableBytes() < std::size_t(gap) * kFrameBytes + bytes)
            return true;  // room comes with the next pass
        if (!writeSilence(gap) || !m_stream->write(block.pcm + late * pfl::kChannels, bytes))
            return false;
        m_framesWritten += frames - late;
        m_blockEnd = m_framesWritten;
        pfl::store(header.readIndex, readIndex + 1);
    }
    // Nothing due: the stream stays full with silence, so that it never
    // runs dry and the next block's place is where its time says.
    const std::int64_t room = std::int64_t(m_stream->writableBytes() / kFrameBytes);
    return writeSilence(std::min(horizon - m_framesWritten, room));
}

int RingPlayer::run()
{
    pfl::Header &header = m_shared->header;
    beat();
    for (;;) {
        beat();
        if (pfl::load(header.stopRequested) == 1 || parentGone())
            return 0;
        if (m_stream->streamFailed() || !playQueued()) {
            pfl::store(header.hresult, std::uint32_t(FailureStream));
            pfl::store(header.state, std::uint32_t(pfl::StateFailed));
            return 1;
        }
        timespec pause{0, kPassNs};
        nanosleep(&pause, nullptr);
    }
}

} // namespace pfl_helper
