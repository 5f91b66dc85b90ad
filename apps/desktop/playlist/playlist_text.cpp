#include "playlist/playlist_text.h"

#include <QLatin1String>

#include <array>

namespace tarnix {
namespace {

// Texts indexed by the enum's stored number.
constexpr auto textsOf(PlaylistStartMode) { return std::array{"pause", "play"}; }
constexpr auto textsOf(PlaylistEndMode) { return std::array{"stop", "pause", "repeat", "next", "goto"}; }
constexpr auto textsOf(PlaylistRepeatEndMode) { return std::array{"stop", "pause", "next", "goto"}; }
constexpr auto textsOf(PlaylistItemColor) { return std::array{"default", "red", "yellow", "blue", "green"}; }
constexpr auto textsOf(PlaylistMode) { return std::array{"standard", "bgm"}; }
constexpr auto textsOf(PlaylistSourceType) { return std::array{"file", "uvc", "powerpoint", "pdf"}; }
constexpr auto textsOf(PlaylistMediaType)
{
    return std::array{"unknown", "video", "audio", "stillImage", "presentation", "pdf"};
}
constexpr auto textsOf(PlaylistPowerPointMode) { return std::array{"none", "native", "video", "pngSequence"}; }

template <typename Enum>
QString textOf(Enum value, const char *outOfRange = "")
{
    constexpr auto texts = textsOf(Enum{});
    const auto index = static_cast<int>(value);
    if (index < 0 || index >= static_cast<int>(texts.size()))
        return QString::fromLatin1(outOfRange);
    return QString::fromLatin1(texts[index]);
}

template <typename Enum>
std::optional<Enum> parse(QStringView text)
{
    constexpr auto texts = textsOf(Enum{});
    for (int index = 0; index < static_cast<int>(texts.size()); ++index) {
        if (text == QLatin1String(texts[index]))
            return static_cast<Enum>(index);
    }
    return std::nullopt;
}

} // namespace

QString toText(PlaylistStartMode value) { return textOf(value); }
QString toText(PlaylistEndMode value) { return textOf(value); }
QString toText(PlaylistRepeatEndMode value) { return textOf(value, "pause"); }
QString toText(PlaylistItemColor value) { return textOf(value); }
QString toText(PlaylistMode value) { return textOf(value, "standard"); }
QString toText(PlaylistSourceType value) { return textOf(value); }
QString toText(PlaylistMediaType value) { return textOf(value); }
QString toText(PlaylistPowerPointMode value) { return textOf(value); }

template <> std::optional<PlaylistStartMode> fromText<PlaylistStartMode>(QStringView text)
{ return parse<PlaylistStartMode>(text); }
template <> std::optional<PlaylistEndMode> fromText<PlaylistEndMode>(QStringView text)
{ return parse<PlaylistEndMode>(text); }
template <> std::optional<PlaylistRepeatEndMode> fromText<PlaylistRepeatEndMode>(QStringView text)
{ return parse<PlaylistRepeatEndMode>(text); }
template <> std::optional<PlaylistItemColor> fromText<PlaylistItemColor>(QStringView text)
{ return parse<PlaylistItemColor>(text); }
template <> std::optional<PlaylistMode> fromText<PlaylistMode>(QStringView text)
{ return parse<PlaylistMode>(text); }
template <> std::optional<PlaylistSourceType> fromText<PlaylistSourceType>(QStringView text)
{ return parse<PlaylistSourceType>(text); }
template <> std::optional<PlaylistMediaType> fromText<PlaylistMediaType>(QStringView text)
{ return parse<PlaylistMediaType>(text); }
template <> std::optional<PlaylistPowerPointMode> fromText<PlaylistPowerPointMode>(QStringView text)
{ return parse<PlaylistPowerPointMode>(text); }

} // namespace tarnix
