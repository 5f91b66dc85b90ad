#pragma once

// Builds the playlist item requests tests and bench programs add to a model:
// a file item of media type video, named after its file, with the settings a
// test states and nothing else.
//
//     model.addItems({ItemRequest(path).playing().endMode(PlaylistEndMode::next)});

#include "playlist/playlist_model.h"

#include <QString>

namespace tarnix::testkit {

class ItemRequest
{
public:
    explicit ItemRequest(const QString &path);

    ItemRequest &name(const QString &displayName);
    ItemRequest &type(PlaylistMediaType mediaType);
    ItemRequest &source(PlaylistSourceType sourceType);
    ItemRequest &playlist(qint32 number);
    ItemRequest &settings(const PlaylistItemSettings &settings);
    // Start mode play (the default is pause).
    ItemRequest &playing();
    ItemRequest &endMode(PlaylistEndMode mode);
    ItemRequest &repeat(qint32 count, PlaylistRepeatEndMode after = PlaylistRepeatEndMode::pause);
    ItemRequest &inPoint(qint64 ms);

    operator PlaylistItemRequest() const { return m_request; }
    const PlaylistItemRequest &request() const { return m_request; }

private:
    PlaylistItemRequest m_request;
};

// Creates an empty file at the path unless one exists (the model takes only
// files that exist) and returns the path.
QString touchFile(const QString &path);

} // namespace tarnix::testkit
