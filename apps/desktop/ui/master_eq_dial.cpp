#include "ui/master_eq_dial.h"

#include "shell/interface_scale.h"

#include <QMouseEvent>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>

namespace tarnix {

MasterEqDial::MasterEqDial(QWidget *parent)
    : QDial(parent)
{
    setNotchesVisible(true);
    setWrapping(false);
}

int MasterEqDial::pixelsPerStep()
{
    return std::max(1, scaledPixels(8));
}

void MasterEqDial::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton) {
        event->ignore();
        return;
    }
    setFocus(Qt::MouseFocusReason);
    m_dragging = true;
    m_dragValue = value();
    m_lastY = event->position().y();
    setSliderDown(true);
    event->accept();
}

void MasterEqDial::mouseMoveEvent(QMouseEvent *event)
{
    if (!m_dragging) {
        event->ignore();
        return;
    }
    const double y = event->position().y();
    m_dragValue = std::clamp(m_dragValue + (m_lastY - y) / pixelsPerStep(), double(minimum()), double(maximum()));
    m_lastY = y;
    setValue(int(std::round(m_dragValue)));  // std::round: halves away from zero
    event->accept();
}

void MasterEqDial::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton || !m_dragging) {
        event->ignore();
        return;
    }
    m_dragging = false;
    setSliderDown(false);
    event->accept();
}

void MasterEqDial::wheelEvent(QWheelEvent *event)
{
    m_wheelRemainder += event->angleDelta().y();
    const int steps = m_wheelRemainder / 120;
    m_wheelRemainder %= 120;
    if (steps != 0)
        setValue(value() + steps * singleStep());
    m_dragValue = value();
    event->accept();
}

} // namespace tarnix
