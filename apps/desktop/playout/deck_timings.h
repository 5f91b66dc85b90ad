#pragma once

#include <chrono>

namespace tarnix {

// Output size and every time limit of a playout deck. The defaults are the
// product's values; tests shorten the limits so they run in milliseconds.
struct DeckTimings {
    // Size of the RGBA frames the video branch delivers (3840 x 2160 in 4K mode).
    int width = 1920;
    int height = 1080;

    // A file preparation that is not ready by then reads as media offline.
    std::chrono::milliseconds preparationDeadline{10000};
    // Wait of one state query of the preparation worker.
    std::chrono::milliseconds statePoll{50};
    // A position after the in-point seek that differs from the in point by
    // strictly less than this counts as arrived.
    std::chrono::milliseconds seekTolerance{251};
    // Pause before the worker checks an unsettled seek again.
    std::chrono::milliseconds seekRetryStep{5};
    // Time a stopping pipeline has to read NULL before it is retained.
    std::chrono::milliseconds nullConfirmation{2000};
    // A replacement is refused while more unconfirmed stops than this remain:
    // at most four old pipelines are in limbo at once.
    int maxUnconfirmedStops = 3;
};

} // namespace tarnix
