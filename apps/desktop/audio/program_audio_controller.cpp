#include "audio/program_audio_controller.h"

#include "audio/program_audio_panel.h"

#include <algorithm>

namespace tarnix {

ProgramAudioController::ProgramAudioController(MeterSource source, QObject *parent)
    : ProgramAudioController(std::move(source), Options{}, parent)
{
}

ProgramAudioController::ProgramAudioController(MeterSource source, Options options, QObject *parent)
    : QObject(parent), m_source(std::move(source)), m_options(std::move(options))
{
    m_timer.setTimerType(Qt::PreciseTimer);
    m_timer.setInterval(m_options.meterInterval);
    connect(&m_timer, &QTimer::timeout, this, &ProgramAudioController::meterTick);
}

qint64 ProgramAudioController::now() const
{
    if (m_options.monotonicMs)
        return m_options.monotonicMs();
    using namespace std::chrono;
    return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

void ProgramAudioController::setControls(ProgramAudioControls *controls)
{
    m_controls = controls;
}

void ProgramAudioController::setPanel(ProgramAudioPanel *panel)
{
    if (m_panel)
        disconnect(m_panel, nullptr, this, nullptr);
    m_panel = panel;
    m_panelAttached = panel != nullptr;
    if (!panel)
        return;
    // Item changes act on whichever deck is current when they are made.
    connect(panel, &ProgramAudioPanel::itemDelayChanged, this, [this](int frames) {
        if (m_controls)
            m_controls->setCurrentItemDelayFrames(frames);
    });
    connect(panel, &ProgramAudioPanel::masterDelayChanged, this, [this](int frames) {
        if (m_controls)
            m_controls->setMasterDelayFrames(frames);
    });
    connect(panel, &ProgramAudioPanel::itemEqChanged, this, [this](double low, double mid, double high) {
        if (m_controls)
            m_controls->setCurrentItemEq(low, mid, high);
    });
    connect(panel, &ProgramAudioPanel::masterEqChanged, this, [this](double low, double mid, double high) {
        if (m_controls)
            m_controls->setMasterEq(low, mid, high);
    });
    connect(panel, &ProgramAudioPanel::masterVolumeChanged, this, [this](double gain) {
        m_masterGain = gain;
        if (m_controls)
            m_controls->setMasterVolume(gain);
        updateMuteDisplay();
    });
    connect(panel, &ProgramAudioPanel::itemVolumeChanged, this, [this](double gain) {
        if (m_controls)
            m_controls->setItemVolume(gain);
    });
    connect(panel, &ProgramAudioPanel::masterMuteChanged, this, [this](bool muted) {
        m_muted = muted;
        if (m_controls)
            m_controls->setMasterMuted(muted);
        updateMuteDisplay();
    });

    m_masterGain = panel->masterGain();
    m_muted = false;
    if (m_controls) {
        m_controls->setItemVolume(panel->itemGain());
        m_controls->setMasterVolume(m_masterGain);
        const ProgramAudioPanel::EqGains eq = panel->masterEq();
        m_controls->setMasterEq(eq.lowDb, eq.midDb, eq.highDb);
        m_controls->setMasterMuted(false);
    }
    updateMuteDisplay();
    resetMeters();
    updateTimer();
}

bool ProgramAudioController::isEffectivelyMuted() const
{
    // A master fader at its lowest value is silence as much as the button.
    return m_muted || !(m_masterGain > 0.0);
}

void ProgramAudioController::updateMuteDisplay()
{
    const bool effective = isEffectivelyMuted();
    if (m_panel)
        m_panel->showMute(m_muted, effective);
    emit muteDisplayChanged(m_muted, effective);
}

void ProgramAudioController::setProgramActive(bool active)
{
    m_programActive = active;
    updateTimer();
}

void ProgramAudioController::setBgmActive(bool active)
{
    m_bgmActive = active;
    updateTimer();
}

void ProgramAudioController::resetMeters()
{
    const bool itemShown = m_itemMeter.reset();
    const bool masterShown = m_masterMeter.reset();
    const bool wasRunning = m_timer.isActive() || m_previous.has_value() || itemShown || masterShown;
    m_previous.reset();
    m_itemMoving = false;
    m_masterMoving = false;
    m_signalUntil = 0;
    m_clipUntil = 0;
    m_indicatorSent.reset();
    if (m_panel)
        m_panel->clearMeters();
    if (wasRunning)
        emit metersCleared();
}

void ProgramAudioController::updateTimer()
{
    if (isMetering() && !(m_panelAttached && !m_panel)) {
        if (m_options.startTimer && !m_timer.isActive())
            m_timer.start();
        return;
    }
    m_timer.stop();
    if (!isMetering())
        resetMeters();
}

bool ProgramAudioController::feedMeter(MeterBallistics &meter, const LevelReading &reading, bool item, qint64 nowMs)
{
    const bool moving = meter.setLevels(reading.leftDb, reading.rightDb, reading.clipped, nowMs);
    if (!meter.changed())
        return moving;
    if (item) {
        if (m_panel)
            m_panel->showItemMeter(meter);
        emit itemMeterChanged(meter.leftDb(), meter.rightDb(), meter.clipLit(), reading.runningTime);
    } else {
        if (m_panel)
            m_panel->showMasterMeter(meter);
        emit masterMeterChanged(meter.leftDb(), meter.rightDb(), meter.clipLit(), reading.runningTime);
    }
    return moving;
}

void ProgramAudioController::meterTick()
{
    if (!isMetering() || !m_source)
        return;
    if (m_panelAttached && !m_panel) {
        m_timer.stop();
        return;
    }
    const ProgramLevelTimeline::Snapshot snapshot = m_source();
    const qint64 t = now();
    if (m_panel)
        m_panel->showBgmMeter(snapshot.bgm.leftDb, snapshot.bgm.rightDb, snapshot.bgm.clipped);
    emit bgmMeterChanged(snapshot.bgm.leftDb, snapshot.bgm.rightDb, snapshot.bgm.clipped, snapshot.bgm.runningTime);

    // A meter that came to rest is not told the same reading again; one
    // that still moves (falling, dimming, clip lamp lit) is fed every pass.
    if (!m_previous || !(m_previous->input == snapshot.input))
        emit inputMeterChanged(snapshot.input.leftDb, snapshot.input.rightDb, snapshot.input.clipped,
                               snapshot.input.runningTime);
    if (!m_previous || m_itemMoving || !(m_previous->item == snapshot.item))
        m_itemMoving = feedMeter(m_itemMeter, snapshot.item, true, t);
    if (!m_previous || m_masterMoving || !(m_previous->master == snapshot.master))
        m_masterMoving = feedMeter(m_masterMeter, snapshot.master, false, t);

    if (std::max(snapshot.input.leftDb, snapshot.input.rightDb) > kSignalThresholdDb)
        m_signalUntil = t + m_options.signalHold.count();
    if (snapshot.input.clipped)
        m_clipUntil = t + m_options.clipHold.count();
    const std::pair<bool, bool> indicator{t < m_signalUntil, t < m_clipUntil};
    if (m_indicatorSent != indicator) {
        m_indicatorSent = indicator;
        if (m_panel)
            m_panel->showInputIndicator(indicator.first, indicator.second);
        emit inputIndicatorChanged(indicator.first, indicator.second);
    }
    m_previous = snapshot;
}

} // namespace tarnix
