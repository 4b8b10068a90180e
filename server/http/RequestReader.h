#pragma once

#include "http/BodyRoom.h"
#include "http/Link.h"
#include "http/Message.h"
#include "http/Pace.h"

#include <boost/beast/core/flat_buffer.hpp>

#include <cstddef>
#include <string>

namespace Qel::Http {

/// A request on its way in, and what its connection is to do after it.
struct Incoming
{
    explicit Incoming(BodyRoom &room)
        : share(room)
    {
    }

    Request request;
    std::string body; ///< what request.body is a view of
    BodyRoom::Share share;
    bool keepAlive = false;
    bool isHead = false; ///< the answer has no body
};

struct ReadResult
{
    enum class End {
        Whole,
        Refused, ///< for the reason below
        Gone,    ///< the client has
        Slow,    ///< it took too long
    };
    End end;
    Broken why = Broken::Malformed;
};

/// Reads one request. `buffer` holds what came already and afterwards what belongs to the next
/// request. `bodyLimit` in bytes.
asio::awaitable<ReadResult> ReadRequest(Link &link, boost::beast::flat_buffer &buffer,
                                        const Patience &patience, std::size_t bodyLimit,
                                        Clock::time_point deadline, Incoming &into);

/// Writes all of it; false: the client was gone or too slow.
asio::awaitable<bool> WriteAll(Link &link, asio::const_buffer bytes, const Pace &pace);

} // namespace Qel::Http
