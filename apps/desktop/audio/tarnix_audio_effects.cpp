#include "audio/tarnix_audio_effects.h"

#include "audio/audio_effects_service.h"
#include "audio/audio_element_common.h"
#include "audio/audio_equalizer_dsp.h"

#include <algorithm>

GST_DEBUG_CATEGORY_STATIC(tarnix_audio_effects_debug);
#define GST_CAT_DEFAULT tarnix_audio_effects_debug

namespace dsp = tarnix::audio_dsp;
namespace common = tarnix::audio_elements;
using tarnix::AudioEffectsSlot;

enum {
    PROP_0,
    PROP_BAND0,
    PROP_BAND1,
    PROP_BAND2,
    PROP_SLOT,
    PROP_VST_AUDIBLE,
};

namespace {
struct EffectsState {
    dsp::EqControl control;
    dsp::EqProcessor processor;
};
} // namespace

struct _TarnixAudioEffects {
    GstBaseTransform parent;
    EffectsState *state;
    // Stored atomically: read per buffer without a lock.
    gint slot;
    gint vstAudible;
};

GType tarnix_audio_effects_slot_get_type(void)
{
    static gsize type = 0;
    if (g_once_init_enter(&type)) {
        static const GEnumValue values[] = {
            {int(AudioEffectsSlot::Unassigned), "Unassigned", "none"},
            {int(AudioEffectsSlot::Edit), "Edit", "edit"},
            {int(AudioEffectsSlot::Item), "Item", "item"},
            {int(AudioEffectsSlot::Master), "Master", "master"},
            {0, nullptr, nullptr},
        };
        g_once_init_leave(&type, g_enum_register_static("TarnixAudioEffectsSlot", values));
    }
    return GType(type);
}

G_DEFINE_TYPE_WITH_CODE(TarnixAudioEffects, tarnix_audio_effects, GST_TYPE_BASE_TRANSFORM,
                        GST_DEBUG_CATEGORY_INIT(tarnix_audio_effects_debug, "tarnix-audio-effects", 0,
                                                "Application audio effects"))

static void tarnix_audio_effects_finalize(GObject *object)
{
    delete TARNIX_AUDIO_EFFECTS(object)->state;
    G_OBJECT_CLASS(tarnix_audio_effects_parent_class)->finalize(object);
}

static void tarnix_audio_effects_set_property(GObject *object, guint propId, const GValue *value,
                                              GParamSpec *pspec)
{
    TarnixAudioEffects *self = TARNIX_AUDIO_EFFECTS(object);
    switch (propId) {
    case PROP_BAND0:
    case PROP_BAND1:
    case PROP_BAND2:
        self->state->control.setGain(int(propId - PROP_BAND0), g_value_get_double(value));
        break;
    case PROP_SLOT:
        g_atomic_int_set(&self->slot, g_value_get_enum(value));
        break;
    case PROP_VST_AUDIBLE:
        g_atomic_int_set(&self->vstAudible, g_value_get_boolean(value) ? 1 : 0);
        break;
    default:
        G_OBJECT_WARN_INVALID_PROPERTY_ID(object, propId, pspec);
        break;
    }
}

static void tarnix_audio_effects_get_property(GObject *object, guint propId, GValue *value,
                                              GParamSpec *pspec)
{
    TarnixAudioEffects *self = TARNIX_AUDIO_EFFECTS(object);
    switch (propId) {
    case PROP_BAND0:
    case PROP_BAND1:
    case PROP_BAND2:
        g_value_set_double(value, self->state->control.gain(int(propId - PROP_BAND0)));
        break;
    case PROP_SLOT:
        g_value_set_enum(value, g_atomic_int_get(&self->slot));
        break;
    case PROP_VST_AUDIBLE:
        g_value_set_boolean(value, g_atomic_int_get(&self->vstAudible) != 0);
        break;
    default:
        G_OBJECT_WARN_INVALID_PROPERTY_ID(object, propId, pspec);
        break;
    }
}

static gboolean tarnix_audio_effects_start(GstBaseTransform *base)
{
    TarnixAudioEffects *self = TARNIX_AUDIO_EFFECTS(base);
    if (g_atomic_int_get(&self->slot) == int(AudioEffectsSlot::Unassigned)) {
        GST_ELEMENT_ERROR(self, CORE, FAILED, ("Audio effects require an explicit slot"), (nullptr));
        return FALSE;
    }
    self->state->control.requestClear();
    return TRUE;
}

static gboolean tarnix_audio_effects_stop(GstBaseTransform *base)
{
    TARNIX_AUDIO_EFFECTS(base)->state->control.requestClear();
    return TRUE;
}

static gboolean tarnix_audio_effects_sink_event(GstBaseTransform *base, GstEvent *event)
{
    if (common::eventClearsState(event))
        TARNIX_AUDIO_EFFECTS(base)->state->control.requestClear();
    return GST_BASE_TRANSFORM_CLASS(tarnix_audio_effects_parent_class)->sink_event(base, event);
}

