#include "shell/interface_scale.h"

#include <atomic>
#include <cmath>

namespace tarnix {

namespace {
std::atomic<double> g_scale{1.0};
}

double interfaceScale()
{
    return g_scale.load(std::memory_order_relaxed);
}

void setInterfaceScale(double scale)
{
    if (std::isfinite(scale) && scale > 0.0)
        g_scale.store(scale, std::memory_order_relaxed);
}

int scaledPixels(int pixels)
{
    return int(std::lround(pixels * interfaceScale()));
}

} // namespace tarnix
