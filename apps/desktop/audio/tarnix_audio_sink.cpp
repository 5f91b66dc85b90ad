#include "audio/tarnix_audio_sink.h"

#include "audio/audio_bridge_channel.h"

#include <limits>

// The sending end of the PROGRAM bridge. It syncs to the shared clock like a
// sound card, so a buffer enters the channel at its play time and the
// receiver hands it on at once; with no receiver the deck still runs in real
// time and its PCM is simply dropped.

GST_DEBUG_CATEGORY(tarnix_audio_bridge_debug);
#define GST_CAT_DEFAULT tarnix_audio_bridge_debug

using tarnix::audio_bridge::Channel;

enum {
    PROP_0,
    PROP_CHANNEL,
};

#define TARNIX_AUDIO_SINK_DEFAULT_CHANNEL "default"

struct _TarnixAudioSink {
    GstBaseSink parent;

    // Guarded by the object lock.
    gchar *channelName;
    std::shared_ptr<Channel> *channel;

    // Read by render without the object lock.
    gint flushing;
};

static GstStaticPadTemplate sink_template = GST_STATIC_PAD_TEMPLATE(
    "sink", GST_PAD_SINK, GST_PAD_ALWAYS,
    GST_STATIC_CAPS("audio/x-raw,format=F32LE,rate=48000,channels=2,layout=interleaved"));

G_DEFINE_TYPE_WITH_CODE(TarnixAudioSink, tarnix_audio_sink, GST_TYPE_BASE_SINK,
                        tarnix_audio_bridge_debug_init())

static void tarnix_audio_sink_finalize(GObject *object);
static void tarnix_audio_sink_set_property(GObject *object, guint propId, const GValue *value,
                                           GParamSpec *pspec);
static void tarnix_audio_sink_get_property(GObject *object, guint propId, GValue *value,
                                           GParamSpec *pspec);
static gboolean tarnix_audio_sink_send_event(GstElement *element, GstEvent *event);
static gboolean tarnix_audio_sink_start(GstBaseSink *base);
static gboolean tarnix_audio_sink_stop(GstBaseSink *base);
static gboolean tarnix_audio_sink_unlock(GstBaseSink *base);
static gboolean tarnix_audio_sink_unlock_stop(GstBaseSink *base);
static gboolean tarnix_audio_sink_event(GstBaseSink *base, GstEvent *event);
static GstFlowReturn tarnix_audio_sink_render(GstBaseSink *base, GstBuffer *buffer);

void tarnix_audio_bridge_debug_init(void)
{
    static gsize initialised = 0;
    if (g_once_init_enter(&initialised)) {
        GST_DEBUG_CATEGORY_INIT(tarnix_audio_bridge_debug, "tarnix-audio-bridge", 0,
                                "PROGRAM timestamp-preserving PCM transport");
        g_once_init_leave(&initialised, 1);
    }
}

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
    elementClass->send_event = GST_DEBUG_FUNCPTR(tarnix_audio_sink_send_event);

    baseSinkClass->start = GST_DEBUG_FUNCPTR(tarnix_audio_sink_start);
    baseSinkClass->stop = GST_DEBUG_FUNCPTR(tarnix_audio_sink_stop);
    baseSinkClass->unlock = GST_DEBUG_FUNCPTR(tarnix_audio_sink_unlock);
    baseSinkClass->unlock_stop = GST_DEBUG_FUNCPTR(tarnix_audio_sink_unlock_stop);
    baseSinkClass->event = GST_DEBUG_FUNCPTR(tarnix_audio_sink_event);
    baseSinkClass->render = GST_DEBUG_FUNCPTR(tarnix_audio_sink_render);
}

static void tarnix_audio_sink_init(TarnixAudioSink *self)
{
    self->channelName = g_strdup(TARNIX_AUDIO_SINK_DEFAULT_CHANNEL);
    self->channel = new std::shared_ptr<Channel>();
    g_atomic_int_set(&self->flushing, 0);
    gst_base_sink_set_sync(GST_BASE_SINK(self), TRUE);
}

static void tarnix_audio_sink_finalize(GObject *object)
{
    TarnixAudioSink *self = TARNIX_AUDIO_SINK(object);
    g_free(self->channelName);
    delete self->channel;
    G_OBJECT_CLASS(tarnix_audio_sink_parent_class)->finalize(object);
}

static std::shared_ptr<Channel> tarnix_audio_sink_channel(TarnixAudioSink *self)
{
    GST_OBJECT_LOCK(self);
    std::shared_ptr<Channel> channel = *self->channel;
    GST_OBJECT_UNLOCK(self);
    return channel;
}

