#pragma once

#include "video/deck_frame_presenter.h"

#include <QtGlobal>

#include <array>
#include <memory>

namespace tarnix {

// One-sample mailbox per deck, fed by the deck appsink's new-preroll and
// new-sample callbacks. A slow reader leaves the last frame standing; a fast
// producer overwrites frames nobody took.
//
// Threads: see DeckFramePresenter. The streaming thread holds a slot's
// mutex only for a pointer swap; the old sample is released outside it.
class DeckFrameMailboxes final : public DeckFramePresenter
{
public:
    static constexpr int kDeckCount = 2;

    DeckFrameMailboxes();
    ~DeckFrameMailboxes() override;

    DeckFrameMailboxes(const DeckFrameMailboxes &) = delete;
    DeckFrameMailboxes &operator=(const DeckFrameMailboxes &) = delete;

    bool attachDeck(int deckIndex, GstElement *pipeline, GstElement *appsink) override;
    bool detachDeck(int deckIndex) override;
    bool hasFrame(int deckIndex) const override;
    void dropRetainedFrame(int deckIndex) override;
    GstSample *latestSample(int deckIndex) const override;

    // Samples taken into the deck's mailbox since it was created.
    quint64 framesReceived(int deckIndex) const;

    struct Slot;

private:
    std::array<std::shared_ptr<Slot>, kDeckCount> m_slots;
};

} // namespace tarnix
