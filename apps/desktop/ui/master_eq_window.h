#pragma once

#include <QWidget>

class QPushButton;

namespace tarnix {

class EqualizerEditor;

// The small tool window of the program's master EQ: three knobs and a way
// back to flat. It only reports what the operator sets; the owner applies it.
class MasterEqWindow : public QWidget
{
    Q_OBJECT

public:
    explicit MasterEqWindow(QWidget *parent = nullptr);

    EqualizerEditor *editor() const { return m_editor; }
    // Mirrors gains set elsewhere without emitting masterEqChanged.
    void setGains(double lowDb, double midDb, double highDb);

signals:
    void masterEqChanged(double lowDb, double midDb, double highDb);

protected:
    void changeEvent(QEvent *event) override;

private:
    void refreshTexts();
    void refreshResetButton();

    EqualizerEditor *m_editor = nullptr;
    QPushButton *m_reset = nullptr;
};

} // namespace tarnix
