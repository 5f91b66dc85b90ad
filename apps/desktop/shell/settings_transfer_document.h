#pragma once

#include "shell/settings_transfer_rules.h"

#include <QByteArray>
#include <QDateTime>
#include <QJsonObject>
#include <QString>

#include <optional>

// The settings transfer file: one compact JSON object with "format"
// "tarnix-settings", "version" 1 and the "settings" object. Plain functions
// over bytes; the file work is the transfer's.
namespace tarnix {

// The largest transfer file read; a larger one is refused before it is
// parsed.
inline constexpr qint64 kSettingsTransferMaxBytes = 4 * 1024 * 1024;

// "tarnix-settings-<yyyyMMdd-HHmmss>.json", the name a save dialog offers.
QString settingsExportFileName(const QDateTime &localTime);

// Reads a transfer file: at most kSettingsTransferMaxBytes, a JSON object
// of the format and version above with a "settings" object, whose settings
// pass checkTransferSettings(). Returns the settings to write, or nothing
// with the reason.
std::optional<QJsonObject> readSettingsTransferDocument(const QByteArray &bytes,
                                                        const ShortcutBindingsCheck &shortcutCheck = {},
                                                        QString *error = nullptr);

// The file of a checked settings object: "format", "version" and
// "settings" in that order, the settings in the transfer's key order, each
// value in the JSON type of its default.
QByteArray settingsTransferDocument(const QJsonObject &settings);

} // namespace tarnix
