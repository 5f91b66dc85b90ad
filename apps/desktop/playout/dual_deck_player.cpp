#include "playout/dual_deck_player_impl.h"

#include "playout/playbin_control.h"
#include "playout/dual_deck_texts.h"
#include "shell/log_categories.h"
#include "shell/pipeline_release.h"
#include "video/program_monitor_widget.h"
#include "video/program_output_widget.h"

#include <QVBoxLayout>

#include <algorithm>
#include <cmath>
#include <system_error>
#include <thread>

namespace tarnix {

namespace {

QString text(const char *literal)
{
    return QString::fromUtf8(literal);
}

} // namespace

void DualDeckEngine::shutdown()
{
    bool confirmed = true;
    for (auto &session : decks) {
        // Retires a running preparation, waits for it and confirms NULL.
        if (session && !session->shutdown())
            confirmed = false;
    }
    if (bgm && !bgm->shutdown())
        confirmed = false;
    if (dsk && !dsk->shutdown())
        confirmed = false;
    if (audio && !audio->requestNull())
        confirmed = false;
    if (compositor && !compositor->stop())
        confirmed = false;
    shutdownConfirmed.store(confirmed, std::memory_order_release);
    shutdownFinished.store(true, std::memory_order_release);
}

void DualDeckPlayer::Impl::create(DualDeckPlayer *widget)
{
    steadyClock.start();
    auto *layout = new QVBoxLayout(widget);
    layout->setContentsMargins(0, 0, 0, 0);
    programOutput = new ProgramOutputWidget(widget);
    monitorOutput = new ProgramMonitorWidget(widget);
    monitorOutput->setObjectName(QStringLiteral("monitor-gpu-output"));
    layout->addWidget(programOutput, 1);
    layout->addWidget(monitorOutput);

    for (int index = 0; index < 2; ++index) {
        DeckSourceSession::Options deckOptions;
        deckOptions.deckIndex = index;
        deckOptions.busHandler = &Impl::syncHandler;
        deckOptions.busUserData = engine.get();
        deckOptions.timings = options.deckTimings;
        QString error;
        engine->decks[index] = DeckSourceSession::create(deckOptions, &error);
        if (!engine->decks[index]) {
            initializationError = QStringLiteral("Failed to create Deck %1: %2").arg(index).arg(error);
            qCWarning(lcPlayout()).noquote() << initializationError;
            return;
        }
    }
    BgmDeck::Options bgmOptions;
    bgmOptions.busHandler = &Impl::syncHandler;
    bgmOptions.busUserData = engine.get();
    bgmOptions.timings = options.deckTimings;
    // A fresh BGM pipeline brings its own input meter.
    bgmOptions.pipelineReplaced = [engine = engine.get()](GstElement *inputLevel) {
        if (engine->audio)
            engine->levelTimeline.setProgramElements(engine->audio->masterLevelElement(),
                                                     engine->audio->bgmLevelElement(), inputLevel);
    };
    QString bgmError;
    engine->bgm = BgmDeck::create(std::move(bgmOptions), &bgmError);
    if (!engine->bgm) {
        initializationError = QStringLiteral("Failed to create the BGM deck: %1").arg(bgmError);
        qCWarning(lcPlayout()).noquote() << initializationError;
        return;
    }

    engine->audio = std::make_unique<ProgramAudioOutput>(options.audioTimings);
    if (!engine->audio->create(&Impl::syncHandler, engine.get(), options.audioDevice,
                               options.audioSinkFactory)) {
        // The output has logged the step that failed.
        initializationError = QStringLiteral("Could not create the program audio pipeline.");
        return;
    }
    engine->levelTimeline.setProgramElements(engine->audio->masterLevelElement(),
                                             engine->audio->bgmLevelElement(),
                                             engine->bgm->inputLevelElement());
    for (auto &session : engine->decks)
        useSystemClock(session->playbin());
    useSystemClock(engine->bgm->playbin());
    useSystemClock(engine->audio->pipeline());

    programOutput->raise();
    monitorOutput->raise();
    ProgramCompositorOptions compositorOptions;
    compositorOptions.width = options.deckTimings.width;
    compositorOptions.height = options.deckTimings.height;
    compositorOptions.programWindow = programOutput->outputWindow();
    compositorOptions.monitor = monitorOutput;
    GstClock *clock = gst_system_clock_obtain();
    compositorOptions.clock = clock;
    compositorOptions.outputFactory = options.presentOutput;
    compositorOptions.monotonicMs = options.monotonicMs;
    compositorOptions.timings = options.compositorTimings;
    engine->compositor = std::make_unique<ProgramGpuCompositor>(std::move(compositorOptions));
    gst_object_unref(clock);
    if (options.frameTap)
        engine->compositor->setFrameTap(options.frameTap);
    QString startError;
    if (!engine->compositor->start(&startError)) {
        initializationError = text(dual_deck_text::kCompositorStart) + QStringLiteral(": ") + startError;
        qCWarning(lcPlayout()).noquote() << initializationError;
        return;
    }

    // PowerPoint and PDF source managers are created here once they exist;
    // until then the decks refuse those requests with their own texts.
    qCWarning(lcPlayout()).noquote() << text(dual_deck_text::kUvcManagerMissing);

    for (int index = 0; index < 2; ++index) {
        DeckSourceSession *session = engine->decks[index].get();
        session->setPresenter(engine->compositor.get());
        if (!engine->compositor->connectDeck(index, session->playbin(), session->appsink())) {
            initializationError = QStringLiteral("%1 %2 %3")
                                      .arg(text(dual_deck_text::kConnectDeck))
                                      .arg(index)
                                      .arg(text(dual_deck_text::kConnectDeckTail));
            qCWarning(lcPlayout()).noquote() << initializationError;
            return;
        }
    }
    DskPlayback::Options dskOptions;
    dskOptions.timings = options.deckTimings;
    dskOptions.busHandler = &Impl::syncHandler;
    dskOptions.busUserData = engine.get();
    QString dskError;
    engine->dsk = DskPlayback::create(engine->compositor.get(), dskOptions, &dskError);
    if (!engine->dsk) {
        initializationError = dskError;
        qCWarning(lcPlayout()).noquote() << initializationError;
        return;
    }
    engine->dsk->setAvailable(true);
    initialized = true;
}

void DualDeckPlayer::Impl::setAudible(int deckIndex, bool audible)
{
    if (engine->audio && (deckIndex == 0 || deckIndex == 1))
        engine->audio->setDeckAudible(deckIndex, audible);
}

void DualDeckPlayer::Impl::applyProgramFade()
{
    if (engine->audio)
        engine->audio->setProgramFade(programFade);
    if (engine->compositor)
        engine->compositor->setFadeToBlack(static_cast<float>(programFade));
}

bool DualDeckPlayer::Impl::retireDeck(int deckIndex, const char *failureText)
{
    DeckSourceSession *session = deck(deckIndex);
    if (!session || session->kind() == DeckSessionKind::None)
        return true;
    QString error;
    if (session->replaceFilePipeline(&error))
        return true;
    qCWarning(lcPlayout()).noquote() << text(failureText) << error;
    return false;
}

void DualDeckPlayer::Impl::pollStandby()
{
    DeckSourceSession *session = deck(standbyDeck);
    if (!session)
        return;
    session->poll();
    standbyStatus = session->status();
    standbyError = session->error();
}

DualDeckPlayer::DualDeckPlayer(DualDeckPlayerOptions options, QWidget *parent)
    : QWidget(parent), d(std::make_unique<Impl>(std::move(options)))
{
    d->create(this);
}

DualDeckPlayer::~DualDeckPlayer()
{
    if (!d->shutdownStarted)
        beginShutdown();
    if (!d->engine->shutdownFinished.load(std::memory_order_acquire)
        || !d->engine->shutdownConfirmed.load(std::memory_order_acquire)) {
        // Threads of a pipeline may still run: the engine stays for the process.
        retainForProcess(d->engine, QStringLiteral("deck"));
    }
}

bool DualDeckPlayer::isInitialized() const
{
    return d->ready();
}

QString DualDeckPlayer::initializationError() const
{
    return d->initializationError;
}

bool DualDeckPlayer::isPresenterRunning() const
{
    return d->engine->compositor && d->engine->compositor->isStarted();
}

bool DualDeckPlayer::prepareStandby(const DeckSource &request)
{
    if (!d->ready())
        return false;
    if (d->crossfadeActive) {
        // Both decks are on the picture until the crossfade ends.
        qCWarning(lcPlayout()).noquote() << text(dual_deck_text::kCrossfadeRunning);
        return false;
    }
    const int standby = d->currentDeck.load(std::memory_order_acquire) == 0 ? 1 : 0;
    DeckSourceSession *session = d->deck(standby);
    d->setAudible(standby, false);
    d->standbyDeck = standby;
    QString error;
    d->standbyStatus = session->prepare(request, &error);
    d->standbyError = error;
    if (d->standbyStatus == PreparationStatus::Failed)
        return false;
    // The session starts its worker on a poll: now, not on the caller's next.
    // What that poll finds is told by standbyStatus(), like any later one.
    d->pollStandby();
    return true;
}

PreparationStatus DualDeckPlayer::standbyStatus() const
{
    return d->ready() ? d->standbyStatus : PreparationStatus::Failed;
}

QString DualDeckPlayer::standbyError() const
{
    return d->ready() ? d->standbyError : QString();
}

int DualDeckPlayer::standbyDeck() const
{
    return d->standbyDeck;
}

int DualDeckPlayer::currentDeck() const
{
    return d->currentDeck.load(std::memory_order_acquire);
}

bool DualDeckPlayer::releaseStandby()
{
    if (!d->ready())
        return false;
    const int standby = d->standbyDeck;
    if (standby < 0)
        return true;
    if (standby != currentDeck()) {
        DeckSourceSession *session = d->deck(standby);
        const bool unfinished = session->status() == PreparationStatus::Preparing
                                || session->status() == PreparationStatus::Failed;
        QString error;
        if (session->kind() != DeckSessionKind::None && !session->replaceFilePipeline(&error)) {
            if (unfinished) {
                d->standbyError = text(dual_deck_text::kReplaceStandby);
            } else {
                d->standbyError = text(dual_deck_text::kReleaseStandby);
            }
            qCWarning(lcPlayout()).noquote() << d->standbyError;
            return false;
        }
        d->setAudible(standby, false);
    }
    d->standbyDeck = -1;
    d->standbyStatus = PreparationStatus::Idle;
    d->standbyError.clear();
    return true;
}

bool DualDeckPlayer::takeStandby(bool crossfade, float videoLevel, int *status)
{
    if (status)
        *status = 3;
    if (!d->ready() || !isPresenterRunning())
        return false;
    // A take needs somewhere to send its sound: while the output device is
    // being changed (1) or has no usable device (2) nothing changes and the
    // item on air plays on.
    if (const ProgramAudioOutput *audio = d->engine->audio.get()) {
        if (audio->isDeviceChangeRunning()) {
            if (status)
                *status = 1;
            return false;
        }
        if (!audio->hasUsableDevice()) {
            if (status)
                *status = 2;
            return false;
        }
    }
    d->pumpBuses();
    d->pollStandby();
    // The BGM deck is served here.

    const int standby = d->standbyDeck;
    DeckSourceSession *next = d->deck(standby);
    if (!next || d->standbyStatus != PreparationStatus::Ready)
        return false;
    ProgramGpuCompositor *compositor = d->engine->compositor.get();
    d->videoLevel = std::clamp(videoLevel, 0.0f, 1.0f);
    compositor->setGroupOpacity(d->videoLevel);

    const int old = currentDeck() != standby ? currentDeck() : -1;
    DeckSourceSession *previous = d->deck(old);
    const bool realCrossfade = crossfade && previous && previous->hasVideo() && next->hasVideo();
    if (!compositor->setProgramLayers(standby, 1.0f, old, realCrossfade ? 1.0f : 0.0f))
        return false;
    if (!realCrossfade && previous
        && !d->retireDeck(old, dual_deck_text::kStopPrevious)) {
        compositor->setProgramLayers(old, 1.0f, -1, 0.0f);
        return false;
    }

    if (old >= 0)
        d->setAudible(old, false);
    d->currentDeck.store(standby, std::memory_order_release);
    d->stillFrozen = false;
    d->stillRestoreActive = false;
    d->stillRestoreStart = 0;
    d->setAudible(standby, next->hasAudio());
    d->applyProgramFade();

    d->crossfadeActive = realCrossfade;
    d->crossfadeFromDeck = realCrossfade ? old : -1;
    d->crossfadeToDeck = realCrossfade ? standby : -1;
    if (old >= 0)
        d->clearEventOf(old);
    d->clearEventOf(kNoEventDeck);
    d->standbyDeck = -1;
    d->standbyStatus = PreparationStatus::Idle;
    d->standbyError.clear();
    d->holdAtStart = false;
    d->rate = next->rate();
    d->engine->levelTimeline.reset(next->levelElement(),
                                   d->engine->audio->deckLevelElement(standby), true);
    if (status)
        *status = 0;
    return true;
}

bool DualDeckPlayer::stopCrossfade(float progress)
{
    if (!d->ready() || !d->crossfadeActive)
        return false;
    const float amount = std::isfinite(progress) ? std::clamp(progress, 0.0f, 1.0f) : 0.0f;
    const int from = d->crossfadeFromDeck;
    const int to = d->crossfadeToDeck;
    if (!d->engine->compositor->setProgramLayers(to, 1.0f, from, 1.0f - amount))
        return false;
    if (amount < 1.0f)
        return true;
    if (!d->retireDeck(from, dual_deck_text::kStopPreviousCrossfade))
        return false;
    d->engine->compositor->setProgramLayers(to, 1.0f, -1, 0.0f);
    d->crossfadeActive = false;
    d->crossfadeFromDeck = -1;
    d->crossfadeToDeck = -1;
    return true;
}

bool DualDeckPlayer::isCrossfadeActive() const { return d->crossfadeActive; }
int DualDeckPlayer::crossfadeFromDeck() const { return d->crossfadeFromDeck; }
int DualDeckPlayer::crossfadeToDeck() const { return d->crossfadeToDeck; }

int DualDeckPlayer::offAir()
{
    if (!d->ready())
        return 0;
    if (!d->engine->compositor->setProgramLayers(-1, 0.0f, -1, 0.0f))
        return 1;
    for (int index = 0; index < 2; ++index) {
        d->setAudible(index, false);
        // What could not be released stays with the deck for the next try;
        // the program is OFF AIR either way.
        d->deck(index)->offAirSession();
    }
    d->currentDeck.store(-1, std::memory_order_release);
    d->stillFrozen = false;
    d->stillRestoreActive = false;
    d->crossfadeActive = false;
    d->crossfadeFromDeck = -1;
    d->crossfadeToDeck = -1;
    d->videoLevel = 1.0f;
    d->engine->compositor->setGroupOpacity(1.0f);
    d->applyProgramFade();
    d->standbyDeck = -1;
    d->standbyStatus = PreparationStatus::Idle;
    d->standbyError.clear();
    d->holdAtStart = true;
    d->event = {};
    d->engine->levelTimeline.reset(nullptr, nullptr, false);
    return 2;
}

int DualDeckPlayer::takeEvent(QString *text, bool *programAudio)
{
    const Impl::Event event = std::exchange(d->event, {});
    if (text)
        *text = event.text;
    if (programAudio)
        *programAudio = event.kind == Error && event.deck == kProgramAudioEventDeck;
    return event.kind;
}

void DualDeckPlayer::poll()
{
    if (!d->ready())
        return;
    // A change of output device waits while anything is ON AIR or the BGM
    // deck holds an item.
    d->engine->audio->serviceDeviceChange(currentDeck() < 0 && isBgmStopped());
    d->pumpBuses();
    d->pollStandby();
    QString failure;
    if (d->engine->compositor->poll(&failure))
        d->pendingPresenterFailure = failure;
    if (!d->pendingPresenterFailure.isEmpty() && d->event.kind != Error) {
        d->recordEvent(Error, text(dual_deck_text::kGpuOutputError) + d->pendingPresenterFailure,
                       kNoEventDeck);
        d->pendingPresenterFailure.clear();
    }
}

void DualDeckPlayer::setVideoLevel(float level)
{
    d->videoLevel = std::isfinite(level) ? std::clamp(level, 0.0f, 1.0f) : 1.0f;
    if (d->ready())
        d->engine->compositor->setGroupOpacity(d->videoLevel);
}

void DualDeckPlayer::setProgramFade(double amount)
{
    d->programFade = std::isfinite(amount) ? std::clamp(amount, 0.0, 1.0) : 0.0;
    if (d->ready())
        d->applyProgramFade();
}

void DualDeckPlayer::setItemVolume(double volume)
{
    if (!std::isfinite(volume))
        return;
    d->itemVolume = std::clamp(volume, 0.0, 2.0);
    DeckSourceSession *session = d->current();
    if (d->ready() && session && session->volumeElement())
        g_object_set(session->volumeElement(), "volume", d->itemVolume, nullptr);
}

void DualDeckPlayer::setItemDelayFrames(int frames)
{
    if (d->ready() && d->standbyDeck >= 0)
        d->engine->audio->setItemDelayFrames(d->standbyDeck, frames);
}

void DualDeckPlayer::setItemEq(double lowDb, double midDb, double highDb)
{
    if (d->ready() && d->standbyDeck >= 0)
        d->engine->audio->setItemEq(d->standbyDeck, lowDb, midDb, highDb);
}

float DualDeckPlayer::videoLevel() const { return d->videoLevel; }
double DualDeckPlayer::programFade() const { return d->programFade; }
double DualDeckPlayer::itemVolume() const { return d->itemVolume; }
bool DualDeckPlayer::isHoldAtStart() const { return d->holdAtStart; }
bool DualDeckPlayer::isStillFrozen() const { return d->stillFrozen; }

void DualDeckPlayer::beginShutdown()
{
    d->initialized = false;
    d->closing = true;
    if (d->shutdownStarted)
        return;
    // The PowerPoint and PDF source managers are stopped here; the
    // compositor stops on the shutdown thread, since stopping it waits.
    std::shared_ptr<DualDeckEngine> engine = d->engine;
    if (engine->audio) {
        engine->audio->detachBus();
        if (!engine->audio->canRelease())
            return; // a device change still runs: called again
    }
    if (engine->dsk)
        engine->dsk->setAvailable(false);
    // The DSK decks' replaced pipelines stop on threads of their own and
    // keep what they cannot release, so they do not hold the shutdown up.
    d->shutdownStarted = true;
    // The thread borrows the engine: it is freed on the main thread only
    // after the thread's last store, and kept for the process otherwise.
    DualDeckEngine *borrowed = engine.get();
    try {
        std::thread([borrowed] { borrowed->shutdown(); }).detach();
    } catch (const std::system_error &error) {
        qCWarning(lcPlayout()).noquote()
            << "Could not start the ON AIR shutdown thread:" << error.what();
    }
}

bool DualDeckPlayer::isShutdownConfirmed() const
{
    return d->engine->shutdownFinished.load(std::memory_order_acquire)
           && d->engine->shutdownConfirmed.load(std::memory_order_acquire);
}

bool DualDeckPlayer::isShutdownFinished() const
{
    return d->engine->shutdownFinished.load(std::memory_order_acquire);
}

DskPlayback *DualDeckPlayer::dskPlayback() const
{
    return d->engine->dsk.get();
}

BgmDeck *DualDeckPlayer::bgmDeck() const
{
    return d->engine->bgm.get();
}

bool DualDeckPlayer::isBgmStopped() const
{
    const BgmDeck *bgm = d->engine->bgm.get();
    return !bgm || !bgm->hasItem() || bgm->status() == PreparationStatus::Failed;
}

LevelReading DualDeckPlayer::bgmInputLevel() const
{
    return d->engine->levelTimeline.bgmInput();
}

void DualDeckPlayer::setBgmMetering(bool on)
{
    d->engine->levelTimeline.setBgmMetering(on);
}

ProgramGpuCompositor *DualDeckPlayer::compositor() const { return d->engine->compositor.get(); }
ProgramAudioOutput *DualDeckPlayer::audioOutput() const { return d->engine->audio.get(); }
DeckSourceSession *DualDeckPlayer::deck(int index) const { return d->deck(index); }

} // namespace tarnix
