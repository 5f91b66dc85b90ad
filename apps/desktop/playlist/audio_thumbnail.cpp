#include "playlist/audio_thumbnail.h"

#include "shell/low_priority_threads.h"

#include "playlist/thumbnail_cards.h"
#include "playlist/thumbnail_pipeline.h"

#include <gst/pbutils/pbutils.h>

#include <QFileInfo>
#include <QUrl>

#include <algorithm>
#include <cmath>
#include <vector>

namespace tarnix {

namespace {

// A waveform of a few hundred columns needs no more than this; a low rate
// keeps the resampler and the reading cheap.
constexpr int kWaveformSampleRate = 8000;

constexpr auto kAudioPipeline =
    "uridecodebin name=source ! queue max-size-buffers=16 ! audioconvert ! audioresample ! "
    "audio/x-raw,format=F32LE,channels=1,rate=%1,layout=interleaved ! "
    "appsink name=thumbnail_sink sync=false max-buffers=64 drop=false";

constexpr std::chrono::milliseconds kPullSlice{50};

QByteArray pictureOfTags(const GstTagList *tags)
{
    if (!tags)
        return {};
    for (const char *tag : {GST_TAG_IMAGE, GST_TAG_PREVIEW_IMAGE}) {
        GstSample *sample = nullptr;
        if (!gst_tag_list_get_sample(tags, tag, &sample))
            continue;
        QByteArray bytes;
        GstMapInfo map;
        GstBuffer *buffer = gst_sample_get_buffer(sample);
        if (buffer && gst_buffer_map(buffer, &map, GST_MAP_READ)) {
            bytes = QByteArray(reinterpret_cast<const char *>(map.data), qsizetype(map.size));
            gst_buffer_unmap(buffer, &map);
        }
        gst_sample_unref(sample);
        if (!bytes.isEmpty())
            return bytes;
    }
    return {};
}

QString codecOfStream(GstDiscovererStreamInfo *stream)
{
    gchar *name = nullptr;
    const GstTagList *tags = gst_discoverer_stream_info_get_tags(stream);
    if (tags && gst_tag_list_get_string(tags, GST_TAG_AUDIO_CODEC, &name)) {
        const QString codec = QString::fromUtf8(name);
        g_free(name);
        return codec;
    }
    // Without a tag, the stream's format says what it is.
    GstCaps *caps = gst_discoverer_stream_info_get_caps(stream);
    if (!caps)
        return {};
    name = gst_pb_utils_get_codec_description(caps);
    gst_caps_unref(caps);
    const QString codec = QString::fromUtf8(name);
    g_free(name);
    return codec;
}

void readStreams(GstDiscovererInfo *info, AudioFileFacts &facts)
{
    facts.albumArt = pictureOfTags(gst_discoverer_info_get_tags(info));
    GList *streams = gst_discoverer_info_get_audio_streams(info);
    for (GList *l = streams; l; l = l->next) {
        auto *stream = GST_DISCOVERER_STREAM_INFO(l->data);
        if (facts.codec.isEmpty())
            facts.codec = codecOfStream(stream);
        if (facts.albumArt.isEmpty())
            facts.albumArt = pictureOfTags(gst_discoverer_stream_info_get_tags(stream));
    }
    gst_discoverer_stream_info_list_free(streams);
}

// Peak level per column: the loudest sample that falls into it. The column
// of a sample follows from the length the discoverer told.
class PeakColumns
{
public:
    PeakColumns(int columns, qint64 durationMs)
        : m_peaks(size_t(std::max(columns, 1)), 0.0f)
        , m_expectedSamples(std::max<qint64>(1, durationMs * kWaveformSampleRate / 1000))
    {
    }

    void add(const float *samples, size_t count)
    {
        const qint64 last = qint64(m_peaks.size()) - 1;
        for (size_t i = 0; i < count; ++i, ++m_samples) {
            const qint64 column = std::min(last, m_samples * qint64(m_peaks.size()) / m_expectedSamples);
            float &peak = m_peaks[size_t(column)];
            peak = std::max(peak, std::abs(samples[i]));
        }
    }

