#include "audio/edit_pfl_output.h"

#include "audio/edit_pfl_feed.h"
#include "shell/localized_text.h"
#include "shell/log_categories.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QTimer>

#include <signal.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

namespace tarnix {

namespace {

struct StatusText {
    const char *key;
    const char *english;
};

constexpr StatusText kNoDevice{"edit.pfl.no_device", "Choose EDIT PFL Output Device in Settings."};
constexpr StatusText kOpening{"edit.pfl.opening", "Opening the PFL output device\u2026"};
constexpr StatusText kOn{"edit.pfl.on", "PFL ON \u2014 listening before nominal volume."};
constexpr StatusText kOff{"edit.pfl.off", "PFL OFF \u2014 listen before nominal volume."};
constexpr StatusText kFailed{"edit.pfl.failed",
                             "PFL output is unavailable. Check the selected device, then turn PFL on again."};
constexpr StatusText kHelperMissing{"edit.pfl.helper_missing", "The PFL output component could not be found."};

QString translated(const StatusText &status)
{
    return LocalizedText(QString::fromLatin1(status.key), {}, QString::fromUtf8(status.english)).toString();
}

constexpr char kHelperName[] = "tarnix-pfl-output";
// Added to the application's niceness for the helper.
constexpr int kHelperNiceness = 5;

} // namespace

struct EditPflOutput::Impl {
    EditPflOutput *q = nullptr;
    std::shared_ptr<EditPflFeed> feed;
    Options options;
    QProcess process;
    QTimer watchdog;
    QString deviceId;
    StatusText status = kNoDevice;
    bool requested = false;
    bool ready = false;
    bool stopping = false;
    bool restartAfterStop = false;
    bool shuttingDown = false;
    std::uint64_t startedAtNs = 0;
    std::uint64_t stopRequestedAtNs = 0;

    std::uint64_t now() const { return options.clock ? options.clock() : monotonicNowNs(); }
    static std::uint64_t ns(std::chrono::milliseconds limit) { return std::uint64_t(limit.count()) * 1'000'000ull; }
    bool hasTransport() const { return feed && feed->hasView(); }
    bool running() const { return process.state() != QProcess::NotRunning; }

    void start();
    void stopHelper(bool restart);
    void fail(const StatusText &why);
    void watch();
    void finished(int exitCode, QProcess::ExitStatus exitStatus);
};

void EditPflOutput::Impl::start()
{
    if (shuttingDown || deviceId.isEmpty() || !requested || !hasTransport() || running())
        return;
    const QString path = options.helperPath.isEmpty()
                             ? QDir(QCoreApplication::applicationDirPath()).filePath(QString::fromLatin1(kHelperName))
                             : options.helperPath;
    if (!QFileInfo(path).isExecutable()) {
        fail(kHelperMissing);
        return;
    }
    feed->prepareStart();
    startedAtNs = now();
    ready = false;
    status = kOpening;
    qCInfo(lcEdit()).noquote() << "PFL starting device=" + deviceId;

    const pid_t parent = getpid();
    const rlim_t dataLimit = rlim_t(options.dataLimitBytes);
    // Runs in the child between fork and exec: only plain system calls.
    // The helper dies with us, cannot grow past its limit, and yields the
    // processor to the program: a helper that runs wild competes with ON
    // AIR at a lower priority (its own sound needs a few percent of a core).
    process.setChildProcessModifier([parent, dataLimit] {
        if (prctl(PR_SET_PDEATHSIG, SIGKILL) != 0 || getppid() != parent)
            _exit(126);
        const rlimit limit{dataLimit, dataLimit};
        if (setrlimit(RLIMIT_DATA, &limit) != 0)
            _exit(126);
        (void)nice(kHelperNiceness);
    });
    process.start(path, {feed->name(), deviceId, QString::number(parent)});
    emit q->stateChanged();
}

void EditPflOutput::Impl::stopHelper(bool restart)
{
    restartAfterStop = restart;
    ready = false;
    if (feed)
        feed->requestStop();
    if (running()) {
        if (!stopping)
            stopRequestedAtNs = now();
        stopping = true;
    } else if (restart) {
        start();
    }
}

void EditPflOutput::Impl::fail(const StatusText &why)
{
    requested = false;
    ready = false;
    status = why;
    if (feed) {
        feed->setAudible(false);
        feed->bumpGeneration();
    }
    emit q->stateChanged();
    emit q->outputError(translated(why));
}

void EditPflOutput::Impl::watch()
{
    if (shuttingDown || !hasTransport() || !running())
        return;
    const std::uint64_t current = now();
    if (stopping) {
        if (current - stopRequestedAtNs > ns(options.stopKillLimit))
            process.kill();
        return;
    }
    const std::uint32_t state = feed->helperState();
    if (state == pfl::StateFailed) {
        qCWarning(lcEdit()).noquote()
            << QStringLiteral("PFL failed HRESULT=0x%1 device=%2").arg(feed->helperResult(), 8, 16, QLatin1Char('0')).arg(deviceId);
        fail(kFailed);
        stopHelper(false);
        return;
    }
    if (state == pfl::StateOpening) {
        if (current - startedAtNs > ns(options.openingLimit)) {
            fail(kFailed);
            stopHelper(false);
        }
        return;
    }
    const std::uint64_t heartbeat = feed->heartbeatNs();
    const std::uint64_t lastSign = heartbeat ? heartbeat : startedAtNs;
    if (current > lastSign && current - lastSign > ns(options.heartbeatLimit)) {
        fail(kFailed);
        stopHelper(false);
        return;
    }
    if (state == pfl::StateReady && !ready) {
        qCInfo(lcEdit()).noquote() << "PFL ready device=" + deviceId;
        ready = true;
        feed->setAudible(requested);
        status = requested ? kOn : kOff;
        emit q->stateChanged();
    }
}

void EditPflOutput::Impl::finished(int exitCode, QProcess::ExitStatus exitStatus)
{
    qCInfo(lcEdit()).noquote() << QStringLiteral("PFL process finished exitCode=%1 exitStatus=%2")
                                      .arg(exitCode)
                                      .arg(exitStatus == QProcess::NormalExit ? QStringLiteral("normal")
                                                                              : QStringLiteral("crash"));
    const bool wasStopping = std::exchange(stopping, false);
    ready = false;
    if (!wasStopping && !shuttingDown)
        fail(kFailed);
    if (shuttingDown)
        return;
    if (restartAfterStop) {
        restartAfterStop = false;
        start();
    } else if (wasStopping) {
        emit q->stateChanged();
    }
}

EditPflOutput::EditPflOutput(std::shared_ptr<EditPflFeed> feed, const Options &options, QObject *parent)
    : QObject(parent)
    , d(std::make_unique<Impl>())
{
    d->q = this;
    d->feed = std::move(feed);
    d->options = options;
    d->watchdog.setInterval(options.watchdogInterval);
    connect(&d->watchdog, &QTimer::timeout, this, [this] { d->watch(); });
    d->watchdog.start();
    connect(&d->process, &QProcess::finished, this,
            [this](int exitCode, QProcess::ExitStatus exitStatus) { d->finished(exitCode, exitStatus); });
    connect(&d->process, &QProcess::errorOccurred, this, [this](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart && !d->shuttingDown)
            d->fail(kFailed);
    });
    connect(&d->process, &QProcess::readyReadStandardOutput, this, [this] {
        while (d->process.canReadLine())
            qCInfo(lcEdit()).noquote() << "PFL stdout" << QString::fromUtf8(d->process.readLine()).trimmed();
    });
    connect(&d->process, &QProcess::readyReadStandardError, this, [this] {
        for (const QByteArray &line : d->process.readAllStandardError().split('\n'))
            if (!line.trimmed().isEmpty())
                qCWarning(lcEdit()).noquote() << "PFL stderr" << QString::fromUtf8(line).trimmed();
    });
}

