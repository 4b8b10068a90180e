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
    EProblem(const QByteArray &code, const QString &message)
        : EQelError(message)
        , code_(code)
    {
    }

    const QByteArray &Code() const { return code_; }

private:
    QByteArray code_;
};

/// The HTTP status of an error code: 400 unless the table says otherwise.
int StatusOf(const QByteArray &code);

/// What a client is told about a failure, and what only the log is.
struct Failure
{
    QByteArray code;
    QString message;
    QString detail; ///< for the log; empty: the message says it all
};

/// `reference` stands in the message where the client is told nothing else.
Failure Explain(const std::exception_ptr &failure, const QString &reference);

} // namespace Qel::Http
