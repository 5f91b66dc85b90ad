// The BGM player's decisions on a scripted deck and a clock the test moves:
// which item plays, what an item's end and a failure lead to, the transport
// ramp and the fades, and what the operator is told.

#include "fake_bgm_player.h"
#include "program_playout_rig.h"

#include "kit/item_request.h"
#include "kit/log_capture.h"

#include "control/control_state_registry.h"
#include "control/controller_operations.h"
#include "playlist/playlist_model.h"
#include "playout/bgm_playout_controller.h"
#include "playout/selection_holder.h"
#include "shell/user_info_center.h"

#include <QFileInfo>
#include <QTemporaryDir>
#include <QtTest>

using namespace tarnix;
using namespace tarnix::test;
using testkit::ItemRequest;
using testkit::LogCapture;

namespace {

// Playlist 1 in BGM mode, a scripted deck and the controller on them.
struct BgmRig {
    qint64 clockMs = 1000;
    QTemporaryDir media;
    PlaylistModel model{nullptr, PlaylistModelOptions{[](const QString &) { return true; }}};
    UserInfoCenter info;
    ControllerOperations operations;
    ControlStateRegistry state;
    SelectionHolder selection{&model, &operations};
    FakeBgmPlayer player;
    std::unique_ptr<BgmPlayoutController> bgm;

    BgmRig()
    {
        model.setPlaylistMode(1, PlaylistMode::bgm);
        BgmPlayoutOptions options;
        options.startTimers = false;
        options.monotonicMs = [this] { return clockMs; };
        bgm = std::make_unique<BgmPlayoutController>(&player, &model, &selection, &info, &operations, &state, nullptr,
                                                     options);
    }

    quint64 add(const QString &name, ItemRequest request, qint32 playlist = 1)
    {
        (void)request.name(name).playlist(playlist);
        return model.addItems({request}).value(0);
    }
    ItemRequest file(const QString &name) const
    {
        return ItemRequest(testkit::touchFile(media.filePath(name + QStringLiteral(".wav"))))
            .type(PlaylistMediaType::audio);
    }
    QString path(quint64 id) const { return model.item(id)->filePath; }

    // The loading item becomes ready and the tick starts it.
    void ready()
    {
        player.finishPreparation();
        bgm->poll();
    }
    void end()
    {
        player.endOfStream();
        bgm->poll();
    }
    void advance(qint64 ms)
    {
        clockMs += ms;
        bgm->stepAnimations();
    }
    // Plays the ramp up to full.
    void settle() { advance(200); }
};

} // namespace

class TestBgmPlayout : public QObject
{
    Q_OBJECT

private slots:
    void playRefusesWithoutAPlayableItem_data()
    {
        QTest::addColumn<QString>("situation");
        QTest::newRow("all offline") << "offline";
        QTest::newRow("only a standard playlist") << "standard";
        QTest::newRow("empty BGM playlist") << "empty";
    }
    void playRefusesWithoutAPlayableItem()
    {
        QFETCH(QString, situation);
        BgmRig rig;
        LogCapture log;
        if (situation == "offline") {
            for (const char *name : {"a", "b"})
                rig.model.markFileUnavailable(rig.path(rig.add(name, rig.file(name))));
        } else if (situation == "standard") {
            rig.model.setPlaylistMode(1, PlaylistMode::standard);
            rig.add("a", rig.file("a"));
        }
        QVERIFY(!rig.bgm->play());
        QVERIFY(rig.player.prepared.isEmpty());
        QCOMPARE(rig.info.current()->source, QStringLiteral("BGM"));
        QCOMPARE(rig.info.current()->text.toString(),
                 QStringLiteral("No playable item was found in the current BGM playlist."));
        QCOMPARE(rig.bgm->state(), BgmPlayoutController::State::Stopped);
        QCOMPARE(rig.model.bgmItemId(), 0u);
        // Pause and the fades act on BGM that plays.
        QCOMPARE(rig.operations.invoke(ControllerOperations::BgmPause).status, ControllerOperations::Rejected);
        QCOMPARE(rig.operations.invoke(ControllerOperations::BgmFadeOutConfigured).status,
                 ControllerOperations::Rejected);
    }

