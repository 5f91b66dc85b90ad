#include "audio/tarnix_audio_delay.h"

#include "audio/audio_element_common.h"
#include "audio/audio_equalizer_dsp.h"

#include <algorithm>

GST_DEBUG_CATEGORY_STATIC(tarnix_audio_delay_debug);
#define GST_CAT_DEFAULT tarnix_audio_delay_debug

namespace common = tarnix::audio_elements;

enum {
    PROP_0,
    PROP_FRAMES,
};

namespace {
constexpr int kMaxFrames = 6;
// One 30 fps video frame of stereo audio at 48 kHz.
constexpr int kFloatsPerVideoFrame = 3200;
constexpr int kLineFloats = kMaxFrames * kFloatsPerVideoFrame;
} // namespace

struct _TarnixAudioDelay {
    GstBaseTransform parent;

    // Guarded by lock: what property writers and clear requests leave for
    // the streaming thread.
    GMutex lock;
    gint requestedFrames;
    gboolean clearRequested;

    // Streaming thread only.
    gint frames;
    gint writeIndex;
    // Made once with the element (too large for the instance itself).
    float *line;
};

G_DEFINE_TYPE_WITH_CODE(TarnixAudioDelay, tarnix_audio_delay, GST_TYPE_BASE_TRANSFORM,
                        GST_DEBUG_CATEGORY_INIT(tarnix_audio_delay_debug, "tarnix-audio-delay", 0,
                                                "Frame audio delay"))

static void tarnix_audio_delay_reset_line(TarnixAudioDelay *self)
{
    std::fill(self->line, self->line + kLineFloats, 0.0f);
    self->writeIndex = 0;
}

void tarnix_audio_delay_clear(TarnixAudioDelay *self)
{
    g_return_if_fail(self != nullptr);
    g_mutex_lock(&self->lock);
    self->clearRequested = TRUE;
    g_mutex_unlock(&self->lock);
}

static void tarnix_audio_delay_finalize(GObject *object)
{
    g_mutex_clear(&TARNIX_AUDIO_DELAY(object)->lock);
    g_free(TARNIX_AUDIO_DELAY(object)->line);
    G_OBJECT_CLASS(tarnix_audio_delay_parent_class)->finalize(object);
}

static void tarnix_audio_delay_set_property(GObject *object, guint propId, const GValue *value,
                                            GParamSpec *pspec)
{
    TarnixAudioDelay *self = TARNIX_AUDIO_DELAY(object);
    if (propId != PROP_FRAMES) {
        G_OBJECT_WARN_INVALID_PROPERTY_ID(object, propId, pspec);
        return;
    }
    const gint frames = std::clamp(g_value_get_int(value), 0, kMaxFrames);
    g_mutex_lock(&self->lock);
    if (frames != self->requestedFrames) {
        self->requestedFrames = frames;
        self->clearRequested = TRUE;
    }
    g_mutex_unlock(&self->lock);
}

static void tarnix_audio_delay_get_property(GObject *object, guint propId, GValue *value,
                                            GParamSpec *pspec)
{
    TarnixAudioDelay *self = TARNIX_AUDIO_DELAY(object);
    if (propId != PROP_FRAMES) {
        G_OBJECT_WARN_INVALID_PROPERTY_ID(object, propId, pspec);
        return;
    }
    g_mutex_lock(&self->lock);
    g_value_set_int(value, self->requestedFrames);
    g_mutex_unlock(&self->lock);
}

static gboolean tarnix_audio_delay_start(GstBaseTransform *base)
{
    tarnix_audio_delay_clear(TARNIX_AUDIO_DELAY(base));
    return TRUE;
}

static gboolean tarnix_audio_delay_stop(GstBaseTransform *base)
{
    tarnix_audio_delay_clear(TARNIX_AUDIO_DELAY(base));
    return TRUE;
}

static gboolean tarnix_audio_delay_sink_event(GstBaseTransform *base, GstEvent *event)
{
    if (common::eventClearsState(event))
        tarnix_audio_delay_clear(TARNIX_AUDIO_DELAY(base));
    return GST_BASE_TRANSFORM_CLASS(tarnix_audio_delay_parent_class)->sink_event(base, event);
}

