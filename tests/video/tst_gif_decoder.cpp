#include "playlist/media_duration_probe.h"
#include "video/gif_decoder_element.h"
#include "video/gif_timing.h"

#include <gst/app/gstappsink.h>

#include <QTemporaryDir>
#include <QtTest>

#include <vector>

using namespace tarnix;

namespace {

struct GifFrame {
    int delayCentiseconds = 10;
    QRgb colour = qRgb(255, 0, 0);
};

void appendWord(QByteArray &bytes, int value)
{
    bytes.append(char(value & 0xff));
    bytes.append(char((value >> 8) & 0xff));
}

// A 1x1 GIF whose every frame has its own two-colour table, the first entry
// being the frame's colour, so each frame can be told by its pixel.
QByteArray makeGif(const std::vector<GifFrame> &frames, bool trailer = true)
{
    QByteArray bytes("GIF89a");
    appendWord(bytes, 1);
    appendWord(bytes, 1);
    bytes.append(char(0x00)); // no global colour table
    bytes.append(char(0x00));
    bytes.append(char(0x00));
    for (const GifFrame &frame : frames) {
        bytes.append("\x21\xf9\x04\x00", 4);
        appendWord(bytes, frame.delayCentiseconds);
        bytes.append("\x00\x00", 2);
        bytes.append(char(0x2c));
        appendWord(bytes, 0);
        appendWord(bytes, 0);
        appendWord(bytes, 1);
        appendWord(bytes, 1);
        bytes.append(char(0x80)); // a local table of two colours
        bytes.append(char(qRed(frame.colour)));
        bytes.append(char(qGreen(frame.colour)));
        bytes.append(char(qBlue(frame.colour)));
        bytes.append("\x00\x00\x00", 3);
        bytes.append("\x02\x02\x44\x01\x00", 5); // one pixel of index 0
    }
    if (trailer)
        bytes.append(char(0x3b));
    return bytes;
}

QString writeFile(const QTemporaryDir &dir, const QString &name, const QByteArray &bytes)
{
    const QString path = dir.filePath(name);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        return {};
    return path;
}

struct DecodedFrame {
    GstClockTime pts = GST_CLOCK_TIME_NONE;
    GstClockTime duration = GST_CLOCK_TIME_NONE;
    QRgb colour = 0;
};

// filesrc ! decodebin ! appsink, pulled as fast as it decodes.
class GifPlayback
{
public:
    explicit GifPlayback(const QString &path)
    {
        const QByteArray description = "filesrc location=\"" + path.toUtf8()
                                       + "\" ! decodebin ! appsink name=sink sync=false "
                                         "caps=video/x-raw,format=BGRA";
        GError *error = nullptr;
        pipeline = gst_parse_launch(description.constData(), &error);
        if (error) {
            g_clear_error(&error);
            if (pipeline)
                gst_object_unref(pipeline);
            pipeline = nullptr;
            return;
        }
        sink = gst_bin_get_by_name(GST_BIN(pipeline), "sink");
    }
    ~GifPlayback()
    {
        if (!pipeline)
            return;
        gst_element_set_state(pipeline, GST_STATE_NULL);
        gst_object_unref(sink);
        gst_object_unref(pipeline);
    }

    bool preroll()
    {
        gst_element_set_state(pipeline, GST_STATE_PAUSED);
        return gst_element_get_state(pipeline, nullptr, nullptr, 10 * GST_SECOND) == GST_STATE_CHANGE_SUCCESS;
    }

    // Frames until the end of the stream (or an error, or ten seconds).
    std::vector<DecodedFrame> playToEnd()
    {
        gst_element_set_state(pipeline, GST_STATE_PLAYING);
        std::vector<DecodedFrame> frames;
        while (GstSample *sample = gst_app_sink_try_pull_sample(GST_APP_SINK(sink), 10 * GST_SECOND)) {
            GstBuffer *buffer = gst_sample_get_buffer(sample);
            DecodedFrame frame{GST_BUFFER_PTS(buffer), GST_BUFFER_DURATION(buffer), 0};
            GstMapInfo map;
            if (gst_buffer_map(buffer, &map, GST_MAP_READ)) {
                frame.colour = qRgba(map.data[2], map.data[1], map.data[0], map.data[3]);
                gst_buffer_unmap(buffer, &map);
            }
            frames.push_back(frame);
            gst_sample_unref(sample);
        }
        ended = gst_app_sink_is_eos(GST_APP_SINK(sink));
        return frames;
    }

