#include "audio/meter_ballistics.h"
#include "ui/audio_delay_control.h"
#include "ui/audio_fader_law.h"
#include "ui/audio_fader_widget.h"
#include "ui/audio_meter_widget.h"
#include "ui/equalizer_editor.h"
#include "ui/master_eq_dial.h"
#include "ui/master_eq_window.h"

#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QSignalSpy>
#include <QTimer>
#include <QToolButton>
#include <QTranslator>
#include <QWheelEvent>
#include <QScreen>
#include <QtTest>

#include <cmath>

using namespace tarnix;

namespace {

// Counts the paint events a widget receives.
class PaintCounter : public QObject
{
public:
    int paints = 0;
    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == QEvent::Paint)
            ++paints;
        return false;
    }
};

void flushPaints()
{
    QCoreApplication::sendPostedEvents();
    QCoreApplication::processEvents();
}

bool sendWheel(QWidget *widget, int angleDelta)
{
    const QPointF at(widget->width() / 2.0, widget->height() / 2.0);
    QWheelEvent wheel(at, widget->mapToGlobal(at), QPoint(), QPoint(0, angleDelta), Qt::NoButton, Qt::NoModifier,
                      Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(widget, &wheel);
    return wheel.isAccepted();
}

bool sendKey(QWidget *widget, int key)
{
    QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier);
    QCoreApplication::sendEvent(widget, &press);
    return press.isAccepted();
}

QColor pixelAt(const QImage &image, const QRect &rect)
{
    return image.pixelColor(rect.center());
}

} // namespace

class TestAudioControls : public QObject
{
    Q_OBJECT

private slots:
    void gainLawBothWays()
    {
        QCOMPARE(faderValueToGain(0), 1.0);
        QCOMPARE(faderValueToGain(kFaderOffValue), 0.0);
        QVERIFY(faderValueToGain(kFaderOffValue + 1) > 0.0);
        QCOMPARE(faderGainToValue(1.0), 0);
        for (int value = kFaderOffValue + 1; value <= kFaderMaxValue; ++value)
            QCOMPARE(faderGainToValue(faderValueToGain(value)), value);
        // Out-of-range and meaningless gains.
        QCOMPARE(faderGainToValue(100.0), kFaderMaxValue);
        QCOMPARE(faderGainToValue(1e-30), kFaderOffValue);
        QCOMPARE(faderGainToValue(0.0), kFaderOffValue);
        QCOMPARE(faderGainToValue(-1.0), kFaderOffValue);
        QCOMPARE(faderGainToValue(std::nan("")), kFaderOffValue);
        QCOMPARE(faderGainToValue(INFINITY), kFaderOffValue);
        QCOMPARE(faderGainToValue(0.5, -120, 20), -60);
        QCOMPARE(faderGainToValue(1e-6, -120, 20), -120);
    }

    void positionLawBothWays()
    {
        QCOMPARE(faderValueToPosition(kFaderMaxValue), 1.0);
        QCOMPARE(faderValueToPosition(0), 0.8);
        QCOMPARE(faderValueToPosition(kFaderOffValue), 0.0);
        QVERIFY(faderValueToPosition(kFaderOffValue + 1) > 0.0);
        // The knee: the travel keeps rising through 0 dB, and every value
        // comes back from its own position.
        double previous = -1.0;
        for (int value = kFaderOffValue; value <= kFaderMaxValue; ++value) {
            const double position = faderValueToPosition(value);
            QVERIFY2(position > previous, qPrintable(QString::number(value)));
            previous = position;
            QCOMPARE(faderPositionToValue(position), value);
        }
        QCOMPARE(faderPositionToValue(0.0), kFaderOffValue);
        QCOMPARE(faderPositionToValue(-0.5), kFaderOffValue);
        QCOMPARE(faderPositionToValue(1e-9), kFaderOffValue);
        QCOMPARE(faderPositionToValue(1.5), kFaderMaxValue);
        QCOMPARE(faderPositionToValue(std::nan("")), kFaderOffValue);
    }

