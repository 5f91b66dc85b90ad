#include "shell/controller_window_scaling.h"

#include "shell/controller_skin.h"
#include "shell/interface_scale.h"
#include "shell/log_categories.h"

#include <QScreen>
#include <QWidget>
#include <QWindow>

#include <cmath>

namespace tarnix {

void applyInterfaceScaleChange()
{
    applyScaledApplicationFont();
    applyScaledMenuFonts();
    rescaleControllerSkin();
}

ControllerWindowScaling::ControllerWindowScaling(QWidget *window)
    : QObject(window)
    , m_window(window)
{
    setObjectName(QStringLiteral("controllerWindowScaling"));
    QWindow *handle = window->windowHandle();
    if (!handle)
        return;
    connect(handle, &QWindow::screenChanged, this, [this](QScreen *screen) {
        followScreen(screen);
        refresh();
    });
    followScreen(handle->screen());
}

ControllerWindowScaling *ControllerWindowScaling::install(QWidget *window)
{
    if (!window)
        return nullptr;
    if (auto *existing = window->findChild<ControllerWindowScaling *>(QString(), Qt::FindDirectChildrenOnly))
        return existing;
    auto *scaling = new ControllerWindowScaling(window);
    scaling->refresh();
    return scaling;
}

void ControllerWindowScaling::followScreen(QScreen *screen)
{
    if (m_screen == screen)
        return;
    if (m_screen)
        disconnect(m_screen, nullptr, this, nullptr);
    m_screen = screen;
    if (!screen)
        return;
    connect(screen, &QScreen::geometryChanged, this, &ControllerWindowScaling::refresh);
    connect(screen, &QScreen::availableGeometryChanged, this, &ControllerWindowScaling::refresh);
}

bool ControllerWindowScaling::refresh()
{
    if (!m_window || !m_screen)
        return false;
    const double scale = uiScale(m_screen->geometry(), m_screen->availableGeometry());
    if (std::abs(scale - interfaceScale()) < 1e-9)
        return false;
    setUiScale(scale);
    const QSize size = m_screen->geometry().size();
    const QSize available = m_screen->availableGeometry().size();
    qCInfo(lcSystem).noquote() << QStringLiteral("Controller window scale changed: screen=%1 logicalScreen=%2x%3 "
                                                 "available=%4x%5 devicePixelRatio=%6 uiScale=%7")
                                       .arg(m_screen->name())
                                       .arg(size.width())
                                       .arg(size.height())
                                       .arg(available.width())
                                       .arg(available.height())
                                       .arg(m_screen->devicePixelRatio())
                                       .arg(interfaceScale());
    applyInterfaceScaleChange();
    m_window->setMinimumWidth(scaled(664));
    return true;
}

} // namespace tarnix
