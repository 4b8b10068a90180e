#include "admin/Command.h"

#include "admin/DatabaseCommands.h"
#include "admin/DatabaseOption.h"
#include "admin/SiteCommands.h"
#include "admin/UserCommands.h"
#include "dataset/QelError.h"

#include <QCommandLineParser>

#include <algorithm>
#include <cstdio>

using namespace Qt::StringLiterals;

namespace Qel::Admin {

namespace {

/// Whether the arguments begin with the command's words.
bool IsNamedBy(const Command &command, const QStringList &words)
{
    const QStringList name = command.name.split(u' ');
    return words.first(qMin(words.size(), name.size())) == name;
}

QString HelpText(const Command &command, const QCommandLineParser &parser)
{
    const QString text = parser.helpText(); // its first line knows nothing of commands
    return u"Usage: qel-server %1 [options] %2"_s.arg(command.name, command.syntax).trimmed() +
           text.mid(text.indexOf(u'\n'));
}

int Run(const Command &command, const QStringList &words)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(command.summary);
    const QCommandLineOption help({u"h"_s, u"help"_s}, u"Print this and exit."_s);
    parser.addOptions({help, DatabaseOption()});
    parser.addOptions(command.options);
    if (!parser.parse(QStringList{u"qel-server"_s} + words))
        throw EQelError(parser.errorText());
    if (parser.isSet(help)) {
        std::fputs(qUtf8Printable(HelpText(command, parser)), stdout);
        return 0;
    }
    const QStringList arguments = parser.positionalArguments().sliced(command.name.count(u' ') + 1);
    const QStringList places = command.syntax.split(u' ', Qt::SkipEmptyParts);
    const auto least = std::count_if(places.begin(), places.end(),
                                     [](const QString &place) { return !place.startsWith(u'['); });
    if (arguments.size() < least || arguments.size() > places.size())
        throw EQelError(u"用法：qel-server %1 [选项] %2"_s.arg(command.name, command.syntax));
    return command.run(parser, arguments);
}

} // namespace

const QList<Command> &Commands()
{
    static const QList<Command> commands = UserCommands() + DatabaseCommands() + SiteCommands();
    return commands;
}

QString CommandHelp()
{
    QString help;
    for (const Command &command : Commands())
        help += u"\n  %1  %2"_s.arg((command.name + u' ' + command.syntax).leftJustified(20),
                                    command.summary);
    return help;
}

std::optional<int> RunCommand(QStringList &arguments)
{
    if (arguments.size() < 2 || arguments[1].startsWith(u'-'))
        return std::nullopt;
    if (arguments[1] == "serve"_L1) {
        arguments.removeAt(1);
        return std::nullopt;
    }
    const QStringList words = arguments.sliced(1);
    for (const Command &command : Commands())
        if (IsNamedBy(command, words))
            return Run(command, words);
    QStringList names;
    for (const Command &command : Commands())
        names += command.name;
    throw EQelError(
        u"没有命令“%1”，可用的命令：serve、%2。"_s.arg(words.first(), names.join(u'、')));
}

} // namespace Qel::Admin