    void dbTexts()
    {
        QCOMPARE(faderDbText(kFaderOffValue), QString::fromUtf8("\u2212\u221e"));
        QCOMPARE(faderDbText(0), QStringLiteral("+0.00"));
        QCOMPARE(faderDbText(60), QStringLiteral("+6.00"));
        QCOMPARE(faderDbText(-5), QStringLiteral("-0.50"));
        QCOMPARE(faderDbText(-959), QStringLiteral("-95.90"));
    }

    void faderGainSetterClamps()
    {
        AudioFaderWidget fader(AudioFaderWidget::Kind::Master);
        fader.setLinearGain(4.0);
        QCOMPARE(fader.value(), kFaderMaxValue);
        fader.setLinearGain(std::nan(""));
        QCOMPARE(fader.value(), kFaderOffValue);
        QCOMPARE(fader.linearGain(), 0.0);
        fader.setLinearGain(1.0);
        QCOMPARE(fader.value(), 0);
    }

    void faderTextsFollowValueKindAndLanguage()
    {
        AudioFaderWidget fader(AudioFaderWidget::Kind::Master);
        fader.setValue(-125);
        QCOMPARE(fader.toolTip(), QStringLiteral("ON AIR master volume: -12.50 dB\nDouble-click to reset to 0 dB"));
        QCOMPARE(fader.accessibleDescription(), QStringLiteral("ON AIR master volume: -12.50 dB"));
        fader.setKind(AudioFaderWidget::Kind::Nominal);
        QCOMPARE(fader.accessibleName(), QStringLiteral("Nominal volume"));

        QTranslator japanese;
        QVERIFY(japanese.load(QStringLiteral(":/i18n/tarnix_ja.qm")));
        QCoreApplication::installTranslator(&japanese);
        QTRY_COMPARE(fader.accessibleName(), QString::fromUtf8("基準音量"));
        QVERIFY(fader.toolTip().startsWith(QString::fromUtf8("基準音量: -12.50 dB")));
        QCoreApplication::removeTranslator(&japanese);
        QTRY_COMPARE(fader.accessibleName(), QStringLiteral("Nominal volume"));
    }

    void faderHoldsZeroUntilPulledAway()
    {
        AudioFaderWidget fader;
        fader.resize(60, 400);
        fader.show();
        const int x = fader.grooveRect().center().x();
        const int zeroRow = fader.rowForValue(0);
        QTest::mousePress(&fader, Qt::LeftButton, {}, QPoint(x, zeroRow));
        QTest::mouseMove(&fader, QPoint(x, zeroRow + 3));
        QCOMPARE(fader.value(), 0);
        QTest::mouseMove(&fader, QPoint(x, zeroRow - 4));
        QCOMPARE(fader.value(), 0);
        QTest::mouseMove(&fader, QPoint(x, zeroRow + 5));
        QVERIFY(fader.value() < 0);
        // Coming back close to 0 dB snaps onto it.
        QTest::mouseMove(&fader, QPoint(x, zeroRow + 2));
        QCOMPARE(fader.value(), 0);
        QTest::mouseRelease(&fader, Qt::LeftButton, {}, QPoint(x, zeroRow + 2));
        QVERIFY(!fader.isSliderDown());
    }

    void faderCapGrabDoesNotJumpGrooveClickDoes()
    {
        AudioFaderWidget fader;
        fader.resize(60, 400);
        fader.show();
        fader.setValue(-100);
        const int x = fader.grooveRect().center().x();
        const int capRow = fader.rowForValue(-100);

        // Off the cap's centre but on the cap: nothing moves, and the drag
        // keeps that offset.
        QTest::mousePress(&fader, Qt::LeftButton, {}, QPoint(x, capRow + 10));
        QCOMPARE(fader.value(), -100);
        QTest::mouseMove(&fader, QPoint(x, capRow + 30));
        QVERIFY(fader.value() < -100);
        QVERIFY(qAbs(fader.rowForValue(fader.value()) - (capRow + 20)) <= 1);
        QTest::mouseRelease(&fader, Qt::LeftButton, {}, QPoint(x, capRow + 30));

        // On the groove away from the cap: straight there.
        QTest::mouseClick(&fader, Qt::LeftButton, {}, QPoint(x, fader.rowForValue(-400)));
        QVERIFY2(qAbs(fader.value() + 400) <= 5, qPrintable(QString::number(fader.value())));
        QTest::mouseClick(&fader, Qt::LeftButton, {}, QPoint(x, fader.grooveRect().bottom() + 20));
        QCOMPARE(fader.value(), kFaderOffValue);
        QTest::mouseClick(&fader, Qt::LeftButton, {}, QPoint(x, 0));
        QCOMPARE(fader.value(), kFaderMaxValue);
    }

