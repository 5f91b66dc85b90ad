// End modes and automatic succession against a scripted player, with the
// clock and the end of each item in the test's hands.

#include "program_playout_rig.h"

#include "kit/log_capture.h"

#include <QTest>

#include <mutex>

using namespace tarnix;
using namespace tarnix::test;

namespace {

// The "AUTO PROGRAM" lines of the log.
testkit::LogCapture::Options autoLines()
{
    testkit::LogCapture::Options options;
    options.prefix = QStringLiteral("AUTO PROGRAM");
    return options;
}

PlaylistItemSettings repeating(qint32 count, PlaylistRepeatEndMode after = PlaylistRepeatEndMode::pause)
{
    PlaylistItemSettings settings = playing(PlaylistEndMode::repeat);
    settings.repeatCount = count;
    settings.repeatEndMode = after;
    return settings;
}

// Lets the item on air run to its end: the standby becomes ready in the last
// second and the end of stream arrives.
void playToEnd(ProgramPlayoutRig &rig, qint64 endMs)
{
    rig.player->position = endMs - 500;
    rig.controller->tick();
    rig.player->makeReady();
    rig.controller->tick();
    rig.player->position = endMs;
    rig.player->endOfStream();
    rig.controller->tick();
}

} // namespace

class TestProgramEndModes : public QObject
{
    Q_OBJECT

private slots:
    void endAndStandbyAreSeenBetweenTicks();
    void repeatThreeTimesThenNext();
    void endlessRepeatNeverStops();
    void shortLoopCrossfadesForHalfItsLength();
    void nextWrapsPastTheLastRow();
    void gotoWithoutTargetKeepsThePicture();
    void successorNotReadyHoldsTheLastFrame();
    void stopAndPauseEndTheItem();
    void timedStillRunsOnTheClock();
    void fadesFollowRealTime();
    void rateMovesTheRepeatTriggerInMediaTime();
};

void TestProgramEndModes::repeatThreeTimesThenNext()
{
    testkit::LogCapture log(autoLines());
    ProgramPlayoutRig rig;
    const quint64 a = rig.add(QStringLiteral("/media/a.mp4"), repeating(3, PlaylistRepeatEndMode::next), 3000);
    const quint64 b = rig.add(QStringLiteral("/media/b.mp4"), playing(), 4000);
    QVERIFY(rig.putOnAir(a));

    QList<int> shown{rig.controller->repeatDisplayCount()};
    rig.controller->tick();
    QCOMPARE(rig.controller->tickIntervalMs(), 16);
    // The repeat is prepared at once on the other deck.
    QVERIFY(rig.controller->preparedTarget());
    QCOMPARE(rig.controller->preparedTarget()->itemId, a);
    for (int loop = 0; loop < 2; ++loop) {
        playToEnd(rig, 3000);
        QCOMPARE(rig.controller->onAirItemId(), a);
        shown.append(rig.controller->repeatDisplayCount());
        QCOMPARE(rig.model.repeatProgress(a), shown.last());
    }
    QCOMPARE(shown, (QList<int>{1, 2, 3}));
    QCOMPARE(rig.player->takes(), 3);
    QCOMPARE(rig.player->takeCrossfades, (QList<bool>{false, false, false}));

    playToEnd(rig, 3000);
    QCOMPARE(rig.controller->onAirItemId(), b);
    QVERIFY(rig.player->currentSource->source.endsWith(QStringLiteral("/b.mp4")));
    QCOMPARE(rig.player->takes(), 4);
    rig.controller->tick();
    QCOMPARE(rig.controller->tickIntervalMs(), 100);
    QCOMPARE(log.count(QStringLiteral("AUTO PROGRAM repeat ")), 2);
    QCOMPARE(log.count(QStringLiteral("AUTO PROGRAM transition ")), 1);
}

