// The EDIT session on the real player with generated media: loading, the
// rules of the In and Out points, frame steps, the rewind scrub and its
// boundary, the nominal volume, unloading, and a player that cannot be made.

#include "control/controller_operations.h"
#include "audio/level_reading.h"
#include "edit/edit_session_controller.h"
#include "playlist/playlist_model.h"
#include "playout/dual_deck_program_player.h"
#include "playout/program_playout_controller.h"
#include "playout/selection_holder.h"
#include "playout/dual_deck_fixture.h"

#include "kit/clip_generator.h"

#include "kit/item_request.h"
#include "support/test_paths.h"

#include <QtTest>

#include <gst/gst.h>

using namespace tarnix;

namespace {

using test::media;

// A clip of 40 frames at 25 fps whose frame n is a flat grey of level
// 32 + 5n, so the program's picture tells which frame it shows.
constexpr int kNumberedFrames = 40;

bool writeNumberedClip(const QString &path, QString *error)
{
    const QString body = QStringLiteral(
        "appsrc name=src format=time caps=video/x-raw,format=GRAY8,width=320,height=180,framerate=25/1 ! "
        "videoconvert ! video/x-raw,format=I420 ! openh264enc gop-size=25 ! h264parse ! mp4mux");
    return testkit::generateClip(path, body, error, [](GstElement *pipeline) {
        GstElement *src = gst_bin_get_by_name(GST_BIN(pipeline), "src");
        for (int n = 0; n < kNumberedFrames; ++n) {
            GstBuffer *buffer = gst_buffer_new_allocate(nullptr, 320 * 180, nullptr);
            gst_buffer_memset(buffer, 0, guint8(32 + 5 * n), 320 * 180);
            GST_BUFFER_PTS(buffer) = gst_util_uint64_scale(n, GST_SECOND, 25);
            GST_BUFFER_DURATION(buffer) = gst_util_uint64_scale(1, GST_SECOND, 25);
            GstFlowReturn flow = GST_FLOW_OK;
            g_signal_emit_by_name(src, "push-buffer", buffer, &flow);
            gst_buffer_unref(buffer);
        }
        GstFlowReturn flow = GST_FLOW_OK;
        g_signal_emit_by_name(src, "end-of-stream", &flow);
        gst_object_unref(src);
    });
}

// The clip frame a program frame shows (the decoder reads the file as
// video range and the program expands it), -1 for anything else.
int shownFrame(const testkit::TapPixel &pixel)
{
    if (std::abs(pixel.r - pixel.g) > 12 || std::abs(pixel.g - pixel.b) > 12)
        return -1;
    const double level = pixel.g * 219.0 / 255.0 + 16.0;
    const int n = int(std::lround((level - 32.0) / 5.0));
    return n >= 0 && n < kNumberedFrames && std::abs(level - (32 + 5 * n)) < 2.5 ? n : -1;
}

// A session over one 12 s clip at 25 fps, with its tick and clock in the
// test's hands where it matters.
struct Rig {
    PlaylistModel model;
    qint64 now = 1000;
    std::unique_ptr<EditSessionController> session;
    quint64 clip = 0;

    explicit Rig(qint64 inPointMs = 0, bool failPlayer = false)
    {
        EditSessionController::Options options;
        options.tickInterval = std::chrono::milliseconds(5);
        options.clock = [this] { return now; };
        options.failPlayerCreation = failPlayer;
        options.player.videoSize = QSize(320, 180);
        session = std::make_unique<EditSessionController>(&model, nullptr, options);
        clip = model.addItems({testkit::ItemRequest(media("h264-aac-25fps-12s.mp4")).name("Clip").inPoint(inPointMs)})
                   .value(0);
    }

    bool loaded() { return QTest::qWaitFor([this] { return session->isLoaded(); }, 10000); }
    PlaylistItemSettings settings() const { return model.item(clip)->settings; }
    QString status() const { return session->statusText(); }
};

} // namespace

