// The health figures of the composition: in process, with short intervals,
// over the control socket and in the HEALTH record.

#include "MainController.h"
#include "kit/log_capture.h"
#include "playlist/playlist_records.h"
#include "shell/log_test_helpers.h"

#include <QApplication>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLocalSocket>
#include <QTemporaryDir>
#include <QWidget>
#include <QtTest>

#include <gst/gst.h>

using namespace tarnix;
using namespace std::chrono_literals;

namespace {

const QStringList kKeys{"uptimeMs",        "renders5s",         "presents5s", "largestRenderGapMs",
                        "mailboxMisses",   "retainedPipelines", "logRecordsDropped",
                        "rssBytes",        "openFds",           "threads",    "operatorWarnings"};

QByteArray ask(QLocalSocket &client, const QByteArray &line)
{
    client.write(line + '\n');
    if (!QTest::qWaitFor([&] { return client.canReadLine(); }, 5000))
        return {};
    return client.readLine().trimmed();
}

} // namespace

class TestAppHealth : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        gst_init(nullptr, nullptr);
        registerPlaylistMetaTypes();
    }

    void queryAndRecordInProcess()
    {
        testkit::LogCapture::Options only = testkit::LogCapture::category(QStringLiteral("SYSTEM"));
        only.prefix = QStringLiteral("HEALTH ");
        testkit::LogCapture records(only);
        QTemporaryDir dir;
        QWidget programWindow;
        MainControllerOptions options;
        options.programOutputSize = QSize(320, 180);
        options.programAudioSinkFactory = QStringLiteral("fakesink sync=true");
        options.previousSessionPath = dir.filePath("previous-session.json");
        options.healthSampleInterval = 100ms;
        options.healthRecordInterval = 300ms;
        MainController controller(&programWindow, nullptr, false, nullptr, options);
        QVERIFY(controller.programPlayerAvailable());
        QVERIFY(controller.startControlSocket(dir.filePath("control.sock")));
        QLocalSocket client;
        client.connectToServer(dir.filePath("control.sock"));
        QVERIFY(client.waitForConnected(5000));

        QCOMPARE(test::topLevelKeysInOrder(ask(client, R"({"query":"health"})")), kKeys);
        // A second of a running picture, with /proc read.
        QJsonObject figures;
        QVERIFY(QTest::qWaitFor(
            [&] {
                figures = QJsonDocument::fromJson(ask(client, R"({"query":"health"})")).object();
                return figures.value("uptimeMs").toInteger() > 1500 && !figures.value("threads").isNull();
            },
            20000));
        const qint64 renders = figures.value("renders5s").toInteger();
        QVERIFY2(renders > 0 && renders <= 360, qPrintable(QString::number(renders)));
        QVERIFY(figures.value("largestRenderGapMs").toInteger(-1) >= 0);
        QVERIFY(figures.value("rssBytes").toInteger() > 10 * 1024 * 1024);
        QVERIFY(figures.value("openFds").toInteger() > 2 && figures.value("threads").toInteger() > 1);
        QVERIFY(figures.value("retainedPipelines").isObject());

        QTRY_VERIFY_WITH_TIMEOUT(records.count(QStringLiteral("HEALTH ")) >= 2, 5000);
        QCOMPARE(test::topLevelKeysInOrder(records.texts().first().mid(7).toUtf8()), kKeys);
    }
};

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    TestAppHealth test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_app_health.moc"
