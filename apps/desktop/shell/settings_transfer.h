#pragma once

#include "shell/localized_text.h"
#include "shell/settings_transfer_rules.h"

#include <QJsonObject>
#include <QObject>
#include <QString>

#include <functional>
#include <memory>

namespace tarnix {

class BackgroundIoQueue;
class UiLanguageManager;
class UserInfoCenter;

// How a settings export or restore ended, as the operator is told.
struct SettingsTransferOutcome {
    bool success = false;
    LocalizedText message;  // the operator's message
    QString detail;         // what was wrong, in the reader's or writer's words
};

// Export of the settings to a transfer file and their restore from one.
// Reading, checking and writing run on the background I/O queue; the main
// thread only starts an operation and takes up its result. A restore that
// is refused at any step leaves the settings file as it was, byte for byte.
// A restore that is written switches the interface language it names,
// hands the settings to the running parts (settingsRestored) and then
// tells the operator. Every outcome is posted from "SYSTEM" and handed to
// the caller's completion, exactly once.
//
// Main thread only.
class SettingsTransfer : public QObject
{
    Q_OBJECT

public:
    using Completion = std::function<void(const SettingsTransferOutcome &outcome)>;

    // `shortcutCheck` judges "shortcuts/bindings" (empty: any object
    // passes). `settingsPath` empty: settingsFilePath() when each operation
    // starts.
    SettingsTransfer(BackgroundIoQueue *queue, UserInfoCenter *userInfo, UiLanguageManager *languageManager,
                     ShortcutBindingsCheck shortcutCheck = {}, QString settingsPath = {}, QObject *parent = nullptr);
    ~SettingsTransfer() override;

    // Writes every transfer setting to the path (".json" added when it has
    // no suffix). Fails, leaving an existing file untouched, when the
    // settings as stored do not pass the import's checks or the file
    // cannot be written whole.
    void exportSettings(const QString &path, Completion done = {});
    // Reads the file, checks it whole and writes its settings to the
    // settings file.
    void importSettings(const QString &path, Completion done = {});

    // From here on, restores not yet written are dropped unwritten and new
    // operations are refused.
    void close();
    bool isClosed() const;

signals:
    // A restore was written: every transfer setting as the file now holds
    // it, for the running parts to take up.
    void settingsRestored(const QJsonObject &settings);

private:
    struct Impl;
    std::unique_ptr<Impl> d;
};

} // namespace tarnix