    // Play starts at the selected item when it qualifies, otherwise at the
    // first playable item of the BGM playlist.
    void playStartsAtTheSelectedItem()
    {
        BgmRig rig;
        const quint64 a = rig.add("a", rig.file("a"));
        const quint64 b = rig.add("b", rig.file("b"));
        rig.selection.selectByOperator(b);
        QVERIFY(rig.bgm->play());
        QCOMPARE(rig.player.prepared, QStringList{rig.path(b)});
        QCOMPARE(rig.bgm->state(), BgmPlayoutController::State::Loading);
        QCOMPARE(rig.bgm->stateText(), QStringLiteral("LOADING"));
        QCOMPARE(rig.model.bgmItemId(), b);
        QCOMPARE(rig.bgm->itemLine(), QStringLiteral("Current BGM: Playlist 1 / b"));
        // A second press while it loads only asks for play once it is ready.
        QVERIFY(rig.bgm->play());
        QCOMPARE(rig.player.prepared.size(), 1);
        rig.ready();
        QCOMPARE(rig.bgm->state(), BgmPlayoutController::State::Playing);
        QCOMPARE(rig.player.played, QStringList{rig.path(b)});
        QVERIFY(!rig.player.muted);
        QVERIFY(rig.player.metering);
        rig.settle();
        QCOMPARE(rig.player.transport, 1.0);
        QCOMPARE(rig.state.value(ControlStateRegistry::Field::BgmItemId).toInteger(), qint64(b));

        QVERIFY(rig.bgm->stop());
        rig.settle();
        QVERIFY(!rig.player.metering);
        rig.selection.selectByOperator(0);
        QVERIFY(rig.bgm->play());
        QCOMPARE(rig.player.prepared.last(), rig.path(a));
    }

    void repeatPlaysItsCountThenTheNextItem()
    {
        BgmRig rig;
        LogCapture log;
        const quint64 a = rig.add("a", rig.file("a").endMode(PlaylistEndMode::repeat).repeat(3, PlaylistRepeatEndMode::next));
        const quint64 b = rig.add("b", rig.file("b").endMode(PlaylistEndMode::stop));
        QVERIFY(rig.bgm->play());
        rig.ready();
        for (int play = 2; play <= 3; ++play) {
            rig.settle();
            rig.end();
            QCOMPARE(rig.player.playsOf(rig.path(a)), play);
            QCOMPARE(rig.player.seeks.last(), 0);
            // Each loop opens from silence again.
            QCOMPARE(rig.player.transport, 0.0);
            QCOMPARE(rig.model.repeatProgress(a), play);
        }
        QCOMPARE(rig.player.prepared, QStringList{rig.path(a)});
        rig.end();
        QCOMPARE(rig.player.playsOf(rig.path(a)), 3);
        QCOMPARE(rig.player.prepared.last(), rig.path(b));
        rig.ready();
        QCOMPARE(rig.player.played.last(), rig.path(b));
        QCOMPARE(log.count(QStringLiteral("AUTO BGM completion item=%1 endMode=repeat").arg(a)), 2);
        QCOMPARE(log.count(QStringLiteral("AUTO BGM completion item=%1 endMode=next").arg(a)), 1);
        // The last item stops the player.
        rig.end();
        QCOMPARE(rig.bgm->state(), BgmPlayoutController::State::Stopped);
        QCOMPARE(rig.model.bgmItemId(), 0u);
        QVERIFY(log.contains(QStringLiteral("AUTO BGM completion item=%1 endMode=stop").arg(b)));
    }

    void endModesNextWrapsAndPauseHolds()
    {
        BgmRig rig;
        const quint64 only = rig.add("only", rig.file("only").endMode(PlaylistEndMode::next));
        QVERIFY(rig.bgm->play());
        rig.ready();
        rig.end();
        // A one-item playlist wraps onto itself.
        QCOMPARE(rig.player.prepared, QStringList({rig.path(only), rig.path(only)}));
        rig.ready();
        QCOMPARE(rig.player.playsOf(rig.path(only)), 2);

        PlaylistItemSettings settings = rig.model.item(only)->settings;
        settings.endMode = PlaylistEndMode::pause;
        QVERIFY(rig.model.setItemSettings(only, settings));
        rig.end();
        QCOMPARE(rig.bgm->state(), BgmPlayoutController::State::Paused);
        QVERIFY(rig.player.muted);
        // Play again starts the item over from its in point.
        QVERIFY(rig.bgm->play());
        QCOMPARE(rig.player.seeks.last(), 0);
        QCOMPARE(rig.player.playsOf(rig.path(only)), 3);
    }

