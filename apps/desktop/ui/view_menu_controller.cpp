#include "ui/view_menu_controller.h"

#include "control/controller_operations.h"
#include "shell/localized_text.h"
#include "shell/log_categories.h"

#include <QGuiApplication>
#include <QMenu>
#include <QScreen>
#include <QWidget>

namespace tarnix {

using Ops = ControllerOperations;

ViewMenuController::ViewMenuController(QWidget *programWindow, ControllerOperations *operations, QObject *parent)
    : QObject(parent), m_programWindow(programWindow)
{
    m_menu = new QMenu;
    m_menu->setObjectName(QStringLiteral("viewMenu"));
    QAction *next = m_menu->addAction(QString());
    next->setObjectName(QStringLiteral("viewMenuNextOutputDisplay"));
    connect(next, &QAction::triggered, this, [operations = QPointer<ControllerOperations>(operations)] {
        if (operations)
            operations->invoke(Ops::NextOutputDisplay);
    });
    if (operations)
        operations->bindMember(Ops::NextOutputDisplay, this, &ViewMenuController::nextOutputDisplay);
    retranslate();
}

ViewMenuController::~ViewMenuController()
{
    delete m_menu.data();
}

QMenu *ViewMenuController::menu() const
{
    return m_menu;
}

void ViewMenuController::retranslate()
{
    if (!m_menu)
        return;
    m_menu->setTitle(localized("menu.view"));
    if (QAction *next = m_menu->findChild<QAction *>(QStringLiteral("viewMenuNextOutputDisplay")))
        next->setText(localized("menu.view.next_output_display"));
}

QScreen *ViewMenuController::programScreen() const
{
    if (!m_programWindow || m_windowed)
        return nullptr;
    const QRect geometry = m_programWindow->geometry();
    for (QScreen *screen : QGuiApplication::screens()) {
        if (screen->geometry() == geometry)
            return screen;
    }
    return m_programWindow->screen();
}

bool ViewMenuController::nextOutputDisplay()
{
    if (!m_programWindow)
        return false;
    const QList<QScreen *> screens = QGuiApplication::screens();
    if (screens.isEmpty())
        return false;
    if (screens.size() == 1) {
        if (m_windowed)
            placeFullScreen(screens.first());
        else
            placeWindowed(screens.first());
        return true;
    }
    QScreen *current = programScreen();
    const qsizetype index = current ? screens.indexOf(current) : -1;
    placeFullScreen(screens.at((index + 1) % screens.size()));
    return true;
}

void ViewMenuController::placeFullScreen(QScreen *screen)
{
    m_windowed = false;
    const QRect geometry = screen->geometry();
    m_programWindow->setGeometry(geometry);
    m_programWindow->show();
    m_programWindow->setGeometry(geometry);
    m_programWindow->raise();
    qCInfo(lcSystem).noquote() << QStringLiteral("Program output on screen %1 at %2,%3 %4x%5")
                                      .arg(screen->name())
                                      .arg(geometry.x())
                                      .arg(geometry.y())
                                      .arg(geometry.width())
                                      .arg(geometry.height());
}

// A third of the screen's width in its bottom-right corner: the picture
// stays in sight and the controller window can be reached around it.
void ViewMenuController::placeWindowed(QScreen *screen)
{
    m_windowed = true;
    const QRect area = screen->availableGeometry();
    const int width = area.width() / 3;
    const int height = width * 9 / 16;
    const QRect geometry(area.right() - width + 1, area.bottom() - height + 1, width, height);
    m_programWindow->setGeometry(geometry);
    m_programWindow->show();
    m_programWindow->setGeometry(geometry);
    qCInfo(lcSystem).noquote() << QStringLiteral("Program output in a window on screen %1").arg(screen->name());
}

} // namespace tarnix
