#include "playout/dsk_playback.h"

#include "playout/dsk_deck.h"
#include "playout/dsk_texts.h"
#include "shell/log_categories.h"
#include "video/program_gpu_compositor.h"

#include <algorithm>

namespace tarnix {

namespace {

QString text(const dsk_text::Text &message)
{
    return QString::fromUtf8(message.english);
}

void setError(QString *error, const QString &message)
{
    if (error)
        *error = message;
}

} // namespace

struct DskPlayback::Impl {
    ProgramGpuCompositor *compositor = nullptr;
    Options options;
    std::array<std::unique_ptr<DskDeck>, 2> decks;
    bool available = false;
    int active = -1;
    int preparing = -1;
    // The deck leaving during a change-over, and the change-over's progress.
    int leaving = -1;
    float progress = 1.0f;
    float level = 1.0f;
    int event = NoEvent;
    QString eventText;
    // A composition failure is told once per take.
    bool faultTold = false;

    DskDeck *deckAt(int index) const { return index == 0 || index == 1 ? decks[std::size_t(index)].get() : nullptr; }

    bool applyComposition()
    {
        if (!compositor)
            return false;
        if (leaving >= 0)
            return compositor->setDskLayers(active, level * progress, leaving, 1.0f);
        return compositor->setDskLayers(active, active >= 0 ? level : 0.0f, -1, 0.0f);
    }

    // Ready also needs the deck's first frame in its layer.
    bool preparedReady() const
    {
        const DskDeck *deck = deckAt(preparing);
        return deck && deck->status() == PreparationStatus::Ready && compositor
               && compositor->slotHasFrame(ProgramGpuCompositor::kDskSlotA + preparing);
    }

