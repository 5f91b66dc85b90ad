#include "playout/deck_pipeline.h"

#include "playout/playbin_control.h"
#include "shell/gst_bin_parts.h"

#include "audio/audio_elements.h"
#include "playout/deck_texts.h"
#include "shell/log_categories.h"

#include <initializer_list>

namespace tarnix {
namespace {

// The GPU upload and conversion of the Windows build become one CPU step
// that converts and letterboxes into RGBA of the output size. The appsink
// drops the oldest of its two buffers so decoding never waits on the
// presenter.
constexpr char kVideoBinDescription[] =
    "queue name=%1 max-size-buffers=2 max-size-bytes=0 max-size-time=0 ! "
    "videoconvertscale add-borders=true ! "
    "video/x-raw,format=RGBA,width=%3,height=%4,pixel-aspect-ratio=1/1 ! "
    "appsink name=%2 max-buffers=2 drop=true wait-on-eos=false sync=true qos=false "
    "enable-last-sample=false";

constexpr char kAudioBinDescription[] =
    "audioconvert ! audioresample ! "
    "audio/x-raw,format=F32LE,rate=48000,channels=2,layout=interleaved ! "
    "scaletempo name=%1-playback-tempo ! "
    "level name=%1-input-audio-level post-messages=true interval=5000000 ! "
    "volume name=%1-item-audio-volume ! "
    "tarnixaudiosink name=%1-audio-output channel=%1-audio sync=true qos=false";

void setError(QString *error, const QString &text)
{
    if (error)
        *error = text;
}

// Elements that never left NULL may be dropped at once: no thread of theirs
// can be running.

} // namespace

QString DeckPipeline::deckName(int deckIndex)
{
    return deckIndex == 0 ? QStringLiteral("deck-a") : QStringLiteral("deck-b");
}

std::shared_ptr<DeckPipeline> DeckPipeline::create(const Options &options, QString *error)
{
    if (options.deckIndex < 0 || options.deckIndex > 1) {
        setError(error, QStringLiteral("Deck index %1 is out of range.").arg(options.deckIndex));
        return nullptr;
    }
    QString registrationError;
    if (!registerAudioElements(&registrationError)) {
        setError(error, registrationError);
        return nullptr;
    }
    if (!elementFactoriesExist({"scaletempo"})) {
        qCWarning(lcPlayout()).noquote() << deck_text::kScaletempoMissing;
        setError(error, QString::fromUtf8(deck_text::kScaletempoMissing));
        return nullptr;
    }

    const QString name = deckName(options.deckIndex);
    auto pipeline = std::make_shared<DeckPipeline>();
    pipeline->deckIndex = options.deckIndex;
    GstElement *playbin = gst_element_factory_make(
        "playbin", (name + QStringLiteral("-player")).toUtf8().constData());
    if (!playbin) {
        setError(error, QStringLiteral("Could not create the deck playbin."));
        return nullptr;
    }
    pipeline->playbin = GST_ELEMENT(gst_object_ref_sink(playbin));

    if (!elementFactoriesExist({"videoconvertscale", "appsink"})) {
        qCWarning(lcPlayout()).noquote() << deck_text::kVideoElementsMissing;
        setError(error, QString::fromUtf8(deck_text::kVideoElementsMissing));
        return nullptr;
    }
    QString parseError;
    GstElement *videoBin = parseOwnedBin(QString::fromLatin1(kVideoBinDescription)
                                        .arg(name + QStringLiteral("-video-input"),
                                             name + QStringLiteral("-video-appsink"))
                                        .arg(options.width)
                                        .arg(options.height),
                                    &parseError);
    if (!videoBin) {
        qCWarning(lcPlayout()).noquote() << deck_text::kVideoOutputParse << parseError;
        setError(error, QString::fromUtf8(deck_text::kVideoOutputParse) + QLatin1Char(' ')
                            + parseError);
        return nullptr;
    }
    GstElement *audioBin =
        parseOwnedBin(QString::fromLatin1(kAudioBinDescription).arg(name), &parseError);
    if (!audioBin) {
        qCWarning(lcPlayout()).noquote() << deck_text::kAudioOutputParse << parseError;
        setError(error, QString::fromUtf8(deck_text::kAudioOutputParse) + QLatin1Char(' ')
                            + parseError);
        gst_object_unref(videoBin);
        return nullptr;
    }

    pipeline->levelElement = childElement(audioBin, name + QStringLiteral("-input-audio-level"));
    pipeline->volumeElement = childElement(audioBin, name + QStringLiteral("-item-audio-volume"));
    pipeline->appsink = childElement(videoBin, name + QStringLiteral("-video-appsink"));
    if (!pipeline->levelElement || !pipeline->volumeElement || !pipeline->appsink) {
        setError(error, QStringLiteral("Could not find the deck's level, volume or appsink."));
        gst_object_unref(videoBin);
        gst_object_unref(audioBin);
        return nullptr;
    }

    g_object_set(pipeline->playbin, "video-sink", videoBin, "audio-sink", audioBin, nullptr);
    gst_object_unref(videoBin);
    gst_object_unref(audioBin);

    pipeline->bus = gst_element_get_bus(pipeline->playbin);
    pipeline->busCallbacks = std::make_shared<DeckBusCallbacks>();
    pipeline->busCallbacks->set(options.busHandler, options.busUserData);
    DeckBusCallbacks::install(pipeline->bus, pipeline->busCallbacks);
    if (error)
        error->clear();
    return pipeline;
}

GstElement *DeckPipeline::findAudioOutput() const
{
    return audioSinkChild(playbin, deckName(deckIndex) + QStringLiteral("-audio-output"));
}

DeckPipeline::~DeckPipeline()
{
    if (busCallbacks)
        busCallbacks->clear();
    const bool confirmed = shutdownConfirmed.load(std::memory_order_acquire)
                           || (!handedToWorker.load(std::memory_order_acquire)
                               && readsNullNow(playbin));
    if (!confirmed) {
        qCWarning(lcPlayout()).noquote()
            << QStringLiteral("%1 for deck %2").arg(QString::fromUtf8(deck_text::kRetainResources))
                   .arg(deckIndex);
        return;
    }
    if (bus) {
        gst_bus_set_sync_handler(bus, nullptr, nullptr, nullptr);
        gst_object_unref(bus);
    }
    for (GstElement *element : {levelElement, volumeElement, playbin, appsink}) {
        if (element)
            gst_object_unref(element);
    }
}

} // namespace tarnix
