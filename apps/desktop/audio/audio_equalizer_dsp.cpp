#include "audio/audio_equalizer_dsp.h"

#include <algorithm>
#include <cmath>

namespace tarnix::audio_dsp {

namespace {

constexpr double kSampleRate = 48000.0;
constexpr double kBandFrequency[kBandCount] = {100.0, 2500.0, 10000.0};
// Below this a filter state is flushed to zero, keeping silent tails off
// the processor's slow denormal path.
constexpr double kDenormalLimit = 1e-30;

double flushDenormal(double value)
{
    return std::fabs(value) < kDenormalLimit ? 0.0 : value;
}

} // namespace

double clampBandGain(double gainDb)
{
    if (!std::isfinite(gainDb))
        return 0.0;
    return std::clamp(gainDb, -kBandGainLimit, kBandGainLimit);
}

Biquad designBand(int band, double gainDb)
{
    Biquad q;
    if (gainDb == 0.0 || band < 0 || band >= kBandCount)
        return q;
    const double pi = std::acos(-1.0);
    const double A = std::pow(10.0, gainDb / 40.0);
    const double w = 2.0 * pi * kBandFrequency[band] / kSampleRate;
    const double c = std::cos(w);
    const double s = std::sin(w);
    double a0 = 1.0;
    if (band == 1) {
        const double alpha = s / 1.4;
        q.b0 = 1.0 + alpha * A;
        q.b1 = -2.0 * c;
        q.b2 = 1.0 - alpha * A;
        a0 = 1.0 + alpha / A;
        q.a1 = -2.0 * c;
        q.a2 = 1.0 - alpha / A;
    } else {
        const double K = std::sqrt(2.0 * A) * s;
        if (band == 0) {
            q.b0 = A * ((A + 1.0) - (A - 1.0) * c + K);
            q.b1 = 2.0 * A * ((A - 1.0) - (A + 1.0) * c);
            q.b2 = A * ((A + 1.0) - (A - 1.0) * c - K);
            a0 = (A + 1.0) + (A - 1.0) * c + K;
            q.a1 = -2.0 * ((A - 1.0) + (A + 1.0) * c);
            q.a2 = (A + 1.0) + (A - 1.0) * c - K;
        } else {
            q.b0 = A * ((A + 1.0) + (A - 1.0) * c + K);
            q.b1 = -2.0 * A * ((A - 1.0) + (A + 1.0) * c);
            q.b2 = A * ((A + 1.0) + (A - 1.0) * c - K);
            a0 = (A + 1.0) - (A - 1.0) * c + K;
            q.a1 = 2.0 * ((A - 1.0) - (A + 1.0) * c);
            q.a2 = (A + 1.0) - (A - 1.0) * c - K;
        }
    }
    q.b0 /= a0;
    q.b1 /= a0;
    q.b2 /= a0;
    q.a1 /= a0;
    q.a2 /= a0;
    return q;
}

EqControl::EqControl()
{
    g_mutex_init(&m_lock);
}

EqControl::~EqControl()
{
    g_mutex_clear(&m_lock);
}

void EqControl::setGain(int band, double gainDb)
{
    if (band < 0 || band >= kBandCount)
        return;
    const double gain = clampBandGain(gainDb);
    const Biquad design = designBand(band, gain);
    g_mutex_lock(&m_lock);
    if (gain != m_gains[band]) {
        m_gains[band] = gain;
        m_bands[band] = design;
        if (gain == 0.0)
            m_clearBands |= 1u << band;
    }
    g_mutex_unlock(&m_lock);
}

double EqControl::gain(int band) const
{
    if (band < 0 || band >= kBandCount)
        return 0.0;
    g_mutex_lock(&m_lock);
    const double value = m_gains[band];
    g_mutex_unlock(&m_lock);
    return value;
}

void EqControl::requestClear()
{
    g_mutex_lock(&m_lock);
    m_clearAll = true;
    g_mutex_unlock(&m_lock);
}

void EqProcessor::sync(EqControl &control)
{
    g_mutex_lock(&control.m_lock);
    for (int band = 0; band < kBandCount; ++band) {
        m_gains[band] = control.m_gains[band];
        m_bands[band] = control.m_bands[band];
    }
    const unsigned clearBands = control.m_clearAll ? ~0u : control.m_clearBands;
    control.m_clearAll = false;
    control.m_clearBands = 0;
    g_mutex_unlock(&control.m_lock);

    for (int band = 0; band < kBandCount; ++band) {
        if (clearBands & (1u << band)) {
            m_s1[band][0] = m_s1[band][1] = 0.0;
            m_s2[band][0] = m_s2[band][1] = 0.0;
        }
    }
}

void EqProcessor::clear()
{
    for (int band = 0; band < kBandCount; ++band) {
        m_s1[band][0] = m_s1[band][1] = 0.0;
        m_s2[band][0] = m_s2[band][1] = 0.0;
    }
}

bool EqProcessor::bypassed() const
{
    return m_gains[0] == 0.0 && m_gains[1] == 0.0 && m_gains[2] == 0.0;
}

GstFlowReturn EqProcessor::process(GstBuffer *buffer)
{
    if (GST_BUFFER_FLAG_IS_SET(buffer, GST_BUFFER_FLAG_DISCONT))
        clear();
    if (bypassed())
        return GST_FLOW_OK;

    GstMapInfo map;
    if (!gst_buffer_map(buffer, &map, GST_MAP_READWRITE))
        return GST_FLOW_ERROR;
    if (map.size % 8 != 0) {
        gst_buffer_unmap(buffer, &map);
        return GST_FLOW_ERROR;
    }
    const bool gap = GST_BUFFER_FLAG_IS_SET(buffer, GST_BUFFER_FLAG_GAP);
    float *samples = reinterpret_cast<float *>(map.data);
    const std::size_t count = map.size / sizeof(float);
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t ch = i & 1u;
        double x = gap ? 0.0 : double(samples[i]);
        for (int band = 0; band < kBandCount; ++band) {
            if (m_gains[band] == 0.0)
                continue;
            const Biquad &q = m_bands[band];
            const double y = x * q.b0 + m_s1[band][ch];
            m_s1[band][ch] = flushDenormal(x * q.b1 - y * q.a1 + m_s2[band][ch]);
            m_s2[band][ch] = flushDenormal(x * q.b2 - y * q.a2);
            x = y;
        }
        samples[i] = float(x);
    }
    markGapIfSilent(buffer, samples, count);
    gst_buffer_unmap(buffer, &map);
    return GST_FLOW_OK;
}

void markGapIfSilent(GstBuffer *buffer, const float *samples, std::size_t count)
{
    const bool silent = std::all_of(samples, samples + count, [](float v) { return v == 0.0f; });
    if (silent)
        GST_BUFFER_FLAG_SET(buffer, GST_BUFFER_FLAG_GAP);
    else
        GST_BUFFER_FLAG_UNSET(buffer, GST_BUFFER_FLAG_GAP);
}

} // namespace tarnix::audio_dsp
