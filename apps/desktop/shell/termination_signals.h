#pragma once

#include <QObject>

class QSocketNotifier;

namespace tarnix {

// Turns SIGTERM and SIGINT into an ordinary end of the event loop, so a stop
// from outside (service manager, Ctrl+C) saves and releases exactly what
// closing the controller window does. The signal handler only writes one
// byte to a pipe; the notifier reads it on the main thread.
class TerminationSignals : public QObject
{
    Q_OBJECT
public:
    explicit TerminationSignals(QObject *parent = nullptr);
    ~TerminationSignals() override;

    bool isInstalled() const { return m_notifier != nullptr; }

signals:
    // Emitted on the main thread with the number of the signal received.
    void terminationRequested(int signalNumber);

private:
    void readPipe();

    QSocketNotifier *m_notifier = nullptr;
};

} // namespace tarnix
