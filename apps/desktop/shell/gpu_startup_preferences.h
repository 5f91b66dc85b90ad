#pragma once

namespace tarnix {

// Reads the saved adapter id and software decoding flag once per process and
// publishes them as "gpu.startupAdapterId" and "gpu.startupSoftwareDecoding"
// on the application object, then sets "gpu.preferencesFrozen". Later calls
// do nothing, so a change in the settings applies from the next start.
void freezeGpuPreferences();

} // namespace tarnix
