#pragma once

#include "playlist/playlist_records.h"

#include <QImage>
#include <QObject>
#include <QString>

namespace tarnix {

// Why the In and Out points of the loaded item cannot be changed now; None
// when they can.
enum class EditPointLock {
    None,
    OnAir,           // the item is ON AIR
    Bgm,             // the item is in use by BGM
    FileOnly,        // the item is not a file
    SettingsLocked,  // the item's settings are locked
};

// What the EDIT panel shows of the loaded item: its settings, the kind of
// source (which controls apply), and the lock on its points and settings.
struct EditItemView {
    quint64 itemId = 0;  // 0: nothing loaded
    QString displayName;
    PlaylistSourceType sourceType = PlaylistSourceType::file;
    PlaylistMediaType mediaType = PlaylistMediaType::unknown;
    PlaylistItemSettings settings;
    // The item's settings as a whole are locked (no setting may change).
    bool settingsLocked = false;
    EditPointLock pointLock = EditPointLock::None;
    // The text for the lock, shown as the tooltip of the points' controls.
    QString pointLockReason;
};

// One GOTO destination the panel lists: every item of every playlist.
struct EditGotoEntry {
    quint64 itemId = 0;
    qint32 playlistNumber = 0;
    quint32 row = 0;
    QString displayName;
    bool offline = false;
    // The loaded item itself and items that cannot play are listed disabled.
    bool selectable = true;
};

// The EDIT panel as the EDIT session drives it: what is loaded, where it
// stands, the item's settings, levels, the picture and the status line; and
// the operator's requests as signals. The panel keeps no truth of its own:
// after a refused change it shows the settings it is given again. The
// session works without a panel. Main thread.
class EditPanelView : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    // The media line (the loaded file's name; empty for none).
    virtual void showMediaText(const QString &text) = 0;
    virtual void setTransportEnabled(bool enabled) = 0;
    // -1 for what is unknown.
    virtual void showPosition(qint64 positionMs, qint64 durationMs) = 0;
    // All controls at once, with their signals blocked: nothing set here is
    // sent back as a request.
    virtual void showItem(const EditItemView &item) = 0;
    virtual void showGotoEntries(const QList<EditGotoEntry> &entries) = 0;
    virtual void showPlaying(bool playing) = 0;
    // PFL: whether it can be used, and whether it is on.
    virtual void showPfl(bool available, bool on) = 0;
    // Levels in dB (-60..0), input before the nominal volume, output after.
    virtual void showLevels(double inputLeftDb, double inputRightDb, double outputLeftDb, double outputRightDb) = 0;
    // The picture of the loaded item; a null image clears the surface.
    virtual void showVideoFrame(const QImage &frame) = 0;
    // A live item shows its preview in place of the file picture.
    virtual void showLivePreview(bool live) = 0;
    // The status line; with error set it reads "EDIT ERROR | <text>".
    virtual void showStatus(const QString &text, bool error) = 0;

signals:
    void playRequested();
    void pflRequested(bool enabled);
    void pauseRequested();
    void stopRequested();
    void jumpToStartRequested();
    void jumpToInRequested();
    void jumpToOutRequested();
    void jumpToEndRequested();
    void scanBackwardRequested();
    void scanForwardRequested();
    void scanStopRequested();
    void setInRequested();
    void setOutRequested();
    void inPointTimeRequested(qint64 positionMs);
    void outPointTimeRequested(qint64 positionMs);
    void startModeRequested(PlaylistStartMode mode);
    void endModeRequested(PlaylistEndMode mode);
    void gotoTargetRequested(quint64 itemId);
    void repeatOptionsRequested(qint32 count, PlaylistRepeatEndMode endMode);
    void fadeInRequested(bool enabled, qint64 durationMs);
    void fadeOutRequested(bool enabled, qint64 durationMs);
    void endCrossfadeRequested(bool enabled, qint64 durationMs);
    void nominalVolumeRequested(qint32 volumeTenthsDb);
    void nominalDelayRequested(qint32 frames);
    void nominalEqRequested(qint32 lowTenthsDb, qint32 midTenthsDb, qint32 highTenthsDb);
    void seekRequested(qint64 positionMs);
    void frameStepRequested(qint32 frameCount);
};

} // namespace tarnix
