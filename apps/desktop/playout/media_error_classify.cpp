#include "playout/media_error_classify.h"

namespace tarnix {

bool isOfflineError(const GError *error)
{
    if (!error || error->domain != GST_RESOURCE_ERROR)
        return false;
    return error->code == GST_RESOURCE_ERROR_NOT_FOUND
           || error->code == GST_RESOURCE_ERROR_OPEN_READ || error->code == GST_RESOURCE_ERROR_READ;
}

MediaErrorClass classifyPendingError(GstBus *bus, const QString &fallbackText)
{
    MediaErrorClass result{false, fallbackText};
    if (!bus)
        return result;
    GstMessage *message = gst_bus_pop_filtered(bus, GST_MESSAGE_ERROR);
    if (!message)
        return result;
    GError *error = nullptr;
    gst_message_parse_error(message, &error, nullptr);
    if (error) {
        if (error->message && *error->message)
            result.text = QString::fromUtf8(error->message);
        result.offline = isOfflineError(error);
        g_error_free(error);
    }
    gst_message_unref(message);
    return result;
}

} // namespace tarnix
