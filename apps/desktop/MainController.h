#pragma once

#include <QSize>
#include <QString>

#include <chrono>
#include <memory>

class QWidget;

namespace tarnix {

class BackgroundIoQueue;
class ControlStateRegistry;
class ControllerOperations;
class PlaylistModel;
class PlaylistPanel;
class ProgramGpuCompositor;
class PlaylistThumbnailStore;
class PlaylistTransfer;
class EditSessionController;
class ProgramPlayoutController;
class UiLanguageManager;
class UserInfoCenter;

// What a run may change about the composition; the defaults are the
// product's. Tests and bench programs shrink the picture and the limits.
struct MainControllerOptions {
    // Program picture size; empty: 1920 x 1080, or 3840 x 2160 for a 4K run.
    // A size the compositor refuses leaves the program player down.
    QSize programOutputSize;
    // Launch description of the program audio output; empty: the platform's.
    QString programAudioSinkFactory;
    // At exit: how long the ON AIR pipelines and the file queue are given
    // to finish, and how often they are looked at meanwhile.
    std::chrono::milliseconds shutdownLimit{15000};
    std::chrono::milliseconds shutdownPoll{10};
    // Empty: "previous-session.json" in the local data folder.
    QString previousSessionPath;
    // While debug mode is on, the state snapshot is logged this often.
    std::chrono::milliseconds debugSnapshotInterval{5000};
    // Runs as if the EDIT player could not be made (tests of the promise
    // that ON AIR goes on without it).
    bool editPlayerFails = false;
    // Health figures: how often the program counters and the process are
    // sampled, and how often the HEALTH record is written.
    std::chrono::milliseconds healthSampleInterval{1000};
    std::chrono::milliseconds healthRecordInterval{60000};
    // The PFL helper program; empty: tarnix-pfl-output beside the
    // application.
    QString pflHelperPath;
};

// Composition root of the application: owns or parents every long-lived
// object for the whole run, wires them and tears them down in a safe order.
// It makes no playout decision of its own.
//
// Main thread only. The program window must outlive it (the ON AIR player
// draws into it); the controller window may go first: every reference to
// it and its children is guarded.
class MainController
{
public:
    MainController(QWidget *programVideoWindow, QWidget *controllerWindow, bool programOutput4k,
                   UiLanguageManager *languageManager, MainControllerOptions options = {});
    // Runs shutdown() when it has not run.
    ~MainController();

    MainController(const MainController &) = delete;
    MainController &operator=(const MainController &) = delete;

    // Whether the program player came up; when it did not, the reason.
    bool programPlayerAvailable() const;
    QString programPlayerError() const;

    // The operator message queue and the file work queue of the run.
    UserInfoCenter *userInfoCenter() const;
    BackgroundIoQueue *backgroundIoQueue() const;

    // The registry every operator intention goes through; panels and
    // controllers bind their actions to it as they are built.
    ControllerOperations *controllerOperations() const;
    // Where owners publish the fields of the control socket's state query.
    ControlStateRegistry *controlState() const;

    PlaylistModel *playlistModel() const;
    // The item pictures the playlist views show.
    PlaylistThumbnailStore *thumbnailStore() const;
    // The playlist panel of the controller window; null without a window.
    PlaylistPanel *playlistPanel() const;
    ProgramPlayoutController *programPlayout() const;
    // The program picture's compositor while the program player is up, for
    // its figures and the operator's monitor; null otherwise.
    ProgramGpuCompositor *programCompositor() const;
    PlaylistTransfer *playlistTransfer() const;
    EditSessionController *editSession() const;

    // Opens the local control socket at the path, with the playlist
    // commands beside the operations. A failure is logged and the
    // application runs without it. Returns whether it listens.
    bool startControlSocket(const QString &path);

    // The end of the run, in its fixed order: operations refused, the
    // socket closed, the previous session saved, the ON AIR shutdown
    // started; then the event loop runs until both are done or the limit
    // passes, and the objects go in reverse order. A player whose pipelines
    // did not confirm their stop is kept for the rest of the process.
    void shutdown();
    // After shutdown(): the ON AIR player was kept, so the program window it
    // draws into must be kept as well.
    bool programPlayerRetained() const;

    // Writes the state of the objects to the log (debug mode only).
    void writeDebugSnapshot() const;

    struct Impl;

private:
    std::unique_ptr<Impl> d;
};

} // namespace tarnix
