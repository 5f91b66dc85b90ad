#pragma once

#include <QString>

namespace tarnix {

// Where the GStreamer runtime comes from and what was done to the process
// environment for it. Nothing here calls into GStreamer: it runs before
// gst_init, and in a distribution build the library must come from the tree
// beside the executable.
struct GStreamerRuntimeLocation {
    bool found = false;
    QString libraryDirectory;  // directory holding libgstreamer-1.0.so.0
    QString pluginDirectory;   // directory of the plug-ins in use
    QString description;       // one line for the start-up log
};

// Distribution profile: only "gstreamer/lib/libgstreamer-1.0.so.0" beside
// the executable counts; when it exists, the plug-in system path, an empty
// user plug-in path and the scanner inside that tree are set in the
// environment. Development profile: the system runtime, usable when its core
// library and its plug-in directory are found.
GStreamerRuntimeLocation locateGStreamerRuntime(const QString &executableDirectory,
                                                const QString &profile);

// The system runtime's directories, as known when the build was configured
// and as the dynamic loader resolved the core library in this process.
QString systemGStreamerPluginDirectory();
QString loadedGStreamerCoreLibrary();  // empty when the loader cannot find it

// After gst_init: BMP and TIFF stills decode only through gdk-pixbuf here,
// whose decoder comes unranked, so that neither analysis nor playback would
// pick it. Secondary keeps pngdec and jpegdec in front for PNG and JPEG.
// False when the decoder is not installed.
bool rankStillImageDecoders();

} // namespace tarnix
