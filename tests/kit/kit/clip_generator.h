#pragma once

// Generated media for tests and bench programs. A clip is written by a
// GStreamer pipeline ("<body> ! filesink") into a partial file that is renamed
// when the pipeline reached its end of stream, so an interrupted run never
// leaves a file that a later run would take as finished.

#include <gst/gst.h>

#include <QString>

#include <functional>

namespace tarnix::testkit {

// Writes the clip unless the file exists. feed, when given, runs once the
// pipeline plays (to push buffers into an appsrc). False, with the reason in
// error when given, if the pipeline cannot be built, fails, or does not end
// within the limit.
bool generateClip(const QString &path, const QString &body, QString *error = nullptr,
                  const std::function<void(GstElement *pipeline)> &feed = {}, int limitSeconds = 120);

// Picture-only H.264 in MP4 of one colour (0xAARRGGBB), the usual test clip.
struct SolidClip {
    quint32 argb = 0xffff0000;
    int width = 320;
    int height = 180;
    int fps = 30;
    int frames = 90;
    int keyframeInterval = 30;
    int bitrate = 0;  // 0: the encoder's default
};
QString solidClipBody(const SolidClip &clip);

// A 48 kHz stereo WAV of a sine tone, its level scaled by gain (1.4125 is
// +3 dB above the generator's full scale).
struct ToneClip {
    int buffers = 94;  // of 1024 samples each
    double gain = 1.0;
};
QString toneWavBody(const ToneClip &clip);

} // namespace tarnix::testkit
