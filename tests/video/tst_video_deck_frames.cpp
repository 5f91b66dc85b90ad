#include "support/glib_criticals.h"
#include "video/deck_frame_mailboxes.h"

#include <gst/app/gstappsink.h>
#include <gst/app/gstappsrc.h>

#include <QtTest>

using namespace tarnix;

namespace {

// appsrc feeding a deck-style appsink, so the test decides every frame.
struct FramePipeline {
    FramePipeline()
    {
        pipeline = gst_parse_launch(
            "appsrc name=src format=time caps=video/x-raw,format=RGBA,width=4,height=4,"
            "framerate=30/1 ! appsink name=sink max-buffers=2 drop=true sync=false "
            "enable-last-sample=false",
            nullptr);
        source = gst_bin_get_by_name(GST_BIN(pipeline), "src");
        sink = gst_bin_get_by_name(GST_BIN(pipeline), "sink");
    }
    ~FramePipeline()
    {
        gst_element_set_state(pipeline, GST_STATE_NULL);
        gst_object_unref(source);
        gst_object_unref(sink);
        gst_object_unref(pipeline);
    }
    void play() { gst_element_set_state(pipeline, GST_STATE_PLAYING); }
    void push(int frame)
    {
        GstBuffer *buffer = gst_buffer_new_allocate(nullptr, 4 * 4 * 4, nullptr);
        GST_BUFFER_PTS(buffer) = frame * GST_SECOND / 30;
        gst_app_src_push_buffer(GST_APP_SRC(source), buffer);
    }

    GstElement *pipeline = nullptr;
    GstElement *source = nullptr;
    GstElement *sink = nullptr;
};

int frameOf(const DeckFrameMailboxes &mailboxes, int deck)
{
    GstSample *sample = mailboxes.latestSample(deck);
    if (!sample)
        return -1;
    const int frame = int(
        gst_util_uint64_scale_round(GST_BUFFER_PTS(gst_sample_get_buffer(sample)), 30, GST_SECOND));
    gst_sample_unref(sample);
    return frame;
}

} // namespace

class TestVideoDeckFrames : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        tarnix::test::failOnGlibCriticals();
        gst_init(nullptr, nullptr);
    }

    void refusesWhatIsNotADeckAppsink()
    {
        DeckFrameMailboxes mailboxes;
        FramePipeline frames;
        QVERIFY(!mailboxes.attachDeck(2, frames.pipeline, frames.sink));
        QVERIFY(!mailboxes.attachDeck(-1, frames.pipeline, frames.sink));
        QVERIFY(!mailboxes.attachDeck(0, frames.pipeline, frames.source));
        QVERIFY(!mailboxes.attachDeck(0, frames.pipeline, nullptr));
        QVERIFY(!mailboxes.hasFrame(5));
        QCOMPARE(mailboxes.latestSample(5), nullptr);
    }

    // The preroll counts as the deck's first frame; later frames replace it
    // and only the newest is kept.
    void keepsOnlyTheNewestFrame()
    {
        DeckFrameMailboxes mailboxes;
        FramePipeline frames;
        QVERIFY(mailboxes.attachDeck(1, frames.pipeline, frames.sink));
        QVERIFY(mailboxes.attachDeck(1, frames.pipeline, frames.sink)); // same sink again
        QVERIFY(!mailboxes.hasFrame(1));

        gst_element_set_state(frames.pipeline, GST_STATE_PAUSED);
        frames.push(0);
        QTRY_VERIFY_WITH_TIMEOUT(mailboxes.hasFrame(1), 5000);
        QCOMPARE(frameOf(mailboxes, 1), 0);
        QVERIFY(!mailboxes.hasFrame(0));

        frames.play();
        for (int frame = 1; frame <= 5; ++frame)
            frames.push(frame);
        QTRY_COMPARE_WITH_TIMEOUT(frameOf(mailboxes, 1), 5, 5000);

        mailboxes.dropRetainedFrame(1);
        QVERIFY(!mailboxes.hasFrame(1));
        frames.push(6);
        QTRY_COMPARE_WITH_TIMEOUT(frameOf(mailboxes, 1), 6, 5000);
    }

    // After a detach, or after the sink moved to the other deck, frames reach
    // the appsink but no longer the old mailbox.
    void detachedDeckTakesNoMoreFrames_data()
    {
        QTest::addColumn<bool>("moveToOtherDeck");
        QTest::newRow("detach") << false;
        QTest::newRow("moved to deck 1") << true;
    }

    void detachedDeckTakesNoMoreFrames()
    {
        QFETCH(bool, moveToOtherDeck);
        DeckFrameMailboxes mailboxes;
        FramePipeline frames;
        QVERIFY(mailboxes.attachDeck(0, frames.pipeline, frames.sink));
        frames.play();
        frames.push(0);
        QTRY_VERIFY_WITH_TIMEOUT(mailboxes.hasFrame(0), 5000);
        const quint64 received = mailboxes.framesReceived(0);

        if (moveToOtherDeck)
            QVERIFY(mailboxes.attachDeck(1, frames.pipeline, frames.sink));
        else
            QVERIFY(mailboxes.detachDeck(0));
        frames.push(1);

        if (moveToOtherDeck) {
            QTRY_COMPARE_WITH_TIMEOUT(frameOf(mailboxes, 1), 1, 5000);
        } else {
            GstSample *direct = gst_app_sink_try_pull_sample(GST_APP_SINK(frames.sink),
                                                             5 * GST_SECOND);
            QVERIFY(direct);
            gst_sample_unref(direct);
        }
        QCOMPARE(mailboxes.framesReceived(0), received);
        QCOMPARE(frameOf(mailboxes, 0), 0); // the retained frame stays until dropped
    }
};

QTEST_GUILESS_MAIN(TestVideoDeckFrames)
#include "tst_video_deck_frames.moc"
