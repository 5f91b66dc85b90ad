#pragma once

#include "playlist/media_thumbnail_result.h"

#include <QHash>
#include <QImage>
#include <QObject>
#include <QPointer>

#include <optional>

namespace tarnix {

class MediaThumbnailer;
class PlaylistModel;

// The pictures of the playlist items, kept per item id. An item gets its
// picture asked for the first time the view needs it, and loses it when it
// goes or is replaced; an answer for an item that has gone or changed since
// it was asked for is dropped.
//
// Main thread only.
class PlaylistThumbnailStore : public QObject
{
    Q_OBJECT

public:
    PlaylistThumbnailStore(PlaylistModel *model, MediaThumbnailer *thumbnailer, QObject *parent = nullptr);

    // The item's picture. Without one yet, asks for it (unless the item is
    // offline, still pending analysis or conversion, or a live source whose
    // session supplies its pictures) and returns a null image meanwhile;
    // thumbnailChanged tells when it is there.
    QImage thumbnail(quint64 itemId);
    // The picture's facts and error, once there.
    std::optional<MediaThumbnailResult> details(quint64 itemId) const;
    bool isWaiting(quint64 itemId) const { return m_waiting.contains(itemId); }
    bool prefersAudioAlbumArt() const { return m_preferAlbumArt; }

public slots:
    // Audio items show their cover picture, when they have one, instead of
    // their waveform. A change makes every audio picture anew.
    void audioThumbnailPreferenceChanged(bool preferAlbumArt);

signals:
    // The item's picture came, or went and will be asked for again.
    void thumbnailChanged(quint64 itemId);

private:
    void onThumbnailReady(quint64 itemId, const MediaThumbnailResult &result);
    void onItemReplaced(quint64 itemId);
    void onAvailabilityChanged(quint64 itemId);
    void onModelReset();
    // Cancels the item's request and drops its picture; true when there was either.
    bool forget(quint64 itemId);

    QPointer<PlaylistModel> m_model;
    QPointer<MediaThumbnailer> m_thumbnailer;
    QHash<quint64, MediaThumbnailResult> m_pictures;
    QHash<quint64, quint64> m_waiting;  // item id -> the request it waits for
    bool m_preferAlbumArt = false;
};

} // namespace tarnix
