#include "audio/audio_effects_service.h"
#include "audio/audio_elements.h"
#include "pcm_probe.h"
#include "support/glib_criticals.h"

#include <gst/check/gstharness.h>

#include <QtTest>

#include <cstring>

using namespace tarnix;
using namespace tarnix::test;

namespace {

// Creates the element with its properties set before the harness starts it.
GstHarness *harnessFor(const QString &factory, const QString &slot = QString())
{
    GstElement *element = gst_element_factory_make(factory.toUtf8().constData(), nullptr);
    if (!slot.isEmpty())
        gst_util_set_object_arg(G_OBJECT(element), "slot", slot.toUtf8().constData());
    GstHarness *harness = gst_harness_new_with_element(element, "sink", "src");
    gst_object_unref(element);
    gst_harness_set_caps_str(harness, kPcmCaps, kPcmCaps);
    return harness;
}

// Pushes one second of a tone in 20 ms buffers and returns the gain in dB
// of the second half, when the filters have settled.
double measuredGainDb(GstHarness *harness, double frequency)
{
    const double amplitude = 0.1;
    std::vector<float> out;
    for (std::size_t first = 0; first < 48000; first += 960) {
        GstBuffer *in = sineBuffer(frequency, amplitude, first, 960,
                                   gst_util_uint64_scale(first, GST_SECOND, 48000));
        if (gst_harness_push(harness, in) != GST_FLOW_OK)
            return NAN;
        GstBuffer *pulled = gst_harness_pull(harness);
        appendSamples(out, pulled);
        gst_buffer_unref(pulled);
    }
    return toDb(leftRms(out, 24000, 24000) / (amplitude / std::sqrt(2.0)));
}

GstBuffer *patternBuffer(std::size_t bytes, GstBufferFlags flags)
{
    GstBuffer *buffer = gst_buffer_new_allocate(nullptr, bytes, nullptr);
    GstMapInfo map;
    gst_buffer_map(buffer, &map, GST_MAP_WRITE);
    for (std::size_t i = 0; i < bytes; ++i)
        map.data[i] = guint8(i * 7 + 3);
    gst_buffer_unmap(buffer, &map);
    GST_BUFFER_FLAG_SET(buffer, flags);
    GST_BUFFER_PTS(buffer) = 0;
    return buffer;
}

bool sameBytes(GstBuffer *a, GstBuffer *b)
{
    GstMapInfo ma, mb;
    gst_buffer_map(a, &ma, GST_MAP_READ);
    gst_buffer_map(b, &mb, GST_MAP_READ);
    const bool same = ma.size == mb.size && std::memcmp(ma.data, mb.data, ma.size) == 0;
    gst_buffer_unmap(a, &ma);
    gst_buffer_unmap(b, &mb);
    return same;
}

// Pushes an impulse followed by silence and returns the output frame at
// which it appears, or -1.
long impulseDelayFrames(GstHarness *harness, std::size_t frames)
{
    std::vector<float> out;
    for (std::size_t first = 0; first < frames; first += 960) {
        GstBuffer *buffer = gst_buffer_new_allocate(nullptr, 960 * 8, nullptr);
        gst_buffer_memset(buffer, 0, 0, 960 * 8);
        if (first == 0) {
            const float impulse[2] = {1.0f, 0.5f};
            gst_buffer_fill(buffer, 0, impulse, sizeof impulse);
        }
        GST_BUFFER_PTS(buffer) = gst_util_uint64_scale(first, GST_SECOND, 48000);
        gst_harness_push(harness, buffer);
        GstBuffer *pulled = gst_harness_pull(harness);
        appendSamples(out, pulled);
        gst_buffer_unref(pulled);
    }
    for (std::size_t i = 0; i < out.size() / 2; ++i) {
        if (out[2 * i] != 0.0f)
            return out[2 * i] == 1.0f && out[2 * i + 1] == 0.5f ? long(i) : -2;
    }
    return -1;
}

// A plug-in host stand-in that doubles every sample it is handed.
class DoublingService : public AudioEffectsService
{
public:
    bool inUse() const override { return true; }
    void process(AudioEffectsSlot, float *samples, std::size_t frames) override
    {
        for (std::size_t i = 0; i < frames * 2; ++i)
            samples[i] = samples[i] * 2.0f + 0.25f;
    }
};

} // namespace

