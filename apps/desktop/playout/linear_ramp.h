#pragma once

#include <QtGlobal>

#include <algorithm>

namespace tarnix {

// A linear animation from one value to another over a span of an injected
// clock, stepped by its owner; nothing here keeps time itself, so a test
// steps it exactly.
class LinearRamp
{
public:
    void start(double from, double to, qint64 durationMs, qint64 nowMs)
    {
        m_from = from;
        m_to = to;
        m_durationMs = std::max<qint64>(1, durationMs);
        m_startMs = nowMs;
        m_running = true;
    }
    void stop() { m_running = false; }
    bool isRunning() const { return m_running; }
    qint64 durationMs() const { return m_durationMs; }
    double target() const { return m_to; }

    // The value at `nowMs`; reaching the end stops the ramp.
    double step(qint64 nowMs)
    {
        const double t = std::clamp(double(nowMs - m_startMs) / double(m_durationMs), 0.0, 1.0);
        if (t >= 1.0)
            m_running = false;
        return m_from + (m_to - m_from) * t;
    }

private:
    double m_from = 0.0;
    double m_to = 1.0;
    qint64 m_durationMs = 1;
    qint64 m_startMs = 0;
    bool m_running = false;
};

} // namespace tarnix
