#include "http/Link.h"

#include <netinet/tcp.h>
#include <sys/socket.h>

namespace Qel::Http {

using asio::ip::tcp;
using boost::system::error_code;

Link::Link(tcp::socket socket, const std::shared_ptr<asio::ssl::context> &tls)
    : tcp_(std::move(socket))
{
    error_code ignored;
    const auto remote = tcp_.socket().remote_endpoint(ignored);
    address_ = QByteArray::fromStdString(remote.address().to_string());
    // Without it a small answer on a kept connection waits 40 ms for an acknowledgement.
    tcp_.socket().set_option(tcp::no_delay(true), ignored);
    if (tls)
        tls_.emplace(tcp_, *tls);
}

asio::awaitable<error_code> Link::Handshake()
{
    if (!tls_)
        co_return error_code();
    auto [error] = co_await tls_->async_handshake(asio::ssl::stream_base::server, Token);
    co_return error;
}

asio::awaitable<Transferred> Link::ReadSome(asio::mutable_buffer buffer)
{
    return tls_ ? tls_->async_read_some(buffer, Token) : tcp_.async_read_some(buffer, Token);
}

asio::awaitable<Transferred> Link::WriteSome(asio::const_buffer buffer)
{
    return tls_ ? tls_->async_write_some(buffer, Token) : tcp_.async_write_some(buffer, Token);
}

asio::awaitable<void> Link::EndWriting()
{
    if (tls_) {
        // The answer to the good-bye is not waited for: the connection ends after it anyway.
        SSL_set_shutdown(tls_->native_handle(), SSL_RECEIVED_SHUTDOWN);
        co_await tls_->async_shutdown(Token);
    }
    error_code ignored;
    tcp_.socket().shutdown(tcp::socket::shutdown_send, ignored);
}

bool Link::HasHungUp()
{
    tcp_info info{};
    socklen_t size = sizeof info;
    return getsockopt(tcp_.socket().native_handle(), IPPROTO_TCP, TCP_INFO, &info, &size) != 0 ||
           info.tcpi_state != TCP_ESTABLISHED;
}

} // namespace Qel::Http
