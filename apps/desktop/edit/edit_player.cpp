#include "edit/edit_player.h"

#include "audio/audio_elements.h"
#include "audio/level_reading.h"
#include "edit/edit_pfl_tap.h"
#include "playout/async_file_preparation.h"
#include "playout/async_pipeline_stop.h"
#include "shell/gst_bin_parts.h"
#include "shell/log_categories.h"
#include "shell/low_priority_threads.h"
#include "shell/pipeline_release.h"
#include "video/owned_sample.h"

#include <gst/app/gstappsink.h>
#include <gst/video/video.h>

#include <algorithm>
#include <cmath>
#include <mutex>

namespace tarnix {

namespace {

// No scaling but the letterbox into the surface's size, on two threads so
// that a scrub keeps up; BGRx is what a QImage paints without converting.
constexpr char kVideoBin[] =
    "queue name=edit-video-input max-size-buffers=2 max-size-bytes=0 max-size-time=0 leaky=downstream ! "
    "videoconvertscale add-borders=true n-threads=2 ! "
    "video/x-raw,format=BGRx,width=%1,height=%2,pixel-aspect-ratio=1/1 ! "
    "appsink name=edit-video-sink max-buffers=1 drop=true wait-on-eos=false sync=true qos=false "
    "enable-last-sample=false";

constexpr char kAudioBin[] =
    "audioconvert ! audioresample ! audio/x-raw,format=F32LE,rate=48000,channels=2,layout=interleaved ! "
    "level name=edit-input-audio-level post-messages=true interval=20000000 ! "
    "tarnixaudioeffects name=edit-nominal-effects slot=edit ! "
    "tarnixaudiodelay name=edit-nominal-delay ! "
    "volume name=edit-nominal-audio-volume ! "
    "level name=edit-audio-level post-messages=true interval=20000000 ! "
    "fakesink name=edit-audio-output sync=true qos=false enable-last-sample=false";

constexpr char kRetainWarning[] = "EDIT player pipeline did not stop; it is kept for the rest of the run";

// The newest picture of the appsink, written by its streaming thread and
// taken by the main thread; shared by both so neither outlives the other.
struct FrameSlot {
    std::mutex mutex;
    GstSample *sample = nullptr;

