#include "video/program_present_mailbox.h"

#include <cstring>

namespace tarnix {

ProgramPresentMailbox::ProgramPresentMailbox(int width, int height)
    : m_width(width)
    , m_height(height)
{
    for (Entry &entry : m_entries)
        entry.pixels.resize(std::size_t(width) * height * 4);
}

bool ProgramPresentMailbox::publish(const quint8 *pixels, int stride, qint64 pts)
{
    const int rowBytes = m_width * 4;
    for (const int wanted : {int(Empty), int(Published)}) {
        for (int step = 0; step < kEntries; ++step) {
            const int index = (m_writeIndex + step) % kEntries;
            Entry &entry = m_entries[index];
            int expected = wanted;
            if (!entry.key.compare_exchange_strong(expected, Writing, std::memory_order_acquire))
                continue;
            if (stride == rowBytes) {
                std::memcpy(entry.pixels.data(), pixels, entry.pixels.size());
            } else {
                for (int y = 0; y < m_height; ++y)
                    std::memcpy(entry.pixels.data() + std::size_t(y) * rowBytes,
                                pixels + std::size_t(y) * stride, rowBytes);
            }
            entry.sequence = m_sequence.fetch_add(1, std::memory_order_relaxed) + 1;
            entry.pts = pts;
            entry.key.store(Published, std::memory_order_release);
            m_writeIndex = (index + 1) % kEntries;
            m_signal.release();
            return true;
        }
    }
    m_misses.fetch_add(1, std::memory_order_relaxed);
    return false;
}

bool ProgramPresentMailbox::take(quint64 lastSequence, quint8 *into, Taken *taken)
{
    std::array<bool, kEntries> held{};
    int newest = -1;
    for (int index = 0; index < kEntries; ++index) {
        int expected = Published;
        if (!m_entries[index].key.compare_exchange_strong(expected, Reading, std::memory_order_acquire))
            continue;
        held[index] = true;
        const quint64 sequence = m_entries[index].sequence;
        if (sequence > lastSequence && (newest < 0 || sequence > m_entries[newest].sequence))
            newest = index;
    }
    if (newest >= 0) {
        std::memcpy(into, m_entries[newest].pixels.data(), m_entries[newest].pixels.size());
        if (taken) {
            taken->sequence = m_entries[newest].sequence;
            taken->pts = m_entries[newest].pts;
        }
    }
    for (int index = 0; index < kEntries; ++index) {
        if (held[index])
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
