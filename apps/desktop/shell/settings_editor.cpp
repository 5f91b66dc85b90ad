#include "shell/settings_editor.h"

#include "shell/background_io_queue.h"
#include "shell/settings_store.h"

#include <QDir>
#include <QJsonArray>
#include <QTimeZone>

#include <memory>

namespace tarnix {

namespace {

const QString kSocketPathKey = QStringLiteral("control/socketPath");

// The longest path a local socket address holds, less its final zero.
constexpr qsizetype kSocketPathBytes = 107;

QJsonValue jsonOf(const SettingDefinition &definition, const QVariant &value)
{
    switch (definition.type) {
    case SettingType::Bool: return value.toBool();
    case SettingType::Int: return value.toInt();
    case SettingType::String: return value.toString();
    case SettingType::StringList: return QJsonArray::fromStringList(value.toStringList());
    case SettingType::JsonObject:
    case SettingType::JsonArray: return value.value<QJsonValue>();
    }
    return {};
}

QVariant variantOf(const QJsonValue &value)
{
    if (value.isObject())
        return QVariant::fromValue(value.toObject());
    if (value.isArray())
        return QVariant::fromValue(value.toArray());
    return value.toVariant();
}

bool refuse(QString *error, const QString &text)
{
    if (error)
        *error = text;
    return false;
}

} // namespace

std::optional<QJsonValue> checkSettingChange(const QString &key, const QJsonValue &value,
                                             const ShortcutBindingsCheck &shortcutCheck, QString *error)
{
    if (key == kSocketPathKey) {
        if (!value.isString()) {
            refuse(error, QStringLiteral("%1: must be a string, as its default is").arg(key));
            return std::nullopt;
        }
        const QString path = value.toString();
        if (!path.isEmpty() && (!QDir::isAbsolutePath(path) || path.toLocal8Bit().size() > kSocketPathBytes)) {
            refuse(error, QStringLiteral("%1: empty or an absolute path of at most %2 bytes").arg(key).arg(kSocketPathBytes));
            return std::nullopt;
        }
        if (error)
            error->clear();
        return value;
    }
    if (!isTransferSetting(key)) {
        refuse(error, QStringLiteral("%1: not a setting of this window").arg(key));
        return std::nullopt;
    }
    // A pair judged together sees its missing member at its default; the
    // window edits neither member of such a pair.
    const std::optional<QJsonObject> checked = checkTransferSettings(QJsonObject{{key, value}}, shortcutCheck, error);
    if (!checked)
        return std::nullopt;
    return checked->value(key);
}

SettingsEditor::SettingsEditor(BackgroundIoQueue *queue, ShortcutBindingsCheck shortcutCheck, QObject *parent)
    : QObject(parent), m_queue(queue), m_shortcutCheck(std::move(shortcutCheck))
{
}

void SettingsEditor::load()
{
    if (!m_queue)
        return;
    struct Loaded {
        QJsonObject values;
        QStringList timeZones;
    };
    auto loaded = std::make_shared<Loaded>();
    m_queue->enqueue(
        [loaded](BackgroundIoQueue::Result &result) {
            for (const SettingDefinition &definition : settingDefinitions()) {
                if (!definition.key.endsWith(QLatin1String("/*")))
                    loaded->values.insert(definition.key, jsonOf(definition, readSetting(definition.key)));
            }
            for (const QByteArray &id : QTimeZone::availableTimeZoneIds())
                loaded->timeZones.append(QString::fromUtf8(id));
            result.success = true;
        },
        [self = QPointer<SettingsEditor>(this), loaded](const BackgroundIoQueue::Result &) {
            if (!self)
                return;
            self->m_values = loaded->values;
            emit self->loaded(loaded->values, loaded->timeZones);
        });
}

void SettingsEditor::change(const QString &key, const QJsonValue &value)
{
    if (!m_queue)
        return;
    struct Outcome {
        std::optional<QJsonValue> checked;
        QString refusal;
    };
    auto outcome = std::make_shared<Outcome>();
    m_queue->enqueue(
        [key, value, check = m_shortcutCheck, outcome](BackgroundIoQueue::Result &result) {
            outcome->checked = checkSettingChange(key, value, check, &outcome->refusal);
            if (outcome->checked)
                result.success = writeSetting(key, variantOf(*outcome->checked), &result.errorText);
        },
        [self = QPointer<SettingsEditor>(this), key, outcome](const BackgroundIoQueue::Result &result) {
            if (!self)
                return;
            if (!outcome->checked)
                emit self->refused(key, outcome->refusal);
            else if (!result.success)
                emit self->saveFailed(key, *outcome->checked, result.errorText);
            else {
                self->m_values.insert(key, *outcome->checked);
                emit self->changed(key, *outcome->checked);
            }
        });
}

} // namespace tarnix
