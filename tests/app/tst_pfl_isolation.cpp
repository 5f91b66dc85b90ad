// The PFL helper can die, be killed or run out of memory while a show is ON
// AIR: the program sound and picture go on untouched, the operator is told,
// and the helper never outlives the application. From the outside: the
// built application with a sound server of its own, driven through
// tarnixctl, with the program sink's monitor recorded the whole time.

#include "app_process.h"

#include "support/private_pulse_audio.h"
#include "support/test_paths.h"

#include <QJsonArray>
#include <QtTest>

#include <cmath>
#include <csignal>
#include <cstring>

using namespace tarnix::test;

namespace {

const QString kFailureText =
    QStringLiteral("PFL output is unavailable. Check the selected device, then turn PFL on again.");

QString media(const char *name) { return QStringLiteral(TARNIX_TEST_MEDIA_DIR "/") + QString::fromLatin1(name); }

// A clip that outlasts the test: a steady tone never silent for more than
// a sample, so any silence on the program sink is a gap.
bool writeLongClip(const QString &path)
{
    QProcess ffmpeg;
    ffmpeg.start(QStringLiteral("ffmpeg"),
                 {"-hide_banner", "-loglevel", "error", "-y", "-f", "lavfi", "-i",
                  "testsrc2=size=320x180:rate=30:duration=60", "-f", "lavfi", "-i",
                  "sine=frequency=997:sample_rate=48000:duration=60", "-c:v", "libx264", "-preset", "ultrafast",
                  "-pix_fmt", "yuv420p", "-c:a", "aac", "-shortest", path});
    return ffmpeg.waitForFinished(120000) && ffmpeg.exitCode() == 0;
}

// The application's PFL helper that plays (not one listing devices), or 0.
qint64 playingHelper(qint64 applicationPid)
{
    const QStringList entries = QDir(QStringLiteral("/proc")).entryList(QDir::Dirs);
    for (const QString &entry : entries) {
        bool number = false;
        const qint64 pid = entry.toLongLong(&number);
        if (!number)
            continue;
        QFile stat(QStringLiteral("/proc/%1/stat").arg(pid));
        if (!stat.open(QIODevice::ReadOnly))
            continue;
        const QByteArray line = stat.readAll();
        const QList<QByteArray> fields = line.mid(line.lastIndexOf(')') + 2).split(' ');
        if (fields.size() < 2 || fields.at(0) == "Z" || fields.at(1).toLongLong() != applicationPid)
            continue;
        QFile command(QStringLiteral("/proc/%1/cmdline").arg(pid));
        if (command.open(QIODevice::ReadOnly) && command.readAll().contains("/tarnix-edit-pfl-"))
            return pid;
    }
    return 0;
}

bool alive(qint64 pid)
{
    QFile stat(QStringLiteral("/proc/%1/stat").arg(pid));
    if (!stat.open(QIODevice::ReadOnly))
        return false;
    const QByteArray line = stat.readAll();
    return !line.mid(line.lastIndexOf(')') + 2).startsWith('Z');
}

void writeFile(const QString &path, const QByteArray &bytes)
{
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write(bytes);
}

bool invoked(const AppProcess &app, const QString &request) { return app.ctl({request}).line.contains("Invoked"); }

QJsonArray items(const AppProcess &app)
{
    return app.ctl({"playlists"}).object().value("playlists").toArray().at(0).toObject().value("items").toArray();
}

// The longest run of frames where both channels are silent, in frames,
// counted from the first sound to the end.
qsizetype longestSilence(const QByteArray &pcm)
{
    const auto *samples = reinterpret_cast<const float *>(pcm.constData());
    const qsizetype frames = pcm.size() / qsizetype(2 * sizeof(float));
    qsizetype frame = 0;
    while (frame < frames && std::abs(samples[2 * frame]) < 0.01f)
        ++frame;
    qsizetype longest = 0;
    qsizetype run = 0;
    for (; frame < frames; ++frame) {
        const bool silent = std::abs(samples[2 * frame]) < 1e-4f && std::abs(samples[2 * frame + 1]) < 1e-4f;
        run = silent ? run + 1 : 0;
        longest = std::max(longest, run);
    }
    return longest;
}

} // namespace

class TestPflIsolation : public QObject
{
    Q_OBJECT

    PrivatePulseAudio m_pulse;
    QTemporaryDir m_media;

