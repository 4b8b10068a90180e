#include "Options.h"

#include "admin/Command.h"
#include "admin/DatabaseOption.h"
#include "dataset/QelError.h"

#include <QCommandLineParser>

using namespace Qt::StringLiterals;

namespace Qel {

namespace {

/// "127.0.0.1:8480" or "[::1]:8480".
void ParseAddress(const QString &option, const QString &text, QString &host, quint16 &port)
{
    const qsizetype colon = text.lastIndexOf(u':');
    bool ok = false;
    port = colon < 0 ? 0 : text.mid(colon + 1).toUShort(&ok);
    host = text.left(colon);
    if (host.startsWith(u'[') && host.endsWith(u']'))
        host = host.mid(1, host.size() - 2);
    if (!ok || host.isEmpty())
        throw EQelError(u"--%1 应为 地址:端口，而不是：%2"_s.arg(option, text));
    if (host == "localhost"_L1)
        host = u"127.0.0.1"_s;
}

/// What concerns the network beside the address.
void ParseNetwork(const QCommandLineParser &parser, Options &options)
{
    options.certificate = parser.value(u"cert"_s);
    options.key = parser.value(u"key"_s);
    if (options.certificate.isEmpty() != options.key.isEmpty())
        throw EQelError(u"--cert 与 --key 必须一起给出。"_s);
    options.trustedProxies = parser.values(u"trusted-proxy"_s);
    if (parser.isSet(u"metrics-listen"_s))
        ParseAddress(u"metrics-listen"_s, parser.value(u"metrics-listen"_s), options.metricsHost,
                     options.metricsPort);
    options.slowSeconds = Admin::NumberOption(parser, u"slow-time"_s, 1, 3600);
    options.stopSeconds = Admin::NumberOption(parser, u"stop-time"_s, 2, 3600);
    const QString format = parser.value(u"log-format"_s);
    if (format != "text"_L1 && format != "json"_L1)
        throw EQelError(u"--log-format 应为 text 或 json，而不是：%1"_s.arg(format));
    options.jsonLog = format == "json"_L1;
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
        {u"answer-rows"_s, u"Rows that the answer to a query may have."_s, u"number"_s,
         u"200000"_s},
        {u"answer-size"_s, u"MiB that the answer to a query may have."_s, u"MiB"_s, u"256"_s},
        {u"request-time"_s, u"Seconds from a request's first byte to its answer's last."_s,
         u"seconds"_s, u"60"_s},
        {u"slow-time"_s,
         u"Seconds without a byte, or for a whole header, until a slow client is closed."_s,
         u"seconds"_s, u"10"_s},
        {u"stop-time"_s, u"Seconds that running requests have when the server is stopped."_s,
         u"seconds"_s, u"10"_s},
        {u"connections"_s, u"Largest number of open connections."_s, u"number"_s, u"1000"_s},
        {u"cert"_s, u"Serve TLS with this certificate chain (PEM); read again at SIGHUP."_s,
         u"file"_s},
        {u"key"_s, u"The private key of the certificate (PEM)."_s, u"file"_s},
        {u"trusted-proxy"_s,
         u"Believe what a proxy at this ADDRESS[/BITS] says of a client's address; may be given "
         "several times."_s,
         u"address"_s},
        {u"metrics-listen"_s, u"Answer /metrics at HOST:PORT, and there only."_s, u"host:port"_s},
        {u"log-format"_s, u"Write the log as text or json."_s, u"format"_s, u"text"_s},
    });
    parser.process(arguments);
    if (!parser.positionalArguments().isEmpty())
        throw EQelError(u"多余的参数：%1"_s.arg(parser.positionalArguments().join(u' ')));

    Options options;
    options.database = Admin::DatabaseUrl(parser);
    ParseAddress(u"listen"_s, parser.value(u"listen"_s), options.host, options.port);
    ParseNetwork(parser, options);
    options.basePath = parser.value(u"base-path"_s);
    options.operatorCode = parser.value(u"operator"_s);
    options.setTokenOf = parser.value(u"set-token"_s);
    options.demo = parser.isSet(u"demo"_s);
    options.exitWithParent = parser.isSet(u"exit-with-parent"_s);
    options.statementSeconds = Admin::NumberOption(parser, u"statement-time"_s, 1, 3600);
    options.answerRows = Admin::NumberOption(parser, u"answer-rows"_s, 1, 10'000'000);
    options.answerMegabytes = Admin::NumberOption(parser, u"answer-size"_s, 1, 2'000);
    options.requestSeconds = Admin::NumberOption(parser, u"request-time"_s, 1, 3600);
    options.connectionLimit = Admin::NumberOption(parser, u"connections"_s, 1, 100'000);
    return options;
}

} // namespace Qel
