#include "audio/program_audio_output.h"

#include "audio/audio_elements.h"
#include "audio/program_audio_device_change.h"
#include "audio/program_audio_texts.h"
#include "audio/volume_ramp.h"
#include "shell/log_categories.h"
#include "shell/pipeline_release.h"

#include <QObject>

#include <algorithm>
#include <cmath>
#include <mutex>
#include <utility>

namespace tarnix {

namespace {

namespace text = program_audio_text;

// One launch description; %1 is the output sink. Each receiver's chain ends
// in a gain that decides whether it is heard. The mixer waits 30 ms for a
// late receiver before it mixes without it: a deck whose sound comes a
// little late (a busy moment on the machine, another pipeline starting)
// is heard late by that much instead of leaving a hole in the program.
const char kProgramDescription[] =
    "audiomixer name=program-audio-mixer force-live=true ignore-inactive-pads=true latency=30000000 ! "
    "audioconvert ! audioresample ! "
    "audio/x-raw,format=F32LE,rate=48000,channels=2,layout=interleaved ! "
    "tarnixaudioeffects name=program-audio-effects slot=master ! "
    "tarnixaudiodelay name=program-audio-delay ! volume name=program-audio-volume ! "
    "level name=program-audio-level post-messages=true interval=5000000 ! "
    "%1 name=program-audio-output "
    "tarnixaudiosrc name=deck-a-audio-source channel=deck-a-audio buffer-time=200000000 "
    "latency-time=10000000 ! audio/x-raw,format=F32LE,rate=48000,channels=2,layout=interleaved ! "
    "tarnixaudioeffects name=deck-a-item-effects slot=item ! "
    "tarnixaudiodelay name=deck-a-item-delay ! "
    "level name=deck-a-item-audio-level post-messages=true interval=5000000 ! "
    "volume name=deck-a-take-volume volume=0.0 ! program-audio-mixer. "
    "tarnixaudiosrc name=deck-b-audio-source channel=deck-b-audio buffer-time=200000000 "
    "latency-time=10000000 ! audio/x-raw,format=F32LE,rate=48000,channels=2,layout=interleaved ! "
    "tarnixaudioeffects name=deck-b-item-effects slot=item ! "
    "tarnixaudiodelay name=deck-b-item-delay ! "
    "level name=deck-b-item-audio-level post-messages=true interval=5000000 ! "
    "volume name=deck-b-take-volume volume=0.0 ! program-audio-mixer. "
    "tarnixaudiosrc name=bgm-audio-source channel=bgm-audio buffer-time=200000000 "
    "latency-time=10000000 ! audio/x-raw,format=F32LE,rate=48000,channels=2,layout=interleaved ! "
    "volume name=bgm-control-volume volume=1.0 ! volume name=bgm-manual-fade-volume volume=1.0 ! "
    "volume name=bgm-transport-volume volume=1.0 ! "
    "level name=bgm-post-fader-audio-level post-messages=true interval=5000000 ! "
    "program-audio-mixer.";

bool hasProperty(GstElement *element, const char *name)
{
    return element && g_object_class_find_property(G_OBJECT_GET_CLASS(element), name);
}

void unrefElement(GstElement *&element)
{
    if (element)
        gst_object_unref(element);
    element = nullptr;
}

} // namespace

// Shared between the bus's synchronous handler (streaming threads) and the
// main thread; the mutex makes detaching safe against a running handler.
struct ProgramAudioBusCallbacks {
    std::mutex mutex;
    QObject *context = nullptr; // cleared at detach, before the object goes
    ProgramAudioOutput *owner = nullptr;
    GstBusSyncHandler forward = nullptr;
    gpointer forwardData = nullptr;
    bool latencyCallPending = false;
};

// What the buffer probe behind the master meter hands buffers to.
struct ProgramAudioTapState {
    std::mutex mutex;
    ProgramAudioOutput::AudioTap tap;
};

struct ProgramAudioOutput::Impl {
    Timings timings;
    GstElement *pipeline = nullptr;
    GstBus *bus = nullptr;
    GstElement *takeVolume[2] = {nullptr, nullptr};
    GstElement *itemEffects[2] = {nullptr, nullptr};
    GstElement *itemLevel[2] = {nullptr, nullptr};
    GstElement *masterVolume = nullptr;
    GstElement *masterEffects = nullptr;
    double masterEq[3] = {0.0, 0.0, 0.0};
    GstElement *masterLevel = nullptr;
    GstElement *bgmControlVolume = nullptr;
    GstElement *bgmManualFadeVolume = nullptr;
    GstElement *bgmTransportVolume = nullptr;
    GstElement *bgmLevel = nullptr;
    QString requestedDevice;
    QString activeDevice;
    std::shared_ptr<ProgramAudioDeviceChange> deviceChange;
    std::shared_ptr<ProgramAudioBusCallbacks> busCallbacks;
    std::unique_ptr<QObject> context;
    std::shared_ptr<ProgramAudioTapState> tapState = std::make_shared<ProgramAudioTapState>();
    bool latencyRecalcPending = false;
    bool deviceFailed = false;
    // When the output last failed, for the retry.
    std::chrono::steady_clock::time_point failedAt;
    // It played and then lost its device (an error while running): it is
    // opened again until it plays. An output that never got its device
    // waits for the operator's next choice instead.
    bool lostWhilePlaying = false;
    bool outputRunning = false;
    bool released = false;
    bool nullConfirmed = false;
    double masterGain = 1.0;
    double programFade = 0.0;
    bool muted = false;

