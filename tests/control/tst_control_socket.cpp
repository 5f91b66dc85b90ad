#include "control/control_request.h"
#include "control/control_socket_server.h"
#include "control/control_state_registry.h"
#include "control/controller_operations.h"
#include "kit/log_capture.h"
#include "playlist/playlist_records.h"
#include "shell/command_line.h"
#include "shell/settings_store.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLocalServer>
#include <QLocalSocket>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <cerrno>
#include <memory>
#include <cstring>

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

using namespace tarnix;
using Ops = ControllerOperations;

namespace {

// A client made of a plain descriptor, for clients that misbehave: it
// writes without waiting and reads only when told to.
class RawClient
{
public:
    explicit RawClient(const QString &path)
    {
        m_fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
        sockaddr_un address {};
        address.sun_family = AF_UNIX;
        const QByteArray native = QFile::encodeName(path);
        std::memcpy(address.sun_path, native.constData(), std::size_t(native.size()));
        m_connected = ::connect(m_fd, reinterpret_cast<const sockaddr *>(&address), sizeof(address)) == 0;
    }
    ~RawClient() { ::close(m_fd); }
    bool connected() const { return m_connected; }
    // Bytes the kernel took; 0 when it would block.
    qint64 write(const QByteArray &bytes)
    {
        const ssize_t written = ::send(m_fd, bytes.constData(), std::size_t(bytes.size()), MSG_NOSIGNAL);
        return written < 0 ? 0 : written;
    }

    // Everything the kernel holds for us now; ended() once the server closed.
    QByteArray readAvailable()
    {
        QByteArray bytes;
        char chunk[4096];
        while (true) {
            const ssize_t got = ::recv(m_fd, chunk, sizeof(chunk), 0);
            if (got > 0) {
                bytes.append(chunk, got);
                continue;
            }
            if (got == 0 || (errno != EAGAIN && errno != EWOULDBLOCK))
                m_ended = true;
            return bytes;
        }
    }
    bool ended() const { return m_ended; }

private:
    int m_fd = -1;
    bool m_ended = false;
    bool m_connected = false;
};

} // namespace

class TestControlSocket : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    QString socketPath() const { return m_dir.filePath(QStringLiteral("control.sock")); }

    // Sends one line and returns the answer line, or "" on time-out.
    static QByteArray ask(QLocalSocket &client, const QByteArray &line)
    {
        client.write(line + '\n');
        if (!QTest::qWaitFor([&] { return client.canReadLine(); }, 5000))
            return {};
        return client.readLine().trimmed();
    }

    static bool connectTo(QLocalSocket &client, const QString &path)
    {
        client.connectToServer(path);
        return QTest::qWaitFor([&] { return client.state() == QLocalSocket::ConnectedState; }, 5000);
    }

