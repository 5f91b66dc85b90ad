#include "support/private_pulse_audio.h"

#include <QDeadlineTimer>
#include <QFile>
#include <QProcessEnvironment>
#include <QThread>

#include <csignal>
#include <signal.h>
#include <sys/prctl.h>

namespace tarnix::test {

namespace {

QProcessEnvironment daemonEnvironment(const QString &directory)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const char *name : {"HOME", "XDG_RUNTIME_DIR", "XDG_CONFIG_HOME", "XDG_STATE_HOME",
                             "PULSE_RUNTIME_PATH", "PULSE_STATE_PATH"})
        environment.insert(QString::fromLatin1(name), directory);
    environment.remove(QStringLiteral("PULSE_SERVER"));
    environment.remove(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"));
    environment.remove(QStringLiteral("DISPLAY"));
    return environment;
}

} // namespace

PrivatePulseAudio::~PrivatePulseAudio()
{
    stop();
}

bool PrivatePulseAudio::start(QString *error)
{
    stop();
    m_directory = std::make_unique<QTemporaryDir>();
    if (!m_directory->isValid()) {
        *error = QStringLiteral("no temporary directory");
        return false;
    }
    if (!launch(error))
        return false;
    m_hadPreviousServer = qEnvironmentVariableIsSet("PULSE_SERVER");
    m_previousServer = qgetenv("PULSE_SERVER");
    qputenv("PULSE_SERVER", serverAddress().toUtf8());
    return true;
}

bool PrivatePulseAudio::launch(QString *error)
{
    const QString dir = m_directory->path();
    const QString sinkOptions = QStringLiteral("rate=48000 format=float32le channels=2");
    m_daemon = std::make_unique<QProcess>();
    m_daemon->setProcessEnvironment(daemonEnvironment(dir));
    m_daemon->setWorkingDirectory(dir);
    m_daemon->setStandardOutputFile(dir + QStringLiteral("/daemon.log"), QIODevice::Append);
    m_daemon->setStandardErrorFile(dir + QStringLiteral("/daemon.log"), QIODevice::Append);
    // The daemon goes with the test process even if the test crashes.
    m_daemon->setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGTERM); });
    m_daemon->start(
        QStringLiteral("pulseaudio"),
        {QStringLiteral("-n"), QStringLiteral("--daemonize=no"), QStringLiteral("--exit-idle-time=-1"),
         QStringLiteral("--use-pid-file=false"), QStringLiteral("--disallow-exit"),
         QStringLiteral("--log-target=stderr"), QStringLiteral("-L"),
         QStringLiteral("module-native-protocol-unix socket=%1/native auth-anonymous=1").arg(dir),
         QStringLiteral("-L"), QStringLiteral("module-null-sink sink_name=onair %1").arg(sinkOptions),
         QStringLiteral("-L"), QStringLiteral("module-null-sink sink_name=other %1").arg(sinkOptions)});
    if (!m_daemon->waitForStarted(5000)) {
        *error = QStringLiteral("pulseaudio did not start: %1").arg(m_daemon->errorString());
        return false;
    }
    const QDeadlineTimer deadline(10000);
    while (!deadline.hasExpired()) {
        if (m_daemon->state() != QProcess::Running)
            break;
        if (!pactl({QStringLiteral("info")}).isNull())
            return true;
        QThread::msleep(50);
    }
    *error = QStringLiteral("pulseaudio did not answer on %1").arg(serverAddress());
    stop();
    return false;
}

bool PrivatePulseAudio::restart(QString *error)
{
    if (!m_daemon || !m_directory) {
        *error = QStringLiteral("no daemon to restart");
        return false;
    }
    m_daemon->kill();
    m_daemon->waitForFinished(5000);
    m_daemon.reset();
    // The old socket file stays behind a killed daemon.
    QFile::remove(m_directory->path() + QStringLiteral("/native"));
    return launch(error);
}

void PrivatePulseAudio::stop()
{
    if (m_daemon) {
        m_daemon->terminate();
        if (!m_daemon->waitForFinished(5000)) {
            m_daemon->kill();
            m_daemon->waitForFinished(2000);
        }
        m_daemon.reset();
        if (m_hadPreviousServer)
            qputenv("PULSE_SERVER", m_previousServer);
        else
            qunsetenv("PULSE_SERVER");
    }
    m_directory.reset();
}

QString PrivatePulseAudio::serverAddress() const
{
    return m_directory ? QStringLiteral("unix:%1/native").arg(m_directory->path()) : QString();
}

QString PrivatePulseAudio::pactl(const QStringList &arguments) const
{
    QProcess process;
    process.start(QStringLiteral("pactl"),
                  QStringList{QStringLiteral("--server=%1").arg(serverAddress())} + arguments);
    if (!process.waitForFinished(5000) || process.exitStatus() != QProcess::NormalExit ||
        process.exitCode() != 0) {
        return QString();
    }
    // Success with nothing printed is an empty string, never a null one.
    QString output = QString::fromUtf8(process.readAllStandardOutput());
    return output.isNull() ? QStringLiteral("") : output;
}

bool PrivatePulseAudio::suspend()
{
    return m_daemon && m_daemon->processId() > 0 && ::kill(pid_t(m_daemon->processId()), SIGSTOP) == 0;
}

bool PrivatePulseAudio::resume()
{
    return m_daemon && m_daemon->processId() > 0 && ::kill(pid_t(m_daemon->processId()), SIGCONT) == 0;
}

bool PrivatePulseAudio::unloadSink(const QString &sinkName)
{
    const QString modules = pactl({QStringLiteral("list"), QStringLiteral("short"), QStringLiteral("modules")});
    const QString argument = QStringLiteral("sink_name=%1").arg(sinkName);
    for (const QString &line : modules.split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
        const QStringList fields = line.split(QLatin1Char('\t'));
        if (fields.size() >= 3 && fields.at(1) == QLatin1String("module-null-sink")
            && fields.at(2).split(QLatin1Char(' ')).contains(argument))
            return !pactl({QStringLiteral("unload-module"), fields.at(0)}).isNull();
    }
    return false;
}

bool PrivatePulseAudio::loadSink(const QString &sinkName)
{
    return !pactl({QStringLiteral("load-module"), QStringLiteral("module-null-sink"),
                   QStringLiteral("sink_name=%1").arg(sinkName), QStringLiteral("rate=48000"),
                   QStringLiteral("format=float32le"), QStringLiteral("channels=2")})
                .isNull();
}

} // namespace tarnix::test
