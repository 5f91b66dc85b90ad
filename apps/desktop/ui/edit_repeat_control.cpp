#include "ui/edit_repeat_control.h"

#include "shell/interface_scale.h"
#include "ui/ui_text.h"

#include <QComboBox>
#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QToolButton>

#include <algorithm>

namespace tarnix {

namespace {

constexpr PlaylistRepeatEndMode kAfterModes[] = {PlaylistRepeatEndMode::stop, PlaylistRepeatEndMode::pause,
                                                 PlaylistRepeatEndMode::next, PlaylistRepeatEndMode::goto_};

} // namespace

EditRepeatControl::EditRepeatControl(QWidget *parent)
    : QWidget(parent)
{
    m_countTitle = new QLabel(this);
    m_countTitle->setObjectName(QStringLiteral("editRepeatCountTitle"));
    m_down = new QToolButton(this);
    m_down->setObjectName(QStringLiteral("editRepeatCountDownButton"));
    m_down->setText(QStringLiteral("\u25bc"));
    m_up = new QToolButton(this);
    m_up->setObjectName(QStringLiteral("editRepeatCountUpButton"));
    m_up->setText(QStringLiteral("\u25b2"));
    for (QToolButton *button : {m_down, m_up}) {
        button->setAutoRepeat(true);
        button->setFixedSize(scaledPixels(22), scaledPixels(24));
    }
    m_countValue = new QLabel(this);
    m_countValue->setObjectName(QStringLiteral("editRepeatCountValue"));
    m_countValue->setAlignment(Qt::AlignCenter);
    m_countValue->setMinimumWidth(fontMetrics().horizontalAdvance(QStringLiteral("0000")) + scaledPixels(8));
    m_afterTitle = new QLabel(this);
    m_afterTitle->setObjectName(QStringLiteral("editRepeatAfterTitle"));
    m_after = new QComboBox(this);
    m_after->setObjectName(QStringLiteral("editRepeatAfterCombo"));
    for (PlaylistRepeatEndMode mode : kAfterModes)
        m_after->addItem(QString(), QVariant::fromValue(int(mode)));

    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(scaledPixels(3));
    row->addWidget(m_countTitle);
    row->addWidget(m_down);
    row->addWidget(m_countValue);
    row->addWidget(m_up);
    row->addSpacing(scaledPixels(10));
    row->addWidget(m_afterTitle);
    row->addWidget(m_after);
    row->addStretch(1);

    connect(m_down, &QToolButton::clicked, this, [this] { step(-1); });
    connect(m_up, &QToolButton::clicked, this, [this] { step(+1); });
    // Only the operator's choice: a shown value is set without this signal.
    connect(m_after, &QComboBox::activated, this, [this] { emit optionsRequested(m_count, endMode()); });

    showCount(0);
    refreshTexts();
}

void EditRepeatControl::showOptions(qint32 count, PlaylistRepeatEndMode endMode)
{
    showCount(count);
    const int index = m_after->findData(QVariant::fromValue(int(endMode)));
    m_after->setCurrentIndex(std::max(0, index));
}

PlaylistRepeatEndMode EditRepeatControl::endMode() const
{
    return PlaylistRepeatEndMode(m_after->currentData().toInt());
}

QString EditRepeatControl::countText(qint32 count)
{
    return count <= 0 ? QStringLiteral("\u221e") : QString::number(count);
}

void EditRepeatControl::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::LanguageChange)
        refreshTexts();
    QWidget::changeEvent(event);
}

void EditRepeatControl::step(int delta)
{
    const qint32 before = m_count;
    showCount(m_count + delta);
    if (m_count != before)
        emit optionsRequested(m_count, endMode());
}

void EditRepeatControl::showCount(qint32 count)
{
    m_count = std::clamp(count, 0, kMaximumCount);
    m_down->setEnabled(m_count > 0);
    m_up->setEnabled(m_count < kMaximumCount);
    m_countValue->setText(countText(m_count));
}

void EditRepeatControl::refreshTexts()
{
    static const std::pair<const char *, const char *> kAfterTexts[] = {
        {"edit.repeat.after.stop", "Stop"},
        {"edit.repeat.after.pause", "Pause"},
        {"edit.repeat.after.next", "Next"},
        {"edit.repeat.after.goto", "GOTO"},
    };
    m_countTitle->setText(ui::text("edit.repeat.count", "Count"));
    const QString countTip = ui::text("edit.repeat.count.tooltip",
                                      "Set the total play count including the first play; infinity repeats without end");
    for (QWidget *widget : {static_cast<QWidget *>(m_countTitle), static_cast<QWidget *>(m_countValue),
                            static_cast<QWidget *>(m_down), static_cast<QWidget *>(m_up)})
        widget->setToolTip(countTip);
    m_down->setAccessibleName(ui::text("edit.repeat.count.down", "Fewer plays"));
    m_up->setAccessibleName(ui::text("edit.repeat.count.up", "More plays"));
    m_afterTitle->setText(ui::text("edit.repeat.after", "After Repeat"));
    for (int i = 0; i < m_after->count(); ++i)
        m_after->setItemText(i, ui::text(kAfterTexts[i].first, kAfterTexts[i].second));
}

} // namespace tarnix
