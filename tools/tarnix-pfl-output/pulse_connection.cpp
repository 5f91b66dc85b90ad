#include "pulse_connection.h"

#include <algorithm>
#include <chrono>

namespace pfl_helper {

namespace {

// Held while touching the context or stream; the main loop's thread runs
// the callbacks, which only signal.
class Lock
{
public:
    explicit Lock(pa_threaded_mainloop *loop) : m_loop(loop) { pa_threaded_mainloop_lock(m_loop); }
    ~Lock() { pa_threaded_mainloop_unlock(m_loop); }

private:
    pa_threaded_mainloop *m_loop;
};

void signalLoop(pa_threaded_mainloop *loop) { pa_threaded_mainloop_signal(loop, 0); }

struct SinkQuery {
    pa_threaded_mainloop *loop = nullptr;
    std::vector<Sink> *sinks = nullptr;
    std::string *defaultSink = nullptr;
    bool sinksDone = false;
    bool serverDone = false;
};

} // namespace

PulseConnection::~PulseConnection()
{
    if (!m_loop)
        return;
    pa_threaded_mainloop_lock(m_loop);
    if (m_stream) {
        pa_stream_disconnect(m_stream);
        pa_stream_unref(m_stream);
    }
    if (m_context) {
        pa_context_disconnect(m_context);
        pa_context_unref(m_context);
    }
    pa_threaded_mainloop_unlock(m_loop);
    pa_threaded_mainloop_stop(m_loop);
    pa_threaded_mainloop_free(m_loop);
}

// Called with the lock held; waits on the loop's condition in slices so the
// limit holds even if nothing signals.
bool PulseConnection::waitFor(int timeoutMs, const auto &done)
{
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs);
    while (!done()) {
        if (std::chrono::steady_clock::now() >= deadline)
            return false;
        pa_threaded_mainloop_unlock(m_loop);
        struct timespec slice{0, 5'000'000};
        nanosleep(&slice, nullptr);
        pa_threaded_mainloop_lock(m_loop);
    }
    return true;
}

bool PulseConnection::connect(int timeoutMs, std::string *error)
{
    m_loop = pa_threaded_mainloop_new();
    if (!m_loop) {
        *error = "pa_threaded_mainloop_new failed";
        return false;
    }
    m_context = pa_context_new(pa_threaded_mainloop_get_api(m_loop), "TARNIX PFL");
    if (!m_context) {
        *error = "pa_context_new failed";
        return false;
    }
    pa_context_set_state_callback(
        m_context, [](pa_context *, void *loop) { signalLoop(static_cast<pa_threaded_mainloop *>(loop)); }, m_loop);
    if (pa_context_connect(m_context, nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr) < 0) {
        *error = std::string("pa_context_connect: ") + pa_strerror(pa_context_errno(m_context));
        return false;
    }
    if (pa_threaded_mainloop_start(m_loop) < 0) {
        *error = "pa_threaded_mainloop_start failed";
        return false;
    }
    Lock lock(m_loop);
    const bool settled = waitFor(timeoutMs, [this] {
        const pa_context_state_t state = pa_context_get_state(m_context);
        return state == PA_CONTEXT_READY || !PA_CONTEXT_IS_GOOD(state);
    });
    if (!settled || pa_context_get_state(m_context) != PA_CONTEXT_READY) {
        *error = settled ? std::string("PulseAudio connection failed: ") + pa_strerror(pa_context_errno(m_context))
                         : std::string("PulseAudio did not answer");
        return false;
    }
    return true;
}

bool PulseConnection::listSinks(std::vector<Sink> *sinks, std::string *defaultSink, int timeoutMs,
                                std::string *error)
{
    SinkQuery query{m_loop, sinks, defaultSink};
    Lock lock(m_loop);
    pa_operation *sinkList = pa_context_get_sink_info_list(
        m_context,
        [](pa_context *, const pa_sink_info *info, int eol, void *data) {
            auto *query = static_cast<SinkQuery *>(data);
            if (eol) {
                query->sinksDone = true;
                signalLoop(query->loop);
                return;
            }
            if (info && info->name)
                query->sinks->push_back({info->name, info->description ? info->description : info->name});
        },
        &query);
    pa_operation *server = pa_context_get_server_info(
        m_context,
        [](pa_context *, const pa_server_info *info, void *data) {
            auto *query = static_cast<SinkQuery *>(data);
            if (info && info->default_sink_name)
                *query->defaultSink = info->default_sink_name;
            query->serverDone = true;
            signalLoop(query->loop);
        },
        &query);
    const bool done = sinkList && server && waitFor(timeoutMs, [&] { return query.sinksDone && query.serverDone; });
    // Cancelled, the callbacks no longer reach the query on this stack.
    for (pa_operation *operation : {sinkList, server}) {
        if (!operation)
            continue;
        if (!done)
            pa_operation_cancel(operation);
        pa_operation_unref(operation);
    }
    if (!done)
        *error = "PulseAudio did not list its sinks";
    return done;
}

