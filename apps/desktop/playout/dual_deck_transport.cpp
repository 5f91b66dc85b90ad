#include "playout/dual_deck_player_impl.h"

#include "playout/playbin_control.h"
#include "audio/level_reading.h"

#include <cmath>

namespace tarnix {

namespace {

constexpr gint64 kNsPerMs = GST_MSECOND;

bool seekRange(GstElement *playbin, double rate, qint64 startMs, qint64 stopMs)
{
    return gst_element_seek(playbin, rate, GST_FORMAT_TIME,
                            GstSeekFlags(GST_SEEK_FLAG_FLUSH | GST_SEEK_FLAG_ACCURATE),
                            GST_SEEK_TYPE_SET, startMs * kNsPerMs,
                            stopMs >= 0 ? GST_SEEK_TYPE_SET : GST_SEEK_TYPE_NONE,
                            stopMs >= 0 ? stopMs * kNsPerMs : GST_CLOCK_TIME_NONE);
}

} // namespace

bool DualDeckPlayer::play()
{
    if (!d->ready())
        return false;
    const int index = currentDeck();
    DeckSourceSession *session = d->current();
    // Live and document decks play once their managers exist.
    if (!session || session->kind() != DeckSessionKind::File)
        return false;
    d->pumpBuses();
    if (d->event.kind == EndOfStream && d->event.deck == index) {
        d->event = {};
        stop();
    }
    ProgramGpuCompositor *compositor = d->engine->compositor.get();
    d->engine->levelTimeline.reset(session->levelElement(),
                                   d->engine->audio->deckLevelElement(index), true);
    if (d->stillFrozen)
        compositor->setFrameUpdates(index, true);
    if (!requestState(session->playbin(), GST_STATE_PLAYING)) {
        if (d->stillFrozen)
            compositor->setFrameUpdates(index, false);
        d->engine->levelTimeline.reset(nullptr, nullptr, false);
        return false;
    }
    d->stillFrozen = false;
    d->stillRestoreActive = false;
    d->stillRestoreStart = 0;
    d->holdAtStart = false;
    return true;
}

bool DualDeckPlayer::pause()
{
    if (!d->ready())
        return false;
    DeckSourceSession *session = d->current();
    d->engine->levelTimeline.reset(nullptr, nullptr, false);
    if (!session || session->kind() != DeckSessionKind::File)
        return false;
    return requestState(session->playbin(), GST_STATE_PAUSED);
}

bool DualDeckPlayer::stop()
{
    if (!d->ready())
        return false;
    DeckSourceSession *session = d->current();
    if (!session || session->kind() != DeckSessionKind::File)
        return false;
    // Paused at the in point rather than READY: the next play starts where
    // the item starts, and the picture shows its first frame meanwhile.
    if (!requestState(session->playbin(), GST_STATE_PAUSED))
        return false;
    seekRange(session->playbin(), d->rate, session->inMs(), session->outMs());
    d->holdAtStart = true;
    return true;
}

bool DualDeckPlayer::seek(qint64 ms)
{
    if (!d->ready())
        return false;
    const int index = currentDeck();
    DeckSourceSession *session = d->current();
    if (!session || session->kind() != DeckSessionKind::File)
        return false;
    qint64 position = std::max(ms, session->inMs());
    if (session->outMs() >= 0)
        position = std::min(position, session->outMs());
    d->pumpBuses();
    d->engine->levelTimeline.reset(session->levelElement(),
                                   d->engine->audio->deckLevelElement(index), true);
    if (!seekRange(session->playbin(), d->rate, position, session->outMs()))
        return false;
    d->holdAtStart = false;
    if (d->event.kind == EndOfStream && d->event.deck == index)
        d->event = {};
    return true;
}

bool DualDeckPlayer::setRate(double rate)
{
    if (!d->ready() || !std::isfinite(rate) || rate == 0.0)
        return false;
    DeckSourceSession *session = d->current();
    if (!session || session->kind() != DeckSessionKind::File)
        return false;
    gint64 position = 0;
    if (!gst_element_query_position(session->playbin(), GST_FORMAT_TIME, &position))
        return false;
    const qint64 positionMs = position / kNsPerMs;
    if (rate > 0) {
        if (!seekRange(session->playbin(), rate, positionMs, session->outMs()))
            return false;
        d->rate = rate;
        return true;
    }
    if (!gst_element_seek(session->playbin(), rate, GST_FORMAT_TIME,
                          GstSeekFlags(GST_SEEK_FLAG_FLUSH | GST_SEEK_FLAG_ACCURATE),
                          GST_SEEK_TYPE_SET, 0, GST_SEEK_TYPE_SET, position))
        return false;
    // Backward play runs once; what is stored is the forward rate.
    d->rate = 1.0;
    return true;
}

int DualDeckPlayer::restoreStill()
{
    if (!d->ready())
        return 2;
    if (!d->stillFrozen && !d->holdAtStart && !d->stillRestoreActive)
        return 0;
    const int index = currentDeck();
    DeckSourceSession *session = d->current();
    if (!session || session->kind() != DeckSessionKind::File)
        return 2;
    ProgramGpuCompositor *compositor = d->engine->compositor.get();
    if (!d->stillRestoreActive) {
        requestState(session->playbin(), GST_STATE_READY);
        compositor->setFrameUpdates(index, true);
        d->stillRestoreFrames = compositor->slotFramesReceived(index);
        if (!requestState(session->playbin(), GST_STATE_PAUSED)) {
            compositor->freeze(index, d->options.timings.freeze);
            d->stillFrozen = true;
            d->holdAtStart = true;
            return 2;
        }
        d->stillRestoreActive = true;
        d->stillRestoreStart = d->nowMs();
    }
    GstState state = GST_STATE_VOID_PENDING;
    GstState pending = GST_STATE_VOID_PENDING;
    const GstStateChangeReturn result = gst_element_get_state(session->playbin(), &state, &pending, 0);
    if (result != GST_STATE_CHANGE_FAILURE && state == GST_STATE_PAUSED
        && pending == GST_STATE_VOID_PENDING
        && compositor->slotFramesReceived(index) > d->stillRestoreFrames) {
        if (d->event.kind == EndOfStream && d->event.deck == index)
            d->event = {};
        d->stillFrozen = false;
        d->holdAtStart = false;
        d->stillRestoreActive = false;
        d->stillRestoreStart = 0;
        return 0;
    }
    if (result != GST_STATE_CHANGE_FAILURE
        && d->nowMs() - d->stillRestoreStart < d->options.timings.stillRestore.count())
        return 1;
    compositor->freeze(index, d->options.timings.freeze);
    d->stillRestoreActive = false;
    d->stillFrozen = true;
    d->holdAtStart = true;
    return 2;
}

bool DualDeckPlayer::freezeAtStart()
{
    if (!d->ready())
        return false;
    const int index = currentDeck();
    if (!stop())
        return false;
    ProgramGpuCompositor *compositor = d->engine->compositor.get();
    if (!compositor->freeze(index, d->options.timings.freeze) || !pause()) {
        compositor->setFrameUpdates(index, true);
        return false;
    }
    d->holdAtStart = true;
    d->stillFrozen = true;
    return true;
}

qint64 DualDeckPlayer::positionMs() const
{
    DeckSourceSession *session = d->current();
    if (!d->ready() || !session || session->kind() != DeckSessionKind::File)
        return -1;
    if (d->holdAtStart)
        return session->inMs();
    gint64 position = 0;
    if (!gst_element_query_position(session->playbin(), GST_FORMAT_TIME, &position) || position < 0)
        return -1;
    return position / kNsPerMs;
}

qint64 DualDeckPlayer::durationMs() const
{
    DeckSourceSession *session = d->current();
    if (!d->ready() || !session || session->kind() != DeckSessionKind::File)
        return -1;
    gint64 duration = 0;
    if (!gst_element_query_duration(session->playbin(), GST_FORMAT_TIME, &duration) || duration < 0)
        return -1;
    return duration / kNsPerMs;
}

bool DualDeckPlayer::isPlaying() const
{
    DeckSourceSession *session = d->current();
    if (!d->ready() || !session || !session->playbin())
        return false;
    GstState state = GST_STATE_VOID_PENDING;
    GstState pending = GST_STATE_VOID_PENDING;
    if (gst_element_get_state(session->playbin(), &state, &pending, 0) == GST_STATE_CHANGE_FAILURE)
        return false;
    return (pending == GST_STATE_VOID_PENDING ? state : pending) == GST_STATE_PLAYING;
}

ProgramLevelTimeline::Snapshot DualDeckPlayer::levelSnapshot()
{
    DeckSourceSession *session = d->ready() ? d->current() : nullptr;
    GstElement *program = d->engine->audio ? d->engine->audio->pipeline() : nullptr;
    return d->engine->levelTimeline.snapshot(pipelineRunningTime(session ? session->playbin() : nullptr),
                                             pipelineRunningTime(program));
}

} // namespace tarnix
