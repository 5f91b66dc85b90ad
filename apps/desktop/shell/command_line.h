#pragma once

#include <QCommandLineOption>
#include <QCommandLineParser>

namespace tarnix {

// The application's options. GStreamer removes its own options from a copy
// of the arguments; the parser tolerates anything it does not know, so an
// unknown option never ends the start.
struct CommandLine {
    QCommandLineParser parser;
    QCommandLineOption helpOption;
    QCommandLineOption addonRestartComplete;
    QCommandLineOption addonRestartError;
    QCommandLineOption portable;
    QCommandLineOption programOutput4k;
    QCommandLineOption controlSocket;

    CommandLine();

    // Parses without exiting; errors (unknown options) are only reported.
    void parse(const QStringList &arguments);
    bool helpRequested() const { return parser.isSet(helpOption); }
    bool programOutput4kRequested() const { return parser.isSet(programOutput4k); }
    // The control socket path given on the command line; empty when absent.
    QString controlSocketPath() const { return parser.value(controlSocket); }
    QString helpText() const { return parser.helpText(); }
};

} // namespace tarnix