    void gotoTakesItsTargetOrStopsWithTheTransitionText()
    {
        BgmRig rig;
        const quint64 target = rig.add("target", rig.file("target"));
        PlaylistItemSettings settings;
        settings.endMode = PlaylistEndMode::goto_;
        settings.gotoTargetItemId = target;
        const quint64 a = rig.add("a", rig.file("a").settings(settings));
        rig.selection.selectByOperator(a);
        QVERIFY(rig.bgm->play());
        rig.ready();
        rig.end();
        QCOMPARE(rig.player.prepared.last(), rig.path(target));

        // A target that went offline ends the run with the transition text.
        QVERIFY(rig.bgm->stop());
        rig.model.markFileUnavailable(rig.path(target));
        QVERIFY(rig.bgm->play());
        rig.ready();
        rig.end();
        QCOMPARE(rig.bgm->state(), BgmPlayoutController::State::Stopped);
        QCOMPARE(rig.info.current()->text.toString(),
                 QStringLiteral("The BGM item transition could not be completed."));
    }

    // An item that fails is skipped once per run and tried again after a
    // fresh Play.
    void failingItemIsSkippedUntilAFreshPlay()
    {
        BgmRig rig;
        LogCapture log;
        const quint64 a = rig.add("a", rig.file("a").endMode(PlaylistEndMode::next));
        const quint64 b = rig.add("broken", rig.file("broken").endMode(PlaylistEndMode::next));
        const quint64 c = rig.add("c", rig.file("c").endMode(PlaylistEndMode::next));
        rig.player.failingPaths.insert(rig.path(b));
        QVERIFY(rig.bgm->play());
        rig.ready();
        rig.end();
        QCOMPARE(rig.player.prepared.last(), rig.path(b));
        rig.ready(); // fails: C follows at once
        QCOMPARE(rig.player.prepared.last(), rig.path(c));
        QCOMPARE(rig.bgm->skippedItems(), QSet<quint64>{b});
        QCOMPARE(log.count(QStringLiteral("NOTICE BGM Skipped BGM item: broken")), 1);
        rig.ready();
        rig.end();
        rig.ready();
        QCOMPARE(rig.player.played.last(), rig.path(a));
        rig.end();
        QCOMPARE(rig.player.prepared.last(), rig.path(c));
        QCOMPARE(rig.player.preparesOf(rig.path(b)), 1);

        // A playing item whose deck fails is skipped the same way.
        rig.ready();
        rig.player.raiseError(QStringLiteral("stream error"));
        rig.bgm->poll();
        QCOMPARE(rig.bgm->skippedItems(), QSet<quint64>({b, c}));
        QCOMPARE(rig.player.prepared.last(), rig.path(a));

        QVERIFY(rig.bgm->stop());
        rig.settle();
        rig.selection.selectByOperator(a);
        QVERIFY(rig.bgm->play());
        QVERIFY(rig.bgm->skippedItems().isEmpty());
        rig.ready();
        rig.end();
        QCOMPARE(rig.player.preparesOf(rig.path(b)), 2);
    }

    void lastPlayableItemFailingStopsWithTheNoPlayableText()
    {
        BgmRig rig;
        const quint64 a = rig.add("a", rig.file("a"));
        rig.player.failingPaths.insert(rig.path(a));
        QVERIFY(rig.bgm->play());
        rig.ready();
        QCOMPARE(rig.bgm->state(), BgmPlayoutController::State::Stopped);
        QCOMPARE(rig.player.releases, 1);
        QCOMPARE(rig.info.current()->text.toString(), QStringLiteral("Skipped BGM item: a"));
        QCOMPARE(rig.info.waiting().value(0).text.toString(),
                 QStringLiteral("No playable item was found in the current BGM playlist."));
    }

