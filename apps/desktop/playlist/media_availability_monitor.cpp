#include "playlist/media_availability_monitor.h"

#include "playlist/playlist_model.h"
#include "playlist/playlist_model_impl.h"
#include "shell/log_categories.h"

#include <QFileInfo>
#include <QHash>
#include <QTimer>

#include <system_error>
#include <thread>

namespace tarnix {

MediaAvailabilityMonitor::MediaAvailabilityMonitor(PlaylistModel *model, IsFile isFile,
                                                   std::chrono::milliseconds scanInterval,
                                                   std::chrono::milliseconds pollInterval)
    : QObject(model)
    , m_model(model)
    , m_isFile(isFile ? std::move(isFile) : IsFile([](const QString &path) { return QFileInfo(path).isFile(); }))
    , m_scanTimer(new QTimer(this))
    , m_pollTimer(new QTimer(this))
{
    m_scanTimer->setTimerType(Qt::PreciseTimer);
    m_scanTimer->setInterval(scanInterval);
    connect(m_scanTimer, &QTimer::timeout, this, &MediaAvailabilityMonitor::tick);
    m_scanTimer->start();
    m_pollTimer->setInterval(pollInterval);
    connect(m_pollTimer, &QTimer::timeout, this, &MediaAvailabilityMonitor::poll);
}

MediaAvailabilityMonitor::~MediaAvailabilityMonitor() = default;

void MediaAvailabilityMonitor::tick()
{
    emit m_model->mediaAvailabilityCheckRequested();
    startScan();
}

void MediaAvailabilityMonitor::startScan()
{
    if (m_scan) {
        m_rescanRequested = true;
        return;
    }
    m_rescanRequested = false;
    auto scan = std::make_shared<ScanState>();
    scan->generation = m_generation;
    const auto &d = *m_model->d;
    for (auto it = d.items.cbegin(); it != d.items.cend(); ++it) {
        if (it->sourceType != PlaylistSourceType::uvc && !d.pending.contains(it.key()))
            scan->entries.emplace_back(it.key(), it->filePath);
    }
    if (scan->entries.empty())
        return;
    scan->present.assign(scan->entries.size(), 0);
    try {
        std::thread([scan, isFile = m_isFile] {
            QHash<QString, bool> seen;
            for (std::size_t i = 0; i < scan->entries.size(); ++i) {
                const QString &path = scan->entries[i].second;
                auto known = seen.constFind(path);
                if (known == seen.cend())
                    known = seen.insert(path, isFile(path));
                scan->present[i] = *known;
            }
            scan->finished.store(true, std::memory_order_release);
        }).detach();
    } catch (const std::system_error &e) {
        qCWarning(lcPlaylist).noquote() << "Could not start media availability scan:" << e.what();
        return;
    }
    m_scan = std::move(scan);
    m_pollTimer->start();
}

void MediaAvailabilityMonitor::poll()
{
    if (!m_scan || !m_scan->finished.load(std::memory_order_acquire))
        return;
    const auto scan = std::move(m_scan);
    m_scan.reset();
    m_pollTimer->stop();
    if (m_rescanRequested)
        startScan();
    if (scan->generation != m_generation)
        return;
    QList<std::pair<quint64, bool>> results;
    results.reserve(static_cast<qsizetype>(scan->entries.size()));
    for (std::size_t i = 0; i < scan->entries.size(); ++i)
        results.append({scan->entries[i].first, !scan->present[i]});
    m_model->applyAvailability(scan->generation, results);
}

} // namespace tarnix
