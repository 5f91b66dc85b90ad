#pragma once

#include <gst/gst.h>

#include <QtGlobal>

#include <functional>

namespace tarnix {

// Small, non-blocking operations on a single-item playbin, shared by the
// decks that hold one file at a time (BGM, DSK). None of them waits.

// Asks for a state without waiting: ASYNC and NO_PREROLL count as accepted,
// only FAILURE refuses.
bool requestState(GstElement *element, GstState state);
// The process's system clock, so every pipeline runs on the same time.
void useSystemClock(GstElement *pipeline);
// Reads NULL with nothing pending, without waiting.
bool readsNullNow(GstElement *element);
// The state the element is in or on its way to equals this one.
bool isHeadingTo(GstElement *element, GstState state);
// -1 when unknown.
qint64 playbinPositionMs(GstElement *playbin);
qint64 playbinDurationMs(GstElement *playbin);
// An accurate flushing seek held to in..out (no out: at least in), with the
// out point as the stop position when there is one.
bool seekWithinRange(GstElement *playbin, qint64 ms, qint64 inMs, qint64 outMs);
// Hands up to limit pending messages of the bus to the handler, without
// waiting; only the thread that owns the bus may call it.
void popBusMessages(GstBus *bus, int limit, const std::function<void(GstMessage *)> &handle);

} // namespace tarnix
