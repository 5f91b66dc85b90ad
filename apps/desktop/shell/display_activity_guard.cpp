#include "shell/display_activity_guard.h"

#include "shell/dbus_bus_probe.h"
#include "shell/log_categories.h"
#include "shell/x11_screen_saver_suspend.h"

#include <QCoreApplication>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

#include <algorithm>
#include <mutex>
#include <system_error>
#include <thread>

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

QString busName(QDBusConnection::BusType type)
{
    return type == QDBusConnection::SystemBus ? QStringLiteral("system bus") : QStringLiteral("session bus");
}

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

// What a bus worker shares with the guard. The worker posts its result to the
// guard only while `guard` is set; the guard clears it under the lock when it
// goes, and a result already posted dies with the guard's posted events.
struct DisplayActivityGuard::HandOver
{
    std::mutex mutex;
    DisplayActivityGuard *guard = nullptr;
};

DisplayActivityGuard::DisplayActivityGuard(QObject *parent)
    : DisplayActivityGuard(Options{}, parent)
{
}

DisplayActivityGuard::DisplayActivityGuard(Options options, QObject *parent)
    : QObject(parent)
    , m_handOver(std::make_shared<HandOver>())
    , m_callTimeoutMs(static_cast<int>(std::max<std::chrono::milliseconds::rep>(
          1, options.callTimeout.count())))
{
    m_handOver->guard = this;
    if (options.suspendX11ScreenSaver)
        m_x11 = X11ScreenSaverSuspend::forApplication();

    const std::chrono::milliseconds answerTimeout = options.busAnswerTimeout;
    auto orProcessBus = [answerTimeout](BusConnector connector, QDBusConnection::BusType type) {
        if (connector)
            return connector;
        return BusConnector([type, answerTimeout] { return connectToProcessBus(type, answerTimeout); });
    };
    // Each connect counts as a pending request until its bus is reached.
    m_pendingRequests = 2;
    connectInBackground(QDBusConnection::SessionBus,
                        orProcessBus(std::move(options.sessionBus), QDBusConnection::SessionBus));
    connectInBackground(QDBusConnection::SystemBus,
                        orProcessBus(std::move(options.systemBus), QDBusConnection::SystemBus));
}

DisplayActivityGuard::~DisplayActivityGuard()
{
    {
        // After this no worker posts to us; what was posted already is
        // removed with this object's events.
        std::lock_guard lock(m_handOver->mutex);
        m_handOver->guard = nullptr;
    }
    if (m_screenSaverCookie) {
        sendUnInhibit(*m_sessionBus, *m_screenSaverCookie);
    } else if (m_screenSaverCall) {
        m_screenSaverCall->disconnect(this);
        new LateScreenSaverRelease(*m_sessionBus, m_screenSaverCall);
        m_screenSaverCall = nullptr;
    }
    // An unanswered logind call needs no such care: its reply is dropped
    // unread, and with it the descriptor that would have held the inhibitor.
    // m_idleInhibitFd closes with this object, which releases the held one.
}

DisplayActivityGuard::BusConnection
DisplayActivityGuard::connectToProcessBus(QDBusConnection::BusType type, std::chrono::milliseconds answerTimeout)
{
    const bool system = type == QDBusConnection::SystemBus;
    const BusProbeResult probe = probeBus(system ? systemBusAddress() : sessionBusAddress(), answerTimeout);
    if (probe.outcome == BusProbeOutcome::Silent) {
        // Left alone for good: Qt D-Bus would wait on it without a limit.
        return {std::nullopt, QStringLiteral("%1 did not answer within %2 ms (%3)")
                                  .arg(busName(type))
                                  .arg(answerTimeout.count())
                                  .arg(probe.entry)};
    }
    QDBusConnection bus = system ? QDBusConnection::systemBus() : QDBusConnection::sessionBus();
    return {bus, QString()};
}

void DisplayActivityGuard::connectInBackground(QDBusConnection::BusType type, BusConnector connector)
{
    auto work = [handOver = m_handOver, type, connector = std::move(connector)] {
        BusConnection bus;
        try {
            bus = connector();
        } catch (...) {
            bus = {std::nullopt, QStringLiteral("%1 could not be reached").arg(busName(type))};
        }
        std::lock_guard lock(handOver->mutex);
        if (DisplayActivityGuard *guard = handOver->guard) {
            QMetaObject::invokeMethod(
                guard, [guard, type, bus = std::move(bus)]() mutable { guard->busReached(type, std::move(bus)); },
                Qt::QueuedConnection);
        }
    };
    try {
        std::thread(std::move(work)).detach();
    } catch (const std::system_error &) {
        // Queued so that settling stays out of the constructor.
        BusConnection none{std::nullopt, QStringLiteral("no thread to reach the %1").arg(busName(type))};
        QMetaObject::invokeMethod(
            this, [this, type, none = std::move(none)]() mutable { busReached(type, std::move(none)); },
            Qt::QueuedConnection);
    }
}

void DisplayActivityGuard::busReached(QDBusConnection::BusType type, BusConnection bus)
{
    const bool connected = bus.connection && bus.connection->isConnected();
    QString failure = bus.failure;
    if (failure.isEmpty())
        failure = busName(type) + QStringLiteral(" not connected");
    if (type == QDBusConnection::SessionBus) {
        m_sessionBus = std::move(bus.connection);
        if (connected)
            requestScreenSaverInhibit();
        else
            m_screenSaverFailure = failure;
    } else {
        m_systemBus = std::move(bus.connection);
        if (connected)
            requestIdleInhibit();
        else
            m_idleFailure = failure;
    }
    // The connect is done; a request sent in its place counts on its own.
    requestFinished();
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
    QDBusMessage message = QDBusMessage::createMethodCall(kScreenSaverService, kScreenSaverPath,
                                                          kScreenSaverInterface,
                                                          QStringLiteral("Inhibit"));
    message << kApplicationName << kReason;
    m_screenSaverCall =
        new QDBusPendingCallWatcher(m_sessionBus->asyncCall(message, m_callTimeoutMs), this);
    connect(m_screenSaverCall, &QDBusPendingCallWatcher::finished, this,
            &DisplayActivityGuard::onScreenSaverReply);
    ++m_pendingRequests;
}

void DisplayActivityGuard::requestIdleInhibit()
{
    QDBusMessage message = QDBusMessage::createMethodCall(kLogindService, kLogindPath,
                                                          kLogindInterface,
                                                          QStringLiteral("Inhibit"));
    message << QStringLiteral("idle") << kApplicationName << kReason << QStringLiteral("block");
    m_idleCall = new QDBusPendingCallWatcher(m_systemBus->asyncCall(message, m_callTimeoutMs), this);
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
