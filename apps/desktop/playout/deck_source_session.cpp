#include "playout/deck_source_session.h"

#include "audio/audio_elements.h"
#include "playout/async_file_preparation.h"
#include "playout/async_pipeline_stop.h"
#include "playout/deck_pipeline.h"
#include "playout/deck_texts.h"
#include "playout/pipeline_retirement.h"
#include "shell/log_categories.h"
#include "shell/pipeline_release.h"
#include "video/deck_frame_presenter.h"

#include <QDeadlineTimer>

#include <algorithm>
#include <optional>
#include <vector>

namespace tarnix {

namespace {

// A fresh bus holds nothing; a reused one holds at most a preroll's worth.
constexpr int kBusDrainLimit = 256;

QString text(const char *literal)
{
    return QString::fromUtf8(literal);
}

} // namespace

struct DeckSourceSession::Impl {
    int deckIndex = -1;
    DeckTimings timings;
    GstBusSyncHandler busHandler = nullptr;
    gpointer busUserData = nullptr;

    std::shared_ptr<DeckPipeline> pipeline;
    std::vector<std::shared_ptr<AsyncPipelineStop>> retiredStops;
    std::shared_ptr<AsyncFilePreparation> preparation;
    std::optional<DeckSource> pendingRequest;
    bool mediaOffline = false;
    QDeadlineTimer preparationDeadline; // expired until armed
    DeckSessionKind kind = DeckSessionKind::None;
    bool hasVideo = false;
    bool hasAudio = false;
    qint64 inMs = 0;
    qint64 outMs = -1;
    double rate = 1.0;
    PreparationStatus status = PreparationStatus::Idle;
    QString error;
    // The worker finished; the deck waits for its first frame.
    bool awaitingFrame = false;

    // Live and document sources arrive with their managers; until one is
    // given, a request of that kind fails with the manager's text.
    UvcSourceSessionManager *uvcManager = nullptr;
    PowerPointSourceManager *powerPointManager = nullptr;
    PdfSourceManager *pdfManager = nullptr;
    DeckFramePresenter *presenter = nullptr;

    DeckPipeline::Options pipelineOptions() const
    {
        return {deckIndex, timings.width, timings.height, busHandler, busUserData};
    }

    PreparationStatus fail(const QString &message, QString *errorOut)
    {
        status = PreparationStatus::Failed;
        error = message;
        awaitingFrame = false;
        if (errorOut)
            *errorOut = message;
        return status;
    }

    void failOffline()
    {
        mediaOffline = true;
        fail(text(deck_text::kMediaOffline), nullptr);
    }

    bool presenterHasFrame() const { return presenter && presenter->hasFrame(deckIndex); }

    void resetFields()
    {
        kind = DeckSessionKind::None;
        pendingRequest.reset();
        hasVideo = false;
        hasAudio = false;
        inMs = 0;
        outMs = -1;
        rate = 1.0;
        status = PreparationStatus::Idle;
        error.clear();
        awaitingFrame = false;
        preparationDeadline = QDeadlineTimer();
    }

    void pruneStops()
    {
        std::erase_if(retiredStops, [](const std::shared_ptr<AsyncPipelineStop> &stop) {
            return stop->isFinished() && stop->isConfirmed();
        });
    }

    void drainBus()
    {
        if (!pipeline || !pipeline->bus)
            return;
        for (int popped = 0; popped < kBusDrainLimit; ++popped) {
            GstMessage *message = gst_bus_pop(pipeline->bus);
            if (!message)
                break;
            gst_message_unref(message);
        }
    }

