// The DSK layer's decisions on a scripted player and a clock the test moves:
// sending, queueing and cancelling, the fades with commands held while the
// layer fades off, the end modes and the successor, and the refusals with
// their texts.

#include "fake_dsk_player.h"

#include "kit/item_request.h"
#include "kit/log_capture.h"

#include "control/control_state_registry.h"
#include "control/controller_operations.h"
#include "playlist/playlist_model.h"
#include "playout/dsk_playout_controller.h"
#include "playout/dsk_texts.h"
#include "playout/selection_holder.h"
#include "shell/user_info_center.h"

#include <QTemporaryDir>
#include <QtTest>

using namespace tarnix;
using namespace tarnix::test;
using testkit::ItemRequest;
using testkit::LogCapture;

namespace {

struct DskRig {
    qint64 clockMs = 1000;
    QTemporaryDir media;
    PlaylistModel model{nullptr, PlaylistModelOptions{[](const QString &) { return true; }}};
    UserInfoCenter info;
    ControllerOperations operations;
    ControlStateRegistry state;
    SelectionHolder selection{&model, &operations};
    FakeDskPlayer player;
    std::unique_ptr<DskPlayoutController> dsk;

    DskRig()
    {
        DskPlayoutOptions options;
        options.startTimers = false;
        options.monotonicMs = [this] { return clockMs; };
        dsk = std::make_unique<DskPlayoutController>(&player, &model, &selection, &info, &operations, &state,
                                                     options);
    }

    quint64 add(const QString &name, PlaylistItemSettings settings = {}, qint32 playlist = 1)
    {
        const QString path = testkit::touchFile(media.filePath(name + QStringLiteral(".png")));
        return model.addItems({ItemRequest(path).name(name).playlist(playlist).type(PlaylistMediaType::video).settings(
                                   settings)})
            .value(0);
    }
    // Sends the item and lets its preparation finish: it shows.
    bool shown(quint64 itemId)
    {
        selection.select(itemId);
        if (!dsk->toggle())
            return false;
        player.finishPreparation();
        dsk->poll();
        return dsk->itemId() == itemId;
    }
    void advance(qint64 ms)
    {
        clockMs += ms;
        dsk->stepAnimations();
    }
    // Every message is logged when posted, duplicates of a waiting one too.
    LogCapture log;
    QString lastMessage() const
    {
        const QList<testkit::CapturedRecord> records = log.records();
        for (auto it = records.crbegin(); it != records.crend(); ++it) {
            if (it->category == QLatin1String("SYSTEM"))
                return it->text;
        }
        return {};
    }
};

QString english(const dsk_text::Text &text)
{
    return QString::fromUtf8(text.english);
}

PlaylistItemSettings withEnd(PlaylistEndMode mode)
{
    PlaylistItemSettings settings;
    settings.endMode = mode;
    settings.startMode = PlaylistStartMode::play;
    return settings;
}

} // namespace

class TestDskPlayout : public QObject
{
    Q_OBJECT

private slots:
    // The DSK button sends the selection, which shows once ready; a press
    // while it prepares cancels the queued show; a press on a preparation
    // nobody asked to show queues it.
    void sendQueueCancelAndHide()
    {
        DskRig rig;
        const quint64 logo = rig.add("logo");
        rig.selection.select(logo);
        QVERIFY(rig.dsk->panelState().selectionReady);
        QCOMPARE(rig.operations.invoke(ControllerOperations::ToggleDsk).status, ControllerOperations::Invoked);
        QCOMPARE(rig.dsk->panelKind(), DskPanelState::Queued);
        QCOMPARE(rig.dsk->panelState().text, QStringLiteral("logo"));
        QCOMPARE(rig.player.prepared.size(), 1);

        QVERIFY(rig.dsk->toggle()); // cancel
        QCOMPARE(rig.dsk->panelKind(), DskPanelState::Idle);
        QVERIFY(!rig.player.preparing);
        rig.player.finishPreparation();
        rig.dsk->poll();
        QCOMPARE(rig.dsk->itemId(), quint64(0));

        QVERIFY(rig.dsk->prepare(logo, false));
        QCOMPARE(rig.dsk->panelKind(), DskPanelState::Preparing);
        rig.player.finishPreparation();
        rig.dsk->poll();
        QCOMPARE(rig.dsk->itemId(), quint64(0)); // ready, not shown
        QVERIFY(rig.dsk->toggle());             // queue ON: shows at once
        QCOMPARE(rig.dsk->itemId(), logo);
        QCOMPARE(rig.model.dskItemId(), logo);
        QCOMPARE(rig.state.value(ControlStateRegistry::Field::DskItemId).toInteger(), qint64(logo));
        QCOMPARE(rig.dsk->panelKind(), DskPanelState::Active);
        QCOMPARE(rig.player.takes.last().paused, true); // the default start mode
        QCOMPARE(rig.player.takes.last().level, 1.0f);

        QCOMPARE(rig.operations.invoke(ControllerOperations::DskPlay).status, ControllerOperations::Invoked);
        QVERIFY(rig.dsk->panelState().playing);
        QCOMPARE(rig.operations.invoke(ControllerOperations::DskPause).status, ControllerOperations::Invoked);
        QVERIFY(!rig.dsk->panelState().playing);

        QVERIFY(rig.dsk->toggle()); // off, no fade
        QCOMPARE(rig.player.hides, 1);
        QCOMPARE(rig.dsk->itemId(), quint64(0));
        QCOMPARE(rig.model.dskItemId(), quint64(0));
        QVERIFY(rig.state.value(ControlStateRegistry::Field::DskItemId).isNull());
        QCOMPARE(rig.dsk->panelKind(), DskPanelState::Idle);
    }

