#pragma once

#include "audio/pfl_ring_layout.h"

#include <QString>

#include <cstdint>
#include <memory>

namespace tarnix {

// The application's side of the PFL shared memory: it creates the named
// object, maps it, writes the EDIT player's sound into the ring and the
// requests into the header, and removes the name when it goes. The mapping
// outlives any helper process; the helper opens it by name.
//
// While the feed lives it holds a shared lock on the object, so a sweep at
// start can tell names left by a process that died (nobody holds them) from
// those of a running one.
//
// Threads: the block writer runs on one streaming thread at a time; every
// other call may come from any thread. Nothing here blocks.
class EditPflFeed
{
public:
    // A new object "/tarnix-edit-pfl-<uuid>". On failure a feed without a
    // view: every call is harmless and PFL stays off; error says why.
    static std::shared_ptr<EditPflFeed> create(QString *error = nullptr);
    ~EditPflFeed();
    EditPflFeed(const EditPflFeed &) = delete;
    EditPflFeed &operator=(const EditPflFeed &) = delete;

    // Removes the names of PFL objects that no running process holds. File
    // work: call it from a worker.
    static int sweepStaleNames();

    bool hasView() const { return m_shared != nullptr; }
    // The name the helper is given ("/tarnix-edit-pfl-<uuid>").
    QString name() const { return m_name; }

    std::uint32_t generation() const;
    void bumpGeneration();
    // Raises the generation when it changes the field.
    void setSourceActive(bool active);
    bool sourceActive() const;
    void setAudible(bool audible);
    bool audible() const;

    // Before a helper starts: nothing queued counts, the helper opens anew.
    void prepareStart();
    // Asks the helper to leave, silent and with queued sound void.
    void requestStop();

    std::uint32_t helperState() const;
    std::uint32_t helperResult() const;
    std::uint64_t heartbeatNs() const;
    std::uint32_t droppedBlocks() const;
    std::uint32_t writeIndex() const;
    std::uint32_t readIndex() const;

    // Writes one buffer of interleaved stereo 48 kHz frames, due at
    // firstFrameNs, in blocks of at most 480 frames stamped with the
    // generation taken before the buffer. A full ring counts one dropped
    // buffer and gives up its rest. Returns the blocks written.
    int writeBuffer(const float *interleaved, std::uint32_t frames, std::uint64_t firstFrameNs,
                    std::uint32_t generation);

    // The mapping itself, for the tests that play the helper's part.
    pfl::Shared *shared() const { return m_shared; }

private:
    EditPflFeed() = default;

    QString m_name;
    int m_fd = -1;
    pfl::Shared *m_shared = nullptr;
};

// CLOCK_MONOTONIC in nanoseconds: the clock of the presentation times and
// of the heartbeat, and GStreamer's system clock.
std::uint64_t monotonicNowNs();

} // namespace tarnix
