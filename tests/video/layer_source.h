#pragma once

#include <gst/app/gstappsink.h>
#include <gst/app/gstappsrc.h>

#include <QColor>
#include <QString>

#include <cstring>

// A producer as decks and DSK decks are seen by the compositor: appsrc into
// a deck-style appsink, so the test decides every frame and its format.
struct LayerSource {
    LayerSource(int width, int height, const char *format = "RGBA", const char *extraCaps = "")
        : width(width)
        , height(height)
    {
        const QString description =
            QStringLiteral("appsrc name=src format=time is-live=true caps=video/x-raw,format=%1,"
                           "width=%2,height=%3,framerate=30/1%4 ! appsink name=sink max-buffers=2 "
                           "drop=true sync=false enable-last-sample=false")
                .arg(QLatin1String(format))
                .arg(width)
                .arg(height)
                .arg(QLatin1String(extraCaps));
        pipeline = gst_parse_launch(description.toUtf8().constData(), nullptr);
        source = gst_bin_get_by_name(GST_BIN(pipeline), "src");
        sink = gst_bin_get_by_name(GST_BIN(pipeline), "sink");
        bytesPerPixel = QLatin1String(format) == QLatin1String("GRAY8") ? 1 : 4;
        blueFirst = QLatin1String(format) == QLatin1String("BGRA");
        gst_element_set_state(pipeline, GST_STATE_PLAYING);
    }
    ~LayerSource()
    {
        gst_element_set_state(pipeline, GST_STATE_NULL);
        gst_object_unref(source);
        gst_object_unref(sink);
        gst_object_unref(pipeline);
    }
    LayerSource(const LayerSource &) = delete;
    LayerSource &operator=(const LayerSource &) = delete;

    // One frame of a single straight-alpha colour; with missingBytes the
    // buffer is that much shorter than its caps say.
    void push(QColor colour, gsize missingBytes = 0)
    {
        const gsize size = gsize(width) * height * bytesPerPixel - missingBytes;
        GstBuffer *buffer = gst_buffer_new_allocate(nullptr, size, nullptr);
        GstMapInfo map;
        gst_buffer_map(buffer, &map, GST_MAP_WRITE);
        if (bytesPerPixel == 1) {
            std::memset(map.data, colour.red(), size);
        } else {
            for (gsize i = 0; i + 4 <= size; i += 4) {
                map.data[i + 0] = quint8(blueFirst ? colour.blue() : colour.red());
                map.data[i + 1] = quint8(colour.green());
                map.data[i + 2] = quint8(blueFirst ? colour.red() : colour.blue());
                map.data[i + 3] = quint8(colour.alpha());
            }
        }
        gst_buffer_unmap(buffer, &map);
        GST_BUFFER_PTS(buffer) = frames++ * GST_SECOND / 30;
        gst_app_src_push_buffer(GST_APP_SRC(source), buffer);
    }

    int width = 0;
    int height = 0;
    int bytesPerPixel = 4;
    bool blueFirst = false;
    quint64 frames = 0;
    GstElement *pipeline = nullptr;
    GstElement *source = nullptr;
    GstElement *sink = nullptr;
};
