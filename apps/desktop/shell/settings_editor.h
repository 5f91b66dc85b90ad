#pragma once

#include "shell/settings_transfer_rules.h"

#include <QJsonObject>
#include <QJsonValue>
#include <QObject>
#include <QPointer>
#include <QStringList>

#include <optional>

namespace tarnix {

class BackgroundIoQueue;

// Judges one changed value by the rules a settings import uses, so that a
// value the window saves is one an import would take. The control socket
// path, which no transfer carries, has its own rule: empty, or an absolute
// path short enough for a local socket address. Returns the value to write
// (whole numbers as integers), or nothing with the rule's text. No file
// access beyond what the time zone rule asks of the zone database, so it
// runs on the file queue's worker.
std::optional<QJsonValue> checkSettingChange(const QString &key, const QJsonValue &value,
                                             const ShortcutBindingsCheck &shortcutCheck, QString *error = nullptr);

// The settings window's way to the settings file: every read and write
// runs on the file queue, so the main thread never waits on the disk, and
// results come back on the main thread in the order they were asked for.
// Main thread.
class SettingsEditor : public QObject
{
    Q_OBJECT

public:
    SettingsEditor(BackgroundIoQueue *queue, ShortcutBindingsCheck shortcutCheck, QObject *parent = nullptr);

    // Reads every key of the store (patterned groups aside) and the names of
    // the time zones this machine knows; loaded() follows.
    void load();
    // Checks and writes one value; changed() when it is saved, refused()
    // when its rule refuses it (the file is not touched), saveFailed() when
    // the file could not be written.
    void change(const QString &key, const QJsonValue &value);

    // The values as last loaded or saved.
    const QJsonObject &values() const { return m_values; }

signals:
    void loaded(const QJsonObject &values, const QStringList &timeZones);
    void changed(const QString &key, const QJsonValue &value);
    void refused(const QString &key, const QString &reason);
    void saveFailed(const QString &key, const QJsonValue &value, const QString &reason);

private:
    QPointer<BackgroundIoQueue> m_queue;
    ShortcutBindingsCheck m_shortcutCheck;
    QJsonObject m_values;
};

} // namespace tarnix
