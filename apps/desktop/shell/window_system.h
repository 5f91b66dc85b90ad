#pragma once

#include <QString>

namespace tarnix {

// The Qt platform plug-in chosen before the application object exists.
struct WindowSystemChoice {
    QString platform;  // value given to QT_QPA_PLATFORM; empty when left to Qt
    QString reason;    // one line for the start-up log
};

// Pure decision from the environment: an explicit QT_QPA_PLATFORM wins; with
// neither DISPLAY nor WAYLAND_DISPLAY there is no screen, so "offscreen";
// with WAYLAND_DISPLAY, "xcb", because full-screen program output and screen
// placement rely on X11 window management; otherwise Qt's own default.
WindowSystemChoice chooseWindowSystem(const QString &qpaPlatform, const QString &display,
                                      const QString &waylandDisplay);

// Reads the process environment, sets QT_QPA_PLATFORM when a choice is made,
// and returns the choice so it can be logged once the log runs.
WindowSystemChoice applyWindowSystemChoice();

} // namespace tarnix
