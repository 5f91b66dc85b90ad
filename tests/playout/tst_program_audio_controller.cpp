// The program's meters and the audio section of the program panel: how a
// meter moves, when the meter loop feeds it, and where the panel's changes go.

#include "fake_program_panels.h"
#include "program_playout_rig.h"

#include "audio/meter_ballistics.h"
#include "audio/program_audio_controller.h"

#include <QSignalSpy>
#include <QTest>

using namespace tarnix;
using namespace tarnix::test;

class TestProgramAudioController : public QObject
{
    Q_OBJECT

private slots:
    void meterRisesAtOnceAndFallsAt72DbPerSecond();
    void clipLampHoldsHalfASecond();
    void meterLoopFeedsAMeterUntilItRests();
    void panelChangesReachTheProgramAudio();
    void meterLoopStopsWhenThePanelGoes();
};

void TestProgramAudioController::meterRisesAtOnceAndFallsAt72DbPerSecond()
{
    MeterBallistics meter;
    QVERIFY(!meter.setLevels(0.0, -12.0, false, 0));  // first reading: shown at once, at rest
    QCOMPARE(meter.leftDb(), 0.0);
    QCOMPARE(meter.segments(0)[0], 1.0);
    QCOMPARE(meter.segments(1)[11], 0.0);
    QCOMPARE(meter.segments(1)[12], 1.0);

    // From rest no time has passed yet; then 72 dB a second, and a segment
    // the level has left dims over 80 ms.
    QVERIFY(meter.setLevels(-60.0, -60.0, false, 1000));
    QCOMPARE(meter.leftDb(), 0.0);
    QVERIFY(meter.setLevels(-60.0, -60.0, false, 1020));
    QCOMPARE(meter.leftDb(), -72.0 * 0.02);
    QCOMPARE(meter.segments(0)[0], 0.75);
    qint64 t = 1020;
    while (meter.setLevels(-60.0, -60.0, false, t += 20) && t < 5000) {
    }
    // 60 dB at 72 dB/s is 833 ms, and the last segment's 80 ms after it.
    QVERIFY2(t >= 1020 + 820 && t <= 1020 + 960, qPrintable(QString::number(t - 1020)));
    QCOMPARE(meter.leftDb(), -60.0);
    QCOMPARE(meter.segments(0)[59], 0.0);

    // A rise takes over at once, even mid-fall; out of range readings are held
    // to the scale.
    meter.setLevels(3.0, qQNaN(), false, t + 20);
    QCOMPARE(meter.leftDb(), 0.0);
    QCOMPARE(meter.rightDb(), -60.0);
    QVERIFY(meter.reset());
    QVERIFY(!meter.reset());
}

void TestProgramAudioController::clipLampHoldsHalfASecond()
{
    MeterBallistics meter;
    QVERIFY(meter.setLevels(0.0, 0.0, true, 0));
    QVERIFY(meter.clipLit());
    QVERIFY(meter.setLevels(0.0, 0.0, false, 499));
    QVERIFY(meter.clipLit());
    QVERIFY(!meter.setLevels(0.0, 0.0, false, 500));
    QVERIFY(!meter.clipLit());
    QVERIFY(meter.changed());
}

void TestProgramAudioController::meterLoopFeedsAMeterUntilItRests()
{
    qint64 clock = 0;
    ProgramLevelTimeline::Snapshot levels;
    ProgramAudioController::Options options;
    options.startTimer = false;
    options.monotonicMs = [&clock] { return clock; };
    ProgramAudioController audio([&levels] { return levels; }, options);
    QSignalSpy item(&audio, &ProgramAudioController::itemMeterChanged);
    audio.setProgramActive(true);

    levels.item = {1000, -6.0, -6.0, false};
    audio.meterTick();
    QCOMPARE(item.size(), 1);
    audio.meterTick();  // at rest on the same reading: not told again
    QCOMPARE(item.size(), 1);

    // The reading drops and then stays: the meter keeps falling, fed on
    // every pass although the reading does not change.
    levels.item = {2000, -60.0, -60.0, false};
    clock += 8;
    audio.meterTick();
    for (int pass = 0; pass < 62; ++pass) {
        clock += 8;
        audio.meterTick();
    }
    QCOMPARE(item.last().at(0).toDouble(), -6.0 - 72.0 * 0.496);
    const int moving = int(item.size());
    for (int pass = 0; pass < 100; ++pass) {
        clock += 8;
        audio.meterTick();
    }
    QCOMPARE(audio.itemMeter().leftDb(), -60.0);
    const int rested = int(item.size());
    QVERIFY(rested > moving);
    for (int pass = 0; pass < 10; ++pass) {
        clock += 8;
        audio.meterTick();
    }
    QCOMPARE(int(item.size()), rested);
}

