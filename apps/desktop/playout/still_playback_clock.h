#pragma once

#include <QtGlobal>

#include <optional>

namespace tarnix {

// The time of a still image shown for a set span: the deck only holds the
// picture, this counts the milliseconds between the in and out points as
// the controller's ticks report them.
class StillPlaybackClock
{
public:
    // Valid only with inMs >= 0 and an out point above it; otherwise nothing
    // runs and the clock stays invalid.
    void start(qint64 inMs, std::optional<qint64> outMs, bool running);
    bool isValid() const { return m_outMs > 0; }
    bool isRunning() const { return m_running; }
    qint64 inMs() const { return m_inMs; }
    qint64 outMs() const { return m_outMs; }
    qint64 positionMs() const { return m_positionMs; }
    bool isAtEnd() const { return isValid() && m_positionMs >= m_outMs; }

    // True when this step reached the out point, where the clock stops.
    bool advance(qint64 elapsedMs);
    void seek(qint64 ms);
    void rewind(bool running);
    void stopAtEnd();
    void pause() { m_running = false; }
    void resume();
    void clear();

private:
    qint64 m_inMs = 0;
    qint64 m_outMs = -1;
    qint64 m_positionMs = 0;
    bool m_running = false;
};

} // namespace tarnix
