#pragma once

#include <QString>
#include <QStringList>

#include <memory>

class QSettings;

namespace tarnix {

// Fixed identity of the application, set before anything reads it.
inline constexpr const char *kApplicationDisplayName = "TARNIX";
inline constexpr const char *kApplicationVersion = "3.0.0-beta.2";
inline constexpr const char *kDistributionProfile = "TARNIX3";
inline constexpr const char *kDevelopmentProfile = "TARNIX3-Dev";

// "TARNIX3" when "tarnix-distribution.txt" in the executable's directory holds
// exactly that word (surrounding white space ignored), "TARNIX3-Dev" otherwise.
// The same answer decides where the GStreamer runtime is looked for.
QString productProfile(const QString &executableDirectory);
bool isDistributionProfile(const QString &profile);

// Portable when "--portable" is among the raw arguments (exact spelling), or
// "portable_mode" or "portable_mode.txt" exists beside the executable.
bool portableModeRequested(const QStringList &arguments, const QString &executableDirectory);

// Sets organisation (empty on purpose), application name (the profile),
// display name and version on the application object.
void applyApplicationIdentity(const QString &profile);

// Path of the settings file for the given profile and mode. Portable:
// <executable directory>/config/<profile>/user.ini; otherwise user.ini in the
// writable application data location.
QString computeSettingsFilePath(const QString &profile, bool portable,
                                const QString &executableDirectory);

// Publishes the start-up decision in the application's "tarnix.settingsFile"
// and "tarnix.portableMode" properties.
void publishSettingsLocation(const QString &settingsFile, bool portable);

// The one way to the settings file: the "tarnix.settingsFile" property when
// set; else, when QSettings' default format is not INI (the case on Linux),
// the non-portable path; else the file an INI QSettings in user scope for
// organisation <profile> and application "TARNIX Controller" would use.
QString settingsFilePath();

// Opens the settings file in INI format. Every reader opens its own and drops
// it when done; nothing caches settings.
std::unique_ptr<QSettings> openSettings();

} // namespace tarnix
