#pragma once

#include "playlist/playlist_records.h"

#include <QList>
#include <QMetaType>
#include <QString>

#include <optional>

// Run-time records of the playlist model that the document does not store.
namespace tarnix {

// Where a prepared (cued) item stands.
enum class PlaylistCueState : int { None = 0, Requested = 1, Preparing = 2, Ready = 3, Failed = 4 };

// Phases of an item still being converted or analysed; the tile shows the
// phase's label with the progress.
enum class PlaylistPendingPhase : int {
    ConversionWaiting = 0,
    ConversionPreparing = 1,
    ConversionExporting = 2,
    ConversionRendering = 3,
    ConversionEncoding = 4,
    AnalysisWaiting = 5,
    Analyzing = 6,
};

struct PlaylistPendingState {
    qint32 phase = static_cast<qint32>(PlaylistPendingPhase::AnalysisWaiting);
    qint32 progress = 0;  // 0 to 1000, clamped on every write

    friend bool operator==(const PlaylistPendingState &, const PlaylistPendingState &) = default;
};

// What a caller hands in to add an item.
struct PlaylistItemRequest {
    QString filePath;
    QString displayName;
    PlaylistSourceType sourceType = PlaylistSourceType::file;
    PlaylistMediaType mediaType = PlaylistMediaType::unknown;
    PlaylistPowerPointMode powerPointMode = PlaylistPowerPointMode::none;
    PlaylistItemColor color = PlaylistItemColor::default_;
    bool separatorBelow = false;
    PlaylistItemSettings settings;
    qint32 targetPlaylistNumber = 0;  // 0 or unknown: the active playlist
    std::optional<PlaylistPendingState> pending;
};

// Why the route of the playlist map ends.
enum class PlaylistRouteStop : int {
    End = 0,                 // a stop or pause end mode
    StartPause,              // the starting item waits at its start
    DestinationPause,        // the next item would wait at its start
    LiveOrUnknown,           // a live item or one without known duration
    InfiniteRepeat,
    Loop,
    DestinationUnavailable,
    DestinationBgm,
};

struct PlaylistRouteRow {
    int sequence = 0;             // 1-based play order
    qint32 playlistNumber = 0;
    int row = 0;                  // 1-based row in that playlist
    quint64 itemId = 0;
    QString name;
    PlaylistStartMode startMode = PlaylistStartMode::pause;
    PlaylistEndMode endMode = PlaylistEndMode::pause;
    std::optional<qint64> durationMs;  // what this item adds; none: unlimited
};

struct PlaylistRoute {
    QList<PlaylistRouteRow> rows;
    PlaylistRouteStop stop = PlaylistRouteStop::End;
    std::optional<qint64> totalMs;  // none: unlimited
};

struct PlaylistRouteOptions {
    std::optional<double> playbackRate;  // none: 1.0
    // For the ON AIR item: the route starts at its current position and
    // repeat progress instead of its in point.
    std::optional<qint64> startPositionMs;
    int repeatProgress = 0;
};

// The map's note for a stop reason; empty for a plain end.
QString playlistRouteNote(PlaylistRouteStop stop);

} // namespace tarnix

Q_DECLARE_METATYPE(tarnix::PlaylistPendingState)