    // Pause and stop ramp the path down over 150 ms before they act, never
    // upward; a path that is silent already acts at once.
    void transportRampsCompleteTheirAction_data()
    {
        QTest::addColumn<bool>("stop");
        QTest::addColumn<bool>("fadedOut");
        QTest::newRow("stop") << true << false;
        QTest::newRow("pause") << false << false;
        QTest::newRow("stop while faded out") << true << true;
        QTest::newRow("pause while faded out") << false << true;
    }
    void transportRampsCompleteTheirAction()
    {
        QFETCH(bool, stop);
        QFETCH(bool, fadedOut);
        BgmRig rig;
        rig.add("a", rig.file("a"));
        QVERIFY(rig.bgm->play());
        rig.ready();
        rig.settle();
        if (fadedOut) {
            QVERIFY(rig.bgm->fadeOut(500));
            rig.advance(600);
        }
        rig.player.transports.clear();
        QVERIFY(stop ? rig.bgm->stop() : rig.bgm->pause());
        if (fadedOut) {
            QCOMPARE(rig.bgm->state(),
                     stop ? BgmPlayoutController::State::Stopped : BgmPlayoutController::State::Paused);
            return;
        }
        QCOMPARE(rig.bgm->rampPurpose(),
                 int(stop ? BgmPlayoutController::StopPurpose : BgmPlayoutController::PausePurpose));
        // The mix is asked for the whole ramp at once.
        QCOMPARE(rig.player.ramps.size(), 2);
        QCOMPARE(rig.player.ramps.last().from, 1.0);
        QCOMPARE(rig.player.ramps.last().to, 0.0);
        QCOMPARE(rig.player.ramps.last().durationMs, 150);
        QList<double> levels;
        for (int step = 0; step < 14; ++step) {
            rig.advance(10);
            levels.append(rig.bgm->transportVolume());
        }
        QVERIFY(std::is_sorted(levels.rbegin(), levels.rend()));
        QCOMPARE(rig.bgm->state(), BgmPlayoutController::State::Playing);
        QCOMPARE(rig.player.releases, 0);
        rig.advance(10);
        QCOMPARE(rig.player.transport, 0.0);
        QVERIFY(rig.player.muted);
        if (stop) {
            QCOMPARE(rig.bgm->state(), BgmPlayoutController::State::Stopped);
            QCOMPARE(rig.player.releases, 1);
            QCOMPARE(rig.bgm->stateText(), QStringLiteral("STOPPED"));
            QCOMPARE(rig.bgm->itemLine(), QStringLiteral("No BGM item"));
        } else {
            QCOMPARE(rig.bgm->state(), BgmPlayoutController::State::Paused);
            QCOMPARE(rig.player.pauses, 1);
            // Resuming ramps up from silence.
            QVERIFY(rig.bgm->play());
            QCOMPARE(rig.player.transport, 0.0);
            rig.settle();
            QCOMPARE(rig.player.transport, 1.0);
        }
    }

    // The mix renders ahead of the clock: the stop drops the deck only once
    // the ramp's audio has passed, or when the wait for it is over.
    void stopWaitsForTheMixToPlayTheRamp()
    {
        BgmRig rig;
        rig.add("a", rig.file("a"));
        QVERIFY(rig.bgm->play());
        rig.ready();
        rig.settle();
        rig.player.rampApplied = false;
        QVERIFY(rig.bgm->stop());
        rig.advance(150);
        rig.advance(20);
        QCOMPARE(rig.bgm->state(), BgmPlayoutController::State::Playing);
        QCOMPARE(rig.player.releases, 0);
        rig.player.rampApplied = true;
        rig.advance(5);
        QCOMPARE(rig.bgm->state(), BgmPlayoutController::State::Stopped);

        QVERIFY(rig.bgm->play());
        rig.ready();
        rig.player.rampApplied = false;
        rig.settle();
        rig.advance(500);
        QCOMPARE(rig.player.transport, 1.0);
        QVERIFY(rig.bgm->stop());
        rig.advance(150);
        rig.advance(499);
        QCOMPARE(rig.player.releases, 1);
        rig.advance(1);
        QCOMPARE(rig.player.releases, 2);
    }

