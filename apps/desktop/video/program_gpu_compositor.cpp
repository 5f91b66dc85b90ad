#include "video/program_gpu_compositor.h"

#include "shell/log_categories.h"
#include "shell/pipeline_release.h"
#include "video/program_frame_memories.h"
#include "video/program_layer_slot.h"
#include "video/program_monitor_widget.h"
#include "video/owned_sample.h"
#include "video/program_overlay_element.h"
#include "video/program_renderer.h"
#include "video/program_video_texts.h"

#include <gst/app/gstappsink.h>
#include <gst/video/video.h>

#include <QElapsedTimer>
#include <QGuiApplication>
#include <QImage>
#include <QPointer>
#include <QScreen>
#include <QWindow>

#include <algorithm>
#include <array>
#include <atomic>
#include <mutex>
#include <numeric>

namespace tarnix {
namespace {

// The frame clock: a live source at 60/1 paced by a synchronised fakesink,
// our overlay making the program frame of each tick, and a monitor branch
// that drops what it cannot show and converts to the monitor's size on its
// own streaming thread. The source's ticks are tiny: nobody looks at their
// pixels, so painting a program-sized frame per tick would be wasted. The
// clock sink does no work, so it claims no processing deadline: the picture
// is not held back by a latency nobody needs.
constexpr char kPipelineDescription[] =
    "videotestsrc is-live=true pattern=black ! "
    "video/x-raw,format=BGRA,width=16,height=16,pixel-aspect-ratio=1/1,framerate=60/1 ! "
    "tarnixprogramoverlay name=program-gpu-overlay ! "
    "video/x-raw,format=BGRA,width=%1,height=%2,pixel-aspect-ratio=1/1,framerate=60/1 ! "
    "tee name=program-gpu-tee "
    "program-gpu-tee. ! queue name=program-gpu-clock-queue max-size-buffers=1 max-size-bytes=0 "
    "max-size-time=0 ! fakesink name=program-gpu-clock-sink sync=true enable-last-sample=false "
    "processing-deadline=0 "
    "program-gpu-tee. ! queue name=program-gpu-monitor-queue leaky=downstream max-size-buffers=1 "
    "max-size-bytes=0 max-size-time=0 ! %3";

// The monitor branch's tail: scaled to the widget, or, without a widget,
// nothing to convert.
constexpr char kMonitorTail[] =
    "videoconvertscale ! capsfilter name=program-gpu-monitor-caps caps=video/x-raw,format=BGRx,"
    "width=%1,height=%2,pixel-aspect-ratio=1/1 ! appsink name=program-gpu-monitor-sink sync=false "
    "max-buffers=1 drop=true enable-last-sample=false";
constexpr char kNoMonitorTail[] =
    "fakesink name=program-gpu-monitor-sink sync=false enable-last-sample=false";

// The monitor shows at most 30 frames a second.
constexpr GstClockTime kMonitorMinimumGap = 33333333;

// Program frames in flight at most: the two queues with what their sinks
// hold, the presenter's mailbox and the frame it shows, the frame repeated.
constexpr int kFrameBlocks = 16;
// What one deck on air keeps in use: made at start, the rest when needed.
constexpr int kFrameBlocksAtStart = 5;

struct Selection {
    int first = -1;
    float firstOpacity = 0.0f;
    int second = -1;
    float secondOpacity = 0.0f;
    bool operator==(const Selection &) const = default;
};

// Everything a program frame is made of. Two ticks with equal inputs give
// the same picture, so the second repeats the first frame's block.
struct FrameInputs {
    Selection decks;
    Selection overlays;
    float groupOpacity = 1.0f;
    float fadeToBlack = 0.0f;
    quint32 background = 0;
    bool transparentLayer = false;
    // Per place (deck first, deck second, DSK first, DSK second): the
    // slot's generation of the sample drawn, and whether there was one.
    std::array<quint64, 4> generations{};
    std::array<bool, 4> sampled{};
    bool operator==(const FrameInputs &) const = default;
};

// Tells the presenter when the program window lost its contents.
class ExposeWatcher final : public QObject
{
public:
    explicit ExposeWatcher(ProgramPresenter *presenter)
        : m_presenter(presenter)
    {
    }

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::Expose || event->type() == QEvent::Show)
            m_presenter->requestRepaint();
        return QObject::eventFilter(watched, event);
    }

private:
    ProgramPresenter *m_presenter;
};

bool validLayerIndex(int index)
{
    return index >= -1 && index <= 1;
}

// A layer sample mapped for reading for the length of one render.
struct MappedLayer {
    GstSample *sample = nullptr;
    GstVideoFrame frame{};
    bool mapped = false;
    ProgramLayerImage image;

    ~MappedLayer()
    {
        if (mapped)
            gst_video_frame_unmap(&frame);
        if (sample)
            gst_sample_unref(sample);
    }

