#include "playout/dsk_pipeline.h"

#include "playout/dsk_texts.h"
#include "playout/playbin_control.h"
#include "shell/gst_bin_parts.h"
#include "shell/log_categories.h"

namespace tarnix {
namespace {

// No scaling here: the compositor fits the layer by its display aspect and
// keeps its alpha. Two buffers at most, the older dropped, so decoding never
// waits for the compositor.
constexpr char kVideoBinDescription[] =
    "queue max-size-buffers=2 max-size-bytes=0 max-size-time=0 ! videoconvert ! video/x-raw,format=BGRA ! "
    "appsink name=%1 max-buffers=2 drop=true wait-on-eos=false sync=true qos=false enable-last-sample=false";

// playbin's "flags" bit for the audio stream.
constexpr guint kPlayFlagAudio = 1u << 1;

void setError(QString *error, const QString &text)
{
    if (error)
        *error = text;
}

} // namespace

std::shared_ptr<DskPipeline> DskPipeline::create(const Options &options, QString *error)
{
    if (!elementFactoriesExist({"playbin", "queue", "videoconvert", "appsink", "fakesink"})) {
        qCWarning(lcPlayout()).noquote() << dsk_text::kElementsUnavailable;
        setError(error, QString::fromUtf8(dsk_text::kElementsUnavailable));
        return nullptr;
    }
    const QString prefix = QStringLiteral("dsk-%1").arg(options.index);
    auto pipeline = std::make_shared<DskPipeline>();
    GstElement *playbin = gst_element_factory_make("playbin", (prefix + QStringLiteral("-player")).toUtf8().constData());
    GstElement *discard =
        gst_element_factory_make("fakesink", (prefix + QStringLiteral("-audio-discard")).toUtf8().constData());
    if (!playbin || !discard) {
        if (playbin)
            gst_object_unref(gst_object_ref_sink(playbin));
        if (discard)
            gst_object_unref(gst_object_ref_sink(discard));
        setError(error, QString::fromUtf8(dsk_text::kNoPlaybin));
        return nullptr;
    }
    pipeline->playbin = GST_ELEMENT(gst_object_ref_sink(playbin));
    pipeline->audioDiscard = GST_ELEMENT(gst_object_ref_sink(discard));
    g_object_set(pipeline->audioDiscard, "sync", FALSE, "async", FALSE, "enable-last-sample", FALSE, nullptr);

    const QString sinkName = prefix + QStringLiteral("-video-appsink");
    QString parseError;
    GstElement *videoBin = parseOwnedBin(QString::fromLatin1(kVideoBinDescription).arg(sinkName), &parseError);
    if (!videoBin) {
        qCWarning(lcPlayout()).noquote() << dsk_text::kVideoOutputParse << parseError;
        setError(error, QString::fromUtf8(dsk_text::kVideoOutputParse) + QLatin1Char(' ') + parseError);
        return nullptr;
    }
    pipeline->appsink = childElement(videoBin, sinkName);
    if (!pipeline->appsink) {
        gst_object_unref(videoBin);
        setError(error, QString::fromUtf8(dsk_text::kVideoOutputParse));
        return nullptr;
    }
    g_object_set(pipeline->playbin, "video-sink", videoBin, nullptr);
    gst_object_unref(videoBin);
    if (!pipeline->enforceAudioIsolation()) {
        qCWarning(lcPlayout()).noquote() << dsk_text::kIsolationLog;
        setError(error, QString::fromUtf8(dsk_text::kIsolation.english));
        return nullptr;
    }

    pipeline->bus = gst_element_get_bus(pipeline->playbin);
    pipeline->busCallbacks = std::make_shared<DeckBusCallbacks>();
    pipeline->busCallbacks->set(options.busHandler, options.busUserData);
    DeckBusCallbacks::install(pipeline->bus, pipeline->busCallbacks);
    if (error)
        error->clear();
    return pipeline;
}

bool DskPipeline::enforceAudioIsolation() const
{
    if (!playbin || !audioDiscard)
        return false;
    guint flags = 0;
    g_object_get(playbin, "flags", &flags, nullptr);
    g_object_set(playbin, "flags", flags & ~kPlayFlagAudio, "mute", TRUE, "volume", 0.0, "audio-sink", audioDiscard,
                 nullptr);

    gboolean mute = FALSE;
    gdouble volume = -1.0;
    GstElement *sink = nullptr;
    g_object_get(playbin, "flags", &flags, "mute", &mute, "volume", &volume, "audio-sink", &sink, nullptr);
    const bool sinkHolds = sink == audioDiscard;
    if (sink)
        gst_object_unref(sink);
    return (flags & kPlayFlagAudio) == 0 && mute && volume == 0.0 && sinkHolds;
}

DskPipeline::~DskPipeline()
{
    if (busCallbacks)
        busCallbacks->clear();
    const bool confirmed = shutdownConfirmed.load(std::memory_order_acquire)
                           || (!handedToWorker.load(std::memory_order_acquire) && readsNullNow(playbin));
    if (!confirmed) {
        qCWarning(lcPlayout()).noquote() << dsk_text::kUnsafeRelease;
        return;
    }
    if (bus) {
        gst_bus_set_sync_handler(bus, nullptr, nullptr, nullptr);
        gst_object_unref(bus);
    }
    for (GstElement *element : {appsink, audioDiscard, playbin}) {
        if (element)
            gst_object_unref(element);
    }
}

} // namespace tarnix
