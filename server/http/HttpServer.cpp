#include "http/HttpServer.h"

#include "dataset/QelError.h"
#include "http/Link.h"
#include "http/Metrics.h"
#include "http/Notify.h"
#include "http/RequestLog.h"
#include "http/RequestReader.h"
#include "http/ResponseHead.h"
#include "http/Tls.h"

#include <boost/asio/co_spawn.hpp>
#include <boost/asio/detached.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/signal_set.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/asio/thread_pool.hpp>

#include <array>
#include <condition_variable>
#include <csignal>
#include <cstdlib>
#include <deque>
#include <exception>
#include <functional>
#include <list>
#include <mutex>

namespace beast = boost::beast;
using namespace Qt::StringLiterals;

namespace Qel::Http {

namespace {

using asio::ip::tcp;

constexpr std::size_t FirstRead = 8u << 10;
/// An answer of this size and its head leave in one piece.
constexpr qsizetype SmallBody = 16 << 10;
constexpr std::size_t DiscardLimit = 64u << 20;
constexpr std::chrono::seconds DiscardTime{2};
constexpr std::chrono::milliseconds HangUpCheck{200};
/// Requests that are handled together, whose answers wait for one another; and the bytes of the
/// body of one, some twenty rows.
constexpr std::size_t MostTogether = 16;
constexpr qsizetype SmallWrite = 8 << 10;
/// Before the end of the drain time: the first for the answers of requests that were stopped, the
/// second for handlers that do not stop.
constexpr std::chrono::milliseconds LastWords{1'500};
constexpr std::chrono::milliseconds LastWait{500};

using Peers = std::list<struct Peer>;

/// One client's connection.
struct Peer
{
    Peer(tcp::socket socket, const std::shared_ptr<asio::ssl::context> &tls, Door at)
        : link(std::move(socket), tls)
        , door(at)
    {
    }

    Link link;
    Door door;
    Peers *rest = nullptr;                        ///< the list for the time between requests
    std::shared_ptr<std::atomic<bool>> abandoned; ///< of the request that is being answered
};

/// A request that waits to be handled together with others.
struct Gathered
{
    const Request *request;
    std::function<void(Response)> answer; ///< on the network's thread
};

} // namespace

class HttpServer::Impl
{
public:
    Impl(const ServerOptions &options, Handler &handler, Metrics &metrics)
        : options_(options)
        , handler_(handler)
        , metrics_(metrics)
        , bodyRoom_(options.bodyRoom)
        , acceptor_(context_)
        , metricsAcceptor_(context_)
        , stopSignals_(context_, SIGTERM, SIGINT)
        , reloadSignals_(context_, SIGHUP)
        , drain_(context_)
        , readers_(static_cast<std::size_t>(options.readers))
        , writers_(static_cast<std::size_t>(options.writers))
        , prober_(1)
    {
        if (!options.certificate.isEmpty())
            tls_ = LoadTls(options.certificate, options.key);
        Listen(acceptor_, options.host, options.port);
        if (!options.metricsHost.isEmpty())
            Listen(metricsAcceptor_, options.metricsHost, options.metricsPort);
    }

    quint16 Port() const { return acceptor_.local_endpoint().port(); }
    quint16 MetricsPort() const
    {
        return metricsAcceptor_.is_open() ? metricsAcceptor_.local_endpoint().port() : quint16(0);
    }

    void Run()
    {
        stopSignals_.async_wait([this](auto error, int) {
            if (!error)
                BeginStop();
        });
        WaitForReload();
        asio::co_spawn(context_, Accept(acceptor_, Door::Clients), asio::detached);
        if (metricsAcceptor_.is_open())
            asio::co_spawn(context_, Accept(metricsAcceptor_, Door::Metrics), asio::detached);
        NotifyServiceManager("READY=1");
        context_.run();
        EndLateHandlers();
        readers_.join();
        writers_.join();
        prober_.join();
    }

    Clock::time_point DrainEnd() const { return drainEnd_; }

