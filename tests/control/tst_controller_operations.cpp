#include "control/controller_operations.h"
#include "kit/log_capture.h"
#include "playlist/playlist_records.h"
#include "shell/application_log.h"
#include "shell/log_test_helpers.h"

#include <QJsonObject>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>

#include <stdexcept>
#include <thread>

using namespace tarnix;
using Ops = ControllerOperations;

namespace {

const QDateTime kRequestTime = QDateTime(QDate(2026, 3, 4), QTime(5, 6, 7, 89), Qt::UTC);

Ops::Options fixedClock(std::chrono::milliseconds quiet = std::chrono::milliseconds(250))
{
    Ops::Options options;
    options.clock = [] { return kRequestTime; };
    options.continuousQuietInterval = quiet;
    return options;
}

// What a recording handler saw.
struct Calls {
    int count = 0;
    QList<QVariant> last;
    QStringList sources;
};

class Panel : public QObject
{
public:
    bool allow = true;
    int volume = 0;
    bool setVolume(int value)
    {
        if (!allow)
            return false;
        volume = value;
        return true;
    }
    void reset() { volume = 0; }
    bool allowed() const { return allow; }
    Ops::Result rename(int number, const QString &name)
    {
        lastRename = QStringLiteral("%1:%2").arg(number).arg(name);
        return {Ops::Invoked};
    }
    QString lastRename;
};

} // namespace

