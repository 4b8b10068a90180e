#pragma once

#include "dataset/QelError.h"

#include <QByteArray>
#include <QString>

#include <exception>

namespace Qel::Http {

/// A request that is not answered as it wished: the code that docs/wire-protocol.md lists and a
/// text for the operator.
class EProblem : public EQelError
{
public:
    /// `retryAfter`: seconds after which the request may be tried again; 0: that would not help.
    EProblem(const QByteArray &code, const QString &message, int retryAfter = 0)
        : EQelError(message)
        , code_(code)
        , retryAfter_(retryAfter)
    {
    }

    const QByteArray &Code() const { return code_; }
    int RetryAfter() const { return retryAfter_; }

private:
    QByteArray code_;
    int retryAfter_;
};

/// For what is a matter of the moment; in seconds. Until then another server, or this one, answers.
constexpr int Retry = 2;

/// The HTTP status of an error code: 400 unless the table says otherwise.
int StatusOf(const QByteArray &code);

/// What a client is told about a failure, and what only the log is.
struct Failure
{
    QByteArray code;
    QString message;
    /// For the log: of a failure of the server's own. What a client did wrong is told by the code;
    /// the message may repeat what it sent, which no log keeps.
    QString detail;
    int retryAfter = 0; ///< as EProblem has it
};

/// `reference` stands in the message where the client is told nothing else.
Failure Explain(const std::exception_ptr &failure, const QString &reference);

} // namespace Qel::Http
