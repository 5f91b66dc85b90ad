#pragma once

#include "playlist/media_duration_probe.h"

#include <QObject>
#include <QPointer>
#include <QStringList>
#include <QTimer>

#include <atomic>
#include <chrono>
#include <deque>
#include <memory>
#include <optional>

namespace tarnix {

class PlaylistModel;

// One queued file, shared by the queue (main thread) and its worker. The
// worker writes the result fields, then publishes `finished`; nothing else
// is shared.
struct PendingMediaImport {
    quint64 itemId = 0;
    QString path;
    std::optional<qint64> stillDurationMs;
    MediaDurationProbeResult result;
    std::atomic<bool> finished{false};
    std::atomic<bool> cancelled{false};
};

// Takes files to ready playlist items. Each file is a placeholder item at
// once (pending analysis) and becomes usable when its worker has found its
// media type and duration; a file that cannot be analysed leaves no item.
// One worker at a time, at a lower priority than the program output; every
// failure of a batch is told once, when the queue runs dry.
//
// Main thread only, apart from the workers, which own what they touch and
// never touch the model.
class MediaImportQueue : public QObject
{
    Q_OBJECT

public:
    struct Options {
        // How often a running analysis is looked at while work is queued.
        std::chrono::milliseconds pollInterval{25};
        // Empty: GStreamer's discoverer.
        MediaDurationProbe probe;
        // The worker's scheduling niceness (0 leaves it as the caller's).
        int workerNice = 10;
    };

    explicit MediaImportQueue(PlaylistModel *model, QObject *parent = nullptr);
    MediaImportQueue(PlaylistModel *model, Options options, QObject *parent = nullptr);
    ~MediaImportQueue() override;

    // The new placeholder's id, or 0 (no model, a display time below 1 ms,
    // or the model refused the item). A playlist number below 1 is the
    // active playlist.
    quint64 enqueue(const QString &path, qint32 playlistNumber, std::optional<qint64> stillDurationMs = {});
    // Something is queued or analysed whose placeholder is still pending.
    bool isBusy() const;
    // Stops everything; placeholders not yet done leave the playlist and
    // no failure is told.
    void cancelAll();

    // One step of the queue; the timer calls it, tests may too.
    void poll();

signals:
    // "file: reason" lines of one batch.
    void importsFailed(const QStringList &details);

private:
    void onItemRemoved(quint64 itemId);
    void onModelReset();
    bool stillPending(const std::shared_ptr<PendingMediaImport> &import) const;
    void apply(const std::shared_ptr<PendingMediaImport> &import);
    void fail(const std::shared_ptr<PendingMediaImport> &import, const QString &reason);
    bool startWorker(const std::shared_ptr<PendingMediaImport> &import);

    QPointer<PlaylistModel> m_model;
    Options m_options;
    QTimer m_timer;
    std::deque<std::shared_ptr<PendingMediaImport>> m_queue;
    std::shared_ptr<PendingMediaImport> m_running;
    QStringList m_failures;
};

} // namespace tarnix
