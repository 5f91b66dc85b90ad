#include "audio/tarnix_audio_source.h"

#include "audio/audio_bridge_channel.h"
#include "audio/tarnix_audio_sink.h"

#include <algorithm>
#include <limits>

#define GST_CAT_DEFAULT tarnix_audio_bridge_debug

using tarnix::audio_bridge::Channel;
namespace bridge = tarnix::audio_bridge;

enum {
    PROP_0,
    PROP_CHANNEL,
    PROP_BUFFER_TIME,
    PROP_LATENCY_TIME,
};

#define TARNIX_AUDIO_SOURCE_DEFAULT_CHANNEL "default"
static constexpr guint64 kDefaultBufferTime = 200 * GST_MSECOND;
static constexpr guint64 kDefaultLatencyTime = 10 * GST_MSECOND;
static constexpr guint64 kTimeLimit = std::numeric_limits<guint64>::max() - 1;

struct _TarnixAudioSource {
    GstPushSrc parent;

    // Guarded by the object lock.
    gchar *channelName;
    std::shared_ptr<Channel> *channel;
    guint64 bufferTime;
    guint64 latencyTime;

    // Streaming thread only.
    gboolean haveEpoch;
    guint64 lastEpoch;

    gint flushing;
};

static GstStaticPadTemplate src_template = GST_STATIC_PAD_TEMPLATE(
    "src", GST_PAD_SRC, GST_PAD_ALWAYS,
    GST_STATIC_CAPS("audio/x-raw,format=F32LE,rate=48000,channels=2,layout=interleaved"));

G_DEFINE_TYPE_WITH_CODE(TarnixAudioSource, tarnix_audio_source, GST_TYPE_PUSH_SRC,
                        tarnix_audio_bridge_debug_init())

static void tarnix_audio_source_finalize(GObject *object);
static void tarnix_audio_source_set_property(GObject *object, guint propId, const GValue *value,
                                             GParamSpec *pspec);
static void tarnix_audio_source_get_property(GObject *object, guint propId, GValue *value,
                                             GParamSpec *pspec);
static gboolean tarnix_audio_source_start(GstBaseSrc *base);
static gboolean tarnix_audio_source_stop(GstBaseSrc *base);
static gboolean tarnix_audio_source_unlock(GstBaseSrc *base);
static gboolean tarnix_audio_source_unlock_stop(GstBaseSrc *base);
static gboolean tarnix_audio_source_query(GstBaseSrc *base, GstQuery *query);
static GstFlowReturn tarnix_audio_source_create(GstPushSrc *push, GstBuffer **out);

static GParamFlags readyFlags()
{
    return static_cast<GParamFlags>(G_PARAM_READWRITE | G_PARAM_STATIC_STRINGS |
                                    GST_PARAM_MUTABLE_READY);
}

static void tarnix_audio_source_class_init(TarnixAudioSourceClass *klass)
{
    GObjectClass *objectClass = G_OBJECT_CLASS(klass);
    GstElementClass *elementClass = GST_ELEMENT_CLASS(klass);
    GstBaseSrcClass *baseSrcClass = GST_BASE_SRC_CLASS(klass);
    GstPushSrcClass *pushSrcClass = GST_PUSH_SRC_CLASS(klass);

    objectClass->finalize = tarnix_audio_source_finalize;
    objectClass->set_property = tarnix_audio_source_set_property;
    objectClass->get_property = tarnix_audio_source_get_property;

    g_object_class_install_property(
        objectClass, PROP_CHANNEL,
        g_param_spec_string("channel", "Channel", "PROGRAM PCM channel",
                            TARNIX_AUDIO_SOURCE_DEFAULT_CHANNEL, readyFlags()));
    g_object_class_install_property(
        objectClass, PROP_BUFFER_TIME,
        g_param_spec_uint64("buffer-time", "Buffer time", "Maximum queued PCM time in nanoseconds",
                            1, kTimeLimit, kDefaultBufferTime, readyFlags()));
    g_object_class_install_property(
        objectClass, PROP_LATENCY_TIME,
        g_param_spec_uint64("latency-time", "Latency time", "Delivery latency in nanoseconds", 0,
                            kTimeLimit, kDefaultLatencyTime, readyFlags()));

    gst_element_class_set_static_metadata(
        elementClass, "PROGRAM PCM receiver", "Source/Audio",
        "Waits for real PCM without fabricating silence or discarding queued audio", "TARNIX");
    gst_element_class_add_static_pad_template(elementClass, &src_template);

    baseSrcClass->start = GST_DEBUG_FUNCPTR(tarnix_audio_source_start);
    baseSrcClass->stop = GST_DEBUG_FUNCPTR(tarnix_audio_source_stop);
    baseSrcClass->unlock = GST_DEBUG_FUNCPTR(tarnix_audio_source_unlock);
    baseSrcClass->unlock_stop = GST_DEBUG_FUNCPTR(tarnix_audio_source_unlock_stop);
    baseSrcClass->query = GST_DEBUG_FUNCPTR(tarnix_audio_source_query);
    pushSrcClass->create = GST_DEBUG_FUNCPTR(tarnix_audio_source_create);
}

