#include "kit/item_request.h"
#include "dual_deck_fixture.h"

#include "playlist/playlist_model.h"
#include "playout/dual_deck_program_player.h"
#include "playout/program_playout_controller.h"
#include "playout/selection_holder.h"
#include "shell/user_info_center.h"
#include "support/glib_criticals.h"
#include "support/private_pulse_audio.h"

using namespace tarnix;
using namespace tarnix::test;

// The program output's device change against a PulseAudio server of the
// test's own: held while a deck is ON AIR, applied by the first poll after
// OFF AIR.
class TestDualDeckAudioDevice : public QObject
{
    Q_OBJECT

    PrivatePulseAudio m_pulse;

private slots:
    void initTestCase()
    {
        tarnix::test::failOnGlibCriticals();
        gst_init(nullptr, nullptr);
        QString error;
        QVERIFY2(m_pulse.start(&error), qPrintable(error));
    }

    void cleanupTestCase() { m_pulse.stop(); }

    void deviceChangeWaitsForOffAir()
    {
        PlayerFixture f;
        f.options.audioDevice = QStringLiteral("onair");
        f.options.audioSinkFactory = ProgramAudioOutput::defaultSinkFactory();
        QVERIFY(f.start());
        ProgramAudioOutput *audio = f.player->audioOutput();
        QVERIFY(f.pollUntil([&] { return audio->isRunning() && !audio->isDeviceChangeRunning(); },
                            10000));
        QCOMPARE(audio->activeDevice(), QStringLiteral("onair"));

        QCOMPARE(f.cue(fileSource(media("solid-red-4s.mp4"))), PreparationStatus::Ready);
        QVERIFY(f.player->takeStandby(false, 1.0f));
        QVERIFY(f.player->play());
        audio->setRequestedDevice(QStringLiteral("other"));
        for (int tick = 0; tick < 5; ++tick)
            f.player->poll();
        QCOMPARE(ProgramAudioOutput::statusText(audio->statusKey()),
                 QStringLiteral("Waiting until ON AIR and BGM are stopped."));
        QVERIFY(!audio->isDeviceChangeRunning());
        QCOMPARE(audio->activeDevice(), QStringLiteral("onair"));

        QCOMPARE(f.player->offAir(), 2);
        f.player->poll();
        QVERIFY(audio->isDeviceChangeRunning()
                || audio->activeDevice() == QStringLiteral("other"));
        QVERIFY(f.pollUntil([&] { return !audio->isDeviceChangeRunning(); }, 10000));
        QCOMPARE(audio->activeDevice(), QStringLiteral("other"));
        QCOMPARE(ProgramAudioOutput::statusText(audio->statusKey()),
                 QStringLiteral("ON AIR output device applied."));
    }

    // A take needs a program audio output that can play: while its device
    // is being changed, and while it has no usable device, the take is
    // refused with the operator's warning and the item on air plays on.
    void takeWaitsForAUsableAudioOutput()
    {
        PlayerFixture f;
        f.options.audioDevice = QStringLiteral("onair");
        f.options.audioSinkFactory = ProgramAudioOutput::defaultSinkFactory();
        // A stopped sound server holds the output's first device change.
        QVERIFY(m_pulse.suspend());
        auto resumeServer = qScopeGuard([this] { m_pulse.resume(); });
        auto owned = std::make_unique<DualDeckPlayer>(f.options);
        DualDeckPlayer *player = owned.get();
        QVERIFY(player->isInitialized());

        PlaylistModel model;
        const QList<quint64> ids = model.addItems({testkit::ItemRequest(media("solid-red-4s.mp4")).playing(),
                                                   testkit::ItemRequest(media("solid-blue-4s.mp4")).playing()});
        QCOMPARE(ids.size(), 2);
        SelectionHolder selection(&model, nullptr);
        UserInfoCenter info;
        ProgramPlayoutController controller(std::make_unique<DualDeckProgramPlayer>(std::move(owned)), &model,
                                            &selection, &info, nullptr, nullptr);
        ProgramAudioOutput *audio = player->audioOutput();
        const auto shownKey = [&info] { return info.current() ? info.current()->text.key : QString(); };
        const auto standbyReady = [&] { return player->standbyStatus() == PreparationStatus::Ready; };

        QVERIFY(QTest::qWaitFor([&] { return audio->isDeviceChangeRunning(); }, 5000));
        selection.selectByOperator(ids[0]);
        QVERIFY(QTest::qWaitFor(standbyReady, 10000));
        QVERIFY(audio->isDeviceChangeRunning());
        QVERIFY(!controller.takeOnAir());
        QCOMPARE(shownKey(), QStringLiteral("program.warning.audio_output_changing"));
        QCOMPARE(controller.onAirItemId(), quint64(0));
        QCOMPARE(player->currentDeck(), -1);

        info.dismiss();
        QVERIFY(m_pulse.resume());
        QVERIFY(QTest::qWaitFor([&] { return audio->hasUsableDevice(); }, 10000));
        QVERIFY(controller.takeOnAir());
        QCOMPARE(controller.onAirItemId(), ids[0]);
        const int redDeck = player->currentDeck();

        // The ON AIR device goes away under the running output, with no
        // other sink that the server could move the stream to.
        selection.selectByOperator(ids[1]);
        QVERIFY(QTest::qWaitFor(standbyReady, 10000));
        QVERIFY(m_pulse.unloadSink(QStringLiteral("other")));
        QVERIFY(m_pulse.unloadSink(QStringLiteral("onair")));
        QVERIFY(QTest::qWaitFor([&] { return !audio->hasUsableDevice(); }, 10000));
        // The output's own failure notice is not the one under test.
        QVERIFY(QTest::qWaitFor([&] {
            info.dismiss();
            return !info.current();
        }, 2000));
        QVERIFY(!controller.takeOnAir());
        QCOMPARE(shownKey(), QStringLiteral("program.warning.audio_output_unavailable"));
        QCOMPARE(controller.onAirItemId(), ids[0]);
        QCOMPARE(player->currentDeck(), redDeck);
        QVERIFY(controller.isPlaying());

        controller.shutdown();
        QVERIFY(QTest::qWaitFor([&] { return player->isShutdownFinished(); }, 5000));
    }
};

QTEST_MAIN(TestDualDeckAudioDevice)
#include "tst_dual_deck_audio_device.moc"
