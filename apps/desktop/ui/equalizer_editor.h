#pragma once

#include <QWidget>

#include <array>

class QLabel;

namespace tarnix {

class MasterEqDial;

// Three EQ knobs (100 Hz, 2.5 kHz, 10 kHz), each -15.0 to +15.0 dB in tenths,
// with their values written under them. Used for the master EQ and for an
// item's nominal EQ; the owner decides where the gains go.
class EqualizerEditor : public QWidget
{
    Q_OBJECT

public:
    static constexpr int kMinimumTenths = -150;
    static constexpr int kMaximumTenths = 150;

    explicit EqualizerEditor(QWidget *parent = nullptr);

    double lowDb() const;
    double midDb() const;
    double highDb() const;
    bool isFlat() const;

    // Shows gains that were set elsewhere; emits nothing, so an owner can
    // mirror its state without hearing it back.
    void setGains(double lowDb, double midDb, double highDb);
    // The operator's "back to flat": emits once if anything changed.
    void resetToFlat();

    // Value text for a gain in tenths of a dB, e.g. "+1.5 dB", "0.0 dB".
    static QString gainText(int tenths);

signals:
    // Every change the operator makes, in dB.
    void gainsChanged(double lowDb, double midDb, double highDb);

protected:
    void changeEvent(QEvent *event) override;

private:
    struct Band {
        MasterEqDial *dial = nullptr;
        QLabel *name = nullptr;
        QLabel *value = nullptr;
        QString frequency;
    };

    void showBand(const Band &band);
    void refreshTexts();

    std::array<Band, 3> m_bands;
    bool m_settingGains = false;
};

} // namespace tarnix
