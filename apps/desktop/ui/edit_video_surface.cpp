#include "ui/edit_video_surface.h"

#include "shell/interface_scale.h"

#include <QPaintEvent>
#include <QPainter>
#include <QRegion>

namespace tarnix {

EditVideoSurface::EditVideoSurface(QWidget *parent)
    : QWidget(parent)
{
    setObjectName(QStringLiteral("edit-video-surface"));
    setAttribute(Qt::WA_OpaquePaintEvent);
    setAttribute(Qt::WA_NoSystemBackground);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
}

void EditVideoSurface::showFrame(const QImage &frame)
{
    if (frame.isNull() && m_frame.isNull())
        return;
    const QRect before = pictureRect();
    // Drawn straight only from these formats; anything else would be
    // converted again on every paint.
    if (frame.isNull() || frame.format() == QImage::Format_RGB32
        || frame.format() == QImage::Format_ARGB32_Premultiplied)
        m_frame = frame;
    else
        m_frame = frame.convertToFormat(QImage::Format_RGB32);
    const QRect after = pictureRect();
    update(before == after ? after : rect());
}

QRect EditVideoSurface::pictureRect() const
{
    if (m_frame.isNull() || width() < 1 || height() < 1)
        return {};
    const QSize fitted = m_frame.size().scaled(size(), Qt::KeepAspectRatio);
    return QRect(QPoint((width() - fitted.width()) / 2, (height() - fitted.height()) / 2), fitted);
}

QSize EditVideoSurface::sizeHint() const
{
    return {scaledPixels(320), scaledPixels(180)};
}

void EditVideoSurface::paintEvent(QPaintEvent *event)
{
    QPainter painter(this);
    const QRect picture = pictureRect();
    // The bars only: the picture covers the rest.
    for (const QRect &bar : QRegion(event->rect()).subtracted(QRegion(picture)))
        painter.fillRect(bar, Qt::black);
    if (!picture.isEmpty())
        painter.drawImage(picture, m_frame);
}

} // namespace tarnix
