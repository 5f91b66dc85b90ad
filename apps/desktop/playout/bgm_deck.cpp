#include "playout/bgm_deck.h"

#include "audio/audio_elements.h"
#include "playout/async_file_preparation.h"
#include "playout/async_pipeline_stop.h"
#include "playout/bgm_pipeline.h"
#include "playout/bgm_texts.h"
#include "playout/deck_texts.h"
#include "playout/media_error_classify.h"
#include "playout/pipeline_retirement.h"
#include "playout/playbin_control.h"
#include "shell/log_categories.h"
#include "shell/pipeline_release.h"

#include <QDeadlineTimer>

#include <algorithm>
#include <cmath>
#include <optional>
#include <vector>

namespace tarnix {

namespace {

constexpr int kMessagesPerPoll = 64;

QString text(const char *literal)
{
    return QString::fromUtf8(literal);
}

} // namespace

struct BgmDeck::Impl {
    Options options;
    std::shared_ptr<BgmPipeline> pipeline;
    RetiredPipelines retired;
    std::shared_ptr<AsyncFilePreparation> preparation;
    std::optional<DeckSource> pendingRequest;
    QDeadlineTimer deadline;
    bool loaded = false;
    bool offline = false;
    qint64 inMs = 0;
    qint64 outMs = -1;
    PreparationStatus status = PreparationStatus::Idle;
    QString error;
    int event = NoEvent;
    QString eventText;
    bool eventOffline = false;
    // Kept so that a value set before an item is applied to its pipeline.
    double itemVolume = 1.0;
    double eq[3] = {0.0, 0.0, 0.0};
    int delayFrames = 0;

    BgmPipeline::Options pipelineOptions() const { return {options.busHandler, options.busUserData}; }

    void fail(const QString &message, bool isOffline = false)
    {
        status = PreparationStatus::Failed;
        error = message;
        offline = offline || isOffline;
    }

    void resetFields()
    {
        loaded = false;
        pendingRequest.reset();
        inMs = 0;
        outMs = -1;
        status = PreparationStatus::Idle;
        error.clear();
        offline = false;
        event = NoEvent;
        eventText.clear();
        deadline = QDeadlineTimer();
    }

    void applyItemAudio()
    {
        if (!pipeline)
            return;
        g_object_set(pipeline->volume, "volume", itemVolume, nullptr);
        g_object_set(pipeline->equalizer, "band0", eq[0], "band1", eq[1], "band2", eq[2], nullptr);
        g_object_set(pipeline->delay, "frames", delayFrames, nullptr);
    }

