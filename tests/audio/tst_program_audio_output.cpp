#include "audio/audio_elements.h"
#include "audio/program_audio_output.h"
#include "audio/program_level_timeline.h"
#include "pcm_probe.h"
#include "program_output_probe.h"
#include "kit/clip_generator.h"
#include "kit/log_capture.h"
#include "support/glib_criticals.h"
#include "support/refusing_element.h"

#include <gst/base/gstbasesink.h>

#include <QtTest>

#include <atomic>

using namespace tarnix;
using namespace tarnix::test;

namespace {

// A deck stand-in: any description ending in a bridge sender, on the shared
// system clock.
class Sender
{
public:
    explicit Sender(const QString &description)
    {
        m_pipeline = gst_parse_launch(description.toUtf8().constData(), nullptr);
        GstClock *clock = gst_system_clock_obtain();
        gst_pipeline_use_clock(GST_PIPELINE(m_pipeline), clock);
        gst_object_unref(clock);
    }
    ~Sender()
    {
        if (GstElement *sink = gst_bin_get_by_name(GST_BIN(m_pipeline), "sender")) {
            abortSender(sink);
            gst_object_unref(sink);
        }
        gst_element_set_state(m_pipeline, GST_STATE_NULL);
        gst_object_unref(m_pipeline);
    }
    GstElement *pipeline() const { return m_pipeline; }
    bool play()
    {
        return gst_element_set_state(m_pipeline, GST_STATE_PLAYING) != GST_STATE_CHANGE_FAILURE;
    }

private:
    GstElement *m_pipeline = nullptr;
};

QString toneSender(const char *channel, double frequency, double volume)
{
    return QStringLiteral("audiotestsrc wave=sine freq=%1 volume=%2 samplesperbuffer=480 ! %3 ! "
                          "tarnixaudiosink name=sender channel=%4 sync=true qos=false")
        .arg(frequency)
        .arg(volume)
        .arg(QLatin1String(kPcmCaps), QLatin1String(channel));
}

// Level messages of the program pipeline go to the timeline and off the bus.
GstBusSyncReply toTimeline(GstBus *, GstMessage *message, gpointer data)
{
    auto *timeline = static_cast<ProgramLevelTimeline *>(data);
    if (timeline->handleMessage(message)) {
        gst_message_unref(message);
        return GST_BUS_DROP;
    }
    return GST_BUS_PASS;
}

GstMessage *levelMessage(GstElement *source, GstClockTime runningTime, double left, double right)
{
    GValue peak = G_VALUE_INIT;
    g_value_init(&peak, GST_TYPE_ARRAY);
    for (double db : {left, right}) {
        GValue entry = G_VALUE_INIT;
        g_value_init(&entry, G_TYPE_DOUBLE);
        g_value_set_double(&entry, db);
        gst_value_array_append_and_take_value(&peak, &entry);
    }
    GstStructure *structure =
        gst_structure_new("level", "running-time", G_TYPE_UINT64, runningTime, nullptr);
    gst_structure_take_value(structure, "peak", &peak);
    return gst_message_new_element(GST_OBJECT(source), structure);
}

} // namespace

class TestProgramAudioOutput : public QObject
{
    Q_OBJECT

    QTemporaryDir m_media;
    QString m_twoTones;

private slots:
    void initTestCase()
    {
        tarnix::test::failOnGlibCriticals();
        gst_init(nullptr, nullptr);
        QVERIFY(registerAudioElements());
        // Two seconds of 440 Hz, then two seconds of 880 Hz.
        m_twoTones = m_media.filePath(QStringLiteral("two-tones.wav"));
        const QString body = QStringLiteral(
            "audiotestsrc freq=440 volume=0.3 num-buffers=100 samplesperbuffer=960 ! "
            "audio/x-raw,rate=48000,channels=2 ! c. "
            "audiotestsrc freq=880 volume=0.3 num-buffers=100 samplesperbuffer=960 ! "
            "audio/x-raw,rate=48000,channels=2 ! c. "
            "concat name=c ! audioconvert ! audio/x-raw,format=F32LE ! wavenc");
        QString error;
        QVERIFY2(testkit::generateClip(m_twoTones, body, &error), qPrintable(error));
    }