void TestProgramAudioController::panelChangesReachTheProgramAudio()
{
    ProgramPlayoutRig rig;
    const quint64 a = rig.add(QStringLiteral("/media/a.mp4"), playing());
    QVERIFY(rig.putOnAir(a));
    FakeProgramPanel panel;
    ProgramAudioController *audio = rig.controller->audioController();
    QSignalSpy mute(audio, &ProgramAudioController::muteDisplayChanged);

    // Attaching pushes the panel's faders and EQ, unmuted.
    rig.player->masterMuted = true;
    rig.controller->setProgramPanel(&panel);
    QCOMPARE(rig.player->itemVolume, 0.5);
    QCOMPARE(rig.player->masterVolume, 0.8);
    QCOMPARE(rig.player->masterEq, (QList<double>{1.0, -2.0, 3.0}));
    QVERIFY(!rig.player->masterMuted);
    QCOMPARE(panel.mutes.last(), std::make_pair(false, false));

    // Item changes act on the current deck; the mute display counts a
    // master fader at its lowest as muted.
    emit panel.itemDelayChanged(3);
    QCOMPARE(rig.player->currentDelayFrames, 3);
    emit panel.itemVolumeChanged(1.5);
    QCOMPARE(rig.player->itemVolume, 1.5);
    emit panel.masterMuteChanged(true);
    QVERIFY(rig.player->masterMuted);
    QCOMPARE(panel.mutes.last(), std::make_pair(true, true));
    emit panel.masterMuteChanged(false);
    emit panel.masterVolumeChanged(0.0);
    QCOMPARE(panel.mutes.last(), std::make_pair(false, true));
    QCOMPARE(rig.player->masterVolume, 0.0);
    emit panel.masterVolumeChanged(1.0);
    QCOMPARE(panel.mutes.last(), std::make_pair(false, false));
    QCOMPARE(mute.last(), (QList<QVariant>{false, false}));

    // A repeat's new deck keeps the operator's settings, not the item's.
    panel.delayFrames = 5;
    emit panel.itemVolumeChanged(0.25);
    rig.player->itemVolume = -1.0;
    PlaylistItemSettings repeating = playing(PlaylistEndMode::repeat);
    const quint64 loop = rig.add(QStringLiteral("/media/loop.mp4"), repeating, 1000);
    panel.item = 0.25;
    QVERIFY(rig.putOnAir(loop));
    rig.controller->tick();
    rig.player->makeReady();
    rig.player->position = 1000;
    rig.player->endOfStream();
    rig.controller->tick();
    QCOMPARE(rig.controller->repeatDisplayCount(), 2);
    QCOMPARE(rig.player->standbyDelayFrames, 5);
    QCOMPARE(rig.player->itemVolume, 0.25);
}

void TestProgramAudioController::meterLoopStopsWhenThePanelGoes()
{
    ProgramLevelTimeline::Snapshot levels;
    ProgramAudioController audio([&levels] { return levels; });
    auto *panel = new FakeProgramPanel;
    audio.setPanel(panel);
    audio.setProgramActive(true);
    QVERIFY(audio.isMeterLoopRunning());
    levels.item = {1000, -6.0, -6.0, false};
    audio.meterTick();
    QCOMPARE(panel->itemMeterShows, 1);
    delete panel;
    audio.meterTick();
    QVERIFY(!audio.isMeterLoopRunning());
    audio.setProgramActive(false);
    audio.setProgramActive(true);
    QVERIFY(!audio.isMeterLoopRunning());
}

QTEST_GUILESS_MAIN(TestProgramAudioController)
#include "tst_program_audio_controller.moc"
