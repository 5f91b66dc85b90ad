#include "audio/audio_element_common.h"

#include "audio/audio_equalizer_dsp.h"

namespace tarnix::audio_elements {

void addFixedPadTemplates(GstElementClass *elementClass)
{
    GstCaps *caps = gst_caps_from_string(kFixedCaps);
    gst_element_class_add_pad_template(elementClass,
                                       gst_pad_template_new("sink", GST_PAD_SINK, GST_PAD_ALWAYS, caps));
    gst_element_class_add_pad_template(elementClass,
                                       gst_pad_template_new("src", GST_PAD_SRC, GST_PAD_ALWAYS, caps));
    gst_caps_unref(caps);
}

void installBandProperties(GObjectClass *objectClass, guint firstId, const char *blurb)
{
    static const char *const names[] = {"band0", "band1", "band2"};
    static const char *const nicks[] = {"Band 0", "Band 1", "Band 2"};
    const auto flags = static_cast<GParamFlags>(G_PARAM_READWRITE | G_PARAM_STATIC_STRINGS |
                                                GST_PARAM_MUTABLE_PLAYING | GST_PARAM_CONTROLLABLE);
    for (guint band = 0; band < 3; ++band) {
        g_object_class_install_property(
            objectClass, firstId + band,
            g_param_spec_double(names[band], nicks[band], blurb, -audio_dsp::kBandGainLimit,
                                audio_dsp::kBandGainLimit, 0.0, flags));
    }
}

bool eventClearsState(GstEvent *event)
{
    switch (GST_EVENT_TYPE(event)) {
    case GST_EVENT_FLUSH_START:
    case GST_EVENT_FLUSH_STOP:
    case GST_EVENT_STREAM_START:
    case GST_EVENT_SEGMENT:
    case GST_EVENT_EOS:
        return true;
    default:
        return false;
    }
}

void initInPlaceFilter(GstBaseTransform *transform)
{
    gst_base_transform_set_in_place(transform, TRUE);
    gst_base_transform_set_gap_aware(transform, TRUE);
}

GstFlowReturn processEqBuffer(GstBaseTransform *base, audio_dsp::EqProcessor &processor, GstBuffer *buffer)
{
    if (gst_base_transform_is_passthrough(base)) {
        if (GST_BUFFER_FLAG_IS_SET(buffer, GST_BUFFER_FLAG_DISCONT))
            processor.clear();
        return GST_FLOW_OK;
    }
    const GstFlowReturn result = processor.process(buffer);
    if (result != GST_FLOW_OK)
        GST_ELEMENT_ERROR(base, STREAM, FORMAT, (nullptr),
                          ("buffer of %" G_GSIZE_FORMAT " bytes is not whole stereo float frames",
                           gst_buffer_get_size(buffer)));
    return result;
}

} // namespace tarnix::audio_elements