    // Maps the sample as RGBA; for a deck it must be of the frame size.
    bool map(GstSample *taken, int width, int height, QString *error)
    {
        sample = taken;
        GstCaps *caps = gst_sample_get_caps(sample);
        GstBuffer *buffer = gst_sample_get_buffer(sample);
        GstVideoInfo info;
        if (!caps || !buffer || !gst_video_info_from_caps(&info, caps) || info.width <= 0
            || info.height <= 0) {
            *error = QString::fromUtf8(program_text::kLayerGeometry);
            return false;
        }
        // Decks deliver RGBA of the frame size; DSK layers BGRA of any size.
        const GstVideoFormat expected = width > 0 ? GST_VIDEO_FORMAT_RGBA : GST_VIDEO_FORMAT_BGRA;
        if (GST_VIDEO_INFO_FORMAT(&info) != expected
            || (width > 0 && (info.width != width || info.height != height))) {
            *error = QStringLiteral("Program layer sample is %1 %2x%3, expected %4%5")
                         .arg(QString::fromUtf8(gst_video_format_to_string(GST_VIDEO_INFO_FORMAT(&info))))
                         .arg(info.width)
                         .arg(info.height)
                         .arg(QString::fromUtf8(gst_video_format_to_string(expected)))
                         .arg(width > 0 ? QStringLiteral(" %1x%2").arg(width).arg(height) : QString());
            return false;
        }
        if (!gst_video_frame_map(&frame, &info, buffer, GST_MAP_READ)) {
            *error = QStringLiteral("Could not map Program layer sample");
            return false;
        }
        mapped = true;
        image.pixels = static_cast<const quint8 *>(GST_VIDEO_FRAME_PLANE_DATA(&frame, 0));
        image.width = info.width;
        image.height = info.height;
        image.stride = GST_VIDEO_FRAME_PLANE_STRIDE(&frame, 0);
        image.parNumerator = info.par_n;
        image.parDenominator = info.par_d;
        image.bgra = expected == GST_VIDEO_FORMAT_BGRA;
        return true;
    }
};

// Keeps a monitor sample mapped for as long as a QImage shows it.
struct MonitorImageOwner {
    GstSample *sample = nullptr;
    GstMapInfo map{};
};

void releaseMonitorImage(void *data)
{
    auto *owner = static_cast<MonitorImageOwner *>(data);
    gst_buffer_unmap(gst_sample_get_buffer(owner->sample), &owner->map);
    gst_sample_unref(owner->sample);
    delete owner;
}

qint64 steadyMs()
{
    static QElapsedTimer timer = [] {
        QElapsedTimer t;
        t.start();
        return t;
    }();
    return timer.elapsed();
}

} // namespace

struct ProgramGpuCompositor::Impl {
    // Read by the monitor callback; cleared when the state outlives us.
    std::atomic<ProgramGpuCompositor *> owner{nullptr};
    ProgramCompositorOptions options;
    QPointer<QWindow> window;
    QPointer<ProgramMonitorWidget> monitor;

    std::array<ProgramLayerSlot, 4> layerSlots;

    std::mutex programMutex;
    Selection program; // guarded by programMutex
    std::mutex dskMutex;
    Selection dsk; // guarded by dskMutex
    std::atomic<bool> dskFaulted{false};
    std::atomic<float> groupOpacity{1.0f};
    std::atomic<float> fadeToBlack{0.0f};
    std::atomic<quint32> background{0};

    // Streaming thread only, after start.
    std::unique_ptr<ProgramRenderer> renderer;
    std::unique_ptr<ProgramFrameMemories> frameBlocks;
    FrameTap tap;
    GstClockTime lastDeckPts = GST_CLOCK_TIME_NONE; // of the first deck drawn
    FrameInputs lastInputs;
    GstMemory *lastBlock = nullptr; // the last frame's block, owned by frameBlocks
    quint64 lastPicture = 0;
    qint64 lastPresentedPts = -1;
    bool blocksExhausted = false;
    qint64 lastRenderMs = -1; // monotonic time of the last render

    std::unique_ptr<ProgramPresenter> presenter;
    std::unique_ptr<ExposeWatcher> exposeWatcher;
    GstElement *pipeline = nullptr;
    GstElement *overlay = nullptr;
    GstElement *monitorCaps = nullptr;
    GstElement *monitorSink = nullptr;
    GstBus *bus = nullptr;
    gulong monitorProbe = 0;

    // Monitor rate limit, on the monitor queue's streaming thread.
    GstSegment monitorSegment{};
    GstClockTime monitorLastRunningTime = GST_CLOCK_TIME_NONE;

    State state = State::Idle;
    bool startResult = false;
    bool stopResult = false;
    bool stopped = false;
    bool playingReached = false;
    qint64 startMs = 0;
    QString startFailure;

    std::atomic<bool> rendererFailed{false};
    std::atomic<bool> presenterFailed{false};
    bool failureReported = false;
    QString busError;

    std::atomic<quint64> renders{0};
    std::atomic<quint64> composed{0};
    std::atomic<quint64> freshRenders{0};
    std::atomic<quint64> ticks{0};
    // Written by the streaming thread only, so a plain load and store keep
    // the maximum.
    std::atomic<qint64> largestRenderGapMs{0};

    struct FpsMark {
        qint64 atMs = 0;
        quint64 inputA = 0, inputB = 0, renders = 0, fresh = 0, presents = 0, ticks = 0;
    } fpsMark;

    qint64 nowMs() const { return options.monotonicMs ? options.monotonicMs() : steadyMs(); }
    bool fatal() const { return rendererFailed.load() || presenterFailed.load(); }

