// Sends one request line to the control socket of a running TARNIX and prints
// the answer line.
//
//   tarnixctl --socket /run/user/1000/tarnix.sock TakeSelectedOnAir
//   tarnixctl --socket ... '{"action":"SetMasterVolume","args":[{"int":-60}]}'
//   tarnixctl --socket ... state
//   tarnixctl --socket ... playlists
//   tarnixctl --socket ... health
//   tarnixctl --socket ... importPlaylist show.json
//   tarnixctl --socket ... exportPlaylist backup.json
//   tarnixctl --socket ... restorePreviousSession
//
// A command's path is made absolute here, against this tool's working
// directory, not the application's.
//
// Exit status: 0 when the request was invoked, a query answered or a
// command succeeded, 1 when the application answered with a refusal or an
// error, 2 when no answer came.

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLocalSocket>

#include <cstdio>

namespace {

// The commands the application answers when they are done, and whether
// each takes a path.
bool isCommand(const QString &name, bool *takesPath)
{
    if (name == QLatin1String("importPlaylist") || name == QLatin1String("exportPlaylist")) {
        *takesPath = true;
        return true;
    }
    *takesPath = false;
    return name == QLatin1String("restorePreviousSession");
}

QByteArray commandLine(const QString &name, const QStringList &operands)
{
    QJsonObject request{{QStringLiteral("command"), name}};
    if (!operands.isEmpty())
        request.insert(QStringLiteral("path"), QFileInfo(operands.first()).absoluteFilePath());
    return QJsonDocument(request).toJson(QJsonDocument::Compact);
}

QByteArray requestLine(const QString &argument)
{
    const QString text = argument.trimmed();
    if (text == QLatin1String("state") || text == QLatin1String("playlists") || text == QLatin1String("health"))
        return QJsonDocument(QJsonObject{{QStringLiteral("query"), text}}).toJson(QJsonDocument::Compact);
    if (text.startsWith(QLatin1Char('{')))
        return text.toUtf8();
    // A bare action name: an action without arguments.
    return QJsonDocument(QJsonObject{{QStringLiteral("action"), text}}).toJson(QJsonDocument::Compact);
}

int fail(const QString &text)
{
    std::fprintf(stderr, "tarnixctl: %s\n", qPrintable(text));
    return 2;
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("tarnixctl"));

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Sends one request to TARNIX's control socket."));
    parser.addHelpOption();
    const QCommandLineOption socketOption(
        {QStringLiteral("s"), QStringLiteral("socket")},
        QStringLiteral("Path of the control socket (default: $TARNIX_CONTROL_SOCKET)."), QStringLiteral("path"));
    const QCommandLineOption timeoutOption(QStringLiteral("timeout"),
                                           QStringLiteral("Milliseconds to wait for the answer (default 5000)."),
                                           QStringLiteral("ms"), QStringLiteral("5000"));
    parser.addOption(socketOption);
    parser.addOption(timeoutOption);
    parser.addPositionalArgument(
        QStringLiteral("request"),
        QStringLiteral("An action name, \"state\", \"playlists\", \"health\", a JSON request object, or a "
                       "command: "
                       "importPlaylist PATH, exportPlaylist PATH, restorePreviousSession."));
    parser.process(app);

    const QStringList positional = parser.positionalArguments();
    bool takesPath = false;
    const bool command = !positional.isEmpty() && isCommand(positional.first(), &takesPath);
    if (command && positional.size() != (takesPath ? 2 : 1))
        return fail(QStringLiteral("%1 takes %2").arg(positional.first(), takesPath ? QStringLiteral("one path") : QStringLiteral("no operand")));
    if (!command && positional.size() != 1)
        return fail(QStringLiteral("give exactly one request (see --help)"));
    const QString given = parser.isSet(socketOption) ? parser.value(socketOption)
                                                     : qEnvironmentVariable("TARNIX_CONTROL_SOCKET");
    // A file path, relative to the working directory, never a bare name that
    // Qt would look up in its own temporary directory.
    const QString path = given.isEmpty() ? QString() : QFileInfo(given).absoluteFilePath();
    if (path.isEmpty())
        return fail(QStringLiteral("no socket path: use --socket or TARNIX_CONTROL_SOCKET"));
    bool timeoutOk = false;
    const int timeoutMs = parser.value(timeoutOption).toInt(&timeoutOk);
    if (!timeoutOk || timeoutMs <= 0)
        return fail(QStringLiteral("--timeout needs a positive number of milliseconds"));

    QLocalSocket socket;
    socket.connectToServer(path);
    if (!socket.waitForConnected(timeoutMs))
        return fail(QStringLiteral("cannot connect to %1: %2").arg(path, socket.errorString()));
    socket.write((command ? commandLine(positional.first(), positional.mid(1)) : requestLine(positional.first()))
                 + '\n');
    if (!socket.waitForBytesWritten(timeoutMs))
        return fail(QStringLiteral("cannot send the request: %1").arg(socket.errorString()));
    while (!socket.canReadLine()) {
        if (!socket.waitForReadyRead(timeoutMs))
            return fail(QStringLiteral("no answer: %1").arg(socket.errorString()));
    }
    const QByteArray answer = socket.readLine().trimmed();
    std::fprintf(stdout, "%s\n", answer.constData());

    const QJsonObject object = QJsonDocument::fromJson(answer).object();
    if (object.contains(QLatin1String("error")))
        return 1;
    if (object.contains(QLatin1String("status")) && object.value(QLatin1String("status")).toString() != QLatin1String("Invoked"))
        return 1;
    return 0;
}
