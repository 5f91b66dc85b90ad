#include "playlist/previous_session.h"

#include "shell/background_io_queue.h"

#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

#include <memory>

namespace tarnix {

QString previousSessionFilePath()
{
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::AppLocalDataLocation);
    if (folder.isEmpty())
        return {};
    return QDir(folder).filePath(QStringLiteral("previous-session.json"));
}

void savePreviousSessionInBackground(BackgroundIoQueue &queue, const QString &path, PlaylistDocument snapshot,
                                     PlaylistSaveCompletion completion)
{
    auto document = std::make_shared<const PlaylistDocument>(std::move(snapshot));
    queue.enqueue(
        [path, document](BackgroundIoQueue::Result &result) {
            const QString folder = QFileInfo(path).absolutePath();
            if (path.isEmpty() || !QDir().mkpath(folder)) {
                result.errorText = QStringLiteral("Could not create the previous-session directory.");
                return;
            }
            result.success = writePlaylistFile(path, *document, &result.errorText);
        },
        [completion = std::move(completion)](const BackgroundIoQueue::Result &result) {
            if (completion)
                completion(result.success, result.errorText);
        });
}

} // namespace tarnix
