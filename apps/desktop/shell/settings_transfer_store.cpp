#include "shell/settings_transfer_store.h"

#include "shell/settings_store.h"
#include "shell/settings_transfer_rules.h"

#include <QJsonArray>
#include <QList>
#include <QSettings>

#include <optional>

namespace tarnix {

namespace {

QJsonValue toJson(SettingType type, const QVariant &value)
{
    switch (type) {
    case SettingType::Bool: return value.toBool();
    case SettingType::Int: return value.toInt();
    case SettingType::String: return value.toString();
    case SettingType::StringList: return QJsonArray::fromStringList(value.toStringList());
    case SettingType::JsonObject:
    case SettingType::JsonArray: return value.value<QJsonValue>();
    }
    return {};
}

QVariant toStored(SettingType type, const QJsonValue &value)
{
    switch (type) {
    case SettingType::Bool: return value.toBool();
    case SettingType::Int: return int(value.toInteger());
    case SettingType::String: return value.toString();
    case SettingType::StringList: return value.toVariant().toStringList();
    case SettingType::JsonObject:
    case SettingType::JsonArray: return settingJsonText(value);
    }
    return {};
}

bool fail(QString *error, const QString &text)
{
    if (error)
        *error = text;
    return false;
}

} // namespace

QJsonObject readTransferSettings(QSettings &settings)
{
    QJsonObject values;
    for (const QString &key : transferSettingKeys()) {
        const std::optional<SettingDefinition> definition = findSettingDefinition(key);
        if (!definition)
            continue;
        if (key == QLatin1String("testPatterns/entries") && !settings.contains(key)) {
            values.insert(key, QJsonValue(QJsonValue::Null));
            continue;
        }
        values.insert(key, toJson(definition->type, convertSettingValue(*definition, settings.value(key))));
    }
    return values;
}

bool writeTransferSettings(QSettings &settings, const QJsonObject &checked, QString *error)
{
    if (settings.status() != QSettings::NoError)
        return fail(error, QStringLiteral("The settings file %1 could not be read.").arg(settings.fileName()));
    if (!settings.isWritable())
        return fail(error, QStringLiteral("The settings file %1 is not writable.").arg(settings.fileName()));

    struct Previous {
        QString key;
        std::optional<QVariant> value;
    };
    QList<Previous> previous;
    for (auto it = checked.begin(); it != checked.end(); ++it) {
        const std::optional<SettingDefinition> definition = findSettingDefinition(it.key());
        if (!definition || !isTransferSetting(it.key()))
            continue;
        previous.append({it.key(), settings.contains(it.key()) ? std::optional(settings.value(it.key())) : std::nullopt});
        settings.setValue(it.key(), toStored(definition->type, it.value()));
    }
    settings.sync();
    if (settings.status() == QSettings::NoError)
        return true;

    // The file kept its old text; so must what this process reads from it.
    for (const Previous &entry : std::as_const(previous)) {
        if (entry.value)
            settings.setValue(entry.key, *entry.value);
        else
            settings.remove(entry.key);
    }
    settings.sync();
    return fail(error, QStringLiteral("The settings file %1 could not be written.").arg(settings.fileName()));
}

} // namespace tarnix
