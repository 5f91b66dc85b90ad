#pragma once

#include <gst/gst.h>

namespace tarnix::test {

// Registers "tarnixtestdevicesink": an audio sink with a `device` string
// property that knows the devices "onair" and "other" (and the default,
// null). For any other device it refuses PLAYING; for the device "stall" it
// never finishes the change to PLAYING, so a waiter runs into its limit;
// the device "absent" accepts no caps, like a sound server's sink whose
// device is gone.
// It discards what it renders. Returns whether the element is registered.
bool registerFakeDeviceSink();

} // namespace tarnix::test
