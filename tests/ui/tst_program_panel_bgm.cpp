// The program panel's BGM module, BGM fader and fader toggle on a BGM
// player with a scripted deck.

#include "playout/fake_bgm_player.h"

#include "control/controller_operations.h"
#include "kit/item_request.h"
#include "playlist/playlist_model.h"
#include "playout/bgm_playout_controller.h"
#include "playout/selection_holder.h"
#include "ui/audio_fader_widget.h"
#include "ui/program_panel.h"

#include <QDoubleSpinBox>
#include <QLabel>
#include <QPushButton>
#include <QTemporaryDir>
#include <QtTest>

using namespace tarnix;
using namespace tarnix::test;
using Ops = ControllerOperations;

namespace {

struct PanelRig {
    qint64 clockMs = 1000;
    QTemporaryDir media;
    Ops ops;
    PlaylistModel model{nullptr, PlaylistModelOptions{[](const QString &) { return true; }}};
    SelectionHolder selection{&model, &ops};
    FakeBgmPlayer player;
    ProgramPanel panel{&model, &ops};
    std::unique_ptr<BgmPlayoutController> bgm;

    PanelRig()
    {
        model.setPlaylistMode(1, PlaylistMode::bgm);
        model.setPlaylistName(1, QStringLiteral("Music"));
        model.addItems({testkit::ItemRequest(testkit::touchFile(media.filePath("a.wav"))).name("a")});
        BgmPlayoutOptions options;
        options.startTimers = false;
        options.monotonicMs = [this] { return clockMs; };
        bgm = std::make_unique<BgmPlayoutController>(&player, &model, &selection, nullptr, &ops, nullptr, nullptr,
                                                     options);
        bgm->setPanel(panel.bgmView());
    }
    template <typename T = QWidget>
    T *piece(const char *name) const
    {
        return panel.findChild<T *>(QString::fromLatin1(name));
    }
    QString label(const char *name) const { return piece<QLabel>(name)->text(); }
    void startPlaying()
    {
        QVERIFY(bgm->play());
        player.finishPreparation();
        bgm->poll();
        clockMs += 200;
        bgm->stepAnimations();
    }
};

} // namespace

class TestProgramPanelBgm : public QObject
{
    Q_OBJECT

private slots:
    // The BGM fader's value in tenths of a dB is the BGM path's gain.
    void bgmVolumeOperationsMoveTheBgmFader_data()
    {
        QTest::addColumn<int>("action");
        QTest::addColumn<int>("argument");
        QTest::addColumn<int>("status");
        QTest::addColumn<double>("gain");
        QTest::newRow("set +6 dB") << int(Ops::SetBgmVolume) << 60 << int(Ops::Invoked) << 1.99526;
        QTest::newRow("set off") << int(Ops::SetBgmVolume) << -960 << int(Ops::Invoked) << 0.0;
        QTest::newRow("set beyond the top") << int(Ops::SetBgmVolume) << 61 << int(Ops::Rejected) << 1.0;
        QTest::newRow("adjust -6 dB") << int(Ops::AdjustBgmVolume) << -60 << int(Ops::Invoked) << 0.501187;
        QTest::newRow("reset") << int(Ops::ResetBgmVolume) << 0 << int(Ops::Invoked) << 1.0;
    }
    void bgmVolumeOperationsMoveTheBgmFader()
    {
        QFETCH(int, action);
        QFETCH(int, argument);
        QFETCH(int, status);
        QFETCH(double, gain);
        PanelRig rig;
        QCOMPARE(rig.player.control, 1.0);
        if (action == Ops::ResetBgmVolume)
            QCOMPARE(rig.ops.invoke(Ops::SetBgmVolume, -200).status, Ops::Invoked);
        const Ops::Result result = action == Ops::ResetBgmVolume
                                       ? rig.ops.invoke(Ops::Action(action))
                                       : rig.ops.invoke(Ops::Action(action), argument);
        QCOMPARE(int(result.status), status);
        QVERIFY2(qAbs(rig.player.control - gain) < 1e-5, qPrintable(QString::number(rig.player.control)));
        QVERIFY(qAbs(rig.bgm->controlVolume() - gain) < 1e-5);
        // The item fader is not the BGM's.
        QCOMPARE(rig.piece<AudioFaderWidget>("programItemFader")->value(), 0);
    }

