#include "shell/user_info_center.h"

#include "shell/log_categories.h"

#include <QTimer>

namespace tarnix {

namespace {

int rank(UserInfoSeverity severity)
{
    return int(severity);
}

} // namespace

QString userInfoSeverityText(UserInfoSeverity severity)
{
    switch (severity) {
    case UserInfoSeverity::None: return QStringLiteral("none");
    case UserInfoSeverity::Success: return QStringLiteral("success");
    case UserInfoSeverity::Warning: return QStringLiteral("warning");
    case UserInfoSeverity::Error: return QStringLiteral("error");
    }
    return QStringLiteral("none");
}

UserInfoCenter::UserInfoCenter(QObject *parent, std::chrono::milliseconds timeout)
    : QObject(parent)
    , m_timer(new QTimer(this))
    , m_timeoutMs(int(timeout.count()))
{
    qRegisterMetaType<tarnix::UserInfoSeverity>("tarnix::UserInfoSeverity");
    qRegisterMetaType<tarnix::LocalizedText>("tarnix::LocalizedText");
    m_timer->setSingleShot(true);
    connect(m_timer, &QTimer::timeout, this, &UserInfoCenter::showNext);
}

QString UserInfoCenter::sourceDisplayName(const QString &source)
{
    static const struct {
        const char *source;
        const char *key;
    } names[] = {
        {"SYSTEM", "info.source.system"},   {"PLAYLIST", "info.source.playlist"},
        {"PROGRAM", "info.source.program"}, {"EDIT", "info.source.edit"},
        {"UVC", "info.source.uvc"},         {"BGM", "info.source.bgm"},
    };
    for (const auto &name : names) {
        if (source == QLatin1String(name.source))
            return localized(name.key);
    }
    return source;
}

void UserInfoCenter::post(UserInfoSeverity severity, const QString &source, const LocalizedText &text,
                          const QString &detail, bool offerAudioSettings)
{
    UserInfoMessage message;
    message.severity = severity;
    message.source = source;
    message.text = text;
    message.detail = detail;
    message.offerAudioSettings = offerAudioSettings;
    post(std::move(message));
}

void UserInfoCenter::askPflSameDevice()
{
    UserInfoMessage message;
    message.severity = UserInfoSeverity::Warning;
    message.source = QStringLiteral("EDIT");
    message.text = LocalizedText(QStringLiteral("edit.pfl.same_device_confirm"));
    message.offerAudioSettings = true;
    message.awaitingAnswer = true;
    post(std::move(message));
}

void UserInfoCenter::answerPflSameDevice(bool yes)
{
    if (m_current && m_current->awaitingAnswer)
        dismiss();
    emit pflSameDeviceAnswered(yes);
}

void UserInfoCenter::post(UserInfoMessage message)
{
    const QString resolved = message.text.toString().trimmed();
    QStringList line{QStringLiteral("NOTICE"), message.source, resolved};
    if (!message.detail.isEmpty())
        line << message.detail;
    const QString logText = line.join(QLatin1Char(' '));
    switch (message.severity) {
    case UserInfoSeverity::Error: qCCritical(lcSystem).noquote() << logText; break;
    case UserInfoSeverity::Warning: qCWarning(lcSystem).noquote() << logText; break;
    default: qCInfo(lcSystem).noquote() << logText; break;
    }

    message.source = message.source.trimmed();
    if (message.source.isEmpty())
        message.source = QStringLiteral("SYSTEM");
    if (resolved.isEmpty())
        return;
    if ((m_current && *m_current == message) || m_waiting.contains(message))
        return;

    if (!m_current || !m_timer->isActive()) {
        if (m_current && m_current->awaitingAnswer)
            m_waiting.append(message);
        else
            show(message);
        return;
    }

    const int newRank = rank(message.severity);
    if (newRank <= rank(m_current->severity)) {
        qsizetype at = 0;
        while (at < m_waiting.size() && rank(m_waiting.at(at).severity) >= newRank)
            ++at;
        m_waiting.insert(at, message);
        return;
    }
    m_waiting.removeIf([newRank](const UserInfoMessage &waiting) { return rank(waiting.severity) < newRank; });
    show(message);
}

void UserInfoCenter::show(const UserInfoMessage &message)
{
    if (!message.awaitingAnswer && rank(message.severity) >= rank(UserInfoSeverity::Warning))
        ++m_warningsShown;
    m_current = message;
    if (!message.awaitingAnswer && m_timeoutMs > 0)
        m_timer->start(m_timeoutMs);
    else
        m_timer->stop();
    emit messageChanged(message.severity, message.source, message.text, message.detail);
}

void UserInfoCenter::showNext()
{
    if (!m_waiting.isEmpty()) {
        show(m_waiting.takeFirst());
        return;
    }
    m_timer->stop();
    m_current.reset();
    emit messageChanged(UserInfoSeverity::None, QString(), LocalizedText(), QString());
}

void UserInfoCenter::dismiss()
{
    showNext();
}

std::optional<UserInfoMessage> UserInfoCenter::current() const
{
    return m_current;
}

bool UserInfoCenter::timerActive() const
{
    return m_timer->isActive();
}

} // namespace tarnix
