#include "audio/tarnix_audio_equalizer.h"

#include "audio/audio_element_common.h"
#include "audio/audio_equalizer_dsp.h"

GST_DEBUG_CATEGORY_STATIC(tarnix_audio_equalizer_debug);
#define GST_CAT_DEFAULT tarnix_audio_equalizer_debug

namespace dsp = tarnix::audio_dsp;
namespace common = tarnix::audio_elements;

enum {
    PROP_0,
    PROP_BAND0,
    PROP_BAND1,
    PROP_BAND2,
};

namespace {
struct EqualizerState {
    dsp::EqControl control;
    dsp::EqProcessor processor;
};
} // namespace

struct _TarnixAudioEqualizer {
    GstBaseTransform parent;
    // Made once with the element; the control is shared with property
    // writers, the processor belongs to the streaming thread.
    EqualizerState *state;
};

G_DEFINE_TYPE_WITH_CODE(TarnixAudioEqualizer, tarnix_audio_equalizer, GST_TYPE_BASE_TRANSFORM,
                        GST_DEBUG_CATEGORY_INIT(tarnix_audio_equalizer_debug, "tarnix-audio-equalizer",
                                                0, "Three-band program EQ"))

static void tarnix_audio_equalizer_finalize(GObject *object)
{
    delete TARNIX_AUDIO_EQUALIZER(object)->state;
    G_OBJECT_CLASS(tarnix_audio_equalizer_parent_class)->finalize(object);
}

static void tarnix_audio_equalizer_set_property(GObject *object, guint propId, const GValue *value,
                                                GParamSpec *pspec)
{
    TarnixAudioEqualizer *self = TARNIX_AUDIO_EQUALIZER(object);
    if (propId >= PROP_BAND0 && propId <= PROP_BAND2)
        self->state->control.setGain(int(propId - PROP_BAND0), g_value_get_double(value));
    else
        G_OBJECT_WARN_INVALID_PROPERTY_ID(object, propId, pspec);
}

static void tarnix_audio_equalizer_get_property(GObject *object, guint propId, GValue *value,
                                                GParamSpec *pspec)
{
    TarnixAudioEqualizer *self = TARNIX_AUDIO_EQUALIZER(object);
    if (propId >= PROP_BAND0 && propId <= PROP_BAND2)
        g_value_set_double(value, self->state->control.gain(int(propId - PROP_BAND0)));
    else
        G_OBJECT_WARN_INVALID_PROPERTY_ID(object, propId, pspec);
}

static gboolean tarnix_audio_equalizer_start(GstBaseTransform *base)
{
    TARNIX_AUDIO_EQUALIZER(base)->state->control.requestClear();
    return TRUE;
}

static gboolean tarnix_audio_equalizer_stop(GstBaseTransform *base)
{
    TARNIX_AUDIO_EQUALIZER(base)->state->control.requestClear();
    return TRUE;
}

static gboolean tarnix_audio_equalizer_sink_event(GstBaseTransform *base, GstEvent *event)
{
    if (common::eventClearsState(event))
        TARNIX_AUDIO_EQUALIZER(base)->state->control.requestClear();
    return GST_BASE_TRANSFORM_CLASS(tarnix_audio_equalizer_parent_class)->sink_event(base, event);
}

// With every band at 0 dB the filter steps aside and buffers pass untouched.
static void tarnix_audio_equalizer_before_transform(GstBaseTransform *base, GstBuffer *)
{
    EqualizerState *state = TARNIX_AUDIO_EQUALIZER(base)->state;
    state->processor.sync(state->control);
    gst_base_transform_set_passthrough(base, state->processor.bypassed());
}

static GstFlowReturn tarnix_audio_equalizer_transform_ip(GstBaseTransform *base, GstBuffer *buffer)
{
    TarnixAudioEqualizer *self = TARNIX_AUDIO_EQUALIZER(base);
    return common::processEqBuffer(base, self->state->processor, buffer);
}

static void tarnix_audio_equalizer_class_init(TarnixAudioEqualizerClass *klass)
{
    GObjectClass *objectClass = G_OBJECT_CLASS(klass);
    GstElementClass *elementClass = GST_ELEMENT_CLASS(klass);
    GstBaseTransformClass *transformClass = GST_BASE_TRANSFORM_CLASS(klass);

    objectClass->finalize = tarnix_audio_equalizer_finalize;
    objectClass->set_property = tarnix_audio_equalizer_set_property;
    objectClass->get_property = tarnix_audio_equalizer_get_property;
    common::installBandProperties(objectClass, PROP_BAND0, "Band gain in dB");

    gst_element_class_set_static_metadata(
        elementClass, "MG-style three-band EQ", "Filter/Effect/Audio",
        "100 Hz low shelf, 2.5 kHz peak, 10 kHz high shelf, +/-15 dB", "TARNIX");
    common::addFixedPadTemplates(elementClass);

    transformClass->start = GST_DEBUG_FUNCPTR(tarnix_audio_equalizer_start);
    transformClass->stop = GST_DEBUG_FUNCPTR(tarnix_audio_equalizer_stop);
    transformClass->sink_event = GST_DEBUG_FUNCPTR(tarnix_audio_equalizer_sink_event);
    transformClass->before_transform = GST_DEBUG_FUNCPTR(tarnix_audio_equalizer_before_transform);
    transformClass->transform_ip = GST_DEBUG_FUNCPTR(tarnix_audio_equalizer_transform_ip);
    transformClass->transform_ip_on_passthrough = TRUE;
}

static void tarnix_audio_equalizer_init(TarnixAudioEqualizer *self)
{
    self->state = new EqualizerState();
    common::initInPlaceFilter(GST_BASE_TRANSFORM(self));
    gst_base_transform_set_passthrough(GST_BASE_TRANSFORM(self), TRUE);
}
