#include "shell/user_info_bar.h"

#include "shell/user_info_center.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>

namespace tarnix {

namespace {

QString severityKey(UserInfoSeverity severity)
{
    switch (severity) {
    case UserInfoSeverity::Success: return QStringLiteral("info.severity.success");
    case UserInfoSeverity::Warning: return QStringLiteral("info.severity.warning");
    case UserInfoSeverity::Error: return QStringLiteral("info.severity.error");
    case UserInfoSeverity::None: break;
    }
    return {};
}

QString link(const char *name, const QString &colour, const QString &text)
{
    return QStringLiteral("<a href=\"%1\" style=\"color: %2; text-decoration: underline;\">%3</a>")
        .arg(QLatin1String(name), colour, text);
}

} // namespace

UserInfoBar::UserInfoBar(UserInfoCenter *center, QWidget *parent)
    : QWidget(parent)
    , m_center(center)
    , m_severity(new QLabel(this))
    , m_source(new QLabel(this))
    , m_message(new QLabel(this))
{
    setObjectName(QStringLiteral("userInfoBar"));
    m_severity->setObjectName(QStringLiteral("userInfoSeverityLabel"));
    m_source->setObjectName(QStringLiteral("userInfoSourceLabel"));
    m_message->setObjectName(QStringLiteral("userInfoMessageLabel"));
    m_message->setTextFormat(Qt::RichText);
    m_message->setWordWrap(true);
    m_message->setTextInteractionFlags(Qt::LinksAccessibleByMouse | Qt::LinksAccessibleByKeyboard);
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_severity);
    layout->addWidget(m_source);
    layout->addWidget(m_message, 1);
    connect(m_message, &QLabel::linkActivated, this, &UserInfoBar::onLinkActivated);
    if (center)
        connect(center, &UserInfoCenter::messageChanged, this, &UserInfoBar::refresh);
    refresh();
}

void UserInfoBar::refresh()
{
    const std::optional<UserInfoMessage> message = m_center ? m_center->current() : std::nullopt;
    if (!message || message->severity == UserInfoSeverity::None) {
        m_severity->hide();
        m_source->hide();
        m_message->clear();
        setAccessibleName(QString());
        return;
    }
    const QString severity = LocalizedText(severityKey(message->severity)).toString();
    const QString source = UserInfoCenter::sourceDisplayName(message->source);
    const QString text = message->text.toString();
    m_severity->setText(severity);
    m_source->setText(source);
    m_severity->show();
    m_source->show();

    QString html = text.toHtmlEscaped();
    if (!message->detail.isEmpty())
        html += QStringLiteral("<br>") + message->detail.toHtmlEscaped();
    const QString colour = palette().color(QPalette::Link).name();
    if (message->awaitingAnswer) {
        html += QStringLiteral(" &nbsp; ") + link("pfl-yes", colour, QStringLiteral("Yes"));
        html += QStringLiteral(" / ") + link("pfl-no", colour, QStringLiteral("No"));
    }
    if (message->offerAudioSettings)
        html += QStringLiteral(" &nbsp; ") + link("audio-settings", colour, localized("info.action.audio_settings"));
    m_message->setText(html);
    setAccessibleName(LocalizedText(QStringLiteral("info.accessible.summary"), {severity, source, text}).toString());
}

void UserInfoBar::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::LanguageChange || event->type() == QEvent::PaletteChange)
        refresh();
    QWidget::changeEvent(event);
}

void UserInfoBar::onLinkActivated(const QString &target)
{
    if (!m_center)
        return;
    if (target == QLatin1String("pfl-yes"))
        m_center->answerPflSameDevice(true);
    else if (target == QLatin1String("pfl-no"))
        m_center->answerPflSameDevice(false);
    else if (target == QLatin1String("audio-settings"))
        emit m_center->audioSettingsRequested();
}

} // namespace tarnix