// Hands a change of this deck's latency to the program pipeline, which
// then recomputes its own: the receiver reports it as part of its latency.
static void tarnix_audio_sink_publish_latency(TarnixAudioSink *self, GstClockTime latency)
{
    const std::shared_ptr<Channel> channel = tarnix_audio_sink_channel(self);
    if (!channel)
        return;
    if (!GST_CLOCK_TIME_IS_VALID(latency))
        latency = 0;
    GstElement *receiver = nullptr;
    {
        std::lock_guard lock(channel->mutex);
        if (channel->sender != self || channel->sinkLatency == latency)
            return;
        channel->sinkLatency = latency;
        receiver = channel->receiverElement();
    }
    if (receiver) {
        GST_DEBUG_OBJECT(self, "latency now %" GST_TIME_FORMAT, GST_TIME_ARGS(latency));
        gst_element_post_message(receiver, gst_message_new_latency(GST_OBJECT(receiver)));
        gst_object_unref(receiver);
    }
}

static void tarnix_audio_sink_publish_current_latency(TarnixAudioSink *self)
{
    tarnix_audio_sink_publish_latency(self, gst_base_sink_get_latency(GST_BASE_SINK(self)));
}

static gboolean tarnix_audio_sink_start(GstBaseSink *base)
{
    TarnixAudioSink *self = TARNIX_AUDIO_SINK(base);
    GST_OBJECT_LOCK(self);
    const std::string name = self->channelName;
    GST_OBJECT_UNLOCK(self);

    std::shared_ptr<Channel> channel = tarnix::audio_bridge::acquireChannel(name);
    {
        std::lock_guard lock(channel->mutex);
        channel->sender = self;
        channel->resetLocked();
    }
    channel->changed.notify_all();
    GST_OBJECT_LOCK(self);
    *self->channel = channel;
    GST_OBJECT_UNLOCK(self);
    g_atomic_int_set(&self->flushing, 0);
    tarnix_audio_sink_publish_latency(self, 0);
    GST_DEBUG_OBJECT(self, "sending on channel %s", name.c_str());
    return TRUE;
}

