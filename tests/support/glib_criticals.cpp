#include "support/glib_criticals.h"

#include <glib.h>

#include <QtGlobal>

#include <pthread.h>

#include <cstring>
#include <mutex>

namespace tarnix::test {
namespace {

const char *fieldText(const GLogField *fields, gsize count, const char *key)
{
    for (gsize i = 0; i < count; ++i) {
        if (std::strcmp(fields[i].key, key) != 0 || !fields[i].value)
            continue;
        // A length of -1 marks a NUL-terminated string; anything else is
        // binary data that this writer does not show.
        return fields[i].length < 0 ? static_cast<const char *>(fields[i].value) : nullptr;
    }
    return nullptr;
}

// appsink (GStreamer 1.22) re-applies its pad's caps to the sample it
// shares with its consumer after a flush, without making that sample
// writable first. A consumer still holding the last sample at that moment
// makes it assert; the sample then keeps the caps it had, which a flush
// does not change. A test that pulls from an appsink across a flush hits it
// at random, so it is written as a warning instead of ending the run.
bool isAppSinkFlushRace(const char *domain, const char *message)
{
    return domain && message && std::strcmp(domain, "GStreamer") == 0
           && std::strstr(message, "gst_sample_set_caps: assertion 'gst_sample_is_writable (sample)' failed");
}

GLogWriterOutput writer(GLogLevelFlags level, const GLogField *fields, gsize count, gpointer data)
{
    if (!(level & (G_LOG_LEVEL_CRITICAL | G_LOG_LEVEL_ERROR)))
        return g_log_writer_default(level, fields, count, data);
    if ((level & G_LOG_LEVEL_CRITICAL)
        && isAppSinkFlushRace(fieldText(fields, count, "GLIB_DOMAIN"), fieldText(fields, count, "MESSAGE"))) {
        qWarning("appsink flush race (tolerated): %s", fieldText(fields, count, "MESSAGE"));
        return G_LOG_WRITER_HANDLED;
    }
    // One report is enough: a second thread that logs while the first one
    // stops the process waits here rather than interleave another abort.
    static std::mutex reporting;
    reporting.lock();
    const char *domain = fieldText(fields, count, "GLIB_DOMAIN");
    const char *message = fieldText(fields, count, "MESSAGE");
    char thread[32] = {};
    pthread_getname_np(pthread_self(), thread, sizeof thread);
    qFatal("%s-%s (thread %s): %s", domain ? domain : "GLib",
           (level & G_LOG_LEVEL_ERROR) ? "ERROR" : "CRITICAL", thread,
           message ? message : "(no message)");
    return G_LOG_WRITER_HANDLED; // not reached
}

} // namespace

void failOnGlibCriticals()
{
    // GLib accepts one writer per process.
    static std::once_flag once;
    std::call_once(once, [] { g_log_set_writer_func(writer, nullptr, nullptr); });
}

} // namespace tarnix::test
