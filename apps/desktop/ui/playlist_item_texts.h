#pragma once

#include "playlist/playlist_model_types.h"
#include "playlist/playlist_records.h"

#include <QColor>
#include <QString>

#include <optional>

// The words and colours a playlist row or tile shows for an item, apart
// from painting, so that they read the same in both views and in tooltips.
namespace tarnix::playlist_view {

// "00:01:23.45": hours, minutes, seconds and hundredths.
QString itemTimeText(qint64 ms);
// "-6.0 dB"; "-inf dB" for the off position.
QString itemVolumeText(qint32 tenthsDb);
QString startModeText(PlaylistStartMode mode);
// The end mode, with "(2/5)-Next" for a finite repeat with its progress,
// "(2/∞)" for an endless one, and " + FI", " + FO", " + CF" for the fades.
QString endModeText(const PlaylistItemSettings &settings, int repeatProgress);
// "VIDEO", "AUDIO", "IMAGE", "POWERPOINT", "PDF", "MEDIA"; a live source by
// its kind ("UVC LIVE", "Live Audio", ...).
QString typeBadgeText(const PlaylistItem &item);
bool isLiveItem(const PlaylistItem &item);
bool isDocumentItem(const PlaylistItem &item);

// "Start Play  End Next + FI  Nominal Volume 0.0 dB", or the document
// items' "Start/End/EDIT disabled".
QString modesLineText(const PlaylistItem &item, int repeatProgress);
// "In 00:00:00.00  Out 00:00:10.00"; "Out --" without an out point.
QString pointsLineText(const PlaylistItemSettings &settings);
// "%1 %2%": the pending phase's label and its progress in percent.
QString pendingStatusText(const PlaylistPendingState &state);

// The translucent tint of an item colour; invalid for the default colour.
QColor itemTintColor(PlaylistItemColor color);
QString itemColorName(PlaylistItemColor color);

} // namespace tarnix::playlist_view
