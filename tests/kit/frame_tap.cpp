#include "kit/frame_tap.h"

#include <cstring>

namespace tarnix::testkit {

namespace {

bool isUniform(const ProgramTapFrame &frame, const quint8 *colour)
{
    for (int y = 0; y < frame.height; ++y) {
        const quint8 *row = frame.pixels + std::size_t(y) * frame.stride;
        for (int x = 0; x < frame.width; ++x) {
            if (std::memcmp(row + 4 * x, colour, 4) != 0)
                return false;
        }
    }
    return true;
}

} // namespace

void FrameTap::add(const ProgramTapFrame &frame)
{
    const quint8 *p =
        frame.pixels + std::size_t(frame.height / 2) * frame.stride + 4 * std::size_t(frame.width / 2);
    static GstClock *const clock = gst_system_clock_obtain();
    const GstClockTime now = gst_clock_get_time(clock);
    const bool uniform = m_options.wholeFrame && isUniform(frame, p);
    std::lock_guard lock(m_mutex);
    m_pixels.push_back({frame.sequence, p[2], p[1], p[0], now, frame.pts, uniform});
    const std::size_t limit = m_options.keepAtMost;
    if (limit > 0 && m_pixels.size() >= limit)
        m_pixels.erase(m_pixels.begin(), m_pixels.begin() + std::ptrdiff_t(limit / 2));
}

std::function<void(const ProgramTapFrame &)> FrameTap::callback(const std::shared_ptr<FrameTap> &tap)
{
    return [tap](const ProgramTapFrame &frame) { tap->add(frame); };
}

std::vector<TapPixel> FrameTap::since(quint64 sequence) const
{
    std::lock_guard lock(m_mutex);
    std::vector<TapPixel> out;
    for (const TapPixel &pixel : m_pixels) {
        if (pixel.sequence > sequence)
            out.push_back(pixel);
    }
    return out;
}

std::vector<TapPixel> FrameTap::all() const
{
    std::lock_guard lock(m_mutex);
    return m_pixels;
}

TapPixel FrameTap::last() const
{
    std::lock_guard lock(m_mutex);
    return m_pixels.empty() ? TapPixel{} : m_pixels.back();
}

} // namespace tarnix::testkit
