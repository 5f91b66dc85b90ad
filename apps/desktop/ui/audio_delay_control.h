#pragma once

#include <QWidget>

class QLabel;
class QToolButton;

namespace tarnix {

// Audio delay in whole video frames, 0 to 6, to line sound up with a picture
// that arrives late. A frame is the delay element's 1/30 s, shown as an
// approximate time beside the count.
class AudioDelayControl : public QWidget
{
    Q_OBJECT

public:
    static constexpr int kMaximumFrames = 6;
    static constexpr double kMillisecondsPerFrame = 1000.0 / 30.0;

    explicit AudioDelayControl(QWidget *parent = nullptr);

    int frames() const { return m_frames; }
    // Mirrors a delay set elsewhere without emitting framesChanged.
    void setFrames(int frames);

    // "≈ 33.3 ms" for one frame.
    static QString millisecondsText(int frames);

signals:
    // Every change the operator makes.
    void framesChanged(int frames);

protected:
    void changeEvent(QEvent *event) override;

private:
    void step(int delta);
    void showFrames(int frames);
    void refreshTexts();

    int m_frames = 0;
    QToolButton *m_decrease = nullptr;
    QToolButton *m_increase = nullptr;
    QLabel *m_framesLabel = nullptr;
    QLabel *m_millisecondsLabel = nullptr;
};

} // namespace tarnix