private slots:
    void initTestCase()
    {
        registerPlaylistMetaTypes();
        QVERIFY(m_dir.isValid());
    }

    void invokesThroughTheRegistry()
    {
        testkit::LogCapture capture(testkit::LogCapture::category(QStringLiteral("CONTROL")));
        Ops ops;
        ControlStateRegistry state;
        ControlSocketServer server(&ops, &state);
        QVERIFY(server.listen(socketPath()));
        QObject owner;
        int takes = 0;
        QVERIFY(ops.bind<>(Ops::TakeSelectedOnAir, &owner, [&] { ++takes; }));
        QVERIFY(ops.bind<int>(Ops::SetMasterVolume, &owner, [](int) {}));

        QLocalSocket client;
        QVERIFY(connectTo(client, socketPath()));
        const QByteArray answer = ask(client, R"({"action":"TakeSelectedOnAir","args":[]})");
        QCOMPARE(takes, 1);
        const QStringList requests = capture.texts(QStringLiteral("OP request id="));
        QCOMPARE(requests.size(), 1);
        QVERIFY(requests[0].contains(QStringLiteral(" source=Remote ")));
        const QString id = requests[0].section(' ', 2, 2).mid(3);
        QCOMPARE(answer, QStringLiteral(R"({"id":%1,"status":"Invoked"})").arg(id).toUtf8());

        QVERIFY(ask(client, R"({"action":"OffAir"})").endsWith(R"("status":"Unavailable"})"));
        QVERIFY(ask(client, R"({"action":"SetMasterVolume","args":[{"double":0.5}]})")
                    .endsWith(R"("status":"InvalidArguments"})"));
        QVERIFY(ask(client, R"({"action":"SetMasterVolume","args":[{"int":-60}]})")
                    .endsWith(R"("status":"Invoked"})"));
        QCOMPARE(QString::fromUtf8(currentOperationSource()), QStringLiteral("UI"));
    }

    void typedArgumentsArriveWithTheirExactTypes()
    {
        testkit::LogCapture capture(testkit::LogCapture::category(QStringLiteral("CONTROL")));
        Ops ops;
        ControlSocketServer server(&ops, nullptr);
        QVERIFY(server.listen(socketPath()));
        QObject owner;
        quint64 target = 0;
        QStringList paths;
        PlaylistEndMode endMode = PlaylistEndMode::stop;
        QJsonObject patch;
        qint64 seek = 0;
        QVERIFY(ops.bind<quint64>(Ops::EditGoto, &owner, [&](quint64 value) { target = value; }));
        QVERIFY(ops.bind<QStringList>(Ops::AddFiles, &owner, [&](const QStringList &value) { paths = value; }));
        QVERIFY(ops.bind<PlaylistEndMode>(Ops::EditEndMode, &owner, [&](PlaylistEndMode value) { endMode = value; }));
        QVERIFY((ops.bind<quint64, QJsonObject>(Ops::MacroItemSettings, &owner,
                                                [&](quint64, const QJsonObject &value) { patch = value; })));
        QVERIFY(ops.bind<qint64>(Ops::EditSeek, &owner, [&](qint64 value) { seek = value; }));

        QLocalSocket client;
        QVERIFY(connectTo(client, socketPath()));
        QVERIFY(ask(client, R"({"action":"EditGoto","args":[{"uint64":"18446744073709551614"}]})")
                    .endsWith(R"("Invoked"})"));
        QCOMPARE(target, 18446744073709551614ull);
        QVERIFY(ask(client, R"({"action":"AddFiles","args":[{"strings":["a b.mp4","c.wav"]}]})")
                    .endsWith(R"("Invoked"})"));
        QCOMPARE(paths, (QStringList{"a b.mp4", "c.wav"}));
        QVERIFY(ask(client, R"({"action":"EditEndMode","args":[{"enum":"PlaylistEndMode","value":"goto"}]})")
                    .endsWith(R"("Invoked"})"));
        QCOMPARE(endMode, PlaylistEndMode::goto_);
        QVERIFY(ask(client, R"({"action":"MacroItemSettings","args":[{"uint64":"3"},{"json":{"fadeIn":true}}]})")
                    .endsWith(R"("Invoked"})"));
        QCOMPARE(patch, (QJsonObject{{"fadeIn", true}}));
        QVERIFY(ask(client, R"({"action":"EditSeek","args":[{"int64":"9007199254740993"}]})")
                    .endsWith(R"("Invoked"})"));
        QCOMPARE(seek, 9007199254740993ll);
        // The registry, not the decoder, judges types: an int is no ID.
        QVERIFY(ask(client, R"({"action":"EditGoto","args":[{"int":3}]})").endsWith(R"("InvalidArguments"})"));
    }

    void malformedLinesGetAnErrorAndChangeNothing_data()
    {
        QTest::addColumn<QByteArray>("line");
        QTest::newRow("not JSON") << QByteArray("take it");
        QTest::newRow("array") << QByteArray(R"(["TakeSelectedOnAir"])");
        QTest::newRow("unknown action") << QByteArray(R"({"action":"LaunchRocket"})");
        QTest::newRow("args not an array") << QByteArray(R"({"action":"TakeSelectedOnAir","args":{}})");
        QTest::newRow("unknown shape") << QByteArray(R"({"action":"TakeSelectedOnAir","args":[{"float":1}]})");
        QTest::newRow("two shapes") << QByteArray(R"({"action":"TakeSelectedOnAir","args":[{"int":1,"bool":true}]})");
        QTest::newRow("int out of range") << QByteArray(R"({"action":"TakeSelectedOnAir","args":[{"int":3000000000}]})");
        QTest::newRow("uint64 as number") << QByteArray(R"({"action":"TakeSelectedOnAir","args":[{"uint64":5}]})");
        QTest::newRow("uint64 overflow")
            << QByteArray(R"({"action":"TakeSelectedOnAir","args":[{"uint64":"18446744073709551616"}]})");
        QTest::newRow("unknown enum value")
            << QByteArray(R"({"action":"TakeSelectedOnAir","args":[{"enum":"PlaylistEndMode","value":"later"}]})");
        QTest::newRow("unknown query") << QByteArray(R"({"query":"everything"})");
    }

    void malformedLinesGetAnErrorAndChangeNothing()
    {
        QFETCH(QByteArray, line);
        testkit::LogCapture capture(testkit::LogCapture::category(QStringLiteral("CONTROL")));
        Ops ops;
        ControlSocketServer server(&ops, nullptr);
        QVERIFY(server.listen(socketPath()));
        QObject owner;
        int takes = 0;
        QVERIFY(ops.bind<>(Ops::TakeSelectedOnAir, &owner, [&] { ++takes; }));

        QLocalSocket client;
        QVERIFY(connectTo(client, socketPath()));
        const QJsonObject answer = QJsonDocument::fromJson(ask(client, line)).object();
        QVERIFY2(answer.keys() == QStringList{"error"} && !answer.value("error").toString().isEmpty(),
                 QJsonDocument(answer).toJson(QJsonDocument::Compact).constData());
        QCOMPARE(takes, 0);
        QVERIFY(capture.texts(QStringLiteral("OP request")).isEmpty());
        // The connection stays usable.
        QVERIFY(ask(client, R"({"action":"TakeSelectedOnAir"})").endsWith(R"("Invoked"})"));
        QCOMPARE(takes, 1);
    }

    void overlongLineEndsTheConnection()
    {
        testkit::LogCapture capture(testkit::LogCapture::category(QStringLiteral("CONTROL")));
        Ops ops;
        ControlSocketServer server(&ops, nullptr);
        QVERIFY(server.listen(socketPath()));
        // Written as fast as the kernel takes it, as a flooding client would;
        // the server reads no more than the limit before it answers and closes.
        RawClient client(socketPath());
        QVERIFY(client.connected());
        QByteArray line(10 * 1024 * 1024, 'x');
        QByteArray received;
        QTimer writer;
        connect(&writer, &QTimer::timeout, this, [&] {
            if (!line.isEmpty())
                line.remove(0, client.write(line));
            received += client.readAvailable();
        });
        writer.start(0);
        QVERIFY(QTest::qWaitFor([&] { return client.ended(); }, 10000));
        writer.stop();
        QVERIFY(line.size() > 9 * 1024 * 1024);  // most of it was never taken
        const QByteArray answer = received.trimmed();
        QCOMPARE(answer, QByteArray(R"({"error":"line longer than 65536 bytes"})"));
        QTRY_COMPARE_WITH_TIMEOUT(server.connectionCount(), 0, 5000);
        QVERIFY(capture.texts(QStringLiteral("OP request")).isEmpty());

        // A long line with its line feed is refused the same way.
        QLocalSocket second;
        QVERIFY(connectTo(second, socketPath()));
        second.write(QByteArray(70000, ' ') + "\n" + R"({"query":"state"})" + "\n");
        QVERIFY(QTest::qWaitFor([&] { return second.state() == QLocalSocket::UnconnectedState; }, 10000));
        QCOMPARE(second.readAll().trimmed(), answer);
    }

    void clientThatNeverReadsCannotHoldTheMainThread()
    {
        testkit::LogCapture capture(testkit::LogCapture::category(QStringLiteral("CONTROL")));
        Ops ops;
        ControlStateRegistry state;
        QObject owner;
        QVERIFY(ops.bind<>(Ops::TakeSelectedOnAir, &owner, [] {}));
        ControlSocketOptions options;
        // Wall time on a loaded machine includes time the scheduler gave to
        // other processes; the CPU time of the main thread is what a pass costs.
        std::chrono::nanoseconds longestCpu{0};
        std::chrono::nanoseconds longestWall{0};
        int passes = 0;
        options.passObserver = [&](std::chrono::nanoseconds wall, std::chrono::nanoseconds cpu) {
            longestWall = std::max(longestWall, wall);
            longestCpu = std::max(longestCpu, cpu);
            ++passes;
        };
        ControlSocketServer server(&ops, &state, options);
        QVERIFY(server.listen(socketPath()));

        RawClient flood(socketPath());
        QVERIFY(flood.connected());
        QByteArray batch;
        for (int i = 0; i < 200; ++i)
            batch += i % 2 ? QByteArray(R"({"query":"state"})" "\n") : QByteArray(R"({"action":"TakeSelectedOnAir"})" "\n");
        QByteArray pending;
        int refusedWrites = 0;
        int ticks = 0;
        QTimer ticker;
        connect(&ticker, &QTimer::timeout, this, [&] { ++ticks; });
        ticker.start(5);
        QTimer writer;
        connect(&writer, &QTimer::timeout, this, [&] {
            qint64 accepted = 0;
            while (true) {
                if (pending.isEmpty())
                    pending = batch;
                const qint64 written = flood.write(pending);
                if (written == 0)
                    break;
                pending.remove(0, written);
                accepted += written;
            }
            refusedWrites = accepted == 0 ? refusedWrites + 1 : 0;
        });
        writer.start(0);
        // Until the kernel stops taking the client's requests for a while: the
        // server has stopped reading them because the answers are not read.
        QVERIFY(QTest::qWaitFor([&] { return refusedWrites > 20; }, 30000));
        writer.stop();
        const int ticksBefore = ticks;
        QTest::qWait(100);  // the main thread keeps running its timers meanwhile
        QVERIFY(ticks > ticksBefore);
        qInfo("%d passes, longest %lld us CPU, %lld us wall", passes, qint64(longestCpu.count() / 1000),
              qint64(longestWall.count() / 1000));
        QVERIFY(passes > 10);
        // A pass that waited on the client, or copied its backlog over and
        // over, would take hundreds of milliseconds; the bound leaves room
        // for a machine busy with other work, and more where the sanitizers
        // slow every instruction down.
#if defined(__SANITIZE_ADDRESS__)
        const auto passLimit = std::chrono::milliseconds(50);
#else
        const auto passLimit = std::chrono::milliseconds(20);
#endif
        QVERIFY2(longestCpu < passLimit,
                 qPrintable(QStringLiteral("longest pass %1 us").arg(longestCpu.count() / 1000)));
        QVERIFY(ticks > 0);

        // Another client is still served.
        QLocalSocket other;
        QVERIFY(connectTo(other, socketPath()));
        QVERIFY(ask(other, R"({"query":"state"})").startsWith(R"({"selectedItemId":)"));
    }

    void connectionsAreLimited()
    {
        testkit::LogCapture capture(testkit::LogCapture::category(QStringLiteral("CONTROL")));
        Ops ops;
        ControlSocketOptions options;
        options.maxConnections = 2;
        ControlSocketServer server(&ops, nullptr, options);
        QVERIFY(server.listen(socketPath()));
        QLocalSocket first;
        QLocalSocket second;
        QLocalSocket third;
        QVERIFY(connectTo(first, socketPath()));
        QVERIFY(connectTo(second, socketPath()));
        QTRY_COMPARE_WITH_TIMEOUT(server.connectionCount(), 2, 5000);
        third.connectToServer(socketPath());
        QVERIFY(QTest::qWaitFor([&] { return third.canReadLine(); }, 5000));
        QCOMPARE(third.readLine().trimmed(), QByteArray(R"({"error":"too many connections"})"));
        QTRY_COMPARE_WITH_TIMEOUT(third.state(), QLocalSocket::UnconnectedState, 5000);
        QVERIFY(ask(second, R"({"query":"state"})").startsWith("{"));

        first.disconnectFromServer();
        QTRY_COMPARE_WITH_TIMEOUT(server.connectionCount(), 1, 5000);
        QLocalSocket fourth;
        QVERIFY(connectTo(fourth, socketPath()));
        QVERIFY(ask(fourth, R"({"query":"state"})").startsWith("{"));
    }

    void stateQueryReadsRegisteredProviders()
    {
        testkit::LogCapture capture(testkit::LogCapture::category(QStringLiteral("CONTROL")));
        Ops ops;
        ControlStateRegistry state;
        ControlSocketServer server(&ops, &state);
        QVERIFY(server.listen(socketPath()));
        QLocalSocket client;
        QVERIFY(connectTo(client, socketPath()));
        QCOMPARE(ask(client, R"({"query":"state"})"),
                 QByteArray(R"({"selectedItemId":null,"onAirItemId":null,"cueItemId":null,"dskItemId":null,)"
                            R"("bgmItemId":null,"currentDeck":null,"positionMs":null,"remainingMs":null,"programPlaying":null,)"
                            R"("ftbActive":null,"playbackRate":null,"editItemId":null,"editPositionMs":null,"pflOn":null})"));

        auto deck = std::make_unique<QObject>();
        QVERIFY(state.setProvider(ControlStateRegistry::Field::CurrentDeck, deck.get(), [] { return QJsonValue("A"); }));
        QVERIFY(state.setProvider(ControlStateRegistry::Field::PositionMs, deck.get(), [] { return QJsonValue(1500); }));
        QObject other;
        QVERIFY(!state.setProvider(ControlStateRegistry::Field::PositionMs, &other, [] { return QJsonValue(1); }));
        QCOMPARE(ask(client, R"({"query":"state"})"),
                 QByteArray(R"({"selectedItemId":null,"onAirItemId":null,"cueItemId":null,"dskItemId":null,)"
                            R"("bgmItemId":null,"currentDeck":"A","positionMs":1500,"remainingMs":null,"programPlaying":null,)"
                            R"("ftbActive":null,"playbackRate":null,"editItemId":null,"editPositionMs":null,"pflOn":null})"));
        // When the owner goes its fields read null and another may take them.
        deck.reset();
        QVERIFY(state.value(ControlStateRegistry::Field::CurrentDeck).isNull());
        QVERIFY(state.setProvider(ControlStateRegistry::Field::PositionMs, &other, [] { return QJsonValue(1); }));
        QCOMPARE(state.value(ControlStateRegistry::Field::PositionMs), QJsonValue(1));
    }

    void socketFileIsPrivateAndNeverTakenFromALiveServer()
    {
        testkit::LogCapture capture(testkit::LogCapture::category(QStringLiteral("CONTROL")));
        Ops ops;
        {
            ControlSocketServer server(&ops, nullptr);
            QVERIFY(server.listen(socketPath()));
            struct stat info {};
            QCOMPARE(::stat(QFile::encodeName(socketPath()).constData(), &info), 0);
            QCOMPARE(info.st_mode & 0777, mode_t(0600));

            // A second server does not take over a live socket.
            ControlSocketServer second(&ops, nullptr);
            QString error;
            QVERIFY(!second.listen(socketPath(), &error));
            QVERIFY(error.contains(QStringLiteral("in use")));
            QVERIFY(QFile::exists(socketPath()));
        }
        QVERIFY(!QFile::exists(socketPath()));

        // The file a crashed run left behind is replaced.
        {
            const int fd = ::socket(AF_UNIX, SOCK_STREAM, 0);
            sockaddr_un address {};
            address.sun_family = AF_UNIX;
            const QByteArray native = QFile::encodeName(socketPath());
            std::memcpy(address.sun_path, native.constData(), std::size_t(native.size()));
            QCOMPARE(::bind(fd, reinterpret_cast<const sockaddr *>(&address), sizeof(address)), 0);
            ::close(fd);
        }
        QVERIFY(QFile::exists(socketPath()));
        {
            ControlSocketServer server(&ops, nullptr);
            QVERIFY(server.listen(socketPath()));
        }

        // A file that is not a socket is left alone.
        const QString plain = m_dir.filePath(QStringLiteral("plain"));
        {
            QFile file(plain);
            QVERIFY(file.open(QIODevice::WriteOnly));
            file.write("keep");
        }
        ControlSocketServer server(&ops, nullptr);
        QVERIFY(!server.listen(plain));
        QFile file(plain);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(file.readAll(), QByteArray("keep"));
    }

    void pathComesFromTheCommandLineOrAMachineSetting()
    {
        CommandLine commandLine;
        commandLine.parse({"tarnix", "--control-socket", "/run/user/1000/tarnix.sock"});
        QCOMPARE(commandLine.controlSocketPath(), QStringLiteral("/run/user/1000/tarnix.sock"));
        QVERIFY(commandLine.helpText().contains(QStringLiteral("--control-socket <path>")));
        // Off by default, and a path of this machine never travels in an export.
        QCOMPARE(settingsDefaults().value(QStringLiteral("control/socketPath")), QJsonValue(QString()));
        QVERIFY(!settingTransferable(QStringLiteral("control/socketPath")));
        QVERIFY(settingTransferable(QStringLiteral("appearance/controllerSkin")));
    }

    // A command is answered when its work is done, and a client's later
    // lines wait for that answer, so answers keep the order of requests.
    void commandsAreAnsweredWhenDoneAndInOrder()
    {
        testkit::LogCapture capture(testkit::LogCapture::category(QStringLiteral("CONTROL")));
        Ops ops;
        ControlStateRegistry state;
        auto server = std::make_unique<ControlSocketServer>(&ops, &state);
        QVERIFY(server->listen(socketPath()));
        QObject owner;
        ControlSocketServer::CommandDone pending;
        QJsonObject seen;
        QVERIFY(server->setCommandHandler("slow", &owner, [&](const QJsonObject &request, auto done) {
            seen = request;
            pending = std::move(done);
        }));
        QVERIFY(!server->setCommandHandler("slow", &owner, [](const QJsonObject &, auto) {}));
        QVERIFY(server->setCommandHandler("fails", &owner, [](const QJsonObject &, auto done) { done("no such file"); }));

        QLocalSocket client;
        QVERIFY(connectTo(client, socketPath()));
        client.write(R"({"command":"slow","path":"/x"})" "\n" R"({"query":"state"})" "\n");
        QVERIFY(QTest::qWaitFor([&] { return bool(pending); }, 5000));
        QCOMPARE(seen.value("path").toString(), QStringLiteral("/x"));
        QTest::qWait(50);  // nothing may be answered before the command ends
        QVERIFY(!client.canReadLine());
        pending(QString());
        pending(QStringLiteral("a second answer is ignored"));
        QVERIFY(QTest::qWaitFor([&] { return client.canReadLine(); }, 5000));
        QCOMPARE(client.readLine().trimmed(), QByteArray(R"({"ok":true})"));
        QVERIFY(QTest::qWaitFor([&] { return client.canReadLine(); }, 5000));
        QVERIFY(client.readLine().startsWith(R"({"selectedItemId":)"));

        QCOMPARE(ask(client, R"({"command":"fails"})"), QByteArray(R"({"error":"no such file"})"));
        QCOMPARE(ask(client, R"({"command":"nothing"})"), QByteArray("{\"error\":\"unknown command \\\"nothing\\\"\"}"));
        QVERIFY(ask(client, R"({"command":7})").startsWith(R"({"error":)"));
        QVERIFY(!capture.texts("CONTROL command slow source=Remote").isEmpty());

        // The server goes while a command runs: its late end does nothing.
        pending = {};
        client.write(R"({"command":"slow"})" "\n");
        QVERIFY(QTest::qWaitFor([&] { return bool(pending); }, 5000));
        server.reset();
        pending(QString());
    }

