#include "control/control_request.h"

#include "playlist/playlist_enums.h"
#include "shell/ordered_json.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMetaEnum>
#include <QStringList>

#include <cmath>
#include <limits>

namespace tarnix {

namespace {

// JSON numbers are doubles: integers beyond 2^53 are not exact.
constexpr double kLargestExactInteger = 9007199254740992.0;

template <typename Enum>
QVariant enumValue(const QString &key, QString *error)
{
    const QMetaEnum meta = QMetaEnum::fromType<Enum>();
    QByteArray name = key.toLatin1();
    bool found = false;
    int value = meta.keyToValue(name.constData(), &found);
    if (!found) {
        // The C++ keywords carry a trailing underscore ("goto_"); the plain
        // word of the document texts is accepted as well.
        name.append('_');
        value = meta.keyToValue(name.constData(), &found);
    }
    if (!found) {
        *error = QStringLiteral("unknown value \"%1\" of %2").arg(key, QLatin1String(meta.name()));
        return {};
    }
    return QVariant::fromValue(static_cast<Enum>(value));
}

QVariant decodeEnum(const QString &type, const QString &key, QString *error)
{
    if (type == QLatin1String("PlaylistStartMode")) return enumValue<PlaylistStartMode>(key, error);
    if (type == QLatin1String("PlaylistEndMode")) return enumValue<PlaylistEndMode>(key, error);
    if (type == QLatin1String("PlaylistRepeatEndMode")) return enumValue<PlaylistRepeatEndMode>(key, error);
    if (type == QLatin1String("PlaylistItemColor")) return enumValue<PlaylistItemColor>(key, error);
    if (type == QLatin1String("PlaylistMode")) return enumValue<PlaylistMode>(key, error);
    if (type == QLatin1String("PlaylistSourceType")) return enumValue<PlaylistSourceType>(key, error);
    if (type == QLatin1String("PlaylistMediaType")) return enumValue<PlaylistMediaType>(key, error);
    if (type == QLatin1String("PlaylistPowerPointMode")) return enumValue<PlaylistPowerPointMode>(key, error);
    if (type == QLatin1String("PlaylistBulkOperation")) return enumValue<PlaylistBulkOperation>(key, error);
    if (type == QLatin1String("PlaylistRestoreSource")) return enumValue<PlaylistRestoreSource>(key, error);
    *error = QStringLiteral("unknown enumeration \"%1\"").arg(type);
    return {};
}

bool integralNumber(const QJsonValue &value, double lowest, double highest, double *out)
{
    if (!value.isDouble())
        return false;
    const double number = value.toDouble();
    if (std::trunc(number) != number || number < lowest || number > highest)
        return false;
    *out = number;
    return true;
}

QVariant decodeInt64(const QJsonValue &value, QString *error)
{
    if (value.isString()) {
        bool ok = false;
        const qint64 number = value.toString().toLongLong(&ok, 10);
        if (ok)
            return QVariant::fromValue(number);
    } else {
        double number = 0;
        if (integralNumber(value, -kLargestExactInteger, kLargestExactInteger, &number))
            return QVariant::fromValue(qint64(number));
    }
    *error = QStringLiteral("int64 needs an integer or its decimal text");
    return {};
}

QVariant decodeUInt64(const QJsonValue &value, QString *error)
{
    if (value.isString()) {
        const QString text = value.toString();
        bool ok = false;
        const quint64 number = text.toULongLong(&ok, 10);
        // toULongLong accepts a sign; an ID never has one.
        if (ok && !text.startsWith(QLatin1Char('-')) && !text.startsWith(QLatin1Char('+')))
            return QVariant::fromValue(number);
    }
    *error = QStringLiteral("uint64 needs its decimal text");
    return {};
}

QVariant decodeStrings(const QJsonValue &value, QString *error)
{
    if (value.isArray()) {
        QStringList strings;
        for (const QJsonValue &entry : value.toArray()) {
            if (!entry.isString()) {
                *error = QStringLiteral("strings needs an array of strings");
                return {};
            }
            strings << entry.toString();
        }
        return QVariant::fromValue(strings);
    }
    *error = QStringLiteral("strings needs an array of strings");
    return {};
}

} // namespace

QVariant decodeControlArgument(const QJsonValue &argument, QString *error)
{
    const QJsonObject object = argument.toObject();
    if (!argument.isObject() || object.isEmpty()) {
        *error = QStringLiteral("an argument is an object such as {\"int\":3}");
        return {};
    }
    if (object.size() == 2 && object.contains(QLatin1String("enum")) && object.contains(QLatin1String("value"))) {
        const QJsonValue type = object.value(QLatin1String("enum"));
        const QJsonValue key = object.value(QLatin1String("value"));
        if (type.isString() && key.isString())
            return decodeEnum(type.toString(), key.toString(), error);
        *error = QStringLiteral("enum needs the enumeration's name and a value name");
        return {};
    }
    if (object.size() != 1) {
        *error = QStringLiteral("unknown argument shape");
        return {};
    }
    const QString kind = object.constBegin().key();
    const QJsonValue value = object.constBegin().value();
    if (kind == QLatin1String("int")) {
        double number = 0;
        if (integralNumber(value, std::numeric_limits<int>::min(), std::numeric_limits<int>::max(), &number))
            return QVariant::fromValue(int(number));
        *error = QStringLiteral("int needs an integer in range");
        return {};
    }
    if (kind == QLatin1String("int64"))
        return decodeInt64(value, error);
    if (kind == QLatin1String("uint64"))
        return decodeUInt64(value, error);
    if (kind == QLatin1String("double") && value.isDouble())
        return QVariant::fromValue(value.toDouble());
    if (kind == QLatin1String("string") && value.isString())
        return QVariant::fromValue(value.toString());
    if (kind == QLatin1String("strings"))
        return decodeStrings(value, error);
    if (kind == QLatin1String("bool") && value.isBool())
        return QVariant::fromValue(value.toBool());
    if (kind == QLatin1String("json") && value.isObject())
        return QVariant::fromValue(value.toObject());
    *error = QStringLiteral("unknown argument shape \"%1\"").arg(kind);
    return {};
}

ControlRequest parseControlRequest(const QByteArray &line)
{
    ControlRequest request;
    QJsonParseError parseError;
    const QJsonDocument document = QJsonDocument::fromJson(line, &parseError);
    if (parseError.error != QJsonParseError::NoError || !document.isObject()) {
        request.error = parseError.error != QJsonParseError::NoError
            ? QStringLiteral("bad JSON: %1 at offset %2").arg(parseError.errorString()).arg(parseError.offset)
            : QStringLiteral("a request is one JSON object");
        return request;
    }
    const QJsonObject object = document.object();
    if (object.contains(QLatin1String("query"))) {
        const QJsonValue query = object.value(QLatin1String("query"));
        if (object.size() != 1 || !query.isString() || query.toString().isEmpty()) {
            request.error = QStringLiteral("unknown query");
        } else if (query.toString() == QLatin1String("state")) {
            request.kind = ControlRequest::Kind::StateQuery;
        } else {
            request.kind = ControlRequest::Kind::Query;
            request.query = query.toString();
        }
        return request;
    }
    if (object.contains(QLatin1String("command"))) {
        const QJsonValue command = object.value(QLatin1String("command"));
        if (!command.isString() || command.toString().isEmpty() || object.contains(QLatin1String("action"))) {
            request.error = QStringLiteral("a command is named by a string");
            return request;
        }
        request.kind = ControlRequest::Kind::Command;
        request.command = command.toString();
        request.commandRequest = object;
        return request;
    }
    const QJsonValue action = object.value(QLatin1String("action"));
    if (!action.isString()) {
        request.error = QStringLiteral("a request names an action or a query");
        return request;
    }
    for (auto it = object.constBegin(); it != object.constEnd(); ++it) {
        if (it.key() != QLatin1String("action") && it.key() != QLatin1String("args")) {
            request.error = QStringLiteral("unknown member \"%1\"").arg(it.key());
            return request;
        }
    }
    bool known = false;
    const int number =
        QMetaEnum::fromType<ControllerOperations::Action>().keyToValue(action.toString().toLatin1().constData(), &known);
    if (!known || number < 0 || number >= ControllerOperations::Count) {
        request.error = QStringLiteral("unknown action \"%1\"").arg(action.toString());
        return request;
    }
    const QJsonValue args = object.value(QLatin1String("args"));
    if (!args.isUndefined() && !args.isArray()) {
        request.error = QStringLiteral("args is an array");
        return request;
    }
    const QJsonArray values = args.toArray();
    for (qsizetype index = 0; index < values.size(); ++index) {
        QString error;
        const QVariant value = decodeControlArgument(values.at(index), &error);
        if (!value.isValid()) {
            request.error = QStringLiteral("argument %1: %2").arg(index).arg(error);
            request.arguments.clear();
            return request;
        }
        request.arguments << value;
    }
    request.kind = ControlRequest::Kind::Invoke;
    request.action = ControllerOperations::Action(number);
    return request;
}

QString controlInvokedAnswer(quint64 requestId, ControllerOperations::Status status)
{
    return OrderedJsonObject()
        .add(QStringLiteral("id"), qint64(requestId))
        .add(QStringLiteral("status"), ControllerOperations::statusName(status))
        .toString();
}

QString controlErrorAnswer(const QString &text)
{
    return OrderedJsonObject().add(QStringLiteral("error"), text).toString();
}

QString controlOkAnswer()
{
    return OrderedJsonObject().add(QStringLiteral("ok"), true).toString();
}

} // namespace tarnix
