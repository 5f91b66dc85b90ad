#include "video/program_overlay_element.h"

#include <gst/video/gstvideofilter.h>
#include <gst/video/video.h>

#include <mutex>

GST_DEBUG_CATEGORY_STATIC(tarnix_program_overlay_debug);
#define GST_CAT_DEFAULT tarnix_program_overlay_debug

namespace {

struct TarnixProgramOverlay {
    GstVideoFilter parent;
    tarnix::ProgramOverlayDraw draw; // guarded by the object lock
    gpointer userData;
};

struct TarnixProgramOverlayClass {
    GstVideoFilterClass parentClass;
};

GType tarnix_program_overlay_get_type();
#define TARNIX_PROGRAM_OVERLAY(obj) \
    (G_TYPE_CHECK_INSTANCE_CAST((obj), tarnix_program_overlay_get_type(), TarnixProgramOverlay))

G_DEFINE_TYPE(TarnixProgramOverlay, tarnix_program_overlay, GST_TYPE_VIDEO_FILTER)

GstStaticPadTemplate sinkTemplate = GST_STATIC_PAD_TEMPLATE(
    "sink", GST_PAD_SINK, GST_PAD_ALWAYS, GST_STATIC_CAPS(GST_VIDEO_CAPS_MAKE("BGRA")));
GstStaticPadTemplate srcTemplate = GST_STATIC_PAD_TEMPLATE(
    "src", GST_PAD_SRC, GST_PAD_ALWAYS, GST_STATIC_CAPS(GST_VIDEO_CAPS_MAKE("BGRA")));

GstFlowReturn tarnix_program_overlay_transform_frame_ip(GstVideoFilter *filter, GstVideoFrame *frame)
{
    auto *self = TARNIX_PROGRAM_OVERLAY(filter);
    GST_OBJECT_LOCK(self);
    const tarnix::ProgramOverlayDraw draw = self->draw;
    const gpointer userData = self->userData;
    GST_OBJECT_UNLOCK(self);
    if (!draw)
        return GST_FLOW_OK;
    tarnix::ProgramOverlayFrame out;
    out.pixels = static_cast<quint8 *>(GST_VIDEO_FRAME_PLANE_DATA(frame, 0));
    out.width = GST_VIDEO_FRAME_WIDTH(frame);
    out.height = GST_VIDEO_FRAME_HEIGHT(frame);
    out.stride = GST_VIDEO_FRAME_PLANE_STRIDE(frame, 0);
    out.pts = GST_BUFFER_PTS(frame->buffer);
    draw(out, userData);
    return GST_FLOW_OK;
}

void tarnix_program_overlay_class_init(TarnixProgramOverlayClass *klass)
{
    auto *elementClass = GST_ELEMENT_CLASS(klass);
    gst_element_class_set_static_metadata(elementClass, "TARNIX program overlay", "Filter/Video",
                                          "Renders the program picture into each frame",
                                          "TARNIX");
    gst_element_class_add_static_pad_template(elementClass, &sinkTemplate);
    gst_element_class_add_static_pad_template(elementClass, &srcTemplate);
    GST_VIDEO_FILTER_CLASS(klass)->transform_frame_ip = tarnix_program_overlay_transform_frame_ip;
}

void tarnix_program_overlay_init(TarnixProgramOverlay *self)
{
    self->draw = nullptr;
    self->userData = nullptr;
    gst_base_transform_set_in_place(GST_BASE_TRANSFORM(self), TRUE);
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

void setProgramOverlayDraw(GstElement *overlay, ProgramOverlayDraw draw, gpointer userData)
{
    if (!overlay || !G_TYPE_CHECK_INSTANCE_TYPE(overlay, tarnix_program_overlay_get_type()))
        return;
    auto *self = TARNIX_PROGRAM_OVERLAY(overlay);
    GST_OBJECT_LOCK(self);
    self->draw = draw;
    self->userData = userData;
    GST_OBJECT_UNLOCK(self);
}

} // namespace tarnix
