// Every meter of the player posts a reading every 5 ms while sound flows.
// What the player's bus handler takes off the bus must be gone afterwards:
// counted with GStreamer's own leak tracer, which this test switches on for
// messages before GStreamer starts.

#include "dual_deck_fixture.h"

#include "support/glib_criticals.h"

using namespace tarnix;
using namespace tarnix::test;

namespace {

// Level readings still alive, as the leak tracer sees them; -1 without it.
int liveLevelMessages()
{
    GList *tracers = gst_tracing_get_active_tracers();
    GstTracer *leaks = nullptr;
    for (GList *l = tracers; l; l = l->next) {
        if (!leaks && g_str_has_prefix(G_OBJECT_TYPE_NAME(l->data), "GstLeaksTracer"))
            leaks = GST_TRACER(gst_object_ref(l->data));
    }
    g_list_free_full(tracers, gst_object_unref);
    if (!leaks)
        return -1;
    GstStructure *live = nullptr;
    g_signal_emit_by_name(leaks, "get-live-objects", &live);
    gst_object_unref(leaks);
    if (!live)
        return -1;
    int count = 0;
    const GValue *list = gst_structure_get_value(live, "live-objects-list");
    for (guint i = 0; list && i < gst_value_list_get_size(list); ++i) {
        const GstStructure *info = gst_value_get_structure(gst_value_list_get_value(list, i));
        const GValue *object = info ? gst_structure_get_value(info, "object") : nullptr;
        if (!object || !G_VALUE_HOLDS(object, GST_TYPE_MESSAGE))
            continue;
        const GstStructure *body = gst_message_get_structure(GST_MESSAGE(g_value_get_boxed(object)));
        if (body && gst_structure_has_name(body, "level"))
            ++count;
    }
    gst_structure_free(live);
    return count;
}

} // namespace

class TestDualDeckMeterMessages : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        qputenv("GST_TRACERS", "leaks(filters=GstMessage)");
        tarnix::test::failOnGlibCriticals();
        gst_init(nullptr, nullptr);
        QVERIFY2(liveLevelMessages() >= 0, "the leak tracer is not available");
    }

    // Two seconds of a clip with sound on air: some six hundred readings
    // from the deck and the program meters, none of them kept.
    void readingsDoNotOutliveTheBus()
    {
        PlayerFixture f;
        QVERIFY(f.start());
        QVERIFY(f.pollUntil([&] { return f.player->audioOutput()->hasUsableDevice(); }, 5000));
        QCOMPARE(f.cue(fileSource(media("h264-aac-3s.mp4"))), PreparationStatus::Ready);
        QVERIFY(f.player->takeStandby(false, 1.0f));
        QVERIFY(f.player->play());
        QVERIFY(f.pollUntil([&] { return f.player->positionMs() >= 2000; }, 8000));
        // The tracer's list of live objects must not be read while streaming
        // threads free readings: a message freed between the tracer's listing
        // and its reference would be revived and freed twice. With the deck
        // paused and its position still for a while, no reading is made or
        // dropped any more; those still queued are allowed for.
        QVERIFY(f.player->pause());
        qint64 last = -1;
        int still = 0;
        QVERIFY(f.pollUntil(
            [&] {
                const qint64 now = f.player->positionMs();
                still = now == last ? still + 1 : 0;
                last = now;
                return still >= 20;
            },
            8000));
        const int live = liveLevelMessages();
        QVERIFY2(live >= 0 && live < 50, qPrintable(QStringLiteral("%1 level messages alive").arg(live)));
    }
};

QTEST_MAIN(TestDualDeckMeterMessages)
#include "tst_dual_deck_meter_messages.moc"
