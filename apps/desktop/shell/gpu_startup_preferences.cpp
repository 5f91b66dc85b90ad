#include "shell/gpu_startup_preferences.h"

#include "shell/settings_store.h"

#include <QCoreApplication>

namespace tarnix {

void freezeGpuPreferences()
{
    QCoreApplication *app = QCoreApplication::instance();
    if (!app || app->property("gpu.preferencesFrozen").toBool())
        return;
    app->setProperty("gpu.startupAdapterId", readStringSetting(QStringLiteral("video/gpuAdapterId")));
    app->setProperty("gpu.startupSoftwareDecoding", readBoolSetting(QStringLiteral("video/softwareDecoding")));
    app->setProperty("gpu.preferencesFrozen", true);
}

} // namespace tarnix
