#pragma once

#include "edit/edit_panel_view.h"
#include "edit/edit_session_controller.h"

#include "playlist/item_selection.h"
#include "playlist/playlist_model.h"

#include <QElapsedTimer>
#include <QHash>
#include <QPointer>
#include <QTimer>

#include <optional>
#include <vector>

namespace tarnix {

struct EditSessionController::Impl {
    EditSessionController *q = nullptr;
    QPointer<PlaylistModel> model;
    QPointer<ItemSelection> selection;
    QPointer<EditPanelView> panel;
    Options options;
    std::unique_ptr<EditPlayer> player;
    bool playerUnavailable = false;

    quint64 itemId = 0;
    QString itemName;
    QString itemPath;
    bool loading = false;
    // From the unload's start until the session has taken in its end.
    bool unloading = false;
    QTimer tickTimer;
    // Coalesces the document's changes into one rebuild of the GOTO list.
    QTimer gotoRebuild;
    // The names the list shows, so that a change of settings alone does not
    // rebuild it.
    QHash<quint64, QString> gotoNames;
    QElapsedTimer fallbackClock;

    // Scan: direction, whether playback resumes after it, where and when it
    // started; the forward scan's cool-down against a stale boundary, and
    // the rewind's end position held while its seek settles.
    int scanDirection = 0;
    bool scanResumePlayback = false;
    qint64 scanAnchorMs = 0;
    qint64 scanStartedAt = 0;
    int scanCooldownTicks = 0;
    int heldTargetTicks = 0;
    std::optional<qint64> seekTarget;
    std::optional<qint64> frameTarget;

    QString statusText;
    bool statusError = false;
    bool pflAvailable = false;
    bool pflOn = false;
    std::vector<std::function<void()>> afterUnload;

    qint64 now() const;
    std::optional<PlaylistItem> item() const;
    void status(const QString &text, bool error = false);
    // "EDIT <operation> | <name>".
    void statusFor(const QString &operation);
    void scanLog(const QString &event);

    bool loadFile(const PlaylistItem &item);
    void loadWithoutPlayer(const PlaylistItem &item);
    void finishUnload();
    void syncPanel();
    void showItemOnPanel();
    void showPosition();
    void showGotoEntries();
    void pollPlayer();
    // Whether the player's sound is what the PFL ring should carry.
    void setPflSource(bool active);
    // The tick's interval for what is under way (see busyTickInterval).
    void keepPace();
    void moveRewind();
    void endScan(bool boundary);

    // In and Out; nullopt position: the player's current one.
    void setPoint(bool in, std::optional<qint64> positionMs);
    // The shape every other setting shares: a loaded, unlocked item, its
    // settings changed by `change`, saved or refused with the texts.
    bool changeSettings(const std::function<bool(PlaylistItemSettings &)> &change, const QString &failure);
};

} // namespace tarnix
