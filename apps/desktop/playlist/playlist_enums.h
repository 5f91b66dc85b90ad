#pragma once

#include <QObject>

// Enumerations of playlists and their items. The numbers are the stored order
// and never change; the texts of the document are in playlist_text.h.
//
// The enums sit in their own namespace because Q_NAMESPACE gives a namespace
// exactly one meta-object, and `tarnix` is shared by every subsystem. The
// using-declarations below make them `tarnix::PlaylistEndMode` and so on for
// everybody else; QMetaEnum::fromType<tarnix::PlaylistEndMode>() works as well.
//
// Enumerators are spelled as in the document texts, except the C++ keywords
// `goto` and `default`, which carry a trailing underscore.
namespace tarnix {
namespace playlist_enums {
Q_NAMESPACE

enum class PlaylistStartMode : int { pause = 0, play = 1 };
Q_ENUM_NS(PlaylistStartMode)

// What happens when an item ends on air.
enum class PlaylistEndMode : int { stop = 0, pause = 1, repeat = 2, next = 3, goto_ = 4 };
Q_ENUM_NS(PlaylistEndMode)

// What happens after the last repetition. Numbered differently from
// PlaylistEndMode and without `repeat`: never cast one into the other.
enum class PlaylistRepeatEndMode : int { stop = 0, pause = 1, next = 2, goto_ = 3 };
Q_ENUM_NS(PlaylistRepeatEndMode)

enum class PlaylistItemColor : int { default_ = 0, red = 1, yellow = 2, blue = 3, green = 4 };
Q_ENUM_NS(PlaylistItemColor)

// Items of a `bgm` playlist run on the BGM player, not ON AIR.
enum class PlaylistMode : int { standard = 0, bgm = 1 };
Q_ENUM_NS(PlaylistMode)

// `uvc` stands for every live source; the form of the item's file path tells
// a camera, live audio, network video and DeckLink apart.
enum class PlaylistSourceType : int { file = 0, uvc = 1, powerpoint = 2, pdf = 3 };
Q_ENUM_NS(PlaylistSourceType)

enum class PlaylistMediaType : int {
    unknown = 0, video = 1, audio = 2, stillImage = 3, presentation = 4, pdf = 5
};
Q_ENUM_NS(PlaylistMediaType)

// How a presentation was brought in: a live slide show of the original
// (`native`), one rendered video, or one still image per slide.
enum class PlaylistPowerPointMode : int { none = 0, native = 1, video = 2, pngSequence = 3 };
Q_ENUM_NS(PlaylistPowerPointMode)

enum class PlaylistBulkOperation : int {
    PlayOnce = 0, RepeatAll = 1, Shuffle = 2, BgmMode = 3, StandardMode = 4,
    Clear = 5, Undo = 6, Delete = 7
};
Q_ENUM_NS(PlaylistBulkOperation)

// Where a replacing document came from; it only selects the messages.
enum class PlaylistRestoreSource : int {
    OperatorImport = 0,   // a file the operator chose
    PreviousSession = 1,  // the previous session's playlist file
};
Q_ENUM_NS(PlaylistRestoreSource)

} // namespace playlist_enums

using playlist_enums::PlaylistStartMode;
using playlist_enums::PlaylistEndMode;
using playlist_enums::PlaylistRepeatEndMode;
using playlist_enums::PlaylistItemColor;
using playlist_enums::PlaylistMode;
using playlist_enums::PlaylistSourceType;
using playlist_enums::PlaylistMediaType;
using playlist_enums::PlaylistPowerPointMode;
using playlist_enums::PlaylistBulkOperation;
using playlist_enums::PlaylistRestoreSource;

} // namespace tarnix
