// The playlist file functions as control socket commands, beside the File
// menu: each is answered when its file work is done.

#include "MainController_impl.h"

#include "playlist/playlist_model.h"
#include "playlist/playlist_query_json.h"

#include "control/control_socket_server.h"
#include "playlist/playlist_transfer.h"

#include <QJsonObject>

namespace tarnix {

namespace {

using Done = ControlSocketServer::CommandDone;

// An outcome as the client is answered: nothing for success, the operator's
// words (the reader's or the model's where they say more) otherwise.
PlaylistTransfer::Completion answerWith(Done done)
{
    return [done = std::move(done)](const PlaylistTransferOutcome &outcome) {
        done(outcome.success ? QString() : outcome.errorText());
    };
}

bool pathOf(const QJsonObject &request, QString *path, const Done &done)
{
    const QJsonValue value = request.value(QLatin1String("path"));
    if (!value.isString() || value.toString().isEmpty()) {
        done(QStringLiteral("%1 needs a \"path\" string").arg(request.value(QLatin1String("command")).toString()));
        return false;
    }
    *path = value.toString();
    return true;
}

} // namespace

void MainController::Impl::bindControlCommands()
{
    PlaylistTransfer *owner = transfer.get();
    controlSocket->setCommandHandler(QStringLiteral("importPlaylist"), owner,
                                     [owner](const QJsonObject &request, Done done) {
                                         QString path;
                                         if (pathOf(request, &path, done))
                                             owner->importPlaylists(path, answerWith(std::move(done)));
                                     });
    controlSocket->setCommandHandler(QStringLiteral("exportPlaylist"), owner,
                                     [owner](const QJsonObject &request, Done done) {
                                         QString path;
                                         if (pathOf(request, &path, done))
                                             owner->exportPlaylists(path, answerWith(std::move(done)));
                                     });
    controlSocket->setCommandHandler(QStringLiteral("restorePreviousSession"), owner,
                                     [owner](const QJsonObject &, Done done) {
                                         owner->restorePreviousSession(answerWith(std::move(done)));
                                     });
    PlaylistModel *document = model.get();
    controlSocket->setQueryHandler(QStringLiteral("playlists"), document,
                                   [document] { return playlistsQueryJson(*document); });
}

} // namespace tarnix
