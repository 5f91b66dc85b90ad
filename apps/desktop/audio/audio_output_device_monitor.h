#pragma once

#include <QList>
#include <QObject>
#include <QString>

#include <chrono>
#include <memory>

class QProcess;

namespace tarnix {

struct AudioOutputDevice {
    QString id;    // the PulseAudio sink name
    QString name;  // what the operator reads
    bool operator==(const AudioOutputDevice &) const = default;
};

// What sound devices exist, asked of the PFL helper ("--list") in a process
// of its own, so that a sound server that hangs costs an answer and never
// the main thread: the helper is killed after 3 s. The list stays empty
// until the first valid answer. Main thread.
class AudioOutputDeviceMonitor : public QObject
{
    Q_OBJECT

public:
    struct Options {
        // Empty: "tarnix-pfl-output" beside the application's executable.
        QString helperPath;
        std::chrono::milliseconds killAfter{3000};
    };

    explicit AudioOutputDeviceMonitor(const Options &options, QObject *parent = nullptr);
    explicit AudioOutputDeviceMonitor(QObject *parent = nullptr);
    ~AudioOutputDeviceMonitor() override;

    // Asks again; nothing while an answer is awaited or once stopped.
    void refresh();
    bool hasList() const { return m_hasList; }
    QList<AudioOutputDevice> devices() const { return m_devices; }
    QString defaultDeviceId() const { return m_defaultId; }
    // At exit: a running helper is killed and nothing starts again.
    void stop();

signals:
    void devicesChanged();
    void refreshed(bool success);

private:
    void finished(bool normalExit, int exitCode);

    Options m_options;
    std::unique_ptr<QProcess> m_process;
    bool m_hasList = false;
    QList<AudioOutputDevice> m_devices;
    QString m_defaultId;
    bool m_stopped = false;
    bool m_killed = false;
};

} // namespace tarnix
