#include "MainController.h"

#include "control/control_socket_server.h"
#include "control/control_state_registry.h"
#include "control/controller_operations.h"
#include "shell/background_io_queue.h"
#include "shell/log_categories.h"
#include "shell/ui_language_manager.h"
#include "shell/user_info_center.h"

#include <QPointer>
#include <QWidget>

namespace tarnix {

// Members are constructed in the order below and destroyed in reverse. The
// operations registry, operator messages, playlist model, panels and the
// program playout controller (which owns the dual-deck player) join here in
// that order as they are built; until the program playout controller exists
// there is no program player, and the start hides the program window.
struct MainController::Impl {
    // First, so that it outlives every panel and controller bound to it.
    ControllerOperations operations;
    ControlStateRegistry controlState;
    QPointer<QWidget> programVideoWindow;
    QPointer<QWidget> controllerWindow;
    QPointer<UiLanguageManager> languageManager;
    bool programOutput4k = false;
    // Destroyed after everything that may queue file work, so the queue's
    // destructor runs the saves that the others queued on their way out.
    BackgroundIoQueue backgroundIoQueue;
    UserInfoCenter userInfoCenter;
    bool programPlayerAvailable = false;
    QString programPlayerError = QStringLiteral("The program player is not part of this build.");
    // Last, so that it closes first at exit, before anything it reaches goes.
    std::unique_ptr<ControlSocketServer> controlSocket;
};

MainController::MainController(QWidget *programVideoWindow, QWidget *controllerWindow,
                               bool programOutput4k, UiLanguageManager *languageManager)
    : d(std::make_unique<Impl>())
{
    d->programVideoWindow = programVideoWindow;
    d->controllerWindow = controllerWindow;
    d->languageManager = languageManager;
    d->programOutput4k = programOutput4k;
    qCInfo(lcSystem).noquote() << "MainController ready; program output"
                               << (programOutput4k ? "3840x2160" : "1920x1080");
}

MainController::~MainController()
{
    // Requests that arrive while the rest is torn down find nothing to run.
    d->operations.setAccepting(false);
    d->controlSocket.reset();
}

bool MainController::programPlayerAvailable() const
{
    return d->programPlayerAvailable;
}

QString MainController::programPlayerError() const
{
    return d->programPlayerError;
}

UserInfoCenter *MainController::userInfoCenter() const
{
    return &d->userInfoCenter;
}

BackgroundIoQueue *MainController::backgroundIoQueue() const
{
    return &d->backgroundIoQueue;
}

ControllerOperations *MainController::controllerOperations() const
{
    return &d->operations;
}

ControlStateRegistry *MainController::controlState() const
{
    return &d->controlState;
}

bool MainController::startControlSocket(const QString &path)
{
    if (d->controlSocket || path.isEmpty())
        return false;
    auto server = std::make_unique<ControlSocketServer>(&d->operations, &d->controlState);
    if (!server->listen(path))
        return false;
    d->controlSocket = std::move(server);
    return true;
}

} // namespace tarnix
