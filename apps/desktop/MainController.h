#pragma once

#include <QString>

#include <memory>

class QWidget;

namespace tarnix {

class BackgroundIoQueue;
class ControlStateRegistry;
class ControllerOperations;
class UiLanguageManager;
class UserInfoCenter;

// Composition root of the application: owns or parents every long-lived
// object for the whole run, wires them and tears them down in a safe order.
// It makes no playout decision of its own.
class MainController
{
public:
    MainController(QWidget *programVideoWindow, QWidget *controllerWindow, bool programOutput4k,
                   UiLanguageManager *languageManager);
    ~MainController();

    MainController(const MainController &) = delete;
    MainController &operator=(const MainController &) = delete;

    // Whether the program player came up; when it did not, the reason.
    bool programPlayerAvailable() const;
    QString programPlayerError() const;

    // The operator message queue and the file work queue of the run.
    UserInfoCenter *userInfoCenter() const;
    BackgroundIoQueue *backgroundIoQueue() const;

    // The registry every operator intention goes through; panels and
    // controllers bind their actions to it as they are built.
    ControllerOperations *controllerOperations() const;
    // Where owners publish the fields of the control socket's state query.
    ControlStateRegistry *controlState() const;

    // Opens the local control socket at the path. A failure is logged and
    // the application runs without it. Returns whether it listens.
    bool startControlSocket(const QString &path);

private:
    struct Impl;
    std::unique_ptr<Impl> d;
};

} // namespace tarnix
