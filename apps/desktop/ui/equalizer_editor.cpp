#include "ui/equalizer_editor.h"

#include "shell/interface_scale.h"
#include "shell/localized_text.h"
#include "ui/master_eq_dial.h"

#include <QEvent>
#include <QGridLayout>
#include <QLabel>

#include <algorithm>
#include <cmath>

namespace tarnix {

namespace {

int toTenths(double db)
{
    if (!std::isfinite(db))
        return 0;
    return int(std::clamp(std::round(db * 10.0), double(EqualizerEditor::kMinimumTenths),
                          double(EqualizerEditor::kMaximumTenths)));
}

} // namespace

EqualizerEditor::EqualizerEditor(QWidget *parent)
    : QWidget(parent)
{
    setObjectName(QStringLiteral("equalizerEditor"));
    static const char *const kNames[] = {"Low", "Mid", "High"};
    // Frequencies are the same in every language.
    const QString frequencies[] = {QStringLiteral("100 Hz"), QStringLiteral("2.5 kHz"), QStringLiteral("10 kHz")};

    auto *grid = new QGridLayout(this);
    grid->setContentsMargins(0, 0, 0, 0);
    grid->setHorizontalSpacing(scaledPixels(6));
    grid->setVerticalSpacing(scaledPixels(2));
    for (int i = 0; i < 3; ++i) {
        Band &band = m_bands[i];
        band.frequency = frequencies[i];
        const QString part = QString::fromLatin1(kNames[i]);

        band.name = new QLabel(band.frequency, this);
        band.name->setObjectName(QStringLiteral("equalizer%1Name").arg(part));
        band.name->setAlignment(Qt::AlignCenter);

        band.dial = new MasterEqDial(this);
        band.dial->setObjectName(QStringLiteral("equalizer%1Dial").arg(part));
        band.dial->setRange(kMinimumTenths, kMaximumTenths);
        band.dial->setSingleStep(1);
        band.dial->setPageStep(10);
        band.dial->setValue(0);
        band.dial->setFixedSize(scaledPixels(44), scaledPixels(44));

        band.value = new QLabel(this);
        band.value->setObjectName(QStringLiteral("equalizer%1Value").arg(part));
        band.value->setAlignment(Qt::AlignCenter);
        band.value->setMinimumWidth(scaledPixels(52));

        grid->addWidget(band.name, 0, i, Qt::AlignHCenter);
        grid->addWidget(band.dial, 1, i, Qt::AlignHCenter);
        grid->addWidget(band.value, 2, i, Qt::AlignHCenter);

        connect(band.dial, &QDial::valueChanged, this, [this, i] {
            showBand(m_bands[i]);
            if (!m_settingGains)
                emit gainsChanged(lowDb(), midDb(), highDb());
        });
    }
    refreshTexts();
}

double EqualizerEditor::lowDb() const
{
    return m_bands[0].dial->value() / 10.0;
}

double EqualizerEditor::midDb() const
{
    return m_bands[1].dial->value() / 10.0;
}

double EqualizerEditor::highDb() const
{
    return m_bands[2].dial->value() / 10.0;
}

bool EqualizerEditor::isFlat() const
{
    return std::all_of(m_bands.begin(), m_bands.end(), [](const Band &band) { return band.dial->value() == 0; });
}

void EqualizerEditor::setGains(double lowDb, double midDb, double highDb)
{
    const int tenths[] = {toTenths(lowDb), toTenths(midDb), toTenths(highDb)};
    m_settingGains = true;
    for (int i = 0; i < 3; ++i)
        m_bands[i].dial->setValue(tenths[i]);
    m_settingGains = false;
}

void EqualizerEditor::resetToFlat()
{
    if (isFlat())
        return;
    setGains(0.0, 0.0, 0.0);
    emit gainsChanged(0.0, 0.0, 0.0);
}

QString EqualizerEditor::gainText(int tenths)
{
    const QString sign = tenths > 0 ? QStringLiteral("+") : tenths < 0 ? QStringLiteral("\u2212") : QString();
    return QStringLiteral("%1%2 dB").arg(sign, QString::number(std::abs(tenths) / 10.0, 'f', 1));
}

void EqualizerEditor::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::LanguageChange)
        refreshTexts();
    QWidget::changeEvent(event);
}

void EqualizerEditor::showBand(const Band &band)
{
    const QString gain = gainText(band.dial->value());
    band.value->setText(gain);
    band.dial->setToolTip(LocalizedText(QStringLiteral("equalizer.band_tooltip"), {band.frequency, gain},
                                        QStringLiteral("EQ %1: %2\nDrag up or down to adjust"))
                              .toString());
    band.dial->setAccessibleDescription(gain);
}

void EqualizerEditor::refreshTexts()
{
    for (const Band &band : m_bands) {
        band.dial->setAccessibleName(
            LocalizedText(QStringLiteral("equalizer.band_name"), {band.frequency}, QStringLiteral("EQ %1")).toString());
        showBand(band);
    }
}

} // namespace tarnix
