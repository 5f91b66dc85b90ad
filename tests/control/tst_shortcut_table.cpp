#include "control/shortcut_table.h"

#include <QJsonArray>
#include <QtTest>

using namespace tarnix::shortcuts;

namespace {

QJsonObject bindings(std::initializer_list<std::pair<const char *, QStringList>> entries)
{
    QJsonObject object;
    for (const auto &[name, keys] : entries)
        object.insert(QLatin1String(name), QJsonArray::fromStringList(keys));
    return object;
}

QStringList portable(const QList<QKeySequence> &keys)
{
    QStringList texts;
    for (const QKeySequence &key : keys)
        texts << key.toString(QKeySequence::PortableText);
    return texts;
}

} // namespace

// The operator's stored bindings: what is refused whole, and how a valid
// object merges over the defaults.
class TestShortcutTable : public QObject
{
    Q_OBJECT

private slots:
    void tableOrderAndDefaults()
    {
        const auto &table = shortcutDefinitions();
        QCOMPARE(table.size(), kShortcutCount);
        QCOMPARE(table.at(2).name, QStringLiteral("TakeOnAir"));
        QCOMPARE(portable(table.at(2).defaults), (QStringList{"Return", "Enter"}));
        QCOMPARE(table.at(18).name, QStringLiteral("SelectItem1"));
        QCOMPARE(table.at(19).name, QStringLiteral("ActivatePlaylist1"));
        QCOMPARE(portable(table.at(35).defaults), QStringList{"Ctrl+9"});
        QCOMPARE(table.at(36).name, QStringLiteral("PlaylistPlayOnce"));
        QCOMPARE(table.at(57).name, QStringLiteral("OperatorTimerStart"));
        QCOMPARE(table.at(63).name, QStringLiteral("OpenMasterEq"));
        QVERIFY(validateBindings(QJsonObject()).isEmpty());
    }

    void refusals_data()
    {
        QTest::addColumn<QJsonObject>("stored");
        QTest::addColumn<QString>("offence");
        QTest::newRow("unknown name") << bindings({{"NoSuchAction", {}}}) << "NoSuchAction";
        QTest::newRow("reserved key") << bindings({{"OffAir", {"Ctrl+Up"}}}) << "OffAir / reserved : Ctrl+Up";
        QTest::newRow("three keys") << bindings({{"OffAir", {"F1", "F2", "F3"}}}) << "OffAir";
        QTest::newRow("not canonical") << bindings({{"AddFile", {"ctrl+f"}}}) << "AddFile";
        QTest::newRow("two chords") << bindings({{"AddFile", {"Ctrl+F, Ctrl+G"}}}) << "AddFile";
        QTest::newRow("empty text") << bindings({{"AddFile", {""}}}) << "AddFile";
        QTest::newRow("taken twice") << bindings({{"AddFile", {"F5"}}, {"OffAir", {"F5"}}})
                                     << "OffAir / AddFile : F5";
        QJsonObject notArray;
        notArray.insert(QStringLiteral("OffAir"), QStringLiteral("Esc"));
        QTest::newRow("not an array") << notArray << "OffAir";
    }

    void refusals()
    {
        QFETCH(QJsonObject, stored);
        QFETCH(QString, offence);
        QCOMPARE(validateBindings(stored), offence);
        // Refused whole: every shortcut has its defaults.
        const auto keys = effectiveBindings(stored);
        QCOMPARE(portable(keys.value("OffAir")), QStringList{"Esc"});
        QCOMPARE(portable(keys.value("AddFile")), QStringList{"Ctrl+F"});
    }

    void storedEntriesWinAndLaterShortcutsGiveWay()
    {
        // An object from before the operator timer: Ctrl+Alt+T belongs to
        // another action, so the timer's start keeps no key; an empty
        // array switches a shortcut off and frees its key.
        const QJsonObject stored = bindings({{"ToggleDsk", {"Ctrl+Alt+T"}}, {"OffAir", {}}, {"AddFile", {"Esc"}}});
        QVERIFY(validateBindings(stored).isEmpty());
        const auto keys = effectiveBindings(stored);
        QCOMPARE(portable(keys.value("ToggleDsk")), QStringList{"Ctrl+Alt+T"});
        QVERIFY(keys.value("OperatorTimerStart").isEmpty());
        QVERIFY(keys.value("OffAir").isEmpty());
        QCOMPARE(portable(keys.value("AddFile")), QStringList{"Esc"});
        QCOMPARE(portable(keys.value("OperatorTimerPause")), QStringList{"Ctrl+Alt+Y"});
        QCOMPARE(portable(keys.value("ToggleFtb")), QStringList{"Shift+F"});
        QCOMPARE(keys.size(), kShortcutCount);
    }
};

QTEST_MAIN(TestShortcutTable)
#include "tst_shortcut_table.moc"
