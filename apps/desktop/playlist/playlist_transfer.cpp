#include "playlist/playlist_transfer.h"

#include "playlist/playlist_document_io.h"
#include "playlist/playlist_model.h"
#include "playlist/previous_session.h"
#include "shell/background_io_queue.h"
#include "shell/log_categories.h"
#include "shell/user_info_center.h"

#include <QList>

namespace tarnix {

namespace {

const QString kSource = QStringLiteral("PLAYLIST");

QString closingText() { return QStringLiteral("The application is closing."); }

QStringList counts(const PlaylistDocument &document)
{
    return {QString::number(document.playlists.size()), QString::number(document.items.size())};
}

} // namespace

QString PlaylistTransferOutcome::errorText() const
{
    return detail.isEmpty() ? message.toString() : detail;
}

struct PlaylistTransfer::Impl {
    PlaylistTransfer *q = nullptr;
    QPointer<PlaylistModel> model;
    QPointer<BackgroundIoQueue> queue;
    QPointer<UserInfoCenter> userInfo;
    QString previousSessionPath;
    bool closed = false;
    // Reads in flight; close() sets them.
    QList<PlaylistCancelFlag> cancelFlags;

    void finish(const Completion &done, UserInfoSeverity severity, const LocalizedText &message,
                const QString &detail, bool success)
    {
        if (userInfo)
            userInfo->post(severity, kSource, message, detail);
        if (done)
            done(PlaylistTransferOutcome{success, message, detail});
    }

    void refuseClosed(const Completion &done)
    {
        if (done)
            done(PlaylistTransferOutcome{false, LocalizedText(QString(), {}, closingText()), {}});
    }

    PlaylistCancelFlag newCancelFlag()
    {
        cancelFlags.removeIf([](const PlaylistCancelFlag &flag) { return flag.use_count() == 1; });
        auto flag = std::make_shared<std::atomic<bool>>(false);
        cancelFlags.append(flag);
        return flag;
    }

