#pragma once

#include <gst/gst.h>

namespace tarnix {

// appsink hands out the one sample object it also keeps for itself, and
// after a flush it writes the pad's caps back into that object from the
// streaming thread without first making it writable; a sample still held
// by a consumer at that moment makes GStreamer assert. A sample that is kept
// beyond the callback that pulled it is therefore re-wrapped: the new sample
// shares the buffer, caps and info (no pixel is copied) and belongs to the
// caller alone. Takes ownership of `pulled`; null stays null.
inline GstSample *ownedSample(GstSample *pulled)
{
    if (!pulled)
        return nullptr;
    const GstStructure *info = gst_sample_get_info(pulled);
    GstSample *own = gst_sample_new(gst_sample_get_buffer(pulled), gst_sample_get_caps(pulled),
                                    gst_sample_get_segment(pulled), info ? gst_structure_copy(info) : nullptr);
    gst_sample_unref(pulled);
    return own;
}

} // namespace tarnix
