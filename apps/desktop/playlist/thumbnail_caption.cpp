#include "playlist/thumbnail_caption.h"

#include "playlist/playlist_records.h"

#include <array>
#include <cmath>

namespace tarnix {

namespace {

constexpr auto kUnknown = QLatin1String("--");

struct CodecPattern {
    QLatin1String fragment;
    QLatin1String shortName;
};

// Searched in this order, without regard to case: H.265 before H.264 and
// AAC before the MPEG family names, because the longer tag names contain
// the shorter ones ("MPEG-4 AAC", "MPEG-1 Layer 3 (MP3)").
constexpr std::array kCodecPatterns{
    CodecPattern{QLatin1String("h.265"), QLatin1String("H.265")},
    CodecPattern{QLatin1String("hevc"), QLatin1String("H.265")},
    CodecPattern{QLatin1String("h.264"), QLatin1String("H.264")},
    CodecPattern{QLatin1String("avc"), QLatin1String("H.264")},
    CodecPattern{QLatin1String("aac"), QLatin1String("MPEG-4 AAC")},
    CodecPattern{QLatin1String("uncompressed"), QLatin1String("Uncompressed")},
    CodecPattern{QLatin1String("vp9"), QLatin1String("VP9")},
    CodecPattern{QLatin1String("vp8"), QLatin1String("VP8")},
    CodecPattern{QLatin1String("av1"), QLatin1String("AV1")},
    CodecPattern{QLatin1String("opus"), QLatin1String("Opus")},
    CodecPattern{QLatin1String("vorbis"), QLatin1String("Vorbis")},
    CodecPattern{QLatin1String("flac"), QLatin1String("FLAC")},
    CodecPattern{QLatin1String("free lossless"), QLatin1String("FLAC")},
    CodecPattern{QLatin1String("mp3"), QLatin1String("MP3")},
    CodecPattern{QLatin1String("layer 3"), QLatin1String("MP3")},
    CodecPattern{QLatin1String("prores"), QLatin1String("ProRes")},
    CodecPattern{QLatin1String("mpeg-2"), QLatin1String("MPEG-2")},
    CodecPattern{QLatin1String("motion jpeg"), QLatin1String("Motion JPEG")},
    CodecPattern{QLatin1String("mjpeg"), QLatin1String("Motion JPEG")},
};

QString resolutionText(const MediaThumbnailResult &result)
{
    if (result.width <= 0 || result.height <= 0)
        return kUnknown;
    QString text = QStringLiteral("%1x%2").arg(result.width).arg(result.height);
    if (result.frameRate > 0.0) {
        const double whole = std::round(result.frameRate);
        text += QLatin1Char('@')
                + (std::abs(result.frameRate - whole) < 0.005 ? QString::number(qint64(whole))
                                                               : QString::number(result.frameRate, 'f', 2));
    }
    return text;
}

QString durationText(const std::optional<qint64> &durationMs)
{
    if (!durationMs || *durationMs < 0)
        return kUnknown;
    const qint64 seconds = *durationMs / 1000;
    const qint64 hours = seconds / 3600;
    const qint64 minutes = seconds / 60 % 60;
    const QString secondsText = QStringLiteral("%1").arg(seconds % 60, 2, 10, QLatin1Char('0'));
    if (hours > 0)
        return QStringLiteral("%1:%2:%3").arg(hours).arg(minutes, 2, 10, QLatin1Char('0')).arg(secondsText);
    return QStringLiteral("%1:%2").arg(minutes).arg(secondsText);
}

QString volumeText(qint32 tenthsDb)
{
    if (tenthsDb <= kVolumeOffTenthsDb)
        return QStringLiteral("OFF");
    const QString number = QString::number(tenthsDb / 10.0, 'f', 1);
    return (tenthsDb > 0 ? QStringLiteral("+") : QString()) + number + QStringLiteral("dB");
}

} // namespace

QString shortCodecName(const QString &tagName)
{
    const QString name = tagName.trimmed();
    for (const CodecPattern &pattern : kCodecPatterns) {
        if (name.contains(pattern.fragment, Qt::CaseInsensitive))
            return pattern.shortName;
    }
    return name;
}

QString thumbnailFactsLine(const MediaThumbnailResult &result, qint32 nominalVolumeTenthsDb)
{
    QString codec = shortCodecName(result.videoCodec);
    if (codec.isEmpty())
        codec = shortCodecName(result.audioCodec);
    return QStringLiteral("\nRES %1  DUR %2  VOL %3  TYPE %4")
        .arg(resolutionText(result), durationText(result.durationMs), volumeText(nominalVolumeTenthsDb),
             codec.isEmpty() ? QString(kUnknown) : codec);
}

QString thumbnailTooltipLine(const MediaThumbnailResult &result)
{
    if (result.success || result.error.isEmpty())
        return {};
    return QStringLiteral("\nThumbnail: %1").arg(result.error);
}

} // namespace tarnix
