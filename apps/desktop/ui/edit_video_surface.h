#pragma once

#include <QImage>
#include <QWidget>

namespace tarnix {

// The EDIT monitor: the last picture it was handed, fitted to the widget
// with its aspect kept and black bars around it. Painting is kept cheap,
// since frames come at the player's rate: an opaque widget, no smoothing,
// and a frame of the same size repaints only the picture.
class EditVideoSurface : public QWidget
{
    Q_OBJECT

public:
    explicit EditVideoSurface(QWidget *parent = nullptr);

    // A null image clears the surface to black.
    void showFrame(const QImage &frame);
    const QImage &frame() const { return m_frame; }

    // Where the picture stands in the widget; empty without a picture.
    QRect pictureRect() const;

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QImage m_frame;
};

} // namespace tarnix
