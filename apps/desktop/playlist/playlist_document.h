#pragma once

#include "playlist/playlist_records.h"

#include <QByteArray>
#include <QSet>
#include <QString>

#include <atomic>
#include <memory>
#include <optional>
#include <utility>

// The playlist document: the JSON file of format "tarnix-playlist" that
// holds every playlist, item and macro. A playlist file is outside input, so
// the reader bounds the bytes, walks the parsed tree iteratively within value
// and string budgets before reading a key, and accepts a document whole or
// not at all.
//
// Every function here is free of shared state and may run on any thread.
// `error` is optional: a failure assigns its message, a success clears it.
// `cancelFlag` is optional; when it is set, the next cancellation point
// fails with "Playlist import was cancelled.".
namespace tarnix {

using PlaylistCancelFlag = std::shared_ptr<std::atomic<bool>>;

namespace playlist_document_limits {
constexpr qint64 maxBytes = 16777216;
constexpr qint64 maxValues = 500000;
constexpr qsizetype maxStringChars = 4096;     // UTF-16 code units of one string or key
constexpr qint64 maxTotalStringChars = 8388608;
constexpr int maxPlaylists = 128;
constexpr int maxItems = 10000;
constexpr qint64 readChunkBytes = 65536;
constexpr qint64 maxMilliseconds = 9007199254740991;  // 2^53 - 1
}

std::optional<PlaylistDocument> parsePlaylistDocument(const QByteArray &bytes, QString *error = nullptr,
                                                      const PlaylistCancelFlag &cancelFlag = {});
std::optional<PlaylistDocument> readPlaylistFile(const QString &path, QString *error = nullptr,
                                                 const PlaylistCancelFlag &cancelFlag = {});

// What an import or a restore runs on its worker: read, parse, validate, and
// the file-system work (absolute paths, names, missing files).
struct LoadedPlaylist {
    PlaylistDocument document;
    QSet<quint64> missingItems;  // ids of non-live items whose file is not there
};
std::optional<LoadedPlaylist> loadPlaylistFile(const QString &path, QString *error = nullptr,
                                               const PlaylistCancelFlag &cancelFlag = {});

// The indented JSON of a document, without any check.
QByteArray serializePlaylistDocument(const PlaylistDocument &document);

// The JSON of a document, or nothing when the reader would refuse those
// bytes for their size or budgets; the message is then the reader's. What
// is saved must always load again.
std::optional<QByteArray> serializeCheckedPlaylistDocument(const PlaylistDocument &document,
                                                           QString *error = nullptr);

// Writes through QSaveFile, so a failure leaves the old file as it was.
bool writePlaylistFile(const QString &path, const PlaylistDocument &document, QString *error = nullptr);

} // namespace tarnix
