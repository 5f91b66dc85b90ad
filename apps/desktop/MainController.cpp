#include "MainController.h"

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

MainController::~MainController() = default;

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

} // namespace tarnix
