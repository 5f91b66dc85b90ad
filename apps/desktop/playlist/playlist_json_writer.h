#pragma once

#include "playlist/playlist_records.h"

#include <QByteArray>
#include <QJsonObject>

// The writer of the playlist document. It produces exactly what
// QJsonDocument::toJson(Indented) makes of the document's object tree, keys
// sorted as QJsonObject sorts them, but writes the text directly: a
// 10,000-item show saves in a fraction of the time, and it counts the values
// and string characters it writes, so the save can apply the reader's
// budgets without parsing its own output.
namespace tarnix {

struct PlaylistJsonText {
    QByteArray bytes;
    qint64 values = 0;            // objects, arrays and scalars, as the reader counts them
    qint64 stringChars = 0;       // all strings and keys
    qsizetype longestString = 0;  // the longest string or key
};

PlaylistJsonText writePlaylistJsonText(const PlaylistDocument &document);

// The document as a QJsonObject tree: the reference the text writer
// matches, and what a save walks for the reader's exact message when a
// budget is exceeded.
QJsonObject playlistDocumentObject(const PlaylistDocument &document);

} // namespace tarnix
