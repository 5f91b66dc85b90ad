// The controller window's frame: the menu bar with the File and On Air
// menus, and the message bar. Panels join the layout between them.

#include "MainController_impl.h"

#include "control/controller_operations.h"
#include "playlist/playlist_document_io.h"
#include "playlist/playlist_transfer.h"
#include "shell/background_io_queue.h"
#include "shell/localized_text.h"
#include "shell/log_viewer.h"
#include "shell/settings_store.h"
#include "shell/ui_language_manager.h"
#include "shell/user_info_bar.h"
#include "ui/edit_panel.h"
#include "ui/playlist_panel.h"
#include "ui/program_panel.h"
#include "ui/view_menu_controller.h"

#include <QAction>
#include <QDateTime>
#include <QDir>
#include <QEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QFrame>
#include <QHBoxLayout>
#include <QMenu>
#include <QMenuBar>
#include <QScrollArea>
#include <QSplitter>
#include <QVBoxLayout>
#include <QWidget>

#include <algorithm>

namespace tarnix {

namespace {

// Shares the right column between EDIT and ON AIR as the window gets its
// size: ON AIR whole when the column holds it (it is what goes out), EDIT
// the rest, but never less than its picture and transport need. Once the
// operator moves the handle, their split stands.
class RightColumnSizer : public QObject
{
public:
    RightColumnSizer(QSplitter *splitter, QScrollArea *edit, QScrollArea *program)
        : QObject(splitter), m_splitter(splitter), m_edit(edit), m_program(program)
    {
        splitter->installEventFilter(this);
        connect(splitter, &QSplitter::splitterMoved, this, [this] { m_operatorSplit = true; });
    }

    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == QEvent::Resize && !m_operatorSplit)
            share();
        return false;
    }

private:
    void share()
    {
        const int column = m_splitter->height() - m_splitter->handleWidth();
        if (column <= 0 || !m_edit->isVisible() || !m_program->isVisible() || !m_program->widget())
            return;
        const int wanted = m_program->widget()->minimumSizeHint().height();
        constexpr int kEditAtLeast = 200;
        const int program = std::clamp(wanted, column / 2, std::max(column / 2, column - kEditAtLeast));
        m_splitter->setSizes({column - program, program});
    }

    QSplitter *m_splitter;
    QScrollArea *m_edit;
    QScrollArea *m_program;
    bool m_operatorSplit = false;
};

} // namespace


namespace {

using Ops = ControllerOperations;

// The On Air menu: each entry's name is also the last part of its text key.
struct OnAirMenuEntry {
    Ops::Action action;
    const char *name;
};
constexpr OnAirMenuEntry kOnAirEntries[] = {
    {Ops::TakeSelectedOnAir, "TakeOnAir"},
    {Ops::OffAir, "OffAir"},
    {Ops::ToggleFtb, "ToggleFtb"},
    {Ops::ProgramTogglePlayback, "ToggleOnAirPlayback"},
    {Ops::Count, nullptr},
    {Ops::MasterFadeIn, "MasterFadeIn"},
    {Ops::MasterFadeOut, "MasterFadeOut"},
    {Ops::ItemFadeIn, "ItemFadeIn"},
    {Ops::ItemFadeOut, "ItemFadeOut"},
    {Ops::BgmFadeInConfigured, "BgmFadeIn"},
    {Ops::BgmFadeOutConfigured, "BgmFadeOut"},
    {Ops::Count, nullptr},
    {Ops::ToggleDsk, "ToggleDsk"},
};

QString playlistFilter()
{
    return LocalizedText(QStringLiteral("file_dialog.playlist.filter"), {},
                         QStringLiteral("TARNIX Playlist (*.json);;All Files (*.*)"))
        .toString();
}

} // namespace

