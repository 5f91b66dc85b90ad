// Start-up decisions that do not need a running application: profile,
// portable mode, settings path, window system, GStreamer runtime location,
// add-on resume, command line and the diagnostics records.

#include "shell/addon_resume.h"
#include "shell/application_identity.h"
#include "shell/command_line.h"
#include "shell/gstreamer_runtime.h"
#include "shell/ordered_json.h"
#include "shell/startup_diagnostics.h"
#include "shell/window_system.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLockFile>
#include <QProcess>
#include <QSettings>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QtTest>

using namespace tarnix;

namespace {

void writeFile(const QString &path, const QByteArray &content)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(content);
}

struct RecordingPresenter : StartupMessagePresenter {
    struct Box {
        QString kind, objectName, title, text;
    };
    QList<Box> boxes;
    void showWarning(const QString &o, const QString &t, const QString &x) override
    {
        boxes.append({QStringLiteral("warning"), o, t, x});
    }
    void showInformation(const QString &o, const QString &t, const QString &x) override
    {
        boxes.append({QStringLiteral("information"), o, t, x});
    }
};

QJsonObject parseRecord(const QString &record)
{
    QJsonParseError error;
    const QJsonDocument doc = QJsonDocument::fromJson(record.toUtf8(), &error);
    if (error.error != QJsonParseError::NoError)
        qWarning() << "not JSON:" << record;
    return doc.object();
}

QStringList keysInOrder(const QString &record)
{
    // Keys as they appear in the text, to check the written order.
    QStringList keys;
    static const QRegularExpression key(QStringLiteral("\"([A-Za-z0-9]+)\":"));
    auto it = key.globalMatch(record);
    while (it.hasNext())
        keys << it.next().captured(1);
    return keys;
}

} // namespace

