// The EDIT panel's words: titles, tooltips and the lines that follow the
// session (media, position, points, PFL, status), all set again on a
// change of language.

#include "ui/edit_panel.h"
#include "ui/edit_panel_impl.h"

#include "ui/audio_meter_widget.h"
#include "ui/edit_fade_control.h"
#include "ui/edit_live_preview_widget.h"
#include "ui/edit_time_field.h"
#include "ui/range_marker_slider.h"
#include "ui/steady_label.h"
#include "ui/ui_text.h"

#include <QComboBox>
#include <QLabel>
#include <QPushButton>
#include <QStyle>
#include <QToolButton>

namespace tarnix {

namespace {

using ui::text;

void setToolTipAndName(QWidget *widget, const QString &tip)
{
    widget->setToolTip(tip);
    widget->setAccessibleName(tip);
}

QString positionText(qint64 ms)
{
    return ms >= 0 ? EditTimeField::format(ms) : QStringLiteral("--:--:--.--");
}

// Position and duration; the same in every language, and shown many times
// a second, so not looked up in the catalogue.
QString positionLine(const QString &position, const QString &duration)
{
    return QStringLiteral("%1 / %2").arg(position, duration);
}

} // namespace

// A tooltip with the keys bound to its command, when there are any.
QString EditPanel::Impl::withKeys(const QString &tip, const char *command) const
{
    const QString keys = shortcutKeys.value(QString::fromLatin1(command));
    return keys.isEmpty() ? tip : QStringLiteral("%1 (%2)").arg(tip, keys);
}

void EditPanel::Impl::retranslate()
{
    sectionTitle->setText(text("edit.section.title", "EDIT"));
    livePreview->setCaption(text("common.live", "LIVE"));

    EditTransportControls &t = transport;
    setToolTipAndName(t.goToStart, text("edit.transport.go_to_start", "Go to start"));
    setToolTipAndName(t.goToIn, text("edit.transport.go_to_in", "Go to In point"));
    setToolTipAndName(t.rewind, text("edit.transport.rewind", "Hold to rewind"));
    setToolTipAndName(t.pause, text("edit.transport.pause", "Pause EDIT"));
    setToolTipAndName(t.play, text("edit.transport.play", "Play EDIT"));
    setToolTipAndName(t.fastForward, text("edit.transport.fast_forward", "Hold to fast-forward"));
    setToolTipAndName(t.goToOut, text("edit.transport.go_to_out", "Go to Out point"));
    setToolTipAndName(t.goToEnd, text("edit.transport.go_to_end", "Go to end"));
    setToolTipAndName(t.frameBack, text("edit.transport.frame_back", "Step back one frame"));
    setToolTipAndName(t.frameForward, text("edit.transport.frame_forward", "Step forward one frame"));
    timeline->setAccessibleName(text("edit.timeline.name", "EDIT timeline"));
    timeline->setToolTip(text("edit.timeline.tooltip", "Click or drag to move the EDIT position"));

    points.setIn->setText(text("edit.points.set_in", "SET IN"));
    points.setOut->setText(text("edit.points.set_out", "SET OUT"));
    points.inField->setAccessibleName(text("edit.points.in_field", "In point"));
    points.outField->setAccessibleName(text("edit.points.out_field", "Out point"));
    refreshPointTexts();

    modes.startTitle->setText(text("edit.start_mode.title", "START MODE"));
    modes.startPause->setText(text("edit.start_mode.pause", "Pause"));
    modes.startPause->setToolTip(withKeys(
        text("edit.start_mode.pause.tooltip", "Cue the item paused at the In point when it is taken ON AIR"),
        "EditToggleStartMode"));
    modes.startPlay->setText(text("edit.start_mode.play", "Play"));
    modes.startPlay->setToolTip(withKeys(
        text("edit.start_mode.play.tooltip", "Play the item from the In point when it is taken ON AIR"),
        "EditToggleStartMode"));
    modes.endTitle->setText(text("edit.end_mode.title", "END MODE"));
    static const std::array<std::array<const char *, 4>, 5> kEndTexts{{
        {"edit.end_mode.stop", "Stop", "edit.end_mode.stop.tooltip", "Switch OFF AIR at the Out point or end of media"},
        {"edit.end_mode.pause", "Pause", "edit.end_mode.pause.tooltip", "Pause at the Out point or end of media"},
        {"edit.end_mode.repeat", "Repeat", "edit.end_mode.repeat.tooltip",
         "Return to the In point at the Out point or end of media, then repeat playback"},
        {"edit.end_mode.next", "Next", "edit.end_mode.next.tooltip",
         "At the Out point or end of media, take the next playlist item on air; wrap to item 1 and skip the current DSK item"},
        {"edit.end_mode.goto", "GOTO", "edit.end_mode.goto.tooltip",
         "At the Out point or end of media, take the selected destination playlist item on air"},
    }};
    for (size_t i = 0; i < kEndTexts.size(); ++i) {
        modes.endButtons[i]->setText(text(kEndTexts[i][0], kEndTexts[i][1]));
        static const char *const kEndKeys[] = {"EditEndStop", "EditEndPause", "EditEndRepeat", "EditEndNext", ""};
        modes.endButtons[i]->setToolTip(withKeys(text(kEndTexts[i][2], kEndTexts[i][3]), kEndKeys[i]));
    }
    modes.gotoTitle->setText(text("edit.goto.title", "GOTO"));
    modes.gotoTarget->setPlaceholderText(text("edit.goto.placeholder", "Select destination"));
    modes.gotoTarget->setAccessibleName(text("edit.goto.accessible", "GOTO destination"));
    rebuildGotoList();

    fades[0]->setTexts(text("edit.fade_in.title", "Fade In"),
                       text("edit.fade_in.tooltip", "Add a video and audio fade-in to the Start Mode action"));
    fades[1]->setTexts(text("edit.fade_out.title", "Fade Out"),
                       text("edit.fade_out.tooltip", "Fade out video and audio before the End Mode action"));
    fades[2]->setTexts(text("edit.crossfade.title", "Crossfade"),
                       text("edit.crossfade.tooltip", "Crossfade between ON AIR repeats, or when End Mode is Next or GOTO"));

    audio.volumeTitle->setText(text("edit.audio.nominal_volume", "Nominal Volume"));
    audio.inputTitle->setText(text("edit.audio.input", "IN"));
    audio.outputTitle->setText(text("edit.audio.output", "OUT"));
    audio.inputMeter->setToolTip(text("edit.audio.input.tooltip", "EDIT level before the nominal volume"));
    audio.outputMeter->setToolTip(text("edit.audio.output.tooltip", "EDIT level after the nominal volume"));
    audio.inputMeter->setAccessibleName(audio.inputMeter->toolTip());
    audio.outputMeter->setAccessibleName(audio.outputMeter->toolTip());
    audio.delayTitle->setText(text("edit.audio.delay", "DELAY"));
    audio.eqTitle->setText(text("edit.audio.eq", "Nominal Item EQ"));
    refreshPfl();

    QStringList samples;
    for (char digit = '0'; digit <= '9'; ++digit) {
        const QString time = positionText(0).replace(QLatin1Char('0'), QLatin1Char(digit));
        samples << positionLine(time, time);
    }
    positionLabel->setSampleTexts(samples);
    refreshPosition();
    refreshMediaText();
    refreshStatus();
}

void EditPanel::Impl::refreshPointTexts()
{
    const EditItemView &item = state.item;
    const bool customIn = item.itemId && item.settings.inPointMs != 0;
    const bool customOut = item.itemId && item.settings.outPointMs.has_value();
    points.inState->setText(customIn ? text("edit.points.in_custom", "A custom In point is set")
                                     : text("edit.points.in_default", "In point is at the default 0 seconds"));
    points.outState->setText(customOut ? text("edit.points.out_custom", "A custom Out point is set")
                                       : text("edit.points.out_default", "Out point is at the default media duration"));

    // While the points are locked, every control of them says why.
    const bool locked = item.itemId && item.pointLock != EditPointLock::None;
    const QString reason = item.pointLockReason;
    points.setIn->setToolTip(locked ? reason
                                    : withKeys(text("edit.points.set_in.tooltip",
                                                    "Save the current EDIT position as the selected item's In point"),
                                               "EditSetIn"));
    points.setOut->setToolTip(locked ? reason
                                     : withKeys(text("edit.points.set_out.tooltip",
                                                     "Save the current EDIT position as the selected item's Out point"),
                                                "EditSetOut"));
    points.inField->setToolTip(locked ? reason
                                      : text("edit.points.in_field.tooltip",
                                             "Enter the In point as HH:MM:SS.cc, then press Enter"));
    points.outField->setToolTip(locked ? reason
                                       : text("edit.points.out_field.tooltip",
                                              "Enter the Out point as HH:MM:SS.cc, then press Enter"));
}

void EditPanel::Impl::refreshPfl()
{
    QPushButton *pfl = audio.pfl;
    pfl->setChecked(state.pflOn);
    pfl->setText(text("edit.pfl.button", "PFL %1",
                      {state.pflOn ? text("edit.pfl.state_on", "ON") : text("edit.pfl.state_off", "OFF")}));
    pfl->setToolTip(withKeys(state.pflOn ? text("edit.pfl.on", "PFL ON — listening before nominal volume.")
                                         : text("edit.pfl.off", "PFL OFF — listen before nominal volume."),
                             "TogglePfl"));
}

void EditPanel::Impl::refreshStatus()
{
    const QString shown = state.statusError ? text("edit.status_line.error", "EDIT ERROR | %1", {state.statusText})
                                            : state.statusText;
    if (statusLabel->text() != shown)
        statusLabel->setText(shown);
    statusLabel->setToolTip(shown);
    if (statusLabel->property("error").toBool() != state.statusError) {
        statusLabel->setProperty("error", state.statusError);
        statusLabel->style()->unpolish(statusLabel);
        statusLabel->style()->polish(statusLabel);
    }
}

void EditPanel::Impl::refreshMediaText()
{
    const QString shown = state.mediaText.isEmpty() ? text("edit.media.none", "No item loaded") : state.mediaText;
    mediaLabel->setText(shown);
    mediaLabel->setToolTip(state.mediaText);
}

void EditPanel::Impl::refreshPosition()
{
    positionLabel->showText(positionLine(positionText(state.positionMs), positionText(state.durationMs)));
}

} // namespace tarnix
