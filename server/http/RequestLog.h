#pragma once

#include <QByteArray>
#include <QString>

#include <chrono>

namespace Qel::Http {

/// What the log line of one request says. Never a credential, never a posted value.
struct LogEntry
{
    QString reference;
    QByteArray method;
    QByteArray path;
    int status = 0;
    std::chrono::microseconds took{};
    QString user;      ///< code of the operator; empty: not known
    QString what;      ///< "manager/method" of a post
    qint64 rows = -1;  ///< rows in the answer; -1: none are counted
    qint64 bytes = 0;  ///< size of the answer's body
    QByteArray code;   ///< of a failure
    QString detail;    ///< of a failure: what only the log is told
    QString statement; ///< of a query that failed
};

/// Writes the entry as one line of name=value pairs to standard error. From any thread.
void WriteLog(const LogEntry &entry);

/// A new reference: ten letters and digits that are easy to read out.
QString NewReference();

} // namespace Qel::Http
