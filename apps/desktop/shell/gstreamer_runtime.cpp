#include "shell/gstreamer_runtime.h"

#include <gst/gst.h>

#include "shell/application_identity.h"

#include <QDir>
#include <QFileInfo>

#include <cstdlib>
#include <dlfcn.h>

#ifndef TARNIX_GST_PLUGIN_DIR
#define TARNIX_GST_PLUGIN_DIR ""
#endif

namespace tarnix {

namespace {

void setEnvironment(const char *name, const QString &value)
{
    ::setenv(name, QFile::encodeName(value).constData(), 1);
}

} // namespace

QString systemGStreamerPluginDirectory()
{
    return QString::fromUtf8(TARNIX_GST_PLUGIN_DIR);
}

QString loadedGStreamerCoreLibrary()
{
    // Asking the loader resolves the library exactly as the process will use
    // it. Loading it calls no GStreamer function.
    void *handle = ::dlopen("libgstreamer-1.0.so.0", RTLD_LAZY | RTLD_LOCAL);
    if (!handle)
        return QString();
    QString path;
    Dl_info info{};
    if (void *symbol = ::dlsym(handle, "gst_init"); symbol && ::dladdr(symbol, &info) && info.dli_fname)
        path = QFileInfo(QFile::decodeName(info.dli_fname)).absoluteFilePath();
    ::dlclose(handle);
    return path;
}

GStreamerRuntimeLocation locateGStreamerRuntime(const QString &executableDirectory,
                                                const QString &profile)
{
    GStreamerRuntimeLocation location;
    if (isDistributionProfile(profile)) {
        const QDir base(executableDirectory);
        const QString libDir = base.filePath(QStringLiteral("gstreamer/lib"));
        if (!QFileInfo(QDir(libDir).filePath(QStringLiteral("libgstreamer-1.0.so.0"))).isFile()) {
            location.description = QStringLiteral("no bundled GStreamer runtime in %1").arg(libDir);
            return location;
        }
        location.found = true;
        location.libraryDirectory = libDir;
        location.pluginDirectory = base.filePath(QStringLiteral("gstreamer/lib/gstreamer-1.0"));
        setEnvironment("GST_PLUGIN_SYSTEM_PATH_1_0", location.pluginDirectory);
        setEnvironment("GST_PLUGIN_PATH_1_0", QString());
        setEnvironment("GST_PLUGIN_SCANNER",
                       base.filePath(QStringLiteral("gstreamer/libexec/gstreamer-1.0/gst-plugin-scanner")));
        location.description = QStringLiteral("bundled GStreamer runtime in %1").arg(libDir);
        return location;
    }

    const QString core = loadedGStreamerCoreLibrary();
    const QString plugins = systemGStreamerPluginDirectory();
    if (core.isEmpty() || !QFileInfo(core).isFile() || plugins.isEmpty()
        || !QFileInfo(plugins).isDir()) {
        location.description = QStringLiteral("system GStreamer runtime not usable (core library \"%1\", plug-ins \"%2\")")
                                   .arg(core, plugins);
        return location;
    }
    location.found = true;
    location.libraryDirectory = QFileInfo(core).absolutePath();
    location.pluginDirectory = plugins;
    location.description = QStringLiteral("system GStreamer runtime %1, plug-ins in %2").arg(core, plugins);
    return location;
}

bool rankStillImageDecoders()
{
    GstPluginFeature *decoder = gst_registry_lookup_feature(gst_registry_get(), "gdkpixbufdec");
    if (!decoder)
        return false;
    if (gst_plugin_feature_get_rank(decoder) < GST_RANK_SECONDARY)
        gst_plugin_feature_set_rank(decoder, GST_RANK_SECONDARY);
    gst_object_unref(decoder);
    return true;
}

} // namespace tarnix