bool PulseConnection::openStream(const std::string &sink, int timeoutMs, std::string *error)
{
    const pa_sample_spec format{PA_SAMPLE_FLOAT32LE, 48000, 2};
    Lock lock(m_loop);
    m_stream = pa_stream_new(m_context, "EDIT PFL", &format, nullptr);
    if (!m_stream) {
        *error = std::string("pa_stream_new: ") + pa_strerror(pa_context_errno(m_context));
        return false;
    }
    pa_stream_set_state_callback(
        m_stream, [](pa_stream *, void *loop) { signalLoop(static_cast<pa_threaded_mainloop *>(loop)); }, m_loop);
    // The helper keeps its own few tens of milliseconds queued and places
    // every block by its position in the stream; the server's share stays
    // short. No prebuffering: the stream starts at once and keeps running
    // through an underrun, so a position in it always means the same time.
    pa_buffer_attr attributes{};
    attributes.maxlength = std::uint32_t(-1);
    attributes.tlength = std::uint32_t(pa_usec_to_bytes(80'000, &format));
    attributes.prebuf = 0;
    attributes.minreq = std::uint32_t(-1);
    attributes.fragsize = std::uint32_t(-1);
    const auto flags = pa_stream_flags_t(PA_STREAM_ADJUST_LATENCY | PA_STREAM_AUTO_TIMING_UPDATE
                                         | PA_STREAM_INTERPOLATE_TIMING | PA_STREAM_DONT_MOVE);
    if (pa_stream_connect_playback(m_stream, sink.c_str(), &attributes, flags, nullptr, nullptr) < 0) {
        *error = std::string("pa_stream_connect_playback: ") + pa_strerror(pa_context_errno(m_context));
        return false;
    }
    const bool settled = waitFor(timeoutMs, [this] {
        const pa_stream_state_t state = pa_stream_get_state(m_stream);
        return state == PA_STREAM_READY || !PA_STREAM_IS_GOOD(state);
    });
    if (!settled || pa_stream_get_state(m_stream) != PA_STREAM_READY) {
        *error = settled ? std::string("PulseAudio stream failed: ") + pa_strerror(pa_context_errno(m_context))
                         : std::string("PulseAudio stream did not open");
        return false;
    }
    return true;
}

bool PulseConnection::streamFailed()
{
    Lock lock(m_loop);
    return !m_stream || !PA_STREAM_IS_GOOD(pa_stream_get_state(m_stream))
           || !PA_CONTEXT_IS_GOOD(pa_context_get_state(m_context));
}

std::size_t PulseConnection::writableBytes()
{
    Lock lock(m_loop);
    const std::size_t bytes = pa_stream_writable_size(m_stream);
    return bytes == std::size_t(-1) ? 0 : bytes;
}

bool PulseConnection::write(const float *samples, std::size_t bytes)
{
    Lock lock(m_loop);
    return pa_stream_write(m_stream, samples, bytes, nullptr, 0, PA_SEEK_RELATIVE) == 0;
}

bool PulseConnection::writeSilence(std::size_t bytes)
{
    static const float zeros[4096] = {};
    while (bytes > 0) {
        const std::size_t chunk = std::min(bytes, sizeof zeros);
        if (!write(zeros, chunk))
            return false;
        bytes -= chunk;
    }
    return true;
}

bool PulseConnection::latencyNs(std::int64_t *latency)
{
    Lock lock(m_loop);
    // Only while sound passes to the device does the latency say where the
    // stream's end will be heard.
    const pa_timing_info *timing = pa_stream_get_timing_info(m_stream);
    if (!timing || !timing->playing || timing->read_index_corrupt || timing->write_index_corrupt)
        return false;
    pa_usec_t magnitude = 0;
    int negative = 0;
    if (pa_stream_get_latency(m_stream, &magnitude, &negative) < 0)
        return false;
    *latency = (negative ? -1 : 1) * std::int64_t(magnitude) * 1000;
    return true;
}

} // namespace pfl_helper
