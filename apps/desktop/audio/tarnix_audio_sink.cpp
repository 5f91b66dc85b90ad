#include "audio/tarnix_audio_sink.h"

// The sending end of the PROGRAM bridge. Until the program audio pipeline
// receives from it, the sink consumes PCM in real time: GstBaseSink's clock
// sync paces the deck exactly as a receiver would.

GST_DEBUG_CATEGORY_STATIC(tarnix_audio_bridge_debug);
#define GST_CAT_DEFAULT tarnix_audio_bridge_debug

enum {
    PROP_0,
    PROP_CHANNEL,
};

#define TARNIX_AUDIO_SINK_DEFAULT_CHANNEL "default"
#define TARNIX_AUDIO_BRIDGE_CAPS "audio/x-raw,format=F32LE,rate=48000,channels=2,layout=interleaved"
// One frame is a stereo pair of 32-bit floats.
#define TARNIX_AUDIO_FRAME_BYTES 8

struct _TarnixAudioSink {
    GstBaseSink parent;

    // Guarded by the object lock.
    gchar *channel;
    gchar *attachedChannel;

    // Read by render without a lock.
    gint flushing;
    gint attached;
};

static GstStaticPadTemplate sink_template = GST_STATIC_PAD_TEMPLATE(
    "sink", GST_PAD_SINK, GST_PAD_ALWAYS, GST_STATIC_CAPS(TARNIX_AUDIO_BRIDGE_CAPS));

G_DEFINE_TYPE_WITH_CODE(TarnixAudioSink, tarnix_audio_sink, GST_TYPE_BASE_SINK,
                        GST_DEBUG_CATEGORY_INIT(tarnix_audio_bridge_debug, "tarnix-audio-bridge", 0,
                                                "PROGRAM timestamp-preserving PCM transport"))

static void tarnix_audio_sink_finalize(GObject *object);
static void tarnix_audio_sink_set_property(GObject *object, guint propId, const GValue *value,
                                           GParamSpec *pspec);
static void tarnix_audio_sink_get_property(GObject *object, guint propId, GValue *value,
                                           GParamSpec *pspec);
static gboolean tarnix_audio_sink_start(GstBaseSink *base);
static gboolean tarnix_audio_sink_stop(GstBaseSink *base);
static gboolean tarnix_audio_sink_unlock(GstBaseSink *base);
static gboolean tarnix_audio_sink_unlock_stop(GstBaseSink *base);
static GstFlowReturn tarnix_audio_sink_preroll(GstBaseSink *base, GstBuffer *buffer);
static GstFlowReturn tarnix_audio_sink_render(GstBaseSink *base, GstBuffer *buffer);

static void tarnix_audio_sink_class_init(TarnixAudioSinkClass *klass)
{
    GObjectClass *objectClass = G_OBJECT_CLASS(klass);
    GstElementClass *elementClass = GST_ELEMENT_CLASS(klass);
    GstBaseSinkClass *baseSinkClass = GST_BASE_SINK_CLASS(klass);

    objectClass->finalize = tarnix_audio_sink_finalize;
    objectClass->set_property = tarnix_audio_sink_set_property;
    objectClass->get_property = tarnix_audio_sink_get_property;

    g_object_class_install_property(
        objectClass, PROP_CHANNEL,
        g_param_spec_string("channel", "Channel", "PROGRAM PCM channel",
                            TARNIX_AUDIO_SINK_DEFAULT_CHANNEL,
                            static_cast<GParamFlags>(G_PARAM_READWRITE | G_PARAM_STATIC_STRINGS |
                                                     GST_PARAM_MUTABLE_READY)));

    gst_element_class_set_static_metadata(
        elementClass, "PROGRAM PCM sender", "Sink/Audio",
        "Preserves PCM and playback time across the PROGRAM pipeline boundary", "TARNIX");
    gst_element_class_add_static_pad_template(elementClass, &sink_template);

    baseSinkClass->start = GST_DEBUG_FUNCPTR(tarnix_audio_sink_start);
    baseSinkClass->stop = GST_DEBUG_FUNCPTR(tarnix_audio_sink_stop);
    baseSinkClass->unlock = GST_DEBUG_FUNCPTR(tarnix_audio_sink_unlock);
    baseSinkClass->unlock_stop = GST_DEBUG_FUNCPTR(tarnix_audio_sink_unlock_stop);
    baseSinkClass->preroll = GST_DEBUG_FUNCPTR(tarnix_audio_sink_preroll);
    baseSinkClass->render = GST_DEBUG_FUNCPTR(tarnix_audio_sink_render);
}

static void tarnix_audio_sink_init(TarnixAudioSink *self)
{
    self->channel = g_strdup(TARNIX_AUDIO_SINK_DEFAULT_CHANNEL);
    self->attachedChannel = nullptr;
    g_atomic_int_set(&self->flushing, 0);
    g_atomic_int_set(&self->attached, 0);
    gst_base_sink_set_sync(GST_BASE_SINK(self), TRUE);
}

static void tarnix_audio_sink_finalize(GObject *object)
{
    TarnixAudioSink *self = TARNIX_AUDIO_SINK(object);
    g_free(self->channel);
    g_free(self->attachedChannel);
    G_OBJECT_CLASS(tarnix_audio_sink_parent_class)->finalize(object);
}

