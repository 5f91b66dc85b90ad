#pragma once

#include <QProcess>
#include <QString>
#include <QTemporaryDir>

#include <memory>

namespace tarnix::test {

// A PulseAudio server of the test's own, in a temporary directory, with two
// null sinks "onair" and "other" (48 kHz, float32le, stereo). While it runs,
// PULSE_SERVER points this process at it; the user's server is never
// touched. The daemon ends with this object (or with the test process).
class PrivatePulseAudio
{
public:
    PrivatePulseAudio() = default;
    ~PrivatePulseAudio();
    PrivatePulseAudio(const PrivatePulseAudio &) = delete;
    PrivatePulseAudio &operator=(const PrivatePulseAudio &) = delete;

    // Starts the daemon and waits until it answers; false with the reason.
    bool start(QString *error);
    void stop();
    QString serverAddress() const;

    // Runs pactl against this server; returns its standard output, or a
    // null string if it failed.
    QString pactl(const QStringList &arguments) const;

    // Stops and continues the daemon (SIGSTOP/SIGCONT): a client that talks
    // to a stopped server waits for its answer.
    bool suspend();
    bool resume();
    // Unloads the module of the null sink with this name; false if none.
    bool unloadSink(const QString &sinkName);
    // Loads a null sink of this name again, as the daemon started them.
    bool loadSink(const QString &sinkName);
    // Kills the daemon outright (SIGKILL) and starts a new one at the same
    // address with the same sinks; false with the reason.
    bool restart(QString *error);

private:
    bool launch(QString *error);

    std::unique_ptr<QTemporaryDir> m_directory;
    std::unique_ptr<QProcess> m_daemon;
    QByteArray m_previousServer;
    bool m_hadPreviousServer = false;
};

} // namespace tarnix::test
