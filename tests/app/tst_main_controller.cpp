// The composition root in process: what it builds into the windows, the
// playlist operations it owns, a controller window that goes first, and the
// end of the run.

#include "kit/item_request.h"
#include "MainController.h"

#include "control/control_state_registry.h"
#include "edit/edit_session_controller.h"
#include "control/controller_operations.h"
#include "control/operation_source.h"
#include "playlist/playlist_document.h"
#include "playlist/playlist_model.h"
#include "playlist/playlist_thumbnail_store.h"
#include "playout/program_playout_controller.h"
#include "shell/application_log.h"
#include "shell/background_io_queue.h"
#include "shell/interface_scale.h"
#include "shell/settings_store.h"
#include "shell/ui_language_manager.h"
#include "shell/user_info_center.h"
#include "support/test_paths.h"
#include "ui/image_add_dialog.h"
#include "ui/playlist_list_widget.h"
#include "ui/playlist_panel.h"
#include "ui/program_panel.h"
#include "ui/settings_window.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QKeySequenceEdit>
#include <QDoubleSpinBox>
#include <QFileDialog>
#include <QFile>
#include <QMenu>
#include <QMenuBar>
#include <QMimeData>
#include <QPushButton>
#include <QTabBar>
#include <QPointer>
#include <QTemporaryDir>
#include <QtTest>

#include <gst/gst.h>

#include <memory>

#include "kit/log_capture.h"

using namespace tarnix;
using Ops = ControllerOperations;

namespace {

// A controller on small windows with a small picture and no sound server.
struct Rig {
    QTemporaryDir dir;
    std::unique_ptr<QWidget> programWindow = std::make_unique<QWidget>();
    QPointer<QWidget> controllerWindow = new QWidget;
    std::unique_ptr<MainController> controller;

    explicit Rig(QSize size = QSize(320, 180), bool editPlayerFails = false)
    {
        controllerWindow->setAttribute(Qt::WA_DeleteOnClose);
        MainControllerOptions options;
        options.editPlayerFails = editPlayerFails;
        options.programOutputSize = size;
        options.programAudioSinkFactory = QStringLiteral("fakesink sync=true");
        options.previousSessionPath = dir.filePath("session/previous-session.json");
        controller = std::make_unique<MainController>(programWindow.get(), controllerWindow, false, nullptr, options);
    }
    ~Rig()
    {
        controller.reset();
        delete controllerWindow;
    }

    PlaylistModel &model() { return *controller->playlistModel(); }
    Ops &ops() { return *controller->controllerOperations(); }

    quint64 add(const QString &name, qint32 playlist = 1)
    {
        const QString path = testkit::touchFile(dir.filePath(name));
        return model().addItems({testkit::ItemRequest(path).playlist(playlist)}).value(0);
    }

    QString shown() const
    {
        const auto message = controller->userInfoCenter()->current();
        return message ? message->text.toString() + '|' + message->detail : QString();
    }
};

template <typename Dialog>
Dialog *findDialog()
{
    for (QWidget *widget : QApplication::topLevelWidgets()) {
        if (auto *dialog = qobject_cast<Dialog *>(widget); dialog && dialog->isVisible())
            return dialog;
    }
    return nullptr;
}

// Answers the image dialog that is open now.
bool answerImageDialog(bool accept, double seconds = 0, bool remember = false)
{
    ImageAddDialog *dialog = findDialog<ImageAddDialog>();
    if (!dialog)
        return false;
    if (seconds > 0)
        dialog->findChild<QDoubleSpinBox *>("imageAddDurationSpinBox")->setValue(seconds);
    dialog->findChild<QCheckBox *>("imageAddRememberCheckBox")->setChecked(remember);
    accept ? dialog->accept() : dialog->reject();
    QCoreApplication::processEvents();
    return true;
}

} // namespace

