#include "ui/program_dsk_buttons.h"

#include "ui/style_property.h"
#include "ui/ui_text.h"

#include <QPushButton>
#include <QStyle>

namespace tarnix {

namespace {

using ui::setStyleProperty;
using ui::text;

const char *kindName(DskPanelState::Kind kind)
{
    switch (kind) {
    case DskPanelState::Preparing:
        return "preparing";
    case DskPanelState::Queued:
        return "queued";
    case DskPanelState::Active:
        return "active";
    case DskPanelState::Error:
        return "error";
    case DskPanelState::Idle:
        break;
    }
    return "idle";
}

} // namespace

DskButtonTexts dskButtonTexts(const DskPanelState &state)
{
    switch (state.kind) {
    case DskPanelState::Preparing:
        return {text("program.dsk.preparing_tooltip", "Preparing DSK: %1 (click to queue ON)", {state.text}),
                text("program.dsk.preparing_accessible", "DSK is preparing; press to turn on when ready")};
    case DskPanelState::Queued:
        return {text("program.dsk.queued_tooltip", "DSK ON queued: %1 (click to cancel)", {state.text}),
                text("program.dsk.queued_accessible", "DSK is preparing to turn on; press to cancel")};
    case DskPanelState::Active:
        return {text("program.dsk.off_tooltip", "Turn DSK off and return it to the In point"),
                text("program.dsk.on_accessible", "DSK is active; press to turn off")};
    case DskPanelState::Error:
        return {text("program.dsk.error_tooltip", "DSK error: %1", {state.text}),
                state.selectionReady
                    ? text("program.dsk.retry_accessible", "DSK error: %1; press to retry with the selected item",
                           {state.text})
                    : text("program.dsk.select_accessible", "DSK error: %1; select a valid playlist item", {state.text})};
    case DskPanelState::Idle:
        break;
    }
    if (state.selectionReady)
        return {text("program.dsk.send_tooltip", "Send the selected playlist item to DSK"),
                text("program.dsk.inactive_ready_accessible", "DSK is inactive; press to show the selected item")};
    return {text("program.dsk.select_tooltip", "Select a playlist item to send to DSK"),
            text("program.dsk.inactive_accessible", "DSK is inactive; select a playlist item")};
}

ProgramDskButtons::ProgramDskButtons(QPushButton *onButton, QPushButton *playButton, QPushButton *pauseButton,
                                     QObject *parent)
    : DskPanelView(parent), m_on(onButton), m_play(playButton), m_pause(pauseButton)
{
    // The buttons stand pressed for what the DSK does, not for the click:
    // a click's own toggle is put back to the state at once.
    for (QPushButton *button : {onButton, playButton, pauseButton}) {
        button->setCheckable(true);
        connect(button, &QPushButton::clicked, this, &ProgramDskButtons::apply);
    }
    retranslate();
}

void ProgramDskButtons::showDsk(const DskPanelState &state)
{
    m_state = state;
    apply();
}

void ProgramDskButtons::retranslate()
{
    if (m_on)
        m_on->setText(text("program.dsk", "DSK"));
    if (m_play)
        m_play->setText(text("program.dsk.play", "DSK PLAY"));
    if (m_pause)
        m_pause->setText(text("program.dsk.pause", "DSK PAUSE"));
    apply();
}

void ProgramDskButtons::apply()
{
    if (!m_on || !m_play || !m_pause)
        return;
    const bool active = m_state.kind == DskPanelState::Active;
    const bool preparing = m_state.kind == DskPanelState::Preparing || m_state.kind == DskPanelState::Queued;
    m_on->setEnabled(active || preparing || m_state.selectionReady);
    const DskButtonTexts texts = dskButtonTexts(m_state);
    if (m_on->toolTip() != texts.tooltip)
        m_on->setToolTip(texts.tooltip);
    if (m_on->accessibleName() != texts.accessible)
        m_on->setAccessibleName(texts.accessible);
    setStyleProperty(m_on, "dskState", QString::fromLatin1(kindName(m_state.kind)));
    m_on->setChecked(active);

    const bool transport = active && !m_state.ending;
    m_play->setEnabled(transport);
    m_pause->setEnabled(transport);
    const bool playLit = transport && m_state.playing;
    const bool pauseLit = transport && !m_state.playing;
    setStyleProperty(m_play, "highlighted", playLit);
    setStyleProperty(m_pause, "highlighted", pauseLit);
    m_play->setChecked(playLit);
    m_pause->setChecked(pauseLit);
}

} // namespace tarnix
