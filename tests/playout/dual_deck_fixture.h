#pragma once

#include "kit/frame_tap.h"
#include "playout/deck_source_session.h"
#include "playout/dual_deck_player.h"
#include "support/test_paths.h"

#include <QtTest>

#include <memory>

namespace tarnix::test {

using testkit::FrameTap;
using testkit::isBlack;
using testkit::isBlue;
using testkit::isRed;
using testkit::TapPixel;

inline QString media(const char *name)
{
    return QStringLiteral(TARNIX_TEST_MEDIA_DIR "/") + QString::fromUtf8(name);
}

inline DeckSource fileSource(const QString &path, qint64 inMs = 0, qint64 outMs = -1)
{
    DeckSource source;
    source.kind = DeckSourceKind::File;
    source.source = path;
    source.inMs = inMs;
    source.outMs = outMs;
    return source;
}

// A player at 320 x 180 with short limits, its sound into a fake device and
// its picture counted by a null output and logged by the frame tap.
class PlayerFixture
{
public:
    PlayerFixture()
    {
        options.deckTimings.width = 320;
        options.deckTimings.height = 180;
        options.deckTimings.preparationDeadline = std::chrono::milliseconds(8000);
        options.deckTimings.nullConfirmation = std::chrono::milliseconds(500);
        options.audioSinkFactory = QStringLiteral("fakesink sync=true");
        options.audioTimings.stateWait = std::chrono::milliseconds(1000);
        options.frameTap = FrameTap::callback(frames);
    }

    ~PlayerFixture()
    {
        if (!player)
            return;
        player->beginShutdown();
        (void)QTest::qWaitFor([this] { return player->isShutdownConfirmed(); }, 5000);
    }

    bool start()
    {
        player = std::make_unique<DualDeckPlayer>(options);
        if (!player->isInitialized())
            return false;
        return QTest::qWaitFor(
            [this] {
                player->poll();
                // A take needs the program sound to be up, as it does in the
                // application.
                return player->isPresenterRunning() && frames->last().sequence > 0
                       && (!player->audioOutput() || player->audioOutput()->hasUsableDevice());
            },
            8000);
    }

    // Prepares the standby and polls until it is decided.
    PreparationStatus cue(const DeckSource &source)
    {
        if (!player->prepareStandby(source))
            return player->standbyStatus();
        (void)QTest::qWaitFor(
            [this] {
                player->poll();
                return player->standbyStatus() != PreparationStatus::Preparing;
            },
            10000);
        return player->standbyStatus();
    }

    // Polls like the controller's tick until the condition holds.
    template <typename Condition>
    bool pollUntil(Condition condition, int timeoutMs = 5000)
    {
        return QTest::qWaitFor(
            [&] {
                player->poll();
                return condition();
            },
            timeoutMs);
    }

    DualDeckPlayerOptions options;
    std::shared_ptr<FrameTap> frames = std::make_shared<FrameTap>();
    std::unique_ptr<DualDeckPlayer> player;
};

} // namespace tarnix::test
