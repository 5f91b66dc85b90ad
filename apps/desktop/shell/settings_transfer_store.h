#pragma once

#include <QJsonObject>
#include <QString>

class QSettings;

// The settings transfer's side of the settings file: every transfer key
// read in one pass, and a checked set written in one. File work: run on the
// background I/O queue, never on the main thread.
namespace tarnix {

// Every transfer key, read with its default as fallback and given in the
// JSON type of the default. "testPatterns/entries" is taken only when the
// file holds it, and is null otherwise.
QJsonObject readTransferSettings(QSettings &settings);

// Writes each member of a checked settings object (checkTransferSettings())
// and syncs the file once, so that the file changes in one step or not at
// all. Refused before anything is set when the file cannot be read or
// written. When the sync fails, the values set are put back, so that what
// this process reads stays what the file holds. False with a text on
// failure.
bool writeTransferSettings(QSettings &settings, const QJsonObject &checked, QString *error = nullptr);

} // namespace tarnix