    // A 1000 ms fade out runs from the level to 0 on the clock and only then
    // takes the layer off; presses meanwhile change nothing. A fade in
    // starts the layer at 0.
    void fadesHoldCommandsWhileEnding()
    {
        DskRig rig;
        PlaylistItemSettings settings;
        settings.fadeIn = {true, 500};
        settings.fadeOut = {true, 1000};
        const quint64 logo = rig.add("logo", settings);
        QVERIFY(rig.shown(logo));
        QCOMPARE(rig.player.takes.last().level, 0.0f);
        rig.advance(250);
        QVERIFY(qAbs(rig.player.level - 0.5f) < 0.01f);
        rig.advance(300);
        QCOMPARE(rig.player.level, 1.0f);

        QVERIFY(rig.dsk->toggle());
        QVERIFY(rig.dsk->isEnding());
        QVERIFY(rig.dsk->panelState().ending);
        qint64 elapsed = 0;
        while (rig.dsk->itemId() != 0 && elapsed < 2000) {
            rig.advance(16);
            elapsed += 16;
            if (elapsed == 496) {
                QVERIFY(qAbs(rig.player.level - 0.504f) < 0.01f);
                QVERIFY(!rig.dsk->toggle());
                QVERIFY(!rig.dsk->play());
                QVERIFY(!rig.dsk->pause());
                QVERIFY(!rig.dsk->prepare(logo, true));
                QCOMPARE(rig.player.plays + rig.player.pauses, 0);
            }
        }
        QVERIFY2(elapsed >= 1000 && elapsed <= 1050, qPrintable(QString::number(elapsed)));
        QCOMPARE(rig.player.level, 0.0f);
        QCOMPARE(rig.player.hides, 1);
        QVERIFY(!rig.dsk->isEnding());
    }

    // What is refused, with the operator's text: nothing selected, an item
    // of a BGM playlist, the item ON AIR, an offline item, a preparation or
    // a take that fails.
    void refusalsAreTold()
    {
        DskRig rig;
        QVERIFY(!rig.dsk->toggle());
        QVERIFY2(rig.lastMessage().contains(english(dsk_text::kInvalidItem)), qPrintable(rig.lastMessage()));
        QCOMPARE(rig.dsk->panelKind(), DskPanelState::Error);

        const qint32 bgmPlaylist = rig.model.addPlaylist();
        QVERIFY(rig.model.setPlaylistMode(bgmPlaylist, PlaylistMode::bgm));
        const quint64 music = rig.add("music", {}, bgmPlaylist);
        QVERIFY(!rig.dsk->prepare(music, true));
        QVERIFY2(rig.lastMessage().contains(english(dsk_text::kBgmMode)), qPrintable(rig.lastMessage()));

        const quint64 onAir = rig.add("onair");
        rig.model.setOnAirItem(onAir);
        QVERIFY(!rig.dsk->prepare(onAir, true));
        QVERIFY2(rig.lastMessage().contains(english(dsk_text::kInvalidItem)), qPrintable(rig.lastMessage()));

        const quint64 logo = rig.add("logo");
        rig.player.refusePrepare = english(dsk_text::kStillStopping);
        QVERIFY(!rig.dsk->prepare(logo, true));
        QVERIFY2(rig.lastMessage().contains(english(dsk_text::kStillStopping)), qPrintable(rig.lastMessage()));
        rig.player.refusePrepare.clear();

        QVERIFY(rig.dsk->prepare(logo, true));
        rig.player.failPreparation(english(dsk_text::kNoFrame));
        rig.dsk->poll();
        QVERIFY2(rig.lastMessage().contains(english(dsk_text::kPrepareFailed)), qPrintable(rig.lastMessage()));
        QCOMPARE(rig.dsk->panelKind(), DskPanelState::Error);
        QCOMPARE(rig.dsk->panelState().text, english(dsk_text::kNoFrame));

        rig.player.refuseTake = QStringLiteral("no");
        rig.selection.select(logo);
        QVERIFY(rig.dsk->toggle()); // an error with a selection retries
        rig.player.finishPreparation();
        rig.dsk->poll();
        QVERIFY2(rig.lastMessage().contains(english(dsk_text::kDisplayFailed)), qPrintable(rig.lastMessage()));
        QCOMPARE(rig.dsk->itemId(), quint64(0));
        QCOMPARE(rig.model.dskItemId(), quint64(0));
    }

