#include "ui/remaining_time.h"

#include "playlist/clock_text.h"

#include <cmath>

namespace tarnix::remaining_time {

Shown compute(const Input &input)
{
    Shown shown;
    if (input.live) {
        shown.live = true;
        return shown;
    }
    if (input.totalMode) {
        if (!input.totalMs) {
            shown.unknown = true;
            return shown;
        }
        shown.ms = std::max<qint64>(0, *input.totalMs);
    } else if (input.itemRemainingMs >= 0) {
        const double rate = input.rate > 0.0 ? input.rate : 1.0;
        shown.ms = std::max<qint64>(0, qint64(std::ceil(double(input.itemRemainingMs) / rate)));
    }
    shown.endingSoon = shown.ms && *shown.ms >= 1 && *shown.ms <= 5000;
    return shown;
}

QString timeText(qint64 ms)
{
    return clockText(ms);
}

} // namespace tarnix::remaining_time