void TestProgramEndModes::endlessRepeatNeverStops()
{
    ProgramPlayoutRig rig;
    const quint64 a = rig.add(QStringLiteral("/media/a.mp4"), repeating(0), 3000);
    rig.add(QStringLiteral("/media/b.mp4"), playing(), 4000);
    QVERIFY(rig.putOnAir(a));
    for (int loop = 1; loop <= 30; ++loop) {
        playToEnd(rig, 3000);
        QCOMPARE(rig.controller->onAirItemId(), a);
        QCOMPARE(rig.controller->repeatDisplayCount(), loop + 1);
        QVERIFY(rig.controller->isPlaying());
    }
    QCOMPARE(rig.player->offAirs, 0);

    // A pause suspends the repeat; play picks it up again.
    QVERIFY(rig.controller->pause());
    rig.controller->tick();
    rig.player->position = 3000;
    rig.player->makeReady();
    rig.player->endOfStream();
    rig.controller->tick();
    QVERIFY(rig.controller->automaticTarget().suspended);
    QCOMPARE(rig.player->takes(), 31);
    QVERIFY(rig.controller->play());
    QCOMPARE(rig.player->takes(), 32);
}

void TestProgramEndModes::shortLoopCrossfadesForHalfItsLength()
{
    ProgramPlayoutRig rig;
    PlaylistItemSettings settings = repeating(0);
    settings.endCrossfade = {true, 1000};
    const quint64 a = rig.add(QStringLiteral("/media/a.mp4"), settings, 500);
    QVERIFY(rig.putOnAir(a));
    rig.controller->tick();
    rig.player->makeReady();
    rig.player->position = 240;
    rig.controller->tick();
    QCOMPARE(rig.player->takes(), 1);  // 260 ms left: not yet

    rig.player->position = 250;
    rig.controller->tick();
    QCOMPARE(rig.player->takes(), 2);
    QCOMPARE(rig.player->takeCrossfades.last(), true);
    QCOMPARE(rig.controller->crossfadeDurationMs(), qint64(250));
    QCOMPARE(rig.controller->repeatDisplayCount(), 2);

    // An audio-only item with the same setting cuts its repeat.
    ProgramPlayoutRig audio;
    const quint64 s = audio.add(QStringLiteral("/media/s.wav"), settings, 500, PlaylistMediaType::audio);
    QVERIFY(audio.putOnAir(s));
    playToEnd(audio, 500);
    QCOMPARE(audio.player->takeCrossfades, (QList<bool>{false, false}));
}

void TestProgramEndModes::nextWrapsPastTheLastRow()
{
    ProgramPlayoutRig rig;
    const quint64 a = rig.add(QStringLiteral("/media/a.mp4"), playing(PlaylistEndMode::next), 3000);
    const quint64 b = rig.add(QStringLiteral("/media/b.mp4"), playing(PlaylistEndMode::next), 3000);
    QVERIFY(rig.putOnAir(b));
    // Nothing is cued until the last second.
    rig.player->position = 1500;
    rig.controller->tick();
    QVERIFY(!rig.controller->preparedTarget());
    playToEnd(rig, 3000);
    QCOMPARE(rig.controller->onAirItemId(), a);

    // With one row the same item is taken again.
    ProgramPlayoutRig single;
    const quint64 only = single.add(QStringLiteral("/media/o.mp4"), playing(PlaylistEndMode::next), 3000);
    QVERIFY(single.putOnAir(only));
    playToEnd(single, 3000);
    QCOMPARE(single.player->takes(), 2);
    QCOMPARE(single.controller->onAirItemId(), only);
}

void TestProgramEndModes::gotoWithoutTargetKeepsThePicture()
{
    ProgramPlayoutRig rig;
    const quint64 a = rig.add(QStringLiteral("/media/a.mp4"), playing(PlaylistEndMode::goto_), 3000);
    rig.add(QStringLiteral("/media/b.mp4"), playing(), 3000);
    QVERIFY(rig.putOnAir(a));
    playToEnd(rig, 3000);
    QCOMPARE(rig.controller->statusText(), QStringLiteral("No eligible GOTO destination is selected or available."));
    QVERIFY(rig.info.current());
    QCOMPARE(rig.info.current()->text.toString(), QStringLiteral("Could not execute End Mode \"GOTO\"."));
    QCOMPARE(rig.controller->onAirItemId(), a);
    QCOMPARE(rig.player->offAirs, 0);
    QCOMPARE(rig.player->current, 0);
    QCOMPARE(rig.controller->programPhase(), PlayoutItemState::Failed);
}