    bool replacePipeline(QString *errorOut);
    void pollPreparation();
    void pumpBus();
    void handleMessage(GstMessage *message);
};

bool BgmDeck::Impl::replacePipeline(QString *errorOut)
{
    if (!pipeline->handedToWorker.load(std::memory_order_acquire) && !preparation) {
        // Nothing ever ran on the playbin: it can be used again as it is.
        resetFields();
        return true;
    }
    if (!retired.hasRoom(options.timings.maxUnconfirmedStops)) {
        if (errorOut)
            *errorOut = text(bgm_text::kReleaseRefused);
        return false;
    }
    QString createError;
    std::shared_ptr<BgmPipeline> fresh = BgmPipeline::create(pipelineOptions(), &createError);
    if (!fresh) {
        qCWarning(lcPlayout()).noquote() << bgm_text::kReleaseRefused << createError;
        if (errorOut)
            *errorOut = text(bgm_text::kReleaseRefused);
        return false;
    }
    useSystemClock(fresh->playbin);

    std::shared_ptr<BgmPipeline> old = std::exchange(pipeline, fresh);
    old->busCallbacks->clear();
    // A sender blocked in its chain would otherwise hold up the change to NULL.
    if (GstElement *audioOutput = old->findAudioOutput()) {
        abortSender(audioOutput);
        gst_object_unref(audioOutput);
    }
    retired.retire(old, std::exchange(preparation, nullptr), text(bgm_text::kUnsafeRelease),
                   options.timings.nullConfirmation, QStringLiteral("bgm"));
    resetFields();
    applyItemAudio();
    if (options.pipelineReplaced)
        options.pipelineReplaced(pipeline->inputLevel);
    return true;
}

void BgmDeck::Impl::pollPreparation()
{
    if (status != PreparationStatus::Preparing)
        return;
    if (deadline.hasExpired()) {
        fail(text(deck_text::kMediaOffline), true);
        return;
    }
    if (pendingRequest && !preparation) {
        pipeline->handedToWorker.store(true, std::memory_order_release);
        AsyncFilePreparation::Options prepOptions;
        prepOptions.detectStill = true;
        prepOptions.timings = options.timings;
        const auto remaining = std::chrono::milliseconds(std::max<qint64>(0, deadline.remainingTime()));
        preparation = AsyncFilePreparation::start(pipeline->playbin, *pendingRequest, remaining, prepOptions);
        pendingRequest.reset();
        if (!preparation) {
            fail(text(deck_text::kPreparePipeline));
            return;
        }
    }
    if (!preparation || !preparation->isFinished())
        return;
    if (preparation->timedOut()) {
        fail(text(deck_text::kMediaOffline), true);
        return;
    }
    switch (preparation->result()) {
    case AsyncFilePreparation::Prepared:
        if (!preparation->hasAudio() || preparation->isStill()) {
            fail(text(bgm_text::kNoAudio));
            return;
        }
        status = PreparationStatus::Ready;
        return;
    case AsyncFilePreparation::Offline:
        fail(text(deck_text::kMediaOffline), true);
        return;
    case AsyncFilePreparation::Failed:
        fail(preparation->error());
        return;
    }
}

void BgmDeck::Impl::pumpBus()
{
    if (!pipeline || !pipeline->bus)
        return;
    // While a worker prepares the deck only the worker reads its bus.
    if (pendingRequest || (preparation && !preparation->isFinished()))
        return;
    popBusMessages(pipeline->bus, kMessagesPerPoll, [this](GstMessage *message) { handleMessage(message); });
}

void BgmDeck::Impl::handleMessage(GstMessage *message)
{
    switch (GST_MESSAGE_TYPE(message)) {
    case GST_MESSAGE_LATENCY:
        if (!gst_bin_recalculate_latency(GST_BIN(pipeline->playbin)))
            qCWarning(lcPlayout()).noquote() << "Could not update audio pipeline latency";
        return;
    case GST_MESSAGE_ERROR: {
        GError *gerror = nullptr;
        gchar *debug = nullptr;
        gst_message_parse_error(message, &gerror, &debug);
        const QString errorText = gerror && gerror->message ? QString::fromUtf8(gerror->message)
                                                            : text("Unknown GStreamer error");
        qCWarning(lcPlayout()).noquote() << "GST_BUS" << "bgm" << errorText << QString::fromUtf8(debug ? debug : "");
        const bool isOffline = gerror && isOfflineError(gerror);
        g_clear_error(&gerror);
        g_free(debug);
        if (status == PreparationStatus::Preparing) {
            fail(errorText, isOffline);
            return;
        }
        if (loaded) {
            event = Error;
            eventText = errorText;
            eventOffline = isOffline;
        }
        return;
    }
    case GST_MESSAGE_EOS:
        if (loaded && event != Error)
            event = EndOfStream;
        return;
    default:
        return;
    }
}

std::unique_ptr<BgmDeck> BgmDeck::create(Options options, QString *error)
{
    auto impl = std::make_unique<Impl>();
    impl->options = std::move(options);
    impl->pipeline = BgmPipeline::create(impl->pipelineOptions(), error);
    if (!impl->pipeline)
        return nullptr;
    return std::unique_ptr<BgmDeck>(new BgmDeck(std::move(impl)));
}

BgmDeck::BgmDeck(std::unique_ptr<Impl> impl) : d(std::move(impl)) {}

BgmDeck::~BgmDeck()
{
    // The pipeline's destructor decides whether its references may go.
    d->pipeline.reset();
}

bool BgmDeck::prepare(const DeckSource &request, QString *error)
{
    if (!isValidFileSource(request) || request.kind != DeckSourceKind::File) {
        d->fail(text(deck_text::kPreparePipeline));
        if (error)
            *error = d->error;
        return false;
    }
    QString releaseError;
    if (!d->replacePipeline(&releaseError)) {
        // The old item stays where it was; only this request failed.
        if (error)
            *error = releaseError;
        return false;
    }
    d->loaded = true;
    d->inMs = request.inMs;
    d->outMs = request.outMs;
    d->status = PreparationStatus::Preparing;
    d->deadline = QDeadlineTimer(d->options.timings.preparationDeadline);
    d->pendingRequest = request;
    d->pendingRequest->rate = 1.0;
    d->applyItemAudio();
    if (error)
        error->clear();
    d->pollPreparation();
    return true;
}

void BgmDeck::poll()
{
    d->pumpBus();
    d->pollPreparation();
}

PreparationStatus BgmDeck::status() const { return d->status; }
QString BgmDeck::error() const { return d->error; }
bool BgmDeck::mediaOffline() const { return d->offline; }
bool BgmDeck::hasItem() const { return d->loaded; }

bool BgmDeck::play()
{
    if (!d->loaded || d->status != PreparationStatus::Ready)
        return false;
    return requestState(d->pipeline->playbin, GST_STATE_PLAYING);
}

bool BgmDeck::pause()
{
    if (!d->loaded || d->status != PreparationStatus::Ready)
        return false;
    return requestState(d->pipeline->playbin, GST_STATE_PAUSED);
}

bool BgmDeck::seek(qint64 ms)
{
    if (!d->loaded || d->status != PreparationStatus::Ready)
        return false;
    if (!seekWithinRange(d->pipeline->playbin, ms, d->inMs, d->outMs))
        return false;
    if (d->event == EndOfStream)
        d->event = NoEvent;
    return true;
}

bool BgmDeck::release(QString *error)
{
    if (!d->loaded && !d->preparation && !d->pendingRequest) {
        d->resetFields();
        return true;
    }
    return d->replacePipeline(error);
}

bool BgmDeck::isPlaying() const
{
    if (!d->loaded || d->status != PreparationStatus::Ready)
        return false;
    return isHeadingTo(d->pipeline->playbin, GST_STATE_PLAYING);
}

qint64 BgmDeck::positionMs() const
{
    if (!d->loaded || d->status != PreparationStatus::Ready)
        return -1;
    return playbinPositionMs(d->pipeline->playbin);
}

qint64 BgmDeck::durationMs() const
{
    if (!d->loaded || d->status != PreparationStatus::Ready)
        return -1;
    return playbinDurationMs(d->pipeline->playbin);
}

qint64 BgmDeck::inMs() const { return d->inMs; }
qint64 BgmDeck::outMs() const { return d->outMs; }

int BgmDeck::takeEvent(QString *text, bool *offline)
{
    const int event = std::exchange(d->event, int(NoEvent));
    if (text)
        *text = d->eventText;
    if (offline)
        *offline = d->eventOffline;
    d->eventText.clear();
    d->eventOffline = false;
    return event;
}

void BgmDeck::setItemVolume(double gain)
{
    if (!std::isfinite(gain))
        return;
    d->itemVolume = std::clamp(gain, 0.0, 2.0);
    d->applyItemAudio();
}

void BgmDeck::setItemEq(double lowDb, double midDb, double highDb)
{
    const auto clampDb = [](double db) { return std::isfinite(db) ? std::clamp(db, -15.0, 15.0) : 0.0; };
    d->eq[0] = clampDb(lowDb);
    d->eq[1] = clampDb(midDb);
    d->eq[2] = clampDb(highDb);
    d->applyItemAudio();
}

void BgmDeck::setItemDelayFrames(int frames)
{
    d->delayFrames = std::clamp(frames, 0, 6);
    d->applyItemAudio();
}

GstElement *BgmDeck::playbin() const { return d->pipeline ? d->pipeline->playbin : nullptr; }
GstElement *BgmDeck::inputLevelElement() const { return d->pipeline ? d->pipeline->inputLevel : nullptr; }

int BgmDeck::pendingStopCount() const { return d->retired.pendingCount(); }

bool BgmDeck::shutdown()
{
    return !d->pipeline
           || shutdownSingleItemPipeline(*d->pipeline, d->preparation, text(bgm_text::kPlaybinLabel), d->options.timings);
}

} // namespace tarnix
