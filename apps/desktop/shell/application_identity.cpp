#include "shell/application_identity.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>
#include <QSettings>
#include <QStandardPaths>

namespace tarnix {

QString productProfile(const QString &executableDirectory)
{
    QFile marker(QDir(executableDirectory).filePath(QStringLiteral("tarnix-distribution.txt")));
    if (marker.open(QIODevice::ReadOnly)) {
        const QString content = QString::fromUtf8(marker.readAll()).trimmed();
        if (content == QLatin1String(kDistributionProfile))
            return QString::fromLatin1(kDistributionProfile);
    }
    return QString::fromLatin1(kDevelopmentProfile);
}

bool isDistributionProfile(const QString &profile)
{
    return profile == QLatin1String(kDistributionProfile);
}

bool portableModeRequested(const QStringList &arguments, const QString &executableDirectory)
{
    if (arguments.contains(QStringLiteral("--portable")))
        return true;
    const QDir dir(executableDirectory);
    return QFileInfo::exists(dir.filePath(QStringLiteral("portable_mode")))
        || QFileInfo::exists(dir.filePath(QStringLiteral("portable_mode.txt")));
}

void applyApplicationIdentity(const QString &profile)
{
    QCoreApplication::setOrganizationName(QString());
    QCoreApplication::setApplicationName(profile);
    QCoreApplication::setApplicationVersion(QString::fromLatin1(kApplicationVersion));
    QGuiApplication::setApplicationDisplayName(QString::fromLatin1(kApplicationDisplayName));
}

QString computeSettingsFilePath(const QString &profile, bool portable,
                                const QString &executableDirectory)
{
    if (portable) {
        return QDir(executableDirectory)
            .filePath(QStringLiteral("config/%1/user.ini").arg(profile));
    }
    return QDir(QStandardPaths::writableLocation(QStandardPaths::AppDataLocation))
        .filePath(QStringLiteral("user.ini"));
}

void publishSettingsLocation(const QString &settingsFile, bool portable)
{
    if (auto *app = QCoreApplication::instance()) {
        app->setProperty("tarnix.settingsFile", settingsFile);
        app->setProperty("tarnix.portableMode", portable);
    }
}

QString settingsFilePath()
{
    if (auto *app = QCoreApplication::instance()) {
        const QVariant published = app->property("tarnix.settingsFile");
        if (published.isValid() && !published.toString().isEmpty())
            return published.toString();
    }
    const QString executableDirectory = QCoreApplication::instance()
        ? QCoreApplication::applicationDirPath()
        : QString();
    const QString profile = productProfile(executableDirectory);
    if (QSettings::defaultFormat() != QSettings::IniFormat)
        return computeSettingsFilePath(profile, false, executableDirectory);
    const QSettings probe(QSettings::IniFormat, QSettings::UserScope, profile,
                          QStringLiteral("TARNIX Controller"));
    return probe.fileName();
}

std::unique_ptr<QSettings> openSettings()
{
    return std::make_unique<QSettings>(settingsFilePath(), QSettings::IniFormat);
}

} // namespace tarnix
