#include "playout/deck_bus_callbacks.h"

namespace tarnix {
namespace {

GstBusSyncReply dispatchToCallbacks(GstBus *bus, GstMessage *message, gpointer data)
{
    return (*static_cast<std::shared_ptr<DeckBusCallbacks> *>(data))->dispatch(bus, message);
}

void destroyCallbacks(gpointer data)
{
    delete static_cast<std::shared_ptr<DeckBusCallbacks> *>(data);
}

} // namespace

void DeckBusCallbacks::set(GstBusSyncHandler handler, gpointer userData)
{
    std::lock_guard lock(m_mutex);
    m_handler = handler;
    m_userData = userData;
}

void DeckBusCallbacks::clear()
{
    set(nullptr, nullptr);
}

GstBusSyncReply DeckBusCallbacks::dispatch(GstBus *bus, GstMessage *message)
{
    std::lock_guard lock(m_mutex);
    if (!m_handler)
        return GST_BUS_PASS;
    return m_handler(bus, message, m_userData);
}

void DeckBusCallbacks::install(GstBus *bus, const std::shared_ptr<DeckBusCallbacks> &callbacks)
{
    if (!bus || !callbacks)
        return;
    gst_bus_set_sync_handler(bus, dispatchToCallbacks,
                             new std::shared_ptr<DeckBusCallbacks>(callbacks), destroyCallbacks);
}

} // namespace tarnix
