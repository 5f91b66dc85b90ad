#pragma once

#include <QDBusConnection>
#include <QDBusUnixFileDescriptor>
#include <QObject>
#include <QString>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

class QDBusPendingCallWatcher;

namespace tarnix {

class X11ScreenSaverSuspend;

// Keeps the display lit and the machine awake for the whole run.
//
// Two requests go out over D-Bus, both asynchronous and bounded by the call
// timeout, so a hung service never holds up the start:
// - org.freedesktop.ScreenSaver Inhibit on the session bus; the cookie it
//   returns is handed back with UnInhibit at destruction;
// - logind's "idle" block inhibitor on the system bus; it lasts as long as the
//   file descriptor logind returns stays open, so the guard keeps it until
//   destruction.
// Connecting to a bus is not asynchronous in Qt D-Bus, and a daemon that
// never answers would hold the caller indefinitely, so each bus is reached
// by a detached worker thread of its own: it first checks that the daemon
// answers at all (probeBus, bounded by busAnswerTimeout), then connects, and
// hands the connection to the guard by a queued call. A guard that is gone by
// then is simply not called; the worker owns nothing the guard needs.
// On an X11 display the server's own screen saver and DPMS are suspended as
// well (X11ScreenSaverSuspend), because a kiosk session without a desktop has
// nobody who answers the D-Bus requests.
//
// When neither D-Bus request takes hold, the guard logs
// "DISPLAY_ACTIVITY failed to request display/system wakefulness" once and
// carries on; the X11 suspend alone does not count, since it keeps only the
// screen lit, not the system awake.
//
// Linux has no screen-saver system command sent to the application's windows
// (unlike a window message on other systems), so the guard installs no native
// event filter: the screen saver is held off at its source instead.
//
// Thread: main thread only. Nothing here waits for a bus or a reply.
class DisplayActivityGuard : public QObject
{
    Q_OBJECT
public:
    // One bus as a worker reached it: the connection, or why there is none.
    struct BusConnection
    {
        std::optional<QDBusConnection> connection;
        QString failure;
    };
    // Opens one bus connection. Runs on a worker thread and may block.
    using BusConnector = std::function<BusConnection()>;

    struct Options
    {
        // Unset: the process's session or system bus, used only when its
        // daemon answers within busAnswerTimeout.
        BusConnector sessionBus;
        BusConnector systemBus;
        std::chrono::milliseconds busAnswerTimeout{2000};
        std::chrono::milliseconds callTimeout{500};
        // Off in tests that must not touch the display they run on.
        bool suspendX11ScreenSaver = true;
    };

    explicit DisplayActivityGuard(QObject *parent = nullptr);
    explicit DisplayActivityGuard(Options options, QObject *parent = nullptr);
    ~DisplayActivityGuard() override;

    // True once both buses have been reached or given up, and every request
    // sent has answered, failed or timed out; requestsSettled() is emitted at
    // that moment (always from the event loop, never inside the constructor).
    bool isSettled() const;
    // True when the settled outcome is that no wakefulness request took hold
    // (the warning has been logged).
    bool requestFailed() const;
    bool holdsScreenSaverInhibit() const;
    quint32 screenSaverCookie() const;
    bool holdsIdleInhibit() const;

signals:
    void requestsSettled();

private:
    struct HandOver;
    // The process's session or system bus, reached as the unset connectors
    // do. Blocks for the answer time and the connection: worker only.
    static BusConnection connectToProcessBus(QDBusConnection::BusType type,
                                             std::chrono::milliseconds answerTimeout);
    void connectInBackground(QDBusConnection::BusType type, BusConnector connector);
    void busReached(QDBusConnection::BusType type, BusConnection bus);
    void requestScreenSaverInhibit();
    void requestIdleInhibit();
    void onScreenSaverReply(QDBusPendingCallWatcher *watcher);
    void onIdleInhibitReply(QDBusPendingCallWatcher *watcher);
    void requestFinished();
    void settle();

    std::shared_ptr<HandOver> m_handOver;
    std::optional<QDBusConnection> m_sessionBus;
    std::optional<QDBusConnection> m_systemBus;
    int m_callTimeoutMs = 500;
    std::unique_ptr<X11ScreenSaverSuspend> m_x11;

    QDBusPendingCallWatcher *m_screenSaverCall = nullptr;
    QDBusPendingCallWatcher *m_idleCall = nullptr;
    int m_pendingRequests = 0;
    bool m_settled = false;
    bool m_failed = false;

    std::optional<quint32> m_screenSaverCookie;
    QString m_screenSaverFailure;
    QDBusUnixFileDescriptor m_idleInhibitFd;
    QString m_idleFailure;
};

} // namespace tarnix
