#include "shell/startup_diagnostics.h"

#include "shell/application_identity.h"
#include "shell/application_log.h"
#include "shell/loaded_modules.h"
#include "shell/log_categories.h"
#include "shell/ordered_json.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSettings>
#include <QStandardPaths>

#include <cerrno>

namespace tarnix {

namespace {

bool sha256OfDevice(QIODevice &device, QString *hex)
{
    QCryptographicHash hash(QCryptographicHash::Sha256);
    if (!hash.addData(&device))
        return false;
    *hex = QString::fromLatin1(hash.result().toHex());
    return true;
}

QString encodeSettingValue(const QVariant &value)
{
    // An INI file holds text and lists of text; values are written as such.
    if (value.metaType().id() == QMetaType::QStringList)
        return jsonStringArray(value.toStringList());
    return jsonQuoted(value.toString());
}

} // namespace

QString defaultLogDirectory()
{
    return QDir(QStandardPaths::writableLocation(QStandardPaths::AppLocalDataLocation))
        .filePath(QStringLiteral("logs"));
}

QStringList startupDiagnosticRecords(const StartupDiagnosticsInput &input)
{
    QStringList records;
    const QString phase = input.phase;

    if (phase == QLatin1String(kPhaseBeforeSettings)) {
        QString hash;
        bool hashed = false;
        QFile executable(input.executablePath);
        if (executable.open(QIODevice::ReadOnly))
            hashed = sha256OfDevice(executable, &hash);
        records << OrderedJsonObject()
                       .add(QStringLiteral("kind"), "process")
                       .add(QStringLiteral("executable"), input.executablePath)
                       .add(QStringLiteral("executableSha256"), hashed ? hash : QString())
                       .add(QStringLiteral("hashSucceeded"), hashed)
                       .add(QStringLiteral("workingDirectory"), input.workingDirectory)
                       .add(QStringLiteral("logDirectory"), input.logDirectory)
                       .add(QStringLiteral("appLocalData"), input.appLocalData)
                       .toString();
    }

    QSettings settings(input.settingsFile, QSettings::IniFormat);
    records << OrderedJsonObject()
                   .add(QStringLiteral("kind"), "settings-source")
                   .add(QStringLiteral("source"), settings.fileName())
                   .add(QStringLiteral("format"), int(settings.format()))
                   .add(QStringLiteral("scope"), int(settings.scope()))
                   .add(QStringLiteral("fallbacksEnabled"), settings.fallbacksEnabled())
                   .add(QStringLiteral("portable"), input.portable)
                   .toString();

    OrderedJsonObject fileRecord;
    fileRecord.add(QStringLiteral("kind"), "settings-file")
        .add(QStringLiteral("path"), input.settingsFile)
        .add(QStringLiteral("exists"), QFileInfo::exists(input.settingsFile));
    QFile file(input.settingsFile);
    const bool opened = file.open(QIODevice::ReadOnly);
    fileRecord.add(QStringLiteral("opened"), opened);
    if (!opened) {
        fileRecord.add(QStringLiteral("error"), file.errorString());
    } else {
        QString openedPath;
        int errorNumber = 0;
        const bool pathKnown = pathOfOpenDescriptor(file.handle(), &openedPath, &errorNumber);
        QString hash;
        const bool hashed = sha256OfDevice(file, &hash);
        fileRecord.add(QStringLiteral("hashSucceeded"), hashed)
            .add(QStringLiteral("sha256"), hashed ? hash : QString());
        if (pathKnown)
            fileRecord.add(QStringLiteral("openedFilePath"), openedPath);
        else
            fileRecord.add(QStringLiteral("pathQueryError"), errorNumber);
    }
    records << fileRecord.toString();

    for (const QString &key : settings.allKeys()) {
        const QVariant value = settings.value(key);
        records << OrderedJsonObject()
                       .add(QStringLiteral("kind"), "settings-read")
                       .add(QStringLiteral("key"), key)
                       .add(QStringLiteral("valueType"), QString::fromLatin1(value.typeName()))
                       .addEncoded(QStringLiteral("value"), encodeSettingValue(value))
                       .add(QStringLiteral("phase"), phase)
                       .toString();
    }
    records << OrderedJsonObject()
                   .add(QStringLiteral("kind"), "settings-read-complete")
                   .add(QStringLiteral("status"), int(settings.status()))
                   .toString();

    const QList<LoadedModule> modules = loadedModules();
    if (modules.isEmpty()) {
        records << OrderedJsonObject()
                       .add(QStringLiteral("kind"), "module-snapshot-error")
                       .add(QStringLiteral("error"), int(ENOSYS))
                       .toString();
    }
    for (const LoadedModule &module : modules) {
        records << OrderedJsonObject()
                       .add(QStringLiteral("kind"), "loaded-module")
                       .add(QStringLiteral("name"), module.name)
                       .add(QStringLiteral("path"), module.path)
                       .add(QStringLiteral("phase"), phase)
                       .toString();
    }
    return records;
}

void writeStartupDiagnostics(const QString &phase)
{
    StartupDiagnosticsInput input;
    input.phase = phase;
    input.executablePath = QCoreApplication::applicationFilePath();
    input.workingDirectory = QDir::currentPath();
    input.logDirectory = logStarted() ? logDirectory() : defaultLogDirectory();
    input.appLocalData = QStandardPaths::writableLocation(QStandardPaths::AppLocalDataLocation);
    input.settingsFile = settingsFilePath();
    if (auto *app = QCoreApplication::instance())
        input.portable = app->property("tarnix.portableMode").toBool();
    for (const QString &record : startupDiagnosticRecords(input))
        qCInfo(lcStartup).noquote() << record;
}

} // namespace tarnix
