#pragma once

#include <gst/gst.h>

#include <cmath>
#include <cstddef>
#include <vector>

// Generated stereo float PCM and the measurements the audio tests make on it.
namespace tarnix::test {

inline constexpr double kRate = 48000.0;
inline constexpr const char *kPcmCaps =
    "audio/x-raw,format=F32LE,rate=48000,channels=2,layout=interleaved";

// A stereo sine, the same on both channels, starting at sample frame `first`.
inline GstBuffer *sineBuffer(double frequency, double amplitude, std::size_t first,
                             std::size_t frames, GstClockTime pts)
{
    GstBuffer *buffer = gst_buffer_new_allocate(nullptr, frames * 8, nullptr);
    GstMapInfo map;
    gst_buffer_map(buffer, &map, GST_MAP_WRITE);
    auto *out = reinterpret_cast<float *>(map.data);
    const double step = 2.0 * std::acos(-1.0) * frequency / kRate;
    for (std::size_t i = 0; i < frames; ++i)
        out[2 * i] = out[2 * i + 1] = float(amplitude * std::sin(step * double(first + i)));
    gst_buffer_unmap(buffer, &map);
    GST_BUFFER_PTS(buffer) = pts;
    GST_BUFFER_DURATION(buffer) = gst_util_uint64_scale(frames, GST_SECOND, 48000);
    return buffer;
}

inline void appendSamples(std::vector<float> &samples, GstBuffer *buffer)
{
    GstMapInfo map;
    if (!gst_buffer_map(buffer, &map, GST_MAP_READ))
        return;
    const auto *data = reinterpret_cast<const float *>(map.data);
    samples.insert(samples.end(), data, data + map.size / sizeof(float));
    gst_buffer_unmap(buffer, &map);
}

// RMS of the left channel over [firstFrame, firstFrame + frames).
inline double leftRms(const std::vector<float> &samples, std::size_t firstFrame, std::size_t frames)
{
    double sum = 0.0;
    for (std::size_t i = firstFrame; i < firstFrame + frames; ++i)
        sum += double(samples[2 * i]) * double(samples[2 * i]);
    return std::sqrt(sum / double(frames));
}

inline double toDb(double linear)
{
    return 20.0 * std::log10(linear);
}

// Level of a pure tone's RMS as the peak-referenced dBFS of the tone.
inline double toneDbfs(double rms)
{
    return toDb(rms * std::sqrt(2.0));
}

// Power of one frequency in the left channel of a window (Goertzel).
inline double tonePower(const std::vector<float> &samples, std::size_t firstFrame,
                        std::size_t frames, double frequency)
{
    const double coefficient = 2.0 * std::cos(2.0 * std::acos(-1.0) * frequency / kRate);
    double s1 = 0.0, s2 = 0.0;
    for (std::size_t i = firstFrame; i < firstFrame + frames; ++i) {
        const double s = double(samples[2 * i]) + coefficient * s1 - s2;
        s2 = s1;
        s1 = s;
    }
    return (s1 * s1 + s2 * s2 - coefficient * s1 * s2) / (double(frames) * double(frames));
}

} // namespace tarnix::test
