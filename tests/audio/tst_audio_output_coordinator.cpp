#include "audio/audio_output_coordinator.h"
#include "shell/settings_store.h"

#include "pfl_fault_file.h"
#include "support/private_pulse_audio.h"

#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

using namespace tarnix;

namespace {

// A device list the test writes and a stand-in for the helper's --list that
// prints it (or hangs, or says nonsense).
struct Devices {
    QTemporaryDir directory;
    QString helper() const { return directory.filePath(QStringLiteral("list")); }

    void write(const QByteArray &script) const
    {
        QFile file(helper());
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("#!/bin/sh\n" + script + "\n");
        file.close();
        file.setPermissions(file.permissions() | QFileDevice::ExeOwner);
    }
    void answer(const QByteArray &json) const { write("cat <<'END'\n" + json + "\nEND"); }
};

// What the coordinator did, in order.
struct Record {
    QStringList actions;
    QString activeProgram;
    QString statusKey;

    AudioOutputCoordinator::Hooks hooks()
    {
        AudioOutputCoordinator::Hooks hooks;
        hooks.turnPflOn = [this](const QString &id) { actions << QStringLiteral("pfl on ") + id; };
        hooks.turnPflOff = [this] { actions << QStringLiteral("pfl off"); };
        hooks.setProgramDevice = [this](const QString &id) { actions << QStringLiteral("program ") + id; };
        hooks.retryProgramDevice = [this] { actions << QStringLiteral("program again"); };
        hooks.activeProgramDevice = [this] { return activeProgram; };
        hooks.programStatusKey = [this] { return statusKey; };
        hooks.tell = [this](bool warning, const QString &source, const LocalizedText &text, const QString &) {
            actions << QStringLiteral("%1 %2: %3").arg(warning ? "warn" : "info", source, text.toString());
        };
        hooks.askSameDevice = [this] { actions << QStringLiteral("ask"); };
        return hooks;
    }
    QString take()
    {
        const QString all = actions.join(QStringLiteral(" | "));
        actions.clear();
        return all;
    }
};

const QByteArray kTwoSinks = R"({"devices":[{"id":"onair","name":"Main"},{"id":"Other","name":"Phones"}],"default":"onair"})";

} // namespace

class TestAudioOutputCoordinator : public QObject
{
    Q_OBJECT

    QTemporaryDir settingsDir;

    void setSaved(const QString &program, const QString &pfl, bool fallback = false)
    {
        QVERIFY(writeSetting(QStringLiteral("audio/programOutputDeviceId"), program));
        QVERIFY(writeSetting(QStringLiteral("audio/editPflOutputDeviceId"), pfl));
        QVERIFY(writeSetting(QStringLiteral("audio/useDefaultWhenMissing"), fallback));
    }

    // One refresh to its end.
    static bool refreshed(AudioOutputCoordinator &coordinator, bool *success = nullptr)
    {
        QSignalSpy spy(coordinator.monitor(), &AudioOutputDeviceMonitor::refreshed);
        coordinator.refresh();
        if (!spy.wait(5000))
            return false;
        if (success)
            *success = spy.at(0).at(0).toBool();
        return true;
    }

private slots:
    void initTestCase()
    {
        QCoreApplication::instance()->setProperty("tarnix.settingsFile",
                                                  settingsDir.filePath(QStringLiteral("tarnix.ini")));
    }

    void resolutionRules()
    {
        using C = AudioOutputCoordinator;
        const QList<AudioOutputDevice> none;
        QVERIFY(C::outputsMissing(none, {}, {}, {}).program);
        QVERIFY(!C::outputsMissing(none, {}, {}, {}).pfl);  // an unset PFL is not missing
        const QList<AudioOutputDevice> two{{"onair", "Main"}, {"Other", "Phones"}};
        QVERIFY(!C::outputsMissing(two, "onair", {}, "OTHER").pfl);
        QVERIFY(C::outputsMissing(two, "gone", {}, "@system-default").program);
        QVERIFY(C::sameDevice({}, "@system-default", "onair"));
        QVERIFY(C::sameDevice("ONAIR", "onair", "x"));
        QVERIFY(!C::sameDevice("onair", {}, "onair"));
    }

    // The device list as the helper prints it; a helper that hangs is
    // killed, and what is not a list is no answer.
    void monitorReadsTheHelper()
    {
        Devices devices;
        AudioOutputDeviceMonitor::Options options;
        options.helperPath = devices.helper();
        options.killAfter = std::chrono::milliseconds(300);
        AudioOutputDeviceMonitor monitor(options);
        QSignalSpy changes(&monitor, &AudioOutputDeviceMonitor::devicesChanged);
        QSignalSpy answers(&monitor, &AudioOutputDeviceMonitor::refreshed);

        devices.answer(R"({"devices":[{"id":"a","name":"A"},{"id":"","name":"nameless"},{"id":"b"}],"default":"a"})");
        monitor.refresh();
        QVERIFY(answers.wait(5000));
        QCOMPARE(answers.takeFirst().at(0).toBool(), true);
        QCOMPARE(monitor.devices(), (QList<AudioOutputDevice>{{"a", "A"}}));
        QCOMPARE(monitor.defaultDeviceId(), QStringLiteral("a"));
        monitor.refresh();
        QVERIFY(answers.wait(5000));
        QCOMPARE(changes.size(), 1);  // the same list again changes nothing
        answers.clear();

        devices.write("sleep 10");
        monitor.refresh();
        QVERIFY(answers.wait(5000));
        QCOMPARE(answers.takeFirst().at(0).toBool(), false);
        devices.answer("not json");
        monitor.refresh();
        QVERIFY(answers.wait(5000));
        QCOMPARE(answers.takeFirst().at(0).toBool(), false);
        QCOMPARE(monitor.devices().size(), 1);  // the last good list stands
    }

