#include "audio/program_audio_controller.h"

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

void ProgramAudioController::updateTimer()
{
    if (isMetering()) {
        if (m_options.startTimer && !m_timer.isActive())
            m_timer.start();
        return;
    }
    const bool wasRunning = m_timer.isActive() || m_previous.has_value();
    m_timer.stop();
    m_previous.reset();
    m_signalUntil = 0;
    m_clipUntil = 0;
    m_indicatorSent.reset();
    if (wasRunning)
        emit metersCleared();
}

void ProgramAudioController::meterTick()
{
    if (!isMetering() || !m_source)
        return;
    const ProgramLevelTimeline::Snapshot snapshot = m_source();
    emit bgmMeterChanged(snapshot.bgm.leftDb, snapshot.bgm.rightDb, snapshot.bgm.clipped, snapshot.bgm.runningTime);

    // A meter at rest is not told the same reading again.
    const auto changed = [this](const LevelReading ProgramLevelTimeline::Snapshot::*field,
                                const ProgramLevelTimeline::Snapshot &next) {
        return !m_previous || !((*m_previous).*field == next.*field);
    };
    if (changed(&ProgramLevelTimeline::Snapshot::input, snapshot))
        emit inputMeterChanged(snapshot.input.leftDb, snapshot.input.rightDb, snapshot.input.clipped,
                               snapshot.input.runningTime);
    if (changed(&ProgramLevelTimeline::Snapshot::item, snapshot))
        emit itemMeterChanged(snapshot.item.leftDb, snapshot.item.rightDb, snapshot.item.clipped,
                              snapshot.item.runningTime);
    if (changed(&ProgramLevelTimeline::Snapshot::master, snapshot))
        emit masterMeterChanged(snapshot.master.leftDb, snapshot.master.rightDb, snapshot.master.clipped,
                                snapshot.master.runningTime);

    const qint64 t = now();
    if (std::max(snapshot.input.leftDb, snapshot.input.rightDb) > kSignalThresholdDb)
        m_signalUntil = t + m_options.signalHold.count();
    if (snapshot.input.clipped)
        m_clipUntil = t + m_options.clipHold.count();
    const std::pair<bool, bool> indicator{t < m_signalUntil, t < m_clipUntil};
    if (m_indicatorSent != indicator) {
        m_indicatorSent = indicator;
        emit inputIndicatorChanged(indicator.first, indicator.second);
    }
    m_previous = snapshot;
}

} // namespace tarnix
