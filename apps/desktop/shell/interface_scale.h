#pragma once

#include <QFont>
#include <QRect>

namespace tarnix {

// How large the controller draws. Two factors multiply: the interface scale
// follows the screen the controller window is on, the text size factor the
// operator's choice of text size. Both start at 1.0 and are set by the
// start-up, the controller window's scaling and the settings window. Main
// thread for the setters; the getters may be read anywhere.

// The scale for a screen: the smaller of how the screen compares with a
// 1920×1080 screen and how its available area compares with 1886×805. An
// empty geometry or available area gives 1.0. There is no clamp, so a
// larger screen scales up and a smaller one down.
double uiScale(const QRect &geometry, const QRect &available);

double interfaceScale();
// A value that is not finite or not above 0 stores 1.0.
void setUiScale(double scale);

// The stored text size step (0 standard, 1 large, 2 largest); a value out of
// range is clamped.
int textSizeStep();
void setTextSizeStep(int step);
// 1.0, 1.2 or 1.4.
double textSizeFactor();

// A length in pixels at the interface scale, rounded half away from zero; a
// positive length never becomes 0.
int scaled(int pixels);
inline int scaledPixels(int pixels) { return scaled(pixels); }

// The same rounding for any factor: what the skin's sheet scaling and the
// fonts share.
int scaledBy(double value, double factor);

// A font for the current scale and text size, from its unscaled form: a
// point size is multiplied by both factors, a pixel size goes through
// scaled().
QFont scaledFont(const QFont &unscaled);

// Sets the application font to the scaled form of the font the application
// had before the first call. Main thread, with a QApplication.
void applyScaledApplicationFont();
// Gives the menu bar and the menus the scaled application font explicitly:
// platform themes may give them fonts of their own, which would not scale.
void applyScaledMenuFonts();

} // namespace tarnix