    void buildsTheNamedGraph()
    {
        ProgramAudioOutput output;
        QVERIFY(output.create(nullptr, nullptr, QString(), QString::fromLatin1(kAppSinkOutput)));
        QVERIFY(!output.create(nullptr, nullptr, QString(), QString::fromLatin1(kAppSinkOutput)));
        for (const char *name :
             {"program-audio-mixer", "program-audio-effects", "program-audio-delay",
              "program-audio-volume", "program-audio-level", "program-audio-output",
              "deck-a-audio-source", "deck-b-audio-source", "bgm-audio-source",
              "deck-a-take-volume", "deck-b-take-volume", "bgm-post-fader-audio-level"}) {
            GstElement *element = gst_bin_get_by_name(GST_BIN(output.pipeline()), name);
            QVERIFY2(element, name);
            gst_object_unref(element);
        }
        GstClock *system = gst_system_clock_obtain();
        GstClock *used = gst_pipeline_get_clock(GST_PIPELINE(output.pipeline()));
        QCOMPARE(used, system);
        gst_object_unref(used);
        gst_object_unref(system);
        // Left in NULL until the first service call starts it.
        GstState state = GST_STATE_VOID_PENDING;
        gst_element_get_state(output.pipeline(), &state, nullptr, 0);
        QCOMPARE(state, GST_STATE_NULL);
        QCOMPARE(output.statusKey(), QStringLiteral("settings.output.applied"));

        tarnix::testkit::LogCapture warnings(tarnix::testkit::LogCapture::warnings());
        ProgramAudioOutput broken;
        QVERIFY(!broken.create(nullptr, nullptr, QString(), QStringLiteral("no-such-sink-factory")));
        QVERIFY(warnings.contains(QStringLiteral("Failed to create dual-deck Program output:")));
        QVERIFY(!broken.setBgmControlVolume(1.0));
        QVERIFY(!broken.setDeckAudible(0, true));
    }

    void settersKeepTheirRanges()
    {
        ProgramAudioOutput output;
        QVERIFY(output.create(nullptr, nullptr, QString(), QString::fromLatin1(kAppSinkOutput)));
        GstBin *bin = GST_BIN(output.pipeline());
        auto number = [bin](const char *name, const char *property) {
            GstElement *element = gst_bin_get_by_name(bin, name);
            GValue value = G_VALUE_INIT;
            g_object_get_property(G_OBJECT(element), property, &value);
            const double result = G_VALUE_HOLDS_DOUBLE(&value) ? g_value_get_double(&value)
                                                               : double(g_value_get_int(&value));
            g_value_unset(&value);
            gst_object_unref(element);
            return result;
        };

        QVERIFY(output.setBgmControlVolume(3.0));
        QCOMPARE(number("bgm-control-volume", "volume"), 2.0);
        QVERIFY(output.setBgmControlVolume(-1.0));
        QCOMPARE(number("bgm-control-volume", "volume"), 0.0);
        QVERIFY(output.setMasterDelayFrames(4));
        QVERIFY(!output.setMasterDelayFrames(7));
        QCOMPARE(number("program-audio-delay", "frames"), 4.0);
        QVERIFY(output.setMasterEq(20.0, std::nan(""), -3.5));
        QCOMPARE(number("program-audio-effects", "band0"), 15.0);
        QCOMPARE(number("program-audio-effects", "band1"), 0.0);
        QCOMPARE(number("program-audio-effects", "band2"), -3.5);
        QVERIFY(output.setItemEq(0, -20.0, 2.0, 0.0));
        QCOMPARE(number("deck-a-item-effects", "band0"), -15.0);

        // The master stage is one product of fade, gain and mute.
        QVERIFY(output.setMasterVolume(1.5));
        QVERIFY(output.setProgramFade(0.5));
        QCOMPARE(number("program-audio-volume", "volume"), 0.75);
        QVERIFY(output.setMasterMuted(true));
        QCOMPARE(number("program-audio-volume", "volume"), 0.0);
        QVERIFY(output.setDeckAudible(1, true));
        QCOMPARE(number("deck-b-take-volume", "volume"), 1.0);
        GstElement *effects = gst_bin_get_by_name(bin, "deck-b-item-effects");
        gboolean audible = FALSE;
        g_object_get(effects, "vst-audible", &audible, nullptr);
        QVERIFY(audible);
        gst_object_unref(effects);
        QVERIFY(!output.setDeckAudible(2, true));
    }

