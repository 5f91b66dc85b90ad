#include "playlist/media_import_queue.h"

#include "shell/low_priority_threads.h"

#include "playlist/playlist_model.h"
#include "shell/log_categories.h"

#include <QFileInfo>

#include <unistd.h>

#include <system_error>
#include <thread>

namespace tarnix {

namespace {

void analyse(const std::shared_ptr<PendingMediaImport> &import, const MediaDurationProbe &probe, int nice)
{
    // The worker and the streaming threads of its analysis run below the
    // program output, which must win the machine's cores.
    lowerThisThreadsPriority(nice);
    const QFileInfo file(import->path);
    if (!file.exists() || !file.isFile()) {
        import->result.error = QStringLiteral("The media file does not exist.");
    } else if (!import->cancelled.load()) {
        try {
            import->result = probe ? probe(import->path) : probeMediaDuration(import->path);
            if (import->result.success && import->stillDurationMs) {
                if (import->result.stillImage) {
                    import->result.durationMs = import->stillDurationMs;
                } else {
                    import->result.success = false;
                    import->result.error = QStringLiteral("The selected PNG/JPEG file is not a playable still image.");
                }
            }
        } catch (...) {
            import->result = {};
            import->result.error = QStringLiteral("Media analysis failed unexpectedly.");
        }
    }
    import->finished.store(true, std::memory_order_release);
}

} // namespace

MediaImportQueue::MediaImportQueue(PlaylistModel *model, QObject *parent)
    : MediaImportQueue(model, Options{}, parent)
{
}

MediaImportQueue::MediaImportQueue(PlaylistModel *model, Options options, QObject *parent)
    : QObject(parent)
    , m_model(model)
    , m_options(std::move(options))
{
    m_timer.setInterval(m_options.pollInterval);
    connect(&m_timer, &QTimer::timeout, this, &MediaImportQueue::poll);
    if (model) {
        connect(model, &PlaylistModel::itemRemoved, this, [this](quint64 itemId, int) { onItemRemoved(itemId); });
        connect(model, &PlaylistModel::modelReset, this, &MediaImportQueue::onModelReset);
    }
}

MediaImportQueue::~MediaImportQueue()
{
    cancelAll();
}

quint64 MediaImportQueue::enqueue(const QString &path, qint32 playlistNumber, std::optional<qint64> stillDurationMs)
{
    if (!m_model || (stillDurationMs && *stillDurationMs < 1))
        return 0;
    const qint32 playlist = playlistNumber < 1 ? m_model->activePlaylistNumber() : playlistNumber;
    const quint64 itemId = m_model->addDocumentItem(path, playlist, PlaylistSourceType::file);
    if (!itemId)
        return 0;
    auto import = std::make_shared<PendingMediaImport>();
    import->itemId = itemId;
    import->path = QFileInfo(path).absoluteFilePath();
    import->stillDurationMs = stillDurationMs;
    m_queue.push_back(std::move(import));
    if (!m_timer.isActive())
        m_timer.start();
    return itemId;
}

bool MediaImportQueue::stillPending(const std::shared_ptr<PendingMediaImport> &import) const
{
    return import && !import->cancelled.load() && m_model && m_model->isPending(import->itemId);
}

bool MediaImportQueue::isBusy() const
{
    if (stillPending(m_running))
        return true;
    for (const auto &import : m_queue) {
        if (stillPending(import))
            return true;
    }
    return false;
}

void MediaImportQueue::cancelAll()
{
    QList<quint64> toRemove;
    auto cancel = [&toRemove](const std::shared_ptr<PendingMediaImport> &import) {
        if (import && !import->cancelled.exchange(true))
            toRemove.append(import->itemId);
    };
    cancel(m_running);
    for (const auto &import : m_queue)
        cancel(import);
    // A running worker ends on its own and keeps only its record alive.
    m_running.reset();
    m_queue.clear();
    m_failures.clear();
    m_timer.stop();
    for (quint64 itemId : std::as_const(toRemove)) {
        if (m_model && m_model->isPending(itemId))
            m_model->removeItem(itemId);
    }
}

void MediaImportQueue::onItemRemoved(quint64 itemId)
{
    if (m_running && m_running->itemId == itemId)
        m_running->cancelled.store(true);
    for (const auto &import : m_queue) {
        if (import->itemId == itemId)
            import->cancelled.store(true);
    }
}

void MediaImportQueue::onModelReset()
{
    if (m_running)
        m_running->cancelled.store(true);
    m_running.reset();
    for (const auto &import : m_queue)
        import->cancelled.store(true);
    m_queue.clear();
    m_failures.clear();
    m_timer.stop();
}

void MediaImportQueue::fail(const std::shared_ptr<PendingMediaImport> &import, const QString &reason)
{
    if (m_model)
        m_model->removeItem(import->itemId);
    const QString text = reason.isEmpty() ? QStringLiteral("The media item could not be registered.") : reason;
    m_failures.append(QStringLiteral("%1: %2").arg(QFileInfo(import->path).fileName(), text));
    qCWarning(lcPlaylist()).noquote() << "Media analysis failed:" << import->path << text;
}

void MediaImportQueue::apply(const std::shared_ptr<PendingMediaImport> &import)
{
    if (!stillPending(import))
        return;
    const MediaDurationProbeResult &result = import->result;
    if (result.success && m_model->completeMediaAnalysis(import->itemId, result.mediaType, result.durationMs))
        return;
    fail(import, result.success ? QString() : result.error);
}

bool MediaImportQueue::startWorker(const std::shared_ptr<PendingMediaImport> &import)
{
    try {
        std::thread(analyse, import, m_options.probe, m_options.workerNice).detach();
        return true;
    } catch (const std::system_error &) {
        return false;
    }
}

void MediaImportQueue::poll()
{
    if (!m_model) {
        m_timer.stop();
        return;
    }
    if (m_running) {
        if (!m_running->finished.load(std::memory_order_acquire))
            return;
        apply(std::exchange(m_running, nullptr));
    }
    while (!m_queue.empty()) {
        std::shared_ptr<PendingMediaImport> next = std::move(m_queue.front());
        m_queue.pop_front();
        if (!stillPending(next))
            continue;
        m_model->setPendingState(next->itemId, qint32(PlaylistPendingPhase::Analyzing), 0);
        if (!startWorker(next)) {
            fail(next, QStringLiteral("The media analysis worker could not start."));
            continue;
        }
        m_running = std::move(next);
        return;
    }
    m_timer.stop();
    if (!m_failures.isEmpty())
        emit importsFailed(std::exchange(m_failures, {}));
}

} // namespace tarnix
