#pragma once

#include <memory>

struct _XDisplay;

namespace tarnix {

// Keeps an X server from blanking the screen for as long as the object lives:
// the server's own screen saver is suspended (MIT-SCREEN-SAVER 1.1) and DPMS is
// switched off when it was on. Destruction resumes the screen saver and turns
// DPMS back on only if this object turned it off, so a site that runs with DPMS
// disabled keeps that setting. A kiosk X session has no desktop that would
// answer an inhibit request, so without this the program output goes dark
// after the server's idle time.
//
// Thread: the thread that owns the Display (the main thread for Qt's display).
class X11ScreenSaverSuspend
{
public:
    // A null display makes an object that does nothing. The display must
    // outlive the object.
    explicit X11ScreenSaverSuspend(_XDisplay *display);
    ~X11ScreenSaverSuspend();

    X11ScreenSaverSuspend(const X11ScreenSaverSuspend &) = delete;
    X11ScreenSaverSuspend &operator=(const X11ScreenSaverSuspend &) = delete;

    // Uses the Display of the running QGuiApplication when its platform is
    // xcb; on every other platform (wayland, offscreen) the result does nothing.
    static std::unique_ptr<X11ScreenSaverSuspend> forApplication();

    bool screenSaverSuspended() const { return m_screenSaverSuspended; }
    bool dpmsDisabled() const { return m_dpmsDisabled; }

private:
    _XDisplay *m_display = nullptr;
    bool m_screenSaverSuspended = false;
    bool m_dpmsDisabled = false;
};

} // namespace tarnix
