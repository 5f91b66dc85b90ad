#pragma once

#include "playlist/playlist_model_types.h"
#include "playlist/playlist_records.h"

#include <QObject>
#include <QSet>
#include <QString>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

namespace tarnix {

struct PlaylistModelOptions {
    // Asked on a worker thread; must be safe to call from any thread.
    std::function<bool(const QString &path)> isFile;  // empty: QFileInfo::isFile
    std::chrono::milliseconds scanInterval{5000};
    std::chrono::milliseconds scanPollInterval{25};
};

// The one owner of the running document: every playlist, item and playback
// reference. Everything else reads by item id and asks for changes here; a
// refused change returns false (or 0) and emits nothing.
//
// Main thread only. The availability scan runs detached and hands its result
// back through a shared state that a timer polls.
class PlaylistModel : public QObject
{
    Q_OBJECT

public:
    explicit PlaylistModel(QObject *parent = nullptr, PlaylistModelOptions options = {});
    ~PlaylistModel() override;

    // Items.
    QList<quint64> addItems(const QList<PlaylistItemRequest> &requests);
    QList<quint64> addItemsAtomic(const QList<PlaylistItemRequest> &requests);
    quint64 addDocumentItem(const QString &path, qint32 playlistNumber, PlaylistSourceType sourceType);
    bool removeItem(quint64 itemId);
    bool moveItem(quint64 itemId, int row);
    bool moveItemToPlaylist(quint64 itemId, qint32 playlistNumber, int row);
    quint64 copyItemToPlaylist(quint64 itemId, qint32 playlistNumber, int row);
    bool setItemSettings(quint64 itemId, const PlaylistItemSettings &settings);
    bool setItemDisplayName(quint64 itemId, const QString &name);
    bool setItemColor(quint64 itemId, PlaylistItemColor color);
    bool setItemSeparatorBelow(quint64 itemId, bool on);
    bool setItemSettingsLocked(quint64 itemId, bool locked);
    bool setItemRepeatProgress(quint64 itemId, int count);
    // Where an item's playback last was, for as long as the model holds the
    // item; it is not saved. Read on demand, so it emits nothing.
    bool setItemLastPlayedPosition(quint64 itemId, qint64 positionMs);
    void setItemDuration(quint64 itemId, qint64 durationMs);

    // Playlists.
    qint32 addPlaylist();
    bool removePlaylist(qint32 number);
    bool movePlaylist(qint32 number, int index);
    bool setActivePlaylist(qint32 number);
    bool setPlaylistName(qint32 number, const QString &name);
    bool setPlaylistMode(qint32 number, PlaylistMode mode);
    // Take ON AIR from this playlist with the document's crossfade.
    bool setPlaylistManualCrossfadeEnabled(qint32 number, bool enabled);

    // Playback references.
    bool setOnAirItem(quint64 itemId);
    void setOnAirMessage(const QString &text);
    bool setCueState(quint64 itemId, PlaylistCueState state, const QString &message = {});
    bool setDskItem(quint64 itemId);
    bool setEditItem(quint64 itemId);
    bool setBgmItem(quint64 itemId);

    // Conversion and analysis.
    bool setPendingState(quint64 itemId, qint32 phase, qint32 progress);
    bool completeMediaAnalysis(quint64 itemId, PlaylistMediaType mediaType, std::optional<qint64> durationMs);
    bool completePendingDocument(quint64 itemId);
    bool replacePendingItem(quint64 itemId, const QList<PlaylistItemRequest> &requests);

    // The whole document.
    bool replaceDocument(const PlaylistDocument &document, QString *error = nullptr,
                         const std::optional<QSet<quint64>> &missingItems = std::nullopt);
    PlaylistDocument snapshot() const;
    bool setMacros(const QList<MacroDefinition> &macros, QString *error = nullptr);
    QList<MacroDefinition> macros() const;
    QString documentId() const;
    quint64 nextItemId() const;
    qint64 manualCrossfadeDurationMs() const;
    bool setManualCrossfadeDurationMs(qint64 durationMs);
    bool playlistManualCrossfadeEnabled(qint32 number) const;

    // Bulk operations and their one undo record.
    bool applyBulkOperation(qint32 playlistNumber, PlaylistBulkOperation op);
    // Records what changed since `before` (a snapshot), as the bulk
    // operations do themselves; the caller of a Clear or Delete calls it.
    void recordBulkUndo(const PlaylistDocument &before);
    bool isBulkUndoAvailable() const;
    bool undoBulkOperation(QString *error = nullptr, bool *keptLaterChanges = nullptr);

