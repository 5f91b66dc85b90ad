#include "ui/audio_fader_law.h"

#include <algorithm>
#include <cmath>

namespace tarnix {

double faderValueToGain(int value)
{
    if (value <= kFaderOffValue)
        return 0.0;
    return std::pow(10.0, value / 200.0);
}

int faderGainToValue(double gain, int minimum, int maximum)
{
    if (!std::isfinite(gain) || gain <= 0.0)
        return kFaderOffValue;
    const double value = std::round(std::log10(gain) * 200.0);
    // Clamp as a double first: a tiny gain gives a value far below int range.
    return int(std::clamp(value, double(minimum), double(maximum)));
}

double faderValueToPosition(int value)
{
    if (value <= kFaderOffValue)
        return 0.0;
    if (value <= 0)
        return kFaderUnityPosition * std::pow(std::pow(10.0, value / 200.0), 0.25);
    return std::min(1.0, kFaderUnityPosition + kFaderBoostSpan * value / 60.0);
}

int faderPositionToValue(double position)
{
    if (!(position > 0.0))  // also catches NaN
        return kFaderOffValue;
    double value = 0.0;
    if (position <= kFaderUnityPosition)
        value = std::log10(position / kFaderUnityPosition) * 800.0;
    else
        value = (position - kFaderUnityPosition) * 60.0 / kFaderBoostSpan;
    return int(std::clamp(std::round(value), double(kFaderOffValue), double(kFaderMaxValue)));
}

QString faderDbText(int value)
{
    if (value <= kFaderOffValue)
        return QStringLiteral("\u2212\u221e");
    const QString sign = value >= 0 ? QStringLiteral("+") : QString();
    return QStringLiteral("%1%2").arg(sign, QString::number(value / 10.0, 'f', 2));
}

} // namespace tarnix
