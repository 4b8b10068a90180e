#pragma once

#include "wire/Wire.h"

#include <QByteArray>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QUrl>

#include <chrono>
#include <memory>
#include <optional>

namespace Qel {

/// A body of the protocol and how it is written.
struct WireBody
{
    QByteArray bytes;
    Wire::Format format;
    QByteArray position; ///< see Exchange::Position
};

/// One HTTP request of the remote service, on its way. Sent exactly once: the network classes
/// below repeat a request silently when a connection breaks, which must never happen to a post,
/// so the body is one that cannot be read a second time. Nor are redirects followed (they would
/// turn a post into something else and carry the credentials elsewhere).
class Exchange
{
public:
    struct Request
    {
        QUrl url; ///< without user info
        QByteArray body;
        QByteArray authorization;  ///< header value; may be empty
        QByteArray idempotencyKey; ///< header value; may be empty
        QByteArray position;       ///< header value; may be empty
        std::chrono::milliseconds timeOut{};
    };

    enum class Outcome {
        Answered, ///< a whole answer, whatever its status
        Broken,   ///< the connection was there and broke; sending again may help
        TimedOut,
        NotSent, ///< no connection came about
        Garbled, ///< what came is no HTTP answer
    };

    /// Starts at once.
    Exchange(QNetworkAccessManager &network, const Request &request);
    ~Exchange();
    Q_DISABLE_COPY_MOVE(Exchange)

    const QNetworkReply &Reply() const { return *reply_; }
    bool IsFinished() const { return reply_->isFinished(); }
    void Abort() { reply_->abort(); }

    // Once finished:
    Outcome Result() const;
    int Status() const;                             ///< 0 if none came
    std::optional<Wire::Format> BodyFormat() const; ///< none: the body is not of this protocol
    QByteArray TakeBody();                          ///< once
    QByteArray Position() const;                    ///< empty: none came with the answer
    QString TroubleText() const; ///< what happened to the connection, for the operator
    QString CauseText() const;   ///< the same in the words of the network classes

private:
    std::unique_ptr<QIODevice> body_; ///< outlives the reply that reads it
    std::unique_ptr<QNetworkReply> reply_;
};

} // namespace Qel