    bool connectSlot(int slot, GstElement *pipelineOfSink, GstElement *appsink);
    GstBuffer *produce(const ProgramOverlayTick &tick);
    void onMonitorSample(GstAppSink *sink);
    GstPadProbeReturn monitorRateProbe(GstPadProbeInfo *info);
    void updateWindowState();
    void failStart(const QString &text);
    void writeFpsLine(qint64 now);
    void drainBus();
};

bool ProgramGpuCompositor::Impl::connectSlot(int slot, GstElement *pipelineOfSink, GstElement *appsink)
{
    if (fatal() || stopped || !appsink)
        return false;
    ProgramLayerSlot &target = layerSlots[slot];
    if (target.appsink() == appsink)
        return true;
    // An appsink has one set of callbacks: a sink still connected to another
    // layer (the other deck, usually) is taken from it first.
    for (int other = 0; other < int(layerSlots.size()); ++other) {
        if (other != slot && layerSlots[other].appsink() == appsink
            && !layerSlots[other].disconnect(false, options.timings.connectDisconnect))
            return false;
    }
    if (target.appsink() && !target.disconnect(false, options.timings.connectDisconnect))
        return false;
    return target.connect(pipelineOfSink, appsink);
}

GstBuffer *ProgramGpuCompositor::Impl::produce(const ProgramOverlayTick &tick)
{
    ticks.fetch_add(1, std::memory_order_relaxed);
    if (fatal() || !renderer || !frameBlocks || tick.width != renderer->width()
        || tick.height != renderer->height())
        return nullptr;

    FrameInputs inputs;
    {
        std::lock_guard lock(programMutex);
        inputs.decks = program;
    }
    {
        std::lock_guard lock(dskMutex);
        inputs.overlays = dsk;
    }
    inputs.groupOpacity = groupOpacity.load(std::memory_order_relaxed);
    inputs.fadeToBlack = fadeToBlack.load(std::memory_order_relaxed);
    inputs.background = background.load(std::memory_order_relaxed);
    inputs.transparentLayer = renderer->transparentLayerWanted();

    const Selection &decks = inputs.decks;
    const Selection &overlays = inputs.overlays;
    const std::array<std::pair<int, float>, 4> wanted{{{decks.first, decks.firstOpacity},
                                                       {decks.second, decks.secondOpacity},
                                                       {overlays.first, overlays.firstOpacity},
                                                       {overlays.second, overlays.secondOpacity}}};
    std::array<GstSample *, 4> samples{};
    GstClockTime deckPts = GST_CLOCK_TIME_NONE;
    bool deckSampled = false;
    for (int place = 0; place < 4; ++place) {
        const auto [index, opacity] = wanted[place];
        if (index < 0 || opacity <= 0.0f)
            continue;
        const bool isDeck = place < 2;
        samples[place] = layerSlots[isDeck ? index : 2 + index].latestSample(&inputs.generations[place]);
        inputs.sampled[place] = samples[place] != nullptr;
        if (isDeck && samples[place] && !deckSampled) {
            deckSampled = true;
            deckPts = GST_BUFFER_PTS(gst_sample_get_buffer(samples[place]));
        }
    }

    // Nothing changed since the last frame: its block is this frame too.
    GstMemory *block = nullptr;
    if (!lastBlock || !(inputs == lastInputs)) {
        block = frameBlocks->acquireFree();
        if (!block && !blocksExhausted) {
            blocksExhausted = true;
            qCWarning(lcVideo()).noquote()
                << "Program frames are all in use; the last frame is repeated until one is free.";
        }
    }
    if (!block) {
        for (GstSample *sample : samples) {
            if (sample)
                gst_sample_unref(sample);
        }
        if (!lastBlock)
            return nullptr;
    } else {
        // Each mapped layer owns its sample from here on.
        std::array<MappedLayer, 4> layers; // deck first, deck second, DSK first, DSK second
        ProgramFrameJob job;
        job.groupOpacity = inputs.groupOpacity;
        job.fadeToBlack = inputs.fadeToBlack;
        job.background = inputs.background;
        QString error;
        std::array<bool, 2> dskFailed{false, false};
        bool deckFailed = false;
        for (int place = 0; place < 4; ++place) {
            if (!samples[place])
                continue;
            const bool isDeck = place < 2;
            if (deckFailed) {
                layers[place].sample = samples[place];
                continue;
            }
            if (!layers[place].map(samples[place], isDeck ? renderer->width() : 0,
                                   isDeck ? renderer->height() : 0, &error)) {
                if (isDeck) {
                    deckFailed = true;
                    continue;
                }
                dskFailed[place - 2] = true;
                qCWarning(lcVideo()).noquote() << error;
                continue;
            }
            ProgramLayerDraw &draw = isDeck ? job.decks[place] : job.dsks[place - 2];
            draw.image = &layers[place].image;
            draw.opacity = wanted[place].second;
        }

        GstMapInfo map{};
        if (!deckFailed && !gst_memory_map(block, &map, GST_MAP_WRITE)) {
            deckFailed = true;
            error = QStringLiteral("Could not map a program frame for writing");
        }
        if (deckFailed) {
            rendererFailed.store(true);
            qCWarning(lcVideo()).noquote() << error;
            qCWarning(lcVideo()).noquote() << program_text::kRendererFailed;
            return nullptr;
        }
        const ProgramFrameTarget target{map.data, tick.width, tick.height, tick.width * 4};
        const ProgramRenderOutcome outcome = renderer->render(job, target);
        gst_memory_unmap(block, &map);
        if (!outcome.ok) {
            rendererFailed.store(true);
            qCWarning(lcVideo()).noquote() << outcome.error;
            qCWarning(lcVideo()).noquote() << program_text::kRendererFailed;
            return nullptr;
        }
        if (outcome.dskFailed[0] || outcome.dskFailed[1] || dskFailed[0] || dskFailed[1]) {
            // A broken overlay goes away; the program continues.
            {
                std::lock_guard lock(dskMutex);
                dsk = Selection();
            }
            dskFaulted.store(true);
            qCWarning(lcVideo()).noquote() << "Program DSK layer could not be drawn; it was taken off the program.";
        }
        lastBlock = block;
        lastInputs = inputs;
        lastPicture = composed.fetch_add(1, std::memory_order_relaxed) + 1;
        lastPresentedPts = GST_CLOCK_TIME_IS_VALID(deckPts) ? qint64(deckPts) : -1;
    }

    const quint64 sequence = renders.fetch_add(1, std::memory_order_relaxed) + 1;
    const qint64 renderedAt = nowMs();
    if (lastRenderMs >= 0 && renderedAt - lastRenderMs > largestRenderGapMs.load(std::memory_order_relaxed))
        largestRenderGapMs.store(renderedAt - lastRenderMs, std::memory_order_relaxed);
    lastRenderMs = renderedAt;
    if (deckSampled && GST_CLOCK_TIME_IS_VALID(deckPts) && deckPts != lastDeckPts)
        freshRenders.fetch_add(1, std::memory_order_relaxed);
    lastDeckPts = deckPts;

    GstBuffer *frame = ProgramFrameMemories::wrap(lastBlock);
    if (!presenter->publish(frame, lastPresentedPts, lastPicture))
        presenterFailed.store(true);
    if (tap) {
        GstMapInfo map{};
        if (gst_buffer_map(frame, &map, GST_MAP_READ)) {
            tap(ProgramTapFrame{map.data, tick.width, tick.height, tick.width * 4, tick.pts, sequence});
            gst_buffer_unmap(frame, &map);
        }
    }
    return frame;
}

