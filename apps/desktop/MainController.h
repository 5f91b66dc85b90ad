#pragma once

#include <QString>

#include <memory>

class QWidget;

namespace tarnix {

// Composition root of the application: owns or parents every long-lived
// object for the whole run, wires them and tears them down in a safe order.
// It makes no playout decision of its own.
class MainController
{
public:
    MainController(QWidget *programVideoWindow, QWidget *controllerWindow, bool programOutput4k);
    ~MainController();

    MainController(const MainController &) = delete;
    MainController &operator=(const MainController &) = delete;

    // Whether the program player came up; when it did not, the reason.
    bool programPlayerAvailable() const;
    QString programPlayerError() const;

private:
    struct Impl;
    std::unique_ptr<Impl> d;
};

} // namespace tarnix
