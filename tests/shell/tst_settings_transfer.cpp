// The settings export and restore against a real settings file and file
// queue: what the export carries and in which types, the restore's
// refusals (the settings file stays byte for byte as it was), the round
// trip through the file, the language switch; and the MIDI, switcher and
// address rules the restore borrows, as tables.

#include "control/shortcut_table.h"
#include "shell/application_identity.h"
#include "shell/background_io_queue.h"
#include "shell/midi_control_settings.h"
#include "shell/settings_store.h"
#include "shell/settings_transfer.h"
#include "shell/settings_transfer_rules.h"
#include "shell/settings_transfer_store.h"
#include "shell/switcher_models.h"
#include "shell/ui_language_manager.h"
#include "shell/user_info_center.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QSettings>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QThread>
#include <QtTest>

#include <atomic>
#include <optional>

using namespace tarnix;

namespace {

const QString kFailed = QStringLiteral("Could not save or restore settings. Check the file format and write permissions.");

QByteArray fileBytes(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void writeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(bytes), bytes.size());
}

QByteArray transferFile(const QJsonObject &settings, int version = 1)
{
    return QJsonDocument(QJsonObject{{"format", "tarnix-settings"}, {"version", version}, {"settings", settings}})
        .toJson(QJsonDocument::Compact);
}

// A well-formed file padded with trailing white space to an exact size.
QByteArray paddedTo(qsizetype size)
{
    QByteArray bytes = transferFile({{"time/fontSize", 14}});
    bytes.append(QByteArray(size - bytes.size(), ' '));
    return bytes;
}

// What the file holds, read by a QSettings that has never seen the path,
// so that the text is parsed rather than found in this process's cache.
QJsonObject readFreshCopy(const QString &ini, const QString &copy)
{
    QFile::remove(copy);
    if (!QFile::copy(ini, copy))
        return {};
    QSettings settings(copy, QSettings::IniFormat);
    return readTransferSettings(settings);
}

struct Rig {
    QTemporaryDir dir;
    BackgroundIoQueue queue{nullptr, std::chrono::milliseconds(1)};
    UserInfoCenter info;
    UiLanguageManager language;
    SettingsTransfer transfer{&queue, &info, &language, &shortcuts::validateBindings};

    Rig()
    {
        publishSettingsLocation(ini(), false);
        language.setLanguage("en");
    }
    QString ini() const { return dir.filePath("user.ini"); }
    QString path(const char *name) const { return dir.filePath(QString::fromLatin1(name)); }

    // Runs one operation to its end.
    template <typename Start>
    SettingsTransferOutcome run(Start start)
    {
        std::optional<SettingsTransferOutcome> outcome;
        start([&](const SettingsTransferOutcome &result) { outcome = result; });
        if (!QTest::qWaitFor([&] { return outcome.has_value(); }, 10000))
            return {false, LocalizedText(QString(), {}, "no outcome"), "no outcome"};
        return *outcome;
    }
    SettingsTransferOutcome restore(const QString &file)
    {
        return run([&](auto done) { transfer.importSettings(file, done); });
    }
    SettingsTransferOutcome save(const QString &file)
    {
        return run([&](auto done) { transfer.exportSettings(file, done); });
    }
};

} // namespace

