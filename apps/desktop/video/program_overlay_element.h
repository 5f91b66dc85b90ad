#pragma once

#include <gst/gst.h>

#include <QString>
#include <QtGlobal>

namespace tarnix {

// The element of the program frame clock ("tarnixprogramoverlay"): for
// every tick that the clock source sends, whatever its frame size, it asks
// the produce function for the program frame and sends that on, with the
// tick's timestamps, at the frame size that is negotiated downstream (BGRA,
// tightly packed). This is where the program picture is made, at the rate
// of the source in front of it; the tick's own pixels are never looked at.
struct ProgramOverlayTick {
    GstClockTime pts = GST_CLOCK_TIME_NONE;
    int width = 0;  // of the frame to produce
    int height = 0;
};

// Returns a new reference on a buffer holding the frame (width*height*4
// bytes of BGRA), or null when there is nothing to show; then the element
// sends a black frame of its own. The buffer's timestamps are set by the
// element.
using ProgramOverlayProduce = GstBuffer *(*)(const ProgramOverlayTick &tick, gpointer userData);

// Registers the element with the process; safe to call more than once.
bool registerProgramOverlayElement(QString *error = nullptr);

// Installs the produce function; set before the element leaves NULL and
// cleared only after it is back in NULL.
void setProgramOverlayProduce(GstElement *overlay, ProgramOverlayProduce produce, gpointer userData);

} // namespace tarnix
