#include "playlist/playlist_document.h"

#include "playlist/json_values.h"
#include "playlist/macro_json.h"
#include "playlist/playlist_document_check.h"
#include "playlist/playlist_json_budget.h"
#include "playlist/playlist_json_writer.h"
#include "playlist/playlist_text.h"
#include "playlist/playlist_validation.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>
#include <QUuid>

#include <limits>

namespace tarnix {
namespace {

using namespace playlist_document_limits;

constexpr qint64 kInt32Max = std::numeric_limits<qint32>::max();
constexpr qint64 kInt32Min = std::numeric_limits<qint32>::min();

// Typed reads at a path, each giving the message that names the place.
class Reader
{
public:
    explicit Reader(QString *error) : m_error(error) {}

    bool fail(const QString &text)
    {
        if (m_error)
            *m_error = text;
        return false;
    }

    bool string(const QJsonObject &o, const QString &path, const char *key, QString &out)
    {
        const QJsonValue v = o.value(QLatin1String(key));
        if (!v.isString())
            return fail(QStringLiteral("%1.%2 must be a string.").arg(path, QLatin1String(key)));
        out = v.toString();
        return true;
    }

    bool boolean(const QJsonObject &o, const QString &path, const char *key, bool &out)
    {
        const QJsonValue v = o.value(QLatin1String(key));
        if (!v.isBool())
            return fail(QStringLiteral("%1.%2 must be true or false.").arg(path, QLatin1String(key)));
        out = v.toBool();
        return true;
    }

    template <typename T>
    bool integer(const QJsonObject &o, const QString &path, const char *key, qint64 low, qint64 high, T &out)
    {
        const QJsonValue v = o.value(QLatin1String(key));
        if (!v.isDouble())
            return fail(QStringLiteral("%1.%2 must be an integer.").arg(path, QLatin1String(key)));
        const auto n = jsonInteger(v, low, high);
        if (!n) {
            return fail(QStringLiteral("%1.%2 is outside the supported integer range.")
                            .arg(path, QLatin1String(key)));
        }
        out = static_cast<T>(*n);
        return true;
    }

    // A required enum text: a missing or non-string value is the string
    // reader's failure, an unknown text is "not supported".
    template <typename Enum>
    bool enumText(const QJsonObject &o, const QString &path, const char *key, Enum &out)
    {
        QString text;
        if (!string(o, path, key, text))
            return false;
        const auto value = fromText<Enum>(text);
        if (!value)
            return fail(QStringLiteral("%1.%2 is not supported.").arg(path, QLatin1String(key)));
        out = *value;
        return true;
    }

    bool fade(const QJsonObject &settings, const QString &path, const char *key, PlaylistFadeSetting &out)
    {
        const QJsonValue v = settings.value(QLatin1String(key));
        if (!v.isObject())
            return fail(QStringLiteral("%1.%2 must be an object.").arg(path, QLatin1String(key)));
        const QJsonObject o = v.toObject();
        const QString fadePath = path + u'.' + QLatin1String(key);
        return boolean(o, fadePath, "enabled", out.enabled)
            && integer(o, fadePath, "durationMs", 0, maxMilliseconds, out.durationMs);
    }

