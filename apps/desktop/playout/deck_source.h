#pragma once

#include "playlist/playlist_enums.h"

#include <QObject>
#include <QString>
#include <QtGlobal>

#include <optional>

// The deck's kinds sit in their own namespace for the same reason as the
// playlist enums: Q_NAMESPACE gives a namespace exactly one meta-object. Their
// meta-enums let a test walk every value, so a kind added to one enum and not
// mapped to the others fails at once.
namespace tarnix {
namespace deck_enums {
Q_NAMESPACE

// What a deck is asked to play.
enum class DeckSourceKind : int {
    File = 0,
    Uvc = 1,
    PowerPoint = 2,
    Pdf = 3,
};
Q_ENUM_NS(DeckSourceKind)

// What a deck session holds now, None before anything was prepared.
enum class DeckSessionKind : int {
    None = 0,
    File = 1,
    Uvc = 2,
    PowerPoint = 3,
    Pdf = 4,
};
Q_ENUM_NS(DeckSessionKind)
} // namespace deck_enums

using deck_enums::DeckSessionKind;
using deck_enums::DeckSourceKind;

enum class PreparationStatus : int {
    Idle = 0,
    Preparing = 1,
    Ready = 2,
    Failed = 3,
};

// The request to prepare a deck.
struct DeckSource {
    DeckSourceKind kind = DeckSourceKind::File;
    // File path, device id, "live-audio://" or "network-video://" URI, or a
    // document path.
    QString source;
    // For UVC: the audio device or source that goes with the video.
    QString mappedAudio;
    // In point in ms; 0 for anything but a file.
    qint64 inMs = 0;
    // Out point in ms, -1 for none.
    qint64 outMs = -1;
    // Playback rate; 1.0 for anything but a file.
    double rate = 1.0;
};

// A file request is valid with a source, an in point of at least 0, no out
// point or one after the in point, and a finite rate above 0.
bool isValidFileSource(const DeckSource &request);

// The three kinds of source are told apart by name, never by number: an
// item's source type, what a deck is asked to play, what a deck holds.
// nullopt (or None) for a value that has no counterpart.
std::optional<DeckSourceKind> deckSourceKindFor(PlaylistSourceType type);
std::optional<PlaylistSourceType> playlistSourceTypeFor(DeckSourceKind kind);
DeckSessionKind sessionKindFor(DeckSourceKind kind);

} // namespace tarnix
