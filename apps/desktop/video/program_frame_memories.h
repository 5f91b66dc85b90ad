#pragma once

#include <gst/gst.h>

#include <vector>

namespace tarnix {

// The memory the program frames are composed into: frame-sized blocks,
// each reused as soon as no buffer refers to it any more. A frame travels
// by reference (the clock branch, the monitor branch, the presenter's
// mailbox each hold a buffer on the same block), so a block may be written
// only while this store holds the one reference to it.
//
// Threads: one thread at a time (the compositor's streaming thread); the
// references that others drop on their threads are only counted here.
class ProgramFrameMemories
{
public:
    // At most `limit` blocks of `size` bytes; they are made when needed.
    ProgramFrameMemories(gsize size, int limit);
    ~ProgramFrameMemories();

    ProgramFrameMemories(const ProgramFrameMemories &) = delete;
    ProgramFrameMemories &operator=(const ProgramFrameMemories &) = delete;

    // Makes blocks up to the count now and touches their pages, so the
    // thread that composes does not meet the allocation on its first frames.
    void reserve(int count);

    // A block nobody else refers to, still owned by the store; null when
    // every block is in use and the limit is reached.
    GstMemory *acquireFree();

    // A new buffer on the block (the buffer holds its own reference).
    static GstBuffer *wrap(GstMemory *block);

    int blocks() const { return int(m_blocks.size()); }

private:
    GstMemory *addBlock();

    gsize m_size;
    int m_limit;
    std::vector<GstMemory *> m_blocks;
    std::size_t m_next = 0;
};

} // namespace tarnix
