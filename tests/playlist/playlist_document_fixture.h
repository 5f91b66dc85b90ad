#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QJsonValue>
#include <QStringList>

// A valid document template and path edits on it, for tables of mutations.
namespace playlist_fixture {

inline QJsonObject fade(bool enabled, qint64 durationMs)
{
    return QJsonObject{{"enabled", enabled}, {"durationMs", durationMs}};
}

inline QJsonObject settings()
{
    return QJsonObject{
        {"inPointMs", 0}, {"outPointMs", QJsonValue()}, {"startMode", "pause"}, {"endMode", "next"},
        {"fadeIn", fade(false, 1000)}, {"fadeOut", fade(true, 500)}, {"endCrossfade", fade(false, 1000)},
        {"gotoTargetItemId", QJsonValue()}, {"repeatCount", QJsonValue()}, {"repeatEndMode", "pause"},
        {"nominalVolumeTenthsDb", 0},
    };
}

inline QJsonObject item(const QString &id, const QString &path)
{
    return QJsonObject{{"id", id}, {"filePath", path}, {"displayName", "Clip " + id},
                       {"sourceType", "file"}, {"mediaType", "video"}, {"settings", settings()}};
}

inline QString documentId() { return QStringLiteral("6f1c2a8e-3b7d-4c5e-9a10-2b3c4d5e6f70"); }

inline QJsonObject macro()
{
    const QJsonObject step{{"id", "{0b8e6b2c-61a4-4a36-9c56-1f0a7d3e2b11}"}, {"type", "take"},
                           {"itemId", "2"}, {"documentId", documentId()}};
    return QJsonObject{{"version", 1}, {"id", "{5d7f0c3a-2e4b-4f6a-8b9c-0d1e2f3a4b5c}"},
                       {"name", "Show"}, {"steps", QJsonArray{step}}};
}

inline QJsonObject document()
{
    const QJsonObject first{{"number", 1}, {"name", "Main"}, {"mode", "standard"},
                            {"items", QJsonArray{item("1", "/media/a.mp4"), item("2", "/media/b.mp4")}}};
    const QJsonObject second{{"number", 2}, {"name", ""}, {"items", QJsonArray{}}};
    return QJsonObject{{"format", "tarnix-playlist"}, {"version", 1}, {"documentId", documentId()},
                       {"nextItemId", "3"}, {"macros", QJsonArray{macro()}},
                       {"manualCrossfadeDurationMs", 1000}, {"activePlaylistNumber", 1},
                       {"playlists", QJsonArray{first, second}}};
}

// Sets (or with an undefined value removes) the value at a path such as
// {"playlists", "0", "items", "1", "settings", "fadeIn"}.
inline QJsonValue withValue(const QJsonValue &node, QStringList path, const QJsonValue &value)
{
    if (path.isEmpty())
        return value;
    const QString head = path.takeFirst();
    if (node.isArray()) {
        QJsonArray array = node.toArray();
        const int index = head.toInt();
        if (path.isEmpty() && value.isUndefined())
            array.removeAt(index);
        else
            array[index] = withValue(array.at(index), path, value);
        return array;
    }
    QJsonObject object = node.toObject();
    if (path.isEmpty() && value.isUndefined())
        object.remove(head);
    else
        object[head] = withValue(object.value(head), path, value);
    return object;
}

inline QJsonObject with(const QJsonObject &root, const QString &path, const QJsonValue &value)
{
    return withValue(root, path.split('/'), value).toObject();
}

inline QJsonObject without(const QJsonObject &root, const QString &path)
{
    return withValue(root, path.split('/'), QJsonValue(QJsonValue::Undefined)).toObject();
}

} // namespace playlist_fixture
