// The ON AIR controller on the real dual-deck player with generated clips:
// a repeated clip followed by another, on the compositor's frame tap.

#include "dual_deck_fixture.h"

#include "audio/level_reading.h"
#include "kit/clip_generator.h"
#include "kit/item_request.h"
#include "kit/log_capture.h"
#include "control/controller_operations.h"
#include "playlist/playlist_model.h"
#include "playout/dual_deck_program_player.h"
#include "playout/program_playout_controller.h"
#include "playout/selection_holder.h"
#include "support/glib_criticals.h"

#include <QEventLoop>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <algorithm>
#include <memory>
#include <mutex>
#include <vector>

using namespace tarnix;
using namespace tarnix::test;

namespace {

// Runs a real event loop, so that precise timers fire on time, until the
// condition holds or the limit passes.
template <typename Condition>
bool runUntil(Condition condition, int limitMs)
{
    if (condition())
        return true;
    QEventLoop loop;
    QTimer check;
    check.setInterval(5);
    QObject::connect(&check, &QTimer::timeout, &loop, [&] {
        if (condition())
            loop.quit();
    });
    QTimer::singleShot(limitMs, &loop, &QEventLoop::quit);
    check.start();
    loop.exec();
    return condition();
}

// The moments at which deck pipelines ran out of picture, on the system
// clock that every pipeline runs on: the end of the last frame that reached
// a deck's sink before its end of stream.
class EndOfStreamLog
{
public:
    ~EndOfStreamLog()
    {
        for (const Watched &watched : m_watched) {
            gst_pad_remove_probe(watched.pad, watched.probe);
            gst_object_unref(watched.pad);
        }
    }

    // Watches the sinks of whatever pipelines the decks hold now.
    void watch(DualDeckPlayer *player)
    {
        for (int index = 0; index < 2; ++index) {
            if (DeckSourceSession *deck = player->deck(index))
                watchSink(deck->appsink());
        }
    }

    std::vector<GstClockTime> ends() const
    {
        std::lock_guard lock(m_shared->mutex);
        return m_shared->ends;
    }

private:
    struct Shared {
        std::mutex mutex;
        std::vector<GstClockTime> ends;
    };
    struct PadState {
        std::shared_ptr<Shared> shared;
        GstClockTime lastEnd = GST_CLOCK_TIME_NONE;
    };
    struct Watched {
        GstPad *pad = nullptr;
        gulong probe = 0;
    };

    void watchSink(GstElement *sink)
    {
        GstPad *pad = sink ? gst_element_get_static_pad(sink, "sink") : nullptr;
        if (!pad)
            return;
        // The reference kept on each watched pad also keeps its address unique.
        for (const Watched &watched : m_watched) {
            if (watched.pad == pad) {
                gst_object_unref(pad);
                return;
            }
        }
        const gulong probe = gst_pad_add_probe(
            pad, GstPadProbeType(GST_PAD_PROBE_TYPE_BUFFER | GST_PAD_PROBE_TYPE_EVENT_DOWNSTREAM), &onData,
            new PadState{m_shared}, [](gpointer state) { delete static_cast<PadState *>(state); });
        m_watched.push_back({pad, probe});
    }

    static GstPadProbeReturn onData(GstPad *pad, GstPadProbeInfo *info, gpointer data)
    {
        auto *state = static_cast<PadState *>(data);
        if (info->type & GST_PAD_PROBE_TYPE_BUFFER) {
            GstBuffer *buffer = GST_PAD_PROBE_INFO_BUFFER(info);
            GstEvent *event = gst_pad_get_sticky_event(pad, GST_EVENT_SEGMENT, 0);
            if (event && GST_BUFFER_PTS_IS_VALID(buffer)) {
                const GstSegment *segment = nullptr;
                gst_event_parse_segment(event, &segment);
                GstClockTime end = GST_BUFFER_PTS(buffer);
                if (GST_BUFFER_DURATION_IS_VALID(buffer))
                    end += GST_BUFFER_DURATION(buffer);
                if (GST_CLOCK_TIME_IS_VALID(segment->stop))
                    end = std::min<GstClockTime>(end, segment->stop);
                state->lastEnd = gst_segment_to_running_time(segment, GST_FORMAT_TIME, end);
            }
            if (event)
                gst_event_unref(event);
        } else if (GST_EVENT_TYPE(GST_PAD_PROBE_INFO_EVENT(info)) == GST_EVENT_EOS
                   && GST_CLOCK_TIME_IS_VALID(state->lastEnd)) {
            GstElement *sink = GST_ELEMENT(gst_pad_get_parent(pad));
            const GstClockTime base = sink ? gst_element_get_base_time(sink) : GST_CLOCK_TIME_NONE;
            if (sink)
                gst_object_unref(sink);
            if (GST_CLOCK_TIME_IS_VALID(base)) {
                std::lock_guard lock(state->shared->mutex);
                state->shared->ends.push_back(base + state->lastEnd);
            }
        }
        return GST_PAD_PROBE_OK;
    }

