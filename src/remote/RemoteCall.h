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

    ERemoteError Cancelled() const;
    ERemoteError Malformed(const QString &cause) const;
    /// Of an exchange that did not end with status 200 and a body of the protocol.
    ERemoteError Failed(Exchange &exchange) const;

private:
    enum class Effect { None, Open }; ///< whether a post may have taken effect
    ERemoteError Error(ERemoteError::Kind kind, Effect effect, const QString &reason,
                       const ERemoteError::Facts &known) const;
    ERemoteError Refused(Exchange &exchange, ERemoteError::Facts known) const;
};

/// Whether the server has said what became of a post, so that posting the same rows again would
/// be another post.
bool IsDefinite(const ERemoteError &error);

} // namespace Qel
