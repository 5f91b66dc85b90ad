#pragma once

#include <QDialog>

class QCheckBox;
class QDoubleSpinBox;
class QLabel;

namespace tarnix {

// Asks how long a PNG or JPEG still stays on air before it is added, and
// whether that time holds for the rest of the session. Opened window-modal
// with open(); the answer comes with finished().
class ImageAddDialog : public QDialog
{
    Q_OBJECT

public:
    // The display time field, in milliseconds.
    static constexpr qint64 kDefaultDurationMs = 5000;
    static constexpr qint64 kMinimumDurationMs = 100;
    static constexpr qint64 kMaximumDurationMs = 24LL * 60 * 60 * 1000;

    explicit ImageAddDialog(const QString &fileName, QWidget *parent = nullptr);

    qint64 durationMs() const;
    void setDurationMs(qint64 durationMs);
    bool rememberForSession() const;

private:
    QLabel *m_file = nullptr;
    QDoubleSpinBox *m_seconds = nullptr;
    QCheckBox *m_remember = nullptr;
};

} // namespace tarnix
