// The ON AIR state machine against a scripted player: selection, standby,
// take, OFF AIR, transport and what each refusal says.

#include "fake_program_panels.h"
#include "program_playout_rig.h"

#include "playlist/playlist_validation.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QSignalSpy>
#include <QTest>

using namespace tarnix;
using namespace tarnix::test;

class TestProgramPlayout : public QObject
{
    Q_OBJECT

private slots:
    void takePressedTwiceWhilePreparingTakesOnce();
    void sameItemRetakeFollowsTheSetting();
    void selectionChangeDuringCrossfadeWaitsForRelease();
    void failedStartsLeaveTheOldItemOnAir();
    void failedStandbyIsRebuiltOnTake();
    void transportRefusalsSayWhy();
    void playerErrorsInTheTick();
    void offAirThenImmediateRetake();
    void listenersMayCallBackDuringATake();
    void ftbReversedMidAnimation();
    void seekHoldHidesStalePositions();
    void deletionGuard();
    void metersRunWhileTheProgramPlays();
    void panelsFollowTheProgram();
    void conversionHoldKeepsSlideShowsOffThePlayer();
};

void TestProgramPlayout::takePressedTwiceWhilePreparingTakesOnce()
{
    ProgramPlayoutRig rig;
    const quint64 a = rig.add(QStringLiteral("/media/a.mp4"), playing());
    QSignalSpy onAir(rig.controller.get(), &ProgramPlayoutController::onAirChanged);

    QCOMPARE(rig.operations.invoke(ControllerOperations::SelectItem, a).status, ControllerOperations::Invoked);
    QCOMPARE(rig.player->prepared.size(), 1);
    QCOMPARE(rig.model.cueItemId(), a);
    QCOMPARE(rig.model.cueState(), PlaylistCueState::Preparing);

    QCOMPARE(rig.operations.invoke(ControllerOperations::TakeSelectedOnAir).status, ControllerOperations::Invoked);
    QVERIFY(rig.controller->takeOnAir());
    QCOMPARE(rig.controller->queuedTakeItem(), std::optional<quint64>(a));
    QCOMPARE(rig.player->takes(), 0);
    QCOMPARE(rig.player->prepared.size(), 1);

    rig.player->makeReady();
    rig.controller->tick();
    rig.controller->tick();
    QCOMPARE(rig.player->takes(), 1);
    QCOMPARE(rig.controller->onAirItemId(), a);
    QCOMPARE(rig.model.onAirItemId(), a);
    QCOMPARE(rig.model.cueItemId(), quint64(0));
    QVERIFY(!rig.controller->queuedTakeItem());
    QCOMPARE(onAir.size(), 1);
    QVERIFY(rig.player->playing);

    // The state query answers the controller's fields.
    rig.player->position = 1200;
    rig.controller->tick();
    const QJsonObject state = QJsonDocument::fromJson(rig.state.stateJson().toUtf8()).object();
    QCOMPARE(state.value("selectedItemId").toInteger(), qint64(a));
    QCOMPARE(state.value("onAirItemId").toInteger(), qint64(a));
    QVERIFY(state.value("cueItemId").isNull());
    QCOMPARE(state.value("currentDeck").toInt(), 0);
    QCOMPARE(state.value("positionMs").toInteger(), qint64(1200));
    QCOMPARE(state.value("remainingMs").toInteger(), qint64(1800));
    QCOMPARE(state.value("programPlaying"), QJsonValue(true));
    QCOMPARE(state.value("ftbActive"), QJsonValue(false));
    QCOMPARE(state.value("playbackRate"), QJsonValue(1.0));
    // EDIT and PFL have no owner here.
    QVERIFY(state.value("editItemId").isNull() && state.value("editPositionMs").isNull() && state.value("pflOn").isNull());

    // The item remembers where it was after it leaves the air.
    QCOMPARE(rig.model.lastPlayedPosition(a), std::optional<qint64>(1200));
    QVERIFY(rig.controller->offAir());
    rig.controller->tick();
    QCOMPARE(rig.model.lastPlayedPosition(a), std::optional<qint64>(1200));
}

