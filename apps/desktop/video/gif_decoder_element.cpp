#include "video/gif_decoder_element.h"

#include "video/gif_timing.h"

#include <gst/video/video.h>

#include <QBuffer>
#include <QImage>
#include <QImageReader>

#include <algorithm>
#include <cstring>
#include <memory>
#include <mutex>
#include <optional>

GST_DEBUG_CATEGORY_STATIC(tarnix_gif_decoder_debug);
#define GST_CAT_DEFAULT tarnix_gif_decoder_debug

static_assert(Q_BYTE_ORDER == Q_LITTLE_ENDIAN, "QImage::Format_ARGB32 is BGRA in memory only on little-endian");

namespace {

// The whole file is held while it plays; a GIF larger than this is refused
// rather than allowed to take the memory the program output needs.
constexpr qsizetype kLargestFile = qsizetype(256) * 1024 * 1024;

struct GifDecoderState {
    std::mutex mutex;
    // Guarded by mutex: written by the sink side and by seeks.
    QByteArray file;
    std::optional<tarnix::GifTiming> timing; // once the whole file is in
    GstSegment segment;
    bool restart = true;        // the task starts again from the first frame
    bool segmentPending = true; // the task sends the segment before its next frame
    guint32 seqnum = 0;

    // The source task's own.
    std::unique_ptr<QBuffer> device;
    std::unique_ptr<QImageReader> reader;
    std::vector<int> durationsMs;
    int nextFrame = 0;
    GstClockTime nextPts = 0;
    QSize capsSize;
    bool codecTagged = false;
};

struct TarnixGifDecoder {
    GstElement parent;
    GstPad *sinkPad;
    GstPad *srcPad;
    GifDecoderState *state;
};

struct TarnixGifDecoderClass {
    GstElementClass parentClass;
};

GType tarnix_gif_decoder_get_type();
#define TARNIX_GIF_DECODER(obj) \
    (G_TYPE_CHECK_INSTANCE_CAST((obj), tarnix_gif_decoder_get_type(), TarnixGifDecoder))

G_DEFINE_TYPE(TarnixGifDecoder, tarnix_gif_decoder, GST_TYPE_ELEMENT)

GstStaticPadTemplate sinkTemplate =
    GST_STATIC_PAD_TEMPLATE("sink", GST_PAD_SINK, GST_PAD_ALWAYS, GST_STATIC_CAPS("image/gif"));
GstStaticPadTemplate srcTemplate = GST_STATIC_PAD_TEMPLATE(
    "src", GST_PAD_SRC, GST_PAD_ALWAYS, GST_STATIC_CAPS(GST_VIDEO_CAPS_MAKE("BGRA")));

void tarnix_gif_decoder_loop(gpointer data);

void endStream(TarnixGifDecoder *self, const GstSegment &segment, guint32 seqnum)
{
    gst_pad_pause_task(self->srcPad);
    if (segment.flags & GST_SEGMENT_FLAG_SEGMENT) {
        const gint64 stop = GST_CLOCK_TIME_IS_VALID(segment.stop) ? gint64(segment.stop) : gint64(segment.duration);
        GstMessage *message = gst_message_new_segment_done(GST_OBJECT(self), GST_FORMAT_TIME, stop);
        gst_message_set_seqnum(message, seqnum);
        gst_element_post_message(GST_ELEMENT(self), message);
        GstEvent *event = gst_event_new_segment_done(GST_FORMAT_TIME, stop);
        gst_event_set_seqnum(event, seqnum);
        gst_pad_push_event(self->srcPad, event);
        return;
    }
    GstEvent *eos = gst_event_new_eos();
    gst_event_set_seqnum(eos, seqnum);
    gst_pad_push_event(self->srcPad, eos);
}

// After an error this element has posted itself.
void stopAfterError(TarnixGifDecoder *self, guint32 seqnum)
{
    gst_pad_pause_task(self->srcPad);
    GstEvent *eos = gst_event_new_eos();
    gst_event_set_seqnum(eos, seqnum);
    gst_pad_push_event(self->srcPad, eos);
}

// After a push that did not succeed: downstream's reason decides.
void stopOnFlow(TarnixGifDecoder *self, GstFlowReturn flow, guint32 seqnum)
{
    if (flow == GST_FLOW_FLUSHING || flow == GST_FLOW_EOS) {
        gst_pad_pause_task(self->srcPad);
        return;
    }
    if (flow == GST_FLOW_NOT_LINKED || flow < GST_FLOW_EOS)
        GST_ELEMENT_FLOW_ERROR(self, flow);
    stopAfterError(self, seqnum);
}

bool sendCaps(TarnixGifDecoder *self, QSize size)
{
    GstCaps *caps = gst_caps_new_simple("video/x-raw", "format", G_TYPE_STRING, "BGRA", "width", G_TYPE_INT,
                                        size.width(), "height", G_TYPE_INT, size.height(), "framerate",
                                        GST_TYPE_FRACTION, 0, 1, "pixel-aspect-ratio", GST_TYPE_FRACTION, 1, 1,
                                        nullptr);
    const bool sent = gst_pad_push_event(self->srcPad, gst_event_new_caps(caps));
    gst_caps_unref(caps);
    if (sent)
        self->state->capsSize = size;
    return sent;
}

GstBuffer *bufferFromFrame(const QImage &composed)
{
    const QImage frame = composed.convertToFormat(QImage::Format_ARGB32);
    const gsize rowBytes = gsize(frame.width()) * 4;
    GstBuffer *buffer = gst_buffer_new_allocate(nullptr, rowBytes * gsize(frame.height()), nullptr);
    GstMapInfo map;
    if (!buffer || !gst_buffer_map(buffer, &map, GST_MAP_WRITE)) {
        if (buffer)
            gst_buffer_unref(buffer);
        return nullptr;
    }
    for (int y = 0; y < frame.height(); ++y)
        std::memcpy(map.data + gsize(y) * rowBytes, frame.constScanLine(y), rowBytes);
    gst_buffer_unmap(buffer, &map);
    return buffer;
}

// One frame per turn: every frame is composed (a GIF frame draws over the
// ones before it), but only those that end after the segment's start are
// sent.
void tarnix_gif_decoder_loop(gpointer data)
{
    auto *self = static_cast<TarnixGifDecoder *>(data);
    GifDecoderState &state = *self->state;
    GstSegment segment;
    bool sendSegment = false;
    guint32 seqnum = 0;
    bool restarted = false;
    {
        std::lock_guard lock(state.mutex);
        if (!state.timing) {
            gst_pad_pause_task(self->srcPad);
            return;
        }
        if (state.restart) {
            state.restart = false;
            restarted = true;
            state.reader.reset();
            state.device = std::make_unique<QBuffer>();
            state.device->setData(state.file);
            state.device->open(QIODevice::ReadOnly);
            state.reader = std::make_unique<QImageReader>(state.device.get(), QByteArrayLiteral("gif"));
            state.durationsMs = state.timing->frameDurationsMs;
            state.nextFrame = 0;
            state.nextPts = 0;
        }
        gst_segment_copy_into(&state.segment, &segment);
        sendSegment = state.segmentPending;
        state.segmentPending = false;
        seqnum = state.seqnum;
    }
    const bool still = state.durationsMs.size() == 1;
    if (restarted && state.capsSize.isEmpty()) {
        const QSize screen = state.reader->size();
        if (!screen.isValid() || !sendCaps(self, screen)) {
            GST_ELEMENT_ERROR(self, CORE, NEGOTIATION, ("The GIF image's picture could not be negotiated."),
                              (nullptr));
            stopAfterError(self, seqnum);
            return;
        }
    }
    if (sendSegment) {
        GstEvent *event = gst_event_new_segment(&segment);
        gst_event_set_seqnum(event, seqnum);
        gst_pad_push_event(self->srcPad, event);
        // What the stream is, for the playlist's facts; after the first
        // segment, where a tag belongs among the sticky events.
        if (!state.codecTagged) {
            gst_pad_push_event(self->srcPad, gst_event_new_tag(gst_tag_list_new(GST_TAG_VIDEO_CODEC, "GIF", nullptr)));
            state.codecTagged = true;
        }
    }

    QImage frame;
    if (!state.reader->read(&frame)) {
        if (state.nextFrame == 0) {
            const QByteArray reason = state.reader->errorString().toUtf8();
            GST_ELEMENT_ERROR(self, STREAM, DECODE, ("The GIF image could not be decoded."), ("%s", reason.constData()));
            stopAfterError(self, seqnum);
            return;
        }
        endStream(self, segment, seqnum);
        return;
    }
    const int index = state.nextFrame++;
    GstClockTime pts = state.nextPts;
    GstClockTime duration = GST_CLOCK_TIME_NONE;
    if (!still) {
        const int ms = state.durationsMs[std::min<size_t>(size_t(index), state.durationsMs.size() - 1)];
        duration = GstClockTime(ms) * GST_MSECOND;
        state.nextPts += duration;
    }
    if (GST_CLOCK_TIME_IS_VALID(segment.stop) && pts >= segment.stop) {
        endStream(self, segment, seqnum);
        return;
    }
    if (!still && pts + duration <= segment.start)
        return;
    // The frame the seek landed in is shown from the segment's start.
    if (pts < segment.start) {
        if (GST_CLOCK_TIME_IS_VALID(duration))
            duration -= segment.start - pts;
        pts = segment.start;
    }
    if (frame.size() != state.capsSize && !sendCaps(self, frame.size())) {
        stopOnFlow(self, GST_FLOW_NOT_NEGOTIATED, seqnum);
        return;
    }
    GstBuffer *buffer = bufferFromFrame(frame);
    if (!buffer) {
        GST_ELEMENT_ERROR(self, RESOURCE, FAILED, ("No memory for a GIF frame."), (nullptr));
        stopAfterError(self, seqnum);
        return;
    }
    GST_BUFFER_PTS(buffer) = pts;
    GST_BUFFER_DURATION(buffer) = duration;
    if (restarted)
        GST_BUFFER_FLAG_SET(buffer, GST_BUFFER_FLAG_DISCONT);
    const GstFlowReturn flow = gst_pad_push(self->srcPad, buffer);
    if (flow != GST_FLOW_OK) {
        stopOnFlow(self, flow, seqnum);
        return;
    }
    if (still)
        endStream(self, segment, seqnum);
}

GstFlowReturn tarnix_gif_decoder_chain(GstPad *, GstObject *parent, GstBuffer *buffer)
{
    auto *self = TARNIX_GIF_DECODER(parent);
    GifDecoderState &state = *self->state;
    GstMapInfo map;
    if (!gst_buffer_map(buffer, &map, GST_MAP_READ)) {
        gst_buffer_unref(buffer);
        return GST_FLOW_ERROR;
    }
    bool tooLarge = false;
    {
        std::lock_guard lock(state.mutex);
        if (!state.timing) {
            tooLarge = state.file.size() + qsizetype(map.size) > kLargestFile;
            if (!tooLarge)
                state.file.append(reinterpret_cast<const char *>(map.data), qsizetype(map.size));
        }
    }
    gst_buffer_unmap(buffer, &map);
    gst_buffer_unref(buffer);
    if (tooLarge) {
        GST_ELEMENT_ERROR(self, STREAM, DECODE, ("The GIF file is too large to play."), (nullptr));
        return GST_FLOW_ERROR;
    }
    return GST_FLOW_OK;
}

gboolean tarnix_gif_decoder_sink_event(GstPad *pad, GstObject *parent, GstEvent *event)
{
    auto *self = TARNIX_GIF_DECODER(parent);
    GifDecoderState &state = *self->state;
    switch (GST_EVENT_TYPE(event)) {
    case GST_EVENT_EOS: {
        gst_event_unref(event);
        QString error;
        {
            std::lock_guard lock(state.mutex);
            state.timing = tarnix::readGifTiming(state.file, &error);
            state.restart = true;
            state.segmentPending = true;
        }
        if (error.isEmpty())
            return gst_pad_start_task(self->srcPad, tarnix_gif_decoder_loop, self, nullptr);
        const QByteArray text = error.toUtf8();
        GST_ELEMENT_ERROR(self, STREAM, DECODE, ("%s", text.constData()), (nullptr));
        gst_pad_push_event(self->srcPad, gst_event_new_eos());
        return FALSE;
    }
    // The file's caps and byte segment are not what is sent on: the task
    // sends its own when it starts.
    case GST_EVENT_CAPS:
    case GST_EVENT_SEGMENT:
        gst_event_unref(event);
        return TRUE;
    default: return gst_pad_event_default(pad, parent, event);
    }
}

// Only flushing seeks forward in time are taken: a non-flushing seek would
// wait on a task that may be held in a paused sink's preroll.
gboolean handleSeek(TarnixGifDecoder *self, GstEvent *event)
{
    GifDecoderState &state = *self->state;
    gdouble rate = 1.0;
    GstFormat format = GST_FORMAT_UNDEFINED;
    GstSeekFlags flags = GST_SEEK_FLAG_NONE;
    GstSeekType startType = GST_SEEK_TYPE_NONE;
    GstSeekType stopType = GST_SEEK_TYPE_NONE;
    gint64 start = 0;
    gint64 stop = 0;
    gst_event_parse_seek(event, &rate, &format, &flags, &startType, &start, &stopType, &stop);
    if (format != GST_FORMAT_TIME || rate <= 0.0 || !(flags & GST_SEEK_FLAG_FLUSH))
        return FALSE;
    {
        std::lock_guard lock(state.mutex);
        if (!state.timing || !state.timing->animated())
            return FALSE;
    }
    const guint32 seqnum = gst_event_get_seqnum(event);
    GstEvent *flushStart = gst_event_new_flush_start();
    gst_event_set_seqnum(flushStart, seqnum);
    gst_pad_push_event(self->srcPad, flushStart);
    gst_pad_pause_task(self->srcPad);

    GST_PAD_STREAM_LOCK(self->srcPad);
    GstEvent *flushStop = gst_event_new_flush_stop(TRUE);
    gst_event_set_seqnum(flushStop, seqnum);
    gst_pad_push_event(self->srcPad, flushStop);
    {
        std::lock_guard lock(state.mutex);
        gboolean update = FALSE;
        gst_segment_do_seek(&state.segment, rate, format, flags, startType, guint64(start), stopType, guint64(stop),
                            &update);
        state.restart = true;
        state.segmentPending = true;
        state.seqnum = seqnum;
    }
    if (flags & GST_SEEK_FLAG_SEGMENT) {
        GstMessage *message = gst_message_new_segment_start(GST_OBJECT(self), GST_FORMAT_TIME, start);
        gst_message_set_seqnum(message, seqnum);
        gst_element_post_message(GST_ELEMENT(self), message);
    }
    gst_pad_start_task(self->srcPad, tarnix_gif_decoder_loop, self, nullptr);
    GST_PAD_STREAM_UNLOCK(self->srcPad);
    return TRUE;
}

gboolean tarnix_gif_decoder_src_event(GstPad *pad, GstObject *parent, GstEvent *event)
{
    auto *self = TARNIX_GIF_DECODER(parent);
    if (GST_EVENT_TYPE(event) == GST_EVENT_SEEK) {
        const gboolean handled = handleSeek(self, event);
        gst_event_unref(event);
        return handled;
    }
    return gst_pad_event_default(pad, parent, event);
}

gboolean tarnix_gif_decoder_src_query(GstPad *pad, GstObject *parent, GstQuery *query)
{
    auto *self = TARNIX_GIF_DECODER(parent);
    GifDecoderState &state = *self->state;
    switch (GST_QUERY_TYPE(query)) {
    case GST_QUERY_DURATION: {
        GstFormat format = GST_FORMAT_UNDEFINED;
        gst_query_parse_duration(query, &format, nullptr);
        std::lock_guard lock(state.mutex);
        if (format != GST_FORMAT_TIME || !state.timing || !state.timing->animated())
            return FALSE;
        gst_query_set_duration(query, GST_FORMAT_TIME, gint64(state.timing->totalMs() * GST_MSECOND));
        return TRUE;
    }
    case GST_QUERY_SEEKING: {
        GstFormat format = GST_FORMAT_UNDEFINED;
        gst_query_parse_seeking(query, &format, nullptr, nullptr, nullptr);
        if (format != GST_FORMAT_TIME)
            return FALSE;
        std::lock_guard lock(state.mutex);
        const bool seekable = state.timing && state.timing->animated();
        gst_query_set_seeking(query, GST_FORMAT_TIME, seekable, 0,
                              seekable ? gint64(state.timing->totalMs() * GST_MSECOND) : -1);
        return TRUE;
    }
    default: return gst_pad_query_default(pad, parent, query);
    }
}

gboolean tarnix_gif_decoder_src_activate_mode(GstPad *pad, GstObject *, GstPadMode mode, gboolean active)
{
    if (mode != GST_PAD_MODE_PUSH)
        return FALSE;
    return active ? TRUE : gst_pad_stop_task(pad);
}

GstStateChangeReturn tarnix_gif_decoder_change_state(GstElement *element, GstStateChange transition)
{
    auto *self = TARNIX_GIF_DECODER(element);
    GifDecoderState &state = *self->state;
    if (transition == GST_STATE_CHANGE_READY_TO_PAUSED) {
        std::lock_guard lock(state.mutex);
        state.file.clear();
        state.timing.reset();
        gst_segment_init(&state.segment, GST_FORMAT_TIME);
        state.restart = true;
        state.segmentPending = true;
        state.seqnum = gst_util_seqnum_next();
        state.capsSize = {};
    }
    const GstStateChangeReturn result =
        GST_ELEMENT_CLASS(tarnix_gif_decoder_parent_class)->change_state(element, transition);
    // The task was stopped when the source pad went inactive.
    if (transition == GST_STATE_CHANGE_PAUSED_TO_READY) {
        std::lock_guard lock(state.mutex);
        state.reader.reset();
        state.device.reset();
        state.file.clear();
        state.timing.reset();
    }
    return result;
}

void tarnix_gif_decoder_finalize(GObject *object)
{
    delete TARNIX_GIF_DECODER(object)->state;
    G_OBJECT_CLASS(tarnix_gif_decoder_parent_class)->finalize(object);
}

void tarnix_gif_decoder_class_init(TarnixGifDecoderClass *klass)
{
    G_OBJECT_CLASS(klass)->finalize = tarnix_gif_decoder_finalize;
    auto *elementClass = GST_ELEMENT_CLASS(klass);
    gst_element_class_set_static_metadata(elementClass, "TARNIX GIF decoder", "Codec/Decoder/Video",
                                          "Plays a GIF animation at the pace of its frame delays", "TARNIX");
    gst_element_class_add_static_pad_template(elementClass, &sinkTemplate);
    gst_element_class_add_static_pad_template(elementClass, &srcTemplate);
    elementClass->change_state = tarnix_gif_decoder_change_state;
}

void tarnix_gif_decoder_init(TarnixGifDecoder *self)
{
    self->state = new GifDecoderState;
    gst_segment_init(&self->state->segment, GST_FORMAT_TIME);
    self->sinkPad = gst_pad_new_from_static_template(&sinkTemplate, "sink");
    gst_pad_set_chain_function(self->sinkPad, tarnix_gif_decoder_chain);
    gst_pad_set_event_function(self->sinkPad, tarnix_gif_decoder_sink_event);
    gst_element_add_pad(GST_ELEMENT(self), self->sinkPad);
    self->srcPad = gst_pad_new_from_static_template(&srcTemplate, "src");
    gst_pad_set_event_function(self->srcPad, tarnix_gif_decoder_src_event);
    gst_pad_set_query_function(self->srcPad, tarnix_gif_decoder_src_query);
    gst_pad_set_activatemode_function(self->srcPad, tarnix_gif_decoder_src_activate_mode);
    gst_pad_use_fixed_caps(self->srcPad);
    gst_element_add_pad(GST_ELEMENT(self), self->srcPad);
}

} // namespace

namespace tarnix {

bool registerGifDecoderElement(QString *error)
{
    static std::once_flag once;
    static bool registered = false;
    std::call_once(once, [] {
        GST_DEBUG_CATEGORY_INIT(tarnix_gif_decoder_debug, "tarnixgifdec", 0, "TARNIX GIF decoder");
        registered = gst_element_register(nullptr, "tarnixgifdec", GST_RANK_PRIMARY + 1,
                                          tarnix_gif_decoder_get_type());
    });
    if (!registered && error)
        *error = QStringLiteral("Could not register the GIF decoder element.");
    return registered;
}

} // namespace tarnix