    // A -20 dBFS tone on deck A is heard at -20 dBFS while the deck is
    // audible, is digital silence while it is not, and the master meter
    // releases its readings no earlier than their running time.
    void deckToneReachesTheOutputAtItsLevel()
    {
        ProgramLevelTimeline timeline;
        ProgramAudioOutput output;
        QVERIFY(output.create(toTimeline, &timeline, QString(), QString::fromLatin1(kAppSinkOutput)));
        timeline.setProgramElements(output.masterLevelElement(), output.bgmLevelElement(), nullptr);
        timeline.reset(nullptr, output.deckLevelElement(0), true);
        ProgramOutputProbe probe;
        probe.attach(output);
        std::atomic<int> tapped{0};
        std::atomic<std::int64_t> lastPresentation{0};
        output.setAudioTap([&](GstBuffer *, std::int64_t presentation) {
            ++tapped;
            lastPresentation = presentation;
        });
        QVERIFY(ProgramOutputProbe::start(output));

        Sender deck(toneSender("deck-a-audio", 1000.0, 0.1));
        QVERIFY(deck.play());
        QVERIFY(probe.waitFrames(9600));
        const std::size_t silentFrom = probe.frames();
        QVERIFY(probe.waitFrames(silentFrom + 9600));
        const std::vector<float> silent = probe.samples();
        for (std::size_t i = silentFrom * 2; i < silent.size(); ++i)
            QCOMPARE(silent[i], 0.0f);

        QVERIFY(output.setDeckAudible(0, true));
        const std::size_t audibleFrom = probe.frames() + 4800; // past the take
        QVERIFY(probe.waitFrames(audibleFrom + 24000));
        const double level = toneDbfs(leftRms(probe.samples(), audibleFrom, 24000));
        QVERIFY2(std::fabs(level + 20.0) <= 0.1, qPrintable(QString::number(level)));

        const auto programTime = pipelineRunningTime(output.pipeline());
        QVERIFY(programTime);
        const ProgramLevelTimeline::Snapshot snap = timeline.snapshot(std::nullopt, programTime);
        QVERIFY(snap.master.runningTime <= *programTime);
        QVERIFY(snap.master.runningTime + 100 * GST_MSECOND >= *programTime);
        QVERIFY2(std::fabs(snap.master.leftDb + 20.0) < 0.1, qPrintable(QString::number(snap.master.leftDb)));
        QVERIFY(std::fabs(snap.item.leftDb + 20.0) < 0.1);

        // Every buffer behind the master meter is tapped, due at most the
        // pipeline's latency after now.
        output.setAudioTap({});
        QVERIFY(tapped.load() > 10);
        const std::int64_t now100 =
            std::int64_t((*programTime + gst_element_get_base_time(output.pipeline())) / 100);
        QVERIFY(lastPresentation.load() > now100 - 1000000);
        QVERIFY(lastPresentation.load() < now100 + 2000000);

        QVERIFY(output.setDeckAudible(0, false));
        const std::size_t mutedFrom = probe.frames() + 4800;
        QVERIFY(probe.waitFrames(mutedFrom + 4800));
        const std::vector<float> muted = probe.samples();
        for (std::size_t i = mutedFrom * 2; i < muted.size(); ++i)
            QCOMPARE(muted[i], 0.0f);
    }

    // A live deck reports a latency; the program pipeline takes it into
    // its own, so the mixer waits for the deck's sound instead of dropping it.
    void senderLatencyIsTakenIntoTheProgram()
    {
        ProgramAudioOutput output;
        QVERIFY(output.create(nullptr, nullptr, QString(), QString::fromLatin1(kAppSinkOutput)));
        QVERIFY(ProgramOutputProbe::start(output));
        GstElement *appsink = gst_bin_get_by_name(GST_BIN(output.pipeline()), "program-audio-output");
        QTRY_VERIFY_WITH_TIMEOUT(gst_base_sink_get_latency(GST_BASE_SINK(appsink)) > 0, 5000);
        const GstClockTime before = gst_base_sink_get_latency(GST_BASE_SINK(appsink));

        Sender deck(QStringLiteral("audiotestsrc is-live=true samplesperbuffer=1920 ! %1 ! "
                                   "tarnixaudiosink name=sender channel=deck-a-audio sync=true "
                                   "qos=false")
                        .arg(QLatin1String(kPcmCaps)));
        QVERIFY(deck.play());
        GstElement *sender = gst_bin_get_by_name(GST_BIN(deck.pipeline()), "sender");
        QTRY_VERIFY_WITH_TIMEOUT(gst_base_sink_get_latency(GST_BASE_SINK(sender)) >= 40 * GST_MSECOND,
                                 5000);
        const GstClockTime senderLatency = gst_base_sink_get_latency(GST_BASE_SINK(sender));
        QTRY_COMPARE_WITH_TIMEOUT(gst_base_sink_get_latency(GST_BASE_SINK(appsink)),
                                  before + senderLatency, 5000);
        gst_object_unref(sender);
        gst_object_unref(appsink);
    }

