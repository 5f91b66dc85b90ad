#pragma once

namespace tarnix {

// The interface scale of this run. It stays 1.0 until the start-up computes
// it from the primary screen; widgets size themselves through scaledPixels.
double interfaceScale();
void setInterfaceScale(double scale);

// A length in pixels at the interface scale, rounded to the nearest pixel.
int scaledPixels(int pixels);

} // namespace tarnix
