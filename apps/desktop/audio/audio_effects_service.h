#pragma once

#include <cstddef>

// The seam between tarnixaudioeffects and a plug-in host. Until a host is
// installed (and while it reports itself not in use) every effects element
// runs its built-in EQ.
namespace tarnix {

enum class AudioEffectsSlot : int {
    Unassigned = -1,
    Edit = 0,
    Item = 1,
    Master = 2,
};

class AudioEffectsService
{
public:
    virtual ~AudioEffectsService() = default;
    // Read once per buffer on streaming threads.
    virtual bool inUse() const = 0;
    // Processes interleaved stereo float PCM of one slot in place, on a
    // streaming thread. Must not block.
    virtual void process(AudioEffectsSlot slot, float *samples, std::size_t frames) = 0;
};

// Installs the host (null removes it). The service must outlive every
// pipeline that may still process audio. Any thread.
void setAudioEffectsService(AudioEffectsService *service);
AudioEffectsService *audioEffectsService();

} // namespace tarnix
