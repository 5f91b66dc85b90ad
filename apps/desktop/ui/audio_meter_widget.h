#pragma once

#include "audio/meter_ballistics.h"

#include <QElapsedTimer>
#include <QPixmap>
#include <QTimer>
#include <QWidget>

#include <array>
#include <functional>

namespace tarnix {

// A stereo level meter drawn as two columns of 60 lit segments with a clip
// lamp on top. The movement (fast rise, 72 dB/s fall, 80 ms segment dimming,
// 500 ms clip hold) is MeterBallistics'; this widget only paints it. Either
// it is fed readings with setLevels, and then keeps the fall going on its
// own timer until it rests, or it is handed a state computed elsewhere with
// showMeter. It repaints only when what it shows changed, and a meter at
// rest runs no timer.
class AudioMeterWidget : public QWidget
{
    Q_OBJECT

public:
    // Normal: the bright console colours. Subdued: the quieter colours of
    // the classic skin.
    enum class Look { Normal, Subdued };

    // Monotonic milliseconds; tests inject their own.
    using Clock = std::function<qint64()>;

    explicit AudioMeterWidget(QWidget *parent = nullptr);

    void setClock(Clock clock);

    // Takes a reading; true while the display is still moving.
    bool setLevels(double leftDb, double rightDb, bool clipped);
    // Shows a state whose ballistics run elsewhere; stops this widget's own
    // fall.
    void showMeter(const MeterBallistics &meter);
    // Back to silence; repaints only if something was shown.
    void reset();

    const MeterBallistics &meter() const { return m_meter; }

    bool isCompact() const { return m_compact; }
    void setCompact(bool compact);
    bool hasShortScale() const { return m_shortScale; }
    // Fewer scale labels, for a meter too short for the full set.
    void setShortScale(bool shortScale);
    Look look() const { return m_look; }
    void setLook(Look look);

    // Geometry, in widget pixels: segment index 0 is the top one.
    QRect segmentRect(int channel, int index) const;
    QRect clipLampRect() const;

    // The colour of a segment at a brightness of 0..1.
    static QColor segmentColour(Look look, int index, double brightness);

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    struct Layout {
        QRect lamp;
        QRect bars;       // the span of the segments, both columns
        int barWidth = 0;
        QRect labels;     // empty in compact mode
    };
    Layout layout() const;
    void continueFall();
    void repaintChanges(const MeterBallistics &before);
    QPixmap paintScale() const;

    MeterBallistics m_meter;
    std::array<double, 2> m_targetDb{MeterBallistics::kFloorDb, MeterBallistics::kFloorDb};
    QTimer m_fallTimer;
    QElapsedTimer m_sinceStart;
    Clock m_clock;
    bool m_compact = false;
    bool m_shortScale = false;
    Look m_look = Look::Normal;
    QPixmap m_scale;  // background and dB labels; empty when they must be redrawn
};

} // namespace tarnix