    void put(GstSample *owned)
    {
        std::lock_guard lock(mutex);
        if (sample)
            gst_sample_unref(sample);
        sample = owned;
    }
    GstSample *take()
    {
        std::lock_guard lock(mutex);
        return std::exchange(sample, nullptr);
    }
    ~FrameSlot()
    {
        if (sample)
            gst_sample_unref(sample);
    }
};

GstFlowReturn storeSample(GstAppSink *sink, gpointer data, bool preroll)
{
    auto *slot = static_cast<std::shared_ptr<FrameSlot> *>(data);
    GstSample *pulled = preroll ? gst_app_sink_pull_preroll(sink) : gst_app_sink_pull_sample(sink);
    if (pulled)
        (*slot)->put(ownedSample(pulled));
    return GST_FLOW_OK;
}

// A QImage over the sample's mapped buffer: no copy; the map and the sample
// are let go when the last QImage copy is.
struct MappedFrame {
    GstSample *sample = nullptr;
    GstVideoFrame frame{};
};

void releaseMappedFrame(void *data)
{
    auto *mapped = static_cast<MappedFrame *>(data);
    gst_video_frame_unmap(&mapped->frame);
    gst_sample_unref(mapped->sample);
    delete mapped;
}

QImage imageOf(GstSample *sample)
{
    GstVideoInfo info;
    if (!gst_video_info_from_caps(&info, gst_sample_get_caps(sample))) {
        gst_sample_unref(sample);
        return {};
    }
    auto *mapped = new MappedFrame;
    mapped->sample = sample;
    if (!gst_video_frame_map(&mapped->frame, &info, gst_sample_get_buffer(sample), GST_MAP_READ)) {
        gst_sample_unref(sample);
        delete mapped;
        return {};
    }
    return QImage(static_cast<const uchar *>(GST_VIDEO_FRAME_PLANE_DATA(&mapped->frame, 0)),
                  GST_VIDEO_FRAME_WIDTH(&mapped->frame), GST_VIDEO_FRAME_HEIGHT(&mapped->frame),
                  GST_VIDEO_FRAME_PLANE_STRIDE(&mapped->frame, 0), QImage::Format_RGB32, releaseMappedFrame,
                  mapped);
}

} // namespace

struct EditPlayer::Impl {
    Options options;
    GstElement *playbin = nullptr;  // owned while loaded; handed to the stop on unload
    GstElement *appsink = nullptr;
    GstElement *inputLevel = nullptr;
    GstElement *outputLevel = nullptr;
    GstElement *effects = nullptr;
    GstElement *delay = nullptr;
    GstElement *volume = nullptr;
    GstBus *bus = nullptr;
    std::shared_ptr<FrameSlot> frames;
    std::shared_ptr<AsyncFilePreparation> preparation;
    std::shared_ptr<AsyncPipelineStop> stop;
    // A stop after a load that never started is not the operator's unload.
    bool stopReported = true;
    bool loaded = false;
    // Between play() and pause(): only then is a level reading sound the
    // operator hears (a preroll or a seek also runs buffers through the
    // meters, and their readings arrive after the pause).
    bool playRequested = false;
    QString errorText;
    bool offline = false;
    double gain = 1.0;
    int delayFrames = 0;
    double eq[3] = {0, 0, 0};
    double levels[4] = {kLevelFloorDb, kLevelFloorDb, kLevelFloorDb, kLevelFloorDb};

    void dropElements()
    {
        for (GstElement **element : {&appsink, &inputLevel, &outputLevel, &effects, &delay, &volume}) {
            if (*element)
                gst_object_unref(*element);
            *element = nullptr;
        }
        if (bus)
            gst_object_unref(bus);
        bus = nullptr;
    }

    void applyAudio()
    {
        if (volume)
            g_object_set(volume, "volume", gain, nullptr);
        if (delay)
            g_object_set(delay, "frames", delayFrames, nullptr);
        if (effects)
            setEqBands(effects, eq[0], eq[1], eq[2]);
    }

