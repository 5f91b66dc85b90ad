#include "audio/audio_elements.h"
#include "pcm_probe.h"
#include "support/glib_criticals.h"

#include <gst/app/gstappsink.h>
#include <gst/check/gstharness.h>

#include <QtTest>

#include <mutex>

using namespace tarnix;
using namespace tarnix::test;

namespace {

// A receiver in a pipeline of its own, on the system clock, delivering into
// an appsink that holds at most `maxBuffers` (0: unbounded).
struct Receiver {
    GstElement *pipeline = nullptr;
    GstElement *appsink = nullptr;

    Receiver(const char *channel, int maxBuffers)
    {
        const QString description =
            QStringLiteral("tarnixaudiosrc name=src channel=%1 ! appsink name=out sync=false "
                           "max-buffers=%2")
                .arg(QLatin1String(channel))
                .arg(maxBuffers);
        pipeline = gst_parse_launch(description.toUtf8().constData(), nullptr);
        GstClock *clock = gst_system_clock_obtain();
        gst_pipeline_use_clock(GST_PIPELINE(pipeline), clock);
        gst_object_unref(clock);
        appsink = gst_bin_get_by_name(GST_BIN(pipeline), "out");
    }
    ~Receiver()
    {
        gst_element_set_state(pipeline, GST_STATE_NULL);
        gst_object_unref(appsink);
        gst_object_unref(pipeline);
    }
    GstClockTime baseTime() const { return gst_element_get_base_time(pipeline); }

    // The next buffer, with its own reference, or null after the limit.
    GstBuffer *pull(GstClockTime limit = GST_SECOND)
    {
        GstSample *sample = gst_app_sink_try_pull_sample(GST_APP_SINK(appsink), limit);
        if (!sample)
            return nullptr;
        GstBuffer *buffer = gst_buffer_ref(gst_sample_get_buffer(sample));
        gst_sample_unref(sample);
        return buffer;
    }
};

// A sender as a harness; its base time is the receiver's, so the PTS it
// pushes is the running time the receiver hands on.
GstHarness *senderFor(const char *channel, GstClockTime baseTime)
{
    GstElement *sink = gst_element_factory_make("tarnixaudiosink", nullptr);
    g_object_set(sink, "channel", channel, "sync", FALSE, nullptr);
    GstHarness *harness = gst_harness_new_with_element(sink, "sink", nullptr);
    gst_object_unref(sink);
    gst_harness_set_src_caps_str(harness, kPcmCaps);
    gst_element_set_base_time(harness->element, baseTime);
    return harness;
}

GstBuffer *twentyMs(int index)
{
    return sineBuffer(440.0, 0.25, std::size_t(index) * 960, 960,
                      GstClockTime(index) * 20 * GST_MSECOND);
}

QString busError(GstElement *pipeline)
{
    GstBus *bus = gst_element_get_bus(pipeline);
    GstMessage *message = gst_bus_timed_pop_filtered(bus, GST_SECOND, GST_MESSAGE_ERROR);
    gst_object_unref(bus);
    if (!message)
        return QString();
    GError *error = nullptr;
    gst_message_parse_error(message, &error, nullptr);
    const QString text = QString::fromUtf8(error->message);
    g_error_free(error);
    gst_message_unref(message);
    return text;
}

} // namespace