    std::shared_ptr<Shared> m_shared = std::make_shared<Shared>();
    std::vector<Watched> m_watched;
};

} // namespace

class TestProgramPlayoutPlayer : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        tarnix::test::failOnGlibCriticals();
        gst_init(nullptr, nullptr);
    }
    void repeatThenNextWithoutBackgroundFrames();
    void metersFollowTheAudioAsHeard();
};

void TestProgramPlayoutPlayer::repeatThenNextWithoutBackgroundFrames()
{
    // A clip of exactly three seconds, picture only, so that its end of
    // stream is the end of its last frame.
    QTemporaryDir dir;
    const QString red = dir.filePath(QStringLiteral("red-3s.mp4"));
    QString error;
    QVERIFY2(testkit::generateClip(red, testkit::solidClipBody({}), &error), qPrintable(error));

    testkit::LogCapture::Options autoLines;
    autoLines.prefix = QStringLiteral("AUTO PROGRAM");
    testkit::LogCapture log(autoLines);

    PlayerFixture fixture;
    auto owned = std::make_unique<DualDeckPlayer>(fixture.options);
    DualDeckPlayer *player = owned.get();
    QVERIFY(player->isInitialized());

    PlaylistModel model;
    const QList<quint64> ids =
        model.addItems({testkit::ItemRequest(red).playing().repeat(3, PlaylistRepeatEndMode::next),
                        testkit::ItemRequest(media("solid-blue-4s.mp4")).playing()});
    QCOMPARE(ids.size(), 2);

    ControllerOperations operations;
    SelectionHolder selection(&model, &operations);
    ProgramPlayoutController controller(std::make_unique<DualDeckProgramPlayer>(std::move(owned)), &model,
                                        &selection, nullptr, &operations, nullptr);
    QVERIFY(runUntil([&] {
        return player->isPresenterRunning() && fixture.frames->last().sequence > 0
               && player->audioOutput()->hasUsableDevice();
    }, 8000));
    const quint64 beforeTake = fixture.frames->last().sequence;

    EndOfStreamLog ends;
    const auto watching = [&](auto condition) {
        return [&, condition] {
            ends.watch(player);
            return condition();
        };
    };
    selection.selectByOperator(ids[0]);
    QVERIFY(controller.takeOnAir());
    QVERIFY(runUntil(watching([&] { return controller.onAirItemId() == ids[0]; }), 10000));
    QVERIFY(runUntil(watching([&] { return controller.onAirItemId() == ids[1]; }), 15000));
    QVERIFY(runUntil(watching([&] { return isBlue(fixture.frames->last()); }), 5000));
    (void)runUntil([] { return false; }, 200);

    const std::vector<TapPixel> frames = fixture.frames->since(beforeTake);
    const auto firstRed = std::find_if(frames.begin(), frames.end(), isRed);
    const auto firstBlue = std::find_if(frames.begin(), frames.end(), isBlue);
    QVERIFY(firstRed != frames.end() && firstBlue != frames.end() && firstRed < firstBlue);
    // From the first red frame on, the picture never falls back to the
    // background, at the loop points nor at the change to blue.
    QCOMPARE(std::count_if(firstRed, frames.end(), isBlack), 0);

    std::vector<GstClockTime> loopEnds;
    for (GstClockTime end : ends.ends()) {
        if (end > firstRed->clockNs && end < firstBlue->clockNs)
            loopEnds.push_back(end);
    }
    QVERIFY2(loopEnds.size() >= 3, qPrintable(QString::number(loopEnds.size())));
    const GstClockTime lastLoopEnd = *std::max_element(loopEnds.begin(), loopEnds.end());
    // Output frames composed after a moment and before the first blue one.
    const auto framesBetween = [&](GstClockTime after) {
        return std::count_if(firstRed, firstBlue, [after](const TapPixel &p) { return p.clockNs > after; });
    };
    // Blue is at most the second output frame after the last loop ran out,
    // and at most the sixth after nine seconds of red.
    const auto afterEnd = framesBetween(lastLoopEnd);
    QVERIFY2(afterEnd <= 1, qPrintable(QStringLiteral("blue came %1 frames after the end").arg(afterEnd + 1)));
    const auto afterNine = framesBetween(firstRed->clockNs + 9 * GST_SECOND);
    QVERIFY2(afterNine <= 5, qPrintable(QStringLiteral("blue came %1 frames after 9.0 s").arg(afterNine + 1)));

    QCOMPARE(log.count(QStringLiteral("AUTO PROGRAM repeat ")), 2);
    QCOMPARE(log.count(QStringLiteral("AUTO PROGRAM transition ")), 1);

    controller.shutdown();
    QVERIFY(runUntil([&] { return player->isShutdownFinished(); }, 5000));
    QVERIFY(player->isShutdownConfirmed());
}