    // A seek on the deck reaches the program as a flush and a new segment:
    // the new part is heard within 300 ms and plays on without a gap.
    void seekOnTheDeckIsHeardPromptly()
    {
        ProgramAudioOutput output;
        QVERIFY(output.create(nullptr, nullptr, QString(), QString::fromLatin1(kAppSinkOutput)));
        ProgramOutputProbe probe;
        probe.attach(output);
        QVERIFY(ProgramOutputProbe::start(output));
        QVERIFY(output.setDeckAudible(0, true));

        Sender deck(QStringLiteral("filesrc location=\"%1\" ! wavparse ! audioconvert ! "
                                   "audioresample ! %2 ! tarnixaudiosink name=sender "
                                   "channel=deck-a-audio sync=true qos=false")
                        .arg(m_twoTones, QLatin1String(kPcmCaps)));
        QVERIFY(deck.play());
        auto dominant = [](const std::vector<float> &samples, std::size_t frame) {
            const double low = tonePower(samples, frame, 960, 440.0);
            const double high = tonePower(samples, frame, 960, 880.0);
            return high > 10.0 * low ? 880 : low > 10.0 * high ? 440 : 0;
        };
        QVERIFY(QTest::qWaitFor(
            [&] {
                const std::vector<float> s = probe.samples();
                return s.size() / 2 >= 960 && dominant(s, s.size() / 2 - 960) == 440;
            },
            5000));

        GstClock *clock = gst_system_clock_obtain();
        const GstClockTime seekTime = gst_clock_get_time(clock);
        gst_object_unref(clock);
        const std::size_t seekFrame = probe.frames();
        QVERIFY(gst_element_seek_simple(deck.pipeline(), GST_FORMAT_TIME,
                                        GstSeekFlags(GST_SEEK_FLAG_FLUSH | GST_SEEK_FLAG_ACCURATE),
                                        2500 * GST_MSECOND));
        // 1.5 s of 880 Hz remain in the file.
        QVERIFY(probe.waitFrames(seekFrame + 48000 * 2));
        const std::vector<float> samples = probe.samples();
        const std::vector<ProgramOutputProbe::Arrival> arrivals = probe.arrivals();

        std::size_t first880 = 0;
        for (std::size_t frame = seekFrame; frame + 960 <= samples.size() / 2; frame += 240) {
            if (dominant(samples, frame) == 880) {
                first880 = frame;
                break;
            }
        }
        QVERIFY(first880 > 0);
        GstClockTime arrival = GST_CLOCK_TIME_NONE;
        for (const auto &a : arrivals) {
            if (a.firstFrame <= first880)
                arrival = a.clockTime;
        }
        QVERIFY2(arrival - seekTime <= 300 * GST_MSECOND,
                 qPrintable(QStringLiteral("%1 ms").arg((arrival - seekTime) / GST_MSECOND)));

        // From there on every 10 ms holds the tone (0.3 peak), up to the
        // last 100 ms of the file.
        const std::size_t end = first880 + 48000 * 14 / 10;
        QVERIFY(end <= samples.size() / 2);
        for (std::size_t frame = first880 + 960; frame + 480 <= end; frame += 480) {
            const double rms = leftRms(samples, frame, 480);
            QVERIFY2(rms > 0.15, qPrintable(QStringLiteral("dropout at %1 ms after the tone began")
                                                .arg((frame - first880) / 48)));
        }
    }

