// Render cost of the program picture on the CPU, per output frame, for one
// opaque deck, a crossfade, and a crossfade with DSK and fade to black, at
// 1080p and 2160p. Target: under 4 ms per 1080p frame in the worst case;
// 2160p figures are informational.
#include "video/program_renderer.h"

#include <QCoreApplication>
#include <QElapsedTimer>

#include <cstdio>
#include <vector>

using namespace tarnix;

namespace {

struct Image {
    Image(int w, int h, quint8 r, quint8 g, quint8 b, bool keyed)
        : pixels(std::size_t(w) * h * 4)
    {
        for (int y = 0; y < h; ++y) {
            for (int x = 0; x < w; ++x) {
                quint8 *p = pixels.data() + (std::size_t(y) * w + x) * 4;
                p[0] = quint8(r + x);
                p[1] = quint8(g + y);
                p[2] = b;
                // A keyed DSK: a band of opaque text over transparency.
                p[3] = keyed ? ((y / 8) % 4 == 0 ? 255 : 0) : 255;
            }
        }
        image = {pixels.data(), w, h, w * 4, 1, 1};
    }
    std::vector<quint8> pixels;
    ProgramLayerImage image;
};

double msPerFrame(ProgramRenderer &renderer, const ProgramFrameJob &job, std::vector<quint8> &out,
                  int frames)
{
    const ProgramFrameTarget target{out.data(), renderer.width(), renderer.height(),
                                    renderer.width() * 4};
    renderer.render(job, target); // warm-up
    QElapsedTimer timer;
    timer.start();
    for (int i = 0; i < frames; ++i)
        renderer.render(job, target);
    return timer.nsecsElapsed() / 1e6 / frames;
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    const int frames = argc > 1 ? std::max(1, atoi(argv[1])) : 60;
    std::printf("bench-picture-render: %d frames per case\n", frames);
    double worst1080 = 0.0;
    for (const auto &[width, height] : {std::pair{1920, 1080}, std::pair{3840, 2160}}) {
        auto renderer = createCpuProgramRenderer(width, height);
        Image a(width, height, 200, 10, 30, false);
        Image b(width, height, 20, 100, 200, false);
        Image dsk(width, height, 255, 255, 255, true);
        std::vector<quint8> out(std::size_t(width) * height * 4);

        ProgramFrameJob opaque;
        opaque.decks[0] = {&a.image, 1.0f};
        ProgramFrameJob crossfade = opaque;
        crossfade.decks[1] = {&b.image, 0.4f};
        ProgramFrameJob full = crossfade;
        full.dsks[0] = {&dsk.image, 1.0f};
        full.fadeToBlack = 0.3f;
        full.groupOpacity = 0.9f;

        const struct {
            const char *name;
            const ProgramFrameJob *job;
        } cases[] = {{"one opaque deck", &opaque},
                     {"crossfade", &crossfade},
                     {"crossfade + DSK + FTB", &full}};
        for (const auto &c : cases) {
            const double ms = msPerFrame(*renderer, *c.job, out, frames);
            if (height == 1080)
                worst1080 = std::max(worst1080, ms);
            std::printf("  %4dx%-4d %-22s %7.2f ms/frame\n", width, height, c.name, ms);
        }
    }
    std::printf("worst 1080p: %.2f ms/frame (target < 4.00 ms) %s\n", worst1080,
                worst1080 < 4.0 ? "PASS" : "FAIL");
    return worst1080 < 4.0 ? 0 : 1;
}
