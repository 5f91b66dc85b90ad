#pragma once

#include <QDateTime>
#include <QJsonObject>
#include <QList>
#include <QString>
#include <QStringView>

#include <optional>

// Macros: named, ordered lists of timed steps that travel in the playlist
// document, so that a macro always refers to items of the document it lives
// in. Plain value records; their JSON form and checks are in macro_json.h.
namespace tarnix {

enum class MacroStepType : int {
    cue = 0,            // load the item in macro standby
    take = 1,           // take it ON AIR, at once or at scheduledAt
    waitUntil = 2,      // wait for a wall-clock instant
    delay = 3,          // wait durationMs
    itemSettings = 4,   // apply settingsPatch to the item
    runtimeSetting = 5, // change a live value (operation, value)
    transport = 6,      // play, pause or OFF AIR
    manualWait = 7,     // pause until the operator resumes
    note = 8,           // a comment
};

QString toText(MacroStepType type);  // empty for a value out of range
std::optional<MacroStepType> macroStepTypeFromText(QStringView text);

struct MacroStep {
    QString id = newMacroUuid();
    bool enabled = true;              // a disabled step is skipped at run time
    MacroStepType type = MacroStepType::note;
    quint64 itemId = 0;
    QString documentId;               // the document the target item belongs to
    QString label;
    QDateTime scheduledAt;            // an instant with its UTC offset; invalid: none
    qint64 durationMs = 0;            // delay, 0 to 7 days
    bool requireReady = false;
    bool crossfade = false;
    qint64 crossfadeDurationMs = 1000;
    QJsonObject settingsPatch;
    QString operation;
    double value = 0;

    static QString newMacroUuid();

    // scheduledAt compares instant and offset: the offset is what the
    // operator wrote and what the writer gives back.
    friend bool operator==(const MacroStep &a, const MacroStep &b);
};

struct MacroDefinition {
    QString id;    // UUID with braces
    QString name;
    QList<MacroStep> steps;

    friend bool operator==(const MacroDefinition &, const MacroDefinition &) = default;
};

} // namespace tarnix

Q_DECLARE_METATYPE(tarnix::MacroStep)
Q_DECLARE_METATYPE(tarnix::MacroDefinition)
