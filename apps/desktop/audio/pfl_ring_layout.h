#pragma once

// The shared memory between the application and the PFL helper process:
// a fixed header and a ring of 64 sound blocks, little-endian, in a POSIX
// shared memory object. Both sides include this header; it holds no Qt and
// no GStreamer so that the helper stays small.
//
// One writer (an EDIT streaming thread) and one reader (the helper): a block
// is complete before writeIndex is stored, and the index is the only hand-
// over. Every header field is read and written through std::atomic_ref,
// sequentially consistent.

#include <atomic>
#include <bit>
#include <cstddef>
#include <cstdint>

namespace tarnix::pfl {

inline constexpr std::uint32_t kVersion = 1;
inline constexpr std::uint32_t kSlots = 64;
inline constexpr std::uint32_t kFramesPerBlock = 480;
inline constexpr std::uint32_t kChannels = 2;
inline constexpr std::uint32_t kSampleRate = 48000;
// Larger buffers than this are not sound the EDIT player makes; skipped.
inline constexpr std::size_t kLargestBufferBytes = 384000;
// The helper plays a block this long after its presentation time, the same
// for every block. A block reaches the ring only a buffer's length (about
// 20 ms) before it is due, and the sound server needs its own few tens of
// milliseconds; a fixed delay makes room for both and keeps PFL a constant
// distance behind the EDIT picture.
inline constexpr std::uint64_t kPlayoutLatencyNs = 50'000'000;

// The helper's state field.
enum HelperState : std::uint32_t { StateOpening = 1, StateReady = 2, StateFailed = 3 };

// Names are "/tarnix-edit-pfl-<uuid>"; the sweep at start looks for this.
inline constexpr char kNamePrefix[] = "tarnix-edit-pfl-";

struct Header {
    std::uint32_t version;
    std::uint8_t padVersion[60];
    std::uint32_t writeIndex;     // blocks written; the slot is writeIndex & 63
    std::uint8_t padWrite[60];
    std::uint32_t readIndex;      // blocks consumed by the helper
    std::uint8_t padRead[60];
    std::uint32_t generation;     // raised whenever queued sound is void
    std::uint32_t audible;        // 1: the helper plays; 0: silence
    std::uint32_t sourceActive;   // 1: the EDIT player is feeding
    std::uint32_t stopRequested;  // 1: the helper leaves
    std::uint32_t state;          // HelperState
    std::uint32_t hresult;        // the helper's failure code, with StateFailed
    std::uint32_t droppedBlocks;  // buffers cut short by a full ring
    std::uint32_t padHeartbeat;
    std::uint64_t heartbeatNs;    // CLOCK_MONOTONIC of the helper's last sign of life
};

struct Block {
    std::uint32_t generation;     // the header's generation when the buffer was taken
    std::uint32_t frameCount;     // 1 to 480
    std::uint64_t presentationNs; // CLOCK_MONOTONIC time of the first frame
    float pcm[kFramesPerBlock * kChannels];  // interleaved stereo, 48 kHz
};

struct Shared {
    Header header;
    Block ring[kSlots];
};

inline constexpr std::size_t kMappingBytes = 247040;  // the ring's end rounded up to 64

static_assert(std::endian::native == std::endian::little, "the layout is little-endian");
static_assert(offsetof(Header, version) == 0);
static_assert(offsetof(Header, writeIndex) == 64);
static_assert(offsetof(Header, readIndex) == 128);
static_assert(offsetof(Header, generation) == 192);
static_assert(offsetof(Header, audible) == 196);
static_assert(offsetof(Header, sourceActive) == 200);
static_assert(offsetof(Header, stopRequested) == 204);
static_assert(offsetof(Header, state) == 208);
static_assert(offsetof(Header, hresult) == 212);
static_assert(offsetof(Header, droppedBlocks) == 216);
static_assert(offsetof(Header, heartbeatNs) == 224);
static_assert(sizeof(Header) == 232);
static_assert(offsetof(Block, frameCount) == 4);
static_assert(offsetof(Block, presentationNs) == 8);
static_assert(offsetof(Block, pcm) == 16);
static_assert(sizeof(Block) == 3856);
static_assert(offsetof(Shared, ring) == 232);
static_assert(sizeof(Shared) == 232 + 64 * 3856 && sizeof(Shared) == 247016);
static_assert(kMappingBytes >= sizeof(Shared) && kMappingBytes % 64 == 0 && kMappingBytes - sizeof(Shared) < 64);
static_assert(std::atomic_ref<std::uint64_t>::required_alignment <= alignof(std::uint64_t));

template <typename T>
std::atomic_ref<T> field(T &value)
{
    return std::atomic_ref<T>(value);
}

template <typename T>
T load(T &value)
{
    return std::atomic_ref<T>(value).load();
}

template <typename T>
void store(T &value, T newValue)
{
    std::atomic_ref<T>(value).store(newValue);
}

} // namespace tarnix::pfl
