#include "host/Options.h"

#include "dataset/QelError.h"

#include <QCommandLineParser>

namespace Qel::Host {

using namespace Qt::StringLiterals;

namespace {

QUrl ServerAddress(const QString &text)
{
    const QUrl url(text, QUrl::StrictMode);
    const bool http = url.scheme() == u"http"_s || url.scheme() == u"https"_s;
    // Not shown: it may hold a credential.
    if (!url.isValid() || !http || url.host().isEmpty())
        throw EQelError(u"--server 应为 http 或 https 地址。"_s);
    return url;
}

} // namespace

Options ParseOptions(const QStringList &arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        u"Administration client of a pharmaceutical trading platform."_s);
    parser.addHelpOption();
    parser.addVersionOption();
    parser.addOptions({
        {u"server"_s,
         u"Work against this application server (http://CODE@HOST:PORT; the token is asked for, or "
         "taken from the environment variable QEL_OPERATOR_TOKEN). Without it a server of its own "
         "with the sample database."_s,
         u"url"_s},
        {u"user"_s, u"Log in as the user with this code."_s, u"code"_s},
        {u"screenshots"_s,
         u"Write a picture of every screen and dialog into this folder, and exit."_s, u"dir"_s},
    });
    parser.process(arguments);
    if (!parser.positionalArguments().isEmpty())
        throw EQelError(u"多余的参数：%1"_s.arg(parser.positionalArguments().join(u' ')));

    Options options;
    if (parser.isSet(u"server"_s))
        options.server = ServerAddress(parser.value(u"server"_s));
    options.user = parser.value(u"user"_s);
    options.screenshots = parser.value(u"screenshots"_s);
    if (!options.user.isEmpty() && !options.server.isEmpty())
        options.server.setUserName(options.user);
    return options;
}

} // namespace Qel::Host
