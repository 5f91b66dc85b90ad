#pragma once

#include "playout/deck_source_session.h"
#include "playout/dual_deck_player.h"
#include "support/test_paths.h"

#include <QtTest>

#include <memory>
#include <mutex>
#include <vector>

namespace tarnix::test {

// The centre pixel of one composed frame.
struct TapPixel {
    quint64 sequence = 0;
    int r = 0;
    int g = 0;
    int b = 0;
    // System clock time at which the frame was composed.
    GstClockTime clockNs = GST_CLOCK_TIME_NONE;
};

// Centre pixels of every composed frame, written on the frame clock's thread.
class FrameLog
{
public:
    void add(const ProgramTapFrame &frame)
    {
        const quint8 *p = frame.pixels + std::size_t(frame.height / 2) * frame.stride
                          + 4 * std::size_t(frame.width / 2);
        static GstClock *const clock = gst_system_clock_obtain();
        const GstClockTime now = gst_clock_get_time(clock);
        std::lock_guard lock(m_mutex);
        m_pixels.push_back({frame.sequence, p[2], p[1], p[0], now});
    }
    std::vector<TapPixel> since(quint64 sequence) const
    {
        std::lock_guard lock(m_mutex);
        std::vector<TapPixel> out;
        for (const TapPixel &pixel : m_pixels)
            if (pixel.sequence > sequence)
                out.push_back(pixel);
        return out;
    }
    TapPixel last() const
    {
        std::lock_guard lock(m_mutex);
        return m_pixels.empty() ? TapPixel{} : m_pixels.back();
    }

private:
    mutable std::mutex m_mutex;
    std::vector<TapPixel> m_pixels;
};

inline bool isRed(const TapPixel &p) { return p.r > 200 && p.g < 40 && p.b < 40; }
inline bool isBlue(const TapPixel &p) { return p.b > 200 && p.r < 40 && p.g < 40; }
inline bool isBlack(const TapPixel &p) { return p.r < 16 && p.g < 16 && p.b < 16; }

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
        options.frameTap = [log = frames](const ProgramTapFrame &frame) { log->add(frame); };
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
                return player->isPresenterRunning() && frames->last().sequence > 0;
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
    std::shared_ptr<FrameLog> frames = std::make_shared<FrameLog>();
    std::unique_ptr<DualDeckPlayer> player;
};

} // namespace tarnix::test
