#pragma once

#include <QLabel>
#include <QStringList>

namespace tarnix {

// A label whose text changes many times a second (a running time) without
// moving anything around it. A plain QLabel asks its layouts to be redone
// on every new text, and the request climbs to the window: at the program
// tick's rate that is the whole controller window laid out sixty times a
// second. This label holds a fixed size, wide enough for the texts it is
// told it will show, and grows only for a text longer than all of them.
class SteadyLabel : public QLabel
{
    Q_OBJECT

public:
    explicit SteadyLabel(QWidget *parent = nullptr);

    // The widest texts the label will show, each the widest of its length
    // (a time written with every digit in turn, a status word); the size
    // is fitted to them. A new text is measured only when it is longer
    // than all of them, so a running time costs no text measuring.
    void setSampleTexts(const QStringList &samples);
    // Sets the text when it differs from what stands.
    void showText(const QString &text);

protected:
    void changeEvent(QEvent *event) override;

private:
    int textWidth(const QString &text) const;
    void refit();

    QStringList m_samples;
    qsizetype m_longestSample = 0;
};

} // namespace tarnix
