#pragma once

#include "playlist/playlist_enums.h"

#include <QWidget>

class QComboBox;
class QLabel;
class QToolButton;

namespace tarnix {

// The repeat options of the loaded item: how many plays in all (0 shown as
// ∞, without end) and what follows the last one. Shows what it is told
// without sending it back.
class EditRepeatControl : public QWidget
{
    Q_OBJECT

public:
    static constexpr qint32 kMaximumCount = 9999;

    explicit EditRepeatControl(QWidget *parent = nullptr);

    void showOptions(qint32 count, PlaylistRepeatEndMode endMode);
    qint32 count() const { return m_count; }
    PlaylistRepeatEndMode endMode() const;

    // "∞" for 0.
    static QString countText(qint32 count);

signals:
    void optionsRequested(qint32 count, PlaylistRepeatEndMode endMode);

protected:
    void changeEvent(QEvent *event) override;

private:
    void step(int delta);
    void showCount(qint32 count);
    void refreshTexts();

    qint32 m_count = 0;
    QLabel *m_countTitle = nullptr;
    QToolButton *m_down = nullptr;
    QLabel *m_countValue = nullptr;
    QToolButton *m_up = nullptr;
    QLabel *m_afterTitle = nullptr;
    QComboBox *m_after = nullptr;
};

} // namespace tarnix
