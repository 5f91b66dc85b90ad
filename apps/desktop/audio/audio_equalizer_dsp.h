#pragma once

#include <gst/gst.h>

#include <cstdint>

// The three-band EQ shared by tarnixaudioequalizer and tarnixaudioeffects:
// a 100 Hz low shelf, a 2.5 kHz peak and a 10 kHz high shelf at 48 kHz,
// each a biquad in transposed direct form II.
//
// EqControl is what property writes change (any thread, under its lock);
// EqProcessor is the streaming thread's private copy with the filter state,
// refreshed from the control once per buffer. Nothing here allocates.
namespace tarnix::audio_dsp {

inline constexpr int kBandCount = 3;
inline constexpr double kBandGainLimit = 15.0;

struct Biquad {
    double b0 = 1.0, b1 = 0.0, b2 = 0.0, a1 = 0.0, a2 = 0.0;
};

// A non-finite gain becomes 0.0; anything else is held to -15..15 dB.
double clampBandGain(double gainDb);

// Coefficients of one band at the given gain; 0.0 dB gives the identity.
Biquad designBand(int band, double gainDb);

class EqControl
{
public:
    EqControl();
    ~EqControl();
    EqControl(const EqControl &) = delete;
    EqControl &operator=(const EqControl &) = delete;

    // Stores the clamped gain and redesigns that band only. A band set to
    // 0.0 dB also loses its filter state.
    void setGain(int band, double gainDb);
    double gain(int band) const;
    // The processor clears all filter state before its next buffer.
    void requestClear();

private:
    friend class EqProcessor;
    mutable GMutex m_lock;
    double m_gains[kBandCount] = {0.0, 0.0, 0.0};
    Biquad m_bands[kBandCount];
    unsigned m_clearBands = 0;
    bool m_clearAll = false;
};

class EqProcessor
{
public:
    // Copies gains, coefficients and pending clears out of the control.
    void sync(EqControl &control);
    void clear();
    bool bypassed() const;
    // Filters an in-place buffer (see the element for the GAP rules).
    GstFlowReturn process(GstBuffer *buffer);

private:
    double m_gains[kBandCount] = {0.0, 0.0, 0.0};
    Biquad m_bands[kBandCount];
    double m_s1[kBandCount][2] = {};
    double m_s2[kBandCount][2] = {};
};

// Sets or clears GAP on a buffer by whether every sample is 0.0.
void markGapIfSilent(GstBuffer *buffer, const float *samples, std::size_t count);

} // namespace tarnix::audio_dsp
