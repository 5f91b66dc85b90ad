#pragma once

#include <QtGlobal>

#include <array>
#include <atomic>
#include <memory>
#include <semaphore>
#include <vector>

namespace tarnix {

// Eight frames between the compositor and the presenter, newest first.
// Each entry has an atomic key: 0 empty, 1 published and not yet taken, or
// held by one side while it copies. The producer takes an empty entry
// before a waiting one, so the oldest waiting frame is overwritten first;
// the consumer takes the newest published frame and empties every entry it
// held. Neither side ever waits on the other.
//
// Threads: publish() on the compositor's streaming thread only; take(),
// waitForSignal() on the presenter thread only; wake() from any thread.
class ProgramPresentMailbox
{
public:
    static constexpr int kEntries = 8;

    ProgramPresentMailbox(int width, int height);

    int width() const { return m_width; }
    int height() const { return m_height; }

    // Copies the BGRA frame into a free entry and signals the consumer.
    // False is a miss: every entry was held by the consumer.
    bool publish(const quint8 *pixels, int stride, qint64 pts);

    struct Taken {
        quint64 sequence = 0;
        qint64 pts = -1;
    };
    // Copies the newest frame published after lastSequence into the tightly
    // packed buffer (width*height*4 bytes). False when there is none.
    bool take(quint64 lastSequence, quint8 *into, Taken *taken);

    // Blocks until publish() or wake() signalled since the last call.
    void waitForSignal();
    void wake();

    quint64 published() const { return m_sequence.load(std::memory_order_relaxed); }
    quint64 misses() const { return m_misses.load(std::memory_order_relaxed); }

private:
    enum Key : int { Empty = 0, Published = 1, Writing = 2, Reading = 3 };
    struct Entry {
        std::atomic<int> key{Empty};
        quint64 sequence = 0; // written while held
        qint64 pts = -1;
        std::vector<quint8> pixels;
    };

    int m_width;
    int m_height;
    std::array<Entry, kEntries> m_entries;
    int m_writeIndex = 0; // producer only
    std::atomic<quint64> m_sequence{0};
    std::atomic<quint64> m_misses{0};
    std::counting_semaphore<> m_signal{0};
};

} // namespace tarnix
