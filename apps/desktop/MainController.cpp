#include "MainController.h"

#include "shell/log_categories.h"

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
    bool programOutput4k = false;
    bool programPlayerAvailable = false;
    QString programPlayerError = QStringLiteral("The program player is not part of this build.");
};

MainController::MainController(QWidget *programVideoWindow, QWidget *controllerWindow,
                               bool programOutput4k)
    : d(std::make_unique<Impl>())
{
    d->programVideoWindow = programVideoWindow;
    d->controllerWindow = controllerWindow;
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

} // namespace tarnix
