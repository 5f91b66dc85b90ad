#include "audio/audio_effects_service.h"

#include <atomic>

namespace tarnix {

namespace {
std::atomic<AudioEffectsService *> installedService{nullptr};
}

void setAudioEffectsService(AudioEffectsService *service)
{
    installedService.store(service, std::memory_order_release);
}

AudioEffectsService *audioEffectsService()
{
    return installedService.load(std::memory_order_acquire);
}

} // namespace tarnix
