// Media files on their way into the playlist: the add-files dialog, the
// AddFiles operation (also reached by drops, macros, MIDI and the control
// socket), the display-time question for PNG and JPEG stills, and the one
// report of what could not be added.

#include "MainController_impl.h"

#include "control/controller_operations.h"
#include "control/operation_source.h"
#include "playlist/media_import_queue.h"
#include "playlist/playlist_model.h"
#include "shell/background_io_queue.h"
#include "shell/localized_text.h"
#include "shell/settings_store.h"
#include "shell/user_info_center.h"
#include "ui/image_add_dialog.h"

#include <QDir>
#include <QFileDialog>
#include <QFileInfo>

#include <cstring>

namespace tarnix {

namespace {

using Ops = ControllerOperations;

const QString kPlaylistSource = QStringLiteral("PLAYLIST");

// A PNG or JPEG that arrives from anything but the operator's own hands
// (socket, macro, MIDI) shows this long unless a time was remembered this
// session; no dialog waits for somebody who is not there.
constexpr qint64 kDefaultStillDurationMs = ImageAddDialog::kDefaultDurationMs;

bool fromOperatorsHands()
{
    const char *source = currentOperationSource();
    return std::strcmp(source, "UI") == 0 || std::strcmp(source, "Shortcut") == 0;
}

bool asksDisplayTime(const QString &suffix)
{
    return suffix == QLatin1String("png") || suffix == QLatin1String("jpg") || suffix == QLatin1String("jpeg");
}

bool isDocument(const QString &suffix)
{
    return suffix == QLatin1String("pptx") || suffix == QLatin1String("pdf");
}

QString mediaFilter()
{
    return LocalizedText(QStringLiteral("file_dialog.media.filter_without_documents"), {},
                         QStringLiteral("Media Files (*.mp4 *.mov *.webm *.mkv *.avi *.mxf *.wav *.mp3 *.flac *.m4a "
                                        "*.aac *.png *.jpg *.jpeg *.bmp *.tif *.tiff *.webp *.gif);;All Files (*)"))
        .toString();
}

} // namespace

void MainController::Impl::bindMediaOperations()
{
    PlaylistModel *target = model.get();
    operations->bind<>(Ops::AddFilesDialog, target, [this] { return openAddFilesDialog(); });
    operations->bind<QStringList>(Ops::AddFiles, target, [this](const QStringList &paths) {
        return addMediaFiles(paths, false, 0, fromOperatorsHands());
    });
    QObject::connect(mediaImports.get(), &MediaImportQueue::importsFailed, mediaImports.get(),
                     [this](const QStringList &details) { reportMediaFailures(details); });
}

// The operator picks files; the dialog is window-modal and answers later,
// so nothing waits here.
bool MainController::Impl::openAddFilesDialog()
{
    if (addFilesDialog) {
        addFilesDialog->raise();
        addFilesDialog->activateWindow();
        return true;
    }
    auto *dialog =
        new QFileDialog(controllerWindow, localized("file_dialog.add_files.title"), lastMediaDirectory, mediaFilter());
    dialog->setObjectName(QStringLiteral("addFilesDialog"));
    dialog->setFileMode(QFileDialog::ExistingFiles);
    dialog->setAcceptMode(QFileDialog::AcceptOpen);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    QObject::connect(dialog, &QFileDialog::filesSelected, widgetContext.get(), [this](const QStringList &files) {
        if (!shutDown)
            addMediaFiles(files, true, 0, true);
    });
    addFilesDialog = dialog;
    dialog->open();
    return true;
}

// Files to the playlist (below 1: the active one), each by its kind. A
// batch from the operator's hands stops at a PNG or JPEG to ask its display
// time, and later batches from the hands wait behind it; any other batch
// runs through at once. What cannot even be queued is told once per batch;
// what analysis finds wrong is told when the queue runs dry.
bool MainController::Impl::addMediaFiles(const QStringList &paths, bool rememberDirectory, qint32 playlistNumber,
                                         bool interactive)
{
    if (!model || !mediaImports || paths.isEmpty() || shutDown)
        return false;
    if (rememberDirectory) {
        lastMediaDirectory = QFileInfo(paths.first()).absoluteDir().absolutePath();
        writeSettingInBackground(QStringLiteral("fileDialog/lastMediaDirectory"), lastMediaDirectory);
    }
    MediaAddBatch batch;
    batch.paths = paths;
    batch.playlist = playlistNumber < 1 ? model->activePlaylistNumber() : playlistNumber;
    batch.interactive = interactive;
    if (!interactive) {
        stepMediaBatch(batch);
        return batch.queuedAny;
    }
    mediaBatches.push_back(std::move(batch));
    if (mediaBatches.size() == 1)
        runMediaBatches();
    return true;
}

// Runs the waiting batches in order until one stops for a question.
void MainController::Impl::runMediaBatches()
{
    while (!mediaBatches.empty()) {
        MediaAddBatch &batch = mediaBatches.front();
        if (!stepMediaBatch(batch)) {
            askDisplayTime(QFileInfo(batch.paths.at(batch.next)).fileName());
            return;
        }
        mediaBatches.pop_front();
    }
}

// Goes on from the batch's next file; false when it stopped at a still
// whose display time only the operator can give.
bool MainController::Impl::stepMediaBatch(MediaAddBatch &batch)
{
    for (; batch.next < batch.paths.size(); ++batch.next) {
        const QString &path = batch.paths.at(batch.next);
        const QFileInfo info(path);
        const QString suffix = info.suffix().toLower();
        if (isDocument(suffix)) {
            batch.lines << LocalizedText(QStringLiteral("playlist.add_media.document_not_yet"), {info.fileName()},
                                         QStringLiteral("%1: This document type cannot be added yet."))
                               .toString();
            continue;
        }
        std::optional<qint64> stillDurationMs;
        if (asksDisplayTime(suffix)) {
            if (rememberedStillDurationMs)
                stillDurationMs = rememberedStillDurationMs;
            else if (batch.interactive)
                return false;
            else
                stillDurationMs = kDefaultStillDurationMs;
        }
        enqueueMedia(batch, path, stillDurationMs);
    }
    if (!batch.lines.isEmpty())
        reportMediaFailures(batch.lines);
    batch.lines.clear();
    return true;
}

void MainController::Impl::enqueueMedia(MediaAddBatch &batch, const QString &path,
                                        std::optional<qint64> stillDurationMs)
{
    if (mediaImports->enqueue(path, batch.playlist, stillDurationMs)) {
        batch.queuedAny = true;
        return;
    }
    batch.lines << LocalizedText(QStringLiteral("playlist.add_media.not_queued"), {QFileInfo(path).fileName()},
                                 QStringLiteral("%1: The media item could not be queued."))
                       .toString();
}

void MainController::Impl::askDisplayTime(const QString &fileName)
{
    auto *dialog = new ImageAddDialog(fileName, controllerWindow);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    QPointer<ImageAddDialog> guarded(dialog);
    QObject::connect(dialog, &QDialog::finished, widgetContext.get(), [this, guarded](int result) {
        if (!guarded)
            return;
        answerDisplayTime(result == QDialog::Accepted, guarded->durationMs(), guarded->rememberForSession());
    });
    imageAddDialog = dialog;
    dialog->open();
}

// A cancelled question drops the rest of its batch, as the operator
// expects from a Cancel in the middle of an add.
void MainController::Impl::answerDisplayTime(bool accepted, qint64 durationMs, bool rememberForSession)
{
    if (mediaBatches.empty())
        return;
    if (shutDown || !model || !mediaImports) {
        mediaBatches.clear();
        return;
    }
    MediaAddBatch &batch = mediaBatches.front();
    if (accepted) {
        if (rememberForSession)
            rememberedStillDurationMs = durationMs;
        enqueueMedia(batch, batch.paths.at(batch.next), durationMs);
        ++batch.next;
    } else {
        batch.next = batch.paths.size();
    }
    runMediaBatches();
}

void MainController::Impl::reportMediaFailures(const QStringList &lines)
{
    userInfoCenter->post(UserInfoSeverity::Warning, kPlaylistSource,
                         LocalizedText(QStringLiteral("playlist.add_media.some_failed"), {},
                                       QStringLiteral("Some files could not be added.")),
                         lines.join(QLatin1Char('\n')));
}

// Settings are files: written on the file queue, never here.
void MainController::Impl::writeSettingInBackground(const QString &key, const QString &value)
{
    backgroundIoQueue->enqueue(
        [key, value](BackgroundIoQueue::Result &result) {
            result.success = writeSetting(key, value, &result.errorText);
        },
        {});
}

} // namespace tarnix
