#include "playout/still_playback_clock.h"

#include <algorithm>

namespace tarnix {

void StillPlaybackClock::start(qint64 inMs, std::optional<qint64> outMs, bool running)
{
    if (inMs < 0 || !outMs || *outMs <= inMs) {
        clear();
        return;
    }
    m_inMs = inMs;
    m_outMs = *outMs;
    m_positionMs = inMs;
    m_running = running;
}

bool StillPlaybackClock::advance(qint64 elapsedMs)
{
    if (!m_running || elapsedMs <= 0 || !isValid())
        return false;
    m_positionMs = std::min(m_positionMs + elapsedMs, m_outMs);
    if (m_positionMs < m_outMs)
        return false;
    m_running = false;
    return true;
}

void StillPlaybackClock::seek(qint64 ms)
{
    if (isValid())
        m_positionMs = std::clamp(ms, m_inMs, m_outMs);
}

void StillPlaybackClock::rewind(bool running)
{
    if (!isValid())
        return;
    m_positionMs = m_inMs;
    m_running = running;
}

void StillPlaybackClock::stopAtEnd()
{
    if (!isValid())
        return;
    m_positionMs = m_outMs;
    m_running = false;
}

void StillPlaybackClock::resume()
{
    if (isValid() && m_positionMs < m_outMs)
        m_running = true;
}

void StillPlaybackClock::clear()
{
    m_inMs = 0;
    m_outMs = -1;
    m_positionMs = 0;
    m_running = false;
}

} // namespace tarnix
