// A show run from the keyboard alone, from the outside: the built
// application on a private X server with a sound server of its own, keys
// typed with xdotool, and the state query as the judge.

#include "app_process.h"
#include "x_windows.h"

#include "support/private_pulse_audio.h"
#include "support/test_paths.h"
#include "video/private_xvfb.h"

#include <QJsonArray>
#include <QtTest>

using namespace tarnix::test;

namespace {

QString media(const char *name)
{
    return QStringLiteral(TARNIX_TEST_MEDIA_DIR "/") + QString::fromLatin1(name);
}

bool xdotool(const QStringList &arguments)
{
    QProcess tool;
    tool.start(QStringLiteral("xdotool"), arguments);
    return tool.waitForFinished(10000) && tool.exitCode() == 0;
}

QJsonValue field(const AppProcess &app, const char *key)
{
    return app.state().value(QLatin1String(key));
}

} // namespace

class TestKeyboardShow : public QObject
{
    Q_OBJECT

    PrivateXvfb m_xvfb;
    PrivatePulseAudio m_pulse;

private slots:
    void initTestCase()
    {
        QVERIFY(m_xvfb.start("1920x1080x24"));
        QString error;
        QVERIFY2(m_pulse.start(&error), qPrintable(error));
        QVERIFY(QFile::exists(media("h264-aac-3s.mp4")));
    }

    void keysAloneRunTheShow()
    {
        QTemporaryDir home;
        AppProcess app(home);
        app.setDisplay(qEnvironmentVariable("DISPLAY"));
        app.setPulseServer(m_pulse.serverAddress());
        QVERIFY2(app.start(), qPrintable(app.console()));
        QVERIFY(QTest::qWaitFor([] { return mapState("TARNIX Controller") == "IsViewable"; }, 10000));
        // One screen: the program picture steps into a corner, the
        // controller window takes the screen and the keyboard.
        QVERIFY(app.ctl({R"({"action":"NextOutputDisplay"})"}).line.contains("Invoked"));
        const QString add = QStringLiteral(R"({"action":"AddFiles","args":[{"strings":["%1","%2"]}]})")
                                .arg(media("h264-aac-3s.mp4"), media("h264-aac.mp4"));
        QVERIFY(app.ctl({add}).line.contains("Invoked"));
        QVERIFY(QTest::qWaitFor(
            [&] {
                const QJsonArray items = app.ctl({"playlists"})
                                             .object()
                                             .value("playlists")
                                             .toArray()
                                             .at(0)
                                             .toObject()
                                             .value("items")
                                             .toArray();
                return items.size() == 2 && items.at(1).toObject().value("status") == "ready";
            },
            20000));
        // The second item repeats without end, so it plays for as long as
        // the test takes, however slow the machine.
        QVERIFY(app.ctl({R"({"action":"SetItemEndMode","args":[{"uint64":"2"},{"enum":"PlaylistEndMode","value":"repeat"}]})"})
                    .line.contains("Invoked"));
        const QString window = QString::number(topLevelWindowId("TARNIX Controller").toUInt(nullptr, 16));
        QVERIFY(xdotool({"windowmove", window, "0", "0"}));
        QVERIFY(xdotool({"windowsize", window, "1900", "1000"}));
        QVERIFY(xdotool({"windowraise", window}));
        QVERIFY(xdotool({"windowfocus", "--sync", window}));
        auto key = [&](const char *name) { return xdotool({"key", "--window", window, QString::fromLatin1(name)}); };

        QVERIFY(key("2"));
        QTRY_COMPARE_WITH_TIMEOUT(field(app, "selectedItemId").toInt(), 2, 5000);
        // The take waits for the program audio output to come up; the
        // operator would press again.
        QVERIFY(QTest::qWaitFor(
            [&] {
                if (field(app, "onAirItemId").toInt() == 2)
                    return true;
                key("Return");
                return QTest::qWaitFor([&] { return field(app, "onAirItemId").toInt() == 2; }, 1000);
            },
            20000));
        // Added files wait at their start; Space plays, pauses and plays.
        QVERIFY(!field(app, "programPlaying").toBool());
        QVERIFY(key("space"));
        QTRY_VERIFY_WITH_TIMEOUT(field(app, "programPlaying").toBool(), 5000);
        QVERIFY(key("space"));
        QTRY_VERIFY_WITH_TIMEOUT(!field(app, "programPlaying").toBool(), 5000);
        QVERIFY(key("space"));
        QTRY_VERIFY_WITH_TIMEOUT(field(app, "programPlaying").toBool(), 5000);
        QVERIFY(key("shift+f"));
        QTRY_VERIFY_WITH_TIMEOUT(field(app, "ftbActive").toBool(), 5000);
        QVERIFY(key("shift+f"));
        QTRY_VERIFY_WITH_TIMEOUT(!field(app, "ftbActive").toBool(), 5000);

        // Typing into the playlist name field is typing, not the show.
        // The field sits below the menu bar and the playlist tabs; 74 px down
        // is its middle in the default skin at an interface scale of 1.0.
        const QRect controller = windowGeometry("TARNIX Controller");
        QVERIFY(xdotool({"mousemove", QString::number(controller.x() + 150), QString::number(controller.y() + 74),
                         "click", "1"}));
        QVERIFY(key("1"));
        QVERIFY(key("space"));
        QTest::qWait(300);  // nothing is expected to happen: give it the chance
        QCOMPARE(field(app, "selectedItemId").toInt(), 2);
        QVERIFY(field(app, "programPlaying").toBool());
        QVERIFY(xdotool({"key", "--window", window, "Tab"}));
        // ...and the field took the keys.
        QTRY_COMPARE_WITH_TIMEOUT(
            app.ctl({"playlists"}).object().value("playlists").toArray().at(0).toObject().value("name").toString(),
            QStringLiteral("1 "), 5000);

        QVERIFY(xdotool({"mousemove", QString::number(controller.x() + 400), QString::number(controller.y() + 400),
                         "click", "1"}));
        QVERIFY(key("Escape"));
        QTRY_VERIFY_WITH_TIMEOUT(field(app, "onAirItemId").isNull(), 5000);
        const QStringList log = app.logMessages();
        QVERIFY(!log.filter(QRegularExpression("^OP request id=\\d+ action=ToggleFtb .* source=Shortcut ")).isEmpty());
        QCOMPARE(app.terminate(), 0);
    }
};

QTEST_GUILESS_MAIN(TestKeyboardShow)
#include "tst_keyboard_show.moc"
