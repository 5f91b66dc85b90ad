#include "shell/gpu_startup_preferences.h"

#include "shell/application_identity.h"

#include <QCoreApplication>
#include <QSettings>

namespace tarnix {

void freezeGpuPreferences()
{
    QCoreApplication *app = QCoreApplication::instance();
    if (!app || app->property("gpu.preferencesFrozen").toBool())
        return;
    const auto settings = openSettings();
    app->setProperty("gpu.startupAdapterId",
                     settings->value(QStringLiteral("video/gpuAdapterId"), QString()).toString());
    app->setProperty("gpu.startupSoftwareDecoding",
                     settings->value(QStringLiteral("video/softwareDecoding"), false).toBool());
    app->setProperty("gpu.preferencesFrozen", true);
}

} // namespace tarnix
