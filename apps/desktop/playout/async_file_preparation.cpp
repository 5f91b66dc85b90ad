#include "playout/async_file_preparation.h"

#include "playout/deck_texts.h"
#include "playout/media_error_classify.h"
#include "shell/log_categories.h"

#include <QFileInfo>
#include <QMimeDatabase>

#include <cstdlib>
#include <system_error>
#include <thread>

namespace tarnix {
namespace {

qint64 nsToMs(gint64 ns)
{
    return ns / GST_MSECOND;
}

// Sets or clears the playbin's video filter. A still gets imagefreeze so
// that its single frame keeps flowing like a video.
bool applyStillFilter(GstElement *playbin, bool still)
{
    if (!still) {
        g_object_set(playbin, "video-filter", nullptr, nullptr);
        return true;
    }
    GstElement *freeze = gst_element_factory_make("imagefreeze", nullptr);
    if (!freeze)
        return false;
    gst_object_ref_sink(freeze);
    g_object_set(playbin, "video-filter", freeze, nullptr);
    gst_object_unref(freeze);
    return true;
}

bool isStillImage(const QString &path)
{
    const QMimeType type = QMimeDatabase().mimeTypeForFile(path, QMimeDatabase::MatchContent);
    return type.name().startsWith(QLatin1String("image/"));
}

} // namespace

std::shared_ptr<AsyncFilePreparation> AsyncFilePreparation::start(GstElement *playbin,
                                                                  const DeckSource &request,
                                                                  std::chrono::milliseconds timeout,
                                                                  const Options &options)
{
    if (!playbin)
        return nullptr;
    std::shared_ptr<AsyncFilePreparation> preparation(new AsyncFilePreparation);
    preparation->m_deadline = QDeadlineTimer(timeout);
    auto *workerRef = GST_ELEMENT(gst_object_ref(playbin));
    try {
        std::thread([preparation, workerRef, request, options] {
            preparation->run(workerRef, request, options);
        }).detach();
    } catch (const std::system_error &failure) {
        qCWarning(lcPlayout()).noquote()
            << QStringLiteral("Could not start a media preparation thread:") << failure.what();
        gst_object_unref(workerRef);
        return nullptr;
    }
    return preparation;
}

bool AsyncFilePreparation::waitFinished(std::chrono::milliseconds limit)
{
    std::unique_lock lock(m_mutex);
    return m_condition.wait_for(lock, limit, [this] { return isFinished(); });
}

bool AsyncFilePreparation::stopRequested() const
{
    return isCancelled() || m_deadline.hasExpired();
}

void AsyncFilePreparation::fail(Result result, const QString &text)
{
    m_result = result;
    m_error = text;
}

void AsyncFilePreparation::failFromBus(GstElement *playbin, const QString &fallbackText)
{
    GstBus *bus = gst_element_get_bus(playbin);
    const MediaErrorClass found = classifyPendingError(bus, fallbackText);
    if (bus)
        gst_object_unref(bus);
    m_notLinked = found.notLinked;
    fail(found.offline ? Offline : Failed, found.text);
}

void AsyncFilePreparation::run(GstElement *playbin, DeckSource request, Options options)
{
    const DeckTimings &timings = options.timings;
    const auto statePoll = static_cast<GstClockTime>(timings.statePoll.count()) * GST_MSECOND;
    const QFileInfo file(request.source);

    // Every early exit of this block leaves the result in the record.
    [&] {
        if (!file.exists() || !file.isFile()) {
            fail(Offline, QString::fromUtf8(deck_text::kMediaOffline));
            return;
        }
        if (stopRequested())
            return;

        const bool still = options.detectStill && isStillImage(request.source);
        if (!applyStillFilter(playbin, still)) {
            fail(Failed, QString::fromUtf8(deck_text::kStillFilter));
            return;
        }
        m_isStill = still;
        if (still) {
            request.inMs = 0;
            request.outMs = -1;
        }
        if (stopRequested())
            return;

        gchar *uri = gst_filename_to_uri(QFile::encodeName(file.absoluteFilePath()).constData(),
                                         nullptr);
        g_object_set(playbin, "uri", uri, nullptr);
        g_free(uri);
        if (gst_element_set_state(playbin, GST_STATE_PAUSED) == GST_STATE_CHANGE_FAILURE) {
            failFromBus(playbin, QString::fromUtf8(deck_text::kPreparePipeline));
            return;
        }

        const bool seekNeeded = request.inMs != 0 || request.outMs >= 0 || request.rate != 1.0;
        bool seeked = false;
        while (!stopRequested()) {
            GstState current = GST_STATE_VOID_PENDING;
            GstState pending = GST_STATE_VOID_PENDING;
            const GstStateChangeReturn state =
                gst_element_get_state(playbin, &current, &pending, statePoll);
            if (state == GST_STATE_CHANGE_FAILURE) {
                failFromBus(playbin, QString::fromUtf8(deck_text::kPreparePipeline));
                return;
            }
            if (state != GST_STATE_CHANGE_SUCCESS || current != GST_STATE_PAUSED
                || pending != GST_STATE_VOID_PENDING)
                continue;

            gint videoStreams = 0;
            gint audioStreams = 0;
            g_object_get(playbin, "n-video", &videoStreams, "n-audio", &audioStreams, nullptr);
            m_hasVideo = videoStreams > 0;
            m_hasAudio = audioStreams > 0;
            if (!m_hasVideo && !m_hasAudio) {
                fail(Failed, QString::fromUtf8(deck_text::kNoStreams));
                return;
            }
            if (!seekNeeded) {
                fail(Prepared, QString());
                return;
            }
            if (seeked) {
                gint64 position = 0;
                if (gst_element_query_position(playbin, GST_FORMAT_TIME, &position)
                    && std::llabs(nsToMs(position) - request.inMs) < timings.seekTolerance.count()) {
                    fail(Prepared, QString());
                    return;
                }
                std::this_thread::sleep_for(timings.seekRetryStep);
                continue;
            }

            gint64 duration = 0;
            if (gst_element_query_duration(playbin, GST_FORMAT_TIME, &duration) && duration >= 1) {
                const qint64 durationMs = nsToMs(duration);
                if (request.inMs >= durationMs || request.outMs > durationMs) {
                    fail(Failed, QString::fromUtf8(deck_text::kPointsExceedDuration));
                    return;
                }
            }
            const bool hasOut = request.outMs >= 0;
            if (!gst_element_seek(playbin, request.rate, GST_FORMAT_TIME,
                                  static_cast<GstSeekFlags>(GST_SEEK_FLAG_FLUSH
                                                            | GST_SEEK_FLAG_ACCURATE),
                                  GST_SEEK_TYPE_SET, request.inMs * GST_MSECOND,
                                  hasOut ? GST_SEEK_TYPE_SET : GST_SEEK_TYPE_NONE,
                                  hasOut ? request.outMs * GST_MSECOND : GST_CLOCK_TIME_NONE)) {
                fail(Failed, QString::fromUtf8(deck_text::kPreparePoints));
                return;
            }
            seeked = true;
        }
    }();

    // The playbin is let go of before finished is published, so a stop that
    // waits for this worker holds the last references itself.
    gst_object_unref(playbin);
    {
        std::lock_guard lock(m_mutex);
        m_timedOut = m_deadline.hasExpired();
        m_finished.store(true, std::memory_order_release);
    }
    m_condition.notify_all();
}

} // namespace tarnix