    GstElement *element(const char *name) const
    {
        return pipeline ? gst_bin_get_by_name(GST_BIN(pipeline), name) : nullptr;
    }

    void writeMasterVolume()
    {
        if (masterVolume)
            g_object_set(masterVolume, "volume", (1.0 - programFade) * masterGain * (muted ? 0.0 : 1.0),
                         nullptr);
    }

    void releaseElements()
    {
        for (int deck = 0; deck < 2; ++deck) {
            unrefElement(takeVolume[deck]);
            unrefElement(itemEffects[deck]);
            unrefElement(itemLevel[deck]);
        }
        unrefElement(masterVolume);
        unrefElement(masterEffects);
        unrefElement(masterLevel);
        unrefElement(bgmControlVolume);
        unrefElement(bgmManualFadeVolume);
        unrefElement(bgmTransportVolume);
        unrefElement(bgmLevel);
    }

    void drainBus()
    {
        if (!bus)
            return;
        while (GstMessage *message = gst_bus_pop(bus))
            gst_message_unref(message);
    }
};

namespace {

GstBusSyncReply programBusHandler(GstBus *bus, GstMessage *message, gpointer userData)
{
    auto *callbacks = static_cast<std::shared_ptr<ProgramAudioBusCallbacks> *>(userData);
    ProgramAudioBusCallbacks &shared = **callbacks;
    GstBusSyncHandler forward = nullptr;
    gpointer forwardData = nullptr;
    {
        std::lock_guard lock(shared.mutex);
        forward = shared.forward;
        forwardData = shared.forwardData;
        if (GST_MESSAGE_TYPE(message) == GST_MESSAGE_LATENCY && shared.context &&
            shared.owner && !shared.latencyCallPending) {
            shared.latencyCallPending = true;
            std::weak_ptr<ProgramAudioBusCallbacks> weak = *callbacks;
            const bool queued = QMetaObject::invokeMethod(
                shared.context,
                [weak] {
                    const std::shared_ptr<ProgramAudioBusCallbacks> alive = weak.lock();
                    if (!alive)
                        return;
                    ProgramAudioOutput *owner = nullptr;
                    {
                        std::lock_guard inner(alive->mutex);
                        alive->latencyCallPending = false;
                        owner = alive->owner;
                    }
                    if (owner)
                        owner->updateLatency();
                },
                Qt::QueuedConnection);
            if (!queued)
                shared.latencyCallPending = false;
        }
    }
    return forward ? forward(bus, message, forwardData) : GST_BUS_PASS;
}

void deleteCallbacks(gpointer userData)
{
    delete static_cast<std::shared_ptr<ProgramAudioBusCallbacks> *>(userData);
}

// The presentation time of a buffer in 100 ns units: the clock's time now,
// moved by how far ahead of now the buffer is due.
std::int64_t presentationTime(GstPad *pad, GstBuffer *buffer)
{
    GstElement *element = gst_pad_get_parent_element(pad);
    GstClock *clock = element ? gst_element_get_clock(element) : nullptr;
    if (!clock) {
        if (element)
            gst_object_unref(element);
        return 0;
    }
    const GstClockTime now = gst_clock_get_time(clock);
    std::int64_t result = std::int64_t(now / 100);
    const GstClockTime base = gst_element_get_base_time(element);
    GstEvent *event = gst_pad_get_sticky_event(pad, GST_EVENT_SEGMENT, 0);
    if (event && GST_BUFFER_PTS_IS_VALID(buffer) && GST_CLOCK_TIME_IS_VALID(base)) {
        const GstSegment *segment = nullptr;
        gst_event_parse_segment(event, &segment);
        if (segment->format == GST_FORMAT_TIME) {
            const GstClockTime running =
                gst_segment_to_running_time(segment, GST_FORMAT_TIME, GST_BUFFER_PTS(buffer));
            if (GST_CLOCK_TIME_IS_VALID(running))
                result += (std::int64_t(running + base) - std::int64_t(now)) / 100;
        }
    }
    if (event)
        gst_event_unref(event);
    gst_object_unref(clock);
    gst_object_unref(element);
    return result;
}

GstPadProbeReturn tapProbe(GstPad *pad, GstPadProbeInfo *info, gpointer userData)
{
    auto &state = **static_cast<std::shared_ptr<ProgramAudioTapState> *>(userData);
    GstBuffer *buffer = GST_PAD_PROBE_INFO_BUFFER(info);
    std::lock_guard lock(state.mutex);
    if (state.tap && buffer)
        state.tap(buffer, presentationTime(pad, buffer));
    return GST_PAD_PROBE_OK;
}

void deleteTapState(gpointer userData)
{
    delete static_cast<std::shared_ptr<ProgramAudioTapState> *>(userData);
}

} // namespace

QString ProgramAudioOutput::defaultSinkFactory()
{
    return QStringLiteral("pulsesink slave-method=resample");
}

ProgramAudioOutput::ProgramAudioOutput()
    : ProgramAudioOutput(Timings{})
{
}

ProgramAudioOutput::ProgramAudioOutput(Timings timings)
    : d(std::make_unique<Impl>())
{
    d->timings = timings;
    d->context = std::make_unique<QObject>();
}

ProgramAudioOutput::~ProgramAudioOutput()
{
    if (!d->pipeline)
        return;
    if (requestNull()) {
        d->releaseElements();
        if (d->bus)
            gst_object_unref(d->bus);
        d->bus = nullptr;
        gst_object_unref(std::exchange(d->pipeline, nullptr));
        return;
    }
    // Threads of the pipeline may still run: everything stays referenced
    // until the process ends.
    qCWarning(lcAudio()).noquote() << text::kUnsafeRelease;
    retainPipelineForProcess(std::exchange(d->pipeline, nullptr), QStringLiteral("program-audio"));
}

bool ProgramAudioOutput::create(GstBusSyncHandler busHandler, gpointer userData,
                                const QString &deviceId, const QString &sinkFactory)
{
    if (d->pipeline || d->released)
        return false;
    if (!registerBridgeElements() || !registerDelayElement() || !registerEffectsElement()) {
        qCWarning(lcAudio()).noquote() << text::kRegisterFailed;
        return false;
    }

    const QByteArray description = QString::fromLatin1(kProgramDescription).arg(sinkFactory).toUtf8();
    GError *error = nullptr;
    GstElement *parsed = gst_parse_launch(description.constData(), &error);
    if (error || !parsed || !GST_IS_PIPELINE(parsed)) {
        qCWarning(lcAudio()).noquote()
            << text::kCreateFailed
            << (error ? QString::fromUtf8(error->message) : QStringLiteral("not a pipeline"));
        if (error)
            g_error_free(error);
        if (parsed)
            gst_object_unref(parsed);
        return false;
    }
    GstClock *clock = gst_system_clock_obtain();
    gst_pipeline_use_clock(GST_PIPELINE(parsed), clock);
    gst_object_unref(clock);
    d->pipeline = parsed;

    d->requestedDevice = deviceId;
    d->activeDevice = deviceId;
    if (GstElement *sink = d->element("program-audio-output")) {
        if (hasProperty(sink, "device")) {
            const QByteArray device = deviceId.toUtf8();
            g_object_set(sink, "device", deviceId.isEmpty() ? nullptr : device.constData(), nullptr);
        }
        gst_object_unref(sink);
    }

    d->takeVolume[0] = d->element("deck-a-take-volume");
    d->takeVolume[1] = d->element("deck-b-take-volume");
    d->itemEffects[0] = d->element("deck-a-item-effects");
    d->itemEffects[1] = d->element("deck-b-item-effects");
    d->itemLevel[0] = d->element("deck-a-item-audio-level");
    d->itemLevel[1] = d->element("deck-b-item-audio-level");
    d->masterVolume = d->element("program-audio-volume");
    d->masterEffects = d->element("program-audio-effects");
    d->masterLevel = d->element("program-audio-level");
    d->bgmControlVolume = d->element("bgm-control-volume");
    d->bgmManualFadeVolume = d->element("bgm-manual-fade-volume");
    d->bgmTransportVolume = d->element("bgm-transport-volume");
    d->bgmLevel = d->element("bgm-post-fader-audio-level");
    const GstElement *required[] = {
        d->takeVolume[0], d->takeVolume[1], d->itemEffects[0], d->itemEffects[1],
        d->itemLevel[0], d->itemLevel[1], d->masterVolume, d->masterEffects,
        d->masterLevel, d->bgmControlVolume, d->bgmManualFadeVolume, d->bgmTransportVolume,
        d->bgmLevel};
    if (std::any_of(std::begin(required), std::end(required), [](auto *e) { return !e; })) {
        qCWarning(lcAudio()).noquote() << text::kCreateFailed << "a named element is missing";
        d->releaseElements();
        gst_object_unref(std::exchange(d->pipeline, nullptr));
        return false;
    }

    if (GstPad *tapPad = gst_element_get_static_pad(d->masterLevel, "src")) {
        gst_pad_add_probe(tapPad, GST_PAD_PROBE_TYPE_BUFFER, tapProbe,
                          new std::shared_ptr<ProgramAudioTapState>(d->tapState), deleteTapState);
        gst_object_unref(tapPad);
    }

    setEqBands(d->masterEffects, d->masterEq[0], d->masterEq[1], d->masterEq[2]);
    d->writeMasterVolume();
    d->bus = gst_pipeline_get_bus(GST_PIPELINE(d->pipeline));
    d->busCallbacks = std::make_shared<ProgramAudioBusCallbacks>();
    d->busCallbacks->context = d->context.get();
    d->busCallbacks->owner = this;
    d->busCallbacks->forward = busHandler;
    d->busCallbacks->forwardData = userData;
    gst_bus_set_sync_handler(d->bus, programBusHandler,
                             new std::shared_ptr<ProgramAudioBusCallbacks>(d->busCallbacks),
                             deleteCallbacks);
    return true;
}

void ProgramAudioOutput::serviceDeviceChange(bool canApply)
{
    if (d->deviceChange) {
        if (!d->deviceChange->done.load(std::memory_order_acquire))
            return;
        // What the worker's attempt posted is over and done with.
        d->drainBus();
        if (d->deviceChange->success) {
            d->activeDevice = d->deviceChange->device;
            if (d->deviceChange->running)
                d->lostWhilePlaying = false;
        } else {
            d->deviceFailed = true;
            d->failedAt = std::chrono::steady_clock::now();
        }
        d->outputRunning = d->deviceChange->running;
        d->deviceChange.reset();
        if (d->latencyRecalcPending)
            updateLatency();
    }
    if (d->released || !d->pipeline)
        return;
    if (d->deviceFailed) {
        // A refused device whose predecessor was brought back keeps playing
        // there. An output that plays nowhere is opened again, only where a
        // change may be applied and not at every poll while the device
        // stays away.
        if (!d->lostWhilePlaying || d->outputRunning || !canApply
            || std::chrono::steady_clock::now() - d->failedAt < d->timings.failedRetry)
            return;
        d->deviceFailed = false;
    }
    if (d->outputRunning && d->requestedDevice == d->activeDevice)
        return;
    if (!canApply)
        return;

    GstElement *sink = d->element("program-audio-output");
    if (!sink) {
        markFailed();
        return;
    }
    const bool hasDevice = hasProperty(sink, "device");
    if (!hasDevice && !d->requestedDevice.isEmpty()) {
        gst_object_unref(sink);
        markFailed();
        return;
    }

    auto change = std::make_shared<ProgramAudioDeviceChange>();
    change->device = d->requestedDevice;
    ProgramAudioDeviceWork work;
    work.pipeline = GST_ELEMENT(gst_object_ref(d->pipeline));
    work.sink = sink;
    work.oldDevice = d->activeDevice.toUtf8();
    work.newDevice = d->requestedDevice.toUtf8();
    work.wasRunning = d->outputRunning;
    work.hasDeviceProperty = hasDevice;
    work.stateWait = d->timings.stateWait;
    d->deviceChange = change;
    QString error;
    if (!startProgramAudioDeviceChange(std::move(work), change, &error)) {
        qCWarning(lcAudio()).noquote() << text::kWorkerFailed << error;
        change->running = d->outputRunning;
        change->done.store(true, std::memory_order_release);
    }
}

void ProgramAudioOutput::setRequestedDevice(const QString &deviceId)
{
    if (d->released)
        return;
    d->requestedDevice = deviceId;
    d->deviceFailed = false;
    d->lostWhilePlaying = false;
}

void ProgramAudioOutput::retryDevice()
{
    if (!d->released)
        d->deviceFailed = false;
}

void ProgramAudioOutput::markFailed()
{
    if (!d->deviceFailed)
        d->failedAt = std::chrono::steady_clock::now();
    if (d->outputRunning)
        d->lostWhilePlaying = true;
    d->deviceFailed = true;
    // Whatever state the pipeline reads, its sound goes nowhere now.
    d->outputRunning = false;
}

bool ProgramAudioOutput::hasFailed() const
{
    return d->deviceFailed;
}

QString ProgramAudioOutput::requestedDevice() const
{
    return d->requestedDevice;
}

QString ProgramAudioOutput::activeDevice() const
{
    return d->activeDevice;
}

bool ProgramAudioOutput::isRunning() const
{
    return d->outputRunning;
}

bool ProgramAudioOutput::isDeviceChangeRunning() const
{
    return d->deviceChange && !d->deviceChange->done.load(std::memory_order_acquire);
}

bool ProgramAudioOutput::hasUsableDevice() const
{
    return !d->released && d->pipeline && d->outputRunning && !d->deviceFailed && !isDeviceChangeRunning();
}

QString ProgramAudioOutput::statusKey() const
{
    if (isDeviceChangeRunning())
        return QString::fromLatin1(text::kStatusApplying);
    if (d->deviceFailed)
        return QString::fromLatin1(text::kStatusFailed);
    if (d->requestedDevice == d->activeDevice)
        return QString::fromLatin1(text::kStatusApplied);
    return QString::fromLatin1(text::kStatusPending);
}

QString ProgramAudioOutput::statusText(const QString &key)
{
    if (key == QLatin1String(text::kStatusApplying))
        return QString::fromUtf8(text::kApplyingText);
    if (key == QLatin1String(text::kStatusFailed))
        return QString::fromUtf8(text::kFailedText);
    if (key == QLatin1String(text::kStatusApplied))
        return QString::fromUtf8(text::kAppliedText);
    if (key == QLatin1String(text::kStatusPending))
        return QString::fromUtf8(text::kPendingText);
    return QString();
}

bool ProgramAudioOutput::setDeckAudible(int deck, bool audible)
{
    if (deck < 0 || deck > 1 || !d->takeVolume[deck])
        return false;
    setVstAudible(d->itemEffects[deck], audible);
    if (!audible)
        clearDelay(d->pipeline, deck == 0 ? "deck-a-item-delay" : "deck-b-item-delay");
    g_object_set(d->takeVolume[deck], "volume", audible ? 1.0 : 0.0, nullptr);
    return true;
}

bool ProgramAudioOutput::setItemDelayFrames(int deck, int frames)
{
    if (deck < 0 || deck > 1)
        return false;
    return setDelayFrames(d->pipeline, deck == 0 ? "deck-a-item-delay" : "deck-b-item-delay", frames);
}

bool ProgramAudioOutput::setMasterDelayFrames(int frames)
{
    return setDelayFrames(d->pipeline, "program-audio-delay", frames);
}

bool ProgramAudioOutput::setItemEq(int deck, double lowDb, double midDb, double highDb)
{
    if (deck < 0 || deck > 1)
        return false;
    return setEqBands(d->itemEffects[deck], lowDb, midDb, highDb);
}

bool ProgramAudioOutput::setMasterEq(double lowDb, double midDb, double highDb)
{
    const double bands[3] = {lowDb, midDb, highDb};
    for (int band = 0; band < 3; ++band)
        d->masterEq[band] = std::isfinite(bands[band]) ? std::clamp(bands[band], -15.0, 15.0) : 0.0;
    return setEqBands(d->masterEffects, d->masterEq[0], d->masterEq[1], d->masterEq[2]);
}

namespace {

bool writeGain(GstElement *volume, double gain, double maximum)
{
    if (!volume || !std::isfinite(gain))
        return false;
    g_object_set(volume, "volume", std::clamp(gain, 0.0, maximum), nullptr);
    return true;
}

} // namespace

bool ProgramAudioOutput::setMasterVolume(double gain)
{
    if (!std::isfinite(gain))
        return false;
    d->masterGain = std::clamp(gain, 0.0, 2.0);
    d->writeMasterVolume();
    return d->masterVolume != nullptr;
}

bool ProgramAudioOutput::setMasterMuted(bool muted)
{
    d->muted = muted;
    d->writeMasterVolume();
    return d->masterVolume != nullptr;
}

bool ProgramAudioOutput::setProgramFade(double amount)
{
    if (!std::isfinite(amount))
        return false;
    d->programFade = std::clamp(amount, 0.0, 1.0);
    d->writeMasterVolume();
    return d->masterVolume != nullptr;
}

bool ProgramAudioOutput::setBgmControlVolume(double gain)
{
    return writeGain(d->bgmControlVolume, gain, 2.0);
}

bool ProgramAudioOutput::setBgmManualFadeVolume(double gain)
{
    return writeGain(d->bgmManualFadeVolume, gain, 1.0);
}

bool ProgramAudioOutput::setBgmTransportVolume(double gain)
{
    clearVolumeRamp(d->bgmTransportVolume);
    return writeGain(d->bgmTransportVolume, gain, 1.0);
}

bool ProgramAudioOutput::isBgmTransportRampApplied() const
{
    return isVolumeRampApplied(d->bgmTransportVolume);
}

bool ProgramAudioOutput::rampBgmTransportVolume(double from, double to, qint64 durationMs)
{
    if (!std::isfinite(from) || !std::isfinite(to))
        return false;
    if (scheduleVolumeRamp(d->bgmTransportVolume, d->pipeline, std::clamp(from, 0.0, 1.0), std::clamp(to, 0.0, 1.0),
                           durationMs))
        return true;
    // Without a running pipeline there is no time to ramp in: the end stands.
    return setBgmTransportVolume(to);
}

bool ProgramAudioOutput::setBgmMuted(bool muted)
{
    if (!d->bgmTransportVolume)
        return false;
    g_object_set(d->bgmTransportVolume, "mute", muted ? TRUE : FALSE, nullptr);
    return true;
}

void ProgramAudioOutput::setAudioTap(AudioTap tap)
{
    std::lock_guard lock(d->tapState->mutex);
    d->tapState->tap = std::move(tap);
}

GstElement *ProgramAudioOutput::pipeline() const
{
    return d->pipeline;
}

GstElement *ProgramAudioOutput::deckLevelElement(int deck) const
{
    return deck == 0 || deck == 1 ? d->itemLevel[deck] : nullptr;
}

GstElement *ProgramAudioOutput::masterLevelElement() const
{
    return d->masterLevel;
}

GstElement *ProgramAudioOutput::bgmLevelElement() const
{
    return d->bgmLevel;
}

void ProgramAudioOutput::detachBus()
{
    if (d->busCallbacks) {
        std::lock_guard lock(d->busCallbacks->mutex);
        d->busCallbacks->context = nullptr;
        d->busCallbacks->owner = nullptr;
        d->busCallbacks->forward = nullptr;
        d->busCallbacks->forwardData = nullptr;
    }
    if (d->bus)
        gst_bus_set_sync_handler(d->bus, nullptr, nullptr, nullptr);
}

bool ProgramAudioOutput::canRelease() const
{
    return !isDeviceChangeRunning();
}

bool ProgramAudioOutput::requestNull()
{
    d->released = true;
    detachBus();
    if (d->nullConfirmed)
        return true;
    if (isDeviceChangeRunning())
        return false;
    if (!d->pipeline) {
        d->nullConfirmed = true;
        return true;
    }
    d->nullConfirmed = stopPipeline(d->pipeline, QString::fromLatin1(text::kReleaseLabel),
                                    d->timings.stateWait);
    return d->nullConfirmed;
}

void ProgramAudioOutput::updateLatency()
{
    d->latencyRecalcPending = true;
    if (d->released || !d->pipeline || !d->outputRunning || isDeviceChangeRunning())
        return;
    d->latencyRecalcPending = false;
    if (!gst_bin_recalculate_latency(GST_BIN(d->pipeline)))
        qCWarning(lcAudio()).noquote() << text::kLatencyFailed;
}

} // namespace tarnix
