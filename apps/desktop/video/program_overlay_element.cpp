#include "video/program_overlay_element.h"

#include <gst/base/gstbasetransform.h>
#include <gst/video/video.h>

#include <mutex>

GST_DEBUG_CATEGORY_STATIC(tarnix_program_overlay_debug);
#define GST_CAT_DEFAULT tarnix_program_overlay_debug

namespace {

struct TarnixProgramOverlay {
    GstBaseTransform parent;
    tarnix::ProgramOverlayProduce produce; // guarded by the object lock
    gpointer userData;                     // guarded by the object lock
    // Streaming thread, from set_caps on.
    GstVideoInfo outputInfo;
    GstMemory *black; // the frame sent when nothing was produced
};

struct TarnixProgramOverlayClass {
    GstBaseTransformClass parentClass;
};

GType tarnix_program_overlay_get_type();
#define TARNIX_PROGRAM_OVERLAY(obj) \
    (G_TYPE_CHECK_INSTANCE_CAST((obj), tarnix_program_overlay_get_type(), TarnixProgramOverlay))

G_DEFINE_TYPE(TarnixProgramOverlay, tarnix_program_overlay, GST_TYPE_BASE_TRANSFORM)

GstStaticPadTemplate sinkTemplate = GST_STATIC_PAD_TEMPLATE(
    "sink", GST_PAD_SINK, GST_PAD_ALWAYS, GST_STATIC_CAPS(GST_VIDEO_CAPS_MAKE("BGRA")));
GstStaticPadTemplate srcTemplate = GST_STATIC_PAD_TEMPLATE(
    "src", GST_PAD_SRC, GST_PAD_ALWAYS, GST_STATIC_CAPS(GST_VIDEO_CAPS_MAKE("BGRA")));

// The tick's size says nothing about the frame's: both sides take any size,
// and the rest of the caps (format, rate, aspect) passes through.
GstCaps *tarnix_program_overlay_transform_caps(GstBaseTransform *, GstPadDirection, GstCaps *caps,
                                               GstCaps *filter)
{
    GstCaps *result = gst_caps_copy(caps);
    for (guint i = 0; i < gst_caps_get_size(result); ++i) {
        gst_structure_set(gst_caps_get_structure(result, i), "width", GST_TYPE_INT_RANGE, 1, G_MAXINT,
                          "height", GST_TYPE_INT_RANGE, 1, G_MAXINT, nullptr);
    }
    if (filter) {
        GstCaps *filtered = gst_caps_intersect_full(filter, result, GST_CAPS_INTERSECT_FIRST);
        gst_caps_unref(result);
        result = filtered;
    }
    return result;
}

gboolean tarnix_program_overlay_set_caps(GstBaseTransform *trans, GstCaps *, GstCaps *outcaps)
{
    auto *self = TARNIX_PROGRAM_OVERLAY(trans);
    GstVideoInfo info;
    if (!gst_video_info_from_caps(&info, outcaps))
        return FALSE;
    self->outputInfo = info;
    if (self->black)
        gst_memory_unref(self->black);
    self->black = gst_allocator_alloc(nullptr, info.size, nullptr);
    GstMapInfo map;
    if (!gst_memory_map(self->black, &map, GST_MAP_WRITE))
        return FALSE;
    for (gsize i = 0; i + 3 < map.size; i += 4) {
        map.data[i + 0] = map.data[i + 1] = map.data[i + 2] = 0;
        map.data[i + 3] = 255;
    }
    gst_memory_unmap(self->black, &map);
    return TRUE;
}

// The frame is made where its buffer is chosen: the produce function either
// composes into a free block of its own or hands back the block of the
// previous frame when nothing changed, and that buffer is the output.
GstFlowReturn tarnix_program_overlay_prepare_output_buffer(GstBaseTransform *trans, GstBuffer *input,
                                                           GstBuffer **output)
{
    auto *self = TARNIX_PROGRAM_OVERLAY(trans);
    if (!self->black)
        return GST_FLOW_NOT_NEGOTIATED;
    GST_OBJECT_LOCK(self);
    const tarnix::ProgramOverlayProduce produce = self->produce;
    const gpointer userData = self->userData;
    GST_OBJECT_UNLOCK(self);

    tarnix::ProgramOverlayTick tick;
    tick.pts = GST_BUFFER_PTS(input);
    tick.width = GST_VIDEO_INFO_WIDTH(&self->outputInfo);
    tick.height = GST_VIDEO_INFO_HEIGHT(&self->outputInfo);
    GstBuffer *frame = produce ? produce(tick, userData) : nullptr;
    if (frame && gst_buffer_get_size(frame) < self->outputInfo.size) {
        GST_ERROR_OBJECT(self, "produced frame is too small");
        gst_buffer_unref(frame);
        frame = nullptr;
    }
    if (!frame) {
        frame = gst_buffer_new();
        gst_buffer_append_memory(frame, gst_memory_ref(self->black));
    }
    // Only the buffer's own fields are written; its memory stays shared.
    frame = gst_buffer_make_writable(frame);
    gst_buffer_copy_into(frame, input,
                         GstBufferCopyFlags(GST_BUFFER_COPY_FLAGS | GST_BUFFER_COPY_TIMESTAMPS), 0, -1);
    *output = frame;
    return GST_FLOW_OK;
}

// Frames come from the produce function, never from a pool downstream
// offers: none is set up, so no program-sized buffers are made for nothing.
gboolean tarnix_program_overlay_decide_allocation(GstBaseTransform *, GstQuery *query)
{
    while (gst_query_get_n_allocation_pools(query) > 0)
        gst_query_remove_nth_allocation_pool(query, 0);
    return TRUE;
}

GstFlowReturn tarnix_program_overlay_transform(GstBaseTransform *, GstBuffer *, GstBuffer *)
{
    return GST_FLOW_OK;
}

gboolean tarnix_program_overlay_stop(GstBaseTransform *trans)
{
    auto *self = TARNIX_PROGRAM_OVERLAY(trans);
    if (self->black) {
        gst_memory_unref(self->black);
        self->black = nullptr;
    }
    return TRUE;
}

void tarnix_program_overlay_finalize(GObject *object)
{
    auto *self = TARNIX_PROGRAM_OVERLAY(object);
    if (self->black)
        gst_memory_unref(self->black);
    G_OBJECT_CLASS(tarnix_program_overlay_parent_class)->finalize(object);
}

void tarnix_program_overlay_class_init(TarnixProgramOverlayClass *klass)
{
    G_OBJECT_CLASS(klass)->finalize = tarnix_program_overlay_finalize;
    auto *elementClass = GST_ELEMENT_CLASS(klass);
    gst_element_class_set_static_metadata(elementClass, "TARNIX program overlay", "Filter/Video",
                                          "Makes the program picture at every frame clock tick",
                                          "TARNIX");
    gst_element_class_add_static_pad_template(elementClass, &sinkTemplate);
    gst_element_class_add_static_pad_template(elementClass, &srcTemplate);
    auto *transformClass = GST_BASE_TRANSFORM_CLASS(klass);
    transformClass->transform_caps = tarnix_program_overlay_transform_caps;
    transformClass->set_caps = tarnix_program_overlay_set_caps;
    transformClass->prepare_output_buffer = tarnix_program_overlay_prepare_output_buffer;
    transformClass->transform = tarnix_program_overlay_transform;
    transformClass->decide_allocation = tarnix_program_overlay_decide_allocation;
    transformClass->stop = tarnix_program_overlay_stop;
}

void tarnix_program_overlay_init(TarnixProgramOverlay *self)
{
    self->produce = nullptr;
    self->userData = nullptr;
    gst_video_info_init(&self->outputInfo);
    self->black = nullptr;
}

} // namespace

namespace tarnix {

bool registerProgramOverlayElement(QString *error)
{
    static std::once_flag once;
    static bool registered = false;
    std::call_once(once, [] {
        GST_DEBUG_CATEGORY_INIT(tarnix_program_overlay_debug, "tarnixprogramoverlay", 0,
                                "TARNIX program overlay");
        registered = gst_element_register(nullptr, "tarnixprogramoverlay", GST_RANK_NONE,
                                          tarnix_program_overlay_get_type());
    });
    if (!registered && error)
        *error = QStringLiteral("Could not register the program overlay element.");
    return registered;
}

void setProgramOverlayProduce(GstElement *overlay, ProgramOverlayProduce produce, gpointer userData)
{
    if (!overlay || !G_TYPE_CHECK_INSTANCE_TYPE(overlay, tarnix_program_overlay_get_type()))
        return;
    auto *self = TARNIX_PROGRAM_OVERLAY(overlay);
    GST_OBJECT_LOCK(self);
    self->produce = produce;
    self->userData = userData;
    GST_OBJECT_UNLOCK(self);
}

} // namespace tarnix
