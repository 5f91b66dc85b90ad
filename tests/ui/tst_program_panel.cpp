#include "control/controller_operations.h"
#include "playlist/playlist_model.h"
#include "playout/dsk_panel_view.h"
#include "playout/program_playout_panels.h"
#include "ui/audio_fader_widget.h"
#include "ui/program_panel.h"
#include "ui/remaining_time.h"

#include "kit/item_request.h"

#include <QDoubleSpinBox>
#include <QLabel>
#include <QProxyStyle>
#include <QPushButton>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

using namespace tarnix;
using Ops = ControllerOperations;

namespace {

// Counts the times a widget is polished: the remaining time is repolished
// only when its ending-soon colour changes, not on every new time.
class PolishCount : public QProxyStyle
{
public:
    int count = 0;
    using QProxyStyle::polish;
    void polish(QWidget *widget) override
    {
        ++count;
        QProxyStyle::polish(widget);
    }
};

} // namespace

class TestProgramPanel : public QObject
{
    Q_OBJECT

private slots:
    void remainingTimeRules()
    {
        using namespace remaining_time;
        auto item = [](qint64 remainingMs, double rate) {
            Input input;
            input.itemRemainingMs = remainingMs;
            input.rate = rate;
            return input;
        };
        // Rounded up to a whole millisecond at the item's speed.
        QCOMPARE(compute(item(1001, 2.0)).ms, std::optional<qint64>(501));
        QCOMPARE(compute(item(-5, 1.0)).ms, std::nullopt);
        QCOMPARE(compute(item(0, 1.0)).ms, std::optional<qint64>(0));
        // Ending soon: 1 to 5000 ms of a known time only.
        QVERIFY(!compute(item(0, 1.0)).endingSoon);
        QVERIFY(compute(item(1, 1.0)).endingSoon);
        QVERIFY(compute(item(5000, 1.0)).endingSoon);
        QVERIFY(!compute(item(5001, 1.0)).endingSoon);
        QVERIFY(compute(item(9000, 2.0)).endingSoon);  // 4500 ms at double speed
        Input live = item(3000, 1.0);
        live.live = true;
        QVERIFY(compute(live).live && !compute(live).endingSoon);
        Input total = item(3000, 1.0);
        total.totalMode = true;
        QVERIFY(compute(total).unknown && !compute(total).endingSoon);
        total.totalMs = -20;
        QCOMPARE(compute(total).ms, std::optional<qint64>(0));
        QCOMPARE(timeText(3723456), QStringLiteral("01:02:03.45"));
    }

    void showsWhatOnAirTells()
    {
        PolishCount polishes;  // outlives the panel that uses it
        Ops ops;
        PlaylistModel model;
        ProgramPanel panel(&model, &ops);
        ProgramPanelView *view = panel.view();
        auto *file = panel.findChild<QLabel *>("onAirFileLabel");
        auto *remaining = panel.findChild<QLabel *>("programRemainingTime");
        QCOMPARE(file->text(), QStringLiteral("No file selected"));
        QVERIFY(!panel.findChild<QPushButton *>("offAirButton")->isEnabled());
        remaining->setStyle(&polishes);

        view->showOnAirFile(QStringLiteral("Opening"), QStringLiteral("/show/opening.mp4"));
        view->showTransport(true, true);
        view->showRate(2.0, true);
        view->showTimes(1000, 20000, 19000, false);
        QCOMPARE(remaining->text(), QStringLiteral("00:00:09.50"));
        QCOMPARE(remaining->property("endingSoon").toBool(), false);
        view->showTimes(1040, 20000, 18960, false);
        QCOMPARE(remaining->text(), QStringLiteral("00:00:09.48"));
        QVERIFY(panel.findChild<QPushButton *>("programPauseButton")->isEnabled());
        QVERIFY(!panel.findChild<QPushButton *>("programPlayButton")->isEnabled());
        view->showTimes(12000, 20000, 8000, false);
        QCOMPARE(remaining->text(), QStringLiteral("00:00:04.00"));
        QCOMPARE(remaining->property("endingSoon").toBool(), true);
        const int polishedOnce = polishes.count;
        QVERIFY(polishedOnce > 0);
        view->showTimes(13000, 20000, 7000, false);
        view->showTimes(14000, 20000, 6000, false);
        QCOMPARE(remaining->text(), QStringLiteral("00:00:03.00"));
        QCOMPARE(polishes.count, polishedOnce);
        view->showTimes(-1, -1, -1, true);
        QCOMPARE(remaining->text(), QStringLiteral("LIVE"));
        QCOMPARE(remaining->property("endingSoon").toBool(), false);
        view->showOnAirFile(QString(), QString());
        QCOMPARE(file->text(), QStringLiteral("No file selected"));
    }

    // A running time repaints its label and nothing else: no layout of the
    // window is redone while only the times change.
    void runningTimesDoNotRelayoutTheWindow()
    {
        struct LayoutRequests : QObject {
            int count = 0;
            bool eventFilter(QObject *, QEvent *event) override
            {
                count += event->type() == QEvent::LayoutRequest;
                return false;
            }
        } requests;
        Ops ops;
        PlaylistModel model;
        ProgramPanel panel(&model, &ops);
        ProgramPanelView *view = panel.view();
        panel.resize(1000, 700);
        panel.show();
        QVERIFY(QTest::qWaitForWindowExposed(&panel));
        view->showOnAirFile(QStringLiteral("Opening"), QStringLiteral("/show/opening.mp4"));
        view->showTransport(true, true);
        view->showTimes(0, 3'600'000, 3'600'000, false);
        // The first layout climbs the window one event loop pass per level.
        for (int pass = 0; pass < 8; ++pass)
            QCoreApplication::processEvents();
        qApp->installEventFilter(&requests);
        for (qint64 position = 0; position < 3'600'000; position += 111'111) {
            view->showTimes(position, 3'600'000, 3'600'000 - position, false);
            QCoreApplication::processEvents();
        }
        qApp->removeEventFilter(&requests);
        QCOMPARE(requests.count, 0);
        // A text longer than any the label was fitted for still shows whole.
        auto *remaining = panel.findChild<QLabel *>("programRemainingTime");
        view->showTimes(-1, -1, -1, true);
        QVERIFY(remaining->width() >= remaining->fontMetrics().horizontalAdvance(remaining->text()));
    }

