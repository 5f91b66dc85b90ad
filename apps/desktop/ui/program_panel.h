#pragma once

#include <QColor>
#include <QWidget>

#include <memory>

namespace tarnix {

class BgmPanelView;
class DskPanelView;
class ControllerOperations;
class PlaylistModel;
class ProgramPanelView;

// The ON AIR side of the controller window: the program monitor, the file
// on air, transport and effects, the remaining time, end mode and speed,
// the manual fades, and the audio section (item and master faders, meters,
// delays, mute, EQ). It holds no playout logic: the ON AIR controller
// drives it through `view()`, and every press becomes a controller
// operation or a signal of that view. Main thread.
class ProgramPanel : public QWidget
{
    Q_OBJECT

public:
    ProgramPanel(PlaylistModel *model, ControllerOperations *operations, QWidget *parent = nullptr);
    ~ProgramPanel() override;

    // What the ON AIR controller and its audio controller read and drive.
    ProgramPanelView *view() const;
    // The BGM module as the BGM player drives it.
    BgmPanelView *bgmView() const;
    // The DSK buttons as the DSK controller drives them.
    DskPanelView *dskView() const;

    // The player's monitor picture takes its place in the panel.
    void setMonitor(QWidget *monitor);

    void setPlaybackRateControlsShown(bool shown);
    // Hiding waits while BGM runs; false when it has to wait.
    bool setBgmControlsShown(bool shown);
    void setFtbButtonDisabled(bool disabled);
    void setBackgroundColor(const QColor &colour);
    void setRemainingTotalMode(bool total);
    bool remainingTotalMode() const;
    // The keys of play/pause, for the transport tooltips.
    void setPlayPauseKeys(const QString &keys);

signals:
    // The operator chose the colour behind the program picture.
    void backgroundColorChosen(const QColor &colour);
    void remainingTotalModeChanged(bool total);

public:
    struct Impl;

protected:
    void changeEvent(QEvent *event) override;

private:
    std::unique_ptr<Impl> d;
};

} // namespace tarnix
