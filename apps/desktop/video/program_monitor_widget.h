#pragma once

#include <QImage>
#include <QWidget>

namespace tarnix {

// The small in-application program monitor ("monitor-gpu-output"). The
// compositor's monitor branch delivers images already converted and scaled
// to the widget's size, so painting is one unscaled copy.
//
// Threads: main thread only; images arrive by queued call.
class ProgramMonitorWidget : public QWidget
{
    Q_OBJECT

public:
    explicit ProgramMonitorWidget(QWidget *parent = nullptr);

    void setFrame(const QImage &image);
    const QImage &frame() const { return m_frame; }
    // Images received since creation.
    quint64 framesShown() const { return m_framesShown; }

signals:
    // The size the monitor branch should scale to, in device pixels.
    void frameSizeChanged(QSize size);

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    QImage m_frame;
    quint64 m_framesShown = 0;
};

} // namespace tarnix
