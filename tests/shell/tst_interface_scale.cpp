// The interface scale, the text size and the controller skins: the factor a
// screen gives, the rounding every length goes through, what applying a
// skin leaves on the application, and the scaling of a skin's sheet.

#include "shell/controller_skin.h"
#include "shell/interface_scale.h"

#include <QApplication>
#include <QFile>
#include <QPushButton>
#include <QRegularExpression>
#include <QtTest>

using namespace tarnix;

namespace {

QStringList g_messages;
QtMessageHandler g_previousHandler = nullptr;

void recordMessage(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    g_messages << message;
    if (type != QtInfoMsg && g_previousHandler)
        g_previousHandler(type, context, message);
}

// Restores both factors whatever a test leaves behind.
struct FactorsGuard {
    ~FactorsGuard()
    {
        setUiScale(1.0);
        setTextSizeStep(0);
    }
};

} // namespace

class TestInterfaceScale : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { g_previousHandler = qInstallMessageHandler(recordMessage); }
    void cleanupTestCase() { qInstallMessageHandler(g_previousHandler); }
    void init() { g_messages.clear(); }

    void screenFactor_data()
    {
        QTest::addColumn<QRect>("geometry");
        QTest::addColumn<QRect>("available");
        QTest::addColumn<double>("expected");
        QTest::newRow("empty geometry") << QRect() << QRect(0, 0, 1886, 805) << 1.0;
        QTest::newRow("empty available area") << QRect(0, 0, 3840, 2160) << QRect(0, 0, 0, 2100) << 1.0;
        QTest::newRow("full HD with a taskbar") << QRect(0, 0, 1920, 1080) << QRect(0, 0, 1886, 805) << 1.0;
        QTest::newRow("full HD, all available") << QRect(0, 0, 1920, 1080) << QRect(0, 0, 1920, 1080) << 1.0;
        QTest::newRow("4K with a panel") << QRect(0, 0, 3840, 2160) << QRect(0, 0, 3840, 2100) << 2.0;
        // The screen is the smaller: 1280/1920.
        QTest::newRow("small screen") << QRect(0, 0, 1280, 1024) << QRect(0, 0, 1280, 1000) << 1280 / 1920.0;
        // The available area is the smaller: 1200/1886 beats 1080/1080.
        QTest::newRow("short available area") << QRect(0, 0, 1920, 1080) << QRect(0, 0, 1200, 1000) << 1200 / 1886.0;
        // No clamp either way.
        QTest::newRow("8K") << QRect(0, 0, 7680, 4320) << QRect(0, 0, 7680, 4300) << 4.0;
        QTest::newRow("tiny") << QRect(0, 0, 480, 270) << QRect(0, 0, 480, 250) << 0.25;
    }

    void screenFactor()
    {
        QFETCH(QRect, geometry);
        QFETCH(QRect, available);
        QFETCH(double, expected);
        QCOMPARE(uiScale(geometry, available), expected);
    }

    void storedScaleRefusesNonsense()
    {
        FactorsGuard guard;
        setUiScale(1.5);
        QCOMPARE(interfaceScale(), 1.5);
        for (double bad : {0.0, -2.0, std::numeric_limits<double>::quiet_NaN(),
                           std::numeric_limits<double>::infinity()}) {
            setUiScale(1.5);
            setUiScale(bad);
            QCOMPARE(interfaceScale(), 1.0);
        }
    }

    void lengthsRoundHalfAwayFromZero_data()
    {
        QTest::addColumn<double>("scale");
        QTest::addColumn<int>("pixels");
        QTest::addColumn<int>("expected");
        QTest::newRow("identity") << 1.0 << 664 << 664;
        QTest::newRow("half up") << 1.5 << 5 << 8;      // 7.5
        QTest::newRow("half below zero") << 1.5 << -5 << -8;
        QTest::newRow("below half") << 1.25 << 3 << 4;  // 3.75
        QTest::newRow("min width at 4K") << 2.0 << 664 << 1328;
        QTest::newRow("one at 0.4 stays one") << 0.4 << 1 << 1;
        QTest::newRow("two at 0.2 stays one") << 0.2 << 2 << 1;
        QTest::newRow("zero stays zero") << 0.4 << 0 << 0;
    }

    void lengthsRoundHalfAwayFromZero()
    {
        QFETCH(double, scale);
        QFETCH(int, pixels);
        QFETCH(int, expected);
        FactorsGuard guard;
        setUiScale(scale);
        QCOMPARE(scaled(pixels), expected);
    }

    void textSizeStepIsClamped()
    {
        FactorsGuard guard;
        const QList<QPair<int, double>> cases = {{-1, 1.0}, {0, 1.0}, {1, 1.2}, {2, 1.4}, {7, 1.4}};
        for (const auto &[step, factor] : cases) {
            setTextSizeStep(step);
            QVERIFY2(qFuzzyCompare(textSizeFactor(), factor), qPrintable(QString::number(step)));
        }
    }

    void fontsFollowBothFactors()
    {
        FactorsGuard guard;
        setUiScale(2.0);
        setTextSizeStep(1);
        QFont points;
        points.setPointSizeF(10.0);
        QCOMPARE(scaledFont(points).pointSizeF(), 24.0);
        // Pixel fonts take the interface scale only.
        QFont pixels;
        pixels.setPixelSize(11);
        QCOMPARE(scaledFont(pixels).pixelSize(), 22);
    }

    void eachSkinLoadsFromItsResource_data()
    {
        QTest::addColumn<QString>("key");
        QTest::addColumn<bool>("hardwareEffects");
        QTest::newRow("hardware") << QStringLiteral("hardware") << true;
        QTest::newRow("material-dark") << QStringLiteral("material-dark") << false;
        QTest::newRow("tarnix-clasic") << QStringLiteral("tarnix-clasic") << false;
    }

    void eachSkinLoadsFromItsResource()
    {
        QFETCH(QString, key);
        QFETCH(bool, hardwareEffects);
        QString error = QStringLiteral("stale");
        QVERIFY(applyControllerSkin(key, &error));
        QVERIFY(error.isEmpty());
        const QString path = QStringLiteral(":/tarnix/apps/desktop/skins/%1/controller.qss").arg(key);
        QVERIFY(g_messages.contains(QStringLiteral("READ_SOURCE skin %1 opened=true").arg(path)));

        QCOMPARE(currentControllerSkin(), key);
        QCOMPARE(qApp->property("controllerSkinKey").toString(), key);
        QCOMPARE(qApp->property("controllerSkinUsesHardwareEffects").toBool(), hardwareEffects);
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadOnly | QIODevice::Text));
        const QString text = QString::fromUtf8(file.readAll());
        QCOMPARE(qApp->property("controllerUnscaledStyleSheet").toString(), text);
        QCOMPARE(qApp->styleSheet(), text);  // at 1.0 scaling changes nothing
        QCOMPARE(QApplication::palette(), controllerSkinPalette(findControllerSkin(key)->paletteId));
        if (key != QLatin1String("tarnix-clasic"))
            QCOMPARE(QApplication::palette().color(QPalette::Base), QColor("#111318"));

        // The sheet parses: Qt tells of a sheet it cannot read when a widget
        // is polished with it.
        QPushButton probe;
        probe.ensurePolished();
        for (const QString &message : std::as_const(g_messages))
            QVERIFY2(!message.contains(QLatin1String("Could not parse")), qPrintable(message));

        // The panels and the states the widgets publish each have a look.
        const QStringList hooks = {
            "controllerWindow", "applicationMenuBar", "playlistPanel", "playlistTabBar", "playlistListWidget",
            "playlistOnAirButton", "editPanel", "editMonitor", "editPlayButton", "programControlPanel",
            "onAirMonitor", "programRemainingTime", "programFtbButton", "dskOnButton", "userInfoBar",
            "settingsPageList", "[onAirActive=\"true\"]", "[active=\"true\"]", "[highlighted=\"true\"]",
            "[dskState=\"active\"]", "[lit=\"true\"]", "[endingSoon=\"true\"]", "[error=\"true\"]"};
        for (const QString &hook : hooks)
            QVERIFY2(text.contains(hook), qPrintable(key + QLatin1String(" lacks ") + hook));
        // Images a sheet names are resources that exist.
        static const QRegularExpression url(QStringLiteral(R"(url\(([^)]*)\))"));
        for (auto it = url.globalMatch(text); it.hasNext();) {
            const QString image = it.next().captured(1);
            QVERIFY2(QFile::exists(image), qPrintable(image));
        }
    }

    void unknownSkinChangesNothing()
    {
        QVERIFY(applyControllerSkin(QStringLiteral("material-dark")));
        const QString sheet = qApp->styleSheet();
        const QPalette palette = QApplication::palette();
        QString error;
        QVERIFY(!applyControllerSkin(QStringLiteral("chrome"), &error));
        QCOMPARE(error, QStringLiteral("Unknown Controller skin: chrome"));
        QCOMPARE(currentControllerSkin(), QStringLiteral("material-dark"));
        QCOMPARE(qApp->property("controllerSkinKey").toString(), QStringLiteral("material-dark"));
        QCOMPARE(qApp->styleSheet(), sheet);
        QCOMPARE(QApplication::palette(), palette);
        QVERIFY(!findControllerSkin(QStringLiteral("tarnix-classic")));  // the key keeps its spelling
        QCOMPARE(defaultControllerSkin(), QStringLiteral("hardware"));
    }

    void sheetLengthsScale()
    {
        const QString sheet = QStringLiteral(
            "QPushButton#a { border: 1px solid #1a2b3c; padding: 4px 10px; margin: -3px 0px; font-size: 10pt; }\n"
            "QLabel { font: bold 12px \"DejaVu Sans\"; min-width: 0.5px; }\n"
            "/* 7px in a comment */ QFrame { image: url(:/skins/12px/arrow-9px.png); }\n"
            "QSlider::handle:horizontal { background: qlineargradient(x1:0, y1:0, x2:0, y2:1, stop:0 #fff, stop:1 #000); }");
        QCOMPARE(scaleStyleSheet(sheet, 2.0, 1.2),
                 QStringLiteral(
                     "QPushButton#a { border: 2px solid #1a2b3c; padding: 8px 20px; margin: -6px 0px; font-size: 24pt; }\n"
                     "QLabel { font: bold 29px \"DejaVu Sans\"; min-width: 1px; }\n"
                     "/* 7px in a comment */ QFrame { image: url(:/skins/12px/arrow-9px.png); }\n"
                     "QSlider::handle:horizontal { background: qlineargradient(x1:0, y1:0, x2:0, y2:1, stop:0 #fff, stop:1 #000); }"));
    }

    void rescaleStartsFromTheUnscaledText()
    {
        FactorsGuard guard;
        QVERIFY(applyControllerSkin(QStringLiteral("hardware")));
        const QString unscaled = qApp->styleSheet();
        setUiScale(2.0);
        rescaleControllerSkin();
        const QString twice = qApp->styleSheet();
        QVERIFY(twice != unscaled);
        QVERIFY(twice.contains(QLatin1String("url(:/tarnix/apps/desktop/skins/hardware/arrow-up.png)")));
        QCOMPARE(qApp->property("controllerUnscaledStyleSheet").toString(), unscaled);
        rescaleControllerSkin();
        QCOMPARE(qApp->styleSheet(), twice);
        setUiScale(1.0);
        rescaleControllerSkin();
        QCOMPARE(qApp->styleSheet(), unscaled);
    }
};

QTEST_MAIN(TestInterfaceScale)
#include "tst_interface_scale.moc"
