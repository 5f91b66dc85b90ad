#include "shell/startup_windows.h"

#include "shell/interface_scale.h"
#include "shell/localized_text.h"
#include "shell/user_info_bar.h"

#include <QApplication>
#include <QScreen>
#include <QVBoxLayout>
#include <QWidget>

namespace tarnix {

QWidget *createProgramVideoWindow()
{
    auto *window = new QWidget(nullptr, Qt::Window | Qt::FramelessWindowHint);
    window->setObjectName(QStringLiteral("programVideoWindow"));
    window->setWindowTitle(localized("window.player.title"));
    window->setCursor(Qt::BlankCursor);
    window->setAttribute(Qt::WA_NativeWindow);
    window->winId();
    return window;
}

QWidget *createControllerWindow()
{
    auto *window = new QWidget;
    window->setObjectName(QStringLiteral("controllerWindow"));
    window->setAttribute(Qt::WA_StyledBackground);
    window->setAttribute(Qt::WA_DeleteOnClose);
    window->setWindowTitle(localized("window.controller.title"));
    window->setMinimumWidth(scaledPixels(664));
    return window;
}

QScreen *chooseProgramScreen()
{
    QScreen *primary = QGuiApplication::primaryScreen();
    const QList<QScreen *> screens = QGuiApplication::screens();
    for (QScreen *screen : screens) {
        if (screen != primary)
            return screen;
    }
    return primary;
}

void placeProgramVideoWindow(QWidget *window)
{
    QScreen *screen = chooseProgramScreen();
    if (!screen) {
        window->showFullScreen();
        return;
    }
    const QRect geometry = screen->geometry();
    window->setGeometry(geometry);
    window->show();
    // Window managers may move a window while it maps; place it again.
    window->setGeometry(geometry);
    window->raise();
}

void showControllerWindow(QWidget *window)
{
    window->adjustSize();
    window->resize(window->sizeHint().expandedTo(window->minimumSizeHint()));
    if (QScreen *primary = QGuiApplication::primaryScreen()) {
        QRect frame = window->frameGeometry();
        frame.moveCenter(primary->availableGeometry().center());
        window->move(frame.topLeft());
    }
    window->showMaximized();
}

QWidget *createRuntimeMissingWindow(UserInfoCenter *center)
{
    auto *window = new QWidget;
    window->setObjectName(QStringLiteral("controllerWindow"));
    window->setAttribute(Qt::WA_StyledBackground);
    window->setAttribute(Qt::WA_DeleteOnClose);
    window->setWindowTitle(localized("window.controller.title"));
    window->setMinimumWidth(scaledPixels(760));
    auto *layout = new QVBoxLayout(window);
    const int margin = scaledPixels(10);
    layout->setContentsMargins(margin, margin, margin, margin);
    layout->addWidget(new UserInfoBar(center, window));
    return window;
}

} // namespace tarnix