class TestAudioElements : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        tarnix::test::failOnGlibCriticals();
        gst_init(nullptr, nullptr);
        QString error;
        QVERIFY2(registerAudioElements(&error), qPrintable(error));
    }

    void registersEveryElementAtRankNone()
    {
        for (const char *name : {"tarnixaudiosink", "tarnixaudiosrc", "tarnixaudiodelay",
                                 "tarnixaudioequalizer", "tarnixaudioeffects"}) {
            GstElementFactory *factory = gst_element_factory_find(name);
            QVERIFY2(factory, name);
            QCOMPARE(gst_plugin_feature_get_rank(GST_PLUGIN_FEATURE(factory)), guint(GST_RANK_NONE));
            QCOMPARE(QString::fromUtf8(
                         gst_element_factory_get_metadata(factory, GST_ELEMENT_METADATA_AUTHOR)),
                     QStringLiteral("TARNIX"));
            gst_object_unref(factory);
        }
    }

    // The item and master EQ of the program pipeline are effects elements;
    // they must equalise exactly as the plain equaliser does.
    void equalisesAtTheDesignedGains_data()
    {
        QTest::addColumn<QString>("factory");
        QTest::addColumn<QString>("slot");
        QTest::addColumn<QString>("band");
        QTest::addColumn<double>("gainDb");
        QTest::addColumn<double>("frequency");
        QTest::addColumn<double>("expectedDb");
        QTest::addColumn<double>("tolerance");
        const struct {
            const char *factory;
            const char *slot;
        } elements[] = {{"tarnixaudioequalizer", ""},
                        {"tarnixaudioeffects", "item"},
                        {"tarnixaudioeffects", "master"}};
        for (const auto &e : elements) {
            const QString tag = QString::fromLatin1(e.factory) +
                                (e.slot[0] ? QStringLiteral(" ") + QLatin1String(e.slot) : QString());
            auto row = [&](const char *what, const char *band, double gain, double freq,
                           double expected, double tolerance) {
                QTest::newRow(qPrintable(tag + QStringLiteral(": ") + QLatin1String(what)))
                    << QString::fromLatin1(e.factory) << QString::fromLatin1(e.slot)
                    << QString::fromLatin1(band) << gain << freq << expected << tolerance;
            };
            row("peak +6 at 2500 Hz", "band1", 6.0, 2500.0, 6.00, 0.05);
            row("peak +6 at 1 kHz", "band1", 6.0, 1000.0, 1.9, 0.05);
            row("low shelf +12 at 100 Hz", "band0", 12.0, 100.0, 6.0, 0.05);
            row("high shelf -9 at 10 kHz", "band2", -9.0, 10000.0, -4.5, 0.05);
        }
    }

    void equalisesAtTheDesignedGains()
    {
        QFETCH(QString, factory);
        QFETCH(QString, slot);
        QFETCH(QString, band);
        QFETCH(double, gainDb);
        QFETCH(double, frequency);
        QFETCH(double, expectedDb);
        QFETCH(double, tolerance);
        GstHarness *harness = harnessFor(factory, slot);
        g_object_set(harness->element, band.toUtf8().constData(), gainDb, nullptr);
        const double measured = measuredGainDb(harness, frequency);
        gst_harness_teardown(harness);
        QVERIFY2(std::fabs(measured - expectedDb) <= tolerance,
                 qPrintable(QStringLiteral("measured %1 dB").arg(measured, 0, 'f', 3)));
    }

    void flatFiltersPassGapsUntouched_data()
    {
        QTest::addColumn<QString>("factory");
        QTest::addColumn<QString>("slot");
        QTest::newRow("equalizer") << QStringLiteral("tarnixaudioequalizer") << QString();
        QTest::newRow("effects") << QStringLiteral("tarnixaudioeffects") << QStringLiteral("master");
        QTest::newRow("delay") << QStringLiteral("tarnixaudiodelay") << QString();
    }

    void flatFiltersPassGapsUntouched()
    {
        QFETCH(QString, factory);
        QFETCH(QString, slot);
        GstHarness *harness = harnessFor(factory, slot);
        GstBuffer *in = patternBuffer(7680, GST_BUFFER_FLAG_GAP);
        GstBuffer *reference = gst_buffer_copy_deep(in);
        QCOMPARE(gst_harness_push(harness, in), GST_FLOW_OK);
        GstBuffer *out = gst_harness_pull(harness);
        QVERIFY(GST_BUFFER_FLAG_IS_SET(out, GST_BUFFER_FLAG_GAP));
        QVERIFY(sameBytes(out, reference));
        gst_buffer_unref(out);
        gst_buffer_unref(reference);
        gst_harness_teardown(harness);
    }

    // A gap through an active filter is heard as silence, and the silence
    // stays marked GAP; a tone is never marked GAP.
    void activeEqMarksGapsBySilence()
    {
        GstHarness *harness = harnessFor(QStringLiteral("tarnixaudioequalizer"));
        g_object_set(harness->element, "band1", 6.0, nullptr);
        QCOMPARE(gst_harness_push(harness, patternBuffer(7680, GST_BUFFER_FLAG_GAP)), GST_FLOW_OK);
        GstBuffer *out = gst_harness_pull(harness);
        QVERIFY(GST_BUFFER_FLAG_IS_SET(out, GST_BUFFER_FLAG_GAP));
        std::vector<float> samples;
        appendSamples(samples, out);
        QCOMPARE(leftRms(samples, 0, 960), 0.0);
        gst_buffer_unref(out);

        QCOMPARE(gst_harness_push(harness, sineBuffer(1000.0, 0.5, 0, 960, 20 * GST_MSECOND)),
                 GST_FLOW_OK);
        out = gst_harness_pull(harness);
        QVERIFY(!GST_BUFFER_FLAG_IS_SET(out, GST_BUFFER_FLAG_GAP));
        gst_buffer_unref(out);
        gst_harness_teardown(harness);
    }

    void nanBandReadsBackZero()
    {
        GstElement *eq = gst_element_factory_make("tarnixaudioequalizer", nullptr);
        g_object_set(eq, "band0", std::nan(""), nullptr);
        double value = -1.0;
        g_object_get(eq, "band0", &value, nullptr);
        QCOMPARE(value, 0.0);
        gst_object_unref(eq);
    }

    void delayMovesByWholeVideoFrames()
    {
        GstElement *pipeline = gst_pipeline_new(nullptr);
        GstElement *delay = gst_element_factory_make("tarnixaudiodelay", "item-delay");
        gst_bin_add(GST_BIN(pipeline), delay);
        QVERIFY(setDelayFrames(pipeline, "item-delay", 3));
        QVERIFY(!setDelayFrames(pipeline, "item-delay", 7));
        QVERIFY(!setDelayFrames(pipeline, "missing", 2));
        QVERIFY(!setDelayFrames(nullptr, "item-delay", 2));
        int frames = -1;
        g_object_get(delay, "frames", &frames, nullptr);
        QCOMPARE(frames, 3);

        GstHarness *harness = gst_harness_new_with_element(delay, "sink", "src");
        gst_harness_set_caps_str(harness, kPcmCaps, kPcmCaps);
        QCOMPARE(impulseDelayFrames(harness, 9600), 4800L);
        QVERIFY(clearDelay(pipeline, "item-delay"));
        QCOMPARE(impulseDelayFrames(harness, 9600), 4800L);
        gst_harness_teardown(harness);
        gst_object_unref(pipeline);
    }

    // Rewriting the same delay keeps what is in the line; a new delay or a
    // clear empties it, heard as a short mute.
    void delayLineIsClearedOnlyByAChange()
    {
        GstHarness *harness = harnessFor(QStringLiteral("tarnixaudiodelay"));
        g_object_set(harness->element, "frames", 1, nullptr);
        auto pushTone = [harness](std::size_t first) {
            gst_harness_push(harness, sineBuffer(1000.0, 0.5, first, 1600,
                                                 gst_util_uint64_scale(first, GST_SECOND, 48000)));
            GstBuffer *out = gst_harness_pull(harness);
            std::vector<float> samples;
            appendSamples(samples, out);
            gst_buffer_unref(out);
            return leftRms(samples, 0, 1600);
        };
        QCOMPARE(pushTone(0), 0.0); // the line starts empty
        g_object_set(harness->element, "frames", 1, nullptr);
        QVERIFY(pushTone(1600) > 0.3);
        g_object_set(harness->element, "frames", 2, nullptr);
        QCOMPARE(pushTone(3200), 0.0);
        QCOMPARE(pushTone(4800), 0.0);
        QVERIFY(pushTone(6400) > 0.3);
        gst_harness_teardown(harness);
    }

    void effectsWithoutASlotRefuseToStart()
    {
        GstElement *pipeline = gst_parse_launch(
            "audiotestsrc num-buffers=1 ! audio/x-raw,format=F32LE,rate=48000,channels=2,"
            "layout=interleaved ! tarnixaudioeffects ! fakesink",
            nullptr);
        QVERIFY(pipeline);
        QCOMPARE(gst_element_set_state(pipeline, GST_STATE_PAUSED), GST_STATE_CHANGE_FAILURE);
        GstBus *bus = gst_element_get_bus(pipeline);
        GstMessage *message = gst_bus_pop_filtered(bus, GST_MESSAGE_ERROR);
        QVERIFY(message);
        GError *error = nullptr;
        gst_message_parse_error(message, &error, nullptr);
        QCOMPARE(QString::fromUtf8(error->message),
                 QStringLiteral("Audio effects require an explicit slot"));
        g_error_free(error);
        gst_message_unref(message);
        gst_object_unref(bus);
        gst_element_set_state(pipeline, GST_STATE_NULL);
        gst_object_unref(pipeline);
    }

    // With a plug-in host in use the EQ steps aside; the ITEM instance is
    // only the audible deck's, so a silent deck passes its sound as it is.
    void effectsRouteToThePluginHost()
    {
        DoublingService service;
        setAudioEffectsService(&service);
        auto run = [](const char *slot, bool audible, bool gapIn) {
            GstHarness *harness = harnessFor(QStringLiteral("tarnixaudioeffects"),
                                             QString::fromLatin1(slot));
            g_object_set(harness->element, "band1", 6.0, "vst-audible", audible, nullptr);
            GstBuffer *in = sineBuffer(1000.0, 0.5, 1, 960, 0);
            if (gapIn) {
                gst_buffer_memset(in, 0, 0, 960 * 8);
                GST_BUFFER_FLAG_SET(in, GST_BUFFER_FLAG_GAP);
            }
            gst_harness_push(harness, in);
            GstBuffer *out = gst_harness_pull(harness);
            std::vector<float> samples;
            appendSamples(samples, out);
            const bool gapOut = GST_BUFFER_FLAG_IS_SET(out, GST_BUFFER_FLAG_GAP);
            gst_buffer_unref(out);
            gst_harness_teardown(harness);
            return std::make_pair(samples[0], gapOut);
        };
        const float first = float(0.5 * std::sin(2.0 * std::acos(-1.0) * 1000.0 / 48000.0));
        QCOMPARE(run("master", false, false).first, first * 2.0f + 0.25f);
        QCOMPARE(run("item", true, false).first, first * 2.0f + 0.25f);
        QCOMPARE(run("item", false, false).first, first);
        const auto silentGap = run("item", false, true);
        QCOMPARE(silentGap.first, 0.0f);
        QVERIFY(silentGap.second);
        const auto pluginGap = run("master", false, true);
        QCOMPARE(pluginGap.first, 0.25f);
        QVERIFY(!pluginGap.second);
        setAudioEffectsService(nullptr);
    }
};

QTEST_GUILESS_MAIN(TestAudioElements)
#include "tst_audio_elements.moc"
