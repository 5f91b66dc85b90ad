#pragma once

#include <QDBusConnection>
#include <QDBusUnixFileDescriptor>
#include <QObject>
#include <QString>

#include <chrono>
#include <memory>
#include <optional>

class QDBusPendingCallWatcher;

namespace tarnix {

class X11ScreenSaverSuspend;

// Keeps the display lit and the machine awake for the whole run.
//
// Two requests go out over D-Bus at construction, both asynchronous and
// bounded by the call timeout, so a hung service never holds up the start:
// - org.freedesktop.ScreenSaver Inhibit on the session bus; the cookie it
//   returns is handed back with UnInhibit at destruction;
// - logind's "idle" block inhibitor on the system bus; it lasts as long as the
//   file descriptor logind returns stays open, so the guard keeps it until
//   destruction.
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
// Thread: main thread only. Nothing here waits for a reply.
class DisplayActivityGuard : public QObject
{
    Q_OBJECT
public:
    struct Options
    {
        QDBusConnection sessionBus = QDBusConnection::sessionBus();
        QDBusConnection systemBus = QDBusConnection::systemBus();
        std::chrono::milliseconds callTimeout{500};
        // Off in tests that must not touch the display they run on.
        bool suspendX11ScreenSaver = true;
    };

    explicit DisplayActivityGuard(QObject *parent = nullptr);
    explicit DisplayActivityGuard(Options options, QObject *parent = nullptr);
    ~DisplayActivityGuard() override;

    // True once every request sent at construction has answered, failed or
    // timed out; requestsSettled() is emitted at that moment (always from the
    // event loop, never inside the constructor).
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
    void requestScreenSaverInhibit();
    void requestIdleInhibit();
    void onScreenSaverReply(QDBusPendingCallWatcher *watcher);
    void onIdleInhibitReply(QDBusPendingCallWatcher *watcher);
    void requestFinished();
    void settle();

    QDBusConnection m_sessionBus;
    QDBusConnection m_systemBus;
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
