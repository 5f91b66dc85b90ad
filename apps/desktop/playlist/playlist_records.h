#pragma once

#include "playlist/macro_records.h"
#include "playlist/playlist_enums.h"

#include <QList>
#include <QMetaType>
#include <QString>

#include <optional>

// Plain value records of playlists and their items, copied freely between
// subsystems and threads. Items are addressed by `id`, playlists by `number`,
// never by row or tab position. The ranges are checked by
// playlist_validation.h, not here: a record may hold any value until a
// validator has accepted it.
namespace tarnix {

struct PlaylistFadeSetting {
    bool enabled = false;
    // Kept, and range-checked, while the fade is off, so that switching it on
    // again restores the operator's length.
    qint64 durationMs = 1000;

    friend bool operator==(const PlaylistFadeSetting &, const PlaylistFadeSetting &) = default;
};

// The nominal volume's range in tenths of a dB: -960 is off, 60 is +6 dB.
inline constexpr qint32 kVolumeOffTenthsDb = -960;
inline constexpr qint32 kVolumeTopTenthsDb = 60;

struct PlaylistItemSettings {
    qint64 inPointMs = 0;
    std::optional<qint64> outPointMs;  // absent: play to the end of the media
    PlaylistStartMode startMode = PlaylistStartMode::pause;
    PlaylistEndMode endMode = PlaylistEndMode::pause;
    PlaylistFadeSetting fadeIn;
    PlaylistFadeSetting fadeOut;
    PlaylistFadeSetting endCrossfade;
    quint64 gotoTargetItemId = 0;  // 0: none
    qint32 repeatCount = 0;        // 0 with endMode repeat: repeat without end
    PlaylistRepeatEndMode repeatEndMode = PlaylistRepeatEndMode::pause;
    qint32 nominalVolumeTenthsDb = 0;
    qint32 nominalAudioDelayFrames = 0;
    qint32 nominalEqLowTenthsDb = 0;
    qint32 nominalEqMidTenthsDb = 0;
    qint32 nominalEqHighTenthsDb = 0;

    friend bool operator==(const PlaylistItemSettings &, const PlaylistItemSettings &) = default;
};

struct PlaylistItem {
    quint64 id = 0;             // 0 is never an item; the highest value is never given out
    quint32 position = 0;       // 1-based row in its playlist
    qint32 playlistNumber = 0;
    QString filePath;           // media file, or device path / URI of a live source
    QString displayName;
    PlaylistSourceType sourceType = PlaylistSourceType::file;
    PlaylistMediaType mediaType = PlaylistMediaType::unknown;
    PlaylistPowerPointMode powerPointMode = PlaylistPowerPointMode::none;
    PlaylistItemColor color = PlaylistItemColor::default_;
    bool separatorBelow = false;
    PlaylistItemSettings settings;

    friend bool operator==(const PlaylistItem &, const PlaylistItem &) = default;
};

struct Playlist {
    qint32 number = 1;  // identity, not tab position; survives reordering
    QString name;
    PlaylistMode mode = PlaylistMode::standard;
    bool manualCrossfadeEnabled = false;

    friend bool operator==(const Playlist &, const Playlist &) = default;
};

// The whole playlist state as one value: what the model hands to workers and
// what the document reader and writer exchange.
struct PlaylistDocument {
    QList<Playlist> playlists;   // tab order
    QList<PlaylistItem> items;   // each playlist's items by ascending position
    qint32 activePlaylistNumber = 1;
    qint64 manualCrossfadeDurationMs = 1000;
    QString documentId;          // UUID without braces; empty until createNew() or a reader sets it
    QList<MacroDefinition> macros;
    quint64 nextItemId = 1;

    // A fresh document: one standard playlist numbered 1 and a new random id.
    static PlaylistDocument createNew();

    friend bool operator==(const PlaylistDocument &, const PlaylistDocument &) = default;
};

// Registers every playlist enum and record with the meta-type system, so that
// they travel in QVariant and through queued connections. Safe to call more
// than once; call it before the first queued use.
void registerPlaylistMetaTypes();

} // namespace tarnix

Q_DECLARE_METATYPE(tarnix::PlaylistFadeSetting)
Q_DECLARE_METATYPE(tarnix::PlaylistItemSettings)
Q_DECLARE_METATYPE(tarnix::PlaylistItem)
Q_DECLARE_METATYPE(tarnix::Playlist)
Q_DECLARE_METATYPE(tarnix::PlaylistDocument)
