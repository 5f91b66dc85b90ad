#pragma once

#include <QString>

#include <chrono>

namespace tarnix {

// Whether a D-Bus daemon answers at all, asked before Qt D-Bus connects to it.
//
// Qt D-Bus connects inside its one connection-manager thread, holding the
// manager's lock, and libdbus waits for the daemon's authentication answer
// without any time limit. A daemon whose socket accepts but never answers
// would therefore stop every D-Bus connection of the process for good, and
// keep the process from exiting (Qt joins that thread at exit). The probe
// opens its own socket, sends the first line of the authentication
// handshake and waits a bounded time for any answer; only a bus that
// answered, or one the probe cannot judge, is handed to Qt D-Bus.
enum class BusProbeOutcome {
    Answered,     // a daemon replied to the handshake in time
    Silent,       // the socket took the connection but nothing came back in time
    Unreachable,  // no listed socket could be reached (missing, refused, closed)
    NotProbed,    // empty address, or a transport the probe does not speak
};

struct BusProbeResult
{
    BusProbeOutcome outcome = BusProbeOutcome::NotProbed;
    // The address entry that decided, for messages.
    QString entry;
};

// The address libdbus would use for the session bus: DBUS_SESSION_BUS_ADDRESS,
// else $XDG_RUNTIME_DIR/bus when that exists. Empty when there is none.
// Looks at the file system: worker threads only.
QString sessionBusAddress();

// DBUS_SYSTEM_BUS_ADDRESS, else the standard system bus socket.
QString systemBusAddress();

// Tries the entries of a D-Bus address (";"-separated) in order, as libdbus
// does: the first unix socket that accepts a connection decides. Blocks for
// at most about the given time. Thread: any; meant for worker threads.
BusProbeResult probeBus(const QString &address, std::chrono::milliseconds timeout);

} // namespace tarnix