    // At the item's end: stop returns to the in point stopped, pause holds
    // at the end and plays again from the in point, repeat plays again and
    // fades in again, each logged as an AUTO DSK completion.
    void endModes()
    {
        {
            DskRig rig;
            PlaylistItemSettings settings = withEnd(PlaylistEndMode::stop);
            settings.inPointMs = 400;
            QVERIFY(rig.shown(rig.add("a", settings)));
            rig.player.endOfStream();
            rig.dsk->poll();
            QCOMPARE(rig.player.seeks.last(), 400);
            QVERIFY(!rig.player.playing);
            QVERIFY(rig.dsk->isPaused());
            QVERIFY(rig.dsk->itemId() != 0); // stays on the layer
            QVERIFY(rig.log.contains(QStringLiteral("AUTO DSK completion item=1 endMode=stop")));
        }
        {
            DskRig rig;
            const quint64 item = rig.add("b", withEnd(PlaylistEndMode::pause));
            QVERIFY(rig.shown(item));
            rig.player.endOfStream();
            rig.dsk->poll();
            QCOMPARE(rig.dsk->phase(), PlayoutItemState::Held);
            QVERIFY(rig.player.seeks.isEmpty());
            QVERIFY(rig.log.contains(QStringLiteral("AUTO DSK completion item=1 endMode=pause")));
            QVERIFY(rig.dsk->play());
            QCOMPARE(rig.player.seeks.last(), 0);
            QVERIFY(rig.player.playing);
        }
        {
            DskRig rig;
            PlaylistItemSettings settings = withEnd(PlaylistEndMode::repeat);
            settings.repeatCount = 3; // three plays in all
            settings.repeatEndMode = PlaylistRepeatEndMode::stop;
            settings.fadeIn = {true, 200};
            QVERIFY(rig.shown(rig.add("c", settings)));
            rig.advance(300);
            for (int loop = 0; loop < 2; ++loop) {
                rig.player.endOfStream();
                rig.dsk->poll();
                QCOMPARE(rig.player.level, 0.0f); // fading in again
                QVERIFY(rig.player.playing);
                rig.advance(300);
            }
            rig.player.endOfStream(); // the repeats are done: stop
            rig.dsk->poll();
            QVERIFY(!rig.player.playing);
            QCOMPARE(rig.player.seeks.size(), 3);
            QCOMPARE(rig.log.texts(QStringLiteral("AUTO DSK completion")).filter(QStringLiteral("endMode=repeat")).size(),
                     2);
        }
    }

    // Next prepares the following file item in the last second, passing a
    // live input and the item ON AIR, and takes it at the end with the
    // ending item's crossfade; with nothing eligible the DSK pauses and
    // says so.
    void nextSuccessor()
    {
        DskRig rig;
        PlaylistItemSettings settings = withEnd(PlaylistEndMode::next);
        settings.endCrossfade = {true, 500};
        const quint64 first = rig.add("first", settings);
        const quint64 live = rig.model
                                 .addItems({ItemRequest(QStringLiteral("/dev/video0"))
                                                .name(QStringLiteral("camera"))
                                                .source(PlaylistSourceType::uvc)})
                                 .value(0);
        const quint64 onAir = rig.add("onair");
        const quint64 third = rig.add("third", withEnd(PlaylistEndMode::next));
        rig.model.setOnAirItem(onAir);
        QVERIFY(live != 0);
        QVERIFY(rig.shown(first));
        rig.player.duration = 10000;
        rig.player.position = 8000;
        rig.dsk->poll();
        QCOMPARE(rig.player.prepared.size(), 1); // not yet
        rig.player.position = 9100;
        rig.dsk->poll();
        QCOMPARE(rig.player.prepared.size(), 2);
        QCOMPARE(rig.dsk->preparingItemId(), third);
        rig.player.finishPreparation();
        rig.dsk->poll();
        QCOMPARE(rig.dsk->itemId(), first); // the successor waits for the end

        rig.player.endOfStream();
        rig.dsk->poll();
        QCOMPARE(rig.dsk->itemId(), third);
        QCOMPARE(rig.player.takes.last().crossfade, true);
        QCOMPARE(rig.player.takes.last().paused, false);
        QVERIFY(rig.log.contains(QStringLiteral("AUTO DSK transition target=%1 crossfade=true").arg(third)));
        rig.advance(600);
        QVERIFY(!rig.player.transition);

        // A goto without a destination: the DSK pauses and says so.
        PlaylistItemSettings gotoNowhere = rig.model.item(third)->settings;
        gotoNowhere.endMode = PlaylistEndMode::goto_;
        gotoNowhere.gotoTargetItemId = 0;
        QVERIFY(rig.model.setItemSettings(third, gotoNowhere));
        rig.player.endOfStream();
        rig.dsk->poll();
        QCOMPARE(rig.dsk->itemId(), third);
        QVERIFY(rig.dsk->isPaused());
        QVERIFY2(rig.lastMessage().contains(english(dsk_text::kNoGoto)), qPrintable(rig.lastMessage()));
    }
};

QTEST_MAIN(TestDskPlayout)
#include "tst_dsk_playout.moc"