    void moduleShowsWhatTheBgmPlayerTells()
    {
        PanelRig rig;
        QCOMPARE(rig.label("programBgmStateLabel"), QStringLiteral("STOPPED"));
        QCOMPARE(rig.label("programBgmItemLabel"), QStringLiteral("No BGM item"));
        QVERIFY(!rig.piece("programBgmStopButton")->isEnabled());
        rig.piece<QPushButton>("programBgmPlayButton")->click();
        QCOMPARE(rig.label("programBgmStateLabel"), QStringLiteral("LOADING"));
        QCOMPARE(rig.label("programBgmItemLabel"), QStringLiteral("Current BGM: Music / a"));
        rig.player.finishPreparation();
        rig.bgm->poll();
        QCOMPARE(rig.label("programBgmStateLabel"), QStringLiteral("PLAYING"));
        QVERIFY(rig.piece("programBgmPauseButton")->isEnabled());

        auto *lamp = rig.piece("programBgmSignalIndicator");
        QCOMPARE(lamp->toolTip(), QStringLiteral("No BGM signal"));
        rig.player.level = {0, -12.0, -14.0, false};
        rig.bgm->poll();
        QVERIFY(lamp->property("active").toBool());
        QCOMPARE(lamp->toolTip(), QStringLiteral("BGM signal detected"));
        rig.player.level = {0, 0.0, 0.0, true};
        rig.bgm->poll();
        QVERIFY(lamp->property("clipped").toBool());
        QCOMPARE(lamp->toolTip(), QStringLiteral("BGM input is clipping"));

        // The fade buttons fade over the time set beside them.
        rig.clockMs += 200;
        rig.bgm->stepAnimations();
        rig.piece<QDoubleSpinBox>("programBgmFadeOutDurationSpinBox")->setValue(1.0);
        rig.piece<QPushButton>("programBgmFadeOutButton")->click();
        QCOMPARE(rig.label("programBgmStateLabel"), QStringLiteral("FADE OUT"));
        rig.clockMs += 1000;
        rig.bgm->stepAnimations();
        QCOMPARE(rig.player.fade, 0.0);
        QCOMPARE(rig.label("programBgmStateLabel"), QStringLiteral("FADED OUT (VOLUME 0)"));

        rig.piece<QPushButton>("programBgmStopButton")->click();
        QCOMPARE(rig.label("programBgmStateLabel"), QStringLiteral("STOPPED"));
        QVERIFY(!lamp->property("active").toBool());
    }

    // One strip shows the ITEM or the BGM fader; the toggle stands with the
    // BGM controls, which stay while BGM runs.
    void faderToggleAndHidingTheControls()
    {
        PanelRig rig;
        auto *toggle = rig.piece<QPushButton>("programBgmFaderToggle");
        auto *module = rig.piece("programBgmControlModule");
        QVERIFY(module->isHidden() && toggle->isHidden());
        QVERIFY(rig.panel.setBgmControlsShown(true));
        QVERIFY(!module->isHidden() && !toggle->isHidden());
        QCOMPARE(toggle->toolTip(), QStringLiteral("Show BGM fader"));
        QVERIFY(rig.piece("programBgmFader")->isHidden());
        toggle->click();
        QVERIFY(!rig.piece("programBgmFader")->isHidden());
        QVERIFY(rig.piece("programItemFader")->isHidden());
        QCOMPARE(toggle->toolTip(), QStringLiteral("Show ITEM fader"));

        rig.startPlaying();
        QVERIFY(!rig.panel.setBgmControlsShown(false));
        QVERIFY(!module->isHidden());
        QCOMPARE(rig.label("programStatusLabel"), QStringLiteral("The BGM controls will be hidden after BGM stops."));
        QVERIFY(rig.bgm->stop());
        rig.clockMs += 200;
        rig.bgm->stepAnimations();
        QVERIFY(module->isHidden() && toggle->isHidden());
        QVERIFY(!rig.piece("programItemFader")->isHidden());
    }
};

QTEST_MAIN(TestProgramPanelBgm)
#include "tst_program_panel_bgm.moc"
