#pragma once

#include <QString>
#include <QStringList>

namespace tarnix {

// The switcher models "switcher/roland/model" may name: the Roland models
// driven by their remote protocol, by id, followed by the kinds that have a
// device of their own ("atem", "vr50hd"; "v8hd" is both). Fixed for the
// build, safe on any thread.
const QStringList &switcherModelIds();

// Whether the id names one of them, spelt exactly.
bool isKnownSwitcherModel(const QString &id);

} // namespace tarnix
