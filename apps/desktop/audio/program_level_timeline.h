#pragma once

#include "audio/level_reading.h"

#include <gst/gst.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <mutex>
#include <optional>

namespace tarnix {

// Keeps meter readings in step with what is heard: a `level` element posts
// its reading when it sees the audio, which is ahead of the output by the
// pipeline's latency, so readings wait in a queue until their running time
// has come.
//
// Threads: handleMessage runs on streaming threads (from a bus's
// synchronous handler); everything else on the main thread. One mutex
// guards queues, readings and the watched elements; the metering flags and
// the generation are atomic.
class ProgramLevelTimeline
{
public:
    static constexpr std::size_t kQueueLimit = 2048;

    struct Snapshot {
        LevelReading input;
        LevelReading item;
        LevelReading master;
        LevelReading bgm;
    };

    ProgramLevelTimeline();
    ~ProgramLevelTimeline();
    ProgramLevelTimeline(const ProgramLevelTimeline &) = delete;
    ProgramLevelTimeline &operator=(const ProgramLevelTimeline &) = delete;

    // The program pipeline's master and BGM post-fader meters and the BGM
    // deck's input meter; set once when the program pipeline is built.
    void setProgramElements(GstElement *master, GstElement *bgm, GstElement *bgmInput);
    // The current deck changed: readings of the old deck are dropped, even
    // those parsed but not yet stored. Null elements and metering off at
    // shutdown and when everything stops.
    void reset(GstElement *input, GstElement *item, bool deckMetering);
    void setBgmMetering(bool on);

    // Takes a level message of a watched element; returns whether it was
    // one (the caller drops it from the bus then).
    bool handleMessage(GstMessage *message);

    // Releases every queued reading whose running time has come, the last
    // becoming current, and returns the current readings.
    Snapshot snapshot(std::optional<std::uint64_t> deckRunningTime,
                      std::optional<std::uint64_t> programRunningTime);
    LevelReading bgmInput() const;

private:
    enum Source { Input, Item, Master, Bgm, SourceCount };

    static void release(std::deque<LevelReading> &queue, LevelReading &current,
                        std::optional<std::uint64_t> now);
    void clearLocked(Source source);
    void setElementLocked(GstElement *&slot, GstElement *element);

    mutable std::mutex m_mutex;
    GstElement *m_elements[SourceCount] = {};
    GstElement *m_bgmInputElement = nullptr;
    std::deque<LevelReading> m_queues[SourceCount];
    LevelReading m_current[SourceCount];
    LevelReading m_bgmInput;
    std::atomic<bool> m_deckMetering{false};
    std::atomic<bool> m_bgmMetering{false};
    std::atomic<std::uint64_t> m_generation{0};
};

} // namespace tarnix