    bool settings(const QJsonObject &o, const QString &path, PlaylistItemSettings &s);
    bool item(const QJsonValue &value, const QString &path, PlaylistItem &item);

private:
    QString *m_error;
};

bool Reader::settings(const QJsonObject &o, const QString &path, PlaylistItemSettings &s)
{
    if (!integer(o, path, "inPointMs", 0, maxMilliseconds, s.inPointMs))
        return false;
    if (const QJsonValue out = o.value(QLatin1String("outPointMs")); !out.isNull()) {
        qint64 outPoint = 0;
        if (!integer(o, path, "outPointMs", 0, maxMilliseconds, outPoint))
            return false;
        s.outPointMs = outPoint;
    }
    if (!enumText(o, path, "startMode", s.startMode) || !enumText(o, path, "endMode", s.endMode)
        || !fade(o, path, "fadeIn", s.fadeIn) || !fade(o, path, "fadeOut", s.fadeOut)
        || !fade(o, path, "endCrossfade", s.endCrossfade)) {
        return false;
    }
    if (const QJsonValue target = o.value(QLatin1String("gotoTargetItemId"));
        !target.isUndefined() && !target.isNull()) {
        const auto id = target.isString() ? itemIdFromText(target.toString()) : std::nullopt;
        if (!id || *id == 0) {
            return fail(QStringLiteral("%1.gotoTargetItemId must be a positive integer string or null.")
                            .arg(path));
        }
        s.gotoTargetItemId = *id;
    }
    const QJsonValue count = o.value(QLatin1String("repeatCount"));
    const QJsonValue endMode = o.value(QLatin1String("repeatEndMode"));
    if (count.isUndefined() != endMode.isUndefined())
        return fail(QStringLiteral("%1.repeatCount and %1.repeatEndMode must be provided together.").arg(path));
    if (!count.isUndefined() && !count.isNull() && !integer(o, path, "repeatCount", 1, 9999, s.repeatCount))
        return false;
    if (!endMode.isUndefined() && !endMode.isNull()) {
        const auto mode = fromText<PlaylistRepeatEndMode>(endMode.toString());
        if (!endMode.isString() || !mode)
            return fail(QStringLiteral("%1.repeatEndMode is not supported.").arg(path));
        s.repeatEndMode = *mode;
    }
    auto optionalInteger = [&](const char *key, qint64 low, qint64 high, qint32 &out) {
        return !o.contains(QLatin1String(key)) || integer(o, path, key, low, high, out);
    };
    return optionalInteger("nominalEqLowTenthsDb", -150, 150, s.nominalEqLowTenthsDb)
        && optionalInteger("nominalEqMidTenthsDb", -150, 150, s.nominalEqMidTenthsDb)
        && optionalInteger("nominalEqHighTenthsDb", -150, 150, s.nominalEqHighTenthsDb)
        && optionalInteger("nominalAudioDelayFrames", 0, 6, s.nominalAudioDelayFrames)
        && integer(o, path, "nominalVolumeTenthsDb", kInt32Min, kInt32Max, s.nominalVolumeTenthsDb);
}

bool Reader::item(const QJsonValue &value, const QString &path, PlaylistItem &item)
{
    const QJsonObject o = value.toObject();
    if (!string(o, path, "filePath", item.filePath) || !string(o, path, "displayName", item.displayName)
        || !enumText(o, path, "sourceType", item.sourceType)
        || !enumText(o, path, "mediaType", item.mediaType)) {
        return false;
    }
    if (o.contains(QLatin1String("powerPointMode"))) {
        if (!enumText(o, path, "powerPointMode", item.powerPointMode))
            return false;
    } else {
        item.powerPointMode = item.sourceType == PlaylistSourceType::powerpoint
                && item.mediaType == PlaylistMediaType::presentation
            ? PlaylistPowerPointMode::native
            : PlaylistPowerPointMode::none;
    }
    if (!isValidPowerPointMode(item.powerPointMode, item.sourceType, item.mediaType))
        return fail(QStringLiteral("%1.powerPointMode does not match its source and media types.").arg(path));
    if (o.contains(QLatin1String("color")) && !enumText(o, path, "color", item.color))
        return false;
    if (o.contains(QLatin1String("separatorBelow")) && !boolean(o, path, "separatorBelow", item.separatorBelow))
        return false;
    const QString settingsPath = path + QStringLiteral(".settings");
    const QJsonValue settingsValue = o.value(QLatin1String("settings"));
    if (!settingsValue.isObject())
        return fail(QStringLiteral("%1 must be an object.").arg(settingsPath));
    return settings(settingsValue.toObject(), settingsPath, item.settings);
}

bool parseRoot(const QJsonObject &root, PlaylistDocument &document, Reader &r,
               const PlaylistCancelFlag &cancelFlag, QString *error)
{
    const QString rootPath = QStringLiteral("root");
    if (root.value(QLatin1String("format")).toString() != u"tarnix-playlist"
        || !root.value(QLatin1String("format")).isString()) {
        return r.fail(QStringLiteral("This is not a TARNIX playlist document."));
    }
    int version = 0;
    if (!r.integer(root, rootPath, "version", 1, kInt32Max, version))
        return false;
    if (version != 1)
        return r.fail(QStringLiteral("Playlist document version %1 is not supported.").arg(version));
    if (root.contains(QLatin1String("nextItemId"))) {
        QString text;
        if (!r.string(root, rootPath, "nextItemId", text))
            return false;
        const auto next = itemIdFromText(text);
        if (!next || *next == 0 || QString::number(*next) != text)
            return r.fail(QStringLiteral("root.nextItemId must be a positive integer ID string."));
        document.nextItemId = *next;
    }
    if (root.contains(QLatin1String("documentId"))) {
        const QJsonValue id = root.value(QLatin1String("documentId"));
        if (!id.isString() || QUuid::fromString(id.toString()).isNull())
            return r.fail(QStringLiteral("root.documentId must be a UUID."));
        document.documentId = id.toString();
    } else {
        document.documentId = QUuid::createUuid().toString(QUuid::WithoutBraces);
    }
    auto macros = parseMacros(root.value(QLatin1String("macros")), error);
    if (!macros)
        return false;
    document.macros = std::move(*macros);
    if (root.contains(QLatin1String("manualCrossfadeDurationMs"))
        && !r.integer(root, rootPath, "manualCrossfadeDurationMs", 100, 60000,
                      document.manualCrossfadeDurationMs)) {
        return false;
    }
    if (!r.integer(root, rootPath, "activePlaylistNumber", 1, kInt32Max, document.activePlaylistNumber))
        return false;
    const QJsonValue playlistsValue = root.value(QLatin1String("playlists"));
    if (!playlistsValue.isArray())
        return r.fail(QStringLiteral("root.playlists must be an array."));
    const QJsonArray playlists = playlistsValue.toArray();
    if (playlists.size() > maxPlaylists)
        return r.fail(QStringLiteral("Playlist document exceeds %1 playlists.").arg(maxPlaylists));

    QSet<qint32> numbers;
    QSet<quint64> ids;
    for (qsizetype p = 0; p < playlists.size(); ++p) {
        if (playlistCancelled(cancelFlag, error))
            return false;
        const QString path = QStringLiteral("root.playlists[%1]").arg(p);
        const QJsonValue value = playlists.at(p);
        if (!value.isObject())
            return r.fail(QStringLiteral("%1 must be an object.").arg(path));
        const QJsonObject o = value.toObject();
        Playlist playlist;
        if (o.contains(QLatin1String("manualCrossfadeEnabled"))
            && !r.boolean(o, path, "manualCrossfadeEnabled", playlist.manualCrossfadeEnabled)) {
            return false;
        }
        if (!r.integer(o, path, "number", 1, kInt32Max, playlist.number) || !r.string(o, path, "name", playlist.name))
            return false;
        if (o.contains(QLatin1String("mode"))) {
            const QJsonValue mode = o.value(QLatin1String("mode"));
            const auto parsed = fromText<PlaylistMode>(mode.toString());
            if (!mode.isString() || !parsed)
                return r.fail(QStringLiteral("%1.mode is not supported.").arg(path));
            playlist.mode = *parsed;
        }
        if (numbers.contains(playlist.number))
            return r.fail(QStringLiteral("Playlist number %1 is duplicated.").arg(playlist.number));
        numbers.insert(playlist.number);
        const QJsonValue itemsValue = o.value(QLatin1String("items"));
        if (!itemsValue.isArray())
            return r.fail(QStringLiteral("%1.items must be an array.").arg(path));
        const QJsonArray items = itemsValue.toArray();
        if (items.size() > maxItems - document.items.size())
            return r.fail(QStringLiteral("Playlist document exceeds %1 items.").arg(maxItems));
        document.playlists.append(playlist);
        for (qsizetype i = 0; i < items.size(); ++i) {
            if (playlistCancelled(cancelFlag, error))
                return false;
            const QString itemPath = QStringLiteral("%1.items[%2]").arg(path).arg(i);
            const QJsonValue itemValue = items.at(i);
            if (!itemValue.isObject())
                return r.fail(QStringLiteral("%1 must be an object.").arg(itemPath));
            PlaylistItem item;
            QString idText;
            if (!r.string(itemValue.toObject(), itemPath, "id", idText))
                return false;
            const auto id = itemIdFromText(idText);
            if (!id || *id == 0)
                return r.fail(QStringLiteral("%1.id must be a positive integer string.").arg(itemPath));
            if (ids.contains(*id))
                return r.fail(QStringLiteral("Playlist item ID %1 is duplicated.").arg(*id));
            ids.insert(*id);
            item.id = *id;
            item.position = static_cast<quint32>(i + 1);
            item.playlistNumber = playlist.number;
            if (!r.item(itemValue, itemPath, item))
                return false;
            document.items.append(std::move(item));
        }
    }
    if (document.playlists.isEmpty())
        return r.fail(QStringLiteral("The playlist document contains no playlists."));
    if (!numbers.contains(document.activePlaylistNumber))
        return r.fail(QStringLiteral("The active playlist number does not exist."));
    const auto next = computeNextItemId(document, error);
    if (!next)
        return false;
    document.nextItemId = *next;
    return true;
}

} // namespace

std::optional<PlaylistDocument> parsePlaylistDocument(const QByteArray &bytes, QString *error,
                                                      const PlaylistCancelFlag &cancelFlag)
{
    Reader r(error);
    if (playlistCancelled(cancelFlag, error))
        return std::nullopt;
    if (bytes.size() > maxBytes) {
        r.fail(QStringLiteral("Playlist JSON exceeds %1 bytes.").arg(maxBytes));
        return std::nullopt;
    }
    QJsonParseError parseError;
    const QJsonDocument json = QJsonDocument::fromJson(bytes, &parseError);
    if (playlistCancelled(cancelFlag, error))
        return std::nullopt;
    if (parseError.error != QJsonParseError::NoError) {
        r.fail(QStringLiteral("Invalid JSON at offset %1: %2").arg(parseError.offset).arg(parseError.errorString()));
        return std::nullopt;
    }
    if (!json.isObject()) {
        r.fail(QStringLiteral("The playlist document root must be an object."));
        return std::nullopt;
    }
    const QJsonObject root = json.object();
    if (!walkPlaylistJsonBudget(root, error, cancelFlag))
        return std::nullopt;
    PlaylistDocument document;
    document.playlists.clear();
    if (!parseRoot(root, document, r, cancelFlag, error))
        return std::nullopt;
    if (error)
        error->clear();
    return document;
}

std::optional<PlaylistDocument> readPlaylistFile(const QString &path, QString *error,
                                                 const PlaylistCancelFlag &cancelFlag)
{
    auto fail = [&](const QString &text) {
        if (error)
            *error = text;
        return std::nullopt;
    };
    if (playlistCancelled(cancelFlag, error))
        return std::nullopt;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return fail(QStringLiteral("Could not open the playlist file:\n%1").arg(file.errorString()));
    const QString tooLarge = QStringLiteral("Playlist file exceeds %1 bytes.").arg(maxBytes);
    if (file.size() > maxBytes)
        return fail(tooLarge);
    QByteArray bytes;
    bytes.reserve(file.size());
    while (!file.atEnd()) {
        if (playlistCancelled(cancelFlag, error))
            return std::nullopt;
        const QByteArray chunk = file.read(readChunkBytes);
        if (chunk.isEmpty()) {
            if (file.error() != QFileDevice::NoError)
                return fail(QStringLiteral("Could not read the playlist file:\n%1").arg(file.errorString()));
            break;
        }
        // The file may grow while it is read.
        if (bytes.size() + chunk.size() > maxBytes)
            return fail(tooLarge);
        bytes.append(chunk);
    }
    return parsePlaylistDocument(bytes, error, cancelFlag);
}

std::optional<LoadedPlaylist> loadPlaylistFile(const QString &path, QString *error,
                                               const PlaylistCancelFlag &cancelFlag)
{
    if (playlistCancelled(cancelFlag, error))
        return std::nullopt;
    auto document = readPlaylistFile(path, error, cancelFlag);
    if (!document || !validatePlaylistDocument(*document, error) || playlistCancelled(cancelFlag, error))
        return std::nullopt;
    LoadedPlaylist loaded{std::move(*document), {}};
    for (PlaylistItem &item : loaded.document.items) {
        if (playlistCancelled(cancelFlag, error))
            return std::nullopt;
        if (item.sourceType == PlaylistSourceType::uvc)
            continue;
        const QFileInfo info(item.filePath);
        item.filePath = info.absoluteFilePath();
        if (item.displayName.isEmpty())
            item.displayName = info.fileName();
        if (!info.isFile())
            loaded.missingItems.insert(item.id);
    }
    if (error)
        error->clear();
    return loaded;
}

QByteArray serializePlaylistDocument(const PlaylistDocument &document)
{
    return writePlaylistJsonText(document).bytes;
}

std::optional<QByteArray> serializeCheckedPlaylistDocument(const PlaylistDocument &document, QString *error)
{
    PlaylistJsonText text = writePlaylistJsonText(document);
    if (text.values > maxValues || text.stringChars > maxTotalStringChars || text.longestString > maxStringChars) {
        // Over a budget: the reader's own walk names which, in its words.
        if (!walkPlaylistJsonBudget(playlistDocumentObject(document), error, {}))
            return std::nullopt;
    }
    if (text.bytes.size() > maxBytes) {
        if (error)
            *error = QStringLiteral("Playlist JSON exceeds %1 bytes.").arg(maxBytes);
        return std::nullopt;
    }
    if (error)
        error->clear();
    return std::move(text.bytes);
}

bool writePlaylistFile(const QString &path, const PlaylistDocument &document, QString *error)
{
    const auto bytes = serializeCheckedPlaylistDocument(document, error);
    if (!bytes)
        return false;
    auto fail = [&](const QString &text) {
        if (error)
            *error = text;
        return false;
    };
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return fail(QStringLiteral("Could not open the playlist file for writing:\n%1").arg(file.errorString()));
    if (file.write(*bytes) != bytes->size()) {
        const QString reason = file.errorString();
        file.cancelWriting();
        return fail(QStringLiteral("Could not write the complete playlist file:\n%1").arg(reason));
    }
    if (!file.commit())
        return fail(QStringLiteral("Could not finish writing the playlist file:\n%1").arg(file.errorString()));
    if (error)
        error->clear();
    return true;
}

} // namespace tarnix