    qint64 durationMs() const
    {
        gint64 duration = -1;
        return gst_element_query_duration(pipeline, GST_FORMAT_TIME, &duration) ? duration / GST_MSECOND : -1;
    }

    bool seekMs(qint64 position)
    {
        if (!gst_element_seek_simple(pipeline, GST_FORMAT_TIME,
                                     GstSeekFlags(GST_SEEK_FLAG_FLUSH | GST_SEEK_FLAG_ACCURATE),
                                     position * GST_MSECOND))
            return false;
        return gst_element_get_state(pipeline, nullptr, nullptr, 10 * GST_SECOND) == GST_STATE_CHANGE_SUCCESS;
    }

    QString errorText() const
    {
        GstBus *bus = gst_element_get_bus(pipeline);
        QString text;
        // The failed preroll may be seen before the element's error has
        // reached the bus.
        if (GstMessage *message = gst_bus_timed_pop_filtered(bus, 5 * GST_SECOND, GST_MESSAGE_ERROR)) {
            GError *error = nullptr;
            gst_message_parse_error(message, &error, nullptr);
            text = QString::fromUtf8(error->message);
            g_clear_error(&error);
            gst_message_unref(message);
        }
        gst_object_unref(bus);
        return text;
    }

    // The codec the stream says it is, as the playlist's facts read it.
    QString codecTag() const
    {
        GstPad *pad = gst_element_get_static_pad(sink, "sink");
        GstEvent *event = gst_pad_get_sticky_event(pad, GST_EVENT_TAG, 0);
        gst_object_unref(pad);
        QString codec;
        GstTagList *tags = nullptr;
        gchar *name = nullptr;
        if (event) {
            gst_event_parse_tag(event, &tags);
            if (gst_tag_list_get_string(tags, GST_TAG_VIDEO_CODEC, &name))
                codec = QString::fromUtf8(name);
            g_free(name);
            gst_event_unref(event);
        }
        return codec;
    }

    bool decodedByUs() const
    {
        bool found = false;
        GstIterator *it = gst_bin_iterate_recurse(GST_BIN(pipeline));
        GValue item = G_VALUE_INIT;
        while (gst_iterator_next(it, &item) == GST_ITERATOR_OK) {
            auto *element = GST_ELEMENT(g_value_get_object(&item));
            GstElementFactory *factory = gst_element_get_factory(element);
            if (factory && qstrcmp(GST_OBJECT_NAME(factory), "tarnixgifdec") == 0)
                found = true;
            g_value_reset(&item);
        }
        g_value_unset(&item);
        gst_iterator_free(it);
        return found;
    }

    GstElement *pipeline = nullptr;
    GstElement *sink = nullptr;
    bool ended = false;
};

constexpr GstClockTime ms(qint64 value)
{
    return GstClockTime(value) * GST_MSECOND;
}

} // namespace

