#pragma once

#include <QJsonObject>
#include <QString>
#include <QStringList>

#include <optional>

// The stored form of the MIDI control configuration ("midi/control"): the
// names a binding may carry, and the one way a stored or imported object is
// brought to its current form and checked. Plain functions over fixed
// tables, safe on any thread; the MIDI input and the settings transfer both
// go through them, so an object one accepts the other accepts too.
namespace tarnix::midi_control {

// Every MIDI action in the order the MIDI page lists them: the keyboard
// shortcuts, the fixed commands, then the four volume faders.
const QStringList &actionNames();
bool isAction(const QString &name);
// "SetMasterVolume", "SetItemVolume", "SetEditVolume", "SetBgmVolume".
bool isVolumeAction(const QString &name);

// The relative and absolute ways a fader's CC value is read.
const QStringList &volumeModes();

// Brings a stored object to its current form and checks it.
//
// Older forms are migrated first: the retired "ManualTransition" binding is
// removed, and a volume binding saved before the fader scale existed (no
// "scale") has its old range -600..0 widened to -960..60 and gets "scale"
// "fader". Then the object must have exactly "enabled", "device" and
// "bindings"; every binding must name a known action, carry only the keys
// its kind allows, within their ranges, and no two bindings may answer the
// same message. Whole numbers come back as integers.
//
// Returns the object to store, or nothing with the first offence in
// `error`.
std::optional<QJsonObject> normalize(const QJsonObject &stored, QString *error = nullptr);

} // namespace tarnix::midi_control
