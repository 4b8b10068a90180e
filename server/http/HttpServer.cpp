#include "http/HttpServer.h"

#include "dataset/QelError.h"

#include <utility> // before Asio: its coroutine headers use std::exchange without including it

#include <boost/asio/as_tuple.hpp>
#include <boost/asio/co_spawn.hpp>
#include <boost/asio/detached.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/signal_set.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/asio/thread_pool.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <boost/beast/http.hpp>
#include <boost/beast/http/span_body.hpp>

#include <array>
#include <csignal>
#include <list>

namespace asio = boost::asio;
namespace beast = boost::beast;
namespace http = boost::beast::http;
using asio::ip::tcp;
using namespace Qt::StringLiterals;

namespace Qel::Http {

namespace {

constexpr std::size_t HeaderLimit = 16u << 10;
constexpr std::size_t FirstRead = 8u << 10;
constexpr std::size_t DiscardLimit = 64u << 20;
constexpr std::chrono::seconds DiscardTime{2};
constexpr auto Token = asio::as_tuple(asio::use_awaitable);

QByteArray ToBytes(beast::string_view text)
{
    return {text.data(), static_cast<qsizetype>(text.size())};
}

/// One client's connection.
struct Peer
{
    explicit Peer(tcp::socket socket)
        : stream(std::move(socket))
    {
    }

    beast::tcp_stream stream;
    std::shared_ptr<std::atomic<bool>> abandoned; ///< of the request that is being answered
};

using Peers = std::list<Peer>;

} // namespace

class HttpServer::Impl
{
public:
    Impl(const ServerOptions &options, Handler &handler)
        : options_(options)
        , handler_(handler)
        , acceptor_(context_)
        , signals_(context_, SIGTERM, SIGINT)
        , drain_(context_)
        , readers_(static_cast<std::size_t>(options.readers))
        , writers_(static_cast<std::size_t>(options.writers))
    {
        boost::system::error_code error;
        const auto address = asio::ip::make_address(options.host.toStdString(), error);
        if (error)
            Fail(u"监听地址无效"_s, error);
        const tcp::endpoint endpoint(address, options.port);
        acceptor_.open(endpoint.protocol());
        acceptor_.set_option(tcp::acceptor::reuse_address(true));
        acceptor_.bind(endpoint, error);
        if (error)
            Fail(u"无法占用监听端口"_s, error);
        acceptor_.listen(tcp::acceptor::max_listen_connections, error);
        if (error)
            Fail(u"无法监听"_s, error);
    }

    quint16 Port() const { return acceptor_.local_endpoint().port(); }

    void Run()
    {
        signals_.async_wait([this](auto error, int) {
            if (!error)
                BeginStop();
        });
        asio::co_spawn(context_, Accept(), asio::detached);
        context_.run();
        readers_.join();
        writers_.join();
    }

    void Stop()
    {
        asio::post(context_, [this] { BeginStop(); });
    }

private:
    [[noreturn]] void Fail(const QString &what, const boost::system::error_code &error) const
    {
        throw EQelError(u"%1 %2:%3：%4"_s.arg(what, options_.host)
                            .arg(options_.port)
                            .arg(QString::fromStdString(error.message())));
    }

    // --- Connections ---------------------------------------------------------------------------

    asio::awaitable<void> Accept()
    {
        while (!stopping_) {
            auto [error, socket] = co_await acceptor_.async_accept(Token);
            if (stopping_)
                break;
            if (error) {
                // Out of file descriptors and the like: the next one may work again.
                asio::steady_timer pause(context_, std::chrono::milliseconds(50));
                co_await pause.async_wait(Token);
                continue;
            }
            if (!MakeRoom())
                continue; // every connection is being answered: this one is closed
            boost::system::error_code ignored;
            // Without it a small answer on a kept connection waits 40 ms for an acknowledgement.
            socket.set_option(tcp::no_delay(true), ignored);
            waiting_.emplace_back(std::move(socket));
            asio::co_spawn(context_, Serve(std::prev(waiting_.end())), asio::detached);
        }
    }

