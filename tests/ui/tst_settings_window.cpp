// The settings window over a settings file of its own: what it shows, what
// it refuses and says, what it saves, and the shortcut table's whole-table
// save.

#include "control/shortcut_table.h"
#include "shell/application_identity.h"
#include "shell/background_io_queue.h"
#include "shell/settings_editor.h"
#include "shell/settings_store.h"
#include "ui/settings_shortcuts_page.h"
#include "ui/settings_window.h"

#include <QApplication>
#include <QComboBox>
#include <QFile>
#include <QJsonArray>
#include <QJsonObject>
#include <QTableWidget>
#include <QKeySequenceEdit>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QSettings>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace tarnix;

namespace {

// A window on a fresh settings file, opened and loaded.
struct Rig {
    QTemporaryDir dir;
    BackgroundIoQueue queue;
    SettingsEditor editor{&queue, &shortcuts::validateBindings};
    std::unique_ptr<SettingsWindow> window;

    explicit Rig(const QVariantMap &stored = {})
    {
        publishSettingsLocation(dir.filePath("user.ini"), false);
        for (auto it = stored.cbegin(); it != stored.cend(); ++it)
            writeSetting(it.key(), it.value());
        window = std::make_unique<SettingsWindow>(&editor);
        QSignalSpy loaded(&editor, &SettingsEditor::loaded);
        window->open();
        loaded.wait(5000);
    }

