#include "ui/range_marker_painter.h"

#include <QColor>
#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>

namespace tarnix {

namespace {

const QColor kInMarkerColour(QStringLiteral("#66d19e"));
const QColor kOutMarkerColour(QStringLiteral("#f2a65a"));
const QColor kHandleColour(QStringLiteral("#101112"));
const QColor kActiveTrackColour(QStringLiteral("#44494b"));
const QColor kInactiveTrackColour(QStringLiteral("#30383b"));
// Around the dark handle line, so that it stands out on the dark track.
const QColor kHandleEdgeColour(QStringLiteral("#e4e7e8"));

// The hardware palette: a channel milled into a dark panel, the playable
// span lit behind it, markers and playhead as lamps.
const QColor kChannelShadow(QStringLiteral("#07080a"));
const QColor kChannelFloor(QStringLiteral("#16191c"));
const QColor kChannelBevel(QStringLiteral("#3a3f44"));
const QColor kLitSpanTop(QStringLiteral("#2f5d48"));
const QColor kLitSpanBottom(QStringLiteral("#1d3a2d"));
const QColor kUnlitSpan(QStringLiteral("#1b1f22"));
const QColor kInLamp(QStringLiteral("#4cf0a0"));
const QColor kOutLamp(QStringLiteral("#ffb347"));
const QColor kLampRim(QStringLiteral("#050607"));
const QColor kPlayhead(QStringLiteral("#ff4438"));
const QColor kPlayheadCore(QStringLiteral("#ffd9d4"));

QPainterPath markerTriangle(const RangeMarkerGeometry &geometry, int x)
{
    const double centre = x + 0.5;
    const double top = geometry.track.bottom() + 1;
    QPainterPath triangle;
    triangle.moveTo(centre, top);
    triangle.lineTo(centre + geometry.markerHalfWidth, top + geometry.markerHeight);
    triangle.lineTo(centre - geometry.markerHalfWidth, top + geometry.markerHeight);
    triangle.closeSubpath();
    return triangle;
}

} // namespace

void paintFlatRangeMarkers(QPainter &painter, const RangeMarkerGeometry &geometry)
{
    const QRect &track = geometry.track;
    painter.fillRect(track, kActiveTrackColour);
    if (geometry.inX)
        painter.fillRect(QRect(track.left(), track.top(), *geometry.inX - track.left(), track.height()),
                         kInactiveTrackColour);
    if (geometry.outX)
        painter.fillRect(QRect(*geometry.outX + 1, track.top(), track.right() - *geometry.outX, track.height()),
                         kInactiveTrackColour);

    painter.setPen(QPen(kHandleColour, 1));
    if (geometry.inX) {
        painter.setBrush(kInMarkerColour);
        painter.drawPath(markerTriangle(geometry, *geometry.inX));
    }
    if (geometry.outX) {
        painter.setBrush(kOutMarkerColour);
        painter.drawPath(markerTriangle(geometry, *geometry.outX));
    }

    if (geometry.handle) {
        painter.setRenderHint(QPainter::Antialiasing, false);
        painter.fillRect(*geometry.handle, kHandleEdgeColour);
        painter.fillRect(geometry.handle->adjusted(1, 1, -1, -1), kHandleColour);
    }
}

void paintHardwareRangeMarkers(QPainter &painter, const RangeMarkerGeometry &geometry)
{
    const QRect &track = geometry.track;
    // The channel: a shadow line on top, a bevel catching light below.
    painter.fillRect(track, kChannelFloor);
    painter.fillRect(QRect(track.left(), track.top(), track.width(), 1), kChannelShadow);
    painter.fillRect(QRect(track.left(), track.bottom(), track.width(), 1), kChannelBevel);

    const QRect inner = track.adjusted(1, 2, -1, -1);
    const int litLeft = geometry.inX ? std::max(inner.left(), *geometry.inX) : inner.left();
    const int litRight = geometry.outX ? std::min(inner.right(), *geometry.outX) : inner.right();
    painter.fillRect(inner, kUnlitSpan);
    if (geometry.handle && litRight >= litLeft) {
        QLinearGradient lit(0, inner.top(), 0, inner.bottom());
        lit.setColorAt(0.0, kLitSpanTop);
        lit.setColorAt(1.0, kLitSpanBottom);
        painter.fillRect(QRect(QPoint(litLeft, inner.top()), QPoint(litRight, inner.bottom())), lit);
    }

    // Lamps: the triangle lit in its colour, a dark rim, and a thin line up
    // through the channel so the point reads against the lit span.
    auto lamp = [&](int x, const QColor &colour) {
        painter.fillRect(QRect(x, track.top(), 1, track.height()), colour);
        painter.setPen(QPen(kLampRim, 1));
        painter.setBrush(colour);
        painter.drawPath(markerTriangle(geometry, x));
    };
    if (geometry.inX)
        lamp(*geometry.inX, kInLamp);
    if (geometry.outX)
        lamp(*geometry.outX, kOutLamp);

    if (geometry.handle) {
        painter.setRenderHint(QPainter::Antialiasing, false);
        painter.fillRect(*geometry.handle, kPlayhead);
        painter.fillRect(geometry.handle->adjusted(1, 1, -1, -1), kPlayheadCore);
        painter.fillRect(QRect(geometry.handle->left(), geometry.handle->top(), geometry.handle->width(), 2),
                         kPlayhead);
    }
}

} // namespace tarnix