class TestMainController : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        gst_init(nullptr, nullptr);
        registerPlaylistMetaTypes();
    }

    void buildsTheControllerWindowFrame()
    {
        Rig rig;
        QVERIFY(rig.controller->programPlayerAvailable());
        QVERIFY(rig.programWindow->findChild<QWidget *>("program-gpu-output"));
        auto *bar = rig.controllerWindow->findChild<QMenuBar *>("applicationMenuBar");
        QVERIFY(bar);
        QVERIFY(rig.controllerWindow->findChild<QWidget *>("userInfoBar"));
        QMenu *file = bar->findChild<QMenu *>("fileMenu");
        QCOMPARE(file->actions().size(), 13);  // nine entries and four separators
        QCOMPARE(file->findChild<QAction *>("settingsAction")->text(), QStringLiteral("Settings\u2026"));
        QCOMPARE(file->findChild<QAction *>("audioOutputsAction")->text(), QStringLiteral("Audio Outputs\u2026"));
        QCOMPARE(file->actions().first()->objectName(), QStringLiteral("addFilesAction"));
        QCOMPARE(file->actions().first()->text(), QStringLiteral("Add Files..."));
        QVERIFY(bar->findChild<QMenu *>("helpMenu")->findChild<QAction *>("debugModeAction"));

        // On Air entries follow their operations: each is enabled once its
        // owner has bound it (the DSK's owner comes with the program side).
        auto *onAir = bar->findChild<QMenu *>("onAirMenu");
        QVERIFY(onAir);
        QCOMPARE(onAir->actions().size(), 13);
        QAction *take = onAir->findChild<QAction *>("onAirMenuTakeOnAir");
        QAction *dsk = onAir->findChild<QAction *>("onAirMenuToggleDsk");
        QVERIFY(take && dsk);
        QCOMPARE(take->text(), QStringLiteral("Take ON AIR"));
        QVERIFY(take->isEnabled());
        QVERIFY(dsk->isEnabled());
    }

    // The playlist panel in the controller window: it owns the selection,
    // its buttons and drops are logged operations from the operator's
    // hands, and the composition root's playlist operations carry them out.
    void playlistPanelDrivesTheDocument()
    {
        Rig rig;
        PlaylistPanel *panel = rig.controller->playlistPanel();
        QVERIFY(panel);
        QCOMPARE(panel->parentWidget()->objectName(), QStringLiteral("controllerBody"));
        QVERIFY(rig.controllerWindow->findChild<QMenuBar *>("applicationMenuBar")->actions().contains(
            panel->playlistMenu()->menuAction()));
        rig.controllerWindow->resize(1200, 800);
        rig.controllerWindow->show();
        QVERIFY(QTest::qWaitForWindowExposed(rig.controllerWindow));
        const quint64 first = rig.add("first.mp4");
        const quint64 second = rig.add("second.mp4");

        testkit::LogCapture operations(testkit::LogCapture::category(QStringLiteral("CONTROL")));
        QCOMPARE(rig.ops().invoke(Ops::SelectItem, first).status, Ops::Invoked);
        QCOMPARE(panel->selectedItemId(), first);
        auto *moveDown = panel->findChild<QAbstractButton *>("playlistMoveDownButton");
        QVERIFY(moveDown);
        moveDown->click();
        QCOMPARE(rig.model().itemIds(1), (QList<quint64>{second, first}));
        QVERIFY2(!operations.find(QStringLiteral("OP request id=\\d+ action=MoveItem .* source=UI "
                                                 "args=QList\\(QVariant\\(qulonglong, %1\\), QVariant\\(int, 1\\)\\)")
                                      .arg(first))
                      .isEmpty(),
                 qPrintable(operations.texts().join('\n')));

        // A drag as Qt delivers it: entering the widget, then the drop.
        auto dropItem = [](QWidget *target, QPoint at, quint64 itemId, Qt::KeyboardModifiers modifiers) {
            QMimeData mime;
            mime.setData(QLatin1String(kPlaylistItemMimeType), QByteArray::number(itemId));
            QDragEnterEvent enter(at, Qt::CopyAction | Qt::MoveAction, &mime, Qt::LeftButton, modifiers);
            QApplication::sendEvent(target, &enter);
            QDropEvent drop(QPointF(at), Qt::CopyAction | Qt::MoveAction, &mime, Qt::LeftButton, modifiers);
            QApplication::sendEvent(target, &drop);
        };

        // Ctrl and a drop on the second tab: a copy there with a new id.
        QCOMPARE(rig.ops().invoke(Ops::CreatePlaylist).status, Ops::Invoked);
        auto *tabs = panel->findChild<QTabBar *>("playlistTabBar");
        QCOMPARE(tabs->count(), 2);
        dropItem(tabs, tabs->tabRect(1).center(), first, Qt::ControlModifier);
        const QList<quint64> copied = rig.model().itemIds(2);
        QCOMPARE(copied.size(), 1);
        QVERIFY(copied.first() != first);
        QCOMPARE(rig.model().item(copied.first())->filePath, rig.model().item(first)->filePath);
        QCOMPARE(rig.model().itemIds(1).size(), 2);
        QVERIFY(!operations.find(QStringLiteral("action=TransferItem .* source=UI")).isEmpty());

        // A pending item is not copied, and the operator is told why.
        PlaylistItemRequest pending = testkit::ItemRequest(testkit::touchFile(rig.dir.filePath("pending.mp4")));
        pending.pending = PlaylistPendingState{};
        const quint64 analysing = rig.model().addItems({pending}).value(0);
        dropItem(tabs, tabs->tabRect(1).center(), analysing, Qt::ControlModifier);
        QCOMPARE(rig.model().itemIds(2).size(), 1);
        QCOMPARE(rig.shown(), QStringLiteral("This item is being analyzed or converted and cannot be used for COPY.|"));

        // Without Ctrl, a drop on the active playlist's list moves the item.
        QCOMPARE(rig.ops().invoke(Ops::ActivatePlaylist, 2).status, Ops::Invoked);
        auto *list = panel->findChild<PlaylistListWidget *>("playlistListWidget");
        dropItem(list->viewport(), list->viewport()->rect().center(), second, Qt::NoModifier);
        QCOMPARE(rig.model().playlistOf(second), 2);
        QCOMPARE(rig.model().itemIds(2).size(), 2);
    }

    // The program panel's pieces that the operator's settings govern, read
    // when the controller builds the window: defaults first, then the
    // opposite of every default.
    void programPanelFollowsTheSettings()
    {
        QTemporaryDir settingsDir;
        qApp->setProperty("tarnix.settingsFile", settingsDir.filePath("tarnix.ini"));
        auto panelPiece = [](Rig &rig, const char *name) {
            return rig.controllerWindow->findChild<ProgramPanel *>()->findChild<QWidget *>(name);
        };
        {
            Rig rig;
            QVERIFY(panelPiece(rig, "programFtbButton")->isEnabled());
            QVERIFY(!panelPiece(rig, "programPlaybackRateModule")->isHidden());
            QVERIFY(panelPiece(rig, "programBgmControlModule")->isHidden());
            QVERIFY(!panelPiece(rig, "programRemainingTotalModeButton")->property("checked").toBool());
        }
        QVERIFY(writeSetting("onAir/disableFtbButton", true));
        QVERIFY(writeSetting("onAir/showPlaybackRateControls", false));
        QVERIFY(writeSetting("audio/showBgmPlayerControls", true));
        QVERIFY(writeSetting("time/remainingTotal", true));
        QVERIFY(writeSetting("player/backgroundColor", "#0000ff"));
        {
            Rig rig;
            QVERIFY(!panelPiece(rig, "programFtbButton")->isEnabled());
            QVERIFY(panelPiece(rig, "programPlaybackRateModule")->isHidden());
            QVERIFY(!panelPiece(rig, "programBgmControlModule")->isHidden());
            QVERIFY(panelPiece(rig, "programRemainingTotalModeButton")->property("checked").toBool());
            QCOMPARE(panelPiece(rig, "programBackgroundColorButton")->property("backgroundColor").toString(),
                     QStringLiteral("#0000ff"));
            // The FTB button is only a button: the operation stays for keys
            // and automation.
            QVERIFY(rig.ops().hasHandler(Ops::ToggleFtb));
        }
        qApp->setProperty("tarnix.settingsFile", QVariant());
    }

    // One settings window, from the File menu or OpenSettings; what it
    // saves the running parts take up at once, as restored settings are.
    void settingsWindowAppliesWhatItSaves()
    {
        QTemporaryDir settingsDir;
        qApp->setProperty("tarnix.settingsFile", settingsDir.filePath("tarnix.ini"));
        QTemporaryDir dir;
        QWidget programWindow;
        QPointer<QWidget> controllerWindow = new QWidget;
        UiLanguageManager language;
        QVERIFY(language.setLanguage("en"));
        MainControllerOptions options;
        options.programOutputSize = QSize(320, 180);
        options.programAudioSinkFactory = QStringLiteral("fakesink sync=true");
        options.previousSessionPath = dir.filePath("session/previous-session.json");
        auto controller = std::make_unique<MainController>(&programWindow, controllerWindow, false, &language, options);
        Ops &ops = *controller->controllerOperations();

        controllerWindow->findChild<QAction *>("settingsAction")->trigger();
        auto *window = controllerWindow->findChild<SettingsWindow *>("settingsWindow");
        QVERIFY(window && window->isVisible());
        QCOMPARE(ops.invoke(Ops::OpenSettings).status, Ops::Invoked);
        QCOMPARE(controllerWindow->findChildren<SettingsWindow *>().size(), 1);
        // The embedded audio output page is the dialog's page.
        QVERIFY(window->findChild<QWidget *>("settingsAudioPage")->findChild<QWidget *>("audioOutputPage"));
        auto *total = window->findChild<QComboBox *>("settingsRemainingTotalCombo");
        QTRY_COMPARE(total->count(), 2);
        QTRY_VERIFY(controller->backgroundIoQueue()->isIdle());

        auto choose = [](QComboBox *combo, int index) {
            combo->setCurrentIndex(index);
            emit combo->activated(index);
        };
        auto *totalButton = controllerWindow->findChild<QWidget *>("programRemainingTotalModeButton");
        QVERIFY(!totalButton->property("checked").toBool());
        choose(total, 1);
        QTRY_VERIFY(totalButton->property("checked").toBool());
        QTRY_VERIFY(readBoolSetting("time/remainingTotal"));

        choose(window->findChild<QComboBox *>("settingsLanguageCombo"), 1);
        QTRY_COMPARE(language.currentLanguage(), QStringLiteral("ja"));
        // The windows retranslate on the language change event, which comes
        // through the event loop after the language is current.
        QTRY_COMPARE(window->windowTitle(), QString::fromUtf8("\u8a2d\u5b9a"));
        QTRY_COMPARE(controllerWindow->findChild<QAction *>("settingsAction")->text(),
                     QString::fromUtf8("\u8a2d\u5b9a\u2026"));
        QVERIFY2(window->message("ui/language").contains(QString::fromUtf8("\u65e5\u672c\u8a9e")),
                 qPrintable(window->message("ui/language")));
        QTRY_COMPARE(readStringSetting("ui/language"), QStringLiteral("ja"));

        // The skin and the text size take effect at once; the sheet grows
        // from its unscaled text.
        choose(window->findChild<QComboBox *>("settingsSkinCombo"), 2);
        QTRY_COMPARE(qApp->property("controllerSkinKey").toString(), QStringLiteral("tarnix-clasic"));
        QTRY_COMPARE(readStringSetting("appearance/controllerSkin"), QStringLiteral("tarnix-clasic"));
        const QString unscaled = qApp->property("controllerUnscaledStyleSheet").toString();
        QCOMPARE(qApp->styleSheet(), unscaled);
        const qreal pointSize = QApplication::font().pointSizeF();
        auto *textSize = window->findChild<QComboBox *>("settingsTextSizeCombo");
        choose(textSize, 2);
        QTRY_VERIFY(qFuzzyCompare(textSizeFactor(), 1.4));
        QVERIFY(qFuzzyCompare(QApplication::font().pointSizeF(), pointSize * 1.4));
        QVERIFY(qApp->styleSheet().contains(QLatin1String("font-size: 15pt")));  // 11pt × 1.4
        choose(textSize, 0);
        QTRY_VERIFY(qFuzzyCompare(textSizeFactor(), 1.0));
        QCOMPARE(qApp->styleSheet(), unscaled);
        QVERIFY(qFuzzyCompare(QApplication::font().pointSizeF(), pointSize));
        // Later cases see the plain look again.
        qApp->setStyleSheet(QString());
        QApplication::setPalette(QPalette());
        qApp->setProperty("controllerSkinKey", QVariant());
        qApp->setProperty("controllerUnscaledStyleSheet", QVariant());

        // A saved table is on the keys at once.
        window->findChild<QKeySequenceEdit *>("shortcutKeyToggleFtb_1")->setKeySequence(QKeySequence("Ctrl+F11"));
        window->findChild<QPushButton *>("settingsShortcutsSaveButton")->click();
        auto *ftb = controllerWindow->findChild<QAction *>("onAirMenuToggleFtb");
        QTRY_COMPARE(ftb->shortcut(), QKeySequence("Ctrl+F11"));
        QVERIFY(language.setLanguage("en"));

        controller.reset();
        delete controllerWindow;
        qApp->setProperty("tarnix.settingsFile", QVariant());
    }

    // The EDIT panel stands in the controller window, driven by the EDIT
    // session: an operator's selection loads the item at once, unless the
    // operator chose to load with the EDIT button only.
    void editLoadsAsTheOperatorChose()
    {
        QTemporaryDir settingsDir;
        qApp->setProperty("tarnix.settingsFile", settingsDir.filePath("tarnix.ini"));
        const QString clip = QStringLiteral(TARNIX_TEST_MEDIA_DIR "/h264-aac-3s.mp4");
        {
            Rig rig;
            QVERIFY(rig.controllerWindow->findChild<QWidget *>("editPanelPlace")->findChild<QWidget *>("edit-video-surface"));
            const quint64 id = rig.model().addItems({testkit::ItemRequest(clip)}).value(0);
            QCOMPARE(rig.ops().invoke(Ops::SelectItem, id).status, Ops::Invoked);
            QCOMPARE(rig.model().editItemId(), id);
            QTRY_VERIFY_WITH_TIMEOUT(rig.controller->controlState()->value(ControlStateRegistry::Field::EditItemId).toInteger() == qint64(id), 10000);
        }
        QVERIFY(writeSetting("playlist/editActivationMode", 1));
        {
            Rig rig;
            const quint64 id = rig.model().addItems({testkit::ItemRequest(clip)}).value(0);
            QCOMPARE(rig.ops().invoke(Ops::SelectItem, id).status, Ops::Invoked);
            // A load on selection marks the item at once, in the same call.
            QCOMPARE(rig.model().editItemId(), quint64(0));
            rig.controllerWindow->findChild<QPushButton *>("playlistEditButton")->click();
            QTRY_COMPARE_WITH_TIMEOUT(rig.model().editItemId(), id, 10000);
        }
        qApp->setProperty("tarnix.settingsFile", QVariant());
    }

    // Without an EDIT player the show goes on: the item plays ON AIR, and
    // EDIT only says what it cannot do.
    void onAirPlaysWithoutAnEditPlayer()
    {
        Rig rig(QSize(320, 180), true);
        EditSessionController *edit = rig.controller->editSession();
        QVERIFY(edit->playerUnavailable());
        QCOMPARE(edit->statusText(), QStringLiteral("Could not create the EDIT player (ON AIR will continue)"));
        const quint64 id = rig.model().addItems({testkit::ItemRequest(QStringLiteral(TARNIX_TEST_MEDIA_DIR "/h264-aac-3s.mp4"))
                                                     .playing()}).value(0);
        QCOMPARE(rig.ops().invoke(Ops::SelectItem, id).status, Ops::Invoked);
        QCOMPARE(edit->statusText(), QStringLiteral("The EDIT player is unavailable (ON AIR will continue)"));
        QCOMPARE(rig.ops().invoke(Ops::EditPlay).status, Ops::Rejected);
        QCOMPARE(rig.ops().invoke(Ops::TakeSelectedOnAir).status, Ops::Invoked);
        // A take is refused while the program audio output still comes up;
        // the operator would press again.
        QVERIFY(QTest::qWaitFor(
            [&] {
                if (rig.controller->programPlayout()->isPlaying())
                    return true;
                (void)rig.ops().invoke(Ops::TakeSelectedOnAir);
                return QTest::qWaitFor([&] { return rig.controller->programPlayout()->isPlaying(); }, 1000);
            },
            10000));
        QCOMPARE(rig.model().onAirItemId(), id);
    }

    void exitClosesTheControllerWindowWhichMayGoFirst()
    {
        Rig rig;
        rig.controllerWindow->show();
        QCOMPARE(rig.ops().invoke(Ops::Exit).status, Ops::Invoked);
        // The window deleted itself; the controller guards every reference.
        QTRY_VERIFY_WITH_TIMEOUT(rig.controllerWindow.isNull(), 5000);
        QCOMPARE(rig.ops().invoke(Ops::Exit).status, Ops::Unavailable);
        rig.add("a.mp4");
        rig.controller->shutdown();
        QVERIFY(!rig.controller->programPlayerRetained());
        QVERIFY(QFile::exists(rig.dir.filePath("session/previous-session.json")));
        QVERIFY(readPlaylistFile(rig.dir.filePath("session/previous-session.json")));
    }

    void playlistOperationsRespectPlayout()
    {
        Rig rig;
        const quint64 a = rig.add("a.mp4");
        const quint64 b = rig.add("b.mp4");
        const quint64 c = rig.add("c.mp4");
        QCOMPARE(rig.ops().invoke(Ops::MoveItem, a, 2).status, Ops::Invoked);
        QCOMPARE(rig.model().rowOf(a), 3);
        QCOMPARE(rig.ops().invoke(Ops::MoveItem, a, 1).status, Ops::Rejected);  // past the end
        QCOMPARE(rig.ops().invoke(Ops::MoveItemToRow, a, 1).status, Ops::Invoked);
        QCOMPARE(rig.model().itemIds(1), (QList<quint64>{a, b, c}));
        const qint32 second = rig.model().addPlaylist();
        QCOMPARE(rig.ops().invoke(Ops::TransferItem, c, int(second), 1, true).status, Ops::Invoked);
        QCOMPARE(rig.model().itemCount(second), 1);
        QCOMPARE(rig.model().itemCount(1), 3);
        QCOMPARE(rig.ops().invoke(Ops::TransferItem, c, int(second), 1, false).status, Ops::Invoked);
        QCOMPARE(rig.model().itemCount(1), 2);

        // The item on air can neither be removed nor cleared away.
        QVERIFY(rig.model().setOnAirItem(a));
        QCOMPARE(rig.ops().invoke(Ops::RemoveItem, a).status, Ops::Rejected);
        QVERIFY(rig.model().contains(a));
        QCOMPARE(rig.ops().invoke(Ops::PlaylistBulk, PlaylistBulkOperation::Clear).status, Ops::Rejected);
        QCOMPARE(rig.model().itemCount(1), 2);
        QCOMPARE(rig.ops().invoke(Ops::PlaylistBulk, PlaylistBulkOperation::Undo).status, Ops::Rejected);
        QVERIFY(rig.model().setOnAirItem(0));

        QCOMPARE(rig.ops().invoke(Ops::RemoveItem, b).status, Ops::Invoked);
        QCOMPARE(rig.ops().invoke(Ops::PlaylistBulk, PlaylistBulkOperation::Clear).status, Ops::Invoked);
        QCOMPARE(rig.model().itemCount(1), 0);
        QCOMPARE(rig.ops().invoke(Ops::PlaylistBulk, PlaylistBulkOperation::Undo).status, Ops::Invoked);
        QCOMPARE(rig.model().itemIds(1), (QList<quint64>{a}));

        // A BGM playlist keeps its mode while BGM plays from it.
        QVERIFY(rig.model().setBgmItem(a));
        QCOMPARE(rig.ops().invoke(Ops::PlaylistBulk, PlaylistBulkOperation::StandardMode).status, Ops::Rejected);
        QVERIFY(rig.model().setBgmItem(0));
        QVERIFY(rig.model().setActivePlaylist(second));
        QCOMPARE(rig.ops().invoke(Ops::PlaylistBulk, PlaylistBulkOperation::Delete).status, Ops::Invoked);
        QVERIFY(!rig.model().hasPlaylist(second));
        QCOMPARE(rig.ops().invoke(Ops::PlaylistBulk, PlaylistBulkOperation::Delete).status, Ops::Rejected);  // the last one
    }

    // Only in debug mode: one state line, the context line, one line per
    // item and the output line.
    // AddFiles, as the control socket sends it: documents are told at once,
    // the rest become placeholders that a bulk operation waits for, then
    // ready items (a still with the default display time); what analysis
    // refuses leaves no item and is told once.
    void addFilesBecomeItemsWithOneReport()
    {
        Rig rig;
        const QString noise = rig.dir.filePath("noise.mp4");
        QFile bytes(noise);
        QVERIFY(bytes.open(QIODevice::WriteOnly));
        bytes.write(QByteArray(2048, '\x5a'));
        bytes.close();
        const QStringList paths{QStringLiteral(TARNIX_TEST_MEDIA_DIR "/h264-aac-3s.mp4"),
                                QStringLiteral(TARNIX_TEST_MEDIA_DIR "/still.png"), rig.dir.filePath("talk.pdf"), noise,
                                rig.dir.filePath("missing.wav")};
        {
            // From the socket: stills take the session's display time, no dialog.
            OperationSourceScope remote("Remote");
            QCOMPARE(rig.ops().invoke(Ops::AddFiles, paths).status, Ops::Invoked);
        }
        QVERIFY(!findDialog<ImageAddDialog>());
        // A file that is not there is not even a placeholder.
        QCOMPARE(rig.shown(), QStringLiteral("Some files could not be added.|talk.pdf: This document type cannot be "
                                             "added yet.\nmissing.wav: The media item could not be queued."));
        const QList<quint64> placeholders = rig.model().itemIds(1);
        QCOMPARE(placeholders.size(), 3);
        QVERIFY(rig.model().isPending(placeholders.first()));
        QCOMPARE(rig.ops().invoke(Ops::PlaylistBulk, PlaylistBulkOperation::Shuffle).status, Ops::Rejected);
        rig.controller->userInfoCenter()->dismiss();
        QCOMPARE(rig.shown(), QStringLiteral("Wait for media analysis and document imports to finish before "
                                             "applying a playlist bulk operation.|"));
        rig.controller->userInfoCenter()->dismiss();

        QTRY_COMPARE_WITH_TIMEOUT(rig.model().itemIds(1).size(), 2, 20000);
        const QList<quint64> ready = rig.model().itemIds(1);
        QCOMPARE(rig.model().item(ready[0])->mediaType, PlaylistMediaType::video);
        QCOMPARE(rig.model().item(ready[1])->mediaType, PlaylistMediaType::stillImage);
        QCOMPARE(rig.model().item(ready[1])->settings.outPointMs, std::optional<qint64>(5000));
        QVERIFY(!rig.model().isPending(ready[0]) && !rig.model().isPending(ready[1]));
        // Ready items get their pictures when a view asks.
        PlaylistThumbnailStore *pictures = rig.controller->thumbnailStore();
        QVERIFY(pictures->thumbnail(ready[0]).isNull());
        QTRY_VERIFY_WITH_TIMEOUT(!pictures->thumbnail(ready[0]).isNull() && !pictures->thumbnail(ready[1]).isNull(),
                                 20000);
        QCOMPARE(pictures->thumbnail(ready[0]).size(), QSize(240, 136));
        QVERIFY(pictures->details(ready[0])->success);
        // The analysis report follows the messages shown before it.
        QTRY_VERIFY_WITH_TIMEOUT(rig.shown().startsWith("Some files could not be added.|noise.mp4: "), 10000);
        QVERIFY2(!rig.shown().contains('\n'), qPrintable(rig.shown()));
        QCOMPARE(rig.ops().invoke(Ops::PlaylistBulk, PlaylistBulkOperation::Shuffle).status, Ops::Invoked);
    }

    // The operator's add: the file dialog, then one display-time question
    // per PNG or JPEG until a time is remembered; Cancel drops the rest of
    // its batch; later batches wait their turn.
    void operatorAddsStillsThroughTheImageDialog()
    {
        Rig rig;
        const QString still = QStringLiteral(TARNIX_TEST_MEDIA_DIR "/still.png");
        const QString clip = QStringLiteral(TARNIX_TEST_MEDIA_DIR "/h264-aac-3s.mp4");
        QStringList stills;
        for (const char *name : {"a.png", "b.jpeg", "c.PNG", "d.jpg"}) {
            stills << rig.dir.filePath(name);
            QVERIFY(QFile::copy(still, stills.last()));
        }

        QCOMPARE(rig.ops().invoke(Ops::AddFilesDialog).status, Ops::Invoked);
        auto *files = findDialog<QFileDialog>();
        QVERIFY(files);
        QCOMPARE(files->objectName(), QStringLiteral("addFilesDialog"));
        QCOMPARE(files->windowTitle(), QStringLiteral("Add Files to Playlist"));
        QCOMPARE(files->fileMode(), QFileDialog::ExistingFiles);
        const QString filters = files->nameFilters().join(";;");
        QVERIFY2(filters.contains("*.mxf") && filters.contains("*.tiff") && !filters.contains("*.pdf")
                     && !filters.contains("*.pptx"),
                 qPrintable(filters));
        emit files->filesSelected({stills[0], clip, stills[1], stills[2]});
        files->close();
        QCoreApplication::processEvents();

        // a.png asks first; nothing after it is queued yet.
        QCOMPARE(findDialog<ImageAddDialog>()->windowTitle(), QStringLiteral("Add Image"));
        QCOMPARE(findDialog<ImageAddDialog>()->durationMs(), qint64(5000));
        auto *seconds = findDialog<ImageAddDialog>()->findChild<QDoubleSpinBox *>("imageAddDurationSpinBox");
        QCOMPARE(seconds->minimum(), 0.1);
        QCOMPARE(seconds->maximum(), 86400.0);
        QCOMPARE(rig.model().itemIds(1).size(), 0);
        // A second batch from the hands waits behind the first.
        QCOMPARE(rig.ops().invoke(Ops::AddFiles, QStringList{stills[3]}).status, Ops::Invoked);
        QVERIFY(answerImageDialog(true, 2.5));
        // b.jpeg asks too (nothing remembered); Cancel drops c.PNG with it.
        QVERIFY(answerImageDialog(false));
        QCOMPARE(rig.model().itemIds(1).size(), 2);
        // The waiting batch asks for d.jpg; this time is remembered.
        QVERIFY(answerImageDialog(true, 7, true));
        QVERIFY(!findDialog<ImageAddDialog>());
        QCOMPARE(rig.ops().invoke(Ops::AddFiles, QStringList{stills[2]}).status, Ops::Invoked);
        QVERIFY(!findDialog<ImageAddDialog>());

        QTRY_VERIFY_WITH_TIMEOUT(
            [&] {
                for (quint64 id : rig.model().itemIds(1))
                    if (rig.model().isPending(id))
                        return false;
                return true;
            }(),
            20000);
        QStringList shown;
        for (quint64 id : rig.model().itemIds(1)) {
            const auto item = rig.model().item(id);
            const qint64 out = item->settings.outPointMs.value_or(-1);
            // The clip's own length, whatever its container rounds it to.
            shown << QFileInfo(item->filePath).fileName() + '='
                         + QString::number(item->mediaType == PlaylistMediaType::video ? out / 1000 * 1000 : out);
        }
        QCOMPARE(shown, QStringList({"a.png=2500", "h264-aac-3s.mp4=3000", "d.jpg=7000", "c.PNG=7000"}));

        // The dialog opens where the last files came from.
        QCOMPARE(rig.ops().invoke(Ops::AddFilesDialog).status, Ops::Invoked);
        QVERIFY(findDialog<QFileDialog>());
        QCOMPARE(findDialog<QFileDialog>()->directory().absolutePath(), QDir(rig.dir.path()).absolutePath());
        findDialog<QFileDialog>()->reject();
    }

    void debugSnapshotDescribesTheState()
    {
        Rig rig;
        const quint64 a = rig.add("a.mp4");
        rig.add("b.mp4");
        QVERIFY(rig.model().setDskItem(a));
        QStringList quiet;
        QStringList messages;
        {
            testkit::LogCapture capture;
            rig.controller->writeDebugSnapshot();
            quiet = capture.texts();
            capture.clear();
            setDebugMode(true);
            rig.controller->writeDebugSnapshot();
            setDebugMode(false);
            messages = capture.texts();
        }
        QVERIFY(quiet.filter("DEBUG").isEmpty());
        QCOMPARE(messages.filter(QStringLiteral("DEBUG snapshot onAir=0 cue=0 edit=0 dsk=%1 bgm=0").arg(a)).size(), 1);
        QCOMPARE(messages.filter(QStringLiteral("playlist=1 selected=0 onAir=0 edit=0 dsk=%1 bgm=0").arg(a)).size(), 1);
        const QStringList items = messages.filter("DEBUG item id=");
        QCOMPARE(items.size(), 2);
        QVERIFY2(items.first().contains(" inMs=0 outMs=none startMode=pause endMode=pause repeat=0 repeatEnd=pause "
                                        "goto=0 volumeTenthsDb=0 fadeIn=off fadeOut=off crossfade=off"),
                 qPrintable(items.first()));
        QCOMPARE(messages.filter(QRegularExpression("^OUTPUT device=.* status=")).size(), 1);
    }

    void playerThatCannotComeUpIsTold()
    {
        Rig rig(QSize(321, 180));
        QVERIFY(!rig.controller->programPlayerAvailable());
        QVERIFY2(rig.controller->programPlayerError().startsWith("Failed to start the ON AIR GPU compositor: "),
                 qPrintable(rig.controller->programPlayerError()));
        QCOMPARE(rig.shown(), "Could not create the GStreamer playbin.|" + rig.controller->programPlayerError());
        rig.add("a.mp4");
        QCOMPARE(rig.ops().invoke(Ops::TakeSelectedOnAir).status, Ops::Rejected);
        rig.controller->shutdown();
        QVERIFY(!rig.controller->programPlayerRetained());
    }
};

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    TestMainController test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_main_controller.moc"
