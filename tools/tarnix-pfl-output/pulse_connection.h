#pragma once

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
class PulseConnection
{
public:
    PulseConnection() = default;
    ~PulseConnection();
    PulseConnection(const PulseConnection &) = delete;
    PulseConnection &operator=(const PulseConnection &) = delete;

    bool connect(int timeoutMs, std::string *error);
    bool listSinks(std::vector<Sink> *sinks, std::string *defaultSink, int timeoutMs, std::string *error);

    // A float stereo 48 kHz playback stream on the sink that starts at once
    // and runs on through an underrun. Ready or failed within the limit.
    bool openStream(const std::string &sink, int timeoutMs, std::string *error);
    bool streamFailed();
    // Bytes the server takes now without growing the latency.
    std::size_t writableBytes();
    // Both append at the stream's end.
    bool write(const float *samples, std::size_t bytes);
    bool writeSilence(std::size_t bytes);
    // How long until the end of what has been written is heard; negative
    // once the stream has run past it. False while the stream does not
    // play or the server has not yet told its timing.
    bool latencyNs(std::int64_t *latency);

private:
    bool waitFor(int timeoutMs, const auto &done);

    pa_threaded_mainloop *m_loop = nullptr;
    pa_context *m_context = nullptr;
    pa_stream *m_stream = nullptr;
};

} // namespace pfl_helper