void MainController::Impl::buildControllerWindow()
{
    QWidget *window = controllerWindow;
    if (!window)
        return;
    auto *layout = qobject_cast<QVBoxLayout *>(window->layout());
    if (!layout) {
        layout = new QVBoxLayout(window);
        layout->setContentsMargins(0, 0, 0, 0);
    }

    auto *bar = new QMenuBar(window);
    bar->setObjectName(QStringLiteral("applicationMenuBar"));
    layout->setMenuBar(bar);
    menuBar = bar;

    fileMenu = bar->addMenu(QString());
    fileMenu->setObjectName(QStringLiteral("fileMenu"));
    auto addFileAction = [&](const char *objectName, auto handler) {
        QAction *action = fileMenu->addAction(QString());
        action->setObjectName(QString::fromLatin1(objectName));
        QObject::connect(action, &QAction::triggered, widgetContext.get(), handler);
        return action;
    };
    addFilesAction = addFileAction("addFilesAction", [this] { operations->invoke(Ops::AddFilesDialog); });
    fileMenu->addSeparator();
    exportPlaylistAction = addFileAction("exportPlaylistAction", [this] { exportPlaylistFromDialog(); });
    importPlaylistAction = addFileAction("importPlaylistAction", [this] { importPlaylistFromDialog(); });
    restorePreviousSessionAction =
        addFileAction("restorePreviousSessionAction", [this] { transfer->restorePreviousSession(); });
    fileMenu->addSeparator();
    exportSettingsAction = addFileAction("exportSettingsAction", [this] { exportSettingsFromDialog(); });
    importSettingsAction = addFileAction("importSettingsAction", [this] { importSettingsFromDialog(); });
    fileMenu->addSeparator();
    settingsAction = addFileAction("settingsAction", [this] { operations->invoke(Ops::OpenSettings); });
    audioOutputsAction = addFileAction("audioOutputsAction", [this] { openAudioOutputs(); });
    fileMenu->addSeparator();
    exitAction = addFileAction("exitAction", [this] { operations->invoke(Ops::Exit); });

    onAirMenu = bar->addMenu(QString());
    onAirMenu->setObjectName(QStringLiteral("onAirMenu"));
    for (const OnAirMenuEntry &entry : kOnAirEntries) {
        if (!entry.name) {
            onAirMenu->addSeparator();
            continue;
        }
        QAction *action = onAirMenu->addAction(QString());
        // "onAirMenu" and the shortcut's name: the keyboard finds its entry so.
        action->setObjectName(QStringLiteral("onAirMenu%1").arg(QLatin1String(entry.name)));
        const Ops::Action operation = entry.action;
        QObject::connect(action, &QAction::triggered, widgetContext.get(),
                         [this, operation] { operations->invoke(operation); });
        onAirEntries.append(OnAirEntry{action, int(operation), entry.name});
    }
    QObject::connect(onAirMenu, &QMenu::aboutToShow, widgetContext.get(), [this] { refreshOnAirMenu(); });

    // Help: the log viewer and debug mode; the update check and the about
    // box join here.
    helpMenu = bar->addMenu(QString());
    helpMenu->setObjectName(QStringLiteral("helpMenu"));
    installLogViewer(helpMenu, window, languageManager, backgroundIoQueue.get());
    if (QAction *debug = helpMenu->findChild<QAction *>(QStringLiteral("debugModeAction")))
        QObject::connect(debug, &QAction::toggled, widgetContext.get(), [this](bool on) {
            if (on)
                writeDebugSnapshot();
        });

    // View: where the program picture is shown.
    viewMenu = std::make_unique<ViewMenuController>(programVideoWindow, operations.get());
    bar->insertMenu(helpMenu->menuAction(), viewMenu->menu());

    // The playlist panel's menu follows View.
    if (playlistPanel)
        bar->insertMenu(helpMenu->menuAction(), playlistPanel->playlistMenu());

    // Panels come between the menu bar and the message bar: the playlist
    // panel on the left; on the right the EDIT panel above the program
    // panel, whose places stay hidden until they have a panel.
    auto *body = new QWidget(window);
    body->setObjectName(QStringLiteral("controllerBody"));
    auto *columns = new QHBoxLayout(body);
    columns->setContentsMargins(0, 0, 0, 0);
    columns->setSpacing(6);
    auto woodTrim = [body] {
        auto *trim = new QFrame(body);
        trim->setObjectName(QStringLiteral("controllerWoodTrim"));
        trim->setFixedWidth(6);
        return trim;
    };
    columns->addWidget(woodTrim());
    if (playlistPanel)
        columns->addWidget(playlistPanel, 4);
    // EDIT above ON AIR, split so the operator can give either the room.
    // ON AIR takes what it needs first; EDIT has the rest. On a screen too
    // short for both whole, a panel squeezed below its size scrolls rather
    // than have its controls drawn over each other.
    auto *right = new QSplitter(Qt::Vertical, body);
    right->setObjectName(QStringLiteral("controllerRightSplitter"));
    right->setChildrenCollapsible(false);
    auto scrolled = [right](QWidget *place, const char *name) {
        auto *scroll = new QScrollArea(right);
        scroll->setObjectName(QString::fromLatin1(name));
        scroll->setFrameShape(QFrame::NoFrame);
        scroll->setWidgetResizable(true);
        scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        scroll->setWidget(place);
        right->addWidget(scroll);
        return scroll;
    };
    editPanelPlace = new QWidget;
    editPanelPlace->setObjectName(QStringLiteral("editPanelPlace"));
    if (editPanel) {
        auto *place = new QVBoxLayout(editPanelPlace);
        place->setContentsMargins(0, 0, 0, 0);
        place->addWidget(editPanel);
    }
    programPanelPlace = new QWidget;
    programPanelPlace->setObjectName(QStringLiteral("programPanelPlace"));
    if (programPanel) {
        auto *place = new QVBoxLayout(programPanelPlace);
        place->setContentsMargins(0, 0, 0, 0);
        place->addWidget(programPanel);
    }
    QScrollArea *editScroll = scrolled(editPanelPlace, "editPanelScroll");
    QScrollArea *programScroll = scrolled(programPanelPlace, "programPanelScroll");
    editScroll->setVisible(bool(editPanel));
    programScroll->setVisible(bool(programPanel));
    right->setStretchFactor(0, 1);
    right->setStretchFactor(1, 0);
    new RightColumnSizer(right, editScroll, programScroll);
    // Empty places take no room until their panels arrive.
    columns->addWidget(right, programPanel ? 5 : 0);
    columns->addWidget(woodTrim());
    layout->addWidget(body, 1);
    auto *info = new UserInfoBar(userInfoCenter.get(), window);
    layout->addWidget(info);
    userInfoBar = info;

    // One settings window, raised when it is open already.
    operations->bind<>(Ops::OpenSettings, widgetContext.get(), [this] { return openSettingsWindow(); });

    // Exit closes the main window; the window deletes itself and the run ends.
    operations->bind<>(Ops::Exit, window, [guarded = QPointer<QWidget>(window)] {
        return guarded && guarded->close();
    });

    retranslateMenus();
    refreshOnAirMenu();
    if (languageManager)
        QObject::connect(languageManager, &UiLanguageManager::languageChanged, widgetContext.get(),
                         [this] { retranslateMenus(); });
}

