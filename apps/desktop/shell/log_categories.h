#pragma once

#include <QLoggingCategory>

// Logging categories of the application. The category name becomes the
// "source" of a log record, so names are the upper-case words operators and
// support staff search for.
namespace tarnix {

const QLoggingCategory &lcSystem();   // "SYSTEM": process, windows, devices of the host
const QLoggingCategory &lcStartup();  // "STARTUP": start-up decisions and diagnostics
const QLoggingCategory &lcPlayout();  // "PLAYOUT": decks and pipelines of the ON AIR side
const QLoggingCategory &lcAudio();    // "AUDIO": audio elements and devices
const QLoggingCategory &lcVideo();    // "VIDEO": program picture and frame hand-over
const QLoggingCategory &lcPlaylist(); // "PLAYLIST": the running document and its media files
const QLoggingCategory &lcEdit();     // "EDIT": the EDIT session and its player
const QLoggingCategory &lcControl();  // "CONTROL": operator operations and the control socket

} // namespace tarnix
