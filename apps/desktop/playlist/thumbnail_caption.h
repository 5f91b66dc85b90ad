#pragma once

#include "playlist/media_thumbnail_result.h"

#include <QString>

// The texts a playlist tile shows beside its picture.
namespace tarnix {

// A codec name as the media's tags give it ("H.264 / AVC", "MPEG-4 AAC
// audio", "Uncompressed 16-bit PCM audio") in the short form the tile shows
// ("H.264", "MPEG-4 AAC", "Uncompressed"). A name without a short form is
// shown as it came; an empty one stays empty.
QString shortCodecName(const QString &tagName);

// "\nRES 1920x1080@29.97  DUR 1:23  VOL -3.0dB  TYPE H.264": the facts of a
// result with the item's nominal volume (tenths of a dB, -960 is off). What
// is not known shows as "--"; the codec is the video's, else the audio's.
QString thumbnailFactsLine(const MediaThumbnailResult &result, qint32 nominalVolumeTenthsDb);

// "\nThumbnail: <error>" for the tooltip of a tile whose picture failed;
// empty when it did not fail.
QString thumbnailTooltipLine(const MediaThumbnailResult &result);

} // namespace tarnix
