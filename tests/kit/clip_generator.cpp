#include "kit/clip_generator.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace tarnix::testkit {

namespace {

bool fail(QString *error, const QString &text)
{
    if (error)
        *error = text;
    return false;
}

} // namespace

bool generateClip(const QString &path, const QString &body, QString *error,
                  const std::function<void(GstElement *pipeline)> &feed, int limitSeconds)
{
    if (QFile::exists(path))
        return true;
    QDir().mkpath(QFileInfo(path).absolutePath());
    const QString partial = path + QStringLiteral(".partial");
    const QString description = body + QStringLiteral(" ! filesink location=\"%1\"").arg(partial);
    GError *parseError = nullptr;
    GstElement *pipeline = gst_parse_launch(description.toUtf8().constData(), &parseError);
    if (parseError || !pipeline) {
        const QString reason = parseError ? QString::fromUtf8(parseError->message) : QStringLiteral("no pipeline");
        if (parseError)
            g_error_free(parseError);
        if (pipeline)
            gst_object_unref(pipeline);
        return fail(error, QStringLiteral("cannot build the generator of %1: %2").arg(path, reason));
    }
    gst_element_set_state(pipeline, GST_STATE_PLAYING);
    if (feed)
        feed(pipeline);
    GstBus *bus = gst_element_get_bus(pipeline);
    GstMessage *done = gst_bus_timed_pop_filtered(bus, GstClockTime(limitSeconds) * GST_SECOND,
                                                  GstMessageType(GST_MESSAGE_EOS | GST_MESSAGE_ERROR));
    QString reason;
    if (!done) {
        reason = QStringLiteral("did not end within %1 s").arg(limitSeconds);
    } else if (GST_MESSAGE_TYPE(done) == GST_MESSAGE_ERROR) {
        GError *streamError = nullptr;
        gst_message_parse_error(done, &streamError, nullptr);
        reason = streamError ? QString::fromUtf8(streamError->message) : QStringLiteral("error");
        if (streamError)
            g_error_free(streamError);
    }
    if (done)
        gst_message_unref(done);
    gst_object_unref(bus);
    gst_element_set_state(pipeline, GST_STATE_NULL);
    gst_object_unref(pipeline);
    if (reason.isEmpty() && !QFile::rename(partial, path))
        reason = QStringLiteral("cannot rename %1").arg(partial);
    if (!reason.isEmpty()) {
        QFile::remove(partial);
        return fail(error, QStringLiteral("generating %1 failed: %2").arg(path, reason));
    }
    return true;
}

QString solidClipBody(const SolidClip &clip)
{
    QString encoder = QStringLiteral("openh264enc gop-size=%1").arg(clip.keyframeInterval);
    if (clip.bitrate > 0)
        encoder += QStringLiteral(" bitrate=%1").arg(clip.bitrate);
    return QStringLiteral("videotestsrc num-buffers=%1 pattern=solid-color foreground-color=0x%2 ! "
                          "video/x-raw,width=%3,height=%4,framerate=%5/1 ! %6 ! h264parse ! mp4mux")
        .arg(clip.frames)
        .arg(clip.argb, 8, 16, QLatin1Char('0'))
        .arg(clip.width)
        .arg(clip.height)
        .arg(clip.fps)
        .arg(encoder);
}

QString toneWavBody(const ToneClip &clip)
{
    return QStringLiteral("audiotestsrc num-buffers=%1 samplesperbuffer=1024 volume=1.0 ! "
                          "audio/x-raw,format=F32LE,rate=48000,channels=2 ! volume volume=%2 ! wavenc")
        .arg(clip.buffers)
        .arg(clip.gain, 0, 'f', 4);
}

} // namespace tarnix::testkit
