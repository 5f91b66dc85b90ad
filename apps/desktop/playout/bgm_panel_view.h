#pragma once

#include <QObject>
#include <QString>

namespace tarnix {

// The BGM module of the program panel as the BGM controller drives it: the
// state, the item line and the signal lamp, and the BGM fader's moves as a
// signal. The module's buttons are controller operations like any key's.
// The program panel implements it; the controller works without one. Main
// thread.
class BgmPanelView : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    // The state text ("PLAYING", ...); active while an item is loaded.
    virtual void showBgmState(const QString &stateText, bool active, bool playing) = 0;
    // "Current BGM: ..." or "No BGM item".
    virtual void showBgmItem(const QString &line) = 0;
    virtual void showBgmSignal(bool signal, bool clipped) = 0;
    // The fade time the operator has set for the fade buttons, in ms.
    virtual qint64 bgmFadeDurationMs(bool fadeIn) const = 0;
    // Where the BGM fader stands now, as a linear gain.
    virtual double bgmGain() const = 0;

signals:
    void bgmVolumeChanged(double linearGain);
    // The interface language changed: what is shown is to be told again.
    void textsExpired();
};

} // namespace tarnix