void MainController::Impl::retranslateMenus()
{
    if (fileMenu)
        fileMenu->setTitle(localized("menu.file"));
    if (addFilesAction)
        addFilesAction->setText(localized("menu.file.add_files"));
    if (exportPlaylistAction)
        exportPlaylistAction->setText(localized("menu.file.export_playlist"));
    if (importPlaylistAction)
        importPlaylistAction->setText(localized("menu.file.import_playlist"));
    if (restorePreviousSessionAction)
        restorePreviousSessionAction->setText(localized("menu.file.restore_previous_session"));
    if (exportSettingsAction)
        exportSettingsAction->setText(localized("menu.file.export_settings"));
    if (importSettingsAction)
        importSettingsAction->setText(localized("menu.file.import_settings"));
    if (audioOutputsAction)
        audioOutputsAction->setText(localized("menu.file.audio_outputs"));
    if (settingsAction)
        settingsAction->setText(localized("menu.file.settings"));
    if (exitAction)
        exitAction->setText(localized("menu.file.exit"));
    if (onAirMenu)
        onAirMenu->setTitle(localized("menu.on_air"));
    if (helpMenu)
        helpMenu->setTitle(localized("menu.help"));
    if (viewMenu)
        viewMenu->retranslate();
    for (const OnAirEntry &entry : std::as_const(onAirEntries)) {
        if (entry.action)
            entry.action->setText(
                LocalizedText(QStringLiteral("menu.on_air.%1").arg(QLatin1String(entry.name))).toString());
    }
}

// An entry is enabled when its operation has an owner now.
void MainController::Impl::refreshOnAirMenu()
{
    for (const OnAirEntry &entry : std::as_const(onAirEntries)) {
        if (entry.action)
            entry.action->setEnabled(operations && operations->hasHandler(Ops::Action(entry.operation)));
    }
}

void MainController::Impl::exportPlaylistFromDialog()
{
    const QString suggested =
        QDir(lastPlaylistDirectory).filePath(playlistExportFileName(QDateTime::currentDateTime()));
    const QString chosen = QFileDialog::getSaveFileName(controllerWindow, localized("file_dialog.export_playlist.title"),
                                                        suggested, playlistFilter());
    // The dialog ran its own loop: the run may be ending.
    if (chosen.isEmpty() || shutDown || !transfer)
        return;
    rememberPlaylistDirectory(chosen);
    transfer->exportPlaylists(chosen);
}

void MainController::Impl::importPlaylistFromDialog()
{
    const QString chosen = QFileDialog::getOpenFileName(controllerWindow, localized("file_dialog.import_playlist.title"),
                                                        lastPlaylistDirectory, playlistFilter());
    if (chosen.isEmpty() || shutDown || !transfer)
        return;
    rememberPlaylistDirectory(chosen);
    transfer->importPlaylists(chosen);
}

void MainController::Impl::rememberPlaylistDirectory(const QString &path)
{
    lastPlaylistDirectory = QFileInfo(path).absolutePath();
    writeSettingInBackground(QStringLiteral("fileDialog/lastPlaylistDirectory"), lastPlaylistDirectory);
}

} // namespace tarnix
