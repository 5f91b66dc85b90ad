#include "audio/meter_ballistics.h"

#include <algorithm>
#include <cmath>

namespace tarnix {

namespace {

// Segment i (from the top) is lit when i >= kSegments - lit.
int litSegments(double levelDb)
{
    return std::clamp(int(std::lround(levelDb - MeterBallistics::kFloorDb)), 0, MeterBallistics::kSegments);
}

double sanitized(double db)
{
    return std::isfinite(db) ? std::clamp(db, MeterBallistics::kFloorDb, 0.0) : MeterBallistics::kFloorDb;
}

} // namespace

bool MeterBallistics::setLevels(double leftDb, double rightDb, bool clipped, qint64 nowMs)
{
    const std::array<double, 2> target{sanitized(leftDb), sanitized(rightDb)};
    if (clipped)
        m_clipUntilMs = nowMs + kClipHoldMs;
    const bool clipWasLit = m_clipLit;
    m_clipLit = nowMs < m_clipUntilMs;

    const double dt = (m_atRest || !m_started) ? 0.0 : std::max(0.0, double(nowMs - m_lastMs) / 1000.0);
    m_lastMs = nowMs;
    const std::array<double, 2> oldLevel = m_level;
    const std::array<Segments, 2> oldSegments = m_segments;

    bool atTarget = true;
    for (int channel = 0; channel < 2; ++channel) {
        double &level = m_level[channel];
        if (!m_started || target[channel] >= level)
            level = target[channel];
        else
            level = std::max(level - dt * kFallDbPerSecond, target[channel]);
        if (level > target[channel])
            atTarget = false;

        const int lit = litSegments(level);
        Segments &segments = m_segments[channel];
        for (int i = 0; i < kSegments; ++i) {
            const bool on = i >= kSegments - lit;
            if (on || !m_started)
                segments[i] = on ? 1.0 : 0.0;
            else
                segments[i] = std::max(0.0, segments[i] - dt / kSegmentDimSeconds);
            if (segments[i] != (on ? 1.0 : 0.0))
                atTarget = false;
        }
    }
    m_started = true;
    m_changed = m_level != oldLevel || m_segments != oldSegments || m_clipLit != clipWasLit;
    m_atRest = !m_clipLit && atTarget;
    return !m_atRest;
}

bool MeterBallistics::reset()
{
    const bool shown = m_level[0] > kFloorDb || m_level[1] > kFloorDb || m_clipLit
                       || std::any_of(m_segments.begin(), m_segments.end(), [](const Segments &segments) {
                              return std::any_of(segments.begin(), segments.end(), [](double v) { return v > 0.0; });
                          });
    *this = MeterBallistics{};
    return shown;
}

} // namespace tarnix
