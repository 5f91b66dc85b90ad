#include "audio/audio_elements.h"

#include "audio/tarnix_audio_sink.h"

#include <mutex>

namespace tarnix {

bool registerAudioElements(QString *error)
{
    if (!gst_is_initialized()) {
        if (error)
            *error = QStringLiteral("GStreamer is not initialised.");
        return false;
    }
    static std::once_flag once;
    static bool registered = false;
    std::call_once(once, [] {
        registered = gst_element_register(nullptr, "tarnixaudiosink", GST_RANK_NONE,
                                          tarnix_audio_sink_get_type());
    });
    if (!registered) {
        if (error)
            *error = QStringLiteral("Could not register the element tarnixaudiosink.");
        return false;
    }
    if (error)
        error->clear();
    return true;
}

bool abortSender(GstElement *element)
{
    return tarnix_audio_sink_abort_sender(element);
}

} // namespace tarnix