    void faderIgnoresWheelAndStepKeysAndResetsOnDoubleClick()
    {
        AudioFaderWidget fader;
        fader.resize(60, 400);
        fader.show();
        fader.setValue(-200);
        QVERIFY(sendWheel(&fader, 120));  // taken, so no parent scrolls
        QVERIFY(sendWheel(&fader, -360));
        QCOMPARE(fader.value(), -200);
        QVERIFY(sendKey(&fader, Qt::Key_Up));
        QVERIFY(sendKey(&fader, Qt::Key_Down));
        QVERIFY(!sendKey(&fader, Qt::Key_PageUp));  // left for the window's shortcuts
        QVERIFY(!sendKey(&fader, Qt::Key_Right));
        QCOMPARE(fader.value(), -200);

        QTest::mouseDClick(&fader, Qt::LeftButton, {}, QPoint(fader.grooveRect().center().x(), fader.rowForValue(-500)));
        QCOMPARE(fader.value(), 0);
    }

    void faderValueHandlerDecides()
    {
        AudioFaderWidget fader;
        fader.resize(60, 400);
        fader.show();
        fader.setValue(-100);
        QList<int> asked;
        bool accept = false;
        fader.setValueHandler([&](int value) {
            asked.append(value);
            if (accept)
                fader.setValue(value);
        });
        const int x = fader.grooveRect().center().x();

        QTest::mouseClick(&fader, Qt::LeftButton, {}, QPoint(x, fader.rowForValue(-400)));
        QCOMPARE(asked.size(), 1);
        QCOMPARE(fader.value(), -100);
        // Slider actions (Home goes to the minimum) take the same way.
        QVERIFY(sendKey(&fader, Qt::Key_Home));
        QCOMPARE(asked.last(), kFaderOffValue);
        QCOMPARE(fader.value(), -100);
        QCOMPARE(fader.sliderPosition(), -100);
        QTest::mouseDClick(&fader, Qt::LeftButton, {}, QPoint(x, fader.rowForValue(-100)));
        QCOMPARE(asked.last(), 0);
        QCOMPARE(fader.value(), -100);

        accept = true;
        sendKey(&fader, Qt::Key_Home);
        QCOMPARE(fader.value(), kFaderOffValue);
    }

    void meterPaintsWhatTheBallisticsHold()
    {
        MeterBallistics ballistics;
        ballistics.setLevels(0.0, -60.0, true, 1000);
        AudioMeterWidget meter;
        meter.resize(meter.width(), 240);
        meter.showMeter(ballistics);
        QImage image = meter.grab().toImage();
        QCOMPARE(pixelAt(image, meter.segmentRect(0, 0)), QColor(240, 25, 36));   // top
        QCOMPARE(pixelAt(image, meter.segmentRect(0, 15)), QColor(245, 229, 0));  // about -15 dB
        QCOMPARE(pixelAt(image, meter.segmentRect(0, 59)), QColor(22, 199, 51));  // bottom
        QCOMPARE(pixelAt(image, meter.segmentRect(1, 0)), QColor(23, 25, 26));    // silent channel
        QCOMPARE(pixelAt(image, meter.clipLampRect()), QColor(0x85, 0x25, 0x2b));
        // The hairline below a segment shows the background.
        const QRect top = meter.segmentRect(0, 0);
        QCOMPARE(image.pixelColor(top.center().x(), top.bottom() + 1), QColor(0x10, 0x12, 0x14));

        // 40 ms into a fall the segments the level left are half dimmed, and
        // once the clip hold is over its lamp goes dark.
        ballistics.setLevels(-60.0, -60.0, false, 1040);
        meter.showMeter(ballistics);
        image = meter.grab().toImage();
        QCOMPARE(pixelAt(image, meter.segmentRect(0, 0)), QColor(132, 25, 31));
        ballistics.setLevels(-60.0, -60.0, false, 1600);
        meter.showMeter(ballistics);
        meter.setLook(AudioMeterWidget::Look::Subdued);
        image = meter.grab().toImage();
        QCOMPARE(pixelAt(image, meter.clipLampRect()), QColor(0x48, 0x17, 0x1a));
        QCOMPARE(pixelAt(image, meter.segmentRect(0, 0)), QColor(85, 85, 85));
        QCOMPARE(AudioMeterWidget::segmentColour(AudioMeterWidget::Look::Subdued, 0, 1.0), QColor(192, 80, 80));
    }