EditPflOutput::EditPflOutput(std::shared_ptr<EditPflFeed> feed, QObject *parent)
    : EditPflOutput(std::move(feed), Options{}, parent)
{
}

EditPflOutput::~EditPflOutput()
{
    shutdown();
    d->process.disconnect(this);
    // Killed, the helper is gone at once; the short wait only collects it
    // so it does not outlive its owner as a zombie. Only at exit.
    if (d->running())
        d->process.waitForFinished(500);
}

bool EditPflOutput::canEnable() const
{
    return !d->shuttingDown && d->hasTransport() && !d->deviceId.isEmpty() && !d->stopping
           && (!d->requested || d->ready || !d->running());
}

bool EditPflOutput::isActive() const { return d->requested && d->ready && !d->stopping; }
QString EditPflOutput::deviceId() const { return d->deviceId; }
QString EditPflOutput::statusText() const { return translated(d->status); }
QString EditPflOutput::statusKey() const { return QString::fromLatin1(d->status.key); }
bool EditPflOutput::isHelperRunning() const { return d->running(); }

void EditPflOutput::setDeviceId(const QString &deviceId)
{
    if (d->deviceId == deviceId)
        return;
    d->deviceId = deviceId;
    if (deviceId.isEmpty())
        d->requested = false;
    d->status = deviceId.isEmpty() ? kNoDevice : kOff;
    d->stopHelper(d->requested);
    emit stateChanged();
}

void EditPflOutput::setEnabled(bool enabled)
{
    if (!enabled) {
        d->requested = false;
    } else if (d->stopping && !d->deviceId.isEmpty() && d->hasTransport()) {
        d->requested = true;
        d->restartAfterStop = true;
        emit stateChanged();
        return;
    } else {
        d->requested = canEnable();
    }
    if (d->feed) {
        d->feed->bumpGeneration();
        d->feed->setAudible(isActive());
    }
    if (d->requested && !d->ready && !d->stopping) {
        d->start();
        return;
    }
    d->status = !canEnable() ? kNoDevice : isActive() ? kOn : kOff;
    emit stateChanged();
}

void EditPflOutput::shutdown()
{
    if (d->shuttingDown)
        return;
    d->shuttingDown = true;
    d->requested = false;
    d->stopHelper(false);
    d->watchdog.stop();
    if (d->running())
        d->process.kill();
}

bool EditPflOutput::hasFinished() const { return d->shuttingDown && !d->running(); }

} // namespace tarnix
