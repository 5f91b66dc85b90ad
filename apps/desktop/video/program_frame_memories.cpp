#include "video/program_frame_memories.h"

#include <cstring>

namespace tarnix {

ProgramFrameMemories::ProgramFrameMemories(gsize size, int limit)
    : m_size(size)
    , m_limit(limit)
{
}

ProgramFrameMemories::~ProgramFrameMemories()
{
    // Blocks still referred to elsewhere live on with those references.
    for (GstMemory *block : m_blocks)
        gst_memory_unref(block);
}

GstMemory *ProgramFrameMemories::addBlock()
{
    if (int(m_blocks.size()) >= m_limit)
        return nullptr;
    GstAllocationParams params;
    gst_allocation_params_init(&params);
    params.align = 63; // whole cache lines for the row loops
    GstMemory *block = gst_allocator_alloc(nullptr, m_size, &params);
    if (block)
        m_blocks.push_back(block);
    return block;
}

void ProgramFrameMemories::reserve(int count)
{
    while (int(m_blocks.size()) < count) {
        GstMemory *block = addBlock();
        if (!block)
            return;
        GstMapInfo map;
        if (gst_memory_map(block, &map, GST_MAP_WRITE)) {
            std::memset(map.data, 0, map.size);
            gst_memory_unmap(block, &map);
        }
    }
}

GstMemory *ProgramFrameMemories::acquireFree()
{
    // Round robin, so a block just handed out is the last one looked at.
    for (std::size_t step = 0; step < m_blocks.size(); ++step) {
        const std::size_t index = (m_next + step) % m_blocks.size();
        GstMemory *block = m_blocks[index];
        // The count falls to one only after the last other holder has
        // finished with the block (unreferencing is a full barrier).
        if (g_atomic_int_get(&GST_MINI_OBJECT_CAST(block)->refcount) == 1) {
            m_next = index + 1;
            return block;
        }
    }
    GstMemory *block = addBlock();
    if (block)
        m_next = 0;
    return block;
}

GstBuffer *ProgramFrameMemories::wrap(GstMemory *block)
{
    GstBuffer *buffer = gst_buffer_new();
    gst_buffer_append_memory(buffer, gst_memory_ref(block));
    return buffer;
}

} // namespace tarnix