    // Reads `path` on the queue and, back on the main thread, replaces the
    // model's document with it.
    void load(const QString &path, PlaylistRestoreSource source, Completion done);
};

void PlaylistTransfer::Impl::load(const QString &path, PlaylistRestoreSource source, Completion done)
{
    const bool restore = source == PlaylistRestoreSource::PreviousSession;
    const LocalizedText failed = restore
        ? LocalizedText(QStringLiteral("playlist.restore_previous.failed"), {}, QStringLiteral("Previous session restore failed."))
        : LocalizedText(QStringLiteral("playlist.import.failed"), {}, QStringLiteral("Playlist import failed."));
    qCInfo(lcPlaylist).noquote() << (restore ? "Previous session restore from" : "Playlist import from") << path;
    const PlaylistCancelFlag cancel = newCancelFlag();
    loadPlaylistInBackground(
        *queue, path, cancel,
        [this, self = QPointer<PlaylistTransfer>(q), cancel, restore, failed, done = std::move(done)](
            const std::optional<LoadedPlaylist> &loaded, const QString &error) {
            if (!self) {
                if (done)
                    done(PlaylistTransferOutcome{false, LocalizedText(QString(), {}, closingText()), {}});
                return;
            }
            if (closed || cancel->load() || !model) {
                refuseClosed(done);
                return;
            }
            if (!loaded) {
                qCWarning(lcPlaylist).noquote() << failed.toString() << error;
                finish(done, UserInfoSeverity::Error, failed, error, false);
                return;
            }
            QString refusal;
            if (!model->replaceDocument(loaded->document, &refusal, loaded->missingItems)) {
                qCWarning(lcPlaylist).noquote() << failed.toString() << refusal;
                finish(done, UserInfoSeverity::Error, failed, refusal, false);
                return;
            }
            const LocalizedText succeeded = restore
                ? LocalizedText(QStringLiteral("playlist.restore_previous.succeeded"), counts(loaded->document),
                                QStringLiteral("Restored %1 playlist(s) and %2 item(s) from the previous session."))
                : LocalizedText(QStringLiteral("playlist.import.succeeded"), counts(loaded->document),
                                QStringLiteral("Imported %1 playlist(s) and %2 item(s)."));
            qCInfo(lcPlaylist).noquote() << succeeded.toString()
                                         << QStringLiteral("missing=%1").arg(loaded->missingItems.size());
            finish(done, UserInfoSeverity::Success, succeeded, {}, true);
        });
}

PlaylistTransfer::PlaylistTransfer(PlaylistModel *model, BackgroundIoQueue *queue, UserInfoCenter *userInfo,
                                   QString previousSessionPath, QObject *parent)
    : QObject(parent), d(std::make_unique<Impl>())
{
    d->q = this;
    d->model = model;
    d->queue = queue;
    d->userInfo = userInfo;
    d->previousSessionPath = previousSessionPath.isEmpty() ? previousSessionFilePath() : previousSessionPath;
}

PlaylistTransfer::~PlaylistTransfer()
{
    close();
}

void PlaylistTransfer::exportPlaylists(const QString &givenPath, Completion done)
{
    if (d->closed || !d->model || !d->queue) {
        d->refuseClosed(done);
        return;
    }
    const QString path = withPlaylistFileSuffix(givenPath);
    PlaylistDocument snapshot = d->model->snapshot();
    const QStringList numbers = counts(snapshot);
    qCInfo(lcPlaylist).noquote() << "Playlist export to" << path;
    savePlaylistInBackground(*d->queue, path, std::move(snapshot),
                             [self = QPointer<PlaylistTransfer>(this), numbers,
                              done = std::move(done)](bool success, const QString &error) {
                                 if (!self) {
                                     if (done)
                                         done(PlaylistTransferOutcome{success, {}, error});
                                     return;
                                 }
                                 Impl *d = self->d.get();
                                 if (success) {
                                     const LocalizedText text(QStringLiteral("playlist.export.succeeded"), numbers,
                                                              QStringLiteral("Exported %1 playlist(s) and %2 item(s)."));
                                     qCInfo(lcPlaylist).noquote() << text.toString();
                                     d->finish(done, UserInfoSeverity::Success, text, {}, true);
                                     return;
                                 }
                                 const LocalizedText text(QStringLiteral("playlist.export.failed"), {},
                                                          QStringLiteral("Playlist export failed."));
                                 qCWarning(lcPlaylist).noquote() << text.toString() << error;
                                 d->finish(done, UserInfoSeverity::Error, text, error, false);
                             });
}

void PlaylistTransfer::importPlaylists(const QString &path, Completion done)
{
    if (d->closed || !d->model || !d->queue) {
        d->refuseClosed(done);
        return;
    }
    d->load(path, PlaylistRestoreSource::OperatorImport, std::move(done));
}

void PlaylistTransfer::restorePreviousSession(Completion done)
{
    if (d->closed || !d->model || !d->queue) {
        d->refuseClosed(done);
        return;
    }
    if (playoutActive(*d->model)) {
        d->finish(done, UserInfoSeverity::Warning,
                  LocalizedText(QStringLiteral("playlist.restore_previous.playout_active"), {},
                                QStringLiteral("Turn OFF AIR, turn DSK off, and stop BGM before restoring the "
                                               "previous session.")),
                  {}, false);
        return;
    }
    d->load(d->previousSessionPath, PlaylistRestoreSource::PreviousSession, std::move(done));
}

void PlaylistTransfer::savePreviousSession(Completion done)
{
    if (!d->model || !d->queue) {
        d->refuseClosed(done);
        return;
    }
    const QString path = d->previousSessionPath;
    savePreviousSessionInBackground(*d->queue, path, d->model->snapshot(),
                                    [path, done = std::move(done)](bool success, const QString &error) {
                                        // The run is ending: the log is the one to tell.
                                        if (success)
                                            qCInfo(lcPlaylist).noquote() << "Previous session saved to" << path;
                                        else
                                            qCWarning(lcPlaylist).noquote() << "Previous session not saved:" << error;
                                        if (done)
                                            done(PlaylistTransferOutcome{success, LocalizedText(QString(), {}, error),
                                                                         error});
                                    });
}

void PlaylistTransfer::close()
{
    d->closed = true;
    for (const PlaylistCancelFlag &flag : std::as_const(d->cancelFlags))
        flag->store(true);
    d->cancelFlags.clear();
}

bool PlaylistTransfer::isClosed() const
{
    return d->closed;
}

QString PlaylistTransfer::previousSessionPath() const
{
    return d->previousSessionPath;
}

bool PlaylistTransfer::playoutActive(const PlaylistModel &model)
{
    return model.onAirItemId() != 0 || model.dskItemId() != 0 || model.bgmItemId() != 0;
}

} // namespace tarnix
