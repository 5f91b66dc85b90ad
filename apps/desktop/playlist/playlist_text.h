#pragma once

#include "playlist/playlist_enums.h"

#include <QString>
#include <QStringView>

#include <optional>

// Text forms of the playlist enums, as stored in the playlist document and in
// macro patches. Texts are compared case-sensitively.
namespace tarnix {

// An out-of-range value gives an empty text, except PlaylistRepeatEndMode
// ("pause") and PlaylistMode ("standard"), which fall back to their defaults.
QString toText(PlaylistStartMode value);
QString toText(PlaylistEndMode value);
QString toText(PlaylistRepeatEndMode value);
QString toText(PlaylistItemColor value);
QString toText(PlaylistMode value);
QString toText(PlaylistSourceType value);
QString toText(PlaylistMediaType value);
QString toText(PlaylistPowerPointMode value);

// Any text but the exact form of a value gives nullopt, e.g.
// fromText<PlaylistEndMode>(u"goto").
template <typename Enum>
std::optional<Enum> fromText(QStringView text);

template <> std::optional<PlaylistStartMode> fromText<PlaylistStartMode>(QStringView text);
template <> std::optional<PlaylistEndMode> fromText<PlaylistEndMode>(QStringView text);
template <> std::optional<PlaylistRepeatEndMode> fromText<PlaylistRepeatEndMode>(QStringView text);
template <> std::optional<PlaylistItemColor> fromText<PlaylistItemColor>(QStringView text);
template <> std::optional<PlaylistMode> fromText<PlaylistMode>(QStringView text);
template <> std::optional<PlaylistSourceType> fromText<PlaylistSourceType>(QStringView text);
template <> std::optional<PlaylistMediaType> fromText<PlaylistMediaType>(QStringView text);
template <> std::optional<PlaylistPowerPointMode> fromText<PlaylistPowerPointMode>(QStringView text);

} // namespace tarnix