void TestProgramPlayout::sameItemRetakeFollowsTheSetting()
{
    ProgramPlayoutRig rig;
    const quint64 a = rig.add(QStringLiteral("/media/a.mp4"), playing());
    QVERIFY(rig.putOnAir(a));
    QCOMPARE(rig.player->takes(), 1);

    // Off: the ON AIR item is neither prepared nor taken, and nothing is said.
    rig.selection.selectByOperator(a);
    QVERIFY(!rig.player->standbySource);
    QVERIFY(!rig.controller->takeOnAir());
    QCOMPARE(rig.player->takes(), 1);
    QVERIFY(rig.controller->statusText().isEmpty());
    QVERIFY(!rig.info.current());

    // On: it is prepared on the other deck and taken.
    rig.controller->setAllowSameItemRetake(true);
    rig.selection.selectByOperator(a);
    QVERIFY(rig.player->standbySource);
    rig.player->makeReady();
    QVERIFY(rig.controller->takeOnAir());
    QCOMPARE(rig.player->takes(), 2);
    QCOMPARE(rig.player->current, 1);
    QCOMPARE(rig.controller->onAirItemId(), a);
}

void TestProgramPlayout::selectionChangeDuringCrossfadeWaitsForRelease()
{
    ProgramPlayoutRig rig;
    const quint64 a = rig.add(QStringLiteral("/media/a.mp4"), playing());
    const quint64 b = rig.add(QStringLiteral("/media/b.mp4"), playing());
    const quint64 c = rig.add(QStringLiteral("/media/c.mp4"), playing());
    rig.controller->setManualCrossfade(true, 1000);
    QVERIFY(rig.putOnAir(a));
    QVERIFY(rig.putOnAir(b));
    QVERIFY(rig.controller->isCrossfading());
    QCOMPARE(rig.controller->crossfadeDurationMs(), qint64(1000));
    const int releases = rig.player->releases;

    rig.selection.selectByOperator(c);
    QVERIFY(rig.controller->releasePending());
    QCOMPARE(rig.player->releases, releases);
    QCOMPARE(rig.model.cueItemId(), c);
    QCOMPARE(rig.model.cueState(), PlaylistCueState::Requested);

    rig.advance(500);
    QCOMPARE(rig.controller->crossfadeProgress(), 0.5);
    rig.controller->tick();
    QCOMPARE(rig.player->releases, releases);
    QVERIFY(!rig.controller->preparedTarget());

    rig.advance(500);
    QVERIFY(!rig.controller->isCrossfading());
    rig.controller->tick();
    QCOMPARE(rig.player->releases, releases + 1);
    QVERIFY(rig.controller->preparedTarget());
    QCOMPARE(rig.controller->preparedTarget()->itemId, c);
    QCOMPARE(rig.controller->onAirItemId(), b);
}

void TestProgramPlayout::failedStartsLeaveTheOldItemOnAir()
{
    ProgramPlayoutRig rig;
    const quint64 a = rig.add(QStringLiteral("/media/a.mp4"), playing());
    const quint64 b = rig.add(QStringLiteral("/media/b.mp4"), playing());

    QVERIFY(!rig.controller->takeOnAir());
    QCOMPARE(rig.controller->statusText(), QStringLiteral("Select an item to take ON AIR."));
    QVERIFY(rig.putOnAir(a));

    // Preparing fails: the old item plays on, the new one is marked with the
    // player's text, and a take says it.
    rig.selection.selectByOperator(b);
    rig.player->fail(QStringLiteral("decoder missing"));
    rig.controller->tick();
    QCOMPARE(rig.model.cueState(), PlaylistCueState::Failed);
    QCOMPARE(rig.model.cueMessage(), QStringLiteral("decoder missing"));
    rig.player->refusePrepare = true;
    QVERIFY(!rig.controller->takeOnAir());
    QCOMPARE(rig.controller->onAirItemId(), a);
    QVERIFY(rig.player->playing);
    rig.player->refusePrepare = false;

    // takeStandby refused: old item on air, new one stays ready.
    rig.selection.selectByOperator(a);
    rig.selection.selectByOperator(b);
    rig.player->makeReady();
    rig.player->refuseTake = true;
    QVERIFY(!rig.controller->takeOnAir());
    QCOMPARE(rig.controller->statusText(), QStringLiteral("Could not take the selected item ON AIR."));
    QCOMPARE(rig.controller->onAirItemId(), a);
    QCOMPARE(rig.player->status, PreparationStatus::Ready);
    rig.player->refuseTake = false;

    // Start Mode "Play" refused: the new item is on the output, paused, failed.
    rig.player->refusePlay = true;
    QVERIFY(!rig.controller->takeOnAir());
    QCOMPARE(rig.controller->statusText(),
             QStringLiteral("The item was taken ON AIR, but Start Mode \"Play\" could not be started."));
    QCOMPARE(rig.controller->onAirItemId(), b);
    QCOMPARE(rig.controller->programPhase(), PlayoutItemState::Failed);
    QVERIFY(!rig.controller->isPlaying());

    // The operator can still press play.
    rig.player->refusePlay = false;
    QVERIFY(rig.controller->play());
    QCOMPARE(rig.controller->programPhase(), PlayoutItemState::Running);
}

