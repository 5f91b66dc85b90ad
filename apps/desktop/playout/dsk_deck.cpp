#include "playout/dsk_deck.h"

#include "playout/async_file_preparation.h"
#include "playout/async_pipeline_stop.h"
#include "playout/deck_texts.h"
#include "playout/dsk_pipeline.h"
#include "playout/dsk_texts.h"
#include "playout/media_error_classify.h"
#include "playout/pipeline_retirement.h"
#include "playout/playbin_control.h"
#include "shell/log_categories.h"
#include "shell/pipeline_release.h"

#include <QDeadlineTimer>

#include <algorithm>
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

struct DskDeck::Impl {
    Options options;
    std::shared_ptr<DskPipeline> pipeline;
    RetiredPipelines retired;
    std::shared_ptr<AsyncFilePreparation> preparation;
    std::optional<DeckSource> pendingRequest;
    QDeadlineTimer deadline;
    bool loaded = false;
    bool still = false;
    qint64 inMs = 0;
    qint64 outMs = -1;
    PreparationStatus status = PreparationStatus::Idle;
    QString error;
    int event = NoEvent;
    QString eventText;

    DskPipeline::Options pipelineOptions() const { return {options.index, options.busHandler, options.busUserData}; }

    void fail(const QString &message)
    {
        status = PreparationStatus::Failed;
        error = message;
    }

    void resetFields()
    {
        loaded = false;
        still = false;
        pendingRequest.reset();
        inMs = 0;
        outMs = -1;
        status = PreparationStatus::Idle;
        error.clear();
        event = NoEvent;
        eventText.clear();
        deadline = QDeadlineTimer();
    }

    bool isolate(QString *errorOut) const
    {
        if (pipeline->enforceAudioIsolation())
            return true;
        qCWarning(lcPlayout()).noquote() << dsk_text::kIsolationLog;
        if (errorOut)
            *errorOut = text(dsk_text::kIsolation.english);
        return false;
    }

    bool replacePipeline(QString *errorOut);
    void pollPreparation();
    void pumpBus();
    void handleMessage(GstMessage *message);
};

bool DskDeck::Impl::replacePipeline(QString *errorOut)
{
    if (!pipeline->handedToWorker.load(std::memory_order_acquire) && !preparation) {
        // Nothing ever ran on the playbin: it can be used again as it is.
        resetFields();
        return true;
    }
    if (!retired.hasRoom(options.timings.maxUnconfirmedStops)) {
        if (errorOut)
            *errorOut = text(dsk_text::kStillStopping.english);
        return false;
    }
    QString createError;
    std::shared_ptr<DskPipeline> fresh = DskPipeline::create(pipelineOptions(), &createError);
    if (!fresh) {
        qCWarning(lcPlayout()).noquote() << dsk_text::kStopFailed.english << createError;
        if (errorOut)
            *errorOut = text(dsk_text::kStopFailed.english);
        return false;
    }
    useSystemClock(fresh->playbin);

    std::shared_ptr<DskPipeline> old = std::exchange(pipeline, fresh);
    old->busCallbacks->clear();
    retired.retire(old, std::exchange(preparation, nullptr), text(dsk_text::kUnsafeRelease),
                   options.timings.nullConfirmation, QStringLiteral("dsk"), dsk_text::kStopWorker);
    resetFields();
    if (options.pipelineReplaced)
        options.pipelineReplaced(pipeline->playbin, pipeline->appsink);
    return true;
}

void DskDeck::Impl::pollPreparation()
{
    if (status != PreparationStatus::Preparing)
        return;
    if (deadline.hasExpired() && (!preparation || !preparation->isFinished())) {
        fail(text(dsk_text::kMediaOffline.english));
        return;
    }
    if (pendingRequest && !preparation) {
        QString isolationError;
        if (!isolate(&isolationError)) {
            fail(isolationError);
            return;
        }
        pipeline->handedToWorker.store(true, std::memory_order_release);
        AsyncFilePreparation::Options prepOptions;
        prepOptions.detectStill = true;
        prepOptions.timings = options.timings;
        const auto remaining = std::chrono::milliseconds(std::max<qint64>(0, deadline.remainingTime()));
        preparation = AsyncFilePreparation::start(pipeline->playbin, *pendingRequest, remaining, prepOptions);
        pendingRequest.reset();
        if (!preparation) {
            fail(text(dsk_text::kPrepareFailed.english));
            return;
        }
    }
    if (!preparation || !preparation->isFinished())
        return;
    if (preparation->timedOut()) {
        fail(text(dsk_text::kMediaOffline.english));
        return;
    }
    switch (preparation->result()) {
    case AsyncFilePreparation::Prepared:
        if (!preparation->hasVideo()) {
            fail(text(dsk_text::kNoVideo.english));
            return;
        }
        still = preparation->isStill();
        if (still) {
            inMs = 0;
            outMs = -1;
        }
        status = PreparationStatus::Ready;
        return;
    case AsyncFilePreparation::Offline:
        fail(text(dsk_text::kMediaOffline.english));
        return;
    case AsyncFilePreparation::Failed:
        fail(preparation->noLinkedStream() ? text(dsk_text::kNoVideo.english) : preparation->error());
        return;
    }
}

void DskDeck::Impl::pumpBus()
{
    if (!pipeline || !pipeline->bus)
        return;
    // While a worker prepares the deck only the worker reads its bus.
    if (pendingRequest || (preparation && !preparation->isFinished()))
        return;
    popBusMessages(pipeline->bus, kMessagesPerPoll, [this](GstMessage *message) { handleMessage(message); });
}

