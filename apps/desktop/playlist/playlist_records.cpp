#include "playlist/playlist_records.h"

#include <QUuid>

namespace tarnix {

PlaylistDocument PlaylistDocument::createNew()
{
    PlaylistDocument document;
    document.playlists.append(Playlist{});
    document.documentId = QUuid::createUuid().toString(QUuid::WithoutBraces);
    return document;
}

void registerPlaylistMetaTypes()
{
    qRegisterMetaType<PlaylistStartMode>();
    qRegisterMetaType<PlaylistEndMode>();
    qRegisterMetaType<PlaylistRepeatEndMode>();
    qRegisterMetaType<PlaylistItemColor>();
    qRegisterMetaType<PlaylistMode>();
    qRegisterMetaType<PlaylistSourceType>();
    qRegisterMetaType<PlaylistMediaType>();
    qRegisterMetaType<PlaylistPowerPointMode>();
    qRegisterMetaType<PlaylistBulkOperation>();
    qRegisterMetaType<PlaylistRestoreSource>();

    qRegisterMetaType<PlaylistFadeSetting>();
    qRegisterMetaType<PlaylistItemSettings>();
    qRegisterMetaType<PlaylistItem>();
    qRegisterMetaType<Playlist>();
    qRegisterMetaType<PlaylistDocument>();
    qRegisterMetaType<QList<PlaylistItem>>();
    qRegisterMetaType<MacroStep>();
    qRegisterMetaType<MacroDefinition>();
}

} // namespace tarnix