void TestProgramPlayout::failedStandbyIsRebuiltOnTake()
{
    ProgramPlayoutRig rig;
    const quint64 a = rig.add(QStringLiteral("/media/a.mp4"), playing());
    rig.selection.selectByOperator(a);
    rig.player->fail(QStringLiteral("busy"));
    rig.controller->tick();
    // Selecting it again keeps the failed standby; a take forces a new one.
    rig.selection.selectByOperator(a);
    QCOMPARE(rig.player->prepared.size(), 1);
    QVERIFY(rig.controller->takeOnAir());
    QCOMPARE(rig.player->prepared.size(), 2);
    QCOMPARE(rig.controller->queuedTakeItem(), std::optional<quint64>(a));
    rig.player->makeReady();
    rig.controller->tick();
    QCOMPARE(rig.controller->onAirItemId(), a);
}

void TestProgramPlayout::transportRefusalsSayWhy()
{
    ProgramPlayoutRig rig;
    const quint64 a = rig.add(QStringLiteral("/media/a.mp4"), playing());
    const quint64 still = rig.add(QStringLiteral("/media/s.png"), playing(), 3000, PlaylistMediaType::stillImage);
    QVERIFY(rig.putOnAir(a));

    rig.player->refusePause = true;
    QVERIFY(!rig.controller->pause());
    QCOMPARE(rig.controller->statusText(), QStringLiteral("Pause failed."));
    rig.player->refusePause = false;
    QCOMPARE(rig.operations.invoke(ControllerOperations::ProgramTogglePlayback).status,
             ControllerOperations::Invoked);
    QVERIFY(!rig.player->playing);

    rig.player->refusePlay = true;
    QVERIFY(!rig.controller->play());
    QCOMPARE(rig.controller->statusText(), QStringLiteral("Playback failed."));
    rig.player->refusePlay = false;

    rig.player->refuseSeek = true;
    QCOMPARE(rig.operations.invoke(ControllerOperations::ProgramSeek, qint64(500)).status,
             ControllerOperations::Invoked);
    rig.controller->tick();
    QCOMPARE(rig.controller->statusText(), QStringLiteral("ON AIR seek failed."));
    rig.player->refuseSeek = false;
    rig.controller->seek(99999);
    rig.controller->tick();
    QCOMPARE(rig.player->seeks.last(), qint64(3000));

    rig.player->refuseRate = true;
    QCOMPARE(rig.operations.invoke(ControllerOperations::ProgramPlaybackRate, 1.5).status,
             ControllerOperations::Rejected);
    QCOMPARE(rig.controller->statusText(), QStringLiteral("Playback rate change failed."));
    rig.player->refuseRate = false;
    QVERIFY(rig.controller->setRate(1.5));
    QCOMPARE(rig.controller->playbackRate(), 1.5);
    QVERIFY(!rig.controller->setRate(0.0));

    // A still image has no rate control.
    QVERIFY(rig.putOnAir(still));
    QVERIFY(!rig.controller->setRate(2.0));
    QCOMPARE(rig.player->rate, 1.5);

    rig.player->offAirResult = 1;
    QVERIFY(!rig.controller->offAir());
    QCOMPARE(rig.controller->statusText(),
             QStringLiteral("Failed to switch OFF AIR. The playback state was not changed."));
    QCOMPARE(rig.controller->onAirItemId(), still);
}

