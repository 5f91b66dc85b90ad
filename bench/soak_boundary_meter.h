#pragma once

// Clips whose frames carry their own number, and a meter that reads the
// numbers back from the program output to tell how the picture behaved at
// each boundary between two clips (or two passes of a repeating clip).
//
// A numbered frame is black with one row of white blocks: a marker block that
// is always lit, then six blocks for the frame number, most significant bit
// first. Every clip of the show draws in its own row, so during a crossfade
// both clips' numbers can be read, each against its own marker (a fading clip
// dims its marker and its bits alike).
//
// At 30 fps on the 60 Hz program output a frame is shown for two renders.
// At a boundary:
//   held     renders beyond those two that the last frame of the clip going
//            out, or the first frame of the clip coming in, stayed on screen;
//   skipped  frames never shown: the clip going out ends short of its last
//            frame, the clip coming in starts past its first, or a number is
//            missing among the first or last three frames.
// Boundaries into or out of black, and any while a fade to black runs (the
// caller says so), are counted apart and not judged.

#include <QtGlobal>

#include <algorithm>
#include <array>
#include <cstring>
#include <vector>

namespace tarnix::soak {

constexpr int kCodeWidth = 1280;
constexpr int kCodeHeight = 720;
constexpr int kRows = 4;
constexpr int kBits = 6;
constexpr int kMaxFrames = 1 << kBits;
constexpr int kRendersPerFrame = 2;

struct Block {
    int x = 0;
    int y = 0;
    int size = 0;
};

// Column 0 is the marker; columns 1..kBits the number's bits.
inline Block codeBlock(int row, int column)
{
    return Block{60 + column * 140, 60 + row * 150, 100};
}

// Paints frame `number` of the clip drawing in `row` into a GRAY8 picture of
// kCodeWidth x kCodeHeight.
inline void paintNumberedFrame(quint8 *gray, int row, int number)
{
    std::memset(gray, 0, std::size_t(kCodeWidth) * kCodeHeight);
    for (int column = 0; column <= kBits; ++column) {
        const bool lit = column == 0 || (number >> (kBits - column)) & 1;
        if (!lit)
            continue;
        const Block block = codeBlock(row, column);
        for (int y = block.y; y < block.y + block.size; ++y)
            std::memset(gray + std::size_t(y) * kCodeWidth + block.x, 255, std::size_t(block.size));
    }
}

// Reads the number of the clip in `row` from a 4-byte-per-pixel program frame
// of any size with the code picture's aspect; -1 when the row is dark.
inline int readFrameNumber(const quint8 *pixels, int width, int height, int stride, int row)
{
    const auto level = [&](int column) {
        const Block block = codeBlock(row, column);
        const int x = (block.x + block.size / 2) * width / kCodeWidth;
        const int y = (block.y + block.size / 2) * height / kCodeHeight;
        return int(pixels[std::size_t(y) * std::size_t(stride) + std::size_t(x) * 4 + 1]);
    };
    const int marker = level(0);
    // Far enough above the encoder's noise in black, low enough that a clip
    // a few percent into a crossfade is read.
    if (marker < 6)
        return -1;
    int number = 0;
    for (int column = 1; column <= kBits; ++column)
        number = (number << 1) | (2 * level(column) > marker ? 1 : 0);
    return number;
}

// The held and skipped frames of one side of one boundary.
struct BoundarySide {
    int held = 0;
    int skipped = 0;
};

struct BoundaryFigures {
    // Indexed by whether the boundary was a crossfade (both clips on screen).
    std::array<std::vector<BoundarySide>, 2> entering;
    std::array<std::vector<BoundarySide>, 2> leaving;
    int fromOrIntoBlack = 0;
    int skippedWithinClips = 0;
    int heldWithinClips = 0;

    void clear() { *this = BoundaryFigures(); }
};

// Fed one render at a time, in order, with the number each row shows (-1 for
// none). Not thread-safe: the owner serialises add().
class BoundaryMeter
{
public:
    // framesPerClip[row]: how many frames the clip in that row has.
    explicit BoundaryMeter(std::array<int, kRows> framesPerClip) : m_frames(framesPerClip) {}

    // judged: false while a fade to black runs, when the rows' levels say
    // nothing about the boundaries.
    void add(quint64 sequence, const std::array<int, kRows> &shown, bool judged = true)
    {
        m_judged = judged;
        bool anyShown = false;
        for (int row = 0; row < kRows; ++row)
            anyShown = anyShown || shown[std::size_t(row)] >= 0;
        settlePendingEnds(sequence, anyShown);
        std::array<bool, kRows> wasVisible{};
        for (int row = 0; row < kRows; ++row)
            wasVisible[std::size_t(row)] = m_rows[std::size_t(row)].visible;
        for (int row = 0; row < kRows; ++row)
            addRow(row, sequence, shown, wasVisible);
        if (anyShown)
            m_lastShownSequence = sequence;
    }

