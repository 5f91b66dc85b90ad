#include "ui/range_marker_slider.h"

#include "shell/interface_scale.h"
#include "ui/range_marker_painter.h"
#include "ui/ui_text.h"

#include <QApplication>
#include <QEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QStyle>
#include <QStyleOptionSlider>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>

namespace tarnix {

namespace {

// Vertical layout, in scaled pixels: the track on top, the marker
// triangles under it pointing up at their position.
constexpr int kTrackTop = 5;
constexpr int kTrackHeight = 8;
constexpr int kMarkerHeight = 8;
constexpr int kMarkerHalfWidth = 6;

} // namespace

RangeMarkerSlider::RangeMarkerSlider(QWidget *parent)
    : QAbstractSlider(parent)
{
    setOrientation(Qt::Horizontal);
    setRange(0, 0);
    setFocusPolicy(Qt::NoFocus);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    refreshDescription();
}

void RangeMarkerSlider::setDurationMs(qint64 durationMs)
{
    durationMs = std::max<qint64>(0, durationMs);
    if (m_durationMs == durationMs)
        return;
    const qint64 position = positionMs();
    m_durationMs = durationMs;
    setRange(0, int(std::min(durationMs, kMaximumUnits)));
    setValue(msToValue(position));
    update();
}

void RangeMarkerSlider::setInMarkerMs(std::optional<qint64> positionMs)
{
    if (m_inMarkerMs == positionMs)
        return;
    m_inMarkerMs = positionMs;
    refreshDescription();
    update();
}

void RangeMarkerSlider::setOutMarkerMs(std::optional<qint64> positionMs)
{
    if (m_outMarkerMs == positionMs)
        return;
    m_outMarkerMs = positionMs;
    refreshDescription();
    update();
}

void RangeMarkerSlider::setPositionMs(qint64 positionMs)
{
    if (m_dragging)
        return;
    setValue(msToValue(positionMs));
}

qint64 RangeMarkerSlider::valueToMs(int value) const
{
    if (m_durationMs < 1 || maximum() < 1)
        return 0;
    if (m_durationMs <= kMaximumUnits)
        return std::clamp<qint64>(value, 0, m_durationMs);
    // Scaled: in double, since duration * value passes 64 bits for media
    // longer than about 49 days; a millisecond is far above its error.
    const double ms = double(m_durationMs) * double(std::clamp(value, 0, maximum())) / double(maximum());
    return std::clamp<qint64>(std::llround(ms), 0, m_durationMs);
}

int RangeMarkerSlider::msToValue(qint64 positionMs) const
{
    if (m_durationMs < 1 || maximum() < 1)
        return 0;
    positionMs = std::clamp<qint64>(positionMs, 0, m_durationMs);
    if (m_durationMs <= kMaximumUnits)
        return int(positionMs);
    return int(std::llround(double(positionMs) * double(maximum()) / double(m_durationMs)));
}

QSize RangeMarkerSlider::sizeHint() const
{
    return {scaledPixels(240), scaledPixels(kTrackTop + kTrackHeight + kMarkerHeight + 3)};
}

QSize RangeMarkerSlider::minimumSizeHint() const
{
    return {scaledPixels(80), sizeHint().height()};
}

void RangeMarkerSlider::initStyleOption(QStyleOptionSlider *option) const
{
    option->initFrom(this);
    option->subControls = QStyle::SC_SliderGroove;
    option->activeSubControls = QStyle::SC_None;
    option->orientation = Qt::Horizontal;
    option->state |= QStyle::State_Horizontal;
    option->minimum = minimum();
    option->maximum = maximum();
    option->sliderPosition = sliderPosition();
    option->sliderValue = value();
    option->singleStep = singleStep();
    option->pageStep = pageStep();
    option->upsideDown = false;
    option->tickPosition = QSlider::NoTicks;
}

// The span that positions map onto: the style's groove, narrowed by half a
// marker on each side so that a marker at either end is drawn whole.
QRect RangeMarkerSlider::grooveRect() const
{
    QStyleOptionSlider option;
    initStyleOption(&option);
    const QRect groove = style()->subControlRect(QStyle::CC_Slider, &option, QStyle::SC_SliderGroove, this);
    const int inset = scaledPixels(kMarkerHalfWidth);
    return QRect(groove.left() + inset, 0, std::max(1, groove.width() - 2 * inset), height());
}

int RangeMarkerSlider::xForMs(const QRect &groove, qint64 positionMs) const
{
    if (m_durationMs < 1)
        return groove.left();
    const double share = double(std::clamp<qint64>(positionMs, 0, m_durationMs)) / double(m_durationMs);
    return groove.left() + int(std::lround(share * (groove.width() - 1)));
}

void RangeMarkerSlider::seekToX(int x)
{
    const QRect groove = grooveRect();
    const int target = QStyle::sliderValueFromPosition(minimum(), maximum(), x - groove.left(), groove.width() - 1);
    setValue(target);
    emit seekRequested(valueToMs(target));
}

void RangeMarkerSlider::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton || maximum() <= minimum()) {
        event->ignore();
        return;
    }
    m_dragging = true;
    setSliderDown(true);
    seekToX(event->position().toPoint().x());
    event->accept();
}

