#pragma once

#include "audio/program_audio_panel.h"

#include <QObject>
#include <QString>

namespace tarnix {

// The program panel as the ON AIR controller drives it: what is on air, its
// times, rate and levels, and the status line. Its audio section is the
// program audio controller's (ProgramAudioPanel). The program panel
// implements it; the controller works without one. Main thread.
class ProgramPanelView : public ProgramAudioPanel
{
    Q_OBJECT

public:
    using ProgramAudioPanel::ProgramAudioPanel;

    // What the operator has set for the item on air now.
    virtual int itemDelayFrames() const = 0;
    virtual EqGains itemEq() const = 0;
    // The seek bar is held by the operator: positions are not shown.
    virtual bool isSeekDragging() const = 0;

    // Empty name and path: nothing on air.
    virtual void showOnAirFile(const QString &name, const QString &path) = 0;
    virtual void showItemAudio(int delayFrames, const EqGains &eq) = 0;
    virtual void showTransport(bool hasItem, bool playing) = 0;
    // -1 for what is unknown; a live source has no times at all.
    virtual void showTimes(qint64 positionMs, qint64 durationMs, qint64 remainingMs, bool live) = 0;
    // -1 out: none.
    virtual void showInOut(qint64 inMs, qint64 outMs) = 0;
    virtual void showRate(double rate, bool rateControl) = 0;
    virtual void showRepeatCount(int count) = 0;
    virtual void showVideoLevel(double level) = 0;
    virtual void showFtb(bool lit) = 0;
    virtual void showStatus(const QString &text) = 0;
};

// The playlist panel as the ON AIR controller uses it: the active
// playlist's manual crossfade, and the picture level shown on the rows of
// the items on the program. Main thread.
class PlaylistPanelView : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    virtual bool manualCrossfadeEnabled() const = 0;
    virtual qint64 manualCrossfadeDurationMs() const = 0;
    // Level 0..1 of an item on the program; 0 when it has left it.
    virtual void showItemLevel(quint64 itemId, double level) = 0;
};

} // namespace tarnix
