#pragma once

#include <QByteArray>
#include <QMap>
#include <QString>
#include <QStringList>

namespace Qel {

/// What one run of qel-server left behind.
struct AdminRun
{
    int status = -1; ///< exit status; -1: it did not end by itself
    QString out;
    QString err;

    QStringList Lines() const; ///< of standard output
};

/// Runs qel-server to its end. `environment` beside that of the test; QEL_DATABASE is not set
/// unless it is given there.
AdminRun RunAdmin(const QStringList &arguments, const QMap<QString, QString> &environment = {},
                  const QByteArray &input = {});

} // namespace Qel