    /// Whether there is room for one more connection, if need be in place of the one that has
    /// waited longest.
    bool MakeRoom()
    {
        if (waiting_.size() + answering_.size() <
            static_cast<std::size_t>(options_.connectionLimit))
            return true;
        if (waiting_.empty())
            return false;
        waiting_.front().stream.close(); // ends its coroutine, which takes it off the list
        // To the end: the next one in need of room must not choose a connection already closed.
        waiting_.splice(waiting_.end(), waiting_, waiting_.begin());
        return true;
    }

    /// All requests of one connection.
    asio::awaitable<void> Serve(Peers::iterator peer)
    {
        beast::flat_buffer buffer;
        bool goOn = true;
        peer->stream.expires_after(options_.requestTime); // a fresh connection has something to say
        while (goOn && !stopping_) {
            goOn = co_await ServeOne(*peer, peer, buffer);
            peer->stream.expires_after(options_.idleTime);
        }
        boost::system::error_code ignored;
        peer->stream.socket().shutdown(tcp::socket::shutdown_send, ignored);
        waiting_.erase(peer);
        StopWhenDrained();
    }

    /// Reads one request and answers it. False: the connection has come to its end.
    asio::awaitable<bool> ServeOne(Peer &self, Peers::iterator peer, beast::flat_buffer &buffer)
    {
        if (buffer.size() == 0) {
            auto [error, size] =
                co_await self.stream.async_read_some(buffer.prepare(FirstRead), Token);
            if (error)
                co_return false;
            buffer.commit(size);
        }
        const auto deadline = Clock::now() + options_.requestTime;
        self.stream.expires_at(deadline);

        http::request_parser<http::string_body> parser;
        parser.header_limit(HeaderLimit);
        parser.body_limit(options_.bodyLimit);
        auto [error, headSize] =
            co_await http::async_read_header(self.stream, buffer, parser, Token);
        if (!error && beast::iequals(parser.get()[http::field::expect], "100-continue")) {
            http::response<http::empty_body> goAhead(http::status::continue_, 11);
            auto [writeError, size] = co_await http::async_write(self.stream, goAhead, Token);
            error = writeError;
        }
        if (!error) {
            auto [bodyError, size] = co_await http::async_read(self.stream, buffer, parser, Token);
            error = bodyError;
        }
        if (error)
            co_return co_await RefuseBroken(self, error);

        waiting_.splice(answering_.end(), waiting_, peer);
        const bool keepAlive = co_await Answer(self, parser.get(), deadline);
        waiting_.splice(waiting_.end(), answering_, peer);
        co_return keepAlive;
    }

    asio::awaitable<bool> RefuseBroken(Peer &self, const boost::system::error_code &error)
    {
        if (error == http::error::body_limit || error == http::error::header_limit ||
            error == http::error::buffer_overflow)
            co_await RefuseAndDiscard(self, Broken::TooLarge);
        else if (error != http::error::end_of_stream && error != http::error::partial_message &&
                 error.category() == http::make_error_code(http::error::end_of_stream).category())
            co_await RefuseAndDiscard(self, Broken::Malformed);
        co_return false;
    }

    /// Closing a connection with unread bytes would reset it, and the client would never read
    /// why: what it still sends is taken in for a moment and thrown away.
    asio::awaitable<void> RefuseAndDiscard(Peer &self, Broken what)
    {
        co_await Write(self, handler_.Refuse(what), false, true);
        boost::system::error_code ignored;
        self.stream.socket().shutdown(tcp::socket::shutdown_send, ignored);
        self.stream.expires_after(DiscardTime);
        std::array<char, FirstRead> scrap;
        for (std::size_t left = DiscardLimit; left > 0;) {
            auto [error, size] = co_await self.stream.async_read_some(asio::buffer(scrap), Token);
            if (error)
                break;
            left -= std::min(left, size);
        }
    }

    // --- Requests ------------------------------------------------------------------------------

