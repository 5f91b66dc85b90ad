#include "video/gif_timing.h"

#include <numeric>

namespace tarnix {
namespace {

constexpr unsigned char kExtensionIntroducer = 0x21;
constexpr unsigned char kGraphicControlLabel = 0xF9;
constexpr unsigned char kImageSeparator = 0x2C;
constexpr unsigned char kTrailer = 0x3B;

int colourTableBytes(unsigned char packed)
{
    return (packed & 0x80) ? 3 * (1 << ((packed & 0x07) + 1)) : 0;
}

class GifReader
{
public:
    explicit GifReader(QByteArrayView data) : data(data) {}

    bool has(qsizetype count) const { return position + count <= data.size(); }
    unsigned char byteAt(qsizetype offset) const { return static_cast<unsigned char>(data[position + offset]); }
    int word(qsizetype offset) const { return byteAt(offset) | (byteAt(offset + 1) << 8); }
    unsigned char take() { return static_cast<unsigned char>(data[position++]); }
    void skip(qsizetype count) { position += count; }

    // Data sub-blocks: a length byte and that many bytes, until a zero.
    bool skipSubBlocks()
    {
        while (has(1)) {
            const unsigned char length = take();
            if (length == 0)
                return true;
            if (!has(length))
                return false;
            skip(length);
        }
        return false;
    }

private:
    QByteArrayView data;
    qsizetype position = 0;
};

std::optional<GifTiming> fail(QString *error, const char *text)
{
    if (error)
        *error = QString::fromUtf8(text);
    return std::nullopt;
}

} // namespace

qint64 GifTiming::totalMs() const
{
    return std::accumulate(frameDurationsMs.begin(), frameDurationsMs.end(), qint64(0));
}

int gifFrameDurationMs(int delayCentiseconds)
{
    return delayCentiseconds <= 1 ? 100 : delayCentiseconds * 10;
}

std::optional<GifTiming> readGifTiming(QByteArrayView data, QString *error)
{
    GifReader reader(data);
    const bool signature = data.size() >= 6
                           && (data.first(6) == QByteArrayView("GIF87a") || data.first(6) == QByteArrayView("GIF89a"));
    if (!signature || !reader.has(13))
        return fail(error, "The file is not a GIF image.");
    GifTiming timing;
    timing.width = reader.word(6);
    timing.height = reader.word(8);
    const int globalTable = colourTableBytes(reader.byteAt(10));
    reader.skip(13);
    if (timing.width <= 0 || timing.height <= 0 || !reader.has(globalTable))
        return fail(error, "The GIF image has no picture size.");
    reader.skip(globalTable);

    int pendingDelay = 0; // from the graphic control block before a frame
    while (reader.has(1)) {
        const unsigned char block = reader.take();
        if (block == kTrailer)
            break;
        if (block == kExtensionIntroducer) {
            if (!reader.has(1))
                break;
            const unsigned char label = reader.take();
            if (label == kGraphicControlLabel && reader.has(4) && reader.byteAt(0) == 4)
                pendingDelay = reader.word(2);
            if (!reader.skipSubBlocks())
                break;
            continue;
        }
        if (block != kImageSeparator) {
            if (timing.frameDurationsMs.empty())
                return fail(error, "The GIF image is damaged.");
            break; // what follows the last whole frame is not read
        }
        // Left, top, width, height, packed field; then the frame's own
        // colour table, the LZW code size and the image data.
        if (!reader.has(9))
            break;
        const int localTable = colourTableBytes(reader.byteAt(8));
        reader.skip(9);
        if (!reader.has(localTable + 1))
            break;
        reader.skip(localTable + 1);
        if (!reader.skipSubBlocks())
            break;
        timing.frameDurationsMs.push_back(gifFrameDurationMs(pendingDelay));
        pendingDelay = 0;
    }
    if (timing.frameDurationsMs.empty())
        return fail(error, "The GIF image has no frame.");
    return timing;
}

} // namespace tarnix
