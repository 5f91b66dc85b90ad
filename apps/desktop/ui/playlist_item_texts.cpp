#include "ui/playlist_item_texts.h"

#include "playlist/clock_text.h"
#include "playlist/mode_names.h"
#include "playlist/playlist_validation.h"
#include "shell/localized_text.h"

namespace tarnix::playlist_view {

QString itemTimeText(qint64 ms)
{
    return clockText(ms);
}

QString itemVolumeText(qint32 tenthsDb)
{
    if (tenthsDb <= kVolumeOffTenthsDb)
        return QStringLiteral("-inf dB");
    return QStringLiteral("%1 dB").arg(QString::number(tenthsDb / 10.0, 'f', 1));
}

QString startModeText(PlaylistStartMode mode)
{
    return mode == PlaylistStartMode::play ? QStringLiteral("Play") : QStringLiteral("Pause");
}

QString endModeText(const PlaylistItemSettings &settings, int repeatProgress)
{
    QString text = endModeName(settings.endMode);
    if (settings.endMode == PlaylistEndMode::repeat) {
        if (settings.repeatCount > 0)
            text += QStringLiteral("(%1/%2)-%3")
                        .arg(repeatProgress)
                        .arg(settings.repeatCount)
                        .arg(repeatEndModeName(settings.repeatEndMode));
        else
            text += QStringLiteral("(%1/∞)").arg(repeatProgress);
    }
    if (settings.fadeIn.enabled)
        text += QStringLiteral(" + FI");
    if (settings.fadeOut.enabled)
        text += QStringLiteral(" + FO");
    if (settings.endCrossfade.enabled)
        text += QStringLiteral(" + CF");
    return text;
}

bool isLiveItem(const PlaylistItem &item)
{
    return item.sourceType == PlaylistSourceType::uvc;
}

bool isDocumentItem(const PlaylistItem &item)
{
    return item.sourceType == PlaylistSourceType::powerpoint || item.sourceType == PlaylistSourceType::pdf;
}

QString typeBadgeText(const PlaylistItem &item)
{
    if (isLiveItem(item)) {
        if (isLiveAudioUri(item.filePath))
            return QStringLiteral("Live Audio");
        if (isNetworkVideoUri(item.filePath))
            return QStringLiteral("NDI LIVE");
        if (item.filePath.startsWith(QLatin1String("decklink://")))
            return QStringLiteral("DeckLink Live");
        return QStringLiteral("UVC LIVE");
    }
    if (item.sourceType == PlaylistSourceType::powerpoint)
        return item.powerPointMode == PlaylistPowerPointMode::native ? QStringLiteral("POWERPOINT LIVE")
                                                                      : QStringLiteral("POWERPOINT");
    if (item.sourceType == PlaylistSourceType::pdf)
        return QStringLiteral("PDF");
    switch (item.mediaType) {
    case PlaylistMediaType::video: return QStringLiteral("VIDEO");
    case PlaylistMediaType::audio: return QStringLiteral("AUDIO");
    case PlaylistMediaType::stillImage: return QStringLiteral("IMAGE");
    case PlaylistMediaType::presentation: return QStringLiteral("POWERPOINT");
    case PlaylistMediaType::pdf: return QStringLiteral("PDF");
    case PlaylistMediaType::unknown: break;
    }
    return QStringLiteral("MEDIA");
}

QString modesLineText(const PlaylistItem &item, int repeatProgress)
{
    if (isDocumentItem(item))
        return QStringLiteral("Start/End/EDIT disabled");
    return LocalizedText(QStringLiteral("playlist.item.modes"),
                         {startModeText(item.settings.startMode), endModeText(item.settings, repeatProgress),
                          itemVolumeText(item.settings.nominalVolumeTenthsDb)},
                         QStringLiteral("Start %1  End %2  Nominal Volume %3"))
        .toString();
}

QString pointsLineText(const PlaylistItemSettings &settings)
{
    return LocalizedText(QStringLiteral("playlist.item.points"),
                         {itemTimeText(settings.inPointMs),
                          settings.outPointMs ? itemTimeText(*settings.outPointMs) : QStringLiteral("--")},
                         QStringLiteral("In %1  Out %2"))
        .toString();
}

QString pendingStatusText(const PlaylistPendingState &state)
{
    static const char *const kPhaseKeys[] = {
        "playlist.conversion.waiting",   "playlist.conversion.preparing", "playlist.conversion.exporting",
        "playlist.conversion.rendering", "playlist.conversion.encoding",  "playlist.analysis.waiting",
        "playlist.analysis.analyzing",
    };
    const int phase = std::clamp(state.phase, 0, int(std::size(kPhaseKeys)) - 1);
    return LocalizedText(QStringLiteral("playlist.conversion.item_status"),
                         {localized(kPhaseKeys[phase]), QString::number(state.progress / 10)},
                         QStringLiteral("%1 %2%"))
        .toString();
}

QColor itemTintColor(PlaylistItemColor color)
{
    switch (color) {
    case PlaylistItemColor::red: return QColor(255, 120, 120, 71);
    case PlaylistItemColor::yellow: return QColor(255, 235, 120, 77);
    case PlaylistItemColor::blue: return QColor(120, 180, 255, 71);
    case PlaylistItemColor::green: return QColor(140, 230, 160, 71);
    case PlaylistItemColor::default_: break;
    }
    return {};
}

QString itemColorName(PlaylistItemColor color)
{
    switch (color) {
    case PlaylistItemColor::red: return QStringLiteral("Red");
    case PlaylistItemColor::yellow: return QStringLiteral("Yellow");
    case PlaylistItemColor::blue: return QStringLiteral("Blue");
    case PlaylistItemColor::green: return QStringLiteral("Green");
    case PlaylistItemColor::default_: break;
    }
    return QStringLiteral("Default");
}

} // namespace tarnix::playlist_view