    void Stop()
    {
        asio::post(context_, [this] { BeginStop(); });
    }

private:
    static void Listen(tcp::acceptor &acceptor, const QString &host, quint16 port)
    {
        boost::system::error_code error;
        const auto fail = [&](const QString &what) {
            throw EQelError(u"%1 %2:%3：%4"_s.arg(what, host)
                                .arg(port)
                                .arg(QString::fromStdString(error.message())));
        };
        const auto address = asio::ip::make_address(host.toStdString(), error);
        if (error)
            fail(u"监听地址无效"_s);
        const tcp::endpoint endpoint(address, port);
        acceptor.open(endpoint.protocol());
        acceptor.set_option(tcp::acceptor::reuse_address(true));
        acceptor.bind(endpoint, error);
        if (error)
            fail(u"无法占用监听端口"_s);
        acceptor.listen(tcp::acceptor::max_listen_connections, error);
        if (error)
            fail(u"无法监听"_s);
    }

    /// A certificate that was renewed serves new connections; one that cannot be read leaves the
    /// old one in place.
    void WaitForReload()
    {
        reloadSignals_.async_wait([this](auto error, int) {
            if (error)
                return;
            try {
                if (tls_)
                    tls_ = LoadTls(options_.certificate, options_.key);
                WriteEvent("reloaded", tls_ ? options_.certificate : QString());
            } catch (const EQelError &failure) {
                WriteEvent("reload failed", failure.Message());
            }
            WaitForReload();
        });
    }

    // --- Connections ---------------------------------------------------------------------------

    asio::awaitable<void> Accept(tcp::acceptor &acceptor, Door door)
    {
        while (!stopping_) {
            auto [error, socket] = co_await acceptor.async_accept(Token);
            if (stopping_)
                break;
            if (error) {
                // Out of file descriptors and the like: the next one may work again.
                asio::steady_timer pause(context_, std::chrono::milliseconds(50));
                co_await pause.async_wait(Token);
                continue;
            }
            ++metrics_.connectionsAccepted;
            if (!MakeRoom()) {
                ++metrics_.connectionsRefused;
                continue; // every connection is being answered: this one is closed
            }
            try {
                Admit(std::move(socket), door);
            } catch (const std::exception &failure) { // this one is closed, others may come
                WriteEvent("connection failed", QString::fromUtf8(failure.what()));
            }
        }
    }

    void Admit(tcp::socket socket, Door door)
    {
        strangers_.emplace_back(std::move(socket), door == Door::Clients ? tls_ : nullptr, door);
        const auto peer = std::prev(strangers_.end());
        try {
            asio::co_spawn(context_, Serve(peer), asio::detached);
        } catch (...) {
            strangers_.erase(peer);
            throw;
        }
        CountConnections();
    }

    /// Whether there is room for one more connection, if need be in place of the one that has
    /// waited longest; of one with a good credential only if there is no other.
    bool MakeRoom()
    {
        if (strangers_.size() + known_.size() + answering_.size() <
            static_cast<std::size_t>(options_.connectionLimit))
            return true;
        Peers &from = strangers_.empty() ? known_ : strangers_;
        if (from.empty())
            return false;
        ++metrics_.connectionsGaveWay;
        from.front().link.Close(); // ends its coroutine, which takes it off the list
        // To the end: the next one in need of room must not choose a connection already closed.
        from.splice(from.end(), from, from.begin());
        return true;
    }

    void CountConnections()
    {
        metrics_.connectionsWaiting = static_cast<qint64>(strangers_.size() + known_.size());
        metrics_.connectionsAnswering = static_cast<qint64>(answering_.size());
    }

    asio::awaitable<void> Serve(Peers::iterator peer)
    {
        peer->rest = &strangers_;
        try {
            co_await ServeAll(peer);
        } catch (const std::exception &failure) { // no memory: others may be served
            WriteEvent("connection failed", QString::fromUtf8(failure.what()));
        }
        peer->rest->erase(peer);
        CountConnections();
        StopWhenDrained();
    }

