#include "playout/bgm_pipeline.h"

#include "playout/playbin_control.h"
#include "audio/audio_elements.h"
#include "playout/bgm_texts.h"
#include "shell/gst_bin_parts.h"
#include "shell/log_categories.h"

namespace tarnix {
namespace {

constexpr char kAudioBinDescription[] =
    "audioconvert ! audioresample ! "
    "audio/x-raw,format=F32LE,rate=48000,channels=2,layout=interleaved ! "
    "level name=bgm-input-audio-level post-messages=true interval=5000000 ! "
    "tarnixaudioequalizer name=bgm-item-eq ! tarnixaudiodelay name=bgm-item-delay ! "
    "volume name=bgm-item-audio-volume ! "
    "tarnixaudiosink name=bgm-audio-output channel=bgm-audio sync=true qos=false";

// playbin's "flags": audio only, so a video stream is never decoded.
constexpr guint kPlayFlagAudio = 1u << 1;

void setError(QString *error, const QString &text)
{
    if (error)
        *error = text;
}


} // namespace

std::shared_ptr<BgmPipeline> BgmPipeline::create(const Options &options, QString *error)
{
    QString registrationError;
    if (!registerAudioElements(&registrationError)) {
        setError(error, registrationError);
        return nullptr;
    }
    auto pipeline = std::make_shared<BgmPipeline>();
    GstElement *playbin = gst_element_factory_make("playbin", "bgm-player");
    if (!playbin) {
        setError(error, QString::fromUtf8(bgm_text::kNoPlaybin));
        return nullptr;
    }
    pipeline->playbin = GST_ELEMENT(gst_object_ref_sink(playbin));

    QString parseError;
    GstElement *audioBin = parseOwnedBin(QString::fromLatin1(kAudioBinDescription), &parseError);
    if (!audioBin) {
        qCWarning(lcPlayout()).noquote() << bgm_text::kAudioOutputParse << parseError;
        setError(error, QString::fromUtf8(bgm_text::kAudioOutputParse) + QLatin1Char(' ') + parseError);
        return nullptr;
    }
    pipeline->inputLevel = childElement(audioBin, QStringLiteral("bgm-input-audio-level"));
    pipeline->equalizer = childElement(audioBin, QStringLiteral("bgm-item-eq"));
    pipeline->delay = childElement(audioBin, QStringLiteral("bgm-item-delay"));
    pipeline->volume = childElement(audioBin, QStringLiteral("bgm-item-audio-volume"));
    if (!pipeline->inputLevel || !pipeline->equalizer || !pipeline->delay || !pipeline->volume) {
        setError(error, QString::fromUtf8(bgm_text::kAudioOutputParse));
        gst_object_unref(audioBin);
        return nullptr;
    }
    g_object_set(pipeline->playbin, "audio-sink", audioBin, "flags", kPlayFlagAudio, nullptr);
    gst_object_unref(audioBin);

    pipeline->bus = gst_element_get_bus(pipeline->playbin);
    pipeline->busCallbacks = std::make_shared<DeckBusCallbacks>();
    pipeline->busCallbacks->set(options.busHandler, options.busUserData);
    DeckBusCallbacks::install(pipeline->bus, pipeline->busCallbacks);
    if (error)
        error->clear();
    return pipeline;
}

GstElement *BgmPipeline::findAudioOutput() const
{
    return audioSinkChild(playbin, QStringLiteral("bgm-audio-output"));
}

BgmPipeline::~BgmPipeline()
{
    if (busCallbacks)
        busCallbacks->clear();
    const bool confirmed = shutdownConfirmed.load(std::memory_order_acquire)
                           || (!handedToWorker.load(std::memory_order_acquire) && readsNullNow(playbin));
    if (!confirmed) {
        qCWarning(lcPlayout()).noquote() << bgm_text::kUnsafeRelease;
        return;
    }
    if (bus) {
        gst_bus_set_sync_handler(bus, nullptr, nullptr, nullptr);
        gst_object_unref(bus);
    }
    for (GstElement *element : {inputLevel, equalizer, delay, volume, playbin}) {
        if (element)
            gst_object_unref(element);
    }
}

} // namespace tarnix