class TestControllerOperations : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        registerPlaylistMetaTypes();
    }

    // First in the file: the operation counter is process-wide, so only the
    // first request of the process has id 1.
    void requestAndResultLinesStartAtIdOne()
    {
        testkit::LogCapture capture(testkit::LogCapture::category(QStringLiteral("CONTROL")));
        Ops ops(fixedClock());
        ops.setContextProvider([] { return QStringLiteral("playlist=1 selected=7 onAir=0 edit=0 dsk=0 bgm=0"); });
        QObject owner;
        QVERIFY(ops.bind<>(Ops::TakeSelectedOnAir, &owner, [] {}));
        QVERIFY((ops.bind<int, QString>(Ops::RenamePlaylist, &owner, [](int, const QString &) { return false; })));

        quint64 id = 0;
        QCOMPARE(ops.invoke(Ops::TakeSelectedOnAir, {}, &id).status, Ops::Invoked);
        QCOMPARE(id, quint64(1));
        QCOMPARE(ops.invoke(Ops::RenamePlaylist, 2, QStringLiteral("News")).status, Ops::Rejected);

        const QList<testkit::CapturedRecord> records = capture.records();
        QCOMPARE(records.size(), 4);
        QCOMPARE(records[0].type, QtInfoMsg);
        QCOMPARE(records[0].text,
                 QStringLiteral("OP request id=1 action=TakeSelectedOnAir requestedAt=2026-03-04T05:06:07.089Z "
                                "source=UI args=QList() context=playlist=1 selected=7 onAir=0 edit=0 dsk=0 bgm=0"));
        QCOMPARE(records[1].type, QtInfoMsg);
        QVERIFY2(QRegularExpression(QStringLiteral("^OP result id=1 status=Invoked elapsedMs=\\d+$"))
                     .match(records[1].text).hasMatch(), qPrintable(records[1].text));
        QCOMPARE(records[2].type, QtInfoMsg);
        QVERIFY2(records[2].text.startsWith(QStringLiteral(
                     "OP request id=2 action=RenamePlaylist requestedAt=2026-03-04T05:06:07.089Z source=UI args=QList(")),
                 qPrintable(records[2].text));
        QVERIFY(records[2].text.contains(QStringLiteral("News")));
        QCOMPARE(records[3].type, QtWarningMsg);
        QVERIFY(records[3].text.startsWith(QStringLiteral("OP result id=2 status=Rejected elapsedMs=")));
    }

    void theTableHasEveryAction()
    {
        QCOMPARE(int(Ops::Count), 109);
        for (int action = 0; action < Ops::Count; ++action)
            QVERIFY2(Ops::actionName(action) != QStringLiteral("Unknown"), qPrintable(QString::number(action)));
        QCOMPARE(Ops::actionName(500), QStringLiteral("Unknown"));
        QCOMPARE(Ops::argumentTypes(Ops::EditRepeat),
                 (QList<QMetaType>{QMetaType::fromType<int>(), QMetaType::fromType<PlaylistRepeatEndMode>()}));
    }

    void statusPaths_data()
    {
        QTest::addColumn<int>("action");
        QTest::addColumn<QVariantList>("arguments");
        QTest::addColumn<QString>("setup");
        QTest::addColumn<int>("expected");
        QTest::addColumn<bool>("handlerRuns");

        const QVariantList volume{QVariant::fromValue(-120)};
        QTest::newRow("invoked") << int(Ops::SetMasterVolume) << volume << "" << int(Ops::Invoked) << true;
        QTest::newRow("handler refuses") << int(Ops::SetMasterVolume) << volume << "handler-refuses"
                                         << int(Ops::Rejected) << true;
        QTest::newRow("handler throws") << int(Ops::SetMasterVolume) << volume << "handler-throws"
                                        << int(Ops::Rejected) << true;
        QTest::newRow("double where int is declared")
            << int(Ops::SetMasterVolume) << QVariantList{QVariant::fromValue(-12.0)} << "" << int(Ops::InvalidArguments)
            << false;
        QTest::newRow("qint64 where int is declared")
            << int(Ops::SetMasterVolume) << QVariantList{QVariant::fromValue(qint64(-120))} << ""
            << int(Ops::InvalidArguments) << false;
        QTest::newRow("missing argument") << int(Ops::SetMasterVolume) << QVariantList{} << ""
                                          << int(Ops::InvalidArguments) << false;
        QTest::newRow("extra argument") << int(Ops::SetMasterVolume) << QVariantList{-120, 3} << ""
                                        << int(Ops::InvalidArguments) << false;
        QTest::newRow("unbound action") << int(Ops::OffAir) << QVariantList{} << "" << int(Ops::Unavailable) << false;
        QTest::newRow("out of range") << int(Ops::Count) << QVariantList{} << "" << int(Ops::Unavailable) << false;
        QTest::newRow("not accepting") << int(Ops::SetMasterVolume) << volume << "not-accepting"
                                       << int(Ops::Unavailable) << false;
        QTest::newRow("guard rejects") << int(Ops::SetMasterVolume) << volume << "guard-rejects"
                                       << int(Ops::Rejected) << false;
        QTest::newRow("guard on dead target") << int(Ops::SetMasterVolume) << volume << "guard-dead"
                                              << int(Ops::Unavailable) << false;
        QTest::newRow("handler target dead") << int(Ops::SetMasterVolume) << volume << "target-dead"
                                             << int(Ops::Unavailable) << false;
    }

    void statusPaths()
    {
        QFETCH(int, action);
        QFETCH(QVariantList, arguments);
        QFETCH(QString, setup);
        QFETCH(int, expected);
        QFETCH(bool, handlerRuns);

        testkit::LogCapture capture(testkit::LogCapture::category(QStringLiteral("CONTROL")));
        Ops ops;
        auto target = std::make_unique<QObject>();
        auto guardOwner = std::make_unique<QObject>();
        int runs = 0;
        QVERIFY(ops.bind<int>(Ops::SetMasterVolume, target.get(), [&](int) {
            ++runs;
            if (setup == QLatin1String("handler-throws"))
                throw std::runtime_error("device gone");
            return setup != QLatin1String("handler-refuses");
        }));
        if (setup == QLatin1String("guard-rejects") || setup == QLatin1String("guard-dead")) {
            QVERIFY(ops.setGuard<int>(Ops::SetMasterVolume, guardOwner.get(),
                                      [](int) { return Ops::Result{Ops::Rejected}; }));
        }
        if (setup == QLatin1String("guard-dead"))
            guardOwner.reset();
        if (setup == QLatin1String("target-dead"))
            target.reset();
        if (setup == QLatin1String("not-accepting"))
            ops.setAccepting(false);
        QSignalSpy announced(&ops, &Ops::operationAboutToExecute);

        QCOMPARE(int(ops.invoke(Ops::Action(action), arguments).status), expected);
        QCOMPARE(runs, handlerRuns ? 1 : 0);
        QCOMPARE(announced.size(), handlerRuns ? 1 : 0);
        const QString status = Ops::statusName(Ops::Status(expected));
        QCOMPARE(capture.texts(QStringLiteral("OP result id=")).size(), 1);
        QVERIFY(capture.texts(QStringLiteral("OP result id="))[0].contains(QStringLiteral(" status=%1 ").arg(status)));
    }

    void exactTypesReachTheHandler()
    {
        testkit::LogCapture capture(testkit::LogCapture::category(QStringLiteral("CONTROL")));
        Ops ops;
        Panel panel;
        quint64 id = 0;
        PlaylistEndMode mode = PlaylistEndMode::stop;
        QVERIFY(ops.bind<quint64>(Ops::EditGoto, &panel, [&](quint64 value) { id = value; }));
        QVERIFY(ops.bind<PlaylistEndMode>(Ops::EditEndMode, &panel, [&](PlaylistEndMode value) { mode = value; }));
        QVERIFY(ops.bindMember(Ops::SetItemVolume, &panel, &Panel::setVolume));
        QVERIFY(ops.bindMember(Ops::ResetItemVolume, &panel, &Panel::reset));
        QVERIFY(ops.bindMember(Ops::RenamePlaylist, &panel, &Panel::rename));
        QVERIFY(ops.bindMember(Ops::ItemFadeIn, &panel, &Panel::allowed));

        QCOMPARE(ops.invoke(Ops::EditGoto, quint64(18446744073709551614ull)).status, Ops::Invoked);
        QCOMPARE(id, 18446744073709551614ull);
        QCOMPARE(ops.invoke(Ops::EditGoto, 5).status, Ops::InvalidArguments);  // an int is not an ID
        QCOMPARE(ops.invoke(Ops::EditEndMode, PlaylistEndMode::goto_).status, Ops::Invoked);
        QCOMPARE(mode, PlaylistEndMode::goto_);
        // An enum is its own type, not its number, and not another enum.
        QCOMPARE(ops.invoke(Ops::EditEndMode, 4).status, Ops::InvalidArguments);
        QCOMPARE(ops.invoke(Ops::EditEndMode, PlaylistRepeatEndMode::goto_).status, Ops::InvalidArguments);

        QCOMPARE(ops.invoke(Ops::SetItemVolume, -60).status, Ops::Invoked);
        QCOMPARE(panel.volume, -60);
        panel.allow = false;
        QCOMPARE(ops.invoke(Ops::SetItemVolume, -30).status, Ops::Rejected);
        QCOMPARE(ops.invoke(Ops::ItemFadeIn).status, Ops::Rejected);
        QCOMPARE(panel.volume, -60);
        QCOMPARE(ops.invoke(Ops::ResetItemVolume).status, Ops::Invoked);
        QCOMPARE(panel.volume, 0);
        QCOMPARE(ops.invoke(Ops::RenamePlaylist, 3, QStringLiteral("Late")).status, Ops::Invoked);
        QCOMPARE(panel.lastRename, QStringLiteral("3:Late"));
    }

    void bindingRules()
    {
        testkit::LogCapture capture(testkit::LogCapture::category(QStringLiteral("CONTROL")));
        Ops ops;
        QObject owner;
        int first = 0;
        int second = 0;

        // First binding wins; the second is ignored.
        QVERIFY(ops.bind<>(Ops::OffAir, &owner, [&] { ++first; }));
        QVERIFY(!ops.bind<>(Ops::OffAir, &owner, [&] { ++second; }));
        QCOMPARE(ops.invoke(Ops::OffAir).status, Ops::Invoked);
        QCOMPARE(first, 1);
        QCOMPARE(second, 0);

        // Same for guards.
        QVERIFY(ops.setGuard<>(Ops::OffAir, &owner, [] { return true; }));
        QVERIFY(!ops.setGuard<>(Ops::OffAir, &owner, [] { return false; }));
        QCOMPARE(ops.invoke(Ops::OffAir).status, Ops::Invoked);

        // A null target, or arguments that differ from the action's.
        QVERIFY(!ops.bind<>(Ops::ProgramPlay, nullptr, [] {}));
        QVERIFY(!ops.bind<int>(Ops::ProgramSeek, &owner, [](int) {}));
        QCOMPARE(ops.invoke(Ops::ProgramSeek, qint64(1)).status, Ops::Unavailable);

        // A bind from a worker thread leaves the slot empty.
        bool boundFromWorker = true;
        std::thread worker([&] {
            QObject local;
            boundFromWorker = ops.bind<>(Ops::ProgramPlay, &owner, [] {});
        });
        worker.join();
        QVERIFY(!boundFromWorker);

        // A target living on another thread is refused too.
        QThread other;
        QObject moved;
        moved.moveToThread(&other);
        QVERIFY(!ops.bind<>(Ops::ProgramPause, &moved, [] {}));
        QVERIFY(!ops.hasHandler(Ops::ProgramPlay));
        QVERIFY(!ops.hasHandler(Ops::ProgramPause));
        QCOMPARE(ops.invoke(Ops::ProgramPlay).status, Ops::Unavailable);
        QCOMPARE(ops.invoke(Ops::ProgramPause).status, Ops::Unavailable);
    }

    void requestsFromOtherThreadsAreWrongThread()
    {
        testkit::LogCapture capture(testkit::LogCapture::category(QStringLiteral("CONTROL")));
        Ops ops;
        ops.setContextProvider([] { return QStringLiteral("playlist=1"); });
        QObject owner;
        int runs = 0;
        QVERIFY(ops.bind<int>(Ops::SetEditVolume, &owner, [&](int) { ++runs; }));
        Ops::Status status = Ops::Invoked;
        std::thread worker([&] {
            OperationSourceScope source("MIDI");
            status = ops.invoke(Ops::SetEditVolume, 10).status;
        });
        worker.join();
        QCOMPARE(status, Ops::WrongThread);
        QCOMPARE(runs, 0);
        const QList<testkit::CapturedRecord> records = capture.records();
        QCOMPARE(records.size(), 2);
        // Not continuous off the registry's thread: the request is an info
        // line, without context, and the refusal a warning.
        QCOMPARE(records[0].type, QtInfoMsg);
        QVERIFY(records[0].text.contains(QStringLiteral(" source=MIDI ")));
        QVERIFY(records[0].text.endsWith(QStringLiteral(" context=")));
        QCOMPARE(records[1].type, QtWarningMsg);
        QVERIFY(records[1].text.contains(QStringLiteral("status=WrongThread")));
    }

    void guardThatFlipsDuringAnnouncementStopsTheHandler()
    {
        testkit::LogCapture capture(testkit::LogCapture::category(QStringLiteral("CONTROL")));
        Ops ops;
        Panel panel;
        bool allowed = true;
        int guardCalls = 0;
        int runs = 0;
        QVERIFY(ops.bind<>(Ops::TakeSelectedOnAir, &panel, [&] { ++runs; }));
        QVERIFY(ops.setGuard<>(Ops::TakeSelectedOnAir, &panel, [&] {
            ++guardCalls;
            return allowed;
        }));
        QSignalSpy announced(&ops, &Ops::operationAboutToExecute);
        connect(&ops, &Ops::operationAboutToExecute, this, [&] { allowed = false; });

        QCOMPARE(ops.invoke(Ops::TakeSelectedOnAir).status, Ops::Rejected);
        QCOMPARE(announced.size(), 1);
        QCOMPARE(announced[0][0].value<Ops::Action>(), Ops::TakeSelectedOnAir);
        QCOMPARE(announced[0][2].toString(), QStringLiteral("UI"));
        QCOMPARE(guardCalls, 2);
        QCOMPARE(runs, 0);
    }

    void nestedSourcesAreRestored()
    {
        testkit::LogCapture capture(testkit::LogCapture::category(QStringLiteral("CONTROL")));
        Ops ops;
        QObject owner;
        QStringList seen;
        connect(&ops, &Ops::operationAboutToExecute, this,
                [&](Ops::Action, const QVariantList &, const QString &source) { seen << source; });
        QVERIFY(ops.bind<>(Ops::OffAir, &owner, [] {}));
        QVERIFY(ops.bind<>(Ops::TakeSelectedOnAir, &owner, [&] {
            // A macro step started by a MIDI note runs its own operation.
            {
                OperationSourceScope macro("Macro");
                ops.invoke(Ops::OffAir);
            }
            ops.invoke(Ops::OffAir);
        }));

        QCOMPARE(QString::fromUtf8(currentOperationSource()), QStringLiteral("UI"));
        {
            OperationSourceScope midi("MIDI");
            ops.invoke(Ops::TakeSelectedOnAir);
            QCOMPARE(QString::fromUtf8(currentOperationSource()), QStringLiteral("MIDI"));
        }
        ops.invoke(Ops::OffAir);
        QCOMPARE(seen, (QStringList{"MIDI", "Macro", "MIDI", "UI"}));

        // Restored when an exception leaves the scope, and private to each thread.
        try {
            OperationSourceScope shortcut("Shortcut");
            const char *other = nullptr;
            std::thread([&] { other = currentOperationSource(); }).join();
            QCOMPARE(QString::fromUtf8(other), QStringLiteral("UI"));
            throw std::runtime_error("leaves the scope");
        } catch (const std::runtime_error &) {
        }
        QCOMPARE(QString::fromUtf8(currentOperationSource()), QStringLiteral("UI"));
    }

    void continuousOperationsLogTheirLastValue()
    {
        QTemporaryDir dir;
        QVERIFY(dir.isValid());
        LogOptions logOptions;
        logOptions.writeStartRecords = false;
        QVERIFY(startLog(dir.path(), logOptions));
        setDebugMode(true);
        {
            Ops ops(fixedClock());
            QObject owner;
            int runs = 0;
            QVERIFY(ops.bind<int>(Ops::SetMasterVolume, &owner, [&](int) { ++runs; }));
            QVERIFY(ops.bind<qint64>(Ops::ProgramSeek, &owner, [](qint64) { return false; }));
            for (int value = 0; value < 1000; ++value)
                QCOMPARE(ops.invoke(Ops::SetMasterVolume, -value).status, Ops::Invoked);
            QCOMPARE(runs, 1000);
            // A refused continuous request is written in full at once.
            QCOMPARE(ops.invoke(Ops::ProgramSeek, qint64(5000)).status, Ops::Rejected);
            QTRY_VERIFY_WITH_TIMEOUT(
                recentLines().join('\n').contains(QStringLiteral("(last value in continuous operation)")), 5000);
            // A drag still running when the registry goes is written at its end.
            QCOMPARE(ops.invoke(Ops::SetMasterVolume, -5).status, Ops::Invoked);
        }
        setDebugMode(false);
        stopLog();

        const QList<QJsonObject> records = test::logRecords(dir.path());
        int debugRequests = 0;
        int debugResults = 0;
        QDateTime lastDebugTime;
        QList<QJsonObject> infoOrWarn;
        for (const QJsonObject &record : records) {
            if (record.value("source").toString() != QLatin1String("CONTROL"))
                continue;
            const QString message = record.value("message").toString();
            if (record.value("level").toString() == QLatin1String("DEBUG")) {
                debugRequests += message.startsWith("OP request ") && message.contains("action=SetMasterVolume");
                debugResults += message.startsWith("OP result ");
                if (message.contains("QVariant(int, -999)"))
                    lastDebugTime = QDateTime::fromString(record.value("time").toString(), Qt::ISODateWithMs);
            } else {
                infoOrWarn << record;
            }
        }
        QCOMPARE(debugRequests, 1001);
        QCOMPARE(debugResults, 1001);  // the refused seek's result is a warning
        QCOMPARE(infoOrWarn.size(), 6);
        auto level = [&](int i) { return infoOrWarn[i].value("level").toString(); };
        auto message = [&](int i) { return infoOrWarn[i].value("message").toString(); };
        QCOMPARE(level(0), QStringLiteral("INFO"));
        QVERIFY2(message(0).startsWith("OP request id=") && message(0).contains("action=ProgramSeek"),
                 qPrintable(message(0)));
        QCOMPARE(level(1), QStringLiteral("WARN"));
        QVERIFY(message(1).contains("status=Rejected"));
        QCOMPARE(level(2), QStringLiteral("INFO"));
        QVERIFY2(message(2).contains("action=SetMasterVolume")
                     && message(2).contains("QList(QVariant(int, -999))")
                     && message(2).endsWith(" (last value in continuous operation)"),
                 qPrintable(message(2)));
        // Written once the fader has been quiet for 250 ms.
        const QDateTime infoTime = QDateTime::fromString(infoOrWarn[2].value("time").toString(), Qt::ISODateWithMs);
        QVERIFY(lastDebugTime.isValid());
        QVERIFY2(lastDebugTime.msecsTo(infoTime) >= 249, qPrintable(QString::number(lastDebugTime.msecsTo(infoTime))));
        QCOMPARE(level(3), QStringLiteral("INFO"));
        QVERIFY(message(3).startsWith("OP result id=") && message(3).contains("status=Invoked"));
        const QString lastId = message(2).section(' ', 2, 2);  // "id=N"
        QCOMPARE(message(3).section(' ', 2, 2), lastId);
        QVERIFY2(message(4).contains("QVariant(int, -5)")
                     && message(4).endsWith(" (last continuous value at shutdown)"),
                 qPrintable(message(4)));
        QVERIFY(message(5).startsWith("OP result id="));
    }
};

QTEST_GUILESS_MAIN(TestControllerOperations)
#include "tst_controller_operations.moc"
