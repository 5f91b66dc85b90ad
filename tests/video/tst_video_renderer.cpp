#include "video/program_renderer.h"

#include <QtTest>

#include <vector>

using namespace tarnix;

namespace {

// A straight-alpha RGBA image of one colour, with optional pixel aspect.
struct Rgba {
    Rgba(int w, int h, quint32 rgb, quint8 alpha = 255)
        : pixels(std::size_t(w) * h * 4)
    {
        image.width = w;
        image.height = h;
        image.stride = w * 4;
        for (std::size_t i = 0; i < pixels.size(); i += 4) {
            pixels[i + 0] = quint8(rgb >> 16);
            pixels[i + 1] = quint8(rgb >> 8);
            pixels[i + 2] = quint8(rgb);
            pixels[i + 3] = alpha;
        }
        image.pixels = pixels.data();
    }
    void setPixel(int x, int y, quint32 rgb, quint8 alpha)
    {
        quint8 *p = pixels.data() + (std::size_t(y) * image.width + x) * 4;
        p[0] = quint8(rgb >> 16);
        p[1] = quint8(rgb >> 8);
        p[2] = quint8(rgb);
        p[3] = alpha;
    }
    std::vector<quint8> pixels;
    ProgramLayerImage image;
};

// The BGRA output frame, read back as (r, g, b).
struct Frame {
    Frame(int w, int h)
        : pixels(std::size_t(w) * h * 4, 0xee)
    {
        target = {pixels.data(), w, h, w * 4};
    }
    QColor at(int x, int y) const
    {
        const quint8 *p = pixels.data() + (std::size_t(y) * target.width + x) * 4;
        return QColor(p[2], p[1], p[0], p[3]);
    }
    // Whether every pixel is exactly this colour, opaque.
    bool uniform(QColor colour) const
    {
        for (int y = 0; y < target.height; ++y)
            for (int x = 0; x < target.width; ++x)
                if (at(x, y) != colour)
                    return false;
        return true;
    }
    std::vector<quint8> pixels;
    ProgramFrameTarget target;
};

bool near(int value, int expected) { return std::abs(value - expected) <= 1; }

} // namespace

class TestVideoRenderer : public QObject
{
    Q_OBJECT

private slots:
    // Situations whose whole frame must be exactly one colour.
    void uniformFrames_data()
    {
        QTest::addColumn<float>("opacityA");
        QTest::addColumn<float>("opacityB");
        QTest::addColumn<bool>("withDsk");
        QTest::addColumn<float>("fadeToBlack");
        QTest::addColumn<bool>("wantLayer");
        QTest::addColumn<QColor>("expected");
        const QColor background(0x10, 0x20, 0x30);
        QTest::newRow("both decks at 0: background") << 0.0f << 0.0f << false << 0.0f << false << background;
        QTest::newRow("FTB 1.0 over deck and DSK: background")
            << 1.0f << 0.0f << true << 1.0f << true << background;
        QTest::newRow("red deck alone: red") << 1.0f << 0.0f << false << 0.0f << false << QColor(Qt::red);
        QTest::newRow("red deck alone, layer kept: red") << 1.0f << 0.0f << false << 0.0f << true << QColor(Qt::red);
        QTest::newRow("crossfade at 0.5 of one colour: no background")
            << 1.0f << 0.5f << false << 0.0f << false << QColor(Qt::red);
    }

    void uniformFrames()
    {
        QFETCH(float, opacityA);
        QFETCH(float, opacityB);
        QFETCH(bool, withDsk);
        QFETCH(float, fadeToBlack);
        QFETCH(bool, wantLayer);
        QFETCH(QColor, expected);
        auto renderer = createCpuProgramRenderer(64, 36);
        renderer->setTransparentLayerWanted(wantLayer);
        Rgba red(64, 36, 0xff0000);
        Rgba dsk(64, 36, 0xffffff);
        ProgramFrameJob job;
        job.background = 0x102030;
        job.decks[0] = {&red.image, opacityA};
        job.decks[1] = {&red.image, opacityB};
        if (withDsk)
            job.dsks[0] = {&dsk.image, 1.0f};
        job.fadeToBlack = fadeToBlack;
        Frame frame(64, 36);
        QVERIFY(renderer->render(job, frame.target).ok);
        QVERIFY2(frame.uniform(expected), qPrintable(frame.at(0, 0).name()));
        if (wantLayer && fadeToBlack >= 1.0f) {
            // Towards transparency on the keyable layer: alpha 0 everywhere.
            const quint8 *layer = renderer->transparentLayer();
            for (int i = 0; i < 64 * 36 * 4; ++i)
                QCOMPARE(layer[i], quint8(0));
        }
    }

