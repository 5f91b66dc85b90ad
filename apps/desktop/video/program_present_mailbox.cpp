#include "video/program_present_mailbox.h"

#include <utility>

namespace tarnix {

ProgramPresentMailbox::~ProgramPresentMailbox()
{
    for (Entry &entry : m_entries) {
        if (entry.frame.buffer)
            gst_buffer_unref(entry.frame.buffer);
    }
}

bool ProgramPresentMailbox::publish(GstBuffer *buffer, qint64 pts, quint64 picture)
{
    for (const int wanted : {int(Empty), int(Published)}) {
        for (int step = 0; step < kEntries; ++step) {
            const int index = (m_writeIndex + step) % kEntries;
            Entry &entry = m_entries[index];
            int expected = wanted;
            if (!entry.key.compare_exchange_strong(expected, Writing, std::memory_order_acquire))
                continue;
            // A frame the presenter never took makes room for this one.
            if (GstBuffer *overwritten = std::exchange(entry.frame.buffer, nullptr))
                gst_buffer_unref(overwritten);
            entry.frame.buffer = gst_buffer_ref(buffer);
            entry.frame.sequence = m_sequence.fetch_add(1, std::memory_order_relaxed) + 1;
            entry.frame.pts = pts;
            entry.frame.picture = picture;
            entry.key.store(Published, std::memory_order_release);
            m_writeIndex = (index + 1) % kEntries;
            m_signal.release();
            return true;
        }
    }
    m_misses.fetch_add(1, std::memory_order_relaxed);
    return false;
}

bool ProgramPresentMailbox::take(quint64 lastSequence, Frame *taken)
{
    std::array<bool, kEntries> held{};
    int newest = -1;
    for (int index = 0; index < kEntries; ++index) {
        int expected = Published;
        if (!m_entries[index].key.compare_exchange_strong(expected, Reading, std::memory_order_acquire))
            continue;
        held[index] = true;
        const quint64 sequence = m_entries[index].frame.sequence;
        if (sequence > lastSequence && (newest < 0 || sequence > m_entries[newest].frame.sequence))
            newest = index;
    }
    if (newest >= 0) {
        *taken = m_entries[newest].frame;
        m_entries[newest].frame.buffer = nullptr;
    }
    for (int index = 0; index < kEntries; ++index) {
        if (!held[index])
            continue;
        if (GstBuffer *older = std::exchange(m_entries[index].frame.buffer, nullptr))
            gst_buffer_unref(older);
        m_entries[index].key.store(Empty, std::memory_order_release);
    }
    return newest >= 0;
}

void ProgramPresentMailbox::waitForSignal()
{
    m_signal.acquire();
    while (m_signal.try_acquire()) {
    }
}

void ProgramPresentMailbox::wake()
{
    m_signal.release();
}

} // namespace tarnix
