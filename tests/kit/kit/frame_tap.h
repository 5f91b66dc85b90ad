#pragma once

// Records the centre pixel of every frame the program compositor composes,
// with the system clock time of its composition: enough to tell which clip
// is on the output and when it changed. Written on the frame clock's thread,
// read from the test's.

#include "video/program_gpu_compositor.h"

#include <gst/gst.h>

#include <QtGlobal>

#include <functional>
#include <memory>
#include <mutex>
#include <vector>

namespace tarnix::testkit {

struct TapPixel {
    quint64 sequence = 0;
    int r = 0;
    int g = 0;
    int b = 0;
    // System clock time at which the frame was composed.
    GstClockTime clockNs = GST_CLOCK_TIME_NONE;
    // The frame clock's timestamp of the frame.
    GstClockTime pts = GST_CLOCK_TIME_NONE;
    // With wholeFrame: every pixel has the centre pixel's colour.
    bool uniform = false;
};

inline bool isRed(const TapPixel &p) { return p.r > 200 && p.g < 40 && p.b < 40; }
inline bool isBlue(const TapPixel &p) { return p.b > 200 && p.r < 40 && p.g < 40; }
inline bool isBlack(const TapPixel &p) { return p.r < 16 && p.g < 16 && p.b < 16; }

class FrameTap
{
public:
    struct Options {
        // Bounds the memory of a long run: the oldest half is dropped when
        // it is reached. 0 keeps everything.
        std::size_t keepAtMost = 0;
        // Also tell whether the whole frame is one colour (reads every pixel:
        // for small pictures).
        bool wholeFrame = false;
    };

    FrameTap() = default;
    explicit FrameTap(Options options) : m_options(options) {}

    void add(const ProgramTapFrame &frame);
    // The compositor option's callback; it keeps the tap alive.
    static std::function<void(const ProgramTapFrame &)> callback(const std::shared_ptr<FrameTap> &tap);

    std::vector<TapPixel> since(quint64 sequence) const;
    std::vector<TapPixel> all() const;
    TapPixel last() const;

private:
    Options m_options;
    mutable std::mutex m_mutex;
    std::vector<TapPixel> m_pixels;
};

} // namespace tarnix::testkit