// Detaches the sender: the channel loses its queue and its sender, and the
// element keeps no reference to it.
static void tarnix_audio_sink_detach(TarnixAudioSink *self)
{
    GST_OBJECT_LOCK(self);
    std::shared_ptr<Channel> channel = std::move(*self->channel);
    self->channel->reset();
    GST_OBJECT_UNLOCK(self);
    if (!channel)
        return;
    GstElement *receiver = nullptr;
    {
        std::lock_guard lock(channel->mutex);
        // A newer sender may already own the channel; its queue stays.
        if (channel->sender == self) {
            channel->resetLocked();
            channel->sender = nullptr;
            if (channel->sinkLatency != 0) {
                channel->sinkLatency = 0;
                receiver = channel->receiverElement();
            }
        }
    }
    channel->changed.notify_all();
    if (receiver) {
        gst_element_post_message(receiver, gst_message_new_latency(GST_OBJECT(receiver)));
        gst_object_unref(receiver);
    }
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

static gboolean tarnix_audio_sink_event(GstBaseSink *base, GstEvent *event)
{
    TarnixAudioSink *self = TARNIX_AUDIO_SINK(base);
    switch (GST_EVENT_TYPE(event)) {
    case GST_EVENT_FLUSH_START:
    case GST_EVENT_STREAM_START:
    case GST_EVENT_SEGMENT:
        // Whatever is queued belongs to the playback that just ended.
        if (const std::shared_ptr<Channel> channel = tarnix_audio_sink_channel(self)) {
            {
                std::lock_guard lock(channel->mutex);
                if (channel->sender == self)
                    channel->resetLocked();
            }
            channel->changed.notify_all();
        }
        break;
    default:
        break;
    }
    const gboolean handled = GST_BASE_SINK_CLASS(tarnix_audio_sink_parent_class)->event(base, event);
    tarnix_audio_sink_publish_current_latency(self);
    return handled;
}

static gboolean tarnix_audio_sink_send_event(GstElement *element, GstEvent *event)
{
    const bool isLatency = GST_EVENT_TYPE(event) == GST_EVENT_LATENCY;
    const gboolean handled =
        GST_ELEMENT_CLASS(tarnix_audio_sink_parent_class)->send_event(element, event);
    if (isLatency)
        tarnix_audio_sink_publish_current_latency(TARNIX_AUDIO_SINK(element));
    return handled;
}

static bool tarnix_audio_sink_may_send(TarnixAudioSink *self, Channel &channel)
{
    return !g_atomic_int_get(&self->flushing) && channel.sender == self && channel.receiverActive;
}

static GstFlowReturn tarnix_audio_sink_render(GstBaseSink *base, GstBuffer *buffer)
{
    TarnixAudioSink *self = TARNIX_AUDIO_SINK(base);
    const std::shared_ptr<Channel> channel = tarnix_audio_sink_channel(self);
    if (!channel)
        return GST_FLOW_FLUSHING;
    tarnix_audio_sink_publish_current_latency(self);

    std::uint64_t epoch = 0;
    {
        std::lock_guard lock(channel->mutex);
        epoch = channel->epoch;
        if (!tarnix_audio_sink_may_send(self, *channel))
            return GST_FLOW_OK;
    }

    const gsize size = gst_buffer_get_size(buffer);
    if (size == 0)
        return GST_FLOW_OK;
    if (size % tarnix::audio_bridge::kFrameBytes != 0 || !GST_BUFFER_PTS_IS_VALID(buffer)) {
        GST_ELEMENT_ERROR(self, STREAM, FORMAT,
                          ("PROGRAM audio requires timestamped 48 kHz stereo float PCM"),
                          ("size %" G_GSIZE_FORMAT ", pts %" GST_TIME_FORMAT, size,
                           GST_TIME_ARGS(GST_BUFFER_PTS(buffer))));
        return GST_FLOW_ERROR;
    }

    // Only a time segment gives a timestamp a running time; raw PCM read from
    // a file, for one, comes in a byte segment.
    const GstClockTime running =
        base->segment.format == GST_FORMAT_TIME
            ? gst_segment_to_running_time(&base->segment, GST_FORMAT_TIME, GST_BUFFER_PTS(buffer))
            : GST_CLOCK_TIME_NONE;
    const GstClockTime baseTime = gst_element_get_base_time(GST_ELEMENT(self));
    if (!GST_CLOCK_TIME_IS_VALID(running) || !GST_CLOCK_TIME_IS_VALID(baseTime) ||
        running > std::numeric_limits<GstClockTime>::max() - 1 - baseTime) {
        GST_ELEMENT_ERROR(self, STREAM, FORMAT, ("PROGRAM audio has an invalid playback timestamp"),
                          ("running %" GST_TIME_FORMAT ", base %" GST_TIME_FORMAT,
                           GST_TIME_ARGS(running), GST_TIME_ARGS(baseTime)));
        return GST_FLOW_ERROR;
    }

    // A copy shares the memory; only the metadata becomes the channel's.
    GstBuffer *copy = gst_buffer_copy(buffer);
    GST_BUFFER_PTS(copy) = baseTime + running;
    GST_BUFFER_DTS(copy) = GST_CLOCK_TIME_NONE;
    GST_BUFFER_DURATION(copy) = tarnix::audio_bridge::framesToTime(size / tarnix::audio_bridge::kFrameBytes);

    {
        std::lock_guard lock(channel->mutex);
        if (channel->epoch != epoch || !tarnix_audio_sink_may_send(self, *channel)) {
            gst_buffer_unref(copy);
            return GST_FLOW_OK;
        }
        const std::uint64_t capacity =
            gst_util_uint64_scale(channel->bufferTime, tarnix::audio_bridge::kBytesPerSecond, GST_SECOND);
        if (!channel->queue.empty() && channel->queuedBytes + size > capacity) {
            // The receiver stalled: it starts anew from this buffer rather
            // than trickle through a backlog of stale sound.
            GST_WARNING_OBJECT(self, "receiver stalled; %" G_GUINT64_FORMAT " queued bytes dropped",
                               channel->queuedBytes);
            channel->resetLocked();
        }
        channel->queue.push_back(copy);
        channel->queuedBytes += size;
    }
    channel->changed.notify_all();
    return GST_FLOW_OK;
}

static void tarnix_audio_sink_set_property(GObject *object, guint propId, const GValue *value,
                                           GParamSpec *pspec)
{
    TarnixAudioSink *self = TARNIX_AUDIO_SINK(object);
    switch (propId) {
    case PROP_CHANNEL: {
        GST_OBJECT_LOCK(self);
        if (*self->channel) {
            GST_OBJECT_UNLOCK(self);
            GST_WARNING_OBJECT(self, "channel cannot change while attached");
            break;
        }
        const gchar *requested = g_value_get_string(value);
        g_free(self->channelName);
        self->channelName = g_strdup(requested ? requested : TARNIX_AUDIO_SINK_DEFAULT_CHANNEL);
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
        g_value_set_string(value, self->channelName);
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
    const std::shared_ptr<Channel> channel = tarnix_audio_sink_channel(sink);
    return channel ? g_strdup(channel->name.c_str()) : nullptr;
}
