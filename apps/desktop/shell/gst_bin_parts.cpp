#include "shell/gst_bin_parts.h"

namespace tarnix {

GstElement *parseOwnedBin(const QString &description, QString *errorText)
{
    GError *error = nullptr;
    GstElement *bin = gst_parse_bin_from_description(description.toUtf8().constData(), TRUE, &error);
    if (bin)
        gst_object_ref_sink(bin);
    if (error || !bin) {
        if (errorText)
            *errorText = error && error->message ? QString::fromUtf8(error->message)
                                                 : QStringLiteral("no bin was created");
        if (error)
            g_error_free(error);
        if (bin)
            gst_object_unref(bin);
        return nullptr;
    }
    return bin;
}

bool elementFactoriesExist(std::initializer_list<const char *> names)
{
    for (const char *name : names) {
        GstElementFactory *factory = gst_element_factory_find(name);
        if (!factory)
            return false;
        gst_object_unref(factory);
    }
    return true;
}

GstElement *childElement(GstElement *bin, const QString &name)
{
    return bin && GST_IS_BIN(bin) ? gst_bin_get_by_name(GST_BIN(bin), name.toUtf8().constData()) : nullptr;
}

GstElement *audioSinkChild(GstElement *playbin, const QString &name)
{
    if (!playbin)
        return nullptr;
    GstElement *audioBin = nullptr;
    g_object_get(playbin, "audio-sink", &audioBin, nullptr);
    if (!audioBin)
        return nullptr;
    GstElement *child = childElement(audioBin, name);
    gst_object_unref(audioBin);
    return child;
}

} // namespace tarnix
