#include "audio/audio_output_coordinator.h"

#include "shell/log_categories.h"
#include "shell/settings_store.h"

namespace tarnix {

namespace {

const QString kSystemDefault = QStringLiteral("@system-default");
const QString kProgramKey = QStringLiteral("audio/programOutputDeviceId");
const QString kPflKey = QStringLiteral("audio/editPflOutputDeviceId");

LocalizedText text(const char *key, const char *english, const QStringList &args = {})
{
    return LocalizedText(QString::fromLatin1(key), args, QString::fromUtf8(english));
}

LocalizedText unavailableText()
{
    return text("audio.output.unavailable", "ON AIR audio output is unavailable. Video playout can continue. Check "
                                            "the audio output settings and device connection.");
}

bool listed(const QList<AudioOutputDevice> &devices, const QString &id)
{
    if (id.isEmpty())
        return false;
    for (const AudioOutputDevice &device : devices)
        if (device.id.compare(id, Qt::CaseInsensitive) == 0)
            return true;
    return false;
}

} // namespace

AudioOutputCoordinator::AudioOutputCoordinator(AudioOutputDeviceMonitor *monitor, const Hooks &hooks, QObject *parent)
    : QObject(parent)
    , m_monitor(monitor)
    , m_hooks(hooks)
{
    m_monitor->setParent(this);
    connect(m_monitor, &AudioOutputDeviceMonitor::refreshed, this, &AudioOutputCoordinator::evaluate);
}

QString AudioOutputCoordinator::effectiveProgramId(const QString &savedId, const QString &defaultId)
{
    return savedId.isEmpty() ? defaultId : savedId;
}

QString AudioOutputCoordinator::effectivePflId(const QString &savedId, const QString &defaultId)
{
    return savedId == kSystemDefault ? defaultId : savedId;
}

AudioOutputCoordinator::Missing AudioOutputCoordinator::outputsMissing(const QList<AudioOutputDevice> &devices,
                                                                       const QString &defaultId,
                                                                       const QString &programId, const QString &pflId)
{
    Missing missing;
    missing.program = !listed(devices, effectiveProgramId(programId, defaultId));
    missing.pfl = !pflId.isEmpty() && !listed(devices, effectivePflId(pflId, defaultId));
    return missing;
}

bool AudioOutputCoordinator::sameDevice(const QString &programId, const QString &pflId, const QString &defaultId)
{
    if (pflId.isEmpty())
        return false;
    const QString pfl = effectivePflId(pflId, defaultId);
    return !pfl.isEmpty() && effectiveProgramId(programId, defaultId).compare(pfl, Qt::CaseInsensitive) == 0;
}

void AudioOutputCoordinator::refresh()
{
    if (!m_stopped)
        m_monitor->refresh();
}

void AudioOutputCoordinator::programAudioOutputError(const QString &detail)
{
    m_pendingError = detail;
    refresh();
}

void AudioOutputCoordinator::turnPflOff()
{
    if (m_hooks.turnPflOff)
        m_hooks.turnPflOff();
}

void AudioOutputCoordinator::evaluate(bool success)
{
    if (m_stopped)
        return;
    const std::optional<QString> pendingError = std::exchange(m_pendingError, std::nullopt);
    const std::optional<QString> pendingPfl = std::exchange(m_pendingPflId, std::nullopt);
    // A question still open stays open through the periodic checks: the
    // answer is held against the devices as they are then, with a fresh
    // check of its own. Only a new turn-on replaces it.
    if (pendingPfl)
        m_pendingConfirmation.reset();
    auto tell = [this](bool warning, const QString &source, const LocalizedText &message, const QString &detail = {}) {
        if (m_hooks.tell)
            m_hooks.tell(warning, source, message, detail);
    };

    if (!success) {
        if (pendingError)
            tell(true, QStringLiteral("PROGRAM"), unavailableText(), *pendingError);
        if (pendingPfl) {
            turnPflOff();
            tell(true, QStringLiteral("EDIT"),
                 text("audio.outputs.check_failed", "Could not check the audio devices. Please check the audio device settings."));
        }
        return;
    }

    const QList<AudioOutputDevice> devices = m_monitor->devices();
    const QString defaultId = m_monitor->defaultDeviceId();
    QString programId = readStringSetting(kProgramKey);
    const QString pflId = readStringSetting(kPflKey);
    Missing missing = outputsMissing(devices, defaultId, programId, pflId);
    if (pendingPfl && pflId.isEmpty())
        missing.pfl = true;

    // The operator allowed ON AIR to fall back to the system default.
    bool fellBack = false;
    if (readBoolSetting(QStringLiteral("audio/useDefaultWhenMissing")) && missing.program && listed(devices, defaultId)
        && !programId.isEmpty()) {
        QString error;
        if (writeSetting(kProgramKey, QString(), &error)) {
            programId.clear();
            missing.program = false;
            fellBack = true;
            if (m_hooks.setProgramDevice)
                m_hooks.setProgramDevice(QString());
            tell(false, QStringLiteral("PROGRAM"),
                 text("audio.output.fallback_applied",
                      "%1 audio output setting changed to system default because the device was unavailable.",
                      {text("info.source.program", "ON AIR").toString()}));
            emit savedAudioOutputsChanged();
        } else {
            tell(true, QStringLiteral("PROGRAM"),
                 text("settings.output.save_failed", "Could not save the output device setting."), error);
        }
    }
    const QString activeProgram = m_hooks.activeProgramDevice ? m_hooks.activeProgramDevice() : QString();
    const bool sharesDevice = sameDevice(programId, pflId, defaultId)
                              || (!activeProgram.isEmpty() && sameDevice(activeProgram, pflId, defaultId));
    if (fellBack && sharesDevice)
        turnPflOff();

    // A missing device is told once, until it has come back.
    const QString programKey = QStringLiteral("PROGRAM:") + programId.toLower();
    const QString pflKey = QStringLiteral("PFL:") + pflId.toLower();
    bool newProgram = false;
    bool newPfl = false;
    // The ON AIR output hears of its device at every check while it is
    // missing and once more when it is back, so that a failed output opens
    // it again as soon as it can.
    bool retryProgram = false;
    if (missing.program) {
        newProgram = !m_notifiedKeys.contains(programKey);
        retryProgram = !newProgram;
        m_notifiedKeys.insert(programKey);
    } else {
        retryProgram = m_notifiedKeys.remove(programKey);
    }
    if (retryProgram && m_hooks.retryProgramDevice)
        m_hooks.retryProgramDevice();
    if (missing.pfl) {
        newPfl = !m_notifiedKeys.contains(pflKey);
        m_notifiedKeys.insert(pflKey);
    } else {
        m_notifiedKeys.remove(pflKey);
    }
    if (newProgram || newPfl) {
        LocalizedText message;
        if (newProgram && newPfl)
            message = text("startup.audio_outputs_missing", "ON AIR and PFL audio devices not found.");
        else if (newProgram)
            message = text("startup.program_output_missing", "ON AIR audio device not found.");
        else if (pflId.isEmpty())
            message = text("edit.pfl.device_not_configured", "No PFL audio device is configured.");
        else
            message = text("startup.pfl_output_missing", "PFL audio device not found.");
        tell(pendingPfl || pendingError, newProgram ? QStringLiteral("PROGRAM") : QStringLiteral("EDIT"), message);
    }

    if (pendingPfl) {
        if (*pendingPfl == pflId && !missing.pfl) {
            const SameDevicePflState state{pflId, programId, activeProgram, defaultId};
            if (!sharesDevice || m_confirmedSameDevice == state) {
                if (m_hooks.turnPflOn)
                    m_hooks.turnPflOn(effectivePflId(pflId, defaultId));
            } else {
                turnPflOff();
                m_pendingConfirmation = state;
                if (m_hooks.askSameDevice)
                    m_hooks.askSameDevice();
            }
        } else {
            turnPflOff();
        }
    }

    if (pendingError && !missing.program)
        tell(true, QStringLiteral("PROGRAM"), unavailableText(), *pendingError);

    const bool failed = m_hooks.programStatusKey && m_hooks.programStatusKey() == QLatin1String("settings.output.failed");
    const QString failureKey = failed ? programId.toLower() + QStringLiteral(":failed") : QString();
    if (failed && failureKey != m_lastFailureKey && !pendingError && !missing.program)
        tell(true, QStringLiteral("PROGRAM"), unavailableText());
    m_lastFailureKey = failureKey;
}

void AudioOutputCoordinator::pflRequested(bool enabled)
{
    qCInfo(lcEdit()).noquote() << QStringLiteral("OP PFL source=UI enabled=%1").arg(enabled ? "true" : "false");
    if (!enabled) {
        m_pendingPflId.reset();
        m_pendingConfirmation.reset();
        turnPflOff();
        return;
    }
    // Nothing sounds before the devices have been looked at again.
    turnPflOff();
    if (m_pendingConfirmation)
        return;
    m_confirmedSameDevice.reset();
    const QString pflId = readStringSetting(kPflKey);
    if (pflId.isEmpty()) {
        if (m_hooks.tell)
            m_hooks.tell(true, QStringLiteral("EDIT"),
                         text("edit.pfl.device_not_configured", "No PFL audio device is configured."), {});
        return;
    }
    m_pendingPflId = pflId;
    refresh();
}

void AudioOutputCoordinator::pflSameDeviceDecision(bool accepted)
{
    const std::optional<SameDevicePflState> state = std::exchange(m_pendingConfirmation, std::nullopt);
    if (accepted && !m_stopped && state && state->pflId == readStringSetting(kPflKey)) {
        m_confirmedSameDevice = state;
        m_pendingPflId = state->pflId;
        refresh();
        return;
    }
    turnPflOff();
}

void AudioOutputCoordinator::announceSelection(bool program, const QString &id)
{
    QString name;
    if ((program && id.isEmpty()) || id == kSystemDefault) {
        name = text("settings.output.default", "System Default").toString();
    } else if (id.isEmpty()) {
        name = text("settings.output.none", "No Device").toString();
    } else {
        name = id;
        for (const AudioOutputDevice &device : m_monitor->devices())
            if (device.id.compare(id, Qt::CaseInsensitive) == 0)
                name = device.name;
    }
    if (m_hooks.tell)
        m_hooks.tell(false, program ? QStringLiteral("PROGRAM") : QStringLiteral("EDIT"),
                     text("audio.output.selection_changed", "%1 audio output setting changed to %2.",
                          {program ? QStringLiteral("Program") : QStringLiteral("PFL"), name}),
                     {});
}

void AudioOutputCoordinator::stop()
{
    m_stopped = true;
    m_monitor->stop();
}

} // namespace tarnix
