#pragma once

#include <QString>

#include <optional>

// What the REMAIN TIMER shows, apart from the widget: the value for the
// item or for the whole route to the map's arrival point, its text, and
// whether it is about to end.
namespace tarnix::remaining_time {

struct Input {
    qint64 itemRemainingMs = -1;       // as the deck reports it; -1 unknown
    double rate = 1.0;                 // the item's playback speed
    bool live = false;                 // a live source has no time
    bool totalMode = false;            // the Total button is pressed
    std::optional<qint64> totalMs;     // the route's remaining total; none: unlimited
};

struct Shown {
    std::optional<qint64> ms;  // none: no time to show
    bool live = false;
    bool unknown = false;      // Total mode with an unlimited route
    bool endingSoon = false;   // 1..5000 ms of a known, non-live time
};

Shown compute(const Input &input);
// "00:01:23.45": hours, minutes, seconds and hundredths.
QString timeText(qint64 ms);

} // namespace tarnix::remaining_time
