#include "support/blocking_file_source.h"

#include <gst/base/gstpushsrc.h>


namespace {

// One lock and condition for all instances, so releasing stuck sources
// reaches every one of them.
GMutex g_mutex;
GCond g_cond;
bool g_stuck = false; // guarded by g_mutex
int g_waiters = 0;    // guarded by g_mutex

} // namespace

G_BEGIN_DECLS
#define TARNIX_TEST_TYPE_BLOCKING_FILE_SRC (tarnix_test_blocking_file_src_get_type())
G_DECLARE_FINAL_TYPE(TarnixTestBlockingFileSrc, tarnix_test_blocking_file_src, TARNIX_TEST,
                     BLOCKING_FILE_SRC, GstPushSrc)
G_END_DECLS

struct _TarnixTestBlockingFileSrc {
    GstPushSrc parent;
    gboolean flushing; // guarded by g_mutex
    gchar *uri;
};

static GstStaticPadTemplate src_template =
    GST_STATIC_PAD_TEMPLATE("src", GST_PAD_SRC, GST_PAD_ALWAYS, GST_STATIC_CAPS_ANY);

static void tarnix_test_blocking_file_src_uri_init(gpointer iface, gpointer);

G_DEFINE_TYPE_WITH_CODE(TarnixTestBlockingFileSrc, tarnix_test_blocking_file_src,
                        GST_TYPE_PUSH_SRC,
                        G_IMPLEMENT_INTERFACE(GST_TYPE_URI_HANDLER,
                                              tarnix_test_blocking_file_src_uri_init))

static GstFlowReturn blocking_create(GstPushSrc *src, GstBuffer **)
{
    auto *self = TARNIX_TEST_BLOCKING_FILE_SRC(src);
    g_mutex_lock(&g_mutex);
    ++g_waiters;
    while (!self->flushing || g_stuck)
        g_cond_wait(&g_cond, &g_mutex);
    --g_waiters;
    g_mutex_unlock(&g_mutex);
    return GST_FLOW_FLUSHING;
}

static gboolean blocking_unlock(GstBaseSrc *src)
{
    auto *self = TARNIX_TEST_BLOCKING_FILE_SRC(src);
    g_mutex_lock(&g_mutex);
    self->flushing = TRUE;
    g_cond_broadcast(&g_cond);
    g_mutex_unlock(&g_mutex);
    return TRUE;
}

static gboolean blocking_unlock_stop(GstBaseSrc *src)
{
    auto *self = TARNIX_TEST_BLOCKING_FILE_SRC(src);
    g_mutex_lock(&g_mutex);
    self->flushing = FALSE;
    g_mutex_unlock(&g_mutex);
    return TRUE;
}

static void blocking_finalize(GObject *object)
{
    auto *self = TARNIX_TEST_BLOCKING_FILE_SRC(object);
    g_free(self->uri);
    G_OBJECT_CLASS(tarnix_test_blocking_file_src_parent_class)->finalize(object);
}

static void tarnix_test_blocking_file_src_class_init(TarnixTestBlockingFileSrcClass *klass)
{
    G_OBJECT_CLASS(klass)->finalize = blocking_finalize;
    GstElementClass *elementClass = GST_ELEMENT_CLASS(klass);
    gst_element_class_set_static_metadata(elementClass, "Blocking file source (test)",
                                          "Source/File", "Never delivers data", "TARNIX");
    gst_element_class_add_static_pad_template(elementClass, &src_template);
    GST_BASE_SRC_CLASS(klass)->unlock = blocking_unlock;
    GST_BASE_SRC_CLASS(klass)->unlock_stop = blocking_unlock_stop;
    GST_PUSH_SRC_CLASS(klass)->create = blocking_create;
}

static void tarnix_test_blocking_file_src_init(TarnixTestBlockingFileSrc *self)
{
    self->flushing = FALSE;
    self->uri = nullptr;
}

static GstURIType blocking_uri_type(GType)
{
    return GST_URI_SRC;
}

static const gchar *const *blocking_protocols(GType)
{
    static const gchar *const protocols[] = {"file", nullptr};
    return protocols;
}

static gchar *blocking_get_uri(GstURIHandler *handler)
{
    auto *self = TARNIX_TEST_BLOCKING_FILE_SRC(handler);
    GST_OBJECT_LOCK(self);
    gchar *uri = g_strdup(self->uri);
    GST_OBJECT_UNLOCK(self);
    return uri;
}

static gboolean blocking_set_uri(GstURIHandler *handler, const gchar *uri, GError **)
{
    auto *self = TARNIX_TEST_BLOCKING_FILE_SRC(handler);
    GST_OBJECT_LOCK(self);
    g_free(self->uri);
    self->uri = g_strdup(uri);
    GST_OBJECT_UNLOCK(self);
    return TRUE;
}

static void tarnix_test_blocking_file_src_uri_init(gpointer iface, gpointer)
{
    auto *uriIface = static_cast<GstURIHandlerInterface *>(iface);
    uriIface->get_type = blocking_uri_type;
    uriIface->get_protocols = blocking_protocols;
    uriIface->get_uri = blocking_get_uri;
    uriIface->set_uri = blocking_set_uri;
}

namespace tarnix::test {
namespace {

constexpr char kElementName[] = "tarnixtestblockingfilesrc";

void setRank(guint rank)
{
    GstElementFactory *factory = gst_element_factory_find(kElementName);
    if (!factory)
        return;
    gst_plugin_feature_set_rank(GST_PLUGIN_FEATURE(factory), rank);
    gst_object_unref(factory);
}

} // namespace

void installBlockingFileSource()
{
    static const gboolean registered = gst_element_register(
        nullptr, kElementName, GST_RANK_PRIMARY + 100, TARNIX_TEST_TYPE_BLOCKING_FILE_SRC);
    (void)registered;
    setRank(GST_RANK_PRIMARY + 100);
}

void uninstallBlockingFileSource()
{
    setRank(GST_RANK_NONE);
}

void setBlockingFileSourceStuck(bool stuck)
{
    g_mutex_lock(&g_mutex);
    g_stuck = stuck;
    g_cond_broadcast(&g_cond);
    g_mutex_unlock(&g_mutex);
}

int blockingFileSourceWaiters()
{
    g_mutex_lock(&g_mutex);
    const int waiters = g_waiters;
    g_mutex_unlock(&g_mutex);
    return waiters;
}

} // namespace tarnix::test
