#pragma once

#include <QString>

#include <memory>

class QWidget;

namespace tarnix {

class BackgroundIoQueue;
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

private:
    struct Impl;
    std::unique_ptr<Impl> d;
};

} // namespace tarnix
