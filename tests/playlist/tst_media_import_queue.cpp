// Files to ready items: the queue's order, cancellation and batch report
// with a probe the test controls, and the discoverer's answers for real
// generated media.

#include "kit/clip_generator.h"
#include "playlist/media_import_queue.h"
#include "playlist/playlist_model.h"
#include "playlist/playlist_query_json.h"
#include "shell/gstreamer_runtime.h"
#include "support/test_paths.h"

#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

#include <atomic>
#include <mutex>
#include <condition_variable>

using namespace tarnix;

namespace {

QString media(const char *name)
{
    return QStringLiteral(TARNIX_TEST_MEDIA_DIR "/") + QString::fromUtf8(name);
}

// A probe that answers what the test put in for a file name, after the test
// lets it go; it counts how many analyses run at once.
struct ScriptedProbe {
    std::mutex mutex;
    std::condition_variable released;
    bool open = true;
    int running = 0;
    int mostAtOnce = 0;
    QHash<QString, MediaDurationProbeResult> answers;

    MediaDurationProbe function()
    {
        return [this](const QString &path) {
            std::unique_lock lock(mutex);
            ++running;
            mostAtOnce = std::max(mostAtOnce, running);
            released.wait(lock, [this] { return open; });
            --running;
            return answers.value(QFileInfo(path).fileName());
        };
    }
    void hold()
    {
        std::lock_guard lock(mutex);
        open = false;
    }
    void release()
    {
        {
            std::lock_guard lock(mutex);
            open = true;
        }
        released.notify_all();
    }
};

MediaDurationProbeResult video(qint64 ms)
{
    MediaDurationProbeResult r;
    r.success = true;
    r.mediaType = PlaylistMediaType::video;
    r.durationMs = ms;
    return r;
}

MediaDurationProbeResult still()
{
    MediaDurationProbeResult r;
    r.success = true;
    r.stillImage = true;
    r.mediaType = PlaylistMediaType::stillImage;
    return r;
}

MediaDurationProbeResult broken(const QString &text)
{
    MediaDurationProbeResult r;
    r.error = text;
    return r;
}

bool settle(MediaImportQueue &queue)
{
    return QTest::qWaitFor([&] {
        queue.poll();
        return !queue.isBusy();
    }, 20000);
}

} // namespace

class TestMediaImportQueue : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;

    QString file(const QString &name)
    {
        const QString path = m_dir.filePath(name);
        QFile f(path);
        if (!f.exists() && f.open(QIODevice::WriteOnly))
            f.write("x");
        return path;
    }

