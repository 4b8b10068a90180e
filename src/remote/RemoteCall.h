#pragma once

#include "remote/RemoteError.h"
#include "remote/Transport.h"

#include <QString>

namespace Qel {

/// One query or post: what is sent, and how its failures are worded.
struct RemoteCall
{
    Exchange::Request request;
    ERemoteError::Facts facts;
    bool isPost = false;
    /// The post was sent before, under the same key, and that may have taken effect.
    bool mayBeStored = false;

    ERemoteError Cancelled() const;
    ERemoteError Malformed(const QString &cause) const;
    /// Of an exchange that did not end with status 200 and a body of the protocol.
    ERemoteError Failed(Exchange &exchange) const;

private:
    /// Whether a post may have taken effect.
    enum class Effect {
        Never,    ///< it cannot, however often it is sent
        NotNow,   ///< this time it has not
        Possible, ///< it may have
    };
    static Effect EffectOf(int status, const QString &code);
    ERemoteError Error(ERemoteError::Kind kind, Effect effect, const QString &reason,
                       const ERemoteError::Facts &known) const;
    ERemoteError Refused(Exchange &exchange, ERemoteError::Facts known) const;
};

/// Whether the server has said that a post is not stored, so that posting the same rows again
/// would be another post.
bool IsDefinite(const ERemoteError &error);

} // namespace Qel
