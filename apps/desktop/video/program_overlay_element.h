#pragma once

#include <gst/gst.h>

#include <QString>
#include <QtGlobal>

namespace tarnix {

// The in-place element of the program frame clock ("tarnixprogramoverlay"):
// for every BGRA buffer that passes, it calls the draw function with the
// mapped, writable frame on the streaming thread. This is where the program
// picture is rendered, at the rate of the source in front of it.
struct ProgramOverlayFrame {
    quint8 *pixels = nullptr;
    int width = 0;
    int height = 0;
    int stride = 0;
    GstClockTime pts = GST_CLOCK_TIME_NONE;
};

using ProgramOverlayDraw = void (*)(const ProgramOverlayFrame &frame, gpointer userData);

// Registers the element with the process; safe to call more than once.
bool registerProgramOverlayElement(QString *error = nullptr);

// Installs the draw function; set before the element leaves NULL and
// cleared only after it is back in NULL.
void setProgramOverlayDraw(GstElement *overlay, ProgramOverlayDraw draw, gpointer userData);

} // namespace tarnix