class TestSettingsTransfer : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QStandardPaths::setTestModeEnabled(true);
        // As the application does at start: the keyboard's table is built
        // here, where the platform's keys are known, before a restore's
        // worker reads it.
        QVERIFY(shortcuts::validateBindings({{"TakeOnAir", QJsonArray{"Ctrl+F5"}}}).isEmpty());
    }

    // One member per transfer key, each in its default's JSON type, in the
    // table's order; what the owners keep per machine stays out.
    void exportCarriesEveryTransferKeyInItsDefaultsType()
    {
        Rig rig;
        QVERIFY(writeSetting("switcher/rolandVr50Hd/port", 9000));
        QVERIFY(writeSetting("onAir/toggleMode", true));
        QVERIFY(writeSetting("time/fontFamily", "Noto Sans, Bold"));
        for (const char *ownerKept : {"fileDialog/lastPlaylistDirectory", "privacy/activityLastSentUtcDay",
                                      "control/socketPath", "audio/uvcMappings//dev/video0"})
            QVERIFY(writeSetting(ownerKept, "/somewhere"));
        QVERIFY(writeSetting("player/fadeToBackground", true));

        const SettingsTransferOutcome outcome = rig.save(rig.path("out"));
        QVERIFY2(outcome.success, qPrintable(outcome.detail));
        QCOMPARE(outcome.message.toString(), QStringLiteral("Settings exported."));
        const QByteArray bytes = fileBytes(rig.path("out.json"));
        QVERIFY(bytes.startsWith(R"({"format":"tarnix-settings","version":1,"settings":{"accessibility/textSize":0,)"));
        QVERIFY(!bytes.contains('\n'));

        const QJsonObject root = QJsonDocument::fromJson(bytes).object();
        QCOMPARE(root.size(), 3);
        const QJsonObject settings = root.value("settings").toObject();
        QCOMPARE(settings.size(), 89);
        QCOMPARE(settings.keys(), QStringList(transferSettingKeys().begin(), transferSettingKeys().end()));
        qsizetype previous = -1;
        for (const QString &key : transferSettingKeys()) {
            const qsizetype at = bytes.indexOf(QByteArray("\"" + key.toUtf8() + "\":"));
            QVERIFY2(at > previous, qPrintable(key));
            previous = at;
            QVERIFY2(settings.value(key).type() == settingsDefaults().value(key).type(), qPrintable(key));
        }
        for (const char *absent : {"fileDialog/lastPlaylistDirectory", "fileDialog/lastMediaDirectory",
                                   "privacy/activityLastSentUtcDay", "control/socketPath", "player/fadeToBackground",
                                   "networkVideo/localOutputHostId", "networkVideo/localOutputSourceNames"})
            QVERIFY2(!settings.contains(absent), absent);
        QCOMPARE(settings.value("switcher/rolandVr50Hd/port"), QJsonValue(9000));
        QCOMPARE(settings.value("onAir/toggleMode"), QJsonValue(true));
        QCOMPARE(settings.value("time/fontFamily"), QJsonValue("Noto Sans, Bold"));
        QVERIFY(settings.value("testPatterns/entries").isNull());
    }

    // A failed export leaves what was at the path: the stored settings do
    // not pass the restore's checks, or the file cannot be written.
    void failedExportLeavesTheOldFile()
    {
        Rig rig;
        writeFile(rig.path("old.json"), "old");
        QSettings(rig.ini(), QSettings::IniFormat).setValue("switcher/rolandVr50Hd/host", "192.168.01.1");
        SettingsTransferOutcome outcome = rig.save(rig.path("old.json"));
        QVERIFY(!outcome.success);
        QCOMPARE(outcome.message.toString(), kFailed);
        QVERIFY2(outcome.detail.contains("switcher/rolandVr50Hd/host"), qPrintable(outcome.detail));
        QCOMPARE(fileBytes(rig.path("old.json")), QByteArray("old"));

        QSettings(rig.ini(), QSettings::IniFormat).remove("switcher/rolandVr50Hd/host");
        outcome = rig.save(rig.path("missing-folder/out.json"));
        QVERIFY(!outcome.success);
        QVERIFY(outcome.detail.contains("Could not open"));
    }

    void refusedRestoreLeavesTheSettingsFileByteIdentical_data()
    {
        QTest::addColumn<QByteArray>("content");  // null: no file at all
        QTest::addColumn<QString>("reason");
        QJsonObject wellFormed{{"ui/language", "ja"}, {"time/fontSize", 20}};
        QTest::newRow("4,194,305 bytes") << paddedTo(4194305) << "larger than 4194304 bytes";
        QTest::newRow("version 2") << transferFile(wellFormed, 2) << "\"version\" is not 1";
        QTest::newRow("ATEM and V-8HD both enabled")
            << transferFile({{"switcher/atem/enabled", true}, {"switcher/rolandV8Hd/enabled", true}})
            << "may not be true together with switcher/rolandV8Hd/enabled";
        QTest::newRow("host with a leading zero") << transferFile({{"switcher/rolandVr50Hd/host", "192.168.01.1"}})
                                                  << "switcher/rolandVr50Hd/host: empty or an IPv4 address";
        QTest::newRow("port as text") << transferFile({{"switcher/rolandVr50Hd/port", "8023"}})
                                      << "switcher/rolandVr50Hd/port: must be a number";
        QTest::newRow("port out of range") << transferFile({{"switcher/rolandVr50Hd/port", 65536}})
                                           << "whole number, 1 to 65,535";
        QTest::newRow("font size not whole") << transferFile({{"time/fontSize", 12.5}}) << "time/fontSize";
        QTest::newRow("colour with a line break") << transferFile({{"player/backgroundColor", "#000000\n"}})
                                                  << "player/backgroundColor";
        QTest::newRow("mode with a leading zero") << transferFile({{"deckLink/inputMode", "01"}}) << "deckLink/inputMode";
        QTest::newRow("unknown time zone") << transferFile({{"time/timeZone", "Mars/Olympus_Mons"}}) << "time/timeZone";
        QTest::newRow("time zone as a path") << transferFile({{"time/timeZone", "../../../../dev/stdin"}}) << "time/timeZone";
        QTest::newRow("unknown switcher model") << transferFile({{"switcher/roland/model", "V8HD"}})
                                                << "switcher/roland/model";
        QTest::newRow("second warning above the missing first")
            << transferFile({{"operatorMonitor/timerWarning2Minutes", 3}})
            << "may not exceed operatorMonitor/timerWarning1Minutes";
        QTest::newRow("fader on a note")
            << transferFile({{"midi/control",
                              QJsonObject{{"enabled", true},
                                          {"device", ""},
                                          {"bindings", QJsonObject{{"SetMasterVolume",
                                                                    QJsonObject{{"type", "note"},
                                                                                {"channel", 1},
                                                                                {"number", 1}}}}}}}})
            << "A volume fader requires a CC message.";
        QTest::newRow("reserved key") << transferFile({{"shortcuts/bindings", QJsonObject{{"TakeOnAir", QJsonArray{"Ctrl+Up"}}}}})
                                      << "shortcuts/bindings";
        QTest::newRow("test patterns not text") << transferFile({{"testPatterns/entries", QJsonArray{1}}})
                                                << "testPatterns/entries";
        QTest::newRow("not JSON") << QByteArray(R"({"format":"tarnix-settings",)") << "not JSON";
        QTest::newRow("settings not an object")
            << QByteArray(R"({"format":"tarnix-settings","version":1,"settings":[]})") << "\"settings\" is not an object";
        QTest::newRow("a playlist file") << QByteArray(R"({"format":"tarnix-playlist","version":1,"settings":{}})")
                                         << "\"format\"";
        QTest::newRow("no file") << QByteArray() << "not a readable file";
    }

    void refusedRestoreLeavesTheSettingsFileByteIdentical()
    {
        QFETCH(QByteArray, content);
        QFETCH(QString, reason);
        Rig rig;
        QVERIFY(writeSetting("ui/language", "en"));
        QVERIFY(writeSetting("switcher/rolandVr50Hd/port", 9000));
        const QByteArray before = fileBytes(rig.ini());
        QVERIFY(!before.isEmpty());
        QSignalSpy restored(&rig.transfer, &SettingsTransfer::settingsRestored);
        if (!content.isNull())
            writeFile(rig.path("in.json"), content);

        const SettingsTransferOutcome outcome = rig.restore(rig.path("in.json"));
        QVERIFY(!outcome.success);
        QCOMPARE(outcome.message.toString(), kFailed);
        QVERIFY2(outcome.detail.contains(reason), qPrintable(outcome.detail));
        QCOMPARE(rig.info.current()->severity, UserInfoSeverity::Error);
        QCOMPARE(fileBytes(rig.ini()), before);
        QCOMPARE(rig.language.currentLanguage(), QStringLiteral("en"));
        QCOMPARE(restored.size(), 0);
    }

    void theSizeLimitIsInclusive()
    {
        Rig rig;
        writeFile(rig.path("in.json"), paddedTo(4194304));
        const SettingsTransferOutcome outcome = rig.restore(rig.path("in.json"));
        QVERIFY2(outcome.success, qPrintable(outcome.detail));
        QCOMPARE(readIntSetting("time/fontSize"), 14);
    }

    // A restore is written, handed to the running parts, reads back the
    // same from the file, and exports to the same bytes twice.
    void restoreRoundTripsThroughTheSettingsFile()
    {
        Rig rig;
        const QJsonObject midi{
            {"enabled", true},
            {"device", "nanoKONTROL2"},
            {"bindings",
             QJsonObject{{"ManualTransition", QJsonObject{{"type", "cc"}, {"channel", 1}, {"number", 9}}},
                         {"TakeOnAir", QJsonObject{{"type", "note"}, {"channel", 1}, {"number", 36.0}}},
                         {"SetItemVolume", QJsonObject{{"type", "cc"}, {"channel", 1}, {"number", 2}, {"minimum", -600},
                                                       {"maximum", 0}}}}}};
        const QJsonObject incoming{
            {"midi/control", midi},
            {"shortcuts/bindings", QJsonObject{{"TakeOnAir", QJsonArray{"F5"}}, {"AddFile", QJsonArray{}}}},
            {"testPatterns/entries", QJsonArray{"/srv/bars, 75%.png", QString::fromUtf8("/srv/グリッド.png")}},
            {"time/fontFamily", "  Noto Sans CJK JP, Bold  "},
            {"audio/programOutputDeviceId", "@Variant(odd)"},
            {"files/stillCaptureDirectory", QString::fromUtf8("/home/op/スチル;x=1\\y")},
            {"switcher/rolandVr50Hd/host", "10.0.0.255"},
            {"time/timeZone", "UTC+09:00"},
            {"switcher/roland/profiles", QJsonObject{{"vr50hd", QJsonObject{{"port", 8023}}}}},
            {"operatorMonitor/timerWarning1Minutes", 5},
            {"operatorMonitor/timerWarning2Minutes", 5},
            {"player/fadeToBackground", true},
            {"fileDialog/lastPlaylistDirectory", "/elsewhere"},
            {"no/suchKey", 1},
        };
        writeFile(rig.path("in.json"), transferFile(incoming));
        QSignalSpy restored(&rig.transfer, &SettingsTransfer::settingsRestored);

        const SettingsTransferOutcome outcome = rig.restore(rig.path("in.json"));
        QVERIFY2(outcome.success, qPrintable(outcome.detail));
        QCOMPARE(restored.size(), 1);
        const QJsonObject applied = restored.at(0).at(0).toJsonObject();
        const QJsonObject bindings = applied.value("midi/control").toObject().value("bindings").toObject();
        QCOMPARE(bindings.keys(), (QStringList{"SetItemVolume", "TakeOnAir"}));
        QCOMPARE(bindings.value("SetItemVolume").toObject(),
                 (QJsonObject{{"type", "cc"}, {"channel", 1}, {"number", 2}, {"minimum", -960}, {"maximum", 60},
                              {"scale", "fader"}}));
        QCOMPARE(applied.value("time/fontFamily"), incoming.value("time/fontFamily"));
        QCOMPARE(applied.value("switcher/rolandVr50Hd/port"), QJsonValue(8023));

        QCOMPARE(readFreshCopy(rig.ini(), rig.path("copy.ini")), applied);
        QSettings file(rig.path("copy.ini"), QSettings::IniFormat);
        for (const char *dropped : {"player/fadeToBackground", "fileDialog/lastPlaylistDirectory", "no/suchKey"})
            QVERIFY2(!file.contains(dropped), dropped);

        QVERIFY(rig.save(rig.path("a.json")).success);
        QVERIFY(rig.restore(rig.path("a.json")).success);
        QVERIFY(rig.save(rig.path("b.json")).success);
        QCOMPARE(fileBytes(rig.path("b.json")), fileBytes(rig.path("a.json")));
        QCOMPARE(QJsonDocument::fromJson(fileBytes(rig.path("a.json"))).object().value("settings").toObject(), applied);
    }

    void restoreSwitchesTheLanguageAndSpeaksIt()
    {
        Rig rig;
        QSignalSpy changed(&rig.language, &UiLanguageManager::languageChanged);
        writeFile(rig.path("in.json"), transferFile({{"ui/language", "ja"}}));
        const SettingsTransferOutcome outcome = rig.restore(rig.path("in.json"));
        QVERIFY2(outcome.success, qPrintable(outcome.detail));
        QCOMPARE(rig.language.currentLanguage(), QStringLiteral("ja"));
        QCOMPARE(changed.size(), 1);
        QCOMPARE(rig.info.current()->severity, UserInfoSeverity::Success);
        QCOMPARE(rig.info.current()->text.toString(), QString::fromUtf8("設定を復元して保存しました。"));
        QCOMPARE(readStringSetting("ui/language"), QStringLiteral("ja"));
    }

    // At the end of the run a restore still waiting in the queue is dropped
    // before it writes.
    void closeDropsARestoreNotYetWritten()
    {
        Rig rig;
        QVERIFY(writeSetting("time/fontSize", 10));
        const QByteArray before = fileBytes(rig.ini());
        writeFile(rig.path("in.json"), transferFile({{"time/fontSize", 30}}));
        auto release = std::make_shared<std::atomic<bool>>(false);
        rig.queue.enqueue([release](BackgroundIoQueue::Result &) { while (!release->load()) QThread::yieldCurrentThread(); },
                          {});
        std::optional<SettingsTransferOutcome> outcome;
        rig.transfer.importSettings(rig.path("in.json"), [&](const SettingsTransferOutcome &o) { outcome = o; });
        rig.transfer.close();
        release->store(true);
        QVERIFY(QTest::qWaitFor([&] { return outcome.has_value(); }, 10000));
        QVERIFY(!outcome->success);
        QCOMPARE(fileBytes(rig.ini()), before);
    }

    // ---- the rules the restore borrows ----------------------------------

    void midiControlIsMigratedAndChecked_data()
    {
        QTest::addColumn<QJsonObject>("bindings");
        QTest::addColumn<QString>("refusal");  // empty: accepted
        const auto cc = [](int channel, int number) { return QJsonObject{{"type", "cc"}, {"channel", channel}, {"number", number}}; };
        QJsonObject fader = cc(1, 7);
        QTest::newRow("button and fader") << QJsonObject{{"OffAir", cc(1, 1)}, {"SetBgmVolume", fader}} << "";
        fader.insert("mode", "signed-bit-2");
        fader.insert("pickup", true);
        QTest::newRow("relative fader") << QJsonObject{{"SetEditVolume", fader}} << "";
        QTest::newRow("same message twice") << QJsonObject{{"OffAir", cc(2, 5)}, {"TakeOnAir", cc(2, 5)}}
                                            << "both answer cc/2/5";
        QTest::newRow("channel 17") << QJsonObject{{"OffAir", cc(17, 5)}} << "channel";
        QTest::newRow("number 128") << QJsonObject{{"OffAir", cc(1, 128)}} << "number";
        QTest::newRow("unknown action") << QJsonObject{{"Explode", cc(1, 1)}} << "not a MIDI action";
        QJsonObject buttonWithMode = cc(1, 1);
        buttonWithMode.insert("mode", "absolute");
        QTest::newRow("mode on a button") << QJsonObject{{"OffAir", buttonWithMode}} << "key mode is not accepted";
        QJsonObject inverted = cc(1, 1);
        inverted.insert("minimum", 0);
        inverted.insert("maximum", 0);
        inverted.insert("scale", "fader");
        QTest::newRow("empty range") << QJsonObject{{"SetMasterVolume", inverted}} << "minimum must be less than maximum";
        QJsonObject otherScale = cc(1, 1);
        otherScale.insert("scale", "linear");
        QTest::newRow("other scale") << QJsonObject{{"SetMasterVolume", otherScale}} << "scale";
    }

    void midiControlIsMigratedAndChecked()
    {
        QFETCH(QJsonObject, bindings);
        QFETCH(QString, refusal);
        QString error;
        const auto normalized =
            midi_control::normalize({{"enabled", true}, {"device", "X"}, {"bindings", bindings}}, &error);
        QCOMPARE(normalized.has_value(), refusal.isEmpty());
        if (!refusal.isEmpty()) {
            QVERIFY2(error.contains(refusal), qPrintable(error));
            return;
        }
        // Faders gain their scale; nothing else is added.
        for (auto it = bindings.begin(); it != bindings.end(); ++it) {
            QJsonObject expected = it.value().toObject();
            if (midi_control::isVolumeAction(it.key()))
                expected.insert("scale", "fader");
            QCOMPARE(normalized->value("bindings").toObject().value(it.key()).toObject(), expected);
        }
    }

    void midiControlShape()
    {
        QString error;
        QVERIFY(!midi_control::normalize({{"enabled", true}, {"device", "X"}}, &error));
        QVERIFY(!midi_control::normalize({{"enabled", true}, {"device", "A\nB"}, {"bindings", QJsonObject()}}, &error));
        QVERIFY(!midi_control::normalize(
            {{"enabled", true}, {"device", QString(513, 'x')}, {"bindings", QJsonObject()}}, &error));
        QVERIFY(!midi_control::normalize(
            {{"enabled", true}, {"device", ""}, {"bindings", QJsonObject()}, {"extra", 1}}, &error));
        // A fader saved with another range keeps it; only -600..0 was the old whole travel.
        const auto kept = midi_control::normalize(
            {{"enabled", false},
             {"device", ""},
             {"bindings", QJsonObject{{"SetItemVolume", QJsonObject{{"type", "cc"}, {"channel", 1}, {"number", 1},
                                                                    {"minimum", -600}, {"maximum", -100}}}}}},
            &error);
        QVERIFY2(kept, qPrintable(error));
        QCOMPARE(kept->value("bindings")["SetItemVolume"]["minimum"], QJsonValue(-600));
    }

    // MIDI buttons run the keyboard's commands by name: the two tables must
    // not drift apart.
    void midiActionsAreTheKeyboardsCommands()
    {
        const QStringList &names = midi_control::actionNames();
        QCOMPARE(names.size(), 76);
        QCOMPARE(QSet<QString>(names.begin(), names.end()).size(), names.size());
        QSet<QString> keyboard;
        for (const shortcuts::ShortcutDefinition &definition : shortcuts::shortcutDefinitions())
            keyboard.insert(definition.name);
        QCOMPARE(QSet<QString>(names.begin(), names.begin() + 64), keyboard);
    }

    void addressesAndModels()
    {
        for (const char *good : {"0.0.0.0", "192.168.0.10", "255.255.255.255", "10.0.0.1"})
            QVERIFY2(isDottedDecimalIpv4(good), good);
        for (const char *bad : {"192.168.01.1", "256.1.1.1", "1.2.3", "1.2.3.4.5", "1..2.3", " 1.2.3.4", "1.2.3.4\n",
                                "1.2.3.+4", "0x1.2.3.4", "1.2.3.0004"})
            QVERIFY2(!isDottedDecimalIpv4(bad), bad);
        QVERIFY(!isDottedDecimalIpv4(QString::fromUtf8("１.2.3.4")));
        for (const char *model : {"v8hd", "vr120hd", "v1hd-plus", "atem", "vr50hd"})
            QVERIFY2(isKnownSwitcherModel(model), model);
        for (const char *model : {"V8HD", "v8hd ", "vr50hd-mk3", ""})
            QVERIFY2(!isKnownSwitcherModel(model), model);
    }
};

QTEST_MAIN(TestSettingsTransfer)
#include "tst_settings_transfer.moc"