    // The meter repaints only the segments and the lamp that changed; what
    // the window holds after a run of readings must still be exactly what a
    // whole paint of the final state gives.
    void meterPartialRepaintsAddUpToTheWholePicture()
    {
        qint64 now = 1000;
        AudioMeterWidget meter;
        meter.setClock([&now] { return now; });
        meter.resize(meter.width(), 240);
        meter.show();
        QVERIFY(QTest::qWaitForWindowExposed(&meter));
        flushPaints();
        const double readings[][2] = {{-3, -40}, {-12, -1}, {0.5, -20}, {-30, -30}, {-60, -6}, {-45, -60}};
        for (const auto &reading : readings) {
            now += 30;
            meter.setLevels(reading[0], reading[1], reading[0] > 0);
            flushPaints();
        }
        now += 40;  // a fall half-way through its dimming
        meter.setLevels(-60, -60, false);
        flushPaints();
        const QImage shown = meter.screen()->grabWindow(meter.winId()).toImage().convertToFormat(QImage::Format_RGB32);
        const QImage whole = meter.grab().toImage().convertToFormat(QImage::Format_RGB32);
        QCOMPARE(shown.size(), whole.size());
        QVERIFY(shown == whole);
    }

    void meterAtRestCostsNothing()
    {
        qint64 now = 5000;
        AudioMeterWidget meter;
        meter.setClock([&now] { return now; });
        meter.resize(meter.width(), 240);
        PaintCounter counter;
        meter.installEventFilter(&counter);
        meter.show();
        QVERIFY(QTest::qWaitForWindowExposed(&meter));
        auto *fallTimer = meter.findChild<QTimer *>();
        QVERIFY(fallTimer);
        flushPaints();

        QVERIFY(!meter.setLevels(-20.0, -20.0, false));
        flushPaints();
        counter.paints = 0;
        for (int i = 0; i < 5; ++i) {
            now += 50;
            QVERIFY(!meter.setLevels(-20.0, -20.0, false));
            flushPaints();
        }
        QCOMPARE(counter.paints, 0);
        QVERIFY(!fallTimer->isActive());

        // A fall keeps its own timer only until it has landed.
        QVERIFY(meter.setLevels(-60.0, -60.0, false));
        QVERIFY(fallTimer->isActive());
        now += 2000;
        QTRY_VERIFY_WITH_TIMEOUT(!fallTimer->isActive(), 2000);
        QCOMPARE(meter.meter().leftDb(), -60.0);
        flushPaints();
        QVERIFY(counter.paints > 0);
        counter.paints = 0;
        meter.reset();  // already silent
        now += 50;
        meter.setLevels(-60.0, -60.0, false);
        flushPaints();
        QCOMPARE(counter.paints, 0);
    }

