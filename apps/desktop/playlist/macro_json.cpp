#include "playlist/macro_json.h"

#include "playlist/json_values.h"
#include "playlist/playlist_text.h"

#include <QJsonObject>
#include <QUuid>

#include <array>
#include <cmath>

namespace tarnix {
namespace {

using namespace macro_limits;

void setError(QString *error, const QString &text)
{
    if (error)
        *error = text;
}

bool fail(QString *error, const QString &text)
{
    setError(error, text);
    return false;
}

bool isUuid(const QString &text)
{
    return !QUuid::fromString(text).isNull();
}

// Reads one step; false for any key of the wrong type or range.
std::optional<MacroStep> parseStep(const QJsonValue &value)
{
    if (!value.isObject())
        return std::nullopt;
    const QJsonObject o = value.toObject();
    MacroStep step;
    auto string = [&](const char *key, QString &out) {
        const QJsonValue v = o.value(QLatin1String(key));
        if (v.isUndefined())
            return true;
        if (!v.isString())
            return false;
        out = v.toString();
        return true;
    };
    auto boolean = [&](const char *key, bool &out) {
        const QJsonValue v = o.value(QLatin1String(key));
        if (v.isUndefined())
            return true;
        if (!v.isBool())
            return false;
        out = v.toBool();
        return true;
    };
    auto integer = [&](const char *key, qint64 low, qint64 high, qint64 &out) {
        const QJsonValue v = o.value(QLatin1String(key));
        if (v.isUndefined())
            return true;
        const auto n = jsonInteger(v, low, high);
        if (n)
            out = *n;
        return n.has_value();
    };

    QString typeText = toText(MacroStepType::note);
    if (!string("id", step.id) || !string("type", typeText) || !string("documentId", step.documentId)
        || !string("label", step.label) || !string("operation", step.operation)
        || !boolean("enabled", step.enabled) || !boolean("requireReady", step.requireReady)
        || !boolean("crossfade", step.crossfade)
        || !integer("durationMs", 0, maxDelayMs, step.durationMs)
        || !integer("crossfadeDurationMs", 100, 60000, step.crossfadeDurationMs)) {
        return std::nullopt;
    }

    if (const QJsonValue v = o.value(QLatin1String("itemId")); !v.isUndefined()) {
        const auto id = v.isString() ? itemIdFromText(v.toString()) : std::nullopt;
        if (!id)
            return std::nullopt;
        step.itemId = *id;
    }
    if (const QJsonValue v = o.value(QLatin1String("settingsPatch")); !v.isUndefined()) {
        if (!v.isObject())
            return std::nullopt;
        step.settingsPatch = v.toObject();
    }
    if (const QJsonValue v = o.value(QLatin1String("value")); !v.isUndefined()) {
        if (!v.isDouble())
            return std::nullopt;
        step.value = v.toDouble();
    }
    if (const QJsonValue v = o.value(QLatin1String("scheduledAt")); !v.isUndefined() && !v.isNull()) {
        if (!v.isString())
            return std::nullopt;
        // An instant needs its offset: a bare local time means something
        // else on every machine.
        const QDateTime at = QDateTime::fromString(v.toString(), Qt::ISODateWithMs);
        if (!at.isValid()
            || (at.timeSpec() != Qt::UTC && at.timeSpec() != Qt::OffsetFromUTC)) {
            return std::nullopt;
        }
        step.scheduledAt = at;
    }
    const auto type = macroStepTypeFromText(typeText);
    if (!type)
        return std::nullopt;
    step.type = *type;
    return step;
}

QJsonValue writeInstant(const QDateTime &at)
{
    return at.isValid() ? QJsonValue(at.toString(Qt::ISODateWithMs)) : QJsonValue(QJsonValue::Null);
}

QString rangeText(const QString &name, qint64 low, qint64 high)
{
    return QStringLiteral("%1 must be an integer from %2 to %3.").arg(name).arg(low).arg(high);
}

bool isWholeIn(double value, double low, double high)
{
    return std::isfinite(value) && value == std::trunc(value) && value >= low && value <= high;
}

// The checks of one step's operation and value; empty when fine.
QString operationProblem(const MacroStep &step)
{
    if (step.type == MacroStepType::transport) {
        static const QStringList ops = {"play", "pause", "offAir"};
        return ops.contains(step.operation) ? QString() : QStringLiteral("Unknown transport operation.");
    }
    if (step.type != MacroStepType::runtimeSetting)
        return {};
    if (!std::isfinite(step.value))
        return QStringLiteral("Runtime value must be finite.");
    if (step.operation == u"masterVolume" || step.operation == u"itemVolume") {
        return isWholeIn(step.value, -960, 60) ? QString() : rangeText(step.operation, -960, 60);
    }
    if (step.operation == u"mute")
        return step.value == 0 || step.value == 1 ? QString() : QStringLiteral("mute must be 0 or 1.");
    if (step.operation == u"playbackRate") {
        static constexpr std::array<double, 7> rates = {0.5, 0.75, 1.0, 1.25, 1.5, 2.0, 3.0};
        for (double rate : rates) {
            if (step.value == rate)
                return {};
        }
        return QStringLiteral("Unsupported playback rate.");
    }
    return QStringLiteral("Unknown runtime operation: %1.").arg(step.operation);
}

bool patchInteger(const QJsonObject &patch, const QString &key, qint64 low, qint64 high,
                  qint64 &out, QString *error)
{
    const auto n = jsonInteger(patch.value(key), low, high);
    if (!n)
        return fail(error, rangeText(key, low, high));
    out = *n;
    return true;
}

bool patchInt32(const QJsonObject &patch, const QString &key, qint64 low, qint64 high,
                qint32 &out, QString *error)
{
    qint64 value = 0;
    if (!patchInteger(patch, key, low, high, value, error))
        return false;
    out = static_cast<qint32>(value);
    return true;
}

bool patchFade(const QJsonObject &patch, const QString &key, PlaylistFadeSetting &fade, QString *error)
{
    const QJsonValue v = patch.value(key);
    if (!v.isObject())
        return fail(error, key + QStringLiteral(" must be an object."));
    const QJsonObject o = v.toObject();
    for (auto it = o.begin(); it != o.end(); ++it) {
        if (it.key() == u"enabled") {
            if (!it.value().isBool())
                return fail(error, key + QStringLiteral(".enabled must be boolean."));
            fade.enabled = it.value().toBool();
        } else if (it.key() == u"durationMs") {
            if (!patchInteger(o, it.key(), 100, 60000, fade.durationMs, error)) {
                setError(error, rangeText(key + QStringLiteral(".durationMs"), 100, 60000));
                return false;
            }
        } else {
            return fail(error, QStringLiteral("Unknown setting %1.%2.").arg(key, it.key()));
        }
    }
    return true;
}

bool applyPatchKey(const QJsonObject &patch, const QString &key, MacroSettingsBase &s, QString *error)
{
    const QJsonValue v = patch.value(key);
    if (key == u"inPointMs")
        return patchInteger(patch, key, 0, maxJsonInteger, s.inPointMs, error);
    if (key == u"outPointMs") {
        if (v.isNull()) {
            s.outPointMs.reset();
            return true;
        }
        qint64 out = 0;
        if (!patchInteger(patch, key, 0, maxJsonInteger, out, error))
            return false;
        s.outPointMs = out;
        return true;
    }
    if (key == u"startMode") {
        const auto mode = fromText<PlaylistStartMode>(v.toString());
        if (!v.isString() || !mode)
            return fail(error, QStringLiteral("startMode must be pause or play."));
        s.startMode = *mode;
        return true;
    }
    if (key == u"endMode") {
        const auto mode = fromText<PlaylistEndMode>(v.toString());
        if (!v.isString() || !mode)
            return fail(error, QStringLiteral("Unsupported endMode."));
        s.endMode = *mode;
        return true;
    }
    if (key == u"repeatEndMode") {
        const auto mode = fromText<PlaylistRepeatEndMode>(v.toString());
        if (!v.isString() || !mode)
            return fail(error, QStringLiteral("Unsupported repeatEndMode."));
        s.repeatEndMode = *mode;
        return true;
    }
    if (key == u"repeatCount")
        return patchInt32(patch, key, 1, 9999, s.repeatCount, error);
    if (key == u"gotoTargetItemId") {
        if (v.isNull()) {
            s.gotoTargetItemId = 0;
            return true;
        }
        const auto id = v.isString() ? itemIdFromText(v.toString()) : std::nullopt;
        if (!id)
            return fail(error, key + QStringLiteral(" must be an integer ID string."));
        s.gotoTargetItemId = *id;
        return true;
    }
    if (key == u"fadeIn")
        return patchFade(patch, key, s.fadeIn, error);
    if (key == u"fadeOut")
        return patchFade(patch, key, s.fadeOut, error);
    if (key == u"endCrossfade")
        return patchFade(patch, key, s.endCrossfade, error);
    if (key == u"nominalVolumeTenthsDb")
        return patchInt32(patch, key, -960, 60, s.nominalVolumeTenthsDb, error);
    if (key == u"nominalAudioDelayFrames")
        return patchInt32(patch, key, 0, 6, s.nominalAudioDelayFrames, error);
    if (key == u"nominalEqLowTenthsDb")
        return patchInt32(patch, key, -150, 150, s.nominalEqLowTenthsDb, error);
    if (key == u"nominalEqMidTenthsDb")
        return patchInt32(patch, key, -150, 150, s.nominalEqMidTenthsDb, error);
    if (key == u"nominalEqHighTenthsDb")
        return patchInt32(patch, key, -150, 150, s.nominalEqHighTenthsDb, error);
    return fail(error, QStringLiteral("Unknown item setting: %1.").arg(key));
}

bool usesTarget(MacroStepType type)
{
    return type == MacroStepType::cue || type == MacroStepType::take
        || type == MacroStepType::itemSettings;
}

} // namespace

std::optional<QList<MacroDefinition>> parseMacros(const QJsonValue &value, QString *error)
{
    QList<MacroDefinition> macros;
    if (value.isUndefined()) {
        setError(error, {});
        return macros;
    }
    if (!value.isArray()) {
        setError(error, QStringLiteral("macros must be an array."));
        return std::nullopt;
    }
    const QJsonArray array = value.toArray();
    macros.reserve(array.size());
    for (const QJsonValue &entry : array) {
        const QJsonObject o = entry.toObject();
        const QJsonValue version = o.value(QLatin1String("version"));
        if (!entry.isObject() || !version.isDouble() || version.toDouble() != 1.0
            || !o.value(QLatin1String("id")).isString() || !o.value(QLatin1String("name")).isString()
            || !o.value(QLatin1String("steps")).isArray()) {
            setError(error, QStringLiteral("Invalid or unsupported macro document format."));
            return std::nullopt;
        }
        MacroDefinition macro;
        macro.id = o.value(QLatin1String("id")).toString();
        macro.name = o.value(QLatin1String("name")).toString();
        const QJsonArray steps = o.value(QLatin1String("steps")).toArray();
        macro.steps.reserve(steps.size());
        for (qsizetype i = 0; i < steps.size(); ++i) {
            auto step = parseStep(steps.at(i));
            if (!step) {
                setError(error, QStringLiteral("Invalid macro step %1 in %2.").arg(i + 1).arg(macro.name));
                return std::nullopt;
            }
            macro.steps.append(std::move(*step));
        }
        macros.append(std::move(macro));
    }
    setError(error, {});
    return macros;
}

QJsonArray writeMacros(const QList<MacroDefinition> &macros)
{
    QJsonArray array;
    for (const MacroDefinition &macro : macros) {
        QJsonArray steps;
        for (const MacroStep &step : macro.steps) {
            QJsonObject o;
            o.insert(QLatin1String("id"), step.id);
            o.insert(QLatin1String("enabled"), step.enabled);
            o.insert(QLatin1String("type"), toText(step.type));
            o.insert(QLatin1String("itemId"), QString::number(step.itemId));
            o.insert(QLatin1String("documentId"), step.documentId);
            o.insert(QLatin1String("label"), step.label);
            o.insert(QLatin1String("scheduledAt"), writeInstant(step.scheduledAt));
            o.insert(QLatin1String("durationMs"), step.durationMs);
            o.insert(QLatin1String("requireReady"), step.requireReady);
            o.insert(QLatin1String("crossfade"), step.crossfade);
            o.insert(QLatin1String("crossfadeDurationMs"), step.crossfadeDurationMs);
            o.insert(QLatin1String("settingsPatch"), step.settingsPatch);
            o.insert(QLatin1String("operation"), step.operation);
            o.insert(QLatin1String("value"), step.value);
            steps.append(o);
        }
        QJsonObject o;
        o.insert(QLatin1String("version"), 1);
        o.insert(QLatin1String("id"), macro.id);
        o.insert(QLatin1String("name"), macro.name);
        o.insert(QLatin1String("steps"), steps);
        array.append(o);
    }
    return array;
}

bool validateMacros(const QList<MacroDefinition> &macros, QString *error)
{
    if (macros.size() > maxMacros)
        return fail(error, QStringLiteral("Too many macros."));
    QSet<QUuid> macroIds;
    QSet<QUuid> stepIds;
    for (const MacroDefinition &macro : macros) {
        if (macro.steps.size() > maxStepsPerMacro)
            return fail(error, QStringLiteral("Too many macro steps."));
        const QUuid macroId = QUuid::fromString(macro.id);
        if (macroId.isNull() || macroIds.contains(macroId))
            return fail(error, QStringLiteral("Macro ID is invalid or duplicated: %1.").arg(macro.id));
        macroIds.insert(macroId);
        for (qsizetype i = 0; i < macro.steps.size(); ++i) {
            const MacroStep &step = macro.steps.at(i);
            const QString prefix = QStringLiteral("Macro %1, step %2: ").arg(macro.name).arg(i + 1);
            auto stepFail = [&](const QString &text) { return fail(error, prefix + text); };
            const QUuid stepId = QUuid::fromString(step.id);
            if (stepId.isNull() || stepIds.contains(stepId))
                return stepFail(QStringLiteral("Invalid or duplicate step ID."));
            stepIds.insert(stepId);
            if (toText(step.type).isEmpty())
                return stepFail(QStringLiteral("Unknown step type."));
            if (!step.documentId.isEmpty() && !isUuid(step.documentId))
                return stepFail(QStringLiteral("Invalid document ID."));
            if (step.durationMs < 0 || step.durationMs > maxDelayMs)
                return stepFail(QStringLiteral("Delay must be between 0 and 7 days."));
            if (step.crossfadeDurationMs < 100 || step.crossfadeDurationMs > 60000)
                return stepFail(QStringLiteral("Invalid crossfade duration."));
            if (!std::isfinite(step.value))
                return stepFail(QStringLiteral("Value must be finite."));
            if (const QString problem = operationProblem(step); !problem.isEmpty())
                return stepFail(problem);
            MacroSettingsBase patched;
            QString patchError;
            if (!validateItemPatch(MacroSettingsBase{}, step.settingsPatch, &patched, &patchError, false))
                return stepFail(patchError);
        }
    }
    setError(error, {});
    return true;
}

bool validateItemPatch(const MacroSettingsBase &base, const QJsonObject &patch,
                       MacroSettingsBase *out, QString *error, bool requireGotoTarget)
{
    if (!out)
        return fail(error, QStringLiteral("No settings output was supplied."));
    MacroSettingsBase result = base;
    for (auto it = patch.begin(); it != patch.end(); ++it) {
        if (!applyPatchKey(patch, it.key(), result, error))
            return false;
    }
    if (result.outPointMs && *result.outPointMs <= result.inPointMs)
        return fail(error, QStringLiteral("OUT must be after IN."));
    const bool gotoEnd = result.endMode == PlaylistEndMode::goto_
        || (result.endMode == PlaylistEndMode::repeat
            && result.repeatEndMode == PlaylistRepeatEndMode::goto_);
    if (requireGotoTarget && gotoEnd && result.gotoTargetItemId == 0)
        return fail(error, QStringLiteral("GOTO requires a target item."));
    *out = result;
    setError(error, {});
    return true;
}

QStringList macroReferenceProblems(const QList<MacroDefinition> &macros,
                                   const QString &documentId, const QSet<quint64> &itemIds)
{
    QStringList problems;
    for (const MacroDefinition &macro : macros) {
        for (qsizetype i = 0; i < macro.steps.size(); ++i) {
            const MacroStep &step = macro.steps.at(i);
            const QString prefix = QStringLiteral("Macro %1, step %2: ").arg(macro.name).arg(i + 1);
            const bool sameDocument = step.documentId == documentId;
            if (usesTarget(step.type)) {
                if (!sameDocument)
                    problems << prefix + QStringLiteral("Target belongs to a different or unassigned document.");
                else if (!itemIds.contains(step.itemId))
                    problems << prefix + QStringLiteral("Target item %1 is missing.").arg(step.itemId);
            }
            const QJsonValue target = step.settingsPatch.value(QLatin1String("gotoTargetItemId"));
            if (!target.isUndefined() && !target.isNull()) {
                const auto id = target.isString() ? itemIdFromText(target.toString()) : std::nullopt;
                if (!sameDocument || !id || !itemIds.contains(*id))
                    problems << prefix + QStringLiteral("GOTO target is missing or belongs to another document.");
            }
        }
    }
    return problems;
}

} // namespace tarnix