    asio::awaitable<bool> Answer(Peer &self, const http::request<http::string_body> &message,
                                 Clock::time_point deadline)
    {
        self.abandoned = std::make_shared<std::atomic<bool>>(false);
        Request request;
        request.method = ToBytes(message.method_string());
        request.path = ToBytes(message.target());
        if (const qsizetype query = request.path.indexOf('?'); query >= 0)
            request.path.truncate(query);
        request.authorization = ToBytes(message[http::field::authorization]);
        request.contentType = ToBytes(message[http::field::content_type]);
        request.accept = ToBytes(message[http::field::accept]);
        request.idempotencyKey = ToBytes(message["Idempotency-Key"]);
        request.body = QByteArray::fromRawData(message.body().data(),
                                               static_cast<qsizetype>(message.body().size()));
        request.deadline = deadline;
        request.abandoned = self.abandoned;

        Response response;
        const Lane lane = handler_.LaneOf(request);
        if (lane == Lane::Inline) {
            response = handler_.Handle(request);
        } else {
            WatchForHangUp(self);
            response = co_await asio::co_spawn(
                lane == Lane::Read ? readers_.get_executor() : writers_.get_executor(),
                [this, &request]() -> asio::awaitable<Response> {
                    co_return handler_.Handle(request);
                },
                asio::use_awaitable);
            boost::system::error_code ignored;
            self.stream.socket().cancel(ignored);
        }
        const bool keepAlive = message.keep_alive() && !stopping_;
        const bool isHead = message.method() == http::verb::head;
        co_return co_await Write(self, response, keepAlive, !isHead) && keepAlive;
    }

    /// A query whose client has gone need not go on. Bytes that arrive meanwhile (the next
    /// request, sent early) are none of its business and end the watch.
    static void WatchForHangUp(Peer &self)
    {
        tcp::socket &socket = self.stream.socket();
        socket.async_wait(tcp::socket::wait_read,
                          [&socket, abandoned = self.abandoned](auto error) {
                              if (error)
                                  return;
                              boost::system::error_code failure;
                              if (socket.available(failure) == 0 || failure)
                                  *abandoned = true;
                          });
    }

    asio::awaitable<bool> Write(Peer &self, Response response, bool keepAlive, bool withBody)
    {
        http::response<http::span_body<const char>> message(
            static_cast<http::status>(response.status), 11);
        if (!response.contentType.isEmpty())
            message.set(http::field::content_type, response.contentType.toStdString());
        if (response.status == 401)
            message.set(http::field::www_authenticate, "Basic realm=\"qel\", charset=\"UTF-8\"");
        message.set(http::field::cache_control, "no-store");
        message.keep_alive(keepAlive);
        if (withBody)
            message.body() = {response.body.constData(),
                              static_cast<std::size_t>(response.body.size())};
        message.content_length(static_cast<std::size_t>(response.body.size()));
        http::response_serializer<http::span_body<const char>> serializer(message);
        auto [error, size] =
            withBody ? co_await http::async_write(self.stream, serializer, Token)
                     : co_await http::async_write_header(self.stream, serializer, Token);
        co_return !error;
    }

    // --- Stopping ------------------------------------------------------------------------------

    void BeginStop()
    {
        if (stopping_)
            return;
        stopping_ = true;
        boost::system::error_code ignored;
        acceptor_.close(ignored);
        signals_.cancel(ignored);
        for (Peer &peer : waiting_)
            peer.stream.close();
        drain_.expires_after(options_.drainTime);
        drain_.async_wait([this](auto error) {
            if (error)
                return;
            for (Peer &peer : answering_)
                *peer.abandoned = true;
            context_.stop();
        });
        StopWhenDrained();
    }

    void StopWhenDrained()
    {
        if (stopping_ && waiting_.empty() && answering_.empty())
            drain_.cancel();
    }

    ServerOptions options_;
    Handler &handler_;
    asio::io_context context_{1};
    tcp::acceptor acceptor_;
    asio::signal_set signals_;
    asio::steady_timer drain_;
    Peers waiting_;   ///< without a whole request; the longest waiting first
    Peers answering_; ///< whose request is being answered
    bool stopping_ = false;
    asio::thread_pool readers_; // last: their threads end before what they use does
    asio::thread_pool writers_;
};

HttpServer::HttpServer(const ServerOptions &options, Handler &handler)
    : d_(std::make_unique<Impl>(options, handler))
{
}

HttpServer::~HttpServer() = default;

quint16 HttpServer::Port() const
{
    return d_->Port();
}

void HttpServer::Run()
{
    d_->Run();
}

void HttpServer::Stop()
{
    d_->Stop();
}

} // namespace Qel::Http
