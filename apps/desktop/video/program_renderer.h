#pragma once

#include <QString>
#include <QtGlobal>

#include <array>
#include <memory>

namespace tarnix {

// One layer image handed to the renderer: straight-alpha rows, RGBA as the
// decks' appsinks deliver them, or BGRA as the DSK decks' do.
struct ProgramLayerImage {
    const quint8 *pixels = nullptr;
    int width = 0;
    int height = 0;
    int stride = 0; // bytes per row
    // Pixel aspect ratio; each part is taken as at least 1.
    int parNumerator = 1;
    int parDenominator = 1;
    // Blue first: read as BGRA (DSK layers only).
    bool bgra = false;
};

struct ProgramLayerDraw {
    const ProgramLayerImage *image = nullptr; // null: nothing to draw
    float opacity = 0.0f;

    bool visible() const { return image && opacity > 0.0f; }
};

// Everything one output frame is made of.
struct ProgramFrameJob {
    // Deck layers, drawn first then second, opaque, full frame.
    std::array<ProgramLayerDraw, 2> decks;
    // DSK layers, drawn second then first over the group-faded decks, each
    // fitted to the frame by its display aspect.
    std::array<ProgramLayerDraw, 2> dsks;
    float groupOpacity = 1.0f;
    float fadeToBlack = 0.0f;
    quint32 background = 0; // 0xRRGGBB
};

// The output frame: BGRA rows of the program size, alpha written as 255.
struct ProgramFrameTarget {
    quint8 *pixels = nullptr;
    int width = 0;
    int height = 0;
    int stride = 0;
};

struct ProgramRenderOutcome {
    // False when a deck layer could not be drawn: the frame is not valid.
    bool ok = false;
    // A DSK layer that could not be drawn was left out of the frame.
    std::array<bool, 2> dskFailed{false, false};
    QString error;
};

// Draws one program frame. The maths:
//   transparent layer T (premultiplied BGRA) = 0
//   each visible deck, first then second: T = deck.rgb*deck.a*o + T*(1-o),
//     alpha o + T.a*(1-o); at o >= 1 the deck replaces T (alpha 1)
//   T *= groupOpacity
//   each visible DSK, second then first, fitted: T = over(dsk, a*o)
//   T *= 1 - fadeToBlack
//   output = T.rgb + background*(1 - T.a), alpha 1
// So fade to black goes towards the background on screen and towards
// transparency in the transparent layer.
//
// Threads: one renderer is used by one thread at a time (the compositor's
// streaming thread); it holds scratch state and is not shareable.
class ProgramRenderer
{
public:
    virtual ~ProgramRenderer() = default;

    virtual int width() const = 0;
    virtual int height() const = 0;

    virtual ProgramRenderOutcome render(const ProgramFrameJob &job,
                                        const ProgramFrameTarget &target) = 0;

    // Whether render() must also fill the transparent layer; outputs that key
    // the program over something else ask for it. Off, the renderer may take
    // paths that never build it.
    virtual void setTransparentLayerWanted(bool wanted) = 0;
    virtual bool transparentLayerWanted() const = 0;
    // The premultiplied BGRA transparent layer of the last render, width*4
    // bytes a row; null when it was not wanted.
    virtual const quint8 *transparentLayer() const = 0;
};

// Instruction sets of the CPU backend's row loops. All give the same pixels;
// Fastest picks the widest the processor has (AVX2, else SSE2).
enum class CpuRowKernels { Fastest, Baseline, Portable };

// The reference backend: integer loops on the CPU, no allocation per frame.
std::unique_ptr<ProgramRenderer> createCpuProgramRenderer(int width, int height,
                                                          CpuRowKernels kernels = CpuRowKernels::Fastest);

} // namespace tarnix
