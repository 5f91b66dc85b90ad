#include "ui/edit_panel.h"
#include "ui/edit_panel_impl.h"

#include "ui/audio_meter_widget.h"
#include "ui/edit_live_preview_widget.h"
#include "ui/range_marker_slider.h"

#include <QEvent>
#include <QStackedWidget>
#include <QToolButton>

#include <algorithm>

namespace tarnix {

// The view the EDIT session drives ----------------------------------------------

void EditPanelViewAdapter::showMediaText(const QString &text)
{
    m_panel->state.mediaText = text;
    m_panel->refreshMediaText();
}

void EditPanelViewAdapter::setTransportEnabled(bool enabled)
{
    if (m_panel->state.transportEnabled == enabled)
        return;
    m_panel->state.transportEnabled = enabled;
    m_panel->refreshEnabled();
}

void EditPanelViewAdapter::showPosition(qint64 positionMs, qint64 durationMs)
{
    EditPanel::Impl &p = *m_panel;
    const bool durationChanged = p.state.durationMs != durationMs;
    p.state.positionMs = positionMs;
    p.state.durationMs = durationMs;
    if (durationChanged) {
        p.timeline->setDurationMs(std::max<qint64>(0, durationMs));
        // Without an Out point of its own the item ends with its media.
        p.showOutPoint();
        p.refreshEnabled();
    }
    if (positionMs >= 0)
        p.timeline->setPositionMs(positionMs);
    p.refreshPosition();
}

void EditPanelViewAdapter::showPlaying(bool playing)
{
    m_panel->state.playing = playing;
    m_panel->transport.play->setChecked(playing);
    m_panel->transport.pause->setChecked(!playing && m_panel->state.item.itemId != 0);
}

void EditPanelViewAdapter::showPfl(bool available, bool on)
{
    m_panel->state.pflAvailable = available;
    m_panel->state.pflOn = on;
    m_panel->refreshPfl();
    m_panel->refreshEnabled();
}

void EditPanelViewAdapter::showLevels(double inputLeftDb, double inputRightDb, double outputLeftDb, double outputRightDb)
{
    // A peak at full scale is a clip: the readings carry no other sign of it.
    m_panel->audio.inputMeter->setLevels(inputLeftDb, inputRightDb, std::max(inputLeftDb, inputRightDb) >= 0.0);
    m_panel->audio.outputMeter->setLevels(outputLeftDb, outputRightDb, std::max(outputLeftDb, outputRightDb) >= 0.0);
}

void EditPanelViewAdapter::showVideoFrame(const QImage &frame)
{
    EditVideoSurface *target = m_panel->state.live ? m_panel->livePreview : m_panel->surface;
    target->showFrame(frame);
}

void EditPanelViewAdapter::showLivePreview(bool live)
{
    EditPanel::Impl &p = *m_panel;
    if (p.state.live == live)
        return;
    p.state.live = live;
    // The monitor that steps aside keeps no old picture to show next time.
    (live ? p.surface : static_cast<EditVideoSurface *>(p.livePreview))->showFrame(QImage());
    p.monitor->setCurrentWidget(live ? static_cast<QWidget *>(p.livePreview) : p.surface);
}

void EditPanelViewAdapter::showStatus(const QString &text, bool error)
{
    m_panel->state.statusText = text;
    m_panel->state.statusError = error;
    m_panel->refreshStatus();
}

// Construction -------------------------------------------------------------------

EditPanel::EditPanel(QWidget *parent)
    : QWidget(parent), d(std::make_unique<Impl>(this))
{
    setObjectName(QStringLiteral("editPanel"));
    d->view = std::make_unique<EditPanelViewAdapter>(d.get());
    d->build();
    d->retranslate();
    d->showSettings();
    d->refreshPosition();
}

EditPanel::~EditPanel() = default;

void EditPanel::setShortcutHints(const QHash<QString, QString> &keysByName)
{
    d->shortcutKeys = keysByName;
    d->retranslate();
}

EditPanelView *EditPanel::view() const { return d->view.get(); }
EditVideoSurface *EditPanel::videoSurface() const { return d->surface; }

void EditPanel::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::LanguageChange)
        d->retranslate();
}

} // namespace tarnix
