#include "control/shortcut_table.h"

#include <QJsonArray>
#include <QSet>

#include <mutex>

namespace tarnix::shortcuts {

namespace {

QKeySequence key(const char *portable)
{
    return QKeySequence::fromString(QString::fromLatin1(portable), QKeySequence::PortableText);
}

QList<ShortcutDefinition> buildTable()
{
    QList<ShortcutDefinition> table{
        {"AddFile", {key("Ctrl+F")}},
        {"Exit", {key("Ctrl+Shift+Q")}},
        {"TakeOnAir", {key("Return"), key("Enter")}},
        {"ToggleOnAirPlayback", {key("Space")}},
        {"LoadEdit", {key("E")}},
        {"CopyItemState", {QKeySequence(QKeySequence::Copy)}},
        {"PasteItemState", {QKeySequence(QKeySequence::Paste)}},
        {"DocumentNext", {key("PgUp"), key("Right")}},
        {"DocumentPrevious", {key("PgDown"), key("Left")}},
        {"ToggleFtb", {key("Shift+F")}},
        {"ToggleDsk", {key("Shift+D")}},
        {"OffAir", {key("Esc")}},
        {"MasterFadeIn", {key("Ctrl+,")}},
        {"MasterFadeOut", {key("Ctrl+.")}},
        {"ItemFadeIn", {key("Ctrl+Shift+,")}},
        {"ItemFadeOut", {key("Ctrl+Shift+.")}},
        {"BgmFadeIn", {key("Alt+Shift+,")}},
        {"BgmFadeOut", {key("Alt+Shift+.")}},
    };
    for (int number = 1; number <= 9; ++number) {
        const QString digit = QString::number(number);
        table.append({QStringLiteral("SelectItem%1").arg(number),
                      {QKeySequence::fromString(digit, QKeySequence::PortableText)}});
        table.append({QStringLiteral("ActivatePlaylist%1").arg(number),
                      {QKeySequence::fromString(QStringLiteral("Ctrl+") + digit, QKeySequence::PortableText)}});
    }
    const ShortcutDefinition later[] = {
        {"PlaylistPlayOnce", {key("Ctrl+L")}},
        {"PlaylistRepeatAll", {key("Ctrl+R")}},
        {"PlaylistShuffle", {key("Ctrl+Shift+X")}},
        {"PlaylistBgmMode", {key("Ctrl+Shift+B")}},
        {"PlaylistStandardMode", {key("Ctrl+Alt+B")}},
        {"PlaylistClear", {key("Ctrl+Shift+D")}},
        {"PlaylistUndo", {key("Ctrl+Z")}},
        {"EditToggleStartMode", {key("Alt+S")}},
        {"EditEndStop", {key("Alt+O")}},
        {"EditEndPause", {key("Alt+P")}},
        {"EditEndRepeat", {key("Alt+R")}},
        {"EditEndNext", {key("Alt+N")}},
        {"EditToggleFadeOut", {key("Alt+Shift+F")}},
        {"EditReset", {key("Alt+C")}},
        {"EditSetIn", {key("Alt+Shift+I")}},
        {"EditSetOut", {key("Alt+Shift+O")}},
        {"NextOutputDisplay", {key("Alt+W")}},
        {"PreviewCapture", {key("Ctrl+Shift+P")}},
        {"ProgramCapture", {key("Ctrl+Shift+G")}},
        {"TogglePfl", {key("Ctrl+Alt+P")}},
        {"PlaylistDelete", {key("Ctrl+Shift+Del")}},
        {"OperatorTimerStart", {key("Ctrl+Alt+T")}},
        {"OperatorTimerPause", {key("Ctrl+Alt+Y")}},
        {"OperatorTimerReset", {key("Ctrl+Alt+R")}},
        {"OperatorTimerSettings", {key("Ctrl+Alt+O")}},
        {"OpenNominalEq", {key("Ctrl+Alt+E")}},
        {"OpenItemEq", {key("Ctrl+Shift+E")}},
        {"OpenMasterEq", {key("Ctrl+Alt+M")}},
    };
    for (const ShortcutDefinition &definition : later)
        table.append(definition);
    Q_ASSERT(table.size() == kShortcutCount);
    return table;
}

// One chord whose portable text is exactly the stored text.
bool isCanonicalChord(const QString &text)
{
    if (text.isEmpty())
        return false;
    const QKeySequence sequence = QKeySequence::fromString(text, QKeySequence::PortableText);
    if (sequence.count() != 1)
        return false;
    const Qt::Key keyPart = sequence[0].key();
    if (keyPart == Qt::Key_unknown || keyPart == 0)
        return false;
    return sequence.toString(QKeySequence::PortableText) == text;
}

} // namespace

const QList<ShortcutDefinition> &shortcutDefinitions()
{
    static std::once_flag once;
    static QList<ShortcutDefinition> table;
    std::call_once(once, [] { table = buildTable(); });
    return table;
}

int shortcutId(const QString &name)
{
    const QList<ShortcutDefinition> &table = shortcutDefinitions();
    for (int id = 0; id < table.size(); ++id) {
        if (table.at(id).name == name)
            return id;
    }
    return -1;
}

const QStringList &reservedKeys()
{
    static const QStringList keys{QStringLiteral("Ctrl+Alt+S"), QStringLiteral("Ctrl+Up"), QStringLiteral("Ctrl+Down"),
                                  QStringLiteral("Shift+Up"), QStringLiteral("Shift+Down")};
    return keys;
}

QString validateBindings(const QJsonObject &bindings)
{
    for (auto it = bindings.begin(); it != bindings.end(); ++it) {
        if (shortcutId(it.key()) < 0)
            return it.key();
    }
    QHash<QString, QString> owners;
    for (const QString &reserved : reservedKeys())
        owners.insert(reserved, QStringLiteral("reserved"));
    // In table order, so that the offence named is the same every time.
    for (const ShortcutDefinition &definition : shortcutDefinitions()) {
        if (!bindings.contains(definition.name))
            continue;
        const QJsonValue value = bindings.value(definition.name);
        if (!value.isArray() || value.toArray().size() > 2)
            return definition.name;
        for (const QJsonValue &entry : value.toArray()) {
            const QString text = entry.toString();
            if (!entry.isString() || !isCanonicalChord(text))
                return definition.name;
            const auto owner = owners.constFind(text);
            if (owner != owners.cend())
                return QStringLiteral("%1 / %2 : %3").arg(definition.name, *owner, text);
            owners.insert(text, definition.name);
        }
    }
    return {};
}

QHash<QString, QList<QKeySequence>> effectiveBindings(const QJsonObject &stored)
{
    const QList<ShortcutDefinition> &table = shortcutDefinitions();
    QHash<QString, QList<QKeySequence>> keys;
    const bool useStored = !stored.isEmpty() && validateBindings(stored).isEmpty();
    QSet<QString> storedKeys;
    if (useStored) {
        for (auto it = stored.begin(); it != stored.end(); ++it) {
            QList<QKeySequence> sequences;
            for (const QJsonValue &entry : it.value().toArray()) {
                sequences.append(QKeySequence::fromString(entry.toString(), QKeySequence::PortableText));
                storedKeys.insert(entry.toString());
            }
            keys.insert(it.key(), sequences);
        }
    }
    for (int id = 0; id < table.size(); ++id) {
        const ShortcutDefinition &definition = table.at(id);
        if (keys.contains(definition.name))
            continue;
        QList<QKeySequence> defaults = definition.defaults;
        // A shortcut newer than the stored object does not take a key the
        // operator has given to another.
        if (useStored && id >= kFirstLaterShortcut) {
            defaults.removeIf([&storedKeys](const QKeySequence &sequence) {
                return storedKeys.contains(sequence.toString(QKeySequence::PortableText));
            });
        }
        keys.insert(definition.name, defaults);
    }
    return keys;
}

QString nativeText(const QList<QKeySequence> &keys)
{
    QStringList texts;
    for (const QKeySequence &sequence : keys)
        texts << sequence.toString(QKeySequence::NativeText);
    return texts.join(QStringLiteral(" / "));
}

} // namespace tarnix::shortcuts