static tarnix::AudioEffectsService *serviceInUse()
{
    tarnix::AudioEffectsService *service = tarnix::audioEffectsService();
    return service && service->inUse() ? service : nullptr;
}

static void tarnix_audio_effects_before_transform(GstBaseTransform *base, GstBuffer *)
{
    EffectsState *state = TARNIX_AUDIO_EFFECTS(base)->state;
    state->processor.sync(state->control);
    gst_base_transform_set_passthrough(base, !serviceInUse() && state->processor.bypassed());
}

static GstFlowReturn tarnix_audio_effects_process_plugin(TarnixAudioEffects *self,
                                                         tarnix::AudioEffectsService *service,
                                                         GstBuffer *buffer)
{
    const auto slot = AudioEffectsSlot(g_atomic_int_get(&self->slot));
    if (slot == AudioEffectsSlot::Unassigned) {
        GST_ELEMENT_ERROR(self, CORE, FAILED, ("Audio effects require an explicit slot"), (nullptr));
        return GST_FLOW_ERROR;
    }
    // One ITEM plug-in instance exists; only the audible deck owns it.
    if (slot == AudioEffectsSlot::Item && !g_atomic_int_get(&self->vstAudible))
        return GST_FLOW_OK;

    GstMapInfo map;
    if (!gst_buffer_map(buffer, &map, GST_MAP_READWRITE))
        return GST_FLOW_OK;
    if (map.size % 8 == 0) {
        if (GST_BUFFER_FLAG_IS_SET(buffer, GST_BUFFER_FLAG_GAP))
            std::fill(map.data, map.data + map.size, 0);
        service->process(slot, reinterpret_cast<float *>(map.data), map.size / 8);
        // Plug-in tails and generators are heard even after a gap.
        GST_BUFFER_FLAG_UNSET(buffer, GST_BUFFER_FLAG_GAP);
    }
    gst_buffer_unmap(buffer, &map);
    return GST_FLOW_OK;
}

static GstFlowReturn tarnix_audio_effects_transform_ip(GstBaseTransform *base, GstBuffer *buffer)
{
    TarnixAudioEffects *self = TARNIX_AUDIO_EFFECTS(base);
    if (tarnix::AudioEffectsService *service = serviceInUse();
        service && !gst_base_transform_is_passthrough(base))
        return tarnix_audio_effects_process_plugin(self, service, buffer);

    return common::processEqBuffer(base, self->state->processor, buffer);
}

static void tarnix_audio_effects_class_init(TarnixAudioEffectsClass *klass)
{
    GObjectClass *objectClass = G_OBJECT_CLASS(klass);
    GstElementClass *elementClass = GST_ELEMENT_CLASS(klass);
    GstBaseTransformClass *transformClass = GST_BASE_TRANSFORM_CLASS(klass);

    objectClass->finalize = tarnix_audio_effects_finalize;
    objectClass->set_property = tarnix_audio_effects_set_property;
    objectClass->get_property = tarnix_audio_effects_get_property;
    common::installBandProperties(objectClass, PROP_BAND0, "Built-in EQ band gain in dB");
    const auto playing = static_cast<GParamFlags>(G_PARAM_READWRITE | G_PARAM_STATIC_STRINGS |
                                                  GST_PARAM_MUTABLE_PLAYING);
    g_object_class_install_property(
        objectClass, PROP_SLOT,
        g_param_spec_enum("slot", "VST slot", "Explicit application audio route",
                          TARNIX_TYPE_AUDIO_EFFECTS_SLOT, int(AudioEffectsSlot::Unassigned), playing));
    g_object_class_install_property(
        objectClass, PROP_VST_AUDIBLE,
        g_param_spec_boolean("vst-audible", "VST audible", "ON AIR deck owns the ITEM VST instance",
                             FALSE, playing));

    gst_element_class_set_static_metadata(elementClass, "Application audio effects",
                                          "Filter/Effect/Audio",
                                          "Built-in EQ or explicitly routed VST processing", "TARNIX");
    common::addFixedPadTemplates(elementClass);

    transformClass->start = GST_DEBUG_FUNCPTR(tarnix_audio_effects_start);
    transformClass->stop = GST_DEBUG_FUNCPTR(tarnix_audio_effects_stop);
    transformClass->sink_event = GST_DEBUG_FUNCPTR(tarnix_audio_effects_sink_event);
    transformClass->before_transform = GST_DEBUG_FUNCPTR(tarnix_audio_effects_before_transform);
    transformClass->transform_ip = GST_DEBUG_FUNCPTR(tarnix_audio_effects_transform_ip);
    transformClass->transform_ip_on_passthrough = TRUE;
}

static void tarnix_audio_effects_init(TarnixAudioEffects *self)
{
    self->state = new EffectsState();
    g_atomic_int_set(&self->slot, int(AudioEffectsSlot::Unassigned));
    g_atomic_int_set(&self->vstAudible, 0);
    common::initInPlaceFilter(GST_BASE_TRANSFORM(self));
    gst_base_transform_set_passthrough(GST_BASE_TRANSFORM(self), TRUE);
}
