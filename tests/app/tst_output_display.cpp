// Where the program picture goes, from the outside: the built application
// on a private X server, moved by the Next Output Display operation over the
// control socket.

#include "app_process.h"
#include "private_two_monitor_x.h"
#include "x_windows.h"

#include "video/private_xvfb.h"

#include <QtTest>

using namespace tarnix::test;

class TestOutputDisplay : public QObject
{
    Q_OBJECT

    static QByteArray next(AppProcess &app)
    {
        return app.ctl({R"({"action":"NextOutputDisplay"})"}).line;
    }

private slots:
    // With one monitor the picture steps aside into a corner window, so the
    // controller window can be reached, and comes back full screen.
    void oneMonitorLeavesRoomForTheController()
    {
        PrivateXvfb xvfb;
        QVERIFY(xvfb.start("1280x720x24"));
        QTemporaryDir home;
        AppProcess app(home);
        app.setDisplay(qEnvironmentVariable("DISPLAY"));
        QVERIFY2(app.start(), qPrintable(app.console()));
        QVERIFY(QTest::qWaitFor([] { return mapState("TARNIX Program") == "IsViewable"; }, 10000));
        QTRY_COMPARE_WITH_TIMEOUT(windowGeometry("TARNIX Program"), QRect(0, 0, 1280, 720), 5000);
        QVERIFY(next(app).contains("Invoked"));
        QTRY_VERIFY_WITH_TIMEOUT(windowGeometry("TARNIX Program").width() < 1280 / 2, 5000);
        const QRect corner = windowGeometry("TARNIX Program");
        QCOMPARE(corner.right(), 1279);
        QCOMPARE(mapState("TARNIX Controller"), QStringLiteral("IsViewable"));
        QVERIFY(!corner.contains(windowGeometry("TARNIX Controller").topLeft() + QPoint(20, 20)));
        QVERIFY(next(app).contains("Invoked"));
        QTRY_COMPARE_WITH_TIMEOUT(windowGeometry("TARNIX Program"), QRect(0, 0, 1280, 720), 5000);
        QCOMPARE(app.terminate(), 0);
    }

    // Two monitors: the picture starts on the one the controller is not on,
    // and each Next Output Display moves it, full screen, to the next.
    void twoMonitorsTakeTurns()
    {
        if (geteuid() != 0)
            QSKIP("the two-monitor X server (Xorg with the dummy driver) needs root");
        PrivateTwoMonitorX x;
        const QString failure = x.start();
        QVERIFY2(failure.isEmpty(), qPrintable(failure));
        QTemporaryDir home;
        AppProcess app(home);
        app.setDisplay(qEnvironmentVariable("DISPLAY"));
        QVERIFY2(app.start(), qPrintable(app.console()));
        QVERIFY(QTest::qWaitFor([] { return mapState("TARNIX Program") == "IsViewable"; }, 10000));
        QTRY_COMPARE_WITH_TIMEOUT(windowGeometry("TARNIX Program"), PrivateTwoMonitorX::right, 5000);
        QTRY_VERIFY_WITH_TIMEOUT(PrivateTwoMonitorX::left.contains(windowGeometry("TARNIX Controller").center()), 5000);

        QVERIFY(next(app).contains("Invoked"));
        QTRY_COMPARE_WITH_TIMEOUT(windowGeometry("TARNIX Program"), PrivateTwoMonitorX::left, 5000);
        QVERIFY(next(app).contains("Invoked"));
        QTRY_COMPARE_WITH_TIMEOUT(windowGeometry("TARNIX Program"), PrivateTwoMonitorX::right, 5000);
        QCOMPARE(app.terminate(), 0);
    }
};

QTEST_GUILESS_MAIN(TestOutputDisplay)
#include "tst_output_display.moc"
