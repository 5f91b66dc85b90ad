#pragma once

#include <QObject>
#include <QPointer>

class QMenu;
class QScreen;
class QWidget;

namespace tarnix {

class ControllerOperations;

// The View menu and where the program picture is shown. "Next Output
// Display" moves the full-screen program window to the next screen; with
// one screen only it takes turns between full screen and a small window in
// the screen's corner, so that the operator can always reach the
// controller window. Main thread.
class ViewMenuController : public QObject
{
    Q_OBJECT

public:
    ViewMenuController(QWidget *programWindow, ControllerOperations *operations, QObject *parent = nullptr);
    ~ViewMenuController() override;

    QMenu *menu() const;
    bool nextOutputDisplay();
    // The screen the program fills, or null while it is a small window.
    QScreen *programScreen() const;
    void retranslate();

private:
    void placeFullScreen(QScreen *screen);
    void placeWindowed(QScreen *screen);

    QPointer<QWidget> m_programWindow;
    QPointer<QMenu> m_menu;
    bool m_windowed = false;
};

} // namespace tarnix