void TestProgramPlayoutPlayer::metersFollowTheAudioAsHeard()
{
    // A tone 3 dB above full scale.
    QTemporaryDir dir;
    const QString loud = dir.filePath(QStringLiteral("loud.wav"));
    QString error;
    QVERIFY2(testkit::generateClip(loud, testkit::toneWavBody({94, 1.4125}), &error), qPrintable(error));

    PlayerFixture fixture;
    auto owned = std::make_unique<DualDeckPlayer>(fixture.options);
    DualDeckPlayer *player = owned.get();
    PlaylistModel model;
    const QList<quint64> ids = model.addItems({testkit::ItemRequest(loud).type(PlaylistMediaType::audio).playing()});
    QCOMPARE(ids.size(), 1);
    SelectionHolder selection(&model, nullptr);
    ProgramPlayoutController controller(std::make_unique<DualDeckProgramPlayer>(std::move(owned)), &model,
                                        &selection, nullptr, nullptr, nullptr);
    QVERIFY(QTest::qWaitFor([&] { return player->isPresenterRunning() && player->audioOutput()->hasUsableDevice(); },
                            8000));

    int readings = 0;
    int early = 0;
    int clippedAtZero = 0;
    QObject::connect(controller.audioController(), &ProgramAudioController::inputMeterChanged, &controller,
                     [&](double left, double right, bool clipped, quint64 runningTime) {
                         if (runningTime == 0)
                             return;
                         ++readings;
                         DeckSourceSession *deck = player->deck(player->currentDeck());
                         const std::optional<std::uint64_t> now =
                             deck ? pipelineRunningTime(deck->playbin()) : std::nullopt;
                         if (!now || runningTime > *now)
                             ++early;
                         if (clipped && left == 0.0 && right == 0.0)
                             ++clippedAtZero;
                     });
    // The master meter, on the program pipeline's timeline, shows the same
    // overload as full scale with its clip lamp lit.
    int masterReadings = 0;
    int masterEarly = 0;
    int masterAtZeroClipped = 0;
    QObject::connect(controller.audioController(), &ProgramAudioController::masterMeterChanged, &controller,
                     [&](double left, double right, bool clipLit, quint64 runningTime) {
                         if (runningTime == 0)
                             return;
                         ++masterReadings;
                         const std::optional<std::uint64_t> now =
                             pipelineRunningTime(player->audioOutput()->pipeline());
                         if (!now || runningTime > *now)
                             ++masterEarly;
                         if (clipLit && left == 0.0 && right == 0.0)
                             ++masterAtZeroClipped;
                     });
    selection.selectByOperator(ids[0]);
    QVERIFY(controller.takeOnAir());
    QVERIFY(QTest::qWaitFor([&] { return readings >= 50 && masterAtZeroClipped > 0; }, 10000));
    QCOMPARE(early, 0);
    QVERIFY(clippedAtZero > 0);
    QVERIFY(masterReadings > 0);
    QCOMPARE(masterEarly, 0);

    controller.shutdown();
    QVERIFY(QTest::qWaitFor([&] { return player->isShutdownFinished(); }, 5000));
}

QTEST_MAIN(TestProgramPlayoutPlayer)
#include "tst_program_playout_player.moc"
