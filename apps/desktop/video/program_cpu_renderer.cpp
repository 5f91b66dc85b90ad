#include "video/program_renderer.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace tarnix {
namespace {

// x / 255, rounded, for x in 0..255*255.
inline quint32 div255(quint32 x)
{
    x += 128;
    return (x + (x >> 8)) >> 8;
}

// Opacity as an 8-bit factor, the precision of the layer it scales.
inline quint32 unitToByte(float value)
{
    return quint32(std::lround(std::clamp(value, 0.0f, 1.0f) * 255.0f));
}

// Deck at full opacity: premultiplied by its own alpha, alpha 1, R and B
// swapped. Also the whole of a frame that holds one opaque deck.
void replaceDeckRowScalar(quint8 *__restrict out, const quint8 *__restrict src, int width)
{
    for (int i = 0; i < width; ++i) {
        const quint32 a = src[4 * i + 3];
        out[4 * i + 0] = quint8(div255(src[4 * i + 2] * a));
        out[4 * i + 1] = quint8(div255(src[4 * i + 1] * a));
        out[4 * i + 2] = quint8(div255(src[4 * i + 0] * a));
        out[4 * i + 3] = 255;
    }
}

// Deck over the layer at opacity o (1..254).
void blendDeckRowScalar(quint8 *__restrict layer, const quint8 *__restrict src, int width, quint32 o)
{
    const quint32 inv = 255 - o;
    for (int i = 0; i < width; ++i) {
        const quint32 a = src[4 * i + 3];
        quint8 *d = layer + 4 * i;
        d[0] = quint8(div255(div255(src[4 * i + 2] * a) * o + d[0] * inv));
        d[1] = quint8(div255(div255(src[4 * i + 1] * a) * o + d[1] * inv));
        d[2] = quint8(div255(div255(src[4 * i + 0] * a) * o + d[2] * inv));
        d[3] = quint8(o + div255(d[3] * inv));
    }
}

// Group fade: every channel of the premultiplied layer times f.
void scaleRowScalar(quint8 *__restrict layer, int bytes, quint32 f)
{
    for (int i = 0; i < bytes; ++i)
        layer[i] = quint8(div255(layer[i] * f));
}

// Straight-alpha RGBA over the layer with its alpha times o.
void blendOverlaySpanScalar(quint8 *__restrict layer, const quint8 *__restrict src, int count, quint32 o)
{
    for (int i = 0; i < count; ++i) {
        const quint32 a = div255(src[4 * i + 3] * o);
        const quint32 inv = 255 - a;
        quint8 *d = layer + 4 * i;
        d[0] = quint8(div255(src[4 * i + 2] * a + d[0] * inv));
        d[1] = quint8(div255(src[4 * i + 1] * a + d[1] * inv));
        d[2] = quint8(div255(src[4 * i + 0] * a + d[2] * inv));
        d[3] = quint8(a + div255(d[3] * inv));
    }
}

// The final composite over the background, alpha 1.
void compositeRowScalar(quint8 *__restrict out, const quint8 *__restrict layer, int width,
                  const quint32 background[3])
{
    for (int i = 0; i < width; ++i) {
        const quint32 inv = 255 - layer[4 * i + 3];
        out[4 * i + 0] = quint8(std::min<quint32>(255, layer[4 * i + 0] + div255(background[0] * inv)));
        out[4 * i + 1] = quint8(std::min<quint32>(255, layer[4 * i + 1] + div255(background[1] * inv)));
        out[4 * i + 2] = quint8(std::min<quint32>(255, layer[4 * i + 2] + div255(background[2] * inv)));
        out[4 * i + 3] = 255;
    }
}

// A deck of the row as the renderer draws it: source row, opacity byte and
// whether it replaces what is below (opacity 1.0 or more).
struct DeckRow {
    const quint8 *src = nullptr;
    quint32 opacity = 0;
    bool replace = false;
};

void decksRowScalar(quint8 *layer, const DeckRow *decks, int count, quint32 group, int width)
{
    bool drawn = false;
    for (int k = 0; k < count; ++k) {
        if (decks[k].replace) {
            replaceDeckRowScalar(layer, decks[k].src, width);
        } else {
            if (!drawn)
                std::memset(layer, 0, std::size_t(width) * 4);
            blendDeckRowScalar(layer, decks[k].src, width, decks[k].opacity);
        }
        drawn = true;
    }
    if (!drawn)
        std::memset(layer, 0, std::size_t(width) * 4);
    else if (group < 255)
        scaleRowScalar(layer, width * 4, group);
}

void finishRowScalar(quint8 *out, quint8 *layer, int width, const quint32 background[3], quint32 fade,
                     bool = false)
{
    if (fade < 255)
        scaleRowScalar(layer, width * 4, fade);
    compositeRowScalar(out, layer, width, background);
}

// The row kernels of one frame, chosen once for the processor.
struct RowKernels {
    void (*decksRow)(quint8 *layer, const DeckRow *decks, int count, quint32 group, int width);
    void (*blendOverlaySpan)(quint8 *layer, const quint8 *src, int count, quint32 opacity);
    void (*finishRow)(quint8 *out, quint8 *layer, int width, const quint32 background[3], quint32 fade,
                      bool keepLayer);
};

#if defined(__x86_64__)
// The same maths in 16-bit lanes, two pixels per 128 bits: every product of
// two bytes fits, and so does each sum (at most 255 * 255). The kernels are
// written once against these few operations and built for SSE2 and AVX2.
namespace sse2 {
using V = __m128i;
constexpr int kPixels = 4;
inline V load(const quint8 *p) { return _mm_loadu_si128(reinterpret_cast<const __m128i *>(p)); }
inline void store(quint8 *p, V v) { _mm_storeu_si128(reinterpret_cast<__m128i *>(p), v); }
inline V zero() { return _mm_setzero_si128(); }
inline V set16(quint32 x) { return _mm_set1_epi16(short(x)); }
inline V set32(quint32 x) { return _mm_set1_epi32(int(x)); }
inline V add16(V a, V b) { return _mm_add_epi16(a, b); }
inline V sub16(V a, V b) { return _mm_sub_epi16(a, b); }
inline V mul16(V a, V b) { return _mm_mullo_epi16(a, b); }
inline V shr8(V a) { return _mm_srli_epi16(a, 8); }
inline V lo8(V a) { return _mm_unpacklo_epi8(a, zero()); }
inline V hi8(V a) { return _mm_unpackhi_epi8(a, zero()); }
inline V pack(V a, V b) { return _mm_packus_epi16(a, b); }
inline V andV(V a, V b) { return _mm_and_si128(a, b); }
inline V andNot(V mask, V b) { return _mm_andnot_si128(mask, b); }
inline V orV(V a, V b) { return _mm_or_si128(a, b); }
inline bool allEqual8(V a, V b) { return _mm_movemask_epi8(_mm_cmpeq_epi8(a, b)) == 0xffff; }
inline V swapRedBlue(V v)
{
    return _mm_shufflehi_epi16(_mm_shufflelo_epi16(v, _MM_SHUFFLE(3, 0, 1, 2)), _MM_SHUFFLE(3, 0, 1, 2));
}
inline V broadcastAlpha(V v)
{
    return _mm_shufflehi_epi16(_mm_shufflelo_epi16(v, _MM_SHUFFLE(3, 3, 3, 3)), _MM_SHUFFLE(3, 3, 3, 3));
}
inline V alphaLanes16() { return _mm_set_epi16(-1, 0, 0, 0, -1, 0, 0, 0); }
inline V colour16(const quint32 c[3])
{
    return _mm_set_epi16(0, short(c[2]), short(c[1]), short(c[0]), 0, short(c[2]), short(c[1]), short(c[0]));
}
#include "video/program_cpu_row_kernels.inc"
} // namespace sse2

#pragma GCC push_options
#pragma GCC target("avx2")
namespace avx2 {
using V = __m256i;
constexpr int kPixels = 8;
inline V load(const quint8 *p) { return _mm256_loadu_si256(reinterpret_cast<const __m256i *>(p)); }
inline void store(quint8 *p, V v) { _mm256_storeu_si256(reinterpret_cast<__m256i *>(p), v); }
inline V zero() { return _mm256_setzero_si256(); }
inline V set16(quint32 x) { return _mm256_set1_epi16(short(x)); }
inline V set32(quint32 x) { return _mm256_set1_epi32(int(x)); }
inline V add16(V a, V b) { return _mm256_add_epi16(a, b); }
inline V sub16(V a, V b) { return _mm256_sub_epi16(a, b); }
inline V mul16(V a, V b) { return _mm256_mullo_epi16(a, b); }
inline V shr8(V a) { return _mm256_srli_epi16(a, 8); }
// Unpack and pack work within each 128-bit half, so a pair restores the
// original pixel order.
inline V lo8(V a) { return _mm256_unpacklo_epi8(a, zero()); }
inline V hi8(V a) { return _mm256_unpackhi_epi8(a, zero()); }
inline V pack(V a, V b) { return _mm256_packus_epi16(a, b); }
inline V andV(V a, V b) { return _mm256_and_si256(a, b); }
inline V andNot(V mask, V b) { return _mm256_andnot_si256(mask, b); }
inline V orV(V a, V b) { return _mm256_or_si256(a, b); }
inline bool allEqual8(V a, V b) { return _mm256_movemask_epi8(_mm256_cmpeq_epi8(a, b)) == -1; }
inline V swapRedBlue(V v)
{
    return _mm256_shufflehi_epi16(_mm256_shufflelo_epi16(v, _MM_SHUFFLE(3, 0, 1, 2)), _MM_SHUFFLE(3, 0, 1, 2));
}
inline V broadcastAlpha(V v)
{
    return _mm256_shufflehi_epi16(_mm256_shufflelo_epi16(v, _MM_SHUFFLE(3, 3, 3, 3)), _MM_SHUFFLE(3, 3, 3, 3));
}
inline V alphaLanes16() { return _mm256_set_epi16(-1, 0, 0, 0, -1, 0, 0, 0, -1, 0, 0, 0, -1, 0, 0, 0); }
inline V colour16(const quint32 c[3])
{
    const short b = short(c[0]), g = short(c[1]), r = short(c[2]);
    return _mm256_set_epi16(0, r, g, b, 0, r, g, b, 0, r, g, b, 0, r, g, b);
}
#include "video/program_cpu_row_kernels.inc"
} // namespace avx2
#pragma GCC pop_options

RowKernels chooseKernels(CpuRowKernels wanted)
{
    if (wanted == CpuRowKernels::Portable)
        return {decksRowScalar, blendOverlaySpanScalar, finishRowScalar};
    if (wanted == CpuRowKernels::Fastest && __builtin_cpu_supports("avx2"))
        return {avx2::decksRow, avx2::blendOverlaySpan, avx2::finishRow};
    return {sse2::decksRow, sse2::blendOverlaySpan, sse2::finishRow};
}
#else
RowKernels chooseKernels(CpuRowKernels)
{
    return {decksRowScalar, blendOverlaySpanScalar, finishRowScalar};
}
#endif

void fillRow(quint8 *out, int width, const quint32 background[3])
{
    for (int i = 0; i < width; ++i) {
        out[4 * i + 0] = quint8(background[0]);
        out[4 * i + 1] = quint8(background[1]);
        out[4 * i + 2] = quint8(background[2]);
        out[4 * i + 3] = 255;
    }
}

// Where a DSK image lands in the frame and how each covered pixel samples
// it (bilinear, texel centres, clamped at the edges).
struct OverlayFit {
    int sourceWidth = 0;
    int sourceHeight = 0;
    int parNumerator = 0;
    int parDenominator = 0;

