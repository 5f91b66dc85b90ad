#pragma once

#include <QHash>
#include <QJsonObject>
#include <QKeySequence>
#include <QList>
#include <QString>
#include <QStringList>

// The configurable keyboard shortcuts: their names (the settings keys and
// the MIDI action names), default keys, the key sequences the application
// keeps for itself, and the check and merge of the operator's bindings.
// Plain functions over one table made once for the process.
namespace tarnix::shortcuts {

struct ShortcutDefinition {
    QString name;
    QList<QKeySequence> defaults;
};

inline constexpr int kShortcutCount = 64;
// Shortcuts from this id on came in later versions: their default keys give
// way to keys an older stored binding already uses.
inline constexpr int kFirstLaterShortcut = 36;

// The 64 shortcuts in id order.
const QList<ShortcutDefinition> &shortcutDefinitions();
int shortcutId(const QString &name);  // -1 when unknown

// The keys no binding may take, in portable text.
const QStringList &reservedKeys();

// The first offence of a stored bindings object, or an empty string: an
// unknown name; more than two keys or not an array; a key that is not one
// chord in its exact portable text; a key taken twice or reserved, told as
// "<name> / <owner> : <key>".
QString validateBindings(const QJsonObject &bindings);

// The keys of every shortcut by name: the defaults, with a valid stored
// object merged over them (an invalid one is ignored whole).
QHash<QString, QList<QKeySequence>> effectiveBindings(const QJsonObject &stored);

// "Ctrl+F / Ctrl+G" in the platform's own words, for tooltips and hints.
QString nativeText(const QList<QKeySequence> &keys);

} // namespace tarnix::shortcuts
