#include "audio/audio_elements.h"
#include "audio/tarnix_audio_sink.h"
#include "support/glib_criticals.h"

#include <gst/check/gstharness.h>

#include <QtTest>

using namespace tarnix;

namespace {

const char kBridgeCaps[] = "audio/x-raw,format=F32LE,rate=48000,channels=2,layout=interleaved";

GstBuffer *pcm(gsize bytes, GstClockTime pts)
{
    GstBuffer *buffer = gst_buffer_new_allocate(nullptr, bytes, nullptr);
    gst_buffer_memset(buffer, 0, 0, bytes);
    GST_BUFFER_PTS(buffer) = pts;
    return buffer;
}

GstHarness *startedSink()
{
    GstHarness *harness = gst_harness_new("tarnixaudiosink");
    gst_harness_set_src_caps_str(harness, kBridgeCaps);
    return harness;
}

QString channelOf(GstElement *element)
{
    gchar *channel = nullptr;
    g_object_get(element, "channel", &channel, nullptr);
    const QString result = QString::fromUtf8(channel);
    g_free(channel);
    return result;
}

// Plays `buffers` chunks of 20 ms through the sink and returns the wall time.
qint64 playTwentyMsChunks(int buffers, bool sync)
{
    const QString description =
        QStringLiteral("audiotestsrc num-buffers=%1 samplesperbuffer=960 ! %2 ! "
                       "tarnixaudiosink name=out sync=%3")
            .arg(buffers)
            .arg(QString::fromLatin1(kBridgeCaps), sync ? QStringLiteral("true")
                                                        : QStringLiteral("false"));
    GstElement *pipeline = gst_parse_launch(description.toUtf8().constData(), nullptr);
    QElapsedTimer clock;
    clock.start();
    gst_element_set_state(pipeline, GST_STATE_PLAYING);
    GstBus *bus = gst_element_get_bus(pipeline);
    GstMessage *done = gst_bus_timed_pop_filtered(
        bus, 5 * GST_SECOND, static_cast<GstMessageType>(GST_MESSAGE_EOS | GST_MESSAGE_ERROR));
    const qint64 elapsed = clock.elapsed();
    const bool eos = done && GST_MESSAGE_TYPE(done) == GST_MESSAGE_EOS;
    if (done)
        gst_message_unref(done);
    gst_object_unref(bus);
    gst_element_set_state(pipeline, GST_STATE_NULL);
    gst_object_unref(pipeline);
    return eos ? elapsed : -1;
}

} // namespace

