#include "control/controller_operations.h"
#include "control/playlist_item_operations.h"
#include "playlist/playlist_model.h"
#include "shell/user_info_center.h"
#include "ui/controller_shortcuts.h"
#include "ui/controller_volume_input.h"
#include "ui/playlist_list_widget.h"
#include "ui/playlist_panel.h"

#include "kit/item_request.h"
#include "kit/log_capture.h"

#include <QApplication>
#include <QJsonArray>
#include <QMenu>
#include <QLineEdit>
#include <QTemporaryDir>
#include <QVBoxLayout>
#include <QWheelEvent>
#include <QtTest>

using namespace tarnix;
using Ops = ControllerOperations;

namespace {

// A controller window with the playlist panel, the keyboard, and stand-ins
// for the ON AIR side that record what they were asked.
struct Window {
    QTemporaryDir dir;
    Ops ops;
    UserInfoCenter info;
    PlaylistModel model;
    PlaylistItemOperations items{&model, &ops};
    QWidget window;
    PlaylistPanel *panel = new PlaylistPanel(&model, nullptr, &ops, &items, &info, &window);
    QObject onAirSide;
    QStringList asked;
    QList<int> itemVolumeSteps;
    QList<int> masterVolumeSteps;
    std::unique_ptr<ControllerShortcuts> keys;
    std::unique_ptr<ControllerVolumeInput> volume;

    Window()
    {
        auto *layout = new QVBoxLayout(&window);
        layout->addWidget(panel);
        for (auto [action, name] : {std::pair{Ops::TakeSelectedOnAir, "take"},
                                    std::pair{Ops::ProgramTogglePlayback, "toggle"}, std::pair{Ops::OffAir, "off"},
                                    std::pair{Ops::ToggleFtb, "ftb"}})
            ops.bind<>(action, &onAirSide, [this, name = QString::fromLatin1(name)] {
                asked << name;
                return true;
            });
        ops.bind<int>(Ops::AdjustItemVolume, &onAirSide, [this](int delta) { itemVolumeSteps << delta; });
        ops.bind<int>(Ops::AdjustMasterVolume, &onAirSide, [this](int delta) { masterVolumeSteps << delta; });
        keys = std::make_unique<ControllerShortcuts>(&window, panel, nullptr, &ops, QJsonObject());
        volume = std::make_unique<ControllerVolumeInput>(&window, &ops);
        window.resize(900, 700);
        window.show();
        QApplication::setActiveWindow(&window);
        QVERIFY(QTest::qWaitForWindowActive(&window));
    }
    PlaylistListWidget *list() { return panel->findChild<PlaylistListWidget *>("playlistListWidget"); }
    QLineEdit *nameField() { return panel->findChild<QLineEdit *>("playlistNameEdit"); }
};

} // namespace

class TestControllerShortcuts : public QObject
{
    Q_OBJECT

private slots:
    // The show's keys act from the playlist, and stand aside while the
    // operator types a playlist name.
    void keysDriveTheShowExceptWhileTyping()
    {
        Window w;
        const QList<quint64> ids = w.model.addItems(
            {testkit::ItemRequest(testkit::touchFile(w.dir.filePath("1.mp4"))),
             testkit::ItemRequest(testkit::touchFile(w.dir.filePath("2.mp4")))});
        testkit::LogCapture log(testkit::LogCapture::category(QStringLiteral("CONTROL")));
        w.list()->setFocus();
        QVERIFY(w.keys->keysEnabled());
        QTest::keyClick(w.list(), Qt::Key_2);
        QCOMPARE(w.panel->selectedItemId(), ids[1]);
        QVERIFY(!log.find(QStringLiteral("action=SelectItemNumber .* source=Shortcut")).isEmpty());
        QTest::keyClick(w.list(), Qt::Key_Return);
        QTest::keyClick(w.list(), Qt::Key_Space);
        QTest::keyClick(w.list(), Qt::Key_F, Qt::ShiftModifier);
        QTest::keyClick(w.list(), Qt::Key_Escape);
        QCOMPARE(w.asked, (QStringList{"take", "toggle", "ftb", "off"}));
        QTest::keyClick(w.list(), Qt::Key_Up);  // the fixed previous-item key
        QCOMPARE(w.panel->selectedItemId(), ids[0]);

        w.nameField()->setFocus();
        QVERIFY(!w.keys->keysEnabled());
        QTest::keyClicks(w.nameField(), QStringLiteral("2 "));
        QTest::keyClick(w.nameField(), Qt::Key_Up, Qt::ControlModifier);
        QCOMPARE(w.nameField()->text(), QStringLiteral("2 "));
        QCOMPARE(w.panel->selectedItemId(), ids[0]);
        QCOMPARE(w.asked.size(), 4);
        QVERIFY(w.itemVolumeSteps.isEmpty());

        w.list()->setFocus();
        QVERIFY(w.keys->keysEnabled());
        QTest::keyClick(w.list(), Qt::Key_Up, Qt::ControlModifier);
        QTest::keyClick(w.list(), Qt::Key_Down, Qt::ShiftModifier);
        QCOMPARE(w.itemVolumeSteps, QList<int>{10});
        QCOMPARE(w.masterVolumeSteps, QList<int>{-10});
        QCOMPARE(w.panel->selectedItemId(), ids[0]);  // the volume chords select nothing
    }

    // The wheel with Ctrl or Shift steps a dB for every 120 of angle, and
    // keeps what is left over per modifier.
    void wheelStepsKeepTheirRemainders()
    {
        Window w;
        QWidget *target = w.list()->viewport();
        auto wheel = [target](int delta, Qt::KeyboardModifiers modifiers) {
            QWheelEvent event(QPointF(10, 10), target->mapToGlobal(QPointF(10, 10)), QPoint(), QPoint(0, delta),
                              Qt::NoButton, modifiers, Qt::NoScrollPhase, false);
            QApplication::sendEvent(target, &event);
        };
        wheel(40, Qt::ControlModifier);
        wheel(40, Qt::ShiftModifier);
        wheel(40, Qt::ControlModifier);
        QVERIFY(w.itemVolumeSteps.isEmpty());
        wheel(40, Qt::ControlModifier);
        QCOMPARE(w.itemVolumeSteps, QList<int>{10});
        QVERIFY(w.masterVolumeSteps.isEmpty());
        wheel(-240, Qt::ShiftModifier);
        QCOMPARE(w.masterVolumeSteps, QList<int>{-10});  // 40 - 240 = -200: one step down, -80 kept
    }

    void menuEntriesShowTheirKeys()
    {
        Window w;
        QAction *copy = w.panel->playlistMenu()->findChild<QAction *>("playlistMenuCopyStateAction");
        QCOMPARE(copy->shortcut(), QKeySequence(QKeySequence::Copy));
        QCOMPARE(copy->shortcutContext(), Qt::WidgetShortcut);
        // An empty binding frees the key; a refused object changes nothing.
        QVERIFY(w.keys->applyBindings(QJsonObject{{"CopyItemState", QJsonArray()}}).isEmpty());
        QVERIFY(copy->shortcut().isEmpty());
        QCOMPARE(w.keys->applyBindings(QJsonObject{{"OffAir", QJsonArray{"Shift+Up"}}}),
                 QStringLiteral("OffAir / reserved : Shift+Up"));
        QVERIFY(copy->shortcut().isEmpty());
        QVERIFY(w.keys->commandNames().contains("IncreaseMasterVolume"));
        QCOMPARE(w.keys->commandNames().size(), 72);
    }
};

QTEST_MAIN(TestControllerShortcuts)
#include "tst_controller_shortcuts.moc"
