#pragma once

#include <gst/gst.h>

#include <atomic>
#include <memory>

namespace tarnix::test {

// Creates a test element that fails the change from READY to NULL while its
// "refuse-null" property is TRUE (the default), so any pipeline holding it
// can never confirm NULL. Registers the element on first use.
GstElement *makeNullRefusingElement(const char *name = nullptr);

// A flag that turns true when the object is finalized (through a weak
// reference). Any thread may set it; read it from the test.
std::shared_ptr<std::atomic<bool>> watchFinalization(gpointer object);

} // namespace tarnix::test
