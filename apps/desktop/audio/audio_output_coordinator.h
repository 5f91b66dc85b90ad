#pragma once

#include "audio/audio_output_device_monitor.h"
#include "shell/localized_text.h"

#include <QObject>
#include <QSet>
#include <QString>

#include <functional>
#include <optional>

namespace tarnix {

// The saved output choices against the devices that exist. It warns once
// about a device that is gone, moves ON AIR to the system default when the
// operator allowed it, keeps PFL off a device ON AIR uses unless the
// operator agreed, and turns PFL on only after a fresh look at the devices.
// It never touches the ON AIR output beyond telling it the fallback device.
// Main thread.
class AudioOutputCoordinator : public QObject
{
    Q_OBJECT

public:
    // Where it acts; the head connects them to the PFL output, the ON AIR
    // output and the message bar, tests to their own records.
    struct Hooks {
        // PFL on a device (the effective id) or off.
        std::function<void(const QString &deviceId)> turnPflOn;
        std::function<void()> turnPflOff;
        // The saved ON AIR choice became the system default.
        std::function<void(const QString &deviceId)> setProgramDevice;
        // The ON AIR device reported missing is still missing, or has come
        // back: a failed output tries it again.
        std::function<void()> retryProgramDevice;
        // The device the ON AIR output really plays to, and its status key.
        std::function<QString()> activeProgramDevice;
        std::function<QString()> programStatusKey;
        // A message for the operator: warning (else information), the log
        // code, the text and its detail.
        std::function<void(bool warning, const QString &source, const LocalizedText &text, const QString &detail)> tell;
        // Whether PFL may share the ON AIR device; answered through
        // pflSameDeviceDecision().
        std::function<void()> askSameDevice;
    };

    // The answer of the question, as it was asked.
    struct SameDevicePflState {
        QString pflId;
        QString savedProgramId;
        QString activeProgramId;
        QString defaultId;
        bool operator==(const SameDevicePflState &) const = default;
    };

    AudioOutputCoordinator(AudioOutputDeviceMonitor *monitor, const Hooks &hooks, QObject *parent = nullptr);

    AudioOutputDeviceMonitor *monitor() const { return m_monitor; }

    // The effective ids: an empty ON AIR choice is the default; PFL's
    // "@system-default" is the default.
    static QString effectiveProgramId(const QString &savedId, const QString &defaultId);
    static QString effectivePflId(const QString &savedId, const QString &defaultId);
    struct Missing {
        bool program = false;
        bool pfl = false;
    };
    static Missing outputsMissing(const QList<AudioOutputDevice> &devices, const QString &defaultId,
                                  const QString &programId, const QString &pflId);
    static bool sameDevice(const QString &programId, const QString &pflId, const QString &defaultId);

    // Tells which output a choice on the settings page changed to.
    void announceSelection(bool program, const QString &id);

public slots:
    void refresh();
    void programAudioOutputError(const QString &detail);
    void pflRequested(bool enabled);
    void pflSameDeviceDecision(bool accepted);
    void stop();

signals:
    // The coordinator itself changed a saved choice.
    void savedAudioOutputsChanged();

private:
    void evaluate(bool success);
    void turnPflOff();

    AudioOutputDeviceMonitor *m_monitor;
    Hooks m_hooks;
    QSet<QString> m_notifiedKeys;
    QString m_lastFailureKey;
    std::optional<QString> m_pendingPflId;
    std::optional<SameDevicePflState> m_pendingConfirmation;
    std::optional<SameDevicePflState> m_confirmedSameDevice;
    std::optional<QString> m_pendingError;
    bool m_stopped = false;
};

} // namespace tarnix
