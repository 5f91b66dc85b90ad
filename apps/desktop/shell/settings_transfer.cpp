#include "shell/settings_transfer.h"

#include "shell/application_identity.h"
#include "shell/background_io_queue.h"
#include "shell/log_categories.h"
#include "shell/settings_transfer_document.h"
#include "shell/settings_transfer_store.h"
#include "shell/ui_language_manager.h"
#include "shell/user_info_center.h"

#include <QFile>
#include <QFileInfo>
#include <QPointer>
#include <QSaveFile>
#include <QSettings>

#include <atomic>

namespace tarnix {

namespace {

const QString kSource = QStringLiteral("SYSTEM");

LocalizedText failedText()
{
    return LocalizedText(QStringLiteral("settings.manage.failed"), {},
                         QStringLiteral("Could not save or restore settings. Check the file format and write "
                                        "permissions."));
}

bool fail(BackgroundIoQueue::Result &result, const QString &text)
{
    result.success = false;
    result.errorText = text;
    return false;
}

// Runs on the queue's worker.
bool exportFile(const QString &settingsPath, const QString &path, const ShortcutBindingsCheck &shortcutCheck,
                BackgroundIoQueue::Result &result)
{
    QSettings settings(settingsPath, QSettings::IniFormat);
    const QJsonObject values = readTransferSettings(settings);
    if (settings.status() != QSettings::NoError)
        return fail(result, QStringLiteral("The settings file %1 could not be read.").arg(settingsPath));
    QString error;
    const std::optional<QJsonObject> checked = checkTransferSettings(values, shortcutCheck, &error);
    if (!checked)
        return fail(result, QStringLiteral("The stored settings do not pass the import's checks: %1").arg(error));
    const QByteArray bytes = settingsTransferDocument(*checked);
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return fail(result, QStringLiteral("Could not open %1 for writing: %2").arg(path, file.errorString()));
    if (file.write(bytes) != bytes.size()) {
        const QString reason = file.errorString();
        file.cancelWriting();
        return fail(result, QStringLiteral("Could not write the whole of %1: %2").arg(path, reason));
    }
    if (!file.commit())
        return fail(result, QStringLiteral("Could not finish writing %1: %2").arg(path, file.errorString()));
    result.success = true;
    return true;
}

// Runs on the queue's worker. On success `restored` holds every transfer
// setting as the file now has it.
bool importFile(const QString &settingsPath, const QString &path, const ShortcutBindingsCheck &shortcutCheck,
                const std::atomic<bool> &cancelled, QJsonObject &restored, BackgroundIoQueue::Result &result)
{
    // Only a plain file: a pipe or a device could block the queue or never end.
    const QFileInfo info(path);
    if (!info.isFile())
        return fail(result, QStringLiteral("%1 is not a readable file.").arg(path));
    if (info.size() > kSettingsTransferMaxBytes)
        return fail(result, QStringLiteral("%1 is larger than %2 bytes.").arg(path).arg(kSettingsTransferMaxBytes));
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return fail(result, QStringLiteral("Could not open %1: %2").arg(path, file.errorString()));
    // One byte more than allowed tells a file that grew since it was sized.
    const QByteArray bytes = file.read(kSettingsTransferMaxBytes + 1);
    if (file.error() != QFileDevice::NoError)
        return fail(result, QStringLiteral("Could not read %1: %2").arg(path, file.errorString()));
    QString error;
    const std::optional<QJsonObject> checked = readSettingsTransferDocument(bytes, shortcutCheck, &error);
    if (!checked)
        return fail(result, error);
    if (cancelled.load())
        return fail(result, QStringLiteral("The application is closing."));
    QSettings settings(settingsPath, QSettings::IniFormat);
    if (!writeTransferSettings(settings, *checked, &error))
        return fail(result, error);
    restored = readTransferSettings(settings);
    result.success = true;
    return true;
}

} // namespace

struct SettingsTransfer::Impl {
    SettingsTransfer *q = nullptr;
    QPointer<BackgroundIoQueue> queue;
    QPointer<UserInfoCenter> userInfo;
    QPointer<UiLanguageManager> languageManager;
    ShortcutBindingsCheck shortcutCheck;
    QString settingsPath;
    bool closed = false;
    // Set by close(); a restore that has not written yet sees it and stops.
    std::shared_ptr<std::atomic<bool>> cancelled = std::make_shared<std::atomic<bool>>(false);

    QString resolvedSettingsPath() const { return settingsPath.isEmpty() ? settingsFilePath() : settingsPath; }

