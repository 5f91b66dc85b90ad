#include "audio/audio_output_coordinator.h"
#include "shell/settings_store.h"

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

        setSaved({}, "@system-default");
        coordinator.pflRequested(true);
        QVERIFY(answers.wait(5000));
        QCOMPARE(record.take(), QStringLiteral("pfl off | pfl off | ask"));
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

        setSaved("usb-box", {});
        QVERIFY(refreshed(coordinator));
        QCOMPARE(record.take(), QStringLiteral("info PROGRAM: ON AIR audio device not found."));
        QVERIFY(refreshed(coordinator));
        QCOMPARE(record.take(), QString());
        devices.answer(R"({"devices":[{"id":"usb-box","name":"USB"}],"default":"usb-box"})");
        QVERIFY(refreshed(coordinator));
        devices.answer(kTwoSinks);
        QVERIFY(refreshed(coordinator));
        QCOMPARE(record.take(), QStringLiteral("info PROGRAM: ON AIR audio device not found."));

        setSaved("usb-box", "onair", true);
        QSignalSpy saved(&coordinator, &AudioOutputCoordinator::savedAudioOutputsChanged);
        QVERIFY(refreshed(coordinator));
        QCOMPARE(readStringSetting(QStringLiteral("audio/programOutputDeviceId")), QString());
        QCOMPARE(saved.size(), 1);
        QVERIFY2(record.take().startsWith(QStringLiteral("program  | info PROGRAM: ")), "");
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
};

QTEST_GUILESS_MAIN(TestAudioOutputCoordinator)
#include "tst_audio_output_coordinator.moc"
