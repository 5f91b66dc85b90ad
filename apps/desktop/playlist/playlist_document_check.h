#pragma once

#include "playlist/playlist_records.h"

#include <QString>

#include <optional>

// The whole-document checks shared by the reader, the model's
// replaceDocument and the bulk undo. Both stop at the first problem and give
// its message through the optional `error`; success clears it.
namespace tarnix {

// The lowest next item id the document allows: its own nextItemId, raised
// above every item id and every id that a macro step of this same document
// names (step target and GOTO target of its patch).
std::optional<quint64> computeNextItemId(const PlaylistDocument &document, QString *error = nullptr);

bool validatePlaylistDocument(const PlaylistDocument &document, QString *error = nullptr);

} // namespace tarnix