    void finish(const Completion &done, bool success, const LocalizedText &message, const QString &detail)
    {
        if (userInfo)
            userInfo->post(success ? UserInfoSeverity::Success : UserInfoSeverity::Error, kSource, message, detail);
        if (done)
            done(SettingsTransferOutcome{success, message, detail});
    }

    static void refuseClosed(const Completion &done)
    {
        if (done)
            done(SettingsTransferOutcome{false, LocalizedText(QString(), {}, QStringLiteral("The application is closing.")),
                                         {}});
    }

    void switchLanguage(const QJsonObject &restored)
    {
        const QString language = restored.value(QStringLiteral("ui/language")).toString();
        if (!languageManager || language.isEmpty() || language == languageManager->currentLanguage())
            return;
        QString error;
        if (!languageManager->setLanguage(language, &error))
            qCWarning(lcSystem).noquote() << "Restored interface language not applied:" << error;
    }
};

SettingsTransfer::SettingsTransfer(BackgroundIoQueue *queue, UserInfoCenter *userInfo,
                                   UiLanguageManager *languageManager, ShortcutBindingsCheck shortcutCheck,
                                   QString settingsPath, QObject *parent)
    : QObject(parent), d(std::make_unique<Impl>())
{
    d->q = this;
    d->queue = queue;
    d->userInfo = userInfo;
    d->languageManager = languageManager;
    d->shortcutCheck = std::move(shortcutCheck);
    d->settingsPath = std::move(settingsPath);
}

SettingsTransfer::~SettingsTransfer()
{
    close();
}

void SettingsTransfer::exportSettings(const QString &givenPath, Completion done)
{
    if (d->closed || !d->queue) {
        Impl::refuseClosed(done);
        return;
    }
    const QString path = QFileInfo(givenPath).suffix().isEmpty() ? givenPath + QStringLiteral(".json") : givenPath;
    qCInfo(lcSystem).noquote() << "Settings export to" << path;
    d->queue->enqueue(
        [settingsPath = d->resolvedSettingsPath(), path, check = d->shortcutCheck](BackgroundIoQueue::Result &result) {
            exportFile(settingsPath, path, check, result);
        },
        [self = QPointer<SettingsTransfer>(this), done = std::move(done)](const BackgroundIoQueue::Result &result) {
            if (!self) {
                Impl::refuseClosed(done);
                return;
            }
            if (result.success) {
                const LocalizedText text(QStringLiteral("settings.export.succeeded"), {},
                                         QStringLiteral("Settings exported."));
                qCInfo(lcSystem).noquote() << text.toString();
                self->d->finish(done, true, text, {});
                return;
            }
            qCWarning(lcSystem).noquote() << "Settings export failed:" << result.errorText;
            self->d->finish(done, false, failedText(), result.errorText);
        });
}

void SettingsTransfer::importSettings(const QString &path, Completion done)
{
    if (d->closed || !d->queue) {
        Impl::refuseClosed(done);
        return;
    }
    qCInfo(lcSystem).noquote() << "Settings restore from" << path;
    // Written by the worker before the queue's `finished`, read after it.
    auto restored = std::make_shared<QJsonObject>();
    d->queue->enqueue(
        [settingsPath = d->resolvedSettingsPath(), path, check = d->shortcutCheck, cancelled = d->cancelled,
         restored](BackgroundIoQueue::Result &result) {
            importFile(settingsPath, path, check, *cancelled, *restored, result);
        },
        [self = QPointer<SettingsTransfer>(this), restored, done = std::move(done)](
            const BackgroundIoQueue::Result &result) {
            if (!self || self->d->closed) {
                if (result.success)
                    qCInfo(lcSystem).noquote() << "Settings restored while the application closes";
                Impl::refuseClosed(done);
                return;
            }
            Impl *d = self->d.get();
            if (!result.success) {
                qCWarning(lcSystem).noquote() << "Settings restore failed:" << result.errorText;
                d->finish(done, false, failedText(), result.errorText);
                return;
            }
            // The message is resolved when shown: after the switch it
            // speaks the restored language.
            const LocalizedText text(QStringLiteral("settings.import.succeeded"), {},
                                     QStringLiteral("Settings restored and saved."));
            d->switchLanguage(*restored);
            emit self->settingsRestored(*restored);
            // A receiver may have ended the transfer's life.
            if (!self) {
                if (done)
                    done(SettingsTransferOutcome{true, text, {}});
                return;
            }
            qCInfo(lcSystem).noquote() << text.toString();
            d->finish(done, true, text, {});
        });
}

void SettingsTransfer::close()
{
    d->closed = true;
    d->cancelled->store(true);
}

bool SettingsTransfer::isClosed() const
{
    return d->closed;
}

} // namespace tarnix
