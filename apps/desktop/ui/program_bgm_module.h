#pragma once

#include <QFrame>

#include <memory>

class QDoubleSpinBox;
class QLabel;
class QPushButton;

namespace tarnix {

class AudioFaderWidget;
class BgmPanelView;
class ControllerOperations;

// The BGM module of the program panel: the item line, the state, the signal
// lamp, PLAY, PAUSE and STOP, and the two fade buttons with their times.
// It shows what the BGM controller tells it through view(), and every press
// is a controller operation. Main thread.
class ProgramBgmModule : public QFrame
{
    Q_OBJECT

public:
    ProgramBgmModule(ControllerOperations *operations, QWidget *parent = nullptr);
    ~ProgramBgmModule() override;

    BgmPanelView *view() const;
    // The BGM fader of the audio section, whose moves the view reports.
    void setFader(AudioFaderWidget *fader);
    // An item is loaded on the BGM player.
    bool isBgmActive() const;
    void retranslate();

signals:
    void bgmActiveChanged(bool active);

public:
    struct Impl;

private:
    std::unique_ptr<Impl> d;
};

} // namespace tarnix
