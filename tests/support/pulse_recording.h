#pragma once

#include <QString>

#include <cstddef>
#include <vector>

namespace tarnix::test {

// Records a PulseAudio source (a sink's ".monitor", say) as interleaved
// stereo float samples at 48 kHz: skipFrames are let pass first, then
// frames are kept. PULSE_SERVER names the server. Empty when that many
// did not come within the time limit.
std::vector<float> recordPulseSource(const QString &source, std::size_t frames, std::size_t skipFrames = 4800,
                                     int timeoutMs = 10000);

} // namespace tarnix::test
