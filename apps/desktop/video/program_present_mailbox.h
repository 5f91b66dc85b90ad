#pragma once

#include <gst/gst.h>

#include <QtGlobal>

#include <array>
#include <atomic>
#include <semaphore>

namespace tarnix {

// Eight frames between the compositor and the presenter, newest first.
// An entry holds a reference on a frame buffer, not a copy: publishing and
// taking move a pointer. Each entry has an atomic key: 0 empty, 1 published
// and not yet taken, or held by one side for that move. The producer takes
// an empty entry before a waiting one, so the oldest waiting frame is
// overwritten first; the consumer takes the newest published frame and
// empties every entry it held. Neither side ever waits on the other.
//
// Threads: publish() on the compositor's streaming thread only; take(),
// waitForSignal() on the presenter thread only; wake() from any thread.
// A buffer dropped by either side is unreferenced on that side's thread.
class ProgramPresentMailbox
{
public:
    static constexpr int kEntries = 8;

    ProgramPresentMailbox() = default;
    ~ProgramPresentMailbox();

    ProgramPresentMailbox(const ProgramPresentMailbox &) = delete;
    ProgramPresentMailbox &operator=(const ProgramPresentMailbox &) = delete;

    struct Frame {
        GstBuffer *buffer = nullptr; // packed BGRA of the program size
        quint64 sequence = 0;        // set by publish()
        qint64 pts = -1;             // of the deck shown, -1 for none
        // Frames with the same picture number hold the same picture: the
        // compositor repeats a frame whose inputs did not change.
        quint64 picture = 0;
    };

    // Publishes a reference of its own on the buffer and signals the
    // consumer. False is a miss: every entry was held by the consumer.
    bool publish(GstBuffer *buffer, qint64 pts, quint64 picture);

    // The newest frame published after lastSequence, with the entry's
    // reference handed to the caller; false (and nothing) when there is none.
    bool take(quint64 lastSequence, Frame *taken);

    // Blocks until publish() or wake() signalled since the last call.
    void waitForSignal();
    void wake();

    quint64 published() const { return m_sequence.load(std::memory_order_relaxed); }
    quint64 misses() const { return m_misses.load(std::memory_order_relaxed); }

private:
    enum Key : int { Empty = 0, Published = 1, Writing = 2, Reading = 3 };
    struct Entry {
        std::atomic<int> key{Empty};
        Frame frame; // written while held
    };

    std::array<Entry, kEntries> m_entries;
    int m_writeIndex = 0; // producer only
    std::atomic<quint64> m_sequence{0};
    std::atomic<quint64> m_misses{0};
    std::counting_semaphore<> m_signal{0};
};

} // namespace tarnix