void ProgramGpuCompositor::Impl::onMonitorSample(GstAppSink *sink)
{
    GstSample *sample = ownedSample(gst_app_sink_try_pull_sample(sink, 0));
    if (!sample)
        return;
    GstVideoInfo info;
    GstCaps *caps = gst_sample_get_caps(sample);
    auto *imageOwner = new MonitorImageOwner{sample, {}};
    if (!caps || !gst_video_info_from_caps(&info, caps)
        || !gst_buffer_map(gst_sample_get_buffer(sample), &imageOwner->map, GST_MAP_READ)) {
        gst_sample_unref(sample);
        delete imageOwner;
        return;
    }
    const QImage image(imageOwner->map.data, info.width, info.height, GST_VIDEO_INFO_PLANE_STRIDE(&info, 0),
                       QImage::Format_RGB32, releaseMonitorImage, imageOwner);
    ProgramGpuCompositor *context = owner.load();
    if (!context)
        return; // the image releases the sample
    QMetaObject::invokeMethod(
        context,
        [this, image] {
            if (monitor)
                monitor->setFrame(image);
        },
        Qt::QueuedConnection);
}

GstPadProbeReturn ProgramGpuCompositor::Impl::monitorRateProbe(GstPadProbeInfo *info)
{
    if (GST_PAD_PROBE_INFO_TYPE(info) & GST_PAD_PROBE_TYPE_EVENT_DOWNSTREAM) {
        GstEvent *event = GST_PAD_PROBE_INFO_EVENT(info);
        switch (GST_EVENT_TYPE(event)) {
        case GST_EVENT_FLUSH_STOP:
        case GST_EVENT_STREAM_START:
        case GST_EVENT_EOS:
            gst_segment_init(&monitorSegment, GST_FORMAT_UNDEFINED);
            monitorLastRunningTime = GST_CLOCK_TIME_NONE;
            break;
        case GST_EVENT_SEGMENT: {
            const GstSegment *segment = nullptr;
            gst_event_parse_segment(event, &segment);
            if (segment->format == GST_FORMAT_TIME)
                gst_segment_copy_into(segment, &monitorSegment);
            else
                gst_segment_init(&monitorSegment, GST_FORMAT_UNDEFINED);
            monitorLastRunningTime = GST_CLOCK_TIME_NONE;
            break;
        }
        default:
            break;
        }
        return GST_PAD_PROBE_OK;
    }
    GstBuffer *buffer = GST_PAD_PROBE_INFO_BUFFER(info);
    if (!buffer)
        return GST_PAD_PROBE_OK;
    if (GST_BUFFER_IS_DISCONT(buffer))
        monitorLastRunningTime = GST_CLOCK_TIME_NONE;
    GstClockTime timestamp = GST_BUFFER_PTS(buffer);
    if (!GST_CLOCK_TIME_IS_VALID(timestamp))
        timestamp = GST_BUFFER_DTS(buffer);
    if (!GST_CLOCK_TIME_IS_VALID(timestamp) || monitorSegment.format != GST_FORMAT_TIME)
        return GST_PAD_PROBE_OK;
    const GstClockTime running =
        gst_segment_to_running_time(&monitorSegment, GST_FORMAT_TIME, timestamp);
    if (!GST_CLOCK_TIME_IS_VALID(running))
        return GST_PAD_PROBE_OK;
    if (GST_CLOCK_TIME_IS_VALID(monitorLastRunningTime) && running >= monitorLastRunningTime
        && running - monitorLastRunningTime < kMonitorMinimumGap)
        return GST_PAD_PROBE_DROP;
    monitorLastRunningTime = running;
    return GST_PAD_PROBE_OK;
}

