#pragma once

#include "MainController.h"

#include "control/control_state_registry.h"
#include "playlist/item_selection.h"
#include "playlist/playlist_enums.h"

#include <QList>
#include <QPointer>
#include <QString>
#include <QStringList>
#include <QTimer>

#include <deque>
#include <memory>
#include <optional>

class QAction;
class QDialog;
class QFileDialog;
class QJsonObject;
class QJsonValue;
class QMenu;
class QMenuBar;
class QWidget;

namespace tarnix {

class ControlSocketServer;
class ControllerShortcuts;
class ControllerVolumeInput;
class DualDeckPlayer;
class EditPanel;
class AudioOutputCoordinator;
class EditPflFeed;
class EditPflOutput;
class EditSessionController;
class HealthMonitor;
class ImageAddDialog;
class ItemSelection;
class MediaImportQueue;
class MediaThumbnailer;
class PlaylistItemOperations;
class PlaylistPanel;
class ProgramPanel;
class ViewMenuController;
class PlaylistThumbnailStore;
class SelectionHolder;
class SettingsEditor;
class SettingsTransfer;
class SettingsWindow;
class UserInfoBar;

// The members of MainController, in the order they are built. Widgets
// belong to their windows and are reached only through guarded pointers.
struct MainController::Impl {
    explicit Impl(MainController *owner);
    ~Impl();

    MainController *q = nullptr;
    MainControllerOptions options;
    QPointer<QWidget> programVideoWindow;
    QPointer<QWidget> controllerWindow;
    QPointer<UiLanguageManager> languageManager;
    bool programOutput4k = false;

    // Operations, messages, the document and its selection.
    std::unique_ptr<ControllerOperations> operations;
    ControlStateRegistry controlState;
    std::unique_ptr<UserInfoCenter> userInfoCenter;
    std::unique_ptr<PlaylistModel> model;
    // Item and playlist operations that need only the model.
    std::unique_ptr<PlaylistItemOperations> itemOperations;
    // The item selection ON AIR follows. The playlist panel provides it and
    // binds the selection operations; only without a controller window (no
    // playlist panel) does the headless holder exist, binding SelectItem
    // itself, so the two never both bind (the first binding of an operation
    // would win silently).
    QPointer<ItemSelection> selection;
    std::unique_ptr<SelectionHolder> headlessSelection;
    // Belongs to the controller window; removed at shutdown before the
    // document it shows.
    QPointer<PlaylistPanel> playlistPanel;
    // The ON AIR side of the controller window; belongs to the window.
    QPointer<ProgramPanel> programPanel;
    // Files on their way to ready items.
    std::unique_ptr<MediaImportQueue> mediaImports;
    // Item pictures, made on a pool of their own when a view first asks.
    std::unique_ptr<MediaThumbnailer> thumbnailer;
    std::unique_ptr<PlaylistThumbnailStore> thumbnails;
    // The display time of PNG and JPEG stills added this session.
    std::optional<qint64> rememberedStillDurationMs;
    // Files added by the operator's hands, in order; the first may be
    // waiting for the display time of a still.
    struct MediaAddBatch {
        QStringList paths;
        qsizetype next = 0;
        qint32 playlist = 0;
        bool interactive = false;
        bool queuedAny = false;
        QStringList lines;
    };
    std::deque<MediaAddBatch> mediaBatches;
    QPointer<QFileDialog> addFilesDialog;
    QPointer<ImageAddDialog> imageAddDialog;
    // Where the media file dialog opens; read at start, kept here after.
    QString lastMediaDirectory;

    // The ON AIR side. The player belongs to the controller; the pointer is
    // kept for what only the dual-deck player offers (its shutdown state,
    // the compositor's background).
    std::unique_ptr<ProgramPlayoutController> programPlayout;
    DualDeckPlayer *dualDeckPlayer = nullptr;
    bool programPlayerAvailable = false;
    QString programPlayerError;

    // The EDIT session, beside ON AIR, and its panel in the controller window.
    std::unique_ptr<EditSessionController> editSession;
    std::shared_ptr<EditPflFeed> pflFeed;
    std::unique_ptr<EditPflOutput> pflOutput;
    std::unique_ptr<AudioOutputCoordinator> audioOutputs;
    QPointer<EditPanel> editPanel;

    // File work.
    std::unique_ptr<BackgroundIoQueue> backgroundIoQueue;
    std::unique_ptr<PlaylistTransfer> transfer;
    std::unique_ptr<SettingsTransfer> settingsTransfer;

