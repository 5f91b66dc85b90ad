#include "shell/log_categories.h"

namespace tarnix {

Q_LOGGING_CATEGORY(lcSystemCategory, "SYSTEM")
Q_LOGGING_CATEGORY(lcStartupCategory, "STARTUP")
Q_LOGGING_CATEGORY(lcPlayoutCategory, "PLAYOUT")
Q_LOGGING_CATEGORY(lcAudioCategory, "AUDIO")
Q_LOGGING_CATEGORY(lcVideoCategory, "VIDEO")
Q_LOGGING_CATEGORY(lcPlaylistCategory, "PLAYLIST")
Q_LOGGING_CATEGORY(lcEditCategory, "EDIT")
Q_LOGGING_CATEGORY(lcControlCategory, "CONTROL")

const QLoggingCategory &lcSystem() { return lcSystemCategory(); }
const QLoggingCategory &lcStartup() { return lcStartupCategory(); }
const QLoggingCategory &lcPlayout() { return lcPlayoutCategory(); }
const QLoggingCategory &lcAudio() { return lcAudioCategory(); }
const QLoggingCategory &lcVideo() { return lcVideoCategory(); }
const QLoggingCategory &lcPlaylist() { return lcPlaylistCategory(); }
const QLoggingCategory &lcEdit() { return lcEditCategory(); }
const QLoggingCategory &lcControl() { return lcControlCategory(); }

} // namespace tarnix
