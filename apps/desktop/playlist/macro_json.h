#pragma once

#include "playlist/macro_records.h"
#include "playlist/playlist_records.h"

#include <QJsonArray>
#include <QJsonValue>
#include <QSet>
#include <QStringList>

// The JSON form of macros inside the playlist document and the checks made
// on them.
namespace tarnix {

// The part of an item's settings that a macro patch may change.
using MacroSettingsBase = PlaylistItemSettings;

namespace macro_limits {
constexpr int maxMacros = 1000;
constexpr int maxStepsPerMacro = 10000;
constexpr qint64 maxDelayMs = 604800000;  // 7 days
constexpr qint64 maxJsonInteger = 9007199254740991;  // 2^53 - 1
}

// The `macros` value of a document. Undefined gives an empty list; any other
// value but an array fails. `error` may be null; success clears it.
std::optional<QList<MacroDefinition>> parseMacros(const QJsonValue &value, QString *error);
QJsonArray writeMacros(const QList<MacroDefinition> &macros);

// Limits, ids, step ranges and patches, stopping at the first problem.
bool validateMacros(const QList<MacroDefinition> &macros, QString *error);

// Applies a patch to `base` into `out` and checks the result. With
// requireGotoTarget a GOTO end without a target is refused.
bool validateItemPatch(const MacroSettingsBase &base, const QJsonObject &patch,
                       MacroSettingsBase *out, QString *error, bool requireGotoTarget);

// Problems of the steps' target items against one document; checking goes on
// after a problem, so the list names all of them.
QStringList macroReferenceProblems(const QList<MacroDefinition> &macros,
                                   const QString &documentId, const QSet<quint64> &itemIds);

} // namespace tarnix
