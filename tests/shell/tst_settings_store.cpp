// The settings store: defaults on a first run, typed reads of what another
// process wrote, JSON-valued keys, and refused writes.

#include "kit/log_capture.h"

#include "shell/application_identity.h"
#include "shell/settings_store.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

using namespace tarnix;

namespace {

QJsonObject probe(const QString &ini, const QStringList &arguments, int *exitCode = nullptr)
{
    QProcess process;
    process.start(QStringLiteral(TARNIX_SETTINGS_PROBE), QStringList{ini} + arguments);
    if (!process.waitForFinished(20000))
        return {};
    if (exitCode)
        *exitCode = process.exitCode();
    return QJsonDocument::fromJson(process.readAllStandardOutput()).object();
}

QJsonValue::Type jsonTypeOf(SettingType type)
{
    switch (type) {
    case SettingType::Bool: return QJsonValue::Bool;
    case SettingType::Int: return QJsonValue::Double;
    case SettingType::String: return QJsonValue::String;
    case SettingType::StringList: return QJsonValue::Array;
    case SettingType::JsonObject: return QJsonValue::Object;
    case SettingType::JsonArray: return QJsonValue::Null;
    }
    return QJsonValue::Undefined;
}

} // namespace

class TestSettingsStore : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    QString ini() const { return m_dir.filePath("user.ini"); }

private slots:
    void init()
    {
        QFile::remove(ini());
        publishSettingsLocation(ini(), false);
    }

    void firstRunReadsDefaultsAndWritesNothing()
    {
        QVERIFY(settingDefinitions().size() >= 95);
        for (const SettingDefinition &definition : settingDefinitions()) {
            QVERIFY2(definition.defaultValue.type() == jsonTypeOf(definition.type), qPrintable(definition.key));
            if (definition.key.endsWith("/*"))
                continue;
            const QVariant value = readSetting(definition.key);
            QVERIFY2(value.isValid(), qPrintable(definition.key));
            QCOMPARE(settingsDefaults().value(definition.key), definition.defaultValue);
        }
        QCOMPARE(readStringSetting("appearance/controllerSkin"), QStringLiteral("hardware"));
        QCOMPARE(readIntSetting("switcher/rolandVr50Hd/port"), 8023);
        QCOMPARE(readBoolSetting("updates/checkAutomatically"), true);
        QCOMPARE(readJsonSetting("midi/control").toObject().value("bindings").toObject(), QJsonObject());
        QVERIFY(readJsonSetting("testPatterns/entries").isNull());
        QCOMPARE(readStringSetting("audio/uvcMappings//dev/video0"), QString());
        QVERIFY(!readSetting("no/suchKey").isValid());
        QVERIFY(!QFile::exists(ini()));
    }

    // What one process writes, another reads back with the default's type.
    void crossProcessRoundTrip_data()
    {
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("written");
        QTest::addColumn<QString>("type");
        QTest::addColumn<QString>("read");
        QTest::newRow("bool") << "video/programOutput4k" << "true" << "bool" << "true";
        QTest::newRow("int") << "operatorMonitor/timerDurationSeconds" << "90" << "int" << "90";
        QTest::newRow("string with comma") << "time/fontFamily" << "\"Noto Sans, Bold\"" << "QString"
                                           << "\"Noto Sans, Bold\"";
        QTest::newRow("numeric string") << "deckLink/fillMode" << "\"12\"" << "QString" << "\"12\"";
        QTest::newRow("string list") << "networkVideo/localOutputSourceNames" << "[\"A\",\"B, C\"]"
                                     << "QStringList" << "[\"A\",\"B, C\"]";
        QTest::newRow("json object") << "switcher/roland/profiles"
                                     << "{\"vr50\":{\"inputs\":[1,2],\"name\":\"Main, left\"}}" << "QJsonValue"
                                     << "{\"vr50\":{\"inputs\":[1,2],\"name\":\"Main, left\"}}";
        QTest::newRow("json array") << "testPatterns/entries" << "[\"/a.png\",{\"x\":1}]" << "QJsonValue"
                                    << "[\"/a.png\",{\"x\":1}]";
        QTest::newRow("json null") << "testPatterns/entries" << "null" << "QJsonValue" << "null";
        QTest::newRow("patterned key") << "audio/uvcMappings//dev/video2" << "\"hw:1\"" << "QString" << "\"hw:1\"";
    }
    void crossProcessRoundTrip()
    {
        QFETCH(QString, key);
        QFETCH(QString, written);
        QFETCH(QString, type);
        QFETCH(QString, read);
        int exitCode = -1;
        probe(ini(), {"write", key, written}, &exitCode);
        QCOMPARE(exitCode, 0);
        const QJsonObject result = probe(ini(), {"read", key});
        QCOMPARE(result.value("type").toString(), type);
        const QJsonValue expected = QJsonDocument::fromJson("[" + read.toUtf8() + "]").array().at(0);
        QCOMPARE(result.value("value"), expected);
    }

    void handWrittenAndDamagedValues()
    {
        QFile file(ini());
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("[midi]\ncontrol={\"enabled\":true,\"device\":\"X\",\"bindings\":{}}\n"
                   "[shortcuts]\nbindings={not json\n"
                   "[time]\nfontSize=large\n"
                   "[onAir]\ntoggleMode=1\n");
        file.close();
        tarnix::testkit::LogCapture warnings(tarnix::testkit::LogCapture::warnings());
        // INI quoting eats the quotes of JSON typed in by hand: unreadable,
        // so the default applies.
        QCOMPARE(readJsonSetting("midi/control").toObject().value("enabled"), QJsonValue(false));
        QCOMPARE(readJsonSetting("shortcuts/bindings"), QJsonValue(QJsonObject()));
        QCOMPARE(readIntSetting("time/fontSize"), 12);
        QCOMPARE(readBoolSetting("onAir/toggleMode"), true);
        QCOMPARE(warnings.texts().size(), 3);
        QVERIFY(warnings.contains("Setting shortcuts/bindings holds {not json"));
    }

    void refusedWritesChangeNothing()
    {
        QString error;
        QVERIFY(!writeSetting("midi/control", QJsonArray{1, 2}, &error));
        QVERIFY(error.contains("midi/control"));
        QVERIFY(!writeSetting("no/suchKey", 1, &error));
        QVERIFY(!writeSetting("time/fontSize", "twelve", &error));
        QVERIFY(!QFile::exists(ini()));
        QVERIFY(writeSetting("midi/control", QVariantMap{{"enabled", true}}, &error));
        QVERIFY(error.isEmpty());
        QCOMPARE(QSettings(ini(), QSettings::IniFormat).value("midi/control").toString(),
                 QStringLiteral("{\"enabled\":true}"));
    }
};

QTEST_GUILESS_MAIN(TestSettingsStore)
#include "tst_settings_store.moc"
