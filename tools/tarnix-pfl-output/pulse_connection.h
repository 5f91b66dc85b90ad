#pragma once

#include "ring_player.h"

#include <pulse/pulseaudio.h>

#include <cstdint>
#include <string>
#include <vector>

namespace pfl_helper {

struct Sink {
    std::string name;         // the id the application stores
    std::string description;  // what the operator reads
};

// One connection to the PulseAudio server on a threaded main loop, never
// spawning a server. Calls block the helper's own thread only, each with a
// time limit.
class PulseConnection : public SoundStream
{
public:
    PulseConnection() = default;
    ~PulseConnection();
    PulseConnection(const PulseConnection &) = delete;
    PulseConnection &operator=(const PulseConnection &) = delete;

    bool connect(int timeoutMs, std::string *error);
    bool listSinks(std::vector<Sink> *sinks, std::string *defaultSink, int timeoutMs, std::string *error);

    // A float stereo 48 kHz playback stream on the sink that starts at once
    // and runs on through an underrun, no prebuffering. Ready or failed
    // within the limit.
    bool openStream(const std::string &sink, int timeoutMs, std::string *error);
    bool streamFailed() override;
    std::size_t writableBytes() override;
    bool write(const float *samples, std::size_t bytes) override;
    bool writeSilence(std::size_t bytes) override;
    // Only while sound passes to the device.
    bool latencyNs(std::int64_t *latency) override;

private:
    bool waitFor(int timeoutMs, const auto &done);

    pa_threaded_mainloop *m_loop = nullptr;
    pa_context *m_context = nullptr;
    pa_stream *m_stream = nullptr;
};

} // namespace pfl_helper