void ProgramGpuCompositor::Impl::updateWindowState()
{
    if (!presenter)
        return;
    ProgramWindowState state;
    if (window) {
        state.size = window->size() * window->devicePixelRatio();
        state.exposed = window->isExposed();
        if (QScreen *screen = window->screen()) {
            state.display = screen->name();
            state.refreshHz = screen->refreshRate();
        }
    } else if (QScreen *screen = QGuiApplication::primaryScreen()) {
        state.display = screen->name();
        state.refreshHz = screen->refreshRate();
    }
    presenter->setWindowState(state);
}

void ProgramGpuCompositor::Impl::failStart(const QString &text)
{
    if (state == State::Failed)
        return;
    state = State::Failed;
    startFailure = text;
    qCWarning(lcVideo()).noquote() << text;
}

void ProgramGpuCompositor::Impl::writeFpsLine(qint64 now)
{
    FpsMark mark;
    mark.atMs = now;
    mark.inputA = layerSlots[kDeckSlotA].framesReceived();
    mark.inputB = layerSlots[kDeckSlotB].framesReceived();
    mark.renders = renders.load();
    mark.fresh = freshRenders.load();
    mark.presents = presenter ? presenter->presents() : 0;
    mark.ticks = ticks.load();
    const double seconds = (mark.atMs - fpsMark.atMs) / 1000.0;
    if (seconds > 0.0) {
        auto rate = [seconds](quint64 now, quint64 before) {
            return QString::number((now - before) / seconds, 'f', 1);
        };
        qCInfo(lcVideo()).noquote()
            << QStringLiteral("PROGRAM_FPS interval=%1 inputA=%2 inputB=%3 render=%4 fresh=%5 "
                              "present=%6 baseUpdates=%7")
                   .arg(QString::number(seconds, 'f', 3), rate(mark.inputA, fpsMark.inputA),
                        rate(mark.inputB, fpsMark.inputB), rate(mark.renders, fpsMark.renders),
                        rate(mark.fresh, fpsMark.fresh), rate(mark.presents, fpsMark.presents),
                        rate(mark.ticks, fpsMark.ticks));
    }
    fpsMark = mark;
}

void ProgramGpuCompositor::Impl::drainBus()
{
    if (!bus)
        return;
    while (GstMessage *message = gst_bus_pop(bus)) {
        if (GST_MESSAGE_TYPE(message) == GST_MESSAGE_ERROR && busError.isEmpty()) {
            GError *error = nullptr;
            gst_message_parse_error(message, &error, nullptr);
            busError = QString::fromUtf8(program_text::kBusErrorPrefix)
                       + QString::fromUtf8(GST_OBJECT_NAME(GST_MESSAGE_SRC(message))) + QStringLiteral(": ")
                       + (error ? QString::fromUtf8(error->message) : QString());
            if (error)
                g_error_free(error);
            qCWarning(lcVideo()).noquote() << busError;
        }
        gst_message_unref(message);
    }
}

namespace {

GstBuffer *produceCallback(const ProgramOverlayTick &tick, gpointer data)
{
    return static_cast<ProgramGpuCompositor::Impl *>(data)->produce(tick);
}

GstFlowReturn monitorSampleCallback(GstAppSink *sink, gpointer data)
{
    static_cast<ProgramGpuCompositor::Impl *>(data)->onMonitorSample(sink);
    return GST_FLOW_OK;
}

GstPadProbeReturn monitorProbeCallback(GstPad *, GstPadProbeInfo *info, gpointer data)
{
    return static_cast<ProgramGpuCompositor::Impl *>(data)->monitorRateProbe(info);
}

} // namespace

ProgramGpuCompositor::ProgramGpuCompositor(ProgramCompositorOptions options, QObject *parent)
    : QObject(parent)
    , d(std::make_unique<Impl>())
{
    d->owner = this;
    d->options = std::move(options);
    if (d->options.clock)
        gst_object_ref(d->options.clock);
    d->window = d->options.programWindow;
    d->monitor = d->options.monitor;
    gst_segment_init(&d->monitorSegment, GST_FORMAT_UNDEFINED);
}

ProgramGpuCompositor::~ProgramGpuCompositor()
{
    if (!stop()) {
        // The frame clock could not be confirmed stopped: its threads may
        // still call into the state, which therefore stays for the process
        // lifetime. Only the monitor callback knows this QObject; it goes.
        if (d->monitorSink && GST_IS_APP_SINK(d->monitorSink)) {
            GstAppSinkCallbacks none{};
            gst_app_sink_set_callbacks(GST_APP_SINK(d->monitorSink), &none, nullptr, nullptr);
        }
        d->owner = nullptr;
        retainForProcess(std::shared_ptr<Impl>(d.release()), QStringLiteral("program-video"));
        return;
    }
    if (d->options.clock)
        gst_object_unref(d->options.clock);
}

