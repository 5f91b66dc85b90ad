// The EDIT session in the application: created beside ON AIR, its
// operations bound, loading on a selection or on the EDIT button as the
// operator chose, and its scan log written by the file queue.

#include "MainController_impl.h"

#include "control/controller_operations.h"
#include "edit/edit_operations.h"
#include "edit/edit_session_controller.h"
#include "shell/application_log.h"
#include "shell/background_io_queue.h"
#include "shell/log_categories.h"
#include "shell/settings_store.h"
#include "ui/edit_panel.h"
#include "ui/playlist_panel.h"

#include <QDir>
#include <QFile>
#include <QScrollArea>

namespace tarnix {

namespace {

constexpr char kScanLogName[] = "tarnix-edit-scan.log";

} // namespace

void MainController::Impl::createEditSide()
{
    EditSessionController::Options editOptions;
    editOptions.scanLog = [this](const QString &line) { appendScanLog(line); };
    editOptions.failPlayerCreation = options.editPlayerFails;
    editSession = std::make_unique<EditSessionController>(model.get(), selection.data(), editOptions);
    bindEditOperations(operations.get(), editSession.get());
    if (editPanel) {
        editSession->setPanel(editPanel->view());
        // The nominal EQ stands in the EDIT panel itself: the operation
        // brings it into view and gives it the keys.
        operations->bind<>(ControllerOperations::OpenNominalEq, editPanel.data(), [this] {
            QWidget *eq = editPanel ? editPanel->findChild<QWidget *>(QStringLiteral("editNominalEq")) : nullptr;
            if (!eq || !editSession->loadedItemId() || !eq->isEnabled())
                return false;
            if (auto *scroll = controllerWindow ? controllerWindow->findChild<QScrollArea *>(
                                                      QStringLiteral("editPanelScroll"))
                                                : nullptr)
                scroll->ensureWidgetVisible(eq);
            eq->setFocus(Qt::ShortcutFocusReason);
            return true;
        });
    }
    // The state query's EDIT fields: the item once it is loaded, and where
    // EDIT stands in it.
    using Field = ControlStateRegistry::Field;
    controlState.setProvider(Field::EditItemId, editSession.get(), [session = editSession.get()] {
        return session->hasItem() ? QJsonValue(qint64(session->loadedItemId())) : QJsonValue();
    });
    controlState.setProvider(Field::EditPositionMs, editSession.get(), [session = editSession.get()] {
        const qint64 position = session->isLoaded() ? session->positionMs() : -1;
        return position >= 0 ? QJsonValue(position) : QJsonValue();
    });

    // "selection" (0) loads what the operator selects at once; "button" (1)
    // waits for the EDIT button. Either way the load is an operation from
    // the operator's hands, logged like every other intention.
    const bool onSelection = readIntSetting(QStringLiteral("playlist/editActivationMode")) != 1;
    if (onSelection && selection) {
        QObject::connect(selection.data(), &ItemSelection::selectionChanged, editSession.get(),
                         [this](quint64 itemId, bool byOperator) {
                             if (!itemId || !byOperator || itemId == editSession->loadedItemId())
                                 return;
                             operations->invoke(ControllerOperations::EditLoadSelected);
                         });
    }
    if (playlistPanel) {
        QObject::connect(playlistPanel.data(), &PlaylistPanel::editRequested, editSession.get(), [this] {
            operations->invoke(ControllerOperations::EditLoadSelected);
        });
    }
}

// One line appended per scan event, off the main thread; a line that
// cannot be written is only logged.
void MainController::Impl::appendScanLog(const QString &line)
{
    if (!backgroundIoQueue)
        return;
    const QString path = QDir(logDirectory()).filePath(QString::fromLatin1(kScanLogName));
    const QByteArray bytes = line.toUtf8() + '\n';
    backgroundIoQueue->enqueue(
        [path, bytes](BackgroundIoQueue::Result &result) {
            QFile file(path);
            result.success = file.open(QIODevice::Append | QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
            if (!result.success)
                result.errorText = file.errorString();
        },
        [path](const BackgroundIoQueue::Result &result) {
            if (!result.success)
                qCWarning(lcEdit()).noquote() << QStringLiteral("Could not write %1: %2").arg(path, result.errorText);
        });
}

} // namespace tarnix