    void playDuringAStopRampCallsTheStopOff()
    {
        BgmRig rig;
        rig.add("a", rig.file("a"));
        QVERIFY(rig.bgm->play());
        rig.ready();
        rig.settle();
        QVERIFY(rig.bgm->stop());
        rig.advance(75);
        QVERIFY(rig.bgm->play());
        rig.settle();
        QCOMPARE(rig.bgm->state(), BgmPlayoutController::State::Playing);
        QCOMPARE(rig.player.transport, 1.0);
        QCOMPARE(rig.player.releases, 0);
    }

    void aStopThatFailsIsToldAndRetried()
    {
        BgmRig rig;
        rig.add("a", rig.file("a"));
        QVERIFY(rig.bgm->play());
        rig.ready();
        rig.player.refuseRelease = true;
        rig.player.playing = false;
        QVERIFY(!rig.bgm->stop());
        QVERIFY(rig.bgm->isStopFailed());
        QCOMPARE(rig.bgm->stateText(), QStringLiteral("ERROR"));
        const QString text = QStringLiteral("BGM could not be stopped. Press STOP again to reset it.");
        QCOMPARE(rig.info.current()->text.toString(), text);
        rig.info.dismiss();
        QVERIFY(!rig.bgm->play());
        QCOMPARE(rig.info.current()->text.toString(), text);
        rig.player.refuseRelease = false;
        QVERIFY(rig.bgm->stop());
        QVERIFY(!rig.bgm->isStopFailed());
        QCOMPARE(rig.bgm->state(), BgmPlayoutController::State::Stopped);
    }

    // While the program output changes its device BGM cannot start.
    void playRefusesWhileTheProgramOutputChanges()
    {
        BgmRig rig;
        rig.add("a", rig.file("a"));
        rig.player.out = BgmPlayer::Output::Changing;
        QVERIFY(!rig.bgm->play());
        QVERIFY(rig.player.prepared.isEmpty());
        QCOMPARE(rig.info.current()->text.toString(),
                 QStringLiteral("ON AIR audio output is being prepared or changed. Press BGM PLAY again after it "
                                "finishes."));
    }

    // After a fade out to nothing the player runs on.
    void fadeOutLeavesThePlayerRunningAtVolumeZero()
    {
        BgmRig rig;
        rig.add("a", rig.file("a"));
        QVERIFY(rig.bgm->play());
        rig.ready();
        rig.settle();
        QVERIFY(rig.bgm->fadeOut(1000));
        rig.advance(500);
        QCOMPARE(rig.bgm->stateText(), QStringLiteral("FADE OUT"));
        QCOMPARE(rig.player.fade, 0.5);
        rig.advance(500);
        QCOMPARE(rig.player.fade, 0.0);
        QCOMPARE(rig.bgm->stateText(), QStringLiteral("FADED OUT (VOLUME 0)"));
        for (qint64 position : {1000, 2000}) {
            rig.player.position = position;
            rig.bgm->poll();
            QVERIFY(rig.player.isPlaying());
            QCOMPARE(rig.bgm->stateText(), QStringLiteral("FADED OUT (VOLUME 0)"));
        }
        QCOMPARE(rig.operations.invoke(ControllerOperations::BgmFadeIn, qint64(400)).status,
                 ControllerOperations::Invoked);
        rig.advance(200);
        QCOMPARE(rig.bgm->stateText(), QStringLiteral("FADE IN"));
        rig.advance(200);
        QCOMPARE(rig.bgm->stateText(), QStringLiteral("PLAYING"));
        QCOMPARE(rig.player.fade, 1.0);
    }