void TestProgramEndModes::successorNotReadyHoldsTheLastFrame()
{
    ProgramPlayoutRig rig;
    PlaylistItemSettings settings = playing(PlaylistEndMode::goto_);
    const quint64 a = rig.add(QStringLiteral("/media/a.mp4"), settings, 3000);
    rig.add(QStringLiteral("/media/b.mp4"), playing(), 3000);
    const quint64 c = rig.add(QStringLiteral("/media/c.mp4"), playing(), 3000);
    settings.gotoTargetItemId = c;
    QVERIFY(rig.model.setItemSettings(a, settings));
    QVERIFY(rig.putOnAir(a));

    rig.player->position = 2500;
    rig.controller->tick();
    QCOMPARE(rig.controller->preparedTarget()->itemId, c);
    rig.player->position = 3000;
    rig.player->endOfStream();
    rig.controller->tick();
    QCOMPARE(rig.controller->onAirItemId(), a);
    QVERIFY(!rig.player->playing);
    QCOMPARE(rig.controller->remainingMs(), qint64(0));
    QVERIFY(rig.controller->statusText().isEmpty());
    rig.controller->tick();
    QCOMPARE(rig.controller->onAirItemId(), a);

    rig.player->makeReady();
    rig.controller->tick();
    QCOMPARE(rig.controller->onAirItemId(), c);
    QVERIFY(rig.player->playing);
}

void TestProgramEndModes::stopAndPauseEndTheItem()
{
    ProgramPlayoutRig rig;
    const quint64 a = rig.add(QStringLiteral("/media/a.mp4"), playing(PlaylistEndMode::pause), 3000);
    const quint64 b = rig.add(QStringLiteral("/media/b.mp4"), playing(PlaylistEndMode::stop), 3000);
    QVERIFY(rig.putOnAir(a));
    playToEnd(rig, 3000);
    QCOMPARE(rig.controller->onAirItemId(), a);
    QCOMPARE(rig.controller->programPhase(), PlayoutItemState::Held);
    QCOMPARE(rig.player->seeks.last(), qint64(2999));  // parked on its last frame
    // Play again starts from the in point.
    QVERIFY(rig.controller->play());
    QCOMPARE(rig.player->seeks.last(), qint64(0));

    QVERIFY(rig.putOnAir(b));
    playToEnd(rig, 3000);
    QCOMPARE(rig.controller->onAirItemId(), quint64(0));
    QCOMPARE(rig.player->offAirs, 1);
}

void TestProgramEndModes::timedStillRunsOnTheClock()
{
    ProgramPlayoutRig rig;
    PlaylistItemSettings settings = playing(PlaylistEndMode::next);
    settings.inPointMs = 500;
    settings.outPointMs = 2500;
    const quint64 still = rig.add(QStringLiteral("/media/s.png"), settings, -1, PlaylistMediaType::stillImage);
    const quint64 b = rig.add(QStringLiteral("/media/b.mp4"), playing(), 3000);
    QVERIFY(rig.putOnAir(still));
    // The deck gets the picture whole; the span is the clock's.
    QCOMPARE(rig.player->currentSource->inMs, qint64(0));
    QCOMPARE(rig.player->currentSource->outMs, qint64(-1));
    QCOMPARE(rig.player->plays, 0);
    QVERIFY(rig.controller->isPlaying());

    rig.clockMs += 800;
    rig.controller->tick();
    QCOMPARE(rig.controller->displayedPositionMs(), qint64(1300));
    QCOMPARE(rig.controller->remainingMs(), qint64(1200));

    // A pause stops the clock; play goes on from there.
    QVERIFY(rig.controller->pause());
    rig.clockMs += 5000;
    rig.controller->tick();
    QCOMPARE(rig.controller->displayedPositionMs(), qint64(1300));
    rig.player->restoreResult = 1;
    QVERIFY(rig.controller->play());
    rig.controller->tick();
    QCOMPARE(rig.controller->displayedPositionMs(), qint64(1300));
    rig.player->restoreResult = 0;
    rig.controller->tick();

    rig.clockMs += 700;  // into the last second: the next item is cued
    rig.controller->tick();
    QCOMPARE(rig.controller->preparedTarget()->itemId, b);
    rig.player->makeReady();
    rig.clockMs += 600;
    rig.controller->tick();
    QCOMPARE(rig.controller->onAirItemId(), b);
    QVERIFY(rig.player->playing);
}

