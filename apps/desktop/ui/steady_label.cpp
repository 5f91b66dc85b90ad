#include "ui/steady_label.h"

#include <QEvent>
#include <QFontMetrics>

#include <algorithm>

namespace tarnix {

SteadyLabel::SteadyLabel(QWidget *parent)
    : QLabel(parent)
{
}

void SteadyLabel::setSampleTexts(const QStringList &samples)
{
    m_samples = samples;
    refit();
}

void SteadyLabel::showText(const QString &value)
{
    if (text() == value)
        return;
    setText(value);
    if (value.size() > m_longestSample)
        refit();
}

void SteadyLabel::changeEvent(QEvent *event)
{
    QLabel::changeEvent(event);
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange)
        refit();
}

int SteadyLabel::textWidth(const QString &value) const
{
    return fontMetrics().horizontalAdvance(value);
}

// The label's own size hint holds its margins, indent and the style's
// padding around the current text; the widest sample replaces that text.
void SteadyLabel::refit()
{
    int widest = textWidth(text());
    m_longestSample = text().size();
    for (const QString &sample : std::as_const(m_samples)) {
        widest = std::max(widest, textWidth(sample));
        m_longestSample = std::max(m_longestSample, sample.size());
    }
    setMinimumSize(0, 0);
    setMaximumSize(QWIDGETSIZE_MAX, QWIDGETSIZE_MAX);
    const QSize hint = sizeHint();
    setFixedSize(hint.width() + widest - textWidth(text()), hint.height());
}

} // namespace tarnix
