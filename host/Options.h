#pragma once

#include <QString>
#include <QStringList>
#include <QUrl>

namespace Qel::Host {

/// What the command line says.
struct Options
{
    QUrl server;         ///< with the credential as user info; empty: a server of our own
    QString user;        ///< login code; empty: the server address's, or the sample operator
    QString screenshots; ///< folder for the tour's pictures; empty: no tour
};

/// Ends the program for --help, --version and options that do not exist. Raises EQelError for
/// values that make no sense.
Options ParseOptions(const QStringList &arguments);

} // namespace Qel::Host
