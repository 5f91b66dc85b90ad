#pragma once

#include <QRect>

#include <optional>

class QPainter;

namespace tarnix {

// What the EDIT timeline shows, in the widget's pixels: the painters draw
// from this alone, so a skin's look never changes where a click seeks.
struct RangeMarkerGeometry
{
    QRect track;                 // the groove's span, markers' base above
    int markerHeight = 0;        // triangle height below the track
    int markerHalfWidth = 0;
    std::optional<int> inX;      // set only with media and an In marker
    std::optional<int> outX;
    std::optional<QRect> handle; // the position; set only with media
};

// The flat look every skin shares: light markers on a grey track.
void paintFlatRangeMarkers(QPainter &painter, const RangeMarkerGeometry &geometry);

// The hardware skin's look: a recessed channel whose span between In and
// Out is lit like a strip of LEDs, markers as lit tabs, a red playhead.
// It draws the same things in the same places as the flat look.
void paintHardwareRangeMarkers(QPainter &painter, const RangeMarkerGeometry &geometry);

} // namespace tarnix
