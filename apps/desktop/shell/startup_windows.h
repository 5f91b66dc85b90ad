#pragma once

#include <QString>

class QWidget;
class QScreen;

namespace tarnix {

class UserInfoCenter;

// The full-screen program video window: frameless, blank cursor, native
// window created at once because the picture is drawn into its handle.
QWidget *createProgramVideoWindow();

// The controller window: top level, styled background, deleted on close.
QWidget *createControllerWindow();

// The program screen: the first screen that is not the primary one, or the
// primary screen when it is alone.
QScreen *chooseProgramScreen();

// Covers the program screen with the window and raises it; without any
// screen object the window is simply shown full screen.
void placeProgramVideoWindow(QWidget *window);

// Sizes the controller window to its hint, centres it on the primary
// screen's available area and shows it maximised.
void showControllerWindow(QWidget *window);

// The window shown instead of the application when the GStreamer runtime is
// missing: nothing else starts, the operator reads why in the message bar of
// the given centre and closes the window.
QWidget *createRuntimeMissingWindow(UserInfoCenter *center);

} // namespace tarnix
