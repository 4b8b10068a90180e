#pragma once

#include <QByteArray>
#include <QList>

#include <atomic>
#include <chrono>
#include <memory>
#include <span>
#include <utility>
#include <vector>

namespace Qel::Http {

using Clock = std::chrono::steady_clock;

/// Which of the server's addresses a request came in at.
enum class Door {
    Clients, ///< queries, posts, and whether the server is up
    Metrics, ///< for the monitoring of the site alone
};

/// One request, whole. The body is a view that lives as long as the handling.
struct Request
{
    QByteArray method; ///< "GET", "POST"
    QByteArray path;   ///< without the part from "?"
    QByteArray authorization;
    QByteArray contentType;
    QByteArray accept;
    QByteArray idempotencyKey;
    QByteArray position;     ///< of the client's last post, as the server named it
    QByteArray forwardedFor; ///< X-Forwarded-For and Forwarded: every line, joined by commas
    QByteArray forwarded;
    QByteArray body;
    QByteArray address; ///< numeric, of the other end of the connection
    Door door = Door::Clients;
    Clock::time_point deadline; ///< by then the answer must be with the client
    /// Becomes true, from another thread, when the client hangs up while it waits.
    std::shared_ptr<const std::atomic<bool>> abandoned;
};

struct Response
{
    int status = 200;
    QByteArray contentType;
    QByteArray body;
    /// Further headers of this answer, such as Retry-After; those that every answer has are the
    /// server's business.
    QList<std::pair<QByteArray, QByteArray>> headers = {};
    /// The request had a good credential: its connection is one to keep when they run short.
    bool known = false;
};

/// Which thread a request is handled on.
enum class Lane {
    Inline, ///< the network's own: answered without waiting for anything
    Read,   ///< one of several
    Write,  ///< one of as many as the database takes: what is more queues instead of blocking
    Probe,  ///< for what must be answered while all others are busy
};

/// Why a request is not handled.
enum class Broken {
    Malformed,      ///< bytes that are no request, or that two servers could read in two ways
    HeaderTooLarge, ///< request line and headers
    TooLarge,       ///< the body
    NoRoom,         ///< the body, at this moment, beside those of others
    Stopping,       ///< whole and good, but the server is being stopped
};

/// What the server does with requests. Called from several threads at once.
class Handler
{
public:
    virtual ~Handler() = default;

    virtual Lane LaneOf(const Request &request) const = 0;
    virtual Response Handle(const Request &request) noexcept = 0;
    /// Several of Lane::Write that waited, in their order.
    virtual std::vector<Response>
    HandleTogether(std::span<const Request *const> requests) noexcept = 0;
    /// The answer to a request that will not be handled; the connection is closed after it.
    /// `request` has its address, and method and path if it got so far.
    virtual Response Refuse(Broken what, const Request &request) noexcept = 0;
    /// From now on requests are refused, and those that run have to be done at `latest`.
    virtual void BeginStop(Clock::time_point latest) noexcept = 0;
};

} // namespace Qel::Http
