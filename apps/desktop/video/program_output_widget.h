#pragma once

#include <QWidget>

class QWindow;

namespace tarnix {

// The widget the program picture is presented into ("program-gpu-output"):
// a native window that Qt never paints, so the presenter's sink owns every
// pixel of it and an expose shows no background between two frames.
//
// Threads: main thread only.
class ProgramOutputWidget : public QWidget
{
    Q_OBJECT

public:
    explicit ProgramOutputWidget(QWidget *parent = nullptr);

    // The native window of the widget, created on first use; give it to the
    // compositor as its program window.
    QWindow *outputWindow();

    QPaintEngine *paintEngine() const override { return nullptr; }

protected:
    void paintEvent(QPaintEvent *) override {}
};

} // namespace tarnix