    bool replaceFilePipeline(QString *errorOut);
    bool releaseCurrentInput();
    bool kindChange(DeckSessionKind newKind, QString *errorOut);
    PreparationStatus prepareFile(const DeckSource &request, QString *errorOut);
    void pollFile();
};

bool DeckSourceSession::Impl::replaceFilePipeline(QString *errorOut)
{
    if (pendingRequest && !preparation) {
        // Nothing ever ran on the playbin: it can be used again as it is.
        resetFields();
        return true;
    }

    pruneStops();
    if (static_cast<int>(retiredStops.size()) > timings.maxUnconfirmedStops) {
        if (errorOut)
            *errorOut = text(deck_text::kReplaceStandby);
        return false;
    }

    QString createError;
    std::shared_ptr<DeckPipeline> fresh = DeckPipeline::create(pipelineOptions(), &createError);
    if (!fresh) {
        qCWarning(lcPlayout()).noquote()
            << QStringLiteral("Could not create a replacement pipeline for deck %1:").arg(deckIndex)
            << createError;
        if (errorOut)
            *errorOut = text(deck_text::kReplaceStandby);
        return false;
    }
    if (presenter)
        presenter->attachDeck(deckIndex, fresh->playbin, fresh->appsink);
    GstClock *clock = gst_system_clock_obtain();
    gst_pipeline_use_clock(GST_PIPELINE(fresh->playbin), clock);
    gst_object_unref(clock);

    std::shared_ptr<DeckPipeline> old = std::exchange(pipeline, fresh);
    old->busCallbacks->clear();
    // A sender blocked in its chain would otherwise hold up the change to NULL.
    if (GstElement *audioOutput = old->findAudioOutput()) {
        abortSender(audioOutput);
        gst_object_unref(audioOutput);
    }

    std::shared_ptr<AsyncFilePreparation> oldPreparation = std::exchange(preparation, nullptr);
    AsyncPipelineStop::Steps steps = retirementSteps(oldPreparation, old);

    const QString retainWarning =
        QStringLiteral("%1 for deck %2").arg(text(deck_text::kRetainResources)).arg(deckIndex);
    GstElement *oldPlaybin = old->playbin;
    std::shared_ptr<AsyncPipelineStop> stop = AsyncPipelineStop::start(
        oldPlaybin, std::move(steps), retainWarning, timings.nullConfirmation);
    if (stop) {
        retiredStops.push_back(std::move(stop));
    } else {
        qCWarning(lcPlayout()).noquote() << retainWarning;
        retainForProcess(old, QStringLiteral("deck"));
        if (oldPreparation)
            retainForProcess(oldPreparation);
    }

    resetFields();
    return true;
}

bool DeckSourceSession::Impl::releaseCurrentInput()
{
    if (kind == DeckSessionKind::None && !preparation && !pendingRequest)
        return true;
    return replaceFilePipeline(nullptr);
}

bool DeckSourceSession::Impl::kindChange(DeckSessionKind newKind, QString *errorOut)
{
    if (!releaseCurrentInput()) {
        *errorOut = text(deck_text::kStopPreviousInput);
        return false;
    }
    switch (newKind) {
    case DeckSessionKind::Uvc:
        if (!uvcManager) {
            *errorOut = text(deck_text::kUvcUnavailable);
            return false;
        }
        break;
    case DeckSessionKind::PowerPoint:
        if (!powerPointManager) {
            *errorOut = text(deck_text::kPowerPointUnavailable);
            return false;
        }
        break;
    case DeckSessionKind::Pdf:
        if (!pdfManager) {
            *errorOut = text(deck_text::kPdfUnavailable);
            return false;
        }
        break;
    case DeckSessionKind::None:
    case DeckSessionKind::File:
        break;
    }
    kind = newKind;
    return true;
}

PreparationStatus DeckSourceSession::Impl::prepareFile(const DeckSource &request,
                                                       QString *errorOut)
{
    if (!isValidFileSource(request))
        return fail(QString(), errorOut);
    QString changeError;
    if (!kindChange(DeckSessionKind::File, &changeError))
        return fail(changeError, errorOut);

    drainBus();
    if (presenter)
        presenter->dropRetainedFrame(deckIndex);
    g_object_set(pipeline->volumeElement, "volume", 1.0, nullptr);
    rate = request.rate;
    inMs = request.inMs;
    outMs = request.outMs;
    hasVideo = false;
    hasAudio = false;
    status = PreparationStatus::Preparing;
    preparationDeadline = QDeadlineTimer(timings.preparationDeadline);
    pendingRequest = request;
    if (errorOut)
        errorOut->clear();
    return status;
}

void DeckSourceSession::Impl::pollFile()
{
    if (awaitingFrame) {
        if (presenterHasFrame()) {
            awaitingFrame = false;
            status = PreparationStatus::Ready;
        } else if (preparationDeadline.hasExpired()) {
            fail(text(deck_text::kNoVideoFrame), nullptr);
        }
        return;
    }
    if (preparationDeadline.hasExpired()) {
        failOffline();
        return;
    }
    if (pendingRequest && !preparation) {
        pipeline->handedToWorker.store(true, std::memory_order_release);
        const auto remaining = std::chrono::milliseconds(
            std::max<qint64>(0, preparationDeadline.remainingTime()));
        AsyncFilePreparation::Options options;
        options.timings = timings;
        preparation =
            AsyncFilePreparation::start(pipeline->playbin, *pendingRequest, remaining, options);
        pendingRequest.reset();
        if (!preparation) {
            fail(text(deck_text::kPreparePipeline), nullptr);
            return;
        }
    }
    if (!preparation)
        return;
    if (preparation->isCancelled()) {
        fail(text(deck_text::kPreparationCancelled), nullptr);
        return;
    }
    if (!preparation->isFinished())
        return;
    if (preparation->timedOut() || preparationDeadline.hasExpired()) {
        failOffline();
        return;
    }
    switch (preparation->result()) {
    case AsyncFilePreparation::Prepared:
        hasVideo = preparation->hasVideo();
        hasAudio = preparation->hasAudio();
        if (hasVideo && !presenterHasFrame()) {
            awaitingFrame = true;
            return;
        }
        status = PreparationStatus::Ready;
        return;
    case AsyncFilePreparation::Offline:
        failOffline();
        return;
    case AsyncFilePreparation::Failed:
        fail(preparation->error(), nullptr);
        return;
    }
}

std::unique_ptr<DeckSourceSession> DeckSourceSession::create(const Options &options,
                                                             QString *error)
{
    auto impl = std::make_unique<Impl>();
    impl->deckIndex = options.deckIndex;
    impl->timings = options.timings;
    impl->busHandler = options.busHandler;
    impl->busUserData = options.busUserData;
    impl->pipeline = DeckPipeline::create(impl->pipelineOptions(), error);
    if (!impl->pipeline)
        return nullptr;
    return std::unique_ptr<DeckSourceSession>(new DeckSourceSession(std::move(impl)));
}

DeckSourceSession::DeckSourceSession(std::unique_ptr<Impl> impl) : d(std::move(impl)) {}

DeckSourceSession::~DeckSourceSession()
{
    // The pipeline's own destructor decides whether its references may go;
    // retired stops run on and own what they stop.
    d->pipeline.reset();
}

void DeckSourceSession::setPresenter(DeckFramePresenter *presenter)
{
    d->presenter = presenter;
}

PreparationStatus DeckSourceSession::prepare(const DeckSource &request, QString *error)
{
    if (!d->pipeline || !d->pipeline->playbin)
        return d->fail(text(deck_text::kNoStandbyPlayer), error);
    d->mediaOffline = false;
    d->error.clear();
    d->awaitingFrame = false;
    switch (request.kind) {
    case DeckSourceKind::File:
        return d->prepareFile(request, error);
    case DeckSourceKind::Uvc:
    case DeckSourceKind::PowerPoint:
    case DeckSourceKind::Pdf: {
        QString changeError;
        if (!d->kindChange(sessionKindFor(request.kind), &changeError))
            return d->fail(changeError, error);
        // Reached only once a manager exists; its preparation comes with it.
        return d->fail(QString(), error);
    }
    }
    return d->fail(QString(), error);
}

void DeckSourceSession::poll()
{
    if (d->status != PreparationStatus::Preparing)
        return;
    if (d->kind == DeckSessionKind::File)
        d->pollFile();
}

void DeckSourceSession::failPreparation(const QString &message, bool offline)
{
    if (d->status != PreparationStatus::Preparing)
        return;
    if (offline)
        d->mediaOffline = true;
    d->fail(message, nullptr);
}

bool DeckSourceSession::replaceFilePipeline(QString *error)
{
    return d->replaceFilePipeline(error);
}

DeckSourceSession::OffAirReport DeckSourceSession::offAirSession()
{
    OffAirReport report;
    if (d->kind == DeckSessionKind::File || d->preparation || d->pendingRequest) {
        report.released = d->replaceFilePipeline(nullptr);
        report.detached = report.released;
        report.stopped = report.released;
        // The old pipeline confirms its NULL on its own thread.
        report.nullConfirmed = false;
        return report;
    }
    // No input was loaded: the playbin never left NULL.
    if (d->presenter)
        d->presenter->dropRetainedFrame(d->deckIndex);
    d->resetFields();
    report.released = true;
    report.detached = true;
    report.stopped = true;
    report.nullConfirmed = true;
    return report;
}

bool DeckSourceSession::shutdown()
{
    if (!d->pipeline)
        return true;
    d->pipeline->busCallbacks->clear();
    if (d->preparation) {
        d->preparation->cancel();
        if (!d->preparation->waitFinished(d->timings.preparationDeadline))
            return false;
    }
    const bool confirmed =
        stopPipeline(d->pipeline->playbin, text(deck_text::kPlaybinLabel), d->timings.nullConfirmation);
    d->pipeline->shutdownConfirmed.store(confirmed, std::memory_order_release);
    return confirmed;
}

int DeckSourceSession::deckIndex() const { return d->deckIndex; }
int DeckSourceSession::width() const { return d->timings.width; }
int DeckSourceSession::height() const { return d->timings.height; }
GstElement *DeckSourceSession::playbin() const { return d->pipeline ? d->pipeline->playbin : nullptr; }
GstElement *DeckSourceSession::appsink() const { return d->pipeline ? d->pipeline->appsink : nullptr; }
GstElement *DeckSourceSession::levelElement() const
{
    return d->pipeline ? d->pipeline->levelElement : nullptr;
}
GstElement *DeckSourceSession::volumeElement() const
{
    return d->pipeline ? d->pipeline->volumeElement : nullptr;
}
GstBus *DeckSourceSession::bus() const { return d->pipeline ? d->pipeline->bus : nullptr; }
DeckSessionKind DeckSourceSession::kind() const { return d->kind; }
PreparationStatus DeckSourceSession::status() const { return d->status; }
QString DeckSourceSession::error() const { return d->error; }
bool DeckSourceSession::mediaOffline() const { return d->mediaOffline; }
bool DeckSourceSession::hasVideo() const { return d->hasVideo; }
bool DeckSourceSession::hasAudio() const { return d->hasAudio; }
qint64 DeckSourceSession::inMs() const { return d->inMs; }
qint64 DeckSourceSession::outMs() const { return d->outMs; }
double DeckSourceSession::rate() const { return d->rate; }

bool DeckSourceSession::shutdownConfirmed() const
{
    return d->pipeline && d->pipeline->shutdownConfirmed.load(std::memory_order_acquire);
}

bool DeckSourceSession::busOwnedByPreparation() const
{
    return d->pendingRequest.has_value() || (d->preparation && !d->preparation->isFinished());
}

int DeckSourceSession::pendingStopCount() const
{
    return static_cast<int>(std::count_if(
        d->retiredStops.begin(), d->retiredStops.end(),
        [](const std::shared_ptr<AsyncPipelineStop> &stop) {
            return !(stop->isFinished() && stop->isConfirmed());
        }));
}

int DeckSourceSession::unconfirmedStopCount() const
{
    return static_cast<int>(std::count_if(
        d->retiredStops.begin(), d->retiredStops.end(),
        [](const std::shared_ptr<AsyncPipelineStop> &stop) {
            return stop->isFinished() && !stop->isConfirmed();
        }));
}

} // namespace tarnix