    /// All requests of one connection.
    asio::awaitable<void> ServeAll(Peers::iterator peer)
    {
        const auto begin = Clock::now();
        // A fresh connection has something to say.
        peer->link.Until(begin + options_.patience.silence);
        bool goOn = !co_await peer->link.Handshake();
        if (!goOn)
            ++metrics_.handshakesFailed;
        beast::flat_buffer buffer;
        Clock::time_point latest = begin + options_.requestTime;
        auto firstByte = begin + options_.patience.silence;
        while (goOn) {
            goOn = co_await ServeOne(*peer, peer, buffer, firstByte, latest);
            firstByte = Clock::now() + options_.idleTime;
            latest = Clock::time_point::max();
        }
        peer->link.Until(Clock::now() + DiscardTime);
        co_await peer->link.EndWriting();
    }

    /// Reads one request, which begins until `firstByte`, and answers it until `latest`. False:
    /// the connection has come to its end.
    asio::awaitable<bool> ServeOne(Peer &self, Peers::iterator peer, beast::flat_buffer &buffer,
                                   Clock::time_point firstByte, Clock::time_point latest)
    {
        if (buffer.size() == 0) {
            self.link.Until(firstByte);
            auto [error, size] = co_await self.link.ReadSome(buffer.prepare(FirstRead));
            if (error)
                co_return false;
            buffer.commit(size);
        }
        const auto deadline = std::min(Clock::now() + options_.requestTime, latest);
        Incoming incoming(bodyRoom_);
        incoming.request.address = self.link.Address();
        incoming.request.door = self.door;
        incoming.request.deadline = deadline;
        const ReadResult read = co_await ReadRequest(self.link, buffer, options_.patience,
                                                     options_.bodyLimit, deadline, incoming);
        if (read.end == ReadResult::End::Slow)
            ++metrics_.connectionsSlow;
        if (read.end == ReadResult::End::Gone || read.end == ReadResult::End::Slow)
            co_return false;

        answering_.splice(answering_.end(), *self.rest, peer);
        CountConnections();
        bool keepAlive = false;
        std::exception_ptr failure;
        try {
            if (read.end == ReadResult::End::Refused)
                co_await Write(self, handler_.Refuse(read.why, incoming.request),
                               Clock::now() + DiscardTime, false, true);
            else if (stopping_)
                co_await Write(self, handler_.Refuse(Broken::Stopping, incoming.request), deadline,
                               false, !incoming.isHead);
            else
                keepAlive = co_await Answer(self, incoming);
        } catch (...) {
            failure = std::current_exception();
        }
        self.rest->splice(self.rest->end(), answering_, peer);
        CountConnections();
        if (failure)
            std::rethrow_exception(failure);
        if (read.end == ReadResult::End::Refused)
            co_await Discard(self.link);
        co_return keepAlive;
    }

    /// Closing a connection with unread bytes would reset it, and the client would never read
    /// why: what it still sends is taken in for a moment and thrown away.
    static asio::awaitable<void> Discard(Link &link)
    {
        link.Until(Clock::now() + DiscardTime);
        co_await link.EndWriting();
        std::array<char, FirstRead> scrap;
        for (std::size_t left = DiscardLimit; left > 0;) {
            auto [error, size] = co_await link.ReadSome(asio::buffer(scrap));
            if (error)
                break;
            left -= std::min(left, size);
        }
    }

    // --- Requests ------------------------------------------------------------------------------