class TestStartup : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QStandardPaths::setTestModeEnabled(true); }

    void productProfile_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<bool>("present");
        QTest::addColumn<QString>("profile");
        QTest::newRow("missing") << QByteArray() << false << "TARNIX3-Dev";
        QTest::newRow("exact") << QByteArray("TARNIX3") << true << "TARNIX3";
        QTest::newRow("trailing line break") << QByteArray("TARNIX3\n") << true << "TARNIX3";
        QTest::newRow("surrounding blanks") << QByteArray("  TARNIX3\r\n") << true << "TARNIX3";
        QTest::newRow("lower case") << QByteArray("tarnix3\n") << true << "TARNIX3-Dev";
        QTest::newRow("other word") << QByteArray("TARNIX") << true << "TARNIX3-Dev";
        QTest::newRow("empty") << QByteArray() << true << "TARNIX3-Dev";
    }
    void productProfile()
    {
        QFETCH(QByteArray, content);
        QFETCH(bool, present);
        QFETCH(QString, profile);
        QTemporaryDir dir;
        if (present)
            writeFile(dir.filePath("tarnix-distribution.txt"), content);
        QCOMPARE(tarnix::productProfile(dir.path()), profile);
    }

    void portableMode()
    {
        QTemporaryDir dir;
        QVERIFY(!portableModeRequested({"tarnix"}, dir.path()));
        QVERIFY(portableModeRequested({"tarnix", "--program-output-4k", "--portable"}, dir.path()));
        QVERIFY(!portableModeRequested({"tarnix", "--Portable", "-portable"}, dir.path()));
        writeFile(dir.filePath("portable_mode.txt"), "");
        QVERIFY(portableModeRequested({"tarnix"}, dir.path()));
        QFile::remove(dir.filePath("portable_mode.txt"));
        QDir(dir.path()).mkdir("portable_mode");
        QVERIFY(portableModeRequested({"tarnix"}, dir.path()));
    }

    void settingsPath()
    {
        QTemporaryDir dir;
        QCOMPARE(computeSettingsFilePath("TARNIX3", true, dir.path()),
                 dir.filePath("config/TARNIX3/user.ini"));
        const QString nonPortable = computeSettingsFilePath("TARNIX3-Dev", false, dir.path());
        QCOMPARE(QFileInfo(nonPortable).fileName(), QStringLiteral("user.ini"));
        QCOMPARE(QFileInfo(nonPortable).absolutePath(),
                 QStandardPaths::writableLocation(QStandardPaths::AppDataLocation));

        // The published property wins; without it Linux takes the data location.
        qApp->setProperty("tarnix.settingsFile", QVariant());
        QCOMPARE(settingsFilePath(), computeSettingsFilePath(
                     tarnix::productProfile(QCoreApplication::applicationDirPath()), false,
                     QCoreApplication::applicationDirPath()));
        publishSettingsLocation(dir.filePath("x.ini"), true);
        QCOMPARE(settingsFilePath(), dir.filePath("x.ini"));
        QCOMPARE(qApp->property("tarnix.portableMode").toBool(), true);
        {
            auto settings = openSettings();
            QCOMPARE(settings->format(), QSettings::IniFormat);
            settings->setValue("video/programOutput4k", true);
        }
        QVERIFY(QFileInfo::exists(dir.filePath("x.ini")));
        qApp->setProperty("tarnix.settingsFile", QVariant());
    }

    void windowSystem_data()
    {
        QTest::addColumn<QString>("qpa");
        QTest::addColumn<QString>("display");
        QTest::addColumn<QString>("wayland");
        QTest::addColumn<QString>("platform");
        QTest::newRow("explicit wins") << "xcb" << "" << "" << "";
        QTest::newRow("no display") << "" << "" << "" << "offscreen";
        QTest::newRow("x11") << "" << ":0" << "" << "";
        QTest::newRow("wayland") << "" << "" << "wayland-0" << "xcb";
        QTest::newRow("wayland with xwayland") << "" << ":0" << "wayland-0" << "xcb";
    }
    void windowSystem()
    {
        QFETCH(QString, qpa);
        QFETCH(QString, display);
        QFETCH(QString, wayland);
        QFETCH(QString, platform);
        const WindowSystemChoice choice = chooseWindowSystem(qpa, display, wayland);
        QCOMPARE(choice.platform, platform);
        QVERIFY(!choice.reason.isEmpty());
    }

    void gstreamerRuntime()
    {
        // The development profile uses the system runtime this test runs on.
        const GStreamerRuntimeLocation system = locateGStreamerRuntime(QDir::tempPath(), "TARNIX3-Dev");
        QVERIFY2(system.found, qPrintable(system.description));
        QVERIFY(QFileInfo(system.pluginDirectory).isDir());

        // A distribution profile only accepts the tree beside the executable,
        // even though a system runtime exists.
        QTemporaryDir dir;
        const GStreamerRuntimeLocation missing = locateGStreamerRuntime(dir.path(), "TARNIX3");
        QVERIFY(!missing.found);

        writeFile(dir.filePath("gstreamer/lib/libgstreamer-1.0.so.0"), "");
        const QByteArray savedSystem = qgetenv("GST_PLUGIN_SYSTEM_PATH_1_0");
        const QByteArray savedScanner = qgetenv("GST_PLUGIN_SCANNER");
        const GStreamerRuntimeLocation bundled = locateGStreamerRuntime(dir.path(), "TARNIX3");
        QVERIFY(bundled.found);
        QCOMPARE(QString::fromLocal8Bit(qgetenv("GST_PLUGIN_SYSTEM_PATH_1_0")),
                 dir.filePath("gstreamer/lib/gstreamer-1.0"));
        QVERIFY(qEnvironmentVariableIsSet("GST_PLUGIN_PATH_1_0"));
        QVERIFY(qEnvironmentVariableIsEmpty("GST_PLUGIN_PATH_1_0"));
        QCOMPARE(QString::fromLocal8Bit(qgetenv("GST_PLUGIN_SCANNER")),
                 dir.filePath("gstreamer/libexec/gstreamer-1.0/gst-plugin-scanner"));
        qputenv("GST_PLUGIN_SYSTEM_PATH_1_0", savedSystem);
        qputenv("GST_PLUGIN_SCANNER", savedScanner);
        qunsetenv("GST_PLUGIN_PATH_1_0");
    }

    void addonResume_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<bool>("pendingJob");
        QTest::addColumn<bool>("lockHeld");
        QTest::addColumn<bool>("managerStarts");
        QTest::addColumn<bool>("continueStart");
        QTest::addColumn<int>("exitCode");
        QTest::addColumn<QStringList>("boxes");  // kind:text prefix

        const QStringList none;
        QTest::newRow("nothing pending") << QStringList{"tarnix"} << false << false << true << true << 0 << none;
        QTest::newRow("pending job, manager missing")
            << QStringList{"tarnix"} << true << false << false << false << 1
            << QStringList{"warning:The add-on changes could not be completed: "};
        QTest::newRow("pending job, manager started")
            << QStringList{"tarnix", "--portable"} << true << false << true << false << 0
            << QStringList{"information:Add-on changes are being completed."};
        QTest::newRow("restart error, no jobs: shown, start goes on")
            << QStringList{"tarnix", "--addon-restart-error=first", "--addon-restart-error=last"} << false << false << true
            << true << 0 << QStringList{"warning:The add-on changes could not be completed: last"};
        QTest::newRow("restart error with jobs ends the process")
            << QStringList{"tarnix", "--addon-restart-error=boom"} << true << false << true << false << 1
            << QStringList{"warning:The add-on changes could not be completed: boom"};
        QTest::newRow("lock held by manager hands over")
            << QStringList{"tarnix"} << false << true << true << false << 0
            << QStringList{"information:Add-on changes"};
        QTest::newRow("lock held but restart complete")
            << QStringList{"tarnix", "--addon-restart-complete"} << false << true << true << true << 0 << none;
    }
    void addonResume()
    {
        QFETCH(QStringList, arguments);
        QFETCH(bool, pendingJob);
        QFETCH(bool, lockHeld);
        QFETCH(bool, managerStarts);
        QFETCH(bool, continueStart);
        QFETCH(int, exitCode);
        QFETCH(QStringList, boxes);

        QTemporaryDir state;
        if (pendingJob)
            writeFile(state.filePath("0001.job.json"), "{}");
        writeFile(state.filePath("notes.json"), "{}");  // not a job

        // A lock held by another live process: the lock file names a running
        // child, which QLockFile recognises as a holder other than us.
        QProcess holder;
        if (lockHeld) {
            holder.start("sleep", {"30"});
            QVERIFY(holder.waitForStarted());
            writeFile(state.filePath("restart.lock"),
                      QByteArray::number(holder.processId()) + "\nsleep\n"
                          + QSysInfo::machineHostName().toUtf8() + "\n");
        }
        QStringList started;
        AddonResumeContext context;
        context.arguments = arguments;
        context.stateDirectory = state.path();
        context.managerProgram = "/nonexistent/tarnix-addon-manager";
        context.workingDirectory = QDir::currentPath();
        context.startManager = [&](const QString &program, const QStringList &args, const QString &, QString *error) {
            started << program << args;
            if (!managerStarts)
                *error = QStringLiteral("%1 is missing").arg(program);
            return managerStarts;
        };
        RecordingPresenter presenter;
        const AddonResumeDecision decision = resumeAddonJobs(context, presenter);
        QCOMPARE(decision.continueStart, continueStart);
        QCOMPARE(decision.exitCode, exitCode);
        QCOMPARE(presenter.boxes.size(), boxes.size());
        for (int i = 0; i < boxes.size(); ++i) {
            const QString expectedKind = boxes[i].section(':', 0, 0);
            const QString expectedText = boxes[i].section(':', 1);
            QCOMPARE(presenter.boxes[i].kind, expectedKind);
            QCOMPARE(presenter.boxes[i].objectName, QStringLiteral("addonStartupDialog"));
            QCOMPARE(presenter.boxes[i].title, QStringLiteral("Add-ons"));
            QVERIFY2(presenter.boxes[i].text.startsWith(expectedText), qPrintable(presenter.boxes[i].text));
        }
        if (!started.isEmpty())
            QCOMPARE(started.mid(1), arguments.mid(1));
        if (lockHeld) {
            holder.kill();
            holder.waitForFinished();
        }
    }

    void commandLine()
    {
        CommandLine commandLine;
        commandLine.parse({"tarnix", "--gst-debug-level=2", "--program-output-4k", "--help"});
        QVERIFY(commandLine.helpRequested());
        QVERIFY(commandLine.programOutput4kRequested());
        const QString help = commandLine.helpText();
        QVERIFY(help.contains("--portable"));
        QVERIFY(help.contains("--program-output-4k"));
        QVERIFY(!help.contains("addon-restart"));

        CommandLine plain;
        plain.parse({"tarnix", "--addon-restart-error=x y"});
        QVERIFY(!plain.helpRequested());
        QCOMPARE(plain.parser.value(plain.addonRestartError), QStringLiteral("x y"));
    }

    void orderedJson()
    {
        const QString record = OrderedJsonObject()
                                   .add("zeta", "a\"b\\c\nd\te\x01")
                                   .add("alpha", true)
                                   .add("mid", qint64(-5))
                                   .add("list", QStringList{"x", "ü"})
                                   .toString();
        QCOMPARE(keysInOrder(record), (QStringList{"zeta", "alpha", "mid", "list"}));
        const QJsonObject object = parseRecord(record);
        QCOMPARE(object.value("zeta").toString(), QString::fromUtf8("a\"b\\c\nd\te\x01"));
        QCOMPARE(object.value("mid").toInt(), -5);
        QCOMPARE(object.value("list").toArray().at(1).toString(), QString::fromUtf8("ü"));
    }

    void diagnosticRecords()
    {
        QTemporaryDir dir;
        const QString settingsPath = dir.filePath("user.ini");
        {
            QSettings settings(settingsPath, QSettings::IniFormat);
            settings.setValue("video/programOutput4k", true);
            settings.setValue("appearance/controllerSkin", "hardware");
            settings.setValue("testPatterns/entries", QStringList{"/a.png", "/b \"q\".png"});
        }

        StartupDiagnosticsInput input;
        input.phase = kPhaseBeforeSettings;
        input.executablePath = QCoreApplication::applicationFilePath();
        input.workingDirectory = QDir::currentPath();
        input.logDirectory = "/logs";
        input.appLocalData = "/data";
        input.settingsFile = settingsPath;
        input.portable = true;

        const QStringList first = startupDiagnosticRecords(input);
        QStringList kinds;
        for (const QString &record : first)
            kinds << parseRecord(record).value("kind").toString();
        QCOMPARE(kinds.first(), QStringLiteral("process"));
        QCOMPARE(kinds.mid(1, 2), (QStringList{"settings-source", "settings-file"}));
        QCOMPARE(kinds.count("settings-read"), 3);
        QCOMPARE(kinds.at(6), QStringLiteral("settings-read-complete"));
        QVERIFY(kinds.count("loaded-module") > 3);

        QCOMPARE(keysInOrder(first[0]), (QStringList{"kind", "executable", "executableSha256", "hashSucceeded",
                                                     "workingDirectory", "logDirectory", "appLocalData"}));
        const QJsonObject process = parseRecord(first[0]);
        QVERIFY(process.value("hashSucceeded").toBool());
        QCOMPARE(process.value("executableSha256").toString().size(), 64);

        const QJsonObject file = parseRecord(first[2]);
        QVERIFY(file.value("exists").toBool());
        QVERIFY(file.value("opened").toBool());
        QCOMPARE(QFileInfo(file.value("openedFilePath").toString()).canonicalFilePath(),
                 QFileInfo(settingsPath).canonicalFilePath());
        QCOMPARE(file.value("sha256").toString().size(), 64);

        bool sawList = false;
        for (const QString &record : first) {
            const QJsonObject object = parseRecord(record);
            const QString kind = object.value("kind").toString();
            if (kind == "settings-read" || kind == "loaded-module")
                QCOMPARE(object.value("phase").toString(), QStringLiteral("before-settings-initialization"));
            if (object.value("key").toString() == "testPatterns/entries") {
                sawList = true;
                QCOMPARE(object.value("value").toArray().at(1).toString(), QStringLiteral("/b \"q\".png"));
            }
            if (object.value("key").toString() == "video/programOutput4k")
                QCOMPARE(object.value("value").toString(), QStringLiteral("true"));
        }
        QVERIFY(sawList);

        // The second phase has no process record, and a missing file is reported.
        input.phase = kPhaseControllerReady;
        input.settingsFile = dir.filePath("missing.ini");
        const QStringList second = startupDiagnosticRecords(input);
        QCOMPARE(parseRecord(second[0]).value("kind").toString(), QStringLiteral("settings-source"));
        const QJsonObject missing = parseRecord(second[1]);
        QVERIFY(!missing.value("exists").toBool());
        QVERIFY(!missing.value("opened").toBool());
        QVERIFY(!missing.value("error").toString().isEmpty());
        QVERIFY(!missing.contains("sha256"));
        QCOMPARE(parseRecord(second.last()).value("phase").toString(), QStringLiteral("controller-ready"));
    }
};

QTEST_MAIN(TestStartup)
#include "tst_startup.moc"
