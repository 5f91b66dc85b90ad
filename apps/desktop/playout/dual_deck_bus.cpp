#include "playout/dual_deck_player_impl.h"

#include "playout/dual_deck_texts.h"
#include "playout/media_error_classify.h"
#include "shell/log_categories.h"

namespace tarnix {

namespace {

// Bounds one poll's work per bus; what is left waits for the next tick.
constexpr int kMessagesPerBus = 64;

QString stateName(GstState state)
{
    return QString::fromUtf8(gst_element_state_get_name(state));
}

} // namespace

// Streaming threads: level readings go to the timeline and leave the bus;
// everything else is left for the main thread's pump. A message the handler
// drops is the handler's to unreference: the bus lets go of it without doing
// so, and every meter posts two hundred readings a second.
GstBusSyncReply DualDeckPlayer::Impl::syncHandler(GstBus *, GstMessage *message, gpointer data)
{
    if (GST_MESSAGE_TYPE(message) != GST_MESSAGE_ELEMENT)
        return GST_BUS_PASS;
    const GstStructure *structure = gst_message_get_structure(message);
    if (!structure || !gst_structure_has_name(structure, "level"))
        return GST_BUS_PASS;
    static_cast<DualDeckEngine *>(data)->levelTimeline.handleMessage(message);
    gst_message_unref(message);
    return GST_BUS_DROP;
}

void DualDeckPlayer::Impl::pumpBuses()
{
    ProgramAudioOutput *audio = engine->audio.get();
    if (audio && audio->pipeline()) {
        GstBus *bus = gst_element_get_bus(audio->pipeline());
        if (bus) {
            if (audio->isDeviceChangeRunning()) {
                // The worker changes states: what the bus says now is its business.
                gst_bus_set_flushing(bus, TRUE);
                gst_bus_set_flushing(bus, FALSE);
            } else {
                pumpBus(bus, kProgramAudioEventDeck);
            }
            gst_object_unref(bus);
        }
    }
    // The BGM deck reads its own bus, except while its worker owns it.
    if (engine->bgm)
        engine->bgm->poll();
    for (int index = 0; index < 2; ++index) {
        DeckSourceSession *session = deck(index);
        // While a worker prepares the deck only the worker reads its bus.
        if (session && !session->busOwnedByPreparation())
            pumpBus(session->bus(), index);
    }
    if (engine->dsk)
        engine->dsk->poll();
}

void DualDeckPlayer::Impl::pumpBus(GstBus *bus, int deckIndex)
{
    if (!bus)
        return;
    for (int count = 0; count < kMessagesPerBus; ++count) {
        GstMessage *message = gst_bus_pop(bus);
        if (!message)
            return;
        handleMessage(message, deckIndex);
        gst_message_unref(message);
    }
}

void DualDeckPlayer::Impl::handleMessage(GstMessage *message, int deckIndex)
{
    switch (GST_MESSAGE_TYPE(message)) {
    case GST_MESSAGE_STATE_CHANGED: {
        GstState oldState = GST_STATE_VOID_PENDING;
        GstState newState = GST_STATE_VOID_PENDING;
        GstState pending = GST_STATE_VOID_PENDING;
        gst_message_parse_state_changed(message, &oldState, &newState, &pending);
        const QString source = GST_MESSAGE_SRC(message)
                                   ? QString::fromUtf8(GST_MESSAGE_SRC_NAME(message))
                                   : QStringLiteral("(NULL)");
        qCDebug(lcPlayout()).noquote() << "GST_STATE" << source << stateName(oldState)
                                       << stateName(newState) << "pending=" + stateName(pending);
        return;
    }
    case GST_MESSAGE_LATENCY: {
        // The program audio output follows its own latency messages.
        if (deckIndex == kProgramAudioEventDeck)
            return;
        DeckSourceSession *session = deck(deckIndex);
        if (session && session->playbin()
            && !gst_bin_recalculate_latency(GST_BIN(session->playbin())))
            qCWarning(lcPlayout()).noquote() << dual_deck_text::kLatency;
        return;
    }
    case GST_MESSAGE_ERROR: {
        GError *error = nullptr;
        gchar *debug = nullptr;
        gst_message_parse_error(message, &error, &debug);
        const QString errorText = error && error->message ? QString::fromUtf8(error->message)
                                                          : QString();
        // A dead program output says so with every buffer it is given; it
        // is logged and told once, until it plays again.
        const bool repeated =
            deckIndex == kProgramAudioEventDeck && engine->audio->hasFailed() && !engine->audio->isRunning();
        if (repeated)
            qCDebug(lcPlayout()).noquote() << "GST_BUS" << errorText;
        else
            qCWarning(lcPlayout()).noquote()
                << "GST_BUS"
                << (errorText.isEmpty() ? QString::fromUtf8(dual_deck_text::kUnknownError) : errorText)
                << QString::fromUtf8(debug ? debug : "");
        const bool offline = error && isOfflineError(error);
        g_clear_error(&error);
        g_free(debug);

        if (deckIndex == kProgramAudioEventDeck) {
            if (repeated)
                return;
            engine->audio->markFailed();
            recordEvent(Error, errorText, kProgramAudioEventDeck);
            return;
        }
        DeckSourceSession *session = deck(deckIndex);
        if (!session)
            return;
        if (deckIndex == standbyDeck && session->status() == PreparationStatus::Preparing) {
            session->failPreparation(errorText.isEmpty()
                                         ? QString::fromUtf8(dual_deck_text::kUnknownGstError)
                                         : errorText,
                                     offline && session->kind() == DeckSessionKind::File);
            return;
        }
        if (deckIndex == currentDeck.load(std::memory_order_acquire))
            recordEvent(Error, errorText, deckIndex);
        return;
    }
    case GST_MESSAGE_EOS: {
        DeckSourceSession *session = deck(deckIndex);
        if (session && session->kind() == DeckSessionKind::File
            && deckIndex == currentDeck.load(std::memory_order_acquire) && event.kind != Error)
            recordEvent(EndOfStream, QString(), deckIndex);
        return;
    }
    default:
        return;
    }
}

} // namespace tarnix
