// Services the operator sees: the message centre and its bar, the language
// catalogues, the background file queue and the log viewer.

#include "log_test_helpers.h"
#include "support/test_paths.h"

#include "shell/application_identity.h"
#include "shell/application_log.h"
#include "shell/background_io_queue.h"
#include "shell/localized_text.h"
#include "shell/log_viewer.h"
#include "shell/startup_windows.h"
#include "shell/ui_language_manager.h"
#include "shell/user_info_bar.h"
#include "shell/user_info_center.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDirIterator>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSettings>
#include <QTemporaryDir>
#include <QThread>
#include <QtTest>
#include <QXmlStreamReader>

#include <atomic>

using namespace tarnix;
using namespace tarnix::test;

namespace {

// id -> (source text, translation) of a catalogue source.
QMap<QString, QPair<QString, QString>> catalogue(const QString &language)
{
    QMap<QString, QPair<QString, QString>> entries;
    QFile file(QStringLiteral(TARNIX_TEST_SOURCE_DIR "/i18n/tarnix_%1.ts").arg(language));
    if (!file.open(QIODevice::ReadOnly))
        return entries;
    QXmlStreamReader xml(&file);
    QString id, source;
    while (!xml.atEnd()) {
        if (xml.readNext() != QXmlStreamReader::StartElement)
            continue;
        if (xml.name() == QLatin1String("message"))
            id = xml.attributes().value(QLatin1String("id")).toString();
        else if (xml.name() == QLatin1String("source"))
            source = xml.readElementText();
        else if (xml.name() == QLatin1String("translation"))
            entries.insert(id, {source, xml.readElementText()});
    }
    return entries;
}

// Every key the application's code asks the catalogues for.
QSet<QString> keysUsedInCode()
{
    static const QRegularExpression use(QString::fromLatin1(
        R"re((?:localized|LocalizedText|qtTrId|text)\s*[({]\s*(?:QStringLiteral\(\s*)?"([a-z0-9_]+(?:\.[a-z0-9_]+)+)")re"));
    static const QRegularExpression table(QString::fromLatin1(R"re(\{"[A-Z]+",\s*"(info\.source\.[a-z]+)"\})re"));
    static const QRegularExpression key(
        QString::fromLatin1(R"re(QStringLiteral\("((?:info|logs|program|settings|startup)\.[a-z0-9_.]+)"\))re"));
    QSet<QString> keys;
    QDirIterator it(QStringLiteral(TARNIX_TEST_SOURCE_DIR "/apps/desktop"), {"*.cpp", "*.h"}, QDir::Files,
                    QDirIterator::Subdirectories);
    while (it.hasNext()) {
        QFile file(it.next());
        if (!file.open(QIODevice::ReadOnly))
            continue;
        const QString text = QString::fromUtf8(file.readAll());
        for (const auto *pattern : {&use, &table, &key}) {
            auto matches = pattern->globalMatch(text);
            while (matches.hasNext())
                keys.insert(matches.next().captured(1));
        }
    }
    return keys;
}

UserInfoMessage currentOf(const UserInfoCenter &center)
{
    return center.current().value_or(UserInfoMessage{});
}

} // namespace

class TestOperatorServices : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;

