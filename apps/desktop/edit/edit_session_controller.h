#pragma once

#include "edit/edit_player.h"
#include "playlist/playlist_records.h"

#include <QObject>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

namespace tarnix {

class EditPanelView;
class ItemSelection;
class PlaylistModel;

// The EDIT session: one playlist item at a time loaded into the EDIT
// player, trimmed and set up by the operator, every change saved to the
// item in the model the moment it is made. Nothing here reaches ON AIR: a
// failure ends in the panel's status line and leaves the item as it was.
// Main thread.
class EditSessionController : public QObject
{
    Q_OBJECT

public:
    struct Options {
        EditPlayer::Options player;
        std::chrono::milliseconds tickInterval{33};
        // While a load or a seek is under way the session looks again this
        // often, so the operator sees the picture when it is there rather
        // than at the next display tick.
        std::chrono::milliseconds busyTickInterval{5};
        // Monotonic milliseconds, for the rewind scrub; tests inject their own.
        std::function<qint64()> clock;
        // Writes one line of the scan log (the time stamp is added here).
        // The application hands it to the file queue; none: the line goes
        // to the log only.
        std::function<void(const QString &line)> scanLog;
        // A player that cannot be created (tests).
        bool failPlayerCreation = false;
    };

    EditSessionController(PlaylistModel *model, ItemSelection *selection, const Options &options,
                          QObject *parent = nullptr);
    explicit EditSessionController(PlaylistModel *model, ItemSelection *selection = nullptr,
                                   QObject *parent = nullptr);
    ~EditSessionController() override;

    // The panel the session drives; none is fine. Not owned.
    void setPanel(EditPanelView *panel);

    quint64 loadedItemId() const;
    bool isLoading() const;
    // The item's media is in the player and ready.
    bool isLoaded() const;
    // An item is EDIT's (media loaded, or a document or live input, which
    // need no player), neither loading nor leaving.
    bool hasItem() const;
    bool isUnloading() const;
    bool playerUnavailable() const;
    // The last status text and whether it was an error.
    QString statusText() const;
    bool statusIsError() const;
    // Where EDIT stands: a pending frame or seek target first.
    qint64 positionMs() const;
    qint64 durationMs() const;
    bool isPlaying() const;
    // 0 none, 1 forward, -1 rewind.
    int scanDirection() const;
    // The loaded item's nominal volume; nothing without an item.
    std::optional<qint32> nominalVolumeTenthsDb() const;
    // The player, for figures and tests; null when unavailable.
    EditPlayer *player() const;

    // Starts the unload of the item (or of whatever is loaded, with 0); true
    // when it is not loaded or the unload started. `done` runs once nothing
    // of it is loaded any more.
    bool beginUnload(quint64 itemId, std::function<void()> done = {});

    // What the PFL output can do now and whether the operator hears EDIT;
    // the panel shows it while an item is loaded.
    void setPflState(bool available, bool on);
    bool isPflOn() const;
    // The PFL output failed: the status line says so, and pflOutputError
    // tells whoever watches the audio outputs.
    void showPflFailure(const QString &message);

public slots:
    void toggleStartMode();
    void toggleFadeOut();
    void resetEditor();
    void loadSelectedItem();
    void loadItem(quint64 itemId);
    void play();
    void pause();
    void stopPlayback();
    void jumpToStart();
    void jumpToIn();
    void jumpToOut();
    void jumpToEnd();
    void startScanBackward();
    void startScanForward();
    void stopScan();
    void setInPoint();
    void setOutPoint();
    void setInPointTime(qint64 positionMs);
    void setOutPointTime(qint64 positionMs);
    void setStartMode(tarnix::PlaylistStartMode mode);
    void setEndMode(tarnix::PlaylistEndMode mode);
    void setGotoTarget(quint64 itemId);
    void setRepeatOptions(qint32 count, tarnix::PlaylistRepeatEndMode endMode);
    void setFadeIn(bool enabled, qint64 durationMs);
    void setFadeOut(bool enabled, qint64 durationMs);
    void setEndCrossfade(bool enabled, qint64 durationMs);
    void setNominalVolume(qint32 volumeTenthsDb);
    void setNominalDelayFrames(qint32 frames);
    void setNominalEq(qint32 lowTenthsDb, qint32 midTenthsDb, qint32 highTenthsDb);
    void seek(qint64 positionMs);
    void stepFrames(qint32 frameCount);
    // Asks for PFL on or off (pflRequested); nothing without an item.
    void togglePfl();

signals:
    void pflRequested(bool enabled);
    void pflOutputError(const QString &message);
    // The loaded item changed (0: none).
    void loadedItemChanged(quint64 itemId);
    void statusChanged(const QString &text, bool error);

private:
    void tick();
    void tickOnce();

    struct Impl;
    std::unique_ptr<Impl> d;
};

} // namespace tarnix
