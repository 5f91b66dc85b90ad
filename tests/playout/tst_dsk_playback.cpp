// The DSK layer on real GStreamer: a keyed PNG over a playing program as the
// program output sees it, a clip's sound that never reaches anything, and a
// DSK frame the compositor cannot draw.

#include "dual_deck_fixture.h"

#include "playout/dsk_deck.h"
#include "playout/dsk_playback.h"
#include "playout/dsk_texts.h"

#include <QImage>
#include <QTemporaryDir>
#include <QtTest>

#include <atomic>
#include <mutex>

using namespace tarnix;
using namespace tarnix::test;

namespace {

// The pixels at a quarter and at three quarters of the frame's width, on
// the middle row, of every composed frame.
struct TwoPoints {
    struct Seen {
        quint64 sequence = 0;
        QColor left;
        QColor right;
    };

    void add(const ProgramTapFrame &frame)
    {
        const quint8 *row = frame.pixels + qsizetype(frame.height / 2) * frame.stride;
        const auto at = [&](int x) { return QColor(row[4 * x + 2], row[4 * x + 1], row[4 * x + 0]); };
        std::lock_guard lock(mutex);
        seen.push_back({frame.sequence, at(frame.width / 4), at(frame.width * 3 / 4)});
    }
    std::vector<Seen> since(quint64 sequence) const
    {
        std::lock_guard lock(mutex);
        std::vector<Seen> out;
        for (const Seen &s : seen)
            if (s.sequence > sequence)
                out.push_back(s);
        return out;
    }
    Seen last() const
    {
        std::lock_guard lock(mutex);
        return seen.empty() ? Seen{} : seen.back();
    }

    mutable std::mutex mutex;
    std::vector<Seen> seen;
};

bool near(const QColor &a, const QColor &b)
{
    return std::abs(a.red() - b.red()) < 24 && std::abs(a.green() - b.green()) < 24
           && std::abs(a.blue() - b.blue()) < 24;
}

// Counts the buffers that reach a sink pad.
GstPadProbeReturn countBuffer(GstPad *, GstPadProbeInfo *, gpointer data)
{
    static_cast<std::atomic<int> *>(data)->fetch_add(1);
    return GST_PAD_PROBE_OK;
}

// Stands for a broken producer: each buffer is replaced by one four bytes
// shorter than its caps say.
GstPadProbeReturn truncateBuffer(GstPad *, GstPadProbeInfo *info, gpointer)
{
    GstBuffer *buffer = GST_PAD_PROBE_INFO_BUFFER(info);
    const gsize size = gst_buffer_get_size(buffer);
    if (size > 4) {
        GstBuffer *shorter = gst_buffer_copy_region(buffer, GST_BUFFER_COPY_ALL, 0, size - 4);
        gst_buffer_unref(buffer);
        GST_PAD_PROBE_INFO_DATA(info) = shorter;
    }
    return GST_PAD_PROBE_OK;
}

} // namespace

class TestDskPlayback : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    QString m_keyPng;

    // The program on air: a red clip playing.
    static bool redOnAir(PlayerFixture &f)
    {
        return f.cue(fileSource(media("solid-red-4s.mp4"))) == PreparationStatus::Ready
               && f.player->takeStandby(false, 1.0f) && f.player->play()
               && f.pollUntil([&] { return isRed(f.frames->last()); });
    }

    static bool prepared(PlayerFixture &f, DskPlayback *dsk, const DeckSource &source)
    {
        QString error;
        if (!dsk->prepare(source, &error)) {
            qWarning() << error;
            return false;
        }
        return f.pollUntil([&] { return dsk->status() != DskPlayer::Preparing; }, 10000)
               && dsk->status() == DskPlayer::Ready;
    }

