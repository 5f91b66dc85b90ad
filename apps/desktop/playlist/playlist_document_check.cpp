#include "playlist/playlist_document_check.h"

#include "playlist/json_values.h"
#include "playlist/macro_json.h"
#include "playlist/playlist_validation.h"

#include <QHash>
#include <QSet>
#include <QUuid>

#include <limits>

namespace tarnix {
namespace {

constexpr quint64 kHighestId = std::numeric_limits<quint64>::max();

bool fail(QString *error, const QString &text)
{
    if (error)
        *error = text;
    return false;
}

QString exhaustedText()
{
    return QStringLiteral("The playlist item ID range is exhausted.");
}

} // namespace

std::optional<quint64> computeNextItemId(const PlaylistDocument &document, QString *error)
{
    if (document.nextItemId == 0) {
        fail(error, QStringLiteral("The next playlist item ID must be positive."));
        return std::nullopt;
    }
    quint64 next = document.nextItemId;
    bool exhausted = false;
    auto raiseAbove = [&](quint64 id) {
        if (id == kHighestId)
            exhausted = true;
        else if (id >= next)
            next = id + 1;
    };
    for (const PlaylistItem &item : document.items)
        raiseAbove(item.id);
    for (const MacroDefinition &macro : document.macros) {
        for (const MacroStep &step : macro.steps) {
            if (step.documentId != document.documentId)
                continue;
            raiseAbove(step.itemId);
            const QJsonValue target = step.settingsPatch.value(QLatin1String("gotoTargetItemId"));
            if (target.isString()) {
                if (const auto id = itemIdFromText(target.toString()))
                    raiseAbove(*id);
            }
        }
    }
    if (exhausted) {
        fail(error, exhaustedText());
        return std::nullopt;
    }
    if (error)
        error->clear();
    return next;
}

bool validatePlaylistDocument(const PlaylistDocument &document, QString *error)
{
    if (QUuid::fromString(document.documentId).isNull())
        return fail(error, QStringLiteral("Invalid playlist document ID."));
    if (!validateMacros(document.macros, error))
        return false;
    if (!computeNextItemId(document, error))
        return false;
    if (document.manualCrossfadeDurationMs < 100 || document.manualCrossfadeDurationMs > 60000)
        return fail(error, QStringLiteral("Invalid manual crossfade duration."));
    if (document.playlists.isEmpty())
        return fail(error, QStringLiteral("The playlist document contains no playlists."));

    QHash<qint32, quint32> rowsSoFar;
    rowsSoFar.reserve(document.playlists.size());
    for (const Playlist &playlist : document.playlists) {
        if (playlist.number < 1)
            return fail(error, QStringLiteral("Playlist numbers must be positive."));
        if (rowsSoFar.contains(playlist.number))
            return fail(error, QStringLiteral("Playlist number %1 is duplicated.").arg(playlist.number));
        if (playlist.mode != PlaylistMode::standard && playlist.mode != PlaylistMode::bgm)
            return fail(error, QStringLiteral("Playlist %1 has an invalid mode.").arg(playlist.number));
        rowsSoFar.insert(playlist.number, 0);
    }
    if (!rowsSoFar.contains(document.activePlaylistNumber))
        return fail(error, QStringLiteral("The active playlist number does not exist."));

    QSet<quint64> ids;
    ids.reserve(document.items.size());
    quint64 highest = 0;
    for (const PlaylistItem &item : document.items) {
        if (item.id == 0)
            return fail(error, QStringLiteral("Playlist item ID 0 is invalid."));
        if (ids.contains(item.id))
            return fail(error, QStringLiteral("Playlist item ID %1 is duplicated.").arg(item.id));
        ids.insert(item.id);
        highest = std::max(highest, item.id);
        const auto rows = rowsSoFar.find(item.playlistNumber);
        if (rows == rowsSoFar.end()) {
            return fail(error, QStringLiteral("Item ID %1 refers to missing playlist %2.")
                                   .arg(item.id).arg(item.playlistNumber));
        }
        if (item.position != *rows + 1) {
            return fail(error, QStringLiteral("Playlist %1 has an invalid item order at ID %2.")
                                   .arg(item.playlistNumber).arg(item.id));
        }
        ++*rows;
        if (!isValidItemSettings(item.settings))
            return fail(error, QStringLiteral("Item ID %1 contains invalid settings.").arg(item.id));
        if (!isValidItemColor(item.color))
            return fail(error, QStringLiteral("Item ID %1 has an invalid display color.").arg(item.id));
        if (!isValidPowerPointMode(item.powerPointMode, item.sourceType, item.mediaType))
            return fail(error, QStringLiteral("Item ID %1 has an invalid PowerPoint mode.").arg(item.id));
        if (!isValidMediaType(item.mediaType))
            return fail(error, QStringLiteral("Item ID %1 has an invalid media type.").arg(item.id));
        const int source = static_cast<int>(item.sourceType);
        if (source < 0 || source > 3)
            return fail(error, QStringLiteral("Item ID %1 has an invalid source type.").arg(item.id));
        if (item.sourceType != PlaylistSourceType::uvc) {
            if (item.filePath.trimmed().isEmpty())
                return fail(error, QStringLiteral("File item ID %1 has no media file path.").arg(item.id));
        } else if (isLiveAudioUri(item.filePath)) {
            if (liveAudioDeviceId(item.filePath).isEmpty() || item.displayName.isEmpty()
                || item.mediaType != PlaylistMediaType::audio || item.settings.inPointMs != 0
                || item.settings.outPointMs) {
                return fail(error, QStringLiteral("Live audio item ID %1 has invalid input details.").arg(item.id));
            }
        } else if (item.filePath.isEmpty() || item.displayName.isEmpty()) {
            return fail(error, QStringLiteral("UVC item ID %1 has no device path or display name.").arg(item.id));
        }
    }
    if (highest > kHighestId - 1)
        return fail(error, exhaustedText());
    for (const PlaylistItem &item : document.items) {
        const quint64 target = item.settings.gotoTargetItemId;
        if (target != 0 && !ids.contains(target)) {
            return fail(error, QStringLiteral("Item ID %1 refers to missing GOTO target %2.")
                                   .arg(item.id).arg(target));
        }
    }
    if (error)
        error->clear();
    return true;
}

} // namespace tarnix
