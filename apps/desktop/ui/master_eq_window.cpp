#include "ui/master_eq_window.h"

#include "shell/interface_scale.h"
#include "shell/localized_text.h"
#include "ui/equalizer_editor.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QPushButton>
#include <QVBoxLayout>

namespace tarnix {

MasterEqWindow::MasterEqWindow(QWidget *parent)
    : QWidget(parent, Qt::Tool)
{
    setObjectName(QStringLiteral("masterEqWindow"));

    m_editor = new EqualizerEditor(this);
    m_editor->setObjectName(QStringLiteral("masterEqEditor"));
    m_reset = new QPushButton(this);
    m_reset->setObjectName(QStringLiteral("masterEqResetButton"));
    // The window floats over the program panel; Enter must not flatten the
    // master EQ by accident.
    m_reset->setAutoDefault(false);

    connect(m_editor, &EqualizerEditor::gainsChanged, this, [this](double low, double mid, double high) {
        refreshResetButton();
        emit masterEqChanged(low, mid, high);
    });
    connect(m_reset, &QPushButton::clicked, m_editor, &EqualizerEditor::resetToFlat);

    auto *buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(m_reset);
    auto *layout = new QVBoxLayout(this);
    const int margin = scaledPixels(10);
    layout->setContentsMargins(margin, margin, margin, margin);
    layout->setSpacing(scaledPixels(8));
    layout->addWidget(m_editor);
    layout->addLayout(buttons);
    // Follows its contents, so a longer translation of the button still fits.
    layout->setSizeConstraint(QLayout::SetFixedSize);

    refreshTexts();
    refreshResetButton();
}

void MasterEqWindow::setGains(double lowDb, double midDb, double highDb)
{
    m_editor->setGains(lowDb, midDb, highDb);
    refreshResetButton();
}

void MasterEqWindow::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::LanguageChange)
        refreshTexts();
    QWidget::changeEvent(event);
}

void MasterEqWindow::refreshTexts()
{
    setWindowTitle(LocalizedText(QStringLiteral("master_eq.title"), {}, QStringLiteral("Master EQ")).toString());
    m_reset->setText(LocalizedText(QStringLiteral("master_eq.reset"), {}, QStringLiteral("Reset to flat")).toString());
}

void MasterEqWindow::refreshResetButton()
{
    m_reset->setEnabled(!m_editor->isFlat());
}

} // namespace tarnix
