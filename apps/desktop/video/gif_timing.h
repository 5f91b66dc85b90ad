#pragma once

#include <QByteArrayView>
#include <QString>

#include <optional>
#include <vector>

namespace tarnix {

// When each frame of a GIF is due. Read from the file's own blocks rather
// than from a decoder, so that the timing is known before the first frame is
// drawn: the whole animation's length answers a duration query at once.
struct GifTiming {
    int width = 0; // the logical screen, which every composed frame fills
    int height = 0;
    std::vector<int> frameDurationsMs;

    int frameCount() const { return int(frameDurationsMs.size()); }
    bool animated() const { return frameDurationsMs.size() > 1; }
    qint64 totalMs() const;
};

// A frame delay of 0 or 10 ms is what careless encoders write; browsers and
// image viewers show such frames for 100 ms, and so do we.
int gifFrameDurationMs(int delayCentiseconds);

// The timing of the GIF in data. A file cut short after at least one whole
// frame keeps the frames it has (many encoders drop the trailer); a file with
// no frame, or a block that is not GIF, gives nothing and the reason.
std::optional<GifTiming> readGifTiming(QByteArrayView data, QString *error = nullptr);

} // namespace tarnix
