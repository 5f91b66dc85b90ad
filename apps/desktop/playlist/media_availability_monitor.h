#pragma once

#include <QList>
#include <QObject>
#include <QString>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

class QTimer;

namespace tarnix {

class PlaylistModel;

// Watches the media files of all items. Every scan interval it asks for a
// check; a detached worker then tests each distinct path with the isFile
// predicate, and a short poll timer hands the result back to the model on
// the main thread. Changes of the item set bump the generation, so a scan in
// flight for an older set is thrown away. The worker is never joined: it
// holds its own reference to the shared state and may outlive the model.
class MediaAvailabilityMonitor : public QObject
{
    Q_OBJECT

public:
    using IsFile = std::function<bool(const QString &path)>;

    MediaAvailabilityMonitor(PlaylistModel *model, IsFile isFile, std::chrono::milliseconds scanInterval,
                             std::chrono::milliseconds pollInterval);
    ~MediaAvailabilityMonitor() override;

    // Starts a scan now; while one runs, another follows it.
    void startScan();
    void bumpGeneration() { ++m_generation; }
    bool isScanning() const { return static_cast<bool>(m_scan); }

private:
    struct ScanState {
        quint64 generation = 0;
        std::vector<std::pair<quint64, QString>> entries;  // item id, path
        std::vector<char> present;                          // per entry, written by the worker
        std::atomic<bool> finished{false};
    };

    void tick();
    void poll();

    PlaylistModel *m_model;
    IsFile m_isFile;
    QTimer *m_scanTimer;
    QTimer *m_pollTimer;
    quint64 m_generation = 1;
    bool m_rescanRequested = false;
    std::shared_ptr<ScanState> m_scan;
};

} // namespace tarnix
