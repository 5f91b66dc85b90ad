#include "ui/audio_delay_control.h"

#include "shell/interface_scale.h"
#include "shell/localized_text.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QToolButton>

#include <algorithm>

namespace tarnix {

AudioDelayControl::AudioDelayControl(QWidget *parent)
    : QWidget(parent)
{
    setObjectName(QStringLiteral("audioDelayControl"));

    m_decrease = new QToolButton(this);
    m_decrease->setObjectName(QStringLiteral("audioDelayDecreaseButton"));
    m_decrease->setText(QStringLiteral("\u2212"));
    m_increase = new QToolButton(this);
    m_increase->setObjectName(QStringLiteral("audioDelayIncreaseButton"));
    m_increase->setText(QStringLiteral("+"));
    for (QToolButton *button : {m_decrease, m_increase}) {
        button->setAutoRepeat(true);
        button->setFixedSize(scaledPixels(24), scaledPixels(24));
    }

    m_framesLabel = new QLabel(this);
    m_framesLabel->setObjectName(QStringLiteral("audioDelayFramesLabel"));
    m_framesLabel->setAlignment(Qt::AlignCenter);
    m_framesLabel->setMinimumWidth(scaledPixels(64));
    m_millisecondsLabel = new QLabel(this);
    m_millisecondsLabel->setObjectName(QStringLiteral("audioDelayMillisecondsLabel"));
    m_millisecondsLabel->setMinimumWidth(scaledPixels(68));

    connect(m_decrease, &QToolButton::clicked, this, [this] { step(-1); });
    connect(m_increase, &QToolButton::clicked, this, [this] { step(+1); });

    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(scaledPixels(4));
    layout->addWidget(m_decrease);
    layout->addWidget(m_framesLabel);
    layout->addWidget(m_increase);
    layout->addWidget(m_millisecondsLabel);
    layout->addStretch(1);

    refreshTexts();
}

void AudioDelayControl::setFrames(int frames)
{
    showFrames(frames);
}

QString AudioDelayControl::millisecondsText(int frames)
{
    return QStringLiteral("\u2248 %1 ms").arg(QString::number(frames * kMillisecondsPerFrame, 'f', 1));
}

void AudioDelayControl::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::LanguageChange)
        refreshTexts();
    QWidget::changeEvent(event);
}

void AudioDelayControl::step(int delta)
{
    const int before = m_frames;
    showFrames(m_frames + delta);
    if (m_frames != before)
        emit framesChanged(m_frames);
}

void AudioDelayControl::showFrames(int frames)
{
    m_frames = std::clamp(frames, 0, kMaximumFrames);
    m_decrease->setEnabled(m_frames > 0);
    m_increase->setEnabled(m_frames < kMaximumFrames);
    m_framesLabel->setText(
        LocalizedText(QStringLiteral("audio_delay.frames"), {QString::number(m_frames)}, QStringLiteral("%1 frames"))
            .toString());
    m_millisecondsLabel->setText(millisecondsText(m_frames));
}

void AudioDelayControl::refreshTexts()
{
    setToolTip(LocalizedText(QStringLiteral("audio_delay.tooltip"), {},
                             QStringLiteral("Delays the sound to meet a late picture. One frame is 1/30 s."))
                   .toString());
    m_decrease->setAccessibleName(
        LocalizedText(QStringLiteral("audio_delay.decrease"), {}, QStringLiteral("Less audio delay")).toString());
    m_increase->setAccessibleName(
        LocalizedText(QStringLiteral("audio_delay.increase"), {}, QStringLiteral("More audio delay")).toString());
    showFrames(m_frames);
}

} // namespace tarnix
