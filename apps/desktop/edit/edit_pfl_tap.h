#pragma once

#include <gst/gst.h>

#include <memory>

namespace tarnix {

class EditPflFeed;

// Copies the EDIT player's sound, as it enters the nominal volume, into the
// PFL ring: the operator hears the item before its nominal fader. A probe on
// the element's sink pad, on the streaming thread; it never waits (a full
// ring drops) and writes only at a playback rate of exactly 1.0, so a scan
// is never heard. Segments, flushes and the end raise the ring's generation
// so that the helper throws away what they made void.
bool attachPflTap(GstElement *element, std::shared_ptr<EditPflFeed> feed);

} // namespace tarnix
