#pragma once

namespace tarnix {

class ControllerOperations;
class EditSessionController;

// Binds the EDIT session's operations (load, transport, points, modes,
// fades, toggles, reset) so that keys, the socket, MIDI and macros drive
// the same session the panel does. A request the session refuses is
// answered Rejected; its reason stands in the EDIT status line.
void bindEditOperations(ControllerOperations *operations, EditSessionController *session);

} // namespace tarnix
