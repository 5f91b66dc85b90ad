#include "support/refusing_element.h"

G_BEGIN_DECLS
#define TARNIX_TEST_TYPE_REFUSE_NULL (tarnix_test_refuse_null_get_type())
G_DECLARE_FINAL_TYPE(TarnixTestRefuseNull, tarnix_test_refuse_null, TARNIX_TEST, REFUSE_NULL,
                     GstElement)
G_END_DECLS

struct _TarnixTestRefuseNull {
    GstElement parent;
    gint refuseNull;
};

enum { PROP_0, PROP_REFUSE_NULL };

G_DEFINE_TYPE(TarnixTestRefuseNull, tarnix_test_refuse_null, GST_TYPE_ELEMENT)

static GstStateChangeReturn refuse_change_state(GstElement *element, GstStateChange transition)
{
    auto *self = TARNIX_TEST_REFUSE_NULL(element);
    if (transition == GST_STATE_CHANGE_READY_TO_NULL && g_atomic_int_get(&self->refuseNull))
        return GST_STATE_CHANGE_FAILURE;
    return GST_ELEMENT_CLASS(tarnix_test_refuse_null_parent_class)
        ->change_state(element, transition);
}

static void refuse_set_property(GObject *object, guint id, const GValue *value, GParamSpec *pspec)
{
    if (id == PROP_REFUSE_NULL)
        g_atomic_int_set(&TARNIX_TEST_REFUSE_NULL(object)->refuseNull, g_value_get_boolean(value));
    else
        G_OBJECT_WARN_INVALID_PROPERTY_ID(object, id, pspec);
}

static void refuse_get_property(GObject *object, guint id, GValue *value, GParamSpec *pspec)
{
    if (id == PROP_REFUSE_NULL)
        g_value_set_boolean(value, g_atomic_int_get(&TARNIX_TEST_REFUSE_NULL(object)->refuseNull));
    else
        G_OBJECT_WARN_INVALID_PROPERTY_ID(object, id, pspec);
}

static void tarnix_test_refuse_null_class_init(TarnixTestRefuseNullClass *klass)
{
    GObjectClass *objectClass = G_OBJECT_CLASS(klass);
    objectClass->set_property = refuse_set_property;
    objectClass->get_property = refuse_get_property;
    g_object_class_install_property(
        objectClass, PROP_REFUSE_NULL,
        g_param_spec_boolean("refuse-null", "Refuse NULL", "Fail the change from READY to NULL",
                             TRUE,
                             static_cast<GParamFlags>(G_PARAM_READWRITE | G_PARAM_STATIC_STRINGS)));
    GST_ELEMENT_CLASS(klass)->change_state = refuse_change_state;
    gst_element_class_set_static_metadata(GST_ELEMENT_CLASS(klass), "NULL refuser (test)",
                                          "Generic", "Refuses to reach NULL", "TARNIX");
}

static void tarnix_test_refuse_null_init(TarnixTestRefuseNull *self)
{
    g_atomic_int_set(&self->refuseNull, TRUE);
}

namespace tarnix::test {

GstElement *makeNullRefusingElement(const char *name)
{
    static const gboolean registered = gst_element_register(
        nullptr, "tarnixtestrefusenull", GST_RANK_NONE, TARNIX_TEST_TYPE_REFUSE_NULL);
    if (!registered)
        return nullptr;
    return gst_element_factory_make("tarnixtestrefusenull", name);
}

namespace {

void onFinalized(gpointer data, GObject *)
{
    auto *flag = static_cast<std::shared_ptr<std::atomic<bool>> *>(data);
    (*flag)->store(true);
    delete flag;
}

} // namespace

std::shared_ptr<std::atomic<bool>> watchFinalization(gpointer object)
{
    auto flag = std::make_shared<std::atomic<bool>>(false);
    g_object_weak_ref(G_OBJECT(object), onFinalized, new std::shared_ptr<std::atomic<bool>>(flag));
    return flag;
}

} // namespace tarnix::test