static void tarnix_audio_source_init(TarnixAudioSource *self)
{
    self->channelName = g_strdup(TARNIX_AUDIO_SOURCE_DEFAULT_CHANNEL);
    self->channel = new std::shared_ptr<Channel>();
    self->bufferTime = kDefaultBufferTime;
    self->latencyTime = kDefaultLatencyTime;
    self->haveEpoch = FALSE;
    self->lastEpoch = 0;
    g_atomic_int_set(&self->flushing, 0);
    GstBaseSrc *base = GST_BASE_SRC(self);
    gst_base_src_set_live(base, TRUE);
    gst_base_src_set_format(base, GST_FORMAT_TIME);
    gst_base_src_set_do_timestamp(base, FALSE);
    gst_pad_use_fixed_caps(GST_BASE_SRC_PAD(base));
}

static void tarnix_audio_source_finalize(GObject *object)
{
    TarnixAudioSource *self = TARNIX_AUDIO_SOURCE(object);
    g_free(self->channelName);
    delete self->channel;
    G_OBJECT_CLASS(tarnix_audio_source_parent_class)->finalize(object);
}

static std::shared_ptr<Channel> tarnix_audio_source_channel(TarnixAudioSource *self)
{
    GST_OBJECT_LOCK(self);
    std::shared_ptr<Channel> channel = *self->channel;
    GST_OBJECT_UNLOCK(self);
    return channel;
}

static gboolean tarnix_audio_source_start(GstBaseSrc *base)
{
    TarnixAudioSource *self = TARNIX_AUDIO_SOURCE(base);
    GST_OBJECT_LOCK(self);
    const std::string name = self->channelName;
    const guint64 bufferTime = self->bufferTime;
    GST_OBJECT_UNLOCK(self);

    std::shared_ptr<Channel> channel = bridge::acquireChannel(name);
    bool busy = false;
    {
        std::lock_guard lock(channel->mutex);
        busy = channel->receiverActive;
        if (!busy) {
        channel->resetLocked();
        channel->bufferTime = bufferTime;
        channel->receiverActive = true;
        g_weak_ref_set(&channel->receiver, self);
        }
    }
    if (busy) {
        GST_ELEMENT_ERROR(self, RESOURCE, BUSY, ("PROGRAM audio channel already has a receiver"),
                          ("channel %s", name.c_str()));
        return FALSE;
    }
    GST_OBJECT_LOCK(self);
    *self->channel = std::move(channel);
    GST_OBJECT_UNLOCK(self);
    g_atomic_int_set(&self->flushing, 0);
    self->haveEpoch = FALSE;
    GST_DEBUG_OBJECT(self, "receiving on channel %s", name.c_str());
    return TRUE;
}

static gboolean tarnix_audio_source_stop(GstBaseSrc *base)
{
    TarnixAudioSource *self = TARNIX_AUDIO_SOURCE(base);
    g_atomic_int_set(&self->flushing, 1);
    GST_OBJECT_LOCK(self);
    std::shared_ptr<Channel> channel = std::move(*self->channel);
    self->channel->reset();
    GST_OBJECT_UNLOCK(self);
    if (!channel)
        return TRUE;
    {
        std::lock_guard lock(channel->mutex);
        channel->receiverActive = false;
        g_weak_ref_set(&channel->receiver, nullptr);
        channel->resetLocked();
    }
    channel->changed.notify_all();
    return TRUE;
}

static gboolean tarnix_audio_source_unlock(GstBaseSrc *base)
{
    TarnixAudioSource *self = TARNIX_AUDIO_SOURCE(base);
    const std::shared_ptr<Channel> channel = tarnix_audio_source_channel(self);
    if (!channel) {
        g_atomic_int_set(&self->flushing, 1);
        return TRUE;
    }
    {
        // Under the channel mutex, so a waiter cannot miss the wake-up.
        std::lock_guard lock(channel->mutex);
        g_atomic_int_set(&self->flushing, 1);
    }
    channel->changed.notify_all();
    return TRUE;
}

static gboolean tarnix_audio_source_unlock_stop(GstBaseSrc *base)
{
    g_atomic_int_set(&TARNIX_AUDIO_SOURCE(base)->flushing, 0);
    return TRUE;
}

