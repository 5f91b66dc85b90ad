// Where the PFL helper puts each block in its stream, on a simulated sink
// and clock: a block is heard its playout latency after its presentation
// time, gaps become silence, late starts are cut, and the noise of the
// server's latency readings never splits consecutive blocks.

#include "ring_player.h"

#include <QtTest>

#include <cmath>
#include <memory>
#include <random>
#include <vector>

using namespace pfl_helper;
namespace pfl = tarnix::pfl;

namespace {

constexpr std::int64_t kRate = pfl::kSampleRate;
constexpr std::uint64_t kMs = 1'000'000;

std::int64_t framesIn(std::int64_t ns)
{
    return ns * kRate / 1'000'000'000;
}

// A sink that has read (now - start) worth of frames and sounds them
// sinkLatency later, so that stream position p is heard at
// start + sinkLatency + p / 48 kHz. It keeps every frame written, in place.
struct SimulatedSink final : SoundStream {
    std::uint64_t now = 1'000 * kMs;
    std::uint64_t start = 1'000 * kMs;
    std::int64_t sinkLatencyNs = 10 * kMs;
    std::int64_t capacityFrames = framesIn(80 * kMs);
    bool timingKnown = true;
    std::function<std::int64_t()> readingNoiseNs = [] { return std::int64_t(0); };
    std::vector<float> left;  // one value per frame: the left channel

    std::int64_t readFrames() const { return framesIn(std::int64_t(now - start)); }
    std::int64_t writtenFrames() const { return std::int64_t(left.size()); }
    std::uint64_t heardAt(std::int64_t position) const
    {
        return start + sinkLatencyNs + std::uint64_t(position * 1'000'000'000 / kRate);
    }

    bool streamFailed() override { return false; }
    std::size_t writableBytes() override
    {
        const std::int64_t queued = std::max<std::int64_t>(0, writtenFrames() - readFrames());
        return std::size_t(std::max<std::int64_t>(0, capacityFrames - queued)) * 2 * sizeof(float);
    }
    bool write(const float *samples, std::size_t bytes) override
    {
        for (std::size_t frame = 0; frame < bytes / (2 * sizeof(float)); ++frame)
            left.push_back(samples[2 * frame]);
        return true;
    }
    bool writeSilence(std::size_t bytes) override
    {
        left.insert(left.end(), bytes / (2 * sizeof(float)), 0.0f);
        return true;
    }
    bool latencyNs(std::int64_t *latency) override
    {
        if (!timingKnown)
            return false;
        *latency = (writtenFrames() - readFrames()) * 1'000'000'000 / kRate + sinkLatencyNs + readingNoiseNs();
        return true;
    }
};

// The shared ring as the application fills it, and the player reading it
// on the simulated clock.
struct Rig {
    std::unique_ptr<pfl::Shared> shared = std::make_unique<pfl::Shared>();
    SimulatedSink sink;
    RingPlayer player{shared.get(), &sink, 1, [this] { return sink.now; }};

    Rig()
    {
        pfl::store(shared->header.version, pfl::kVersion);
        pfl::store(shared->header.generation, 1u);
        pfl::store(shared->header.audible, 1u);
        pfl::store(shared->header.state, std::uint32_t(pfl::StateOpening));
    }

    // A block whose every frame holds the value.
    void push(std::uint64_t presentationNs, float value, std::uint32_t frames = pfl::kFramesPerBlock,
              std::uint32_t generation = 1)
    {
        const std::uint32_t index = pfl::load(shared->header.writeIndex);
        pfl::Block &block = shared->ring[index & (pfl::kSlots - 1)];
        block.generation = generation;
        block.frameCount = frames;
        block.presentationNs = presentationNs;
        for (std::uint32_t i = 0; i < frames * pfl::kChannels; ++i)
            block.pcm[i] = value;
        pfl::store(shared->header.writeIndex, index + 1);
    }

    // Passes every 4 ms until the clock reaches the time.
    void runUntil(std::uint64_t timeNs)
    {
        while (sink.now < timeNs) {
            QVERIFY(player.playQueued());
            sink.now += 4 * kMs;
        }
    }