void DskDeck::Impl::handleMessage(GstMessage *message)
{
    switch (GST_MESSAGE_TYPE(message)) {
    case GST_MESSAGE_ERROR: {
        const MediaErrorClass found = classifyError(message, text(dsk_text::kUnknownError));
        gchar *debug = nullptr;
        gst_message_parse_error(message, nullptr, &debug);
        qCWarning(lcPlayout()).noquote() << "GST_BUS" << QStringLiteral("dsk-%1").arg(options.index) << found.text
                                         << QString::fromUtf8(debug ? debug : "");
        g_free(debug);
        if (status == PreparationStatus::Preparing) {
            // With its sound switched off, a file without a picture has no
            // stream left to play.
            fail(found.notLinked ? text(dsk_text::kNoVideo.english) : found.text);
            return;
        }
        if (loaded) {
            event = Error;
            eventText = found.text;
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

std::unique_ptr<DskDeck> DskDeck::create(Options options, QString *error)
{
    auto impl = std::make_unique<Impl>();
    impl->options = std::move(options);
    impl->pipeline = DskPipeline::create(impl->pipelineOptions(), error);
    if (!impl->pipeline)
        return nullptr;
    useSystemClock(impl->pipeline->playbin);
    auto deck = std::unique_ptr<DskDeck>(new DskDeck(std::move(impl)));
    if (deck->d->options.pipelineReplaced)
        deck->d->options.pipelineReplaced(deck->d->pipeline->playbin, deck->d->pipeline->appsink);
    return deck;
}

DskDeck::DskDeck(std::unique_ptr<Impl> impl) : d(std::move(impl)) {}

DskDeck::~DskDeck()
{
    // The pipeline's destructor decides whether its references may go.
    d->pipeline.reset();
}

bool DskDeck::prepare(const DeckSource &request, QString *error)
{
    if (!isValidFileSource(request) || request.kind != DeckSourceKind::File
        || (request.outMs >= 0 && request.outMs <= request.inMs)) {
        if (error)
            *error = text(dsk_text::kInvalidRange.english);
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
    if (error)
        error->clear();
    d->pollPreparation();
    return true;
}

void DskDeck::poll()
{
    d->pumpBus();
    d->pollPreparation();
}

PreparationStatus DskDeck::status() const { return d->status; }
QString DskDeck::error() const { return d->error; }
bool DskDeck::hasItem() const { return d->loaded; }
bool DskDeck::isStill() const { return d->still; }
bool DskDeck::deadlinePassed() const { return d->loaded && d->deadline.hasExpired(); }

void DskDeck::failPreparation(const QString &message)
{
    if (d->status == PreparationStatus::Preparing || d->status == PreparationStatus::Ready)
        d->fail(message);
}

bool DskDeck::play(QString *error)
{
    if (!d->loaded || d->status != PreparationStatus::Ready)
        return false;
    return d->isolate(error) && requestState(d->pipeline->playbin, GST_STATE_PLAYING);
}

bool DskDeck::pause(QString *error)
{
    if (!d->loaded || d->status != PreparationStatus::Ready)
        return false;
    return d->isolate(error) && requestState(d->pipeline->playbin, GST_STATE_PAUSED);
}

bool DskDeck::seek(qint64 ms)
{
    if (!d->loaded || d->status != PreparationStatus::Ready)
        return false;
    if (!seekWithinRange(d->pipeline->playbin, ms, d->inMs, d->outMs))
        return false;
    if (d->event == EndOfStream)
        d->event = NoEvent;
    return true;
}

bool DskDeck::release(QString *error)
{
    if (!d->loaded && !d->preparation && !d->pendingRequest) {
        d->resetFields();
        return true;
    }
    return d->replacePipeline(error);
}

bool DskDeck::isPlaying() const
{
    return d->loaded && d->status == PreparationStatus::Ready && isHeadingTo(d->pipeline->playbin, GST_STATE_PLAYING);
}

qint64 DskDeck::positionMs() const
{
    return d->loaded && d->status == PreparationStatus::Ready ? playbinPositionMs(d->pipeline->playbin) : -1;
}

qint64 DskDeck::durationMs() const
{
    return d->loaded && d->status == PreparationStatus::Ready ? playbinDurationMs(d->pipeline->playbin) : -1;
}

qint64 DskDeck::inMs() const { return d->inMs; }
qint64 DskDeck::outMs() const { return d->outMs; }

int DskDeck::takeEvent(QString *text)
{
    const int event = std::exchange(d->event, int(NoEvent));
    if (text)
        *text = d->eventText;
    d->eventText.clear();
    return event;
}

GstElement *DskDeck::playbin() const { return d->pipeline ? d->pipeline->playbin : nullptr; }
GstElement *DskDeck::appsink() const { return d->pipeline ? d->pipeline->appsink : nullptr; }
GstElement *DskDeck::audioDiscard() const { return d->pipeline ? d->pipeline->audioDiscard : nullptr; }

int DskDeck::pendingStopCount() const { return d->retired.pendingCount(); }

bool DskDeck::shutdown()
{
    return !d->pipeline
           || shutdownSingleItemPipeline(*d->pipeline, d->preparation, text(dsk_text::kPlaybinLabel), d->options.timings);
}

} // namespace tarnix
