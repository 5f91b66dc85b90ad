#include "shell/x11_screen_saver_suspend.h"

#include "shell/log_categories.h"

#include <QGuiApplication>

// Xlib defines macros (None, Bool, Status, ...) that collide with Qt names, so
// it comes after every Qt header.
#include <X11/Xlib.h>
#include <X11/extensions/dpms.h>
#include <X11/extensions/scrnsaver.h>

namespace tarnix {

X11ScreenSaverSuspend::X11ScreenSaverSuspend(_XDisplay *display)
    : m_display(display)
{
    if (!m_display)
        return;

    int eventBase = 0;
    int errorBase = 0;
    int major = 0;
    int minor = 0;
    // Suspend arrived in version 1.1 of the extension; older servers would
    // answer the request with an error.
    if (XScreenSaverQueryExtension(m_display, &eventBase, &errorBase)
        && XScreenSaverQueryVersion(m_display, &major, &minor)
        && (major > 1 || (major == 1 && minor >= 1))) {
        XScreenSaverSuspend(m_display, True);
        m_screenSaverSuspended = true;
    } else {
        qCInfo(lcSystem()) << "DISPLAY_ACTIVITY X server cannot suspend its screen saver";
    }

    if (DPMSQueryExtension(m_display, &eventBase, &errorBase)) {
        CARD16 powerLevel = 0;
        BOOL enabled = False;
        if (DPMSInfo(m_display, &powerLevel, &enabled) && enabled) {
            DPMSDisable(m_display);
            m_dpmsDisabled = true;
        }
    }

    XFlush(m_display);
    qCInfo(lcSystem()).nospace() << "DISPLAY_ACTIVITY X11 screenSaverSuspended="
                                 << m_screenSaverSuspended << " dpmsDisabled=" << m_dpmsDisabled;
}

X11ScreenSaverSuspend::~X11ScreenSaverSuspend()
{
    if (!m_display)
        return;
    if (m_screenSaverSuspended)
        XScreenSaverSuspend(m_display, False);
    if (m_dpmsDisabled)
        DPMSEnable(m_display);
    if (m_screenSaverSuspended || m_dpmsDisabled)
        XFlush(m_display);
}

std::unique_ptr<X11ScreenSaverSuspend> X11ScreenSaverSuspend::forApplication()
{
    _XDisplay *display = nullptr;
#if QT_CONFIG(xcb)
    if (qGuiApp && QGuiApplication::platformName() == QLatin1String("xcb")) {
        if (auto *x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>())
            display = x11->display();
    }
#endif
    return std::make_unique<X11ScreenSaverSuspend>(display);
}

} // namespace tarnix