private slots:
    void initTestCase() { gst_init(nullptr, nullptr); }

    // Placeholders at once and in order; one analysis at a time; results
    // applied; the failures of the batch told once, in one signal.
    void batchBecomesItemsAndOneReport()
    {
        PlaylistModel model;
        ScriptedProbe probe;
        probe.answers = {{"a.mp4", video(4000)}, {"b.mp4", broken("An error occurred while analyzing the media.")},
                         {"c.png", still()}, {"d.mp4", video(1000)}, {"e.png", video(2000)}};
        MediaImportQueue queue(&model, {std::chrono::milliseconds(1), probe.function(), 0});
        QSignalSpy reports(&queue, &MediaImportQueue::importsFailed);
        probe.hold();
        const quint64 a = queue.enqueue(file("a.mp4"), 0);
        const quint64 b = queue.enqueue(file("b.mp4"), 0);
        const quint64 c = queue.enqueue(file("c.png"), 0, 3000);
        const quint64 gone = queue.enqueue(file("gone.mp4"), 0);
        const quint64 e = queue.enqueue(file("e.png"), 0, 3000);
        QVERIFY(a && b && c && gone && e);
        QCOMPARE(model.itemIds(model.activePlaylistNumber()), (QList<quint64>{a, b, c, gone, e}));
        QVERIFY(model.isPending(a) && model.isPending(e));
        QVERIFY(queue.isBusy());
        QVERIFY(!queue.enqueue(file("z.png"), 0, 0));  // a display time of nothing

        QFile::remove(m_dir.filePath("gone.mp4"));
        queue.poll();
        QCOMPARE(model.pendingState(a)->phase, qint32(PlaylistPendingPhase::Analyzing));
        QCOMPARE(model.pendingState(b)->phase, qint32(PlaylistPendingPhase::AnalysisWaiting));
        probe.release();
        QVERIFY(settle(queue));

        QCOMPARE(probe.mostAtOnce, 1);
        QCOMPARE(model.itemIds(model.activePlaylistNumber()), (QList<quint64>{a, c}));
        QCOMPARE(model.item(a)->mediaType, PlaylistMediaType::video);
        QCOMPARE(model.item(a)->settings.outPointMs, std::optional<qint64>(4000));
        QCOMPARE(model.item(c)->mediaType, PlaylistMediaType::stillImage);
        QCOMPARE(model.item(c)->settings.outPointMs, std::optional<qint64>(3000));
        QCOMPARE(reports.size(), 1);
        QCOMPARE(reports.at(0).at(0).toStringList(),
                 (QStringList{"b.mp4: An error occurred while analyzing the media.",
                              "gone.mp4: The media file does not exist.",
                              "e.png: The selected PNG/JPEG file is not a playable still image."}));
    }

    // An item removed while it waits or is analysed is dropped without a
    // word; cancelling everything leaves no placeholder behind.
    void removalAndCancellation()
    {
        PlaylistModel model;
        ScriptedProbe probe;
        probe.answers = {{"a.mp4", video(1000)}, {"b.mp4", video(1000)}, {"c.mp4", video(1000)}};
        MediaImportQueue queue(&model, {std::chrono::milliseconds(1), probe.function(), 0});
        QSignalSpy reports(&queue, &MediaImportQueue::importsFailed);
        probe.hold();
        const quint64 a = queue.enqueue(file("a.mp4"), 0);
        const quint64 b = queue.enqueue(file("b.mp4"), 0);
        queue.poll();  // a is analysed now
        QVERIFY(model.removeItem(a));
        QVERIFY(model.removeItem(b));
        probe.release();
        QVERIFY(settle(queue));
        QCOMPARE(model.count(), 0);
        QCOMPARE(reports.size(), 0);

        probe.hold();
        queue.enqueue(file("a.mp4"), 0);
        queue.enqueue(file("c.mp4"), 0);
        queue.poll();
        queue.cancelAll();
        QCOMPARE(model.count(), 0);
        QVERIFY(!queue.isBusy());
        probe.release();
        QTest::qWait(20);
        queue.poll();
        QCOMPARE(model.count(), 0);
        QCOMPARE(reports.size(), 0);
    }

    // The playlists query: keys in their order, ids as text, nulls for what
    // is not known, the pending status and the default tab name.
    void playlistsQueryShape()
    {
        PlaylistModel model;
        ScriptedProbe probe;
        probe.answers = {{"clip.mp4", video(12000)}};
        MediaImportQueue queue(&model, {std::chrono::milliseconds(1), probe.function(), 0});
        const QString clip = file("clip.mp4");
        const quint64 id = queue.enqueue(clip, 0);
        const QString pending = playlistsQueryJson(model);
        QVERIFY2(pending.contains(QStringLiteral("\"status\":\"analysing\",\"durationMs\":null,\"inPointMs\":0,"
                                                 "\"outPointMs\":null,")),
                 qPrintable(pending));
        QVERIFY(settle(queue));
        QCOMPARE(playlistsQueryJson(model),
                 QStringLiteral("{\"activePlaylistNumber\":1,\"playlists\":[{\"number\":1,\"name\":\"Playlist 1\","
                                "\"mode\":\"standard\",\"items\":[{\"id\":\"%1\",\"displayName\":\"clip.mp4\","
                                "\"filePath\":\"%2\",\"sourceType\":\"file\",\"mediaType\":\"video\","
                                "\"status\":\"ready\",\"durationMs\":12000,\"inPointMs\":0,\"outPointMs\":12000,"
                                "\"startMode\":\"pause\",\"endMode\":\"pause\"}]}]}")
                     .arg(id)
                     .arg(clip));
    }

    // GStreamer's discoverer on generated media: each kind, and the files
    // that must not become items.
    void discovererAnswers()
    {
        const QString tiny = m_dir.filePath("tiny.wav");  // 0.5 ms of sound
        QString error;
        QVERIFY2(testkit::generateClip(tiny, QStringLiteral("audiotestsrc num-buffers=1 samplesperbuffer=24 ! "
                                                            "audio/x-raw,rate=48000,channels=2 ! wavenc"),
                                       &error),
                 qPrintable(error));
        const QString noise = m_dir.filePath("noise.mp4");
        QFile bytes(noise);
        QVERIFY(bytes.open(QIODevice::WriteOnly));
        for (int i = 0; i < 4096; ++i)
            bytes.putChar(char((i * 7919) % 251));
        bytes.close();

        const MediaDurationProbeResult clip = probeMediaDuration(media("h264-aac-3s.mp4"));
        QVERIFY2(clip.success, qPrintable(clip.error));
        QCOMPARE(clip.mediaType, PlaylistMediaType::video);
        QVERIFY(clip.durationMs && qAbs(*clip.durationMs - 3000) < 100);

        const MediaDurationProbeResult tone = probeMediaDuration(media("tone-1s.wav"));
        QCOMPARE(tone.mediaType, PlaylistMediaType::audio);
        QVERIFY(tone.durationMs && qAbs(*tone.durationMs - 1000) < 50);

        const MediaDurationProbeResult picture = probeMediaDuration(media("still.png"));
        QVERIFY(picture.success && picture.stillImage && !picture.durationMs);
        QCOMPARE(picture.mediaType, PlaylistMediaType::stillImage);

        // A BMP is a still once the gdk-pixbuf decoder has its rank.
        const QString bitmap = m_dir.filePath("frame.bmp");
        QVERIFY2(testkit::generateClip(bitmap, QStringLiteral("videotestsrc num-buffers=1 ! "
                                                              "video/x-raw,format=BGR,width=64,height=36 ! avenc_bmp"),
                                       &error),
                 qPrintable(error));
        QVERIFY(rankStillImageDecoders());
        const MediaDurationProbeResult bmp = probeMediaDuration(bitmap);
        QVERIFY2(bmp.success && bmp.stillImage, qPrintable(bmp.error));

        const MediaDurationProbeResult shortSound = probeMediaDuration(tiny);
        QVERIFY(!shortSound.success);
        QCOMPARE(shortSound.error, QStringLiteral("Could not determine the media duration."));

        const MediaDurationProbeResult garbage = probeMediaDuration(noise);
        QVERIFY(!garbage.success);
        QVERIFY(!garbage.error.isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestMediaImportQueue)
#include "tst_media_import_queue.moc"
