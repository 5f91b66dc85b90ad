#pragma once

#include <QJsonObject>
#include <QKeySequence>
#include <QObject>
#include <QStringList>

#include <memory>

class QWidget;

namespace tarnix {

class ControllerOperations;
class PlaylistPanel;
class ProgramPanel;

// The keyboard's way into the operations: the 64 configurable shortcuts and
// the fixed commands, each a named command that runs one operation. Keys
// are window-wide shortcuts on the controller window, shown on the menu
// entries that stand for the same commands; all of them stand aside while
// the operator types into a text field, a spin box or a time field. MIDI
// runs the same commands by name. Main thread.
class ControllerShortcuts : public QObject
{
    Q_OBJECT

public:
    // `stored` is the operator's bindings object; an invalid one gives the
    // defaults.
    ControllerShortcuts(QWidget *mainWindow, PlaylistPanel *playlistPanel, ProgramPanel *programPanel,
                        ControllerOperations *operations, const QJsonObject &stored, QObject *parent = nullptr);
    ~ControllerShortcuts() override;

    // Runs the command of that name (a shortcut or a fixed command) with
    // the caller's source word; false for an unknown name or a refusal.
    bool trigger(const QString &name);
    // Every command name, shortcuts first in id order.
    QStringList commandNames() const;
    // Validates and applies a new bindings object; the first offence when
    // it is refused (nothing changes then).
    QString applyBindings(const QJsonObject &bindings);
    QList<QKeySequence> keysOf(const QString &name) const;
    // Whether the window-wide keys are live now (not while typing text).
    bool keysEnabled() const;

    // Whether a widget takes typed text, so the show's keys stand aside.
    static bool acceptsText(const QWidget *widget);

private:
    struct Impl;
    std::unique_ptr<Impl> d;
};

} // namespace tarnix
