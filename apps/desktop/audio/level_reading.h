#pragma once

#include <gst/gst.h>

#include <cstdint>
#include <optional>

namespace tarnix {

// One meter reading of a `level` element, placed at the running time of the
// audio it measured.
struct LevelReading {
    std::uint64_t runningTime = 0;
    double leftDb = -60.0;
    double rightDb = -60.0;
    bool clipped = false;

    bool operator==(const LevelReading &) const = default;
};

inline constexpr double kLevelFloorDb = -60.0;

// Reads an element message of a `level` element (structure "level"): the
// peak of each channel clamped to -60..0 dB (non-finite to -60), clipped at
// or above 0 dB before clamping, and the running time. Nothing for any other
// message, for a peak without a double or without a valid running time. A
// single channel reads as both.
std::optional<LevelReading> parseLevelMessage(GstMessage *message);

// The running time of a pipeline now (clock time minus base time), or
// nothing without a clock or before the base time. Any thread.
std::optional<std::uint64_t> pipelineRunningTime(GstElement *pipeline);

} // namespace tarnix
