#include "playlist/playlist_thumbnail_store.h"

#include "playlist/media_thumbnailer.h"
#include "playlist/playlist_model.h"
#include "playlist/playlist_validation.h"
#include "playlist/thumbnail_cards.h"

namespace tarnix {

PlaylistThumbnailStore::PlaylistThumbnailStore(PlaylistModel *model, MediaThumbnailer *thumbnailer,
                                               QObject *parent)
    : QObject(parent)
    , m_model(model)
    , m_thumbnailer(thumbnailer)
{
    if (thumbnailer)
        connect(thumbnailer, &MediaThumbnailer::thumbnailReady, this, &PlaylistThumbnailStore::onThumbnailReady);
    if (model) {
        connect(model, &PlaylistModel::itemRemoved, this, [this](quint64 itemId, int) { forget(itemId); });
        connect(model, &PlaylistModel::itemReplaced, this, &PlaylistThumbnailStore::onItemReplaced);
        connect(model, &PlaylistModel::itemMediaAvailabilityChanged, this,
                [this](quint64 itemId, bool) { onAvailabilityChanged(itemId); });
        connect(model, &PlaylistModel::modelReset, this, &PlaylistThumbnailStore::onModelReset);
    }
}

QImage PlaylistThumbnailStore::thumbnail(quint64 itemId)
{
    if (const auto picture = m_pictures.constFind(itemId); picture != m_pictures.cend())
        return picture->image;
    if (m_waiting.contains(itemId) || !m_model)
        return {};
    const std::optional<PlaylistItem> item = m_model->item(itemId);
    if (!item || m_model->isOffline(itemId) || m_model->isPending(itemId))
        return {};
    if (item->sourceType == PlaylistSourceType::uvc) {
        if (!isLiveAudioUri(item->filePath))
            return {};
        MediaThumbnailResult live;
        live.success = true;
        live.mediaType = PlaylistMediaType::audio;
        live.image = paintLiveAudioCard(kThumbnailSize);
        m_pictures.insert(itemId, live);
        return live.image;
    }
    if (!m_thumbnailer)
        return {};
    const bool albumArt = m_preferAlbumArt && item->mediaType == PlaylistMediaType::audio;
    if (const quint64 requestId =
            m_thumbnailer->request(itemId, item->filePath, item->mediaType, kThumbnailSize, albumArt)) {
        m_waiting.insert(itemId, requestId);
    }
    return {};
}

std::optional<MediaThumbnailResult> PlaylistThumbnailStore::details(quint64 itemId) const
{
    const auto picture = m_pictures.constFind(itemId);
    if (picture == m_pictures.cend())
        return std::nullopt;
    return *picture;
}

void PlaylistThumbnailStore::audioThumbnailPreferenceChanged(bool preferAlbumArt)
{
    if (m_preferAlbumArt == preferAlbumArt)
        return;
    m_preferAlbumArt = preferAlbumArt;
    if (!m_model)
        return;
    QList<quint64> audioItems;
    for (quint64 itemId : m_pictures.keys() + m_waiting.keys()) {
        const std::optional<PlaylistItem> item = m_model->item(itemId);
        if (item && item->mediaType == PlaylistMediaType::audio && item->sourceType != PlaylistSourceType::uvc
            && !audioItems.contains(itemId)) {
            audioItems.append(itemId);
        }
    }
    for (quint64 itemId : std::as_const(audioItems)) {
        forget(itemId);
        thumbnail(itemId);
        emit thumbnailChanged(itemId);
    }
}

void PlaylistThumbnailStore::onThumbnailReady(quint64 itemId, const MediaThumbnailResult &result)
{
    const auto waiting = m_waiting.constFind(itemId);
    if (waiting == m_waiting.cend() || *waiting != result.requestId)
        return;
    m_waiting.erase(waiting);
    if (!m_model || !m_model->contains(itemId))
        return;
    m_pictures.insert(itemId, result);
    emit thumbnailChanged(itemId);
}

void PlaylistThumbnailStore::onItemReplaced(quint64 itemId)
{
    forget(itemId);
    emit thumbnailChanged(itemId);
}

// Offline, the item keeps a picture it already has and asks for none; back
// online, a picture that failed (most likely because the file was missing)
// is asked for again.
void PlaylistThumbnailStore::onAvailabilityChanged(quint64 itemId)
{
    bool changed = false;
    if (m_waiting.remove(itemId)) {
        if (m_thumbnailer)
            m_thumbnailer->cancel(itemId);
        changed = true;
    }
    if (const auto picture = m_pictures.constFind(itemId); picture != m_pictures.cend() && !picture->success) {
        m_pictures.erase(picture);
        changed = true;
    }
    if (changed)
        emit thumbnailChanged(itemId);
}

void PlaylistThumbnailStore::onModelReset()
{
    if (m_thumbnailer) {
        for (auto it = m_waiting.cbegin(); it != m_waiting.cend(); ++it)
            m_thumbnailer->cancel(it.key());
    }
    m_waiting.clear();
    m_pictures.clear();
}

bool PlaylistThumbnailStore::forget(quint64 itemId)
{
    const bool wasWaiting = m_waiting.remove(itemId) > 0;
    if (wasWaiting && m_thumbnailer)
        m_thumbnailer->cancel(itemId);
    return m_pictures.remove(itemId) > 0 || wasWaiting;
}

} // namespace tarnix
