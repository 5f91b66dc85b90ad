#include "video/program_present_output.h"

#include "shell/pipeline_release.h"

#include <gst/video/video.h>
#include <gst/video/videooverlay.h>

#include <algorithm>
#include <cstring>

namespace tarnix {
namespace {

// The presenter thread is the streaming thread of a one-element pipeline:
// it converts and scales each frame to the window itself and hands it to
// ximagesink with gst_pad_chain, so a present is done when the call returns.
class XImagePresentOutput final : public ProgramPresentOutput
{
public:
    explicit XImagePresentOutput(quintptr window)
        : m_window(window)
    {
    }

    ~XImagePresentOutput() override { close(); }

    QString sinkName() const override { return QStringLiteral("ximagesink"); }

    bool open(QString *error) override
    {
        if (!m_window) {
            *error = QStringLiteral("Program presenter target window is no longer valid");
            return false;
        }
        m_sink = gst_element_factory_make("ximagesink", "program-present-sink");
        if (!m_sink) {
            *error = QStringLiteral("ximagesink is not available");
            return false;
        }
        m_pipeline = gst_pipeline_new("program-present");
        gst_object_ref_sink(m_pipeline);
        gst_bin_add(GST_BIN(m_pipeline), m_sink);
        g_object_set(m_sink, "sync", FALSE, "async", FALSE, "qos", FALSE, "enable-last-sample", FALSE,
                     "handle-events", FALSE, "force-aspect-ratio", FALSE, nullptr);
        gst_video_overlay_set_window_handle(GST_VIDEO_OVERLAY(m_sink), guintptr(m_window));
        if (gst_element_set_state(m_pipeline, GST_STATE_PLAYING) == GST_STATE_CHANGE_FAILURE) {
            *error = QStringLiteral("ximagesink could not open the X display");
            return false;
        }
        m_pad = gst_element_get_static_pad(m_sink, "sink");
        m_format = chooseFormat();
        if (m_format == GST_VIDEO_FORMAT_UNKNOWN) {
            *error = QStringLiteral("ximagesink offers no 32-bit RGB format");
            return false;
        }
        gst_pad_send_event(m_pad, gst_event_new_stream_start("program-present"));
        return true;
    }

    bool present(const quint8 *pixels, int width, int height, QSize window, QString *error) override
    {
        if (window.width() <= 0 || window.height() <= 0)
            window = QSize(width, height);
        if (window != m_outputSize || width != m_inputWidth || height != m_inputHeight)
            configure(width, height, window);
        GstBuffer *buffer = nullptr;
        // The sink's own shared-memory images need no copy inside the sink.
        if (m_pool && gst_buffer_pool_acquire_buffer(m_pool, &buffer, nullptr) != GST_FLOW_OK)
            buffer = nullptr;
        if (!buffer) {
            if (!gst_buffer_is_writable(m_buffer)) {
                gst_buffer_unref(m_buffer);
                m_buffer = gst_buffer_new_allocate(nullptr, m_outputInfo.size, nullptr);
            }
            buffer = gst_buffer_ref(m_buffer);
        }
        GstVideoFrame out;
        if (!gst_video_frame_map(&out, &m_outputInfo, buffer, GST_MAP_WRITE)) {
            gst_buffer_unref(buffer);
            *error = QStringLiteral("Could not map the presented frame");
            return false;
        }
        if (m_converter) {
            GstBuffer *wrapped = gst_buffer_new_wrapped_full(
                GstMemoryFlags(GST_MEMORY_FLAG_READONLY), const_cast<quint8 *>(pixels),
                m_inputInfo.size, 0, m_inputInfo.size, nullptr, nullptr);
            GstVideoFrame in;
            if (gst_video_frame_map(&in, &m_inputInfo, wrapped, GST_MAP_READ)) {
                gst_video_converter_frame(m_converter, &in, &out);
                gst_video_frame_unmap(&in);
            }
            gst_buffer_unref(wrapped);
        } else {
            const int rowBytes = width * 4;
            if (GST_VIDEO_FRAME_PLANE_STRIDE(&out, 0) == rowBytes) {
                std::memcpy(GST_VIDEO_FRAME_PLANE_DATA(&out, 0), pixels, std::size_t(rowBytes) * height);
            } else {
                for (int y = 0; y < height; ++y)
                    std::memcpy(static_cast<quint8 *>(GST_VIDEO_FRAME_PLANE_DATA(&out, 0))
                                    + std::size_t(y) * GST_VIDEO_FRAME_PLANE_STRIDE(&out, 0),
                                pixels + std::size_t(y) * rowBytes, rowBytes);
            }
        }
        gst_video_frame_unmap(&out);
        const GstFlowReturn flow = gst_pad_chain(m_pad, buffer);
        if (flow != GST_FLOW_OK) {
            *error = QStringLiteral("ximagesink refused a frame: %1")
                         .arg(QString::fromUtf8(gst_flow_get_name(flow)));
            return false;
        }
        return true;
    }

