#include "playlist/macro_records.h"

#include <QUuid>

#include <array>

namespace tarnix {
namespace {

constexpr std::array<QLatin1String, 9> kStepTypeTexts = {
    QLatin1String("cue"), QLatin1String("take"), QLatin1String("waitUntil"),
    QLatin1String("delay"), QLatin1String("itemSettings"), QLatin1String("runtimeSetting"),
    QLatin1String("transport"), QLatin1String("manualWait"), QLatin1String("note"),
};

} // namespace

QString toText(MacroStepType type)
{
    const auto index = static_cast<std::size_t>(type);
    return index < kStepTypeTexts.size() ? QString(kStepTypeTexts[index]) : QString();
}

std::optional<MacroStepType> macroStepTypeFromText(QStringView text)
{
    for (std::size_t i = 0; i < kStepTypeTexts.size(); ++i) {
        if (text == kStepTypeTexts[i])
            return static_cast<MacroStepType>(i);
    }
    return std::nullopt;
}

QString MacroStep::newMacroUuid()
{
    return QUuid::createUuid().toString();
}

bool operator==(const MacroStep &a, const MacroStep &b)
{
    const bool sameTime = a.scheduledAt.isValid() == b.scheduledAt.isValid()
        && (!a.scheduledAt.isValid()
            || (a.scheduledAt == b.scheduledAt
                && a.scheduledAt.offsetFromUtc() == b.scheduledAt.offsetFromUtc()));
    return sameTime && a.id == b.id && a.enabled == b.enabled && a.type == b.type
        && a.itemId == b.itemId && a.documentId == b.documentId && a.label == b.label
        && a.durationMs == b.durationMs && a.requireReady == b.requireReady
        && a.crossfade == b.crossfade && a.crossfadeDurationMs == b.crossfadeDurationMs
        && a.settingsPatch == b.settingsPatch && a.operation == b.operation
        && (a.value == b.value || (a.value != a.value && b.value != b.value));
}

} // namespace tarnix