    qint64 samples() const { return m_samples; }
    const std::vector<float> &peaks() const { return m_peaks; }

private:
    std::vector<float> m_peaks;
    qint64 m_expectedSamples;
    qint64 m_samples = 0;
};

void addSample(GstSample *sample, PeakColumns &columns)
{
    GstBuffer *buffer = gst_sample_get_buffer(sample);
    GstMapInfo map;
    if (!buffer || !gst_buffer_map(buffer, &map, GST_MAP_READ))
        return;
    columns.add(reinterpret_cast<const float *>(map.data), map.size / sizeof(float));
    gst_buffer_unmap(buffer, &map);
}

// Reads the file to its end, reducing as it goes. An empty string means the
// peaks are complete.
QString readWaveform(const PendingThumbnail &request, const ThumbnailLimits &limits, PeakColumns &columns)
{
    const auto started = std::chrono::steady_clock::now();
    ThumbnailPipeline pipeline(QString::fromLatin1(kAudioPipeline).arg(kWaveformSampleRate),
                               limits.nullConfirmation);
    GstObjectReference source(pipeline.element("source"));
    GstObjectReference sink(pipeline.element("thumbnail_sink"));
    if (!pipeline || !source.object || !sink.object || !GST_IS_APP_SINK(sink.object))
        return QStringLiteral("Could not create the audio waveform output.");
    const QByteArray uri = QUrl::fromLocalFile(request.path).toEncoded(QUrl::FullyEncoded);
    g_object_set(source.object, "uri", uri.constData(), nullptr);
    GstObjectReference bus(gst_element_get_bus(pipeline.get()));
    if (gst_element_set_state(pipeline.get(), GST_STATE_PLAYING) == GST_STATE_CHANGE_FAILURE)
        return QStringLiteral("Could not open the audio.");
    auto *appSink = GST_APP_SINK(sink.object);
    for (;;) {
        if (request.cancelled.load())
            return QStringLiteral("Audio waveform generation was canceled.");
        if (std::chrono::steady_clock::now() - started >= limits.waveformLimit)
            return QStringLiteral("Audio waveform generation timed out.");
        if (GstMessage *error = gst_bus_pop_filtered(GST_BUS(bus.object), GST_MESSAGE_ERROR)) {
            gst_message_unref(error);
            return columns.samples() > 0 ? QStringLiteral("Could not retrieve audio samples.")
                                         : QStringLiteral("Could not open the audio.");
        }
        if (GstSample *sample = gst_app_sink_try_pull_sample(appSink, kPullSlice.count() * GST_MSECOND)) {
            addSample(sample, columns);
            gst_sample_unref(sample);
        } else if (gst_app_sink_is_eos(appSink)) {
            break;
        }
    }
    return columns.samples() > 0 ? QString() : QStringLiteral("Could not retrieve audio samples.");
}

} // namespace

AudioFileFacts probeAudioFile(const QString &path, std::chrono::milliseconds timeout)
{
    AudioFileFacts facts;
    GError *error = nullptr;
    GstDiscoverer *discoverer = gst_discoverer_new(GstClockTime(timeout.count()) * GST_MSECOND, &error);
    g_clear_error(&error);
    if (!discoverer)
        return facts;
    runDiscovererThreadsAtNiceness(discoverer, thisThreadsNiceness());
    const QByteArray uri = QUrl::fromLocalFile(path).toEncoded(QUrl::FullyEncoded);
    GstDiscovererInfo *info = gst_discoverer_discover_uri(discoverer, uri.constData(), &error);
    g_clear_error(&error);
    g_object_unref(discoverer);
    if (!info)
        return facts;
    if (gst_discoverer_info_get_result(info) == GST_DISCOVERER_OK) {
        facts.opened = true;
        const GstClockTime duration = gst_discoverer_info_get_duration(info);
        if (GST_CLOCK_TIME_IS_VALID(duration) && duration / GST_MSECOND > 0)
            facts.durationMs = qint64(duration / GST_MSECOND);
        readStreams(info, facts);
    }
    gst_discoverer_info_unref(info);
    return facts;
}

MediaThumbnailResult makeAudioThumbnail(const PendingThumbnail &request, const ThumbnailLimits &limits,
                                        const AudioFactsProbe &probe)
{
    MediaThumbnailResult result;
    result.mediaType = PlaylistMediaType::audio;
    const AudioFileFacts facts = probe ? probe(request.path) : probeAudioFile(request.path, limits.prerollWait);
    if (request.cancelled.load()) {
        result.error = QStringLiteral("Audio waveform generation was canceled.");
        return result;
    }
    if (!facts.opened) {
        result.error = QStringLiteral("Could not open the audio.");
        return result;
    }
    result.durationMs = facts.durationMs;
    result.audioCodec = facts.codec;
    if (request.preferAlbumArt && !facts.albumArt.isEmpty()) {
        const QImage art = QImage::fromData(facts.albumArt);
        if (!art.isNull()) {
            result.image = fitOntoCard(art, request.size);
            result.success = true;
            return result;
        }
    }
    if (!facts.durationMs) {
        result.error = QStringLiteral("Could not determine the audio duration.");
        return result;
    }
    if (*facts.durationMs > limits.longestWaveformMs) {
        result.image = paintPlaceholderCard(thumbnailCardLabel(request.path, PlaylistMediaType::audio), request.size);
        result.success = true;
        return result;
    }
    PeakColumns columns(request.size.width(), *facts.durationMs);
    const QString error = readWaveform(request, limits, columns);
    if (!error.isEmpty()) {
        result.error = error;
        return result;
    }
    result.image = paintWaveform(columns.peaks(), QFileInfo(request.path).fileName(), request.size);
    result.success = true;
    return result;
}

} // namespace tarnix
