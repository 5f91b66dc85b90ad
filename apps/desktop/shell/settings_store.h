#pragma once

#include <QJsonObject>
#include <QJsonValue>
#include <QList>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <optional>

namespace tarnix {

// The kinds of value a setting holds. JSON kinds are stored in the INI file
// as compact JSON text and parsed on read.
enum class SettingType { Bool, Int, String, StringList, JsonObject, JsonArray };

struct SettingDefinition {
    QString key;          // "group/name"; a trailing "/*" stands for any name below the group
    SettingType type = SettingType::String;
    QJsonValue defaultValue;
    // Machine-specific keys (paths of this host) stay out of settings
    // exports and are dropped from imports.
    bool transferable = true;
};

// Every known key with its type and default, in key order. Built once.
const QList<SettingDefinition> &settingDefinitions();

// The same table as one JSON object, key to default value. A transfer of
// settings carries the keys of this table for which settingTransferable()
// holds.
const QJsonObject &settingsDefaults();

// Whether a key travels in a settings export or import; false for unknown
// and machine-specific keys.
bool settingTransferable(const QString &key);

// The definition of a key, matching the patterned groups too
// ("audio/uvcMappings/<device>", "audio/vst/<slot>/<field>").
std::optional<SettingDefinition> findSettingDefinition(const QString &key);

// Converts what a QSettings read returned (in a fresh process an INI file
// yields text and lists of text) to the definition's type. A missing value
// gives the default; a value that cannot be read as the type gives the
// default and a warning.
QVariant convertSettingValue(const SettingDefinition &definition, const QVariant &stored);

// Typed reads of the settings file. An unknown key reads as an invalid
// QVariant (readSetting) or the type's empty value.
QVariant readSetting(const QString &key);
bool readBoolSetting(const QString &key);
int readIntSetting(const QString &key);
QString readStringSetting(const QString &key);
QStringList readStringListSetting(const QString &key);
QJsonValue readJsonSetting(const QString &key);

// Writes one value. JSON kinds accept QJsonObject, QJsonArray, QJsonValue,
// QVariantMap or QVariantList and are stored as compact JSON text. Returns
// false with a text when the key is unknown, the value has the wrong shape
// or the file cannot be written; a refused write changes nothing.
bool writeSetting(const QString &key, const QVariant &value, QString *error = nullptr);

// The text written to the file for a value of a JSON kind.
QString settingJsonText(const QJsonValue &value);

} // namespace tarnix
