#include "audio/audio_bridge_channel.h"

#include <map>

namespace tarnix::audio_bridge {

namespace {

std::mutex &tableMutex()
{
    static std::mutex mutex;
    return mutex;
}

std::map<std::string, std::weak_ptr<Channel>> &table()
{
    static auto *channels = new std::map<std::string, std::weak_ptr<Channel>>();
    return *channels;
}

} // namespace

Channel::Channel()
{
    g_weak_ref_init(&receiver, nullptr);
}

Channel::~Channel()
{
    for (GstBuffer *buffer : queue)
        gst_buffer_unref(buffer);
    g_weak_ref_clear(&receiver);
}

void Channel::resetLocked()
{
    for (GstBuffer *buffer : queue)
        gst_buffer_unref(buffer);
    queue.clear();
    queuedBytes = 0;
    frontOffset = 0;
    discontPending = true;
    ++epoch;
}

GstElement *Channel::receiverElement()
{
    gpointer object = g_weak_ref_get(&receiver);
    return object ? GST_ELEMENT(object) : nullptr;
}

std::shared_ptr<Channel> acquireChannel(const std::string &name)
{
    std::lock_guard lock(tableMutex());
    auto &channels = table();
    for (auto it = channels.begin(); it != channels.end();) {
        if (it->second.expired())
            it = channels.erase(it);
        else
            ++it;
    }
    if (auto found = channels.find(name); found != channels.end()) {
        if (auto channel = found->second.lock())
            return channel;
    }
    auto channel = std::make_shared<Channel>();
    channel->name = name;
    channels[name] = channel;
    return channel;
}

} // namespace tarnix::audio_bridge
