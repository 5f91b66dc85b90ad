#pragma once

namespace tarnix::test {

// From the first call on, any CRITICAL or ERROR that GLib, GObject or
// GStreamer logs, on any thread, ends the test run as a failure: the message
// is reported through Qt's fatal message, which names the running test
// function and the thread that logged it, and the process stops there, so a
// debugger shows the faulty call. WARNING and lower levels are written as
// before. Call it first in initTestCase(); further calls do nothing.
//
// Such assertions are faults in the code under test (or in how it drives a
// library), never expected output: an element that returns early from a
// failed g_return_if_fail() leaves its state half-done while the test
// carries on and may still pass.
void failOnGlibCriticals();

} // namespace tarnix::test
