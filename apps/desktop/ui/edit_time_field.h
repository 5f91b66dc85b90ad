#pragma once

#include <QLineEdit>

#include <optional>

namespace tarnix {

// A point of the loaded item as "HH:MM:SS.cc", typed over and sent on
// Enter. It shows what it was last told: a text that does not read as a
// time, or one left without Enter, gives way to the shown value again, and
// nothing is sent.
class EditTimeField : public QLineEdit
{
    Q_OBJECT

public:
    explicit EditTimeField(QWidget *parent = nullptr);

    // Below 0: no time to show (the field stays empty). Text being typed
    // is not overwritten.
    void showTime(qint64 ms);
    qint64 shownTime() const { return m_shownMs; }

    // "00:01:23.45": hours (two digits or more), minutes, seconds, hundredths.
    static QString format(qint64 ms);
    // Hours of one to six digits; anything else, or hours that do not
    // convert, reads as nothing.
    static std::optional<qint64> parse(const QString &text);

signals:
    void timeEntered(qint64 ms);

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;

private:
    void apply();
    void restore();
    QString shownText() const;

    qint64 m_shownMs = -1;
};

} // namespace tarnix