bool ProgramGpuCompositor::start(QString *error)
{
    auto refuse = [&](const QString &text) {
        d->failStart(text);
        if (error)
            *error = text;
        return false;
    };
    if (d->state != State::Idle) {
        if (error && !d->startResult)
            *error = d->startFailure;
        return d->startResult;
    }
    const int width = d->options.width;
    const int height = d->options.height;
    if (width <= 0 || height <= 0 || width % 2 || height % 2)
        return refuse(QString::fromUtf8(program_text::kInvalidGeometry));
    QString registrationError;
    if (!registerProgramOverlayElement(&registrationError))
        return refuse(registrationError);

    d->renderer = createCpuProgramRenderer(width, height);
    d->frameBlocks = std::make_unique<ProgramFrameMemories>(gsize(width) * height * 4, kFrameBlocks);
    d->frameBlocks->reserve(kFrameBlocksAtStart);
    std::unique_ptr<ProgramPresentOutput> output;
    if (d->options.outputFactory)
        output = d->options.outputFactory();
    else if (d->window && QGuiApplication::platformName() == QLatin1String("xcb"))
        output = createXImagePresentOutput(quintptr(d->window->winId()));
    else
        output = createNullPresentOutput();
    d->presenter = std::make_unique<ProgramPresenter>(width, height, std::move(output),
                                                      d->options.timings.presentTiming,
                                                      d->options.timings.repaint);
    d->updateWindowState();
    if (d->window) {
        d->exposeWatcher = std::make_unique<ExposeWatcher>(d->presenter.get());
        d->window->installEventFilter(d->exposeWatcher.get());
    }

    QString monitorTail = QString::fromLatin1(kNoMonitorTail);
    if (d->monitor) {
        QSize monitorSize = d->monitor->size() * d->monitor->devicePixelRatio();
        if (monitorSize.isEmpty())
            monitorSize = QSize(width / 4, height / 4);
        monitorTail = QString::fromLatin1(kMonitorTail)
                          .arg(std::max(2, monitorSize.width()))
                          .arg(std::max(2, monitorSize.height()));
    }
    const QString description =
        QString::fromLatin1(kPipelineDescription).arg(width).arg(height).arg(monitorTail);
    GError *parseError = nullptr;
    GstElement *pipeline = gst_parse_launch(description.toUtf8().constData(), &parseError);
    if (pipeline)
        gst_object_ref_sink(pipeline);
    if (parseError || !pipeline) {
        const QString text = QString::fromUtf8(program_text::kParseError)
                                 .arg(parseError ? QString::fromUtf8(parseError->message)
                                                 : QStringLiteral("no pipeline"));
        if (parseError)
            g_error_free(parseError);
        if (pipeline)
            gst_object_unref(pipeline); // never left NULL
        return refuse(text);
    }
    d->pipeline = pipeline;
    if (d->options.clock)
        gst_pipeline_use_clock(GST_PIPELINE(pipeline), d->options.clock);
    d->overlay = gst_bin_get_by_name(GST_BIN(pipeline), "program-gpu-overlay");
    d->monitorCaps = gst_bin_get_by_name(GST_BIN(pipeline), "program-gpu-monitor-caps");
    d->monitorSink = gst_bin_get_by_name(GST_BIN(pipeline), "program-gpu-monitor-sink");
    GstElement *monitorQueue = gst_bin_get_by_name(GST_BIN(pipeline), "program-gpu-monitor-queue");
    if (monitorQueue) {
        GstPad *pad = gst_element_get_static_pad(monitorQueue, "src");
        d->monitorProbe = gst_pad_add_probe(
            pad, GstPadProbeType(GST_PAD_PROBE_TYPE_BUFFER | GST_PAD_PROBE_TYPE_EVENT_DOWNSTREAM),
            monitorProbeCallback, d.get(), nullptr);
        gst_object_unref(pad);
        gst_object_unref(monitorQueue);
    }
    setProgramOverlayProduce(d->overlay, produceCallback, d.get());
    if (d->monitorSink && GST_IS_APP_SINK(d->monitorSink)) {
        GstAppSinkCallbacks monitorCallbacks{};
        monitorCallbacks.new_sample = monitorSampleCallback;
        gst_app_sink_set_callbacks(GST_APP_SINK(d->monitorSink), &monitorCallbacks, d.get(), nullptr);
    }
    if (d->monitor) {
        connect(d->monitor, &ProgramMonitorWidget::frameSizeChanged, this, [this](QSize size) {
            if (!d->monitorCaps || size.width() < 2 || size.height() < 2)
                return;
            GstCaps *caps = gst_caps_new_simple("video/x-raw", "format", G_TYPE_STRING, "BGRx", "width",
                                                G_TYPE_INT, size.width(), "height", G_TYPE_INT,
                                                size.height(), "pixel-aspect-ratio", GST_TYPE_FRACTION,
                                                1, 1, nullptr);
            g_object_set(d->monitorCaps, "caps", caps, nullptr);
            gst_caps_unref(caps);
        });
    }
    d->bus = gst_element_get_bus(pipeline);

    d->state = State::Starting;
    d->startMs = d->nowMs();
    d->fpsMark.atMs = d->startMs;
    if (!d->presenter->start())
        return refuse(QString::fromUtf8(program_text::kPresenterNotReady));
    // A live pipeline does not preroll: the change returns at once.
    if (gst_element_set_state(pipeline, GST_STATE_PLAYING) == GST_STATE_CHANGE_FAILURE)
        return refuse(QString::fromUtf8(program_text::kNoPlaying));
    d->startResult = true;
    return true;
}

