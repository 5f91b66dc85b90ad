#include "support/fake_device_sink.h"

#include <gst/base/gstbasesink.h>

#include <cstring>
#include <mutex>

namespace {

struct FakeDeviceSink {
    GstBaseSink parent;
    gchar *device; // guarded by the object lock
};

struct FakeDeviceSinkClass {
    GstBaseSinkClass parent;
};

GType fake_device_sink_get_type();
G_DEFINE_TYPE(FakeDeviceSink, fake_device_sink, GST_TYPE_BASE_SINK)

enum { PROP_0, PROP_DEVICE };

GstStaticPadTemplate sinkTemplate = GST_STATIC_PAD_TEMPLATE(
    "sink", GST_PAD_SINK, GST_PAD_ALWAYS, GST_STATIC_CAPS("audio/x-raw"));

void fake_device_sink_set_property(GObject *object, guint id, const GValue *value, GParamSpec *pspec)
{
    auto *self = reinterpret_cast<FakeDeviceSink *>(object);
    if (id != PROP_DEVICE) {
        G_OBJECT_WARN_INVALID_PROPERTY_ID(object, id, pspec);
        return;
    }
    GST_OBJECT_LOCK(self);
    g_free(self->device);
    self->device = g_value_dup_string(value);
    GST_OBJECT_UNLOCK(self);
}

void fake_device_sink_get_property(GObject *object, guint id, GValue *value, GParamSpec *pspec)
{
    auto *self = reinterpret_cast<FakeDeviceSink *>(object);
    if (id != PROP_DEVICE) {
        G_OBJECT_WARN_INVALID_PROPERTY_ID(object, id, pspec);
        return;
    }
    GST_OBJECT_LOCK(self);
    g_value_set_string(value, self->device);
    GST_OBJECT_UNLOCK(self);
}

void fake_device_sink_finalize(GObject *object)
{
    g_free(reinterpret_cast<FakeDeviceSink *>(object)->device);
    G_OBJECT_CLASS(fake_device_sink_parent_class)->finalize(object);
}

GstStateChangeReturn fake_device_sink_change_state(GstElement *element, GstStateChange transition)
{
    auto *self = reinterpret_cast<FakeDeviceSink *>(element);
    if (transition == GST_STATE_CHANGE_PAUSED_TO_PLAYING) {
        GST_OBJECT_LOCK(self);
        const bool known = !self->device || std::strcmp(self->device, "onair") == 0 ||
                           std::strcmp(self->device, "other") == 0;
        const bool stall = self->device && std::strcmp(self->device, "stall") == 0;
        GST_OBJECT_UNLOCK(self);
        if (stall)
            return GST_STATE_CHANGE_ASYNC;
        if (!known)
            return GST_STATE_CHANGE_FAILURE;
    }
    return GST_ELEMENT_CLASS(fake_device_sink_parent_class)->change_state(element, transition);
}

GstFlowReturn fake_device_sink_render(GstBaseSink *, GstBuffer *)
{
    return GST_FLOW_OK;
}

// A device that cannot be opened accepts no format at all, as a sound
// server's sink answers for a device that is not there.
GstCaps *fake_device_sink_get_caps(GstBaseSink *base, GstCaps *filter)
{
    GST_OBJECT_LOCK(base);
    const gchar *device = reinterpret_cast<FakeDeviceSink *>(base)->device;
    const bool absent = device && std::strcmp(device, "absent") == 0;
    GST_OBJECT_UNLOCK(base);
    if (absent)
        return gst_caps_new_empty();
    GstCaps *caps = gst_pad_get_pad_template_caps(GST_BASE_SINK_PAD(base));
    if (!filter)
        return caps;
    GstCaps *result = gst_caps_intersect_full(filter, caps, GST_CAPS_INTERSECT_FIRST);
    gst_caps_unref(caps);
    return result;
}

void fake_device_sink_class_init(FakeDeviceSinkClass *klass)
{
    GObjectClass *objectClass = G_OBJECT_CLASS(klass);
    GstElementClass *elementClass = GST_ELEMENT_CLASS(klass);
    objectClass->set_property = fake_device_sink_set_property;
    objectClass->get_property = fake_device_sink_get_property;
    objectClass->finalize = fake_device_sink_finalize;
    g_object_class_install_property(
        objectClass, PROP_DEVICE,
        g_param_spec_string("device", "Device", "Output device", nullptr,
                            GParamFlags(G_PARAM_READWRITE | G_PARAM_STATIC_STRINGS)));
    gst_element_class_set_static_metadata(elementClass, "Test device sink", "Sink/Audio",
                                          "Refuses unknown devices", "TARNIX tests");
    gst_element_class_add_static_pad_template(elementClass, &sinkTemplate);
    elementClass->change_state = fake_device_sink_change_state;
    GST_BASE_SINK_CLASS(klass)->render = fake_device_sink_render;
    GST_BASE_SINK_CLASS(klass)->get_caps = fake_device_sink_get_caps;
}

void fake_device_sink_init(FakeDeviceSink *self)
{
    self->device = nullptr;
    gst_base_sink_set_sync(GST_BASE_SINK(self), TRUE);
}

} // namespace

namespace tarnix::test {

bool registerFakeDeviceSink()
{
    static std::once_flag once;
    static bool registered = false;
    std::call_once(once, [] {
        registered = gst_element_register(nullptr, "tarnixtestdevicesink", GST_RANK_NONE,
                                          fake_device_sink_get_type());
    });
    return registered;
}

} // namespace tarnix::test