    // PFL comes on only after a fresh look; on the ON AIR device only with
    // the operator's yes, which holds for the devices as they were.
    void pflTurnsOnAfterACheck()
    {
        Devices devices;
        devices.answer(kTwoSinks);
        Record record;
        AudioOutputDeviceMonitor::Options options;
        options.helperPath = devices.helper();
        AudioOutputCoordinator coordinator(new AudioOutputDeviceMonitor(options), record.hooks());

        setSaved({}, {});
        coordinator.pflRequested(true);
        QCOMPARE(record.take(), QStringLiteral("pfl off | warn EDIT: No PFL audio device is configured."));

        setSaved({}, "other");
        QSignalSpy answers(coordinator.monitor(), &AudioOutputDeviceMonitor::refreshed);
        coordinator.pflRequested(true);
        QCOMPARE(record.take(), QStringLiteral("pfl off"));
        QVERIFY(answers.wait(5000));
        QCOMPARE(record.take(), QStringLiteral("pfl on other"));

        // The question outlives the periodic checks made while it is open.
        setSaved({}, "@system-default");
        coordinator.pflRequested(true);
        QVERIFY(answers.wait(5000));
        QCOMPARE(record.take(), QStringLiteral("pfl off | pfl off | ask"));
        QVERIFY(refreshed(coordinator));
        QCOMPARE(record.take(), QString());
        coordinator.pflSameDeviceDecision(true);
        QVERIFY(answers.wait(5000));
        QCOMPARE(record.take(), QStringLiteral("pfl on onair"));

        // Yes, then the default moves before the check: asked again.
        coordinator.pflRequested(true);
        QVERIFY(answers.wait(5000));
        record.take();
        devices.answer(R"({"devices":[{"id":"onair","name":"Main"},{"id":"Other","name":"Phones"}],"default":"Other"})");
        coordinator.pflSameDeviceDecision(true);
        QVERIFY(answers.wait(5000));
        QCOMPARE(record.take(), QStringLiteral("pfl off | ask"));
        coordinator.pflSameDeviceDecision(false);
        QCOMPARE(record.take(), QStringLiteral("pfl off"));
    }

    // A missing device is told once until it comes back; the fallback to
    // the default empties the saved choice once.
    void missingDevicesAndTheFallback()
    {
        Devices devices;
        devices.answer(kTwoSinks);
        Record record;
        AudioOutputDeviceMonitor::Options options;
        options.helperPath = devices.helper();
        AudioOutputCoordinator coordinator(new AudioOutputDeviceMonitor(options), record.hooks());

        // Told once; the output hears of its device at every check while
        // it is missing, and when it is back.
        setSaved("usb-box", {});
        QVERIFY(refreshed(coordinator));
        QCOMPARE(record.take(), QStringLiteral("info PROGRAM: ON AIR audio device not found."));
        QVERIFY(refreshed(coordinator));
        QCOMPARE(record.take(), QStringLiteral("program again"));
        devices.answer(R"({"devices":[{"id":"usb-box","name":"USB"}],"default":"usb-box"})");
        QVERIFY(refreshed(coordinator));
        QCOMPARE(record.take(), QStringLiteral("program again"));
        QVERIFY(refreshed(coordinator));
        QCOMPARE(record.take(), QString());
        devices.answer(kTwoSinks);
        QVERIFY(refreshed(coordinator));
        QCOMPARE(record.take(), QStringLiteral("info PROGRAM: ON AIR audio device not found."));

        setSaved("usb-box", "onair", true);
        QSignalSpy saved(&coordinator, &AudioOutputCoordinator::savedAudioOutputsChanged);
        QVERIFY(refreshed(coordinator));
        QCOMPARE(readStringSetting(QStringLiteral("audio/programOutputDeviceId")), QString());
        QCOMPARE(saved.size(), 1);
        QCOMPARE(record.take(), QStringLiteral("program  | info PROGRAM: Program audio output setting changed to system "
                                               "default because the device was unavailable. | pfl off"));
        QVERIFY(refreshed(coordinator));
        QCOMPARE(record.take(), QString());
        QCOMPARE(saved.size(), 1);

        // A check that cannot be made blocks a pending PFL and tells why.
        devices.write("exit 3");
        coordinator.programAudioOutputError(QStringLiteral("sink gone"));
        QSignalSpy answers(coordinator.monitor(), &AudioOutputDeviceMonitor::refreshed);
        QVERIFY(answers.wait(5000));
        QVERIFY(record.take().startsWith(QStringLiteral("warn PROGRAM: ON AIR audio output is unavailable.")));
    }