    int x0 = 0, x1 = 0, y0 = 0, y1 = 0; // covered pixels, half-open
    bool direct = false;               // 1:1 at an integer offset
    int sourceX = 0, sourceY = 0;      // source pixel of (x0, y0) when direct
    std::vector<int> columnIndex;      // per covered column: left texel
    std::vector<quint32> columnWeight; // 0..256 towards the right texel
    std::vector<int> rowIndex;
    std::vector<quint32> rowWeight;

    bool matches(const ProgramLayerImage &image) const
    {
        return sourceWidth == image.width && sourceHeight == image.height
               && parNumerator == image.parNumerator && parDenominator == image.parDenominator;
    }
};

void sampleAxis(double offset, double drawn, int sourceSize, int first, int last,
                std::vector<int> &index, std::vector<quint32> &weight)
{
    index.resize(std::max(0, last - first));
    weight.resize(index.size());
    for (int p = first; p < last; ++p) {
        double u = (p + 0.5 - offset) * sourceSize / drawn - 0.5;
        u = std::clamp(u, 0.0, double(sourceSize - 1));
        const int left = std::min(int(u), sourceSize - 1);
        index[p - first] = left;
        weight[p - first] = left + 1 < sourceSize ? quint32(std::lround((u - left) * 256.0)) : 0;
    }
}

void computeFit(OverlayFit &fit, const ProgramLayerImage &image, int frameWidth, int frameHeight)
{
    fit.sourceWidth = image.width;
    fit.sourceHeight = image.height;
    fit.parNumerator = image.parNumerator;
    fit.parDenominator = image.parDenominator;

    const double displayWidth =
        double(image.width) * std::max(1, image.parNumerator) / std::max(1, image.parDenominator);
    const double scale = std::min(frameWidth / displayWidth, double(frameHeight) / image.height);
    const double drawnWidth = displayWidth * scale;
    const double drawnHeight = image.height * scale;
    const double offsetX = (frameWidth - drawnWidth) * 0.5;
    const double offsetY = (frameHeight - drawnHeight) * 0.5;

    // Pixels whose centres fall inside the drawn rectangle.
    fit.x0 = std::clamp(int(std::ceil(offsetX - 0.5)), 0, frameWidth);
    fit.x1 = std::clamp(int(std::ceil(offsetX + drawnWidth - 0.5)), fit.x0, frameWidth);
    fit.y0 = std::clamp(int(std::ceil(offsetY - 0.5)), 0, frameHeight);
    fit.y1 = std::clamp(int(std::ceil(offsetY + drawnHeight - 0.5)), fit.y0, frameHeight);

    fit.direct = std::abs(drawnWidth - image.width) < 1e-9 && std::abs(drawnHeight - image.height) < 1e-9
                 && std::abs(offsetX - std::round(offsetX)) < 1e-9
                 && std::abs(offsetY - std::round(offsetY)) < 1e-9;
    fit.sourceX = fit.x0 - int(std::round(offsetX));
    fit.sourceY = fit.y0 - int(std::round(offsetY));
    if (fit.direct) {
        fit.columnIndex.clear();
        fit.rowIndex.clear();
        return;
    }
    sampleAxis(offsetX, drawnWidth, image.width, fit.x0, fit.x1, fit.columnIndex, fit.columnWeight);
    sampleAxis(offsetY, drawnHeight, image.height, fit.y0, fit.y1, fit.rowIndex, fit.rowWeight);
}

// One row of the fitted image, sampled into straight RGBA.
void sampleOverlayRow(const OverlayFit &fit, const ProgramLayerImage &image, int y,
                      quint8 *__restrict out)
{
    const int ry = y - fit.y0;
    const int top = fit.rowIndex[ry];
    const int bottom = std::min(top + 1, image.height - 1);
    const quint32 wy = fit.rowWeight[ry];
    const quint8 *rowTop = image.pixels + qsizetype(top) * image.stride;
    const quint8 *rowBottom = image.pixels + qsizetype(bottom) * image.stride;
    const int count = fit.x1 - fit.x0;
    for (int i = 0; i < count; ++i) {
        const int left = fit.columnIndex[i];
        const int right = std::min(left + 1, image.width - 1);
        const quint32 wx = fit.columnWeight[i];
        for (int c = 0; c < 4; ++c) {
            const quint32 upper = rowTop[4 * left + c] * (256 - wx) + rowTop[4 * right + c] * wx;
            const quint32 lower = rowBottom[4 * left + c] * (256 - wx) + rowBottom[4 * right + c] * wx;
            out[4 * i + c] = quint8((upper * (256 - wy) + lower * wy + 32768) >> 16);
        }
    }
}

// Red and blue swapped, so a BGRA overlay row reads as RGBA.
void swapRedBlue(quint8 *__restrict out, const quint8 *__restrict src, int count)
{
    for (int i = 0; i < count; ++i) {
        out[4 * i + 0] = src[4 * i + 2];
        out[4 * i + 1] = src[4 * i + 1];
        out[4 * i + 2] = src[4 * i + 0];
        out[4 * i + 3] = src[4 * i + 3];
    }
}

bool imageUsable(const ProgramLayerImage &image)
{
    return image.pixels && image.width > 0 && image.height > 0 && image.stride >= image.width * 4;
}

class CpuProgramRenderer final : public ProgramRenderer
{
public:
    CpuProgramRenderer(int width, int height, CpuRowKernels kernels)
        : m_width(width)
        , m_height(height)
        , m_row(std::size_t(width) * 4)
        , m_overlayRow(std::size_t(width) * 4)
        , m_kernels(chooseKernels(kernels))
    {
    }