static guint64 saturatingAdd(guint64 a, guint64 b)
{
    return a > kTimeLimit - b ? kTimeLimit : a + b;
}

static gboolean tarnix_audio_source_query(GstBaseSrc *base, GstQuery *query)
{
    if (GST_QUERY_TYPE(query) != GST_QUERY_LATENCY)
        return GST_BASE_SRC_CLASS(tarnix_audio_source_parent_class)->query(base, query);

    TarnixAudioSource *self = TARNIX_AUDIO_SOURCE(base);
    GST_OBJECT_LOCK(self);
    const guint64 latencyTime = self->latencyTime;
    const guint64 bufferTime = self->bufferTime;
    std::shared_ptr<Channel> channel = *self->channel;
    GST_OBJECT_UNLOCK(self);
    guint64 sinkLatency = 0;
    if (channel) {
        std::lock_guard lock(channel->mutex);
        sinkLatency = channel->sinkLatency;
    }
    const guint64 minimum = saturatingAdd(latencyTime, sinkLatency);
    const guint64 maximum = saturatingAdd(std::max(latencyTime, bufferTime), sinkLatency);
    GST_LOG_OBJECT(self, "latency min %" GST_TIME_FORMAT " max %" GST_TIME_FORMAT,
                   GST_TIME_ARGS(minimum), GST_TIME_ARGS(maximum));
    gst_query_set_latency(query, TRUE, minimum, maximum);
    return TRUE;
}

// Takes the next chunk of at most 20 ms off the front of the queue. Caller
// holds the channel mutex and has seen a non-empty queue.
static GstBuffer *takeChunkLocked(Channel &channel)
{
    GstBuffer *front = channel.queue.front();
    const guint64 size = gst_buffer_get_size(front);
    const guint64 offset = channel.frontOffset;
    const guint64 chunk = std::min<guint64>(bridge::kChunkBytes, size - offset);
    GstBuffer *out = nullptr;
    if (offset == 0 && chunk == size) {
        out = front;
    } else {
        out = gst_buffer_copy_region(front, GST_BUFFER_COPY_MEMORY, offset, chunk);
        if (!out)
            return nullptr;
        GstBufferFlags flags = static_cast<GstBufferFlags>(GST_MINI_OBJECT_FLAGS(front));
        if (offset != 0)
            flags = static_cast<GstBufferFlags>(flags & ~GST_BUFFER_FLAG_DISCONT);
        GST_MINI_OBJECT_FLAGS(out) = flags;
        const GstClockTime start = bridge::framesToTime(offset / bridge::kFrameBytes);
        const GstClockTime end = bridge::framesToTime((offset + chunk) / bridge::kFrameBytes);
        GST_BUFFER_PTS(out) = GST_BUFFER_PTS(front) + start;
        GST_BUFFER_DTS(out) = GST_CLOCK_TIME_NONE;
        GST_BUFFER_DURATION(out) = end - start;
    }
    channel.frontOffset += chunk;
    if (channel.frontOffset >= size) {
        channel.queue.pop_front();
        channel.frontOffset = 0;
        if (out != front)
            gst_buffer_unref(front);
    }
    channel.queuedBytes -= chunk;
    return out;
}

// Downstream sees a new segment in which the buffer's running time equals
// its timestamp, and the buffer marked DISCONT, so the mixer places it where
// the sender meant it to be heard. No flush goes with it: the mixer is an
// aggregator whose output thread keeps mixing while an input is flushed, and
// it resets a flushed input's segment before it lets go of the buffer it
// holds from that input, so a flush here would let the mixer meet that
// buffer with no segment at all. Our own elements on the way clear their
// state on the segment as they would on a flush; what the mixer still holds
// of the old sound is at most its latency.
static GstFlowReturn tarnix_audio_source_restart_segment(TarnixAudioSource *self, GstClockTime pts)
{
    GstSegment segment;
    gst_segment_init(&segment, GST_FORMAT_TIME);
    segment.start = pts;
    segment.time = pts;
    segment.position = pts;
    segment.base = pts;
    if (gst_base_src_new_segment(GST_BASE_SRC(self), &segment))
        return GST_FLOW_OK;
    if (g_atomic_int_get(&self->flushing))
        return GST_FLOW_FLUSHING;
    GST_ELEMENT_ERROR(self, STREAM, FAILED,
                      ("Could not reset the PROGRAM audio input after a playback segment change"),
                      (nullptr));
    return GST_FLOW_ERROR;
}