    asio::awaitable<bool> Answer(Peer &self, Incoming &incoming)
    {
        Request &request = incoming.request;
        self.abandoned = std::make_shared<std::atomic<bool>>(false);
        request.abandoned = self.abandoned;
        Response response;
        const Lane lane = handler_.LaneOf(request);
        if (lane == Lane::Inline) {
            response = handler_.Handle(request);
        } else {
            WatchForHangUps();
            ++handling_;
            // Not by ?:, whose awaitables GCC 12 destroys twice.
            if (lane == Lane::Write && options_.gathersWrites)
                response = co_await HandledTogether(request);
            else
                response = co_await HandledAlone(request, PoolOf(lane));
        }
        if (response.known)
            self.rest = &known_;
        const bool keepAlive = incoming.keepAlive && !stopping_;
        co_return co_await Write(self, response, request.deadline, keepAlive, !incoming.isHead) &&
            keepAlive;
    }

    asio::awaitable<Response> HandledAlone(const Request &request, asio::thread_pool &pool)
    {
        return asio::co_spawn(
            pool.get_executor(),
            [this, &request]() -> asio::awaitable<Response> {
                Response made = handler_.Handle(request);
                HandlerDone(1);
                co_return made;
            },
            asio::use_awaitable);
    }

    asio::awaitable<Response> HandledTogether(const Request &request)
    {
        return asio::async_initiate<const asio::use_awaitable_t<> &, void(Response)>(
            [this, &request](auto handler) {
                const auto kept = std::make_shared<decltype(handler)>(std::move(handler));
                const auto answer = [kept](Response made) { (*kept)(std::move(made)); };
                const std::lock_guard lock(gatheringLock_);
                gathered_.push_back({&request, answer});
                if (!std::exchange(gathering_, true))
                    asio::post(writers_, [this] { HandleGathered(); });
            },
            asio::use_awaitable);
    }

    /// The next ones, in the order in which they came: a large one, which takes long, alone.
    std::vector<Gathered> NextTogether()
    {
        const std::lock_guard lock(gatheringLock_);
        std::vector<Gathered> next;
        while (!gathered_.empty() && next.size() < MostTogether) {
            const bool isLarge = gathered_.front().request->body.size() > SmallWrite;
            if (isLarge && !next.empty())
                break;
            next.push_back(std::move(gathered_.front()));
            gathered_.pop_front();
            if (isLarge)
                break;
        }
        gathering_ = !next.empty();
        return next;
    }

    void HandleGathered()
    {
        for (auto next = NextTogether(); !next.empty(); next = NextTogether()) {
            std::vector<const Request *> requests;
            for (const Gathered &one : next)
                requests.push_back(one.request);
            auto responses = handler_.HandleTogether(requests);
            const int count = static_cast<int>(next.size());
            asio::post(context_, [next = std::move(next), made = std::move(responses)]() mutable {
                for (std::size_t at = 0; at < next.size(); ++at)
                    next[at].answer(std::move(made[at]));
            });
            HandlerDone(count);
        }
    }

    asio::thread_pool &PoolOf(Lane lane)
    {
        return lane == Lane::Write ? writers_ : lane == Lane::Probe ? prober_ : readers_;
    }

    /// A query whose client has gone need not go on. Bytes that arrive meanwhile (the next
    /// request, sent early; the good-bye of TLS) do not say so, the state of the connection does.
    void WatchForHangUps()
    {
        if (std::exchange(watching_, true))
            return;
        asio::co_spawn(context_, Watch(), asio::detached);
    }

    asio::awaitable<void> Watch()
    {
        asio::steady_timer pause(context_);
        while (!answering_.empty()) {
            pause.expires_after(HangUpCheck);
            co_await pause.async_wait(Token);
            for (Peer &peer : answering_)
                if (peer.abandoned && peer.link.HasHungUp())
                    *peer.abandoned = true;
        }
        watching_ = false;
    }

    asio::awaitable<bool> Write(Peer &self, const Response &response, Clock::time_point deadline,
                                bool keepAlive, bool withBody)
    {
        QByteArray head = HeadOf(response, keepAlive, self.link.IsSecure());
        const bool together = withBody && response.body.size() <= SmallBody;
        if (together)
            head += response.body;
        const Pace pace(options_.patience, deadline);
        const auto bytesOf = [](const QByteArray &bytes) {
            return asio::const_buffer(bytes.constData(), static_cast<std::size_t>(bytes.size()));
        };
        bool written = co_await WriteAll(self.link, bytesOf(head), pace);
        if (written && withBody && !together)
            written = co_await WriteAll(self.link, bytesOf(response.body), pace);
        if (!written)
            ++metrics_.answersNotTaken;
        co_return written;
    }

