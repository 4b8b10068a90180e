#pragma once

#include "http/Message.h"

#include <utility> // before Asio: its coroutine headers use std::exchange without including it

#include <boost/asio/as_tuple.hpp>
#include <boost/asio/awaitable.hpp>
#include <boost/asio/buffer.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/ssl/context.hpp>
#include <boost/asio/ssl/stream.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <boost/beast/core/tcp_stream.hpp>

#include <memory>
#include <optional>
#include <tuple>

namespace Qel::Http {

namespace asio = boost::asio;

inline constexpr auto Token = asio::as_tuple(asio::use_awaitable);

using Transferred = std::tuple<boost::system::error_code, std::size_t>;

/// One client's connection as bytes, encrypted or not. What is not done when Until says is given
/// up, and the connection closed. Lives on the network's thread.
class Link
{
public:
    /// `tls` may be null: plain bytes.
    Link(asio::ip::tcp::socket socket, const std::shared_ptr<asio::ssl::context> &tls);

    bool IsSecure() const { return tls_.has_value(); }
    QByteArray Address() const { return address_; } ///< numeric, of the other end

    void Until(Clock::time_point when) { tcp_.expires_at(when); }
    /// Agrees on keys; nothing to do without TLS.
    asio::awaitable<boost::system::error_code> Handshake();
    asio::awaitable<Transferred> ReadSome(asio::mutable_buffer buffer);
    asio::awaitable<Transferred> WriteSome(asio::const_buffer buffer);
    /// Says good-bye: the other end gets what was written, and then the end of it.
    asio::awaitable<void> EndWriting();

    void Close() { tcp_.close(); } ///< from outside; ends what is being waited for
    /// Whether the other end has closed its side, whatever it sent before.
    bool HasHungUp();

private:
    boost::beast::tcp_stream tcp_;
    std::optional<asio::ssl::stream<boost::beast::tcp_stream &>> tls_;
    QByteArray address_;
};

} // namespace Qel::Http
