#include "playlist/media_thumbnailer.h"

#include "shell/low_priority_threads.h"

#include <algorithm>
#include <limits>

#include "playlist/thumbnail_worker.h"

#include <QRunnable>

#include <unistd.h>

namespace tarnix {

MediaThumbnailer::MediaThumbnailer(QObject *parent)
    : MediaThumbnailer(Options{}, parent)
{
}

MediaThumbnailer::MediaThumbnailer(Options options, QObject *parent)
    : QObject(parent)
    , m_options(std::move(options))
{
    registerThumbnailMetaTypes();
    m_pool.setMaxThreadCount(std::max(1, m_options.maxThreads));
    m_pool.setExpiryTimeout(int(m_options.threadExpiry.count()));
    if (!m_options.render) {
        m_options.render = [limits = m_options.limits, probe = m_options.audioProbe](const PendingThumbnail &request) {
            return renderThumbnail(request, limits, probe);
        };
    }
}

MediaThumbnailer::~MediaThumbnailer()
{
    shutdown();
}

quint64 MediaThumbnailer::request(quint64 itemId, const QString &path, PlaylistMediaType mediaType, QSize size,
                                  bool preferAlbumArt)
{
    if (m_shutDown)
        return 0;
    auto pending = std::make_shared<PendingThumbnail>();
    pending->requestId = m_nextRequestId++;
    pending->itemId = itemId;
    pending->path = path;
    pending->mediaType = mediaType;
    pending->size = size;
    pending->preferAlbumArt = preferAlbumArt;
    m_pending.append(pending);
    // Newest first: what was asked for last is what the operator looks at
    // now; pictures of rows scrolled past wait until the pool is free.
    const int newestFirst = int(std::min<quint64>(pending->requestId, quint64(std::numeric_limits<int>::max())));
    m_pool.start(QRunnable::create([this, pending, render = m_options.render, nice = m_options.workerNice] {
        lowerThisThreadsPriority(nice);
        MediaThumbnailResult result;
        try {
            result = render(*pending);
        } catch (...) {
            result = {};
        }
        result.requestId = pending->requestId;
        // The pool is waited for before this object goes, so `this` is alive.
        QMetaObject::invokeMethod(
            this, [this, pending, result = std::move(result)]() mutable { finish(pending, std::move(result)); },
            Qt::QueuedConnection);
    }), newestFirst);
    return pending->requestId;
}

void MediaThumbnailer::cancel(quint64 itemId)
{
    for (const auto &pending : std::as_const(m_pending)) {
        if (pending->itemId == itemId)
            pending->cancelled.store(true);
    }
}

void MediaThumbnailer::shutdown()
{
    if (m_shutDown)
        return;
    m_shutDown = true;
    for (const auto &pending : std::as_const(m_pending))
        pending->cancelled.store(true);
    m_pool.clear();
    m_pool.waitForDone();
    m_pending.clear();
}

void MediaThumbnailer::finish(const std::shared_ptr<PendingThumbnail> &request, MediaThumbnailResult result)
{
    if (m_shutDown)
        return;
    m_pending.removeOne(request);
    emit thumbnailReady(request->itemId, std::move(result));
}

} // namespace tarnix
