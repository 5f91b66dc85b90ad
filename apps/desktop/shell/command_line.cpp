#include "shell/command_line.h"

#include "shell/log_categories.h"
#include "shell/localized_text.h"

namespace tarnix {

namespace {

QCommandLineOption hidden(QCommandLineOption option)
{
    option.setFlags(QCommandLineOption::HiddenFromHelp);
    return option;
}

} // namespace

CommandLine::CommandLine()
    : helpOption(parser.addHelpOption())
    , addonRestartComplete(hidden(QCommandLineOption(QStringLiteral("addon-restart-complete"),
                                                     QStringLiteral("Marks a finished add-on restart."))))
    , addonRestartError(hidden(QCommandLineOption(QStringLiteral("addon-restart-error"),
                                                  QStringLiteral("Marks a failed add-on restart."),
                                                  QStringLiteral("detail"))))
    , portable(QStringLiteral("portable"),
               QStringLiteral("Use config/<product profile>/user.ini beside the executable."))
    , programOutput4k(QStringLiteral("program-output-4k"),
                      localized("application.option.program_output_4k"))
    , controlSocket(QStringLiteral("control-socket"),
                    QStringLiteral("Listen for control requests on this local socket (overrides control/socketPath)."),
                    QStringLiteral("path"))
{
    parser.setApplicationDescription(localized("application.description"));
    parser.addOption(addonRestartComplete);
    parser.addOption(addonRestartError);
    parser.addOption(portable);
    parser.addOption(programOutput4k);
    parser.addOption(controlSocket);
}

void CommandLine::parse(const QStringList &arguments)
{
    if (!parser.parse(arguments))
        qCInfo(lcStartup).noquote() << "Command line:" << parser.errorText();
}

} // namespace tarnix
