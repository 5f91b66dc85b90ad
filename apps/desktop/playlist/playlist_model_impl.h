#pragma once

// The state behind PlaylistModel, shared by the files that implement it.

#include "playlist/media_availability_monitor.h"
#include "playlist/playlist_model.h"

#include <QHash>
#include <QList>
#include <QSet>

namespace tarnix {

// What one or more bulk operations changed, kept so that one undo can
// reverse them while respecting what the operator did since.
struct PlaylistBulkUndoRecord {
    struct ChangedItem {
        quint64 id = 0;
        PlaylistStartMode startBefore{}, startAfter{};
        PlaylistEndMode endBefore{}, endAfter{};
        quint64 gotoBefore = 0, gotoAfter = 0;
    };
    struct PlaylistChange {
        qint32 number = 0;
        PlaylistMode modeBefore{}, modeAfter{};
        QList<quint64> orderBefore, orderAfter;
    };
    struct DeletedPlaylist {
        Playlist playlist;
        int tabIndex = 0;
    };
    QList<PlaylistItem> deletedItems;
    QList<ChangedItem> changedItems;
    QList<PlaylistChange> playlistChanges;
    QList<DeletedPlaylist> deletedPlaylists;

    bool isEmpty() const
    {
        return deletedItems.isEmpty() && changedItems.isEmpty() && playlistChanges.isEmpty()
            && deletedPlaylists.isEmpty();
    }
    void mergeLater(const PlaylistBulkUndoRecord &later);
};

struct PlaylistModel::Impl {
    explicit Impl(PlaylistModel *q, PlaylistModelOptions options);

    PlaylistModel *q;
    QString documentId;
    QHash<quint64, PlaylistItem> items;
    QHash<quint64, PlaylistPendingState> pending;
    QHash<quint64, qint64> durations;
    QHash<quint64, int> repeatProgress;
    QHash<quint64, qint64> lastPlayedPositions;
    QHash<qint32, QList<quint64>> order;
    QHash<qint32, Playlist> playlists;
    QList<qint32> playlistOrder;
    QSet<quint64> offline;
    QSet<quint64> locked;
    quint64 nextItemId = 1;
    qint32 activePlaylistNumber = 1;
    qint64 manualCrossfadeDurationMs = 1000;
    quint64 onAirItem = 0;
    QString onAirMessage;
    quint64 cueItem = 0;
    PlaylistCueState cueState = PlaylistCueState::None;
    QString cueMessage;
    quint64 dskItem = 0;
    quint64 editItem = 0;
    quint64 bgmItem = 0;
    QList<MacroDefinition> macros;
    std::optional<PlaylistBulkUndoRecord> bulkUndo;
    MediaAvailabilityMonitor *availability = nullptr;

    int totalItems() const { return items.size(); }
    void renumber(qint32 playlistNumber, int fromIndex = 0);
    void emitCountIfActive(std::initializer_list<qint32> touched);
    // The checks every new item passes; `error` names nothing: refusals
    // here are silent skips or whole refusals.
    bool isAcceptableRequest(const PlaylistItemRequest &request) const;
    PlaylistItem itemFromRequest(const PlaylistItemRequest &request, quint64 id, qint32 playlistNumber) const;
    qint32 targetPlaylist(qint32 requested) const;
    void insertItem(PlaylistItem item, int index);
    // Clears every reference to a removed item; emits the item signals of
    // the items whose goto target it was.
    void clearReferencesTo(quint64 itemId);
    bool isBulkLocked(quint64 itemId) const { return locked.contains(itemId) || pending.contains(itemId); }
    PlaylistDocument snapshot() const;
    // The bytes of the document would still load: size and string budgets.
    bool documentFitsBudgets(const QList<MacroDefinition> &newMacros, QString *error) const;
};

// Strings that the document can hold: the reader refuses longer ones.
bool fitsDocumentString(const QString &text);

} // namespace tarnix