class TestEditSession : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { gst_init(nullptr, nullptr); }

    void loadsAtTheInPointAndUnloads()
    {
        Rig rig(2000);
        rig.session->loadItem(rig.clip);
        QCOMPARE(rig.status(), QStringLiteral("EDIT loading | Clip"));
        QCOMPARE(rig.model.editItemId(), rig.clip);
        QVERIFY(rig.loaded());
        QCOMPARE(rig.status(), QStringLiteral("EDIT loaded | Clip"));
        QTRY_VERIFY(qAbs(rig.session->player()->positionMs() - 2000) <= 40);
        QTRY_VERIFY(rig.session->durationMs() >= 11900);

        // The meters show what the operator hears: nothing while paused,
        // though the preroll and the seek ran sound through them.
        auto inputLeftDb = [&] {
            double levels[4];
            rig.session->player()->levels(&levels[0], &levels[1], &levels[2], &levels[3]);
            return levels[0];
        };
        QTest::qWait(60);
        QCOMPARE(inputLeftDb(), kLevelFloorDb);
        rig.session->play();
        QTRY_VERIFY(inputLeftDb() > kLevelFloorDb);
        rig.session->pause();
        QCOMPARE(inputLeftDb(), kLevelFloorDb);

        QVERIFY(rig.session->beginUnload(rig.clip));
        QTRY_COMPARE_WITH_TIMEOUT(rig.status(), QStringLiteral("EDIT unloaded."), 5000);
        QCOMPARE(rig.model.editItemId(), quint64(0));
        QCOMPARE(rig.session->loadedItemId(), quint64(0));
    }

    // The checks of In and Out in their order, each refusal leaving the
    // item as it was.
    void pointsFollowTheirRules()
    {
        Rig rig;
        const PlaylistItemSettings before = rig.settings();
        // ON AIR wins even before anything is loaded.
        rig.session->loadItem(rig.clip);
        QVERIFY(rig.loaded());
        QVERIFY(rig.model.setOnAirItem(rig.clip));
        rig.session->setInPointTime(1000);
        QCOMPARE(rig.status(), QStringLiteral("The In/Out points of an item currently on air cannot be changed."));
        QVERIFY(rig.session->statusIsError());
        QVERIFY(rig.model.setOnAirItem(0));

        rig.session->setOutPointTime(20000);
        QCOMPARE(rig.status(), QStringLiteral("Set the In/Out point within the media duration."));
        QCOMPARE(rig.settings(), before);

        rig.session->setInPointTime(10500);
        QCOMPARE(rig.status(), QStringLiteral("EDIT IN 00:00:10.50 | Clip"));
        QCOMPARE(rig.settings().inPointMs, qint64(10500));
        rig.session->setOutPointTime(9000);
        QCOMPARE(rig.status(), QStringLiteral("Set the Out point after the In point."));
        rig.session->setOutPointTime(11000);
        QCOMPARE(rig.settings().outPointMs, std::optional<qint64>(11000));
        rig.session->setInPointTime(11500);
        QCOMPARE(rig.status(), QStringLiteral("Set the In point before the Out point and the end of the media."));
        QCOMPARE(rig.settings().inPointMs, qint64(10500));

        QVERIFY(rig.model.setItemSettingsLocked(rig.clip, true));
        rig.session->setInPointTime(0);
        QCOMPARE(rig.status(), QStringLiteral("This item's settings are locked. Its In/Out points cannot be changed."));
        rig.session->setEndMode(PlaylistEndMode::repeat);
        QCOMPARE(rig.settings().endMode, before.endMode);
        QVERIFY(rig.model.setItemSettingsLocked(rig.clip, false));

        // Repeat options only with the repeat end mode.
        rig.session->setRepeatOptions(3, PlaylistRepeatEndMode::next);
        QCOMPARE(rig.status(), QStringLiteral("Could not save the repeat options."));
        rig.session->setEndMode(PlaylistEndMode::repeat);
        QCOMPARE(rig.status(), QStringLiteral("EDIT End Mode: Repeat | Clip"));
        rig.session->setRepeatOptions(3, PlaylistRepeatEndMode::next);
        QCOMPARE(rig.settings().repeatCount, 3);

        rig.session->setNominalVolume(-60);
        QCOMPARE(rig.status(), QStringLiteral("EDIT Nominal Volume: -6.0 dB | Clip"));
        QVERIFY(qAbs(rig.session->player()->nominalGain() - 0.501187) < 1e-6);
    }

    void frameStepsAddUpAndRewindStopsAtZero()
    {
        Rig rig;
        rig.session->loadItem(rig.clip);
        QVERIFY(rig.loaded());
        QTRY_COMPARE(rig.session->player()->frameRate(), 25.0);
        rig.session->stepFrames(1);
        rig.session->stepFrames(1);
        QCOMPARE(rig.session->positionMs(), qint64(80));
        QTRY_VERIFY(qAbs(rig.session->player()->positionMs() - 80) <= 20);

        rig.session->seek(300);
        QTRY_VERIFY(qAbs(rig.session->player()->positionMs() - 300) <= 40);
        rig.session->play();
        rig.session->startScanBackward();
        QCOMPARE(rig.session->scanDirection(), -1);
        QVERIFY(rig.status().startsWith(QStringLiteral("EDIT Rewind (position only) | ")));
        // The scrub runs at double speed on the session's clock; the player
        // stands paused where the scan began.
        const qint64 anchor = rig.session->player()->positionMs();
        rig.now += 50;
        QTRY_VERIFY(qAbs(rig.session->positionMs() - std::max<qint64>(0, anchor - 100)) <= 40);
        rig.now += 60000;
        QTRY_COMPARE(rig.status(), QStringLiteral("Scan boundary"));
        QCOMPARE(rig.session->scanDirection(), 0);
        QTRY_VERIFY(!rig.session->isPlaying());
    }

    // Points set in EDIT are what ON AIR plays: taken, the item starts at
    // its In point and goes OFF AIR at its Out point (end mode stop), each
    // within one output frame, on the program compositor's own picture.
    void onAirPlaysFromInToOut()
    {
        QTemporaryDir dir;
        const QString clip = dir.filePath(QStringLiteral("numbered.mp4"));
        QString error;
        QVERIFY2(writeNumberedClip(clip, &error), qPrintable(error));

        test::PlayerFixture fixture;
        auto owned = std::make_unique<DualDeckPlayer>(fixture.options);
        DualDeckPlayer *player = owned.get();
        QVERIFY(player->isInitialized());
        PlaylistModel model;
        const quint64 id = model.addItems({testkit::ItemRequest(clip).name("Numbered").playing()}).value(0);

        EditSessionController::Options options;
        options.player.videoSize = QSize(320, 180);
        EditSessionController edit(&model, nullptr, options);
        edit.loadItem(id);
        QVERIFY(QTest::qWaitFor([&] { return edit.isLoaded(); }, 10000));
        edit.setInPointTime(400);   // frame 10
        edit.setOutPointTime(1200);  // frame 30 begins here
        edit.setEndMode(PlaylistEndMode::stop);
        QCOMPARE(edit.statusText(), QStringLiteral("EDIT End Mode: Stop | Numbered"));
        QVERIFY(edit.beginUnload(id));

        ControllerOperations operations;
        SelectionHolder selection(&model, &operations);
        ProgramPlayoutController controller(std::make_unique<DualDeckProgramPlayer>(std::move(owned)), &model,
                                            &selection, nullptr, &operations, nullptr);
        // A take is refused until the program sound is up, as it is in the
        // application.
        QVERIFY(QTest::qWaitFor(
            [&] {
                return player->isPresenterRunning() && fixture.frames->last().sequence > 0
                       && (!player->audioOutput() || player->audioOutput()->hasUsableDevice());
            },
            8000));
        const quint64 beforeTake = fixture.frames->last().sequence;
        selection.selectByOperator(id);
        QVERIFY(controller.takeOnAir());
        QVERIFY(QTest::qWaitFor([&] { return controller.onAirItemId() == id; }, 10000));
        QVERIFY(QTest::qWaitFor([&] { return controller.onAirItemId() == 0; }, 10000));
        QVERIFY(QTest::qWaitFor([&] { return testkit::isBlack(fixture.frames->last()); }, 5000));

        std::vector<int> shown;
        for (const testkit::TapPixel &pixel : fixture.frames->since(beforeTake)) {
            const int n = shownFrame(pixel);
            if (n >= 0)
                shown.push_back(n);
        }
        QVERIFY(!shown.empty());
        QCOMPARE(shown.front(), 10);
        QVERIFY2(shown.back() == 29, qPrintable(QStringLiteral("last frame shown: %1").arg(shown.back())));
        // At 60 Hz each 25 fps frame stands for 2 or 3 output frames: the
        // last one is not cut short nor held on by more than one.
        const auto lastHeld = std::count(shown.begin(), shown.end(), 29);
        QVERIFY2(lastHeld >= 1 && lastHeld <= 4, qPrintable(QString::number(lastHeld)));

        controller.shutdown();
        QVERIFY(QTest::qWaitFor([&] { return player->isShutdownFinished(); }, 5000));
    }

    // A document has no media for the player and its settings are fixed by
    // the document: it is EDIT's to look at, and leaves at once for the
    // next item.
    void documentsAreEditedWithoutThePlayer()
    {
        Rig rig;
        QTemporaryDir dir;
        const quint64 pdf = rig.model.addItems({testkit::ItemRequest(testkit::touchFile(dir.filePath("talk.pdf")))
                                                    .name("Talk")
                                                    .source(PlaylistSourceType::pdf)
                                                    .type(PlaylistMediaType::pdf)})
                                .value(0);
        rig.session->loadItem(pdf);
        QCOMPARE(rig.status(), QStringLiteral("EDIT | Talk"));
        QCOMPARE(rig.model.editItemId(), pdf);
        QVERIFY(rig.session->hasItem() && !rig.session->isLoaded());
        rig.session->setInPointTime(1000);
        QCOMPARE(rig.status(), QStringLiteral("In/Out points can only be changed for file sources."));
        rig.session->setNominalVolume(-30);
        QCOMPARE(rig.model.item(pdf)->settings.nominalVolumeTenthsDb, 0);
        rig.session->loadItem(rig.clip);
        QCOMPARE(rig.model.editItemId(), rig.clip);
        QVERIFY(rig.loaded());
    }

    // A player that cannot be made leaves a session that only says so.
    void withoutAPlayerEditOnlyTells()
    {
        Rig rig(0, true);
        QVERIFY(rig.session->playerUnavailable());
        QCOMPARE(rig.status(), QStringLiteral("Could not create the EDIT player (ON AIR will continue)"));
        rig.session->loadItem(rig.clip);
        QCOMPARE(rig.status(), QStringLiteral("The EDIT player is unavailable (ON AIR will continue)"));
        QCOMPARE(rig.model.editItemId(), quint64(0));
    }
};

QTEST_MAIN(TestEditSession)
#include "tst_edit_session.moc"