class TestAudioBridge : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        tarnix::test::failOnGlibCriticals();
        gst_init(nullptr, nullptr);
        QVERIFY(registerAudioElements());
    }

    void oneReceiverPerChannel()
    {
        Receiver first("solo", 0);
        QVERIFY(gst_element_set_state(first.pipeline, GST_STATE_PLAYING) !=
                GST_STATE_CHANGE_FAILURE);
        Receiver second("solo", 0);
        QCOMPARE(gst_element_set_state(second.pipeline, GST_STATE_PLAYING),
                 GST_STATE_CHANGE_FAILURE);
        QCOMPARE(busError(second.pipeline),
                 QStringLiteral("PROGRAM audio channel already has a receiver"));

        // Once the first has gone the channel takes a receiver again.
        gst_element_set_state(first.pipeline, GST_STATE_NULL);
        Receiver third("solo", 0);
        QVERIFY(gst_element_set_state(third.pipeline, GST_STATE_PLAYING) !=
                GST_STATE_CHANGE_FAILURE);
    }

    // PCM keeps its play time across the bridge and comes out in chunks of
    // at most 20 ms; the first buffer is DISCONT.
    void carriesPcmWithItsTime()
    {
        Receiver receiver("carry", 0);
        gst_element_set_state(receiver.pipeline, GST_STATE_PLAYING);
        QVERIFY(gst_element_get_state(receiver.pipeline, nullptr, nullptr, 2 * GST_SECOND) !=
                GST_STATE_CHANGE_FAILURE);
        GstHarness *sender = senderFor("carry", receiver.baseTime());
        GstBuffer *big = sineBuffer(440.0, 0.25, 0, 2400, 100 * GST_MSECOND);
        QCOMPARE(gst_harness_push(sender, big), GST_FLOW_OK);

        const GstClockTime expectedPts[] = {100 * GST_MSECOND, 120 * GST_MSECOND,
                                            140 * GST_MSECOND};
        const gsize expectedSize[] = {7680, 7680, 3840};
        for (int i = 0; i < 3; ++i) {
            GstBuffer *out = receiver.pull();
            QVERIFY(out);
            QCOMPARE(GST_BUFFER_PTS(out), expectedPts[i]);
            QCOMPARE(gst_buffer_get_size(out), expectedSize[i]);
            QCOMPARE(GST_BUFFER_FLAG_IS_SET(out, GST_BUFFER_FLAG_DISCONT), i == 0);
            gst_buffer_unref(out);
        }
        gst_harness_teardown(sender);
    }

    // A receiver that stops taking PCM loses the whole queue at once when
    // the sender runs 200 ms ahead; it resumes at the buffer that did not
    // fit, marked DISCONT.
    void stalledReceiverLosesItsQueue()
    {
        Receiver receiver("stall", 1);
        gst_element_set_state(receiver.pipeline, GST_STATE_PLAYING);
        QVERIFY(gst_element_get_state(receiver.pipeline, nullptr, nullptr, 2 * GST_SECOND) !=
                GST_STATE_CHANGE_FAILURE);
        GstHarness *sender = senderFor("stall", receiver.baseTime());
        QCOMPARE(gst_harness_push(sender, twentyMs(0)), GST_FLOW_OK);
        GstBuffer *first = receiver.pull();
        QVERIFY(first);
        GstClockTime previous = GST_BUFFER_PTS(first);
        gst_buffer_unref(first);
        // The receiver takes at most two more (one in the appsink, one in
        // its hand), then stalls while the queue grows.
        for (int i = 1; i < 16; ++i)
            QCOMPARE(gst_harness_push(sender, twentyMs(i)), GST_FLOW_OK);

        GstClockTime firstAfterReset = GST_CLOCK_TIME_NONE;
        int discontinuities = 0;
        while (GstBuffer *out = receiver.pull(300 * GST_MSECOND)) {
            if (GST_BUFFER_FLAG_IS_SET(out, GST_BUFFER_FLAG_DISCONT)) {
                ++discontinuities;
                firstAfterReset = GST_BUFFER_PTS(out);
            } else {
                QCOMPARE(GST_BUFFER_PTS(out), previous + 20 * GST_MSECOND);
            }
            previous = GST_BUFFER_PTS(out);
            gst_buffer_unref(out);
        }
        QCOMPARE(discontinuities, 1);
        // Ten buffers (200 ms) fit behind those taken; the next is kept.
        QVERIFY2(firstAfterReset >= 11 * 20 * GST_MSECOND && firstAfterReset <= 13 * 20 * GST_MSECOND,
                 qPrintable(QString::number(firstAfterReset)));
        QCOMPARE(previous, 15 * 20 * GST_MSECOND);
        gst_harness_teardown(sender);
    }

    // When the sender starts a new playback the receiver goes on without a
    // flush: a new segment that places the next buffer at its own running
    // time, and the buffer marked DISCONT. A flush would reach the program
    // mixer while its output thread keeps mixing, and the mixer resets the
    // flushed input's segment before it drops the buffer it holds from it.
    void newPlaybackIsANewSegmentWithoutAFlush()
    {
        Receiver receiver("epoch", 0);
        struct Seen {
            std::mutex mutex;
            QList<GstEventType> events;
            GstClockTime lastSegmentStart = GST_CLOCK_TIME_NONE;
        } seen;
        GstPad *sinkPad = gst_element_get_static_pad(receiver.appsink, "sink");
        gst_pad_add_probe(
            sinkPad,
            static_cast<GstPadProbeType>(GST_PAD_PROBE_TYPE_EVENT_BOTH | GST_PAD_PROBE_TYPE_EVENT_FLUSH),
            [](GstPad *, GstPadProbeInfo *info, gpointer data) {
                auto *seen = static_cast<Seen *>(data);
                GstEvent *event = GST_PAD_PROBE_INFO_EVENT(info);
                std::lock_guard lock(seen->mutex);
                seen->events.append(GST_EVENT_TYPE(event));
                if (GST_EVENT_TYPE(event) == GST_EVENT_SEGMENT) {
                    const GstSegment *segment = nullptr;
                    gst_event_parse_segment(event, &segment);
                    seen->lastSegmentStart = segment->start;
                }
                return GST_PAD_PROBE_OK;
            },
            &seen, nullptr);
        gst_object_unref(sinkPad);
        gst_element_set_state(receiver.pipeline, GST_STATE_PLAYING);
        QVERIFY(gst_element_get_state(receiver.pipeline, nullptr, nullptr, 2 * GST_SECOND) !=
                GST_STATE_CHANGE_FAILURE);

        GstHarness *sender = senderFor("epoch", receiver.baseTime());
        QCOMPARE(gst_harness_push(sender, twentyMs(0)), GST_FLOW_OK);
        GstBuffer *first = receiver.pull();
        QVERIFY(first);
        gst_buffer_unref(first);

        // A seek in the deck: the sender sees a new segment.
        GstSegment segment;
        gst_segment_init(&segment, GST_FORMAT_TIME);
        QVERIFY(gst_harness_push_event(sender, gst_event_new_segment(&segment)));
        QCOMPARE(gst_harness_push(sender, twentyMs(10)), GST_FLOW_OK);
        GstBuffer *next = receiver.pull();
        QVERIFY(next);
        QCOMPARE(GST_BUFFER_PTS(next), 200 * GST_MSECOND);
        QVERIFY(GST_BUFFER_FLAG_IS_SET(next, GST_BUFFER_FLAG_DISCONT));
        gst_buffer_unref(next);

        std::lock_guard lock(seen.mutex);
        QVERIFY(!seen.events.contains(GST_EVENT_FLUSH_START));
        QVERIFY(!seen.events.contains(GST_EVENT_FLUSH_STOP));
        QCOMPARE(seen.events.count(GST_EVENT_SEGMENT), 2);
        QCOMPARE(seen.lastSegmentStart, 200 * GST_MSECOND);
        gst_harness_teardown(sender);
    }

    // The receiver reports its delivery latency plus the sender's.
    void reportsTheSendersLatency()
    {
        GstElement *source = gst_element_factory_make("tarnixaudiosrc", nullptr);
        g_object_set(source, "channel", "latency", "latency-time", guint64(10 * GST_MSECOND),
                     "buffer-time", guint64(200 * GST_MSECOND), nullptr);
        QVERIFY(gst_element_set_state(source, GST_STATE_PAUSED) != GST_STATE_CHANGE_FAILURE);
        GstHarness *sender = senderFor("latency", 0);
        GstEvent *latency = gst_event_new_latency(30 * GST_MSECOND);
        gst_element_send_event(sender->element, latency);

        GstQuery *query = gst_query_new_latency();
        GstPad *pad = gst_element_get_static_pad(source, "src");
        QVERIFY(gst_pad_query(pad, query));
        gboolean live = FALSE;
        GstClockTime minimum = 0, maximum = 0;
        gst_query_parse_latency(query, &live, &minimum, &maximum);
        QVERIFY(live);
        QCOMPARE(minimum, 40 * GST_MSECOND);
        QCOMPARE(maximum, 230 * GST_MSECOND);
        gst_query_unref(query);
        gst_object_unref(pad);
        gst_harness_teardown(sender);
        gst_element_set_state(source, GST_STATE_NULL);
        gst_object_unref(source);
    }
};

QTEST_GUILESS_MAIN(TestAudioBridge)
#include "tst_audio_bridge.moc"
