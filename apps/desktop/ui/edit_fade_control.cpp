#include "ui/edit_fade_control.h"

#include "shell/interface_scale.h"
#include "ui/ui_text.h"

#include <QCheckBox>
#include <QDoubleSpinBox>
#include <QEvent>
#include <QGridLayout>
#include <QToolButton>

#include <algorithm>
#include <cmath>

namespace tarnix {

EditFadeControl::EditFadeControl(QWidget *parent)
    : QWidget(parent)
{
    m_enabled = new QCheckBox(this);
    m_enabled->setObjectName(QStringLiteral("editFadeCheckBox"));
    m_duration = new QDoubleSpinBox(this);
    m_duration->setObjectName(QStringLiteral("editFadeDurationSpinBox"));
    m_duration->setRange(kMinimumMs / 1000.0, kMaximumMs / 1000.0);
    m_duration->setDecimals(1);
    m_duration->setSingleStep(0.1);
    m_duration->setSuffix(QStringLiteral(" s"));
    m_duration->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    // The step buttons beside it take the place of the box's arrows, and a
    // typed length counts on Enter only.
    m_duration->setButtonSymbols(QAbstractSpinBox::NoButtons);
    m_duration->setKeyboardTracking(false);
    m_duration->setAccelerated(true);
    m_duration->setMinimumWidth(fontMetrics().horizontalAdvance(QStringLiteral("60.0 s")) + scaledPixels(10));
    m_decrease = new QToolButton(this);
    m_decrease->setText(QStringLiteral("\u2212"));
    m_increase = new QToolButton(this);
    m_increase->setText(QStringLiteral("+"));
    for (QToolButton *button : {m_decrease, m_increase}) {
        button->setObjectName(QStringLiteral("fadeDurationStepButton"));
        button->setAutoRepeat(true);
        button->setFixedSize(scaledPixels(22), scaledPixels(24));
    }

    // The check box names the fade above its length, so that three fades
    // fit side by side in a narrow column.
    auto *grid = new QGridLayout(this);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setHorizontalSpacing(scaledPixels(2));
    grid->setVerticalSpacing(scaledPixels(1));
    grid->addWidget(m_enabled, 0, 0, 1, 3);
    grid->addWidget(m_decrease, 1, 0);
    grid->addWidget(m_duration, 1, 1);
    grid->addWidget(m_increase, 1, 2);
    grid->setColumnStretch(1, 1);

    connect(m_enabled, &QCheckBox::toggled, this, [this] { request(); });
    connect(m_duration, &QDoubleSpinBox::valueChanged, this, [this] { request(); });
    connect(m_decrease, &QToolButton::clicked, m_duration, [this] { m_duration->stepDown(); });
    connect(m_increase, &QToolButton::clicked, m_duration, [this] { m_duration->stepUp(); });
    refreshTexts();
}

void EditFadeControl::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::LanguageChange)
        refreshTexts();
    QWidget::changeEvent(event);
}

void EditFadeControl::refreshTexts()
{
    m_decrease->setAccessibleName(ui::text("edit.fade.shorter", "Shorter fade"));
    m_increase->setAccessibleName(ui::text("edit.fade.longer", "Longer fade"));
}

void EditFadeControl::showFade(bool enabled, qint64 durationMs)
{
    m_showing = true;
    m_enabled->setChecked(enabled);
    m_duration->setValue(std::clamp(durationMs, kMinimumMs, kMaximumMs) / 1000.0);
    m_showing = false;
}

bool EditFadeControl::isFadeEnabled() const
{
    return m_enabled->isChecked();
}

qint64 EditFadeControl::durationMs() const
{
    return std::llround(m_duration->value() * 1000.0);
}

void EditFadeControl::setTexts(const QString &title, const QString &toolTip)
{
    m_enabled->setText(title);
    setToolTip(toolTip);
    m_enabled->setAccessibleDescription(toolTip);
}

void EditFadeControl::request()
{
    if (!m_showing)
        emit fadeRequested(isFadeEnabled(), durationMs());
}

} // namespace tarnix
