#include "ui/edit_time_field.h"

#include "ui/playlist_item_texts.h"

#include <QFocusEvent>
#include <QKeyEvent>
#include <QRegularExpression>

namespace tarnix {

EditTimeField::EditTimeField(QWidget *parent)
    : QLineEdit(parent)
{
    setPlaceholderText(QStringLiteral("--:--:--.--"));
    connect(this, &QLineEdit::returnPressed, this, &EditTimeField::apply);
}

void EditTimeField::showTime(qint64 ms)
{
    m_shownMs = ms;
    // The operator's typing in progress stays; Enter, Escape or leaving the
    // field settles it against the value shown now.
    if (hasFocus() && isModified())
        return;
    restore();
}

QString EditTimeField::format(qint64 ms)
{
    return playlist_view::itemTimeText(ms);
}

std::optional<qint64> EditTimeField::parse(const QString &text)
{
    static const QRegularExpression pattern(QStringLiteral("^(\\d{1,6}):([0-5]\\d):([0-5]\\d)\\.(\\d{2})$"));
    const QRegularExpressionMatch match = pattern.match(text.trimmed());
    if (!match.hasMatch())
        return std::nullopt;
    // \d also matches digits of other scripts, which toLongLong refuses.
    bool ok[4] = {};
    const qint64 hours = match.captured(1).toLongLong(&ok[0]);
    const qint64 minutes = match.captured(2).toLongLong(&ok[1]);
    const qint64 seconds = match.captured(3).toLongLong(&ok[2]);
    const qint64 hundredths = match.captured(4).toLongLong(&ok[3]);
    if (!(ok[0] && ok[1] && ok[2] && ok[3]))
        return std::nullopt;
    qint64 ms = 0;
    if (qMulOverflow(hours, qint64(60), &ms) || qAddOverflow(ms, minutes, &ms) || qMulOverflow(ms, qint64(60), &ms)
        || qAddOverflow(ms, seconds, &ms) || qMulOverflow(ms, qint64(100), &ms) || qAddOverflow(ms, hundredths, &ms)
        || qMulOverflow(ms, qint64(10), &ms))
        return std::nullopt;
    return ms;
}

void EditTimeField::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape && text() != shownText()) {
        restore();
        event->accept();
        return;
    }
    QLineEdit::keyPressEvent(event);
}

void EditTimeField::focusOutEvent(QFocusEvent *event)
{
    // A context menu leaves the typing as it is.
    if (event->reason() != Qt::PopupFocusReason)
        restore();
    QLineEdit::focusOutEvent(event);
}

void EditTimeField::apply()
{
    const std::optional<qint64> ms = parse(text());
    if (!ms) {
        restore();
        return;
    }
    // Shown as entered until the owner answers with the stored value.
    showTime(*ms);
    emit timeEntered(*ms);
}

QString EditTimeField::shownText() const
{
    return m_shownMs >= 0 ? format(m_shownMs) : QString();
}

void EditTimeField::restore()
{
    const QString shown = shownText();
    if (text() != shown)
        setText(shown);
}

} // namespace tarnix
