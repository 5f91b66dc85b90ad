#include "video/program_monitor_widget.h"

#include <QPainter>
#include <QResizeEvent>

namespace tarnix {

ProgramMonitorWidget::ProgramMonitorWidget(QWidget *parent)
    : QWidget(parent)
{
    setObjectName(QStringLiteral("monitor-gpu-output"));
    setAttribute(Qt::WA_OpaquePaintEvent);
}

void ProgramMonitorWidget::setFrame(const QImage &image)
{
    m_frame = image;
    m_frame.setDevicePixelRatio(devicePixelRatio());
    ++m_framesShown;
    update();
}

void ProgramMonitorWidget::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    if (m_frame.isNull()) {
        painter.fillRect(rect(), Qt::black);
        return;
    }
    painter.drawImage(QPoint(0, 0), m_frame);
}

void ProgramMonitorWidget::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    emit frameSizeChanged(event->size() * devicePixelRatio());
}

} // namespace tarnix
