#include "audio/level_reading.h"

#include <algorithm>
#include <cmath>

namespace tarnix {

namespace {

// The n-th double of a peak field, whichever list type the element used.
bool peakEntry(const GValue *peak, guint index, double *out)
{
    const GValue *entry = nullptr;
    if (GST_VALUE_HOLDS_ARRAY(peak)) {
        if (index < gst_value_array_get_size(peak))
            entry = gst_value_array_get_value(peak, index);
    } else if (GST_VALUE_HOLDS_LIST(peak)) {
        if (index < gst_value_list_get_size(peak))
            entry = gst_value_list_get_value(peak, index);
    } else {
        G_GNUC_BEGIN_IGNORE_DEPRECATIONS
        if (!G_VALUE_HOLDS(peak, g_value_array_get_type()))
            return false;
        auto *array = static_cast<GValueArray *>(g_value_get_boxed(peak));
        if (array && index < array->n_values)
            entry = g_value_array_get_nth(array, index);
        G_GNUC_END_IGNORE_DEPRECATIONS
    }
    if (!entry || !G_VALUE_HOLDS_DOUBLE(entry))
        return false;
    *out = g_value_get_double(entry);
    return true;
}

double clampLevel(double db)
{
    return std::isfinite(db) ? std::clamp(db, kLevelFloorDb, 0.0) : kLevelFloorDb;
}

} // namespace

std::optional<LevelReading> parseLevelMessage(GstMessage *message)
{
    if (!message || GST_MESSAGE_TYPE(message) != GST_MESSAGE_ELEMENT)
        return std::nullopt;
    const GstStructure *structure = gst_message_get_structure(message);
    if (!structure || !gst_structure_has_name(structure, "level"))
        return std::nullopt;
    const GValue *peak = gst_structure_get_value(structure, "peak");
    double left = 0.0;
    if (!peak || !peakEntry(peak, 0, &left))
        return std::nullopt;
    double right = left;
    peakEntry(peak, 1, &right);
    GstClockTime runningTime = GST_CLOCK_TIME_NONE;
    if (!gst_structure_get_clock_time(structure, "running-time", &runningTime) ||
        !GST_CLOCK_TIME_IS_VALID(runningTime))
        return std::nullopt;

    LevelReading reading;
    reading.runningTime = runningTime;
    reading.clipped = left >= 0.0 || right >= 0.0;
    reading.leftDb = clampLevel(left);
    reading.rightDb = clampLevel(right);
    return reading;
}

std::optional<std::uint64_t> pipelineRunningTime(GstElement *pipeline)
{
    if (!pipeline)
        return std::nullopt;
    GstClock *clock = gst_element_get_clock(pipeline);
    if (!clock)
        return std::nullopt;
    const GstClockTime now = gst_clock_get_time(clock);
    gst_object_unref(clock);
    const GstClockTime base = gst_element_get_base_time(pipeline);
    if (!GST_CLOCK_TIME_IS_VALID(now) || !GST_CLOCK_TIME_IS_VALID(base) || now < base)
        return std::nullopt;
    return now - base;
}

} // namespace tarnix