    // The application with ON AIR on the sink "onair" and PFL on "other".
    void prepareHome(AppProcess &app)
    {
        writeFile(app.dataDirectory() + "/user.ini",
                  "[audio]\nprogramOutputDeviceId=onair\neditPflOutputDeviceId=other\n");
        app.setPulseServer(m_pulse.serverAddress());
    }

    // Adds the files and waits until they are ready to play.
    static bool addFiles(const AppProcess &app, const QStringList &files)
    {
        const QString add = QStringLiteral(R"({"action":"AddFiles","args":[{"strings":["%1"]}]})")
                                .arg(files.join(QStringLiteral("\",\"")));
        return invoked(app, add) && QTest::qWaitFor(
                                        [&] {
                                            const QJsonArray list = items(app);
                                            if (list.size() != files.size())
                                                return false;
                                            for (const QJsonValue &item : list)
                                                if (item.toObject().value("status") != "ready")
                                                    return false;
                                            return true;
                                        },
                                        20000);
    }

    // Two seconds without a word from the program output about underflows
    // or a stalled receiver.
    static bool soundSettled(const AppProcess &app)
    {
        QElapsedTimer quiet;
        quiet.start();
        qsizetype complaints = -1;
        return QTest::qWaitFor(
            [&] {
                const qsizetype now = app.logMessages().filter(QRegularExpression("underflow|receiver stalled")).size();
                if (now != complaints) {
                    complaints = now;
                    quiet.restart();
                }
                return quiet.elapsed() >= 2000;
            },
            20000);
    }

    static bool loadInEditAndListen(const AppProcess &app, int itemId)
    {
        return invoked(app, QStringLiteral(R"({"action":"SelectItem","args":[{"uint64":"%1"}]})").arg(itemId))
               && invoked(app, R"({"action":"EditLoadSelected"})")
               && QTest::qWaitFor([&] { return app.state().value("editItemId").toInt() == itemId; }, 10000)
               && invoked(app, R"({"action":"TogglePfl"})")
               && QTest::qWaitFor([&] { return app.state().value("pflOn").toBool(); }, 10000);
    }

private slots:
    void initTestCase()
    {
        QString error;
        QVERIFY2(m_pulse.start(&error), qPrintable(error));
        QVERIFY(writeLongClip(m_media.filePath("tone-60s.mp4")));
    }

