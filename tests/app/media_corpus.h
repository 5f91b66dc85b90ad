#pragma once

// A corpus of the file kinds operators bring, generated with ffmpeg at test
// time: short (2 s) and small, so that a run stays quick, but each one the
// codec, container and picture shape it stands for. Every clip shows a
// moving colour pattern and, where it has sound, a tone.

#include <QDir>
#include <QProcess>
#include <QString>
#include <QStringList>

#include <optional>

namespace tarnix::test {

struct CorpusFile {
    const char *name;
    // What analysis must find: "video", "audio" or "stillImage"; an empty
    // text takes whatever it reports (an animated GIF).
    const char *mediaType;
    // The length analysis must find, or -1 where the item has none (stills
    // that are not PNG or JPEG) or any (an animated GIF).
    qint64 durationMs;
    QStringList arguments;
};

inline QStringList corpusVideo(const char *size, const char *rate)
{
    return {"-f", "lavfi", "-i", QStringLiteral("testsrc2=size=%1:rate=%2:duration=2").arg(size, rate)};
}

inline QStringList corpusTone()
{
    return {"-f", "lavfi", "-i", "sine=frequency=440:sample_rate=48000:duration=2"};
}

inline QList<CorpusFile> mediaCorpus()
{
    const QStringList tone = corpusTone();
    return {
        {"h264-high-bframes.mp4", "video", 2000,
         corpusVideo("1280x720", "30000/1001") + tone
             + QStringList{"-c:v", "libx264", "-profile:v", "high", "-bf", "3", "-preset", "veryfast", "-pix_fmt",
                           "yuv420p", "-c:a", "aac", "-shortest"}},
        {"interlaced-1080i25.mkv", "video", 2000,
         corpusVideo("1920x1080", "25") + tone
             + QStringList{"-vf", "setfield=tff", "-flags", "+ildct+ilme", "-c:v", "libx264", "-preset", "ultrafast",
                           "-x264-params", "interlaced=1:tff=1", "-pix_fmt", "yuv420p", "-c:a", "aac", "-shortest"}},
        {"hevc-10bit.mp4", "video", 2000,
         corpusVideo("640x360", "25") + tone
             + QStringList{"-c:v", "libx265", "-preset", "ultrafast", "-x265-params", "log-level=error", "-pix_fmt",
                           "yuv420p10le", "-tag:v", "hvc1", "-c:a", "aac", "-shortest"}},
        {"vp9-opus.webm", "video", 2000,
         corpusVideo("640x360", "25") + tone
             + QStringList{"-c:v", "libvpx-vp9", "-deadline", "realtime", "-cpu-used", "8", "-b:v", "1M", "-c:a",
                           "libopus", "-shortest"}},
        {"prores-pcm24.mov", "video", 2000,
         corpusVideo("640x360", "25") + tone
             + QStringList{"-c:v", "prores_ks", "-profile:v", "2", "-c:a", "pcm_s24le", "-shortest"}},
        {"mpeg2-422-pcm.mxf", "video", 2000,
         corpusVideo("720x576", "25") + tone
             + QStringList{"-c:v", "mpeg2video", "-pix_fmt", "yuv422p", "-b:v", "15M", "-maxrate", "15M", "-bufsize",
                           "2M", "-c:a", "pcm_s16le", "-shortest"}},
        {"mjpeg-pcm.avi", "video", 2000,
         corpusVideo("640x360", "25") + tone
             + QStringList{"-c:v", "mjpeg", "-q:v", "4", "-pix_fmt", "yuvj420p", "-c:a", "pcm_s16le", "-shortest"}},
        {"anamorphic-576-16x9.mkv", "video", 2000,
         corpusVideo("720x576", "25") + tone
             + QStringList{"-vf", "setsar=64/45", "-c:v", "libx264", "-preset", "ultrafast", "-pix_fmt", "yuv420p",
                           "-c:a", "aac", "-shortest"}},
        // 30 frames in the first second, 10 in the second.
        {"variable-frame-rate.mp4", "video", 2000,
         QStringList{"-f", "lavfi", "-i", "testsrc2=size=640x360:rate=30:duration=2"}
             + QStringList{"-vf", "select=lt(t\\,1)+not(mod(n\\,3))", "-fps_mode", "vfr", "-c:v", "libx264", "-preset",
                           "ultrafast", "-pix_fmt", "yuv420p", "-video_track_timescale", "90000"}},
        {"tone.mp3", "audio", 2000, tone + QStringList{"-c:a", "libmp3lame", "-b:a", "128k"}},
        {"tone.flac", "audio", 2000, tone + QStringList{"-c:a", "flac"}},
        {"tone.m4a", "audio", 2000, tone + QStringList{"-c:a", "aac"}},
        {"tone.aac", "audio", 2000, tone + QStringList{"-c:a", "aac", "-f", "adts"}},
        {"tone-24bit.wav", "audio", 2000, tone + QStringList{"-c:a", "pcm_s24le"}},
        {"alpha.png", "stillImage", 5000,
         corpusVideo("640x360", "1") + QStringList{"-vf", "format=rgba,colorchannelmixer=aa=0.6", "-frames:v", "1"}},
        {"still.jpg", "stillImage", 5000, corpusVideo("640x360", "1") + QStringList{"-frames:v", "1", "-q:v", "3"}},
        {"still.jpeg", "stillImage", 5000,
         corpusVideo("320x180", "1") + QStringList{"-frames:v", "1", "-q:v", "3"}},
        {"still.bmp", "stillImage", -1, corpusVideo("640x360", "1") + QStringList{"-frames:v", "1"}},
        {"still.tiff", "stillImage", -1, corpusVideo("640x360", "1") + QStringList{"-frames:v", "1"}},
        {"still.tif", "stillImage", -1, corpusVideo("320x180", "1") + QStringList{"-frames:v", "1"}},
        {"still.webp", "stillImage", -1,
         corpusVideo("640x360", "1") + QStringList{"-frames:v", "1", "-c:v", "libwebp"}},
        {"animated.gif", "", -1, corpusVideo("320x180", "10") + QStringList{"-f", "gif"}},
    };
}

// Writes the file into the directory; the reason when ffmpeg fails.
inline std::optional<QString> generateCorpusFile(const QDir &directory, const CorpusFile &file)
{
    QProcess ffmpeg;
    ffmpeg.setProcessChannelMode(QProcess::MergedChannels);
    ffmpeg.start(QStringLiteral("ffmpeg"), QStringList{"-hide_banner", "-loglevel", "error", "-y"} + file.arguments
                                               + QStringList{directory.filePath(QString::fromLatin1(file.name))});
    if (!ffmpeg.waitForFinished(120000) || ffmpeg.exitStatus() != QProcess::NormalExit || ffmpeg.exitCode() != 0)
        return QStringLiteral("%1: %2").arg(QString::fromLatin1(file.name),
                                            QString::fromLocal8Bit(ffmpeg.readAll()).trimmed());
    return std::nullopt;
}

} // namespace tarnix::test