void TestProgramPlayout::playerErrorsInTheTick()
{
    ProgramPlayoutRig rig;
    const quint64 a = rig.add(QStringLiteral("/media/a.mp4"), playing(PlaylistEndMode::next));
    const quint64 b = rig.add(QStringLiteral("/media/b.mp4"), playing());

    // An ordinary error parks the deck; the item stays named ON AIR.
    QVERIFY(rig.putOnAir(a));
    rig.player->raiseError(QStringLiteral("decode error"));
    rig.controller->tick();
    QCOMPARE(rig.controller->onAirItemId(), a);
    QCOMPARE(rig.controller->programPhase(), PlayoutItemState::Held);
    QCOMPARE(rig.controller->statusText(), QStringLiteral("decode error"));
    QVERIFY(rig.info.current());
    QCOMPARE(rig.info.current()->text.key, QStringLiteral("program.error.gstreamer_playback"));

    // When the deck will not stop either, the text says so.
    rig.player->refuseStop = true;
    rig.player->raiseError(QStringLiteral("decode error"));
    rig.controller->tick();
    QCOMPARE(rig.controller->statusText(),
             QStringLiteral("decode error\nThe playback pipeline also failed to stop."));
    QCOMPARE(rig.controller->programPhase(), PlayoutItemState::Failed);
    rig.player->refuseStop = false;

    // An error of the program audio pipeline leaves ON AIR alone and warns
    // that the sound has gone.
    QVERIFY(rig.putOnAir(b));
    while (rig.info.current())
        rig.info.dismiss();
    rig.player->raiseError(QStringLiteral("device lost"), true);
    rig.controller->tick();
    QCOMPARE(rig.controller->programPhase(), PlayoutItemState::Running);
    QVERIFY(rig.info.current());
    QCOMPARE(rig.info.current()->text.key, QStringLiteral("program.warning.audio_output_unavailable"));

    // Media gone offline: OFF AIR with its text.
    rig.player->currentOffline = true;
    rig.player->raiseError(QStringLiteral("not found"));
    rig.controller->tick();
    QCOMPARE(rig.controller->onAirItemId(), quint64(0));
    QCOMPARE(rig.controller->statusText(), QStringLiteral("MEDIA OFFLINE\nnot found"));
    QVERIFY(rig.model.isOffline(b));
    rig.player->currentOffline = false;

    // A live audio input that fails goes OFF AIR; its input is named.
    PlaylistItemRequest liveRequest;
    liveRequest.filePath = liveAudioUri(QStringLiteral("hw:1"));
    liveRequest.displayName = QStringLiteral("mic");
    liveRequest.sourceType = PlaylistSourceType::uvc;
    liveRequest.mediaType = PlaylistMediaType::audio;
    const quint64 live = rig.model.addItems({liveRequest}).value(0);
    QVERIFY(live != 0);
    QVERIFY(rig.putOnAir(live));
    QCOMPARE(rig.controller->onAirItemId(), live);
    QCOMPARE(rig.player->prepared.last().mappedAudio, QStringLiteral("hw:1"));
    while (rig.info.current())
        rig.info.dismiss();
    rig.player->raiseError(QStringLiteral("capture stopped"));
    rig.controller->tick();
    QCOMPARE(rig.controller->onAirItemId(), quint64(0));
    QVERIFY(rig.info.current());
    QCOMPARE(rig.info.current()->source, QStringLiteral("Live Audio"));
    QCOMPARE(rig.info.current()->text.key, QStringLiteral("input.audio.error"));
}

void TestProgramPlayout::offAirThenImmediateRetake()
{
    ProgramPlayoutRig rig;
    const quint64 a = rig.add(QStringLiteral("/media/a.mp4"), playing());
    QVERIFY(rig.putOnAir(a));
    QSignalSpy onAir(rig.controller.get(), &ProgramPlayoutController::onAirChanged);

    QCOMPARE(rig.operations.invoke(ControllerOperations::OffAir).status, ControllerOperations::Invoked);
    QCOMPARE(onAir.size(), 1);
    QCOMPARE(onAir.at(0).at(0).toBool(), false);
    QCOMPARE(rig.model.onAirItemId(), quint64(0));
    QCOMPARE(rig.controller->programPhase(), PlayoutItemState::Idle);
    // The selection is followed again at once, so the item can go back.
    QVERIFY(rig.controller->preparedTarget());
    rig.player->makeReady();
    QVERIFY(rig.controller->takeOnAir());
    QCOMPARE(rig.controller->onAirItemId(), a);
    QCOMPARE(onAir.size(), 2);
}