    bool build(QString *error);
    void startUnload(bool report = true);
};

bool EditPlayer::Impl::build(QString *error)
{
    GstElement *bin = gst_element_factory_make("playbin", "edit-player");
    if (!bin) {
        *error = QStringLiteral("Could not create the EDIT playbin.");
        return false;
    }
    playbin = GST_ELEMENT(gst_object_ref_sink(bin));
    QString parseError;
    GstElement *videoBin = parseOwnedBin(
        QString::fromLatin1(kVideoBin).arg(options.videoSize.width()).arg(options.videoSize.height()), &parseError);
    if (!videoBin) {
        *error = QStringLiteral("Failed to create EDIT video output: %1").arg(parseError);
        return false;
    }
    GstElement *audioBin = parseOwnedBin(QString::fromLatin1(kAudioBin), &parseError);
    if (!audioBin) {
        gst_object_unref(videoBin);
        *error = QStringLiteral("Failed to create EDIT audio output: %1").arg(parseError);
        return false;
    }
    appsink = childElement(videoBin, QStringLiteral("edit-video-sink"));
    inputLevel = childElement(audioBin, QStringLiteral("edit-input-audio-level"));
    outputLevel = childElement(audioBin, QStringLiteral("edit-audio-level"));
    effects = childElement(audioBin, QStringLiteral("edit-nominal-effects"));
    delay = childElement(audioBin, QStringLiteral("edit-nominal-delay"));
    volume = childElement(audioBin, QStringLiteral("edit-nominal-audio-volume"));
    g_object_set(playbin, "video-sink", videoBin, "audio-sink", audioBin, nullptr);
    gst_object_unref(videoBin);
    gst_object_unref(audioBin);

    frames = std::make_shared<FrameSlot>();
    GstAppSinkCallbacks callbacks{};
    callbacks.new_preroll = [](GstAppSink *sink, gpointer data) { return storeSample(sink, data, true); };
    callbacks.new_sample = [](GstAppSink *sink, gpointer data) { return storeSample(sink, data, false); };
    gst_app_sink_set_callbacks(GST_APP_SINK(appsink), &callbacks, new std::shared_ptr<FrameSlot>(frames),
                               [](gpointer data) { delete static_cast<std::shared_ptr<FrameSlot> *>(data); });
    applyAudio();
    // Without the tap EDIT still trims; the operator only cannot listen.
    if (options.pflFeed && !attachPflTap(volume, options.pflFeed))
        qCWarning(lcEdit()).noquote() << "Could not create the EDIT PFL tap.";
    bus = gst_element_get_bus(playbin);
    runStreamingThreadsAtNiceness(playbin, options.streamingNice);
    return true;
}

void EditPlayer::Impl::startUnload(bool report)
{
    stopReported = report;
    if (preparation)
        preparation->cancel();
    dropElements();
    GstElement *pipeline = std::exchange(playbin, nullptr);
    std::shared_ptr<AsyncFilePreparation> worker = std::exchange(preparation, nullptr);
    loaded = false;
    AsyncPipelineStop::Steps steps;
    const auto limit = options.nullConfirmationLimit;
    // The preparing worker holds its own reference; it lets go before the
    // stop sets NULL under it.
    steps.before = [worker, limit] {
        if (worker)
            worker->waitFinished(limit);
    };
    stop = AsyncPipelineStop::start(pipeline, std::move(steps), QString::fromLatin1(kRetainWarning), limit);
    if (!stop) {
        // No thread for the stop: the pipeline is kept rather than freed
        // under threads that may still run.
        qCWarning(lcEdit()).noquote() << kRetainWarning;
        retainPipelineForProcess(pipeline);
        return;
    }
    gst_object_unref(pipeline);
}

EditPlayer::EditPlayer(const Options &options)
    : d(std::make_unique<Impl>())
{
    d->options = options;
}

std::unique_ptr<EditPlayer> EditPlayer::create(const Options &options, QString *error)
{
    QString registration;
    if (!registerAudioElements(&registration)) {
        if (error)
            *error = QStringLiteral("Failed to create EDIT audio output: %1").arg(registration);
        return nullptr;
    }
    if (!elementFactoriesExist({"playbin", "level", "volume", "fakesink", "audioconvert", "audioresample"})) {
        if (error)
            *error = QStringLiteral("Failed to create EDIT audio output: an element is missing");
        return nullptr;
    }
    if (!elementFactoriesExist({"videoconvertscale", "appsink", "queue"})) {
        if (error)
            *error = QStringLiteral("Failed to create EDIT video output: an element is missing");
        return nullptr;
    }
    return std::unique_ptr<EditPlayer>(new EditPlayer(options));
}

EditPlayer::~EditPlayer()
{
    if (d->playbin)
        d->startUnload();
}

bool EditPlayer::load(const QString &path, qint64 inMs, QString *error)
{
    if (d->playbin || hasUnloadToReport()) {
        if (error)
            *error = QStringLiteral("EDIT is busy loading or unloading.");
        return false;
    }
    d->errorText.clear();
    d->offline = false;
    d->playRequested = false;
    std::fill(std::begin(d->levels), std::end(d->levels), kLevelFloorDb);
    QString buildError;
    if (!d->build(&buildError)) {
        if (error)
            *error = buildError;
        d->startUnload(false);
        return false;
    }
    DeckSource request;
    request.source = path;
    request.inMs = std::max<qint64>(0, inMs);
    AsyncFilePreparation::Options prepare;
    prepare.timings.width = d->options.videoSize.width();
    prepare.timings.height = d->options.videoSize.height();
    // The operator waits for this load: the worker looks at the state
    // often rather than at the decks' pace.
    prepare.timings.statePoll = d->options.loadStatePoll;
    d->preparation = AsyncFilePreparation::start(d->playbin, request, d->options.loadTimeout, prepare);
    if (!d->preparation) {
        if (error)
            *error = QStringLiteral("Could not start the EDIT load.");
        d->startUnload(false);
        return false;
    }
    return true;
}

bool EditPlayer::unload()
{
    if (!d->playbin)
        return false;
    d->startUnload();
    return true;
}

bool EditPlayer::isLoading() const { return d->preparation && !d->loaded; }
bool EditPlayer::isLoaded() const { return d->loaded; }
bool EditPlayer::isUnloading() const { return d->stop && !d->stop->isFinished(); }
bool EditPlayer::hasUnloadToReport() const { return d->stop && d->stopReported; }
QString EditPlayer::errorText() const { return d->errorText; }
bool EditPlayer::offline() const { return d->offline; }

EditPlayer::Event EditPlayer::poll()
{
    if (d->stop && d->stop->isFinished()) {
        d->stop.reset();
        if (d->stopReported)
            return Event::Unloaded;
    }
    if (!d->playbin)
        return Event::None;
    if (d->preparation && !d->loaded) {
        if (!d->preparation->isFinished())
            return Event::None;
        if (d->preparation->result() != AsyncFilePreparation::Prepared) {
            d->errorText = d->preparation->error();
            d->offline = d->preparation->result() == AsyncFilePreparation::Offline;
            return Event::LoadFailed;
        }
        d->loaded = true;
        // What the preroll measured is not sound the operator hears.
        std::fill(std::begin(d->levels), std::end(d->levels), kLevelFloorDb);
        return Event::Loaded;
    }
    if (!d->loaded || !d->bus)
        return Event::None;
    while (GstMessage *message = gst_bus_pop(d->bus)) {
        Event event = Event::None;
        switch (GST_MESSAGE_TYPE(message)) {
        case GST_MESSAGE_ERROR: {
            GError *error = nullptr;
            gst_message_parse_error(message, &error, nullptr);
            d->errorText = error && error->message ? QString::fromUtf8(error->message) : QString();
            if (error)
                g_error_free(error);
            event = Event::Error;
            break;
        }
        case GST_MESSAGE_EOS:
            event = Event::EndOfStream;
            break;
        case GST_MESSAGE_ELEMENT:
            if (const std::optional<LevelReading> reading = d->playRequested ? parseLevelMessage(message) : std::nullopt) {
                const bool input = GST_MESSAGE_SRC(message) == GST_OBJECT(d->inputLevel);
                d->levels[input ? 0 : 2] = reading->leftDb;
                d->levels[input ? 1 : 3] = reading->rightDb;
            }
            break;
        default:
            break;
        }
        gst_message_unref(message);
        if (event != Event::None)
            return event;
    }
    return Event::None;
}

bool EditPlayer::play()
{
    if (!d->loaded || gst_element_set_state(d->playbin, GST_STATE_PLAYING) == GST_STATE_CHANGE_FAILURE)
        return false;
    d->playRequested = true;
    return true;
}

bool EditPlayer::pause()
{
    if (!d->loaded || gst_element_set_state(d->playbin, GST_STATE_PAUSED) == GST_STATE_CHANGE_FAILURE)
        return false;
    // No readings count while paused: the meters fall to silence.
    d->playRequested = false;
    std::fill(std::begin(d->levels), std::end(d->levels), kLevelFloorDb);
    return true;
}

bool EditPlayer::isPlaying() const
{
    if (!d->loaded)
        return false;
    GstState state = GST_STATE_VOID_PENDING;
    GstState pending = GST_STATE_VOID_PENDING;
    if (gst_element_get_state(d->playbin, &state, &pending, 0) == GST_STATE_CHANGE_FAILURE)
        return false;
    return (pending == GST_STATE_VOID_PENDING ? state : pending) == GST_STATE_PLAYING;
}

bool EditPlayer::seek(qint64 positionMs)
{
    if (!d->loaded || positionMs < 0)
        return false;
    return gst_element_seek_simple(d->playbin, GST_FORMAT_TIME,
                                   GstSeekFlags(GST_SEEK_FLAG_FLUSH | GST_SEEK_FLAG_ACCURATE),
                                   positionMs * GST_MSECOND);
}

bool EditPlayer::setRate(double rate, qint64 positionMs)
{
    if (!d->loaded || positionMs < 0 || !(rate > 0.0))
        return false;
    int flags = GST_SEEK_FLAG_FLUSH | GST_SEEK_FLAG_ACCURATE;
    if (rate > 1.0)
        flags |= GST_SEEK_FLAG_TRICKMODE;
    return gst_element_seek(d->playbin, rate, GST_FORMAT_TIME, GstSeekFlags(flags), GST_SEEK_TYPE_SET,
                            positionMs * GST_MSECOND, GST_SEEK_TYPE_NONE, GST_CLOCK_TIME_NONE);
}

bool EditPlayer::stepForward(int frames)
{
    if (!d->loaded || frames <= 0)
        return false;
    // A step moves the paused video sink on by whole frames without a
    // flush: no decoding again from the keyframe before.
    return gst_element_send_event(d->playbin,
                                  gst_event_new_step(GST_FORMAT_BUFFERS, guint64(frames), 1.0, TRUE, FALSE));
}

qint64 EditPlayer::positionMs() const
{
    gint64 position = -1;
    if (!d->loaded || !gst_element_query_position(d->playbin, GST_FORMAT_TIME, &position) || position < 0)
        return -1;
    return position / GST_MSECOND;
}

qint64 EditPlayer::durationMs() const
{
    gint64 duration = -1;
    if (!d->loaded || !gst_element_query_duration(d->playbin, GST_FORMAT_TIME, &duration) || duration < 0)
        return -1;
    return duration / GST_MSECOND;
}

double EditPlayer::frameRate() const
{
    if (!d->loaded)
        return 0.0;
    GstPad *pad = nullptr;
    g_signal_emit_by_name(d->playbin, "get-video-pad", 0, &pad);
    if (!pad)
        return 0.0;
    double rate = 0.0;
    if (GstCaps *caps = gst_pad_get_current_caps(pad)) {
        gint numerator = 0;
        gint denominator = 1;
        const GstStructure *structure = gst_caps_get_structure(caps, 0);
        if (gst_structure_get_fraction(structure, "framerate", &numerator, &denominator) && denominator > 0)
            rate = double(numerator) / denominator;
        gst_caps_unref(caps);
    }
    gst_object_unref(pad);
    return rate;
}

void EditPlayer::setNominalGain(double gain)
{
    d->gain = std::clamp(gain, 0.0, 10.0);
    d->applyAudio();
}

double EditPlayer::nominalGain() const { return d->gain; }

void EditPlayer::setNominalDelayFrames(int frames)
{
    d->delayFrames = std::clamp(frames, 0, 6);
    d->applyAudio();
}

void EditPlayer::setNominalEq(double lowDb, double midDb, double highDb)
{
    d->eq[0] = lowDb;
    d->eq[1] = midDb;
    d->eq[2] = highDb;
    d->applyAudio();
}

QImage EditPlayer::takeFrame()
{
    if (!d->frames)
        return {};
    GstSample *sample = d->frames->take();
    return sample ? imageOf(sample) : QImage();
}

void EditPlayer::levels(double *inputLeft, double *inputRight, double *outputLeft, double *outputRight) const
{
    *inputLeft = d->levels[0];
    *inputRight = d->levels[1];
    *outputLeft = d->levels[2];
    *outputRight = d->levels[3];
}

} // namespace tarnix
