#pragma once

#include <QJsonObject>
#include <QString>
#include <QStringList>

#include <functional>
#include <optional>

// What a settings export carries and what a settings import accepts. Plain
// functions over fixed tables, with no file or settings access, so that the
// export, the import and the fuzzer all judge a settings object the same
// way. Safe on any thread.
namespace tarnix {

// The keys a settings transfer carries, in the file's order: every key of
// the settings store with a default of its own. Keys whose owner keeps
// per-machine state (the directories last used in file dialogs, the network
// video host id and source names, the day the last activity notice went,
// the per-device audio mappings, plug-in slots other than the three named
// ones, the control socket path) stay where they are, and so does
// "player/fadeToBackground".
const QStringList &transferSettingKeys();
bool isTransferSetting(const QString &key);

// The check of the owner of "shortcuts/bindings": the first offence of a
// bindings object, or an empty text when it is valid. The keyboard lives
// above this library, so its check is handed in.
using ShortcutBindingsCheck = std::function<QString(const QJsonObject &bindings)>;

// Brings a settings object, from a transfer file or read from the store, to
// the form that is written, and checks it:
// - "player/fadeToBackground" and every key the transfer does not carry
//   are dropped;
// - "midi/control", when it is an object, is brought to its current form
//   by the MIDI configuration's own rules;
// - every value is checked against its key: the JSON type of its default
//   first, then the key's own rule;
// - the two pairs that are judged together: the second warning minute may
//   not exceed the first, and ATEM and V-8HD may not both be enabled.
// Whole numbers come back as integers. A key that is missing is not
// required; the pairs judge a missing member by its default.
//
// Returns the object to write, or nothing with the first offence, in key
// order, as "<key>: <rule>".
std::optional<QJsonObject> checkTransferSettings(const QJsonObject &settings,
                                                 const ShortcutBindingsCheck &shortcutCheck = {},
                                                 QString *error = nullptr);

// An IPv4 address in dotted decimal: four octets 0 to 255, no leading zero,
// nothing around them.
bool isDottedDecimalIpv4(const QString &text);

} // namespace tarnix