    void dialFollowsVerticalDrag()
    {
        MasterEqDial dial;
        dial.setRange(-150, 150);
        dial.resize(44, 44);
        dial.show();
        const int step = MasterEqDial::pixelsPerStep();
        const QPoint start(22, 22);
        QTest::mousePress(&dial, Qt::LeftButton, {}, start);
        QVERIFY(dial.isSliderDown());
        QTest::mouseMove(&dial, start - QPoint(0, 2 * step));
        QCOMPARE(dial.value(), 2);
        QTest::mouseMove(&dial, start - QPoint(0, 2 * step + step / 2));
        QCOMPARE(dial.value(), 3);  // 2.5 rounds away from zero
        QTest::mouseMove(&dial, start + QPoint(0, 2 * step));
        QCOMPARE(dial.value(), -2);
        // Past the end the dial stops, and turns back at once.
        QTest::mouseMove(&dial, start - QPoint(0, 400 * step));
        QCOMPARE(dial.value(), 150);
        QTest::mouseMove(&dial, start - QPoint(0, 399 * step));
        QCOMPARE(dial.value(), 149);
        QTest::mouseRelease(&dial, Qt::LeftButton, {}, start);
        QVERIFY(!dial.isSliderDown());
        QTest::mouseMove(&dial, start + QPoint(0, 10 * step));
        QCOMPARE(dial.value(), 149);

        // Fine wheel steps add up; the remainder carries over.
        dial.setValue(0);
        sendWheel(&dial, 60);
        QCOMPARE(dial.value(), 0);
        sendWheel(&dial, 90);
        QCOMPARE(dial.value(), 1);
        sendWheel(&dial, -270);  // 30 - 270 = -240
        QCOMPARE(dial.value(), -1);
    }

    void equalizerReportsOnlyTheOperatorsChanges()
    {
        MasterEqWindow window;
        QSignalSpy changes(&window, &MasterEqWindow::masterEqChanged);
        auto *reset = window.findChild<QPushButton *>(QStringLiteral("masterEqResetButton"));
        QVERIFY(reset);
        QVERIFY(!reset->isEnabled());

        window.setGains(2.5, -15.0, 20.0);
        QCOMPARE(changes.count(), 0);
        QCOMPARE(window.editor()->highDb(), 15.0);
        QCOMPARE(window.findChild<QLabel *>(QStringLiteral("equalizerMidValue"))->text(),
                 QString::fromUtf8("\u221215.0 dB"));
        QVERIFY(reset->isEnabled());

        auto *low = window.findChild<MasterEqDial *>(QStringLiteral("equalizerLowDial"));
        QVERIFY(low);
        const QPoint centre = low->rect().center();
        QTest::mousePress(low, Qt::LeftButton, {}, centre);
        QTest::mouseMove(low, centre - QPoint(0, MasterEqDial::pixelsPerStep()));
        QTest::mouseRelease(low, Qt::LeftButton, {}, centre);
        QCOMPARE(changes.count(), 1);
        QCOMPARE(changes.last(), (QVariantList{2.6, -15.0, 15.0}));

        reset->click();
        QCOMPARE(changes.count(), 2);
        QCOMPARE(changes.last(), (QVariantList{0.0, 0.0, 0.0}));
        QVERIFY(window.editor()->isFlat());
        QVERIFY(!reset->isEnabled());
    }

    void delayControlSteps()
    {
        AudioDelayControl delay;
        QSignalSpy changes(&delay, &AudioDelayControl::framesChanged);
        auto *increase = delay.findChild<QToolButton *>(QStringLiteral("audioDelayIncreaseButton"));
        auto *decrease = delay.findChild<QToolButton *>(QStringLiteral("audioDelayDecreaseButton"));
        auto *milliseconds = delay.findChild<QLabel *>(QStringLiteral("audioDelayMillisecondsLabel"));
        QVERIFY(increase && decrease && milliseconds);
        QVERIFY(!decrease->isEnabled());

        increase->click();
        QCOMPARE(changes.count(), 1);
        QCOMPARE(changes.last().first().toInt(), 1);
        QCOMPARE(milliseconds->text(), QString::fromUtf8("\u2248 33.3 ms"));

        delay.setFrames(99);
        QCOMPARE(delay.frames(), AudioDelayControl::kMaximumFrames);
        QCOMPARE(changes.count(), 1);
        QVERIFY(!increase->isEnabled());
        QCOMPARE(milliseconds->text(), QString::fromUtf8("\u2248 200.0 ms"));
    }
};

QTEST_MAIN(TestAudioControls)
#include "tst_audio_controls.moc"