static gboolean tarnix_audio_sink_start(GstBaseSink *base)
{
    TarnixAudioSink *self = TARNIX_AUDIO_SINK(base);
    GST_OBJECT_LOCK(self);
    g_free(self->attachedChannel);
    self->attachedChannel = g_strdup(self->channel);
    GST_OBJECT_UNLOCK(self);
    g_atomic_int_set(&self->flushing, 0);
    g_atomic_int_set(&self->attached, 1);
    GST_DEBUG_OBJECT(self, "attached as sender");
    return TRUE;
}

static void tarnix_audio_sink_detach(TarnixAudioSink *self)
{
    g_atomic_int_set(&self->attached, 0);
    GST_OBJECT_LOCK(self);
    g_clear_pointer(&self->attachedChannel, g_free);
    GST_OBJECT_UNLOCK(self);
}

static gboolean tarnix_audio_sink_stop(GstBaseSink *base)
{
    tarnix_audio_sink_detach(TARNIX_AUDIO_SINK(base));
    return TRUE;
}

static gboolean tarnix_audio_sink_unlock(GstBaseSink *base)
{
    g_atomic_int_set(&TARNIX_AUDIO_SINK(base)->flushing, 1);
    return TRUE;
}

static gboolean tarnix_audio_sink_unlock_stop(GstBaseSink *base)
{
    g_atomic_int_set(&TARNIX_AUDIO_SINK(base)->flushing, 0);
    return TRUE;
}

// A sender without a channel, or one being flushed, takes no more PCM.
static GstFlowReturn tarnix_audio_sink_accepting(TarnixAudioSink *self)
{
    if (!g_atomic_int_get(&self->attached) || g_atomic_int_get(&self->flushing))
        return GST_FLOW_FLUSHING;
    return GST_FLOW_OK;
}

static GstFlowReturn tarnix_audio_sink_preroll(GstBaseSink *base, GstBuffer *)
{
    return tarnix_audio_sink_accepting(TARNIX_AUDIO_SINK(base));
}

static GstFlowReturn tarnix_audio_sink_render(GstBaseSink *base, GstBuffer *buffer)
{
    TarnixAudioSink *self = TARNIX_AUDIO_SINK(base);
    const GstFlowReturn accepting = tarnix_audio_sink_accepting(self);
    if (accepting != GST_FLOW_OK)
        return accepting;

    const gsize size = gst_buffer_get_size(buffer);
    if (size == 0)
        return GST_FLOW_OK;
    if (size % TARNIX_AUDIO_FRAME_BYTES != 0 || !GST_BUFFER_PTS_IS_VALID(buffer)) {
        GST_ELEMENT_ERROR(self, STREAM, FORMAT,
                          ("PROGRAM audio requires timestamped 48 kHz stereo float PCM"),
                          ("size %" G_GSIZE_FORMAT ", pts %" GST_TIME_FORMAT, size,
                           GST_TIME_ARGS(GST_BUFFER_PTS(buffer))));
        return GST_FLOW_ERROR;
    }
    // No receiver is attached yet: the buffer is consumed at its play time.
    return GST_FLOW_OK;
}

static void tarnix_audio_sink_set_property(GObject *object, guint propId, const GValue *value,
                                           GParamSpec *pspec)
{
    TarnixAudioSink *self = TARNIX_AUDIO_SINK(object);
    switch (propId) {
    case PROP_CHANNEL: {
        GST_OBJECT_LOCK(self);
        if (self->attachedChannel) {
            GST_OBJECT_UNLOCK(self);
            GST_WARNING_OBJECT(self, "channel cannot change while attached");
            break;
        }
        const gchar *requested = g_value_get_string(value);
        g_free(self->channel);
        self->channel = g_strdup(requested ? requested : TARNIX_AUDIO_SINK_DEFAULT_CHANNEL);
        GST_OBJECT_UNLOCK(self);
        break;
    }
    default:
        G_OBJECT_WARN_INVALID_PROPERTY_ID(object, propId, pspec);
        break;
    }
}

static void tarnix_audio_sink_get_property(GObject *object, guint propId, GValue *value,
                                           GParamSpec *pspec)
{
    TarnixAudioSink *self = TARNIX_AUDIO_SINK(object);
    switch (propId) {
    case PROP_CHANNEL:
        GST_OBJECT_LOCK(self);
        g_value_set_string(value, self->channel);
        GST_OBJECT_UNLOCK(self);
        break;
    default:
        G_OBJECT_WARN_INVALID_PROPERTY_ID(object, propId, pspec);
        break;
    }
}

gboolean tarnix_audio_sink_abort_sender(GstElement *element)
{
    if (!element || !G_TYPE_CHECK_INSTANCE_TYPE(element, TARNIX_TYPE_AUDIO_SINK))
        return FALSE;
    TarnixAudioSink *self = TARNIX_AUDIO_SINK(element);
    g_atomic_int_set(&self->flushing, 1);
    tarnix_audio_sink_detach(self);
    GST_DEBUG_OBJECT(self, "sender aborted");
    return TRUE;
}

gchar *tarnix_audio_sink_dup_attached_channel(TarnixAudioSink *sink)
{
    g_return_val_if_fail(sink != nullptr, nullptr);
    GST_OBJECT_LOCK(sink);
    gchar *channel = g_strdup(sink->attachedChannel);
    GST_OBJECT_UNLOCK(sink);
    return channel;
}
