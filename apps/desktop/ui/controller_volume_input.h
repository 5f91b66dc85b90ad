#pragma once

#include <QObject>
#include <QPointer>

class QWidget;

namespace tarnix {

class ControllerOperations;

// Ctrl or Shift with Up, Down or the wheel anywhere in the controller
// window rides the ON AIR item's volume (Ctrl) or the master (Shift), one
// dB a step, unless the operator is typing text there. An application-wide
// event filter that consumes only what it acts on.
class ControllerVolumeInput : public QObject
{
    Q_OBJECT

public:
    ControllerVolumeInput(QWidget *mainWindow, ControllerOperations *operations, QObject *parent = nullptr);

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    bool acceptsTextHere(QWidget *receiver) const;

    QPointer<QWidget> m_mainWindow;
    QPointer<ControllerOperations> m_operations;
    int m_ctrlRemainder = 0;
    int m_shiftRemainder = 0;
};

} // namespace tarnix