ProgramGpuCompositor::State ProgramGpuCompositor::state() const
{
    return d->state;
}

bool ProgramGpuCompositor::connectDeck(int index, GstElement *pipeline, GstElement *appsink)
{
    if (index < 0 || index > 1)
        return false;
    return d->connectSlot(kDeckSlotA + index, pipeline, appsink);
}

bool ProgramGpuCompositor::connectDsk(int index, GstElement *pipeline, GstElement *appsink)
{
    if (index < 0 || index > 1)
        return false;
    return d->connectSlot(kDskSlotA + index, pipeline, appsink);
}

bool ProgramGpuCompositor::disconnect(int slot, bool clearSample, std::chrono::milliseconds limit)
{
    if (slot < 0 || slot > 3)
        return false;
    return d->layerSlots[slot].disconnect(clearSample, limit);
}

bool ProgramGpuCompositor::attachDeck(int deckIndex, GstElement *pipeline, GstElement *appsink)
{
    return connectDeck(deckIndex, pipeline, appsink);
}

bool ProgramGpuCompositor::detachDeck(int deckIndex)
{
    if (deckIndex < 0 || deckIndex > 1)
        return false;
    return disconnect(kDeckSlotA + deckIndex, false, d->options.timings.connectDisconnect);
}

bool ProgramGpuCompositor::hasFrame(int deckIndex) const
{
    return deckIndex >= 0 && deckIndex <= 1 && slotHasFrame(kDeckSlotA + deckIndex);
}

void ProgramGpuCompositor::dropRetainedFrame(int deckIndex)
{
    if (deckIndex >= 0 && deckIndex <= 1)
        dropSlotFrame(kDeckSlotA + deckIndex);
}

GstSample *ProgramGpuCompositor::latestSample(int deckIndex) const
{
    if (deckIndex < 0 || deckIndex > 1)
        return nullptr;
    return d->layerSlots[kDeckSlotA + deckIndex].latestSample();
}

bool ProgramGpuCompositor::slotHasFrame(int slot) const
{
    return slot >= 0 && slot <= 3 && d->layerSlots[slot].hasFrame();
}

void ProgramGpuCompositor::dropSlotFrame(int slot)
{
    if (slot >= 0 && slot <= 3)
        d->layerSlots[slot].dropSample();
}

quint64 ProgramGpuCompositor::slotFramesReceived(int slot) const
{
    return slot >= 0 && slot <= 3 ? d->layerSlots[slot].framesReceived() : 0;
}

void ProgramGpuCompositor::setFrameUpdates(int slot, bool on)
{
    if (slot >= 0 && slot <= 3)
        d->layerSlots[slot].setFrameUpdates(on);
}

bool ProgramGpuCompositor::freeze(int slot, std::chrono::milliseconds limit)
{
    return slot >= 0 && slot <= 3 && d->layerSlots[slot].freeze(limit);
}

void ProgramGpuCompositor::setLayerHold(int deckIndex, bool hold)
{
    if (deckIndex >= 0 && deckIndex <= 1)
        d->layerSlots[kDeckSlotA + deckIndex].setHold(hold);
}

bool ProgramGpuCompositor::setProgramLayers(int first, float firstOpacity, int second, float secondOpacity)
{
    if (!validLayerIndex(first) || !validLayerIndex(second) || d->fatal()
        || (d->state != State::Starting && d->state != State::Started))
        return false;
    std::lock_guard lock(d->programMutex);
    d->program = Selection{first, std::clamp(firstOpacity, 0.0f, 1.0f), second,
                           std::clamp(secondOpacity, 0.0f, 1.0f)};
    return true;
}

bool ProgramGpuCompositor::setDskLayers(int first, float firstOpacity, int second, float secondOpacity)
{
    if (!validLayerIndex(first) || !validLayerIndex(second) || d->fatal()
        || (d->state != State::Starting && d->state != State::Started))
        return false;
    std::lock_guard lock(d->dskMutex);
    d->dsk = Selection{first, std::clamp(firstOpacity, 0.0f, 1.0f), second,
                       std::clamp(secondOpacity, 0.0f, 1.0f)};
    d->dskFaulted.store(false);
    return true;
}

void ProgramGpuCompositor::setGroupOpacity(float value)
{
    d->groupOpacity.store(std::clamp(value, 0.0f, 1.0f));
}

void ProgramGpuCompositor::setFadeToBlack(float value)
{
    d->fadeToBlack.store(std::clamp(value, 0.0f, 1.0f));
}

void ProgramGpuCompositor::setBackground(QRgb rgb)
{
    d->background.store(quint32(rgb) & 0xffffffu);
}

bool ProgramGpuCompositor::dskFaulted() const
{
    return d->dskFaulted.load();
}

