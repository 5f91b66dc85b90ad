#pragma once

#include <QString>

namespace tarnix {

// A time as the operator reads it everywhere: "HH:MM:SS.cc", hours,
// minutes, seconds and hundredths, two places each (hours grow past two
// places for very long media); negative times read as 0.
QString clockText(qint64 ms);

} // namespace tarnix
