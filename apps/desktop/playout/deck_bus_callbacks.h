#pragma once

#include <gst/gst.h>

#include <memory>
#include <mutex>

namespace tarnix {

// The synchronous bus handler of a deck pipeline: the owner's handler and its
// data behind one mutex. The handler runs on GStreamer streaming threads.
//
// clear() takes the mutex, so when it returns no call of the old handler is
// under way and none will start. An unset handler passes every message on
// to the bus queue.
class DeckBusCallbacks
{
public:
    void set(GstBusSyncHandler handler, gpointer userData);
    void clear();
    GstBusSyncReply dispatch(GstBus *bus, GstMessage *message);

    // Installs a dispatcher of these callbacks as the bus's sync handler. The
    // bus keeps the callbacks alive until its handler is replaced or it dies.
    static void install(GstBus *bus, const std::shared_ptr<DeckBusCallbacks> &callbacks);

private:
    std::mutex m_mutex;
    GstBusSyncHandler m_handler = nullptr;
    gpointer m_userData = nullptr;
};

} // namespace tarnix