    // The same rules against a sound server with null sinks plugged in and
    // out, listed by the real helper.
    void againstASoundServer()
    {
        test::PrivatePulseAudio pulse;
        QString error;
        QVERIFY2(pulse.start(&error), qPrintable(error));
        QVERIFY(!pulse.pactl({QStringLiteral("set-default-sink"), QStringLiteral("onair")}).isNull());
        QVERIFY(pulse.loadSink(QStringLiteral("usb_box")));
        Record record;
        AudioOutputDeviceMonitor::Options options;
        options.helperPath = QStringLiteral(TARNIX_PFL_HELPER);
        AudioOutputCoordinator coordinator(new AudioOutputDeviceMonitor(options), record.hooks());

        // Ids without regard to case; a device unplugged is told once, each
        // time it goes.
        setSaved(QStringLiteral("USB_Box"), {});
        QVERIFY(refreshed(coordinator));
        QCOMPARE(record.take(), QString());
        int told = 0;
        for (int round = 0; round < 2; ++round) {
            QVERIFY(pulse.unloadSink(QStringLiteral("usb_box")));
            QVERIFY(refreshed(coordinator));
            QVERIFY(refreshed(coordinator));
            told += record.take().count(QStringLiteral("info PROGRAM: ON AIR audio device not found."));
            QVERIFY(pulse.loadSink(QStringLiteral("usb_box")));
            QVERIFY(refreshed(coordinator));
            QCOMPARE(record.take(), QStringLiteral("program again"));
        }
        QCOMPARE(told, 2);

        // The fallback empties the saved choice once.
        QVERIFY(pulse.unloadSink(QStringLiteral("usb_box")));
        setSaved(QStringLiteral("usb_box"), {}, true);
        QSignalSpy saved(&coordinator, &AudioOutputCoordinator::savedAudioOutputsChanged);
        QVERIFY(refreshed(coordinator));
        QVERIFY(refreshed(coordinator));
        QCOMPARE(saved.size(), 1);
        QCOMPARE(readStringSetting(QStringLiteral("audio/programOutputDeviceId")), QString());
        QCOMPARE(record.take().count(QStringLiteral("changed to system default")), 1);

        // PFL on the default, with ON AIR there too: asked, and asked again
        // once the default has moved.
        setSaved({}, QStringLiteral("@system-default"));
        QSignalSpy answers(coordinator.monitor(), &AudioOutputDeviceMonitor::refreshed);
        coordinator.pflRequested(true);
        QVERIFY(answers.wait(5000));
        QCOMPARE(record.take(), QStringLiteral("pfl off | pfl off | ask"));
        coordinator.pflSameDeviceDecision(true);
        QVERIFY(answers.wait(5000));
        QCOMPARE(record.take(), QStringLiteral("pfl on onair"));
        coordinator.pflRequested(true);
        QVERIFY(answers.wait(5000));
        QCOMPARE(record.take(), QStringLiteral("pfl off | pfl off | ask"));
        QVERIFY(!pulse.pactl({QStringLiteral("set-default-sink"), QStringLiteral("other")}).isNull());
        coordinator.pflSameDeviceDecision(true);
        QVERIFY(answers.wait(5000));
        QCOMPARE(record.take(), QStringLiteral("pfl off | ask"));
        coordinator.pflSameDeviceDecision(false);
        QCOMPARE(record.take(), QStringLiteral("pfl off"));
    }

    // A helper whose list is nonsense leaves PFL off, with the reason.
    void garbledListKeepsPflOff()
    {
        QTemporaryDir directory;
        const QString fault = test::writePflHelperFault(directory, "garbage");
        QVERIFY(!fault.isEmpty());
        qputenv("TARNIX_PFL_HELPER_FAULT_FILE", fault.toLocal8Bit());
        Record record;
        AudioOutputDeviceMonitor::Options options;
        options.helperPath = QStringLiteral(TARNIX_FAULTY_PFL_HELPER);
        AudioOutputCoordinator coordinator(new AudioOutputDeviceMonitor(options), record.hooks());
        setSaved({}, QStringLiteral("other"));
        QSignalSpy answers(coordinator.monitor(), &AudioOutputDeviceMonitor::refreshed);
        coordinator.pflRequested(true);
        QVERIFY(answers.wait(5000));
        qunsetenv("TARNIX_PFL_HELPER_FAULT_FILE");
        QCOMPARE(answers.at(0).at(0).toBool(), false);
        QCOMPARE(record.take(), QStringLiteral("pfl off | pfl off | warn EDIT: Could not check the audio devices. "
                                               "Please check the audio device settings."));
    }
};

QTEST_GUILESS_MAIN(TestAudioOutputCoordinator)
#include "tst_audio_output_coordinator.moc"