static GstFlowReturn tarnix_audio_source_create(GstPushSrc *push, GstBuffer **out)
{
    TarnixAudioSource *self = TARNIX_AUDIO_SOURCE(push);
    const std::shared_ptr<Channel> channel = tarnix_audio_source_channel(self);
    if (!channel)
        return GST_FLOW_FLUSHING;

    bool markDiscont = false;
    for (;;) {
        GstBuffer *buffer = nullptr;
        guint64 epoch = 0;
        {
            std::unique_lock lock(channel->mutex);
            channel->changed.wait(lock, [&] {
                return g_atomic_int_get(&self->flushing) || !channel->queue.empty();
            });
            if (g_atomic_int_get(&self->flushing))
                return GST_FLOW_FLUSHING;
            buffer = takeChunkLocked(*channel);
            if (!buffer) {
                GST_ELEMENT_ERROR(self, RESOURCE, FAILED, (nullptr), ("could not copy PCM"));
                return GST_FLOW_ERROR;
            }
            if (channel->discontPending) {
                channel->discontPending = false;
                markDiscont = true;
            }
            epoch = channel->epoch;
        }

        const GstClockTime baseTime = gst_element_get_base_time(GST_ELEMENT(self));
        if (!GST_CLOCK_TIME_IS_VALID(baseTime)) {
            gst_buffer_unref(buffer);
            GST_ELEMENT_ERROR(self, STREAM, FORMAT, ("PROGRAM audio output has no valid timeline"),
                              (nullptr));
            return GST_FLOW_ERROR;
        }
        if (GST_BUFFER_PTS(buffer) < baseTime) {
            // Sound from before this pipeline started cannot be placed.
            gst_buffer_unref(buffer);
            markDiscont = true;
            continue;
        }
        buffer = gst_buffer_make_writable(buffer);
        GST_BUFFER_PTS(buffer) -= baseTime;

        if (self->haveEpoch && epoch != self->lastEpoch) {
            GST_DEBUG_OBJECT(self, "new epoch %" G_GUINT64_FORMAT " at %" GST_TIME_FORMAT, epoch,
                             GST_TIME_ARGS(GST_BUFFER_PTS(buffer)));
            const GstFlowReturn restarted =
                tarnix_audio_source_restart_segment(self, GST_BUFFER_PTS(buffer));
            if (restarted != GST_FLOW_OK) {
                gst_buffer_unref(buffer);
                return restarted;
            }
            markDiscont = true;
        }

        {
            std::lock_guard lock(channel->mutex);
            if (g_atomic_int_get(&self->flushing)) {
                gst_buffer_unref(buffer);
                return GST_FLOW_FLUSHING;
            }
            if (channel->epoch != epoch) {
                gst_buffer_unref(buffer);
                continue;
            }
        }
        self->haveEpoch = TRUE;
        self->lastEpoch = epoch;
        if (markDiscont)
            GST_BUFFER_FLAG_SET(buffer, GST_BUFFER_FLAG_DISCONT);
        *out = buffer;
        return GST_FLOW_OK;
    }
}

static void tarnix_audio_source_set_property(GObject *object, guint propId, const GValue *value,
                                             GParamSpec *pspec)
{
    TarnixAudioSource *self = TARNIX_AUDIO_SOURCE(object);
    GST_OBJECT_LOCK(self);
    const bool attached = bool(*self->channel);
    switch (propId) {
    case PROP_CHANNEL:
        if (attached) {
            GST_WARNING_OBJECT(self, "channel cannot change while attached");
            break;
        }
        g_free(self->channelName);
        self->channelName = g_strdup(g_value_get_string(value) ? g_value_get_string(value)
                                                               : TARNIX_AUDIO_SOURCE_DEFAULT_CHANNEL);
        break;
    case PROP_BUFFER_TIME:
        self->bufferTime = g_value_get_uint64(value);
        break;
    case PROP_LATENCY_TIME:
        self->latencyTime = g_value_get_uint64(value);
        break;
    default:
        G_OBJECT_WARN_INVALID_PROPERTY_ID(object, propId, pspec);
        break;
    }
    GST_OBJECT_UNLOCK(self);
}

static void tarnix_audio_source_get_property(GObject *object, guint propId, GValue *value,
                                             GParamSpec *pspec)
{
    TarnixAudioSource *self = TARNIX_AUDIO_SOURCE(object);
    GST_OBJECT_LOCK(self);
    switch (propId) {
    case PROP_CHANNEL:
        g_value_set_string(value, self->channelName);
        break;
    case PROP_BUFFER_TIME:
        g_value_set_uint64(value, self->bufferTime);
        break;
    case PROP_LATENCY_TIME:
        g_value_set_uint64(value, self->latencyTime);
        break;
    default:
        G_OBJECT_WARN_INVALID_PROPERTY_ID(object, propId, pspec);
        break;
    }
    GST_OBJECT_UNLOCK(self);
}