    void close() override
    {
        dropPool();
        if (m_converter) {
            gst_video_converter_free(m_converter);
            m_converter = nullptr;
        }
        if (m_buffer) {
            gst_buffer_unref(m_buffer);
            m_buffer = nullptr;
        }
        if (m_pad) {
            gst_object_unref(m_pad);
            m_pad = nullptr;
        }
        m_sink = nullptr;
        if (m_pipeline) {
            releasePipeline(std::exchange(m_pipeline, nullptr),
                            QStringLiteral("Program presenter output did not stop; it is retained."),
                            kNullConfirmationLimit, QStringLiteral("program-present"));
        }
    }

private:
    // ximagesink offers the formats of the X visual; a 24-bit visual reads
    // BGRA memory as BGRx, so the frame goes through unchanged when possible.
    GstVideoFormat chooseFormat()
    {
        GstCaps *caps = gst_pad_query_caps(m_pad, nullptr);
        GstVideoFormat chosen = GST_VIDEO_FORMAT_UNKNOWN;
        for (const char *name : {"BGRx", "BGRA", "xRGB", "ARGB", "RGBx", "RGBA", "xBGR", "ABGR"}) {
            GstCaps *probe = gst_caps_new_simple("video/x-raw", "format", G_TYPE_STRING, name, nullptr);
            const bool ok = caps && gst_caps_can_intersect(caps, probe);
            gst_caps_unref(probe);
            if (ok) {
                chosen = gst_video_format_from_string(name);
                break;
            }
        }
        if (caps)
            gst_caps_unref(caps);
        return chosen;
    }

    void configure(int width, int height, QSize window)
    {
        m_inputWidth = width;
        m_inputHeight = height;
        m_outputSize = window;
        gst_video_info_set_format(&m_inputInfo, GST_VIDEO_FORMAT_BGRA, width, height);
        gst_video_info_set_format(&m_outputInfo, m_format, window.width(), window.height());
        if (m_converter) {
            gst_video_converter_free(m_converter);
            m_converter = nullptr;
        }
        const bool sameLayout =
            m_format == GST_VIDEO_FORMAT_BGRx || m_format == GST_VIDEO_FORMAT_BGRA;
        if (window != QSize(width, height) || !sameLayout)
            m_converter = gst_video_converter_new(
                &m_inputInfo, &m_outputInfo,
                gst_structure_new("program-present-scale", GST_VIDEO_CONVERTER_OPT_RESAMPLER_METHOD,
                                  GST_TYPE_VIDEO_RESAMPLER_METHOD, GST_VIDEO_RESAMPLER_METHOD_LINEAR,
                                  GST_VIDEO_CONVERTER_OPT_DITHER_METHOD, GST_TYPE_VIDEO_DITHER_METHOD,
                                  GST_VIDEO_DITHER_NONE, nullptr));
        if (m_buffer)
            gst_buffer_unref(m_buffer);
        m_buffer = gst_buffer_new_allocate(nullptr, m_outputInfo.size, nullptr);
        GstCaps *caps = gst_video_info_to_caps(&m_outputInfo);
        gst_pad_send_event(m_pad, gst_event_new_caps(caps));
        takePool(caps);
        gst_caps_unref(caps);
        // The sink reads the window's geometry only when told; a resized
        // window would otherwise show the new size centred in the old one.
        gst_video_overlay_expose(GST_VIDEO_OVERLAY(m_sink));
        if (!m_segmentSent) {
            GstSegment segment;
            gst_segment_init(&segment, GST_FORMAT_TIME);
            gst_pad_send_event(m_pad, gst_event_new_segment(&segment));
            m_segmentSent = true;
        }
    }

    // Asks the sink for its buffer pool for these caps; without one the
    // output's own buffer is used.
    void takePool(GstCaps *caps)
    {
        dropPool();
        GstQuery *query = gst_query_new_allocation(caps, TRUE);
        GstBufferPool *pool = nullptr;
        guint size = 0, minimum = 0, maximum = 0;
        if (gst_pad_query(m_pad, query) && gst_query_get_n_allocation_pools(query) > 0)
            gst_query_parse_nth_allocation_pool(query, 0, &pool, &size, &minimum, &maximum);
        gst_query_unref(query);
        if (!pool)
            return;
        GstStructure *config = gst_buffer_pool_get_config(pool);
        gst_buffer_pool_config_set_params(config, caps, std::max<guint>(size, m_outputInfo.size),
                                          std::max<guint>(minimum, 2), 0);
        gst_buffer_pool_config_add_option(config, GST_BUFFER_POOL_OPTION_VIDEO_META);
        if (!gst_buffer_pool_set_config(pool, config) || !gst_buffer_pool_set_active(pool, TRUE)) {
            gst_object_unref(pool);
            return;
        }
        m_pool = pool;
    }

    void dropPool()
    {
        if (!m_pool)
            return;
        gst_buffer_pool_set_active(m_pool, FALSE);
        gst_object_unref(m_pool);
        m_pool = nullptr;
    }

    quintptr m_window = 0;
    GstBufferPool *m_pool = nullptr;
    GstElement *m_pipeline = nullptr;
    GstElement *m_sink = nullptr;
    GstPad *m_pad = nullptr;
    GstVideoFormat m_format = GST_VIDEO_FORMAT_UNKNOWN;
    GstVideoInfo m_inputInfo{};
    GstVideoInfo m_outputInfo{};
    GstVideoConverter *m_converter = nullptr;
    GstBuffer *m_buffer = nullptr;
    QSize m_outputSize;
    int m_inputWidth = 0;
    int m_inputHeight = 0;
    bool m_segmentSent = false;
};

} // namespace

std::unique_ptr<ProgramPresentOutput> createXImagePresentOutput(quintptr window)
{
    return std::make_unique<XImagePresentOutput>(window);
}

} // namespace tarnix