private slots:
    void initTestCase()
    {
        QStandardPaths::setTestModeEnabled(true);
        publishSettingsLocation(m_dir.filePath("user.ini"), false);
    }

    // ---- catalogues ----------------------------------------------------

    void cataloguesCoverEveryKeyInCode()
    {
        const auto english = catalogue("en");
        const auto japanese = catalogue("ja");
        QVERIFY(english.size() > 30);
        const QSet<QString> used = keysUsedInCode();
        QVERIFY(used.contains("startup.gstreamer_runtime_missing"));
        QVERIFY(used.contains("info.source.uvc"));
        for (const QString &key : used) {
            QVERIFY2(english.contains(key), qPrintable("missing from the English catalogue: " + key));
            QVERIFY2(japanese.contains(key), qPrintable("missing from the Japanese catalogue: " + key));
            QVERIFY2(hasEnglishText(key.toUtf8().constData()), qPrintable("not compiled: " + key));
        }
        // Studio words kept in Latin letters on Japanese consoles too, and
        // texts that are only a format.
        const QSet<QString> keptAsIs{"EDIT", "UVC", "BGM", "ON AIR", "OFF AIR", "GOTO", "%1 %2%",
                                     "ON", "OFF", "PFL %1", "P%1-%2  %3", "EDIT ERROR | %1"};
        QStringList sameAsEnglish;
        for (auto it = english.cbegin(); it != english.cend(); ++it) {
            QVERIFY2(!it.value().second.isEmpty() && it.value().second != it.key(),
                     qPrintable("English text is its key: " + it.key()));
            QCOMPARE(it.value().second, it.value().first);
            QVERIFY2(japanese.contains(it.key()), qPrintable("no Japanese entry: " + it.key()));
            if (japanese.value(it.key()).second == it.value().second && !keptAsIs.contains(it.value().second))
                sameAsEnglish.append(it.key());
        }
        QVERIFY2(sameAsEnglish.isEmpty(), qPrintable("Japanese entries copy the English text: " + sameAsEnglish.join(", ")));
    }

    void languageLoadAndFallback()
    {
        UiLanguageManager manager;
        QCOMPARE(localized("logs.show"), QStringLiteral("Show Log"));  // English before any load
        QSignalSpy changed(&manager, &UiLanguageManager::languageChanged);

        QSettings(settingsFilePath(), QSettings::IniFormat).setValue("ui/language", "ja");
        QVERIFY(manager.loadStoredLanguage());
        QCOMPARE(manager.currentLanguage(), QStringLiteral("ja"));
        QCOMPARE(changed.size(), 1);
        QCOMPARE(localized("startup.gstreamer_runtime_missing"),
                 QString::fromUtf8("GStreamer ランタイムが見つかりませんでした。"));
        // A key no catalogue knows shows its fallback, then the key.
        QCOMPARE(LocalizedText("not.yet.catalogued", {}, "Fallback %1").toString(), QStringLiteral("Fallback %1"));
        QCOMPARE(LocalizedText("not.yet.catalogued").toString(), QStringLiteral("not.yet.catalogued"));
        // Arguments are filled in one pass.
        QCOMPARE(LocalizedText("logs.saved", {"%2 and %1"}).toString(), QString::fromUtf8("保存しました: %2 and %1"));

        QString error;
        QVERIFY(!manager.setLanguage("fr", &error));
        QCOMPARE(manager.currentLanguage(), QStringLiteral("ja"));
        QCOMPARE(error, QString::fromUtf8("不明な表示言語です。"));

        QSettings(settingsFilePath(), QSettings::IniFormat).setValue("ui/language", "xx");
        QVERIFY(manager.loadStoredLanguage(&error));
        QCOMPARE(manager.currentLanguage(), QStringLiteral("en"));
        QCOMPARE(localized("logs.saved"), QStringLiteral("Saved: %1"));
        QSettings(settingsFilePath(), QSettings::IniFormat).remove("ui/language");
    }

    // ---- operator messages ---------------------------------------------

    void identicalPostsShowOnceAndLogEachTime()
    {
        QTemporaryDir logs;
        LogOptions options;
        options.writeStartRecords = false;
        QVERIFY(startLog(logs.path(), options));
        UserInfoCenter center;
        QSignalSpy changed(&center, &UserInfoCenter::messageChanged);
        for (int i = 0; i < 10; ++i)
            center.post(UserInfoSeverity::Warning, "PLAYLIST", LocalizedText("startup.pfl_output_missing"), "dev 1");
        center.post(UserInfoSeverity::Success, "  ", LocalizedText("logs.show"));
        center.post(UserInfoSeverity::Error, "SYSTEM", LocalizedText("", {}, "   "));  // empty: logged, dropped
        stopLog();
        QCOMPARE(changed.size(), 1);
        QCOMPARE(center.waiting().size(), 1);
        QCOMPARE(center.waiting().first().source, QStringLiteral("SYSTEM"));
        const QList<QJsonObject> records = logRecords(logs.path());
        const QStringList notices = messages(records, "SYSTEM").filter("NOTICE");
        QCOMPARE(notices.count("NOTICE PLAYLIST PFL audio device not found. dev 1"), 10);
        QCOMPARE(records.first().value("level").toString(), QStringLiteral("WARN"));
        QCOMPARE(notices.size(), 12);
    }

    void severityOrderPreemptionAndQuestions()
    {
        UserInfoCenter center(nullptr, std::chrono::milliseconds(60000));
        auto post = [&](UserInfoSeverity s, const char *text) { center.post(s, "SYSTEM", LocalizedText("", {}, text)); };
        post(UserInfoSeverity::Warning, "w1");
        post(UserInfoSeverity::Success, "s1");
        post(UserInfoSeverity::Warning, "w2");
        post(UserInfoSeverity::Success, "s2");
        QStringList waiting;
        for (const auto &m : center.waiting())
            waiting << m.text.fallback;
        QCOMPARE(waiting, (QStringList{"w2", "s1", "s2"}));

        // An error pre-empts: the current message and lower waiting ones go.
        post(UserInfoSeverity::Error, "e1");
        QCOMPARE(currentOf(center).text.fallback, QStringLiteral("e1"));
        QVERIFY(center.waiting().isEmpty());
        center.dismiss();
        QVERIFY(!center.current());

        // A question has no time-out and is not pre-empted by an error.
        UserInfoCenter quick(nullptr, std::chrono::milliseconds(20));
        QSignalSpy answered(&quick, &UserInfoCenter::pflSameDeviceAnswered);
        quick.askPflSameDevice();
        QVERIFY(!quick.timerActive());
        quick.post(UserInfoSeverity::Error, "SYSTEM", LocalizedText("", {}, "later"));
        QTest::qWait(80);
        QVERIFY(currentOf(quick).awaitingAnswer);
        QCOMPARE(quick.waiting().size(), 1);
        quick.answerPflSameDevice(false);
        QCOMPARE(answered.size(), 1);
        QCOMPARE(answered.first().first().toBool(), false);
        QCOMPARE(currentOf(quick).text.fallback, QStringLiteral("later"));
        QTRY_VERIFY_WITH_TIMEOUT(!quick.current(), 2000);  // timed out, nothing left
    }

    void barRendersAtDisplayTimeAndRuntimeWindow()
    {
        UiLanguageManager manager;
        QVERIFY(manager.setLanguage("en"));
        UserInfoCenter center;
        QScopedPointer<QWidget> window(createRuntimeMissingWindow(&center));
        center.post(UserInfoSeverity::Error, "SYSTEM", LocalizedText("startup.gstreamer_runtime_missing"),
                    "detail <b>", true);
        window->show();
        auto *message = window->findChild<QLabel *>("userInfoMessageLabel");
        auto *source = window->findChild<QLabel *>("userInfoSourceLabel");
        QVERIFY(message && source && window->findChild<QLabel *>("userInfoSeverityLabel"));
        QCOMPARE(window->objectName(), QStringLiteral("controllerWindow"));
        QVERIFY(message->text().startsWith("The GStreamer runtime could not be found.<br>detail &lt;b&gt;"));
        QVERIFY(message->text().contains("href=\"audio-settings\""));
        QCOMPARE(source->text(), QStringLiteral("System"));
        auto *bar = window->findChild<UserInfoBar *>("userInfoBar");
        QCOMPARE(bar->accessibleName(),
                 QStringLiteral("User information: Error, System, The GStreamer runtime could not be found."));

        QVERIFY(manager.setLanguage("ja"));
        QTRY_VERIFY_WITH_TIMEOUT(message->text().startsWith(QString::fromUtf8("GStreamer ランタイム")), 2000);
        QCOMPARE(source->text(), QString::fromUtf8("システム"));
        QVERIFY(manager.setLanguage("en"));

        QSignalSpy audio(&center, &UserInfoCenter::audioSettingsRequested);
        emit message->linkActivated("audio-settings");
        QCOMPARE(audio.size(), 1);
        center.dismiss();
        QVERIFY(message->text().isEmpty());
        QVERIFY(!source->isVisible());
    }

    // ---- background file queue -----------------------------------------

    void ioJobsRunOneAtATimeInOrder()
    {
        BackgroundIoQueue queue(nullptr, std::chrono::milliseconds(1));
        QVERIFY(!queue.timerActive());
        std::atomic<int> running{0};
        std::atomic<bool> overlapped{false};
        QStringList completions;
        Qt::HANDLE mainThread = QThread::currentThreadId();
        Qt::HANDLE workThread = mainThread;
        for (int i = 0; i < 3; ++i) {
            queue.enqueue(
                [&, i](BackgroundIoQueue::Result &result) {
                    if (running.fetch_add(1) != 0)
                        overlapped = true;
                    workThread = QThread::currentThreadId();
                    QThread::msleep(5);  // a slow disk
                    running.fetch_sub(1);
                    result.success = i != 1;
                    result.errorText = i == 1 ? QStringLiteral("disk full") : QString();
                },
                [&, i](const BackgroundIoQueue::Result &result) {
                    QCOMPARE(QThread::currentThreadId(), mainThread);
                    completions << QStringLiteral("%1:%2%3").arg(i).arg(result.success).arg(result.errorText);
                });
        }
        QVERIFY(queue.timerActive());
        QTRY_COMPARE_WITH_TIMEOUT(completions.size(), 3, 5000);
        QCOMPARE(completions, (QStringList{"0:1", "1:0disk full", "2:1"}));
        QVERIFY(!overlapped);
        QVERIFY(workThread != mainThread);
        QTRY_VERIFY_WITH_TIMEOUT(!queue.timerActive(), 1000);
    }

    // At exit nothing may be lost: jobs not yet started, and jobs that
    // completions add, run before waitForIdle() returns.
    void waitForIdleRunsEverythingLeft()
    {
        BackgroundIoQueue queue;
        QStringList order;
        Qt::HANDLE caller = QThread::currentThreadId();
        bool completionsOnCaller = true;
        auto job = [&](const QString &name, std::function<void()> then = {}) {
            queue.enqueue([](BackgroundIoQueue::Result &result) { result.success = true; },
                          [&, name, then](const BackgroundIoQueue::Result &) {
                              completionsOnCaller &= QThread::currentThreadId() == caller;
                              order << name;
                              if (then)
                                  then();
                          });
        };
        job("first", [&] { job("added by first"); });
        job("second");
        queue.waitForIdle();
        QCOMPARE(order, (QStringList{"first", "second", "added by first"}));
        QVERIFY(completionsOnCaller);
        QVERIFY(queue.isIdle());
        QVERIFY(!queue.timerActive());
    }

    // ---- log viewer ----------------------------------------------------

    void logViewerFilterSearchAndSave()
    {
        QTemporaryDir logs;
        LogOptions options;
        options.writeStartRecords = false;
        QVERIFY(startLog(logs.path(), options));
        writeLog(LogLevel::Info, "SYSTEM", "Deck A Ready");
        writeLog(LogLevel::Warn, "PLAYOUT", "deck b late");
        writeLog(LogLevel::Error, "AUDIO", "device lost");

        QMenu menu;
        BackgroundIoQueue queue(nullptr, std::chrono::milliseconds(1));
        UiLanguageManager manager;
        QWidget parent;
        installLogViewer(&menu, &parent, &manager, &queue);
        auto *debugAction = menu.findChild<QAction *>("debugModeAction");
        QVERIFY(debugAction && debugAction->isCheckable());
        debugAction->setChecked(true);
        QVERIFY(debugMode());
        debugAction->setChecked(false);
        menu.findChild<QAction *>("showLogAction")->trigger();
        auto *viewer = parent.findChild<LogViewer *>("logViewer");
        QVERIFY(viewer && viewer->isVisible());
        auto *text = viewer->findChild<QPlainTextEdit *>("logText");
        auto *filter = viewer->findChild<QComboBox *>("logLevelFilter");
        auto *search = viewer->findChild<QLineEdit *>("logSearch");
        auto *status = viewer->findChild<QLabel *>("logStatus");
        QVERIFY(text && filter && search && status && text->isReadOnly());
        QCOMPARE(status->text(), QStringLiteral("Latest 2,000 records shown. Automatic logs: %1 (10 MB × 10 files).")
                                     .arg(logs.path()));
        QVERIFY(text->toPlainText().contains("] SYSTEM  Deck A Ready"));

        filter->setCurrentIndex(1);
        QStringList lines = text->toPlainText().split('\n');
        for (const QString &line : lines)
            QVERIFY2(line.contains("[WARN] ") || line.contains("[ERROR] "), qPrintable(line));
        QVERIFY(lines.contains(lines.filter("[WARN] PLAYOUT  deck b late").value(0)));
        QCOMPARE(lines.filter("[ERROR] AUDIO  device lost").size(), 1);
        QCOMPARE(lines.filter("Deck A Ready").size(), 0);
        search->setText("DECK");
        lines = text->toPlainText().split('\n');
        QCOMPARE(lines.size(), 1);
        filter->setCurrentIndex(0);
        QCOMPARE(text->toPlainText().split('\n').size(), 2);

        const QString target = logs.filePath("export/tarnix-log.txt");
        QDir().mkpath(logs.filePath("export"));
        viewer->setSaveFileChooser([&](QWidget *) { return target; });
        const QString shown = text->toPlainText();
        viewer->findChild<QPushButton *>("logSave")->click();
        QTRY_COMPARE_WITH_TIMEOUT(status->text(), QStringLiteral("Saved: %1").arg(target), 5000);
        QFile saved(target);
        QVERIFY(saved.open(QIODevice::ReadOnly));
        QCOMPARE(QString::fromUtf8(saved.readAll()), shown);
        stopLog();
    }
};

QTEST_MAIN(TestOperatorServices)
#include "tst_operator_services.moc"
