#pragma once

#include <QString>
#include <QtGlobal>

namespace tarnix {

// What a deck is asked to play. Numbering is shared with stored state.
enum class DeckSourceKind : int {
    File = 0,
    Uvc = 1,
    PowerPoint = 2,
    Pdf = 3,
};

// What a deck session holds now; one above DeckSourceKind, 0 meaning none.
enum class DeckSessionKind : int {
    None = 0,
    File = 1,
    Uvc = 2,
    PowerPoint = 3,
    Pdf = 4,
};

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

DeckSessionKind sessionKindFor(DeckSourceKind kind);

} // namespace tarnix
