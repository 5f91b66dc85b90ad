#pragma once

#include <QObject>

namespace tarnix {

// The one item the operator has selected, as ON AIR follows it. The playlist
// panel provides it; until it exists a headless holder does. Main thread.
class ItemSelection : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    // 0: nothing selected.
    virtual quint64 selectedItemId() const = 0;
    // A selection made by the program itself (not the operator); refused for
    // an id the document does not hold.
    virtual bool select(quint64 itemId) = 0;

signals:
    void selectionChanged(quint64 itemId, bool byOperator);
};

} // namespace tarnix