class TestAudioSink : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        tarnix::test::failOnGlibCriticals();
        gst_init(nullptr, nullptr);
        QString error;
        QVERIFY2(registerAudioElements(&error), qPrintable(error));
        QVERIFY(registerAudioElements()); // idempotent
    }

    void describesItselfAsTheProgramSender()
    {
        GstElementFactory *factory = gst_element_factory_find("tarnixaudiosink");
        QVERIFY(factory);
        QCOMPARE(gst_plugin_feature_get_rank(GST_PLUGIN_FEATURE(factory)), guint(GST_RANK_NONE));
        auto meta = [factory](const char *key) {
            return QString::fromUtf8(gst_element_factory_get_metadata(factory, key));
        };
        QCOMPARE(meta(GST_ELEMENT_METADATA_LONGNAME), QStringLiteral("PROGRAM PCM sender"));
        QCOMPARE(meta(GST_ELEMENT_METADATA_KLASS), QStringLiteral("Sink/Audio"));
        QCOMPARE(meta(GST_ELEMENT_METADATA_AUTHOR), QStringLiteral("TARNIX"));

        GstElement *sink = gst_element_factory_create(factory, nullptr);
        GstPad *pad = gst_element_get_static_pad(sink, "sink");
        GstCaps *caps = gst_pad_query_caps(pad, nullptr);
        GstCaps *expected = gst_caps_from_string(kBridgeCaps);
        QVERIFY(gst_caps_is_equal(caps, expected));
        gst_caps_unref(expected);
        gst_caps_unref(caps);
        gst_object_unref(pad);

        gboolean sync = FALSE;
        g_object_get(sink, "sync", &sync, nullptr);
        QVERIFY(sync);
        QCOMPARE(channelOf(sink), QStringLiteral("default"));
        g_object_set(sink, "channel", "deck-a-audio", nullptr);
        QCOMPARE(channelOf(sink), QStringLiteral("deck-a-audio"));
        gst_object_unref(sink);
        gst_object_unref(factory);
    }

    void channelIsFixedWhileAttached()
    {
        GstHarness *harness = startedSink();
        g_object_set(harness->element, "channel", "other", nullptr);
        QCOMPARE(channelOf(harness->element), QStringLiteral("default"));
        gchar *attached = tarnix_audio_sink_dup_attached_channel(TARNIX_AUDIO_SINK(harness->element));
        QCOMPARE(QString::fromUtf8(attached), QStringLiteral("default"));
        g_free(attached);
        gst_harness_teardown(harness);
    }

    // Paced by the clock like a sound card: 10 chunks of 20 ms take about
    // 200 ms with sync on and far less without it.
    void rendersAgainstTheClock()
    {
        const qint64 synced = playTwentyMsChunks(10, true);
        const qint64 unsynced = playTwentyMsChunks(10, false);
        QVERIFY2(synced >= 170, qPrintable(QString::number(synced)));
        QVERIFY2(unsynced >= 0 && unsynced < synced, qPrintable(QString::number(unsynced)));
    }

    void rejectsMalformedPcm_data()
    {
        QTest::addColumn<int>("bytes");
        QTest::addColumn<bool>("timestamped");
        QTest::addColumn<bool>("timeSegment");
        QTest::addColumn<int>("flow");
        QTest::newRow("whole frames") << 7680 << true << true << int(GST_FLOW_OK);
        QTest::newRow("empty") << 0 << true << true << int(GST_FLOW_OK);
        QTest::newRow("partial frame") << 7682 << true << true << int(GST_FLOW_ERROR);
        QTest::newRow("no timestamp") << 7680 << false << true << int(GST_FLOW_ERROR);
        // Raw PCM read from a file comes in a byte segment: its timestamps
        // have no running time.
        QTest::newRow("byte segment") << 7680 << true << false << int(GST_FLOW_ERROR);
    }

    // Only PCM that someone listens to is checked; without a receiver the
    // sender drops whatever comes.
    void rejectsMalformedPcm()
    {
        QFETCH(int, bytes);
        QFETCH(bool, timestamped);
        QFETCH(bool, timeSegment);
        QFETCH(int, flow);
        GstElement *receiver = gst_element_factory_make("tarnixaudiosrc", nullptr);
        QVERIFY(gst_element_set_state(receiver, GST_STATE_PAUSED) != GST_STATE_CHANGE_FAILURE);
        GstHarness *harness = startedSink();
        if (!timeSegment) {
            GstSegment bytes;
            gst_segment_init(&bytes, GST_FORMAT_BYTES);
            QVERIFY(gst_harness_push_event(harness, gst_event_new_segment(&bytes)));
        }
        const GstFlowReturn result = gst_harness_push(
            harness, pcm(bytes, timestamped ? 0 : GST_CLOCK_TIME_NONE));
        gst_harness_teardown(harness);
        gst_element_set_state(receiver, GST_STATE_NULL);
        gst_object_unref(receiver);
        QCOMPARE(int(result), flow);
    }

    // abortSender cuts the sender off for good; a flush only for its length.
    void abortAndFlushStopTheSender()
    {
        GstHarness *harness = startedSink();
        QCOMPARE(gst_harness_push(harness, pcm(7680, 0)), GST_FLOW_OK);

        QVERIFY(gst_harness_push_event(harness, gst_event_new_flush_start()));
        QCOMPARE(gst_harness_push(harness, pcm(7680, 0)), GST_FLOW_FLUSHING);
        QVERIFY(gst_harness_push_event(harness, gst_event_new_flush_stop(TRUE)));
        GstSegment segment;
        gst_segment_init(&segment, GST_FORMAT_TIME);
        QVERIFY(gst_harness_push_event(harness, gst_event_new_segment(&segment)));
        QCOMPARE(gst_harness_push(harness, pcm(7680, 0)), GST_FLOW_OK);

        QVERIFY(abortSender(harness->element));
        QCOMPARE(gst_harness_push(harness, pcm(7680, 20 * GST_MSECOND)), GST_FLOW_FLUSHING);
        QCOMPARE(tarnix_audio_sink_dup_attached_channel(TARNIX_AUDIO_SINK(harness->element)),
                 nullptr);
        gst_harness_teardown(harness);
    }

    void abortSenderIgnoresOtherElements()
    {
        QVERIFY(!abortSender(nullptr));
        GstHarness *harness = gst_harness_new("fakesink");
        gst_harness_set_src_caps_str(harness, kBridgeCaps);
        QVERIFY(!abortSender(harness->element));
        QCOMPARE(gst_harness_push(harness, pcm(7680, 0)), GST_FLOW_OK);
        gst_harness_teardown(harness);
    }
};

QTEST_GUILESS_MAIN(TestAudioSink)
#include "tst_audio_sink.moc"
