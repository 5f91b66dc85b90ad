#pragma once

#include "audio/meter_ballistics.h"

#include <QObject>

namespace tarnix {

// The audio section of the program panel as the program's audio controller
// sees it: the operator's fader, EQ, delay and mute changes come out as
// signals, and the meters and the mute state are shown through it. The
// program panel implements it. Main thread.
class ProgramAudioPanel : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    struct EqGains {
        double lowDb = 0.0;
        double midDb = 0.0;
        double highDb = 0.0;
    };

    // What the faders and the master EQ stand at now.
    virtual double itemGain() const = 0;
    virtual double masterGain() const = 0;
    virtual EqGains masterEq() const = 0;

    // explicitMute is the mute button; effectiveMute also counts a master
    // fader at its lowest value.
    virtual void showMute(bool explicitMute, bool effectiveMute) = 0;
    virtual void showItemMeter(const MeterBallistics &meter) = 0;
    virtual void showMasterMeter(const MeterBallistics &meter) = 0;
    virtual void showBgmMeter(double leftDb, double rightDb, bool clipped) = 0;
    virtual void showInputIndicator(bool signal, bool clip) = 0;
    virtual void clearMeters() = 0;

signals:
    void itemDelayChanged(int frames);
    void masterDelayChanged(int frames);
    void itemEqChanged(double lowDb, double midDb, double highDb);
    void masterEqChanged(double lowDb, double midDb, double highDb);
    void masterVolumeChanged(double linearGain);
    void itemVolumeChanged(double linearGain);
    void masterMuteChanged(bool muted);
};

// Where the panel's audio changes go: the program audio graph, reached
// through the player. Item settings act on the deck that is current when
// they are made. Main thread.
class ProgramAudioControls
{
public:
    virtual ~ProgramAudioControls() = default;

    virtual void setCurrentItemDelayFrames(int frames) = 0;
    virtual void setMasterDelayFrames(int frames) = 0;
    virtual void setCurrentItemEq(double lowDb, double midDb, double highDb) = 0;
    virtual void setMasterEq(double lowDb, double midDb, double highDb) = 0;
    virtual void setMasterVolume(double linearGain) = 0;
    virtual void setItemVolume(double linearGain) = 0;
    virtual void setMasterMuted(bool muted) = 0;
};

} // namespace tarnix
