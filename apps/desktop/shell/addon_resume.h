#pragma once

#include <QString>
#include <QStringList>

#include <functional>

namespace tarnix {

// Shows the two boxes the add-on resume may need. The application uses modal
// message boxes; tests record the calls instead, so nothing waits on a click.
class StartupMessagePresenter
{
public:
    virtual ~StartupMessagePresenter() = default;
    virtual void showWarning(const QString &objectName, const QString &title, const QString &text) = 0;
    virtual void showInformation(const QString &objectName, const QString &title, const QString &text) = 0;
};

// Modal QMessageBox presenter used by the application.
class MessageBoxPresenter final : public StartupMessagePresenter
{
public:
    void showWarning(const QString &objectName, const QString &title, const QString &text) override;
    void showInformation(const QString &objectName, const QString &title, const QString &text) override;
};

struct AddonResumeContext {
    QStringList arguments;            // the raw process arguments, program first
    QString stateDirectory;           // the add-on manager's state folder
    QString managerProgram;           // path of the add-on manager executable
    QString workingDirectory;
    // Starts the manager detached; returns false with a text when it cannot.
    std::function<bool(const QString &program, const QStringList &arguments,
                       const QString &workingDirectory, QString *error)> startManager;
};

struct AddonResumeDecision {
    bool continueStart = true;
    int exitCode = 0;
};

// The add-on resume step of the start: a failed restart is shown, pending
// jobs or a lock held by a running manager hand the start over to the add-on
// manager. Returns whether the normal start continues, and otherwise the exit
// code of the process.
AddonResumeDecision resumeAddonJobs(const AddonResumeContext &context,
                                    StartupMessagePresenter &presenter);

// Context for the running application: state in "addon-manager" under the
// application data location, "tarnix-addon-manager" beside the executable.
AddonResumeContext applicationAddonResumeContext(const QStringList &arguments);

// Pending jobs: the names ending in ".job.json" in the state folder.
QStringList pendingAddonJobs(const QString &stateDirectory);

// The value of the last "--addon-restart-error=" argument, empty when none.
QString addonRestartError(const QStringList &arguments);

// True when "restart.lock" exists in the folder and another process holds it.
bool addonRestartLockHeld(const QString &stateDirectory);

} // namespace tarnix
