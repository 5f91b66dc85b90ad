#include "playout/playout_item_state.h"

#include "playlist/playlist_model.h"

#include <algorithm>

namespace tarnix {

PlaylistEndMode endModeAfterRepeats(PlaylistRepeatEndMode mode)
{
    switch (mode) {
    case PlaylistRepeatEndMode::stop:
        return PlaylistEndMode::stop;
    case PlaylistRepeatEndMode::pause:
        return PlaylistEndMode::pause;
    case PlaylistRepeatEndMode::next:
        return PlaylistEndMode::next;
    case PlaylistRepeatEndMode::goto_:
        return PlaylistEndMode::goto_;
    }
    return PlaylistEndMode::pause;
}

void PlayoutItemState::clearSnapshot()
{
    m_itemId = 0;
    m_filePath.clear();
    m_inPointMs = 0;
    m_outPointMs.reset();
    m_repeatsDone = 0;
}

bool PlayoutItemState::load(quint64 itemId)
{
    const std::optional<PlaylistItem> item = (itemId != 0 && m_model) ? m_model->item(itemId) : std::nullopt;
    if (!item || item->filePath.isEmpty()) {
        clearSnapshot();
        m_phase = Invalid;
        return false;
    }
    m_itemId = itemId;
    m_filePath = item->filePath;
    m_inPointMs = item->settings.inPointMs;
    m_outPointMs = item->settings.outPointMs;
    m_repeatsDone = 0;
    m_phase = Loaded;
    return true;
}

std::optional<PlaylistStartMode> PlayoutItemState::startMode()
{
    if (m_phase != Loaded)
        return std::nullopt;
    const std::optional<PlaylistItem> item = m_model ? m_model->item(m_itemId) : std::nullopt;
    if (!item) {
        m_phase = Invalid;
        return std::nullopt;
    }
    m_phase = Running;
    return item->settings.startMode;
}

std::optional<PlaylistEndMode> PlayoutItemState::endMode() const
{
    if (m_phase != Running || !m_model)
        return std::nullopt;
    const std::optional<PlaylistItem> item = m_model->item(m_itemId);
    if (!item)
        return std::nullopt;
    const PlaylistItemSettings &s = item->settings;
    if (s.endMode != PlaylistEndMode::repeat)
        return s.endMode;
    if (s.repeatCount == 0 || m_repeatsDone + 1 < s.repeatCount)
        return PlaylistEndMode::repeat;
    return endModeAfterRepeats(s.repeatEndMode);
}

std::optional<PlaylistEndMode> PlayoutItemState::consumeEndMode()
{
    const std::optional<PlaylistEndMode> mode = endMode();
    if (!mode) {
        if (m_phase == Running)
            m_phase = Invalid;
        return std::nullopt;
    }
    const std::optional<PlaylistItem> item = m_model->item(m_itemId);
    if (item && item->settings.endMode == PlaylistEndMode::repeat) {
        m_repeatsDone = std::min(m_repeatsDone + 1, kMaxRepeats);
        m_phase = *mode == PlaylistEndMode::repeat ? Running : Held;
    }
    return mode;
}

void PlayoutItemState::setRunning()
{
    if (!usable())
        return;
    if (m_phase == Held)
        m_repeatsDone = 0;
    m_phase = Running;
}

void PlayoutItemState::setHeld()
{
    if (usable())
        m_phase = Held;
}

void PlayoutItemState::setLoaded()
{
    if (usable())
        m_phase = Loaded;
}

void PlayoutItemState::setFailed()
{
    if (m_itemId != 0)
        m_phase = Failed;
}

void PlayoutItemState::clear()
{
    clearSnapshot();
    m_phase = Idle;
}

int PlayoutItemState::repeatDisplayCount() const
{
    switch (m_phase) {
    case Idle:
    case Loaded:
    case Invalid:
        return 0;
    case Running:
        return std::min(m_repeatsDone + 1, kMaxRepeats);
    default:
        return m_repeatsDone;
    }
}

} // namespace tarnix
