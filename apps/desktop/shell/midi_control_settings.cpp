#include "shell/midi_control_settings.h"

#include <QHash>
#include <QJsonValue>
#include <QSet>

#include <algorithm>
#include <cmath>

namespace tarnix::midi_control {

namespace {

constexpr int kMinimumTenths = -960;
constexpr int kMaximumTenths = 60;
constexpr qsizetype kMaximumDeviceName = 512;

QStringList buildActionNames()
{
    // The keyboard shortcuts in the MIDI page's order, which groups them by
    // what they drive rather than by their ids.
    QStringList names = {
        "AddFile", "Exit", "TakeOnAir", "ToggleOnAirPlayback", "LoadEdit", "TogglePfl", "OpenNominalEq",
        "CopyItemState", "PasteItemState", "DocumentNext", "DocumentPrevious", "ToggleFtb", "ToggleDsk", "OffAir",
        "OperatorTimerStart", "OperatorTimerPause", "OperatorTimerReset", "OperatorTimerSettings",
        "MasterFadeIn", "MasterFadeOut", "OpenMasterEq", "ItemFadeIn", "ItemFadeOut", "OpenItemEq",
        "BgmFadeIn", "BgmFadeOut",
    };
    for (int number = 1; number <= 9; ++number)
        names << QStringLiteral("SelectItem%1").arg(number) << QStringLiteral("ActivatePlaylist%1").arg(number);
    names << QStringList{
        "PlaylistPlayOnce", "PlaylistRepeatAll", "PlaylistShuffle", "PlaylistBgmMode", "PlaylistStandardMode",
        "PlaylistClear", "PlaylistDelete", "PlaylistUndo", "EditToggleStartMode", "EditEndStop", "EditEndPause",
        "EditEndRepeat", "EditEndNext", "EditToggleFadeOut", "EditReset", "EditSetIn", "EditSetOut",
        "PreviewCapture", "ProgramCapture", "NextOutputDisplay",
        // Fixed commands: not keys the operator may rebind, but MIDI may.
        "SelectPreviousItem", "SelectNextItem", "RemoveSelectedItem", "OpenSettings", "IncreaseItemVolume",
        "DecreaseItemVolume", "IncreaseMasterVolume", "DecreaseMasterVolume",
        // The faders.
        "SetMasterVolume", "SetItemVolume", "SetEditVolume", "SetBgmVolume",
    };
    return names;
}

const QSet<QString> &actionSet()
{
    static const QSet<QString> set(actionNames().cbegin(), actionNames().cend());
    return set;
}

bool fail(QString *error, const QString &text)
{
    if (error)
        *error = text;
    return false;
}

// A JSON number that is a whole number within the range.
std::optional<int> wholeNumber(const QJsonValue &value, int minimum, int maximum)
{
    if (!value.isDouble())
        return std::nullopt;
    const double number = value.toDouble();
    if (number != std::floor(number) || number < minimum || number > maximum)
        return std::nullopt;
    return int(number);
}

bool isSeparatorOrControl(QChar c)
{
    switch (c.category()) {
    case QChar::Other_Control:
    case QChar::Separator_Line:
    case QChar::Separator_Paragraph:
        return true;
    default:
        return false;
    }
}

// Older stored forms, brought forward before the object is checked.
QJsonObject migrateBindings(QJsonObject bindings)
{
    bindings.remove(QStringLiteral("ManualTransition"));
    for (auto it = bindings.begin(); it != bindings.end(); ++it) {
        if (!isVolumeAction(it.key()) || !it.value().isObject())
            continue;
        QJsonObject binding = it.value().toObject();
        if (binding.contains(QStringLiteral("scale")))
            continue;
        // Faders saved before the scale existed ran from -60 dB to 0 dB; the
        // same travel is now the whole fader.
        if (wholeNumber(binding.value(QStringLiteral("minimum")), -600, -600)
            && wholeNumber(binding.value(QStringLiteral("maximum")), 0, 0)) {
            binding.insert(QStringLiteral("minimum"), kMinimumTenths);
            binding.insert(QStringLiteral("maximum"), kMaximumTenths);
        }
        binding.insert(QStringLiteral("scale"), QStringLiteral("fader"));
        it.value() = binding;
    }
    return bindings;
}

// One binding checked and rebuilt with integers where whole numbers stand.
std::optional<QJsonObject> checkBinding(const QString &action, const QJsonValue &value, QString *error)
{
    const auto refuse = [&](const QString &what) {
        fail(error, QStringLiteral("MIDI binding %1: %2").arg(action, what));
        return std::nullopt;
    };
    if (!isAction(action))
        return refuse(QStringLiteral("not a MIDI action"));
    if (!value.isObject())
        return refuse(QStringLiteral("not an object"));
    const QJsonObject binding = value.toObject();
    const bool volume = isVolumeAction(action);
    static const QSet<QString> common{"type", "channel", "number"};
    static const QSet<QString> faderOnly{"mode", "pickup", "reverse", "minimum", "maximum", "scale"};
    for (auto it = binding.begin(); it != binding.end(); ++it) {
        if (!common.contains(it.key()) && !(volume && faderOnly.contains(it.key())))
            return refuse(QStringLiteral("key %1 is not accepted").arg(it.key()));
    }

    const QString type = binding.value(QStringLiteral("type")).toString();
    if (type != QLatin1String("note") && type != QLatin1String("cc"))
        return refuse(QStringLiteral("type must be \"note\" or \"cc\""));
    const std::optional<int> channel = wholeNumber(binding.value(QStringLiteral("channel")), 1, 16);
    if (!channel)
        return refuse(QStringLiteral("channel must be a whole number from 1 to 16"));
    const std::optional<int> number = wholeNumber(binding.value(QStringLiteral("number")), 0, 127);
    if (!number)
        return refuse(QStringLiteral("number must be a whole number from 0 to 127"));
    QJsonObject checked{{QStringLiteral("type"), type},
                        {QStringLiteral("channel"), *channel},
                        {QStringLiteral("number"), *number}};
    if (!volume)
        return checked;

    if (type != QLatin1String("cc")) {
        fail(error, QStringLiteral("MIDI binding %1: A volume fader requires a CC message.").arg(action));
        return std::nullopt;
    }
    if (binding.contains(QStringLiteral("mode"))) {
        const QJsonValue mode = binding.value(QStringLiteral("mode"));
        if (!mode.isString() || !volumeModes().contains(mode.toString()))
            return refuse(QStringLiteral("unknown mode"));
        checked.insert(QStringLiteral("mode"), mode);
    }
    for (const char *flag : {"pickup", "reverse"}) {
        const QString key = QString::fromLatin1(flag);
        if (!binding.contains(key))
            continue;
        if (!binding.value(key).isBool())
            return refuse(QStringLiteral("%1 must be true or false").arg(key));
        checked.insert(key, binding.value(key));
    }
    int minimum = kMinimumTenths;
    int maximum = kMaximumTenths;
    for (auto [key, target] : {std::pair{"minimum", &minimum}, std::pair{"maximum", &maximum}}) {
        const QString name = QString::fromLatin1(key);
        if (!binding.contains(name))
            continue;
        const std::optional<int> tenths = wholeNumber(binding.value(name), kMinimumTenths, kMaximumTenths);
        if (!tenths)
            return refuse(QStringLiteral("%1 must be a whole number from -960 to 60").arg(name));
        *target = *tenths;
        checked.insert(name, *tenths);
    }
    if (minimum >= maximum)
        return refuse(QStringLiteral("minimum must be less than maximum"));
    if (binding.contains(QStringLiteral("scale"))) {
        if (binding.value(QStringLiteral("scale")) != QJsonValue(QStringLiteral("fader")))
            return refuse(QStringLiteral("scale must be \"fader\""));
        checked.insert(QStringLiteral("scale"), QStringLiteral("fader"));
    }
    return checked;
}

} // namespace

const QStringList &actionNames()
{
    static const QStringList names = buildActionNames();
    return names;
}

bool isAction(const QString &name)
{
    return actionSet().contains(name);
}

bool isVolumeAction(const QString &name)
{
    return name == QLatin1String("SetMasterVolume") || name == QLatin1String("SetItemVolume")
        || name == QLatin1String("SetEditVolume") || name == QLatin1String("SetBgmVolume");
}

const QStringList &volumeModes()
{
    static const QStringList modes{"absolute", "twos-complement", "binary-offset", "signed-bit", "signed-bit-2"};
    return modes;
}

std::optional<QJsonObject> normalize(const QJsonObject &stored, QString *error)
{
    QJsonObject object = stored;
    if (object.value(QStringLiteral("bindings")).isObject())
        object.insert(QStringLiteral("bindings"), migrateBindings(object.value(QStringLiteral("bindings")).toObject()));

    static const QSet<QString> keys{"enabled", "device", "bindings"};
    for (auto it = object.begin(); it != object.end(); ++it) {
        if (!keys.contains(it.key())) {
            fail(error, QStringLiteral("MIDI control: key %1 is not accepted").arg(it.key()));
            return std::nullopt;
        }
    }
    const QJsonValue enabled = object.value(QStringLiteral("enabled"));
    if (!enabled.isBool()) {
        fail(error, QStringLiteral("MIDI control: enabled must be true or false"));
        return std::nullopt;
    }
    const QJsonValue device = object.value(QStringLiteral("device"));
    const QString deviceName = device.toString();
    if (!device.isString() || deviceName.size() > kMaximumDeviceName
        || std::any_of(deviceName.cbegin(), deviceName.cend(), isSeparatorOrControl)) {
        fail(error, QStringLiteral("MIDI control: device must be a name of at most 512 characters without "
                                   "control or separator characters"));
        return std::nullopt;
    }
    if (!object.value(QStringLiteral("bindings")).isObject()) {
        fail(error, QStringLiteral("MIDI control: bindings must be an object"));
        return std::nullopt;
    }

    const QJsonObject bindings = object.value(QStringLiteral("bindings")).toObject();
    QJsonObject checkedBindings;
    // Which action answers each message, to name both of a clash.
    QHash<QString, QString> owners;
    for (auto it = bindings.begin(); it != bindings.end(); ++it) {
        const std::optional<QJsonObject> binding = checkBinding(it.key(), it.value(), error);
        if (!binding)
            return std::nullopt;
        const QString message = QStringLiteral("%1/%2/%3")
                                    .arg(binding->value(QStringLiteral("type")).toString())
                                    .arg(binding->value(QStringLiteral("channel")).toInt())
                                    .arg(binding->value(QStringLiteral("number")).toInt());
        const auto owner = owners.constFind(message);
        if (owner != owners.cend()) {
            fail(error, QStringLiteral("MIDI bindings %1 and %2 both answer %3").arg(*owner, it.key(), message));
            return std::nullopt;
        }
        owners.insert(message, it.key());
        checkedBindings.insert(it.key(), *binding);
    }
    return QJsonObject{{QStringLiteral("enabled"), enabled},
                       {QStringLiteral("device"), deviceName},
                       {QStringLiteral("bindings"), checkedBindings}};
}

} // namespace tarnix::midi_control