    // Where the value's frames lie: first position and count (-1, 0: absent).
    std::pair<std::int64_t, std::int64_t> find(float value) const
    {
        std::int64_t first = -1;
        std::int64_t count = 0;
        for (std::int64_t i = 0; i < sink.writtenFrames(); ++i) {
            if (sink.left[std::size_t(i)] != value)
                continue;
            if (first < 0)
                first = i;
            ++count;
        }
        return {first, count};
    }
    // Where a block presented at this time belongs.
    std::int64_t positionFor(std::uint64_t presentationNs) const
    {
        return framesIn(std::int64_t(presentationNs + pfl::kPlayoutLatencyNs - sink.start)
                        - sink.sinkLatencyNs);
    }
};

} // namespace

class TestPflRingPlayer : public QObject
{
    Q_OBJECT

private slots:
    // Blocks in a row are heard one after another at their time; a pause
    // between them is silence of its length; a block that comes too late
    // for its start loses only what has passed, and one wholly late is
    // not heard at all.
    void blocksAreHeardAtTheirTime()
    {
        Rig rig;
        const std::uint64_t first = rig.sink.now + 100 * kMs;
        for (int block = 0; block < 5; ++block)
            rig.push(first + std::uint64_t(block) * 10 * kMs, float(block + 1));
        // 30 ms of nothing, then block 6.
        rig.push(first + 80 * kMs, 6.0f);
        rig.runUntil(first + 120 * kMs);
        for (int block = 0; block < 5; ++block)
            QCOMPARE(rig.find(float(block + 1)),
                     std::make_pair(rig.positionFor(first + std::uint64_t(block) * 10 * kMs), std::int64_t(480)));
        const auto [sixth, sixthFrames] = rig.find(6.0f);
        QCOMPARE(sixth, rig.positionFor(first + 80 * kMs));
        QCOMPARE(sixthFrames, std::int64_t(480));
        for (std::int64_t i = rig.positionFor(first + 50 * kMs); i < sixth; ++i)
            QCOMPARE(rig.sink.left[std::size_t(i)], 0.0f);

        // Presented 5 ms ago, now that the stream runs 40 ms ahead: only
        // the frames that may still sound are written, right at its end.
        const std::int64_t end = rig.sink.writtenFrames();
        const std::uint64_t lateBy = rig.sink.heardAt(end) - pfl::kPlayoutLatencyNs;
        rig.push(lateBy - 5 * kMs, 7.0f);
        rig.push(rig.sink.now - 200 * kMs, 8.0f);
        rig.runUntil(rig.sink.now + 20 * kMs);
        QCOMPARE(rig.find(7.0f), std::make_pair(end, std::int64_t(480 - 240)));
        QCOMPARE(rig.find(8.0f).second, std::int64_t(0));
    }

    // Readings that wander by a few milliseconds move no block off its
    // neighbour: a stream of blocks stays whole, with no silence slipped
    // in and no frame cut, near its time.
    void noisyReadingsKeepBlocksTogether()
    {
        Rig rig;
        std::mt19937 random(7);
        std::uniform_int_distribution<std::int64_t> noise(-1'500'000, 1'500'000);
        rig.sink.readingNoiseNs = [&] { return noise(random); };
        const std::uint64_t first = rig.sink.now + 100 * kMs;
        // Each block reaches the ring 20 ms before it is due, as EDIT's do.
        for (int block = 0; block < 300; ++block) {
            const std::uint64_t presentation = first + std::uint64_t(block) * 10 * kMs;
            rig.runUntil(presentation - 20 * kMs);
            rig.push(presentation, float(block + 1));
        }
        rig.runUntil(first + 3100 * kMs);
        const std::int64_t start = rig.find(1.0f).first;
        QVERIFY2(std::abs(start - rig.positionFor(first)) <= framesIn(2 * kMs), qPrintable(QString::number(start)));
        for (int block = 0; block < 300; ++block)
            QCOMPARE(rig.find(float(block + 1)), std::make_pair(start + block * 480, std::int64_t(480)));
    }

    // Until the stream tells its timing it is fed silence, the ring is
    // emptied of what is already past and the helper is not yet ready; blocks of a void generation, or
    // sent while PFL is silent, are never heard; with nothing to play the
    // stream is kept about 40 ms ahead.
    void silenceWhereNothingMayBeHeard()
    {
        Rig rig;
        rig.sink.timingKnown = false;
        rig.push(rig.sink.now - 100 * kMs, 1.0f);
        rig.push(rig.sink.now + 500 * kMs, 2.0f);
        rig.runUntil(rig.sink.now + 20 * kMs);
        QCOMPARE(pfl::load(rig.shared->header.readIndex), 1u);
        QVERIFY(rig.sink.writtenFrames() > rig.sink.readFrames());
        QCOMPARE(rig.find(1.0f).second, std::int64_t(0));
        QCOMPARE(pfl::load(rig.shared->header.state), std::uint32_t(pfl::StateOpening));

        rig.sink.timingKnown = true;
        rig.push(rig.sink.now + 500 * kMs, 3.0f, pfl::kFramesPerBlock, 0);
        pfl::store(rig.shared->header.audible, 0u);
        rig.runUntil(rig.sink.now + 600 * kMs);
        QCOMPARE(pfl::load(rig.shared->header.state), std::uint32_t(pfl::StateReady));
        QCOMPARE(pfl::load(rig.shared->header.readIndex), 3u);
        QCOMPARE(rig.find(2.0f).second + rig.find(3.0f).second, std::int64_t(0));
        const std::int64_t ahead = rig.sink.writtenFrames() - rig.positionFor(rig.sink.now - pfl::kPlayoutLatencyNs);
        QVERIFY2(std::abs(ahead - framesIn(40 * kMs)) <= framesIn(5 * kMs), qPrintable(QString::number(ahead)));
    }
};

QTEST_GUILESS_MAIN(TestPflRingPlayer)
#include "tst_pfl_ring_player.moc"
