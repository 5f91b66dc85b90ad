// Playlist pictures from generated media: a frame of a video with its
// facts, waveforms and cover pictures of audio, stills fitted to the tile,
// the card for everything that fails, the pool's limits and shutdown, and
// the release rule of the pipelines.

#include "kit/log_capture.h"
#include "playlist/media_thumbnailer.h"
#include "playlist/thumbnail_caption.h"
#include "playlist/thumbnail_pipeline.h"
#include "playlist/thumbnail_worker.h"
#include "playlist/video_thumbnail.h"
#include "support/glib_criticals.h"
#include "support/refusing_element.h"
#include "support/test_paths.h"

#include <QBuffer>
#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

#include <mutex>
#include <thread>

#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

using namespace tarnix;

namespace {

QString media(const char *name)
{
    return QStringLiteral(TARNIX_TEST_MEDIA_DIR "/") + QString::fromUtf8(name);
}

// Colours compared with some room for the codec and the scaler.
bool near(QRgb pixel, QRgb expected, int tolerance = 40)
{
    return qAbs(qRed(pixel) - qRed(expected)) <= tolerance && qAbs(qGreen(pixel) - qGreen(expected)) <= tolerance
           && qAbs(qBlue(pixel) - qBlue(expected)) <= tolerance;
}

int pixelsOf(const QImage &image, QRgb colour)
{
    int count = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            count += near(image.pixel(x, y), colour, 2) ? 1 : 0;
    }
    return count;
}

constexpr QRgb kCardBackground = 0xff3d2023;
constexpr QRgb kWaveBackground = 0xff254d2c;
constexpr QRgb kWaveBars = 0xff4db858;

MediaThumbnailResult render(const QString &path, PlaylistMediaType type, bool albumArt = false,
                            const ThumbnailLimits &limits = {}, const AudioFactsProbe &probe = {})
{
    PendingThumbnail request;
    request.itemId = 1;
    request.path = path;
    request.mediaType = type;
    request.preferAlbumArt = albumArt;
    return renderThumbnail(request, limits, probe);
}

// An MP3 whose ID3 tag carries a cover picture of one colour. The tag has to
// be set before the muxer starts, which a launch line cannot do.
bool writeMp3WithCover(const QString &path, QRgb colour)
{
    QImage cover(64, 64, QImage::Format_RGB32);
    cover.fill(colour);
    QByteArray png;
    QBuffer device(&png);
    device.open(QIODevice::WriteOnly);
    cover.save(&device, "PNG");

    const QString line = QStringLiteral("audiotestsrc num-buffers=40 ! audio/x-raw,rate=44100,channels=1 ! "
                                        "lamemp3enc ! id3v2mux name=tags ! filesink location=\"%1\"")
                             .arg(path);
    GstElement *pipeline = gst_parse_launch(line.toUtf8().constData(), nullptr);
    if (!pipeline)
        return false;
    GstElement *tags = gst_bin_get_by_name(GST_BIN(pipeline), "tags");
    GstBuffer *buffer = gst_buffer_new_memdup(png.constData(), gsize(png.size()));
    GstCaps *caps = gst_caps_new_empty_simple("image/png");
    GstSample *sample = gst_sample_new(buffer, caps, nullptr, nullptr);
    gst_tag_setter_add_tags(GST_TAG_SETTER(tags), GST_TAG_MERGE_REPLACE, GST_TAG_IMAGE, sample, nullptr);
    gst_sample_unref(sample);
    gst_caps_unref(caps);
    gst_buffer_unref(buffer);
    gst_object_unref(tags);
    gst_element_set_state(pipeline, GST_STATE_PLAYING);
    GstBus *bus = gst_element_get_bus(pipeline);
    GstMessage *end = gst_bus_timed_pop_filtered(bus, 30 * GST_SECOND,
                                                 GstMessageType(GST_MESSAGE_EOS | GST_MESSAGE_ERROR));
    const bool written = end && GST_MESSAGE_TYPE(end) == GST_MESSAGE_EOS;
    if (end)
        gst_message_unref(end);
    gst_object_unref(bus);
    gst_element_set_state(pipeline, GST_STATE_NULL);
    gst_object_unref(pipeline);
    return written;
}

