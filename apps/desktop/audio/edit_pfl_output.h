#pragma once

#include <QObject>
#include <QString>

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>

namespace tarnix {

class EditPflFeed;

// Owns the PFL helper process: the program that plays the EDIT ring on the
// chosen device, outside this process, so that a sound driver that crashes
// or hangs costs PFL and never the show. It starts the helper when PFL is
// wanted, watches its state and heartbeat in the ring, stops it (and kills
// it if it does not go) on a change of device, and reports a failure once:
// after a failure the operator turns PFL on again.
//
// Off keeps a running helper open and silent, so a quick toggle does not
// reopen the device.
//
// The helper is started with SIGKILL as its parent-death signal and a data
// limit of 256 MiB; it installs its own system-call filter. Main thread.
class EditPflOutput : public QObject
{
    Q_OBJECT

public:
    struct Options {
        // Empty: "tarnix-pfl-output" beside the application's executable.
        QString helperPath;
        std::chrono::milliseconds watchdogInterval{100};
        std::chrono::milliseconds stopKillLimit{1500};
        std::chrono::milliseconds openingLimit{5000};
        std::chrono::milliseconds heartbeatLimit{2000};
        std::uint64_t dataLimitBytes = 256ull * 1024 * 1024;
        // Monotonic nanoseconds (the heartbeat's clock); tests inject theirs.
        std::function<std::uint64_t()> clock;
    };

    EditPflOutput(std::shared_ptr<EditPflFeed> feed, const Options &options, QObject *parent = nullptr);
    explicit EditPflOutput(std::shared_ptr<EditPflFeed> feed, QObject *parent = nullptr);
    ~EditPflOutput() override;

    bool canEnable() const;
    // Requested, the helper ready, and not stopping.
    bool isActive() const;
    QString deviceId() const;
    QString statusText() const;
    // The catalogue key of the status ("edit.pfl.on", ...).
    QString statusKey() const;
    bool isHelperRunning() const;

    // A running helper is stopped and started again on the new device.
    void setDeviceId(const QString &deviceId);
    void setEnabled(bool enabled);
    // At exit: nothing restarts, a running helper is killed.
    void shutdown();
    bool hasFinished() const;

signals:
    void stateChanged();
    void outputError(const QString &message);

private:
    struct Impl;
    std::unique_ptr<Impl> d;
};

} // namespace tarnix
