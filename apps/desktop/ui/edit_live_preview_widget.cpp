#include "ui/edit_live_preview_widget.h"

#include "shell/interface_scale.h"

#include <QPaintEvent>
#include <QPainter>

namespace tarnix {

EditLivePreviewWidget::EditLivePreviewWidget(QWidget *parent)
    : EditVideoSurface(parent)
{
    setObjectName(QStringLiteral("editLivePreview"));
}

void EditLivePreviewWidget::setCaption(const QString &caption)
{
    if (m_caption == caption)
        return;
    const QRect before = captionRect();
    m_caption = caption;
    update(before.united(captionRect()));
}

QRect EditLivePreviewWidget::captionRect() const
{
    if (m_caption.isEmpty())
        return {};
    const int pad = scaledPixels(4);
    const QSize text = fontMetrics().size(Qt::TextSingleLine, m_caption);
    return QRect(pad, pad, text.width() + 2 * pad, text.height() + pad);
}

void EditLivePreviewWidget::paintEvent(QPaintEvent *event)
{
    EditVideoSurface::paintEvent(event);
    const QRect caption = captionRect();
    if (caption.isEmpty() || !event->rect().intersects(caption))
        return;
    QPainter painter(this);
    painter.fillRect(caption, QColor(190, 30, 38));
    painter.setPen(Qt::white);
    painter.drawText(caption, Qt::AlignCenter, m_caption);
}

} // namespace tarnix
