#include "shell/low_priority_threads.h"

#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <mutex>

namespace tarnix {

namespace {

pid_t threadId()
{
    return pid_t(syscall(SYS_gettid));
}

// A task pool that starts a new thread for every task. Threads are few per
// background pipeline and live as long as its tasks, so starting each one
// costs far less than what it then decodes.
struct NicedTaskPool {
    GstTaskPool parent;
    int nice;
};

struct NicedTaskPoolClass {
    GstTaskPoolClass parent_class;
};

struct NicedTask {
    GstTaskPoolFunction func;
    gpointer data;
    int nice;
};

GType niced_task_pool_get_type();
G_DEFINE_TYPE(NicedTaskPool, niced_task_pool, GST_TYPE_TASK_POOL)

gpointer runNicedTask(gpointer data)
{
    auto *task = static_cast<NicedTask *>(data);
    lowerThisThreadsPriority(task->nice);
    task->func(task->data);
    g_free(task);
    return nullptr;
}

gpointer nicedPush(GstTaskPool *pool, GstTaskPoolFunction func, gpointer data, GError **error)
{
    auto *task = g_new0(NicedTask, 1);
    task->func = func;
    task->data = data;
    task->nice = reinterpret_cast<NicedTaskPool *>(pool)->nice;
    GThread *thread = g_thread_try_new("tarnix-background", runNicedTask, task, error);
    if (!thread)
        g_free(task);
    return thread;
}

void nicedJoin(GstTaskPool *, gpointer id)
{
    if (id)
        g_thread_join(static_cast<GThread *>(id));
}

void nicedDisposeHandle(GstTaskPool *, gpointer id)
{
    if (id)
        g_thread_unref(static_cast<GThread *>(id));
}

// The default prepare and cleanup make a GLib pool this class never uses.
void nicedPrepare(GstTaskPool *, GError **) {}
void nicedCleanup(GstTaskPool *) {}

void niced_task_pool_class_init(NicedTaskPoolClass *klass)
{
    GstTaskPoolClass *pool = GST_TASK_POOL_CLASS(klass);
    pool->prepare = nicedPrepare;
    pool->cleanup = nicedCleanup;
    pool->push = nicedPush;
    pool->join = nicedJoin;
    pool->dispose_handle = nicedDisposeHandle;
}

void niced_task_pool_init(NicedTaskPool *pool)
{
    pool->nice = 0;
}

GstTaskPool *newNicedTaskPool(int nice)
{
    auto *pool = static_cast<NicedTaskPool *>(g_object_new(niced_task_pool_get_type(), nullptr));
    pool->nice = nice;
    return GST_TASK_POOL(gst_object_ref_sink(pool));
}

// Runs on the thread that posts: each new task is given the pool before it
// starts.
GstBusSyncReply giveTasksThePool(GstBus *, GstMessage *message, gpointer data)
{
    if (GST_MESSAGE_TYPE(message) != GST_MESSAGE_STREAM_STATUS)
        return GST_BUS_PASS;
    GstStreamStatusType type;
    GstElement *owner = nullptr;
    gst_message_parse_stream_status(message, &type, &owner);
    if (type != GST_STREAM_STATUS_TYPE_CREATE)
        return GST_BUS_PASS;
    const GValue *value = gst_message_get_stream_status_object(message);
    if (value && G_VALUE_HOLDS(value, GST_TYPE_TASK))
        gst_task_set_pool(GST_TASK(g_value_get_object(value)), static_cast<GstTaskPool *>(data));
    return GST_BUS_PASS;
}

void installPool(GstBus *bus, int nice)
{
    // Once per bus: a discoverer reuses its pipeline for every file.
    if (g_object_get_data(G_OBJECT(bus), "tarnix-niced-pool"))
        return;
    GstTaskPool *pool = newNicedTaskPool(nice);
    g_object_set_data_full(G_OBJECT(bus), "tarnix-niced-pool", gst_object_ref(pool), gst_object_unref);
    gst_bus_set_sync_handler(bus, giveTasksThePool, pool, gst_object_unref);
}

void onDiscovererSource(GstDiscoverer *, GstElement *source, gpointer data)
{
    GstObject *top = GST_OBJECT(gst_object_ref(source));
    while (GstObject *parent = gst_object_get_parent(top)) {
        gst_object_unref(top);
        top = parent;
    }
    if (GST_IS_ELEMENT(top)) {
        if (GstBus *bus = gst_element_get_bus(GST_ELEMENT(top))) {
            installPool(bus, GPOINTER_TO_INT(data));
            gst_object_unref(bus);
        }
    }
    gst_object_unref(top);
}

} // namespace

void pinStreamingThreadPriority()
{
    static std::once_flag once;
    // The first shared pool fixes the scheduling of all shared threads.
    std::call_once(once, [] {
        GThreadPool *pool = g_thread_pool_new([](gpointer, gpointer) {}, nullptr, -1, FALSE, nullptr);
        if (pool)
            g_thread_pool_free(pool, TRUE, FALSE);
    });
}

void lowerThisThreadsPriority(int nice)
{
    pinStreamingThreadPriority();
    if (nice > 0)
        (void)setpriority(PRIO_PROCESS, id_t(threadId()), nice);
}

int thisThreadsNiceness()
{
    errno = 0;
    const int nice = getpriority(PRIO_PROCESS, id_t(threadId()));
    return errno == 0 ? nice : 0;
}

void runStreamingThreadsAtNiceness(GstElement *pipeline, int nice)
{
    if (!pipeline || nice <= 0)
        return;
    if (GstBus *bus = gst_element_get_bus(pipeline)) {
        installPool(bus, nice);
        gst_object_unref(bus);
    }
}

void runDiscovererThreadsAtNiceness(GstDiscoverer *discoverer, int nice)
{
    if (!discoverer || nice <= 0)
        return;
    g_signal_connect(discoverer, "source-setup", G_CALLBACK(onDiscovererSource), GINT_TO_POINTER(nice));
}

} // namespace tarnix
