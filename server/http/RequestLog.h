#pragma once

#include <QByteArray>
#include <QString>

#include <chrono>

namespace Qel::Http {

enum class LogFormat { Text, Json };

/// How lines are written from now on; Text unless told otherwise.
void SetLogFormat(LogFormat format);

/// What the log line of one request says. Never a credential, a posted value or a literal of a
/// statement.
struct LogEntry
{
    QString reference;
    QByteArray address; ///< of the client
    QByteArray method;
    QByteArray path;
    int status = 0;
    std::chrono::microseconds took{};
    QString user;         ///< code of the operator; empty: not known
    QString what;         ///< "manager/method" of a post
    QByteArray hash;      ///< of a query's text
    QByteArray tables;    ///< that a query reads
    qint64 rows = -1;     ///< rows in the answer; -1: none are counted
    qint64 received = -1; ///< size of the request's body; -1: there was no request
    qint64 bytes = 0;     ///< size of the answer's body
    QByteArray code;      ///< of a failure; of a post that was run, the first row's
    QString detail;       ///< of a failure: what only the log is told
    QString statement;    ///< of a query that failed, without its literals
};

/// Writes the entry as one line to standard error: the time and name=value pairs, or a JSON object.
/// From any thread.
void WriteLog(const LogEntry &entry);

/// A line that is no request's: what happened to the server itself.
void WriteEvent(const char *event, const QString &detail);

/// A new reference: ten letters and digits that are easy to read out.
QString NewReference();

} // namespace Qel::Http