    int width() const override { return m_width; }
    int height() const override { return m_height; }

    void setTransparentLayerWanted(bool wanted) override
    {
        m_layerWanted = wanted;
        if (wanted)
            m_layer.resize(std::size_t(m_width) * m_height * 4);
        else
            std::vector<quint8>().swap(m_layer);
    }

    bool transparentLayerWanted() const override { return m_layerWanted; }

    const quint8 *transparentLayer() const override
    {
        return m_layerWanted ? m_layer.data() : nullptr;
    }

    ProgramRenderOutcome render(const ProgramFrameJob &job, const ProgramFrameTarget &target) override
    {
        ProgramRenderOutcome outcome;
        if (!target.pixels || target.width != m_width || target.height != m_height
            || target.stride < m_width * 4) {
            outcome.error = QStringLiteral("Program output frame does not match %1x%2")
                                .arg(m_width)
                                .arg(m_height);
            return outcome;
        }
        for (const ProgramLayerDraw &deck : job.decks) {
            if (!deck.visible())
                continue;
            const ProgramLayerImage &image = *deck.image;
            if (!imageUsable(image) || image.width != m_width || image.height != m_height) {
                outcome.error = QStringLiteral("Program deck layer is %1x%2, expected %3x%4")
                                    .arg(image.width)
                                    .arg(image.height)
                                    .arg(m_width)
                                    .arg(m_height);
                return outcome;
            }
        }

        std::array<const ProgramLayerDraw *, 2> overlays{};
        // DSK layers draw second, then first.
        for (int k = 0; k < 2; ++k) {
            const ProgramLayerDraw &dsk = job.dsks[1 - k];
            if (!dsk.visible())
                continue;
            if (!imageUsable(*dsk.image)) {
                outcome.dskFailed[1 - k] = true;
                continue;
            }
            if (!m_fits[1 - k].matches(*dsk.image))
                computeFit(m_fits[1 - k], *dsk.image, m_width, m_height);
            overlays[k] = &dsk;
        }

        const quint32 background[3] = {job.background & 0xff, (job.background >> 8) & 0xff,
                                       (job.background >> 16) & 0xff};
        const quint32 groupFactor = job.groupOpacity >= 1.0f ? 255 : unitToByte(job.groupOpacity);
        const quint32 fadeFactor = job.fadeToBlack <= 0.0f ? 255 : 255 - unitToByte(job.fadeToBlack);
        const bool anyDeck = job.decks[0].visible() || job.decks[1].visible();
        const bool anyOverlay = overlays[0] || overlays[1];

        // One opaque deck and nothing else: the frame is one converting copy.
        if (!m_layerWanted && !anyOverlay && groupFactor == 255 && fadeFactor == 255) {
            const ProgramLayerDraw *only = nullptr;
            int visible = 0;
            for (const ProgramLayerDraw &deck : job.decks) {
                if (deck.visible()) {
                    ++visible;
                    only = &deck;
                }
            }
            if (visible == 1 && only->opacity >= 1.0f) {
                DeckRow row;
                row.replace = true;
                for (int y = 0; y < m_height; ++y) {
                    row.src = only->image->pixels + qsizetype(y) * only->image->stride;
                    m_kernels.decksRow(target.pixels + qsizetype(y) * target.stride, &row, 1, 255, m_width);
                }
                outcome.ok = true;
                return outcome;
            }
        }
        if (!anyDeck && !anyOverlay) {
            for (int y = 0; y < m_height; ++y)
                fillRow(target.pixels + qsizetype(y) * target.stride, m_width, background);
            if (m_layerWanted)
                std::memset(m_layer.data(), 0, m_layer.size());
            outcome.ok = true;
            return outcome;
        }

        DeckRow deckRows[2];
        int deckCount = 0;
        for (const ProgramLayerDraw &deck : job.decks) {
            if (!deck.visible())
                continue;
            deckRows[deckCount].opacity = unitToByte(deck.opacity);
            deckRows[deckCount].replace = deck.opacity >= 1.0f;
            ++deckCount;
        }

        // Row by row, so the layer row stays in cache through every step.
        for (int y = 0; y < m_height; ++y) {
            quint8 *layer = m_layerWanted ? m_layer.data() + qsizetype(y) * m_width * 4 : m_row.data();
            int k = 0;
            for (const ProgramLayerDraw &deck : job.decks) {
                if (deck.visible())
                    deckRows[k++].src = deck.image->pixels + qsizetype(y) * deck.image->stride;
            }
            m_kernels.decksRow(layer, deckRows, deckCount, groupFactor, m_width);
            for (int k = 0; k < 2; ++k) {
                if (!overlays[k])
                    continue;
                const OverlayFit &fit = m_fits[1 - k];
                if (y < fit.y0 || y >= fit.y1 || fit.x1 <= fit.x0)
                    continue;
                const ProgramLayerImage &image = *overlays[k]->image;
                const quint8 *src = nullptr;
                if (fit.direct) {
                    src = image.pixels + qsizetype(fit.sourceY + y - fit.y0) * image.stride
                          + 4 * fit.sourceX;
                } else {
                    sampleOverlayRow(fit, image, y, m_overlayRow.data());
                    src = m_overlayRow.data();
                }
                if (image.bgra) {
                    swapRedBlue(m_overlayRow.data(), src, fit.x1 - fit.x0);
                    src = m_overlayRow.data();
                }
                m_kernels.blendOverlaySpan(layer + 4 * fit.x0, src, fit.x1 - fit.x0,
                                 unitToByte(overlays[k]->opacity));
            }
            m_kernels.finishRow(target.pixels + qsizetype(y) * target.stride, layer, m_width, background,
                      fadeFactor, m_layerWanted);
        }
        outcome.ok = true;
        return outcome;
    }

private:
    int m_width;
    int m_height;
    bool m_layerWanted = false;
    std::vector<quint8> m_layer;
    std::vector<quint8> m_row;
    std::vector<quint8> m_overlayRow;
    std::array<OverlayFit, 2> m_fits;
    const RowKernels m_kernels;
};

} // namespace

std::unique_ptr<ProgramRenderer> createCpuProgramRenderer(int width, int height, CpuRowKernels kernels)
{
    if (width <= 0 || height <= 0)
        return nullptr;
    return std::make_unique<CpuProgramRenderer>(width, height, kernels);
}

} // namespace tarnix
