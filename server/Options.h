#pragma once

#include <QString>
#include <QStringList>

namespace Qel {

/// What the command line of qel-server says.
struct Options
{
    QString database; ///< empty: one that is thrown away at the end
    QString host = QStringLiteral("127.0.0.1");
    quint16 port = 8480;
    QString basePath;     ///< before the servlets' names
    QString operatorCode; ///< gets the token of the environment variable QEL_OPERATOR_TOKEN
    QString setTokenOf;   ///< gets the token on standard input; nothing is served
    bool demo = false;
    bool exitWithParent = false;
    int statementSeconds = 30;
    int answerRows = 200'000;
    int answerMegabytes = 256;
    int connectionLimit = 1'000;
    int requestSeconds = 60;
    int slowSeconds = 10;
    int stopSeconds = 10;
    QString certificate; ///< PEM files; both or none
    QString key;
    QStringList trustedProxies; ///< numeric addresses or blocks of them
    QString metricsHost;        ///< empty: no figures
    quint16 metricsPort = 0;
    bool jsonLog = false;
};

/// Reads the command line; prints and ends the process for --help, --version and mistakes.
Options ParseOptions(const QStringList &arguments);

} // namespace Qel
