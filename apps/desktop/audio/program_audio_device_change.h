#pragma once

#include <gst/gst.h>

#include <QByteArray>
#include <QString>

#include <atomic>
#include <chrono>
#include <memory>

namespace tarnix {

// One change of the program output device, shared between the main thread
// and its worker. The worker writes success and running, then sets done
// (release); the main thread reads them only after it saw done (acquire).
struct ProgramAudioDeviceChange {
    std::atomic<bool> done{false};
    bool success = false;
    bool running = false;
    QString device;
};

struct ProgramAudioDeviceWork {
    GstElement *pipeline = nullptr; // a reference owned by the work
    GstElement *sink = nullptr;     // a reference owned by the work
    QByteArray oldDevice;           // empty: the server's default
    QByteArray newDevice;
    bool wasRunning = false;
    bool hasDeviceProperty = false;
    std::chrono::milliseconds stateWait{2000};
};

// Worker body: NULL, new device, a check that the sink accepts audio on it,
// PLAYING; on failure of a running output the way back to the old device. Releases the work's references and sets done.
// Blocks for up to five state waits: never call it on the main thread.
void runProgramAudioDeviceChange(ProgramAudioDeviceWork work,
                                 const std::shared_ptr<ProgramAudioDeviceChange> &change);

// Starts the worker on a detached thread. False (with the reason) if the
// thread could not start; the work's references are then released.
bool startProgramAudioDeviceChange(ProgramAudioDeviceWork work,
                                   const std::shared_ptr<ProgramAudioDeviceChange> &change,
                                   QString *error);

} // namespace tarnix