void RangeMarkerSlider::mouseMoveEvent(QMouseEvent *event)
{
    if (!m_dragging) {
        event->ignore();
        return;
    }
    const int before = value();
    const QRect groove = grooveRect();
    const int x = event->position().toPoint().x();
    // A move that stays on the same value sends no second seek.
    if (QStyle::sliderValueFromPosition(minimum(), maximum(), x - groove.left(), groove.width() - 1) != before)
        seekToX(x);
    event->accept();
}

void RangeMarkerSlider::mouseReleaseEvent(QMouseEvent *event)
{
    if (!m_dragging || event->button() != Qt::LeftButton) {
        event->ignore();
        return;
    }
    m_dragging = false;
    setSliderDown(false);
    event->accept();
}

void RangeMarkerSlider::wheelEvent(QWheelEvent *event)
{
    event->ignore();
}

void RangeMarkerSlider::keyPressEvent(QKeyEvent *event)
{
    event->ignore();
}

void RangeMarkerSlider::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::LanguageChange)
        refreshDescription();
    QAbstractSlider::changeEvent(event);
}

void RangeMarkerSlider::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (!isEnabled())
        painter.setOpacity(0.45);

    const QRect groove = grooveRect();
    RangeMarkerGeometry geometry;
    geometry.track = QRect(groove.left(), scaledPixels(kTrackTop), groove.width(), scaledPixels(kTrackHeight));
    geometry.markerHeight = scaledPixels(kMarkerHeight);
    geometry.markerHalfWidth = scaledPixels(kMarkerHalfWidth);
    m_paintedHandleX = xForMs(groove, positionMs());
    if (m_durationMs > 0) {
        if (m_inMarkerMs)
            geometry.inX = xForMs(groove, *m_inMarkerMs);
        if (m_outMarkerMs)
            geometry.outX = xForMs(groove, *m_outMarkerMs);
        geometry.handle = handleRect(m_paintedHandleX);
    }
    if (usesHardwarePainter())
        paintHardwareRangeMarkers(painter, geometry);
    else
        paintFlatRangeMarkers(painter, geometry);
}

// The hardware skin has its own timeline look; every other skin, and no
// skin at all, the flat one.
bool RangeMarkerSlider::usesHardwarePainter() const
{
    return qApp && qApp->property("controllerSkinKey").toString() == QLatin1String("hardware");
}

QRect RangeMarkerSlider::handleRect(int x) const
{
    const int lineWidth = std::max(2, scaledPixels(2));
    return QRect(x - lineWidth / 2 - 1, 0, lineWidth + 2, scaledPixels(kTrackTop + kTrackHeight + 3));
}

// The player moves the position many times a second; only a move to
// another pixel repaints, and then only the old and the new handle.
void RangeMarkerSlider::sliderChange(SliderChange change)
{
    if (change != SliderValueChange || m_paintedHandleX < 0) {
        QAbstractSlider::sliderChange(change);
        return;
    }
    const int x = xForMs(grooveRect(), positionMs());
    if (x == m_paintedHandleX)
        return;
    update(handleRect(m_paintedHandleX).adjusted(-1, 0, 1, 0));
    update(handleRect(x).adjusted(-1, 0, 1, 0));
}

void RangeMarkerSlider::refreshDescription()
{
    QString description;
    if (!m_inMarkerMs && !m_outMarkerMs) {
        description = ui::text("edit.timeline.markers_none", "In and Out markers are not set");
    } else if (!m_outMarkerMs) {
        description = ui::text("edit.timeline.markers_in", "In marker: %1 ms; Out marker: not set; timeline before In is inactive",
                               {QString::number(*m_inMarkerMs)});
    } else {
        description = ui::text("edit.timeline.markers_in_out",
                               "In marker: %1 ms; Out marker: %2 ms; timeline before In and after Out is inactive",
                               {QString::number(m_inMarkerMs.value_or(0)), QString::number(*m_outMarkerMs)});
    }
    setAccessibleDescription(description);
}

} // namespace tarnix