void TestProgramPlayout::listenersMayCallBackDuringATake()
{
    ProgramPlayoutRig rig;
    const quint64 a = rig.add(QStringLiteral("/media/a.mp4"), playing());
    const quint64 b = rig.add(QStringLiteral("/media/b.mp4"), playing());
    // A switcher that answers the take by going OFF AIR at once.
    bool answered = false;
    QObject::connect(rig.controller.get(), &ProgramPlayoutController::onAirChanged, rig.controller.get(),
                     [&](bool onAir) {
                         if (onAir && !std::exchange(answered, true))
                             rig.controller->offAir();
                     });
    QVERIFY(rig.putOnAir(a));
    QCOMPARE(rig.controller->onAirItemId(), quint64(0));
    QCOMPARE(rig.model.onAirItemId(), quint64(0));
    QCOMPARE(rig.player->plays, 0);

    // A model listener that takes the next item while the first one starts.
    QObject::connect(&rig.model, &PlaylistModel::onAirStateChanged, rig.controller.get(),
                     [&](quint64, quint64 current) {
                         if (current == a) {
                             rig.selection.select(b);
                             rig.player->makeReady();
                             rig.controller->takeOnAir();
                         }
                     });
    rig.selection.selectByOperator(a);
    rig.player->makeReady();
    QVERIFY(rig.controller->takeOnAir());
    QCOMPARE(rig.controller->onAirItemId(), b);
    QCOMPARE(rig.model.onAirItemId(), b);
    QVERIFY(rig.player->playing);
}

void TestProgramPlayout::ftbReversedMidAnimation()
{
    ProgramPlayoutRig rig;
    QSignalSpy ftb(rig.controller.get(), &ProgramPlayoutController::ftbChanged);
    QCOMPARE(rig.operations.invoke(ControllerOperations::ToggleFtb).status, ControllerOperations::Invoked);
    rig.advance(500);
    QCOMPARE(rig.controller->ftbLevel(), 0.5);
    QCOMPARE(rig.player->programFade, 0.5);

    rig.controller->toggleFtb();
    QVERIFY(!rig.controller->isFtbActive());
    rig.advance(500);
    QCOMPARE(rig.controller->ftbLevel(), 0.25);
    rig.advance(500);
    QCOMPARE(rig.controller->ftbLevel(), 0.0);
    QCOMPARE(rig.player->programFade, 0.0);
    QCOMPARE(ftb.size(), 2);
}

void TestProgramPlayout::seekHoldHidesStalePositions()
{
    ProgramPlayoutRig rig;
    const quint64 a = rig.add(QStringLiteral("/media/a.mp4"), playing(), 60000);
    QVERIFY(rig.putOnAir(a));
    rig.player->seekMovesPosition = false;
    rig.player->position = 100;  // the deck still reports where it was
    rig.controller->seek(30000);
    for (int i = 0; i < 20; ++i) {
        rig.controller->tick();
        QCOMPARE(rig.controller->displayedPositionMs(), qint64(30000));
    }
    rig.controller->tick();
    QCOMPARE(rig.controller->displayedPositionMs(), qint64(100));
}

void TestProgramPlayout::deletionGuard()
{
    ProgramPlayoutRig rig;
    const quint64 a = rig.add(QStringLiteral("/media/a.mp4"), playing());
    const quint64 b = rig.add(QStringLiteral("/media/b.mp4"), playing());
    const quint64 c = rig.add(QStringLiteral("/media/c.mp4"), playing());
    QVERIFY(rig.putOnAir(a));
    rig.model.setDskItem(b);
    QString error;
    QVERIFY(!rig.controller->canDeleteItem(a, &error));
    QCOMPARE(error, QStringLiteral("An item currently ON AIR cannot be deleted."));
    QVERIFY(!rig.controller->canDeleteItem(b, &error));
    QCOMPARE(error, QStringLiteral("An item currently in DSK cannot be deleted."));
    QVERIFY(rig.controller->canDeleteItem(c, &error));
    QVERIFY(error.isEmpty());

    // Removing the item on the standby releases it.
    rig.selection.selectByOperator(c);
    QCOMPARE(rig.controller->preparedTarget()->itemId, c);
    const int releases = rig.player->releases;
    QVERIFY(rig.model.removeItem(c));
    QVERIFY(!rig.controller->preparedTarget());
    QCOMPARE(rig.player->releases, releases + 1);
    QCOMPARE(rig.controller->onAirItemId(), a);
}

