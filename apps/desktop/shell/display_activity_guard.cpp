#include "shell/display_activity_guard.h"

#include "shell/log_categories.h"
#include "shell/x11_screen_saver_suspend.h"

#include <QCoreApplication>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

#include <algorithm>

namespace tarnix {

namespace {

const QString kScreenSaverService = QStringLiteral("org.freedesktop.ScreenSaver");
const QString kScreenSaverPath = QStringLiteral("/org/freedesktop/ScreenSaver");
const QString kScreenSaverInterface = QStringLiteral("org.freedesktop.ScreenSaver");

const QString kLogindService = QStringLiteral("org.freedesktop.login1");
const QString kLogindPath = QStringLiteral("/org/freedesktop/login1");
const QString kLogindInterface = QStringLiteral("org.freedesktop.login1.Manager");

const QString kApplicationName = QStringLiteral("TARNIX");
const QString kReason = QStringLiteral("Program output on air");

QString errorText(const QDBusError &error)
{
    return error.name() + QStringLiteral(": ") + error.message();
}

void sendUnInhibit(const QDBusConnection &bus, quint32 cookie)
{
    QDBusMessage message = QDBusMessage::createMethodCall(kScreenSaverService, kScreenSaverPath,
                                                          kScreenSaverInterface,
                                                          QStringLiteral("UnInhibit"));
    message << cookie;
    // Fire and forget: the answer carries nothing, and shutdown must not wait
    // for a service that may have gone away.
    if (!bus.send(message))
        qCInfo(lcSystem()) << "DISPLAY_ACTIVITY could not send UnInhibit; cookie=" << cookie;
}

// Takes over a screen saver Inhibit call that is still unanswered when the
// guard goes away. Should the cookie still arrive, it is handed back at once
// so the inhibit does not outlive the guard. The call's own timeout bounds the
// wait; the object is parented to the application so that it goes with it if
// the event loop has already ended.
class LateScreenSaverRelease : public QObject
{
public:
    LateScreenSaverRelease(const QDBusConnection &bus, QDBusPendingCallWatcher *watcher)
        : QObject(QCoreApplication::instance())
        , m_bus(bus)
    {
        watcher->setParent(this);
        connect(watcher, &QDBusPendingCallWatcher::finished, this,
                [this](QDBusPendingCallWatcher *finished) {
                    const QDBusPendingReply<uint> reply = *finished;
                    if (!reply.isError())
                        sendUnInhibit(m_bus, reply.value());
                    deleteLater();
                });
    }

private:
    QDBusConnection m_bus;
};

} // namespace

DisplayActivityGuard::DisplayActivityGuard(QObject *parent)
    : DisplayActivityGuard(Options{}, parent)
{
}

DisplayActivityGuard::DisplayActivityGuard(Options options, QObject *parent)
    : QObject(parent)
    , m_sessionBus(std::move(options.sessionBus))
    , m_systemBus(std::move(options.systemBus))
    , m_callTimeoutMs(static_cast<int>(std::max<std::chrono::milliseconds::rep>(
          1, options.callTimeout.count())))
{
    if (options.suspendX11ScreenSaver)
        m_x11 = X11ScreenSaverSuspend::forApplication();

    requestScreenSaverInhibit();
    requestIdleInhibit();
    if (m_pendingRequests == 0)
        settle();
}

DisplayActivityGuard::~DisplayActivityGuard()
{
    if (m_screenSaverCookie) {
        sendUnInhibit(m_sessionBus, *m_screenSaverCookie);
    } else if (m_screenSaverCall) {
        m_screenSaverCall->disconnect(this);
        new LateScreenSaverRelease(m_sessionBus, m_screenSaverCall);
        m_screenSaverCall = nullptr;
    }
    // An unanswered logind call needs no such care: its reply is dropped
    // unread, and with it the descriptor that would have held the inhibitor.
    // m_idleInhibitFd closes with this object, which releases the held one.
}

bool DisplayActivityGuard::isSettled() const
{
    return m_settled;
}

bool DisplayActivityGuard::requestFailed() const
{
    return m_failed;
}

bool DisplayActivityGuard::holdsScreenSaverInhibit() const
{
    return m_screenSaverCookie.has_value();
}

quint32 DisplayActivityGuard::screenSaverCookie() const
{
    return m_screenSaverCookie.value_or(0);
}

bool DisplayActivityGuard::holdsIdleInhibit() const
{
    return m_idleInhibitFd.isValid();
}

void DisplayActivityGuard::requestScreenSaverInhibit()
{
    if (!m_sessionBus.isConnected()) {
        m_screenSaverFailure = QStringLiteral("session bus not connected");
        return;
    }
    QDBusMessage message = QDBusMessage::createMethodCall(kScreenSaverService, kScreenSaverPath,
                                                          kScreenSaverInterface,
                                                          QStringLiteral("Inhibit"));
    message << kApplicationName << kReason;
    m_screenSaverCall =
        new QDBusPendingCallWatcher(m_sessionBus.asyncCall(message, m_callTimeoutMs), this);
    connect(m_screenSaverCall, &QDBusPendingCallWatcher::finished, this,
            &DisplayActivityGuard::onScreenSaverReply);
    ++m_pendingRequests;
}

void DisplayActivityGuard::requestIdleInhibit()
{
    if (!m_systemBus.isConnected()) {
        m_idleFailure = QStringLiteral("system bus not connected");
        return;
    }
    QDBusMessage message = QDBusMessage::createMethodCall(kLogindService, kLogindPath,
                                                          kLogindInterface,
                                                          QStringLiteral("Inhibit"));
    message << QStringLiteral("idle") << kApplicationName << kReason << QStringLiteral("block");
    m_idleCall = new QDBusPendingCallWatcher(m_systemBus.asyncCall(message, m_callTimeoutMs), this);
    connect(m_idleCall, &QDBusPendingCallWatcher::finished, this,
            &DisplayActivityGuard::onIdleInhibitReply);
    ++m_pendingRequests;
}

void DisplayActivityGuard::onScreenSaverReply(QDBusPendingCallWatcher *watcher)
{
    m_screenSaverCall = nullptr;
    watcher->deleteLater();
    const QDBusPendingReply<uint> reply = *watcher;
    if (reply.isError()) {
        m_screenSaverFailure = errorText(reply.error());
    } else {
        m_screenSaverCookie = reply.value();
        qCInfo(lcSystem()) << "DISPLAY_ACTIVITY screen saver inhibited; cookie=" << *m_screenSaverCookie;
    }
    requestFinished();
}

void DisplayActivityGuard::onIdleInhibitReply(QDBusPendingCallWatcher *watcher)
{
    m_idleCall = nullptr;
    watcher->deleteLater();
    const QDBusPendingReply<QDBusUnixFileDescriptor> reply = *watcher;
    if (reply.isError()) {
        m_idleFailure = errorText(reply.error());
    } else if (!reply.value().isValid()) {
        m_idleFailure = QStringLiteral("no file descriptor in the reply");
    } else {
        m_idleInhibitFd = reply.value();
        qCInfo(lcSystem()) << "DISPLAY_ACTIVITY idle inhibited";
    }
    requestFinished();
}

void DisplayActivityGuard::requestFinished()
{
    if (--m_pendingRequests == 0)
        settle();
}

void DisplayActivityGuard::settle()
{
    m_settled = true;
    const bool screenSaverHeld = m_screenSaverCookie.has_value();
    const bool idleHeld = m_idleInhibitFd.isValid();
    if (!screenSaverHeld && !idleHeld) {
        // One inhibitor that took hold already tells the host that the run is
        // active; only a run with neither is unprotected and worth a warning.
        m_failed = true;
        qCWarning(lcSystem()).noquote()
            << QStringLiteral("DISPLAY_ACTIVITY failed to request display/system wakefulness"
                              " (screen saver: %1; idle inhibit: %2)")
                   .arg(m_screenSaverFailure, m_idleFailure);
    } else if (!screenSaverHeld) {
        qCInfo(lcSystem()).noquote() << "DISPLAY_ACTIVITY screen saver inhibit unavailable:"
                                     << m_screenSaverFailure;
    } else if (!idleHeld) {
        qCInfo(lcSystem()).noquote() << "DISPLAY_ACTIVITY idle inhibit unavailable:" << m_idleFailure;
    }
    // Queued so that a caller who connects after construction still sees it.
    QMetaObject::invokeMethod(this, [this] { emit requestsSettled(); }, Qt::QueuedConnection);
}

} // namespace tarnix
