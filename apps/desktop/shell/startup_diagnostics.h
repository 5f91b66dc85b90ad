#pragma once

#include <QString>
#include <QStringList>

namespace tarnix {

inline constexpr const char *kPhaseBeforeSettings = "before-settings-initialization";
inline constexpr const char *kPhaseControllerReady = "controller-ready";

// What the diagnostics describe. Gathered by the caller so tests can point
// them at files of their own.
struct StartupDiagnosticsInput {
    QString phase;
    QString executablePath;
    QString workingDirectory;
    QString logDirectory;
    QString appLocalData;
    QString settingsFile;
    bool portable = false;
};

// One compact JSON object per record, in the order they are written:
// "process" (first phase only), "settings-source", "settings-file", one
// "settings-read" per key of the file, "settings-read-complete", then one
// "loaded-module" per module or a "module-snapshot-error".
QStringList startupDiagnosticRecords(const StartupDiagnosticsInput &input);

// Fills the input from the running application and writes every record as an
// information line of the "STARTUP" category.
void writeStartupDiagnostics(const QString &phase);

// "logs" in the application local data location: where the application log
// writes when started without a directory.
QString defaultLogDirectory();

} // namespace tarnix
