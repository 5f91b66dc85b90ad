// The ON AIR controller on the real dual-deck player with generated clips:
// a repeated clip followed by another, on the compositor's frame tap.

#include "dual_deck_fixture.h"

#include "audio/level_reading.h"
#include "control/controller_operations.h"
#include "playlist/playlist_model.h"
#include "playout/dual_deck_program_player.h"
#include "playout/program_playout_controller.h"
#include "playout/selection_holder.h"

#include <QTemporaryDir>
#include <QTest>

using namespace tarnix;
using namespace tarnix::test;

namespace {

QStringList *g_lines = nullptr;
QtMessageHandler g_previous = nullptr;

void keepAutoLines(QtMsgType type, const QMessageLogContext &context, const QString &text)
{
    if (g_lines && text.startsWith(QStringLiteral("AUTO PROGRAM")))
        g_lines->append(text);
    else if (g_previous && type >= QtWarningMsg)
        g_previous(type, context, text);
}

} // namespace

class TestProgramPlayoutPlayer : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { gst_init(nullptr, nullptr); }
    void repeatThenNextWithoutBackgroundFrames();
    void metersFollowTheAudioAsHeard();
};

void TestProgramPlayoutPlayer::repeatThenNextWithoutBackgroundFrames()
{
    QStringList lines;
    g_lines = &lines;
    g_previous = qInstallMessageHandler(keepAutoLines);

    PlayerFixture fixture;
    auto owned = std::make_unique<DualDeckPlayer>(fixture.options);
    DualDeckPlayer *player = owned.get();
    QVERIFY(player->isInitialized());

    PlaylistModel model;
    PlaylistItemRequest red;
    red.filePath = media("solid-red-4s.mp4");
    red.displayName = QStringLiteral("red");
    red.mediaType = PlaylistMediaType::video;
    red.settings.startMode = PlaylistStartMode::play;
    red.settings.outPointMs = 1000;
    red.settings.endMode = PlaylistEndMode::repeat;
    red.settings.repeatCount = 3;
    red.settings.repeatEndMode = PlaylistRepeatEndMode::next;
    PlaylistItemRequest blue = red;
    blue.filePath = media("solid-blue-4s.mp4");
    blue.displayName = QStringLiteral("blue");
    blue.settings = {};
    blue.settings.startMode = PlaylistStartMode::play;
    const QList<quint64> ids = model.addItems({red, blue});
    QCOMPARE(ids.size(), 2);

    ControllerOperations operations;
    SelectionHolder selection(&model, &operations);
    ProgramPlayoutController controller(std::make_unique<DualDeckProgramPlayer>(std::move(owned)), &model,
                                        &selection, nullptr, &operations, nullptr);
    QVERIFY(QTest::qWaitFor([&] { return player->isPresenterRunning() && fixture.frames->last().sequence > 0; },
                            8000));

    selection.selectByOperator(ids[0]);
    QVERIFY(controller.takeOnAir());
    QVERIFY(QTest::qWaitFor([&] { return controller.onAirItemId() == ids[0]; }, 10000));
    QVERIFY(QTest::qWaitFor([&] { return isRed(fixture.frames->last()); }, 5000));
    const quint64 firstRed = fixture.frames->last().sequence - 1;

    QVERIFY(QTest::qWaitFor([&] { return controller.onAirItemId() == ids[1]; }, 15000));
    QVERIFY(QTest::qWaitFor([&] { return isBlue(fixture.frames->last()); }, 5000));
    QTest::qWait(200);

    int background = 0;
    int reds = 0;
    for (const TapPixel &pixel : fixture.frames->since(firstRed)) {
        if (isBlack(pixel))
            ++background;
        if (isRed(pixel))
            ++reds;
    }
    qInstallMessageHandler(g_previous);
    g_lines = nullptr;

    QCOMPARE(background, 0);
    // Three loops of one second at 60 frames a second, give or take a take.
    QVERIFY2(reds > 150, qPrintable(QString::number(reds)));
    const auto count = [&lines](const char *prefix) {
        return int(std::count_if(lines.begin(), lines.end(),
                                 [prefix](const QString &l) { return l.startsWith(QLatin1String(prefix)); }));
    };
    QCOMPARE(count("AUTO PROGRAM repeat "), 2);
    QCOMPARE(count("AUTO PROGRAM transition "), 1);

    controller.shutdown();
    QVERIFY(QTest::qWaitFor([&] { return player->isShutdownFinished(); }, 5000));
    QVERIFY(player->isShutdownConfirmed());
}

void TestProgramPlayoutPlayer::metersFollowTheAudioAsHeard()
{
    // A tone 3 dB above full scale.
    QTemporaryDir dir;
    const QString loud = dir.filePath(QStringLiteral("loud.wav"));
    GError *error = nullptr;
    GstElement *maker = gst_parse_launch(
        QStringLiteral("audiotestsrc num-buffers=94 samplesperbuffer=1024 volume=1.0 ! "
                       "audio/x-raw,format=F32LE,rate=48000,channels=2 ! volume volume=1.4125 ! wavenc ! "
                       "filesink location=\"%1\"")
            .arg(loud)
            .toUtf8()
            .constData(),
        &error);
    QVERIFY(!error && maker);
    gst_element_set_state(maker, GST_STATE_PLAYING);
    GstBus *bus = gst_element_get_bus(maker);
    GstMessage *done = gst_bus_timed_pop_filtered(bus, 10 * GST_SECOND,
                                                  GstMessageType(GST_MESSAGE_EOS | GST_MESSAGE_ERROR));
    const bool made = done && GST_MESSAGE_TYPE(done) == GST_MESSAGE_EOS;
    if (done)
        gst_message_unref(done);
    gst_object_unref(bus);
    gst_element_set_state(maker, GST_STATE_NULL);
    gst_object_unref(maker);
    QVERIFY(made);

    PlayerFixture fixture;
    auto owned = std::make_unique<DualDeckPlayer>(fixture.options);
    DualDeckPlayer *player = owned.get();
    PlaylistModel model;
    PlaylistItemRequest request;
    request.filePath = loud;
    request.displayName = QStringLiteral("loud");
    request.mediaType = PlaylistMediaType::audio;
    request.settings.startMode = PlaylistStartMode::play;
    const QList<quint64> ids = model.addItems({request});
    QCOMPARE(ids.size(), 1);
    SelectionHolder selection(&model, nullptr);
    ProgramPlayoutController controller(std::make_unique<DualDeckProgramPlayer>(std::move(owned)), &model,
                                        &selection, nullptr, nullptr, nullptr);
    QVERIFY(QTest::qWaitFor([&] { return player->isPresenterRunning(); }, 8000));

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
    selection.selectByOperator(ids[0]);
    QVERIFY(controller.takeOnAir());
    QVERIFY(QTest::qWaitFor([&] { return readings >= 50; }, 10000));
    QCOMPARE(early, 0);
    QVERIFY(clippedAtZero > 0);

    controller.shutdown();
    QVERIFY(QTest::qWaitFor([&] { return player->isShutdownFinished(); }, 5000));
}

QTEST_MAIN(TestProgramPlayoutPlayer)
#include "tst_program_playout_player.moc"
