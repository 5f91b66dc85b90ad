#include "shell/settings_transfer_document.h"

#include "shell/ordered_json.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonValue>

namespace tarnix {

namespace {

const QString kFormat = QStringLiteral("tarnix-settings");
constexpr int kVersion = 1;

bool fail(QString *error, const QString &text)
{
    if (error)
        *error = text;
    return false;
}

QString encoded(const QJsonValue &value)
{
    switch (value.type()) {
    case QJsonValue::Bool: return value.toBool() ? QStringLiteral("true") : QStringLiteral("false");
    case QJsonValue::Double: return QString::number(value.toInteger());
    case QJsonValue::String: return jsonQuoted(value.toString());
    case QJsonValue::Object:
        return QString::fromUtf8(QJsonDocument(value.toObject()).toJson(QJsonDocument::Compact));
    case QJsonValue::Array:
        return QString::fromUtf8(QJsonDocument(value.toArray()).toJson(QJsonDocument::Compact));
    case QJsonValue::Null:
    case QJsonValue::Undefined: break;
    }
    return QStringLiteral("null");
}

} // namespace

QString settingsExportFileName(const QDateTime &localTime)
{
    return QStringLiteral("tarnix-settings-%1.json").arg(localTime.toString(QStringLiteral("yyyyMMdd-HHmmss")));
}

std::optional<QJsonObject> readSettingsTransferDocument(const QByteArray &bytes, const ShortcutBindingsCheck &shortcutCheck,
                                                        QString *error)
{
    if (bytes.size() > kSettingsTransferMaxBytes) {
        fail(error, QStringLiteral("The settings file is larger than %1 bytes.").arg(kSettingsTransferMaxBytes));
        return std::nullopt;
    }
    QJsonParseError parseError;
    const QJsonDocument document = QJsonDocument::fromJson(bytes, &parseError);
    if (parseError.error != QJsonParseError::NoError) {
        fail(error, QStringLiteral("The settings file is not JSON: %1 at offset %2.")
                        .arg(parseError.errorString())
                        .arg(parseError.offset));
        return std::nullopt;
    }
    if (!document.isObject()) {
        fail(error, QStringLiteral("The settings file is not a JSON object."));
        return std::nullopt;
    }
    const QJsonObject root = document.object();
    if (root.value(QStringLiteral("format")) != QJsonValue(kFormat)) {
        fail(error, QStringLiteral("The file's \"format\" is not \"%1\".").arg(kFormat));
        return std::nullopt;
    }
    if (root.value(QStringLiteral("version")) != QJsonValue(kVersion)) {
        fail(error, QStringLiteral("The file's \"version\" is not %1.").arg(kVersion));
        return std::nullopt;
    }
    if (!root.value(QStringLiteral("settings")).isObject()) {
        fail(error, QStringLiteral("The file's \"settings\" is not an object."));
        return std::nullopt;
    }
    return checkTransferSettings(root.value(QStringLiteral("settings")).toObject(), shortcutCheck, error);
}

QByteArray settingsTransferDocument(const QJsonObject &settings)
{
    OrderedJsonObject members;
    for (const QString &key : transferSettingKeys()) {
        if (settings.contains(key))
            members.addEncoded(key, encoded(settings.value(key)));
    }
    OrderedJsonObject document;
    document.add(QStringLiteral("format"), kFormat)
        .add(QStringLiteral("version"), kVersion)
        .addEncoded(QStringLiteral("settings"), members.toString());
    return document.toString().toUtf8();
}

} // namespace tarnix