    // Succession and the map.
    quint64 successor(quint64 itemId, PlaylistEndMode mode, quint64 excludeId = 0) const;
    PlaylistRoute route(quint64 itemId, const PlaylistRouteOptions &options = {}) const;

    // Availability of media files.
    void requestAvailabilityScan();
    bool isAvailabilityScanRunning() const;
    // Playback could not open `path`: every non-live item with it goes
    // offline at once and a new scan is asked for.
    void markFileUnavailable(const QString &path);

    // Queries.
    std::optional<PlaylistItem> item(quint64 itemId) const;
    bool contains(quint64 itemId) const;
    int rowOf(quint64 itemId) const;           // 1-based; 0 when absent
    qint32 playlistOf(quint64 itemId) const;   // 0 when absent
    QList<qint32> playlistNumbers() const;     // tab order
    bool hasPlaylist(qint32 number) const;
    int itemCount(qint32 playlistNumber) const;
    quint64 itemAt(qint32 playlistNumber, int row) const;  // 1-based row
    QList<quint64> itemIds(qint32 playlistNumber) const;
    PlaylistMode playlistMode(qint32 number) const;
    QString playlistName(qint32 number) const;
    qint32 activePlaylistNumber() const;
    int count() const;  // items of the active playlist
    bool isPending(quint64 itemId) const;
    std::optional<PlaylistPendingState> pendingState(quint64 itemId) const;
    bool isOffline(quint64 itemId) const;
    bool isLocked(quint64 itemId) const;
    bool isLockedForPoints(quint64 itemId) const;
    std::optional<qint64> knownDuration(quint64 itemId) const;
    int repeatProgress(quint64 itemId) const;
    std::optional<qint64> lastPlayedPosition(quint64 itemId) const;
    quint64 onAirItemId() const;
    QString onAirMessage() const;
    quint64 cueItemId() const;
    PlaylistCueState cueState() const;
    QString cueMessage() const;
    quint64 dskItemId() const;
    quint64 editItemId() const;
    quint64 bgmItemId() const;

signals:
    void mediaAvailabilityCheckRequested();
    void itemAdded(quint64 itemId);
    void itemRemoved(quint64 itemId, int previousRow);
    void itemMoved(quint64 itemId, int previousRow, int currentRow);
    void itemMovedToPlaylist(quint64 itemId, qint32 previousPlaylistNumber, int previousRow,
                             qint32 currentPlaylistNumber, int currentRow);
    void itemCopiedToPlaylist(quint64 sourceItemId, quint64 copiedItemId, qint32 playlistNumber, int currentRow);
    void itemChanged(quint64 itemId);
    void itemMediaAvailabilityChanged(quint64 itemId, bool offline);
    void itemSettingsChanged(quint64 itemId, const tarnix::PlaylistItemSettings &settings);
    void itemSettingsLockChanged(quint64 itemId, bool locked);
    void itemConversionStateChanged(quint64 itemId);
    void itemReplaced(quint64 retainedItemId);
    void countChanged(int count);
    void onAirStateChanged(quint64 previousItemId, quint64 currentItemId);
    void cueStateChanged(quint64 previousItemId, quint64 currentItemId);
    void dskStateChanged(quint64 previousItemId, quint64 currentItemId);
    void editStateChanged(quint64 previousItemId, quint64 currentItemId);
    void bgmStateChanged(quint64 previousItemId, quint64 currentItemId);
    void playlistAdded(qint32 playlistNumber);
    void playlistOrderChanged();
    void playlistRemoved(qint32 playlistNumber);
    void playlistNameChanged(qint32 playlistNumber, const QString &name);
    void playlistModeChanged(qint32 playlistNumber, tarnix::PlaylistMode mode);
    void playlistManualCrossfadeChanged(qint32 playlistNumber, bool enabled);
    void manualCrossfadeDurationChanged(qint64 durationMs);
    void activePlaylistChanged(qint32 previousPlaylistNumber, qint32 currentPlaylistNumber);
    void modelReset();
    void macrosChanged();
    void bulkUndoAvailableChanged(bool available);

private:
    bool setMarkedItem(quint64 &mark, quint64 itemId, void (PlaylistModel::*changed)(quint64, quint64));
    struct Impl;
    friend struct Impl;
    std::unique_ptr<Impl> d;
    void applyAvailability(quint64 generation, const QList<std::pair<quint64, bool>> &results);
    friend class MediaAvailabilityMonitor;
};

} // namespace tarnix
