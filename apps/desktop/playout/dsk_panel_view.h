#pragma once

#include <QObject>
#include <QString>

namespace tarnix {

// What the program panel shows of the DSK layer: the DSK button's state
// with the item's name or the error, and whether its play and pause buttons
// act. The panel turns this into its texts and enable rules.
struct DskPanelState {
    enum Kind { Idle = 0, Preparing = 1, Queued = 2, Active = 3, Error = 4 };

    Kind kind = Idle;
    // The item's name (preparing, queued, active) or the error text.
    QString text;
    // The selection can be sent to DSK.
    bool selectionReady = false;
    // Active only: the DSK media plays, and a fade out is taking it off.
    bool playing = false;
    bool ending = false;

    friend bool operator==(const DskPanelState &, const DskPanelState &) = default;
};

// The DSK buttons of the program panel as the DSK controller drives them;
// the buttons themselves are controller operations like any key's. Main
// thread.
class DskPanelView : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    virtual void showDsk(const DskPanelState &state) = 0;
};

} // namespace tarnix
