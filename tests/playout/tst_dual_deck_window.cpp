#include "dual_deck_fixture.h"

#include "support/glib_criticals.h"
#include "video/private_xvfb.h"

#include <QApplication>
#include <QScreen>
#include <QWindow>

using namespace tarnix;
using namespace tarnix::test;

namespace {

bool g_haveDisplay = false;

// Whether every pixel of the grabbed output window is within 16 of the colour
// in each channel (the clips are H.264, so not exact).
bool filledWith(const QImage &image, QColor colour, QString *where)
{
    if (image.isNull()) {
        *where = QStringLiteral("no image");
        return false;
    }
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const QColor seen = image.pixelColor(x, y);
            if (std::abs(seen.red() - colour.red()) > 16 || std::abs(seen.green() - colour.green()) > 16
                || std::abs(seen.blue() - colour.blue()) > 16) {
                *where = QStringLiteral("%1 at %2,%3").arg(seen.name()).arg(x).arg(y);
                return false;
            }
        }
    }
    return true;
}

} // namespace

// The player as the operator sees it: its program window on a real (if
// virtual) X server shows the taken clip, and the background after OFF AIR.
class TestDualDeckWindow : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        if (!g_haveDisplay)
            QFAIL("Xvfb could not be started (scripts/setup installs it)");
        tarnix::test::failOnGlibCriticals();
        gst_init(nullptr, nullptr);
    }

    void programWindowShowsTheTake()
    {
        PlayerFixture f;
        f.player = std::make_unique<DualDeckPlayer>(f.options);
        f.player->setGeometry(40, 40, 320, 400);
        f.player->show();
        QWidget *output = f.player->findChild<QWidget *>(QStringLiteral("program-gpu-output"));
        QVERIFY(output);
        QVERIFY(f.player->findChild<QWidget *>(QStringLiteral("monitor-gpu-output")));
        QVERIFY(output->windowHandle());
        QTRY_VERIFY_WITH_TIMEOUT(output->windowHandle()->isExposed(), 5000);
        QVERIFY(f.player->isInitialized());
        // A take needs the program sound up as well.
        QVERIFY(f.pollUntil(
            [&] {
                return f.player->isPresenterRunning()
                       && (!f.player->audioOutput() || f.player->audioOutput()->hasUsableDevice());
            },
            10000));

        QCOMPARE(f.cue(fileSource(media("solid-red-4s.mp4"))), PreparationStatus::Ready);
        QVERIFY(f.player->takeStandby(false, 1.0f));
        QWindow *window = output->windowHandle();
        QString where;
        auto shows = [&](QColor colour) {
            return f.pollUntil(
                [&] {
                    const QImage shot = window->screen()->grabWindow(window->winId()).toImage();
                    return filledWith(shot, colour, &where);
                },
                10000);
        };
        QVERIFY2(shows(QColor(253, 0, 3)), qPrintable(where));

        QCOMPARE(f.player->offAir(), 2);
        QVERIFY2(shows(QColor(0, 0, 0)), qPrintable(where));
    }
};

int main(int argc, char **argv)
{
    PrivateXvfb xvfb;
    g_haveDisplay = xvfb.start("640x480x24");
    if (g_haveDisplay)
        qputenv("QT_QPA_PLATFORM", "xcb");
    QApplication app(argc, argv);
    TestDualDeckWindow test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_dual_deck_window.moc"
