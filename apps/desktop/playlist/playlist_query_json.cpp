#include "playlist/playlist_query_json.h"

#include "playlist/playlist_model.h"
#include "playlist/playlist_text.h"
#include "shell/localized_text.h"
#include "shell/ordered_json.h"

namespace tarnix {

namespace {

QString numberOrNull(const std::optional<qint64> &value)
{
    return value ? QString::number(*value) : QStringLiteral("null");
}

QString statusOf(const PlaylistModel &model, quint64 itemId)
{
    if (const std::optional<PlaylistPendingState> pending = model.pendingState(itemId)) {
        return pending->phase >= qint32(PlaylistPendingPhase::AnalysisWaiting) ? QStringLiteral("analysing")
                                                                               : QStringLiteral("converting");
    }
    return model.isOffline(itemId) ? QStringLiteral("offline") : QStringLiteral("ready");
}

QString itemJson(const PlaylistModel &model, const PlaylistItem &item)
{
    OrderedJsonObject object;
    object.add(QStringLiteral("id"), QString::number(item.id));
    object.add(QStringLiteral("displayName"), item.displayName);
    object.add(QStringLiteral("filePath"), item.filePath);
    object.add(QStringLiteral("sourceType"), toText(item.sourceType));
    object.add(QStringLiteral("mediaType"), toText(item.mediaType));
    object.add(QStringLiteral("status"), statusOf(model, item.id));
    object.addEncoded(QStringLiteral("durationMs"), numberOrNull(model.knownDuration(item.id)));
    object.add(QStringLiteral("inPointMs"), item.settings.inPointMs);
    object.addEncoded(QStringLiteral("outPointMs"), numberOrNull(item.settings.outPointMs));
    object.add(QStringLiteral("startMode"), toText(item.settings.startMode));
    object.add(QStringLiteral("endMode"), toText(item.settings.endMode));
    return object.toString();
}

} // namespace

QString playlistDisplayName(const PlaylistModel &model, qint32 number)
{
    const QString name = model.playlistName(number);
    if (!name.isEmpty())
        return name;
    return LocalizedText(QStringLiteral("playlist.default_name"), {QString::number(number)},
                         QStringLiteral("Playlist %1"))
        .toString();
}

QString playlistsQueryJson(const PlaylistModel &model)
{
    QStringList playlists;
    for (qint32 number : model.playlistNumbers()) {
        QStringList items;
        for (quint64 itemId : model.itemIds(number)) {
            if (const std::optional<PlaylistItem> item = model.item(itemId))
                items << itemJson(model, *item);
        }
        OrderedJsonObject playlist;
        playlist.add(QStringLiteral("number"), qint64(number));
        playlist.add(QStringLiteral("name"), playlistDisplayName(model, number));
        playlist.add(QStringLiteral("mode"), toText(model.playlistMode(number)));
        playlist.addEncoded(QStringLiteral("items"), QLatin1Char('[') + items.join(QLatin1Char(',')) + QLatin1Char(']'));
        playlists << playlist.toString();
    }
    OrderedJsonObject answer;
    answer.add(QStringLiteral("activePlaylistNumber"), qint64(model.activePlaylistNumber()));
    answer.addEncoded(QStringLiteral("playlists"), QLatin1Char('[') + playlists.join(QLatin1Char(',')) + QLatin1Char(']'));
    return answer.toString();
}

} // namespace tarnix
