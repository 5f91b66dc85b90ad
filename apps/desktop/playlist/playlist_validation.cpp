#include "playlist/playlist_validation.h"

#include <QByteArray>
#include <QFileInfo>

namespace tarnix {
namespace {

constexpr auto kLiveAudioPrefix = QLatin1String("live-audio://");
constexpr auto kNetworkVideoPrefix = QLatin1String("network-video://");
constexpr auto kBase64Options =
    QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals;

template <typename T>
constexpr bool inRange(T value, T low, T high)
{
    return value >= low && value <= high;
}

bool isValidFade(const PlaylistFadeSetting &fade)
{
    return inRange<qint64>(fade.durationMs, 100, 60000);
}

} // namespace

bool isValidItemColor(PlaylistItemColor color)
{
    return inRange(static_cast<int>(color), 0, 4);
}

bool isValidMediaType(PlaylistMediaType type)
{
    return inRange(static_cast<int>(type), 0, 5);
}

bool isValidItemSettings(const PlaylistItemSettings &s)
{
    return s.inPointMs >= 0
        && (!s.outPointMs || *s.outPointMs > s.inPointMs)
        && isValidFade(s.fadeIn) && isValidFade(s.fadeOut) && isValidFade(s.endCrossfade)
        && inRange(s.repeatCount, 0, 9999)
        && inRange(static_cast<int>(s.repeatEndMode), 0, 3)
        && inRange(s.nominalVolumeTenthsDb, kVolumeOffTenthsDb, kVolumeTopTenthsDb)
        && inRange(s.nominalAudioDelayFrames, 0, 6)
        && inRange(s.nominalEqLowTenthsDb, -150, 150)
        && inRange(s.nominalEqMidTenthsDb, -150, 150)
        && inRange(s.nominalEqHighTenthsDb, -150, 150);
}

bool isValidPowerPointMode(PlaylistPowerPointMode mode, PlaylistSourceType sourceType,
                           PlaylistMediaType mediaType)
{
    switch (mode) {
    case PlaylistPowerPointMode::none:
        return (sourceType == PlaylistSourceType::pdf) == (mediaType == PlaylistMediaType::pdf);
    case PlaylistPowerPointMode::native:
        return sourceType == PlaylistSourceType::powerpoint
            && mediaType == PlaylistMediaType::presentation;
    case PlaylistPowerPointMode::video:
        return sourceType == PlaylistSourceType::file && mediaType == PlaylistMediaType::video;
    case PlaylistPowerPointMode::pngSequence:
        return sourceType == PlaylistSourceType::file
            && mediaType == PlaylistMediaType::stillImage;
    }
    return false;
}

bool isLiveAudioUri(QStringView path)
{
    return path.startsWith(kLiveAudioPrefix);
}

bool isNetworkVideoUri(QStringView path)
{
    return path.startsWith(kNetworkVideoPrefix);
}

QString liveAudioUri(const QString &deviceId)
{
    return kLiveAudioPrefix + QString::fromLatin1(deviceId.toUtf8().toBase64(kBase64Options));
}

QString liveAudioDeviceId(QStringView uri)
{
    if (!isLiveAudioUri(uri))
        return {};
    // Decoding alone accepts several spellings of one id (padding, for one);
    // re-encoding pins the single canonical one, so that one device is never
    // two different items.
    const auto decoded = QByteArray::fromBase64Encoding(
        uri.mid(kLiveAudioPrefix.size()).toUtf8(),
        kBase64Options | QByteArray::AbortOnBase64DecodingErrors);
    if (!decoded)
        return {};
    const QString deviceId = QString::fromUtf8(*decoded);
    if (deviceId.isEmpty() || liveAudioUri(deviceId) != uri)
        return {};
    return deviceId;
}

bool isAddableItem(const PlaylistItem &item)
{
    switch (item.sourceType) {
    case PlaylistSourceType::file:
    case PlaylistSourceType::powerpoint:
    case PlaylistSourceType::pdf:
        return !item.filePath.isEmpty() && QFileInfo(item.filePath).isFile();
    case PlaylistSourceType::uvc:
        if (isLiveAudioUri(item.filePath)) {
            // A non-canonical live-audio spelling is no camera path either.
            return !liveAudioDeviceId(item.filePath).isEmpty()
                && item.settings.inPointMs == 0 && !item.settings.outPointMs
                && item.mediaType == PlaylistMediaType::audio && !item.displayName.isEmpty();
        }
        return !item.filePath.isEmpty() && !item.displayName.isEmpty();
    }
    return false;
}

} // namespace tarnix