    // Menu bar and message bar of the controller window.
    QPointer<QMenuBar> menuBar;
    QPointer<QMenu> fileMenu;
    QPointer<QMenu> onAirMenu;
    std::unique_ptr<ViewMenuController> viewMenu;
    QPointer<QWidget> programPanelPlace;
    QPointer<QWidget> editPanelPlace;
    QPointer<QMenu> helpMenu;
    QPointer<QAction> addFilesAction;
    QPointer<QAction> exportPlaylistAction;
    QPointer<QAction> importPlaylistAction;
    QPointer<QAction> restorePreviousSessionAction;
    QPointer<QAction> exportSettingsAction;
    QPointer<QAction> importSettingsAction;
    QPointer<QAction> audioOutputsAction;
    QPointer<QAction> settingsAction;
    QPointer<QAction> exitAction;
    QPointer<QDialog> audioOutputDialog;
    // The settings window, made when first opened, and its way to the file.
    QPointer<SettingsEditor> settingsEditor;  // a child of widgetContext
    QPointer<SettingsWindow> settingsWindow;
    struct OnAirEntry {
        QPointer<QAction> action;
        int operation = 0;
        const char *name = nullptr;
    };
    QList<OnAirEntry> onAirEntries;
    QPointer<UserInfoBar> userInfoBar;
    // Where the playlist file dialogs open; read at start, kept here after.
    QString lastPlaylistDirectory;
    // Context of every connection from a widget to this object, so that
    // none outlives it.
    std::unique_ptr<QObject> widgetContext;

    // The keyboard: shortcuts and the volume chords.
    std::unique_ptr<ControllerShortcuts> shortcuts;
    std::unique_ptr<ControllerVolumeInput> volumeInput;

    // The figures of the run for the health query and the HEALTH record.
    std::unique_ptr<HealthMonitor> health;
    QTimer debugSnapshotTimer;
    std::unique_ptr<ControlSocketServer> controlSocket;
    bool shutDown = false;
    bool playerRetained = false;

    // MainController.cpp
    void createSelection();
    void createProgramSide();
    void pushSettings();
    void pushManualCrossfade();
    void createKeyboard();
    void waitForShutdown();
    QString contextText() const;

    // MainController_edit.cpp
    void createEditSide();
    void createPflFeed();
    void createPflOutput();
    // The sound devices: the dialog with the audio output page, and the
    // operator's choice saved and applied.
    void openAudioOutputs();
    void applyAudioOutputs(const QString &programId, const QString &pflId, bool useDefaultWhenMissing);
    void appendScanLog(const QString &line);

    // MainController_menus.cpp
    void buildControllerWindow();
    void retranslateMenus();
    void refreshOnAirMenu();
    void exportPlaylistFromDialog();
    void importPlaylistFromDialog();
    void rememberPlaylistDirectory(const QString &path);

    // MainController_playlist.cpp
    void bindPlaylistOperations();
    bool removeItem(quint64 itemId);
    bool applyBulkOperation(PlaylistBulkOperation operation);

    // MainController_media.cpp
    void bindMediaOperations();
    bool openAddFilesDialog();
    bool addMediaFiles(const QStringList &paths, bool rememberDirectory, qint32 playlistNumber, bool interactive);
    void runMediaBatches();
    bool stepMediaBatch(MediaAddBatch &batch);
    void enqueueMedia(MediaAddBatch &batch, const QString &path, std::optional<qint64> stillDurationMs);
    void askDisplayTime(const QString &fileName);
    void answerDisplayTime(bool accepted, qint64 durationMs, bool rememberForSession);
    void reportMediaFailures(const QStringList &lines);
    void writeSettingInBackground(const QString &key, const QString &value);

    // MainController_settings.cpp
    void createSettingsTransfer();
    void exportSettingsFromDialog();
    void importSettingsFromDialog();
    void applyRestoredSettings(const QJsonObject &settings);
    // A setting the running parts take up while running, restored or
    // changed in the settings window.
    void applyRuntimeSetting(const QString &key, const QJsonValue &value);
    // The settings window: opened by the File menu and OpenSettings; each
    // value it saves is taken up at once.
    bool openSettingsWindow();
    void applyChangedSetting(const QString &key, const QJsonValue &value);

    // MainController_session.cpp
    void bindControlCommands();

    // MainController_health.cpp
    void createHealthMonitor();
    void bindHealthQuery();

    // MainController_snapshot.cpp
    void writeDebugSnapshot() const;
};

} // namespace tarnix
