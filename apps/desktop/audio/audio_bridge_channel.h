#pragma once

#include <gst/gst.h>

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <string>

// The meeting point of one tarnixaudiosink (sender, in a deck or BGM
// pipeline) and one tarnixaudiosrc (receiver, in the program pipeline).
// Channels are found by name in a process-wide table that holds them weakly:
// a channel lives as long as either end holds it.
//
// Threads: the streaming threads of both pipelines and any thread that
// unlocks or aborts an end. Every field below `mutex` is guarded by it. Lock
// order: element object lock, then the channel mutex; messages are posted
// outside both.
namespace tarnix::audio_bridge {

inline constexpr int kSampleRate = 48000;
inline constexpr std::uint64_t kFrameBytes = 8;
inline constexpr std::uint64_t kBytesPerSecond = kSampleRate * kFrameBytes;
// One buffer handed out by the receiver at most: 960 frames, 20 ms.
inline constexpr std::uint64_t kChunkBytes = 7680;
inline constexpr const char *kCaps =
    "audio/x-raw,format=F32LE,rate=48000,channels=2,layout=interleaved";

// Time of a whole number of frames, computed from the frame count so that
// rounding never accumulates across chunks.
inline GstClockTime framesToTime(std::uint64_t frames)
{
    return gst_util_uint64_scale_int(frames, GST_SECOND, kSampleRate);
}

struct Channel {
    Channel();
    ~Channel();
    Channel(const Channel &) = delete;
    Channel &operator=(const Channel &) = delete;

    // Empties the queue and starts a new epoch; the receiver marks its next
    // buffer DISCONT and begins a new segment. Caller holds `mutex`.
    void resetLocked();

    // The receiver element with a new reference, or null. Any thread.
    GstElement *receiverElement();

    std::string name;
    std::mutex mutex;
    std::condition_variable changed;
    std::deque<GstBuffer *> queue;
    std::uint64_t queuedBytes = 0;
    std::uint64_t frontOffset = 0;
    std::uint64_t bufferTime = 200 * GST_MSECOND;
    std::uint64_t sinkLatency = 0;
    const void *sender = nullptr;
    bool receiverActive = false;
    bool discontPending = false;
    std::uint64_t epoch = 0;
    GWeakRef receiver;
};

// Finds the channel of that name or creates it. Expired entries are purged
// on every lookup. Any thread.
std::shared_ptr<Channel> acquireChannel(const std::string &name);

} // namespace tarnix::audio_bridge
