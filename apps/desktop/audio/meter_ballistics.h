#pragma once

#include <QtGlobal>

#include <array>

namespace tarnix {

// How a stereo segment meter moves: a rise shows at once, a fall runs at
// 72 dB a second, a segment that goes dark dims over 80 ms and a clip keeps
// its lamp lit for 500 ms. A plain value driven with an injected time, so a
// meter widget and the meter loop share one behaviour.
class MeterBallistics
{
public:
    static constexpr int kSegments = 60;
    static constexpr double kFloorDb = -60.0;
    static constexpr double kFallDbPerSecond = 72.0;
    static constexpr double kSegmentDimSeconds = 0.08;
    static constexpr qint64 kClipHoldMs = 500;

    using Segments = std::array<double, kSegments>;

    // Takes a reading at nowMs (monotonic milliseconds). Returns true while
    // the display is still moving, so the caller keeps feeding it; false
    // when it has come to rest (the next call then counts no elapsed time).
    bool setLevels(double leftDb, double rightDb, bool clipped, qint64 nowMs);
    // Back to silence; returns whether anything was shown before.
    bool reset();

    double leftDb() const { return m_level[0]; }
    double rightDb() const { return m_level[1]; }
    bool clipLit() const { return m_clipLit; }
    // Brightness 0..1 of each segment, index 0 at the top.
    const Segments &segments(int channel) const { return m_segments[channel == 0 ? 0 : 1]; }
    // The last setLevels changed what is shown.
    bool changed() const { return m_changed; }

private:
    std::array<double, 2> m_level{kFloorDb, kFloorDb};
    std::array<Segments, 2> m_segments{};
    bool m_started = false;
    bool m_atRest = true;
    qint64 m_lastMs = 0;
    qint64 m_clipUntilMs = 0;
    bool m_clipLit = false;
    bool m_changed = false;
};

} // namespace tarnix