    // The pipeline is freed only after NULL is confirmed; otherwise it and
    // everything in it stay for the rest of the process.
    void releaseOnlyAfterConfirmedNull()
    {
        const ProgramAudioOutput::Timings quick{std::chrono::milliseconds(200)};
        auto output = std::make_unique<ProgramAudioOutput>(quick);
        QVERIFY(output->create(nullptr, nullptr, QString(), QString::fromLatin1(kAppSinkOutput)));
        QVERIFY(ProgramOutputProbe::start(*output));
        const auto freed = watchFinalization(output->pipeline());
        QVERIFY(output->canRelease());
        QVERIFY(output->requestNull());
        QVERIFY(!output->create(nullptr, nullptr, QString(), QString::fromLatin1(kAppSinkOutput)));
        output.reset();
        // The last reference may be a streaming thread's, let go as it ends.
        QTRY_VERIFY_WITH_TIMEOUT(freed->load(), 5000);

        tarnix::testkit::LogCapture warnings(tarnix::testkit::LogCapture::warnings());
        output = std::make_unique<ProgramAudioOutput>(quick);
        QVERIFY(output->create(nullptr, nullptr, QString(), QString::fromLatin1(kAppSinkOutput)));
        QVERIFY(ProgramOutputProbe::start(*output));
        GstElement *refuser = makeNullRefusingElement();
        gst_bin_add(GST_BIN(output->pipeline()), refuser);
        QVERIFY(gst_element_sync_state_with_parent(refuser));
        const auto retained = watchFinalization(output->pipeline());
        QVERIFY(!output->requestNull());
        QVERIFY(warnings.contains(QStringLiteral("program output")));
        output.reset();
        QVERIFY(warnings.contains(QStringLiteral(
            "Skipping unsafe Program audio output release after shutdown could not be confirmed")));
        QVERIFY(!retained->load());
    }

    void levelReadingsWaitForTheirRunningTime()
    {
        GstElement *item = gst_element_factory_make("level", "item-level");
        GstElement *master = gst_element_factory_make("level", "master-level");
        GstElement *bgm = gst_element_factory_make("level", "bgm-level");
        GstElement *other = gst_element_factory_make("level", "other-level");
        ProgramLevelTimeline timeline;
        timeline.setProgramElements(master, bgm, nullptr);
        timeline.reset(nullptr, item, true);

        auto feed = [&timeline](GstElement *source, GstClockTime at, double left, double right) {
            GstMessage *message = levelMessage(source, at, left, right);
            const bool taken = timeline.handleMessage(message);
            gst_message_unref(message);
            return taken;
        };
        QVERIFY(feed(master, 100 * GST_MSECOND, -12.0, -14.0));
        QVERIFY(feed(master, 200 * GST_MSECOND, 3.0, -80.0));
        QVERIFY(!feed(other, 150 * GST_MSECOND, -1.0, -1.0));

        auto snap = timeline.snapshot(std::nullopt, std::nullopt);
        QCOMPARE(snap.master, LevelReading{});
        snap = timeline.snapshot(std::nullopt, 199 * GST_MSECOND);
        QCOMPARE(snap.master, (LevelReading{100 * GST_MSECOND, -12.0, -14.0, false}));
        snap = timeline.snapshot(std::nullopt, 200 * GST_MSECOND);
        QCOMPARE(snap.master, (LevelReading{200 * GST_MSECOND, 0.0, -60.0, true}));

        // BGM is metered only while BGM metering is on.
        QVERIFY(feed(bgm, 250 * GST_MSECOND, -6.0, -6.0));
        QCOMPARE(timeline.snapshot(std::nullopt, GST_SECOND).bgm, LevelReading{});
        timeline.setBgmMetering(true);
        QVERIFY(feed(bgm, 260 * GST_MSECOND, -6.0, -6.0));
        QCOMPARE(timeline.snapshot(std::nullopt, GST_SECOND).bgm.leftDb, -6.0);

        // A new current deck drops what the old one left queued.
        QVERIFY(feed(item, 300 * GST_MSECOND, -3.0, -3.0));
        timeline.reset(nullptr, other, true);
        QCOMPARE(timeline.snapshot(std::nullopt, GST_SECOND).item, LevelReading{});
        QVERIFY(!feed(item, 310 * GST_MSECOND, -3.0, -3.0));

        for (GstElement *e : {item, master, bgm, other})
            gst_object_unref(e);
    }
};

QTEST_GUILESS_MAIN(TestProgramAudioOutput)
#include "tst_program_audio_output.moc"