#ifdef TARNIXCTL_EXECUTABLE
    void tarnixctlSendsOneRequest()
    {
        testkit::LogCapture capture(testkit::LogCapture::category(QStringLiteral("CONTROL")));
        Ops ops;
        ControlSocketServer server(&ops, nullptr);
        QVERIFY(server.listen(socketPath()));
        QObject owner;
        QVERIFY(ops.bind<>(Ops::OffAir, &owner, [] {}));

        QProcess process;
        process.start(QStringLiteral(TARNIXCTL_EXECUTABLE),
                      {QStringLiteral("--socket"), socketPath(), QStringLiteral(R"({"action":"OffAir"})")});
        QTRY_COMPARE_WITH_TIMEOUT(process.state(), QProcess::NotRunning, 10000);
        QCOMPARE(process.exitCode(), 0);
        QVERIFY(process.readAllStandardOutput().trimmed().endsWith(R"("status":"Invoked"})"));

        process.start(QStringLiteral(TARNIXCTL_EXECUTABLE),
                      {QStringLiteral("--socket"), socketPath(), QStringLiteral("state")});
        QTRY_COMPARE_WITH_TIMEOUT(process.state(), QProcess::NotRunning, 10000);
        QCOMPARE(process.exitCode(), 0);
        QVERIFY(process.readAllStandardOutput().startsWith(R"({"selectedItemId":null)"));

        // A named query's answer is printed as the application wrote it.
        const QByteArray health(R"({"uptimeMs":5,"renders5s":null,"retainedPipelines":{"deck":1}})");
        QObject healthOwner;
        QVERIFY(server.setQueryHandler("health", &healthOwner, [&] { return QString::fromUtf8(health); }));
        process.start(QStringLiteral(TARNIXCTL_EXECUTABLE),
                      {QStringLiteral("--socket"), socketPath(), QStringLiteral("health")});
        QTRY_COMPARE_WITH_TIMEOUT(process.state(), QProcess::NotRunning, 10000);
        QCOMPARE(process.exitCode(), 0);
        QCOMPARE(process.readAllStandardOutput(), health + '\n');

        process.start(QStringLiteral(TARNIXCTL_EXECUTABLE),
                      {QStringLiteral("--socket"), socketPath(), QStringLiteral(R"({"action":"ProgramPlay"})")});
        QTRY_COMPARE_WITH_TIMEOUT(process.state(), QProcess::NotRunning, 10000);
        QCOMPARE(process.exitCode(), 1);  // answered, but not invoked

        // Commands: the path is made absolute against the tool's directory.
        QObject commandOwner;
        QString importedPath;
        QVERIFY(server.setCommandHandler("importPlaylist", &commandOwner, [&](const QJsonObject &request, auto done) {
            importedPath = request.value("path").toString();
            done(importedPath.endsWith("/missing.json") ? QStringLiteral("not there") : QString());
        }));
        process.setWorkingDirectory(m_dir.path());
        process.start(QStringLiteral(TARNIXCTL_EXECUTABLE),
                      {QStringLiteral("--socket"), socketPath(), QStringLiteral("importPlaylist"), QStringLiteral("show.json")});
        QTRY_COMPARE_WITH_TIMEOUT(process.state(), QProcess::NotRunning, 10000);
        QCOMPARE(process.exitCode(), 0);
        QCOMPARE(importedPath, m_dir.filePath("show.json"));
        QCOMPARE(process.readAllStandardOutput().trimmed(), QByteArray(R"({"ok":true})"));
        process.start(QStringLiteral(TARNIXCTL_EXECUTABLE),
                      {QStringLiteral("--socket"), socketPath(), QStringLiteral("importPlaylist"), QStringLiteral("missing.json")});
        QTRY_COMPARE_WITH_TIMEOUT(process.state(), QProcess::NotRunning, 10000);
        QCOMPARE(process.exitCode(), 1);
    }
#endif
};

QTEST_GUILESS_MAIN(TestControlSocket)
#include "tst_control_socket.moc"