void TestProgramPlayout::metersRunWhileTheProgramPlays()
{
    ProgramPlayoutRig rig;
    const quint64 a = rig.add(QStringLiteral("/media/a.mp4"), playing());
    ProgramAudioController *meters = rig.controller->audioController();
    QSignalSpy input(meters, &ProgramAudioController::inputMeterChanged);
    QSignalSpy indicator(meters, &ProgramAudioController::inputIndicatorChanged);
    QSignalSpy cleared(meters, &ProgramAudioController::metersCleared);
    QVERIFY(!meters->isMetering());
    QVERIFY(rig.putOnAir(a));
    QVERIFY(meters->isMetering());

    rig.player->levels.input = {1000, -6.0, 0.0, true};
    meters->meterTick();
    meters->meterTick();  // the same reading is not sent again
    QCOMPARE(input.size(), 1);
    QCOMPARE(indicator.size(), 1);
    QCOMPARE(indicator.last(), (QList<QVariant>{true, true}));

    // Silence: the signal light holds 250 ms, the clip light 500 ms.
    rig.player->levels.input = {2000, -60.0, -60.0, false};
    rig.clockMs += 300;
    meters->meterTick();
    QCOMPARE(indicator.last(), (QList<QVariant>{false, true}));
    rig.clockMs += 300;
    meters->meterTick();
    QCOMPARE(indicator.last(), (QList<QVariant>{false, false}));

    QVERIFY(rig.controller->pause());
    QVERIFY(!meters->isMetering());
    QCOMPARE(cleared.size(), 1);
    QVERIFY(rig.controller->play());
    QVERIFY(meters->isMetering());
    QVERIFY(rig.controller->offAir());
    QVERIFY(!meters->isMetering());
}

void TestProgramPlayout::panelsFollowTheProgram()
{
    ProgramPlayoutRig rig;
    PlaylistItemSettings trimmed = playing();
    trimmed.inPointMs = 500;
    trimmed.outPointMs = 2500;
    const quint64 a = rig.add(QStringLiteral("/media/a.mp4"), trimmed);
    const quint64 b = rig.add(QStringLiteral("/media/b.mp4"), playing());
    FakeProgramPanel program;
    FakePlaylistPanel playlist;
    rig.controller->setProgramPanel(&program);
    rig.controller->setPlaylistPanel(&playlist);
    QCOMPARE(program.fileName, QString());
    QVERIFY(!program.hasItem);

    QVERIFY(rig.putOnAir(a));
    QVERIFY(program.fileName.endsWith(QStringLiteral("a.mp4")));
    QCOMPARE(program.in, qint64(500));
    QCOMPARE(program.out, qint64(2500));
    QVERIFY(program.rateControl);
    QVERIFY(program.hasItem && program.playing);
    rig.player->position = 1500;
    rig.controller->tick();
    QCOMPARE(program.position, qint64(1500));
    QCOMPARE(program.remaining, qint64(1000));
    // While the operator drags the seek bar, it is left alone.
    program.dragging = true;
    rig.player->position = 1600;
    rig.controller->tick();
    QCOMPARE(program.position, qint64(-1));
    QCOMPARE(program.remaining, qint64(900));
    program.dragging = false;

    // The playlist panel's crossfade stands over the controller's own, and
    // its rows show both items' levels while it runs.
    rig.controller->setManualCrossfade(false, 1000);
    playlist.crossfade = true;
    playlist.crossfadeMs = 400;
    QVERIFY(rig.putOnAir(b));
    QVERIFY(rig.player->takeCrossfades.last());
    QCOMPARE(rig.controller->crossfadeDurationMs(), qint64(400));
    rig.advance(100);
    QCOMPARE(playlist.levels.value(b), 0.25);
    QCOMPARE(playlist.levels.value(a), 0.75);
    rig.advance(300);
    QVERIFY(!rig.controller->isCrossfading());
    QCOMPARE(playlist.levels.value(b), 1.0);
    QCOMPARE(playlist.levels.value(a), 0.0);

    // Refusals reach the status line; OFF AIR empties the panel.
    rig.player->refusePause = true;
    QVERIFY(!rig.controller->pause());
    QCOMPARE(program.status, QStringLiteral("Pause failed."));
    QVERIFY(rig.controller->offAir());
    QCOMPARE(program.fileName, QString());
    QVERIFY(!program.hasItem);
    QCOMPARE(program.position, qint64(-1));
    QVERIFY(!program.rateControl);
    QCOMPARE(playlist.levels.value(b), 0.0);

    // A panel that goes away is let go of.
    rig.controller->setProgramPanel(nullptr);
    QVERIFY(rig.putOnAir(a));
    QCOMPARE(program.fileName, QString());
}