// A renderer that holds every request until it is cancelled (it looks at
// the flag as often as a real one would) and counts how many run at once.
struct HeldRenderer {
    std::mutex mutex;
    int running = 0;
    int mostAtOnce = 0;
    int started = 0;
    int leastNice = 100;

    MediaThumbnailer::Renderer function()
    {
        return [this](const PendingThumbnail &request) {
            const int nice = getpriority(PRIO_PROCESS, id_t(syscall(SYS_gettid)));
            std::unique_lock lock(mutex);
            leastNice = std::min(leastNice, nice);
            ++started;
            mostAtOnce = std::max(mostAtOnce, ++running);
            lock.unlock();
            while (!request.cancelled.load())
                std::this_thread::sleep_for(std::chrono::milliseconds(5));
            lock.lock();
            --running;
            MediaThumbnailResult result;
            result.error = QStringLiteral("Thumbnail generation was canceled.");
            return result;
        };
    }
    int startedCount()
    {
        std::lock_guard lock(mutex);
        return started;
    }
};

} // namespace

class TestMediaThumbnailer : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    std::unique_ptr<testkit::LogCapture> m_log;

private slots:
    void initTestCase()
    {
        tarnix::test::failOnGlibCriticals();
        gst_init(nullptr, nullptr);
        QVERIFY(m_dir.isValid());
    }

    // No test but the one that asks for it makes a pipeline that must be kept.
    void init()
    {
        testkit::LogCapture::Options options = testkit::LogCapture::warnings();
        options.category = QStringLiteral("PLAYLIST");
        m_log = std::make_unique<testkit::LogCapture>(options);
    }
    void cleanup()
    {
        if (QByteArray(QTest::currentTestFunction()) != "refusedNullStateKeepsThePipeline")
            QCOMPARE(m_log->find(QStringLiteral("retaining it to avoid freeing")), QString());
        m_log.reset();
    }

    // A frame from a tenth into the clip, scaled to the tile in the right
    // colours, delivered on the main thread with the clip's own facts.
    void videoFrameAndFacts_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<QRgb>("colour");
        QTest::addColumn<qint64>("durationMs");
        QTest::addColumn<QString>("codec");
        QTest::newRow("h264 red") << "solid-red-4s.mp4" << QRgb(0xffff0000) << qint64(4000) << "H.264";
        QTest::newRow("vp8 green") << "vp8-vorbis.webm" << QRgb(0xff00ff00) << qint64(1000) << "VP8";
    }
    void videoFrameAndFacts()
    {
        QFETCH(QString, file);
        QFETCH(QRgb, colour);
        QFETCH(qint64, durationMs);
        QFETCH(QString, codec);
        MediaThumbnailer thumbnailer;
        bool onMainThread = false;
        connect(&thumbnailer, &MediaThumbnailer::thumbnailReady, this,
                [&] { onMainThread = QThread::currentThread() == thread(); });
        QSignalSpy ready(&thumbnailer, &MediaThumbnailer::thumbnailReady);
        const quint64 request = thumbnailer.request(7, media(file.toUtf8().constData()), PlaylistMediaType::video);
        QVERIFY(ready.wait(20000));
        QVERIFY(onMainThread);
        QCOMPARE(ready.at(0).at(0).toULongLong(), quint64(7));
        const auto result = ready.at(0).at(1).value<MediaThumbnailResult>();
        QVERIFY2(result.success, qPrintable(result.error));
        QCOMPARE(result.requestId, request);
        QCOMPARE(result.image.size(), QSize(240, 136));
        QVERIFY(near(result.image.pixel(120, 68), colour));
        QCOMPARE(result.width, 320);
        QCOMPARE(result.height, 180);
        QCOMPARE(result.frameRate, 30.0);
        QVERIFY(result.durationMs && qAbs(*result.durationMs - durationMs) < 100);
        QCOMPARE(shortCodecName(result.videoCodec), codec);
        QCOMPARE(thumbnailer.pendingCount(), 0);
    }

    void seekTarget_data()
    {
        QTest::addColumn<std::optional<qint64>>("durationMs");
        QTest::addColumn<std::optional<qint64>>("targetMs");
        QTest::newRow("30 s clip") << std::optional<qint64>(30000) << std::optional<qint64>(1000);
        QTest::newRow("500 ms clip") << std::optional<qint64>(500) << std::optional<qint64>(100);
        QTest::newRow("5 s clip") << std::optional<qint64>(5000) << std::optional<qint64>(500);
        QTest::newRow("clip ends first") << std::optional<qint64>(80) << std::optional<qint64>();
        QTest::newRow("length unknown") << std::optional<qint64>() << std::optional<qint64>();
    }
    void seekTarget()
    {
        QFETCH(std::optional<qint64>, durationMs);
        QFETCH(std::optional<qint64>, targetMs);
        QCOMPARE(videoThumbnailSeekTargetMs(durationMs), targetMs);
    }

    // A waveform with or without the cover preference when there is no
    // cover; the card for audio too long to read; the time limit.
    void audioWaveforms()
    {
        const QString tone = media("tone-1s.wav");
        for (bool albumArt : {false, true}) {
            const MediaThumbnailResult wave = render(tone, PlaylistMediaType::audio, albumArt);
            QVERIFY2(wave.success, qPrintable(wave.error));
            QCOMPARE(wave.image.size(), QSize(240, 136));
            QVERIFY(near(wave.image.pixel(120, 68), kWaveBars, 2));    // a bar through the middle
            QVERIFY(near(wave.image.pixel(120, 133), kWaveBackground, 2));
            QVERIFY(pixelsOf(wave.image, kWaveBars) > 240 * 60);        // a full-scale tone: tall bars
            QCOMPARE(shortCodecName(wave.audioCodec), QStringLiteral("Uncompressed"));
            QVERIFY(wave.durationMs && qAbs(*wave.durationMs - 1000) < 50);
        }

        const AudioFactsProbe threeHours = [](const QString &path) {
            AudioFileFacts facts = probeAudioFile(path, std::chrono::seconds(5));
            facts.durationMs = qint64(3) * 3600 * 1000;
            return facts;
        };
        const MediaThumbnailResult longFile = render(tone, PlaylistMediaType::audio, false, {}, threeHours);
        QVERIFY(longFile.success);
        QVERIFY(near(longFile.image.pixel(2, 2), kCardBackground, 2));
        QCOMPARE(pixelsOf(longFile.image, kWaveBars), 0);
        QCOMPARE(longFile.durationMs, std::optional<qint64>(qint64(3) * 3600 * 1000));

        ThumbnailLimits noTime;
        noTime.waveformLimit = std::chrono::milliseconds(0);
        const MediaThumbnailResult late = render(tone, PlaylistMediaType::audio, false, noTime);
        QVERIFY(!late.success);
        QCOMPARE(late.error, QStringLiteral("Audio waveform generation timed out."));
    }

    // A cover picture in the tags is the picture when preferred, else the
    // waveform is.
    void albumArt()
    {
        const QString song = m_dir.filePath("covered.mp3");
        QVERIFY(writeMp3WithCover(song, 0xff2040e0));
        const MediaThumbnailResult cover = render(song, PlaylistMediaType::audio, true);
        QVERIFY2(cover.success, qPrintable(cover.error));
        QVERIFY(near(cover.image.pixel(120, 68), 0xff2040e0, 2));
        QCOMPARE(shortCodecName(cover.audioCodec), QStringLiteral("MP3"));
        const MediaThumbnailResult wave = render(song, PlaylistMediaType::audio, false);
        QVERIFY2(wave.success, qPrintable(wave.error));
        QVERIFY(pixelsOf(wave.image, kWaveBars) > 0);
    }

    // Stills keep their aspect inside the tile, whatever format they come in.
    void stillsFitTheTile_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<QSize>("size");
        QTest::addColumn<QPoint>("inside");
        QTest::addColumn<QPoint>("outside");
        QTest::newRow("landscape png") << "wide.png" << QSize(320, 180) << QPoint(120, 68) << QPoint(-1, -1);
        QTest::newRow("portrait png") << "tall.png" << QSize(60, 120) << QPoint(120, 68) << QPoint(40, 68);
        QTest::newRow("tiff") << "wide.tiff" << QSize(480, 120) << QPoint(120, 68) << QPoint(120, 20);
    }
    void stillsFitTheTile()
    {
        QFETCH(QString, file);
        QFETCH(QSize, size);
        QFETCH(QPoint, inside);
        QFETCH(QPoint, outside);
        QImage picture(size, QImage::Format_RGB32);
        picture.fill(0xff20c040);
        const QString path = m_dir.filePath(file);
        QVERIFY(picture.save(path));
        const MediaThumbnailResult still = render(path, PlaylistMediaType::stillImage);
        QVERIFY2(still.success, qPrintable(still.error));
        QCOMPARE(still.image.size(), QSize(240, 136));
        QCOMPARE(QSize(still.width, still.height), size);
        QVERIFY(near(still.image.pixel(inside), 0xff20c040, 12));
        if (outside.x() >= 0)
            QVERIFY(near(still.image.pixel(outside), 0xff000000, 2));
    }

    // Whatever cannot be pictured gets the card with the reason.
    void failuresGetTheCard_data()
    {
        QTest::addColumn<QString>("file");
        QTest::addColumn<PlaylistMediaType>("type");
        QTest::addColumn<QString>("error");
        QTest::newRow("noise as video") << "noise.mp4" << PlaylistMediaType::video << "Could not open the video.";
        QTest::newRow("noise as audio") << "noise.wav" << PlaylistMediaType::audio << "Could not open the audio.";
        QTest::newRow("noise as still") << "noise.png" << PlaylistMediaType::stillImage
                                        << "Could not read the still image.";
        QTest::newRow("presentation") << "deck.pptx" << PlaylistMediaType::presentation
                                      << "Could not export the first PowerPoint slide.";
        QTest::newRow("pdf") << "doc.pdf" << PlaylistMediaType::pdf << "Could not render the first PDF page.";
        QTest::newRow("unknown") << "noise.bin" << PlaylistMediaType::unknown << "Could not determine the media type.";
        QTest::newRow("no path") << "" << PlaylistMediaType::video << "The thumbnail request is invalid.";
    }
    void failuresGetTheCard()
    {
        QFETCH(QString, file);
        QFETCH(PlaylistMediaType, type);
        QFETCH(QString, error);
        QString path;
        if (!file.isEmpty()) {
            path = m_dir.filePath(file);
            QFile bytes(path);
            QVERIFY(bytes.open(QIODevice::WriteOnly));
            for (int i = 0; i < 8192; ++i)
                bytes.putChar(char((i * 7919) % 251));
        }
        const MediaThumbnailResult result = render(path, type);
        QVERIFY(!result.success);
        QCOMPARE(result.error, error);
        QCOMPARE(result.image.size(), QSize(240, 136));
        QVERIFY(near(result.image.pixel(2, 2), kCardBackground, 2));
        QCOMPARE(thumbnailTooltipLine(result), QStringLiteral("\nThumbnail: ") + error);
    }

    void captionFacts_data()
    {
        QTest::addColumn<QString>("tag");
        QTest::addColumn<QString>("shortName");
        QTest::newRow("avc") << "H.264 / AVC" << "H.264";
        QTest::newRow("hevc") << "H.265 / HEVC" << "H.265";
        QTest::newRow("aac") << "MPEG-4 AAC audio" << "MPEG-4 AAC";
        QTest::newRow("pcm") << "Uncompressed 16-bit PCM audio" << "Uncompressed";
        QTest::newRow("mp3") << "MPEG-1 Layer 3 (MP3)" << "MP3";
        QTest::newRow("unlisted") << " Theora " << "Theora";
    }
    void captionFacts()
    {
        QFETCH(QString, tag);
        QFETCH(QString, shortName);
        QCOMPARE(shortCodecName(tag), shortName);

        MediaThumbnailResult clip;
        clip.width = 1920;
        clip.height = 1080;
        clip.frameRate = 30000.0 / 1001.0;
        clip.durationMs = 3723500;
        clip.videoCodec = tag;
        clip.audioCodec = QStringLiteral("MPEG-4 AAC");
        QCOMPARE(thumbnailFactsLine(clip, -35),
                 QStringLiteral("\nRES 1920x1080@29.97  DUR 1:02:03  VOL -3.5dB  TYPE %1").arg(shortName));
        MediaThumbnailResult song;
        song.durationMs = 65000;
        song.audioCodec = QStringLiteral("MPEG-4 AAC audio");
        QCOMPARE(thumbnailFactsLine(song, -960), QStringLiteral("\nRES --  DUR 1:05  VOL OFF  TYPE MPEG-4 AAC"));
    }

    // Two pictures at a time; a cancel reaches a running request; shutdown
    // drops what waits, waits for what runs and answers nothing after.
    void poolLimitCancelAndShutdown()
    {
        HeldRenderer held;
        MediaThumbnailer::Options options;
        options.render = held.function();
        MediaThumbnailer thumbnailer(options);
        QSignalSpy ready(&thumbnailer, &MediaThumbnailer::thumbnailReady);
        for (quint64 item = 1; item <= 5; ++item)
            thumbnailer.request(item, QStringLiteral("/clip%1.mp4").arg(item), PlaylistMediaType::video);
        QTRY_COMPARE(held.startedCount(), 2);
        thumbnailer.cancel(1);
        thumbnailer.cancel(2);
        QTRY_COMPARE(ready.size(), 2);
        QTRY_COMPARE(held.startedCount(), 4);
        QVERIFY(ready.at(0).at(0).toULongLong() <= 2 && ready.at(1).at(0).toULongLong() <= 2);

        QElapsedTimer clock;
        clock.start();
        thumbnailer.shutdown();
        QVERIFY(clock.elapsed() < 2000);
        QCOMPARE(held.startedCount(), 4);
        QCOMPARE(held.mostAtOnce, 2);
        QVERIFY(held.leastNice >= 10);  // below the program output
        QCOMPARE(thumbnailer.request(9, QStringLiteral("/late.mp4"), PlaylistMediaType::video), quint64(0));
        QTest::qWait(50);
        QCOMPARE(ready.size(), 2);
    }

    // Shutting down while real pipelines run ends them early.
    void shutdownWithRunningPipelines()
    {
        MediaThumbnailer thumbnailer;
        QSignalSpy ready(&thumbnailer, &MediaThumbnailer::thumbnailReady);
        thumbnailer.request(1, media("h264-aac-3s.mp4"), PlaylistMediaType::video);
        thumbnailer.request(2, media("tone-1s.wav"), PlaylistMediaType::audio);
        thumbnailer.request(3, media("solid-blue-4s.mp4"), PlaylistMediaType::video);
        QElapsedTimer clock;
        clock.start();
        thumbnailer.shutdown();
        QVERIFY(clock.elapsed() < 10000);
        QTest::qWait(50);
        QCOMPARE(ready.size(), 0);
    }

    // A pipeline that refuses NULL is never freed, and says so.
    void refusedNullStateKeepsThePipeline()
    {
        GstElement *pipeline = gst_pipeline_new(nullptr);
        GstElement *refusing = tarnix::test::makeNullRefusingElement();
        QVERIFY(refusing);
        gst_bin_add(GST_BIN(pipeline), refusing);
        QCOMPARE(gst_element_set_state(pipeline, GST_STATE_READY), GST_STATE_CHANGE_SUCCESS);
        const auto freed = tarnix::test::watchFinalization(pipeline);
        QVERIFY(!releaseThumbnailPipeline(pipeline, std::chrono::milliseconds(100)));
        QVERIFY(!freed->load());
        QCOMPARE(m_log->texts(), QStringList{QString::fromUtf8(kThumbnailRefusedNullText)});
    }
};

QTEST_MAIN(TestMediaThumbnailer)
#include "tst_media_thumbnailer.moc"
