#pragma once

#include "audio/program_level_timeline.h"

#include <QObject>
#include <QTimer>

#include <chrono>
#include <functional>
#include <optional>

namespace tarnix {

// Carries the program's meters to whoever shows them: while the program or
// the BGM plays, it asks the player every 8 ms for the readings whose audio
// is due now and passes on what changed, with the input indicator's holds.
//
// Main thread only.
class ProgramAudioController : public QObject
{
    Q_OBJECT

public:
    using MeterSource = std::function<ProgramLevelTimeline::Snapshot()>;

    struct Options {
        std::chrono::milliseconds meterInterval{8};
        // The input indicator stays lit this long after a signal or a clip.
        std::chrono::milliseconds signalHold{250};
        std::chrono::milliseconds clipHold{500};
        // Monotonic milliseconds; empty is the steady clock.
        std::function<qint64()> monotonicMs;
        // Tests call meterTick() themselves.
        bool startTimer = true;
    };

    explicit ProgramAudioController(MeterSource source, QObject *parent = nullptr);
    ProgramAudioController(MeterSource source, Options options, QObject *parent = nullptr);

    void setProgramActive(bool active);
    void setBgmActive(bool active);
    bool isProgramActive() const { return m_programActive; }
    bool isMetering() const { return m_programActive || m_bgmActive; }

    // One pass of the meter loop.
    void meterTick();

    // A reading above this counts as signal on the input indicator.
    static constexpr double kSignalThresholdDb = -60.0;

signals:
    void inputMeterChanged(double leftDb, double rightDb, bool clipped, quint64 runningTime);
    void itemMeterChanged(double leftDb, double rightDb, bool clipped, quint64 runningTime);
    void masterMeterChanged(double leftDb, double rightDb, bool clipped, quint64 runningTime);
    void bgmMeterChanged(double leftDb, double rightDb, bool clipped, quint64 runningTime);
    void inputIndicatorChanged(bool signal, bool clip);
    // Everything stopped: the meters show silence.
    void metersCleared();

private:
    void updateTimer();
    qint64 now() const;

    MeterSource m_source;
    Options m_options;
    QTimer m_timer;
    bool m_programActive = false;
    bool m_bgmActive = false;
    std::optional<ProgramLevelTimeline::Snapshot> m_previous;
    qint64 m_signalUntil = 0;
    qint64 m_clipUntil = 0;
    std::optional<std::pair<bool, bool>> m_indicatorSent;
};

} // namespace tarnix
