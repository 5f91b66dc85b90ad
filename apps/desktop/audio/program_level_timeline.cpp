#include "audio/program_level_timeline.h"

namespace tarnix {

ProgramLevelTimeline::ProgramLevelTimeline() = default;

ProgramLevelTimeline::~ProgramLevelTimeline()
{
    std::lock_guard lock(m_mutex);
    for (GstElement *&element : m_elements)
        setElementLocked(element, nullptr);
    setElementLocked(m_bgmInputElement, nullptr);
}

void ProgramLevelTimeline::setElementLocked(GstElement *&slot, GstElement *element)
{
    if (element)
        gst_object_ref(element);
    if (slot)
        gst_object_unref(slot);
    slot = element;
}

void ProgramLevelTimeline::clearLocked(Source source)
{
    m_queues[source].clear();
    m_current[source] = LevelReading{};
}

void ProgramLevelTimeline::setProgramElements(GstElement *master, GstElement *bgm,
                                              GstElement *bgmInput)
{
    m_generation.fetch_add(1);
    std::lock_guard lock(m_mutex);
    setElementLocked(m_elements[Master], master);
    setElementLocked(m_elements[Bgm], bgm);
    setElementLocked(m_bgmInputElement, bgmInput);
    clearLocked(Master);
    clearLocked(Bgm);
    m_bgmInput = LevelReading{};
}

void ProgramLevelTimeline::reset(GstElement *input, GstElement *item, bool deckMetering)
{
    m_generation.fetch_add(1);
    std::lock_guard lock(m_mutex);
    setElementLocked(m_elements[Input], input);
    setElementLocked(m_elements[Item], item);
    m_deckMetering.store(deckMetering);
    clearLocked(Input);
    clearLocked(Item);
    clearLocked(Master);
}

void ProgramLevelTimeline::setBgmMetering(bool on)
{
    if (m_bgmMetering.exchange(on) == on)
        return;
    m_generation.fetch_add(1);
    std::lock_guard lock(m_mutex);
    clearLocked(Master);
    clearLocked(Bgm);
}

bool ProgramLevelTimeline::handleMessage(GstMessage *message)
{
    if (!message || GST_MESSAGE_TYPE(message) != GST_MESSAGE_ELEMENT || !GST_MESSAGE_SRC(message))
        return false;
    const std::uint64_t generation = m_generation.load();
    int source = -1;
    bool bgmInput = false;
    {
        std::lock_guard lock(m_mutex);
        for (int i = 0; i < SourceCount; ++i) {
            if (m_elements[i] && GST_OBJECT(m_elements[i]) == GST_MESSAGE_SRC(message))
                source = i;
        }
        bgmInput = m_bgmInputElement && GST_OBJECT(m_bgmInputElement) == GST_MESSAGE_SRC(message);
    }
    if (source < 0 && !bgmInput)
        return false;
    const std::optional<LevelReading> reading = parseLevelMessage(message);
    if (!reading)
        return true;

    std::lock_guard lock(m_mutex);
    if (bgmInput) {
        m_bgmInput = *reading;
        return true;
    }
    if (m_generation.load() != generation)
        return true; // parsed against a source that has since been replaced
    if (!m_deckMetering.load() && !m_bgmMetering.load())
        return true;
    if (source == Bgm && !m_bgmMetering.load())
        return true;
    std::deque<LevelReading> &queue = m_queues[source];
    if (queue.size() >= kQueueLimit)
        queue.pop_front();
    queue.push_back(*reading);
    return true;
}

void ProgramLevelTimeline::release(std::deque<LevelReading> &queue, LevelReading &current,
                                   std::optional<std::uint64_t> now)
{
    if (!now)
        return;
    while (!queue.empty() && queue.front().runningTime <= *now) {
        current = queue.front();
        queue.pop_front();
    }
}

ProgramLevelTimeline::Snapshot ProgramLevelTimeline::snapshot(
    std::optional<std::uint64_t> deckRunningTime, std::optional<std::uint64_t> programRunningTime)
{
    std::lock_guard lock(m_mutex);
    release(m_queues[Input], m_current[Input], deckRunningTime);
    release(m_queues[Item], m_current[Item], programRunningTime);
    release(m_queues[Master], m_current[Master], programRunningTime);
    release(m_queues[Bgm], m_current[Bgm], programRunningTime);
    return Snapshot{m_current[Input], m_current[Item], m_current[Master], m_current[Bgm]};
}

LevelReading ProgramLevelTimeline::bgmInput() const
{
    std::lock_guard lock(m_mutex);
    return m_bgmInput;
}

} // namespace tarnix
