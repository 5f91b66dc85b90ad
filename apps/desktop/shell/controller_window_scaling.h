#pragma once

#include <QObject>
#include <QPointer>

class QScreen;
class QWidget;

namespace tarnix {

// Keeps the controller window in step with the scale of the screen it is
// on. When the window moves to another screen, or that screen's size or
// available area changes, the interface scale is computed again; when it
// differs, the application font, the skin's sheet and the window's minimum
// width follow. Install it once the window has been laid out (a zero-time
// single-shot timer after showing it). Main thread; a child of the window.
class ControllerWindowScaling : public QObject
{
    Q_OBJECT

public:
    explicit ControllerWindowScaling(QWidget *window);

    // Installs the scaling on the window; returns the object, owned by the
    // window. The window must be shown (it needs its native window).
    static ControllerWindowScaling *install(QWidget *window);

    // Takes up the current screen's scale; true when it changed.
    bool refresh();

private:
    void followScreen(QScreen *screen);

    QPointer<QWidget> m_window;
    QPointer<QScreen> m_screen;
};

// Sets what depends on the interface scale and the text size again after
// either changed: the application font, the menus' fonts and the skin's
// style sheet. Main thread.
void applyInterfaceScaleChange();

} // namespace tarnix
