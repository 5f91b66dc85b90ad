// Background pipelines decode on streaming threads of their own at their
// owner's lowered priority, and those threads never serve another pipeline.

#include "shell/low_priority_threads.h"

#include "support/test_paths.h"

#include <gst/pbutils/pbutils.h>

#include <QMutex>
#include <QSet>
#include <QUrl>
#include <QtTest>

#include <thread>

using namespace tarnix;

namespace {

// The niceness of every thread that pushed a buffer through the pad.
struct SeenNiceness {
    QMutex mutex;
    QSet<int> values;

    static GstPadProbeReturn record(GstPad *, GstPadProbeInfo *, gpointer data)
    {
        auto *seen = static_cast<SeenNiceness *>(data);
        QMutexLocker lock(&seen->mutex);
        seen->values.insert(thisThreadsNiceness());
        return GST_PAD_PROBE_OK;
    }

    void watch(GstElement *element)
    {
        GstPad *pad = gst_element_get_static_pad(element, "src");
        gst_pad_add_probe(pad, GST_PAD_PROBE_TYPE_BUFFER, record, this, nullptr);
        gst_object_unref(pad);
    }

    QSet<int> taken()
    {
        QMutexLocker lock(&mutex);
        return std::exchange(values, {});
    }
};

// Plays a source ! queue ! sink pipeline to its end; the queue's thread and
// the source's are both streaming threads.
bool playToEnd(int nice, SeenNiceness *seen)
{
    GstElement *pipeline = gst_parse_launch(
        "audiotestsrc name=source num-buffers=20 ! queue name=queue ! fakesink sync=false", nullptr);
    if (!pipeline)
        return false;
    runStreamingThreadsAtNiceness(pipeline, nice);
    for (const char *name : {"source", "queue"}) {
        GstElement *element = gst_bin_get_by_name(GST_BIN(pipeline), name);
        seen->watch(element);
        gst_object_unref(element);
    }
    gst_element_set_state(pipeline, GST_STATE_PLAYING);
    GstBus *bus = gst_element_get_bus(pipeline);
    GstMessage *end =
        gst_bus_timed_pop_filtered(bus, 10 * GST_SECOND, GstMessageType(GST_MESSAGE_EOS | GST_MESSAGE_ERROR));
    const bool ended = end && GST_MESSAGE_TYPE(end) == GST_MESSAGE_EOS;
    if (end)
        gst_message_unref(end);
    gst_object_unref(bus);
    gst_element_set_state(pipeline, GST_STATE_NULL);
    gst_object_unref(pipeline);
    return ended;
}

void onSource(GstDiscoverer *, GstElement *source, gpointer data)
{
    static_cast<SeenNiceness *>(data)->watch(source);
}

} // namespace

class TestLowPriorityThreads : public QObject
{
    Q_OBJECT

    // Ten steps down, as far as the scheduler goes (a suite run under nice
    // starts nearer the bottom).
    static int lowered(int ordinary) { return std::min(ordinary + 10, 19); }

private slots:
    void initTestCase() { gst_init(nullptr, nullptr); }

    // A lowered pipeline's threads run lowered; an ordinary pipeline after
    // it (the program's, say) gets threads at the ordinary priority, though
    // GStreamer's threads come from one shared pool, and GLib gives every
    // thread of that pool the scheduling of whichever thread first made a
    // shared pool: here, the lowered worker.
    void loweredPipelinesKeepTheirThreadsToThemselves()
    {
        const int ordinary = thisThreadsNiceness();
        SeenNiceness seen;
        bool ended = false;
        std::thread worker([&] {
            lowerThisThreadsPriority(lowered(ordinary));
            ended = playToEnd(thisThreadsNiceness(), &seen);
        });
        worker.join();
        QVERIFY(ended);
        QCOMPARE(seen.taken(), QSet<int>{lowered(ordinary)});

        for (int round = 0; round < 3; ++round) {
            QVERIFY(playToEnd(0, &seen));
            QCOMPARE(seen.taken(), QSet<int>{ordinary});
        }
    }

    // A discoverer asked from a lowered worker reads the file on lowered
    // threads too.
    void discovererReadsOnLoweredThreads()
    {
        const int ordinary = thisThreadsNiceness();
        SeenNiceness seen;
        bool found = false;
        std::thread worker([&] {
            lowerThisThreadsPriority(lowered(ordinary));
            GstDiscoverer *discoverer = gst_discoverer_new(5 * GST_SECOND, nullptr);
            runDiscovererThreadsAtNiceness(discoverer, thisThreadsNiceness());
            g_signal_connect(discoverer, "source-setup", G_CALLBACK(onSource), &seen);
            const QByteArray uri =
                QUrl::fromLocalFile(QStringLiteral(TARNIX_TEST_MEDIA_DIR "/h264-aac-3s.mp4")).toEncoded();
            if (GstDiscovererInfo *info = gst_discoverer_discover_uri(discoverer, uri.constData(), nullptr)) {
                found = gst_discoverer_info_get_result(info) == GST_DISCOVERER_OK;
                g_object_unref(info);
            }
            g_object_unref(discoverer);
        });
        worker.join();
        QVERIFY(found);
        QCOMPARE(seen.taken(), QSet<int>{lowered(ordinary)});
    }
};

QTEST_GUILESS_MAIN(TestLowPriorityThreads)
#include "tst_low_priority_threads.moc"