void TestProgramEndModes::fadesFollowRealTime()
{
    ProgramPlayoutRig rig;
    PlaylistItemSettings settings = playing();
    settings.fadeIn = {true, 1000};
    settings.fadeOut = {true, 3000};
    const quint64 a = rig.add(QStringLiteral("/media/a.mp4"), settings, 10000);
    QVERIFY(rig.putOnAir(a));
    QCOMPARE(rig.player->videoLevel, 0.0f);
    rig.advance(500);
    QCOMPARE(rig.player->videoLevel, 0.5f);
    rig.advance(500);
    QCOMPARE(rig.player->videoLevel, 1.0f);

    // Seeked to one second before the end, the 3 s fade out takes 1 s.
    rig.controller->seek(9000);
    rig.controller->tick();
    QCOMPARE(rig.controller->fadeOutFactor(), 1.0);
    rig.advance(500);
    QCOMPARE(rig.controller->fadeOutFactor(), 0.5);
    rig.advance(500);
    QCOMPARE(rig.player->videoLevel, 0.0f);
}

void TestProgramEndModes::rateMovesTheRepeatTriggerInMediaTime()
{
    ProgramPlayoutRig rig;
    PlaylistItemSettings settings = repeating(0);
    settings.endCrossfade = {true, 400};
    const quint64 a = rig.add(QStringLiteral("/media/a.mp4"), settings, 2000);
    QVERIFY(rig.putOnAir(a));
    QVERIFY(rig.controller->setRate(2.0));
    rig.controller->tick();
    QCOMPARE(rig.player->prepared.last().rate, 2.0);
    rig.player->makeReady();
    rig.player->position = 1100;
    rig.controller->tick();
    QCOMPARE(rig.player->takes(), 1);
    // 400 ms of real time are 800 ms of media at rate 2.0.
    rig.player->position = 1200;
    rig.controller->tick();
    QCOMPARE(rig.player->takes(), 2);
    QCOMPARE(rig.controller->crossfadeDurationMs(), qint64(400));
}

QTEST_GUILESS_MAIN(TestProgramEndModes)


// With the controller's own timers and a regular tick far too slow to
// matter, a successor that becomes ready is seen by the standby watch, and
// an end of stream by the tick due just after the item's end.
void TestProgramEndModes::endAndStandbyAreSeenBetweenTicks()
{
    ProgramPlayoutRig rig([](ProgramPlayoutOptions &options) {
        options.startTimers = true;
        options.tickInterval = std::chrono::minutes(10);
        options.monotonicMs = {};
        options.audio.monotonicMs = {};
    });
    const quint64 a = rig.add(QStringLiteral("/media/a.mp4"), playing(PlaylistEndMode::next), 3000);
    const quint64 b = rig.add(QStringLiteral("/media/b.mp4"), playing(PlaylistEndMode::next), 3000);
    QVERIFY(rig.putOnAir(a));
    rig.player->position = 2500;
    rig.controller->tick();  // cues the successor
    QCOMPARE(rig.model.cueItemId(), b);
    QCOMPARE(rig.model.cueState(), PlaylistCueState::Preparing);
    rig.player->makeReady();
    QTRY_COMPARE_WITH_TIMEOUT(rig.model.cueState(), PlaylistCueState::Ready, 2000);

    rig.player->position = 2950;
    rig.controller->tick();  // the end is 50 ms away: a tick is due just after it
    rig.player->position = 3000;
    rig.player->endOfStream();
    QTRY_COMPARE_WITH_TIMEOUT(rig.controller->onAirItemId(), b, 2000);
}

#include "tst_program_end_modes.moc"
