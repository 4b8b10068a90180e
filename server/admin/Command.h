#pragma once

#include <QCommandLineOption>
#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

class QCommandLineParser;

/// What an administrator does with a database beside serving it: the sub-commands of qel-server.
namespace Qel::Admin {

/// One sub-command.
struct Command
{
    QString name;   ///< "user add"
    QString syntax; ///< of its arguments: "CODE"; a bracket around those that may be left out
    QString summary;
    QList<QCommandLineOption> options; ///< beside those that all have
    /// Runs it; the arguments are as many as the syntax says. Returns the exit status.
    int (*run)(const QCommandLineParser &parser, const QStringList &arguments);
};

const QList<Command> &Commands();

/// One line for each command, for the help text.
QString CommandHelp();

/// Runs the command that the arguments name after the program's own name. Nothing if they name
/// none and the server is to serve: no argument, an option, or "serve", which is taken out. Throws
/// EQelError for a word that is no command and for wrong options and arguments.
std::optional<int> RunCommand(QStringList &arguments);

} // namespace Qel::Admin