    // A helper killed outright and one that allocates without bound: the
    // program sink never falls silent, the picture keeps its pace, the
    // operator reads why PFL stopped, and nothing in the playlist moves.
    void helperFaultsLeaveTheProgramAlone()
    {
        QTemporaryDir home;
        AppProcess app(home);
        prepareHome(app);
        const QString faultFile = home.filePath("pfl-fault");
        writeFile(faultFile, "none\n");
        app.setEnvironmentValue("TARNIX_TEST_PFL_HELPER", QStringLiteral(TARNIX_FAULTY_PFL_HELPER));
        app.setEnvironmentValue("TARNIX_PFL_HELPER_FAULT_FILE", faultFile);
        QVERIFY2(app.start(), qPrintable(app.console()));
        QVERIFY(addFiles(app, {m_media.filePath("tone-60s.mp4"), media("h264-aac-25fps-12s.mp4")}));

        QVERIFY(invoked(app, R"({"action":"SelectItem","args":[{"uint64":"1"}]})"));
        // The take waits for the program audio output to come up.
        QVERIFY(QTest::qWaitFor(
            [&] {
                invoked(app, R"({"action":"TakeSelectedOnAir"})");
                return QTest::qWaitFor([&] { return app.state().value("onAirItemId").toInt() == 1; }, 1000);
            },
            20000));
        // Added files wait at their start; the play waits for the take's
        // preparation to finish.
        QVERIFY(QTest::qWaitFor(
            [&] {
                if (!app.state().value("programPlaying").toBool())
                    invoked(app, R"({"action":"ProgramPlay"})");
                return QTest::qWaitFor([&] { return app.state().value("programPlaying").toBool(); }, 1000);
            },
            10000));

        // The faults are judged against a program sound that has settled:
        // the first start of the program output resyncs for a few seconds.
        QElapsedTimer settling;
        settling.start();
        if (!soundSettled(app)) {
            const QStringList complaints = app.logMessages().filter(QRegularExpression("underflow|receiver stalled"));
            QFAIL(qPrintable(QStringLiteral("the program sound never settled; %1 complaints, the last: %2")
                                 .arg(complaints.size())
                                 .arg(complaints.mid(std::max<qsizetype>(0, complaints.size() - 4)).join(" | "))));
        }
        qInfo("program sound settled %lld ms after the play, %lld complaints", settling.elapsed() - 2000,
              qint64(app.logMessages().filter(QRegularExpression("underflow|receiver stalled")).size()));
        QProcess recorder;
        recorder.setProcessEnvironment(app.environment());
        // Straight to a file: the recording never waits for this process.
        const QString recording = home.filePath("program.raw");
        recorder.start(QStringLiteral("sh"),
                       {"-c", "exec parec --device=onair.monitor --format=float32le --channels=2 --rate=48000 --raw "
                              "--latency-msec=200 > '" + recording + "'"});
        QVERIFY(recorder.waitForStarted(5000));
        QElapsedTimer watched;
        watched.start();

        QVERIFY(loadInEditAndListen(app, 2));
        const qint64 killed = playingHelper(app.processId());
        QVERIFY(killed > 0);
        QElapsedTimer told;
        told.start();
        ::kill(pid_t(killed), SIGKILL);
        QTRY_VERIFY_WITH_TIMEOUT(app.logContains(kFailureText), 5000);
        qInfo("killed helper: told after %lld ms", told.elapsed());
        QTRY_VERIFY_WITH_TIMEOUT(!app.state().value("pflOn").toBool(), 5000);

        // Out of memory: the helper's data limit ends it, not the machine's.
        writeFile(faultFile, "greedy\n");
        const int failures = app.logMessages().filter(kFailureText).size();
        told.restart();
        QVERIFY(invoked(app, R"({"action":"TogglePfl"})"));
        QTRY_VERIFY_WITH_TIMEOUT(app.logMessages().filter(kFailureText).size() > failures, 10000);
        qInfo("greedy helper: told after %lld ms", told.elapsed());
        QTRY_COMPARE_WITH_TIMEOUT(playingHelper(app.processId()), 0, 5000);

        // Five seconds of program after the last fault, then the figures.
        QTest::qWait(int(std::max<qint64>(0, 6000 - told.elapsed())));
        QElapsedTimer asked;
        asked.start();
        const QJsonObject health = app.ctl({"health"}).object();
        QVERIFY(!health.isEmpty());
        qInfo("health answered in %lld ms: renders5s %lld, largest render gap %lld ms", asked.elapsed(),
              health.value("renders5s").toInteger(), health.value("largestRenderGapMs").toInteger());
        QVERIFY2(health.value("renders5s").toInteger() >= 297, qPrintable(QJsonDocument(health).toJson()));

        ::kill(pid_t(recorder.processId()), SIGTERM);
        QVERIFY(recorder.waitForFinished(5000));
        QFile recorded(recording);
        QVERIFY(recorded.open(QIODevice::ReadOnly));
        const QByteArray pcm = recorded.readAll();
        const qsizetype silence = longestSilence(pcm);
        qInfo("program sink: %.1f s recorded, longest silence %lld frames", double(pcm.size()) / 384000.0,
              qint64(silence));
        QVERIFY(pcm.size() > qsizetype(watched.elapsed() - 2000) * 384);
        QVERIFY2(silence <= 2, qPrintable(QString::number(silence)));

        const QJsonObject state = app.state();
        QCOMPARE(state.value("onAirItemId").toInt(), 1);
        QVERIFY(state.value("programPlaying").toBool());
        QCOMPARE(items(app).size(), 2);
        QCOMPARE(app.terminate(), 0);
    }

    // The helper ends with the application, however the application ends.
    void applicationKilledTakesTheHelperAlong()
    {
        QTemporaryDir home;
        AppProcess app(home);
        prepareHome(app);
        QVERIFY2(app.start(), qPrintable(app.console()));
        QVERIFY(addFiles(app, {media("h264-aac-25fps-12s.mp4")}));
        QVERIFY(loadInEditAndListen(app, 1));
        const qint64 helper = playingHelper(app.processId());
        QVERIFY(helper > 0);
        app.kill();
        QTRY_VERIFY_WITH_TIMEOUT(!alive(helper), 5000);
    }
};

QTEST_GUILESS_MAIN(TestPflIsolation)
#include "tst_pfl_isolation.moc"