    // B at 1.0 drawn first, A at 0.5 second: an even mix, the green
    // background never shows through.
    void crossfadeMixesWithoutBackground()
    {
        auto renderer = createCpuProgramRenderer(32, 16);
        Rgba red(32, 16, 0xff0000);
        Rgba blue(32, 16, 0x0000ff);
        ProgramFrameJob job;
        job.background = 0x00ff00;
        job.decks[0] = {&blue.image, 1.0f};
        job.decks[1] = {&red.image, 0.5f};
        Frame frame(32, 16);
        QVERIFY(renderer->render(job, frame.target).ok);
        for (int y = 0; y < 16; ++y) {
            for (int x = 0; x < 32; ++x) {
                const QColor c = frame.at(x, y);
                QVERIFY2(c.red() >= 127 && c.red() <= 128 && c.blue() >= 127 && c.blue() <= 128
                             && c.green() == 0 && c.alpha() == 255,
                         qPrintable(c.name()));
            }
        }
    }

    // Group opacity and FTB scale the premultiplied layer, so a half fade
    // shows half the deck over half the background.
    void fadesTowardsTheBackground()
    {
        auto renderer = createCpuProgramRenderer(8, 8);
        Rgba white(8, 8, 0xffffff);
        ProgramFrameJob job;
        job.background = 0x000000;
        job.decks[0] = {&white.image, 1.0f};
        job.groupOpacity = 0.5f;
        Frame frame(8, 8);
        QVERIFY(renderer->render(job, frame.target).ok);
        QVERIFY(near(frame.at(3, 3).red(), 128));
        job.groupOpacity = 1.0f;
        job.fadeToBlack = 0.25f;
        job.background = 0x0000ff;
        QVERIFY(renderer->render(job, frame.target).ok);
        const QColor c = frame.at(5, 5);
        QVERIFY2(near(c.red(), 191) && near(c.blue(), 255) && near(c.green(), 191), qPrintable(c.name()));
    }

    // 720x576 at 16/15 is 768 wide on display: fitted to 1920x1080 it is
    // 1440x1080 at x 240. Outside it the deck shows; inside, transparent DSK
    // pixels show the deck and opaque ones the DSK.
    void dskFittedByDisplayAspect()
    {
        auto renderer = createCpuProgramRenderer(1920, 1080);
        Rgba deck(1920, 1080, 0x0000ff);
        Rgba dsk(720, 576, 0xffff00, 255);
        dsk.image.parNumerator = 16;
        dsk.image.parDenominator = 15;
        for (int y = 0; y < 576; ++y)
            for (int x = 360; x < 720; ++x)
                dsk.setPixel(x, y, 0xffff00, 0); // right half transparent
        ProgramFrameJob job;
        job.decks[0] = {&deck.image, 1.0f};
        job.dsks[1] = {&dsk.image, 1.0f};
        Frame frame(1920, 1080);
        QVERIFY(renderer->render(job, frame.target).ok);
        const QColor blue(Qt::blue), yellow(Qt::yellow);
        QCOMPARE(frame.at(239, 540), blue);
        QCOMPARE(frame.at(240, 0), yellow);
        QCOMPARE(frame.at(240, 1079), yellow);
        QCOMPARE(frame.at(950, 540), yellow);
        QCOMPARE(frame.at(970, 540), blue);  // transparent half of the DSK
        QCOMPARE(frame.at(1679, 540), blue);
        QCOMPARE(frame.at(1680, 540), blue);
        // Square pixels at the frame size are drawn one to one.
        Rgba key(1920, 1080, 0xff00ff, 0);
        key.setPixel(100, 200, 0x00ff00, 255);
        job.dsks[1] = {&key.image, 1.0f};
        QVERIFY(renderer->render(job, frame.target).ok);
        QCOMPARE(frame.at(100, 200), QColor(Qt::green));
        QCOMPARE(frame.at(101, 200), blue);
        QCOMPARE(frame.at(100, 201), blue);
    }

