// The loaded item's settings in the EDIT panel, and which controls apply to
// it. Every control is set from what the session tells, in full, so that a
// refused change is undone by the next showItem; nothing set here is sent
// back as a request.

#include "ui/edit_panel.h"
#include "ui/edit_panel_impl.h"

#include "ui/audio_delay_control.h"
#include "ui/audio_fader_widget.h"
#include "ui/audio_meter_widget.h"
#include "ui/edit_fade_control.h"
#include "ui/edit_repeat_control.h"
#include "ui/edit_time_field.h"
#include "ui/equalizer_editor.h"
#include "ui/range_marker_slider.h"
#include "ui/ui_text.h"

#include <QButtonGroup>
#include <QComboBox>
#include <QLabel>
#include <QPushButton>
#include <QSignalBlocker>
#include <QStandardItemModel>
#include <QToolButton>

namespace tarnix {

void EditPanelViewAdapter::showItem(const EditItemView &item)
{
    EditPanel::Impl &p = *m_panel;
    const bool otherItem = p.state.item.itemId != item.itemId;
    p.state.item = item;
    if (otherItem) {
        // The loaded item is no destination of its own GOTO.
        p.rebuildGotoList();
        if (item.itemId == 0) {
            p.audio.inputMeter->reset();
            p.audio.outputMeter->reset();
        }
    }
    p.showSettings();
}

void EditPanelViewAdapter::showGotoEntries(const QList<EditGotoEntry> &entries)
{
    m_panel->state.gotoEntries = entries;
    m_panel->rebuildGotoList();
}

void EditPanel::Impl::showSettings()
{
    const EditItemView &item = state.item;
    const PlaylistItemSettings &s = item.settings;
    // A live source always starts playing, whatever is stored.
    const PlaylistStartMode startMode = item.sourceType == PlaylistSourceType::uvc ? PlaylistStartMode::play : s.startMode;

    points.inField->showTime(item.itemId ? s.inPointMs : -1);
    showOutPoint();
    timeline->setInMarkerMs(item.itemId ? std::optional<qint64>(s.inPointMs) : std::nullopt);
    timeline->setOutMarkerMs(item.itemId ? s.outPointMs : std::nullopt);

    // The groups' own signals carry no request (only idClicked does), but a
    // shown value must not look like a press to anyone listening to them.
    {
        const QSignalBlocker startBlock(modes.startGroup);
        const QSignalBlocker endBlock(modes.endGroup);
        if (QAbstractButton *start = modes.startGroup->button(int(startMode)))
            start->setChecked(true);
        if (QAbstractButton *end = modes.endGroup->button(int(s.endMode)))
            end->setChecked(true);
    }
    modes.repeat->showOptions(s.repeatCount, s.repeatEndMode);
    selectGotoTarget();

    fades[0]->showFade(s.fadeIn.enabled, s.fadeIn.durationMs);
    fades[1]->showFade(s.fadeOut.enabled, s.fadeOut.durationMs);
    fades[2]->showFade(s.endCrossfade.enabled, s.endCrossfade.durationMs);

    audio.fader->setValue(s.nominalVolumeTenthsDb);
    audio.delay->setFrames(s.nominalAudioDelayFrames);
    audio.eq->setGains(s.nominalEqLowTenthsDb / 10.0, s.nominalEqMidTenthsDb / 10.0, s.nominalEqHighTenthsDb / 10.0);
    transport.pause->setChecked(!state.playing && item.itemId != 0);

    refreshModeRows();
    refreshEnabled();  // and the points' texts with it
}

// The Out field shows the item's Out point, or where it ends without one:
// the end of the media.
void EditPanel::Impl::showOutPoint()
{
    const EditItemView &item = state.item;
    if (!item.itemId)
        points.outField->showTime(-1);
    else if (item.settings.outPointMs)
        points.outField->showTime(*item.settings.outPointMs);
    else
        points.outField->showTime(state.durationMs >= 0 ? state.durationMs : -1);
}

void EditPanel::Impl::rebuildGotoList()
{
    QComboBox *combo = modes.gotoTarget;
    const QSignalBlocker block(combo);
    combo->clear();
    const QString offline = ui::text("edit.goto.offline", " [MEDIA OFFLINE]");
    for (const EditGotoEntry &entry : std::as_const(state.gotoEntries)) {
        QString name = ui::text("edit.goto.entry", "P%1-%2  %3",
                                {QString::number(entry.playlistNumber), QString::number(entry.row), entry.displayName});
        if (entry.offline)
            name += offline;
        combo->addItem(name, QVariant::fromValue(entry.itemId));
        const bool selectable = entry.selectable && entry.itemId != state.item.itemId;
        if (!selectable) {
            if (auto *model = qobject_cast<QStandardItemModel *>(combo->model()))
                model->item(combo->count() - 1)->setEnabled(false);
        }
    }
    selectGotoTarget();
}

void EditPanel::Impl::selectGotoTarget()
{
    QComboBox *combo = modes.gotoTarget;
    const quint64 target = state.item.itemId ? state.item.settings.gotoTargetItemId : 0;
    const int index = target ? combo->findData(QVariant::fromValue(target)) : -1;
    const QSignalBlocker block(combo);
    // -1 shows the placeholder.
    combo->setCurrentIndex(index);
    combo->setToolTip(index >= 0 ? combo->itemText(index) : QString());
}

// The destination list goes with GOTO, as the end mode or after the last
// repeat; the repeat options with Repeat.
void EditPanel::Impl::refreshModeRows()
{
    const PlaylistItemSettings &s = state.item.settings;
    const bool loaded = state.item.itemId != 0;
    const bool repeat = loaded && s.endMode == PlaylistEndMode::repeat;
    const bool gotoShown = loaded
                           && (s.endMode == PlaylistEndMode::goto_
                               || (repeat && s.repeatEndMode == PlaylistRepeatEndMode::goto_));
    modes.repeat->setVisible(repeat);
    modes.gotoRow->setVisible(gotoShown);
}

void EditPanel::Impl::refreshEnabled()
{
    const EditItemView &item = state.item;
    const bool loaded = item.itemId != 0;
    const bool live = item.sourceType == PlaylistSourceType::uvc;
    const bool document = item.sourceType == PlaylistSourceType::powerpoint || item.sourceType == PlaylistSourceType::pdf;
    const bool settingsOpen = loaded && !item.settingsLocked;

    const bool transportOn = loaded && !live && state.transportEnabled;
    for (QToolButton *button : transport.all())
        button->setEnabled(transportOn);
    timeline->setEnabled(transportOn && state.durationMs > 0);

    const bool pointsOn = settingsOpen && !live && !document && item.pointLock == EditPointLock::None;
    for (QWidget *control : {static_cast<QWidget *>(points.setIn), static_cast<QWidget *>(points.setOut),
                             static_cast<QWidget *>(points.inField), static_cast<QWidget *>(points.outField)})
        control->setEnabled(pointsOn);
    refreshPointTexts();

    const bool modesOn = settingsOpen && !live && !document;
    for (QAbstractButton *button : modes.startGroup->buttons())
        button->setEnabled(modesOn);
    for (QAbstractButton *button : modes.endGroup->buttons())
        button->setEnabled(modesOn);
    modes.gotoTarget->setEnabled(modesOn);
    modes.repeat->setEnabled(modesOn);
    for (EditFadeControl *fade : fades)
        fade->setEnabled(modesOn);

    audio.fader->setEnabled(settingsOpen);
    audio.delay->setEnabled(settingsOpen);
    audio.eq->setEnabled(settingsOpen);
    audio.inputMeter->setEnabled(loaded);
    audio.outputMeter->setEnabled(loaded);
    audio.pfl->setEnabled(loaded && state.pflAvailable);
}

} // namespace tarnix
