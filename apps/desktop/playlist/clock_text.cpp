#include "playlist/clock_text.h"

#include <algorithm>

namespace tarnix {

QString clockText(qint64 ms)
{
    const qint64 clamped = std::max<qint64>(0, ms);
    const qint64 seconds = clamped / 1000;
    auto two = [](qint64 value) { return QStringLiteral("%1").arg(value, 2, 10, QLatin1Char('0')); };
    return QStringLiteral("%1:%2:%3.%4")
        .arg(two(seconds / 3600), two(seconds / 60 % 60), two(seconds % 60), two(clamped / 10 % 100));
}

} // namespace tarnix
