#pragma once

#include <QWidget>

class QCheckBox;
class QDoubleSpinBox;
class QToolButton;

namespace tarnix {

// One fade of the loaded item: on or off, and its length in seconds
// (0.1 to 60.0) with step buttons. The length is kept while the fade is
// off, so that switching it on again restores it. Shows what it is told
// without sending it back.
class EditFadeControl : public QWidget
{
    Q_OBJECT

public:
    static constexpr qint64 kMinimumMs = 100;
    static constexpr qint64 kMaximumMs = 60000;

    explicit EditFadeControl(QWidget *parent = nullptr);

    void showFade(bool enabled, qint64 durationMs);
    bool isFadeEnabled() const;
    qint64 durationMs() const;

    void setTexts(const QString &title, const QString &toolTip);

signals:
    // Every change the operator makes, the length in milliseconds.
    void fadeRequested(bool enabled, qint64 durationMs);

protected:
    void changeEvent(QEvent *event) override;

private:
    void request();
    void refreshTexts();

    QCheckBox *m_enabled = nullptr;
    QDoubleSpinBox *m_duration = nullptr;
    QToolButton *m_decrease = nullptr;
    QToolButton *m_increase = nullptr;
    bool m_showing = false;
};

} // namespace tarnix
