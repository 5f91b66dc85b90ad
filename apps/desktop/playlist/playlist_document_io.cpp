#include "playlist/playlist_document_io.h"

#include "shell/background_io_queue.h"

#include <QFileInfo>

#include <memory>

namespace tarnix {

void loadPlaylistInBackground(BackgroundIoQueue &queue, const QString &path,
                              const PlaylistCancelFlag &cancelFlag, PlaylistLoadCompletion completion)
{
    // Written by the worker before the queue's `finished`, read after it.
    auto loaded = std::make_shared<std::optional<LoadedPlaylist>>();
    queue.enqueue(
        [path, cancelFlag, loaded](BackgroundIoQueue::Result &result) {
            *loaded = loadPlaylistFile(path, &result.errorText, cancelFlag);
            result.success = loaded->has_value();
        },
        [loaded, completion = std::move(completion)](const BackgroundIoQueue::Result &result) {
            if (completion)
                completion(*loaded, result.errorText);
        });
}

void savePlaylistInBackground(BackgroundIoQueue &queue, const QString &path, PlaylistDocument snapshot,
                              PlaylistSaveCompletion completion)
{
    auto document = std::make_shared<const PlaylistDocument>(std::move(snapshot));
    queue.enqueue(
        [path, document](BackgroundIoQueue::Result &result) {
            result.success = writePlaylistFile(path, *document, &result.errorText);
        },
        [completion = std::move(completion)](const BackgroundIoQueue::Result &result) {
            if (completion)
                completion(result.success, result.errorText);
        });
}

QString playlistExportFileName(const QDateTime &localTime)
{
    return QStringLiteral("tarnix-export-%1.json").arg(localTime.toString(QStringLiteral("yyyyMMdd-HHmmss")));
}

QString withPlaylistFileSuffix(const QString &path)
{
    return QFileInfo(path).suffix().isEmpty() ? path + QStringLiteral(".json") : path;
}

} // namespace tarnix
