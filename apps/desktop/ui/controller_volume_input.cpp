#include "ui/controller_volume_input.h"

#include "control/controller_operations.h"
#include "control/operation_source.h"
#include "ui/controller_shortcuts.h"

#include <QApplication>
#include <QKeyEvent>
#include <QKeySequenceEdit>
#include <QWheelEvent>
#include <QWidget>

namespace tarnix {

using Ops = ControllerOperations;

ControllerVolumeInput::ControllerVolumeInput(QWidget *mainWindow, ControllerOperations *operations, QObject *parent)
    : QObject(parent), m_mainWindow(mainWindow), m_operations(operations)
{
    qApp->installEventFilter(this);
}

bool ControllerVolumeInput::acceptsTextHere(QWidget *receiver) const
{
    auto typing = [](const QWidget *widget) {
        return ControllerShortcuts::acceptsText(widget) || qobject_cast<const QKeySequenceEdit *>(widget);
    };
    if (typing(receiver))
        return true;
    for (const QWidget *widget = QApplication::focusWidget(); widget; widget = widget->parentWidget()) {
        if (typing(widget))
            return true;
    }
    return false;
}

bool ControllerVolumeInput::eventFilter(QObject *watched, QEvent *event)
{
    const QEvent::Type type = event->type();
    if (type != QEvent::KeyPress && type != QEvent::ShortcutOverride && type != QEvent::Wheel)
        return false;
    auto *receiver = qobject_cast<QWidget *>(watched);
    if (!receiver || !m_mainWindow || receiver->window() != m_mainWindow || QApplication::activeModalWidget())
        return false;
    if (acceptsTextHere(receiver))
        return false;

    const Qt::KeyboardModifiers modifiers =
        (type == QEvent::Wheel ? static_cast<QWheelEvent *>(event)->modifiers()
                               : static_cast<QKeyEvent *>(event)->modifiers())
        & (Qt::ShiftModifier | Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier);
    int action = -1;
    int *remainder = nullptr;
    if (modifiers == Qt::ControlModifier) {
        action = Ops::AdjustItemVolume;
        remainder = &m_ctrlRemainder;
    } else if (modifiers == Qt::ShiftModifier) {
        action = Ops::AdjustMasterVolume;
        remainder = &m_shiftRemainder;
    } else {
        return false;
    }

    int steps = 0;
    if (type == QEvent::Wheel) {
        const QPoint angle = static_cast<QWheelEvent *>(event)->angleDelta();
        *remainder += angle.y() != 0 ? angle.y() : angle.x();
        steps = *remainder / 120;
        *remainder -= steps * 120;
    } else {
        const int key = static_cast<QKeyEvent *>(event)->key();
        if (key != Qt::Key_Up && key != Qt::Key_Down)
            return false;
        if (type == QEvent::ShortcutOverride) {
            // Taken here, so that no menu shortcut sees the chord.
            event->accept();
            return true;
        }
        steps = key == Qt::Key_Up ? 1 : -1;
    }
    if (steps != 0 && m_operations) {
        const OperationSourceScope source("Shortcut");
        m_operations->invoke(Ops::Action(action), {QVariant::fromValue(steps * 10)});
    }
    event->accept();
    return true;
}

} // namespace tarnix
