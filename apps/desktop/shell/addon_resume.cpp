#include "shell/addon_resume.h"

#include "shell/localized_text.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QLockFile>
#include <QMessageBox>
#include <QProcess>
#include <QStandardPaths>

namespace tarnix {

namespace {

void showBox(QMessageBox::Icon icon, const QString &objectName, const QString &title,
             const QString &text)
{
    QMessageBox box(icon, title, text, QMessageBox::Ok);
    box.setObjectName(objectName);
    box.exec();
}

} // namespace

void MessageBoxPresenter::showWarning(const QString &objectName, const QString &title,
                                      const QString &text)
{
    showBox(QMessageBox::Warning, objectName, title, text);
}

void MessageBoxPresenter::showInformation(const QString &objectName, const QString &title,
                                          const QString &text)
{
    showBox(QMessageBox::Information, objectName, title, text);
}

QStringList pendingAddonJobs(const QString &stateDirectory)
{
    if (stateDirectory.isEmpty())
        return {};
    QStringList jobs;
    const QFileInfoList entries = QDir(stateDirectory).entryInfoList(QDir::Files, QDir::Name);
    for (const QFileInfo &entry : entries) {
        if (entry.fileName().endsWith(QLatin1String(".job.json")))
            jobs << entry.absoluteFilePath();
    }
    return jobs;
}

QString addonRestartError(const QStringList &arguments)
{
    static const QString prefix = QStringLiteral("--addon-restart-error=");
    QString value;
    for (const QString &argument : arguments) {
        if (argument.startsWith(prefix))
            value = argument.mid(prefix.size());
    }
    return value;
}

bool addonRestartLockHeld(const QString &stateDirectory)
{
    if (stateDirectory.isEmpty())
        return false;
    const QString path = QDir(stateDirectory).filePath(QStringLiteral("restart.lock"));
    if (!QFileInfo::exists(path))
        return false;
    QLockFile lock(path);
    lock.setStaleLockTime(0);
    if (lock.tryLock(0)) {
        lock.unlock();
        return false;
    }
    return lock.error() == QLockFile::LockFailedError;
}

AddonResumeDecision resumeAddonJobs(const AddonResumeContext &context,
                                    StartupMessagePresenter &presenter)
{
    const QString title = localized("settings.addons.title");
    const QString dialogName = QStringLiteral("addonStartupDialog");
    const QStringList jobs = pendingAddonJobs(context.stateDirectory);
    const QString restartError = addonRestartError(context.arguments);

    if (!restartError.isEmpty()) {
        presenter.showWarning(dialogName, title,
                              localized("settings.addons.restart_failed").arg(restartError));
        if (!jobs.isEmpty())
            return {false, 1};
        return {true, 0};
    }

    const bool restartComplete = context.arguments.contains(QStringLiteral("--addon-restart-complete"));
    const bool handOver = !jobs.isEmpty()
        || (!restartComplete && addonRestartLockHeld(context.stateDirectory));
    if (!handOver)
        return {true, 0};

    QString error;
    const QStringList managerArguments = context.arguments.mid(1);
    const bool started = context.startManager
        && context.startManager(context.managerProgram, managerArguments,
                                context.workingDirectory, &error);
    if (!started) {
        if (error.isEmpty())
            error = QStringLiteral("%1 could not be started").arg(context.managerProgram);
        presenter.showWarning(dialogName, title,
                              localized("settings.addons.restart_failed").arg(error));
        return {false, 1};
    }
    presenter.showInformation(dialogName, title, localized("settings.addons.startup_resuming"));
    return {false, 0};
}

AddonResumeContext applicationAddonResumeContext(const QStringList &arguments)
{
    AddonResumeContext context;
    context.arguments = arguments;
    context.stateDirectory = QDir(QStandardPaths::writableLocation(QStandardPaths::AppDataLocation))
                                 .filePath(QStringLiteral("addon-manager"));
    context.managerProgram = QDir(QCoreApplication::applicationDirPath())
                                 .filePath(QStringLiteral("tarnix-addon-manager"));
    context.workingDirectory = QDir::currentPath();
    context.startManager = [](const QString &program, const QStringList &args,
                              const QString &workingDirectory, QString *error) {
        if (!QFileInfo(program).isExecutable()) {
            *error = QStringLiteral("%1 is missing").arg(program);
            return false;
        }
        QProcess process;
        process.setProgram(program);
        process.setArguments(args);
        process.setWorkingDirectory(workingDirectory);
        if (!process.startDetached()) {
            *error = process.errorString();
            return false;
        }
        return true;
    };
    return context;
}

} // namespace tarnix
