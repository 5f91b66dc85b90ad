#include "audio/audio_elements.h"

#include "audio/audio_equalizer_dsp.h"
#include "audio/tarnix_audio_delay.h"
#include "audio/tarnix_audio_effects.h"
#include "audio/tarnix_audio_equalizer.h"
#include "audio/tarnix_audio_sink.h"
#include "audio/tarnix_audio_source.h"

#include <mutex>

namespace tarnix {

namespace {

// Registers once; a later call reports the first outcome.
template <typename Register>
bool registerOnce(std::once_flag &once, bool &outcome, Register registerTypes)
{
    if (!gst_is_initialized())
        return false;
    std::call_once(once, [&] { outcome = registerTypes(); });
    return outcome;
}

bool registerElement(const char *name, GType type)
{
    return gst_element_register(nullptr, name, GST_RANK_NONE, type);
}

GstElement *namedChild(GstElement *bin, const char *elementName)
{
    if (!bin || !GST_IS_BIN(bin) || !elementName)
        return nullptr;
    return gst_bin_get_by_name(GST_BIN(bin), elementName);
}

} // namespace

bool registerBridgeElements()
{
    static std::once_flag once;
    static bool outcome = false;
    return registerOnce(once, outcome, [] {
        return registerElement("tarnixaudiosink", TARNIX_TYPE_AUDIO_SINK) &&
               registerElement("tarnixaudiosrc", TARNIX_TYPE_AUDIO_SOURCE);
    });
}

bool registerDelayElement()
{
    static std::once_flag once;
    static bool outcome = false;
    return registerOnce(once, outcome,
                        [] { return registerElement("tarnixaudiodelay", TARNIX_TYPE_AUDIO_DELAY); });
}

bool registerEffectsElement()
{
    static std::once_flag once;
    static bool outcome = false;
    return registerOnce(once, outcome,
                        [] { return registerElement("tarnixaudioeffects", TARNIX_TYPE_AUDIO_EFFECTS); });
}

bool registerEqualizerElement()
{
    static std::once_flag once;
    static bool outcome = false;
    return registerOnce(once, outcome, [] {
        return registerElement("tarnixaudioequalizer", TARNIX_TYPE_AUDIO_EQUALIZER);
    });
}

bool registerAudioElements(QString *error)
{
    if (!gst_is_initialized()) {
        if (error)
            *error = QStringLiteral("GStreamer is not initialised.");
        return false;
    }
    const struct {
        bool (*registerTypes)();
        const char *names;
    } steps[] = {
        {registerBridgeElements, "tarnixaudiosink, tarnixaudiosrc"},
        {registerDelayElement, "tarnixaudiodelay"},
        {registerEffectsElement, "tarnixaudioeffects"},
        {registerEqualizerElement, "tarnixaudioequalizer"},
    };
    for (const auto &step : steps) {
        if (!step.registerTypes()) {
            if (error)
                *error = QStringLiteral("Could not register the element %1.")
                             .arg(QString::fromLatin1(step.names));
            return false;
        }
    }
    if (error)
        error->clear();
    return true;
}

bool setDelayFrames(GstElement *bin, const char *elementName, int frames)
{
    if (frames < 0 || frames > 6)
        return false;
    GstElement *delay = namedChild(bin, elementName);
    if (!delay)
        return false;
    const bool isDelay = TARNIX_IS_AUDIO_DELAY(delay);
    if (isDelay)
        g_object_set(delay, "frames", frames, nullptr);
    gst_object_unref(delay);
    return isDelay;
}

bool clearDelay(GstElement *bin, const char *elementName)
{
    GstElement *delay = namedChild(bin, elementName);
    if (!delay)
        return false;
    const bool isDelay = TARNIX_IS_AUDIO_DELAY(delay);
    if (isDelay)
        tarnix_audio_delay_clear(TARNIX_AUDIO_DELAY(delay));
    gst_object_unref(delay);
    return isDelay;
}

bool setEqBands(GstElement *element, double lowDb, double midDb, double highDb)
{
    if (!element || !(TARNIX_IS_AUDIO_EQUALIZER(element) || TARNIX_IS_AUDIO_EFFECTS(element)))
        return false;
    g_object_set(element, "band0", audio_dsp::clampBandGain(lowDb), "band1",
                 audio_dsp::clampBandGain(midDb), "band2", audio_dsp::clampBandGain(highDb), nullptr);
    return true;
}

bool setVstAudible(GstElement *element, bool audible)
{
    if (!element || !TARNIX_IS_AUDIO_EFFECTS(element))
        return false;
    g_object_set(element, "vst-audible", audible ? TRUE : FALSE, nullptr);
    return true;
}

bool abortSender(GstElement *element)
{
    return tarnix_audio_sink_abort_sender(element);
}

} // namespace tarnix
