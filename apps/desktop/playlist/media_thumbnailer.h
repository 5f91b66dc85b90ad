#pragma once

#include "playlist/audio_thumbnail.h"
#include "playlist/media_thumbnail_result.h"

#include <QList>
#include <QObject>
#include <QThreadPool>

#include <chrono>
#include <functional>
#include <memory>

namespace tarnix {

// Makes playlist pictures on a small pool of its own, each with short-lived
// GStreamer pipelines. Every request is answered once, on the thread the
// thumbnailer lives on, by thumbnailReady with a picture (a card when
// nothing better could be made), unless the thumbnailer was shut down first.
//
// Main thread only, apart from the pool's workers, which own their
// pipelines and share nothing with the main thread but the request record.
class MediaThumbnailer : public QObject
{
    Q_OBJECT

public:
    using Renderer = std::function<MediaThumbnailResult(const PendingThumbnail &request)>;

    struct Options {
        ThumbnailLimits limits;
        int maxThreads = 2;
        // Idle pool threads end after this.
        std::chrono::milliseconds threadExpiry{5000};
        // Workers, and the streaming threads their pipelines start, run
        // this much nicer than the program output (0 leaves them as is).
        int workerNice = 10;
        // Empty: GStreamer's discoverer.
        AudioFactsProbe audioProbe;
        // Empty: the media's own pictures, by media type. A replacement
        // must not throw and must end soon after the cancel flag is set.
        Renderer render;
    };

    explicit MediaThumbnailer(QObject *parent = nullptr);
    explicit MediaThumbnailer(Options options, QObject *parent = nullptr);
    // Shuts down, so it may wait for the running requests to end.
    ~MediaThumbnailer() override;

    // Queues a picture of the file; the returned id comes back in the
    // result's requestId. 0 after shutdown. A request for an item already
    // running replaces nothing; cancel the old one first.
    quint64 request(quint64 itemId, const QString &path, PlaylistMediaType mediaType, QSize size = kThumbnailSize,
                    bool preferAlbumArt = false);
    // Asks every request of the item to end early; each still answers.
    void cancel(quint64 itemId);
    // Cancels everything, drops what has not started and waits for the
    // running requests, each of which is bounded by the limits. Nothing is
    // answered afterwards. Blocks: for the end of the application only.
    void shutdown();

    // Requests asked for and not yet answered.
    int pendingCount() const { return int(m_pending.size()); }

signals:
    void thumbnailReady(quint64 itemId, tarnix::MediaThumbnailResult result);

private:
    void finish(const std::shared_ptr<PendingThumbnail> &request, MediaThumbnailResult result);

    Options m_options;
    QThreadPool m_pool;
    QList<std::shared_ptr<PendingThumbnail>> m_pending;
    quint64 m_nextRequestId = 1;
    bool m_shutDown = false;
};

} // namespace tarnix
