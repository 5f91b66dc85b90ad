#pragma once

#include <QString>
#include <QStringList>

namespace tarnix {

// Level filter entries of the log viewer, by index.
inline constexpr int kLogFilterAll = 0;
inline constexpr int kLogFilterWarnings = 1;   // "WARN" and "ERROR" only

// Turns record lines into the viewer's lines "time [level] source  message".
// A line that is not a JSON record is shown as it stands and counts as
// "ERROR". The search is a case-insensitive substring of the shown line; an
// empty search keeps everything.
QStringList filterLogLines(const QStringList &records, int filterIndex, const QString &search);

} // namespace tarnix