    // What the file holds now, read past every cache.
    QVariant stored(const QString &key) const
    {
        return QSettings(settingsFilePath(), QSettings::IniFormat).value(key);
    }
    QByteArray fileBytes() const
    {
        QFile file(settingsFilePath());
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    template <typename T>
    T *child(const char *name) const
    {
        return window->findChild<T *>(QString::fromLatin1(name));
    }
    SettingsShortcutsPage *shortcutsPage() const { return child<SettingsShortcutsPage>("settingsShortcutsPage"); }
    QKeySequenceEdit *keyEdit(const QString &name, int column) const
    {
        return window->findChild<QKeySequenceEdit *>(QStringLiteral("shortcutKey%1_%2").arg(name).arg(column));
    }
    // Types a text into a field and leaves it, as the operator does.
    void enter(QLineEdit *edit, const QString &text)
    {
        edit->setText(text);
        emit edit->editingFinished();
    }
    void choose(QComboBox *combo, int index)
    {
        combo->setCurrentIndex(index);
        emit combo->activated(index);
    }
};

} // namespace

class TestSettingsWindow : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        // The keyboard's table is made on the main thread, as the head does,
        // before a worker checks bindings with it.
        QVERIFY(!shortcuts::validateBindings({}).size());
    }

    void cleanupTestCase() { qApp->setProperty("tarnix.settingsFile", QVariant()); }

    void pagesAndStoredValuesShow()
    {
        Rig rig({{"time/remainingTotal", true},
                 {"time/timeZone", "Europe/Berlin"},
                 {"control/socketPath", "/run/tarnix.sock"},
                 {"shortcuts/bindings", QJsonObject{{"AddFile", QJsonArray{"Ctrl+F9"}}}}});
        const QStringList pages{"settingsGeneralPage",  "settingsOnAirPage",     "settingsAudioPage",
                                "settingsPlaylistPage", "settingsFilesPage",     "settingsOutputsPage",
                                "settingsShortcutsPage", "settingsControlPage"};
        QCOMPARE(rig.child<QListWidget>("settingsPageList")->count(), pages.size());
        for (const QString &page : pages) {
            QVERIFY2(rig.window->showPage(page), qPrintable(page));
            QCOMPARE(rig.window->currentPage(), page);
        }
        QCOMPARE(rig.child<QComboBox>("settingsRemainingTotalCombo")->currentData().toBool(), true);
        QCOMPARE(rig.child<QComboBox>("settingsTimeZoneCombo")->currentText(), QStringLiteral("Europe/Berlin"));
        QVERIFY(rig.child<QComboBox>("settingsTimeZoneCombo")->findText("Asia/Tokyo") >= 0);
        QCOMPARE(rig.child<QLineEdit>("settingsControlSocketPathEdit")->text(), QStringLiteral("/run/tarnix.sock"));
        // The stored key, and the defaults of the shortcuts it leaves out.
        QCOMPARE(rig.keyEdit("AddFile", 1)->keySequence(), QKeySequence("Ctrl+F9"));
        QCOMPARE(rig.keyEdit("TakeOnAir", 1)->keySequence(), QKeySequence(Qt::Key_Return));
        QCOMPARE(rig.child<QTableWidget>("settingsShortcutsTable")->rowCount(), shortcuts::kShortcutCount);
    }

    // A value its rule refuses leaves the file as it was and says the
    // rule next to the field; the field keeps the text to be corrected.
    void refusedValueIsNotSaved_data()
    {
        QTest::addColumn<QString>("field");
        QTest::addColumn<QString>("key");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("rule");
        QTest::newRow("colour name") << "settingsBackgroundColorEdit" << "player/backgroundColor" << "red"
                                     << "matches \"^#[0-9a-fA-F]{6}$\"";
        QTest::newRow("colour with a line break") << "settingsBackgroundColorEdit" << "player/backgroundColor"
                                                  << "#00ff00\n" << "matches";
        QTest::newRow("unknown zone") << "settingsTimeZoneCombo" << "time/timeZone" << "Mars/Olympus_Mons"
                                      << "a name that makes a valid time zone";
        QTest::newRow("zone as a path") << "settingsTimeZoneCombo" << "time/timeZone" << "../../etc/passwd"
                                        << "a name that makes a valid time zone";
        QTest::newRow("relative socket") << "settingsControlSocketPathEdit" << "control/socketPath" << "tarnix.sock"
                                         << "absolute path";
        QTest::newRow("socket path too long") << "settingsControlSocketPathEdit" << "control/socketPath"
                                              << "/" + QString(120, 'a') << "at most 107 bytes";
    }

    void refusedValueIsNotSaved()
    {
        QFETCH(QString, field);
        QFETCH(QString, key);
        QFETCH(QString, text);
        QFETCH(QString, rule);
        Rig rig({{"ui/language", "en"}});
        const QByteArray before = rig.fileBytes();
        QSignalSpy refused(&rig.editor, &SettingsEditor::refused);
        QSignalSpy changed(&rig.editor, &SettingsEditor::changed);
        QLineEdit *edit = rig.window->findChild<QLineEdit *>(field);
        if (!edit)
            edit = rig.window->findChild<QComboBox *>(field)->lineEdit();
        rig.enter(edit, text);
        QVERIFY(refused.wait(5000));
        QCOMPARE(refused.first().at(0).toString(), key);
        QVERIFY(changed.isEmpty());
        QCOMPARE(rig.fileBytes(), before);
        const QString message = rig.window->message(key);
        QVERIFY2(message.startsWith("Not saved: " + key + ": ") && message.contains(rule), qPrintable(message));
        QCOMPARE(edit->text(), text);

        // Corrected, it is saved and the message goes.
        const QString good = key == "player/backgroundColor" ? "#102030"
            : key == "time/timeZone"                         ? "UTC"
                                                             : "/tmp/tarnix.sock";
        rig.enter(edit, good);
        QVERIFY(changed.wait(5000));
        QCOMPARE(rig.stored(key).toString(), good);
        QVERIFY(rig.window->message(key).isEmpty());
    }

    // A choice is saved as its key's type, once; choosing it again asks
    // nothing of the file.
    void changeIsSavedOnce()
    {
        Rig rig;
        QSignalSpy changed(&rig.editor, &SettingsEditor::changed);
        rig.choose(rig.child<QComboBox>("settingsRemainingTotalCombo"), 1);
        QVERIFY(changed.wait(5000));
        QCOMPARE(changed.first().at(0).toString(), QStringLiteral("time/remainingTotal"));
        QCOMPARE(changed.first().at(1).value<QJsonValue>(), QJsonValue(true));
        QCOMPARE(readBoolSetting("time/remainingTotal"), true);

        rig.choose(rig.child<QComboBox>("settingsEditActivationCombo"), 1);
        QVERIFY(changed.wait(5000));
        QCOMPARE(readIntSetting("playlist/editActivationMode"), 1);

        rig.choose(rig.child<QComboBox>("settingsLanguageCombo"), 1);
        QVERIFY(changed.wait(5000));
        QCOMPARE(rig.stored("ui/language").toString(), QStringLiteral("ja"));

        changed.clear();
        rig.choose(rig.child<QComboBox>("settingsRemainingTotalCombo"), 1);
        QTRY_VERIFY(rig.queue.isIdle());
        QVERIFY(changed.isEmpty());
    }

    void shortcutTableSavesOnlyWhole_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QKeySequence>("key");
        QTest::addColumn<QString>("offence");
        QTest::newRow("duplicate") << "ToggleFtb" << QKeySequence("Ctrl+F") << "ToggleFtb / AddFile : Ctrl+F";
        QTest::newRow("reserved") << "ToggleDsk" << QKeySequence("Ctrl+Alt+S") << "ToggleDsk / reserved : Ctrl+Alt+S";
        QTest::newRow("two chords") << "ToggleDsk" << QKeySequence("Ctrl+K, Ctrl+D") << "ToggleDsk";
    }

    void shortcutTableSavesOnlyWhole()
    {
        QFETCH(QString, name);
        QFETCH(QKeySequence, key);
        QFETCH(QString, offence);
        Rig rig;
        SettingsShortcutsPage *page = rig.shortcutsPage();
        const QByteArray before = rig.fileBytes();
        rig.keyEdit(QStringLiteral("OffAir"), 2)->setKeySequence(QKeySequence("Ctrl+F12"));
        rig.keyEdit(name, 2)->setKeySequence(key);
        rig.child<QPushButton>("settingsShortcutsSaveButton")->click();
        QVERIFY2(page->status().startsWith(QStringLiteral("Duplicate, reserved or invalid key. Not saved: ") + offence),
                 qPrintable(page->status()));
        QTRY_VERIFY(rig.queue.isIdle());
        QCOMPARE(rig.fileBytes(), before);

        // Without the offending key the whole table is saved.
        QSignalSpy changed(&rig.editor, &SettingsEditor::changed);
        rig.keyEdit(name, 2)->clear();
        rig.child<QPushButton>("settingsShortcutsSaveButton")->click();
        QVERIFY(changed.wait(5000));
        QCOMPARE(page->status(), QStringLiteral("Shortcuts saved and applied."));
        const QJsonObject saved = readJsonSetting("shortcuts/bindings").toObject();
        QCOMPARE(saved.size(), shortcuts::kShortcutCount);
        QCOMPARE(saved.value("OffAir").toArray(), (QJsonArray{"Esc", "Ctrl+F12"}));
        QVERIFY(shortcuts::validateBindings(saved).isEmpty());
    }

    // Defaults fill the table and wait for Save; the file keeps the
    // operator's keys until then.
    void defaultsWaitForSave()
    {
        Rig rig({{"shortcuts/bindings", QJsonObject{{"AddFile", QJsonArray{"Ctrl+F9"}}, {"OffAir", QJsonArray{}}}}});
        const QByteArray before = rig.fileBytes();
        QCOMPARE(rig.keyEdit("OffAir", 1)->keySequence(), QKeySequence());
        rig.child<QPushButton>("settingsShortcutsDefaultsButton")->click();
        QCOMPARE(rig.shortcutsPage()->status(), QStringLiteral("Defaults loaded. Save to apply."));
        QCOMPARE(rig.keyEdit("AddFile", 1)->keySequence(), QKeySequence("Ctrl+F"));
        QCOMPARE(rig.keyEdit("OffAir", 1)->keySequence(), QKeySequence(Qt::Key_Escape));
        QTRY_VERIFY(rig.queue.isIdle());
        QCOMPARE(rig.fileBytes(), before);
    }
};

QTEST_MAIN(TestSettingsWindow)
#include "tst_settings_window.moc"
