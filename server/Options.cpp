#include "Options.h"

#include "admin/Command.h"
#include "admin/DatabaseOption.h"
#include "dataset/QelError.h"

#include <QCommandLineParser>

using namespace Qt::StringLiterals;

namespace Qel {

namespace {

/// "127.0.0.1:8480" or "[::1]:8480".
void ParseListen(const QString &text, Options &options)
{
    const qsizetype colon = text.lastIndexOf(u':');
    bool ok = false;
    options.port = colon < 0 ? 0 : text.mid(colon + 1).toUShort(&ok);
    options.host = text.left(colon);
    if (options.host.startsWith(u'[') && options.host.endsWith(u']'))
        options.host = options.host.mid(1, options.host.size() - 2);
    if (!ok || options.host.isEmpty())
        throw EQelError(u"--listen 应为 地址:端口，而不是：%1"_s.arg(text));
    if (options.host == "localhost"_L1)
        options.host = u"127.0.0.1"_s;
}

} // namespace

Options ParseOptions(const QStringList &arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        u"Application server of a pharmaceutical trading platform. Without a command it serves.\n\n"
        "Commands, each with a --help of its own:\n  serve                 Serve; may be left out."_s +
        Admin::CommandHelp());
    parser.addHelpOption();
    parser.addVersionOption();
    parser.addOptions({
        Admin::DatabaseOption(),
        {u"listen"_s, u"Accept connections at HOST:PORT; port 0 is any free one."_s, u"host:port"_s,
         u"127.0.0.1:8480"_s},
        {u"base-path"_s, u"Path before the servlets' names, such as /platform."_s, u"path"_s},
        {u"demo"_s, u"Fill an empty database with the sample data."_s},
        {u"operator"_s,
         u"Give this user the token in the environment variable QEL_OPERATOR_TOKEN."_s, u"code"_s},
        {u"set-token"_s,
         u"Give this user the token that is the first line of standard input, and exit."_s,
         u"code"_s},
        {u"exit-with-parent"_s, u"Exit when standard input is closed."_s},
        {u"statement-time"_s, u"Seconds that one statement may take."_s, u"seconds"_s, u"30"_s},
        {u"request-time"_s, u"Seconds from a request's first byte to its answer's last."_s,
         u"seconds"_s, u"60"_s},
        {u"connections"_s, u"Largest number of open connections."_s, u"number"_s, u"1000"_s},
    });
    parser.process(arguments);
    if (!parser.positionalArguments().isEmpty())
        throw EQelError(u"多余的参数：%1"_s.arg(parser.positionalArguments().join(u' ')));

    Options options;
    options.database = Admin::DatabaseUrl(parser);
    ParseListen(parser.value(u"listen"_s), options);
    options.basePath = parser.value(u"base-path"_s);
    options.operatorCode = parser.value(u"operator"_s);
    options.setTokenOf = parser.value(u"set-token"_s);
    options.demo = parser.isSet(u"demo"_s);
    options.exitWithParent = parser.isSet(u"exit-with-parent"_s);
    options.statementSeconds = Admin::NumberOption(parser, u"statement-time"_s, 1, 3600);
    options.requestSeconds = Admin::NumberOption(parser, u"request-time"_s, 1, 3600);
    options.connectionLimit = Admin::NumberOption(parser, u"connections"_s, 1, 100'000);
    return options;
}

} // namespace Qel
