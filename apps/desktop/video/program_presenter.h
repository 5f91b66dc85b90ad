#pragma once

#include "video/program_present_mailbox.h"
#include "video/program_present_output.h"

#include <QSize>
#include <QString>

#include <atomic>
#include <chrono>
#include <memory>
#include <mutex>
#include <thread>

namespace tarnix {

// What the main thread knows about the program window, for scaling and for
// the PROGRAM_PRESENT lines.
struct ProgramWindowState {
    QSize size;        // in device pixels; empty: present at the frame size
    bool exposed = true;
    QString display;   // the screen's name
    double refreshHz = 0.0;
};

// Shows the newest composed frame on a thread of its own. The compositor
// publishes references to its frames into an eight-entry mailbox and never
// waits; the presenter takes the newest entry, scales it to the window when
// the sizes differ and hands it to its output.
//
// A frame whose picture is the one the window already shows (the compositor
// repeats a frame whose inputs did not change) counts as presented without
// being drawn again: the window keeps its contents. The picture is drawn
// again when the window was exposed, resized or shown, when requestRepaint()
// asks for it, and at least once per repaint interval.
//
// Threads: construction, start(), setWindowState(), stop() and the
// destructor on the owner's thread (stop() joins the presenter thread, so
// the owner calls it where a short wait is allowed); publish() on the
// compositor's streaming thread; the counters from any thread.
class ProgramPresenter
{
public:
    ProgramPresenter(int width, int height, std::unique_ptr<ProgramPresentOutput> output,
                     std::chrono::milliseconds timingInterval = std::chrono::milliseconds(5000),
                     std::chrono::milliseconds repaintInterval = std::chrono::milliseconds(1000));
    ~ProgramPresenter();

    ProgramPresenter(const ProgramPresenter &) = delete;
    ProgramPresenter &operator=(const ProgramPresenter &) = delete;

    // Starts the thread; readiness and failure are read later.
    bool start();
    bool isReady() const { return m_ready.load(); }
    bool hasFailed() const { return m_failed.load(); }
    QString failureText() const;

    // From the compositor: a packed BGRA frame of the program size, of which
    // the mailbox keeps a reference of its own. False when the presenter has
    // failed (the frame is not taken). A full mailbox is a counted miss, not
    // a failure. Frames with the same picture number hold the same picture.
    bool publish(GstBuffer *frame, qint64 pts, quint64 picture);

    void setWindowState(const ProgramWindowState &state);
    // The window lost its contents (an expose): the latest picture is drawn
    // again at once. Any thread.
    void requestRepaint();

    void stop();

    quint64 presents() const { return m_presents.load(); }
    // Presents that drew into the output; the others repeated the picture
    // the window already showed.
    quint64 draws() const { return m_draws.load(); }
    quint64 freshPresents() const { return m_fresh.load(); }
    quint64 published() const { return m_mailbox.published(); }
    quint64 publishMisses() const { return m_mailbox.misses(); }
    quint64 lastPresentedSequence() const { return m_lastSequence.load(); }
    qint64 lastPresentedPts() const { return m_lastPts.load(); }
    QString sinkName() const { return m_sinkName; }

private:
    void run();
    void fail(const QString &text);

    const int m_width;
    const int m_height;
    const std::chrono::milliseconds m_timingInterval;
    const std::chrono::milliseconds m_repaintInterval;
    std::unique_ptr<ProgramPresentOutput> m_output; // presenter thread once started
    const QString m_sinkName;
    ProgramPresentMailbox m_mailbox;
    std::thread m_thread;

    std::atomic<bool> m_stop{false};
    std::atomic<bool> m_ready{false};
    std::atomic<bool> m_failed{false};
    std::atomic<bool> m_repaint{false};
    std::atomic<quint64> m_presents{0};
    std::atomic<quint64> m_draws{0};
    std::atomic<quint64> m_fresh{0};
    std::atomic<quint64> m_lastSequence{0};
    std::atomic<qint64> m_lastPts{-1};

    mutable std::mutex m_mutex;
    ProgramWindowState m_window; // guarded by m_mutex
    QString m_failure;           // guarded by m_mutex
};

} // namespace tarnix