    // --- Stopping ------------------------------------------------------------------------------

    void BeginStop()
    {
        if (stopping_)
            return;
        stopping_ = true;
        drainEnd_ = Clock::now() + options_.drainTime;
        NotifyServiceManager("STOPPING=1");
        handler_.BeginStop(drainEnd_ - LastWords);
        boost::system::error_code ignored;
        acceptor_.close(ignored);
        metricsAcceptor_.close(ignored);
        stopSignals_.cancel(ignored);
        reloadSignals_.cancel(ignored);
        drain_.expires_at(drainEnd_ - LastWait);
        drain_.async_wait([this](auto error) {
            if (error)
                return;
            for (Peer &peer : answering_)
                if (peer.abandoned)
                    *peer.abandoned = true;
            context_.stop();
        });
        StopWhenDrained();
    }

    /// While something runs, kept connections are still told that the server is being stopped.
    void StopWhenDrained()
    {
        if (!stopping_ || !answering_.empty())
            return;
        for (Peers *peers : {&strangers_, &known_})
            for (Peer &peer : *peers)
                peer.link.Close();
        drain_.cancel();
    }

    void HandlerDone(int requests)
    {
        const std::lock_guard lock(handlingLock_);
        handling_ -= requests;
        handlingChanged_.notify_one();
    }

    /// A handler that does not end, because the database does not answer it, must not keep the
    /// process: what it has not committed is undone, as after a power cut.
    void EndLateHandlers()
    {
        std::unique_lock lock(handlingLock_);
        if (handlingChanged_.wait_for(lock, LastWait, [this] { return handling_ == 0; }))
            return;
        WriteEvent("stopped with requests running", QString());
        std::_Exit(EXIT_SUCCESS);
    }

    ServerOptions options_;
    Handler &handler_;
    Metrics &metrics_;
    std::shared_ptr<asio::ssl::context> tls_; ///< for the next connection; null: without TLS
    BodyRoom bodyRoom_; // before what is cut off at the end: requests give back their share
    asio::io_context context_{1};
    tcp::acceptor acceptor_;
    tcp::acceptor metricsAcceptor_;
    asio::signal_set stopSignals_;
    asio::signal_set reloadSignals_;
    asio::steady_timer drain_;
    Peers strangers_; ///< without a whole request or a good credential; longest waiting first
    Peers known_;     ///< between the requests of somebody with a good credential
    Peers answering_; ///< whose request is being answered
    bool stopping_ = false;
    Clock::time_point drainEnd_;
    bool watching_ = false;
    std::mutex handlingLock_;
    std::condition_variable handlingChanged_;
    std::atomic<int> handling_ = 0; ///< requests on the threads below
    std::mutex gatheringLock_;
    std::deque<Gathered> gathered_;
    bool gathering_ = false;    ///< a thread takes them
    asio::thread_pool readers_; // last: their threads end before what they use does
    asio::thread_pool writers_;
    asio::thread_pool prober_;
};

HttpServer::HttpServer(const ServerOptions &options, Handler &handler, Metrics &metrics)
    : d_(std::make_unique<Impl>(options, handler, metrics))
{
}

HttpServer::~HttpServer() = default;

quint16 HttpServer::Port() const
{
    return d_->Port();
}

quint16 HttpServer::MetricsPort() const
{
    return d_->MetricsPort();
}

void HttpServer::Run()
{
    d_->Run();
}

Clock::time_point HttpServer::DrainEnd() const
{
    return d_->DrainEnd();
}

void HttpServer::Stop()
{
    d_->Stop();
}

} // namespace Qel::Http