bool ProgramGpuCompositor::poll(QString *message)
{
    if (d->stopped || d->state == State::Idle)
        return false;
    const qint64 now = d->nowMs();
    d->drainBus();
    d->updateWindowState();
    if (d->presenter && d->presenter->hasFailed())
        d->presenterFailed.store(true);

    if (d->state == State::Starting) {
        const ProgramCompositorTimings &limits = d->options.timings;
        const qint64 elapsed = now - d->startMs;
        if (!d->playingReached) {
            GstState current = GST_STATE_VOID_PENDING;
            gst_element_get_state(d->pipeline, &current, nullptr, 0);
            d->playingReached = current == GST_STATE_PLAYING;
        }
        if (!d->busError.isEmpty()) {
            d->failStart(d->busError);
        } else if (d->fatal()) {
            d->failStart(QString::fromUtf8(d->rendererFailed ? program_text::kRendererFailed
                                                              : program_text::kPresenterFailed));
        } else if (!d->presenter->isReady() && elapsed >= limits.presenterReady.count()) {
            d->failStart(QString::fromUtf8(program_text::kPresenterNotReady));
        } else if (!d->playingReached && elapsed >= limits.playing.count()) {
            d->failStart(QString::fromUtf8(program_text::kNoPlaying));
        } else if (d->playingReached && d->renders.load() > 0 && d->presenter->presents() > 0) {
            d->state = State::Started;
            d->fpsMark.atMs = now;
            QScreen *screen = d->window ? d->window->screen() : QGuiApplication::primaryScreen();
            // The refresh rate as a fraction: 60/1, 60000/1001-like rates in
            // thousandths.
            int numerator = screen ? qRound(screen->refreshRate() * 1000.0) : 0;
            int denominator = 1000;
            const int divisor = std::gcd(numerator, denominator);
            if (divisor > 0) {
                numerator /= divisor;
                denominator /= divisor;
            }
            qCInfo(lcVideo()).noquote() << QString::fromUtf8(program_text::kStarted)
                                               .arg(d->options.width)
                                               .arg(d->options.height)
                                               .arg(numerator)
                                               .arg(denominator);
        } else if (elapsed >= (limits.playing + limits.firstPresent).count()) {
            d->failStart(QString::fromUtf8(program_text::kNoFirstPresent));
        }
    }

    if (d->state == State::Started && now - d->fpsMark.atMs >= d->options.timings.fpsLog.count())
        d->writeFpsLine(now);

    if (d->failureReported)
        return false;
    QString text;
    if (d->state == State::Failed)
        text = d->startFailure;
    else if (!d->busError.isEmpty())
        text = d->busError;
    else if (d->rendererFailed.load())
        text = QString::fromUtf8(program_text::kRendererFailed);
    else if (d->presenterFailed.load())
        text = QString::fromUtf8(program_text::kPresenterFailed);
    if (text.isEmpty())
        return false;
    d->failureReported = true;
    if (message)
        *message = text;
    return true;
}

bool ProgramGpuCompositor::stop()
{
    if (d->stopped)
        return d->stopResult;
    for (ProgramLayerSlot &slot : d->layerSlots) {
        if (!slot.isStuck() && !slot.disconnect(false, d->options.timings.connectDisconnect))
            return false;
    }
    if (d->pipeline) {
        if (!stopPipeline(d->pipeline, QString::fromUtf8(program_text::kPipelineLabel),
                          d->options.timings.nullConfirmation))
            return false;
    }
    if (d->presenter)
        d->presenter->stop();
    if (d->overlay) {
        setProgramOverlayProduce(d->overlay, nullptr, nullptr);
        gst_object_unref(d->overlay);
        d->overlay = nullptr;
    }
    if (d->monitorCaps)
        gst_object_unref(std::exchange(d->monitorCaps, nullptr));
    if (d->monitorSink)
        gst_object_unref(std::exchange(d->monitorSink, nullptr));
    if (d->bus)
        gst_object_unref(std::exchange(d->bus, nullptr));
    if (d->pipeline)
        gst_object_unref(std::exchange(d->pipeline, nullptr));
    for (ProgramLayerSlot &slot : d->layerSlots)
        slot.dropSample();
    d->stopped = true;
    d->stopResult = true;
    if (d->state != State::Failed)
        d->state = State::Stopped;
    return true;
}

quint64 ProgramGpuCompositor::renderCount() const
{
    return d->renders.load();
}

qint64 ProgramGpuCompositor::largestRenderGapMs() const
{
    return d->largestRenderGapMs.load(std::memory_order_relaxed);
}

quint64 ProgramGpuCompositor::compositionCount() const
{
    return d->composed.load();
}

quint64 ProgramGpuCompositor::drawCount() const
{
    return d->presenter ? d->presenter->draws() : 0;
}

quint64 ProgramGpuCompositor::presentCount() const
{
    return d->presenter ? d->presenter->presents() : 0;
}

quint64 ProgramGpuCompositor::clockTicks() const
{
    return d->ticks.load();
}

quint64 ProgramGpuCompositor::publishMisses() const
{
    return d->presenter ? d->presenter->publishMisses() : 0;
}

qint64 ProgramGpuCompositor::lastPresentedPts() const
{
    return d->presenter ? d->presenter->lastPresentedPts() : -1;
}

quint64 ProgramGpuCompositor::lastPresentedSequence() const
{
    return d->presenter ? d->presenter->lastPresentedSequence() : 0;
}

void ProgramGpuCompositor::setFrameTap(FrameTap tap)
{
    d->tap = std::move(tap);
}

ProgramRenderer *ProgramGpuCompositor::renderer() const
{
    return d->renderer.get();
}

} // namespace tarnix