    // The volume operations move the faders, which tell the program audio;
    // a manual fade moves the fader it names over its time.
    void volumesAndManualFades()
    {
        QTemporaryDir dir;
        Ops ops;
        PlaylistModel model;
        ProgramPanel panel(&model, &ops);
        ProgramPanelView *view = panel.view();
        QSignalSpy master(view, &ProgramAudioPanel::masterVolumeChanged);
        QCOMPARE(ops.invoke(Ops::SetMasterVolume, -60).status, Ops::Invoked);
        QCOMPARE(master.size(), 1);
        QVERIFY(qAbs(master.last().at(0).toDouble() - 0.501187) < 1e-5);
        QCOMPARE(ops.invoke(Ops::AdjustMasterVolume, 10).status, Ops::Invoked);
        QCOMPARE(panel.findChild<AudioFaderWidget *>("programMasterFader")->value(), -50);
        QCOMPARE(ops.invoke(Ops::SetMasterVolume, 61).status, Ops::Rejected);
        QCOMPARE(ops.invoke(Ops::ResetMasterVolume).status, Ops::Invoked);
        QVERIFY(qFuzzyCompare(view->masterGain(), 1.0));

        // Nothing on air: the item fades are refused.
        QCOMPARE(ops.invoke(Ops::ItemFadeOut).status, Ops::Rejected);
        const quint64 id = model.addItems({testkit::ItemRequest(testkit::touchFile(dir.filePath("a.mp4")))}).value(0);
        QVERIFY(model.setOnAirItem(id));
        panel.findChild<QDoubleSpinBox *>("programItemFadeOutDurationSpinBox")->setValue(0.1);
        QCOMPARE(ops.invoke(Ops::ItemFadeOut).status, Ops::Invoked);
        auto *button = panel.findChild<QPushButton *>("programItemFadeOutButton");
        QCOMPARE(button->property("lit").toBool(), true);
        QTRY_COMPARE_WITH_TIMEOUT(view->itemGain(), 0.0, 3000);
        QTRY_COMPARE(button->property("lit").toBool(), false);
        QCOMPARE(panel.findChild<AudioFaderWidget *>("programItemFader")->value(), -960);
    }

    // The DSK buttons: enabled by the layer's state and the selection, the
    // DSK button pressed while the key is on, play or pause lit by what the
    // DSK does (never by the click), the tooltip and accessible texts of
    // each state, and every press an operation.
    void dskButtonsFollowTheLayer()
    {
        Ops ops;
        PlaylistModel model;
        ProgramPanel panel(&model, &ops);
        DskPanelView *view = panel.dskView();
        auto *on = panel.findChild<QPushButton *>("dskOnButton");
        auto *play = panel.findChild<QPushButton *>("dskPlayButton");
        auto *pause = panel.findChild<QPushButton *>("dskPauseButton");
        QVERIFY(on && play && pause && view);

        view->showDsk({});
        QVERIFY(!on->isEnabled() && !play->isEnabled() && !pause->isEnabled());
        QCOMPARE(on->toolTip(), QStringLiteral("Select a playlist item to send to DSK"));
        QCOMPARE(on->accessibleName(), QStringLiteral("DSK is inactive; select a playlist item"));

        DskPanelState state;
        state.selectionReady = true;
        view->showDsk(state);
        QVERIFY(on->isEnabled());
        QCOMPARE(on->toolTip(), QStringLiteral("Send the selected playlist item to DSK"));

        state.kind = DskPanelState::Queued;
        state.text = QStringLiteral("strap");
        state.selectionReady = false;
        view->showDsk(state);
        QVERIFY(on->isEnabled());
        QCOMPARE(on->toolTip(), QStringLiteral("DSK ON queued: strap (click to cancel)"));
        QCOMPARE(on->accessibleName(), QStringLiteral("DSK is preparing to turn on; press to cancel"));

        state.kind = DskPanelState::Active;
        state.playing = true;
        view->showDsk(state);
        QVERIFY(on->isChecked() && play->isEnabled() && pause->isEnabled());
        QVERIFY(play->isChecked() && !pause->isChecked());
        QCOMPARE(on->toolTip(), QStringLiteral("Turn DSK off and return it to the In point"));
        pause->click(); // nothing is bound: the state stands as the DSK told it
        QVERIFY(play->isChecked() && !pause->isChecked());

        state.ending = true;
        view->showDsk(state);
        QVERIFY(!play->isEnabled() && !pause->isEnabled());
        QVERIFY(on->isEnabled());

        state = {};
        state.kind = DskPanelState::Error;
        state.text = QStringLiteral("No DSK frame arrived before the preparation deadline.");
        view->showDsk(state);
        QVERIFY(!on->isChecked() && !on->isEnabled());
        QCOMPARE(on->toolTip(), QStringLiteral("DSK error: No DSK frame arrived before the preparation deadline."));
        QCOMPARE(on->accessibleName(),
                 QStringLiteral("DSK error: No DSK frame arrived before the preparation deadline.; select a valid "
                                "playlist item"));
    }
};

QTEST_MAIN(TestProgramPanel)
#include "tst_program_panel.moc"
