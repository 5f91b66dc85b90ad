#include "shell/startup_texts.h"

#include <cstring>

namespace tarnix {

namespace {

struct KeyText {
    const char *key;
    const char *text;
};

constexpr KeyText kTexts[] = {
    {"application.description", "TARNIX live-production playout"},
    {"application.option.program_output_4k", "Output the program picture at 3840 x 2160 for this run."},
    {"window.player.title", "TARNIX Program"},
    {"window.controller.title", "TARNIX Controller"},
    {"settings.addons.title", "Add-ons"},
    {"settings.addons.restart_failed", "The add-on changes could not be completed: %1"},
    {"settings.addons.startup_resuming", "Add-on changes are being completed. TARNIX will start again when they are done."},
    {"startup.gstreamer_runtime_missing", "The GStreamer runtime could not be found."},
};

} // namespace

QString startupText(const char *key)
{
    for (const KeyText &entry : kTexts) {
        if (std::strcmp(entry.key, key) == 0)
            return QString::fromUtf8(entry.text);
    }
    return QString::fromUtf8(key);
}

} // namespace tarnix