void TestProgramPlayout::conversionHoldKeepsSlideShowsOffThePlayer()
{
    ProgramPlayoutRig rig;
    const quint64 a = rig.add(QStringLiteral("/media/a.mp4"), playing());
    PlaylistItemRequest showRequest;
    showRequest.filePath = rig.media.filePath(QStringLiteral("deck.pptx"));
    QFile(showRequest.filePath).open(QIODevice::WriteOnly);
    showRequest.displayName = QStringLiteral("deck");
    showRequest.sourceType = PlaylistSourceType::powerpoint;
    showRequest.mediaType = PlaylistMediaType::presentation;
    showRequest.settings = playing();
    const quint64 show = rig.model.addItems({showRequest}).value(0);
    QVERIFY(show != 0);
    auto flag = std::make_shared<std::atomic<bool>>(true);
    QString error;

    // A slide show on the standby is released for the conversion.
    rig.selection.selectByOperator(show);
    QCOMPARE(rig.controller->preparedTarget()->itemId, show);
    const int releases = rig.player->releases;
    QVERIFY(rig.controller->requestConversionHold(flag, &error));
    QVERIFY(error.isEmpty());
    QVERIFY(!flag->load());
    QVERIFY(rig.controller->isConversionHeld());
    QCOMPARE(rig.player->releases, releases + 1);
    QVERIFY(!rig.controller->preparedTarget());
    QCOMPARE(rig.model.cueItemId(), quint64(0));

    // While it holds, no slide show is prepared; other items are.
    rig.selection.selectByOperator(a);
    QCOMPARE(rig.controller->preparedTarget()->itemId, a);
    rig.selection.selectByOperator(show);
    QVERIFY(!rig.controller->requestedTarget() || rig.controller->requestedTarget()->itemId != show);
    QVERIFY(!rig.controller->preparedTarget() || rig.controller->preparedTarget()->itemId != show);
    QVERIFY(!rig.controller->requestConversionHold(flag, &error));
    QCOMPARE(error, QStringLiteral("PowerPoint conversion preparation is unavailable."));

    // The end of the hold lets the selection onto the standby again.
    rig.controller->releaseConversionHold();
    QCOMPARE(rig.controller->preparedTarget()->itemId, show);

    // A slide show ON AIR refuses the hold.
    rig.player->makeReady();
    QVERIFY(rig.controller->takeOnAir());
    QCOMPARE(rig.controller->onAirItemId(), show);
    QVERIFY(!rig.controller->requestConversionHold(flag, &error));
    QVERIFY(!error.isEmpty());
    QVERIFY(!rig.controller->isConversionHeld());

    // A slide show that should follow an item is cued only once the hold
    // ends, if its last second has come meanwhile.
    QVERIFY(rig.controller->offAir());
    QVERIFY(rig.model.setItemSettings(a, playing(PlaylistEndMode::next)));
    QVERIFY(rig.putOnAir(a));
    QVERIFY(rig.controller->requestConversionHold(flag, &error));
    rig.player->position = 2500;
    rig.controller->tick();
    QVERIFY(!rig.controller->automaticTarget().requested);
    rig.controller->releaseConversionHold();
    QCOMPARE(rig.controller->automaticTarget().targetItemId, std::optional<quint64>(show));
    QCOMPARE(rig.controller->preparedTarget()->itemId, show);
}

QTEST_GUILESS_MAIN(TestProgramPlayout)
#include "tst_program_playout.moc"
