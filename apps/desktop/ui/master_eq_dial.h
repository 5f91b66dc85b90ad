#pragma once

#include <QDial>

namespace tarnix {

// A rotary EQ knob that is turned by dragging up and down: circling a small
// knob with a mouse is slow and imprecise. Every 8 scaled pixels of travel is
// one step, and wheel clicks of a fine-stepping mouse add up to whole steps.
class MasterEqDial : public QDial
{
    Q_OBJECT

public:
    explicit MasterEqDial(QWidget *parent = nullptr);

    // Pixels of vertical travel per step, at the current interface scale.
    static int pixelsPerStep();

protected:
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;

private:
    bool m_dragging = false;
    // The exact position under the hand; the value is its rounding, so slow
    // drags still add up.
    double m_dragValue = 0.0;
    double m_lastY = 0.0;
    int m_wheelRemainder = 0;
};

} // namespace tarnix