    bool releaseDeck(int index, QString *error)
    {
        DskDeck *deck = deckAt(index);
        if (!deck)
            return true;
        if (compositor)
            compositor->dropSlotFrame(ProgramGpuCompositor::kDskSlotA + index);
        return deck->release(error);
    }
};

std::unique_ptr<DskPlayback> DskPlayback::create(ProgramGpuCompositor *compositor, Options options, QString *error)
{
    auto impl = std::make_unique<Impl>();
    impl->compositor = compositor;
    impl->options = options;
    for (int index = 0; index < 2; ++index) {
        DskDeck::Options deckOptions;
        deckOptions.index = index;
        deckOptions.busHandler = options.busHandler;
        deckOptions.busUserData = options.busUserData;
        deckOptions.timings = options.timings;
        // A replaced pipeline that cannot be connected shows later as a deck
        // whose first frame never arrives.
        deckOptions.pipelineReplaced = [compositor, index](GstElement *pipeline, GstElement *appsink) {
            if (compositor && !compositor->connectDsk(index, pipeline, appsink))
                qCWarning(lcPlayout()).noquote() << dsk_text::kConnectFailed << index;
        };
        std::unique_ptr<DskDeck> &deck = impl->decks[std::size_t(index)];
        deck = DskDeck::create(deckOptions, error);
        if (!deck)
            return nullptr;
        // Connecting the same sink again answers at once whether it holds.
        if (compositor && !compositor->connectDsk(index, deck->playbin(), deck->appsink())) {
            setError(error, QStringLiteral("%1 %2").arg(QString::fromUtf8(dsk_text::kConnectFailed)).arg(index));
            return nullptr;
        }
    }
    return std::unique_ptr<DskPlayback>(new DskPlayback(std::move(impl)));
}

DskPlayback::DskPlayback(std::unique_ptr<Impl> impl) : d(std::move(impl)) {}
DskPlayback::~DskPlayback() = default;

void DskPlayback::setAvailable(bool available) { d->available = available; }
bool DskPlayback::isAvailable() const { return d->available; }

bool DskPlayback::prepare(const DeckSource &request, QString *error)
{
    if (!d->available) {
        setError(error, text(dsk_text::kPrepareFailed));
        return false;
    }
    // The deck that is not visible; while a change-over runs neither is free.
    if (d->leaving >= 0) {
        setError(error, text(dsk_text::kStillStopping));
        return false;
    }
    const int index = d->active == 0 ? 1 : 0;
    DskDeck *deck = d->deckAt(index);
    if (d->compositor)
        d->compositor->dropSlotFrame(ProgramGpuCompositor::kDskSlotA + index);
    if (!deck->prepare(request, error))
        return false;
    d->preparing = index;
    return true;
}

int DskPlayback::status() const
{
    if (const DskDeck *visible = d->deckAt(d->active))
        return visible->isPlaying() ? Visible : VisiblePaused;
    const DskDeck *deck = d->deckAt(d->preparing);
    if (!deck)
        return None;
    switch (deck->status()) {
    case PreparationStatus::Preparing:
        return Preparing;
    case PreparationStatus::Ready:
        return d->preparedReady() ? Ready : Preparing;
    default:
        return None;
    }
}

bool DskPlayback::isPreparationReady() const { return d->preparedReady(); }

QString DskPlayback::preparationError() const
{
    const DskDeck *deck = d->deckAt(d->preparing);
    return deck && deck->status() == PreparationStatus::Failed ? deck->error() : QString();
}

bool DskPlayback::isPreparedStill() const
{
    const DskDeck *deck = d->deckAt(d->preparing >= 0 ? d->preparing : d->active);
    return deck && deck->isStill();
}

bool DskPlayback::cancelPreparation(QString *error)
{
    if (d->preparing < 0)
        return true;
    if (!d->releaseDeck(d->preparing, error))
        return false;
    d->preparing = -1;
    return true;
}

bool DskPlayback::take(bool paused, bool crossfade, float level, QString *error)
{
    if (!d->available || !d->preparedReady() || d->leaving >= 0) {
        setError(error, text(dsk_text::kDisplayFailed));
        return false;
    }
    DskDeck *incoming = d->deckAt(d->preparing);
    if (!paused && !incoming->play(error))
        return false;
    const int old = d->active;
    d->active = d->preparing;
    d->preparing = -1;
    d->level = std::clamp(level, 0.0f, 1.0f);
    d->leaving = crossfade && old >= 0 ? old : -1;
    d->progress = d->leaving >= 0 ? 0.0f : 1.0f;
    d->faultTold = false;
    d->event = NoEvent;
    d->eventText.clear();
    if (!d->applyComposition()) {
        setError(error, text(dsk_text::kFrameDisplayFailed));
        return false;
    }
    if (old >= 0 && d->leaving < 0) {
        QString releaseError;
        if (!d->releaseDeck(old, &releaseError))
            qCWarning(lcPlayout()).noquote() << dsk_text::kStopFailed.english << releaseError;
    }
    return true;
}

bool DskPlayback::transitionStep(float progress, QString *error)
{
    if (d->leaving < 0)
        return true;
    d->progress = std::clamp(progress, 0.0f, 1.0f);
    if (d->progress < 1.0f) {
        d->applyComposition();
        return true;
    }
    const int old = std::exchange(d->leaving, -1);
    d->applyComposition();
    return d->releaseDeck(old, error);
}

bool DskPlayback::isTransitionActive() const { return d->leaving >= 0; }

void DskPlayback::setLevel(float level)
{
    d->level = std::clamp(level, 0.0f, 1.0f);
    if (d->active >= 0)
        d->applyComposition();
}

bool DskPlayback::hide(QString *error)
{
    if (d->compositor && !d->compositor->setDskLayers(-1, 0.0f, -1, 0.0f)) {
        setError(error, text(dsk_text::kOffFailed));
        return false;
    }
    bool released = true;
    for (int index : {d->leaving, d->active, d->preparing}) {
        QString releaseError;
        if (index >= 0 && !d->releaseDeck(index, &releaseError)) {
            released = false;
            setError(error, releaseError);
        }
    }
    d->active = -1;
    d->preparing = -1;
    d->leaving = -1;
    d->progress = 1.0f;
    d->event = NoEvent;
    d->eventText.clear();
    return released;
}

bool DskPlayback::play(QString *error)
{
    DskDeck *deck = d->deckAt(d->active);
    return d->available && deck && deck->play(error);
}

bool DskPlayback::pause(QString *error)
{
    DskDeck *deck = d->deckAt(d->active);
    return d->available && deck && deck->pause(error);
}

bool DskPlayback::seek(qint64 ms)
{
    DskDeck *deck = d->deckAt(d->active);
    return d->available && deck && deck->seek(ms);
}

bool DskPlayback::isPlaying() const
{
    const DskDeck *deck = d->deckAt(d->active);
    return deck && deck->isPlaying();
}

qint64 DskPlayback::positionMs() const
{
    const DskDeck *deck = d->deckAt(d->active);
    return deck ? deck->positionMs() : -1;
}

qint64 DskPlayback::durationMs() const
{
    const DskDeck *deck = d->deckAt(d->active);
    return deck ? deck->durationMs() : -1;
}

int DskPlayback::takeEvent(QString *eventText)
{
    const int event = std::exchange(d->event, int(NoEvent));
    if (eventText)
        *eventText = d->eventText;
    d->eventText.clear();
    return event;
}

void DskPlayback::poll()
{
    for (int index = 0; index < 2; ++index) {
        DskDeck *deck = d->deckAt(index);
        deck->poll();
        if (index == d->preparing && deck->status() == PreparationStatus::Ready && !d->preparedReady()
            && deck->deadlinePassed())
            deck->failPreparation(text(dsk_text::kNoFrame));
        QString eventText;
        const int event = deck->takeEvent(&eventText);
        if (index == d->active && event != NoEvent && d->event != Error) {
            d->event = event;
            d->eventText = event == Error && eventText.isEmpty() ? text(dsk_text::kPlaybackFailed) : eventText;
        }
    }
    // A frame the compositor could not draw takes the layer off; the
    // program goes on and the visible deck stops where it is.
    if (d->active >= 0 && !d->faultTold && d->compositor && d->compositor->dskFaulted()) {
        d->faultTold = true;
        d->event = Error;
        d->eventText = text(dsk_text::kCompositionFailed);
        d->deckAt(d->active)->pause();
    }
}

int DskPlayback::activeIndex() const { return d->active; }
int DskPlayback::preparingIndex() const { return d->preparing; }
DskDeck *DskPlayback::deck(int index) const { return d->deckAt(index); }

bool DskPlayback::hasWorkInHand() const
{
    return std::any_of(d->decks.begin(), d->decks.end(),
                       [](const std::unique_ptr<DskDeck> &deck) { return deck->pendingStopCount() > 0; });
}

bool DskPlayback::shutdown()
{
    bool confirmed = true;
    for (auto &deck : d->decks)
        confirmed = deck->shutdown() && confirmed;
    return confirmed;
}

} // namespace tarnix
