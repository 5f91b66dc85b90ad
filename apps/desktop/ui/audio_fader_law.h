#pragma once

#include "playlist/playlist_records.h"

#include <QString>

namespace tarnix {

// The volume scale shared by every fader: values are integer tenths of a dB
// from kFaderOffValue (silence) to kFaderMaxValue (+6 dB). Plain functions so
// that the laws are checked without a widget.
constexpr int kFaderOffValue = kVolumeOffTenthsDb;
constexpr int kFaderMaxValue = kVolumeTopTenthsDb;

// Where 0 dB sits on the travel. The boost above it takes the rest, and the
// span is kept as the double subtraction so that +6 dB lands exactly on 1.0.
constexpr double kFaderUnityPosition = 0.8;
constexpr double kFaderBoostSpan = 1.0 - kFaderUnityPosition;

// 0.0 at kFaderOffValue and below, otherwise 10^(value / 200).
double faderValueToGain(int value);

// The nearest value of a linear gain, clamped to minimum..maximum. Anything
// that is not a finite gain above 0.0 is silence.
int faderGainToValue(double gain, int minimum = kFaderOffValue, int maximum = kFaderMaxValue);

// Position on the travel, 0 (bottom) to 1 (top). Below 0 dB the travel
// follows the fourth root of the gain, which spreads the useful range from
// -40 to 0 dB over most of the fader; the boost is linear in dB.
double faderValueToPosition(int value);
int faderPositionToValue(double position);

// "−∞" for silence, otherwise the dB with a sign for values at or above 0
// and two decimals, e.g. "+0.00", "-12.50".
QString faderDbText(int value);

} // namespace tarnix
