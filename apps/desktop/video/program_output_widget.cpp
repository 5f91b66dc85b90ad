#include "video/program_output_widget.h"

#include <QWindow>

namespace tarnix {

ProgramOutputWidget::ProgramOutputWidget(QWidget *parent)
    : QWidget(parent)
{
    setObjectName(QStringLiteral("program-gpu-output"));
    setAttribute(Qt::WA_NativeWindow);
    setAttribute(Qt::WA_PaintOnScreen);
    setAttribute(Qt::WA_NoSystemBackground);
    setAttribute(Qt::WA_OpaquePaintEvent);
    setAutoFillBackground(false);
}

QWindow *ProgramOutputWidget::outputWindow()
{
    winId();
    return windowHandle();
}

} // namespace tarnix
