#pragma once

#include "dataset/QelError.h"

#include <QString>

namespace Qel {

/// A query or a post that did not come to its end. Screens do not catch it; it passes to the
/// host's error handling. Refusals by business rules are result codes, never errors.
class ERemoteError : public EQelError
{
public:
    enum class Kind {
        NoAddress,       ///< no server address was set, or it is not an http(s) address
        Busy,            ///< called while another call runs: a bug of the caller
        Transport,       ///< no connection, or it broke
        TimeOut,         ///< no byte came for the configured time
        Cancelled,       ///< by the user in the busy box, or because the program quits
        HttpStatus,      ///< a status without a message of the server's
        ServerMessage,   ///< the server refused and says why; Reference() finds its log entry
        MalformedAnswer, ///< an answer that is not what it should be
    };

    /// What is known of the call, for the details section. Never holds credentials.
    struct Facts
    {
        QString url;       ///< without user info
        QString statement; ///< of a query
        QString method;    ///< of a post: "manager.method"
        int httpStatus = 0;
        QString code;             ///< the server's short code, e.g. "sql.unknown_table"
        QString reference;        ///< finds the entry in the server's log
        QString cause;            ///< what the network or the decoder said
        bool mayBeStored = false; ///< a post, and nobody knows that it had no effect
    };

    ERemoteError(Kind kind, const QString &message);
    ERemoteError(Kind kind, const QString &message, const Facts &facts);

    Kind ErrorKind() const noexcept { return kind_; }
    int HttpStatus() const noexcept { return facts_.httpStatus; }
    const QString &Code() const noexcept { return facts_.code; }
    const QString &Reference() const noexcept { return facts_.reference; }
    bool MayBeStored() const noexcept { return facts_.mayBeStored; }

    /// Several lines for a details section, to be copied: address, statement or method, status,
    /// the server's code and reference, the cause. Only what is known.
    QString Details() const override;

private:
    Kind kind_;
    Facts facts_;
};

} // namespace Qel
