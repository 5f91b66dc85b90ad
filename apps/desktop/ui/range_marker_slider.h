#pragma once

#include <QAbstractSlider>

#include <optional>

class QStyleOptionSlider;

namespace tarnix {

// The EDIT timeline: a horizontal slider over the loaded media with its In
// and Out points marked, the parts outside them drawn as inactive track.
//
// The slider's value is in milliseconds while the media fits the int range
// (2147483647 ms, about 24.8 days). Longer media keep that range and scale:
// a value stands for duration * value / maximum, so a seek lands right for
// any length.
//
// A press or drag anywhere on the groove seeks at once; the wheel and the
// keys are left to the window (the EDIT keys step and scan), so the
// timeline never moves by accident.
class RangeMarkerSlider : public QAbstractSlider
{
    Q_OBJECT

public:
    static constexpr qint64 kMaximumUnits = 2147483647;

    explicit RangeMarkerSlider(QWidget *parent = nullptr);

    qint64 durationMs() const { return m_durationMs; }
    // Below 1: no media; the slider has an empty range.
    void setDurationMs(qint64 durationMs);

    std::optional<qint64> inMarkerMs() const { return m_inMarkerMs; }
    void setInMarkerMs(std::optional<qint64> positionMs);
    std::optional<qint64> outMarkerMs() const { return m_outMarkerMs; }
    void setOutMarkerMs(std::optional<qint64> positionMs);

    // The shown position in media milliseconds.
    qint64 positionMs() const { return valueToMs(value()); }
    // Shows where the player stands; emits no seek. While the operator
    // holds the timeline the hand wins and the call is ignored.
    void setPositionMs(qint64 positionMs);
    bool isDragging() const { return m_dragging; }

    qint64 valueToMs(int value) const;
    int msToValue(qint64 positionMs) const;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

signals:
    // The operator pressed or dragged to this position.
    void seekRequested(qint64 positionMs);

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void changeEvent(QEvent *event) override;
    void sliderChange(SliderChange change) override;

private:
    void initStyleOption(QStyleOptionSlider *option) const;
    QRect grooveRect() const;
    int xForMs(const QRect &groove, qint64 positionMs) const;
    void seekToX(int x);
    QRect handleRect(int x) const;
    bool usesHardwarePainter() const;
    void refreshDescription();

    qint64 m_durationMs = 0;
    std::optional<qint64> m_inMarkerMs;
    std::optional<qint64> m_outMarkerMs;
    bool m_dragging = false;
    int m_paintedHandleX = -1;  // where the handle stands on screen
};

} // namespace tarnix