class TestGifDecoder : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        gst_init(nullptr, nullptr);
        QVERIFY(registerGifDecoderElement());
        QVERIFY(dir.isValid());
    }

    void timingFromTheFileBlocks()
    {
        // 0 and 1 centisecond read as 100 ms, as image viewers show them.
        const QByteArray gif = makeGif({{0, 0}, {1, 0}, {5, 0}, {25, 0}});
        const auto timing = readGifTiming(gif);
        QVERIFY(timing);
        QCOMPARE(timing->width, 1);
        QCOMPARE(timing->frameDurationsMs, (std::vector<int>{100, 100, 50, 250}));
        QCOMPARE(timing->totalMs(), 500);

        // Cut inside the third frame: the two whole frames stay.
        const QByteArray cut = makeGif({{10, 0}, {10, 0}, {10, 0}}, false).chopped(4);
        QCOMPARE(readGifTiming(cut)->frameCount(), 2);

        QString error;
        QVERIFY(!readGifTiming(QByteArray("PNG\r\n..........."), &error));
        QCOMPARE(error, QStringLiteral("The file is not a GIF image."));
        QVERIFY(!readGifTiming(makeGif({}), &error));
        QCOMPARE(error, QStringLiteral("The GIF image has no frame."));
        QVERIFY(!readGifTiming(makeGif({}, false) + "\x99\x01\x02", &error));
        QCOMPARE(error, QStringLiteral("The GIF image is damaged."));
    }

    // Each frame at its own delay, composed by Qt, and an end of stream
    // after the last: the reader this replaces never ended its stream and
    // stamped every frame at zero.
    void playsEveryFrameAtItsDelayAndEnds()
    {
        const QRgb red = qRgb(255, 0, 0), green = qRgb(0, 255, 0), blue = qRgb(0, 0, 255);
        const QString path = writeFile(dir, "three.gif", makeGif({{10, red}, {20, green}, {5, blue}}));
        GifPlayback playback(path);
        QVERIFY(playback.pipeline);
        QVERIFY(playback.preroll());
        QVERIFY(playback.decodedByUs());
        QCOMPARE(playback.codecTag(), QStringLiteral("GIF"));
        QCOMPARE(playback.durationMs(), 350);
        const auto frames = playback.playToEnd();
        QVERIFY(playback.ended);
        QCOMPARE(frames.size(), size_t(3));
        QCOMPARE(frames[0].pts, ms(0));
        QCOMPARE(frames[1].pts, ms(100));
        QCOMPARE(frames[2].pts, ms(300));
        QCOMPARE(frames[1].duration, ms(200));
        QCOMPARE(frames[0].colour, red);
        QCOMPARE(frames[1].colour, green);
        QCOMPARE(frames[2].colour, blue);
    }

    // A seek into the middle of a frame shows that frame from the seek's
    // position, then goes on at the file's pace; seeking again works.
    void seeksIntoAFrame()
    {
        std::vector<GifFrame> frames;
        for (int i = 0; i < 5; ++i)
            frames.push_back({10, qRgb(40 * i, 0, 0)});
        GifPlayback playback(writeFile(dir, "five.gif", makeGif(frames)));
        QVERIFY(playback.preroll());
        QVERIFY(playback.seekMs(250));
        auto played = playback.playToEnd();
        QCOMPARE(played.size(), size_t(3));
        QCOMPARE(played[0].pts, ms(250));
        QCOMPARE(played[0].duration, ms(50));
        QCOMPARE(played[0].colour, qRgb(80, 0, 0));
        QCOMPARE(played[1].pts, ms(300));
        QCOMPARE(played[1].colour, qRgb(120, 0, 0));

        QVERIFY(playback.seekMs(0));
        played = playback.playToEnd();
        QCOMPARE(played.size(), size_t(5));
        QVERIFY(playback.ended);
    }

    void aSingleFrameIsAStill()
    {
        const QString path = writeFile(dir, "one.gif", makeGif({{0, qRgb(0, 0, 255)}}));
        GifPlayback playback(path);
        QVERIFY(playback.preroll());
        QCOMPARE(playback.durationMs(), -1);
        const auto frames = playback.playToEnd();
        QCOMPARE(frames.size(), size_t(1));
        QVERIFY(!GST_CLOCK_TIME_IS_VALID(frames[0].duration));
        QVERIFY(playback.ended);
    }

    // Media analysis goes through the same decoder: an animation is video
    // with its length, one frame is a still.
    void analysisTellsAnimationFromStill()
    {
        const auto animated = probeMediaDuration(
            writeFile(dir, "anim.gif", makeGif({{50, qRgb(1, 2, 3)}, {150, qRgb(3, 2, 1)}})));
        QVERIFY2(animated.success, qPrintable(animated.error));
        QCOMPARE(animated.mediaType, PlaylistMediaType::video);
        QCOMPARE(animated.durationMs.value_or(-1), 2000);

        const auto still = probeMediaDuration(writeFile(dir, "still.gif", makeGif({{0, qRgb(1, 2, 3)}})));
        QVERIFY2(still.success, qPrintable(still.error));
        QVERIFY(still.stillImage);
    }

    // A damaged file ends in an error with the reason, never in a stream
    // that does not end.
    void damagedFileIsAnError()
    {
        GifPlayback playback(writeFile(dir, "damaged.gif", makeGif({}, false) + "\x99\x01\x02"));
        QVERIFY(!playback.preroll());
        QCOMPARE(playback.errorText(), QStringLiteral("The GIF image is damaged."));
    }

private:
    QTemporaryDir dir;
};

QTEST_GUILESS_MAIN(TestGifDecoder)
#include "tst_gif_decoder.moc"
