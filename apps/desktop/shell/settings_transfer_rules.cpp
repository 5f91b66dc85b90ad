#include "shell/settings_transfer_rules.h"

#include "shell/midi_control_settings.h"
#include "shell/settings_store.h"
#include "shell/switcher_models.h"

#include <QJsonArray>
#include <QRegularExpression>
#include <QSet>
#include <QTimeZone>

#include <algorithm>
#include <cmath>
#include <functional>

namespace tarnix {

namespace {

// Keys of the store whose owner keeps state of this machine or of this
// run; a transfer neither carries nor restores them.
const QSet<QString> &ownerKeptKeys()
{
    static const QSet<QString> keys{
        "fileDialog/lastMediaDirectory", "fileDialog/lastPlaylistDirectory", "networkVideo/localOutputHostId",
        "networkVideo/localOutputSourceNames", "player/fadeToBackground", "privacy/activityLastSentUtcDay",
    };
    return keys;
}

// A JSON number that is a whole number within the range.
bool isWholeNumber(const QJsonValue &value, double minimum, double maximum)
{
    if (!value.isDouble())
        return false;
    const double number = value.toDouble();
    return number == std::floor(number) && number >= minimum && number <= maximum;
}

// The whole text must match the pattern: anchored with \A and \z rather
// than ^ and $, since $ would also let through a text that ends in a line
// break.
std::function<bool(const QJsonValue &)> matching(const char *pattern, bool emptyAllowed = false)
{
    const QRegularExpression expression(QRegularExpression::anchoredPattern(QString::fromLatin1(pattern)));
    return [expression, emptyAllowed](const QJsonValue &value) {
        if (!value.isString())
            return false;
        const QString text = value.toString();
        return (emptyAllowed && text.isEmpty()) || expression.match(text).hasMatch();
    };
}

bool isOneOf(const QJsonValue &value, std::initializer_list<const char *> texts)
{
    if (!value.isString())
        return false;
    const QString text = value.toString();
    return std::any_of(texts.begin(), texts.end(), [&](const char *candidate) { return text == QLatin1String(candidate); });
}

// The shape of a zone name ("Asia/Tokyo", "UTC+09:00"), checked before
// the name reaches the time zone backend, which opens it as a path below
// the zone database: no empty, hidden, "." or ".." part, no path from the
// root, only the characters zone names use.
bool isZoneName(const QString &text)
{
    if (text.isEmpty() || text.size() > 64)
        return false;
    const bool plainCharacters = std::all_of(text.cbegin(), text.cend(), [](QChar c) {
        return (c >= QLatin1Char('a') && c <= QLatin1Char('z')) || (c >= QLatin1Char('A') && c <= QLatin1Char('Z'))
            || (c >= QLatin1Char('0') && c <= QLatin1Char('9')) || QStringView(u"/_-+:.").contains(c);
    });
    if (!plainCharacters)
        return false;
    const QStringList parts = text.split(QLatin1Char('/'));
    return std::none_of(parts.cbegin(), parts.cend(),
                        [](const QString &part) { return part.isEmpty() || part.startsWith(QLatin1Char('.')); });
}

bool isStringUpTo(const QJsonValue &value, qsizetype length)
{
    return value.isString() && value.toString().size() <= length;
}

// One rule of the import: the key, or the start of the keys, it judges,
// and the words it is told in when it refuses.
struct Rule {
    const char *key;
    bool prefix;
    const char *words;
    std::function<bool(const QJsonValue &)> accepts;
};

std::function<bool(const QJsonValue &)> wholeNumberFrom(double minimum, double maximum)
{
    return [minimum, maximum](const QJsonValue &value) { return isWholeNumber(value, minimum, maximum); };
}

const QList<Rule> &rules()
{
    static const QList<Rule> table = {
        {"testPatterns/entries", false, "an array of strings, or null",
         [](const QJsonValue &value) {
             if (value.isNull())
                 return true;
             if (!value.isArray())
                 return false;
             const QJsonArray entries = value.toArray();
             return std::all_of(entries.begin(), entries.end(), [](const QJsonValue &entry) { return entry.isString(); });
         }},
        {"files/", true, "string of at most 32,768 characters",
         [](const QJsonValue &value) { return isStringUpTo(value, 32768); }},
        {"networkVideo/outputName", false, "string of at most 200 characters",
         [](const QJsonValue &value) { return isStringUpTo(value, 200); }},
        {"networkVideo/fillFormat", false, "\"straight\" or \"premultiplied\"",
         [](const QJsonValue &value) { return isOneOf(value, {"straight", "premultiplied"}); }},
        {"deckLink/fillFormat", false, "\"straight\" or \"premultiplied\"",
         [](const QJsonValue &value) { return isOneOf(value, {"straight", "premultiplied"}); }},
        {"deckLink/outputMode", false, "matches \"^(0|[1-9][0-9]{0,9})$\"", matching("0|[1-9][0-9]{0,9}")},
        {"deckLink/inputMode", false, "matches \"^(0|[1-9][0-9]{0,9})$\"", matching("0|[1-9][0-9]{0,9}")},
        {"deckLink/fillMode", false, "matches \"^(0|[1-9][0-9]{0,9})$\"", matching("0|[1-9][0-9]{0,9}")},
        {"deckLink/keyMode", false, "matches \"^(0|[1-9][0-9]{0,9})$\"", matching("0|[1-9][0-9]{0,9}")},
        {"deckLink/outputChannel", false, "empty or matches \"^decklink://-?[0-9]+/[0-9]+/[0-9]+/0$\"",
         matching("decklink://-?[0-9]+/[0-9]+/[0-9]+/0", true)},
        {"deckLink/fillChannel", false, "empty or matches \"^decklink://-?[0-9]+/[0-9]+/[0-9]+/0$\"",
         matching("decklink://-?[0-9]+/[0-9]+/[0-9]+/0", true)},
        {"deckLink/keyChannel", false, "empty or matches \"^decklink://-?[0-9]+/[0-9]+/[0-9]+/0$\"",
         matching("decklink://-?[0-9]+/[0-9]+/[0-9]+/0", true)},
        {"appearance/controllerSkin", false, "\"hardware\", \"material-dark\" or \"tarnix-clasic\"",
         [](const QJsonValue &value) { return isOneOf(value, {"hardware", "material-dark", "tarnix-clasic"}); }},
        {"ui/language", false, "\"en\" or \"ja\"",
         [](const QJsonValue &value) { return isOneOf(value, {"en", "ja"}); }},
        // Empty is the switcher controller's own "no switcher".
        {"switcher/roland/model", false, "a model known to the switcher controller",
         [](const QJsonValue &value) {
             return value.isString() && (value.toString().isEmpty() || isKnownSwitcherModel(value.toString()));
         }},
        {"switcher/rolandVr50Hd/host", false,
         "empty or an IPv4 address in dotted decimal, each octet 0 to 255 without a leading zero",
         [](const QJsonValue &value) {
             return value.isString() && (value.toString().isEmpty() || isDottedDecimalIpv4(value.toString()));
         }},
        {"player/backgroundColor", false, "matches \"^#[0-9a-fA-F]{6}$\"", matching("#[0-9a-fA-F]{6}")},
        {"operatorMonitor/timerWarning1Color", false, "matches \"^#[0-9a-fA-F]{6}$\"", matching("#[0-9a-fA-F]{6}")},
        {"operatorMonitor/timerWarning2Color", false, "matches \"^#[0-9a-fA-F]{6}$\"", matching("#[0-9a-fA-F]{6}")},
        {"time/timeZone", false, "a name that makes a valid time zone",
         [](const QJsonValue &value) {
             return value.isString() && isZoneName(value.toString()) && QTimeZone(value.toString().toUtf8()).isValid();
         }},
        {"operatorMonitor/timerWarning1Minutes", false, "whole number, 0 to 999", wholeNumberFrom(0, 999)},
        {"operatorMonitor/timerWarning2Minutes", false, "whole number, 0 to 999", wholeNumberFrom(0, 999)},
        {"accessibility/textSize", false, "whole number, 0 to 2", wholeNumberFrom(0, 2)},
        {"operatorMonitor/timerDurationSeconds", false, "whole number, 1 to 59,999", wholeNumberFrom(1, 59999)},
        {"time/fontSize", false, "whole number, 8 to 48", wholeNumberFrom(8, 48)},
        {"switcher/rolandVr50Hd/port", false, "whole number, 1 to 65,535", wholeNumberFrom(1, 65535)},
        {"switcher/rolandVr50Hd/sourceNumber", false, "whole number, 1 to 4", wholeNumberFrom(1, 4)},
        {"switcher/atem/sourceNumber", false, "whole number, 1 to 40", wholeNumberFrom(1, 40)},
        {"switcher/rolandV8Hd/sourceNumber", false, "whole number, 1 to 8", wholeNumberFrom(1, 8)},
    };
    return table;
}

bool refuse(QString *error, const QString &key, const QString &words)
{
    if (error)
        *error = QStringLiteral("%1: %2").arg(key, words);
    return false;
}

// The key's own rule, after its type has been found right.
bool checkValue(const QString &key, const QJsonValue &value, QString *error)
{
    for (const Rule &rule : rules()) {
        const QLatin1String ruleKey(rule.key);
        if (rule.prefix ? !key.startsWith(ruleKey) : key != ruleKey)
            continue;
        if (!rule.accepts(value))
            return refuse(error, key, QString::fromUtf8(rule.words));
    }
    // Numbers under "playlist/" are choices of two.
    if (key.startsWith(QLatin1String("playlist/")) && value.isDouble() && !isWholeNumber(value, 0, 1))
        return refuse(error, key, QStringLiteral("whole number, 0 to 1"));
    return true;
}

double numberOr(const QJsonObject &settings, const char *key, double fallback)
{
    const QJsonValue value = settings.value(QLatin1String(key));
    return value.isDouble() ? value.toDouble() : fallback;
}

} // namespace

const QStringList &transferSettingKeys()
{
    static const QStringList keys = [] {
        QStringList list;
        for (const SettingDefinition &definition : settingDefinitions()) {
            if (definition.transferable && !definition.key.endsWith(QLatin1String("/*"))
                && !ownerKeptKeys().contains(definition.key))
                list.append(definition.key);
        }
        return list;
    }();
    return keys;
}

bool isTransferSetting(const QString &key)
{
    static const QSet<QString> keys(transferSettingKeys().cbegin(), transferSettingKeys().cend());
    return keys.contains(key);
}

bool isDottedDecimalIpv4(const QString &text)
{
    const QStringList octets = text.split(QLatin1Char('.'));
    if (octets.size() != 4)
        return false;
    return std::all_of(octets.cbegin(), octets.cend(), [](const QString &octet) {
        if (octet.isEmpty() || octet.size() > 3 || (octet.size() > 1 && octet.front() == QLatin1Char('0')))
            return false;
        if (!std::all_of(octet.cbegin(), octet.cend(),
                         [](QChar c) { return c >= QLatin1Char('0') && c <= QLatin1Char('9'); }))
            return false;
        return octet.toInt() <= 255;
    });
}

std::optional<QJsonObject> checkTransferSettings(const QJsonObject &settings, const ShortcutBindingsCheck &shortcutCheck,
                                                 QString *error)
{
    QJsonObject checked;
    const QJsonObject &defaults = settingsDefaults();
    for (const QString &key : transferSettingKeys()) {
        if (!settings.contains(key))
            continue;
        QJsonValue value = settings.value(key);
        if (key == QLatin1String("midi/control") && value.isObject()) {
            QString detail;
            const std::optional<QJsonObject> normalized = midi_control::normalize(value.toObject(), &detail);
            if (!normalized) {
                refuse(error, key, detail);
                return std::nullopt;
            }
            value = *normalized;
        }
        const QJsonValue defaultValue = defaults.value(key);
        // A list of test patterns may be missing (null) or stand; its rule
        // below says which.
        if (key != QLatin1String("testPatterns/entries") && value.type() != defaultValue.type()) {
            const char *kind = defaultValue.isBool() ? "a boolean"
                : defaultValue.isDouble()            ? "a number"
                : defaultValue.isString()            ? "a string"
                                                     : "an object";
            refuse(error, key, QStringLiteral("must be %1, as its default is").arg(QLatin1String(kind)));
            return std::nullopt;
        }
        if (!checkValue(key, value, error))
            return std::nullopt;
        if (key == QLatin1String("shortcuts/bindings") && shortcutCheck) {
            const QString offence = shortcutCheck(value.toObject());
            if (!offence.isEmpty()) {
                refuse(error, key, QStringLiteral("duplicate, reserved or invalid key: %1").arg(offence));
                return std::nullopt;
            }
        }
        if (value.isDouble())
            value = QJsonValue(qint64(value.toDouble()));
        checked.insert(key, value);
    }

    if (numberOr(checked, "operatorMonitor/timerWarning2Minutes", 1)
        > numberOr(checked, "operatorMonitor/timerWarning1Minutes", 2)) {
        refuse(error, QStringLiteral("operatorMonitor/timerWarning2Minutes"),
               QStringLiteral("may not exceed operatorMonitor/timerWarning1Minutes"));
        return std::nullopt;
    }
    if (checked.value(QStringLiteral("switcher/atem/enabled")).toBool()
        && checked.value(QStringLiteral("switcher/rolandV8Hd/enabled")).toBool()) {
        refuse(error, QStringLiteral("switcher/atem/enabled"),
               QStringLiteral("may not be true together with switcher/rolandV8Hd/enabled"));
        return std::nullopt;
    }
    if (error)
        error->clear();
    return checked;
}

} // namespace tarnix
