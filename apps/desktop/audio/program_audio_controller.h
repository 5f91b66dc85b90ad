#pragma once

#include "audio/meter_ballistics.h"
#include "audio/program_level_timeline.h"

#include <QObject>
#include <QPointer>
#include <QTimer>

#include <chrono>
#include <functional>
#include <optional>

namespace tarnix {

class ProgramAudioControls;
class ProgramAudioPanel;

// Ties the program panel's audio section to the program audio graph: the
// panel's fader, EQ, delay and mute changes go to the player, and while the
// program or the BGM plays, the meter loop asks the player every 8 ms for
// the readings whose audio is due now and moves the meters with them.
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

    // Where the panel's changes go; may be null (they go nowhere).
    void setControls(ProgramAudioControls *controls);
    // The panel may be null or go away: the controls then keep their last
    // values and the meter loop stops. Attaching pushes the panel's item
    // and master gain and master EQ, and an unmuted state, to the controls.
    void setPanel(ProgramAudioPanel *panel);

    void setProgramActive(bool active);
    void setBgmActive(bool active);
    bool isProgramActive() const { return m_programActive; }
    bool isMetering() const { return m_programActive || m_bgmActive; }
    bool isMeterLoopRunning() const { return m_timer.isActive(); }

    // The meters as they are shown.
    const MeterBallistics &itemMeter() const { return m_itemMeter; }
    const MeterBallistics &masterMeter() const { return m_masterMeter; }
    bool isMuted() const { return m_muted; }
    bool isEffectivelyMuted() const;

    // One pass of the meter loop.
    void meterTick();

    // A reading above this counts as signal on the input indicator.
    static constexpr double kSignalThresholdDb = -60.0;

signals:
    // Input and BGM readings as they were measured; item and master as the
    // meters show them, with the clip lamp.
    void inputMeterChanged(double leftDb, double rightDb, bool clipped, quint64 runningTime);
    void itemMeterChanged(double leftDb, double rightDb, bool clipped, quint64 runningTime);
    void masterMeterChanged(double leftDb, double rightDb, bool clipped, quint64 runningTime);
    void bgmMeterChanged(double leftDb, double rightDb, bool clipped, quint64 runningTime);
    void inputIndicatorChanged(bool signal, bool clip);
    void muteDisplayChanged(bool explicitMute, bool effectiveMute);
    // Everything stopped: the meters show silence.
    void metersCleared();

private:
    void updateTimer();
    void resetMeters();
    void updateMuteDisplay();
    qint64 now() const;
    // Feeds one meter; whether it is still moving.
    bool feedMeter(MeterBallistics &meter, const LevelReading &reading, bool item, qint64 nowMs);

    MeterSource m_source;
    Options m_options;
    QTimer m_timer;
    ProgramAudioControls *m_controls = nullptr;
    QPointer<ProgramAudioPanel> m_panel;
    bool m_panelAttached = false;
    bool m_programActive = false;
    bool m_bgmActive = false;
    bool m_muted = false;
    double m_masterGain = 1.0;
    MeterBallistics m_itemMeter;
    MeterBallistics m_masterMeter;
    // The last snapshot and whether each meter had come to rest on it.
    std::optional<ProgramLevelTimeline::Snapshot> m_previous;
    bool m_itemMoving = false;
    bool m_masterMoving = false;
    qint64 m_signalUntil = 0;
    qint64 m_clipUntil = 0;
    std::optional<std::pair<bool, bool>> m_indicatorSent;
};

} // namespace tarnix