    BoundaryFigures &figures() { return m_figures; }

private:
    struct Row {
        bool visible = false;
        int frame = -1;
        quint64 frameSince = 0;
        // The pass's first frame is judged once its run ends.
        bool startPending = false;
        bool startValid = false;
        bool startCrossfade = false;
        int startSkipped = 0;
        bool firstChange = false;
        // Frames missed among the last three, for the end of the pass.
        int missedNearEnd = 0;
    };

    struct PendingEnd {
        quint64 sequence = 0;
        bool crossfade = false;
        BoundarySide side;
    };

    static constexpr quint64 kNeighbourRenders = 4;

    static bool otherRowShown(int row, const std::array<int, kRows> &shown)
    {
        for (int other = 0; other < kRows; ++other) {
            if (other != row && shown[std::size_t(other)] >= 0)
                return true;
        }
        return false;
    }

    // Another clip on screen both before and in this render: the two were
    // mixed. One that only appears as this one goes was cut to.
    static bool mixedWithOther(int row, const std::array<int, kRows> &shown, const std::array<bool, kRows> &wasVisible)
    {
        for (int other = 0; other < kRows; ++other) {
            if (other != row && shown[std::size_t(other)] >= 0 && wasVisible[std::size_t(other)])
                return true;
        }
        return false;
    }

    void addRow(int row, quint64 sequence, const std::array<int, kRows> &shown, const std::array<bool, kRows> &wasVisible)
    {
        Row &r = m_rows[std::size_t(row)];
        const int number = shown[std::size_t(row)];
        const int last = m_frames[std::size_t(row)] - 1;
        if (number < 0) {
            if (r.visible) {
                endPass(row, sequence, otherRowShown(row, shown), mixedWithOther(row, shown, wasVisible));
                r = Row();
            }
            return;
        }
        if (!r.visible) {
            const bool fromPicture = m_lastShownSequence > 0 && m_lastShownSequence + kNeighbourRenders >= sequence;
            startPass(r, sequence, number, fromPicture, mixedWithOther(row, shown, wasVisible));
            return;
        }
        if (number == r.frame)
            return;
        if (number < r.frame) {
            // The clip began again: a repeat of the same item.
            endPass(row, sequence, true, false);
            r = Row();
            startPass(r, sequence, number, true, false);
            return;
        }
        const quint64 run = sequence - r.frameSince;
        const int missed = number - r.frame - 1;
        if (r.startPending && r.firstChange) {
            finishStart(r, run, missed);
        } else if (missed > 0) {
            if (number > last - 3)
                r.missedNearEnd += missed;
            else
                m_figures.skippedWithinClips += missed;
        }
        if (!r.firstChange && run > kRendersPerFrame + 1)
            m_figures.heldWithinClips += int(run) - kRendersPerFrame;
        r.firstChange = false;
        r.frame = number;
        r.frameSince = sequence;
    }

    void startPass(Row &r, quint64 sequence, int number, bool valid, bool crossfade)
    {
        r.visible = true;
        r.frame = number;
        r.frameSince = sequence;
        r.startPending = true;
        r.startValid = valid;
        r.startCrossfade = crossfade;
        r.startSkipped = number;  // the in point is the first frame
        r.firstChange = true;
        r.missedNearEnd = 0;
    }

    void finishStart(Row &r, quint64 run, int missed)
    {
        r.startPending = false;
        if (!r.startValid || !m_judged) {
            ++m_figures.fromOrIntoBlack;
            return;
        }
        BoundarySide side;
        side.skipped = r.startSkipped + std::max(0, missed);
        side.held = std::max(0, int(run) - kRendersPerFrame);
        m_figures.entering[r.startCrossfade ? 1 : 0].push_back(side);
    }

    void endPass(int row, quint64 sequence, bool neighbourShown, bool crossfade)
    {
        Row &r = m_rows[std::size_t(row)];
        const quint64 run = sequence - r.frameSince;
        if (r.startPending)
            finishStart(r, run, 0);
        PendingEnd end;
        end.sequence = sequence;
        end.crossfade = crossfade;
        end.side.skipped = std::max(0, m_frames[std::size_t(row)] - 1 - r.frame) + r.missedNearEnd;
        end.side.held = std::max(0, int(run) - kRendersPerFrame);
        if (neighbourShown)
            record(end);
        else
            m_pendingEnds.push_back(end);
    }

    void settlePendingEnds(quint64 sequence, bool anyShown)
    {
        auto it = m_pendingEnds.begin();
        while (it != m_pendingEnds.end()) {
            if (anyShown) {
                record(*it);
            } else if (it->sequence + kNeighbourRenders < sequence) {
                ++m_figures.fromOrIntoBlack;
            } else {
                ++it;
                continue;
            }
            it = m_pendingEnds.erase(it);
        }
    }

    void record(const PendingEnd &end)
    {
        if (m_judged)
            m_figures.leaving[end.crossfade ? 1 : 0].push_back(end.side);
        else
            ++m_figures.fromOrIntoBlack;
    }

    std::array<int, kRows> m_frames;
    std::array<Row, kRows> m_rows{};
    std::vector<PendingEnd> m_pendingEnds;
    quint64 m_lastShownSequence = 0;
    bool m_judged = true;
    BoundaryFigures m_figures;
};

} // namespace tarnix::soak
