#pragma once

#include "audio/program_audio_output.h"

#include <gst/app/gstappsink.h>
#include <gst/gst.h>

#include <QtTest>

#include <memory>
#include <mutex>
#include <vector>

// Drives a ProgramAudioOutput whose output sink is an appsink and collects
// what reaches it, with the clock time at which each buffer arrived.
namespace tarnix::test {

inline constexpr const char *kAppSinkOutput = "appsink sync=true max-buffers=0 emit-signals=false";

class ProgramOutputProbe
{
public:
    struct Arrival {
        GstClockTime clockTime;
        std::size_t firstFrame;
    };

    ~ProgramOutputProbe()
    {
        if (m_appsink)
            gst_object_unref(m_appsink);
    }

    // Finds the appsink and starts collecting. Call after create(). The
    // sink's streaming thread may still deliver after the probe is gone
    // (the output stops later), so what it writes into is shared with the
    // sink and lives until the sink lets go of its callbacks.
    void attach(ProgramAudioOutput &output)
    {
        m_appsink = gst_bin_get_by_name(GST_BIN(output.pipeline()), "program-audio-output");
        GstAppSinkCallbacks callbacks = {};
        callbacks.new_sample = [](GstAppSink *sink, gpointer data) {
            (*static_cast<std::shared_ptr<Collected> *>(data))->take(sink);
            return GST_FLOW_OK;
        };
        gst_app_sink_set_callbacks(GST_APP_SINK(m_appsink), &callbacks,
                                   new std::shared_ptr<Collected>(m_collected), [](gpointer data) {
                                       delete static_cast<std::shared_ptr<Collected> *>(data);
                                   });
    }

    // Starts the output as the player would: polls until it runs.
    static bool start(ProgramAudioOutput &output)
    {
        return QTest::qWaitFor(
            [&] {
                output.serviceDeviceChange(true);
                return output.isRunning();
            },
            5000);
    }

    std::size_t frames() const
    {
        std::lock_guard lock(m_collected->mutex);
        return m_collected->samples.size() / 2;
    }
    bool waitFrames(std::size_t count, int timeoutMs = 5000) const
    {
        return QTest::qWaitFor([&] { return frames() >= count; }, timeoutMs);
    }
    std::vector<float> samples() const
    {
        std::lock_guard lock(m_collected->mutex);
        return m_collected->samples;
    }
    std::vector<Arrival> arrivals() const
    {
        std::lock_guard lock(m_collected->mutex);
        return m_collected->arrivals;
    }

private:
    struct Collected {
        std::mutex mutex;
        std::vector<float> samples;
        std::vector<Arrival> arrivals;

        void take(GstAppSink *sink)
        {
            GstSample *sample = gst_app_sink_pull_sample(sink);
            if (!sample)
                return;
            GstClock *clock = gst_system_clock_obtain();
            const GstClockTime now = gst_clock_get_time(clock);
            gst_object_unref(clock);
            GstMapInfo map;
            GstBuffer *buffer = gst_sample_get_buffer(sample);
            if (gst_buffer_map(buffer, &map, GST_MAP_READ)) {
                std::lock_guard lock(mutex);
                arrivals.push_back({now, samples.size() / 2});
                const auto *data = reinterpret_cast<const float *>(map.data);
                samples.insert(samples.end(), data, data + map.size / sizeof(float));
                gst_buffer_unmap(buffer, &map);
            }
            gst_sample_unref(sample);
        }
    };

    GstElement *m_appsink = nullptr;
    std::shared_ptr<Collected> m_collected = std::make_shared<Collected>();
};

} // namespace tarnix::test
