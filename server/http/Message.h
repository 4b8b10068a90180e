#pragma once

#include <QByteArray>

#include <atomic>
#include <chrono>
#include <memory>

namespace Qel::Http {

using Clock = std::chrono::steady_clock;

/// One request, whole. The body is a view that lives as long as the handling.
struct Request
{
    QByteArray method; ///< "GET", "POST"
    QByteArray path;   ///< without the part from "?"
    QByteArray authorization;
    QByteArray contentType;
    QByteArray accept;
    QByteArray idempotencyKey;
    QByteArray body;
    Clock::time_point deadline; ///< by then the answer must be with the client
    /// Becomes true, from another thread, when the client hangs up while it waits.
    std::shared_ptr<const std::atomic<bool>> abandoned;
};

struct Response
{
    int status = 200;
    QByteArray contentType;
    QByteArray body;
};

/// Which thread a request is handled on.
enum class Lane {
    Inline, ///< the network's own: answered without waiting for anything
    Read,   ///< one of several
    Write,  ///< one of as many as the database takes: what is more queues instead of blocking
};

/// What can be wrong with bytes that never became a request.
enum class Broken { Malformed, TooLarge };

/// What the server does with requests. Called from several threads at once.
class Handler
{
public:
    virtual ~Handler() = default;

    virtual Lane LaneOf(const Request &request) const = 0;
    virtual Response Handle(const Request &request) noexcept = 0;
    /// The answer to such bytes; the connection is closed after it.
    virtual Response Refuse(Broken what) noexcept = 0;
};

} // namespace Qel::Http
