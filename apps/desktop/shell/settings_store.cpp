#include "shell/settings_store.h"

#include "shell/application_identity.h"
#include "shell/log_categories.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QSettings>

#include <algorithm>

namespace tarnix {

namespace {

SettingDefinition b(const char *key, bool value) { return {QString::fromLatin1(key), SettingType::Bool, value}; }
SettingDefinition i(const char *key, int value) { return {QString::fromLatin1(key), SettingType::Int, value}; }
SettingDefinition s(const char *key, const char *value = "")
{
    return {QString::fromLatin1(key), SettingType::String, QString::fromUtf8(value)};
}
SettingDefinition list(const char *key) { return {QString::fromLatin1(key), SettingType::StringList, QJsonArray()}; }
SettingDefinition object(const char *key, QJsonObject value = {})
{
    return {QString::fromLatin1(key), SettingType::JsonObject, value};
}

SettingDefinition machineSpecific(SettingDefinition definition)
{
    definition.transferable = false;
    return definition;
}

QList<SettingDefinition> buildDefinitions()
{
    QList<SettingDefinition> rows = {
        i("accessibility/textSize", 0),
        s("appearance/controllerSkin", "hardware"),
        s("audio/editPflOutputDeviceId"),
        s("audio/programOutputDeviceId"),
        b("audio/showBgmPlayerControls", false),
        b("audio/useDefaultWhenMissing", false),
        b("audio/useVstPlugins", false),
        s("audio/uvcMappings/*"),   // device path -> audio device id; no value, no mapping
        s("audio/vst/edit/path"),
        s("audio/vst/edit/uid"),
        s("audio/vst/item/path"),
        s("audio/vst/item/uid"),
        s("audio/vst/master/path"),
        s("audio/vst/master/uid"),
        machineSpecific(s("control/socketPath")),   // empty: no control socket
        b("deckLink/compositeEnabled", true),
        s("deckLink/fillChannel"),
        b("deckLink/fillEnabled", false),
        s("deckLink/fillFormat", "straight"),
        s("deckLink/fillMode", "0"),
        b("deckLink/inputEnabled", true),
        s("deckLink/inputMode", "0"),
        s("deckLink/keyChannel"),
        b("deckLink/keyEnabled", false),
        s("deckLink/keyMode", "0"),
        s("deckLink/outputChannel"),
        b("deckLink/outputEnabled", false),
        s("deckLink/outputMode", "0"),
        s("fileDialog/lastMediaDirectory"),
        s("fileDialog/lastPlaylistDirectory"),
        s("files/documentConversionDirectory"),
        s("files/stillCaptureDirectory"),
        object("midi/control", QJsonObject{{QStringLiteral("enabled"), false},
                                           {QStringLiteral("device"), QString()},
                                           {QStringLiteral("bindings"), QJsonObject()}}),
        b("networkVideo/alphaEnabled", false),
        b("networkVideo/compositeEnabled", true),
        b("networkVideo/fillEnabled", false),
        s("networkVideo/fillFormat", "straight"),
        b("networkVideo/inputEnabled", false),
        b("networkVideo/keyEnabled", false),
        s("networkVideo/localOutputHostId"),
        list("networkVideo/localOutputSourceNames"),
        b("networkVideo/outputEnabled", false),
        s("networkVideo/outputName"),
        b("onAir/allowSameItemRetake", false),
        b("onAir/disableFtbButton", false),
        b("onAir/showPlaybackRateControls", true),
        b("onAir/toggleMode", false),
        b("operatorMonitor/file", true),
        b("operatorMonitor/information", false),
        b("operatorMonitor/modes", true),
        b("operatorMonitor/pages", true),
        b("operatorMonitor/rate", true),
        b("operatorMonitor/remaining", true),
        s("operatorMonitor/screen"),
        i("operatorMonitor/timerDurationSeconds", 300),
        b("operatorMonitor/timerEnabled", false),
        s("operatorMonitor/timerWarning1Color", "#ffe900"),
        i("operatorMonitor/timerWarning1Minutes", 2),
        s("operatorMonitor/timerWarning2Color", "#f55700"),
        i("operatorMonitor/timerWarning2Minutes", 1),
        s("player/backgroundColor", "#000000"),
        b("player/fadeToBackground", false),
        b("playlist/autoSelectNextItemAfterOnAir", false),
        i("playlist/editActivationMode", 0),
        b("playlist/preferAudioAlbumArt", false),
        s("privacy/activityLastSentUtcDay"),
        b("privacy/sendActivityNotice", false),
        object("shortcuts/bindings"),
        b("switcher/atem/enabled", false),
        b("switcher/atem/ftbFollowsProgram", false),
        i("switcher/atem/sourceNumber", 1),
        b("switcher/atem/takeOnAirWhenProgramSelected", false),
        b("switcher/atem/takeProgramWhenOnAir", false),
        s("switcher/roland/model", "v8hd"),
        object("switcher/roland/profiles"),
        b("switcher/rolandV8Hd/enabled", false),
        b("switcher/rolandV8Hd/ftbFollowsProgram", false),
        i("switcher/rolandV8Hd/sourceNumber", 1),
        b("switcher/rolandV8Hd/takeOnAirWhenProgramSelected", false),
        b("switcher/rolandV8Hd/takeProgramWhenOnAir", false),
        b("switcher/rolandVr50Hd/ftbFollowsProgram", false),
        s("switcher/rolandVr50Hd/host"),
        i("switcher/rolandVr50Hd/port", 8023),
        i("switcher/rolandVr50Hd/sourceNumber", 1),
        b("switcher/rolandVr50Hd/takeOnAirWhenProgramSelected", false),
        b("switcher/rolandVr50Hd/takeProgramWhenOnAir", false),
        {QStringLiteral("testPatterns/entries"), SettingType::JsonArray, QJsonValue(QJsonValue::Null)},
        s("time/fontFamily"),
        i("time/fontSize", 12),
        b("time/remainingTotal", false),
        s("time/timeZone", "Asia/Tokyo"),
        s("ui/language", "en"),
        b("updates/checkAutomatically", true),
        s("video/gpuAdapterId"),
        b("video/programOutput4k", false),
        b("video/softwareDecoding", false),
        b("virtualCamera/enabled", false),
    };
    std::sort(rows.begin(), rows.end(),
              [](const SettingDefinition &a, const SettingDefinition &b) { return a.key < b.key; });
    return rows;
}

bool isPattern(const SettingDefinition &definition)
{
    return definition.key.endsWith(QLatin1String("/*"));
}

std::optional<bool> boolFromText(const QString &text)
{
    const QString t = text.trimmed().toLower();
    if (t == QLatin1String("true") || t == QLatin1String("1") || t == QLatin1String("yes")
        || t == QLatin1String("on"))
        return true;
    if (t == QLatin1String("false") || t == QLatin1String("0") || t == QLatin1String("no")
        || t == QLatin1String("off") || t.isEmpty())
        return false;
    return std::nullopt;
}

// An INI line with unquoted commas comes back as a list of its pieces; for
// a single-text setting the commas were part of the text.
QString storedText(const QVariant &stored)
{
    if (stored.metaType().id() == QMetaType::QStringList)
        return stored.toStringList().join(QLatin1Char(','));
    return stored.toString();
}

QVariant unreadable(const SettingDefinition &definition, const QVariant &stored)
{
    qCWarning(lcSystem).noquote() << QStringLiteral("Setting %1 holds %2, which is not a %3; the default applies")
                                         .arg(definition.key, storedText(stored),
                                              definition.type == SettingType::Bool ? QStringLiteral("boolean")
                                              : definition.type == SettingType::Int
                                                  ? QStringLiteral("number")
                                                  : QStringLiteral("JSON value of the expected kind"));
    return convertSettingValue(definition, QVariant());
}

QVariant defaultAsVariant(const SettingDefinition &definition)
{
    switch (definition.type) {
    case SettingType::Bool: return definition.defaultValue.toBool();
    case SettingType::Int: return definition.defaultValue.toInt();
    case SettingType::String: return definition.defaultValue.toString();
    case SettingType::StringList: return definition.defaultValue.toVariant().toStringList();
    case SettingType::JsonObject:
    case SettingType::JsonArray: return QVariant::fromValue(definition.defaultValue);
    }
    return {};
}

std::optional<QJsonValue> jsonFromVariant(SettingType type, const QVariant &value)
{
    QJsonValue json;
    switch (value.metaType().id()) {
    case QMetaType::QJsonValue: json = value.value<QJsonValue>(); break;
    case QMetaType::QJsonObject: json = value.toJsonObject(); break;
    case QMetaType::QJsonArray: json = value.toJsonArray(); break;
    case QMetaType::QVariantMap: json = QJsonObject::fromVariantMap(value.toMap()); break;
    case QMetaType::QVariantList: json = QJsonArray::fromVariantList(value.toList()); break;
    case QMetaType::QStringList: json = QJsonArray::fromStringList(value.toStringList()); break;
    case QMetaType::Nullptr: json = QJsonValue(QJsonValue::Null); break;
    default:
        if (!value.isValid())
            json = QJsonValue(QJsonValue::Null);
        else
            return std::nullopt;
    }
    if (type == SettingType::JsonObject && !json.isObject())
        return std::nullopt;
    if (type == SettingType::JsonArray && !json.isArray() && !json.isNull())
        return std::nullopt;
    return json;
}

} // namespace

const QList<SettingDefinition> &settingDefinitions()
{
    static const QList<SettingDefinition> definitions = buildDefinitions();
    return definitions;
}

const QJsonObject &settingsDefaults()
{
    static const QJsonObject defaults = [] {
        QJsonObject object;
        for (const SettingDefinition &definition : settingDefinitions())
            object.insert(definition.key, definition.defaultValue);
        return object;
    }();
    return defaults;
}

bool settingTransferable(const QString &key)
{
    const std::optional<SettingDefinition> definition = findSettingDefinition(key);
    return definition && definition->transferable;
}

std::optional<SettingDefinition> findSettingDefinition(const QString &key)
{
    for (const SettingDefinition &definition : settingDefinitions()) {
        if (definition.key == key)
            return definition;
    }
    for (const SettingDefinition &definition : settingDefinitions()) {
        if (!isPattern(definition))
            continue;
        const QString prefix = definition.key.chopped(1);
        if (key.startsWith(prefix) && key.size() > prefix.size()) {
            SettingDefinition match = definition;
            match.key = key;
            return match;
        }
    }
    // Plug-in slots other than the three named ones keep their path and uid
    // the same way.
    const QStringList parts = key.split(QLatin1Char('/'));
    if (parts.size() == 4 && parts[0] == QLatin1String("audio") && parts[1] == QLatin1String("vst")
        && !parts[2].isEmpty() && !parts[3].isEmpty())
        return SettingDefinition{key, SettingType::String, QString()};
    return std::nullopt;
}

QVariant convertSettingValue(const SettingDefinition &definition, const QVariant &stored)
{
    if (!stored.isValid())
        return defaultAsVariant(definition);
    switch (definition.type) {
    case SettingType::Bool: {
        if (stored.metaType().id() == QMetaType::Bool)
            return stored.toBool();
        const std::optional<bool> value = boolFromText(storedText(stored));
        return value ? QVariant(*value) : unreadable(definition, stored);
    }
    case SettingType::Int: {
        bool ok = false;
        const int value = storedText(stored).trimmed().toInt(&ok);
        return ok ? QVariant(value) : unreadable(definition, stored);
    }
    case SettingType::String:
        return storedText(stored);
    case SettingType::StringList: {
        if (stored.metaType().id() == QMetaType::QStringList)
            return stored.toStringList();
        const QString text = stored.toString();
        return text.isEmpty() ? QStringList() : QStringList{text};
    }
    case SettingType::JsonObject:
    case SettingType::JsonArray: {
        const QByteArray text = storedText(stored).trimmed().toUtf8();
        if (definition.type == SettingType::JsonArray && text == "null")
            return QVariant::fromValue(QJsonValue(QJsonValue::Null));
        QJsonParseError error;
        const QJsonDocument document = QJsonDocument::fromJson(text, &error);
        if (error.error != QJsonParseError::NoError)
            return unreadable(definition, stored);
        if (definition.type == SettingType::JsonObject && document.isObject())
            return QVariant::fromValue(QJsonValue(document.object()));
        if (definition.type == SettingType::JsonArray && document.isArray())
            return QVariant::fromValue(QJsonValue(document.array()));
        return unreadable(definition, stored);
    }
    }
    return {};
}

QVariant readSetting(const QString &key)
{
    const std::optional<SettingDefinition> definition = findSettingDefinition(key);
    if (!definition)
        return {};
    const auto settings = openSettings();
    return convertSettingValue(*definition, settings->value(key));
}

bool readBoolSetting(const QString &key) { return readSetting(key).toBool(); }
int readIntSetting(const QString &key) { return readSetting(key).toInt(); }
QString readStringSetting(const QString &key) { return readSetting(key).toString(); }
QStringList readStringListSetting(const QString &key) { return readSetting(key).toStringList(); }
QJsonValue readJsonSetting(const QString &key) { return readSetting(key).value<QJsonValue>(); }

QString settingJsonText(const QJsonValue &value)
{
    if (value.isObject())
        return QString::fromUtf8(QJsonDocument(value.toObject()).toJson(QJsonDocument::Compact));
    if (value.isArray())
        return QString::fromUtf8(QJsonDocument(value.toArray()).toJson(QJsonDocument::Compact));
    return QStringLiteral("null");
}

bool writeSetting(const QString &key, const QVariant &value, QString *error)
{
    auto refuse = [error](const QString &text) {
        if (error)
            *error = text;
        return false;
    };
    const std::optional<SettingDefinition> definition = findSettingDefinition(key);
    if (!definition)
        return refuse(QStringLiteral("Unknown setting: %1").arg(key));

    QVariant stored;
    switch (definition->type) {
    case SettingType::Bool:
        if (!value.canConvert<bool>())
            return refuse(QStringLiteral("%1 takes a boolean").arg(key));
        stored = value.toBool();
        break;
    case SettingType::Int: {
        bool ok = false;
        stored = value.toInt(&ok);
        if (!ok)
            return refuse(QStringLiteral("%1 takes a number").arg(key));
        break;
    }
    case SettingType::String:
        stored = value.toString();
        break;
    case SettingType::StringList:
        stored = value.toStringList();
        break;
    case SettingType::JsonObject:
    case SettingType::JsonArray: {
        const std::optional<QJsonValue> json = jsonFromVariant(definition->type, value);
        if (!json)
            return refuse(QStringLiteral("%1 takes a JSON %2").arg(
                key, definition->type == SettingType::JsonObject ? QStringLiteral("object")
                                                                 : QStringLiteral("array or null")));
        stored = settingJsonText(*json);
        break;
    }
    }

    const auto settings = openSettings();
    settings->setValue(key, stored);
    settings->sync();
    if (settings->status() != QSettings::NoError)
        return refuse(QStringLiteral("The settings file %1 could not be written").arg(settings->fileName()));
    if (error)
        error->clear();
    return true;
}

} // namespace tarnix
