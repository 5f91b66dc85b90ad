// The playlist operations whose owner is the composition root: moving,
// transferring and removing items, and the bulk operations with the checks
// that need more than the model (ON AIR, DSK, BGM).

#include "MainController_impl.h"

#include "edit/edit_session_controller.h"

#include "control/controller_operations.h"
#include "playlist/media_import_queue.h"
#include "playlist/playlist_model.h"
#include "playout/program_playout_controller.h"
#include "shell/localized_text.h"
#include "shell/log_categories.h"
#include "shell/settings_store.h"
#include "shell/user_info_center.h"

#include <QDir>
#include <QFileInfo>

namespace tarnix {

namespace {

using Ops = ControllerOperations;

const QString kPlaylistSource = QStringLiteral("PLAYLIST");

} // namespace

void MainController::Impl::bindPlaylistOperations()
{
    PlaylistModel *target = model.get();
    operations->bind<quint64, int>(Ops::MoveItem, target, [this](quint64 itemId, int delta) {
        const int row = model->rowOf(itemId);
        return row > 0 && model->moveItem(itemId, row + delta);
    });
    operations->bind<quint64, int>(Ops::MoveItemToRow, target,
                                   [this](quint64 itemId, int row) { return model->moveItem(itemId, row); });
    operations->bind<quint64, int, int, bool>(
        Ops::TransferItem, target, [this](quint64 itemId, int playlistNumber, int row, bool copy) {
            if (copy)
                return model->copyItemToPlaylist(itemId, playlistNumber, row) != 0;
            return model->moveItemToPlaylist(itemId, playlistNumber, row);
        });
    operations->bind<quint64>(Ops::RemoveItem, target, [this](quint64 itemId) { return removeItem(itemId); });
    operations->bind<PlaylistBulkOperation>(Ops::PlaylistBulk, target, [this](PlaylistBulkOperation operation) {
        return applyBulkOperation(operation);
    });
}

bool MainController::Impl::removeItem(quint64 itemId)
{
    QString error;
    if (programPlayout && !programPlayout->canDeleteItem(itemId, &error)) {
        userInfoCenter->post(UserInfoSeverity::Warning, kPlaylistSource, LocalizedText(QString(), {}, error));
        return false;
    }
    return model->removeItem(itemId);
}

// On the active playlist. Nothing changes unless the whole operation can be
// done; the model keeps the undo record.
bool MainController::Impl::applyBulkOperation(PlaylistBulkOperation operation)
{
    const qint32 playlist = model->activePlaylistNumber();
    const QList<quint64> ids = model->itemIds(playlist);
    auto warn = [this](const char *key, const char *fallback) {
        userInfoCenter->post(UserInfoSeverity::Warning, kPlaylistSource,
                             LocalizedText(QString::fromLatin1(key), {}, QString::fromLatin1(fallback)));
        return false;
    };

    if (operation == PlaylistBulkOperation::Undo) {
        if (model->onAirItemId() || model->dskItemId() || model->bgmItemId())
            return warn("playlist.bulk.undo.playout_active",
                        "Turn OFF AIR, turn DSK off, and stop BGM before undoing a playlist bulk operation.");
        QString error;
        if (!model->undoBulkOperation(&error)) {
            userInfoCenter->post(UserInfoSeverity::Warning, kPlaylistSource, LocalizedText(QString(), {}, error));
            return false;
        }
        return true;
    }
    // Document imports are checked here too once they exist.
    if (mediaImports && mediaImports->isBusy())
        return warn("playlist.bulk.pending_imports",
                    "Wait for media analysis and document imports to finish before applying a playlist bulk operation.");
    if (operation == PlaylistBulkOperation::Delete && model->playlistNumbers().size() <= 1)
        return false;
    const bool bgmHere = model->bgmItemId() && model->playlistOf(model->bgmItemId()) == playlist;
    if (bgmHere
        && (operation == PlaylistBulkOperation::BgmMode || operation == PlaylistBulkOperation::StandardMode
            || operation == PlaylistBulkOperation::Clear || operation == PlaylistBulkOperation::Delete))
        return warn("playlist.bulk.bgm_active", "Stop BGM before changing or clearing its playlist mode.");

    if (operation != PlaylistBulkOperation::Clear && operation != PlaylistBulkOperation::Delete) {
        if (model->applyBulkOperation(playlist, operation))
            return true;
        userInfoCenter->post(UserInfoSeverity::Error, kPlaylistSource,
                             LocalizedText(QStringLiteral("playlist.bulk.failed"), {},
                                           QStringLiteral("Could not apply the playlist bulk operation.")));
        return false;
    }

    // Clear and Delete fail silently when an item cannot go.
    for (quint64 id : ids) {
        if (id == model->onAirItemId() || (programPlayout && !programPlayout->canDeleteItem(id)))
            return false;
        if (model->isLocked(id) || model->isPending(id))
            return false;
    }
    // An item of this playlist in EDIT is unloaded first, without waiting:
    // the operation runs again once EDIT has let it go.
    if (editSession && model->editItemId() && model->playlistOf(model->editItemId()) == playlist
        && editSession->loadedItemId() == model->editItemId()) {
        return editSession->beginUnload(model->editItemId(), [this, operation] { applyBulkOperation(operation); });
    }
    const PlaylistDocument before = model->snapshot();
    if (model->editItemId() && model->playlistOf(model->editItemId()) == playlist)
        model->setEditItem(0);
    if (model->dskItemId() && model->playlistOf(model->dskItemId()) == playlist)
        model->setDskItem(0);
    for (quint64 id : ids)
        model->removeItem(id);
    if (operation == PlaylistBulkOperation::Delete)
        model->removePlaylist(playlist);
    model->recordBulkUndo(before);
    qCInfo(lcPlaylist).noquote() << QStringLiteral("Playlist %1 %2: %3 item(s) removed")
                                        .arg(playlist)
                                        .arg(operation == PlaylistBulkOperation::Delete ? QStringLiteral("deleted")
                                                                                         : QStringLiteral("cleared"))
                                        .arg(ids.size());
    return true;
}

} // namespace tarnix