private slots:
    void initTestCase()
    {
        gst_init(nullptr, nullptr);
        // Left half transparent, right half opaque green, at the program size.
        QImage key(320, 180, QImage::Format_ARGB32);
        key.fill(Qt::transparent);
        for (int y = 0; y < key.height(); ++y)
            for (int x = key.width() / 2; x < key.width(); ++x)
                key.setPixelColor(x, y, QColor(0, 255, 0));
        m_keyPng = m_dir.filePath("key.png");
        QVERIFY(key.save(m_keyPng));
    }

    // Where the key is transparent the program shows, where it is opaque the
    // key does, from the second output frame after the take at the latest;
    // hiding it leaves the program alone.
    void keyOverProgram()
    {
        PlayerFixture f;
        auto points = std::make_shared<TwoPoints>();
        f.options.frameTap = [points, tap = f.frames](const ProgramTapFrame &frame) {
            points->add(frame);
            tap->add(frame);
        };
        QVERIFY(f.start());
        QVERIFY(f.cue(fileSource(media("solid-red-4s.mp4"))) == PreparationStatus::Ready);
        QVERIFY(f.player->takeStandby(false, 1.0f));
        QVERIFY(f.player->play());
        QVERIFY(f.pollUntil([&] { return near(points->last().left, Qt::red); }));

        DskPlayback *dsk = f.player->dskPlayback();
        QVERIFY(dsk);
        QVERIFY(prepared(f, dsk, fileSource(m_keyPng)));
        QVERIFY(dsk->isPreparedStill());
        QVERIFY(near(points->last().right, Qt::red)); // nothing shows before the take

        const quint64 takenAt = points->last().sequence;
        QString error;
        QVERIFY2(dsk->take(false, false, 1.0f, &error), qPrintable(error));
        QVERIFY(f.pollUntil([&] { return near(points->last().right, QColor(0, 255, 0)); }));
        const std::vector<TwoPoints::Seen> after = points->since(takenAt);
        const auto firstKeyed = std::find_if(after.begin(), after.end(), [](const TwoPoints::Seen &s) {
            return near(s.right, QColor(0, 255, 0));
        });
        QVERIFY(firstKeyed != after.end());
        QVERIFY2(firstKeyed->sequence <= takenAt + 2, qPrintable(QString::number(firstKeyed->sequence - takenAt)));
        QVERIFY(near(points->last().left, Qt::red));
        QCOMPARE(dsk->status(), int(DskPlayer::Visible));

        // A half level mixes the key with the program.
        dsk->setLevel(0.5f);
        QVERIFY(f.pollUntil([&] {
            const QColor right = points->last().right;
            return right.red() > 100 && right.red() < 155 && right.green() > 100 && right.green() < 155;
        }));

        QVERIFY(dsk->hide(&error));
        QVERIFY(f.pollUntil([&] { return near(points->last().right, Qt::red); }));
        QCOMPARE(dsk->status(), int(DskPlayer::None));
        QCOMPARE(f.player->currentDeck(), 0);
        QVERIFY(f.player->isPlaying());
    }

    // A clip with sound in DSK: its audio is never linked into the player's
    // output, so the discard sink sees no buffer, and the isolation reads
    // back as written.
    void soundOfADskClipGoesNowhere()
    {
        PlayerFixture f;
        QVERIFY(f.start());
        DskPlayback *dsk = f.player->dskPlayback();
        std::atomic<int> discarded{0};
        QVERIFY(prepared(f, dsk, fileSource(media("h264-aac-3s.mp4"))));
        DskDeck *deck = dsk->deck(dsk->preparingIndex());
        GstPad *pad = gst_element_get_static_pad(deck->audioDiscard(), "sink");
        const gulong probe = gst_pad_add_probe(pad, GST_PAD_PROBE_TYPE_BUFFER, countBuffer, &discarded, nullptr);
        guint flags = 0;
        gboolean mute = FALSE;
        gdouble volume = 1.0;
        g_object_get(deck->playbin(), "flags", &flags, "mute", &mute, "volume", &volume, nullptr);
        QCOMPARE(flags & (1u << 1), 0u);
        QVERIFY(mute);
        QCOMPARE(volume, 0.0);

        QString error;
        QVERIFY(dsk->take(false, false, 1.0f, &error));
        QVERIFY(f.pollUntil([&] { return dsk->positionMs() > 1000; }));
        QCOMPARE(discarded.load(), 0);
        gst_pad_remove_probe(pad, probe);
        gst_object_unref(pad);
        QVERIFY(dsk->hide(&error));
    }

    // A DSK frame shorter than its caps: the layer leaves the program, the
    // failure is told once with its text, the DSK stops where it is and
    // the program keeps its pace.
    void undrawableFrameLeavesTheProgramRunning()
    {
        PlayerFixture f;
        QVERIFY(f.start());
        QVERIFY(redOnAir(f));
        DskPlayback *dsk = f.player->dskPlayback();
        QString error;
        QVERIFY(dsk->prepare(fileSource(media("solid-blue-4s.mp4")), &error));
        DskDeck *deck = dsk->deck(dsk->preparingIndex());
        GstPad *pad = gst_element_get_static_pad(deck->appsink(), "sink");
        gst_pad_add_probe(pad, GST_PAD_PROBE_TYPE_BUFFER, truncateBuffer, nullptr, nullptr);
        gst_object_unref(pad);
        QVERIFY(f.pollUntil([&] { return dsk->status() != DskPlayer::Preparing; }, 10000));
        QCOMPARE(dsk->status(), int(DskPlayer::Ready));
        QVERIFY(dsk->take(false, false, 1.0f, &error));

        QString text;
        QVERIFY(f.pollUntil([&] { return dsk->takeEvent(&text) == DskPlayer::Error; }));
        QCOMPARE(text, QString::fromUtf8(dsk_text::kCompositionFailed.english));
        QVERIFY(f.pollUntil([&] { return !dsk->isPlaying(); }));
        const quint64 renders = f.player->compositor()->renderCount();
        QVERIFY(f.pollUntil([&] { return f.player->compositor()->renderCount() > renders + 10; }));
        QVERIFY(isRed(f.frames->last()));
        QCOMPARE(dsk->takeEvent(&text), int(DskPlayer::NoEvent));
        QVERIFY(f.player->isPlaying());
    }

    // A missing file and a file without a picture fail with their texts;
    // an out point before the in point is refused at once.
    void preparationFailures()
    {
        PlayerFixture f;
        QVERIFY(f.start());
        DskPlayback *dsk = f.player->dskPlayback();
        QString error;
        QVERIFY(!dsk->prepare(fileSource(media("still.png"), 2000, 1000), &error));
        QCOMPARE(error, QString::fromUtf8(dsk_text::kInvalidRange.english));

        QVERIFY(dsk->prepare(fileSource(m_dir.filePath("missing.png")), &error));
        QVERIFY(f.pollUntil([&] { return dsk->status() != DskPlayer::Preparing; }));
        QCOMPARE(dsk->preparationError(), QString::fromUtf8(dsk_text::kMediaOffline.english));

        QVERIFY(dsk->prepare(fileSource(media("aac-audio-only.m4a")), &error));
        QVERIFY(f.pollUntil([&] { return dsk->status() != DskPlayer::Preparing; }, 10000));
        QCOMPARE(dsk->preparationError(), QString::fromUtf8(dsk_text::kNoVideo.english));
        QVERIFY(!dsk->take(false, false, 1.0f, &error));
    }
};

QTEST_MAIN(TestDskPlayback)
#include "tst_dsk_playback.moc"
