#pragma once

#include "playout/dsk_panel_view.h"

#include <QObject>
#include <QPointer>
#include <QString>

#include <memory>

class QPushButton;

namespace tarnix {

// The DSK button's tooltip and accessible text for a state, in the
// interface language.
struct DskButtonTexts {
    QString tooltip;
    QString accessible;
};
DskButtonTexts dskButtonTexts(const DskPanelState &state);

// The program panel's DSK, DSK PLAY and DSK PAUSE buttons as the DSK
// controller drives them: their enable rules, highlights and texts. The
// buttons belong to the panel; their presses are controller operations
// wired there. Main thread.
class ProgramDskButtons : public DskPanelView
{
    Q_OBJECT

public:
    ProgramDskButtons(QPushButton *onButton, QPushButton *playButton, QPushButton *pauseButton,
                      QObject *parent = nullptr);

    void showDsk(const DskPanelState &state) override;
    // Writes every text again in the interface language.
    void retranslate();
    DskPanelState state() const { return m_state; }

private:
    void apply();

    QPointer<QPushButton> m_on;
    QPointer<QPushButton> m_play;
    QPointer<QPushButton> m_pause;
    DskPanelState m_state;
};

} // namespace tarnix