// Takes over the writers' requests; with no delay the element steps aside.
static void tarnix_audio_delay_before_transform(GstBaseTransform *base, GstBuffer *)
{
    TarnixAudioDelay *self = TARNIX_AUDIO_DELAY(base);
    g_mutex_lock(&self->lock);
    const gint frames = self->requestedFrames;
    const bool clear = self->clearRequested;
    self->clearRequested = FALSE;
    g_mutex_unlock(&self->lock);
    if (clear || frames != self->frames)
        tarnix_audio_delay_reset_line(self);
    self->frames = frames;
    gst_base_transform_set_passthrough(base, frames == 0);
}

static GstFlowReturn tarnix_audio_delay_transform_ip(GstBaseTransform *base, GstBuffer *buffer)
{
    TarnixAudioDelay *self = TARNIX_AUDIO_DELAY(base);
    if (GST_BUFFER_FLAG_IS_SET(buffer, GST_BUFFER_FLAG_DISCONT))
        tarnix_audio_delay_reset_line(self);
    if (self->frames == 0)
        return GST_FLOW_OK;

    GstMapInfo map;
    if (!gst_buffer_map(buffer, &map, GST_MAP_READWRITE)) {
        GST_ELEMENT_ERROR(self, RESOURCE, FAILED, (nullptr), ("could not map the buffer"));
        return GST_FLOW_ERROR;
    }
    if (map.size % 8 != 0) {
        gst_buffer_unmap(buffer, &map);
        GST_ELEMENT_ERROR(self, STREAM, FORMAT, (nullptr),
                          ("buffer of %" G_GSIZE_FORMAT " bytes is not whole stereo float frames",
                           map.size));
        return GST_FLOW_ERROR;
    }
    const bool gap = GST_BUFFER_FLAG_IS_SET(buffer, GST_BUFFER_FLAG_GAP);
    const gint length = self->frames * kFloatsPerVideoFrame;
    float *samples = reinterpret_cast<float *>(map.data);
    const std::size_t count = map.size / sizeof(float);
    gint index = self->writeIndex;
    for (std::size_t i = 0; i < count; ++i) {
        const float in = gap ? 0.0f : samples[i];
        const float out = self->line[index];
        self->line[index] = in;
        if (++index == length)
            index = 0;
        samples[i] = out;
    }
    self->writeIndex = index;
    tarnix::audio_dsp::markGapIfSilent(buffer, samples, count);
    gst_buffer_unmap(buffer, &map);
    return GST_FLOW_OK;
}

static void tarnix_audio_delay_class_init(TarnixAudioDelayClass *klass)
{
    GObjectClass *objectClass = G_OBJECT_CLASS(klass);
    GstElementClass *elementClass = GST_ELEMENT_CLASS(klass);
    GstBaseTransformClass *transformClass = GST_BASE_TRANSFORM_CLASS(klass);

    objectClass->finalize = tarnix_audio_delay_finalize;
    objectClass->set_property = tarnix_audio_delay_set_property;
    objectClass->get_property = tarnix_audio_delay_get_property;
    g_object_class_install_property(
        objectClass, PROP_FRAMES,
        g_param_spec_int("frames", "Frames", "Audio delay in 30 fps video frames", 0, kMaxFrames, 0,
                         static_cast<GParamFlags>(G_PARAM_READWRITE | G_PARAM_STATIC_STRINGS |
                                                  GST_PARAM_MUTABLE_PLAYING)));

    gst_element_class_set_static_metadata(elementClass, "Frame audio delay", "Filter/Effect/Audio",
                                          "Delays stereo PCM by 0 to 6 video frames at 30 fps",
                                          "TARNIX");
    common::addFixedPadTemplates(elementClass);

    transformClass->start = GST_DEBUG_FUNCPTR(tarnix_audio_delay_start);
    transformClass->stop = GST_DEBUG_FUNCPTR(tarnix_audio_delay_stop);
    transformClass->sink_event = GST_DEBUG_FUNCPTR(tarnix_audio_delay_sink_event);
    transformClass->before_transform = GST_DEBUG_FUNCPTR(tarnix_audio_delay_before_transform);
    transformClass->transform_ip = GST_DEBUG_FUNCPTR(tarnix_audio_delay_transform_ip);
    transformClass->transform_ip_on_passthrough = TRUE;
}

static void tarnix_audio_delay_init(TarnixAudioDelay *self)
{
    g_mutex_init(&self->lock);
    self->requestedFrames = 0;
    self->clearRequested = FALSE;
    self->frames = 0;
    self->line = g_new0(float, kLineFloats);
    tarnix_audio_delay_reset_line(self);
    common::initInPlaceFilter(GST_BASE_TRANSFORM(self));
    gst_base_transform_set_passthrough(GST_BASE_TRANSFORM(self), TRUE);
}
