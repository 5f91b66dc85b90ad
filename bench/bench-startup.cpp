// Start-up time of the application: from process start to the
// "controller-ready" diagnostics record, and to the first state query
// answered on the control socket. Each run has a home of its own (settings,
// log, data), no display (offscreen) and no sound server.
//
//   bench-startup [--runs N] [--size WxH] [--tarnix PATH]
//
// Target: median under 1 s for both.

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLocalSocket>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <vector>

namespace {

struct Sample {
    qint64 readyMs = -1;  // by the record's own time stamp
    qint64 stateMs = -1;  // when the answer arrived here
    qint64 stopMs = -1;   // SIGTERM to exit
};

// The controller-ready record's time, in ms since the epoch; -1 while absent.
qint64 controllerReadyTime(const QString &logDirectory)
{
    const QStringList files = QDir(logDirectory).entryList({QStringLiteral("tarnix-*.jsonl")}, QDir::Files);
    for (const QString &name : files) {
        QFile file(QDir(logDirectory).filePath(name));
        if (!file.open(QIODevice::ReadOnly))
            continue;
        for (const QByteArray &line : file.readAll().split('\n')) {
            if (!line.contains(R"(\"phase\":\"controller-ready\")"))
                continue;
            const QJsonObject record = QJsonDocument::fromJson(line).object();
            const QDateTime time =
                QDateTime::fromString(record.value(QStringLiteral("time")).toString(), Qt::ISODateWithMs);
            if (time.isValid())
                return time.toMSecsSinceEpoch();
        }
    }
    return -1;
}

bool stateAnswered(const QString &socketPath)
{
    QLocalSocket socket;
    socket.connectToServer(socketPath);
    if (!socket.waitForConnected(100))
        return false;
    socket.write("{\"query\":\"state\"}\n");
    socket.waitForBytesWritten(1000);
    QElapsedTimer wait;
    wait.start();
    while (!socket.canReadLine() && wait.elapsed() < 5000)
        socket.waitForReadyRead(50);
    return socket.canReadLine() && socket.readLine().startsWith("{\"selectedItemId\"");
}

bool runOnce(const QString &program, const QString &size, const QString &cache, Sample *sample)
{
    QTemporaryDir home;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    for (const char *name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM", "DBUS_SESSION_BUS_ADDRESS",
                             "GST_DEBUG", "GST_DEBUG_FILE"})
        env.remove(QString::fromLatin1(name));
    env.insert(QStringLiteral("HOME"), home.path());
    env.insert(QStringLiteral("XDG_DATA_HOME"), home.filePath(QStringLiteral("data")));
    env.insert(QStringLiteral("XDG_CONFIG_HOME"), home.filePath(QStringLiteral("config")));
    env.insert(QStringLiteral("XDG_RUNTIME_DIR"), home.filePath(QStringLiteral("runtime")));
    env.insert(QStringLiteral("PULSE_SERVER"), QStringLiteral("unix:") + home.filePath(QStringLiteral("no-pulse")));
    env.insert(QStringLiteral("DBUS_SYSTEM_BUS_ADDRESS"),
               QStringLiteral("unix:path=") + home.filePath(QStringLiteral("no-system-bus")));
    // One cache for every run: a start that scans every GStreamer plug-in
    // is the first start of an installation, not what an operator sees each
    // day (a warm-up run fills it).
    env.insert(QStringLiteral("XDG_CACHE_HOME"), cache);
    if (!size.isEmpty())
        env.insert(QStringLiteral("TARNIX_TEST_PROGRAM_OUTPUT_SIZE"), size);
    QDir().mkpath(home.filePath(QStringLiteral("runtime")));
    QFile::setPermissions(home.filePath(QStringLiteral("runtime")),
                          QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    const QString socketPath = home.filePath(QStringLiteral("control.sock"));
    const QString logDirectory = home.filePath(QStringLiteral("data/TARNIX3-Dev/logs"));

    QProcess process;
    process.setProcessEnvironment(env);
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.setStandardOutputFile(QProcess::nullDevice());
    const qint64 startEpoch = QDateTime::currentMSecsSinceEpoch();
    QElapsedTimer clock;
    clock.start();
    process.start(program, {QStringLiteral("--control-socket"), socketPath});
    if (!process.waitForStarted(10000))
        return false;
    while (clock.elapsed() < 30000 && process.state() == QProcess::Running && sample->stateMs < 0) {
        if (QFile::exists(socketPath) && stateAnswered(socketPath))
            sample->stateMs = clock.elapsed();
        else
            QThread::msleep(2);
    }
    while (clock.elapsed() < 30000 && sample->readyMs < 0) {
        const qint64 ready = controllerReadyTime(logDirectory);
        if (ready >= 0)
            sample->readyMs = ready - startEpoch;
        else
            QThread::msleep(5);
    }
    QElapsedTimer stop;
    stop.start();
    ::kill(pid_t(process.processId()), SIGTERM);
    const bool ended = process.waitForFinished(60000);
    sample->stopMs = stop.elapsed();
    return ended && process.exitCode() == 0 && sample->readyMs >= 0 && sample->stateMs >= 0;
}

qint64 median(std::vector<qint64> values)
{
    std::sort(values.begin(), values.end());
    return values.empty() ? -1 : values[values.size() / 2];
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    int runs = 10;
    QString size;
    QString program = QDir(QCoreApplication::applicationDirPath()).filePath(QStringLiteral("../bin/tarnix"));
    const QStringList arguments = app.arguments();
    for (int i = 1; i + 1 < arguments.size(); i += 2) {
        if (arguments[i] == QLatin1String("--runs"))
            runs = std::max(1, arguments[i + 1].toInt());
        else if (arguments[i] == QLatin1String("--size"))
            size = arguments[i + 1];
        else if (arguments[i] == QLatin1String("--tarnix"))
            program = arguments[i + 1];
    }
    if (!QFile::exists(program)) {
        std::fprintf(stderr, "bench-startup: %s not found; build the tarnix target first\n", qPrintable(program));
        return 2;
    }
    std::printf("bench-startup: %d starts of %s, program output %s, offscreen, no sound server\n", runs,
                qPrintable(QDir::cleanPath(program)), size.isEmpty() ? "1920x1080" : qPrintable(size));
    const QString cache = QDir(QCoreApplication::applicationDirPath()).filePath(QStringLiteral("bench-startup-cache"));
    {
        Sample warmUp;
        const bool ok = runOnce(program, size, cache, &warmUp);
        std::printf("  warm-up (fills the GStreamer registry cache): controller-ready %lld ms%s\n",
                    static_cast<long long>(warmUp.readyMs), ok ? "" : "  (failed)");
    }
    std::vector<qint64> ready;
    std::vector<qint64> state;
    std::vector<qint64> stop;
    for (int run = 0; run < runs; ++run) {
        Sample sample;
        const bool ok = runOnce(program, size, cache, &sample);
        std::printf("  run %2d: controller-ready %5lld ms, state answered %5lld ms, stop %5lld ms%s\n", run + 1,
                    static_cast<long long>(sample.readyMs), static_cast<long long>(sample.stateMs),
                    static_cast<long long>(sample.stopMs), ok ? "" : "  (failed)");
        std::fflush(stdout);
        if (!ok)
            continue;
        ready.push_back(sample.readyMs);
        state.push_back(sample.stateMs);
        stop.push_back(sample.stopMs);
    }
    if (ready.empty()) {
        std::printf("no successful start\n");
        return 1;
    }
    const qint64 readyMedian = median(ready);
    const qint64 stateMedian = median(state);
    std::printf("median controller-ready: %lld ms (target < 1000 ms) %s\n", static_cast<long long>(readyMedian),
                readyMedian < 1000 ? "OK" : "MISSED");
    std::printf("median state answered:   %lld ms (target < 1000 ms) %s\n", static_cast<long long>(stateMedian),
                stateMedian < 1000 ? "OK" : "MISSED");
    std::printf("median SIGTERM to exit:  %lld ms (no target; includes saving the previous session)\n",
                static_cast<long long>(median(stop)));
    return 0;
}
