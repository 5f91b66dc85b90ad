#include "playout/media_error_classify.h"

namespace tarnix {

bool isOfflineError(const GError *error)
{
    if (!error || error->domain != GST_RESOURCE_ERROR)
        return false;
    return error->code == GST_RESOURCE_ERROR_NOT_FOUND
           || error->code == GST_RESOURCE_ERROR_OPEN_READ || error->code == GST_RESOURCE_ERROR_READ;
}

MediaErrorClass classifyError(GstMessage *message, const QString &fallbackText)
{
    MediaErrorClass result{false, fallbackText};
    GError *error = nullptr;
    gchar *debug = nullptr;
    gst_message_parse_error(message, &error, &debug);
    if (error) {
        if (error->message && *error->message)
            result.text = QString::fromUtf8(error->message);
        result.offline = isOfflineError(error);
        result.notLinked = error->domain == GST_STREAM_ERROR && debug && g_strrstr(debug, "not-linked");
        g_error_free(error);
    }
    g_free(debug);
    return result;
}

MediaErrorClass classifyPendingError(GstBus *bus, const QString &fallbackText)
{
    if (!bus)
        return {false, fallbackText};
    GstMessage *message = gst_bus_pop_filtered(bus, GST_MESSAGE_ERROR);
    if (!message)
        return {false, fallbackText};
    MediaErrorClass result = classifyError(message, fallbackText);
    gst_message_unref(message);
    return result;
}

} // namespace tarnix