    // The vector loops must give exactly the pixels of the portable loops,
    // on content with every alpha, at a width that leaves a tail, for each
    // step of the frame.
    void instructionSetsAgree_data()
    {
        QTest::addColumn<int>("kernels");
        QTest::newRow("fastest") << int(CpuRowKernels::Fastest);
        QTest::newRow("baseline") << int(CpuRowKernels::Baseline);
    }

    void instructionSetsAgree()
    {
        QFETCH(int, kernels);
        constexpr int w = 37, h = 9;
        auto noisy = [](quint32 seed) {
            Rgba image(w, h, 0);
            for (quint8 &byte : image.pixels) {
                seed = seed * 1664525u + 1013904223u;
                byte = quint8(seed >> 24);
            }
            return image;
        };
        Rgba a = noisy(1), b = noisy(2), key = noisy(3), small = noisy(4);
        small.image.width = 20; // fitted and sampled, not drawn one to one
        small.image.parNumerator = 4;
        small.image.parDenominator = 3;
        for (int i = 0; i < 4 * w; i += 12)
            key.pixels[i + 3] = 0; // runs of clear pixels
        ProgramFrameJob job;
        job.decks[0] = {&a.image, 0.7f};
        job.decks[1] = {&b.image, 0.3f};
        job.dsks[0] = {&key.image, 0.8f};
        job.dsks[1] = {&small.image, 1.0f};
        job.groupOpacity = 0.6f;
        job.fadeToBlack = 0.2f;
        job.background = 0x3366cc;

        auto reference = createCpuProgramRenderer(w, h, CpuRowKernels::Portable);
        auto tested = createCpuProgramRenderer(w, h, CpuRowKernels(kernels));
        reference->setTransparentLayerWanted(true);
        tested->setTransparentLayerWanted(true);
        Frame expected(w, h), actual(w, h);
        for (const float second : {0.3f, 1.0f}) {
            job.decks[1].opacity = second;
            QVERIFY(reference->render(job, expected.target).ok);
            QVERIFY(tested->render(job, actual.target).ok);
            QVERIFY(expected.pixels == actual.pixels);
            QVERIFY(std::equal(reference->transparentLayer(), reference->transparentLayer() + w * h * 4,
                               tested->transparentLayer()));
        }
        job.dsks = {};
        job.decks[1] = {};
        job.groupOpacity = 1.0f;
        job.fadeToBlack = 0.0f;
        job.decks[0].opacity = 1.0f; // the one-deck copy
        tested->setTransparentLayerWanted(false);
        reference->setTransparentLayerWanted(false);
        QVERIFY(reference->render(job, expected.target).ok);
        QVERIFY(tested->render(job, actual.target).ok);
        QVERIFY(expected.pixels == actual.pixels);
    }

    // A deck that is not of the frame size fails the frame; an unusable DSK
    // is reported and left out while the frame is drawn.
    void failuresAreTold()
    {
        auto renderer = createCpuProgramRenderer(16, 16);
        Rgba small(8, 8, 0xff0000);
        Rgba deck(16, 16, 0x00ff00);
        ProgramFrameJob job;
        job.decks[0] = {&small.image, 1.0f};
        Frame frame(16, 16);
        const ProgramRenderOutcome failed = renderer->render(job, frame.target);
        QVERIFY(!failed.ok);
        QVERIFY(!failed.error.isEmpty());

        ProgramLayerImage broken; // no pixels, no geometry
        job.decks[0] = {&deck.image, 1.0f};
        job.dsks[0] = {&broken, 1.0f};
        const ProgramRenderOutcome partial = renderer->render(job, frame.target);
        QVERIFY(partial.ok);
        QVERIFY(partial.dskFailed[0]);
        QVERIFY(!partial.dskFailed[1]);
        QVERIFY(frame.uniform(QColor(Qt::green)));
    }
};

QTEST_GUILESS_MAIN(TestVideoRenderer)
#include "tst_video_renderer.moc"