    // The item's own fade out runs over what is left of it, and the next
    // item starts at full level.
    void itemFadeOutRunsOverTheRemainingTime()
    {
        BgmRig rig;
        PlaylistItemSettings settings;
        settings.endMode = PlaylistEndMode::next;
        settings.fadeOut = {true, 2000};
        settings.outPointMs = 9000;
        rig.add("a", rig.file("a").settings(settings));
        rig.add("b", rig.file("b"));
        QVERIFY(rig.bgm->play());
        rig.ready();
        rig.settle();
        rig.player.position = 6000;
        rig.bgm->poll();
        QCOMPARE(rig.bgm->stateText(), QStringLiteral("PLAYING"));
        rig.player.position = 7500;
        rig.bgm->poll();
        QCOMPARE(rig.bgm->stateText(), QStringLiteral("FADE OUT"));
        rig.advance(750);
        QCOMPARE(rig.player.fade, 0.5);
        rig.advance(750);
        QCOMPARE(rig.player.fade, 0.0);
        rig.end();
        QCOMPARE(rig.player.fade, 1.0);
        rig.ready();
        rig.settle();
        QCOMPARE(rig.bgm->stateText(), QStringLiteral("PLAYING"));
    }

    // Changes of the item while it plays reach the deck at once; an item
    // that goes offline is skipped like a failure.
    void itemChangesFollowTheItem()
    {
        BgmRig rig;
        PlaylistItemSettings settings;
        settings.endMode = PlaylistEndMode::next;
        const quint64 a = rig.add("a", rig.file("a").settings(settings));
        const quint64 b = rig.add("b", rig.file("b"));
        QVERIFY(rig.bgm->play());
        rig.ready();
        QCOMPARE(rig.player.itemVolume, 1.0);
        settings.nominalVolumeTenthsDb = -60;
        settings.nominalAudioDelayFrames = 2;
        QVERIFY(rig.model.setItemSettings(a, settings));
        QVERIFY(qAbs(rig.player.itemVolume - 0.501187) < 1e-5);
        QCOMPARE(rig.player.delayFrames, 2);
        rig.model.markFileUnavailable(rig.path(a));
        QCOMPARE(rig.player.prepared.last(), rig.path(b));
        QCOMPARE(rig.model.bgmItemId(), b);
    }

    // ON AIR and BGM meet only in the mix: taking an item and going OFF AIR
    // leave the BGM playing, and the state query tells both items.
    void offAirLeavesBgmRunning()
    {
        ProgramPlayoutRig rig;
        const qint32 music = rig.model.addPlaylist();
        QVERIFY(rig.model.setPlaylistMode(music, PlaylistMode::bgm));
        const quint64 song = rig.add("song.wav", {}, 60000, PlaylistMediaType::audio, music);
        const quint64 clip = rig.add("clip.mp4", playing(PlaylistEndMode::pause));
        BgmPlayoutController *bgm = rig.controller->bgmController();
        QVERIFY(bgm);
        rig.selection.selectByOperator(song);
        QCOMPARE(rig.operations.invoke(ControllerOperations::BgmPlay).status, ControllerOperations::Invoked);
        rig.bgm.finishPreparation();
        rig.controller->tick();
        QCOMPARE(bgm->state(), BgmPlayoutController::State::Playing);
        // The BGM item is not ON AIR's to take.
        QVERIFY(!rig.controller->takeOnAir());
        QVERIFY(rig.putOnAir(clip));
        rig.controller->tick();
        QCOMPARE(rig.state.value(ControlStateRegistry::Field::OnAirItemId).toInteger(), qint64(clip));
        QCOMPARE(rig.state.value(ControlStateRegistry::Field::BgmItemId).toInteger(), qint64(song));
        QVERIFY(rig.controller->offAir());
        rig.controller->tick();
        QCOMPARE(bgm->state(), BgmPlayoutController::State::Playing);
        QVERIFY(rig.bgm.playing);
        QCOMPARE(rig.bgm.releases, 0);
        QCOMPARE(rig.model.bgmItemId(), song);
        QVERIFY(rig.state.value(ControlStateRegistry::Field::OnAirItemId).isNull());
        QCOMPARE(rig.state.value(ControlStateRegistry::Field::BgmItemId).toInteger(), qint64(song));
        // Nor can the BGM item be deleted while it plays.
        QVERIFY(!rig.controller->canDeleteItem(song));
    }
};

QTEST_GUILESS_MAIN(TestBgmPlayout)
#include "tst_bgm_playout.moc"
