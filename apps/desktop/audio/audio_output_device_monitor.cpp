#include "audio/audio_output_device_monitor.h"

#include <QCoreApplication>
#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTimer>

namespace tarnix {

AudioOutputDeviceMonitor::AudioOutputDeviceMonitor(const Options &options, QObject *parent)
    : QObject(parent)
    , m_options(options)
{
}

AudioOutputDeviceMonitor::AudioOutputDeviceMonitor(QObject *parent)
    : AudioOutputDeviceMonitor(Options{}, parent)
{
}

AudioOutputDeviceMonitor::~AudioOutputDeviceMonitor()
{
    stop();
}

void AudioOutputDeviceMonitor::refresh()
{
    if (m_stopped || m_process)
        return;
    const QString helper = m_options.helperPath.isEmpty()
                               ? QDir(QCoreApplication::applicationDirPath()).filePath(QStringLiteral("tarnix-pfl-output"))
                               : m_options.helperPath;
    m_killed = false;
    m_process = std::make_unique<QProcess>();
    m_process->setStandardErrorFile(QProcess::nullDevice());
    QProcess *process = m_process.get();
    // The limit is the process's own: it dies with it, and with a kill.
    auto *limit = new QTimer(process);
    limit->setSingleShot(true);
    connect(limit, &QTimer::timeout, this, [this, process] {
        m_killed = true;
        process->kill();
    });
    connect(process, &QProcess::finished, this, [this](int exitCode, QProcess::ExitStatus status) {
        finished(status == QProcess::NormalExit, exitCode);
    });
    connect(process, &QProcess::errorOccurred, this, [this](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart)
            finished(false, -1);
    });
    limit->start(m_options.killAfter);
    process->start(helper, {QStringLiteral("--list")});
}

void AudioOutputDeviceMonitor::finished(bool normalExit, int exitCode)
{
    if (!m_process)
        return;
    const QByteArray output = m_process->readAllStandardOutput();
    // Let go of it once its signals have returned.
    m_process.release()->deleteLater();
    if (m_stopped)
        return;
    const QJsonDocument document = QJsonDocument::fromJson(output);
    const QJsonValue list = document.object().value(QStringLiteral("devices"));
    if (m_killed || !normalExit || exitCode != 0 || !document.isObject() || !list.isArray()) {
        emit refreshed(false);
        return;
    }
    QList<AudioOutputDevice> devices;
    for (const QJsonValue &entry : list.toArray()) {
        const QString id = entry.toObject().value(QStringLiteral("id")).toString();
        const QString name = entry.toObject().value(QStringLiteral("name")).toString();
        if (!id.isEmpty() && !name.isEmpty())
            devices.append({id, name});
    }
    const QString defaultId = document.object().value(QStringLiteral("default")).toString();
    if (!m_hasList || devices != m_devices || defaultId != m_defaultId) {
        m_hasList = true;
        m_devices = devices;
        m_defaultId = defaultId;
        emit devicesChanged();
    }
    emit refreshed(true);
}

void AudioOutputDeviceMonitor::stop()
{
    m_stopped = true;
    if (m_process) {
        m_process->disconnect(this);
        m_process->kill();
        // Killed, it is collected at once; only at exit.
        m_process->waitForFinished(500);
        m_process.reset();
    }
}

} // namespace tarnix
