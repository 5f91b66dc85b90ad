#include "shell/window_system.h"

#include <cstdlib>

namespace tarnix {

WindowSystemChoice chooseWindowSystem(const QString &qpaPlatform, const QString &display,
                                      const QString &waylandDisplay)
{
    if (!qpaPlatform.isEmpty())
        return {QString(), QStringLiteral("QT_QPA_PLATFORM=%1 given by the environment").arg(qpaPlatform)};
    if (display.isEmpty() && waylandDisplay.isEmpty())
        return {QStringLiteral("offscreen"), QStringLiteral("no DISPLAY or WAYLAND_DISPLAY; using offscreen")};
    if (!waylandDisplay.isEmpty())
        return {QStringLiteral("xcb"), QStringLiteral("WAYLAND_DISPLAY set; using xcb for program output placement")};
    return {QString(), QStringLiteral("DISPLAY=%1; using the default platform").arg(display)};
}

WindowSystemChoice applyWindowSystemChoice()
{
    auto env = [](const char *name) { return QString::fromLocal8Bit(std::getenv(name)); };
    WindowSystemChoice choice = chooseWindowSystem(env("QT_QPA_PLATFORM"), env("DISPLAY"),
                                                   env("WAYLAND_DISPLAY"));
    if (!choice.platform.isEmpty())
        ::setenv("QT_QPA_PLATFORM", choice.platform.toLocal8Bit().constData(), 1);
    return choice;
}

} // namespace tarnix
